// Value types that the library's interfaces speak of.
#pragma once

#include <bit>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace lumr {

static_assert(std::endian::native == std::endian::little,
              "UTF-16 text is kept as little-endian bytes and read in place");

using CStringA = std::string;     // narrow text in the current code page
using CStringW = std::u16string;  // UTF-16 text

template <typename T>
using CArray = std::vector<T>;
using CStringArray = CArray<CStringA>;
using CUIntArray = CArray<unsigned>;

// A point in time in whole seconds.
using CTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::seconds>;

// A rectangle in pixels; right and bottom lie outside it.
struct CRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  bool operator==(const CRect&) const = default;
};

struct CPoint {
  int x = 0;
  int y = 0;
  bool operator==(const CPoint&) const = default;
};

// UTF-16 text inside a byte buffer may start at any address, so its units are never reached
// through a char16_t pointer but loaded and stored here.
inline char16_t LoadUnit(const void* address) {
  char16_t unit;
  std::memcpy(&unit, address, sizeof unit);
  return unit;
}

inline void StoreUnit(void* address, char16_t unit) {
  std::memcpy(address, &unit, sizeof unit);
}

}  // namespace lumr
