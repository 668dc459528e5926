#include "lumrmisc/html/fromtext.h"

#include <algorithm>

#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

void AppendLine(std::u16string_view line, std::u16string& out) {
  out += u"<div>";
  if (line.empty()) out += u"&nbsp;";
  std::size_t done = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const bool isKeptSpace = line[i] == u' ' && i + 1 < line.size() && line[i + 1] == u' ';
    const std::string_view reference = isKeptSpace ? "&nbsp;" : ReferenceOf(line[i]);
    if (reference.empty()) continue;
    out.append(line, done, i - done);
    out.append(reference.begin(), reference.end());
    done = i + 1;
  }
  out.append(line, done);
  out += u"</div>\r\n";
}

}  // namespace

void ToHtmlDocumentW(CStringW& text, const char16_t* charset) {
  if (text.empty()) return;
  const bool isDocument = charset != nullptr && *charset != 0;
  std::u16string out;
  out.reserve(text.size() + text.size() / 4 + 256);
  if (isDocument) {
    out += u"<html>\r\n<head>\r\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=";
    out += charset;
    out += u"\">\r\n</head>\r\n<body>\r\n";
  }
  const std::u16string_view all = text;
  for (std::size_t pos = 0; pos < all.size();) {
    const std::size_t end = FindUnit(all, pos, u'\r', u'\n');
    AppendLine(all.substr(pos, end - pos), out);
    pos = end + (all.substr(end, 2) == u"\r\n" ? 2 : 1);
  }
  if (isDocument) out += u"</body>\r\n</html>\r\n";
  text = std::move(out);
}

void ToHtmlTextA(CStringA& text) {
  std::string out;
  out.reserve(text.size() + text.size() / 8);
  std::size_t done = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isLineEnd = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    const std::string_view written = isLineEnd ? "<br>\r" : ReferenceOf(text[i]);
    if (written.empty()) continue;
    out.append(text, done, i - done).append(written);
    done = i + 1;
  }
  out.append(text, done);
  text = std::move(out);
}

}  // namespace lumr
