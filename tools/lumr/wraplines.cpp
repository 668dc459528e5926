#include "wraplines.h"

#include <algorithm>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/linescan.h"
#include "lumrmisc/editor/quote.h"
#include "outgoing.h"
#include "textdecode.h"

namespace lumr::tool {

TextLine TakeLine(std::string_view& text) {
  const char* end = nullptr;
  int breakLength = 0;
  GetNextLine(text.data(), static_cast<int>(text.size()), CT_UNICODE, end, breakLength);
  const auto size = static_cast<std::size_t>(end - text.data());
  const TextLine line = {text.substr(0, size),
                         text.substr(size, static_cast<std::size_t>(breakLength))};
  text.remove_prefix(size + line.lineBreak.size());
  return line;
}

LineWrapper::LineWrapper(int columns) {
  CEditorMetrics settings;
  settings.GetEditorMetrics(nullptr, "", 0);
  settings.ChangeCodePage(CT_UNICODE);
  metrics_.SetLineMetrics(settings, CT_UNICODE, kTurnAtColumns, columns, 1);
  metrics_.SetKeepPairs(true);
}

LineView LineWrapper::Viewed(std::string_view line) {
  finder_.FindAll(line, links_);
  line_ = line;
  quote_ = QuotePrefixLength(metrics_, line) > 0 ? 0 : -1;
  return {line_, links_, quote_};
}

const CPhysicalLines& LineWrapper::Wrap(std::string_view line) {
  LayoutLine(metrics_, Viewed(line), 0, lines_);
  return lines_;
}

LineBreak LineWrapper::BreakBehind(int physicalLine) const {
  return FindBreak(metrics_, {line_, links_, quote_}, lines_[physicalLine].start);
}

std::vector<std::string> TurnedLines(const std::string& line, int columns) {
  CStringW text;
  long long bad = 0;
  if (!Utf16Of(line, text, bad)) return {line};
  const std::string_view bytes = BytesOf(std::u16string_view(text));
  LineWrapper wrapper(columns);
  const CPhysicalLines& lines = wrapper.Wrap(bytes);
  std::vector<std::string> turned;
  for (int i = 0; i < lines.Count(); ++i) {
    const auto begin = static_cast<std::size_t>(lines[i].start) / 2;
    const auto end = static_cast<std::size_t>(lines.EndOf(i, static_cast<int>(bytes.size()))) / 2;
    turned.push_back(Utf8(std::u16string_view(text).substr(begin, end - begin)));
    turned.back().erase(turned.back().find_last_not_of(' ') + 1);
  }
  return turned;
}

void LineJoiner::Join(std::string_view text) {
  while (!text.empty()) {
    const TextLine line = TakeLine(text);
    if (Extend(line)) continue;
    HandOn();
    Begin(line);
  }
  HandOn();
}

void LineJoiner::Begin(const TextLine& line) {
  joined_ = line.text;
  starts_ = {0};
  lineBreak_ = line.lineBreak;
  finder_.FindAll(joined_, links_);
  LayoutLine(wrapper_.Metrics(), {joined_, links_, Quote()}, 0, lines_);
}

// Whether the line, joined to what there is, breaks again where the lines do. If not, what there is
// remains to be handed on, and nothing else.
bool LineJoiner::Extend(const TextLine& line) {
  const int size = starts_.empty() ? 0 : static_cast<int>(joined_.size());
  if (size == 0 || line.text.empty() || lineBreak_ != breaks_.Of(line)) return false;
  joined_ += line.text;
  starts_.push_back(size);
  const int changed = std::min(size, FindMoreLinks());
  const int differs = LayoutLine(wrapper_.Metrics(), {joined_, links_, Quote()}, changed, lines_);
  bool breaksAgain = lines_.Count() == static_cast<int>(starts_.size()) && differs >= changed;
  for (int i = lines_.IndexAt(changed); breaksAgain && i < lines_.Count(); ++i) {
    breaksAgain = lines_[i].start == starts_[static_cast<std::size_t>(i)];
  }
  if (breaksAgain) {
    lineBreak_ = line.lineBreak;
  } else {
    joined_.resize(static_cast<std::size_t>(size));
  }
  return breaksAgain;
}

// Brings the links up to date, and gives the first byte at which they are not as they were.
int LineJoiner::FindMoreLinks() {
  const std::size_t before = links_.size();
  const int lastStart = before > 0 ? links_.back().start : 0;
  const std::size_t kept = finder_.FindMore(joined_, links_);
  int changed = static_cast<int>(joined_.size());
  if (kept < links_.size()) changed = links_[kept].start;
  // Links that are no more: the last one, or several; these stood behind those that are kept.
  if (kept + 1 == before) changed = std::min(changed, lastStart);
  if (kept + 1 < before) changed = kept > 0 ? links_[kept - 1].End() : 0;
  return changed;
}

int LineJoiner::Quote() const {
  return QuotePrefixLength(wrapper_.Metrics(), joined_) > 0 ? 0 : -1;
}

void LineJoiner::HandOn() {
  if (starts_.empty()) return;
  const TextLine line = {joined_, lineBreak_};
  receive_(line);
  breaks_.Pass(line);
  starts_.clear();
}

}  // namespace lumr::tool
