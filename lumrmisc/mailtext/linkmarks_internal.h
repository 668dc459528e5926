// Looking for the few characters that no link can do without, sixteen bytes at once.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "lumrmisc/platform/types.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lumr::links {

// Unit is unsigned char or char16_t; places are bytes.
template <typename Unit>
unsigned UnitAt(std::string_view text, std::size_t pos) {
  if constexpr (sizeof(Unit) == 1) {
    return static_cast<unsigned char>(text[pos]);
  } else {
    return LoadUnit(text.data() + pos);
  }
}

#if defined(__SSE2__)
inline constexpr std::size_t kBlock = 16;

// A bit for each byte of the block of which the unit is the given ASCII character.
template <typename Unit>
unsigned EqualBits(const char* block, char unit) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block));
  const __m128i equal = sizeof(Unit) == 1 ? _mm_cmpeq_epi8(bytes, _mm_set1_epi8(unit))
                                          : _mm_cmpeq_epi16(bytes, _mm_set1_epi16(unit));
  return static_cast<unsigned>(_mm_movemask_epi8(equal));
}
#else
inline constexpr std::size_t kBlock = 0;  // there are none

template <typename Unit>
unsigned EqualBits(const char*, char) {
  return 0;
}
#endif

// The first place in [pos, end) that is a hit; end when there is none. bits tells the hits of a
// block, for which overhang bytes behind it must be there too.
template <typename Unit, typename Bits, typename IsHit>
std::size_t FindHit(std::size_t pos, std::size_t end, std::size_t overhang, Bits bits,
                    IsHit isHit) {
  for (; kBlock > 0 && pos + kBlock + overhang <= end; pos += kBlock) {
    if (const unsigned hits = bits(pos)) {
      return pos + static_cast<std::size_t>(std::countr_zero(hits));
    }
  }
  for (; pos + sizeof(Unit) <= end; pos += sizeof(Unit)) {
    if (isHit(pos)) return pos;
  }
  return end;
}

// The first unit in [pos, end) that is the given ASCII character; end when there is none.
template <typename Unit>
std::size_t FindUnit(std::string_view text, std::size_t pos, std::size_t end, char unit) {
  if (pos >= end) return end;
  if constexpr (sizeof(Unit) == 1) {
    const void* const found = std::memchr(text.data() + pos, unit, end - pos);
    if (found == nullptr) return end;
    return static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
  } else {
    return FindHit<Unit>(
        pos, end, 0, [=](std::size_t at) { return EqualBits<Unit>(text.data() + at, unit); },
        [=](std::size_t at) { return UnitAt<Unit>(text, at) == static_cast<unsigned>(unit); });
  }
}

// The first ":" or pair of backslashes from pos on; the text's size when there is none.
template <typename Unit>
std::size_t FindMark(std::string_view text, std::size_t pos) {
  constexpr std::size_t kSize = sizeof(Unit);
  const auto bits = [text](std::size_t at) {
    const char* const place = text.data() + at;
    return EqualBits<Unit>(place, ':') |
           (EqualBits<Unit>(place, '\\') & EqualBits<Unit>(place + kSize, '\\'));
  };
  const auto isHit = [text](std::size_t at) {
    const unsigned unit = UnitAt<Unit>(text, at);
    return unit == ':' || (unit == '\\' && at + 2 * kSize <= text.size() &&
                           UnitAt<Unit>(text, at + kSize) == '\\');
  };
  return FindHit<Unit>(pos, text.size(), kSize, bits, isHit);
}

}  // namespace lumr::links
