#include "lumrmisc/search/regexp.h"

#include <algorithm>
#include <new>
#include <utility>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/platform/messages.h"
#include "lumrmisc/search/regexp_search_internal.h"

namespace lumr {
namespace {

constexpr unsigned kFirstMessage = 3300;
constexpr unsigned kEmptyPatternMessage = 3311;
constexpr long long kNoLimit = -1;

// The bytes of a text that ends at its terminator, or of so many bytes.
std::string_view TextBytes(const char* text, int length, CodeType codeType) {
  if (length < 0 && IsCodeTypeUnicode(codeType)) return CountedUnits(text);
  return CountedText(text, length);
}

// The code page in which texts of a code type are read at this moment; null: UTF-16.
const MbcsPage* PageOf(CodeType codeType) {
  if (IsCodeTypeUnicode(codeType)) return nullptr;
  const CApplyLocale scope(codeType);
  return &CurrentMbcsPage();
}

}  // namespace

CStringA RegExpErrorText(int error) {
  if (error < kRegExpNoError || error > kRegExpNullPattern) {
    return "Invalid REParseError: " + std::to_string(error);
  }
  return MessageText(kFirstMessage + static_cast<unsigned>(error));
}

// ---- Items ----

CREItem::CREItem() = default;

CREItem::~CREItem() {
  delete state;
  delete program;
}

CREItem::CREItem(const CREItem& other) {
  *this = other;
}

CREItem& CREItem::operator=(const CREItem& other) {
  if (this == &other) return *this;
  auto newProgram =
      other.program == nullptr ? nullptr : std::make_unique<RegExpProgram>(*other.program);
  auto newState = other.state == nullptr ? nullptr : std::make_unique<RegExpState>(*newProgram);
  delete state;
  delete program;
  program = newProgram.release();
  state = newState.release();
  codeType = other.codeType;
  return *this;
}

// ---- The pattern ----

CRegExp::CRegExp() = default;

CRegExp::~CRegExp() = default;

void CRegExp::ClearRegExp() {
  items_.clear();
  pattern_.clear();
  codeType_ = CT_UNKNOWN;
  caseSensitive_ = 0;
  errorCode_ = kRegExpNoError;
  errorPosition_ = 0;
}

int CRegExp::IsParsed() const {
  return !pattern_.empty();
}

void CRegExp::SetIgnoreWidth(int ignoreWidth) {
  ignoreWidth_ = ignoreWidth != 0;
  items_.clear();
}

void CRegExp::SetIgnoreKanaKind(int ignoreKanaKind) {
  ignoreKanaKind_ = ignoreKanaKind != 0;
  items_.clear();
}

int CRegExp::ParseRegExp(const char* pattern, CodeType codeType, int caseSensitive,
                         CStringA& error) {
  return ParseRegExp(TextBytes(pattern, -1, codeType), codeType, caseSensitive, error);
}

int CRegExp::ParseRegExp(std::string_view pattern, CodeType codeType, int caseSensitive,
                         CStringA& error) {
  error.clear();
  ClearRegExp();
  if (IsCodeTypeUnicode(codeType)) pattern = pattern.substr(0, pattern.size() & ~std::size_t{1});
  if (pattern.empty()) {
    errorCode_ = kRegExpNullPattern;
    error = MessageText(kEmptyPatternMessage);
    return 0;
  }
  pattern_ = pattern;
  codeType_ = codeType;
  caseSensitive_ = caseSensitive;
  return Parse2(pattern_, codeType, error);
}

int CRegExp::Parse2(const char* pattern, CodeType codeType, CStringA& error) {
  return Parse2(TextBytes(pattern, -1, codeType), codeType, error);
}

// A pattern that could not be compiled leaves an item all the same, so that it is not tried again.
int CRegExp::Parse2(std::string_view pattern, CodeType codeType, CStringA& error) {
  errorPosition_ = 0;
  try {
    auto item = std::make_unique<CREItem>();
    item->codeType = codeType;
    items_.push_back(std::move(item));
    CREItem& added = *items_.back();
    if (pattern.data() == nullptr) {
      errorCode_ = kRegExpNullPattern;
    } else {
      const MbcsPage* const page = PageOf(codeType);
      auto program = std::make_unique<RegExpProgram>();
      const RegExpOptions options = {page, caseSensitive_ != 0,
                                     CharacterFold(page, ignoreWidth_, ignoreKanaKind_)};
      CompileRegExp(pattern, options, *program);
      errorCode_ = program->lastError;
      errorPosition_ = static_cast<int>(program->errorPosition);
      if (errorCode_ == kRegExpNoError) {
        auto state = std::make_unique<RegExpState>(*program);
        added.program = program.release();
        added.state = state.release();
      }
    }
  } catch (const std::bad_alloc&) {
    errorCode_ = kRegExpTooLarge;
  }
  if (errorCode_ == kRegExpNoError) return 1;
  error = RegExpErrorText(errorCode_);
  return 0;
}

int CRegExp::IsParsedOK(CodeType codeType, CStringA& error) {
  error.clear();
  if (pattern_.empty()) return 0;
  if (const CREItem* const item = ItemFor(codeType)) return item->program != nullptr;
  const CodeType from = CodeTypeSave2Edit(codeType_);
  const CodeType to = CodeTypeSave2Edit(codeType);
  if (from == to) return Parse2(pattern_, codeType, error);
  // What the code type lacks would become a "?", which is an operator.
  CBuffer converted;
  if (ConvertToOtherCodeType2(from, pattern_, to, converted) != 0) {
    auto item = std::make_unique<CREItem>();
    item->codeType = codeType;
    items_.push_back(std::move(item));
    return 0;
  }
  return Parse2(converted.Bytes(), codeType, error);
}

CREItem* CRegExp::ItemFor(CodeType codeType) {
  const auto found = std::find_if(items_.begin(), items_.end(), [codeType](const auto& item) {
    return item->codeType == codeType;
  });
  return found == items_.end() ? nullptr : found->get();
}

CStringA CRegExp::Explain(CodeType codeType) {
  CStringA error;
  return IsParsedOK(codeType, error) ? ExplainRegExp(*ItemFor(codeType)->program) : CStringA();
}

// ---- Matching ----

int CRegExp::Match(const char* text, CodeType codeType, const char** start, const char** end) {
  return Match(text, -1, codeType, start, end);
}

int CRegExp::Match(const char* text, int length, CodeType codeType, const char** start,
                   const char** end) {
  return Match(TextBytes(text, length, codeType), codeType, start, end);
}

int CRegExp::Match(std::string_view text, CodeType codeType, const char** start, const char** end) {
  return MatchLimited(text, codeType, kNoLimit, start, end) == RegExpOutcome::kFound;
}

RegExpOutcome CRegExp::MatchLimited(const char* text, int length, CodeType codeType,
                                    long long limit, const char** start, const char** end) {
  return MatchLimited(TextBytes(text, length, codeType), codeType, limit, start, end);
}

RegExpOutcome CRegExp::MatchLimited(std::string_view text, CodeType codeType, long long limit,
                                    const char** start, const char** end) {
  if (text.data() == nullptr) return RegExpOutcome::kNone;
  std::size_t first = 0;
  std::size_t behind = 0;
  RegExpScanner scanner(*this, text, codeType, limit);
  const RegExpOutcome outcome = scanner.NextFrom(0, first, behind);
  if (outcome != RegExpOutcome::kFound) return outcome;
  if (start != nullptr) *start = text.data() + first;
  if (end != nullptr) *end = text.data() + behind;
  return outcome;
}

// ---- Scanning ----

struct RegExpScanner::Work {
  const RegExpProgram& program;
  RegExpState& state;
  RegExpText text;
  long long limit;
  RegExpDeadEnds deadEnds;
  std::size_t next = 0;  // where the next search begins, in the view
};

RegExpScanner::RegExpScanner(CRegExp& regExp, std::string_view text, CodeType codeType,
                             long long limit) {
  CStringA error;
  try {
    if (text.data() == nullptr || !regExp.IsParsedOK(codeType, error)) return;
    const CREItem& item = *regExp.ItemFor(codeType);
    work_.reset(new Work{*item.program, *item.state, {item.program->options, text}, limit, {}});
  } catch (const std::bad_alloc&) {
    outcome_ = limit < 0 ? RegExpOutcome::kNone : RegExpOutcome::kLimit;
  }
}

RegExpScanner::~RegExpScanner() = default;

RegExpOutcome RegExpScanner::Next(std::size_t& start, std::size_t& end) {
  return work_ ? SearchFrom(work_->next, start, end) : outcome_;
}

RegExpOutcome RegExpScanner::NextFrom(std::size_t from, std::size_t& start, std::size_t& end) {
  return work_ ? SearchFrom(work_->text.ToView(from), start, end) : outcome_;
}

RegExpOutcome RegExpScanner::SearchFrom(std::size_t from, std::size_t& start, std::size_t& end) {
  const std::string_view view = work_->text.View();
  // Within a limit every search counts as if it were the first.
  RegExpDeadEnds* const deadEnds = work_->limit < 0 ? &work_->deadEnds : nullptr;
  RegExpSpan match;
  RegExpOutcome outcome = RegExpOutcome::kNone;
  try {
    outcome = work_->state.Search(work_->program, view, from, work_->limit, match, deadEnds);
  } catch (const std::bad_alloc&) {
    return work_->limit < 0 ? RegExpOutcome::kNone : RegExpOutcome::kLimit;
  }
  if (outcome != RegExpOutcome::kFound) return outcome;
  work_->next = match.end;
  if (match.end == match.start) {
    const MbcsPage* const page = work_->program.options.page;
    const bool single = page != nullptr && !page->IsPair(view, match.end);
    // An empty match at the end of an empty text is the only one there.
    work_->next += single ? 1 : 2;
  }
  start = work_->text.ToOriginal(match.start);
  end = work_->text.ToOriginal(match.end);
  return outcome;
}

}  // namespace lumr
