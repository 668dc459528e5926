#include "lumrmisc/buffer/texttool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "search/sample.h"

namespace lumr {
namespace {

using namespace std::string_view_literals;

CStringW Widened(std::string_view ascii) {
  return CStringW(ascii.begin(), ascii.end());
}
int Size(const auto& text) {
  return static_cast<int>(text.size());
}

TEST(QuotedToken, LosesItsBackslashesAndGetsThemBack) {
  const struct {
    std::string_view text, token;
  } cases[] = {
      {"", ""},
      {"abc", "abc"},
      {"a\\\"b\\\"", "a\"b\""},
      {"a\"b", "a\"b"},
      {"\\\\\\\\", "\\\\"},
      {"a\\", "a\\"},
      {"\\\\\\", "\\\\"},
      {"\\a\0\\b"sv, "a\0b"sv},
      {"\x83\x5c\\\x83\x5c\x83\x5c", "\x83\x5c\x83\x5c\x83\x5c"},
      {"\x83\x5c\x5c", "\x83\x5c\x5c"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    CStringA token = "old";
    GetQuotedToken(c.text.data(), Size(c.text), token);
    EXPECT_EQ(token, c.token);
    CStringA quoted = "<";
    AddQuotedToken(token.data(), Size(token), quoted);
    ASSERT_EQ(quoted.substr(0, 2), "<\"");
    ASSERT_EQ(quoted.back(), '"');
    CStringA again;
    GetQuotedToken(quoted.data() + 2, Size(quoted) - 3, again);
    EXPECT_EQ(again, token);
  }
  CStringA quoted;
  AddQuotedToken("\x81\\\x81\"\x81", -1, quoted);  // the first backslash is half a character
  EXPECT_EQ(quoted, "\"\x81\\?\\\"\x81\"");
  CStringW wide = u"old";
  GetQuotedToken(u"\\\\a\\\"\u5c71\\", -1, wide);
  EXPECT_EQ(wide, u"\\a\"\u5c71\\");
  AddQuotedToken(u"\"", 1, wide);
  EXPECT_EQ(wide, u"\\a\"\u5c71\\\"\\\"\"");
  GetQuotedToken(static_cast<const char16_t*>(nullptr), -1, wide);
  EXPECT_EQ(wide, u"");
  // UTF-16 at an odd address.
  const std::u16string text = u"\\\"a";
  std::string shifted("x");
  shifted.append(reinterpret_cast<const char*>(text.data()), 2 * text.size());
  GetQuotedToken(reinterpret_cast<const char16_t*>(shifted.data() + 1), 3, wide);
  EXPECT_EQ(wide, u"\"a");
}

TEST(ParenthesisToken, TakesTextApart) {
  const struct {
    const char *text, *outside, *inside;
    int found;
  } cases[] = {
      {"", "", "", 0},
      {"a@b", "a@b", "", 0},
      {"a@b (N)", "a@b ", "N", 1},
      {"()", "", "", 1},
      {"(a) b (c (d)) e)", " b  e)", "a c (d)", 1},
      {"a (b", "a ", "b", 1},
      {"\"a (b)\" (c)", "\"a (b)\" ", "c", 1},
      {"\"a (b)", "\"a ", "b", 1},
      {"\\\"(a)\\\"", "\\\"\\\"", "a", 1},
      {"\"\\\"(a)\"", "\"\\\"(a)\"", "", 0},
      {"(\")", "", "\"", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    CStringA outside = "old";
    CStringA inside = "old";
    EXPECT_EQ(GetParenthesisToken(c.text, -1, outside, inside), c.found);
    EXPECT_EQ(outside, c.outside);
    EXPECT_EQ(inside, c.inside);
    CStringW wideOutside;
    CStringW wideInside;
    EXPECT_EQ(GetParenthesisToken(Widened(c.text).c_str(), -1, wideOutside, wideInside), c.found);
    EXPECT_EQ(wideOutside, Widened(c.outside));
    EXPECT_EQ(wideInside, Widened(c.inside));
  }
}

std::vector<CStringA> Items(std::string_view record) {
  std::vector<CStringA> items;
  CStringA item;
  for (int pos = 0; GetCsvItem(record.data(), Size(record), pos, item) != 0;) items.push_back(item);
  return items;
}

TEST(CsvItem, ReadsRecords) {
  using V = std::vector<CStringA>;
  const struct {
    std::string_view record;
    V items;
  } cases[] = {
      {"", {}},
      {",", {"", ""}},
      {"a, b ,", {"a", " b ", ""}},
      {"\"a,b\",\"c\"\"d\"", {"a,b", "c\"d"}},
      {"\"\",\"\"\"\"", {"", "\""}},
      {"\"a\"x\"y,b", {"ax\"y", "b"}},
      {"a\"b,c\"", {"a\"b", "c\""}},
      {"\"a,b", {"a,b"}},
      {"\"a\"\"", {"a\""}},
      {"a\r\nb,\0"sv, {"a\r\nb", CStringA(1, '\0')}},
      {"\x83\x5c,\x81", {"\x83\x5c", "\x81"}},
  };
  for (const auto& c : cases) EXPECT_EQ(Items(c.record), c.items) << c.record;
  CStringA item = "old";
  for (int pos : {-1, 2, 1000}) {
    const int before = pos;
    EXPECT_EQ(GetCsvItem("a", 1, pos, item), 0);
    EXPECT_EQ(pos, before);
    EXPECT_EQ(item, "");
  }
}

TEST(CsvItem, GivesBackWhatWasWritten) {
  std::mt19937 random(20240505);
  for (int i = 0; i < 20000 / static_cast<int>(kSampleStep); ++i) {
    std::vector<CStringA> items(1 + random() % 4);
    CStringA record;
    CStringW wideRecord;
    for (CStringA& item : items) {
      for (std::size_t left = random() % 5; left > 0; --left) item += ",\" a\r\nb"[random() % 7];
      AddCsvItem(item.data(), Size(item), record);
      AddCsvItem(Widened(item).data(), Size(item), wideRecord);
    }
    ASSERT_EQ(Items(record), items) << record;
    ASSERT_EQ(wideRecord, Widened(record));
    CStringW item;
    int pos = 0;
    ASSERT_EQ(GetCsvItem(wideRecord.data(), Size(wideRecord), pos, item), 1);
    ASSERT_EQ(item, Widened(items[0]));
  }
}

TEST(CompareNumerically, IsATotalOrder) {
  std::vector<CStringA> sorted = {""};
  for (const char c :
       "| |-1|0|00|0a|01|1|1 1|1-2|1a|2|9|10|10.9|10.10|18446744073709551616|"
       "36893488147419103232|:|A|a|A2|a02|a2|A10|a10|a10b|ab|B|\xb1|\x82\xa0"sv) {
    if (c == '|') sorted.emplace_back();
    if (c != '|') sorted.back() += c;
  }
  for (std::size_t i = 0; i < std::size(sorted); ++i) {
    for (std::size_t k = 0; k < std::size(sorted); ++k) {
      SCOPED_TRACE(sorted[i] + " and " + sorted[k]);
      const int expected = i < k ? -1 : i > k;
      const int narrow = lstrcmp_num(sorted[i].c_str(), sorted[k].c_str());
      EXPECT_EQ((narrow > 0) - (narrow < 0), expected);
      if (std::max(i, k) >= std::size(sorted) - 2) continue;
      const int wide = lstrcmp_num(Widened(sorted[i]).c_str(), Widened(sorted[k]).c_str());
      EXPECT_EQ((wide > 0) - (wide < 0), expected);
    }
  }
  EXPECT_LT(lstrcmp_num("\x91\xe6\x82\x58\x8f\xcd", "\x91\xe6\x82\x50\x82\x4f\x8f\xcd"), 0);
  EXPECT_LT(lstrcmp_num(u"第９章", u"第１０章"), 0);
  EXPECT_LT(lstrcmp_num(u"9", u"１0"), 0);
  EXPECT_LT(lstrcmp_num("9",
                        "\x82\x50"
                        "0"),
            0);
  EXPECT_NE(lstrcmp_num(u"1", u"１"), 0);
  EXPECT_EQ(lstrcmp_num(static_cast<const char*>(nullptr), ""), 0);
}

TEST(CharCount, CountsWholeCharacters) {
  EXPECT_EQ(GetCharCount("a\x83\x5c\x83", -1), 3);
  EXPECT_EQ(GetCharCount("\x81\x81\x81", -1), 2);
  EXPECT_EQ(GetCharCount("\x81\x40", 1), 1);
  EXPECT_EQ(GetCharCount("a\0b", 3), 3);
  EXPECT_EQ(GetCharCount(u"a\U00020000\u3042", -1), 3);
  EXPECT_EQ(GetCharCount(u"\U00020000", 1), 1);
  const char16_t halves[] = {0xDC00, 0xD800, 0xD800, 0xDC00, 0xD800};
  EXPECT_EQ(GetCharCount(halves, 5), 4);
  EXPECT_EQ(GetCharCount(static_cast<const char*>(nullptr), -1), 0);
}

}  // namespace
}  // namespace lumr
