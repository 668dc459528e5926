#include "lumrmisc/editor/quote.h"

#include <cstddef>

#include "lumrmisc/editor/linetext_internal.h"

namespace lumr {
namespace {

constexpr int kMaxIndent = 4;  // before a quote character when nothing else may stand there

// The end of the run of characters of the list at pos.
template <typename Text>
std::size_t RunEnd(const Text& text, std::size_t pos, const CharacterList& list) {
  while (pos < text.Size() && list.Contains(text.At(pos))) pos += text.CharLength(pos);
  return pos;
}

// Goes on with a search up to the end of the text, or before a character that is still open.
template <typename Text>
void Search(const CEditorLineMetrics& metrics, const Text& text, bool final, QuoteScan& scan) {
  const bool anything = metrics.QuoteLen() > 0;
  const long long limit = anything ? metrics.QuoteLen() : kMaxIndent;
  while (!scan.ended && scan.pos < text.Size() && (final || !text.IsOpen(scan.pos))) {
    const EditorCharacter character = text.At(scan.pos);
    const bool quotes = metrics.QuoteList().Contains(character);
    // What is on both lists goes on with a run, and is an indent before one.
    const bool indents = !scan.inRun && metrics.IndentList().Contains(character);
    if (quotes && (anything || !indents)) {
      scan.pos += text.CharLength(scan.pos);
      scan.prefix = scan.pos;
      scan.columns = 0;
      scan.inRun = true;
      continue;
    }
    // A byte is a column in byte text, so one rule in columns serves both.
    scan.inRun = false;
    const bool skipped = anything || metrics.IndentList().Contains(character);
    scan.columns += text.CharColumns(scan.pos);
    scan.ended = !skipped || scan.columns > limit;
    if (!scan.ended) scan.pos += text.CharLength(scan.pos);
  }
}

}  // namespace

int QuotePrefixLength(const CEditorLineMetrics& metrics, std::string_view line) {
  QuoteScan scan;
  return QuotePrefixLength(metrics, line, scan);
}

int QuotePrefixLength(const CEditorLineMetrics& metrics, std::string_view line, QuoteScan& scan) {
  return WithLineText(metrics.Page(), line, [&](const auto& text) {
    Search(metrics, text, false, scan);
    QuoteScan last = scan;
    Search(metrics, text, true, last);
    return static_cast<int>(last.prefix);
  });
}

int QuoteDepth(const CEditorLineMetrics& metrics, std::string_view prefix) {
  return WithLineText(metrics.Page(), prefix, [&](const auto& text) {
    int depth = 0;
    for (std::size_t pos = 0; pos < text.Size(); pos += text.CharLength(pos)) {
      if (metrics.QuoteList().Contains(text.At(pos))) ++depth;
    }
    return depth;
  });
}

int IndentRunLength(const CEditorLineMetrics& metrics, std::string_view text) {
  return WithLineText(metrics.Page(), text, [&](const auto& line) {
    return static_cast<int>(RunEnd(line, 0, metrics.IndentList()));
  });
}

}  // namespace lumr
