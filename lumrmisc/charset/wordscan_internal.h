// Looking at eight bytes of text at once.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace lumr {

// The value at an address of any alignment.
template <typename Value>
Value LoadValue(const void* address) {
  Value value;
  std::memcpy(&value, address, sizeof value);
  return value;
}

// A word as a row of units (bytes, or UTF-16 units) in the order of the text. Marks are the high
// bits of some units.
template <typename Unit>
struct WordOf {
  static constexpr std::uint64_t kOnes = ~std::uint64_t{0} / static_cast<Unit>(-1);
  static constexpr std::uint64_t kHighBits = kOnes << (sizeof(Unit) * 8 - 1);

  static constexpr std::uint64_t All(Unit unit) { return kOnes * unit; }
  // Marks the first zero unit, and perhaps units behind it: enough to find the first one.
  static constexpr std::uint64_t MarkZeros(std::uint64_t word) {
    return (word - kOnes) & ~word & kHighBits;
  }
  // Likewise the first unit that is the given one.
  static constexpr std::uint64_t Mark(std::uint64_t word, Unit unit) {
    return MarkZeros(word ^ All(unit));
  }
  // The offset in bytes of the first marked unit; 8 when there is none.
  static constexpr std::size_t FirstMark(std::uint64_t marks) {
    return static_cast<std::size_t>(std::countr_zero(marks)) / 8 / sizeof(Unit) * sizeof(Unit);
  }
};

}  // namespace lumr
