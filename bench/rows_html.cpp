// HTML: received pages made safe, and turned into text. The inputs are UTF-16, mail as newsletters
// are written: about as many bytes of markup as of text. Sizes are those of the same page in UTF-8.
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/html/adjust.h"
#include "lumrmisc/html/fromtext.h"
#include "lumrmisc/html/reading.h"
#include "lumrmisc/html/safe.h"
#include "lumrmisc/html/sanitize.h"
#include "lumrmisc/html/totext.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

std::string InUtf16(std::string_view utf8) {
  CBuffer out;
  ConvertToOtherCodeType2(CT_UTF8, utf8, CT_UNICODE, out);
  return std::string(out.Bytes());
}

std::u16string Units(std::string_view bytes) {
  std::u16string units(bytes.size() / 2, u'\0');
  bytes.copy(reinterpret_cast<char*>(units.data()), units.size() * 2);
  return units;
}

std::string_view BytesOf(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

// A mail of the lines of a text, as long as the text.
std::string MailPage(std::string text) {
  constexpr std::string_view kFrames[][2] = {
      {"<p>", "</p>\r\n"},
      {"<p style=\"margin:0;font-size:14px;color:#333333\">", "<br>\r\n"},
      {"<table width=\"600\" cellpadding=\"0\"><tr><td align=\"left\" bgcolor=\"#ffffff\">",
       "</td></tr></table>\r\n"},
      {"<div class=\"news\"><a href=\"http://www.example.jp/news/?id=4567&amp;page=8\" "
       "target=\"_blank\">",
       "</a></div>\r\n"},
      {"<img src=\"http://img.example.jp/mail/spacer.gif\" width=\"1\" height=\"9\" alt=\"\"><b>",
       "</b>&nbsp;<br>\r\n"},
      {"<font color=\"#336699\" size=\"2\">", "</font><br>\r\n"},
  };
  const std::size_t size = text.size();
  std::string page =
      "<html><head>\r\n<style type=\"text/css\">\r\nbody { margin: 0 }\r\n</style>\r\n"
      "</head>\r\n<body>\r\n";
  std::size_t pos = 0;
  for (std::size_t i = 0; page.size() < size && pos < text.size(); ++i) {
    const std::size_t end = std::min(text.find("\r\n", pos), text.size());
    std::string line = text.substr(pos, end - pos);
    ToHtmlTextA(line);
    page.append(kFrames[i % 6][0]).append(line).append(kFrames[i % 6][1]);
    pos = std::min(end + 2, text.size());
  }
  return InUtf16(page += "</body>\r\n</html>\r\n");
}

std::string TextInUtf16(std::string text) {
  return InUtf16(text);
}

// The text of HTML or of text without a "<", white space apart, which each lays out its own way.
std::string CharactersOf(std::string_view bytes) {
  std::u16string text = Units(bytes);
  ExtractTextFromHtmlW(text, 0);
  std::erase_if(text, [](char16_t c) { return c <= u' ' || c == 0xA0 || c == 0x3000; });
  return std::string(BytesOf(text));
}

// The same of what is text already. w3m shows an image without text as "_".
std::string PlainCharactersOf(std::string_view bytes) {
  std::u16string text = Units(bytes);
  std::erase_if(text,
                [](char16_t c) { return c <= u' ' || c == u'_' || c == 0xA0 || c == 0x3000; });
  return std::string(BytesOf(text));
}

template <typename Function>
Contender OnPage(Function function) {
  return {"LumrMisc", [function](std::string_view) -> Operation {
            return [function, html = std::u16string()](std::string_view input) mutable {
              html.resize(input.size() / 2);
              input.copy(reinterpret_cast<char*>(html.data()), html.size() * 2);
              function(html);
              return BytesOf(html);
            };
          }};
}

std::vector<Input> Pages(double mark) {
  return {{Corpus::kJapanese, "UTF-8", mark}, {Corpus::kAscii, "UTF-8", mark}};
}

constexpr double kCommandMark = 20;

}  // namespace

std::vector<Row> HtmlRows() {
  return {
      {"HTML made safe",
       Pages(4),
       OnPage([](std::u16string& html) { ToSafeHtmlW(html); }),
       {Libxml2Sax()},
       &MailPage,
       &CharactersOf},
      {"HTML cleaned from the ground up",
       {{Corpus::kJapanese, "UTF-8", 2}, {Corpus::kAscii, "UTF-8", 2}},
       OnPage([](std::u16string& html) { ToSafeHtmlW2(html); }),
       {Libxml2Sax(), Marked(4, Libxml2Serialise())},
       &MailPage,
       &CharactersOf},
      {"HTML to text",
       Pages(3),
       OnPage([](std::u16string& html) { ExtractTextFromHtmlW(html, 0); }),
       {Libxml2Sax(), Marked(kCommandMark, W3mDump()), Marked(kCommandMark, LynxDump())},
       &MailPage,
       &PlainCharactersOf},
      {"HTML to text for reading",
       Pages(0),
       OnPage([](std::u16string& html) { ExtractTextFromHtmlW2(html, 0); }),
       {Libxml2Sax(), Marked(kCommandMark, W3mDump()), Marked(kCommandMark, LynxDump())},
       &MailPage,
       &PlainCharactersOf},
      {"HTML source lines kept short", Pages(0), OnPage(AdjustHtmlBreakLine), {}, &MailPage},
      {"text to HTML",
       Pages(0),
       OnPage([](std::u16string& text) { ToHtmlDocumentW(text, u"utf-8"); }),
       {},
       &TextInUtf16},
  };
}

}  // namespace lumr::bench
