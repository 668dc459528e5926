#include "htmltext.h"

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/html/safe.h"
#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/totext.h"
#include "safetext.h"

namespace lumr::tool {

namespace {

constexpr std::u16string_view kLineEnd = u"\r\n";

std::u16string_view WithoutBlanksAtEnd(std::u16string_view line) {
  const std::size_t last = line.find_last_not_of(u" \t\x3000");
  return line.substr(0, last == line.npos ? 0 : last + 1);
}

}  // namespace

CStringW WideText(std::string_view utf8, long long& invalid) {
  std::string valid;
  valid.reserve(utf8.size());
  invalid = AppendSafe(utf8, SafeForm::kUtf8, valid);
  CBuffer units;
  ConvertToOtherCodeType2(CT_UTF8, valid, CT_UNICODE, units);
  const std::string_view bytes = units.Bytes();
  CStringW text(bytes.size() / 2, u'\0');
  bytes.copy(reinterpret_cast<char*>(text.data()), text.size() * 2);
  return text;
}

CStringW ReadableHtml(CStringW html, bool keepLinks) {
  TagSpan pre;
  const bool isRunning = !FindTagNamed(html, 0, TagName("pre"), pre);
  ToSafeHtmlW(html);  // or the text of scripts would be read out
  ExtractTextFromHtmlW(html, keepLinks);
  CStringW text;
  text.reserve(html.size());
  bool isAfterEmpty = true;  // nor does the text begin with one
  for (std::u16string_view rest = html; !rest.empty();) {
    const std::size_t end = rest.find(kLineEnd);
    std::u16string_view line = WithoutBlanksAtEnd(rest.substr(0, end));
    rest.remove_prefix(end == rest.npos ? rest.size() : end + kLineEnd.size());
    // A line end of the source between two tags.
    if (isRunning && line.starts_with(u' ')) line.remove_prefix(1);
    if (line.empty() && isAfterEmpty) continue;
    isAfterEmpty = line.empty();
    text.append(line).append(kLineEnd);
  }
  if (isAfterEmpty && !text.empty()) text.resize(text.size() - kLineEnd.size());
  return text;
}

}  // namespace lumr::tool
