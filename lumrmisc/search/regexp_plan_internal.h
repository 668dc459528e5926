// What is known of a program beside its instructions: whether it is plain text, whether it runs as
// an automaton, and what a match must start with.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lumr {

// Characters that no part of the pattern tells apart share a class. The class behind the last one
// is the end of the text.
inline constexpr std::size_t kRegExpMostClasses = 255;
using RegExpClassSet = std::array<std::uint64_t, 4>;

inline bool HasClass(const RegExpClassSet& set, std::size_t index) {
  return (set[index / 64] >> index % 64 & 1) != 0;
}

// The pattern as positions: each place that consumes a character, with the classes it takes and
// the places that may come next, the preferred one first. kMatch among them is the end of a match;
// nothing stands behind it, since nothing behind it can be preferred.
struct RegExpPosition {
  RegExpClassSet takes{};
  std::vector<std::uint32_t> next;
};
inline constexpr std::uint32_t kRegExpMatch = 0xFFFFFFFF;

struct RegExpPlan {
  enum class Way : std::uint8_t { kLiteral, kAutomaton, kBacktrack } way = Way::kBacktrack;

  bool anchored = false;
  std::string literal;            // all of the pattern (kLiteral), or what every match begins with
  std::size_t minimumLength = 0;  // of a match, in characters; "$" not counted

  std::vector<std::uint8_t> classOf;  // by character code; empty when there are too many
  std::size_t classCount = 0;
  bool firstKnown = false;  // whether every match begins with a character of first
  RegExpClassSet first{};

  // For kAutomaton.
  std::vector<RegExpPosition> positions;
  std::vector<std::uint32_t> start;

  // For kBacktrack: whether failures may be remembered, and at which instructions (their number
  // + 1, else 0).
  bool remembers = false;
  std::vector<std::uint32_t> memory;
  std::uint32_t memoryCount = 0;
};

}  // namespace lumr
