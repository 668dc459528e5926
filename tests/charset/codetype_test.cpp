#include "lumrmisc/charset/codetype.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/messages.h"

namespace lumr {
namespace {

TEST(CodeTypeNames, AreFoundInAnyCase) {
  const struct {
    const char* name;
    CodeType exact, orDefault;
  } cases[] = {
      {"shift-jis", CT_SJIS, CT_SJIS},
      {"X-SJIS", CT_SJIS, CT_SJIS},
      {"ascii", CT_ASCII, CT_ASCII},
      {"ks_c_5601", CT_KSC5601, CT_KSC5601},
      {"Utf8", CT_UTF8, CT_UTF8},
      {"UNICODE", CT_UNICODE, CT_UNICODE},
      {"x-unknown", CT_UNKNOWN, CT_JIS},
      {"", CT_UNKNOWN, CT_JIS},
      {nullptr, CT_UNKNOWN, CT_JIS},
      {"UTF-8 ", CT_UNKNOWN, CT_JIS},
      {"UTF-", CT_UNKNOWN, CT_JIS},
      // The second byte of the last character is that of "c", the first one of "I" is not.
      {"ISO-2022-JP\x83\x63", CT_UNKNOWN, CT_JIS},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name == nullptr ? "null" : c.name);
    EXPECT_EQ(CharSetName2CodeExact(c.name), c.exact);
    EXPECT_EQ(CharSetName2Code(c.name), c.orDefault);
  }
}

TEST(CodeTypeNames, EveryNameLeadsToItsCodeType) {
  std::set<CodeType> seen;
  for (const CodeType codeType : AllCodeTypes()) {
    EXPECT_TRUE(seen.insert(codeType).second) << codeType;
    EXPECT_STREQ(CharSetCode2Name(codeType), CharSetNames(codeType).front());
    for (const char* const name : CharSetNames(codeType)) {
      EXPECT_EQ(CharSetName2CodeExact(name), codeType) << name;
    }
    EXPECT_TRUE(IsCodePageSupported(CharSetCode2CodePage2(codeType))) << codeType;
  }
  EXPECT_EQ(seen.size(), 24u);
  for (int number = -1; number < 2000; ++number) {
    const auto codeType = static_cast<CodeType>(number);
    EXPECT_EQ(CharSetCode2Name(codeType) != nullptr, seen.count(codeType) != 0) << number;
  }
}

TEST(CodeTypeNames, AreMadeCanonical) {
  const struct {
    CStringA given, charset, encoding;
  } cases[] = {
      {"utf8", "UTF-8", "utf8"},
      {"x-foo", "x-foo", "x-foo"},
      {"BASE64", "BASE64", "base64"},
      {"", "", ""},
      // Second bytes that look like letters stay; full-width letters have lower case.
      {"\x83\x41"
       "A\x82\x60",
       "\x83\x41"
       "A\x82\x60",
       "\x83\x41"
       "a\x82\x81"},
  };
  for (const auto& c : cases) {
    CStringA charset = c.given;
    CStringA encoding = c.given;
    EXPECT_EQ(ReformCharSet(charset), c.charset) << c.given;
    EXPECT_EQ(ReformEncoding(encoding), c.encoding) << c.given;
    EXPECT_EQ(charset, c.charset);
    EXPECT_EQ(encoding, c.encoding);
  }
}

TEST(CodeTypeNames, AreShownToUsers) {
  EXPECT_EQ(GetCodeTypeDisplayNameW(CT_SJIS), u"日本語 (シフトJIS)");
  EXPECT_EQ(GetCodeTypeDisplayNameW(CT_EUCKR), u"韓国語 (EUC)");
  EXPECT_EQ(GetCodeTypeDisplayNameW(CT_WIN1257), u"windows-1257");
  EXPECT_EQ(GetCodeTypeDisplayNameW(CT_UNKNOWN), u"");
  EXPECT_EQ(GetCodeTypeDisplayName(CT_ASCII), "\x89\x70\x95\xB6");
  std::set<CStringA> names;
  for (const CodeType codeType : AllCodeTypes()) names.insert(GetCodeTypeDisplayName(codeType));
  EXPECT_EQ(names.size(), AllCodeTypes().size());
}

TEST(CodeTypes, HaveTheirProperties) {
  const struct {
    CodeType codeType;
    int fontCharSet;
    unsigned codePage, codePage2;
    std::uint32_t lcid;
    CodeType edit, send;
  } cases[] = {
      {CT_UNKNOWN, 128, 0, 0, 0, CT_UNKNOWN, CT_UNKNOWN},
      {static_cast<CodeType>(999), 128, 0, 0, 0, static_cast<CodeType>(999),
       static_cast<CodeType>(999)},
      {CT_ASCII, 128, 932, 1252, 0x0400, CT_ASCII, CT_ASCII},
      {CT_JIS, 128, 932, 932, 0x0411, CT_SJIS, CT_JIS},
      {CT_EUC, 128, 932, 932, 0x0411, CT_SJIS, CT_JIS},
      {CT_SJIS, 128, 932, 932, 0x0411, CT_SJIS, CT_JIS},
      {CT_GB2312, 134, 936, 936, 0x0804, CT_GB2312, CT_GB2312},
      {CT_EUCKR, 129, 51949, 51949, 0x0412, CT_KSC5601, CT_KSC5601},
      {CT_KOI8R, 204, 20866, 20866, 0x0419, CT_WIN1251, CT_KOI8R},
      {CT_ISO8859_4, 186, 28594, 28594, 0x0400, CT_WIN1257, CT_ISO8859_4},
      {CT_WIN1254, 162, 1254, 1254, 0x041F, CT_WIN1254, CT_ISO8859_9},
      {CT_UTF7, 1, 65000, 65000, 0x0400, CT_UNICODE, CT_UTF7},
      {CT_UNICODE, 1, 1200, 1200, 0x0400, CT_UNICODE, CT_UTF8},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(static_cast<int>(c.codeType));
    EXPECT_EQ(CharSetCode2FontCharSet(c.codeType), c.fontCharSet);
    EXPECT_EQ(CharSetCode2CodePage(c.codeType), c.codePage);
    EXPECT_EQ(CharSetCode2CodePage2(c.codeType), c.codePage2);
    EXPECT_EQ(CharSetCode2LCID(c.codeType), c.lcid);
    EXPECT_EQ(CodeTypeSave2Edit(c.codeType), c.edit);
    EXPECT_EQ(CodeType2DefSend(c.codeType), c.send);
    EXPECT_EQ(CharSetCode2Name(c.codeType) == nullptr, c.codePage == 0);
    EXPECT_EQ(AsciiByte2Column(7, c.codeType), c.codeType > 1000 ? 3 : 7);
  }
  // What is edited in a form is sent in one that is edited in it again.
  for (const CodeType codeType : AllCodeTypes()) {
    const CodeType edit = CodeTypeSave2Edit(codeType);
    EXPECT_EQ(CodeTypeSave2Edit(edit), edit) << codeType;
    EXPECT_EQ(CodeTypeSave2Edit(CodeType2DefSend(edit)), edit) << codeType;
  }
}

TEST(CodeTypes, Combine) {
  const struct {
    CodeType a, b, both;
    int bSaysMore;
  } cases[] = {{CT_SJIS, CT_JIS, CT_JIS, 0},
               {CT_JIS, CT_SJIS, CT_JIS, 0},
               {CT_JIS, CT_EUC, CT_JIS, 0},
               {CT_EUC, CT_JIS, CT_EUC, 0},
               {CT_ASCII, CT_SJIS, CT_SJIS, 1},
               {CT_SJIS, CT_ASCII, CT_SJIS, 0},
               {CT_UNKNOWN, CT_ASCII, CT_ASCII, 1},
               {CT_ASCII, CT_UNKNOWN, CT_ASCII, 0},
               {CT_UNKNOWN, CT_UNKNOWN, CT_UNKNOWN, 0},
               {CT_ASCII, CT_ASCII, CT_ASCII, 0},
               {CT_SJIS, CT_GB2312, CT_UTF8, 0},
               {CT_SJIS, CT_UTF7, CT_UTF7, 0},
               {CT_UTF7, CT_UNICODE, CT_UTF8, 0},
               {CT_UNICODE, CT_UTF8, CT_UTF8, 0},
               {CT_UTF8, CT_UTF7, CT_UTF8, 0},
               {CT_UNICODE, CT_UNICODE, CT_UNICODE, 0},
               {CT_ASCII, CT_UTF7, CT_UTF7, 1},
               {CT_UNKNOWN, CT_UNICODE, CT_UTF8, 1},
               {CT_KOI8R, CT_ISO8859_5, CT_KOI8R, 0},
               {CT_WIN1251, CT_KOI8R, CT_KOI8R, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.a) + " and " + std::to_string(c.b));
    EXPECT_EQ(GetPriorCodeType(c.a, c.b), c.both);
    EXPECT_EQ(IsPriorCodeType(c.a, c.b), c.bSaysMore);
  }
}

TEST(ApplyLocale, SwitchesItsThreadAndRestores) {
  const struct {
    CodeType codeType;
    unsigned inside;
  } cases[] = {
      {CT_GB2312, 936}, {CT_EUCKR, 949}, {CT_ISO8859_1, 1252}, {CT_KOI8R, 1251},   {CT_JIS, 932},
      {CT_ASCII, 1250}, {CT_UTF8, 1250}, {CT_UNICODE, 1250},   {CT_UNKNOWN, 1250},
  };
  ASSERT_TRUE(SetCurrentCodePage(1250));
  for (const auto& c : cases) {
    {
      const CApplyLocale scope(c.codeType);
      EXPECT_EQ(CurrentCodePage(), c.inside) << c.codeType;
      unsigned other = 0;
      std::thread([&other] { other = CurrentCodePage(); }).join();
      EXPECT_EQ(other, 932u);
      {
        const CApplyLocale nested(CT_BIG5);
        EXPECT_EQ(CurrentCodePage(), 950u);
      }
      EXPECT_EQ(CurrentCodePage(), c.inside) << c.codeType;
    }
    EXPECT_EQ(CurrentCodePage(), 1250u) << c.codeType;
  }
  SetCurrentCodePage(932);
}

}  // namespace
}  // namespace lumr
