// The words that stand in dates: months, weekdays, zones, halves of the day, Japanese years and
// numerals.
#pragma once

#include <cstddef>
#include <string_view>

#include "lumrmisc/buffer/ascii.h"

namespace lumr::date {

enum class WordKind { kWeekday, kMonth, kHalfOfDay, kYearName, kZone, kMilitaryZone };

struct DateWord {
  std::u16string_view text;  // lower case
  std::size_t shortest;      // so many letters of it are enough
  WordKind kind;
  // Weekday: 0 for Sunday; month: 1 to 12; half of the day: 1 for the afternoon; year name: the
  // year before its first one; zone: minutes east of UTC.
  int value;
};

inline constexpr std::size_t kLongestWord = 9;
inline constexpr std::size_t kLongestKanjiWord = 3;

// A word in lower case. One that is longer than all of ours is cut to a length that none has.
struct WordText {
  char16_t units[kLongestWord + 1];
  std::size_t size = 0;

  void Add(char16_t unit) {
    if (size > kLongestWord) return;
    units[size++] = IsAsciiUpper(unit) ? static_cast<char16_t>(unit + 0x20) : unit;
  }
};

// Null for an unknown word.
const DateWord* FindWord(const WordText& word);

// What a Japanese numeral stands for: a digit, or 10, 100, 1000; -1 for anything else.
int NumeralValue(char16_t unit);

// Whether a word makes an English ordinal of the number before it: "22nd".
bool IsOrdinalEnding(const WordText& word);

}  // namespace lumr::date
