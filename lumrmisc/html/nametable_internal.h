// A table of rows found by their name of ASCII, the case of the text ignored. The index is made at
// compile time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

template <class Row, std::size_t kCount>
class NameTable {
 public:
  // Rows have a name in lower case, no two the same. The rows must outlive the table.
  explicit constexpr NameTable(const std::array<Row, kCount>& rows) : rows_(rows.data()) {
    for (std::size_t i = 0; i < kCount; ++i) {
      std::size_t slot = Slot(rows[i].name);
      while (slots_[slot] != 0) slot = (slot + 1) % kSlots;
      slots_[slot] = static_cast<std::uint16_t>(i + 1);
      if (rows[i].name.size() > longest_) longest_ = rows[i].name.size();
    }
  }

  // Null when no row has this name.
  constexpr const Row* Find(std::u16string_view name) const {
    if (name.empty() || name.size() > longest_) return nullptr;
    for (std::size_t slot = Slot(name); slots_[slot] != 0; slot = (slot + 1) % kSlots) {
      const Row& row = rows_[slots_[slot] - 1];
      if (IsNamed(row, name)) return &row;
    }
    return nullptr;
  }

 private:
  static constexpr std::size_t kSlots = std::bit_ceil(kCount * 4);

  // Three letters and the length tell nearly all names apart.
  template <class Text>
  static constexpr std::size_t Slot(Text name) {
    const auto letter = [&](std::size_t at) {
      return (static_cast<std::uint32_t>(name[at]) | 0x20u) & 0xFFu;
    };
    const std::uint32_t key = letter(0) | letter(name.size() - 1) << 8 |
                              letter(name.size() / 2) << 16 |
                              static_cast<std::uint32_t>(name.size()) << 24;
    return (key * 0x9E3779B1u >> 16) % kSlots;
  }

  static constexpr bool IsNamed(const Row& row, std::u16string_view name) {
    if (row.name.size() != name.size()) return false;
    for (std::size_t i = 0; i < name.size(); ++i) {
      if (UnitAsciiLower(name[i]) != static_cast<char16_t>(row.name[i])) return false;
    }
    return true;
  }

  const Row* rows_;
  std::array<std::uint16_t, kSlots> slots_{};
  std::size_t longest_ = 0;
};

// A row of a table that is only a set of names.
struct NameRow {
  std::u16string_view name;
};

}  // namespace lumr
