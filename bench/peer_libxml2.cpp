// libxml2's HTML parser. It reads UTF-8, which the input, UTF-16, is made before.
#include "lumrmisc/charset/convert.h"
#include "peers.h"

#ifdef LUMRMISC_BENCH_XML2

#include <libxml/HTMLparser.h>
#include <libxml/HTMLtree.h>

#include <cstring>
#include <memory>

namespace lumr::bench {
namespace {

constexpr int kOptions = HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_RECOVER |
                         HTML_PARSE_NONET | HTML_PARSE_COMPACT;

std::string Converted(CodeType from, CodeType to, std::string_view text) {
  CBuffer out;
  ConvertToOtherCodeType2(from, text, to, out);
  return std::string(out.Bytes());
}

// Appends the text of a document, what a handler does at the least.
void AppendText(void* context, const xmlChar* text, int length) {
  static_cast<std::string*>(context)->append(reinterpret_cast<const char*>(text),
                                             static_cast<std::size_t>(length));
}

void DropText(void*, const xmlChar*, int) {}

void ParseEvents(const std::string& html, std::string& text) {
  htmlSAXHandler handler = {};
  handler.characters = AppendText;
  handler.ignorableWhitespace = AppendText;
  handler.cdataBlock = DropText;  // of style elements
  htmlParserCtxtPtr const parser = htmlCreatePushParserCtxt(
      &handler, &text, html.data(), static_cast<int>(html.size()), nullptr, XML_CHAR_ENCODING_UTF8);
  htmlCtxtUseOptions(parser, kOptions);
  htmlParseChunk(parser, nullptr, 0, 1);
  htmlFreeParserCtxt(parser);
}

void ParseAndWrite(const std::string& html, std::string& out) {
  htmlDocPtr const document =
      htmlReadMemory(html.data(), static_cast<int>(html.size()), nullptr, "UTF-8", kOptions);
  xmlChar* text = nullptr;
  int size = 0;
  htmlDocDumpMemory(document, &text, &size);
  out.assign(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
  xmlFree(text);
  xmlFreeDoc(document);
}

// The first result is made UTF-16 again, to be compared.
template <auto Parse>
Contender Parser(const char* name) {
  return {name, [](std::string_view input) -> Operation {
            const auto html = std::make_shared<std::string>(Converted(CT_UNICODE, CT_UTF8, input));
            return [html, isFirst = true,
                    out = std::string()](std::string_view) mutable -> std::string_view {
              out.clear();
              Parse(*html, out);
              if (isFirst) out = Converted(CT_UTF8, CT_UNICODE, out);
              isFirst = false;
              return out;
            };
          }};
}

}  // namespace

Contender Libxml2Sax() {
  return Parser<&ParseEvents>("libxml2 SAX");
}
Contender Libxml2Serialise() {
  return Parser<&ParseAndWrite>("libxml2 parse + serialise");
}
std::string Libxml2Version() {
  return "libxml2 " LUMRMISC_BENCH_XML2;
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender Libxml2Sax() {
  return NotBuilt("libxml2 SAX");
}
Contender Libxml2Serialise() {
  return NotBuilt("libxml2 parse + serialise");
}
std::string Libxml2Version() {
  return {};
}
}  // namespace lumr::bench

#endif
