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
  const struct {
    const char* text;
    int pos, len, expected;
  } cases[] = {
      {text, 0, 3, 1},          {text, 1, 3, 0},  {text, 2, 3, 0},
      {text, 0, 1, 0},          {text, 0, -1, 1}, {text, 2, -1, 0},
      {text, 0x7FFFFFFF, 3, 0}, {text, -1, 3, 0}, {nullptr, 0, 3, 0},
  };
  for (const auto& c : cases) EXPECT_EQ(IsTLead(c.text, c.pos, c.len), c.expected) << c.pos;
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

TEST(TextScan, SkipsSpace) {
  const struct {
    const char* text;
    int len, start, space, spacePos, notSpace, notSpacePos;
  } cases[] = {
      {"  \x82\xa0x y", -1, 0, 1, 4, 1, 0},
      {" \t\r\n\v\f", -1, 0, 0, 6, 1, 0},
      {"a\x82\xa0 ", -1, 1, 0, 4, 1, 3},
      {"\x82", 1, 0, 1, 0, 0, 1},
      {" \0 ", 3, 0, 1, 1, 1, 0},
      {" x", 1, 0, 0, 1, 1, 0},
      {"x", -1, 2, 0, 2, 0, 2},
      {"x", -1, -1, 0, -1, 0, -1},
      {nullptr, -1, 0, 0, 0, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    int pos = c.start;
    EXPECT_EQ(SkipSpace(c.text, c.len, pos), c.space);
    EXPECT_EQ(pos, c.spacePos);
    pos = c.start;
    EXPECT_EQ(SkipNotSpace(c.text, c.len, pos), c.notSpace);
    EXPECT_EQ(pos, c.notSpacePos);
  }
  int pos = 0;
  EXPECT_EQ(SkipSpace(u" \u3000\u0085あ", -1, pos), 1);
  EXPECT_EQ(pos, 3);
  EXPECT_EQ(SkipNotSpace(u" \u3000\u0085あ", 4, pos), 0);
  EXPECT_EQ(pos, 4);
}

TEST(TextScan, FindsSubstrings) {
  const struct {
    const char* what;
    const char* text;
    int textLen;
    const char* word;
    int wordLen, ignoreCase, first, last;
  } cases[] = {
      {"overlapping", "aaa", -1, "aa", -1, 0, 0, 1},
      {"across a border", "\x83\x41\x83\x42", -1, "\x41\x83", -1, 0, -1, -1},
      {"on a border", "\x83\x41\x41", -1, "\x41", -1, 0, 2, 2},
      {"case", "xABab", -1, "ab", -1, 0, 3, 3},
      {"no case", "xABab", -1, "ab", -1, 1, 1, 3},
      {"full-width letters", "\x82\x60\x82\x81", -1, "\x82\x81", -1, 1, 0, 2},
      {"counted", "abab", 3, "ab", 2, 0, 0, 0},
      {"NUL in counted text", "a\0ab", 4, "ab", -1, 0, 2, 2},
      {"empty word as the C library has it", "ab", -1, "", -1, 0, 0, 2},
      {"empty word without case", "ab", -1, "", -1, 1, -1, -1},
      {"empty counted word", "ab", -1, "x", 0, 0, -1, -1},
      {"empty text", "", -1, "a", -1, 0, -1, -1},
      {"null text", nullptr, -1, "", -1, 0, -1, -1},
      {"null word", "a", -1, nullptr, -1, 0, -1, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(At(mbsnnstr(c.text, c.textLen, c.word, c.wordLen, c.ignoreCase), c.text), c.first);
    EXPECT_EQ(At(mbsrnnstr(c.text, c.textLen, c.word, c.wordLen, c.ignoreCase), c.text), c.last);
    if (c.ignoreCase != 0 || c.text == nullptr || c.word == nullptr) continue;
    if (std::strpbrk(c.text, "\x82\x83") != nullptr) continue;
    const auto wider = [](const char* s, int len) {
      return len < 0 ? std::u16string(s, s + std::strlen(s)) : std::u16string(s, s + len);
    };
    const std::u16string text = wider(c.text, c.textLen), word = wider(c.word, c.wordLen);
    EXPECT_EQ(At(wcsnnstr(text.data(), c.textLen, word.data(), c.wordLen, 0), text.data()),
              c.first);
    EXPECT_EQ(At(wcsrnnstr(text.data(), c.textLen, word.data(), c.wordLen, 0), text.data()),
              c.last);
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
  for (unsigned unit = 0; unit < 0x10000; ++unit) {
    const auto isIn = [unit](const char* ranges, unsigned offset) {
      for (; *ranges != '\0'; ranges += 2) {
        const auto byte = [&](int i) { return static_cast<unsigned char>(ranges[i]) + offset; };
        if (unit >= byte(0) && unit <= byte(1)) return 1;
      }
      return 0;
    };
    const char16_t c = static_cast<char16_t>(unit);
    ASSERT_EQ(iswalnumH(c), isIn("09AZaz", 0)) << unit;
    ASSERT_EQ(iswalnumZ(c), isIn("\x10\x19\x21\x3a\x41\x5a", 0xFF00)) << unit;
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
