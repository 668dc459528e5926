// The editor's document: loaded, laid out again, grown at its end.
#include <memory>
#include <vector>

#include "lumrmisc/charset/linescan.h"
#include "lumrmisc/editor/editorwnd.h"
#include "lumrmisc/editor/layout.h"
#include "lumrmisc/editor/quote.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

constexpr int kColumns = 72;

CEditorMetrics Settings(int columns) {
  CEditorMetrics metrics;
  metrics.AutoTurn = kTurnAtColumns;
  metrics.TurnCols = columns;
  metrics.NoTurnURL = 1;
  return metrics;
}

std::string PhysicalLines(const CEditorWnd& editor) {
  return std::to_string(editor.GetSerialLineP(editor.GetLineCount(), 0));
}

std::shared_ptr<CEditorWnd> MakeEditor(std::string_view text, CodeType codeType) {
  auto editor = std::make_shared<CEditorWnd>();
  editor->ChangeEditorMetrics(Settings(kColumns));
  editor->SetDocument(codeType, text.data(), Length(text));
  return editor;
}

Contender Load(const char* name, CodeType codeType) {
  return {name, [codeType](std::string_view) -> Operation {
            return [editor = MakeEditor({}, codeType), codeType,
                    result = std::string()](std::string_view text) mutable -> std::string_view {
              editor->SetDocument(codeType, text.data(), Length(text));
              return result = PhysicalLines(*editor);
            };
          }};
}

// The same work, but into one record for all lines: what a document costs beyond it is the
// keeping.
class OneRecord {
 public:
  explicit OneRecord(CodeType codeType) : codeType_(codeType), finder_(codeType) {
    CEditorMetrics settings = Settings(kColumns);
    settings.ChangeCodePage(codeType);
    metrics_.SetLineMetrics(settings, codeType, kTurnAtColumns, kColumns, 0);
  }

  long long CountLines(std::string_view text) {
    long long count = 0;
    const char* end = text.data();
    int breakLength = 0;
    while (GetNextLine(text.data(), Length(text), codeType_, end, breakLength) != 0) {
      const auto size = static_cast<std::size_t>(end - text.data());
      Take(text.substr(0, size));
      count += record_.PhysicalLines().Count();
      text.remove_prefix(size + static_cast<std::size_t>(breakLength));
    }
    return breakLength > 0 ? count + 1 : count;
  }

 private:
  void Take(std::string_view line) {
    record_.SetText(line);
    record_.SetQuoteIndex(QuotePrefixLength(metrics_, line) > 0 ? 0 : -1);
    finder_.FindAll(line, links_);
    record_.MutableUrlRanges().Assign(links_);
    LayoutLine(metrics_, record_, 0, record_.PhysicalLines());
  }

  CodeType codeType_;
  LinkFinder finder_;
  std::vector<LinkRange> links_;
  CEditorLineMetrics metrics_;
  CLLineData record_;
};

Contender IntoOneRecord(CodeType codeType) {
  return {"into one record", [codeType](std::string_view) -> Operation {
            return [record = std::make_shared<OneRecord>(codeType),
                    result = std::string()](std::string_view text) mutable -> std::string_view {
              return result = std::to_string(record->CountLines(text));
            };
          }};
}

// Turned at one width and the other by turns.
Contender ChangeWidth(CodeType codeType) {
  return {"LumrMisc", [codeType](std::string_view text) -> Operation {
            return [editor = MakeEditor(text, codeType), columns = kColumns,
                    result = std::string()](std::string_view) mutable -> std::string_view {
              columns = columns == kColumns ? kColumns - 6 : kColumns;
              editor->ChangeEditorMetrics(Settings(columns));
              return result = PhysicalLines(*editor);
            };
          }};
}

// Ten characters more in a line as long as the input, so the rate rises with the size. The line has
// room for them: that its text moves to a larger block now and then is not what is measured.
Contender AppendToLine() {
  return {"LumrMisc", [](std::string_view text) -> Operation {
            const auto editor = MakeEditor(text, CT_SJIS);
            editor->AppendText("0123456789", 10, 0);
            return [editor](std::string_view) -> std::string_view {
              editor->AppendText("0123456789", 10, 0);
              return "1";
            };
          }};
}

// A place in each of many lines, there and back.
Contender Places() {
  return {"LumrMisc", [](std::string_view text) -> Operation {
            return [editor = MakeEditor(text, CT_SJIS), seed = 1u,
                    result = std::string()](std::string_view input) mutable -> std::string_view {
              unsigned sum = 0;
              for (int i = 0; i < 1000; ++i) {
                seed = seed * 1664525 + 1013904223;
                CTextPos pos;
                editor->ByteL2ViewIndex(static_cast<int>(seed % input.size()), 0, pos);
                sum += static_cast<unsigned>(editor->ViewIndex2ByteL(pos) +
                                             editor->GetSerialLineP(pos.line, pos.physLine));
              }
              return result = std::to_string(sum);
            };
          }};
}

std::string ShortLines(std::string text) {
  std::string out;
  for (const char c : text) {
    if (c == '\r') continue;
    out += c;
  }
  // 1.5 million lines in 64 MiB: cut what the corpus wraps at 80 columns in two.
  std::string lines;
  std::size_t length = 0;
  for (std::size_t i = 0; i < out.size(); ++i) {
    lines += out[i];
    length = out[i] == '\n' ? 0 : length + 1;
    const bool border = static_cast<unsigned char>(out[i]) < 0x80;
    if (length >= 40 && border) {
      lines += '\n';
      length = 0;
    }
  }
  return lines;
}

std::string OneLine(std::string text) {
  for (char& c : text) c = c == '\r' || c == '\n' ? ' ' : c;
  return text;
}

// The texts of two widths are not the same.
std::string Uncompared(std::string_view) {
  return {};
}

std::vector<Row> RowsOf(const char* charset, CodeType codeType) {
  const std::vector<Input> inputs = {{Corpus::kJapanese, charset, 0.4}};
  return {
      {.task = "SetDocument",
       .inputs = inputs,
       .ours = Load("LumrMisc", codeType),
       .peers = {IntoOneRecord(codeType)}},
      {.task = "ChangeEditorMetrics, another width",
       .inputs = inputs,
       .ours = ChangeWidth(codeType),
       .peers = {Marked(1.0, Load("SetDocument", codeType))},
       .canonical = Uncompared},
  };
}

}  // namespace

std::vector<Row> EditorRows() {
  std::vector<Row> rows = RowsOf("CP932", CT_SJIS);
  for (const Row& row : RowsOf("UTF-16LE", CT_UNICODE)) rows.push_back(row);
  const std::vector<Input> plain = {{Corpus::kJapanese, "CP932"}};
  rows.push_back({.task = "SetDocument, lines of 40 bytes",
                  .inputs = {{Corpus::kJapanese, "CP932", 0.4}},
                  .ours = Load("LumrMisc", CT_SJIS),
                  .peers = {IntoOneRecord(CT_SJIS)},
                  .prepare = ShortLines});
  rows.push_back({.task = "SetDocument, one line",
                  .inputs = {{Corpus::kJapanese, "CP932", 0.4}},
                  .ours = Load("LumrMisc", CT_SJIS),
                  .peers = {IntoOneRecord(CT_SJIS)},
                  .prepare = OneLine});
  rows.push_back({.task = "AppendText, 10 characters to one line",
                  .inputs = plain,
                  .ours = AppendToLine(),
                  .peers = {},
                  .prepare = OneLine});
  rows.push_back({.task = "1000 places in a document, there and back",
                  .inputs = plain,
                  .ours = Places(),
                  .peers = {}});
  return rows;
}

}  // namespace lumr::bench
