// The arithmetic between JIS X 0208 and Shift_JIS, the byte classes of the Japanese forms, and
// tables of both for the converters' inner loops.
#pragma once

#include <array>
#include <cstdint>

namespace lumr {

constexpr unsigned char kKanaShift = 0x8E;        // EUC-JP: before a half-width katakana
constexpr unsigned char kSupplementShift = 0x8F;  // EUC-JP: before a pair of JIS X 0212

constexpr bool IsIn(unsigned byte, unsigned first, unsigned last) {
  return byte >= first && byte <= last;
}
constexpr bool IsKanaByte(unsigned byte) {
  return IsIn(byte, 0xA1, 0xDF);
}
constexpr bool IsSJisLead(unsigned byte) {
  return IsIn(byte, 0x81, 0x9F) || IsIn(byte, 0xE0, 0xEF);
}
// What the converters take for a trail byte. 7F is among them, though no character has it.
constexpr bool IsSJisTrail(unsigned byte) {
  return IsIn(byte, 0x40, 0xFC);
}
constexpr bool IsEucByte(unsigned byte) {
  return IsIn(byte, 0xA1, 0xFE);
}
constexpr bool IsJisByte(unsigned byte) {
  return IsIn(byte, 0x21, 0x7E);
}

// A two-byte character.
struct BytePair {
  unsigned char first;
  unsigned char second;
};

constexpr BytePair MakePair(unsigned first, unsigned second) {
  return {static_cast<unsigned char>(first), static_cast<unsigned char>(second)};
}

// Two rows of JIS X 0208 share a lead byte of Shift_JIS. Bytes outside 21-7E (a broken text in
// kanji state) give the arithmetic modulo 256.
constexpr BytePair JisToSJis(BytePair jis) {
  const unsigned row = jis.first;
  const unsigned cell = jis.second;
  const unsigned trail = row % 2 == 0 ? cell + 126 : cell + (cell <= 95 ? 31 : 32);
  return MakePair((row + 1) / 2 + (row < 95 ? 112 : 176), trail);
}

// For a lead and a trail byte. A trail byte of 7F gives the cell of 80.
constexpr BytePair SJisToJis(BytePair sjis) {
  const unsigned lead = sjis.first;
  const unsigned trail = sjis.second;
  const unsigned oddRow = trail < 159 ? 1 : 0;
  const unsigned row = (lead - (lead < 160 ? 112 : 176)) * 2 - oddRow;
  return MakePair(row, trail - (oddRow == 0 ? 126 : trail > 127 ? 32 : 31));
}

// A converted pair is the sum of what its two bytes give: its first byte in the low eight bits,
// so that it is stored at once. A sum above 0xFFFF is no well-formed pair.
constexpr std::uint32_t kNoPair = 0x10000;

constexpr std::uint32_t PairCode(BytePair pair) {
  return pair.first + pair.second * 256u;
}

struct SJisToJisTable {
  std::array<std::uint32_t, 256> lead{};
  std::array<std::uint32_t, 256> trail{};

  constexpr std::uint32_t Code(unsigned first, unsigned second) const {
    return lead[first] + trail[second];
  }
};

constexpr SJisToJisTable MakeSJisToJisTable() {
  SJisToJisTable table;
  for (unsigned byte = 0; byte < 256; ++byte) {
    // The even row of the lead byte; a trail byte of the odd row takes one away again.
    table.lead[byte] = IsSJisLead(byte) ? SJisToJis(MakePair(byte, 0x9F)).first : kNoPair;
    table.trail[byte] = kNoPair;
    if (!IsSJisTrail(byte) || byte == 0x7F) continue;
    const BytePair jis = SJisToJis(MakePair(0x81, byte));
    table.trail[byte] = PairCode(jis) - SJisToJis(MakePair(0x81, 0x9F)).first;
  }
  return table;
}

// From JIS, or from EUC-JP, which has offset 80 on both bytes.
struct JisToSJisTable {
  std::array<std::uint32_t, 256> row{};
  std::array<std::uint32_t, 512> cell{};  // those of even rows, then those of odd rows

  constexpr std::uint32_t Code(unsigned first, unsigned second) const {
    return row[first] + cell[first % 2 * 256 + second];
  }
};

constexpr JisToSJisTable MakeJisToSJisTable(unsigned offset) {
  JisToSJisTable table;
  table.row.fill(kNoPair);
  table.cell.fill(kNoPair);
  for (unsigned byte = 0x21; byte <= 0x7E; ++byte) {
    table.row[byte + offset] = JisToSJis(MakePair(byte, 0x21)).first;
    table.cell[byte + offset] = JisToSJis(MakePair(0x22, byte)).second * 256u;
    table.cell[256 + byte + offset] = JisToSJis(MakePair(0x21, byte)).second * 256u;
  }
  return table;
}

inline constexpr SJisToJisTable kSJisToJis = MakeSJisToJisTable();
inline constexpr JisToSJisTable kJisToSJis = MakeJisToSJisTable(0);
inline constexpr JisToSJisTable kEucToSJis = MakeJisToSJisTable(0x80);

}  // namespace lumr
