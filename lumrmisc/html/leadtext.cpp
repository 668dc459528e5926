#include <algorithm>

#include "lumrmisc/html/adjust.h"
#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

constexpr std::size_t npos = std::u16string_view::npos;

// The end of a tag as a reader sees it who counts every quote: nothing visible begins inside
// of one.
std::size_t EndOfQuotedTag(std::u16string_view html, std::size_t pos) {
  while (true) {
    pos = FindUnit(html, pos, u'>', u'"', u'\'');
    if (pos == html.size()) return pos;
    if (html[pos] == u'>') return pos + 1;
    pos = FindUnit(html, pos + 1, html[pos]);
    if (pos == html.size()) return pos;
    ++pos;
  }
}

// The position of the first visible character.
std::size_t FirstVisible(std::u16string_view html) {
  std::size_t pos = 0;
  while (pos < html.size()) {
    if (IsHtmlSpace(html[pos])) {
      ++pos;
      continue;
    }
    TagSpan span;
    if (html[pos] != u'<' || !FindTag(html, pos, span) || span.start != pos) return pos;
    const TagNameKey name = TagNameOf(html, span);
    pos = span.kind == SpanKind::kComment ? span.end : EndOfQuotedTag(html, pos + 1);
    if (name == TagName("title")) pos = EndOfElement(html, pos, TagName("/title"));
    if (name == TagName("script")) pos = EndOfElement(html, pos, TagName("/script"));
  }
  return html.size();
}

struct Anchor {
  TagNameKey name;
  std::size_t end = npos;  // of the first tag of the name, or npos
};

// Where the lead belongs, or npos for the start of a document without frame. What a script
// writes is not the document's frame.
std::size_t FindPlace(std::u16string_view html) {
  const std::size_t visible = FirstVisible(html);
  Anchor anchors[] = {
      {TagName("body")}, {TagName("/head")}, {TagName("html")}, {TagName("!doctype")}};
  TagSpan span;
  for (std::size_t pos = 0; FindTag(html, pos, span) && span.end <= visible;) {
    const TagNameKey name = TagNameOf(html, span);
    pos = name == TagName("script") ? EndOfElement(html, span.end, TagName("/script")) : span.end;
    const auto anchor = std::find_if(std::begin(anchors), std::end(anchors),
                                     [=](const Anchor& a) { return a.name == name; });
    if (anchor != std::end(anchors) && anchor->end == npos) anchor->end = span.end;
  }
  const auto found = std::find_if(std::begin(anchors), std::end(anchors),
                                  [](const Anchor& a) { return a.end != npos; });
  return found == std::end(anchors) ? npos : found->end;
}

}  // namespace

void InsertLeadTextW(const char16_t* lead, CStringW& html) {
  if (lead == nullptr || *lead == 0 || html.empty()) return;
  const std::size_t place = FindPlace(html);
  if (place == npos) {
    html.insert(0, lead);
  } else {
    html.insert(place, IsLineEnd(html[place - 1]) ? lead : u"\r\n" + std::u16string(lead));
  }
}

}  // namespace lumr
