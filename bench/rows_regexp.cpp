// Regular expressions: all matches of a mail text.
#include "lumrmisc/search/regexp.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

constexpr double kOnigurumaMark = 3;
constexpr double kInterpreterMark = 1;
constexpr double kJitMark = 0.5;
constexpr std::size_t kMarkedFrom = std::size_t{16} << 20;

// A pattern in our syntax and in that of the others.
struct PatternRow {
  const char* task;
  const char* ours;
  const char* theirs;
  bool beatsJit;                     // whether the JIT is a mark
  const char* oursNarrow = nullptr;  // in Shift_JIS, where the order of the kanji is another
  const char* theirsNarrow = nullptr;
};
constexpr PatternRow kPatterns[] = {
    {"literal of 3 kana", "メール", "メール", true},
    {"[0-9]+-[0-9]+", "[0-9]+-[0-9]+", "[0-9]+-[0-9]+", false},
    {"[a-zA-Z]+@[a-zA-Z.]+", "[a-zA-Z]+@[a-zA-Z.]+", "[a-zA-Z]+@[a-zA-Z.]+", false},
    {"katakana word", "[ァ-ヶ]+", "[ァ-ヶ]+", false},
    {"one of three words", "(会議)|(資料)|(予定)", "会議|資料|予定", true},
    {"https?://[^ ]+", "https?://[^ ]+", "https?://[^ ]+", true},
    {"kanji, then hiragana", "[一-龠][ぁ-ん]", "[一-龠][ぁ-ん]", false, "[亜-熙][ぁ-ん]",
     "[亜-熙][ぁ-ん]"},
    {"line holding a word", "[^\\r\\f]*会議[^\\r\\f]*", ".*会議.*", false},
};

Contender AllMatches(const std::string& utf8, const std::string& charset, CodeType codeType) {
  return {"LumrMisc", [=](std::string_view) -> Operation {
            auto program = std::make_shared<CRegExp>();
            CStringA error;
            program->ParseRegExp(EncodeText(utf8, charset), codeType, 1, error);
            return [=, count = std::string()](std::string_view input) mutable -> std::string_view {
              RegExpScanner scanner(*program, input, codeType);
              std::size_t found = 0;
              for (std::size_t start, end; scanner.Next(start, end) == RegExpOutcome::kFound;) {
                ++found;
              }
              return count = std::to_string(found);
            };
          }};
}

Row MakeRow(const PatternRow& pattern, bool wide) {
  const std::string charset = wide ? "UTF-16LE" : "CP932";
  const char* const ours =
      wide || pattern.oursNarrow == nullptr ? pattern.ours : pattern.oursNarrow;
  const char* const theirs =
      wide || pattern.theirsNarrow == nullptr ? pattern.theirs : pattern.theirsNarrow;
  Row row = {std::string("regular expression, ") + pattern.task,
             {{Corpus::kJapanese, charset, kInterpreterMark}},
             AllMatches(ours, charset, wide ? CT_UNICODE : CT_SJIS),
             {Marked(kOnigurumaMark, OnigurumaAll(theirs, charset)),
              Pcre2All(pattern.theirs, charset, false)}};
  if (pattern.beatsJit) {
    row.peers.push_back(Marked(kJitMark, Pcre2All(pattern.theirs, charset, true)));
  }
  return MarkedFrom(kMarkedFrom, std::move(row));
}

}  // namespace

std::vector<Row> RegExpRows() {
  std::vector<Row> rows;
  for (const PatternRow& pattern : kPatterns) {
    rows.push_back(MakeRow(pattern, false));
    rows.push_back(MakeRow(pattern, true));
  }
  return rows;
}

}  // namespace lumr::bench
