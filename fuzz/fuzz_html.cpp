// Text and HTML both ways: nothing is written outside of the results (the sanitizers see to that),
// well-formed text stays well-formed, results are bounded, and what can be undone is undone.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/transfer_properties.h"
#include "lumrmisc/html/adjust.h"
#include "lumrmisc/html/fromtext.h"
#include "lumrmisc/html/htmlcharset.h"
#include "lumrmisc/html/images.h"
#include "lumrmisc/html/reading.h"
#include "lumrmisc/html/safe.h"
#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/title.h"
#include "lumrmisc/html/totext.h"
#include "tests/html/html_text.h"

namespace {

using namespace lumr;

void CheckText(const std::u16string& html, const std::u16string& result, bool mustBeWellFormed) {
  Require(result.size() <= 20 * html.size() + 256);  // an empty line becomes a div
  if (mustBeWellFormed && IsWellFormed(html)) Require(IsWellFormed(result));
}

void CheckSpans(std::u16string_view html) {
  TagSpan span;
  for (std::size_t pos = 0; FindTag(html, pos, span); pos = span.end) {
    Require(span.start >= pos && span.end > span.start && span.end <= html.size());
    Require(html[span.start] == u'<' && (span.isClosed || span.end == html.size()));
    AttributeWalk walk(TagText(html, span));
    std::size_t last = 0;
    for (TagAttribute attribute; walk.Next(attribute); last = attribute.end) {
      Require(attribute.start >= last && attribute.end > attribute.start);
    }
  }
}

void CheckFont(const std::u16string& html, std::u16string font) {
  std::erase_if(font, [](char16_t c) { return c == 0 || c == u':' || c == u'<' || c == u'>'; });
  std::u16string text = html;
  if (InsertDefaultBodyFont(font.c_str(), text) == 0) return Require(text == html);
  Require(RemoveDefaultBodyFont(text) == 1 && text == html);
}

void CheckCharset(std::u16string html) {
  std::string charset;
  if (html.empty()) return;
  Require(AddHtmlCharSetW(html, CT_EUC) == 1);
  const int isDeclared = GetHtmlCharSetW(html, charset);
  Require(ChangeHtmlCharSetW(html, CT_UTF8) >= isDeclared);
  if (isDeclared != 0) Require(GetHtmlCharSetW(html, charset) == 1 && charset == "UTF-8");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Half of the inputs are UTF-8, so that a fuzzer can spell tags; the others are units.
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  std::u16string html;
  if (size % 2 == 0) {
    html = Wide(bytes);
  } else {
    html.resize(size / 2);
    bytes.copy(reinterpret_cast<char*>(html.data()), html.size() * 2);
  }
  CheckSpans(html);
  CheckFont(html, html.substr(0, size % 7));
  CheckCharset(html);
  ResolveHtmlCharset(bytes.substr(0, size % 5), bytes);
  for (const auto function : {ToSafeHtmlW, ToHtmlLinkSelfW, AdjustHtmlBreakLine}) {
    std::u16string text = html;
    function(text);
    CheckText(html, text, true);
  }
  for (const int keepLinks : {0, 1}) {
    std::u16string text = html, reading = html;
    ExtractTextFromHtmlW(text, keepLinks);
    CheckText(html, text, false);
    ExtractTextFromHtmlW2(reading, keepLinks);
    Require(!IsWellFormed(html) || IsWellFormed(reading));
  }
  std::u16string text = html;
  InsertLeadTextW(u"<p>lead</p>", text);
  Require(html.empty() || text.find(u"<p>lead</p>") != text.npos);
  text = html;
  std::size_t images = 0;
  const int replaced = ConvertImgSrc(text, [&](std::u16string& address) {
    address = u"cid:1";
    return static_cast<int>(++images);
  });
  Require(replaced == static_cast<int>(images));
  ConvertImgSrc(text, [&](std::u16string& address) { return Require(address == u"cid:1"), 0; });
  GetURLTitle(html, text);
  CheckText(html, text, true);
  text = html;
  ToHtmlDocumentW(text, u"utf-8");
  CheckText(html, text, true);
  std::string narrow(bytes);
  ToHtmlTextA(narrow);
  Require(narrow.find('<') == narrow.npos || narrow.find("<br>\r\n") != narrow.npos);
  return 0;
}
