// The automaton of a plan: a match in one pass over the text, each character looked at once.
//
// A state is what the backtracking machine could be about to try, in its order of preference: the
// ways of the leftmost start, behind them the ways of later starts. Where a way ends in a match
// everything less preferred is dropped, so the last match seen when nothing is left is the one that
// the machine would have found. States and transitions are made when they are first needed; when
// there are too many they are dropped and made anew.
//
// A match of the leftmost start is known with both ends. When that start has failed and a later
// one matched, its end is known, and its start is found by a second automaton that reads
// backwards from there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "lumrmisc/search/regexp_plan_internal.h"
#include "lumrmisc/search/regexp_skip_internal.h"

namespace lumr {

// The states of one direction and their transitions.
class RegExpStates {
 public:
  // A transition: the state's offset in the table of transitions, and what it means to go there.
  static constexpr std::uint32_t kMatch = 1u << 31;  // a way of the leftmost start matched here
  static constexpr std::uint32_t kLaterMatch = 1u << 30;
  static constexpr std::uint32_t kDead = 1u << 29;
  static constexpr std::uint32_t kIdle = 1u << 28;  // nothing begun: the first state
  // Means nothing but that the leftmost start is now the character that was read.
  static constexpr std::uint32_t kBegins = 1u << 27;
  static constexpr std::uint32_t kUnknown = 0xFFFFFFFF;
  static constexpr std::uint32_t kFlags = kMatch | kLaterMatch | kDead | kIdle | kBegins;

  static bool IsMatchAndGoesOn(std::uint32_t transition) {
    return transition != kUnknown && (transition & (kDead | kIdle)) == 0;
  }

  enum class Direction { kForward, kBackward };
  RegExpStates(const RegExpPlan& plan, Direction direction);

  static constexpr std::uint32_t Offset(std::uint32_t transition) { return transition & ~kFlags; }

  // The first state: nothing begun yet, and a match may begin at every character; or one that
  // may begin here only. Backwards: behind the end of a match.
  std::uint32_t Idle() const { return 0; }
  std::uint32_t AtStart() const { return static_cast<std::uint32_t>(stride_); }
  std::uint32_t AtEnd() const { return 0; }

  // The transition from the state at an offset for a class; the state may be gone afterwards.
  // plan is the one of construction.
  std::uint32_t Next(const RegExpPlan& plan, std::uint32_t offset, std::size_t index) {
    const std::uint32_t known = transitions_[offset + index];
    return known != kUnknown ? known : Make(plan, offset, index);
  }
  // For a transition from a state to itself: finds the next character that takes another one.
  // Null while that is not known to pay.
  const RegExpSkip* Exits(const RegExpPlan& plan, const MbcsPage* page, std::uint32_t transition);

  // Raised when all states were made anew: offsets of before mean nothing then.
  std::uint32_t Generation() const { return generation_; }
  // The table, until the next call of Next.
  const std::uint32_t* Table() const { return transitions_.data(); }

 private:
  struct State {
    std::vector<std::uint32_t> leftmost;
    std::vector<std::uint32_t> later;
    bool begins = false;           // further matches may begin
    std::uint32_t runs = 0;        // how often Exits was asked for
    std::uint32_t run = kUnknown;  // the transition that exits are for
    std::unique_ptr<RegExpSkip> exits;
  };

  void Reset(const RegExpPlan& plan);
  std::uint32_t Intern(State state);
  std::uint32_t Make(const RegExpPlan& plan, std::uint32_t offset, std::size_t index);
  bool Follow(const RegExpPlan& plan, const std::vector<std::uint32_t>& from, std::size_t index,
              std::vector<std::uint32_t>& to);
  std::uint32_t MakeForward(const RegExpPlan& plan, const State& state, std::size_t index);
  std::uint32_t MakeBackward(const RegExpPlan& plan, const State& state, std::size_t index);
  void FindExits(const RegExpPlan& plan, const MbcsPage* page, std::uint32_t transition);
  bool Mark(std::uint32_t position);

  Direction direction_;
  std::size_t stride_;
  std::uint32_t generation_ = 0;
  std::vector<State> states_;
  std::vector<std::uint32_t> transitions_;
  std::unordered_map<std::u32string, std::uint32_t> known_;
  std::vector<std::uint32_t> marks_;
  std::uint32_t mark_ = 0;
  // For the way back.
  std::vector<std::vector<std::uint32_t>> previous_;
  std::vector<std::uint32_t> last_;
  std::vector<bool> isFirst_;
};

}  // namespace lumr
