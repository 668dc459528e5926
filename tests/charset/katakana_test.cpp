// Half-width katakana and machine-dependent characters.
#include <gtest/gtest.h>

#include "lumrmisc/charset/japanese.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {
namespace {

std::string SJisOf(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) {
    const int code = EncodeUnit(932, unit, true);
    if (code > 0xFF) bytes += static_cast<char>(code / 256);
    bytes += static_cast<char>(code % 256);
  }
  return bytes;
}

// One rule for both widths: every row is tried as UTF-16 and as Shift_JIS, in a string and in a
// buffer.
void ExpectFullWidth(std::u16string_view text, std::u16string_view expected) {
  SCOPED_TRACE(SJisOf(text));
  const int changed = text != expected;
  CStringW wide(text);
  CStringA narrow = SJisOf(text);
  CBuffer buffer(narrow);
  EXPECT_EQ(KatakanaHanToZen(wide), changed);
  EXPECT_EQ(KatakanaHanToZen(narrow), changed);
  EXPECT_EQ(KatakanaHanToZen(buffer), changed);
  EXPECT_EQ(wide, expected);
  EXPECT_EQ(narrow, SJisOf(expected));
  EXPECT_EQ(buffer.Bytes(), SJisOf(expected));
}

TEST(KatakanaHanToZen, JoinsMarksAndKana) {
  const std::pair<std::u16string_view, std::u16string_view> cases[] = {
      {u"ｶﾞ", u"ガ"},
      {u"ｶ", u"カ"},
      {u"", u""},
      {u"abc カナ漢字", u"abc カナ漢字"},
      {u"ｶﾅabcﾊﾟﾋﾟ漢ﾋﾞ", u"カナabcパピ漢ビ"},
      {u"ﾊﾞｰﾊﾟｰ｡｢｣､･", u"バーパー。「」、・"},
      {u"ｳﾞｱﾞｶﾟﾅﾞ", u"ヴア゛カ゜ナ゛"},  // marks that join nothing
      {u"ｶﾞﾞﾞ", u"ガ゛゛"},
      {u"ﾞﾟ", u"゛゜"},
      {u"カﾞ", u"カ゛"},
      {u"ァァｧ", u"ァァァ"},  // 83 40: the second byte is no letter of its own
      {u"ソﾀ", u"ソタ"},
  };
  for (const auto& [text, expected] : cases) ExpectFullWidth(text, expected);
}

TEST(KatakanaHanToZen, OddBytes) {
  using namespace std::string_literals;
  const struct {
    std::string text, expected;
  } cases[] = {
      {"\x82", "\x82"},  // half a character
      {"\xB6\x82", "\x83\x4A\x82"},
      {"\x82\xB6\xDE", "\x82\xB6\x81\x4A"},  // a second byte, then a mark alone
      {"\0\xB6\0"s, "\0\x83\x4A\0"s},        // NUL is a character
      {"\x82\n\xB6", "\x82\n\x83\x4A"},      // no second byte, no pair
      {"\xE0\xB6\xF0\xB6", "\xE0\xB6\xF0\xB6"},
  };
  for (const auto& c : cases) {
    CBuffer buffer;
    buffer = c.text;
    EXPECT_EQ(KatakanaHanToZen(buffer), c.text != c.expected);
    EXPECT_EQ(buffer.Bytes(), c.expected);
  }
  // Chinese text has these bytes in its two-byte characters.
  ASSERT_TRUE(SetCurrentCodePage(936));
  CStringA chinese = "\xD6\xD0\xCE\xC4\xB6";
  EXPECT_EQ(FindHankakuKatakana(chinese.data(), 4), -1);
  EXPECT_EQ(FindHankakuKatakana(chinese.data(), 5), 4);
  SetCurrentCodePage(932);
}

TEST(HankakuKatakana, IsFoundAndMeasured) {
  const struct {
    std::string_view text;
    int found, length;
  } cases[] = {
      {"", -1, 0},
      {"abc", -1, 0},
      {"\xB1\xDF"
       "a",
       0, 2},
      {"\xA0\xE0", -1, 0},
      {"a\x83\xB1\xB1", 3, 0},
      {"\x83", -1, 0},
      {"\xA1", 0, 1},
      {"\xE0\xA1", -1, 0},
      {"\xDF\x83\xB1", 0, 1},
  };
  for (const auto& c : cases) {
    const int size = static_cast<int>(c.text.size());
    EXPECT_EQ(FindHankakuKatakana(c.text.data(), size), c.found) << c.text;
    EXPECT_EQ(GetHankakuKatakanaLen(c.text.data(), size), c.length) << c.text;
    EXPECT_EQ(IsHankakuKatakana(c.text.data()), c.found == 0) << c.text;
  }
  EXPECT_EQ(FindHankakuKatakana("\xB1", 0) + FindHankakuKatakana("\xB1", -1), -2);
  EXPECT_EQ(FindHankakuKatakana(nullptr, 1), -1);
  EXPECT_EQ(GetHankakuKatakanaLen("\xB1", -1) + GetHankakuKatakanaLen(nullptr, 1), 0);
  EXPECT_EQ(IsHankakuKatakana(nullptr), 0);
}

TEST(MachineDependChar, RangesEndWhereTheyShould) {
  const struct {
    int before, first, last, after;
  } ranges[] = {{0x873F, 0x8740, 0x879F, 0x87A0},
                {0xED3F, 0xED40, 0xEEFC, 0xEEFD},
                {0xF03F, 0xF040, 0xF9FC, 0xF9FD},
                {0xFA3F, 0xFA40, 0xFC4B, 0xFC4C}};
  const auto is = [](int value) {
    const char bytes[] = {static_cast<char>(value / 256), static_cast<char>(value % 256)};
    return IsMachineDependChar(bytes);
  };
  for (const auto& range : ranges) {
    EXPECT_EQ(
        is(range.before) * 1000 + is(range.first) * 100 + is(range.last) * 10 + is(range.after),
        110)
        << range.first;
  }
  EXPECT_EQ(is(0x889F) + IsMachineDependChar(nullptr) + IsMachineDependChar(""), 0);
}

TEST(MachineDependChar, IsFoundAndMeasured) {
  const struct {
    std::string_view text;
    int found, length;
  } cases[] = {
      {"", -1, 0},
      {"\x87", -1, 0},
      {"\x87\x40", 0, 2},
      {"a\x88\x9F\x87\x40\xFA\x40z", 3, 0},
      {"\x87\x40\xF0\x40\x88\x9F", 0, 4},
      {"\x87\x40\x87", 0, 2},
      {"\x88\x87\x40\x88\xED\x40", -1, 0},  // the bytes of one stand across a border
      {"\xB1\xED\x40", 1, 0},
  };
  for (const auto& c : cases) {
    const int size = static_cast<int>(c.text.size());
    EXPECT_EQ(FindMachineDependChar(c.text.data(), size), c.found) << c.text;
    EXPECT_EQ(GetMachineDependCharLen(c.text.data(), size), c.length) << c.text;
  }
  EXPECT_EQ(FindMachineDependChar("\x87\x40", -1) + FindMachineDependChar(nullptr, 2), -2);
  EXPECT_EQ(GetMachineDependCharLen("\x87\x40", 1) + GetMachineDependCharLen(nullptr, 2), 0);
}

}  // namespace
}  // namespace lumr
