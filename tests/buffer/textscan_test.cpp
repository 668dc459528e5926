#include "lumrmisc/buffer/textscan.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <string>
#include <vector>

namespace lumr {
namespace {

using namespace std::string_literals;

template <class Unit>
int At(const Unit* found, const Unit* text) {
  return found == nullptr ? -1 : static_cast<int>(found - text);
}

TEST(TextScan, TellsTwoByteCharacters) {
  const char text[] = "\x82\xa0\x82";
  for (int pos = -1; pos < 4; ++pos) EXPECT_EQ(IsTLead(text, pos, 3), pos == 0) << pos;
  EXPECT_EQ(IsTLead(text, 0, 1) + IsTLead(text, 0x7FFFFFFF, 3) + IsTLead(nullptr, 0, 3), 0);
  EXPECT_EQ(IsTLead(text, 0, -1) - IsTLead(text, 2, -1), 1);
}

TEST(TextScan, TellsPlainAscii) {
  for (unsigned byte = 0; byte < 256; ++byte) {
    const char narrow[] = {'a', static_cast<char>(byte)};
    const char16_t wide[] = {u'a', static_cast<char16_t>(byte)};
    const int expected = !((byte >= 9 && byte <= 13) || (byte >= 0x20 && byte <= 0x7E));
    EXPECT_EQ(IsNotAsciiText(narrow, 2), expected) << byte;
    EXPECT_EQ(IsNotAsciiText(wide, 2), expected) << byte;
  }
  EXPECT_EQ(IsNotAsciiText(u"a\u0141", -1), 1);
  EXPECT_EQ(IsNotAsciiText("a\0\x80", -1), 0);
  EXPECT_EQ(IsNotAsciiText(static_cast<const char*>(nullptr), 5), 0);
}

// The result of a skipping function and, behind a point, the position.
template <class Unit>
std::string Skip(int (&skip)(const Unit*, int, int&), const Unit* text, int length, int pos) {
  const int result = skip(text, length, pos);
  return std::to_string(result) + '.' + std::to_string(pos);
}

TEST(TextScan, SkipsSpace) {
  const struct {
    const char* text;
    int length, pos;
    const char *space, *notSpace;
  } cases[] = {{"  \x82\xa0x y", -1, 0, "1.4", "1.0"},
               {" \t\r\n\v\f", -1, 0, "0.6", "1.0"},
               {"a\x82\xa0 ", -1, 1, "0.4", "1.3"},
               {"\x82", 1, 0, "1.0", "0.1"},
               {" \0 ", 3, 0, "1.1", "1.0"},
               {" x", 1, 0, "0.1", "1.0"},
               {"x", -1, 2, "0.2", "0.2"},
               {"x", -1, -1, "0.-1", "0.-1"},
               {nullptr, -1, 0, "0.0", "0.0"}};
  for (const auto& c : cases) {
    EXPECT_EQ(Skip<char>(SkipSpace, c.text, c.length, c.pos), c.space) << &c - cases;
    EXPECT_EQ(Skip<char>(SkipNotSpace, c.text, c.length, c.pos), c.notSpace) << &c - cases;
  }
  EXPECT_EQ(Skip<char16_t>(SkipSpace, u" \u3000\u0085あ", -1, 0), "1.3");
  EXPECT_EQ(Skip<char16_t>(SkipNotSpace, u" \u3000\u0085あ", 4, 3), "0.4");
}

TEST(TextScan, FindsSubstrings) {
  const struct {
    const char* text;
    int textLen;
    const char* word;
    int wordLen, ignoreCase, first, last;
  } cases[] = {{"aaa", -1, "aa", -1, 0, 0, 1},
               {"\x83\x41\x83\x42", -1, "\x41\x83", -1, 0, -1, -1},
               {"\x83\x41\x41", -1, "\x41", -1, 0, 2, 2},
               {"\x82\x60\x82\x81", -1, "\x82\x81", -1, 1, 0, 2},  // full-width letters
               {"xABab", -1, "ab", -1, 0, 3, 3},
               {"xABab", -1, "ab", -1, 1, 1, 3},
               {"abab", 3, "ab", 2, 0, 0, 0},
               {"a\0ab", 4, "ab", -1, 0, 2, 2},
               {"ab", -1, "", -1, 0, 0, 2},  // as the C library has it
               {"ab", -1, "", -1, 1, -1, -1},
               {"ab", -1, "x", 0, 0, -1, -1},
               {"", -1, "a", -1, 0, -1, -1},
               {nullptr, -1, "", -1, 0, -1, -1},
               {"a", -1, nullptr, -1, 0, -1, -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    EXPECT_EQ(At(mbsnnstr(c.text, c.textLen, c.word, c.wordLen, c.ignoreCase), c.text), c.first);
    EXPECT_EQ(At(mbsrnnstr(c.text, c.textLen, c.word, c.wordLen, c.ignoreCase), c.text), c.last);
    if (c.text == nullptr || c.word == nullptr || *c.text < 0) continue;
    const auto widen = [](const char* s, int length) {
      return std::u16string(s, length < 0 ? s + std::strlen(s) : s + length);
    };
    const std::u16string text = widen(c.text, c.textLen), word = widen(c.word, c.wordLen);
    const auto find = [&](auto function) {
      return At(function(text.data(), c.textLen, word.data(), c.wordLen, c.ignoreCase),
                text.data());
    };
    EXPECT_EQ(find(wcsnnstr), c.first);
    EXPECT_EQ(find(wcsrnnstr), c.last);
  }
}

TEST(TextScan, TellsPrefixes) {
  const struct {
    const char* text;
    int textLen;
    const char* prefix;
    int prefixLen, ignoreCase, expected;
  } cases[] = {
      {nullptr, -1, nullptr, -1, 0, 1}, {nullptr, -1, "", -1, 0, 1},
      {nullptr, -1, "a", -1, 0, 0},     {"ab", -1, "a", -1, 0, 1},
      {"ab", -1, "A", -1, 0, 0},        {"ab", -1, "A", -1, 1, 1},
      {"a", -1, "ab", -1, 0, 0},        {"a", -1, "ab", 1, 0, 1},
      {"ab", 1, "ab", -1, 0, 0},        {"\x83\x41", -1, "\x83\x61", -1, 1, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    EXPECT_EQ(ismbsnnstart(c.text, c.textLen, c.prefix, c.prefixLen, c.ignoreCase), c.expected);
  }
  EXPECT_EQ(iswcsnnstart(u"Äb", -1, u"ä", -1, 1), 1);
  EXPECT_EQ(iswcsnnstart(u"Äb", -1, u"ä", -1, 0), 0);
}

// The rule as it is told, a star trying its rest at every byte.
bool MatchesByRecursion(const char* text, const char* pattern) {
  for (; *text != '\0'; ++text) {
    if (*pattern == '\0') return false;
    if (*pattern == '*') {
      if (pattern[1] == '\0') return true;
      if (std::tolower(*text) == std::tolower(pattern[1]) &&
          MatchesByRecursion(text, pattern + 1)) {
        return true;
      }
    } else if (*pattern == '?' || std::tolower(*text) == std::tolower(*pattern)) {
      ++pattern;
    } else {
      return false;
    }
  }
  return *pattern == '\0' || std::strcmp(pattern, "*") == 0;
}

std::vector<std::string> AllTexts(std::string_view alphabet, std::size_t longest) {
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; i < texts.size() && texts[i].size() < longest; ++i) {
    for (const char c : alphabet) texts.push_back(texts[i] + c);
  }
  return texts;
}

TEST(TextScan, MatchesWildcards) {
  const auto texts = AllTexts("aB*?", 5);
  const auto patterns = AllTexts("Ab*?", 5);
  for (const std::string& text : texts) {
    for (const std::string& pattern : patterns) {
      ASSERT_EQ(wildicmp(text.c_str(), pattern.c_str()) == 0,
                MatchesByRecursion(text.c_str(), pattern.c_str()))
          << text << " with " << pattern;
    }
  }
  EXPECT_EQ(wildicmp(nullptr, "*") + wildicmp(nullptr, nullptr), 0);
  const std::string a(10000, 'a');
  EXPECT_EQ(wildicmp(a.c_str(), "*a*a*a*a*b"), 1);
  EXPECT_EQ(wildicmp((a + "b").c_str(), "*a*a*a*a*b"), 0);
  EXPECT_EQ(wildicmp(a.c_str(), ('*' + a.substr(5000) + 'b').c_str()), 1);
}

TEST(TextScan, TellsLettersAndDigits) {
  for (int unit = 0; unit < 0x10000; ++unit) {
    const auto isHalfWidth = [](int c) { return c >= 0 && c < 0x80 && std::isalnum(c) != 0; };
    const char16_t c = static_cast<char16_t>(unit);
    ASSERT_EQ(iswalnumH(c), isHalfWidth(unit)) << unit;
    ASSERT_EQ(iswalnumZ(c), isHalfWidth(unit - 0xFEE0)) << unit;
    ASSERT_EQ(iswalnumHZ(c), iswalnumH(c) | iswalnumZ(c)) << unit;
  }
}

TEST(TextScan, LooksUpStrings) {
  const CStringArray narrow = {"b", "\x83\x41", "A", "a", ""};
  EXPECT_EQ(LookupStringArray(narrow, "a", 0), 3);
  EXPECT_EQ(LookupStringArray(narrow, "a", 1), 2);
  EXPECT_EQ(LookupStringArray(narrow, "\x83\x61", 1), -1);
  EXPECT_EQ(LookupStringArray(narrow, nullptr, 0), 4);
  EXPECT_EQ(LookupStringArray(CStringArray(), "", 0), -1);
  const CArray<CStringW> wide = {u"ab", u"Ä"};
  EXPECT_EQ(LookupStringArray(wide, u"ä", 1), 1);
  EXPECT_EQ(LookupStringArray(wide, u"ä", 0), -1);
}

}  // namespace
}  // namespace lumr
