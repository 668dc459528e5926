#include "lumrmisc/html/characterreference_internal.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {
namespace {

struct Entity {
  std::uint16_t name;  // where it begins in kEntityNames; pointers would be twice the table
  char16_t first;
  char16_t second;  // 0 for a single unit
};
#include "lumrmisc/html/entities.inc"

// What numbers of 80 to 9F mean; 0: the control character itself.
constexpr char16_t kWindows1252[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr std::uint32_t kNumberTooLarge = 0x110000;

// Below zero when the unit is no digit in this base.
int DigitValue(char16_t unit, int base) {
  if (IsAsciiDigit(unit)) return unit - u'0';
  if (base == 10) return -1;
  const char16_t lower = UnitAsciiLower(unit);
  return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

void SetCharacter(std::uint32_t number, CharacterReference& reference) {
  if (number >= 0x80 && number < 0xA0 && kWindows1252[number - 0x80] != 0) {
    number = kWindows1252[number - 0x80];
  }
  if (number == 0 || number >= kNumberTooLarge || (number >= 0xD800 && number < 0xE000)) {
    number = 0xFFFD;
  }
  reference.count = number < 0x10000 ? 1 : 2;
  if (number < 0x10000) {
    reference.units[0] = static_cast<char16_t>(number);
  } else {
    reference.units[0] = static_cast<char16_t>(0xD7C0 + (number >> 10));
    reference.units[1] = static_cast<char16_t>(0xDC00 + (number & 0x3FF));
  }
}

CharacterReference ReadNumber(std::u16string_view text) {
  CharacterReference reference;
  const bool isHex = text.size() > 2 && UnitAsciiLower(text[2]) == u'x';
  const int base = isHex ? 16 : 10;
  const std::size_t digits = isHex ? 3 : 2;
  std::size_t pos = digits;
  std::uint32_t number = 0;
  for (; pos < text.size(); ++pos) {
    const int digit = DigitValue(text[pos], base);
    if (digit < 0) break;
    number = number * static_cast<std::uint32_t>(base) + static_cast<std::uint32_t>(digit);
    number = std::min(number, kNumberTooLarge);
  }
  if (pos == digits) return reference;
  reference.length = pos < text.size() && text[pos] == u';' ? pos + 1 : pos;
  SetCharacter(number, reference);
  return reference;
}

// The longest name that the text begins with: the rows that agree so far narrow down letter by
// letter.
const Entity* FindName(std::u16string_view text, std::size_t& length) {
  const Entity* first = std::begin(kEntities);
  const Entity* last = std::end(kEntities);
  const Entity* found = nullptr;
  for (std::size_t i = 0; i < text.size() && first != last; ++i) {
    const char16_t unit = text[i];
    const auto letter = [i](const Entity& row) {
      return static_cast<char16_t>(kEntityNames[row.name + i]);
    };
    first =
        std::partition_point(first, last, [&](const Entity& row) { return letter(row) < unit; });
    last =
        std::partition_point(first, last, [&](const Entity& row) { return letter(row) == unit; });
    if (unit == 0) break;
    if (first != last && kEntityNames[first->name + i + 1] == '\0') {
      found = first;
      length = i + 1;
    }
  }
  return found;
}

}  // namespace

CharacterReference ReadCharacterReference(std::u16string_view text, bool inAttribute) {
  if (text.size() > 1 && text[1] == u'#') return ReadNumber(text);
  CharacterReference reference;
  std::size_t length = 0;
  const Entity* const entity = FindName(text.substr(1), length);
  if (entity == nullptr) return reference;
  const std::size_t end = length + 1;
  // "?a=1&copy=2" in an address is no copyright sign.
  if (inAttribute && text[end - 1] != u';' && end < text.size() &&
      (text[end] == u'=' || IsAsciiLetter(text[end]) || IsAsciiDigit(text[end]))) {
    return reference;
  }
  reference.length = end;
  reference.units[0] = entity->first;
  reference.units[1] = entity->second;
  reference.count = entity->second == 0 ? 1 : 2;
  return reference;
}

}  // namespace lumr
