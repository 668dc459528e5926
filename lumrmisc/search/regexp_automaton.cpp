#include <algorithm>

#include "lumrmisc/search/regexp_automaton_internal.h"

namespace lumr {
namespace {

constexpr std::size_t kMostTransitions = std::size_t{1} << 20;
constexpr std::uint32_t kLongRuns = 64;
constexpr char32_t kSeparator = 0xFFFFFFFE;

}  // namespace

RegExpStates::RegExpStates(const RegExpPlan& plan, Direction direction)
    : direction_(direction), stride_(plan.classCount + 1), marks_(plan.positions.size()) {
  if (direction_ == Direction::kBackward) {
    previous_.resize(plan.positions.size());
    isFirst_.resize(plan.positions.size());
    for (std::uint32_t i = 0; i < plan.positions.size(); ++i) {
      for (const std::uint32_t next : plan.positions[i].next) {
        (next == kRegExpMatch ? last_ : previous_[next]).push_back(i);
      }
    }
    for (const std::uint32_t first : plan.start) {
      if (first != kRegExpMatch) isFirst_[first] = true;
    }
  }
  Reset(plan);
}

void RegExpStates::Reset(const RegExpPlan& plan) {
  ++generation_;
  states_.clear();
  transitions_.clear();
  known_.clear();
  if (direction_ == Direction::kBackward) {
    Intern({last_, {}, false, 0, kUnknown, nullptr});
    return;
  }
  Intern({{}, {}, true, 0, kUnknown, nullptr});
  State start;
  for (const std::uint32_t first : plan.start) {
    if (first != kRegExpMatch) start.leftmost.push_back(first);
  }
  Intern(std::move(start));
}

// The offset of a state, which may be new.
std::uint32_t RegExpStates::Intern(State state) {
  std::u32string key(1, state.begins ? U'b' : U'-');
  key.append(state.leftmost.begin(), state.leftmost.end());
  key += kSeparator;
  key.append(state.later.begin(), state.later.end());
  const auto offset = static_cast<std::uint32_t>(transitions_.size());
  const auto [entry, added] = known_.emplace(std::move(key), offset);
  if (added) {
    transitions_.resize(transitions_.size() + stride_, kUnknown);
    states_.push_back(std::move(state));
  }
  return entry->second;
}

// Whether a position was not met since mark_ was raised.
bool RegExpStates::Mark(std::uint32_t position) {
  const bool fresh = marks_[position] != mark_;
  marks_[position] = mark_;
  return fresh;
}

// Appends where the ways go on that take the class, each place once; true, and no further, at the
// first one that ends in a match.
bool RegExpStates::Follow(const RegExpPlan& plan, const std::vector<std::uint32_t>& from,
                          std::size_t index, std::vector<std::uint32_t>& to) {
  for (const std::uint32_t position : from) {
    if (!HasClass(plan.positions[position].takes, index)) continue;
    for (const std::uint32_t next : plan.positions[position].next) {
      if (next == kRegExpMatch) return true;
      if (Mark(next)) to.push_back(next);
    }
  }
  return false;
}

std::uint32_t RegExpStates::MakeForward(const RegExpPlan& plan, const State& state,
                                        std::size_t index) {
  State next{{}, {}, state.begins && index != plan.classCount, 0, kUnknown, nullptr};
  const bool idle = state.begins && state.leftmost.empty() && state.later.empty();
  std::uint32_t flags = 0;
  ++mark_;
  if (Follow(plan, idle ? plan.start : state.leftmost, index, next.leftmost)) {
    flags = kMatch;
    next.begins = false;
    if (idle) flags |= kBegins;
  } else if (Follow(plan, state.later, index, next.later)) {
    flags = kLaterMatch;
    next.begins = false;
  } else if (idle) {
    if (!next.leftmost.empty()) flags = kBegins;
  } else if (next.begins) {
    // Where nothing else is left, what begins with this character is the leftmost.
    const bool alone = next.leftmost.empty() && next.later.empty();
    const bool matched = Follow(plan, plan.start, index, alone ? next.leftmost : next.later);
    if (matched) {
      flags = alone ? kMatch : kLaterMatch;
      next.begins = false;
    }
    if (alone && (matched || !next.leftmost.empty())) flags |= kBegins;
  }
  const bool empty = next.leftmost.empty() && next.later.empty();
  if (empty) flags |= next.begins ? kIdle : kDead;
  return Intern(std::move(next)) | flags;
}

std::uint32_t RegExpStates::MakeBackward(const RegExpPlan& plan, const State& state,
                                         std::size_t index) {
  State next;
  std::uint32_t flags = 0;
  ++mark_;
  for (const std::uint32_t position : state.leftmost) {
    if (!HasClass(plan.positions[position].takes, index)) continue;
    if (isFirst_[position]) flags = kMatch;
    for (const std::uint32_t previous : previous_[position]) {
      if (Mark(previous)) next.leftmost.push_back(previous);
    }
  }
  std::sort(next.leftmost.begin(), next.leftmost.end());
  if (next.leftmost.empty()) flags |= kDead;
  return Intern(std::move(next)) | flags;
}

const RegExpSkip* RegExpStates::Exits(const RegExpPlan& plan, const MbcsPage* page,
                                      std::uint32_t transition) {
  const std::size_t index = Offset(transition) / stride_;
  if (++states_[index].runs == kLongRuns) FindExits(plan, page, transition);
  return states_[index].run == transition ? states_[index].exits.get() : nullptr;
}

void RegExpStates::FindExits(const RegExpPlan& plan, const MbcsPage* page,
                             std::uint32_t transition) {
  // No room to make all transitions of the state without dropping it.
  if (transitions_.size() + stride_ * stride_ > kMostTransitions) return;
  RegExpClassSet leave{};
  for (std::size_t i = 0; i < plan.classCount; ++i) {
    if (Next(plan, Offset(transition), i) == transition) continue;
    leave[i / 64] |= std::uint64_t{1} << i % 64;
  }
  auto exits = std::make_unique<RegExpSkip>();
  exits->Prepare(plan, leave, page);
  if (!exits->IsOn()) return;
  State& state = states_[Offset(transition) / stride_];
  state.exits = std::move(exits);
  state.run = transition;
}

std::uint32_t RegExpStates::Make(const RegExpPlan& plan, std::uint32_t offset, std::size_t index) {
  const State& known = states_[offset / stride_];
  const State state{known.leftmost, known.later, known.begins, 0, kUnknown, nullptr};
  const bool full = transitions_.size() + stride_ > kMostTransitions;
  if (full) Reset(plan);
  const std::uint32_t made = direction_ == Direction::kForward ? MakeForward(plan, state, index)
                                                               : MakeBackward(plan, state, index);
  if (!full) transitions_[offset + index] = made;
  return made;
}

}  // namespace lumr
