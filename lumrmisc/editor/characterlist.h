// A list of characters from the settings, compiled for the question whether one is on it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {

// A character as a number: a byte, lead * 256 + trail, or a UTF-16 unit.
using EditorCharacter = std::uint16_t;

// The set of the characters of a list, by whole characters: "A" is not in 81 41. Asking costs one
// look into 8 KiB.
class CharacterList {
 public:
  // The characters of list, in the edit form of codeType; compiles only when something changed.
  void Assign(std::string_view list, CodeType codeType);

  bool Contains(EditorCharacter character) const {
    return (bits_[character / 64u] >> (character % 64u) & 1) != 0;
  }

 private:
  void Add(EditorCharacter character) {
    bits_[character / 64u] |= std::uint64_t{1} << (character % 64u);
  }

  CBuffer list_;
  const MbcsPage* page_ = nullptr;  // null: UTF-16
  std::array<std::uint64_t, 1024> bits_ = {};
};

}  // namespace lumr
