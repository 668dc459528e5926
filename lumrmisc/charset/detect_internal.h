// What detection and the reading of charset labels share.
#pragma once

#include <cstddef>
#include <string_view>

namespace lumr {

struct ByteRange {
  unsigned char first;
  unsigned char last;

  template <typename Byte>
  constexpr bool Holds(Byte byte) const {
    const auto value = static_cast<unsigned char>(byte);
    return first <= value && value <= last;
  }
};

// The position of the first byte of 80 hex or more; npos when the text is 7-bit.
std::size_t FindEightBit(std::string_view text);

// The position of the first escape sequence that designates a set of ISO-2022-JP, or npos. With
// kanjiOnly those that terminals send too, such as ESC ( B, do not count.
std::size_t FindJapaneseEscape(std::string_view text, bool kanjiOnly);

}  // namespace lumr
