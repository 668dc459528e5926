// From the tree of a pattern to instructions.
#include <array>
#include <initializer_list>

#include "lumrmisc/charset/casefold.h"
#include "lumrmisc/search/regexp.h"
#include "lumrmisc/search/regexp_program_internal.h"

namespace lumr {
namespace {

using Op = RegExpOp;
using Kind = RegExpNodeKind;
using Quantifier = RegExpQuantifier;

// Emits node by node from a stack of what is still to do, so that depth costs no recursion.
class Emitter {
 public:
  Emitter(const RegExpTree& tree, RegExpProgram& program) : tree_(tree), program_(program) {}

  void EmitAll() {
    program_.instructions.reserve(static_cast<std::size_t>(tree_.nodes[tree_.root].size) + 3);
    Put(Op::kCall, 2);
    Put(tree_.anchored ? Op::kAnchorFail : Op::kAdvance);
    Push(tree_.root);
    while (!work_.empty()) Step();
    Put(Op::kAccept);
  }

 private:
  struct Work {
    std::uint32_t node;
    std::uint32_t phase;  // how often it was worked at
    std::uint32_t at;     // an instruction that the next phase needs
    std::uint32_t slot;
  };

  std::uint32_t Here() const { return static_cast<std::uint32_t>(program_.instructions.size()); }
  std::uint32_t Put(Op op, std::uint32_t operand = 0) {
    program_.instructions.push_back({op, operand});
    return Here() - 1;
  }
  void PointHere(std::uint32_t at) { program_.instructions[at].operand = Here(); }

  void Push(std::uint32_t node) { work_.push_back({node, 0, 0, 0}); }
  // Comes back to the work at hand after what is pushed next.
  void Later(Work work) {
    ++work.phase;
    work_.push_back(work);
  }
  std::uint32_t Child(const RegExpNode& node, std::uint32_t i = 0) const {
    return tree_.children[node.firstChild + i];
  }

  void Step() {
    const Work work = work_.back();
    work_.pop_back();
    if (work.node == kEndAlternative) return PointEndsHere();
    const RegExpNode& node = tree_.nodes[work.node];
    switch (node.kind) {
      case Kind::kNothing:
        break;
      case Kind::kSymbol:
        Put(Op::kSymbol, node.value);
        break;
      case Kind::kEnd:
        Put(Op::kSymbol, 0);
        break;
      case Kind::kAny:
        Put(Op::kAnyChar);
        break;
      case Kind::kSet:
        PutSet(node);
        break;
      case Kind::kBackRef:
        Put(Op::kBackRef, node.value);
        break;
      case Kind::kCapture:
        StepCapture(node, work);
        break;
      case Kind::kGroup:
        Put(Op::kCall, Here() + 2);
        Put(Op::kReturn);
        PushBody(node);
        break;
      case Kind::kNot:
        StepNot(node, work);
        break;
      case Kind::kSequence:
        for (std::uint32_t i = node.childCount; i > 0; --i) Push(Child(node, i - 1));
        break;
      case Kind::kAlternative:
        StepAlternative(node, work);
        break;
      case Kind::kQuantified:
        StepQuantified(node, work);
        break;
    }
  }

  void PutSet(const RegExpNode& node) {
    Put(node.value != 0 ? Op::kNotRangeList : Op::kRangeList, Here() + 1 + 2 * node.childCount);
    for (std::uint32_t i = 0; i < node.childCount; ++i) {
      const auto& [low, high] = tree_.ranges[node.firstChild + i];
      Put(Op::kNop, low);
      Put(Op::kNop, high);
    }
  }

  void PushBody(const RegExpNode& node) {
    const std::uint32_t body = Child(node);
    if (tree_.nodes[body].childCount == 0) Put(Op::kNop);
    Push(body);
  }

  void StepCapture(const RegExpNode& node, const Work& work) {
    if (work.phase == 1) {
      Put(Op::kGroupEnd, node.value);
      return;
    }
    Put(Op::kPushGroup, node.value);
    Put(Op::kGroupStart, node.value);
    Put(Op::kCall, Here() + 3);
    Put(Op::kPopGroup, node.value);
    Put(Op::kReturn);
    Later(work);
    PushBody(node);
  }

  // An element that matches takes the stack back to what it was, and with that the call that
  // would have gone on; so the branch fails.
  void StepNot(const RegExpNode& node, Work work) {
    if (work.phase == 1) {
      Put(Op::kLoadPos, work.slot);
      Put(Op::kLoadDepth, work.slot + 1);
      Put(Op::kReturn);
      PointHere(work.at);
      return;
    }
    work.slot = program_.slotCount;
    program_.slotCount += 2;
    Put(Op::kSavePos, work.slot);
    Put(Op::kSaveDepth, work.slot + 1);
    Put(Op::kCall, Here() + 4);
    Put(Op::kLoadPos, work.slot);
    Put(Op::kLoadDepth, work.slot + 1);
    work.at = Put(Op::kJump);
    Later(work);
    Push(Child(node));
  }

  // Each side but the last: a frame, the side, and a jump over all that follow. The jumps to the
  // end are chained through their operands until it is known.
  void StepAlternative(const RegExpNode& node, Work work) {
    if (work.phase > 0) {
      const std::uint32_t chained = work.at;
      work.at = Put(Op::kJump, chained);
      PointHere(work.slot);
    }
    if (work.phase + 1 < node.childCount) {
      Put(Op::kPushPos);
      Put(Op::kCall, Here() + 3);
      Put(Op::kPopPos);
      work.slot = Put(Op::kJump);
      const std::uint32_t side = Child(node, work.phase);
      Later(work);
      Push(side);
      return;
    }
    ends_.push_back(work.at);
    work_.push_back({kEndAlternative, 0, 0, 0});
    Push(Child(node, work.phase));
  }

  void PointEndsHere() {
    for (std::uint32_t at = ends_.back(); at != 0;) {
      const std::uint32_t chained = program_.instructions[at].operand;
      PointHere(at);
      at = chained;
    }
    ends_.pop_back();
  }

  void StepQuantified(const RegExpNode& node, Work work) {
    const auto quantifier = static_cast<Quantifier>(node.value);
    const bool plus = quantifier == Quantifier::kPlus || quantifier == Quantifier::kLazyPlus;
    if (plus && work.phase == 0) {
      Later(work);
      Push(Child(node));
      return;
    }
    const bool lazy = quantifier >= Quantifier::kLazyStar;
    if (work.phase == (plus ? 1u : 0u)) {
      work.at = Here();
      work.slot = program_.slotCount++;
      lazy ? OpenLazy(work.slot) : OpenGreedy(work.slot);
      Later(work);
      Push(Child(node));
      return;
    }
    Put(Op::kFailIfAt, work.slot);
    const bool once =
        quantifier == Quantifier::kOptional || quantifier == Quantifier::kLazyOptional;
    if (!lazy) Put(Op::kSavePos, work.slot);
    if (!once) Put(Op::kJump, work.at);
    PointHere(work.at + (lazy ? 1 : 6));
  }

  // One more, and on failure on behind the loop with the slot as it was.
  void OpenGreedy(std::uint32_t slot) {
    Put(Op::kPushSlot, slot);
    Put(Op::kSavePos, slot);
    Put(Op::kPushPos);
    Put(Op::kCall, Here() + 4);
    Put(Op::kPopPos);
    Put(Op::kPopSlot, slot);
    Put(Op::kJump);
  }

  // On behind the loop, and on failure one more; when that fails too the slot is as it was.
  void OpenLazy(std::uint32_t slot) {
    Put(Op::kPushPos);
    Put(Op::kCall);
    Put(Op::kPopPos);
    Put(Op::kPushSlot, slot);
    Put(Op::kSavePos, slot);
    Put(Op::kCall, Here() + 3);
    Put(Op::kPopSlot, slot);
    Put(Op::kReturn);
  }

  static constexpr std::uint32_t kEndAlternative = 0xFFFFFFFF;

  const RegExpTree& tree_;
  RegExpProgram& program_;
  std::vector<Work> work_;
  std::vector<std::uint32_t> ends_;  // of the alternatives at work: the last jump to the end
};

}  // namespace

void CompileRegExp(std::string_view pattern, const RegExpOptions& options, RegExpProgram& program) {
  program = {};
  program.options = options;
  std::string folded;
  if (!options.caseSensitive) {
    folded = pattern;
    FoldRegExpCase(folded, options.page);
    pattern = folded;
  }
  const RegExpTree tree = ParseRegExpPattern(pattern, options);
  program.lastError = tree.error;
  program.errorPosition = tree.errorPosition;
  program.groupCount = tree.groupCount;
  if (tree.error != 0) return;
  if (tree.nodes[tree.root].size + 3 > kRegExpMostInstructions) {
    program.lastError = kRegExpTooLarge;
    program.errorPosition = pattern.size();
    return;
  }
  Emitter(tree, program).EmitAll();
  MakeRegExpPlan(tree, program);
}

void FoldRegExpCase(std::string& text, const MbcsPage* page) {
  constexpr CaseFold kFold = {LetterFold::kLower, true};
  if (page == nullptr) {
    FoldUnits(text.data(), text.size(), kFold);
  } else {
    FoldBytes(*page, text.data(), text.size(), kFold);
  }
}

}  // namespace lumr
