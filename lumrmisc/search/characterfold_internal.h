// Folding of character width and kind of kana, which case folding (charset/casefold.h) does not
// touch: to half-width Latin and symbols, to full-width katakana.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "lumrmisc/platform/mbcs.h"

namespace lumr {

class CharacterFold {
 public:
  CharacterFold() = default;  // folds nothing
  // page null: UTF-16. Letters that become half-width are those of the original's case.
  CharacterFold(const MbcsPage* page, bool width, bool kanaKind);

  bool IsOn() const { return codes_ != nullptr; }
  bool ChangesLength() const { return width_; }

  std::uint32_t Fold(std::uint32_t code) const { return IsOn() ? (*codes_)[code] : code; }
  // Half-width katakana with a voiced mark behind it: the character that both are. 0 when they
  // are two.
  std::uint32_t Combine(std::uint32_t code, std::uint32_t next) const;

  using Ranges = std::vector<std::pair<std::uint32_t, std::uint32_t>>;
  // What the characters of ranges become, in ascending ranges.
  Ranges FoldRanges(const Ranges& ranges) const;

 private:
  using Table = std::vector<std::uint16_t>;

  int CodeOf(char16_t unit) const;  // -1 when the page lacks it

  std::shared_ptr<const Table> codes_;
  const MbcsPage* page_ = nullptr;
  bool width_ = false;
};

}  // namespace lumr
