#include <algorithm>
#include <cstring>

#include "lumrmisc/search/regexp_machine_internal.h"

namespace lumr {
namespace {

using Op = RegExpOp;

constexpr std::size_t kMostMemoryBits = std::size_t{1} << 27;
constexpr long long kPatience = 1024;
constexpr long long kNever = -2;

template <class Text>
class Machine {
 public:
  Machine(const RegExpProgram& program, RegExpMachineState& state, Text& text)
      : program_(program), plan_(program.plan), state_(state), stack_(state.stack), text_(text) {
    state_.groups.assign(program.groupCount, {0, 0});
    state_.slots.assign(program.slotCount, 0);
    state_.lookAheads.assign(program.slotCount, {});
    state_.memory.Close();
    stack_.Reset();
  }

  RegExpOutcome Run(std::size_t from, long long limit, RegExpSpan& match) {
    from_ = start_ = from;
    const std::size_t places = text_.Size() - std::min(from, text_.Size()) + 1;
    const long long worth =
        plan_.remembers ? RegExpMemory::Cost(plan_.memoryCount, places) : kNever;
    const long long opening = worth > 0 && state_.remembersAtOnce ? 0 : worth;
    if (!plan_.anchored && !ToCandidate()) return RegExpOutcome::kNone;
    pos_ = start_;
    std::uint32_t at = 0;
    for (long long steps = 0; steps != limit; ++steps) {
      if (at >= program_.instructions.size()) break;  // the stack lost an entry for want of memory
      if (steps == opening) state_.memory.Open(plan_.memoryCount, places);
      if (Failed(at)) {
        at = Fail();
        continue;
      }
      const RegExpInstruction instruction = program_.instructions[at];
      switch (instruction.op) {
        case Op::kAnchorFail:
          return Ended(RegExpOutcome::kNone, limit);
        case Op::kAdvance:
          if (!Advance()) return Ended(RegExpOutcome::kNone, limit);
          at = 0;
          break;
        case Op::kAccept:
          match = {start_, std::min(pos_, text_.Size() + Text::kUnit)};
          return Ended(RegExpOutcome::kFound, limit);
        default:
          at = Step(at, instruction);
      }
    }
    return limit < 0 ? RegExpOutcome::kNone : RegExpOutcome::kLimit;
  }

 private:
  // A stack that could not grow makes the result uncertain.
  RegExpOutcome Ended(RegExpOutcome outcome, long long limit) const {
    return stack_.Dropped() && limit >= 0 ? RegExpOutcome::kLimit : outcome;
  }

  bool AtEnd() const { return pos_ >= text_.Size(); }

  // Moves the start to where a match can begin; false when there is no such place. The end of a
  // text that is not empty is none.
  bool ToCandidate() {
    if (text_.Size() == 0) return start_ == 0;
    while (start_ < text_.Size()) {
      std::size_t next = start_;
      const std::uint32_t code = text_.Read(next);
      if (!plan_.firstKnown || HasClass(plan_.first, plan_.classOf[code])) return true;
      start_ = next;
    }
    return false;
  }

  bool Advance() {
    if (start_ >= text_.Size()) return false;
    text_.Read(start_);
    if (start_ >= text_.Size() || !ToCandidate()) return false;
    stack_.Clear();
    pos_ = start_;
    return true;
  }

  std::uint32_t Fail() { return stack_.Pop(); }

  // Whether the machine was at this instruction and position before, to no avail.
  bool Failed(std::uint32_t at) {
    return state_.memory.IsOpen() && plan_.memory[at] != 0 &&
           !state_.memory.Add(plan_.memory[at], pos_ - from_, openLookAheads_ > 0);
  }

  // Runs an instruction and gives the index of the next one.
  std::uint32_t Step(std::uint32_t at, RegExpInstruction instruction) {
    const std::uint32_t operand = instruction.operand;
    switch (instruction.op) {
      case Op::kGroupStart:
        state_.groups[operand].first = Pos();
        break;
      case Op::kGroupEnd:
        state_.groups[operand].second = Pos();
        break;
      case Op::kSymbol:
        if (!StepSymbol(operand)) return Fail();
        break;
      case Op::kAnyChar:
        if (AtEnd()) return Fail();
        text_.Read(pos_);
        break;
      case Op::kRangeList:
      case Op::kNotRangeList:
        return StepSet(at, operand, instruction.op == Op::kRangeList) ? operand : Fail();
      case Op::kJump:
        return operand;
      case Op::kPushPos:
        stack_.Push(Pos());
        break;
      case Op::kPopPos:
        pos_ = stack_.Pop();
        break;
      case Op::kCall:
        stack_.Push(at + 1);
        return operand;
      case Op::kReturn:
        return Fail();
      case Op::kPushSlot:
        stack_.Push(state_.slots[operand]);
        break;
      case Op::kPopSlot:
        state_.slots[operand] = stack_.Pop();
        break;
      case Op::kSavePos:
        state_.slots[operand] = Pos();
        break;
      case Op::kSaveDepth:
        state_.slots[operand] = stack_.Depth();
        state_.lookAheads[operand] = {state_.memory.LogSize(), openLookAheads_++};
        break;
      case Op::kLoadPos:
        pos_ = state_.slots[operand];
        break;
      case Op::kLoadDepth:
        stack_.SetDepth(state_.slots[operand]);
        EndLookAhead(state_.lookAheads[operand], program_.instructions[at + 1].op == Op::kReturn);
        break;
      case Op::kFailIfAt:
        if (Pos() == state_.slots[operand]) return Fail();
        break;
      case Op::kBackRef:
        if (!StepBackRef(state_.groups[operand])) return Fail();
        break;
      case Op::kPushGroup:
        stack_.Push(state_.groups[operand].first);
        stack_.Push(state_.groups[operand].second);
        break;
      case Op::kPopGroup:
        state_.groups[operand].second = stack_.Pop();
        state_.groups[operand].first = stack_.Pop();
        break;
      default:
        break;
    }
    return at + 1;
  }

  // Where the element of a look-ahead matched, the ways that led there failed their branch only,
  // and may lead there again from elsewhere.
  void EndLookAhead(const RegExpMachineState::LookAhead& begun, bool matched) {
    openLookAheads_ = begun.open;
    if (matched) state_.memory.ForgetSince(begun.logSize);
    if (openLookAheads_ == 0) state_.memory.CutLog(begun.logSize);
  }

  std::uint32_t Pos() const { return static_cast<std::uint32_t>(pos_); }

  bool StepSymbol(std::uint32_t code) {
    if (code == 0) {
      if (pos_ != text_.Size()) return false;
      pos_ += Text::kUnit;
      return true;
    }
    if (AtEnd()) return false;
    std::size_t next = pos_;
    if (text_.Read(next) != code) return false;
    pos_ = next;
    return true;
  }

  bool StepSet(std::uint32_t at, std::uint32_t end, bool wanted) {
    if (AtEnd()) return false;
    std::size_t next = pos_;
    const std::uint32_t code = text_.Read(next);
    bool inside = false;
    for (std::uint32_t i = at + 1; i < end && !inside; i += 2) {
      inside =
          code >= program_.instructions[i].operand && code <= program_.instructions[i + 1].operand;
    }
    if (inside != wanted) return false;
    pos_ = next;
    return true;
  }

  // Text is compared as the characters it is read as; a group that is open, or was never closed,
  // has captured nothing. Case is folded in the text already where it is ignored.
  bool StepBackRef(const std::pair<std::uint32_t, std::uint32_t>& group) {
    if (group.second <= group.first || group.first > text_.Size()) return true;
    const std::size_t length = std::min<std::size_t>(group.second, text_.Size()) - group.first;
    if (pos_ > text_.Size() || text_.Size() - pos_ < length) return false;
    const char* const text = text_.View().data();
    if (std::memcmp(text + pos_, text + group.first, length) != 0) return false;
    if (!EndsCharacter(pos_, length)) return false;
    pos_ += length;
    return true;
  }

  // Equal bytes are equal characters but for a lead byte at their end that has a trail behind it
  // in one place and not in the other.
  bool EndsCharacter(std::size_t begin, std::size_t length) const {
    if constexpr (Text::kWide) return true;
    const std::string_view view = text_.View();
    const std::size_t end = begin + length;
    if (end >= view.size() || !text_.Page()->IsPair(view, end - 1)) return true;
    std::size_t pos = end - 1;
    while (pos > begin && text_.Page()->IsLead(view[pos - 1])) --pos;
    while (pos < end) text_.Read(pos);
    return pos == end;
  }

  const RegExpProgram& program_;
  const RegExpPlan& plan_;
  RegExpMachineState& state_;
  RegExpStack& stack_;
  Text& text_;
  std::uint32_t openLookAheads_ = 0;
  std::size_t from_ = 0;
  std::size_t start_ = 0;
  std::size_t pos_ = 0;
};

}  // namespace

bool RegExpStack::Grow() {
  try {
    entries_.resize((std::size_t{depth_} + 1) * 2 + 2);
    return true;
  } catch (const std::bad_alloc&) {
    dropped_ = true;
    return false;
  }
}

// A look at the memory pays once the search has taken as many steps as clearing it takes.
long long RegExpMemory::Cost(std::uint32_t count, std::size_t size) {
  if (count == 0 || size > kMostMemoryBits / count) return kNever;
  return static_cast<long long>(size * count / 64) + kPatience;
}

void RegExpMemory::Open(std::uint32_t count, std::size_t size) {
  isOpen_ = true;
  log_.clear();
  count_ = count;
  bits_.assign((size * count + 63) / 64, 0);
}

void RegExpMemory::ForgetSince(std::size_t size) {
  for (; log_.size() > size; log_.pop_back()) {
    bits_[log_.back() / 64] &= ~(std::uint64_t{1} << log_.back() % 64);
  }
}

template <class Text>
RegExpOutcome RunRegExpMachine(const RegExpProgram& program, RegExpMachineState& state, Text& text,
                               std::size_t from, long long limit, RegExpSpan& match) {
  return Machine<Text>(program, state, text).Run(from, limit, match);
}

template RegExpOutcome RunRegExpMachine(const RegExpProgram&, RegExpMachineState&, NarrowText&,
                                        std::size_t, long long, RegExpSpan&);
template RegExpOutcome RunRegExpMachine(const RegExpProgram&, RegExpMachineState&, WideText&,
                                        std::size_t, long long, RegExpSpan&);

}  // namespace lumr
