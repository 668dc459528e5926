// Time of day.
#pragma once

#include <cstdint>

#include "lumrmisc/platform/types.h"

namespace lumr {

// A time as the clock on the wall of this machine shows it.
struct LocalTime {
  int year, month, day;      // month and day from 1
  int hour, minute, second;  // second up to 60, in a leap second
  int utcOffsetMinutes;      // local time less UTC: east is positive
};

CTime Now();
// By the machine's time zone, with the rules of that date. A time that the system's calendar
// cannot tell gives the start of 1970 in UTC.
LocalTime LocalTimeOf(CTime time);
// Since an unspecified start, at a steady pace; wraps around after 49 days.
std::uint32_t TickMilliseconds();

}  // namespace lumr
