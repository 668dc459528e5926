#include "lumrmisc/search/unittext_internal.h"

#include <algorithm>
#include <limits>
#include <new>

namespace lumr {

namespace {

// The way back decodes that much again, byte by byte.
constexpr std::size_t kStationDistance = 4096;

// Bytes of UTF-16 that one more byte of text can give, with room to spare.
constexpr std::size_t kMostFromByte = 16;

}  // namespace

UnitText::UnitText(CodeType codeType, std::string_view text, bool withMap) : text_(text) {
  if (IsCodeTypeUnicode(codeType)) {
    units_ = text.substr(0, text.size() & ~std::size_t{1});
    return;
  }
  const unsigned codePage = CharSetCode2CodePage(CodeTypeSave2Edit(codeType));
  page_ = FindMbcsPage(codePage);
  Decode(codePage, withMap);
}

void UnitText::Decode(unsigned codePage, bool withMap) {
  CodePageDecoder decoder(codePage);
  const std::size_t most = decoder.MaxOutput(text_.size());
  if (most > static_cast<std::size_t>(std::numeric_limits<int>::max())) throw std::bad_alloc();
  char* const begin = converted_.GetBuffer(static_cast<int>(most));
  char* out = begin;
  for (std::size_t pos = 0; pos < text_.size(); pos += kStationDistance) {
    if (withMap) stations_.push_back({pos, static_cast<std::size_t>(out - begin), decoder});
    const std::string_view piece = text_.substr(pos, kStationDistance);
    out = decoder.Decode(piece, pos + piece.size() == text_.size(), out);
  }
  converted_.ReleaseBuffer(static_cast<int>(out - begin));
  units_ = converted_.Bytes();
}

// Decodes from the last station before the place, byte by byte, until the unit comes.
std::size_t UnitText::CallerPos(std::size_t unitPos) const {
  if (page_ == nullptr) return unitPos;
  if (unitPos >= units_.size()) return text_.size();
  const auto behind = std::upper_bound(
      stations_.begin(), stations_.end(), unitPos,
      [](std::size_t wanted, const Station& station) { return wanted < station.unitPos; });
  const Station& station = *(behind - 1);
  CodePageDecoder decoder = station.decoder;
  std::size_t given = station.unitPos;
  for (std::size_t pos = station.callerPos;; ++pos) {
    const std::size_t begin = pos - decoder.Pending();
    char units[kMostFromByte];
    const bool last = pos + 1 == text_.size();
    const char* const end = decoder.Decode(text_.substr(pos, 1), last, units);
    const std::size_t wanted = unitPos - given;
    given += static_cast<std::size_t>(end - units);
    // Two units from one byte are a lead byte that has no trail byte, and the byte behind it.
    if (given > unitPos) return wanted == 0 ? begin : pos;
  }
}

// The decoder takes both bytes of a bad pair for one character, where a reader by characters goes
// on with the second one; in code page 950 that byte can begin a pair.
std::size_t UnitText::BeginInCaller(std::size_t unitPos) const {
  const std::size_t pos = CallerPos(unitPos);
  return IsInsidePair(pos) ? pos - 1 : pos;
}

std::size_t UnitText::EndInCaller(std::size_t unitPos) const {
  const std::size_t pos = CallerPos(unitPos);
  return IsInsidePair(pos) ? pos + 1 : pos;
}

bool UnitText::IsInsidePair(std::size_t pos) const {
  return page_ != nullptr && page_->IsTrailInContext(text_, pos);
}

}  // namespace lumr
