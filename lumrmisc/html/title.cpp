#include "lumrmisc/html/title.h"

#include "lumrmisc/html/decode_internal.h"
#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

bool IsGap(char16_t unit) {
  return IsHtmlSpace(unit) || unit < 0x20 || (unit >= 0x7F && unit <= 0x9F);
}

std::u16string OneLine(std::u16string_view text) {
  std::u16string line;
  for (const char16_t unit : text) {
    if (!IsGap(unit)) {
      line += unit;
    } else if (!line.empty() && line.back() != u' ') {
      line += u' ';
    }
  }
  if (line.ends_with(u' ')) line.pop_back();
  return line;
}

// Takes the first line off text, without white space around it.
std::u16string_view TakeLine(std::u16string_view& text) {
  const std::size_t end = FindUnit(text, 0, u'\r', u'\n');
  std::u16string_view line = text.substr(0, end);
  text.remove_prefix(end < text.size() ? end + 1 : end);
  while (!line.empty() && (IsHtmlSpace(line.front()) || line.front() == 0xFEFF)) {
    line.remove_prefix(1);
  }
  while (!line.empty() && IsHtmlSpace(line.back())) line.remove_suffix(1);
  return line;
}

bool IsShortcut(std::u16string_view text) {
  while (!text.empty()) {
    const std::u16string_view line = TakeLine(text);
    if (line.empty() || line.front() == u';') continue;
    return line.front() == u'[' && line.back() == u']';
  }
  return false;
}

std::u16string ShortcutTitle(std::u16string_view text) {
  std::u16string_view title, address;
  bool isSection = false;
  while (!text.empty()) {
    const std::u16string_view line = TakeLine(text);
    if (line.starts_with(u'[')) {
      isSection = EqualsNoCase(line, "[internetshortcut]");
    } else if (isSection && title.empty() && StartsWithNoCase(line, "title=")) {
      title = line.substr(6);
    } else if (isSection && address.empty() && StartsWithNoCase(line, "url=")) {
      address = line.substr(4);
    }
  }
  const std::u16string line = OneLine(title);
  return line.empty() ? OneLine(address) : line;
}

std::u16string DocumentTitle(std::u16string_view html) {
  TagSpan open, close;
  for (std::size_t pos = 0; FindTagNamed(html, pos, TagName("title"), open); pos = close.end) {
    std::u16string decoded;
    if (!FindTag(html, open.end, close)) close.start = close.end = html.size();
    AppendDecoded(html.substr(open.end, close.start - open.end), false, decoded);
    std::u16string title = OneLine(decoded);
    if (!title.empty()) return title;
  }
  return {};
}

}  // namespace

int GetURLTitle(std::u16string_view text, CStringW& title) {
  std::u16string found = IsShortcut(text) ? ShortcutTitle(text) : DocumentTitle(text);
  title = std::move(found);
  return !title.empty();
}

}  // namespace lumr
