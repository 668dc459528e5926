#include "lumrmisc/buffer/chartype.h"

#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

struct UnitRange {
  char16_t first;
  char16_t last;
  CharType kind;
};

// What the class flags of Unicode do not tell apart, in rising order.
constexpr UnitRange kRanges[] = {
    {0x3000, 0x3000, kCharFullSpace},    {0x3005, 0x3007, kCharIdeograph},
    {0x3021, 0x3029, kCharIdeograph},    {0x303B, 0x303B, kCharIdeograph},
    {0x3041, 0x3096, kCharHiragana},     {0x309D, 0x309F, kCharHiragana},
    {0x30A1, 0x30FA, kCharKatakana},     {0x30FC, 0x30FF, kCharKatakana},
    {0x31F0, 0x31FF, kCharKatakana},     {0xFF10, 0xFF19, kCharFullAlnum},
    {0xFF21, 0xFF3A, kCharFullAlnum},    {0xFF41, 0xFF5A, kCharFullAlnum},
    {0xFF66, 0xFF9F, kCharHalfKatakana},
};

CharType ClassOf(char16_t unit, bool fullWidth) {
  for (const UnitRange& range : kRanges) {
    if (unit >= range.first && unit <= range.last) return range.kind;
  }
  if (IsUnitIdeograph(unit)) return kCharIdeograph;
  const unsigned flags = UnitClassOf(unit);
  if ((flags & kUnitControl) != 0 && (flags & kUnitSpace) == 0) return kCharControl;
  if (unit < 0x20 || (unit >= 0x7F && unit < 0xA0)) return kCharControl;
  if ((flags & kUnitSpace) != 0) return kCharSpace;
  if ((flags & (kUnitAlpha | kUnitDigit)) != 0) return kCharAlnum;
  const bool isOther = flags == 0 || (unit >= 0xD800 && unit < 0xF900);
  return isOther ? kCharOther : fullWidth ? kCharFullSymbol : kCharSymbol;
}

int TypeOf(char16_t unit, bool fullWidth) {
  return ClassOf(unit, fullWidth) | (fullWidth ? kCharFullWidth : 0);
}

}  // namespace

int GetCharType(char16_t unit) {
  return TypeOf(unit, IsUnitFullWidth(unit));
}

int GetCharType(unsigned character, unsigned codePage) {
  if (character < 0x80) return TypeOf(static_cast<char16_t>(character), false);
  const bool isPair = character > 0xFF;
  const char bytes[2] = {static_cast<char>(character >> 8), static_cast<char>(character)};
  CodePageDecoder decoder(codePage);
  char units[16];  // more than any two bytes become
  char* const end = decoder.Decode(std::string_view(bytes, 2).substr(isPair ? 0 : 1), true, units);
  if (end == units || decoder.Counts().replaced != 0) {
    return isPair ? kCharOther | kCharFullWidth : kCharOther;
  }
  return TypeOf(LoadUnit(units), isPair);
}

bool IsFullSpace(unsigned character, unsigned codePage) {
  struct SpaceRow {
    unsigned codePage;
    unsigned character;
  };
  static constexpr SpaceRow kSpaces[] = {
      {932, 0x8140}, {936, 0xA1A1}, {949, 0xA1A1}, {950, 0xA140}, {51949, 0xA1A1},
  };
  for (const SpaceRow& row : kSpaces) {
    if (row.codePage == codePage) return row.character == character;
  }
  return false;
}

}  // namespace lumr
