// Any pattern on any text, within a number of steps: a match lies inside the text, but for the
// terminator that "$" takes, and on borders of its characters; the automaton finds what the
// backtracking machine finds; the matches of a scanner do not overlap.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string_view>

#include "lumrmisc/search/regexp.h"
#include "lumrmisc/search/regexp_search_internal.h"

namespace {

using lumr::RegExpOutcome;

constexpr lumr::CodeType kCodeTypes[] = {lumr::CT_SJIS,    lumr::CT_UNICODE, lumr::CT_GB2312,
                                         lumr::CT_BIG5,    lumr::CT_KSC5601, lumr::CT_WIN1252,
                                         lumr::CT_UNICODE, lumr::CT_SJIS};
constexpr long long kLimit = 20'000;
constexpr int kMostMatches = 50;

void Require(bool holds) {
  if (!holds) __builtin_trap();
}

// Whether pos is where a character begins, the end of the text, or behind its terminator.
bool IsBorder(const lumr::MbcsPage* page, std::string_view text, std::size_t pos) {
  if (page == nullptr) return pos % 2 == 0 && pos <= (text.size() & ~std::size_t{1}) + 2;
  std::size_t border = 0;
  while (border < pos && border < text.size()) border += page->CharLength(text, border);
  return border == pos || pos == text.size() + 1;
}

void CheckEngines(std::string_view pattern, const lumr::RegExpOptions& options,
                  std::string_view text) {
  lumr::RegExpProgram program;
  lumr::CompileRegExp(pattern, options, program);
  if (program.lastError != 0) return;
  lumr::RegExpState state(program);
  const lumr::RegExpText prepared(options, text);
  lumr::RegExpSpan match;
  lumr::RegExpSpan plain;
  const auto outcome = state.Search(program, prepared.View(), 0, kLimit, match);
  const auto expected = state.SearchByMachine(program, prepared.View(), 0, kLimit, plain);
  if (outcome == RegExpOutcome::kLimit || expected == RegExpOutcome::kLimit) return;
  Require(outcome == expected);
  Require(outcome == RegExpOutcome::kNone ||
          (match.start == plain.start && match.end == plain.end));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const lumr::CodeType codeType = kCodeTypes[data[0] % 8];
  const bool caseSensitive = (data[0] & 0x08) != 0;
  // Making the tables of these takes long, so they come rarely.
  const bool folds = (data[0] & 0xC0) == 0xC0;
  const bool width = folds && (data[0] & 0x10) != 0;
  const bool kanaKind = folds && (data[0] & 0x20) != 0;
  const std::string_view rest(reinterpret_cast<const char*>(data) + 2, size - 2);
  const std::string_view pattern = rest.substr(0, data[1]);
  const std::string_view behind = rest.substr(pattern.size());
  const auto block = std::make_unique<char[]>(behind.size());
  std::copy(behind.begin(), behind.end(), block.get());
  const std::string_view text(block.get(), behind.size());

  const lumr::MbcsPage* const page = codeType == lumr::CT_UNICODE
                                         ? nullptr
                                         : lumr::FindMbcsPage(lumr::CharSetCode2CodePage(codeType));
  CheckEngines(pattern, {page, caseSensitive, lumr::CharacterFold(page, width, kanaKind)}, text);

  lumr::CRegExp regExp;
  regExp.SetIgnoreWidth(width);
  regExp.SetIgnoreKanaKind(kanaKind);
  lumr::CStringA error;
  const int parsed = regExp.ParseRegExp(pattern, codeType, caseSensitive, error);
  Require((parsed == 0) == (regExp.ErrorCode() != 0) && (parsed == 0) == !error.empty());
  Require(regExp.ErrorPosition() >= 0 &&
          regExp.ErrorPosition() <= static_cast<int>(pattern.size()));
  regExp.Explain(codeType);
  lumr::RegExpScanner scanner(regExp, text, codeType, kLimit);
  std::size_t last = 0;
  std::size_t start = 0;
  std::size_t end = 0;
  for (int i = 0; i < kMostMatches && scanner.Next(start, end) == RegExpOutcome::kFound; ++i) {
    Require(parsed == 1 && last <= start && start <= end);
    Require(start <= text.size() && IsBorder(page, text, start) && IsBorder(page, text, end));
    last = end;
  }
  return 0;
}
