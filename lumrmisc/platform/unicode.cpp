#include "lumrmisc/platform/unicode.h"

#include <algorithm>
#include <cstddef>

#include "lumrmisc/platform/types.h"

namespace lumr {

namespace {

struct CharacterRange {
  char32_t first;
  char32_t last;
};

namespace tables {
#include "lumrmisc/platform/tables/unicode.inc"
}  // namespace tables

constexpr int kBlock = 32;  // units a block, as data/generate cuts them
constexpr std::uint16_t kClassMask = 0x0FFF;
constexpr std::uint16_t kIdeograph = 0x1000;
constexpr std::uint16_t kEastAsianWide = 0x2000;
constexpr std::uint16_t kFullWidth = 0x4000;

std::uint16_t RecordOf(char16_t unit) {
  return tables::kUnitRecords[tables::kUnitBlocks[tables::kUnitIndex[unit / kBlock] +
                                                  unit % kBlock]];
}

// The case tables hold the distance to the other case.
char16_t ChangeCase(char16_t unit, const std::uint16_t* index) {
  return static_cast<char16_t>(unit + tables::kCaseBlocks[index[unit / kBlock] + unit % kBlock]);
}

char16_t SameCase(char16_t unit) {
  return unit;
}

template <typename Fold>
int Compare(std::u16string_view a, std::u16string_view b, Fold fold) {
  const std::size_t size = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < size; ++i) {
    if (a[i] == b[i]) continue;
    const int difference = fold(a[i]) - fold(b[i]);
    if (difference != 0) return difference;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

}  // namespace

std::uint16_t UnitClassOf(char16_t unit) {
  return RecordOf(unit) & kClassMask;
}
bool IsUnitDefined(char16_t unit) {
  return (RecordOf(unit) & kClassMask) != 0;
}
bool IsUnitSpace(char16_t unit) {
  return (RecordOf(unit) & kUnitSpace) != 0;
}
bool IsUnitAlpha(char16_t unit) {
  return (RecordOf(unit) & kUnitAlpha) != 0;
}
bool IsUnitDigit(char16_t unit) {
  return (RecordOf(unit) & kUnitDigit) != 0;
}
bool IsUnitIdeograph(char16_t unit) {
  return (RecordOf(unit) & kIdeograph) != 0;
}

char16_t UnitToLower(char16_t unit) {
  return ChangeCase(unit, tables::kLowerIndex);
}
char16_t UnitToUpper(char16_t unit) {
  return ChangeCase(unit, tables::kUpperIndex);
}

bool IsEastAsianWide(char32_t character) {
  if (character < 0x10000) {
    return (RecordOf(static_cast<char16_t>(character)) & kEastAsianWide) != 0;
  }
  const auto after = std::upper_bound(
      std::begin(tables::kWideRanges), std::end(tables::kWideRanges), character,
      [](char32_t value, const CharacterRange& range) { return value < range.first; });
  return after != std::begin(tables::kWideRanges) && character <= std::prev(after)->last;
}

bool IsUnitFullWidth(char16_t unit) {
  return (RecordOf(unit) & kFullWidth) != 0;
}

int CompareUnits(std::u16string_view a, std::u16string_view b) {
  return Compare(a, b, SameCase);
}

int CompareUnitsNoCase(std::u16string_view a, std::u16string_view b) {
  return Compare(a, b, UnitToLower);
}

bool EqualUnits(const char* a, const char* b, std::size_t count) {
  return count == 0 || std::memcmp(a, b, 2 * count) == 0;
}

bool EqualUnitsNoCase(const char* a, const char* b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const char16_t unitA = LoadUnit(a + 2 * i);
    const char16_t unitB = LoadUnit(b + 2 * i);
    if (unitA != unitB && UnitToLower(unitA) != UnitToLower(unitB)) return false;
  }
  return true;
}

}  // namespace lumr
