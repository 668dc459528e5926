// What kind of character something is, as a Japanese reader sees it: the classes that a double
// click selects a run of, that links end at, and that columns are counted by.
//
// A type is one class, and kCharFullWidth beside it when the character takes two columns. Classes
// come from the tables of platform/unicode.h; narrow characters are classed by the UTF-16
// character that their code page gives them. Unassigned codes are kCharOther.
#pragma once

namespace lumr {

enum CharType : int {
  kCharOther = 0,          // surrogates, private use, what is no character
  kCharControl = 1,        // U+0000 to U+001F, U+007F to U+009F, the marks that join or turn text
  kCharSpace = 2,          // white space of one column or less
  kCharFullSpace = 3,      // the ideographic space U+3000
  kCharAlnum = 4,          // letters and digits but those that have a class of their own
  kCharSymbol = 5,         // punctuation, symbols and marks
  kCharFullAlnum = 6,      // full-width Latin letters and digits
  kCharFullSymbol = 7,     // the same where they take two columns
  kCharHiragana = 8,       // and their iteration marks
  kCharKatakana = 9,       // full-width, with the long-vowel mark
  kCharHalfKatakana = 10,  // half-width, with their voicing marks
  kCharIdeograph = 11,     // and the iteration marks of ideographs
  kCharClass = 0xFF,       // the bits of the class
  kCharFullWidth = 0x100,
};

// The type of a UTF-16 unit.
int GetCharType(char16_t unit);

// The type of a character of a code page: a byte, or lead * 256 + trail. Two-byte characters are
// full-width, whatever they are, and bytes are not.
int GetCharType(unsigned character, unsigned codePage);

// Whether the character is a code page's form of U+3000.
bool IsFullSpace(unsigned character, unsigned codePage);

// Whether a type is white space of any width, or a control.
constexpr bool IsBlankType(int charType) {
  const int kind = charType & kCharClass;
  return kind >= kCharControl && kind <= kCharFullSpace;
}

}  // namespace lumr
