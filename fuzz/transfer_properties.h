// What holds for every transfer encoding, whatever the bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tests/mailtext/coders.h"

namespace lumr {

inline void Require(bool holds) {
  if (!holds) __builtin_trap();
}

// Cuts at one place and at every so many bytes; the first byte of the input chooses.
inline std::vector<std::size_t> CutsOf(std::string_view input) {
  const std::size_t step = input.empty() ? 1 : static_cast<unsigned char>(input[0]) % 61 + 1;
  std::vector<std::size_t> cuts;
  for (std::size_t at = step; at < input.size(); at += step) cuts.push_back(at);
  return cuts;
}

// Decoding any text: pieces give the same as the whole and as the whole-text function, and the
// output is at most factor times the input and a little.
inline void CheckDecoder(TransferEncoding encoding, std::string_view text, std::size_t factor) {
  for (const bool lenient : {false, true}) {
    const Coded whole = RunCoder(MakeTransferDecoder(encoding, lenient), text);
    Require(RunCoder(MakeTransferDecoder(encoding, lenient), text, CutsOf(text)) == whole);
    Require(whole.text.size() <= factor * text.size() + 2);
    if (!lenient && encoding != TransferEncoding::kBinHex) {
      Require(DecodeWhole(encoding, text) == whole.text);
    }
  }
}

// Encoding any data: pure ASCII, the same in pieces, and it comes back.
inline std::string CheckEncoder(TransferEncoding encoding, const TransferOptions& options,
                                std::string_view data) {
  const Coded whole = RunCoder(MakeTransferEncoder(encoding, options), data);
  Require(RunCoder(MakeTransferEncoder(encoding, options), data, CutsOf(data)) == whole);
  for (const char c : whole.text) Require(static_cast<unsigned char>(c) < 0x7F);
  const Coded back = RunCoder(MakeTransferDecoder(encoding, true), whole.text);
  Require(back.wellFormed == 1);
  Require(encoding == TransferEncoding::kQuotedPrintable || back.text == data);
  return whole.text;
}

}  // namespace lumr
