// Dates of mail: what a Date header says, and writing one.
//
// The reader takes RFC 5322 with its obsolete forms (RFC 822 and 850 too), the C library's order,
// ISO 8601, and what Japanese senders write: "2004/05/06", "2004年5月6日(木) 午後7時8分", year
// names from 明治 on, numerals ("令和六年五月六日"), full-width digits and signs, a time before the
// date, English ordinals ("May 6th"), dots for colons, a missing comma, "GMT+9", "+09:00", "JST"
// before or behind an offset. Neither the locale nor the time zone of the machine plays a part.
//
// Nothing here throws except for memory; every function is linear in its input.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

// What a date left open or got wrong, and what was assumed for it.
enum DateAssumption : unsigned {
  kDateNoTime = 0x0001,        // 00:00:00
  kDateNoZone = 0x0002,        // the caller's zone
  kDateUnknownZone = 0x0004,   // a name that nobody knows, or a military letter: UTC (RFC 5322)
  kDateShortYear = 0x0008,     // two or three digits: 00 to 49 are 2000 to 2049 (RFC 5322)
  kDateWrongWeekday = 0x0010,  // the date counts
  kDateUnsignedZone = 0x0020,  // "0900" for "+0900"
  kDateZoneConflict = 0x0040,  // "+0900 (EST)": the offset counts; "JST-9": the name
  kDateTextIgnored = 0x0080,   // text behind a complete date
  kDateOrderGuessed = 0x0100,  // "04/05/06": year, month, day
};

struct MailDate {
  CTime time{};
  int zoneMinutes = 0;  // of the sender: local time less UTC, east is positive
  unsigned assumed = 0;
};

enum class DateProblem {
  kNone,
  kNoDate,      // the text ends before year, month and day have been seen
  kUnexpected,  // something that is no part of a date
  kTwice,       // a second time, day, month or year
  kYearRange,   // not 1900 to 9999
  kMonthRange,
  kDayRange,   // no such day in that month
  kHourRange,  // 24 too
  kMinuteRange,
  kSecondRange,  // 60 is a leap second: the next minute
  kZoneRange,    // minutes above 59 or hours above 99
  kAmbiguous,    // "05/06/2004": day and month could be either
};
struct DateFault {
  DateProblem problem = DateProblem::kNone;
  int position = 0;  // of the field that is wrong, in the units of the text
};

// Reads a date. 1; or 0, date as it was, with the fault when asked for. Narrow text is in the
// current code page (raw header bytes are; decoded ones are UTF-16). Comments are passed over,
// nested ones too. zoneMinutesIfMissing stands for a zone that is not given.
int ParseMailDate(std::string_view text, MailDate& date, DateFault* fault = nullptr,
                  int zoneMinutesIfMissing = 0);
int ParseMailDate(std::u16string_view text, MailDate& date, DateFault* fault = nullptr,
                  int zoneMinutesIfMissing = 0);

// "Thu, 06 May 2004 07:08:09 +0900" (RFC 5322) of a point in time at a place with that offset; and
// "2004-05-06T07:08:09+09:00" (ISO 8601). Empty when the year there is not 1900 to 9999 or the
// offset not less than 100 hours.
CStringA FormatMailDate(CTime time, int zoneMinutes);
CStringA FormatIsoDate(CTime time, int zoneMinutes);
// "2004年5月6日(木) 07:08:09 +0900".
CStringW FormatJapaneseDate(CTime time, int zoneMinutes);

}  // namespace lumr
