#include "lumrmisc/platform/clock.h"

#include <time.h>

namespace lumr {

CTime Now() {
  return std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now());
}

LocalTime LocalTimeOf(CTime time) {
  const time_t seconds = static_cast<time_t>(time.time_since_epoch().count());
  struct tm parts = {};
  if (localtime_r(&seconds, &parts) == nullptr) return {1970, 1, 1, 0, 0, 0, 0};
  return {parts.tm_year + 1900,
          parts.tm_mon + 1,
          parts.tm_mday,
          parts.tm_hour,
          parts.tm_min,
          parts.tm_sec,
          static_cast<int>(parts.tm_gmtoff / 60)};
}

std::uint32_t TickMilliseconds() {
  using std::chrono::milliseconds;
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(std::chrono::duration_cast<milliseconds>(since).count());
}

}  // namespace lumr
