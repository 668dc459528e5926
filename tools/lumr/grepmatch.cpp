#include "grepmatch.h"

#include <algorithm>

#include "json.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/search/optioncomp.h"
#include "lumrmisc/search/regexp.h"
#include "safetext.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

// A pattern may take exponential time on a text that somebody else wrote.
constexpr long long kStepsAtLeast = 20'000'000;
constexpr long long kStepsPerByte = 16;

long long StepLimit(std::string_view text) {
  return kStepsAtLeast + kStepsPerByte * static_cast<long long>(text.size());
}

// Where a word comes next in a line that is gone through once.
struct WordPlace {
  std::size_t begin = 0;
  std::size_t end = 0;
  bool isGone = false;
};

class WordMatcher : public LineMatcher {
 public:
  explicit WordMatcher(const MatchOptions& options)
      : comparison_(options.ignoreCase, options.ignoreWidth, options.ignoreKana),
        allWords_(options.allWords) {
    for (const std::string& word : options.words) words_.emplace_back(WideBytes(word));
  }

  bool MayMatch(std::string_view lines) override { return Occurs(lines); }

  LineOutcome Match(std::string_view line, std::vector<Span>* spans) override {
    if (!Occurs(line)) return LineOutcome::kNone;
    if (spans != nullptr) Collect(line, *spans);
    return LineOutcome::kFound;
  }

 private:
  bool Occurs(std::string_view text) const {
    const int size = static_cast<int>(text.size());
    if (allWords_) return comparison_.FindStringsAnd(text.data(), size, words_, CT_UNICODE) >= 0;
    return comparison_.FindStringsOr(text.data(), size, words_, CT_UNICODE, 1, 0, nullptr) >= 0;
  }

  // Every word is looked for again only behind its last place, so that a line is read once a word.
  void Collect(std::string_view line, std::vector<Span>& spans) const {
    std::vector<WordPlace> places(words_.size());
    for (std::size_t pos = 0;;) {
      const WordPlace* first = nullptr;
      for (std::size_t i = 0; i < places.size(); ++i) {
        WordPlace& place = places[i];
        if (!place.isGone && (place.end == 0 || place.begin < pos)) Seek(line, pos, i, place);
        if (!place.isGone && (first == nullptr || place.begin < first->begin)) first = &place;
      }
      if (first == nullptr) return;
      spans.push_back({first->begin, first->end});
      pos = first->end;
    }
  }

  void Seek(std::string_view line, std::size_t pos, std::size_t word, WordPlace& place) const {
    int length = 0;
    const int found =
        comparison_.FindString(line.substr(pos), words_[word].Bytes(), CT_UNICODE, 1, 1, &length);
    place.isGone = found < 0;
    place.begin = pos + static_cast<std::size_t>(std::max(found, 0));
    place.end = place.begin + static_cast<std::size_t>(length);
  }

  COptionComp2 comparison_;
  bool allWords_;
  CArray<CBuffer> words_;
};

class PatternMatcher : public LineMatcher {
 public:
  // The pattern in UTF-16, compiled.
  PatternMatcher(std::unique_ptr<CRegExp> regExp, std::string_view pattern)
      : regExp_(std::move(regExp)), staysInside_(pattern.find_first_of("^$!") == pattern.npos) {}

  // What matches inside a line matches inside several too, unless the pattern asks what is beyond
  // the line.
  bool MayMatch(std::string_view lines) override {
    return !staysInside_ || Search(lines) != RegExpOutcome::kNone;
  }

  LineOutcome Match(std::string_view line, std::vector<Span>* spans) override {
    if (spans == nullptr) return OutcomeOf(Search(line));
    RegExpScanner scanner(*regExp_, line, CT_UNICODE, StepLimit(line));
    LineOutcome outcome = LineOutcome::kNone;
    std::size_t begin = 0;
    std::size_t end = 0;
    for (;;) {
      const RegExpOutcome next = scanner.Next(begin, end);
      if (next == RegExpOutcome::kNone) return outcome;
      if (next == RegExpOutcome::kLimit) return LineOutcome::kGivenUp;
      outcome = LineOutcome::kFound;
      spans->push_back({begin, std::min(end, line.size())});
    }
  }

 private:
  RegExpOutcome Search(std::string_view text) {
    return regExp_->MatchLimited(text, CT_UNICODE, StepLimit(text), nullptr, nullptr);
  }
  static LineOutcome OutcomeOf(RegExpOutcome outcome) {
    if (outcome == RegExpOutcome::kLimit) return LineOutcome::kGivenUp;
    return outcome == RegExpOutcome::kFound ? LineOutcome::kFound : LineOutcome::kNone;
  }

  std::unique_ptr<CRegExp> regExp_;
  bool staysInside_;  // does not ask what is before or behind a match
};

// The characters of UTF-16 before a place.
std::size_t CharactersBefore(std::string_view units, std::size_t pos) {
  std::size_t count = 0;
  for (std::size_t i = 0; i + 1 < std::min(pos, units.size()); i += 2) {
    const char16_t unit = LoadUnit(&units[i]);
    count += unit < 0xDC00 || unit > 0xDFFF;
  }
  return count;
}

void TellPatternError(Session& session, const MatchOptions& options, const CRegExp& regExp,
                      const CStringA& error) {
  CBuffer utf8;
  ConvertToOtherCodeType2(CT_SJIS, error, CT_UTF8, utf8);
  const std::size_t place = CharactersBefore(WideBytes(options.pattern),
                                             static_cast<std::size_t>(regExp.ErrorPosition()));
  const std::string code = std::to_string(regExp.ErrorCode());
  session.Tell(
      {}, Say::kPatternError,
      {SafeLine(options.pattern), SafeLine(utf8.Bytes()), code, std::to_string(place + 1)});
  session.Raise(kFailed);
}

// Null when the pattern is wrong.
std::unique_ptr<CRegExp> Compile(Session& session, const MatchOptions& options) {
  auto regExp = std::make_unique<CRegExp>();
  regExp->SetIgnoreWidth(options.ignoreWidth);
  regExp->SetIgnoreKanaKind(options.ignoreKana);
  CStringA error;
  if (regExp->ParseRegExp(WideBytes(options.pattern), CT_UNICODE, !options.ignoreCase, error)) {
    return regExp;
  }
  TellPatternError(session, options, *regExp, error);
  return nullptr;
}

}  // namespace

std::string WideBytes(std::string_view utf8) {
  CBuffer wide;
  ConvertToOtherCodeType2(CT_UTF8, utf8, CT_UNICODE, wide);
  return std::string(wide.Bytes());
}

std::unique_ptr<LineMatcher> MakeMatcher(Session& session, const MatchOptions& options) {
  if (!options.isPattern) return std::make_unique<WordMatcher>(options);
  std::unique_ptr<CRegExp> regExp = Compile(session, options);
  if (regExp == nullptr) return nullptr;
  return std::make_unique<PatternMatcher>(std::move(regExp), options.pattern);
}

void ExplainPattern(Session& session, const MatchOptions& options) {
  const std::unique_ptr<CRegExp> regExp = Compile(session, options);
  if (regExp == nullptr) return;
  const std::string program = regExp->Explain(CT_UNICODE);
  if (session.json) {
    session.Write(
        JsonLine({{"pattern", JsonText(options.pattern)}, {"program", JsonText(program)}}));
    return;
  }
  std::string safe;
  AppendSafe(program, SafeForm::kLines, safe);
  session.Write(safe);
}

}  // namespace lumr::tool
