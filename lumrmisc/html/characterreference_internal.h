// Character references of HTML: "&lt;", "&#60;", "&#x3c;" and the 2,231 names of the standard.
#pragma once

#include <cstddef>
#include <string_view>

namespace lumr {

struct CharacterReference {
  std::size_t length = 0;  // units of the source; 0: the ampersand is no reference
  std::size_t count = 0;   // one or two
  char16_t units[2] = {};
};

// Reads the reference at the start of a text that begins with an ampersand, after the tokenizer of
// the HTML standard. A number that names no character gives U+FFFD, one of 80 to 9F hex what
// windows-1252 has there.
CharacterReference ReadCharacterReference(std::u16string_view text, bool inAttribute);

}  // namespace lumr
