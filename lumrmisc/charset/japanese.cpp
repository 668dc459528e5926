#include "lumrmisc/charset/japanese.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <string_view>

#include "lumrmisc/charset/japanese_internal.h"

namespace lumr {
namespace {

constexpr std::int64_t kLargestBuffer = 0x7FFFFFFF - 63;  // 2^31 - 64 bytes

void Reserve(CBuffer& out, std::int64_t size) {
  if (size > kLargestBuffer) throw std::bad_alloc();
  out.SetAllocSize(static_cast<int>(size));
}

// How much of a text is sure to fit when converted in the room that out still has.
std::size_t FittingInput(const JapaneseConverter& converter, const CBuffer& out, std::size_t left) {
  const auto room = static_cast<std::size_t>(out.GetAllocSize() - out.GetLength());
  if (converter.MaxOutput(left) <= room) return left;
  const std::size_t fixed = converter.MaxOutput(0);
  return room <= fixed ? 0 : (room - fixed) / (converter.MaxOutput(1) - fixed);
}

// Converts a whole text. ISO-2022-JP may take four times the source but mostly takes little more
// than it, so twice the source is taken at first and the rest only when that fills up: the text
// is converted in pieces that are sure to fit.
void ConvertWhole(JapaneseConversion conversion, const char* src, int len, CBuffer& out,
                  CConversionReport* report) {
  constexpr std::int64_t kSlack = 256;
  constexpr std::size_t kLeastPiece = 64;
  out.Empty();
  std::string_view text = JapaneseText(src, len);
  if (text.empty()) return;
  JapaneseConverter converter(conversion);
  const auto most = static_cast<std::int64_t>(converter.MaxOutput(text.size()));
  Reserve(out, std::min({most, 2 * std::int64_t{len} + kSlack, kLargestBuffer}));
  for (bool last = false; !last;) {
    const std::size_t fitting = FittingInput(converter, out, text.size());
    if (fitting < std::min(text.size(), kLeastPiece)) {
      Reserve(out, out.GetLength() + static_cast<std::int64_t>(converter.MaxOutput(text.size())));
      continue;
    }
    last = fitting == text.size();
    char* const begin = out.GetBuffer();
    char* const target = begin + out.GetLength();
    char* const end = converter.Convert(text.substr(0, fitting), last, target, report);
    out.ReleaseBuffer(static_cast<int>(end - begin));
    text.remove_prefix(fitting);
  }
}

}  // namespace

void ConvertSJisToEuc(const char* src, int len, CBuffer& out, CConversionReport* report) {
  ConvertWhole(JapaneseConversion::kSJisToEuc, src, len, out, report);
}

void ConvertEucToSJis(const char* src, int len, CBuffer& out, CConversionReport* report) {
  ConvertWhole(JapaneseConversion::kEucToSJis, src, len, out, report);
}

void ConvertSJisToJis(const char* src, int len, CBuffer& out, CConversionReport* report) {
  ConvertWhole(JapaneseConversion::kSJisToJis, src, len, out, report);
}

void ConvertJisToSJis(const char* src, int len, CBuffer& out, CConversionReport* report) {
  ConvertWhole(JapaneseConversion::kJisToSJis, src, len, out, report);
}

}  // namespace lumr
