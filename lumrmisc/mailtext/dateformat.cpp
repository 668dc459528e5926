#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <utility>

#include "lumrmisc/mailtext/date.h"

namespace lumr {
namespace {

struct Civil {
  std::chrono::year_month_day day;
  unsigned weekday = 0;
  int hour = 0, minute = 0, second = 0;
};

std::optional<Civil> CivilOf(CTime time, int zoneMinutes) {
  using namespace std::chrono;
  if (zoneMinutes <= -6000 || zoneMinutes >= 6000) return std::nullopt;
  // Far from any year that can be written, where adding the offset could overflow.
  constexpr CTime kFirst = sys_days(year(1899) / 1 / 1);
  constexpr CTime kLast = sys_days(year(10000) / 12 / 31);
  if (time < kFirst || time > kLast) return std::nullopt;
  const CTime local = time + minutes(zoneMinutes);
  const sys_days midnight = floor<days>(local);
  const int ofDay = static_cast<int>((local - midnight).count());
  const Civil civil{year_month_day(midnight), weekday(midnight).c_encoding(), ofDay / 3600,
                    ofDay / 60 % 60, ofDay % 60};
  const int year = static_cast<int>(civil.day.year());
  return year >= 1900 && year <= 9999 ? std::optional(civil) : std::nullopt;
}

// Writes the fields of a date by a format of the C library, whose numbers know no locale.
template <class... Fields>
CStringA Formatted(const char* format, Fields... fields) {
  char text[64];
  const int size = std::snprintf(text, sizeof text, format, fields...);
  return {text, static_cast<std::size_t>(size)};
}

char SignOf(int zoneMinutes) {
  return zoneMinutes < 0 ? '-' : '+';
}
int ZoneHours(int zoneMinutes) {
  return (zoneMinutes < 0 ? -zoneMinutes : zoneMinutes) / 60;
}
int ZoneRest(int zoneMinutes) {
  return (zoneMinutes < 0 ? -zoneMinutes : zoneMinutes) % 60;
}

constexpr const char* kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

int YearOf(const Civil& civil) {
  return static_cast<int>(civil.day.year());
}
unsigned MonthOf(const Civil& civil) {
  return static_cast<unsigned>(civil.day.month());
}
unsigned DayOf(const Civil& civil) {
  return static_cast<unsigned>(civil.day.day());
}

}  // namespace

CStringA FormatMailDate(CTime time, int zoneMinutes) {
  const auto civil = CivilOf(time, zoneMinutes);
  if (!civil) return {};
  return Formatted("%s, %02u %s %04d %02d:%02d:%02d %c%02d%02d", kWeekdays[civil->weekday],
                   DayOf(*civil), kMonths[MonthOf(*civil) - 1], YearOf(*civil), civil->hour,
                   civil->minute, civil->second, SignOf(zoneMinutes), ZoneHours(zoneMinutes),
                   ZoneRest(zoneMinutes));
}

CStringA FormatIsoDate(CTime time, int zoneMinutes) {
  const auto civil = CivilOf(time, zoneMinutes);
  if (!civil) return {};
  return Formatted("%04d-%02u-%02uT%02d:%02d:%02d%c%02d:%02d", YearOf(*civil), MonthOf(*civil),
                   DayOf(*civil), civil->hour, civil->minute, civil->second, SignOf(zoneMinutes),
                   ZoneHours(zoneMinutes), ZoneRest(zoneMinutes));
}

CStringW FormatJapaneseDate(CTime time, int zoneMinutes) {
  const auto civil = CivilOf(time, zoneMinutes);
  if (!civil) return {};
  // The signs stand in for ASCII letters, which no number holds.
  const CStringA text =
      Formatted("%dy%um%ud(w) %02d:%02d:%02d %c%02d%02d", YearOf(*civil), MonthOf(*civil),
                DayOf(*civil), civil->hour, civil->minute, civil->second, SignOf(zoneMinutes),
                ZoneHours(zoneMinutes), ZoneRest(zoneMinutes));
  CStringW japanese(text.begin(), text.end());
  const std::pair<char16_t, char16_t> signs[] = {
      {u'y', u'年'}, {u'm', u'月'}, {u'd', u'日'}, {u'w', u"日月火水木金土"[civil->weekday]}};
  for (const auto& [letter, sign] : signs) {
    std::replace(japanese.begin(), japanese.end(), letter, sign);
  }
  return japanese;
}

}  // namespace lumr
