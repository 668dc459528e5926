#include "lumrmisc/charset/convert.h"

#include <gtest/gtest.h>

#include "charset/convert_text.h"

namespace lumr {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

TEST(ConvertToOtherCodeType2, FollowsTheRules) {
  const struct {
    const char* what;
    CodeType from;
    std::string_view text;
    CodeType to;
    int emptyFallback;
    std::string_view result;
    long status;
  } cases[] = {
      {"nothing", CT_SJIS, "", CT_UNICODE, 0, "", 0},
      {"equal types copy", CT_SJIS, "\x82\x80\xFF\0"sv, CT_SJIS, 0, "\x82\x80\xFF\0"sv, 0},
      {"big-endian is swapped", CT_UNICODE, "\xFE\xFF\x30\x42\x30"sv, CT_UNICODE, 0, "\x42\x30", 0},
      {"a mark alone", CT_UNICODE, "\xFE\xFF", CT_UNICODE, 0, "", 0},
      {"one mark is dropped", CT_UNICODE, "\xFF\xFE\xFF\xFE\x42", CT_UNICODE, 0, "\xFF\xFE\x42", 0},
      {"half a mark", CT_UNICODE, "\xFE", CT_UNICODE, 0, "\xFE", 0},
      {"a mark to a code page", CT_UNICODE, "\xFF\xFE\x42\x30", CT_SJIS, 0, "?\x82\xA0", 1},
      {"an odd byte", CT_UNICODE, "a\0b"sv, CT_SJIS, 0, "a", 1},
      {"escapes to Shift_JIS", CT_JIS, "\x1B$B$\"\x1B(B", CT_SJIS, 0, "\x82\xA0", 0},
      {"Shift_JIS to escapes", CT_SJIS, "\x82\xA0", CT_JIS, 0, "\x1B$B$\"\x1B(B", 0},
      {"escapes to EUC-JP", CT_JIS, "\x1B$B$\"", CT_EUC, 0, "\xA4\xA2", 0},
      {"escapes to UTF-16", CT_JIS, "\x1B$B$\"\x1B(B", CT_UNICODE, 0, "\x42\x30", 0},
      {"UTF-16 to EUC-JP", CT_UNICODE, "\x42\x30", CT_EUC, 0, "\xA4\xA2", 0},
      {"UTF-8 to EUC-JP", CT_UTF8, "\xE3\x81\x82", CT_EUC, 0, "\xA4\xA2", 0},
      {"no cell in JIS is no status", CT_SJIS, "\xFA\x40", CT_EUC, 0, "\xFA\x40", 0},
      {"ASCII is of the Japanese page", CT_ASCII, "\x82\xA0", CT_SJIS, 0, "\x82\xA0", 0},
      {"unknown is of the ANSI page", CT_UNKNOWN, "\x82\xA0", CT_UNICODE, 0, "\x42\x30", 0},
      {"so is a number of no type", static_cast<CodeType>(77), "\x82\xA0", CT_UNICODE, 0,
       "\x42\x30", 0},
      {"to the ANSI page", CT_UTF8, "\xE3\x81\x82", CT_UNKNOWN, 0, "\x82\xA0", 0},
      {"a mark of UTF-8", CT_UTF8, "\xEF\xBB\xBF\x61", CT_UNICODE, 0, "a\0"sv, 0},
      {"a mark on the way", CT_UTF8, "\xEF\xBB\xBF\x61", CT_SJIS, 0, "a", 0},
      {"nothing but a mark", CT_UTF8, "\xEF\xBB\xBF", CT_SJIS, 0, "", 0},
      {"a second mark", CT_UTF8, "\xEF\xBB\xBF\xEF\xBB\xBF", CT_UNICODE, 0, "\xFF\xFE", 0},
      {"replaced", CT_UTF8, "a\xEA\xB0\x80z", CT_SJIS, 0, "a?z", 1},
      {"dropped", CT_UTF8, "a\xEA\xB0\x80z", CT_SJIS, 1, "az", 1},
      {"a look-alike", CT_UTF8, "\xE3\x80\x9C", CT_SJIS, 0, "\x81\x60", 0},
      {"a look-alike of the table", CT_UTF8, "\xC3\xA9", CT_SJIS, 0, "e", 0},
      {"a bad pair", CT_SJIS, "\x81\xAD", CT_UNICODE, 0, "\xFB\x30", 1},
      {"a byte the strict table lacks", CT_SJIS, "\xFD", CT_UNICODE, 0, "\xF1\xF8", 1},
      {"zero bytes stay", CT_UTF8, "a\0z"sv, CT_SJIS, 1, "a\0z"sv, 0},
      {"zero bytes go with what is dropped", CT_UTF8, "a\0\xEA\xB0\x80z"sv, CT_SJIS, 1, "az", 1},
      {"zero bytes go before the escapes", CT_UTF8, "\xE3\x81\x82\0\xE3\x81\x84\xEA\xB0\x80"sv,
       CT_JIS, 1, "\x1B$B$\"$$\x1B(B", 1},
      {"with a question mark they stay", CT_UTF8, "\0\xEA\xB0\x80"sv, CT_SJIS, 0, "\0?"sv, 1},
      {"what decoding replaced drops none", CT_SJIS, "\0\x81\xAD"sv, CT_UTF8, 1, "\0\xE3\x83\xBB"sv,
       1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const Conversion converted = Converted(c.from, c.text, c.to, c.emptyFallback);
    EXPECT_EQ(Shown(converted.bytes), Shown(c.result));
    EXPECT_EQ(converted.status, c.status);
  }
}

TEST(ConvertToOtherCodeType2, EmptiesForBadArguments) {
  for (const auto& [src, len] : kNoTexts) {
    for (const CodeType to : {CT_SJIS, CT_UNICODE, CT_JIS}) {
      CBuffer out("left over");
      EXPECT_EQ(ConvertToOtherCodeType2(CT_SJIS, src, len, to, out, 0), 0);
      EXPECT_TRUE(out.IsEmpty()) << to;
    }
  }
}

TEST(ConvertToOtherCodePage2, FollowsTheRules) {
  const struct {
    const char* what;
    unsigned from;
    std::string_view text;
    unsigned to;
    std::string_view result;
    long status;
  } cases[] = {
      {"through UTF-16", 932, "\x82\xA0", 65001, "\xE3\x81\x82", 0},
      {"equal numbers copy", 932, "\x81\xAD", 932, "\x81\xAD", 0},
      {"unknown numbers too", 12345, "\x82\xA0", 12345, "\x82\xA0", 0},
      {"0 is the ANSI page", 0, "\x82\xA0", 65001, "\xE3\x81\x82", 0},
      {"an unsupported source is 1252", 12345, "\xE9", 65001, "\xC3\xA9", 1},
      {"an unsupported target is 1252", 65001, "\xC3\xA9", 12345, "\xE9", 1},
      {"UTF-16 is appended", 932, "\x82\xA0", 1200, "before\x42\x30", 0},
      {"nothing empties then too", 932, "", 1200, "", 0},
      {"a mark alone is nothing", 65001, "\xEF\xBB\xBF", 1200, "", 0},
      {"a copy of UTF-16 replaces", 1200, "\xFF\xFE", 1200, "\xFF\xFE", 0},
      {"UTF-16 keeps its mark", 1200, "\xFF\xFE", 65001, "\xEF\xBB\xBF", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CBuffer out("before");
    EXPECT_EQ(ConvertToOtherCodePage2(c.from, c.text, c.to, out), c.status);
    EXPECT_EQ(Shown(out.Bytes()), Shown(c.result));
  }
}

TEST(ConvertToWcs, ReadsTheEditForm) {
  const struct {
    CodeType codeType;
    std::string_view text, result;
  } cases[] = {
      {CT_SJIS, "\x82\xA0", "\x42\x30"},
      {CT_JIS, "\x82\xA0", "\x42\x30"},
      {CT_JIS, "\x1B", "\x1B\0"sv},
      {CT_EUC, "\xA4", "\x64\xFF"},
      {CT_KOI8R, "\xC1", "\x30\x04"},
      {CT_UNKNOWN, "\x82\xA0\x82", "\x82\xA0\x82"},
      {CT_UNICODE, "\xFF\xFE\x42\x30", "\xFF\xFE\x42\x30"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Shown(c.text));
    CBuffer out("left over");
    EXPECT_EQ(ConvertToWcs(c.codeType, c.text.data(), static_cast<int>(c.text.size()), out), 0);
    EXPECT_EQ(Shown(out.Bytes()), Shown(c.result));
    const CStringW units = ConvertToWcs(c.codeType, c.text.data(), static_cast<int>(c.text.size()));
    EXPECT_EQ(units, out.Units());
  }
}

TEST(ConvertToEditable, GoesToTheEditForm) {
  const struct {
    CodeType codeType;
    std::string_view text;
    int result;
    std::string_view edited, narrow;
    CodeType narrowType;
  } cases[] = {
      {CT_JIS, "\x1B$B$\"\x1B(B", 1, "\x82\xA0", "\x82\xA0", CT_SJIS},
      {CT_KOI8R, "\xC1", 1, "\xE0", "\xE0", CT_WIN1251},
      {CT_ASCII, "a", 1, "a", "a", CT_ASCII},
      {CT_UTF8, "\xE3\x81\x82", 1, "\x42\x30", "\x82\xA0", CT_SJIS},
      {CT_UTF8, "a\xEA\xB0\x80", 1, "a\0\0\xAC"sv, "a\xB0\xA1", CT_KSC5601},
      {CT_UTF7, "\xC3", 1, "\xFD\xFF", "?", CT_SJIS},
      {CT_UNICODE, "\xE9\0"sv, 1, "\xE9\0"sv, "e", CT_SJIS},
      {CT_UNKNOWN, "a", 0, "", "", CT_UNKNOWN},
      {CT_SJIS, "", 1, "", "", CT_SJIS},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.codeType);
    const auto size = static_cast<int>(c.text.size());
    CBuffer out("left over");
    EXPECT_EQ(ConvertToEditable(c.codeType, c.text.data(), size, out), c.result);
    EXPECT_EQ(Shown(out.Bytes()), Shown(c.edited));
    CodeType codeType = c.codeType;
    EXPECT_EQ(ConvertToEditableMbs(codeType, c.text.data(), size, out, 0), c.result);
    EXPECT_EQ(Shown(out.Bytes()), Shown(c.narrow));
    EXPECT_EQ(codeType, c.narrowType);
    codeType = c.codeType;
    CStringA string = "left over";
    ConvertToEditableMbs(codeType, c.text.data(), size, string, 0);
    EXPECT_EQ(Shown(string), Shown(c.narrow));
  }
}

TEST(ConvertToMbsIfWcs, CopiesNarrowTextAndConvertsWide) {
  CodeType codeType = CT_JIS;
  CBuffer out;
  EXPECT_EQ(ConvertToMbsIfWcs(codeType, "\x1B", 1, out, 0), 0);
  EXPECT_EQ(codeType, CT_JIS);
  EXPECT_EQ(out.Bytes(), "\x1B");

  CStringA string;
  codeType = CT_UTF8;
  EXPECT_EQ(ConvertToMbsIfWcs(codeType, "\x42\x30\0\xAC", 4, string, 1), 1);
  EXPECT_EQ(codeType, CT_SJIS);
  EXPECT_EQ(Shown(string), Shown("\x82\xA0"));
}

TEST(ConvertToCTEditable, TakesShiftJisAndUtf16ToAnEditForm) {
  const struct {
    CodeType codeType;
    std::string_view fromSJis, fromUtf16;
  } cases[] = {
      {CT_UTF8, "\x42\x30\x14\x04"sv, "\x42\x30\x14\x04"sv},
      {CT_EUC, "\x82\xA0\x84\x44", "\x82\xA0\x84\x44"},
      {CT_ASCII, "\x82\xA0\x84\x44", "\x82\xA0\x84\x44"},
      {CT_KOI8R, "?\xC4", "?\xC4"},
  };
  const CBuffer sjis("\x82\xA0\x84\x44");
  const CBuffer utf16("\x42\x30\x14\x04");
  for (const auto& c : cases) {
    SCOPED_TRACE(c.codeType);
    CBuffer out("left over");
    const long loses = c.codeType == CT_KOI8R;
    EXPECT_EQ(ConvertSjisToCTEditable(sjis, c.codeType, out, 0), loses);
    EXPECT_EQ(Shown(out.Bytes()), Shown(c.fromSJis));
    EXPECT_EQ(ConvertUnicodeToCTEditable(utf16, c.codeType, out, 0), loses);
    EXPECT_EQ(Shown(out.Bytes()), Shown(c.fromUtf16));
  }
}

TEST(UTF16BE2LE, SwapsPairs) {
  CBuffer out("left over");
  UTF16BE2LE("\0AB", 3, out);
  EXPECT_EQ(out.Bytes(), "A\0"sv);
  UTF16BE2LE("\0A", 1, out);
  EXPECT_TRUE(out.IsEmpty());
  for (const auto& [text, length] : kNoTexts) {
    out = "left over";
    UTF16BE2LE(text, length, out);
    EXPECT_TRUE(out.IsEmpty()) << length;
  }
}

TEST(AddDifferentCodeText, GoesToTheCommonType) {
  const struct {
    CodeType curType;
    std::string_view cur;
    CodeType addType;
    std::string_view add;
    CodeType commonType;
    std::string_view result;
  } cases[] = {
      {CT_SJIS, "\x82\xA0", CT_SJIS, "a", CT_SJIS, "\x82\xA0\x61"},
      {CT_SJIS, "\x82\xA0", CT_JIS, "\x82\xA0", CT_JIS, "\x82\xA0\x82\xA0"},
      {CT_ASCII, "a", CT_SJIS, "\x82\xA0", CT_SJIS, "a\x82\xA0"},
      {CT_SJIS, "\x82\xA0", CT_GB2312, "\xB0\xA1", CT_UTF8, "\x42\x30\x4A\x55"},
      {CT_UTF8, "\x42\x30", CT_SJIS, "\x82\xA0", CT_UTF8, "\x42\x30\x42\x30"},
      {CT_UNKNOWN, "", CT_KOI8R, "\xE0", CT_KOI8R, "\xE0"},
      {CT_WIN1251, "\xE0", CT_UTF8, "", CT_UTF8, "\x30\x04"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.curType) + " and " + std::to_string(c.addType));
    CodeType codeType = c.curType;
    CBuffer cur;
    cur = c.cur;
    CBuffer add;
    add = c.add;
    EXPECT_EQ(AddDifferentCodeText(codeType, cur, c.addType, add), 0);
    EXPECT_EQ(codeType, c.commonType);
    EXPECT_EQ(Shown(cur.Bytes()), Shown(c.result));
  }
}

TEST(ConvToPriorCodeType, ConvertsBetweenEditForms) {
  CBuffer text("\x82\xA0");
  ConvToPriorCodeType(CT_JIS, CT_UTF8, text);
  EXPECT_EQ(Shown(text.Bytes()), Shown("\x42\x30"));
  ConvToPriorCodeType(CT_UNICODE, CT_KOI8R, text);
  EXPECT_EQ(text.Bytes(), "?");
}

}  // namespace
}  // namespace lumr
