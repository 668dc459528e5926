// The backtracking machine: what the instructions mean. It runs every program; the automaton runs
// those that it can faster and to the same result.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "lumrmisc/search/regexp.h"
#include "lumrmisc/search/regexp_program_internal.h"
#include "lumrmisc/search/regexp_text_internal.h"

namespace lumr {

// Positions, instruction indexes and slot values, kept between matches.
class RegExpStack {
 public:
  void Clear() { depth_ = 0; }
  // As Clear, and what was dropped is forgotten.
  void Reset() {
    depth_ = 0;
    dropped_ = false;
  }
  std::uint32_t Depth() const { return depth_; }
  void SetDepth(std::uint32_t depth) { depth_ = depth; }
  // Drops the value when there is no memory for it.
  void Push(std::uint32_t value) {
    if (depth_ + 1 >= entries_.size() && !Grow()) return;
    entries_[++depth_] = value;
  }
  std::uint32_t Pop() { return depth_ == 0 ? 0 : entries_[depth_--]; }
  bool Dropped() const { return dropped_; }

 private:
  bool Grow();

  // Entry 0 is not used, so that a depth of 0 is empty.
  std::vector<std::uint32_t> entries_ = std::vector<std::uint32_t>(256);
  std::uint32_t depth_ = 0;
  bool dropped_ = false;
};

// Which pairs of instruction and position failed in this search.
class RegExpMemory {
 public:
  void Close() { isOpen_ = false; }
  bool IsOpen() const { return isOpen_; }
  // Room for count instructions at size positions: after how many steps that pays; a negative
  // number when it is too much to hold.
  static long long Cost(std::uint32_t count, std::size_t size);
  void Open(std::uint32_t count, std::size_t size);

  // Whether the pair is new; it is known from now on.
  bool Add(std::uint32_t number, std::size_t pos, bool logs) {
    const std::size_t bit = pos * count_ + number - 1;
    std::uint64_t& word = bits_[bit / 64];
    const std::uint64_t mask = std::uint64_t{1} << bit % 64;
    if ((word & mask) != 0) return false;
    word |= mask;
    if (logs) log_.push_back(bit);
    return true;
  }
  // What was added with logs since the log had a size is forgotten.
  std::size_t LogSize() const { return log_.size(); }
  void ForgetSince(std::size_t size);
  void CutLog(std::size_t size) { log_.resize(size); }

 private:
  bool isOpen_ = false;
  std::vector<std::uint64_t> bits_;
  std::vector<std::size_t> log_;
  std::size_t count_ = 0;
};

struct RegExpMachineState {
  // What was so when a look-ahead began: the log of the memory, and how many were open.
  struct LookAhead {
    std::size_t logSize = 0;
    std::uint32_t open = 0;
  };

  std::vector<std::pair<std::uint32_t, std::uint32_t>> groups;
  std::vector<std::uint32_t> slots;
  std::vector<LookAhead> lookAheads;  // by slot
  RegExpStack stack;
  RegExpMemory memory;
  bool remembersAtOnce = false;  // not only once it pays; tests want it
};

// Searches text from a position on within so many steps (negative: no limit).
template <class Text>
RegExpOutcome RunRegExpMachine(const RegExpProgram& program, RegExpMachineState& state, Text& text,
                               std::size_t from, long long limit, RegExpSpan& match);

}  // namespace lumr
