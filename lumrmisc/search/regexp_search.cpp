#include <algorithm>
#include <new>

#include "lumrmisc/search/regexp_search_internal.h"

namespace lumr {
namespace {

using Way = RegExpPlan::Way;

constexpr std::uint32_t kNoCharacter = 0xFFFFFFFF;
constexpr std::size_t kMostDeadEnds = 1'000'000;
constexpr std::size_t kShortestPrefix = 2;  // in bytes or units
constexpr std::size_t kMostText = (std::size_t{1} << 31) - 64;

// How far so many characters reach; the end of the text when there are no more.
template <class Text>
std::size_t Reach(const Text& text, std::size_t from, long long characters) {
  if (characters < 0 || static_cast<unsigned long long>(characters) >= text.Size() - from) {
    return text.Size();
  }
  for (; characters > 0 && from < text.Size(); --characters) text.Read(from);
  return from;
}

// The first character at pos or behind it that the skip finds; stop when there is none before it.
template <class Text>
std::size_t SkipTo(const RegExpSkip& skip, Text& text, std::size_t pos, std::size_t stop) {
  while ((pos = skip.Next(text.View(), pos)) < stop) {
    if (text.IsBorder(pos)) return pos;
    ++pos;
  }
  return stop;
}

// One search by the automaton.
template <class Text>
class AutomatonRun {
 public:
  AutomatonRun(const RegExpPlan& plan, RegExpStates& states, TextFinder* prefix,
               const RegExpSkip& skip, Text& text, std::size_t stop, RegExpDeadEnds* deadEnds)
      : plan_(plan),
        states_(states),
        prefix_(prefix),
        skip_(skip),
        text_(text),
        stop_(stop),
        deadEnds_(deadEnds) {}

  RegExpOutcome Run(std::size_t from) {
    const bool mayBeEmpty = !plan_.start.empty() && plan_.start.back() == kRegExpMatch;
    pos_ = begun_ = from;
    if (mayBeEmpty) end_ = from;
    state_ = mayBeEmpty || plan_.anchored ? states_.AtStart() : states_.Idle();
    while (alive_ && !AtDeadEnd()) {
      if (state_ == states_.Idle()) SkipIdle();
      const std::uint32_t transition = Advance();
      if (transition == RegExpStates::kIdle) continue;
      if (pos_ >= check_ && pos_ < stop_) continue;
      if (pos_ < stop_) {
        Take(index_, next_);
      } else if (stop_ < text_.Size()) {
        return RegExpOutcome::kLimit;
      } else {
        // Nothing may begin at the end of a text, but for an empty one.
        if (state_ != states_.Idle() || pos_ == 0) Take(plan_.classCount, pos_ + Text::kUnit);
        break;
      }
    }
    if (end_ == kNowhere) return RegExpOutcome::kNone;
    if (generation_ == states_.Generation()) {
      for (const auto& [pos, state] : passed_) deadEnds_->Add(pos, state);
    }
    return RegExpOutcome::kFound;
  }

  // Of the match: where it ends, and where it starts; if it is a later one, only that it starts
  // behind Begun.
  std::size_t End() const { return end_; }
  std::size_t Begun() const { return begun_; }
  bool IsLater() const { return later_; }

 private:
  static constexpr std::size_t kNowhere = ~std::size_t{0};

  // Goes to where something may begin.
  void SkipIdle() {
    if (prefix_ != nullptr) {
      const std::size_t reach = std::min(text_.Size(), stop_ + plan_.literal.size());
      const std::size_t found = prefix_->First(text_.View().substr(pos_, reach - pos_));
      pos_ = found == TextFinder::npos ? stop_ : std::min(stop_, pos_ + found);
    } else if (skip_.IsOn()) {
      pos_ = SkipTo(skip_, text_, pos_, stop_);
    } else {
      const std::uint32_t* const idle = states_.Table() + states_.Idle();
      const std::uint8_t* const classOf = plan_.classOf.data();
      for (std::size_t next = pos_; pos_ < stop_; pos_ = next) {
        if (idle[classOf[text_.Read(next)]] != RegExpStates::kIdle) break;
      }
    }
    begun_ = pos_;
  }

  // Takes known transitions in a row. What stops it (not where the text stops) is the transition
  // for the class index_ of the character up to next_; one back to idle is taken.
  std::uint32_t Advance() {
    const std::uint32_t* table = states_.Table();
    const std::uint8_t* const classOf = plan_.classOf.data();
    std::uint32_t state = state_;
    std::size_t pos = pos_;
    std::uint32_t transition = 0;
    std::size_t bound = std::min(stop_, check_);
    while (pos < bound) {
      std::size_t next = pos;
      const std::uint32_t index = classOf[text_.Read(next)];
      transition = table[state + index];
      if (transition >= RegExpStates::kIdle) {
        if (!RegExpStates::IsMatchAndGoesOn(transition)) {
          index_ = index;
          next_ = next;
          break;
        }
        if (RegExpStates::Offset(transition) == state) {
          next = SkipRun(transition, next);
          table = states_.Table();
        }
        Note(transition, next);
        bound = std::min(stop_, check_);
      }
      begun_ = (transition & RegExpStates::kBegins) != 0 ? pos : begun_;
      state = RegExpStates::Offset(transition);
      pos = next;
    }
    const bool toIdle = pos < bound && transition == RegExpStates::kIdle;
    state_ = toIdle ? states_.Idle() : state;
    pos_ = toIdle ? next_ : pos;
    return toIdle ? transition : 0;
  }

  // Behind the characters from next on that take the same transition to the same state.
  std::size_t SkipRun(std::uint32_t transition, std::size_t next) {
    const RegExpSkip* const exits = states_.Exits(plan_, text_.Page(), transition);
    return exits == nullptr ? next : SkipTo(*exits, text_, next, stop_);
  }

  // Takes any transition, which may have to be made.
  void Take(std::size_t index, std::size_t next) {
    const std::uint32_t transition = states_.Next(plan_, state_, index);
    if ((transition & RegExpStates::kBegins) != 0) begun_ = pos_;
    if ((transition & (RegExpStates::kMatch | RegExpStates::kLaterMatch)) != 0) {
      Note(transition, next);
    }
    if ((transition & RegExpStates::kDead) != 0) alive_ = false;
    state_ = RegExpStates::Offset(transition);
    pos_ = next;
  }

  void Note(std::uint32_t transition, std::size_t end) {
    end_ = end;
    later_ = (transition & RegExpStates::kMatch) == 0;
    if (deadEnds_ != nullptr) check_ = RegExpDeadEnds::NextPlace(end);
    passed_.clear();
  }

  // Whether a search before this one was here, in this state, and found nothing further on; if not,
  // this may become such a place.
  bool AtDeadEnd() {
    if (pos_ < check_ || pos_ >= stop_) return false;
    deadEnds_->SetGeneration(states_.Generation());
    if (deadEnds_->Has(pos_, state_)) return true;
    if (generation_ != states_.Generation()) passed_.clear();
    generation_ = states_.Generation();
    passed_.emplace_back(pos_, state_);
    check_ = RegExpDeadEnds::NextPlace(pos_);
    return false;
  }

  const RegExpPlan& plan_;
  RegExpStates& states_;
  TextFinder* prefix_;
  const RegExpSkip& skip_;
  Text& text_;
  std::size_t stop_;
  std::size_t pos_ = 0;
  std::uint32_t state_ = 0;
  std::uint32_t index_ = 0;
  std::size_t next_ = 0;
  std::size_t begun_ = 0;
  std::size_t end_ = kNowhere;
  bool later_ = false;
  bool alive_ = true;
  RegExpDeadEnds* deadEnds_;
  std::size_t check_ = kNowhere;                               // where to ask for dead ends next
  std::vector<std::pair<std::size_t, std::uint32_t>> passed_;  // since the match, not known yet
  std::uint32_t generation_ = 0;
};

}  // namespace

// ---- Texts ----

RegExpText::RegExpText(const RegExpOptions& options, std::string_view text) : view_(text) {
  if (text.size() > kMostText) throw std::bad_alloc();
  if (options.IsWide()) view_ = view_.substr(0, view_.size() & ~std::size_t{1});
  if (!options.FoldsText()) return;
  folded_ = view_;
  if (!options.caseSensitive) FoldRegExpCase(folded_, options.page);
  if (options.fold.IsOn()) FoldCharacters(options);
  view_ = folded_;
}

// Width changes lengths, so that for every place of the folded text its origin is kept.
void RegExpText::FoldCharacters(const RegExpOptions& options) {
  std::string out;
  out.reserve(folded_.size() + folded_.size() / 2);
  origins_.reserve(folded_.size() + folded_.size() / 2 + 2);
  const auto put = [&](std::uint32_t code, std::size_t origin) {
    if (options.IsWide()) {
      out += static_cast<char>(code);
      out += static_cast<char>(code >> 8);
    } else {
      if (code >= 0x100) out += static_cast<char>(code >> 8);
      out += static_cast<char>(code);
    }
    origins_.resize(out.size(), static_cast<std::uint32_t>(origin));
  };
  const auto fold = [&](const auto& text) {
    for (std::size_t pos = 0; pos < text.Size();) {
      const std::size_t origin = pos;
      const std::uint32_t code = text.Read(pos);
      std::size_t behind = pos;
      const std::uint32_t next = pos < text.Size() ? text.Read(behind) : kNoCharacter;
      const std::uint32_t both = options.fold.Combine(code, next);
      if (both != 0) pos = behind;
      put(both != 0 ? both : options.fold.Fold(code), origin);
    }
  };
  if (options.IsWide()) {
    fold(WideText(nullptr, folded_));
  } else {
    fold(NarrowText(options.page, folded_));
  }
  origins_.push_back(static_cast<std::uint32_t>(folded_.size()));
  folded_ = std::move(out);
}

std::size_t RegExpText::ToView(std::size_t pos) const {
  if (origins_.empty()) return pos;
  return static_cast<std::size_t>(std::lower_bound(origins_.begin(), origins_.end(), pos) -
                                  origins_.begin());
}

std::size_t RegExpText::ToOriginal(std::size_t pos) const {
  if (origins_.empty()) return pos;
  return pos < origins_.size() ? origins_[pos] : origins_.back() + (pos - view_.size());
}

// ---- Dead ends ----

void RegExpDeadEnds::SetGeneration(std::uint32_t generation) {
  if (generation != generation_) places_.clear();
  generation_ = generation;
}

void RegExpDeadEnds::Add(std::size_t pos, std::uint32_t state) {
  if (places_.size() >= kMostDeadEnds) places_.clear();
  places_.insert(Key(pos, state));
}

// ---- Searches ----

RegExpState::RegExpState(const RegExpProgram& program) {
  const RegExpPlan& plan = program.plan;
  const std::size_t unit = program.options.IsWide() ? 2 : 1;
  if (plan.way == Way::kLiteral ||
      (plan.way == Way::kAutomaton && plan.literal.size() >= kShortestPrefix * unit)) {
    finder_.emplace(program.options.IsWide() ? TextForm::kUnits : TextForm::kCharacters,
                    plan.literal, false);
  }
  if (plan.way == Way::kAutomaton) {
    if (!finder_ && plan.firstKnown) skip_.Prepare(plan, plan.first, program.options.page);
    forward_.emplace(plan, RegExpStates::Direction::kForward);
  }
}

RegExpOutcome RegExpState::Search(const RegExpProgram& program, std::string_view view,
                                  std::size_t from, long long limit, RegExpSpan& match,
                                  RegExpDeadEnds* deadEnds) {
  deadEnds_ = deadEnds;
  if (program.options.IsWide()) {
    return SearchIn(program, WideText(nullptr, view), from, limit, match);
  }
  return SearchIn(program, NarrowText(program.options.page, view, from), from, limit, match);
}

RegExpOutcome RegExpState::SearchByMachine(const RegExpProgram& program, std::string_view view,
                                           std::size_t from, long long limit, RegExpSpan& match) {
  if (program.options.IsWide()) {
    WideText text(nullptr, view);
    return RunRegExpMachine(program, machine_, text, from, limit, match);
  }
  NarrowText text(program.options.page, view);
  return RunRegExpMachine(program, machine_, text, from, limit, match);
}

template <class Text>
RegExpOutcome RegExpState::SearchIn(const RegExpProgram& program, Text text, std::size_t from,
                                    long long limit, RegExpSpan& match) {
  const RegExpPlan& plan = program.plan;
  const bool tried = from < text.Size() || (from == 0 && text.Size() == 0);
  if (!tried || (plan.anchored && from != 0)) return RegExpOutcome::kNone;
  // A limit is counted in characters, of which there is no telling how many are left.
  const bool tooShort = (text.Size() - from) / Text::kUnit < plan.minimumLength;
  if (limit < 0 && tooShort) return RegExpOutcome::kNone;
  if (plan.way == Way::kBacktrack) {
    return RunRegExpMachine(program, machine_, text, from, limit, match);
  }
  const std::size_t stop = Reach(text, from, limit);
  return plan.way == Way::kLiteral ? FindLiteral(plan, text, from, stop, match)
                                   : RunAutomaton(plan, text, from, stop, match);
}

template <class Text>
RegExpOutcome RegExpState::FindLiteral(const RegExpPlan& plan, Text& text, std::size_t from,
                                       std::size_t stop, RegExpSpan& match) {
  const std::size_t found = finder_->First(text.View().substr(from, stop - from));
  if (found == TextFinder::npos) {
    return stop < text.Size() ? RegExpOutcome::kLimit : RegExpOutcome::kNone;
  }
  match = {from + found, from + found + plan.literal.size()};
  return RegExpOutcome::kFound;
}

template <class Text>
RegExpOutcome RegExpState::RunAutomaton(const RegExpPlan& plan, Text& text, std::size_t from,
                                        std::size_t stop, RegExpSpan& match) {
  AutomatonRun<Text> run(plan, *forward_, finder_ ? &*finder_ : nullptr, skip_, text, stop,
                         deadEnds_);
  const RegExpOutcome outcome = run.Run(from);
  if (outcome != RegExpOutcome::kFound) return outcome;
  match = {run.IsLater() ? FindStart(plan, text, run.Begun(), run.End()) : run.Begun(), run.End()};
  return outcome;
}

// The leftmost start, behind lowest, of the match that ends at end.
template <class Text>
std::size_t RegExpState::FindStart(const RegExpPlan& plan, Text& text, std::size_t lowest,
                                   std::size_t end) {
  if (!backward_) backward_.emplace(plan, RegExpStates::Direction::kBackward);
  std::uint32_t state = backward_->AtEnd();
  std::size_t pos = end;
  std::size_t start = end;
  if (end > text.Size()) {
    pos = text.Size();
    state = RegExpStates::Offset(backward_->Next(plan, state, plan.classCount));
  }
  while (pos > lowest) {
    pos = text.Before(pos);
    std::size_t behind = pos;
    const std::uint32_t transition = backward_->Next(plan, state, plan.classOf[text.Read(behind)]);
    if ((transition & RegExpStates::kMatch) != 0) start = pos;
    if ((transition & RegExpStates::kDead) != 0) break;
    state = RegExpStates::Offset(transition);
  }
  return start;
}

}  // namespace lumr
