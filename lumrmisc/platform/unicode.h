// Classes, case and width of UTF-16 units and characters, from the library's own tables (Unicode
// 15.0 as Windows classifies it). The surrogates are defined units without further classes.
#pragma once

#include <cstdint>
#include <string_view>

namespace lumr {

// Class flags of a unit. A unit without any flag is not a defined character.
enum UnitClass : std::uint16_t {
  kUnitUpper = 0x0001,
  kUnitLower = 0x0002,
  kUnitDigit = 0x0004,
  kUnitSpace = 0x0008,
  kUnitPunctuation = 0x0010,
  kUnitControl = 0x0020,
  kUnitBlank = 0x0040,
  kUnitHexDigit = 0x0080,
  kUnitAlpha = 0x0100,
  kUnitDefined = 0x0200,
};

std::uint16_t UnitClassOf(char16_t unit);
bool IsUnitDefined(char16_t unit);
bool IsUnitSpace(char16_t unit);  // U+3000 and U+0085 are white space
bool IsUnitAlpha(char16_t unit);  // letters of all scripts and letter numbers, not marks
bool IsUnitDigit(char16_t unit);  // decimal digits of all scripts, and superscript 1, 2 and 3
bool IsUnitIdeograph(char16_t unit);

// Simple lower and upper case of a unit; itself when it has none. Only pairs that go both ways:
// what depends on a language or has no way back (the Turkish i, the micro sign, the final sigma,
// title-case letters) stays.
char16_t UnitToLower(char16_t unit);
char16_t UnitToUpper(char16_t unit);

// East Asian Width W or F (Unicode Standard Annex 11), for any code point.
bool IsEastAsianWide(char32_t character);
// Whether a unit takes two columns: East Asian Width W or F, or an exact two-byte code in code
// page 932, so that Shift_JIS and UTF-16 of one text are equally wide.
bool IsUnitFullWidth(char16_t unit);

// Compares unit by unit; the NoCase forms compare the units in lower case. Negative, 0 or
// positive; a shorter text that begins the longer one is less.
int CompareUnits(std::u16string_view a, std::u16string_view b);
int CompareUnitsNoCase(std::u16string_view a, std::u16string_view b);
// The same over little-endian bytes that may stand at any address; count in units.
bool EqualUnits(const char* a, const char* b, std::size_t count);
bool EqualUnitsNoCase(const char* a, const char* b, std::size_t count);

}  // namespace lumr
