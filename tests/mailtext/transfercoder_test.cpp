#include "lumrmisc/mailtext/transfercoder.h"
#include "lumrmisc/platform/cpu_internal.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>

#include "mailtext/coders.h"
#include "mailtext/decode_rows.h"

namespace lumr {
namespace {

using Maker = std::function<std::unique_ptr<TransferCoder>()>;

Maker Encoder(TransferEncoding encoding, const TransferOptions& options = {}) {
  return [=] { return MakeTransferEncoder(encoding, options); };
}

Maker Decoder(TransferEncoding encoding, bool lenient) {
  return [=] { return MakeTransferDecoder(encoding, lenient); };
}

// Every cut in two, and a cut at every place at once.
void ExpectAtEveryCut(const Maker& maker, std::string_view text, const Coded& expected) {
  for (std::size_t cut = 0; cut <= text.size(); ++cut) {
    ASSERT_EQ(RunCoder(maker(), text, {cut}).text, expected.text) << "cut at " << cut;
    ASSERT_EQ(RunCoder(maker(), text, {cut}).wellFormed, expected.wellFormed) << "cut at " << cut;
  }
  ASSERT_EQ(RunCoder(maker(), text, CutEverywhere(text.size())), expected);
}

TEST(TransferDecoder, GivesTheSameAtEveryCut) {
  for (const DecodeRow& row : kDecodeRows) {
    SCOPED_TRACE(std::string(row.what) + ": " + std::string(row.text));
    ExpectAtEveryCut(Decoder(row.encoding, false), row.text,
                     {std::string(row.expected), row.wellFormed});
    ExpectAtEveryCut(Decoder(row.encoding, true), row.text,
                     {std::string(row.lenient), row.lenientWellFormed});
  }
}

TEST(TransferDecoder, TellsWhetherABinHexBlockIsComplete) {
  const std::string file = "text\r\n" + BinHexFile("name", "aaaaaaaaaa\x90\x90 data");
  const std::size_t lastColon = file.rfind(':');
  const struct {
    const char* what;
    std::string text;
    std::string_view data;
    int wellFormed;
  } cases[] = {
      {"complete", file, "aaaaaaaaaa\x90\x90 data", 1},
      {"text behind", file + ":abc:", "aaaaaaaaaa\x90\x90 data", 1},
      {"without the last colon", file.substr(0, lastColon), "aaaaaaaaaa\x90\x90 data", 0},
      {"cut in the data", file.substr(0, lastColon - 12) + ":", "aaaaaaaaaa\x90\x90", 0},
      {"a repeated name", BinHexFile("nnnnnnnn", "x"), "x", 1},
      {"the run byte as name", BinHexFile("\x90\x90\x90\x90\x90\x90", "x"), "x", 1},
      {"no block", "abc:def:", "", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    for (const bool lenient : {false, true}) {
      ExpectAtEveryCut(Decoder(TransferEncoding::kBinHex, lenient), c.text,
                       {std::string(c.data), c.wellFormed});
    }
  }
  EXPECT_EQ(RunCoder(MakeTransferDecoder(TransferEncoding::kBinHex, false), ""), (Coded{"", 1}));
  EXPECT_EQ(RunCoder(MakeTransferDecoder(TransferEncoding::kBinHex, true), ""), (Coded{"", 0}));
  EXPECT_EQ(MakeTransferEncoder(TransferEncoding::kBinHex), nullptr);
}

// ---- Encoders at every cut, and back ----

struct EncodeRow {
  const char* what;
  TransferEncoding encoding;
  TransferOptions options;
  std::function<void(std::string_view, CBuffer&)> whole;
  std::string_view alphabet;  // of the data; empty: all bytes
  bool comesBack = true;      // decoding gives the data again
};

std::vector<EncodeRow> EncodeRows() {
  std::vector<EncodeRow> rows;
  for (const int length : {76, 0, 1, 5, 6}) {
    rows.push_back({"base64",
                    kB64,
                    {.lineLength = length},
                    [length](auto data, CBuffer& out) { EncodeBase64(data, length, out); },
                    ""});
  }
  for (const int textMode : {0, 1}) {
    const auto whole = [textMode](std::string_view data, CBuffer& out) {
      EncodeQuotedPrintable(data, textMode, out);
    };
    rows.push_back({"quoted-printable", kQp, {.textMode = textMode}, whole, "", textMode == 0});
    rows.push_back(
        {"line ends", kQp, {.textMode = textMode}, whole, " \t\r\na=\xe3", textMode == 0});
    rows.push_back({"letters", kQp, {.textMode = textMode}, whole, "abcdefghij "});
  }
  rows.push_back({"uuencode",
                  kUu,
                  {.uuMode = "755", .uuName = "x y"},
                  [](auto data, CBuffer& out) { EncodeUuencode("755", "x y", data, out); },
                  ""});
  for (const int all : {0, 1}) {
    rows.push_back({"hex",
                    kHex,
                    {.encodeAll = all},
                    [all](auto data, CBuffer& out) { EncodeHex(data, all, out); },
                    ""});
  }
  rows.push_back(
      {"url", kUrl, {}, [](auto data, CBuffer& out) { EncodeUrlEncode(data, out); }, ""});
  const auto imap = [](std::string_view data, CBuffer& out) {
    std::u16string units(data.size() / 2, u'\0');
    data.copy(reinterpret_cast<char*>(units.data()), units.size() * 2);
    EncodeImap4UTF7(units, out);
  };
  rows.push_back({"mailbox name", kImap, {}, imap, ""});
  rows.push_back({"mailbox name of few characters", kImap, {}, imap, std::string_view("\0&a", 3)});
  return rows;
}

TEST(TransferEncoder, GivesTheSameAtEveryCutAndComesBack) {
  std::mt19937 random(20240917);
  for (const EncodeRow& row : EncodeRows()) {
    for (const std::size_t size :
         {0u, 1u, 2u, 3u, 4u, 5u, 8u, 44u, 45u, 46u, 57u, 58u, 90u, 91u, 200u}) {
      // Mailbox names are whole units.
      const std::size_t bytes = row.encoding == kImap ? size / 2 * 2 : size;
      const std::string data = RandomText(random, bytes, row.alphabet);
      SCOPED_TRACE(std::string(row.what) + " of " + std::to_string(bytes) + " bytes");
      CBuffer whole("old");
      row.whole(TightCopy(data), whole);
      ExpectAtEveryCut(Encoder(row.encoding, row.options), data, {String(whole), 1});
      if (!row.comesBack) continue;
      EXPECT_EQ(RunCoder(MakeTransferDecoder(row.encoding, true), whole.Bytes()), (Coded{data, 1}));
    }
  }
}

// Larger than the slices that coders take chunks apart in.
TEST(TransferCoder, TakesLargeChunks) {
  std::mt19937 random(7);
  const std::string data = RandomText(random, 100000, "");
  for (const TransferEncoding encoding : {kB64, kQp, kUu, kHex, kUrl, kImap}) {
    TransferOptions options;
    options.textMode = 0;
    const Coded encoded = RunCoder(MakeTransferEncoder(encoding, options), data);
    const Coded back = RunCoder(MakeTransferDecoder(encoding, true), encoded.text, {33333, 70000});
    EXPECT_EQ(back, (Coded{data, 1})) << static_cast<int>(encoding);
  }
}

// White space whose meaning is open is held, whatever the chunks.
TEST(TransferDecoder, HoldsLongRunsOfWhiteSpace) {
  std::string run(100000, ' ');
  for (std::size_t i = 0; i < run.size(); i += 3) run[i] = '\t';
  for (const auto& [text, expected] : {std::pair{"a" + run + "b", "a" + run + "b"},
                                       std::pair{"a" + run + "\nb", std::string("a\nb")},
                                       std::pair{"a=" + run + "\nb", std::string("ab")},
                                       std::pair{"a=" + run + "b", "a=" + run + "b"}}) {
    EXPECT_EQ(DecodeWhole(kQp, text), expected);
    EXPECT_EQ(RunCoder(MakeTransferDecoder(kQp, false), text, CutEverywhere(text.size())).text,
              expected);
  }
}

// ---- Against the rules written down once more, slowly ----

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string SlowBase64(const std::string& data, std::size_t lineLength) {
  std::string chars;
  for (std::size_t bit = 0; bit < data.size() * 8; bit += 6) {
    std::size_t value = 0;
    for (std::size_t b = bit; b < bit + 6; ++b) {
      value = value * 2 + (b / 8 < data.size() ? data[b / 8] >> (7 - b % 8) & 1 : 0);
    }
    chars += kAlphabet[value];
  }
  while (chars.size() % 4 != 0) chars += '=';
  std::string lines;
  for (std::size_t i = 0; i < chars.size(); ++i) {
    lines += chars[i];
    if (lineLength > 0 && ((i + 1) % lineLength == 0 || i + 1 == chars.size())) lines += "\r\n";
  }
  return lines;
}

std::string SlowDecodeBase64(const std::string& text) {
  std::string chars;
  for (const char c : text) {
    if (c == '=' || (c != '\0' && kAlphabet.find(c) != kAlphabet.npos)) chars += c;
  }
  std::string data;
  for (std::size_t i = 0; i + 4 <= chars.size(); i += 4) {
    std::size_t bits = 0;
    for (std::size_t k = i; k < i + 4; ++k) {
      bits = bits << 6 | (chars[k] == '=' ? 0 : kAlphabet.find(chars[k]));
    }
    data += static_cast<char>(bits >> 16);
    if (chars[i + 2] == '=') break;
    data += static_cast<char>(bits >> 8);
    if (chars[i + 3] == '=') break;
    data += static_cast<char>(bits);
  }
  return data;
}

std::string SlowQuotedPrintable(const std::string& data, bool textMode) {
  std::string text;
  std::size_t column = 0;
  for (std::size_t i = 0; i < data.size(); ++i) {
    const auto c = static_cast<unsigned char>(data[i]);
    const int next = i + 1 < data.size() ? data[i + 1] : -1;
    if (textMode && (c == '\r' || c == '\n')) {
      if (c == '\r' && next == '\n') ++i;
      text += "\r\n";
      column = 0;
      continue;
    }
    const bool blank = c == ' ' || c == '\t';
    const bool plain = (c >= 33 && c <= 60) || (c >= 62 && c <= 126) ||
                       (blank && i + 1 < data.size() && next != '\r' && next != '\n');
    char escape[4];
    std::snprintf(escape, sizeof escape, "=%02X", c);
    const std::string piece = plain ? std::string(1, data[i]) : escape;
    if (column + piece.size() > 75) {
      text += "=\r\n";
      column = 0;
    }
    text += piece;
    column += piece.size();
  }
  return text;
}

std::string SlowDecodeQuotedPrintable(const std::string& text) {
  // Where only white space stands from i on, the end of that; npos otherwise.
  const auto blankUntilBreak = [&](std::size_t i) {
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    return i == text.size() || text[i] == '\r' || text[i] == '\n' ? i : std::string::npos;
  };
  std::string data;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    std::size_t end = std::string::npos;
    if (c == '=' && (end = blankUntilBreak(i + 1)) != std::string::npos) {
      i = text.compare(end, 2, "\r\n") == 0 ? end + 1 : end;
    } else if (c == '=' && i + 2 < text.size() && Decode1Hex(text[i + 1]) >= 0 &&
               Decode1Hex(text[i + 2]) >= 0) {
      data += static_cast<char>(Decode1Hex(text[i + 1]) * 16 + Decode1Hex(text[i + 2]));
      i += 2;
    } else if ((c == ' ' || c == '\t') && (end = blankUntilBreak(i)) != std::string::npos) {
      i = end - 1;
    } else {
      data += c;
    }
  }
  return data;
}

TEST(TransferCoder, AgreesWithTheSlowRules) {
  constexpr unsigned kSeed = 31337;
  std::mt19937 random(kSeed);
  const std::string_view alphabets[] = {
      "", "=AF0a \t\r\nx", "ABCDabcd0189+/=", " \t\r\n=", "ab \n", "YWJj==\r\n*"};
  for (int round = 0; round < 6000; ++round) {
    const std::string_view alphabet = alphabets[static_cast<std::size_t>(round) % 6];
    const std::string text = RandomText(random, random() % 300, alphabet);
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", round " + std::to_string(round) + ": " +
                 text);
    internal::LimitCpu(round % 4 == 0 ? internal::CpuLevel::kPortable : internal::CpuLevel::kAll);
    const std::size_t lineLength = random() % 80;
    ASSERT_EQ(Base64(text, static_cast<int>(lineLength)), SlowBase64(text, lineLength));
    ASSERT_EQ(DecodeWhole(kB64, text), SlowDecodeBase64(text));
    ASSERT_EQ(QuotedPrintable(text, 0), SlowQuotedPrintable(text, false));
    ASSERT_EQ(QuotedPrintable(text, 1), SlowQuotedPrintable(text, true));
    ASSERT_EQ(DecodeWhole(kQp, text), SlowDecodeQuotedPrintable(text));
    for (const TransferEncoding encoding : {kB64, kQp}) {
      std::vector<std::size_t> cuts;
      for (std::size_t at = random() % 20; at < text.size(); at += random() % 40)
        cuts.push_back(at);
      ASSERT_EQ(RunCoder(MakeTransferDecoder(encoding, false), text, cuts).text,
                DecodeWhole(encoding, text));
    }
  }
  internal::LimitCpu(internal::CpuLevel::kAll);
}

// Long runs with a fault now and then, in every encoding that has more than one kernel.
TEST(TransferCoder, KernelsAgree) {
  constexpr unsigned kSeed = 4711;
  constexpr TransferEncoding kEncodings[] = {kB64, kQp, TransferEncoding::kUuencode,
                                             TransferEncoding::kImapUtf7};
  std::mt19937 random(kSeed);
  for (int round = 0; round < 4000; ++round) {
    const TransferEncoding encoding = kEncodings[random() % std::size(kEncodings)];
    const std::string_view alphabet = random() % 2 != 0 ? "" : "ab\r\n\0\0\x42\x30"sv;
    const std::string data = RandomText(random, random() % 400, alphabet);
    internal::LimitCpu(internal::CpuLevel::kPortable);
    const Coded plain = RunCoder(MakeTransferEncoder(encoding, {}), data, {});
    std::string text = plain.text;
    if (round % 2 != 0 && !text.empty()) text[random() % text.size()] = static_cast<char>(random());
    const Coded strict = RunCoder(MakeTransferDecoder(encoding, false), text, {});
    const Coded lenient = RunCoder(MakeTransferDecoder(encoding, true), text, {});
    internal::LimitCpu(internal::CpuLevel::kAll);
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", round " + std::to_string(round) + ": " +
                 text);
    ASSERT_EQ(RunCoder(MakeTransferEncoder(encoding, {}), data, {}), plain);
    ASSERT_EQ(RunCoder(MakeTransferDecoder(encoding, false), text, {}), strict);
    ASSERT_EQ(RunCoder(MakeTransferDecoder(encoding, true), text, {}), lenient);
  }
}

TEST(DecodeBinHex, ComesBackFromRandomFiles) {
  std::mt19937 random(99);
  for (const std::string_view alphabet : {""sv, "a\x90"sv, "\0\x90"sv, "aaaaaaaaab"sv}) {
    for (std::size_t size = 0; size < 2000; size += 1 + size / 5) {
      const std::string data = RandomText(random, size, alphabet);
      const std::string file = BinHexFile("some name", data);
      ASSERT_EQ(DecodeWhole(TransferEncoding::kBinHex, file), data) << size;
      ASSERT_EQ(RunCoder(MakeTransferDecoder(TransferEncoding::kBinHex, false), file,
                         {std::min(size, file.size())}),
                (Coded{data, 1}));
    }
  }
}

}  // namespace
}  // namespace lumr
