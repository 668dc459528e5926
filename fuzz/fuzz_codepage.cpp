// Any text in any code page, cut anywhere: the pieces give the same as the whole, nothing is
// written beyond MaxOutput, the report agrees with the counts, and what has no loss comes back.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/platform/codepage.h"

namespace {

constexpr unsigned kCodePages[] = {932,   936,   949,   950,   51949, 1250,  1251,  1252,
                                   1253,  1254,  1257,  20127, 20866, 28591, 28592, 28594,
                                   28595, 28597, 28599, 1200,  65000, 65001};

void Require(bool holds) {
  if (!holds) __builtin_trap();
}

struct Converted {
  std::string bytes;
  std::vector<lumr::ConversionLoss> losses;
  bool operator==(const Converted&) const = default;
};

// step(chunk, last, out, report) over chunks of the given size, each in a block of its own.
template <typename Coder, typename Step>
Converted Convert(Coder& coder, std::string_view text, std::size_t chunkSize, Step step) {
  Converted result;
  lumr::CConversionReport report(text.size() + 8);
  std::size_t begin = 0;
  for (bool last = false; !last; begin += chunkSize) {
    const std::string_view chunk = text.substr(begin, chunkSize);
    last = chunk.size() == text.size() - begin;
    const std::size_t bound = coder.MaxOutput(chunk.size());
    const auto in = std::make_unique<char[]>(chunk.size());
    std::copy(chunk.begin(), chunk.end(), in.get());
    const auto out = std::make_unique<char[]>(bound);
    char* const end = step({in.get(), chunk.size()}, last, out.get(), &report);
    Require(static_cast<std::size_t>(end - out.get()) <= bound);
    result.bytes.append(out.get(), end);
  }
  Require(coder.Pending() == 0);
  Require(coder.Counts().fits == report.Fits() && coder.Counts().replaced == report.Replaced());
  result.losses = report.First();
  long long offset = 0;
  for (const lumr::ConversionLoss& loss : result.losses) {
    Require(loss.inputOffset >= offset && loss.inputLength > 0);
    offset = loss.inputOffset + loss.inputLength;
    Require(loss.outputOffset <= static_cast<long long>(result.bytes.size()));
  }
  Require(offset <= static_cast<long long>(text.size()));
  return result;
}

Converted Decode(unsigned codePage, std::string_view text, std::size_t chunkSize) {
  lumr::CodePageDecoder decoder(codePage);
  return Convert(decoder, text, chunkSize,
                 [&](std::string_view in, bool last, char* out, lumr::CConversionReport* report) {
                   return decoder.Decode(in, last, out, report);
                 });
}

Converted Encode(unsigned codePage, std::string_view text, std::size_t chunkSize,
                 std::string_view replacement = "?") {
  lumr::CodePageEncoder encoder(codePage, replacement);
  return Convert(encoder, text, chunkSize,
                 [&](std::string_view in, bool last, char* out, lumr::CConversionReport* report) {
                   return encoder.Encode(in, last, out, report);
                 });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const unsigned codePage = kCodePages[data[0] % std::size(kCodePages)];
  const std::size_t chunkSize = 1 + data[1] % 40u;
  const std::string_view text(reinterpret_cast<const char*>(data) + 2, size - 2);

  const Converted decoded = Decode(codePage, text, text.size() + 1);
  Require(Decode(codePage, text, chunkSize) == decoded);
  const Converted back = Encode(codePage, decoded.bytes, chunkSize);
  // UTF-7 writes one text in many ways; the others have one.
  if (decoded.losses.empty() && codePage != 65000) {
    Require(back.bytes == text && back.losses.empty());
  }

  const Converted encoded = Encode(codePage, text, text.size() + 1);
  Require(Encode(codePage, text, chunkSize) == encoded);
  if (encoded.losses.empty()) {
    const Converted again = Decode(codePage, encoded.bytes, chunkSize);
    Require(again.bytes == text && again.losses.empty());
  }
  Require(Encode(codePage, text, chunkSize, "").losses.size() == encoded.losses.size());
  return 0;
}
