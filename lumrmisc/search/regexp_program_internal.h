// What a regular expression is compiled to: instructions of a small machine, as regexp.h has the
// syntax. The backtracking machine that runs them is their meaning; the automaton is made of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/search/characterfold_internal.h"
#include "lumrmisc/search/regexp_plan_internal.h"

namespace lumr {

// "To fail" is to pop an instruction index from the stack and go on there.
enum class RegExpOp : std::uint32_t {
  kNop = 0,         // also the filler of range pairs
  kGroupStart = 1,  // group's start := position
  kGroupEnd = 2,    // group's end := position
  kSymbol = 3,      // steps over this character or fails; 0 is the end of the text
  kAnyChar = 4,     // steps over a character; fails at the end
  kRangeList = 7,   // operand: behind the pairs that follow; steps over a character in one of them
  kNotRangeList = 8,  // in none of them; both fail at the end
  kJump = 13,
  kPushPos = 14,
  kPopPos = 15,
  kCall = 16,    // pushes the next index and jumps
  kReturn = 17,  // fails
  kPushSlot = 20,
  kPopSlot = 21,
  kSavePos = 22,    // slot := position
  kSaveDepth = 23,  // slot := depth of the stack
  kLoadPos = 24,
  kLoadDepth = 25,
  kFailIfAt = 26,    // fails where the position is the slot's
  kBackRef = 27,     // steps over what equals the group's text, or fails
  kAnchorFail = 28,  // no match at all
  kAdvance = 29,     // the next start, or no match
  kAccept = 30,
  kPushGroup = 31,  // pushes start and end
  kPopGroup = 32,   // pops end and start
};

struct RegExpInstruction {
  RegExpOp op = RegExpOp::kNop;
  std::uint32_t operand = 0;
};

// How patterns and texts are read and compared.
struct RegExpOptions {
  const MbcsPage* page = nullptr;  // null: UTF-16
  bool caseSensitive = false;
  CharacterFold fold;  // beyond case

  bool IsWide() const { return page == nullptr; }
  bool FoldsText() const { return !caseSensitive || fold.IsOn(); }
};

struct RegExpProgram {
  int lastError = 0;
  std::size_t errorPosition = 0;  // in bytes of the pattern
  std::vector<RegExpInstruction> instructions;
  std::uint32_t groupCount = 0;
  std::uint32_t slotCount = 0;
  RegExpOptions options;
  RegExpPlan plan;  // how a search goes about it; made when there is no error
};

// The pattern as a tree. Children stand before their parents in nodes.
enum class RegExpNodeKind : std::uint8_t {
  kNothing,  // an element that is not there
  kSymbol,   // value: the character
  kEnd,      // "$"
  kAny,
  kSet,      // children: ranges; value: negated
  kBackRef,  // value: the group
  kCapture,  // value: the group; one child
  kGroup,    // one child
  kNot,      // one child
  kSequence,
  kAlternative,
  kQuantified,  // value: RegExpQuantifier; one child
};

enum class RegExpQuantifier : std::uint32_t {
  kStar,
  kPlus,
  kOptional,
  kLazyStar,
  kLazyPlus,
  kLazyOptional
};

struct RegExpNode {
  RegExpNodeKind kind = RegExpNodeKind::kNothing;
  bool mayBeEmpty = false;
  std::uint32_t value = 0;
  std::uint32_t firstChild = 0;  // in children, or in ranges
  std::uint32_t childCount = 0;
  std::uint64_t size = 0;  // instructions, held at kRegExpMostInstructions + 1
};

inline constexpr std::uint64_t kRegExpMostInstructions = 1'000'000;
inline constexpr std::size_t kRegExpMostNested = 1000;

struct RegExpTree {
  int error = 0;
  std::size_t errorPosition = 0;
  bool anchored = false;
  std::uint32_t root = 0;
  std::uint32_t groupCount = 0;
  std::vector<RegExpNode> nodes;
  std::vector<std::uint32_t> children;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> ranges;
};

// Reads a pattern, whose case is folded already where it is ignored.
RegExpTree ParseRegExpPattern(std::string_view pattern, const RegExpOptions& options);

// Compiles a pattern as it was given. Linear in the pattern and the program made.
void CompileRegExp(std::string_view pattern, const RegExpOptions& options, RegExpProgram& program);

// Folds case and small kana in place, as a pattern and its texts are where case is ignored.
void FoldRegExpCase(std::string& text, const MbcsPage* page);

// Finds out how searches for the program may go; called by CompileRegExp.
void MakeRegExpPlan(const RegExpTree& tree, RegExpProgram& program);

// The instructions, a line each, and the plan; UTF-8.
std::string ExplainRegExp(const RegExpProgram& program);

}  // namespace lumr
