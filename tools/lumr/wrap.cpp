// lumr wrap, lumr unwrap: the lines of a text turned at a number of columns, and joined again.
#include <algorithm>
#include <memory>
#include <string>

#include "command.h"
#include "json.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/platform/terminal.h"
#include "safetext.h"
#include "settingsfile.h"
#include "textdecode.h"
#include "textinput.h"
#include "wraplines.h"

namespace lumr::tool {

namespace {

constexpr int kDefaultColumns = 72;
constexpr std::size_t kPieceSize = std::size_t{1} << 16;

struct WrapOptions {
  int columns = kDefaultColumns;
  std::string file = "-";
  std::string from;
  std::string quote;
  bool explain = false;
};

std::string Utf8OfBytes(std::string_view utf16) {
  CBuffer utf8;
  ConvertToOtherCodeType2(CT_UNICODE, utf16, CT_UTF8, utf8);
  return std::string(utf8.Bytes());
}

// Collects UTF-16 for standard output.
class Utf16Output {
 public:
  explicit Utf16Output(Session& session)
      : session_(session), isShown_(IsTerminal(StandardStream::kOutput)) {}

  void Add(std::string_view utf16) { pending_ += utf16; }
  // Where a character ends.
  void MayWrite() {
    if (pending_.size() > kPieceSize) Flush();
  }
  void Flush() {
    const std::string utf8 = Utf8OfBytes(pending_);
    pending_.clear();
    if (!isShown_) return session_.Write(utf8);
    std::string safe;  // a terminal would obey the text's control characters
    AppendSafe(utf8, SafeForm::kLines, safe);
    session_.Write(safe);
  }

 private:
  Session& session_;
  std::string pending_;
  bool isShown_;
};

struct RuleRow {
  BreakRule rule;
  const char* name;  // in JSON
  Say what;
};
constexpr RuleRow kRules[] = {
    {kBreakOneCharacter, "one-character", Say::kRuleOneCharacter},
    {kBreakUrlEnd, "link-end", Say::kRuleUrlEnd},
    {kBreakBeforeUrl, "before-link", Say::kRuleBeforeUrl},
    {kBreakBehindUrl, "behind-link", Say::kRuleBehindUrl},
    {kBreakWord, "word", Say::kRuleWord},
    {kBreakHang, "hang", Say::kRuleHang},
    {kBreakPushBack, "push-back", Say::kRulePushBack},
};

// Prints the physical lines of each line, with what moved their breaks.
class Explainer {
 public:
  Explainer(Session& session, LineWrapper& wrapper) : session_(session), wrapper_(wrapper) {}

  void Explain(std::string_view line) {
    ++number_;
    const CPhysicalLines& lines = wrapper_.Wrap(line);
    for (int i = 0; i < lines.Count(); ++i) {
      const auto begin = static_cast<std::size_t>(lines[i].start);
      const auto end = static_cast<std::size_t>(lines.EndOf(i, static_cast<int>(line.size())));
      const std::string_view piece = line.substr(begin, end - begin);
      const bool isLast = i + 1 == lines.Count();
      const unsigned rules = isLast ? 0 : wrapper_.BreakBehind(i).rules;
      if (session_.json) {
        PrintJson(piece, rules);
      } else {
        PrintText(piece, isLast, rules);
      }
    }
  }

 private:
  void PrintText(std::string_view piece, bool isLast, unsigned rules) {
    std::string why;
    for (const RuleRow& row : kRules) {
      if ((rules & row.rule) != 0) why += (why.empty() ? "" : ", ") + Text(row.what);
    }
    if (why.empty()) why = Text(isLast ? Say::kRuleLineEnd : Say::kRuleAtLimit);
    session_.Write(std::to_string(number_) + '\t' + std::to_string(wrapper_.ColumnsOf(piece)) +
                   '\t' + SafeLine(Utf8OfBytes(piece)) + '\t' + why + '\n');
  }

  void PrintJson(std::string_view piece, unsigned rules) {
    Json names = Json::array();
    for (const RuleRow& row : kRules) {
      if ((rules & row.rule) != 0) names.push_back(row.name);
    }
    session_.Write(JsonLine({{"line", number_},
                             {"columns", wrapper_.ColumnsOf(piece)},
                             {"text", JsonText(Utf8OfBytes(piece))},
                             {"rules", std::move(names)}}));
  }

  Session& session_;
  LineWrapper& wrapper_;
  long long number_ = 0;  // of the line of the input
};

void WrapText(Session& session, const WrapOptions& options, std::string_view text) {
  CStringW mark;
  if (!options.quote.empty() && !Widen(session, options.quote, mark)) return;
  const int markColumns = LineWrapper(1).ColumnsOf(BytesOf(mark));
  LineWrapper wrapper(std::max(options.columns - markColumns, 1));
  Explainer explainer(session, wrapper);
  Utf16Output out(session);
  LineBreaks breaks;
  while (!text.empty()) {
    const TextLine line = TakeLine(text);
    if (options.explain || session.json) {
      explainer.Explain(line.text);
      continue;
    }
    const CPhysicalLines& lines = wrapper.Wrap(line.text);
    for (int i = 0; i < lines.Count(); ++i) {
      const auto begin = static_cast<std::size_t>(lines[i].start);
      const auto end = static_cast<std::size_t>(lines.EndOf(i, static_cast<int>(line.text.size())));
      if (i > 0) out.Add(breaks.Of(line));
      out.Add(BytesOf(mark));
      out.Add(line.text.substr(begin, end - begin));
      out.MayWrite();
    }
    out.Add(line.lineBreak);
    breaks.Pass(line);
  }
  out.Flush();
}

void UnwrapText(Session& session, const WrapOptions& options, std::string_view text) {
  Utf16Output out(session);
  LineJoiner joiner(options.columns, [&](const TextLine& line) {
    if (session.json) {
      session.Write(JsonLine({{"text", JsonText(Utf8OfBytes(line.text))}}));
      return;
    }
    out.Add(line.text);
    out.Add(line.lineBreak);
    out.MayWrite();
  });
  joiner.Join(text);
  out.Flush();
}

using Work = void (*)(Session& session, const WrapOptions& options, std::string_view text);

Runner RunnerOf(const std::shared_ptr<WrapOptions>& options, Work work) {
  return [options, work](Session& session) {
    CBuffer text;
    if (!ReadText(session, options->file, options->from, text)) return;
    work(session, *options, text.Bytes());
  };
}

std::shared_ptr<WrapOptions> AddOptions(CLI::App& command) {
  auto options = std::make_shared<WrapOptions>();
  command.add_option("FILE", options->file, Text(Say::kWrapFile))->type_name("");
  command.add_option("-w,--width", options->columns, Text(Say::kWrapColumns))
      ->check(CLI::Range(1, 1 << 20).description(""))
      ->type_name("N");
  command.add_option("-f,--from", options->from, Text(Say::kWrapFrom))->type_name("CHARSET");
  return options;
}

}  // namespace

Runner AddWrap(CLI::App& command) {
  const auto options = AddOptions(command);
  command.add_option("--quote", options->quote, Text(Say::kWrapQuote))->type_name("MARK");
  command.add_flag("--explain", options->explain, Text(Say::kWrapExplain));
  return RunnerOf(options, WrapText);
}

Runner AddUnwrap(CLI::App& command) {
  return RunnerOf(AddOptions(command), UnwrapText);
}

}  // namespace lumr::tool
