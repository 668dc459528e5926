#include "lumrmisc/charset/linescan.h"

#include <gtest/gtest.h>

#include <random>

#include "lumrmisc/platform/mbcs.h"
#include "support/bytes.h"

namespace lumr {
namespace {

using namespace std::string_literals;

std::string WideOf(std::string_view text) {
  std::string wide;
  for (const char c : text) (wide += c) += '\0';
  return wide;
}

// Each line in brackets, each break as r, n or rn.
std::string LinesOf(std::string_view text, CodeType codeType, std::size_t shift) {
  const ExactCopy placed(text, shift);
  std::string lines;
  const char* pos = placed.Data();
  const char* const end = pos + placed.Size();
  const char* lineEnd = nullptr;
  for (int breakLen = 0; GetNextLine(pos, static_cast<int>(end - pos), codeType, lineEnd, breakLen);
       pos = lineEnd + breakLen) {
    lines += '[' + std::string(pos, lineEnd) + ']';
    for (int i = 0; i < breakLen; ++i)
      lines += lineEnd[i] == '\r' ? "r" : lineEnd[i] == '\n' ? "n" : "";
  }
  return lines;
}

TEST(GetNextLine, CutsLines) {
  const struct {
    std::string text, lines;
  } cases[] = {
      {"", ""},
      {"ab", "[ab]"},
      {"a\r\nb", "[a]rn[b]"},
      {"a\rb", "[a]r[b]"},
      {"a\nb\n", "[a]n[b]n"},
      {"\r\r\n\n", "[]r[]rn[]n"},
      {"a\r", "[a]r"},
      {"12345678\r", "[12345678]r"},
      {"1234567\r\n1234567\r1234567\n\n", "[1234567]rn[1234567]r[1234567]n[]n"},
      {"\x0B\x0C\x0E\x09"
       "abcd\x8D\x8A\n",
       "[\x0B\x0C\x0E\x09"
       "abcd\x8D\x8A]n"},
      {"a\0b\n"s, "[a\0b]n"s},
      {"\x82\n\x82\r\n", "[\x82]n[\x82]rn"},  // half a character does not take the break along
  };
  for (const auto& c : cases) {
    for (std::size_t shift = 0; shift < 4; ++shift) {
      SCOPED_TRACE(c.text + " at " + std::to_string(shift));
      for (const CodeType codeType : {CT_SJIS, CT_ASCII, CT_UNKNOWN, CT_GB2312, CT_JIS}) {
        EXPECT_EQ(LinesOf(c.text, codeType, shift), c.lines);
      }
      for (const CodeType codeType : {CT_UNICODE, CT_UTF8, CT_UTF7}) {
        std::string wideLines;
        for (const char byte : c.lines) {
          wideLines += byte;
          if (std::string_view("[]rn").find(byte) == std::string_view::npos) wideLines += '\0';
        }
        EXPECT_EQ(LinesOf(WideOf(c.text), codeType, shift), wideLines);
      }
    }
  }
}

TEST(GetNextLine, WideTextByUnits) {
  const struct {
    std::string text, lines;
  } cases[] = {
      {"\x0D\x0A\x0A\x0D\x41\x0A", "[\x0D\x0A\x0A\x0D\x41\x0A]"},  // U+0A0D, U+0D0A, U+0A41
      {"\0\x0D\0\x0A\x0A\0"s, "[\0\x0D\0\x0A]n"s},
      {"\x0D\0\x0A"s, "[]r[\x0A]"},  // an odd last byte
      {"a", "[a]"},
  };
  for (const auto& c : cases) EXPECT_EQ(LinesOf(c.text, CT_UNICODE, 1), c.lines);
}

TEST(GetNextLine, RefusesEmptyTexts) {
  const char* lineEnd = "before";
  int breakLen = 7;
  EXPECT_EQ(GetNextLine("a", 0, CT_SJIS, lineEnd, breakLen), 0);
  EXPECT_EQ(GetNextLine("a", -1, CT_UNICODE, lineEnd, breakLen), 0);
  EXPECT_EQ(GetNextLine(nullptr, 1, CT_SJIS, lineEnd, breakLen), 0);
  EXPECT_STREQ(lineEnd, "before");
  EXPECT_EQ(breakLen, 7);
}

// The rule as it is said: characters are stepped over one by one. No page has CR or LF as a
// second byte, so the search for the two bytes alone must give the same.
TEST(GetNextLine, AgreesWithStepping) {
  constexpr unsigned kSeed = 20220;
  std::mt19937 random(kSeed);
  constexpr std::string_view kBytes = "\r\n\r\na\x81\x82\xA0\xE0\xFC\x40\x7F\x8D\x0E";
  for (const CodeType codeType : {CT_SJIS, CT_GB2312, CT_BIG5, CT_KSC5601, CT_WIN1252}) {
    const MbcsPage& page = *FindMbcsPage(CharSetCode2CodePage(codeType));
    for (int run = 0; run < 2000; ++run) {
      std::string text(1 + random() % 24, '\0');
      for (char& byte : text) byte = kBytes[random() % kBytes.size()];
      std::size_t pos = 0;
      while (pos < text.size() && text[pos] != '\r' && text[pos] != '\n') {
        pos += page.CharLength(text, pos);
      }
      const char* lineEnd = nullptr;
      int breakLen = 0;
      ASSERT_EQ(
          GetNextLine(text.data(), static_cast<int>(text.size()), codeType, lineEnd, breakLen), 1);
      ASSERT_EQ(static_cast<std::size_t>(lineEnd - text.data()), pos)
          << "seed " << kSeed << ", run " << run;
    }
  }
}

TEST(Txtnnstr, SearchesInTheCodeType) {
  const struct {
    const char* what;
    CodeType codeType;
    std::string text, word;
    int ignoreCase, first, last;
  } cases[] = {
      {"bytes", CT_ASCII, "abcabc", "bc", 0, 1, 4},
      {"overlapping", CT_SJIS, "aaa", "aa", 0, 0, 1},
      {"case", CT_SJIS, "xABCabc", "abc", 0, 4, 4},
      {"no case", CT_SJIS, "xABCabc", "abc", 1, 1, 4},
      {"not on a trail byte", CT_SJIS,
       "\x83\x41"
       "bAb",
       "Ab", 0, 3, 3},
      {"Windows Latin has no pairs", CT_ISO8859_1,
       "\x83\x41"
       "bAb",
       "Ab", 0, 1, 3},
      {"nor its own case in 932", CT_SJIS, "x\xC9", "\xE9", 1, -1, -1},
      {"but here", CT_ISO8859_1, "x\xC9", "\xE9", 1, 1, 1},
      {"Korean pairs", CT_EUCKR, "\xB0\xA1\xA2\xB0\xA1", "\xA1\xA2", 0, -1, -1},
      {"units", CT_UNICODE, "a\0b\0a\0"s, "a\0"s, 0, 0, 4},
      {"units, not bytes", CT_UTF8, "a\x30\x42\x30"s, "\x30\x42"s, 0, -1, -1},
      {"units without case", CT_UTF7, "\xC9\0"s, "\xE9\0"s, 1, 0, 0},
      {"odd last bytes", CT_UNICODE, "a\0b"s, "b\0x"s, 0, -1, -1},
      {"one byte is no unit", CT_UNICODE, "a\0"s, "a", 0, -1, -1},
      {"empty word", CT_SJIS, "a", "", 0, -1, -1},
  };
  for (const auto& c : cases) {
    for (std::size_t shift = 0; shift < 3; ++shift) {
      SCOPED_TRACE(c.what);
      const ExactCopy text(c.text, shift);
      const ExactCopy word(c.word, 1);
      const auto find = [&](int forward) {
        const char* const found = txtnnstr(c.codeType, forward, text.Data(), text.Size(),
                                           word.Data(), word.Size(), c.ignoreCase);
        return found == nullptr ? -1 : static_cast<int>(found - text.Data());
      };
      EXPECT_EQ(find(1), c.first);
      EXPECT_EQ(find(0), c.last);
      EXPECT_EQ(CurrentCodePage(), 932u);
    }
  }
  EXPECT_EQ(txtnnstr(CT_SJIS, 1, nullptr, 3, "a", 1, 0), nullptr);
  EXPECT_EQ(txtnnstr(CT_UNICODE, 0, "a\0", 2, nullptr, 2, 0), nullptr);
  const char16_t units[] = u"xyx";
  const char* const bytes = reinterpret_cast<const char*>(units);
  EXPECT_EQ(txtnnstr(CT_UNICODE, 0, bytes, -1, bytes, 2, 0), bytes + 4);
}

}  // namespace
}  // namespace lumr
