#include <algorithm>

#include "lumrmisc/html/adjust.h"
#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

// Whether text holds a word of ASCII in lower case, ignoring case.
bool ContainsNoCase(std::u16string_view text, std::string_view word) {
  return std::search(text.begin(), text.end(), word.begin(), word.end(), [](char16_t a, char b) {
           return UnitAsciiLower(a) == static_cast<unsigned char>(b);
         }) != text.end();
}

bool IsDefaultFont(std::u16string_view sheet) {
  if (sheet.empty()) return true;
  return sheet.front() != u':' && std::count(sheet.begin(), sheet.end(), u':') == 1 &&
         ContainsNoCase(sheet, "body") && ContainsNoCase(sheet, "font-family");
}

}  // namespace

int InsertDefaultBodyFont(const char16_t* fontFamily, CStringW& html) {
  if (fontFamily == nullptr || *fontFamily == 0) return 0;
  TagSpan span;
  for (std::size_t pos = 0; FindTag(html, pos, span); pos = span.end) {
    const TagNameKey name = TagNameOf(html, span);
    if (name != TagName("style") && name != TagName("link") && name != TagName("/head")) continue;
    html.insert(span.start, std::u16string(u"<style type=text/css>\r\n  body { font-family: ") +
                                fontFamily + u" }\r\n</style>\r\n");
    return 1;
  }
  return 0;
}

int RemoveDefaultBodyFont(CStringW& html) {
  TagSpan open, close;
  if (!FindTagNamed(html, 0, TagName("style"), open) || !FindTag(html, open.end, close) ||
      TagNameOf(html, close) != TagName("/style")) {
    return 0;
  }
  const std::u16string_view whole = html;
  if (!IsDefaultFont(whole.substr(open.end, close.start - open.end))) return 0;
  const std::size_t lineEnd = whole.substr(close.end, 2) == u"\r\n" ? 2 : 0;
  html.erase(open.start, close.end + lineEnd - open.start);
  return 1;
}

}  // namespace lumr
