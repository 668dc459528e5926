// From a program to the plan of a search for it.
#include <algorithm>
#include <map>
#include <utility>

#include "lumrmisc/platform/types.h"
#include "lumrmisc/search/regexp_program_internal.h"

namespace lumr {
namespace {

using Op = RegExpOp;
using Kind = RegExpNodeKind;
using Way = RegExpPlan::Way;
using Range = std::pair<std::uint32_t, std::uint32_t>;

constexpr std::uint32_t kMostCode = 0xFFFF;
constexpr std::size_t kMostSets = 512;        // different sets of characters in one pattern
constexpr std::size_t kMostWalked = 1 << 22;  // instructions, to find what follows what

bool Consumes(Op op) {
  return op == Op::kSymbol || op == Op::kAnyChar || op == Op::kRangeList || op == Op::kNotRangeList;
}

class Planner {
 public:
  explicit Planner(RegExpProgram& program) : program_(program), plan_(program.plan) {}

  void Make(const RegExpTree& tree) {
    plan_.anchored = tree.anchored;
    plan_.minimumLength = MinimumLength();
    FindLiteral(tree);
    if (plan_.way == Way::kLiteral) return;
    bool backReference = false;
    bool lookAhead = false;
    bool emptyOption = false;
    for (const RegExpNode& node : tree.nodes) {
      backReference = backReference || node.kind == Kind::kBackRef;
      lookAhead = lookAhead || node.kind == Kind::kNot;
      emptyOption = emptyOption || IsEmptyOption(tree, node);
    }
    // A group that a look-ahead captured stays captured when its branch fails, and with that
    // tells of starts where nothing matched: none may be left out then.
    const bool everyStart = backReference && lookAhead && tree.groupCount > 0;
    const bool classified = MakeClasses();
    if (classified && !everyStart) FindFirst();
    if (classified && !backReference && !lookAhead && !emptyOption && MakePositions()) {
      plan_.way = Way::kAutomaton;
      return;
    }
    plan_.remembers = !backReference && !emptyOption;
    if (plan_.remembers) ChooseMemory();
  }

 private:
  // "(x?)?": whether its inside consumed anything depends on the way there, not on the place.
  static bool IsEmptyOption(const RegExpTree& tree, const RegExpNode& node) {
    return node.kind == Kind::kQuantified && tree.nodes[tree.children[node.firstChild]].mayBeEmpty;
  }

  const RegExpInstruction& At(std::uint32_t index) const { return program_.instructions[index]; }

  std::uint32_t Behind(std::uint32_t index) const {
    const Op op = At(index).op;
    return op == Op::kRangeList || op == Op::kNotRangeList ? At(index).operand : index + 1;
  }

  // ---- Literals ----

  bool IsLoneLead(std::uint32_t code) const {
    const MbcsPage* const page = program_.options.page;
    return page != nullptr && code < 0x100 && page->IsLead(static_cast<char>(code));
  }

  void Append(std::uint32_t code) {
    const bool wide = program_.options.IsWide();
    if (wide || code >= 0x100) {
      const std::uint32_t first = wide ? code & 0xFF : code >> 8;
      const std::uint32_t second = wide ? code >> 8 : code & 0xFF;
      plan_.literal += static_cast<char>(first);
      plan_.literal += static_cast<char>(second);
    } else {
      plan_.literal += static_cast<char>(code);
    }
  }

  void FindLiteral(const RegExpTree& tree) {
    const RegExpNode& root = tree.nodes[tree.root];
    std::uint32_t i = 0;
    for (; i < root.childCount; ++i) {
      const RegExpNode& child = tree.nodes[tree.children[root.firstChild + i]];
      // A lead byte alone would be found as the first half of a character.
      if (child.kind != Kind::kSymbol || IsLoneLead(child.value)) break;
      Append(child.value);
    }
    if (i == root.childCount && i > 0 && !tree.anchored) plan_.way = Way::kLiteral;
  }

  // The fewest characters from the start to Accept: each way costs what it consumes, so the
  // instructions are visited in the order of cost, free ways first.
  std::size_t MinimumLength() const {
    std::vector<std::size_t> cost(program_.instructions.size(), ~std::size_t{0});
    std::vector<std::uint32_t> now = {2};
    std::vector<std::uint32_t> then;
    for (std::size_t length = 0;; ++length) {
      while (!now.empty()) {
        const std::uint32_t at = now.back();
        now.pop_back();
        if (cost[at] != ~std::size_t{0}) continue;
        cost[at] = length;
        if (At(at).op == Op::kAccept) return length;
        const bool end = At(at).op == Op::kSymbol && At(at).operand == 0;
        if (Consumes(At(at).op)) {
          (end ? now : then).push_back(Behind(at));
        } else {
          PushFree(at, now);
        }
      }
      if (then.empty()) return length;  // nothing can match
      now.swap(then);
    }
  }

  // The instructions that follow one that consumes nothing, the preferred one on top. A look-ahead
  // is stepped over.
  void PushFree(std::uint32_t at, std::vector<std::uint32_t>& stack) const {
    switch (At(at).op) {
      case Op::kJump:
        stack.push_back(At(at).operand);
        break;
      case Op::kCall:
        stack.push_back(at + 1);
        if (At(at + 1).op != Op::kLoadPos) stack.push_back(At(at).operand);
        break;
      case Op::kReturn:
      case Op::kAnchorFail:
      case Op::kAdvance:
        break;
      default:
        stack.push_back(at + 1);
    }
  }

  // ---- Classes ----

  std::vector<Range> RangesOf(std::uint32_t at) const {
    const RegExpInstruction& instruction = At(at);
    if (instruction.op == Op::kSymbol) return {{instruction.operand, instruction.operand}};
    std::vector<Range> ranges;
    for (std::uint32_t i = at + 1; i < instruction.operand; i += 2) {
      ranges.emplace_back(At(i).operand, std::min(At(i + 1).operand, kMostCode));
    }
    return Merged(std::move(ranges));
  }

  // In ascending order, none touching another.
  static std::vector<Range> Merged(std::vector<Range> ranges) {
    std::sort(ranges.begin(), ranges.end());
    std::vector<Range> merged;
    for (const Range& range : ranges) {
      if (!merged.empty() && range.first <= merged.back().second + 1) {
        merged.back().second = std::max(merged.back().second, range.second);
      } else {
        merged.push_back(range);
      }
    }
    return merged;
  }

  // Every different set of characters, and for each consuming instruction the number of its set.
  bool CollectSets() {
    std::map<std::vector<Range>, std::uint32_t> numbers;
    setOf_.assign(program_.instructions.size(), 0);
    for (std::uint32_t at = 2; at < program_.instructions.size(); at = Behind(at)) {
      const Op op = At(at).op;
      if (!Consumes(op) || op == Op::kAnyChar || (op == Op::kSymbol && At(at).operand == 0)) {
        continue;
      }
      const auto [entry, added] =
          numbers.emplace(RangesOf(at), static_cast<std::uint32_t>(sets_.size()));
      if (added) sets_.push_back(entry->first);
      if (sets_.size() > kMostSets) return false;
      setOf_[at] = entry->second;
    }
    return true;
  }

  // Cuts the codes where any set begins or ends; pieces that are in the same sets are one class.
  bool MakeClasses() {
    if (!CollectSets()) return false;
    std::vector<std::uint32_t> cuts = {0, kMostCode + 1};
    for (const std::vector<Range>& set : sets_) {
      for (const auto& [low, high] : set) {
        cuts.push_back(low);
        cuts.push_back(high + 1);
      }
    }
    std::sort(cuts.begin(), cuts.end());
    cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());

    std::vector<std::vector<bool>> members(cuts.size() - 1, std::vector<bool>(sets_.size()));
    for (std::size_t i = 0; i < sets_.size(); ++i) {
      for (const auto& [low, high] : sets_[i]) {
        auto cut = std::lower_bound(cuts.begin(), cuts.end(), low);
        for (; *cut <= high; ++cut) members[static_cast<std::size_t>(cut - cuts.begin())][i] = true;
      }
    }
    std::map<std::vector<bool>, std::uint8_t> classes;
    plan_.classOf.resize(kMostCode + 1);
    setClasses_.resize(sets_.size());
    for (std::size_t piece = 0; piece + 1 < cuts.size(); ++piece) {
      const auto [entry, added] =
          classes.emplace(members[piece], static_cast<std::uint8_t>(classes.size()));
      if (added) {
        if (classes.size() >= kRegExpMostClasses) {
          plan_.classOf.clear();
          return false;
        }
        for (std::size_t i = 0; i < sets_.size(); ++i) {
          if (members[piece][i]) Include(setClasses_[i], entry->second);
        }
      }
      std::fill(plan_.classOf.begin() + cuts[piece], plan_.classOf.begin() + cuts[piece + 1],
                entry->second);
    }
    plan_.classCount = classes.size();
    return true;
  }

  static void Include(RegExpClassSet& set, std::size_t index) {
    set[index / 64] |= std::uint64_t{1} << index % 64;
  }

  RegExpClassSet Takes(std::uint32_t at) const {
    RegExpClassSet set{};
    const Op op = At(at).op;
    if (op == Op::kSymbol && At(at).operand == 0) {
      Include(set, plan_.classCount);
      return set;
    }
    if (op == Op::kSymbol || op == Op::kRangeList) return setClasses_[setOf_[at]];
    for (std::size_t i = 0; i < plan_.classCount; ++i) {
      if (op == Op::kAnyChar || !HasClass(setClasses_[setOf_[at]], i)) Include(set, i);
    }
    return set;
  }

  // ---- What comes next ----

  // The consuming instructions (and Accept) that are reached from at without consuming, the
  // preferred one first; none is named twice, and the ways behind Accept are left out.
  std::vector<std::uint32_t> Reach(std::uint32_t at) {
    std::vector<std::uint32_t> found;
    ++visit_;
    visited_.resize(program_.instructions.size());
    std::vector<std::uint32_t> stack = {at};
    while (!stack.empty()) {
      const std::uint32_t here = stack.back();
      stack.pop_back();
      if (visited_[here] == visit_) continue;
      ++walked_;
      visited_[here] = visit_;
      if (Consumes(At(here).op) || At(here).op == Op::kBackRef) {
        found.push_back(here);
      } else if (At(here).op == Op::kAccept) {
        found.push_back(here);
        break;
      } else {
        PushFree(here, stack);
      }
    }
    return found;
  }

  void FindFirst() {
    plan_.firstKnown = true;
    for (const std::uint32_t at : Reach(2)) {
      if (At(at).op == Op::kAccept || At(at).op == Op::kBackRef) {
        plan_.firstKnown = false;
        return;
      }
      const RegExpClassSet takes = Takes(at);
      for (std::size_t i = 0; i < takes.size(); ++i) plan_.first[i] |= takes[i];
    }
  }

  bool MakePositions() {
    std::map<std::uint32_t, std::uint32_t> numbers;  // by instruction
    std::vector<std::uint32_t> instructions;
    const auto number = [&](const std::vector<std::uint32_t>& reached) {
      std::vector<std::uint32_t> positions;
      for (const std::uint32_t at : reached) {
        if (At(at).op == Op::kAccept) {
          positions.push_back(kRegExpMatch);
          break;
        }
        const auto [entry, added] =
            numbers.emplace(at, static_cast<std::uint32_t>(instructions.size()));
        if (added) instructions.push_back(at);
        positions.push_back(entry->second);
      }
      return positions;
    };
    plan_.start = number(Reach(2));
    for (std::size_t i = 0; i < instructions.size(); ++i) {
      if (walked_ > kMostWalked) {
        plan_.positions.clear();
        return false;
      }
      const std::uint32_t at = instructions[i];
      plan_.positions.push_back({Takes(at), number(Reach(Behind(at)))});
    }
    return true;
  }

  // ---- Memory ----

  // Ways meet again at the heads of loops, of alternatives and of look-aheads. What is on top of
  // the stack there is an instruction, so that they may fail at once.
  void ChooseMemory() {
    plan_.memory.assign(program_.instructions.size(), 0);
    for (std::uint32_t at = 2; at < program_.instructions.size(); at = Behind(at)) {
      const Op op = At(at).op;
      const bool insideGreedy =
          op == Op::kPushPos && At(at - 1).op == Op::kSavePos && At(at - 2).op == Op::kPushSlot;
      const bool lookAhead = op == Op::kSavePos && At(at + 1).op == Op::kSaveDepth;
      if (op == Op::kPushSlot ? At(at - 1).op == Op::kPopPos
                              : !lookAhead && (op != Op::kPushPos || insideGreedy)) {
        continue;
      }
      plan_.memory[at] = ++plan_.memoryCount;
    }
  }

  RegExpProgram& program_;
  RegExpPlan& plan_;
  std::vector<std::vector<Range>> sets_;
  std::vector<std::uint32_t> setOf_;
  std::vector<RegExpClassSet> setClasses_;
  std::vector<std::uint32_t> visited_;
  std::uint32_t visit_ = 0;
  std::size_t walked_ = 0;
};

}  // namespace

void MakeRegExpPlan(const RegExpTree& tree, RegExpProgram& program) {
  Planner(program).Make(tree);
}

}  // namespace lumr
