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

// Where the next run of quote characters begins; Size() when too much stands before it. A byte is
// a column in byte text, so one rule in columns serves both.
template <typename Text>
std::size_t NextQuote(const CEditorLineMetrics& metrics, const Text& text, std::size_t pos) {
  const bool anything = metrics.QuoteLen() > 0;
  const long long limit = anything ? metrics.QuoteLen() : kMaxIndent;
  long long columns = 0;
  for (; pos < text.Size(); pos += text.CharLength(pos)) {
    const EditorCharacter character = text.At(pos);
    const bool skipped = anything ? !metrics.QuoteList().Contains(character)
                                  : metrics.IndentList().Contains(character);
    if (!skipped) return pos;
    columns += text.CharColumns(pos);
    if (columns > limit) return text.Size();
  }
  return pos;
}

template <typename Text>
std::size_t PrefixLength(const CEditorLineMetrics& metrics, const Text& text) {
  std::size_t prefix = 0;
  for (;;) {
    const std::size_t begin = NextQuote(metrics, text, prefix);
    const std::size_t end = RunEnd(text, begin, metrics.QuoteList());
    if (end == begin) return prefix;
    prefix = end;
  }
}

}  // namespace

int QuotePrefixLength(const CEditorLineMetrics& metrics, std::string_view line) {
  return WithLineText(metrics.Page(), line, [&](const auto& text) {
    return static_cast<int>(PrefixLength(metrics, text));
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
