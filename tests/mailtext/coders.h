// The transfer encodings as functions of a text, whole and in pieces.
#pragma once

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/mailtext/transfercoder.h"

namespace lumr {

// A copy in a heap block of the exact size, so that the address sanitizer sees every byte read
// too much.
class TightCopy {
 public:
  explicit TightCopy(std::string_view text)
      : bytes_(std::make_unique<char[]>(text.size())), size_(text.size()) {
    std::copy(text.begin(), text.end(), bytes_.get());
  }
  operator std::string_view() const { return {bytes_.get(), size_}; }

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t size_;
};

inline std::string String(const CBuffer& buffer) {
  return std::string(buffer.Bytes());
}

struct Coded {
  std::string text;
  int wellFormed = 0;
  bool operator==(const Coded&) const = default;
};

// Cuts the text at the ascending positions.
inline Coded RunCoder(std::unique_ptr<TransferCoder> coder, std::string_view text,
                      const std::vector<std::size_t>& cuts = {}) {
  CBuffer out;
  std::size_t begin = 0;
  for (const std::size_t cut : cuts) {
    coder->Update(TightCopy(text.substr(begin, cut - begin)), out);
    begin = cut;
  }
  coder->Update(TightCopy(text.substr(begin)), out);
  const int wellFormed = coder->Finish(out);
  return {String(out), wellFormed};
}

inline std::vector<std::size_t> CutEverywhere(std::size_t size) {
  std::vector<std::size_t> cuts(size);
  for (std::size_t i = 0; i < size; ++i) cuts[i] = i;
  return cuts;
}

inline std::string Base64(std::string_view data, int lineLength = 76) {
  CBuffer out;
  EncodeBase64(TightCopy(data), lineLength, out);
  return String(out);
}

inline std::string QuotedPrintable(std::string_view data, int textMode) {
  CBuffer out;
  EncodeQuotedPrintable(TightCopy(data), textMode, out);
  return String(out);
}

inline std::string Uuencode(std::string_view data) {
  CBuffer out;
  EncodeUuencode({}, {}, TightCopy(data), out);
  return String(out);
}

// What the whole-text decoder of the encoding gives.
inline std::string DecodeWhole(TransferEncoding encoding, std::string_view text) {
  const TightCopy copy(text);
  CBuffer out;
  CStringW wide;
  switch (encoding) {
    case TransferEncoding::kBase64:
      DecodeBase64(copy, out);
      break;
    case TransferEncoding::kQuotedPrintable:
      DecodeQuotedPrintable(copy, out);
      break;
    case TransferEncoding::kUuencode:
      DecodeUuencode(copy, nullptr, nullptr, &out);
      break;
    case TransferEncoding::kBinHex:
      DecodeBinHex(copy, out);
      break;
    case TransferEncoding::kHex:
    case TransferEncoding::kUrl:
      DecodeHex(copy, out);
      break;
    case TransferEncoding::kImapUtf7:
      DecodeImap4UTF7(copy, wide);
      out = wide;
      break;
  }
  return String(out);
}

// A BinHex text of bytes that already hold header, run signs and all.
inline std::string BinHexText(std::string_view bytes) {
  constexpr std::string_view kAlphabet =
      "!\"#$%&'()*+,-012345689@ABCDEFGHIJKLMNPQRSTUVXYZ[`abcdefhijklmpqr";
  std::string text = "(This file must be converted with BinHex 4.0)\r\n:";
  std::size_t column = 1;
  for (std::size_t bit = 0; bit < 8 * bytes.size(); bit += 6) {
    int value = 0;
    for (std::size_t b = bit; b < bit + 6; ++b) {
      const int byte = b / 8 < bytes.size() ? bytes[b / 8] : 0;
      value = value << 1 | (byte >> (7 - b % 8) & 1);
    }
    text += kAlphabet[static_cast<std::size_t>(value)];
    if (++column % 64 == 0) text += "\r\n";
  }
  return text + ":\r\n";
}

// A BinHex file with a data fork (runs marked) and no resource fork; checksums are zeros.
inline std::string BinHexFile(std::string_view name, std::string_view data) {
  std::string bytes(1, static_cast<char>(name.size()));
  bytes += name;
  bytes.append(11, 'T');
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(data.size() >> shift);
  bytes.append(6, '\0');
  bytes += data;
  bytes.append(4, '\0');
  std::string marked;
  for (std::size_t i = 0; i < bytes.size();) {
    std::size_t run = 1;
    while (i + run < bytes.size() && bytes[i + run] == bytes[i] && run < 255) ++run;
    marked += bytes[i];
    if (bytes[i] == '\x90') marked += '\0';
    if (run > 3) marked += {'\x90', static_cast<char>(run)};
    i += run > 3 ? run : 1;
  }
  return BinHexText(marked);
}

// size characters of an alphabet; of all bytes when it is empty.
inline std::string RandomText(std::mt19937& random, std::size_t size, std::string_view alphabet) {
  std::string text(size, '\0');
  for (char& c : text) {
    c = alphabet.empty() ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
  }
  return text;
}

}  // namespace lumr
