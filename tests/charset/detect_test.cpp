#include "lumrmisc/charset/detect.h"

#include <gtest/gtest.h>

#include <random>

#include "charset/convert_text.h"
#include "charset/detect_model.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/platform/cpu_internal.h"

namespace lumr {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

CodeType Detected(std::string_view text) {
  const ExactCopy copy(text);
  return DetectCodeType(copy.Data(), copy.Size());
}
int Utf8(std::string_view text) {
  const ExactCopy copy(text);
  return IsUTF8(copy.Data(), copy.Size());
}

std::string Repeat(std::string_view text, std::size_t size) {
  std::string repeated;
  while (repeated.size() < size) repeated += text;
  repeated.resize(size);
  return repeated;
}

TEST(DetectCodeType, DecidesByBytePattern) {
  const struct {
    const char* what;
    std::string text;
    CodeType expected;
  } cases[] = {
      {"nothing", "", CT_ASCII},
      {"plain text", "abc", CT_ASCII},
      {"kanji in", "a\x1B$B", CT_JIS},
      {"old kanji in", "\x1B$@", CT_JIS},
      {"ASCII in", "\x1B(B", CT_JIS},
      {"katakana in", "\x1B(I", CT_JIS},
      {"kanji in, old form", "\x1BK", CT_JIS},
      {"another escape", "\x1B[1m\x1B$A\x1B(K", CT_ASCII},
      {"an escape hides the next one", "\x1B\x1B$B", CT_ASCII},
      {"an escape cut short", "\x1B$", CT_ASCII},
      {"an escape over the range", Repeat("x", 1023) + "\x1B$B", CT_JIS},
      {"an escape behind the range", Repeat("x", 1024) + "\x1B$B", CT_ASCII},
      {"EUC hiragana or two half-width katakana", "\xA4\xA2", CT_EUC},
      {"the same over the range", Repeat("x", 1023) + "\xB0\xF0", CT_EUC},
      {"a katakana before ASCII", "\xB1\x41\x1F", CT_ASCII},
      {"Shift_JIS hiragana", "\x82\xA0", CT_SJIS},
      {"a lead byte at the end", "\x82", CT_SJIS},
      {"a byte of EUC-JP", "\xB0\xA1\xF0", CT_EUC},
      {"half-width in EUC-JP", "\x8E\xB1", CT_EUC},
      {"8E in Shift_JIS", "\x8E\x40", CT_SJIS},
      {"8E and nothing telling", "\x8E\x20\x8E", CT_ASCII},
      {"a high lead with an ASCII trail", "\xE0\x40", CT_SJIS},
      {"a high lead, either", "\xE0\xA1", CT_EUC},
      {"a high lead, EUC-JP", "\xE0\xFD", CT_EUC},
      {"a high lead cut short", "\xE0", CT_ASCII},
      {"bytes of nothing", "\x80\xA0\xFF", CT_ASCII},
      {"ambiguous, then Shift_JIS", "\xA4\xA2\x1F\x82", CT_SJIS},
      {"ambiguous, then an escape", "\xA4\xA2\x1B(B", CT_JIS},
      {"a run to a byte of Shift_JIS", "\xB0\xE0\x41\x81", CT_SJIS},
      {"a run to a byte of EUC-JP", "\xB0\xE0\xFE\x81", CT_EUC},
      {"8E goes on in a run", "\xB0\xE0\x8E\xF0\x81", CT_SJIS},
      {"the end of a run is skipped", "\xB0\xE0\x1B(B\x1F\xE0\x40", CT_SJIS},
      {"a run behind the range", "\xB0\xE0" + Repeat("A", 3000) + "\x81", CT_SJIS},
      {"a run that ends there", "\xB0\xE0" + Repeat("A", 3000) + " \x81", CT_EUC},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Detected(c.text), c.expected);
    // Any plain text before it changes nothing.
    if (c.text.size() > 1000) continue;
    for (std::size_t size = 1; size < 32; ++size) {
      EXPECT_EQ(Detected(Repeat("x", size) + c.text), c.expected) << size;
    }
  }
  EXPECT_EQ(DetectCodeType(nullptr, 5), CT_ASCII);
  EXPECT_EQ(DetectCodeType("\x82", -1), CT_ASCII);
}

TEST(DetectCodeType, AgreesWithTheModel) {
  constexpr unsigned kSeed = 23;
  std::mt19937 random(kSeed);
  // Bytes at the borders of all ranges.
  constexpr std::string_view kBytes =
      "\x1B$(BJHIK@\x1F\x40\x7E\x7F\x80\x81\x8D\x8E\x8F\x9F\xA0\xA1\xDF\xE0\xEF\xF0\xFC\xFD\xFE\xFF"sv;
  for (int round = 0; round < 20000; ++round) {
    std::string text = round % 10 == 0 ? std::string(random() % 8 + 1018, 'x') : "";
    for (std::size_t size = random() % 10; size > 0; --size)
      text += kBytes[random() % kBytes.size()];
    ASSERT_EQ(Detected(text), DetectionModel::DetectCodeType(text)) << Shown(text);
  }
}

TEST(IsUTF8, LooksAtTheForm) {
  const struct {
    std::string_view text;
    int expected;
  } cases[] = {{"", 0},
               {"abc", 0},
               {"\xC3\xA9", 1},
               {"\xC3\x41", 0},
               {"\xC3", 0},
               {"\xA9", 0},
               {"\xFE", 0},
               {"\xFF", 0},
               {"\xE3\x81\x82", 1},
               {"\xE3\x81", 0},
               {"\xC0\xAF", 1},
               {"\xED\xA0\x80", 1},
               {"\xF8\x88\x80\x80\x80", 1},
               {"\xFC\x84\x80\x80\x80\x80", 1},
               {"\xFC\x84\x80\x80\x80", 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(Shown(c.text));
    EXPECT_EQ(IsUtf8ByModel(c.text), c.expected != 0);
    for (const std::size_t size : {0u, 1u, 7u, 8u, 31u, 32u, 33u, 70u}) {
      const std::string before = Repeat("x", size);
      EXPECT_EQ(Utf8(before + std::string(c.text)), c.expected) << size;
      EXPECT_EQ(Utf8(before + std::string(c.text) + before), c.expected) << size;
      EXPECT_EQ(Utf8(before + "\xE3\x81\x82" + std::string(c.text)),
                c.expected != 0 || c.text.find_first_of("\xC3\xA9\xE3\xFC\xFE\xFF") == c.text.npos)
          << size;
    }
  }
  EXPECT_EQ(IsUTF8(nullptr, 1), 0);
}

// Texts of sequences of any length, a damaged byte in some; long ones are looked at in vectors.
// All kernels.
TEST(IsUTF8, KernelsAgreeWithTheModel) {
  constexpr std::string_view kPieces[] = {"a",
                                          "\xE3\x81\x82",
                                          "\xC3\xA9",
                                          "abcdefghijklmnopq",
                                          "\xF0\x9F\x98\x80",
                                          "\xF8\x88\x80\x80\x80",
                                          "\xFD\xBF\xBF\xBF\xBF\xBF",
                                          kOddText};
  constexpr unsigned kSeed = 9;
  std::mt19937 random(kSeed);
  for (int round = 0; round < 10000; ++round) {
    const std::size_t pieces = 1 + random() % std::size(kPieces);
    std::string text;
    for (const std::size_t size = random() % (round % 3 == 0 ? 40 : 700); text.size() < size;) {
      text += kPieces[random() % pieces];
    }
    if (round % 2 != 0 && !text.empty()) text[random() % text.size()] = static_cast<char>(random());
    for (const auto level :
         {internal::CpuLevel::kPortable, internal::CpuLevel::kAvx2, internal::CpuLevel::kAll}) {
      internal::LimitCpu(level);
      ASSERT_EQ(Utf8(text), IsUtf8ByModel(text)) << Shown(text);
    }
  }
}

TEST(DetectCodeType2, TriesUtf8AndUtf16First) {
  const struct {
    const char* what;
    std::string_view text;
    CodeType expected;
  } cases[] = {
      {"nothing", "", CT_ASCII},
      {"UTF-8", "\xC3\xA9", CT_UTF8},
      {"big-endian with mark", "\xFE\xFF\x30\x42", CT_UNICODE},
      {"little-endian with mark", "\xFF\xFE\x42\x30", CT_UNICODE},
      {"without mark", "\x42\x30", CT_UNICODE},
      {"look-alikes are good enough", "\xE9\0\x1C\x30"sv, CT_UNICODE},
      {"an odd byte is not looked at", "\x42\x30\x82", CT_UNICODE},
      {"a character outside the page", "A\xAC \x82\xA0 ", CT_SJIS},
      {"a mark alone", "\xFF\xFE", CT_EUC},
      {"a big-endian mark alone", "\xFE\xFF", CT_EUC},
      {"some ASCII looks like it", "pS", CT_UNICODE},
      {"one byte", "a", CT_ASCII},
      {"other ASCII does not", "plain text\r\n", CT_ASCII},
      {"Shift_JIS", "\x82\xB1\x82\xEA\x82\xCD", CT_SJIS},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const ExactCopy copy(c.text);
    EXPECT_EQ(DetectCodeType2(copy.Data(), copy.Size()), c.expected);
  }
}

TEST(DetectCodeType3, BelievesTheHintWhenItCan) {
  const std::string farAway = Repeat("x", 1024);
  const struct {
    const char* what;
    std::string text;
    CodeType hint, expected;
  } cases[] = {
      {"defined units", "\x42\x30", CT_UNICODE, CT_UNICODE},
      {"an undefined unit", "\xFF\xFF", CT_UNICODE, CT_ASCII},
      {"an odd length", "\x42\x30\x82", CT_UNICODE, CT_SJIS},
      {"plain ASCII in units", "ab", CT_UNICODE, CT_UNICODE},
      {"no hint", "\x82\xA0", CT_UNKNOWN, CT_SJIS},
      {"no hint, ASCII", "a", CT_UNKNOWN, CT_ASCII},
      {"plain ASCII", "a\r\n", CT_KOI8R, CT_ASCII},
      {"nothing", "", CT_UTF8, CT_ASCII},
      {"a control character is not plain", "\x01", CT_KOI8R, CT_KOI8R},
      {"the hint fits", "\xC1", CT_KOI8R, CT_KOI8R},
      {"escapes under Shift_JIS", "\x1B$B$\"\x1B(B", CT_SJIS, CT_JIS},
      {"escapes under EUC-JP", "\x1B$B$\"\x1B(B", CT_EUC, CT_JIS},
      {"escapes under another", "\x1B$B$\"\x1B(B", CT_UTF8, CT_UTF8},
      {"the hint does not fit", "\x82\xA0\x81\xAD", CT_UTF8, CT_SJIS},
      {"a bad pair", "\x81\xAD", CT_SJIS, CT_SJIS},
      {"exact, out of sight", farAway + "\x81\xE6", CT_SJIS, CT_SJIS},
      {"a duplicate is not exact", farAway + "\x87\x9A", CT_SJIS, CT_ASCII},
      {"what the arithmetic copies passes", "\x82\xA0", CT_EUC, CT_EUC},
      {"a mark is no loss", "\xEF\xBB\xBF\x61", CT_UTF8, CT_UTF8},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const ExactCopy copy(c.text);
    EXPECT_EQ(DetectCodeType3(copy.Data(), copy.Size(), c.hint), c.expected);
  }
}

TEST(GetCodeType, BelievesLabels) {
  EXPECT_EQ(GetCodeType("x-unknown", "\x82\xA0", 2), CT_JIS);
  EXPECT_EQ(GetCodeType("utf8", "\x82\xA0", 2), CT_UTF8);
  EXPECT_EQ(GetCodeType("", "\x82\xA0", 2), CT_SJIS);
  EXPECT_EQ(GetCodeType(nullptr, "\xC3\xA9", 2), CT_UTF8);
}

TEST(DetectUnicodeCodeType, TellsByTheFirstScript) {
  const struct {
    std::u16string_view text;
    CodeType expected;
  } cases[] = {
      {u"", CT_KOI8R},
      {u"A漢", CT_KOI8R},
      {u"A가あ", CT_KSC5601},
      {u"漢ア가", CT_SJIS},
      {u"\u3040", CT_SJIS},
      {u"\u30FF", CT_SJIS},
      {u"\u303F\u3100", CT_KOI8R},
      {u"\u1100", CT_KSC5601},
      {u"\u11FF", CT_KSC5601},
      {u"\u3130", CT_KSC5601},
      {u"\u318F", CT_KSC5601},
      {u"\uD7A3", CT_KSC5601},
      {u"\uD7A4\uABFF\u10FF\u1200\u312F\u3190", CT_KOI8R},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Decoded(CT_UNICODE, BytesOf(c.text)));
    const auto count = static_cast<int>(c.text.size());
    EXPECT_EQ(DetectUnicodeCodeType(c.text.data(), count, CT_KOI8R), c.expected);
    std::string shifted(1, 'x');
    shifted += BytesOf(c.text);
    EXPECT_EQ(DetectUnicodeCodeType(std::string_view(shifted).substr(1), CT_KOI8R), c.expected);
  }
  EXPECT_EQ(DetectUnicodeCodeType(u"あ", -1, CT_KOI8R), CT_KOI8R);
}

TEST(DetectUnicodeCodeType2, FindsTheNarrowestEncoding) {
  const struct {
    std::u16string_view text;
    CodeType expected;
    std::string_view out;
  } cases[] = {
      {u"", CT_ASCII, ""},
      {u"abc\x7F", CT_ASCII, "abc\x7F"},
      {u"aあ", CT_SJIS, "a\x82\xA0"},
      {u"é", CT_UNICODE, BytesOf(u"é")},        // 932 has a look-alike, 1252 is not ASCII
      {u"あ〜", CT_UNICODE, BytesOf(u"あ〜")},  // a look-alike
      {u"가", CT_UNICODE, BytesOf(u"가")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Shown(c.out));
    CBuffer out("left over");
    const auto count = static_cast<int>(c.text.size());
    EXPECT_EQ(DetectUnicodeCodeType2(c.text.data(), count, &out), c.expected);
    EXPECT_EQ(Shown(out.Bytes()), Shown(c.out));
    EXPECT_EQ(DetectUnicodeCodeType2(c.text.data(), count, nullptr), c.expected);
  }
}

TEST(ExplainDetection, SaysWhatDecided) {
  const std::string preamble(2000, 'a');
  const std::string late = preamble + "\x82\xA0";
  const std::string lateNothing = preamble + "\xA0";
  const std::string lateZero = late + '\0';
  const struct {
    std::string_view text;
    Detection expected;
  } cases[] = {
      {"", {CT_ASCII, DetectionRule::kEmpty, -1, 0}},
      {"pS", {CT_ASCII, DetectionRule::kPlainAscii, -1, 0}},
      {"a\x1B$B$\"", {CT_JIS, DetectionRule::kEscape, 1, 0x1B}},
      {"a\xC3\xA9", {CT_UTF8, DetectionRule::kUtf8, 1, 0xC3}},
      {"\xFE\xFF\x30\x42", {CT_UNICODE, DetectionRule::kUtf16BigEndian, 0, 0xFE}},
      {"a\0b\0"sv, {CT_UNICODE, DetectionRule::kUtf16, 0, 'a'}},
      {"ab\xB0\xA1\xB0\xF0", {CT_EUC, DetectionRule::kEucByte, 5, 0xF0}},
      {"ab \x82\xA0\x81\xAD", {CT_SJIS, DetectionRule::kSJisByte, 3, 0x82}},
      {"abc\xA4\xA2\xA4", {CT_EUC, DetectionRule::kAmbiguous, 4, 0xA2}},
      {"abc\xA0\xFF", {CT_ASCII, DetectionRule::kNothingTelling, -1, 0}},
      {late, {CT_SJIS, DetectionRule::kSJisByte, 2000, 0x82}},
      {lateZero, {CT_ASCII, DetectionRule::kNothingTelling, -1, 0}},
      {lateNothing, {CT_ASCII, DetectionRule::kNothingTelling, -1, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Shown(c.text));
    const Detection detection = ExplainDetection(c.text);
    EXPECT_EQ(detection.codeType, c.expected.codeType);
    EXPECT_EQ(detection.rule, c.expected.rule);
    EXPECT_EQ(detection.offset, c.expected.offset);
    EXPECT_EQ(detection.byte, c.expected.byte);
  }
}

}  // namespace
}  // namespace lumr
