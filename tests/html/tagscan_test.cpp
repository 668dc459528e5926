// The tag scanner beside the tokenizer cases of html5lib. The scanner is simpler than the HTML
// standard on purpose, since stray quotes and brackets of mail must not swallow text; the table
// says where.
#include "lumrmisc/html/tagscan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <string>

#include "charset/corpus.h"
#include "html/html_text.h"
#include "html/json_cases.h"
#include "lumrmisc/html/htmlescape_internal.h"

namespace lumr {
namespace {

using Attributes = std::map<std::u16string, std::u16string>;

void AppendTag(std::u16string_view name, const Attributes& attributes, std::u16string& shown) {
  ((shown += u"<") += name);
  for (const auto& [key, value] : attributes) (((shown += u" ") += key) += u"=") += value;
  shown += u">\n";
}

// Text, tags and comments as one readable text.
std::u16string Scanned(std::u16string_view html) {
  std::u16string shown, scratch;
  const auto showText = [&](std::size_t from, std::size_t to) {
    if (from < to) (shown += DecodeHtml(html.substr(from, to - from), false, scratch)) += u"\n";
  };
  TagSpan span;
  std::size_t pos = 0;
  for (; FindTag(html, pos, span); pos = span.end) {
    showText(pos, span.start);
    const std::u16string_view tag = TagText(html, span);
    if (span.kind == SpanKind::kComment) {
      const std::size_t marks = span.isClosed ? 6 : 4;  // the ">" is not in it
      shown += u"<!--" + std::u16string(tag.substr(4, tag.size() - marks)) + u"\n";
      continue;
    }
    std::u16string name(tag.substr(1, tag.find_first_of(u" \n\t\f/", 2) - 1));
    for (char16_t& unit : name) unit = UnitAsciiLower(unit);
    Attributes attributes;
    AttributeWalk walk(tag);
    for (TagAttribute attribute; walk.Next(attribute);) {
      std::u16string key(attribute.name);
      for (char16_t& unit : key) unit = UnitAsciiLower(unit);
      attributes.emplace(key, DecodeHtml(attribute.value, true, scratch));
    }
    // The cases tell neither the attributes of closing tags nor what a document type says.
    if (name == u"!doctype" || name.starts_with(u'/')) attributes.clear();
    AppendTag(name, attributes, shown);
  }
  showText(pos, html.size());
  return shown;
}

std::u16string Expected(const Json& output) {
  std::u16string shown;
  bool isText = false;
  for (const Json& token : output.items) {
    const std::u16string& kind = token.items[0].text;
    if (isText && kind != u"Character") shown += u"\n";
    isText = kind == u"Character";
    if (isText) shown += token.items[1].text;
    if (kind == u"Comment") shown += u"<!--" + token.items[1].text + u"\n";
    if (kind == u"EndTag") AppendTag(u"/" + token.items[1].text, {}, shown);
    if (kind == u"DOCTYPE") AppendTag(u"!doctype", {}, shown);
    if (kind != u"StartTag") continue;
    Attributes attributes;
    for (const auto& [key, value] : token.items[2].members) attributes[key] = value.text;
    AppendTag(token.items[1].text, attributes, shown);
  }
  return isText ? shown + u"\n" : shown;
}

// Where the scanner and the standard differ, of all the cases in markup.
constexpr struct {
  std::u16string_view source;
  const char* scanned;
  const char* why;
} kDifferences[] = {
    {u"<!DOC>", "<!doc>\n", "what begins with \"<!\" and is no comment is a tag"},
    {u"<!-", "<!->\n", "what begins with \"<!\" and is no comment is a tag"},
    {u"</>", "</>\n", "a tag needs no name"},
    {u"<!-->", "<!-->\n", "the marks of a comment share no hyphens"},
    {u"<!--->", "<!--->\n", "the marks of a comment share no hyphens"},
    {u"<!-- <!--", "<!-- <!--\n", "what ends an unended comment belongs to it"},
};

TEST(FindTag, AgreesWithTheCasesOfHtml5lib) {
  for (const auto& row : kDifferences)
    EXPECT_EQ(Narrow(Scanned(row.source)), row.scanned) << row.why;
  LUMR_NEEDS_CORPUS();
  std::size_t run = 0, differing = 0;
  ForEachHtml5libCase([&](const Json& c) {
    if (!c[u"initialStates"].items.empty()) return;  // the content of scripts is nothing special
    const std::u16string& input = c[u"input"].text;
    const bool isKnown = std::any_of(std::begin(kDifferences), std::end(kDifferences),
                                     [&](const auto& row) { return row.source == input; });
    ++run;
    differing += isKnown;
    EXPECT_EQ(Scanned(input) != Expected(c[u"output"]), isKnown) << Narrow(input) << " is\n"
                                                                 << Narrow(Scanned(input));
  });
  EXPECT_EQ(differing, std::size(kDifferences));
  EXPECT_GT(run, 450u);
}

}  // namespace
}  // namespace lumr
