// Double-byte code pages to UTF-16 and back, 64 bytes at a time. For processors with AVX-512 only;
// on others than x86-64 these do nothing.
#pragma once

#include <iterator>

#include "lumrmisc/platform/codepage_internal.h"

namespace lumr {

inline constexpr int kFirstLead = 0x81;
inline constexpr int kFirstTrail = 0x40;
inline constexpr int kTrails = 0x100 - kFirstTrail;  // cells of a row
inline constexpr int kEncodeBlock = 32;              // units of a block of an encoding table
inline constexpr std::uint16_t kFirstPair = 0x8000;  // in encoding tables: an exact pair

// The place of a lead byte's row, in a code page whose rows stand one behind the other. Code page
// 932 has half-width katakana and two bytes besides, A0 to DF, between its lead bytes.
constexpr int LinearRow(int lead, bool hasKatakana) {
  return (lead - kFirstLead - (hasKatakana && lead >= 0xE0 ? 0x40 : 0)) * kTrails;
}

// Decodes what in begins with, up to the first code that has no exact unit or is cut off by the
// end, or to a few last bytes. Surrogates among the cells stand for what has none. Two bytes behind
// the cells are read. out has room for a unit for each byte.
void DecodeDoubleByteAvx512(const std::uint16_t* cells, bool hasKatakana, const Byte*& in,
                            const Byte* end, char*& out);

// Runs of units that Japanese and Chinese texts are made of.
struct UnitRun {
  int first;
  int last;
};
inline constexpr UnitRun kCjkRuns[] = {{0x3000, 0x30FF}, {0x4E00, 0x9FFF}, {0xFF00, 0xFFDF}};

// Such a run in an encoding table: the code of a unit u is at u + shift, modulo 65,536, in codes.
// Each number stands twice, in both halves of a lane: a lane is loaded and spread at once, a unit
// takes two steps.
struct PlacedRun {
  std::uint32_t first;
  std::uint32_t span;  // last - first
  std::uint32_t shift;
};

// The encoding table of a code page: index gives the start in codes of each block of units. Where
// hasRuns, the blocks of each of the runs stand one behind the other. Two bytes behind index and
// codes are read.
struct EncodingTable {
  const std::uint16_t* index;
  const std::uint16_t* codes;
  bool hasRuns;
  PlacedRun runs[std::size(kCjkRuns)];
};

// Encodes the whole units that in begins with, up to the first one without an exact code, or to a
// few last ones. out has room for two bytes for each unit.
void EncodeDoubleByteAvx512(const EncodingTable& table, const Byte*& in, const Byte* end,
                            char*& out);

}  // namespace lumr
