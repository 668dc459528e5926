// Small scanners of UTF-16 text that every file of this folder needs.
#pragma once

#include <bit>
#include <cstddef>
#include <string_view>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/platform/unicode.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lumr {

// White space of Unicode, the last of which is U+3000: what makes up nearly all text is settled
// without the table.
inline bool IsHtmlSpace(char16_t unit) {
  if (unit <= 0x20) return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D);
  if (unit < 0x85 || unit > 0x3000) return false;
  return IsUnitSpace(unit);
}

inline bool IsLineEnd(char16_t unit) {
  return unit == u'\r' || unit == u'\n';
}

template <class Unit>
constexpr Unit UnitAsciiLower(Unit unit) {
  return IsAsciiUpper(unit) ? static_cast<Unit>(unit + 0x20) : unit;
}

// Whether text begins with a word of ASCII in lower case, or is one, the case of text ignored. No
// unit outside ASCII has an ASCII lower case.
inline bool StartsWithNoCase(std::u16string_view text, std::string_view word) {
  if (text.size() < word.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (UnitAsciiLower(text[i]) != static_cast<unsigned char>(word[i])) return false;
  }
  return true;
}
inline bool EqualsNoCase(std::u16string_view text, std::string_view word) {
  return text.size() == word.size() && StartsWithNoCase(text, word);
}

// The reference that stands for a character of markup, or an empty text.
template <class Unit>
constexpr std::string_view ReferenceOf(Unit unit) {
  switch (unit) {
    case Unit('&'):
      return "&amp;";
    case Unit('<'):
      return "&lt;";
    case Unit('>'):
      return "&gt;";
    case Unit('"'):
      return "&quot;";
    default:
      return {};
  }
}

// The position of the first of the given units at or behind from; the size of the text when there
// is none.
template <class... Units>
std::size_t FindUnit(std::u16string_view text, std::size_t from, Units... units) {
  std::size_t pos = from;
#if defined(__SSE2__)
  constexpr std::size_t kStep = 8;
  for (; text.size() >= kStep && pos <= text.size() - kStep; pos += kStep) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + pos));
    __m128i found = _mm_setzero_si128();
    ((found =
          _mm_or_si128(found, _mm_cmpeq_epi16(block, _mm_set1_epi16(static_cast<short>(units))))),
     ...);
    const int mask = _mm_movemask_epi8(found);
    if (mask != 0) {
      return pos + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(mask))) / 2;
    }
  }
#endif
  while (pos < text.size() && !((text[pos] == units) || ...)) ++pos;
  return pos;
}

}  // namespace lumr
