// Places in a text where two bytes, or units, of a word stand, 64 bytes at a time. For processors
// with AVX-512 only; on others than x86-64 these do nothing.
#pragma once

#include <cstddef>

namespace lumr {

// A byte or unit of the word in both cases, and where it would stand for the place 0 of the text.
struct TextAnchor {
  const char* text;
  char16_t lower;
  char16_t upper;
};

// The first place from pos to last, counted in bytes, at which both anchors stand; one behind last
// where there is none. Of units, only the places pos, pos + 2 and so on are looked at.
std::size_t NextBytesAvx512(const TextAnchor (&anchors)[2], std::size_t pos, std::size_t last);
std::size_t NextUnitsAvx512(const TextAnchor (&anchors)[2], std::size_t pos, std::size_t last);

}  // namespace lumr
