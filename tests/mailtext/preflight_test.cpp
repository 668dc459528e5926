#include "lumrmisc/mailtext/preflight.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "mailtext/corpus.h"

namespace lumr {
namespace {

constexpr auto kLost = PreflightKind::kNotEncodable;
constexpr auto kMachine = PreflightKind::kMachineDependent;
constexpr auto kHalf = PreflightKind::kHalfWidthKatakana;
constexpr auto kUser = PreflightKind::kUserDefined;

std::vector<PreflightFinding> Findings(std::u16string_view text, CodeType codeType) {
  std::vector<PreflightFinding> findings = {{kUser, 9, 9, false, u"old"}};
  CheckBeforeSending(text, codeType, findings);
  return findings;
}

TEST(CheckBeforeSending, FindsAndOffers) {
  const struct {
    std::u16string_view text;
    CodeType codeType;
    std::vector<PreflightFinding> expected;
  } cases[] = {
      {u"", CT_JIS, {}},
      {u"漢字かな abc ～〜−", CT_JIS, {}},
      {u"①番㈱", CT_JIS, {{kMachine, 0, 1, true, u"(1)"}, {kMachine, 2, 1, true, u"(株)"}}},
      {u"第⑳㊿話", CT_SJIS, {{kMachine, 1, 1, true, u"(20)"}, {kLost, 2, 1, true, u"(50)"}}},
      {u"ﾊﾟｿｺﾝx", CT_JIS, {{kHalf, 0, 5, true, u"パソコン"}}},
      {u"ﾊﾟ㍉㎜", CT_EUC, {{kHalf, 0, 2, true, u"パ"}, {kMachine, 2, 2, true, u"ミリmm"}}},
      {u"髙橋", CT_JIS, {{kMachine, 0, 1, true, u"高"}}},
      {u"\uE000", CT_JIS, {{kUser, 0, 1, false, u""}}},
      {u"\uE000", CT_UTF8, {{kUser, 0, 1, false, u""}}},
      {u"é한😀", CT_JIS, {{kLost, 0, 1, true, u"e"}, {kLost, 1, 3, false, u""}}},
      {u"a\u200Bb\u00A0c", CT_JIS, {{kLost, 1, 1, true, u""}, {kLost, 3, 1, true, u" "}}},
      {u"①ｱ髙", CT_UTF8, {}},
      {u"\xD800x", CT_UTF8, {{kLost, 0, 1, false, u""}}},
      {u"①—€", CT_ASCII, {{kLost, 0, 3, true, u"(1)-EUR"}}},
      {u"㍉", CT_ISO8859_1, {{kLost, 0, 1, false, u""}}},
      {u"⋯", CT_ISO8859_1, {{kLost, 0, 1, true, u"..."}}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Findings(c.text, c.codeType), c.expected) << Utf8(c.text) << ' ' << c.codeType;
  }
}

// Every unit under every charset, against the conversion that would send it.
TEST(CheckBeforeSending, AgreesWithTheConversion) {
  constexpr CodeType kCodeTypes[] = {CT_JIS,       CT_SJIS,    CT_EUC,   CT_GB2312,
                                     CT_KSC5601,   CT_BIG5,    CT_KOI8R, CT_ISO8859_1,
                                     CT_ISO8859_9, CT_WIN1252, CT_UTF8};
  for (const CodeType codeType : kCodeTypes) {
    for (unsigned value = 1; value < 0x10000; ++value) {
      const std::u16string text(1, static_cast<char16_t>(value));
      const auto findings = Findings(text, codeType);
      CBuffer sent;
      CConversionReport report;
      ConvertToOtherCodeType2(CT_UNICODE, BytesOf(text), codeType, sent, 0, &report);
      const bool mayDiffer = value == 0xFEFF || value == 0x1B || value == 0xE || value == 0xF;
      if (findings.empty() && !mayDiffer) {
        EXPECT_EQ(report.Replaced(), 0) << std::hex << value << " in " << codeType;
      }
      for (const PreflightFinding& finding : findings) {
        EXPECT_TRUE(finding.kind != kLost || value <= 0xA0 || !report.IsEmpty())
            << std::hex << value;
        if (finding.hasOffer) {
          EXPECT_TRUE(Findings(finding.offer, codeType).empty()) << value;
        }
      }
      const CodeType narrowest = NarrowestCodeType(text);
      const auto left = Findings(text, narrowest);
      EXPECT_TRUE(left.empty() || narrowest == CT_UTF8) << std::hex << value;
    }
  }
}

TEST(TextWithOffers, LeavesNothingThatHasOne) {
  constexpr unsigned kSeed = 1468;
  std::mt19937 random(kSeed);
  const std::u16string_view pieces[] = {u"①", u"ｶ",      u"ﾞ",  u"ﾊ", u"ﾟ",  u"漢",     u"a", u"é",
                                        u"😀", u"\uE000", u"㍉", u"№", u"한", u"\u00A0", u"髙"};
  for (int round = 0; round < 2000; ++round) {
    std::u16string text;
    for (std::size_t n = random() % 20; n > 0; --n) text += pieces[random() % std::size(pieces)];
    for (const CodeType codeType : {CT_JIS, CT_ASCII, CT_ISO8859_1, CT_UTF8}) {
      const auto findings = Findings(text, codeType);
      std::size_t end = 0;
      for (const PreflightFinding& finding : findings) {
        ASSERT_TRUE(finding.position >= end && finding.length > 0) << Utf8(text);
        end = finding.position + finding.length;
      }
      ASSERT_LE(end, text.size());
      for (const PreflightFinding& left : Findings(TextWithOffers(text, findings), codeType)) {
        ASSERT_FALSE(left.hasOffer) << Utf8(text) << ", seed " << kSeed;
      }
    }
  }
}

TEST(NarrowestCodeType, CarriesAllOfIt) {
  const struct {
    std::u16string_view text;
    CodeType expected;
  } cases[] = {
      {u"", CT_ASCII},           {u"abc\r\n", CT_ASCII},   {u"日本語", CT_JIS},
      {u"①番", CT_UTF8},         {u"ｱ", CT_UTF8},          {u"髙橋", CT_UTF8},
      {u"Grüße", CT_ISO8859_1},  {u"Żółć", CT_ISO8859_2},  {u"Привет", CT_JIS},
      {u"Ελλάδα", CT_ISO8859_7}, {u"한국어", CT_KSC5601},  {u"欢迎你们", CT_GB2312},
      {u"欢迎の", CT_UTF8},      {u"naïve 日本", CT_UTF8}, {u"😀", CT_UTF8},
  };
  for (const auto& c : cases) EXPECT_EQ(NarrowestCodeType(c.text), c.expected) << Utf8(c.text);
}

}  // namespace
}  // namespace lumr
