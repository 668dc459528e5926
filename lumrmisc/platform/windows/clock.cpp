#include "lumrmisc/platform/clock.h"

#include "lumrmisc/platform/windows/windows_internal.h"

namespace lumr {
CTime Now() {
  return std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now());
}

LocalTime LocalTimeOf(CTime time) {
  const FILETIME utc = windows::FileTimeOf(time);
  SYSTEMTIME utcParts = {};
  SYSTEMTIME parts = {};
  FILETIME local = utc;
  if (!FileTimeToSystemTime(&utc, &utcParts) ||
      !SystemTimeToTzSpecificLocalTime(nullptr, &utcParts, &parts) ||
      !SystemTimeToFileTime(&parts, &local)) {
    return {1970, 1, 1, 0, 0, 0, 0};
  }
  const auto offset = windows::TimeOf(local) - time;
  return {parts.wYear,
          parts.wMonth,
          parts.wDay,
          parts.wHour,
          parts.wMinute,
          parts.wSecond,
          static_cast<int>(std::chrono::duration_cast<std::chrono::minutes>(offset).count())};
}

std::uint32_t TickMilliseconds() {
  return GetTickCount();
}

}  // namespace lumr
