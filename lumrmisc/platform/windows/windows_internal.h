// What the sources of this folder share. The only place where the Windows headers come in.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef UNICODE
#define UNICODE
#endif
#include <windows.h>

#include <shellapi.h>
#include <shlobj.h>

#include <string>
#include <string_view>

#include "lumrmisc/platform/files.h"

namespace lumr::windows {

inline FileError LastError() {
  return {static_cast<int>(GetLastError())};
}
inline FileError Answer(BOOL ok) {
  return ok ? FileError() : LastError();
}

inline std::wstring Wide(std::u16string_view text) {
  return std::wstring(text.begin(), text.end());
}
inline CStringW Units(std::wstring_view text) {
  return CStringW(text.begin(), text.end());
}

// Fills a string by a call (buffer, size in units) that answers the length, without the
// terminator, when the buffer was large enough, the size needed otherwise, and 0 on failure.
template <typename Call>
CStringW FilledBy(Call call) {
  std::wstring buffer(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = call(buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0) return {};
    if (length < buffer.size()) return Units({buffer.data(), length});
    buffer.resize(std::size_t{length} * 2);
  }
}

// FILETIME counts 100 ns from 1601.
inline constexpr long long kTicksPerSecond = 10'000'000;
inline constexpr long long kSecondsFrom1601To1970 = 11'644'473'600;

inline FILETIME FileTimeOf(CTime time) {
  const auto ticks = static_cast<unsigned long long>(
      (time.time_since_epoch().count() + kSecondsFrom1601To1970) * kTicksPerSecond);
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

inline CTime TimeOf(const FILETIME& time) {
  const unsigned long long ticks = (1ULL * time.dwHighDateTime << 32) | time.dwLowDateTime;
  return CTime(std::chrono::seconds(static_cast<long long>(ticks / kTicksPerSecond) -
                                    kSecondsFrom1601To1970));
}

// A path as the system takes it, of any length. One that no name on disk can have (empty, or
// with a NUL inside) has an error instead.
class NativePath {
 public:
  explicit NativePath(const CStringW& path);
  FileError Error() const { return error_; }
  const wchar_t* Get() const { return text_.c_str(); }

 private:
  std::wstring text_;
  FileError error_;
};

}  // namespace lumr::windows
