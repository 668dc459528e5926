#include <algorithm>
#include <array>
#include <iterator>

#include "lumrmisc/mailtext/datewords_internal.h"

namespace lumr::date {
namespace {

constexpr DateWord Weekday(std::u16string_view text, std::size_t shortest, int value) {
  return {text, shortest, WordKind::kWeekday, value};
}
constexpr DateWord Month(std::u16string_view text, std::size_t shortest, int value) {
  return {text, shortest, WordKind::kMonth, value};
}
constexpr DateWord YearName(std::u16string_view text, int before) {
  return {text, 2, WordKind::kYearName, before};
}
constexpr DateWord HalfOfDay(std::u16string_view text, int value) {
  return {text, 2, WordKind::kHalfOfDay, value};
}
constexpr DateWord Zone(std::u16string_view text, int hours, int minutes = 0) {
  return {text, text.size(), WordKind::kZone, hours * 60 + minutes};
}

constexpr DateWord kRows[] = {
    Weekday(u"sunday", 3, 0),
    Weekday(u"monday", 3, 1),
    Weekday(u"tuesday", 3, 2),
    Weekday(u"wednesday", 3, 3),
    Weekday(u"thursday", 3, 4),
    Weekday(u"friday", 3, 5),
    Weekday(u"saturday", 3, 6),
    Weekday(u"日曜日", 1, 0),
    Weekday(u"月曜日", 1, 1),
    Weekday(u"火曜日", 1, 2),
    Weekday(u"水曜日", 1, 3),
    Weekday(u"木曜日", 1, 4),
    Weekday(u"金曜日", 1, 5),
    Weekday(u"土曜日", 1, 6),
    Month(u"january", 3, 1),
    Month(u"february", 3, 2),
    Month(u"march", 3, 3),
    Month(u"april", 3, 4),
    Month(u"may", 3, 5),
    Month(u"june", 3, 6),
    Month(u"july", 3, 7),
    Month(u"august", 3, 8),
    Month(u"september", 3, 9),
    Month(u"october", 3, 10),
    Month(u"november", 3, 11),
    Month(u"december", 3, 12),
    HalfOfDay(u"am", 0),
    HalfOfDay(u"pm", 1),
    HalfOfDay(u"午前", 0),
    HalfOfDay(u"午後", 1),
    YearName(u"明治", 1867),
    YearName(u"大正", 1911),
    YearName(u"昭和", 1925),
    YearName(u"平成", 1988),
    YearName(u"令和", 2018),
    // RFC 5322
    Zone(u"ut", 0),
    Zone(u"gmt", 0),
    Zone(u"z", 0),
    Zone(u"est", -5),
    Zone(u"edt", -4),
    Zone(u"cst", -6),
    Zone(u"cdt", -5),
    Zone(u"mst", -7),
    Zone(u"mdt", -6),
    Zone(u"pst", -8),
    Zone(u"pdt", -7),
    // In use besides, where a name has one meaning in mail.
    Zone(u"utc", 0),
    Zone(u"jst", 9),
    Zone(u"kst", 9),
    Zone(u"hkt", 8),
    Zone(u"sgt", 8),
    Zone(u"wet", 0),
    Zone(u"west", 1),
    Zone(u"bst", 1),
    Zone(u"cet", 1),
    Zone(u"cest", 2),
    Zone(u"met", 1),
    Zone(u"mest", 2),
    Zone(u"eet", 2),
    Zone(u"eest", 3),
    Zone(u"msk", 3),
    Zone(u"msd", 4),
    Zone(u"ast", -4),
    Zone(u"adt", -3),
    Zone(u"nst", -3, -30),
    Zone(u"ndt", -2, -30),
    Zone(u"akst", -9),
    Zone(u"akdt", -8),
    Zone(u"hst", -10),
    Zone(u"aest", 10),
    Zone(u"aedt", 11),
    Zone(u"awst", 8),
    Zone(u"nzst", 12),
    Zone(u"nzdt", 13),
};

// In the order of their texts.
constexpr auto kWords = [] {
  auto rows = std::to_array(kRows);
  std::sort(rows.begin(), rows.end(),
            [](const DateWord& a, const DateWord& b) { return a.text < b.text; });
  return rows;
}();

struct NumeralRow {
  char16_t sign;
  int value;
};
constexpr NumeralRow kNumerals[] = {
    {u'〇', 0}, {u'零', 0}, {u'一', 1}, {u'二', 2}, {u'三', 3},  {u'四', 4},   {u'五', 5},
    {u'六', 6}, {u'七', 7}, {u'八', 8}, {u'九', 9}, {u'十', 10}, {u'百', 100}, {u'千', 1000},
};

constexpr std::u16string_view kOrdinals[] = {u"st", u"nd", u"rd", u"th"};

// RFC 822 had their signs wrong, so RFC 5322 takes them all for "unknown".
constexpr DateWord kMilitary{u"", 1, WordKind::kMilitaryZone, 0};

}  // namespace

const DateWord* FindWord(const WordText& word) {
  const std::u16string_view text(word.units, word.size);
  // A word that begins with the text is the first one that is not less.
  const auto found = std::lower_bound(
      kWords.begin(), kWords.end(), text,
      [](const DateWord& row, std::u16string_view wanted) { return row.text < wanted; });
  if (found != kWords.end() && text.size() >= found->shortest && found->text.starts_with(text)) {
    return &*found;
  }
  const bool isMilitary = text.size() == 1 && IsAsciiLower(text[0]) && text[0] != u'j';
  return isMilitary ? &kMilitary : nullptr;
}

int NumeralValue(char16_t unit) {
  const auto* const found =
      std::find_if(std::begin(kNumerals), std::end(kNumerals),
                   [unit](const NumeralRow& row) { return row.sign == unit; });
  return found == std::end(kNumerals) ? -1 : found->value;
}

bool IsOrdinalEnding(const WordText& word) {
  return std::find(std::begin(kOrdinals), std::end(kOrdinals),
                   std::u16string_view(word.units, word.size)) != std::end(kOrdinals);
}

}  // namespace lumr::date
