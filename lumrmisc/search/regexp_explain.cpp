// A program as text for people.
#include <cstdio>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/search/regexp_program_internal.h"

namespace lumr {
namespace {

using Op = RegExpOp;

enum class Operand { kNone, kCharacter, kTarget, kSlot, kGroup };

struct OpRow {
  Op op;
  const char* name;
  Operand operand;
};
constexpr OpRow kOps[] = {
    {Op::kNop, "Nop", Operand::kNone},
    {Op::kGroupStart, "GroupStart", Operand::kGroup},
    {Op::kGroupEnd, "GroupEnd", Operand::kGroup},
    {Op::kSymbol, "Symbol", Operand::kCharacter},
    {Op::kAnyChar, "AnyChar", Operand::kNone},
    {Op::kRangeList, "RangeList", Operand::kTarget},
    {Op::kNotRangeList, "NotRangeList", Operand::kTarget},
    {Op::kJump, "Jump", Operand::kTarget},
    {Op::kPushPos, "PushPos", Operand::kNone},
    {Op::kPopPos, "PopPos", Operand::kNone},
    {Op::kCall, "Call", Operand::kTarget},
    {Op::kReturn, "Return", Operand::kNone},
    {Op::kPushSlot, "PushSlot", Operand::kSlot},
    {Op::kPopSlot, "PopSlot", Operand::kSlot},
    {Op::kSavePos, "SavePos", Operand::kSlot},
    {Op::kSaveDepth, "SaveDepth", Operand::kSlot},
    {Op::kLoadPos, "LoadPos", Operand::kSlot},
    {Op::kLoadDepth, "LoadDepth", Operand::kSlot},
    {Op::kFailIfAt, "FailIfAt", Operand::kSlot},
    {Op::kBackRef, "BackRef", Operand::kGroup},
    {Op::kAnchorFail, "AnchorFail", Operand::kNone},
    {Op::kAdvance, "Advance", Operand::kNone},
    {Op::kAccept, "Accept", Operand::kNone},
    {Op::kPushGroup, "PushGroup", Operand::kGroup},
    {Op::kPopGroup, "PopGroup", Operand::kGroup},
};

const OpRow& RowOf(Op op) {
  for (const OpRow& row : kOps) {
    if (row.op == op) return row;
  }
  return kOps[0];
}

std::string Formatted(const char* format, auto... values) {
  char text[64];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

// The code in hex, and the character where it can be shown.
std::string CharacterText(const RegExpOptions& options, std::uint32_t code) {
  std::string text = Formatted(code < 0x100 && !options.IsWide() ? "%02X" : "%04X", code);
  const bool control = code < 0x20 || (code >= 0x7F && code < 0xA0);
  if (control || (options.IsWide() && (code & 0xF800) == 0xD800)) return text;
  std::string bytes;
  if (options.IsWide()) {
    bytes = {static_cast<char>(code), static_cast<char>(code >> 8)};
  } else {
    if (code >= 0x100) bytes += static_cast<char>(code >> 8);
    bytes += static_cast<char>(code);
  }
  CBuffer utf8;
  const unsigned page = options.IsWide() ? 1200 : options.page->CodePage();
  if (ConvertToOtherCodePage2(page, bytes, 65001, utf8) != 0) return text;
  return text + " '" + std::string(utf8.Bytes()) + "'";
}

std::string BytesText(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += Formatted(" %02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
  }
  return text;
}

std::string OperandText(const RegExpOptions& options, Operand kind, std::uint32_t operand) {
  switch (kind) {
    case Operand::kCharacter:
      return operand == 0 ? "end of text" : CharacterText(options, operand);
    case Operand::kTarget:
      return Formatted("%u", operand);
    case Operand::kSlot:
      return Formatted("slot %u", operand);
    case Operand::kGroup:
      return Formatted("group %u", operand);
    default:
      return "";
  }
}

std::string PlanText(const RegExpProgram& program) {
  const RegExpPlan& plan = program.plan;
  std::string text;
  switch (plan.way) {
    case RegExpPlan::Way::kLiteral:
      text = "search: plain text" + BytesText(plan.literal) + "\n";
      break;
    case RegExpPlan::Way::kAutomaton:
      text = Formatted("search: automaton, %zu positions, %zu classes of characters\n",
                       plan.positions.size(), plan.classCount);
      break;
    case RegExpPlan::Way::kBacktrack:
      text =
          plan.remembers ? "search: backtracking, failures remembered\n" : "search: backtracking\n";
      break;
  }
  return text + Formatted("shortest match: %zu characters\n", plan.minimumLength);
}

}  // namespace

std::string ExplainRegExp(const RegExpProgram& program) {
  std::string text;
  const std::vector<RegExpInstruction>& all = program.instructions;
  for (std::uint32_t at = 0; at < all.size(); ++at) {
    const OpRow& row = RowOf(all[at].op);
    const std::string operand = OperandText(program.options, row.operand, all[at].operand);
    text += Formatted("%5u  %-12s", at, row.name) + (operand.empty() ? "" : "  " + operand);
    if (row.op == Op::kRangeList || row.op == Op::kNotRangeList) {
      const std::uint32_t end = all[at].operand;
      for (; at + 1 < end; at += 2) {
        text += "  " + CharacterText(program.options, all[at + 1].operand);
        if (all[at + 1].operand == all[at + 2].operand) continue;
        text += " to " + CharacterText(program.options, all[at + 2].operand);
      }
    }
    while (!text.empty() && text.back() == ' ') text.pop_back();
    text += '\n';
  }
  return text + PlanText(program);
}

}  // namespace lumr
