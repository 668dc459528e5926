// Conversions in one call, from and into heap blocks of the exact size, so that the address
// sanitizer sees every byte too much.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/types.h"
#include "support/bytes.h"

namespace lumr {

struct Converted {
  std::string bytes;
  long long fits = 0;
  long long replaced = 0;
  std::vector<ConversionLoss> losses;
  bool operator==(const Converted&) const = default;
};

inline std::string_view Bytes(std::u16string_view units) {
  return {reinterpret_cast<const char*>(units.data()), 2 * units.size()};
}

inline std::u16string Units(std::string_view bytes) {
  std::u16string units;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) units += LoadUnit(bytes.data() + i);
  return units;
}

// Runs step(chunk, last, out, report), which gives the end of its output, over text cut at the
// ascending positions. maxOutput(bytes) must hold each time.
template <typename MaxOutput, typename Step>
Converted ConvertCut(std::string_view text, const std::vector<std::size_t>& cuts,
                     MaxOutput maxOutput, Step step) {
  Converted result;
  CConversionReport report(1000000);
  std::size_t begin = 0;
  for (std::size_t i = 0; i <= cuts.size(); ++i) {
    const std::size_t end = i < cuts.size() ? cuts[i] : text.size();
    const ExactCopy in(text.substr(begin, end - begin));
    const auto out = std::make_unique<char[]>(maxOutput(end - begin));
    char* const written = step(in.View(), i == cuts.size(), out.get(), &report);
    result.bytes.append(out.get(), written);
    begin = end;
  }
  result.losses = report.First();
  return result;
}

template <typename Coder, typename Step>
Converted ConvertBy(Coder& coder, std::string_view text, const std::vector<std::size_t>& cuts,
                    Step step) {
  Converted result = ConvertCut(
      text, cuts, [&](std::size_t size) { return coder.MaxOutput(size); }, step);
  result.fits = coder.Counts().fits;
  result.replaced = coder.Counts().replaced;
  return result;
}

inline Converted Decode(unsigned codePage, std::string_view text,
                        const std::vector<std::size_t>& cuts = {}) {
  CodePageDecoder decoder(codePage);
  return ConvertBy(decoder, text, cuts, [&](auto... all) { return decoder.Decode(all...); });
}

inline Converted Encode(unsigned codePage, std::string_view utf16,
                        const std::vector<std::size_t>& cuts = {},
                        std::string_view replacement = "?") {
  CodePageEncoder encoder(codePage, replacement);
  return ConvertBy(encoder, utf16, cuts, [&](auto... all) { return encoder.Encode(all...); });
}

inline std::string CodeBytes(unsigned code) {
  std::string bytes;
  if (code > 0xFF) bytes += static_cast<char>(code >> 8);
  return bytes += static_cast<char>(code);
}

inline constexpr unsigned kDoubleBytePages[] = {932, 936, 949, 950, 51949};
inline constexpr unsigned kSingleBytePages[] = {1250,  1251,  1252,  1253,  1254,  1257,  20127,
                                                20866, 28591, 28592, 28594, 28595, 28597, 28599};

inline std::vector<unsigned> TablePages() {
  std::vector<unsigned> pages(std::begin(kDoubleBytePages), std::end(kDoubleBytePages));
  pages.insert(pages.end(), std::begin(kSingleBytePages), std::end(kSingleBytePages));
  return pages;
}

}  // namespace lumr
