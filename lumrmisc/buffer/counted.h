// Text arguments of the exported functions, checked once: a pointer and a length become a view.
//
// A null pointer is an empty text. A negative length means up to the terminating NUL; with any
// other length NUL is an ordinary character.
#pragma once

#include <cstddef>
#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

inline std::string_view CountedText(const char* text, int length = -1) {
  if (text == nullptr) return {};
  return length < 0 ? std::string_view(text)
                    : std::string_view(text, static_cast<std::size_t>(length));
}

// The number of UTF-16 units before the first zero unit; text may stand at any address.
inline std::size_t UnitLength(const void* text) {
  const char* const begin = static_cast<const char*>(text);
  const char* end = begin;
  while (LoadUnit(end) != 0) end += sizeof(char16_t);
  return static_cast<std::size_t>(end - begin) / sizeof(char16_t);
}

// The bytes of UTF-16 text at any address; length counts units. Wide text is handled by its
// bytes because a u16string_view is only for addresses known to be even.
inline std::string_view CountedUnits(const void* text, int length = -1) {
  if (text == nullptr) return {};
  const std::size_t units = length < 0 ? UnitLength(text) : static_cast<std::size_t>(length);
  return {static_cast<const char*>(text), units * sizeof(char16_t)};
}

// The bytes of a wide view.
inline std::string_view BytesOf(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

}  // namespace lumr
