#include "lumrmisc/charset/transcoder.h"

#include <gtest/gtest.h>

#include <random>

#include "charset/convert_text.h"

namespace lumr {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

// A text with what the type can hold of everything, with codes that come twice and codes that do
// not exist, and one that ends inside a character.
std::vector<std::string> SamplesOf(CodeType codeType) {
  std::string all;
  for (const std::string_view script : kScripts) all += Encoded(script.substr(0, 12), codeType);
  const std::string odd = Encoded(kOddText, codeType);
  std::vector<std::string> samples = {
      all.substr(0, 80),
      odd,
      "\x87\x90\x81\xAD\xFA\x40\x80\xFD\xA0\xB1\x8E\xB1\x8F\xA2\xAF\xFE\xA1\xE3\x81"s,
      "\x1B$B$\"$\x1B(J\\\x1B$(D\"/\x1B(I1\x0E\x31\x0F\x1B[\x1B"s,
      "\xE3\xE3\x81\x61\xED\xA0\x80\xC0\xAF\xF0\x9F\x98\x80\xF0\x9F\x98"s,
      "+MEI-a+-+2D3eAA-+AAA+/v8\xFF+MEI+iJf,\x9E\x8Az"s,
      "\x1B$B5\x07\x01\xADii\x7F~\xB0\x03\x30\xE0`\xAD\x30"s,
  };
  if (codeType == CT_UNICODE) {
    samples.insert(samples.end(), {"\xFE\xFF\x30\x42\xD8\x3D\xDE\0a"s, "\xFF\xFE\x42\x30"s,
                                   "\x3D\xD8\x3D\xD8\0\xDE\x1C\x30"s});
  }
  if (codeType == CT_UTF8) samples.push_back("\xEF\xBB\xBF" + odd);
  if (codeType == CT_UTF7) samples.push_back("+/v8MEI-a");
  return samples;
}

Conversion InPieces(CodeType from, CodeType to, const std::vector<std::string_view>& pieces) {
  Transcoder transcoder(from, to, 0);
  CBuffer out;
  CConversionReport report(10000);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    transcoder.Convert(pieces[i], i + 1 == pieces.size(), out, &report);
  }
  return {std::string(out.Bytes()), transcoder.Status(), Shown(report)};
}

TEST(Transcoder, PiecesAreTheWholeForEveryCutAndPairOfTypes) {
  for (const CodeType from : CodeTypesAndUnknown()) {
    for (const std::string& sample : SamplesOf(from)) {
      const std::string_view text = sample;
      for (const CodeType to : CodeTypesAndUnknown()) {
        SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to) + ": " + Shown(text));
        const Conversion whole = Converted(from, text, to);
        for (std::size_t cut = 0; cut <= text.size(); ++cut) {
          ASSERT_EQ(InPieces(from, to, {text.substr(0, cut), text.substr(cut)}), whole) << cut;
        }
        std::vector<std::string_view> bytes;
        for (std::size_t i = 0; i < text.size(); ++i) bytes.push_back(text.substr(i, 1));
        bytes.push_back({});
        ASSERT_EQ(InPieces(from, to, bytes), whole);
      }
    }
  }
}

std::vector<ConversionLoss> LossesOf(CodeType from, std::string_view text, CodeType to,
                                     int emptyFallback) {
  CBuffer out;
  CConversionReport report;
  ConvertToOtherCodeType2(from, text, to, out, emptyFallback, &report);
  return report.First();
}

TEST(Transcoder, ReportsLossesInTheSourceAndTheResult) {
  const struct {
    const char* what;
    CodeType from;
    std::string_view text;
    CodeType to;
    int emptyFallback;
    const char* losses;
  } cases[] = {
      {"nothing lost", CT_EUC, "a\xA4\xA2", CT_UTF8, 0, ""},
      {"one stage", CT_UNICODE, "a\0\0\xAC"sv, CT_SJIS, 0, "replaced 2+2>1"},
      {"two stages", CT_SJIS, "a\x82\xA0z", CT_WIN1252, 0, "replaced 1+2>1"},
      {"dropped", CT_SJIS, "a\x82\xA0\x82\xA0z", CT_WIN1252, 1, "replaced 1+2>1, replaced 3+2>1"},
      {"three stages", CT_EUC, "ab\xA4\xA2", CT_WIN1252, 0, "replaced 2+2>2"},
      {"not the escape", CT_JIS, "a\x1B$B$\"$$\x1B(Bz", CT_WIN1252, 0,
       "replaced 4+2>1, replaced 6+2>2"},
      {"two units, one character", CT_UTF8, "a\xF0\x9F\x98\x80z", CT_SJIS, 0, "replaced 1+4>1"},
      {"lost twice, counted once", CT_UTF8, "\xE3\x81z", CT_WIN1252, 0, "replaced 0+2>0"},
      {"malformed, side by side", CT_UTF8, "\xE3\xE3\x61", CT_SJIS, 0,
       "replaced 0+1>0, replaced 1+1>1"},
      {"malformed, then lost", CT_UTF8, "\xE3\xE3\x81\x82\xE3", CT_WIN1252, 0,
       "replaced 0+1>0, replaced 1+3>1, replaced 4+1>2"},
      {"a fit", CT_UTF8, "a\xE3\x80\x9C", CT_SJIS, 0, "fit 1+3>1"},
      {"a fit before arithmetic", CT_UTF8, "a\xE3\x80\x9C", CT_EUC, 0, "fit 1+3>1"},
      {"a duplicate", CT_SJIS, "a\x87\x90", CT_UTF8, 0, "fit 1+2>1"},
      {"a fit, then lost", CT_SJIS, "\x87\x90", CT_WIN1250, 0, "replaced 0+2>0"},
      {"no cell", CT_UTF8, "a\xE2\x85\xB0z", CT_EUC, 0, "replaced 1+3>1"},
      {"no cell, no code page", CT_SJIS, "a\xFA\x40", CT_JIS, 0, "replaced 1+1>1"},
      {"another set", CT_EUC, "a\x8F\xA2\xAF", CT_SJIS, 0, "replaced 1+3>1"},
      {"a removed mark", CT_UTF8, "\xEF\xBB\xBF\xE3\x80\x9C", CT_SJIS, 0, "fit 0+3>0, fit 3+3>0"},
      {"offsets behind it", CT_UTF8, "\xEF\xBB\xBF\x61\xFF", CT_UNICODE, 0,
       "fit 0+3>0, replaced 4+1>2"},
      {"big-endian", CT_UNICODE, "\xFE\xFF\x30\x42\x30", CT_UNICODE, 0,
       "fit 0+2>0, replaced 4+1>2"},
      {"a mark that will not come back", CT_UNICODE, "\xFF\xFE\x42\x30", CT_UTF8, 0, "fit 0+2>0"},
      {"zero bytes", CT_UTF8, "\0a\xEA\xB0\x80"sv, CT_SJIS, 1, "replaced 0+1>0, replaced 2+3>1"},
      {"UTF-7 from its first byte", CT_UTF7, "a+rAA-", CT_SJIS, 0, "replaced 1+4>1"},
      {"a byte of two characters", CT_UTF7, "+MEJ,", CT_SJIS, 0, "replaced 3+1>2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Converted(c.from, c.text, c.to, c.emptyFallback).losses, c.losses);
    // The same behind more than a block.
    if (c.from == CT_UNICODE || std::string_view(c.text).starts_with("\xEF\xBB\xBF")) continue;
    const std::string before(5000, 'x');
    auto expected = LossesOf(c.from, c.text, c.to, c.emptyFallback);
    for (ConversionLoss& loss : expected) {
      loss.inputOffset += 5000;
      loss.outputOffset += c.to == CT_UNICODE ? 10000 : 5000;
    }
    EXPECT_EQ(LossesOf(c.from, before + std::string(c.text), c.to, c.emptyFallback), expected);
  }
}

// Random text of fragments that mean something and bytes that may not.
std::string RandomText(std::mt19937& random, const std::vector<std::string>& samples) {
  std::string text;
  while (text.size() < 12) {
    const std::string& sample = samples[random() % samples.size()];
    if (sample.empty() || random() % 8 == 0) {
      text += static_cast<char>(random());
    } else {
      text += sample.substr(random() % sample.size(), 1 + random() % 6);
    }
  }
  return text;
}

TEST(Transcoder, AnEmptyReportMeansThatTheTextComesBack) {
  constexpr unsigned kSeed = 20;
  std::mt19937 random(kSeed);
  int exact = 0;
  for (const CodeType from : CodeTypesAndUnknown()) {
    const std::vector<std::string> samples = SamplesOf(from);
    for (const CodeType to : CodeTypesAndUnknown()) {
      for (int round = 0; round < 40; ++round) {
        const std::string text = RandomText(random, samples);
        SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to) + ": " + Shown(text));
        const Conversion there = Converted(from, text, to);
        const bool isReplaced = there.losses.find("replaced") != there.losses.npos;
        ASSERT_FALSE(isReplaced && ConvertsExactly(from, text, to));
        if (!there.losses.empty()) continue;
        ++exact;
        ASSERT_TRUE(ConvertsExactly(from, text, to));
        ASSERT_EQ(there.status, 0);
        const Conversion back = Converted(to, there.bytes, from);
        // ISO-2022-JP and UTF-7 say one text in many ways.
        const bool isFree = from == CT_JIS || from == CT_UTF7;
        ASSERT_EQ(Shown(isFree ? Decoded(from, back.bytes) : back.bytes),
                  Shown(isFree ? Decoded(from, text) : text));
      }
    }
  }
  EXPECT_GT(exact, 4000);
}

TEST(Transcoder, ReadsUtf16OfEitherOrder) {
  const struct {
    Utf16Order order;
    std::string_view text, utf8;
  } cases[] = {
      {Utf16Order::kLittleEndian, "\xFF\xFE\x42\x30", "\uFEFF\u3042"},
      {Utf16Order::kByMark, "\xFF\xFE\x42\x30", "\u3042"},
      {Utf16Order::kByMark, "\xFE\xFF\x30\x42", "\u3042"},
      {Utf16Order::kByMark, "\x42\x30", "\u3042"},
      {Utf16Order::kBigEndian, "\x30\x42", "\u3042"},
      {Utf16Order::kBigEndian, "\xFE\xFF\x30\x42", "\u3042"},
      {Utf16Order::kBigEndian, "\xFF\xFE\x42\x30", "\u3042"},
      {Utf16Order::kBigEndian, "\x30\x42\x30", "\u3042"},
  };
  for (const auto& c : cases) {
    for (std::size_t cut = 0; cut <= c.text.size(); ++cut) {
      SCOPED_TRACE(Shown(c.text) + " cut at " + std::to_string(cut));
      Transcoder transcoder(CT_UNICODE, CT_UTF8, 0, c.order);
      CBuffer out;
      transcoder.Convert(c.text.substr(0, cut), false, out);
      transcoder.Convert(c.text.substr(cut), true, out);
      EXPECT_EQ(Shown(out.Bytes()), Shown(c.utf8));
    }
  }
}

TEST(Transcoder, KeepsZeroBytesThatTheTextHolds) {
  Transcoder transcoder(CT_UTF8, CT_SJIS, 1);
  CBuffer out;
  transcoder.Convert("a\0\xEA\xB0\x80z"sv, true, out);
  EXPECT_EQ(out.Bytes(), "a\0z"sv);
  EXPECT_EQ(transcoder.Status(), 1);
}

}  // namespace
}  // namespace lumr
