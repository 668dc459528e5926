// The editor's layout: lines turned at 72 columns.
#include <memory>
#include <vector>

#include "lumrmisc/charset/linescan.h"
#include "lumrmisc/editor/layout.h"
#include "lumrmisc/mailtext/links.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

constexpr int kColumns = 72;
constexpr const char* kShiftJis = "CP932";
constexpr const char* kUtf16 = "UTF-16LE";

struct Layouter {
  Layouter(CodeType type, bool keepsLinks) : codeType(type), finder(type), findsLinks(keepsLinks) {
    CEditorMetrics settings;
    settings.NoTurnURL = keepsLinks;
    settings.ChangeCodePage(type);
    metrics.SetLineMetrics(settings, type, kTurnAtColumns, kColumns, 1);
  }

  // Lays every line out into one reused record; gives the number of physical lines.
  std::size_t CountLines(std::string_view text) {
    std::size_t count = 0;
    const char* end = nullptr;
    int breakLength = 0;
    while (GetNextLine(text.data(), static_cast<int>(text.size()), codeType, end, breakLength)) {
      const auto size = static_cast<std::size_t>(end - text.data());
      if (findsLinks) finder.FindAll(text.substr(0, size), links);
      LayoutLine(metrics, {text.substr(0, size), links}, 0, lines);
      count += static_cast<std::size_t>(lines.Count());
      text.remove_prefix(size + static_cast<std::size_t>(breakLength));
    }
    return count;
  }

  CodeType codeType;
  CEditorLineMetrics metrics;
  LinkFinder finder;
  bool findsLinks;
  std::vector<LinkRange> links;
  CPhysicalLines lines;
};

Contender Lay(CodeType codeType, bool findsLinks = false) {
  return {"LumrMisc", [=](std::string_view) -> Operation {
            const auto layouter = std::make_shared<Layouter>(codeType, findsLinks);
            return [layouter,
                    result = std::string()](std::string_view text) mutable -> std::string_view {
              result = std::to_string(layouter->CountLines(text));
              return result;
            };
          }};
}

// Opportunities to break are not breaks: there is nothing to compare.
std::string Uncompared(std::string_view) {
  return {};
}

Row Prose(const char* charset, CodeType codeType) {
  return {.task = "lay out at 72 columns",
          .inputs = {{Corpus::kJapanese, charset, 3.0}},
          .ours = Lay(codeType),
          .peers = {IcuLineBreaks(charset), UnibreakLineBreaks(charset)},
          .canonical = Uncompared};
}

// Texts that a faulty layout would take more than linear time for, in Shift_JIS.
std::string Repeated(std::string_view piece, std::size_t size) {
  std::string text;
  text.reserve(size + piece.size());
  while (text.size() < size) text += piece;
  return text;
}
std::string OneLine(std::string text) {
  for (char& c : text) c = c == '\r' || c == '\n' ? ' ' : c;
  return text;
}
std::string OnlyFullStops(std::string text) {
  return Repeated("\x81\x42", text.size());
}
std::string OnlyTabs(std::string text) {
  return std::string(text.size(), '\t');
}
std::string OnlyLinks(std::string text) {
  constexpr std::string_view kLink = "http://www.example.jp/list?n=123 ";
  constexpr int kLinks = 10000;
  std::string line = Repeated(kLink, kLink.size() * kLinks);
  return Repeated(line += '\n', text.size());
}

Row Hostile(const char* task, std::string (*prepare)(std::string), bool findsLinks = false) {
  return {.task = task,
          .inputs = {{Corpus::kJapanese, kShiftJis}},
          .ours = Lay(CT_SJIS, findsLinks),
          .peers = {},
          .prepare = prepare};
}

}  // namespace

std::vector<Row> LayoutRows() {
  return {
      Prose(kShiftJis, CT_SJIS),
      Prose(kUtf16, CT_UNICODE),
      Hostile("lay out one endless line", OneLine),
      Hostile("lay out full stops", OnlyFullStops),
      Hostile("lay out tabs", OnlyTabs),
      Hostile("lay out lines of 10,000 links", OnlyLinks, true),
  };
}

}  // namespace lumr::bench
