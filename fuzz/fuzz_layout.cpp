// Layout: physical lines join to the text and end at whole characters, each at its own break; and a
// line that is laid out again after an edit is as one laid out from scratch.
#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/transfer_properties.h"
#include "lumrmisc/editor/layout.h"
#include "lumrmisc/editor/quote.h"
#include "lumrmisc/mailtext/links.h"

namespace {

using namespace lumr;

// The first byte says how: code type, turn mode, links and pairs kept whole; the second is the
// limit, the third where the text is cut for the layout that is brought up to date.
struct Setup {
  explicit Setup(std::string_view bytes) {
    const auto flags = static_cast<unsigned char>(bytes[0]);
    codeType = (flags & 1) != 0 ? CT_UNICODE : CT_SJIS;
    CEditorMetrics settings;
    settings.NoTurnURL = flags >> 1 & 1;
    settings.NoTurnQuoted = flags >> 2 & 1;
    settings.TabColumn = 1 + (flags >> 5);
    settings.ChangeCodePage(codeType);
    const int mode = (flags & 8) != 0 ? kTurnAtPixels : kTurnAtColumns;
    metrics.SetLineMetrics(settings, codeType, mode, static_cast<unsigned char>(bytes[1]), 0);
    metrics.SetKeepPairs((flags & 16) != 0);
    cut = static_cast<unsigned char>(bytes[2]);
  }
  CodeType codeType;
  CEditorLineMetrics metrics;
  std::size_t cut;
};

void CheckLines(const Setup& setup, const LineView& line, const CPhysicalLines& lines) {
  const int size = static_cast<int>(line.text.size());
  const MbcsPage* const page = setup.metrics.Page();
  for (int i = 0; i < lines.Count(); ++i) {
    const int start = lines[i].start;
    const int end = lines.EndOf(i, size);
    Require(start < end || size == 0);
    Require(page == nullptr ? start % 2 == 0
                            : !page->IsTrailInContext(line.text, static_cast<std::size_t>(start)));
    Require(FindBreak(setup.metrics, line, start).end == end);
    Require(lines.IndexAt(start) == i && lines.IndexAt(std::max(end - 1, 0)) == i);
  }
  Require(lines[0].start == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const Setup setup(bytes);
  const TightCopy copy(bytes.substr(3));
  std::string_view text = copy;
  if (setup.codeType == CT_UNICODE) text = text.substr(0, text.size() / 2 * 2);
  std::vector<LinkRange> links, before;
  LinkFinder finder(setup.codeType);
  finder.FindAll(text, links);
  const int quote = QuotePrefixLength(setup.metrics, text) > 0 ? 0 : -1;
  const LineView line(text, links, quote);
  CPhysicalLines lines;
  LayoutLine(setup.metrics, line, 0, lines);
  CheckLines(setup, line, lines);

  // A first part of the text, grown to the whole.
  std::size_t cut = std::min(setup.cut, text.size());
  if (setup.codeType == CT_UNICODE) cut -= cut % 2;
  const std::string_view first = text.substr(0, cut);
  finder.FindAll(first, before);
  const int firstQuote = QuotePrefixLength(setup.metrics, first) > 0 ? 0 : -1;
  CPhysicalLines grown;
  LayoutLine(setup.metrics, {first, before, firstQuote}, 0, grown);
  LineChange change(static_cast<int>(cut));
  const auto differing = std::mismatch(before.begin(), before.end(), links.begin(), links.end());
  if (differing.first != before.end()) {
    change.first = std::min(change.first, differing.first->start);
  }
  if (differing.second != links.end()) {
    change.first = std::min(change.first, differing.second->start);
  }
  if (quote != firstQuote) change = 0;
  LayoutLine(setup.metrics, line, change, grown);
  Require(std::ranges::equal(grown.Items(), lines.Items()));
  return 0;
}
