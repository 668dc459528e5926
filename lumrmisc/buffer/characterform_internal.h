// Narrow and wide text for rules that hold for both: a rule is a template over a form, which
// says how long a character is and what white space is.
#pragma once

#include <cstddef>
#include <string_view>
#include <type_traits>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {

// In every code page trail bytes are 40 hex and above, so quotes, parentheses, commas, angle
// brackets, digits and white space may be looked for byte by byte. "@", "[", "\" and "]" may not.
struct NarrowForm {
  using Unit = char;
  using View = std::string_view;
  using String = CStringA;

  const MbcsPage& page = CurrentMbcsPage();

  std::size_t CharLength(View text, std::size_t pos) const { return page.CharLength(text, pos); }
  static bool IsSpace(char unit) { return IsAsciiSpace(unit); }
};

// Every unit is a character of its own: no rule here tells the halves of a surrogate pair apart
// from other characters.
struct WideForm {
  using Unit = char16_t;
  using View = std::u16string_view;
  using String = CStringW;

  static std::size_t CharLength(View, std::size_t) { return 1; }
  static bool IsSpace(char16_t unit) { return IsUnitSpace(unit); }
};

template <class Unit>
using FormOf = std::conditional_t<std::is_same_v<Unit, char>, NarrowForm, WideForm>;

// Without the white space at both ends.
template <class Unit>
std::basic_string_view<Unit> TrimmedText(std::basic_string_view<Unit> text) {
  while (!text.empty() && FormOf<Unit>::IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && FormOf<Unit>::IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

// The position of an ASCII character at or behind start, which is a border of characters, or npos.
template <class Unit>
std::size_t FindCharacter(std::basic_string_view<Unit> text, char wanted, std::size_t start = 0) {
  const FormOf<Unit> form;
  for (std::size_t i = start; i < text.size(); i += form.CharLength(text, i)) {
    if (text[i] == Unit(wanted)) return i;
  }
  return text.npos;
}

// The position of the first character that stands in a set of ASCII characters, or npos.
template <class Unit, class Set>
std::size_t FindCharacterOf(std::basic_string_view<Unit> text, const Set& set) {
  const FormOf<Unit> form;
  for (std::size_t i = 0; i < text.size(); i += form.CharLength(text, i)) {
    if (set.Holds(text[i])) return i;
  }
  return text.npos;
}

// A set of ASCII characters.
class AsciiSet {
 public:
  constexpr explicit AsciiSet(std::string_view members) {
    for (const char c : members) members_[static_cast<unsigned char>(c)] = true;
  }
  constexpr bool Holds(char c) const { return members_[static_cast<unsigned char>(c)]; }
  constexpr bool Holds(char16_t c) const { return c < 128 && members_[c]; }

 private:
  bool members_[256] = {};
};

}  // namespace lumr
