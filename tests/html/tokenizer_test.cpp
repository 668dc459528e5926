#include "lumrmisc/html/htmltokenizer_internal.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "charset/corpus.h"
#include "html/html_text.h"
#include "html/json_cases.h"
#include "lumrmisc/html/htmlescape_internal.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {
namespace {

// The tokens as one readable text; adjoining text is one token. A document type is its name.
std::u16string Shown(HtmlTokenizer tokenizer) {
  std::u16string shown, text, scratch;
  HtmlToken token;
  const auto endText = [&] {
    if (!text.empty()) shown += u"text " + text + u"\n";
    text.clear();
  };
  while (tokenizer.Next(token)) {
    if (token.kind == HtmlToken::kText) {
      text += token.hasReferences ? DecodeHtml(token.text, false, scratch) : token.text;
      continue;
    }
    endText();
    std::u16string name(token.kind == HtmlToken::kDocType ? token.text : token.name);
    for (char16_t& unit : name) unit = UnitAsciiLower(unit);
    if (token.kind == HtmlToken::kComment)
      shown += (u"comment " + std::u16string(token.text)) + u"\n";
    if (token.kind == HtmlToken::kEndTag) shown += u"end " + name + u"\n";
    if (token.kind == HtmlToken::kDocType) shown += u"doctype\n";
    if (token.kind != HtmlToken::kStartTag) continue;
    std::map<std::u16string, std::u16string> attributes;
    for (const HtmlAttribute& attribute : token.attributes) {
      std::u16string key(attribute.name);
      for (char16_t& unit : key) unit = UnitAsciiLower(unit);
      attributes.emplace(key, DecodeHtml(attribute.value, true, scratch));
    }
    shown += u"start " + name + (token.isSelfClosing ? u"/" : u"");
    for (const auto& [key, value] : attributes) shown += u" " + key + u"=" + value;
    shown += u"\n";
  }
  endText();
  return shown;
}

std::u16string Expected(const Json& output) {
  std::u16string shown, text;
  for (const Json& token : output.items) {
    const std::u16string& kind = token.items[0].text;
    if (kind == u"Character") {
      text += token.items[1].text;
      continue;
    }
    if (!text.empty()) shown += u"text " + text + u"\n";
    text.clear();
    if (kind == u"Comment") shown += u"comment " + token.items[1].text + u"\n";
    if (kind == u"EndTag") shown += u"end " + token.items[1].text + u"\n";
    if (kind == u"DOCTYPE") shown += u"doctype\n";
    if (kind != u"StartTag") continue;
    shown += u"start " + token.items[1].text + (token.items.size() > 3 ? u"/" : u"");
    for (const auto& [key, value] : token.items[2].members) shown += u" " + key + u"=" + value.text;
    shown += u"\n";
  }
  return text.empty() ? shown : shown + u"text " + text + u"\n";
}

HtmlContent ContentOf(std::u16string_view state) {
  return state == u"RCDATA state"        ? HtmlContent::kRcData
         : state == u"RAWTEXT state"     ? HtmlContent::kRawText
         : state == u"Script data state" ? HtmlContent::kScript
         : state == u"PLAINTEXT state"   ? HtmlContent::kPlainText
                                         : HtmlContent::kMarkup;
}

TEST(HtmlTokenizer, AgreesWithTheCasesOfHtml5lib) {
  LUMR_NEEDS_CORPUS();
  int run = 0;
  ForEachHtml5libCase([&run](const Json& c) {
    std::vector<Json> states = c[u"initialStates"].items;
    if (states.empty()) states.emplace_back();
    for (const Json& state : states) {
      HtmlTokenizer tokenizer(c[u"input"].text);
      std::u16string_view last = c[u"lastStartTag"].text;
      if (last.empty()) last = u"none";
      tokenizer.SetContent(ContentOf(state.text), last);
      EXPECT_EQ(Narrow(Shown(tokenizer)), Narrow(Expected(c[u"output"])))
          << Narrow(c[u"description"].text) << ": " << Narrow(c[u"input"].text)
          << Narrow(state.text);
      ++run;
    }
  });
  EXPECT_GT(run, 450);
}

TEST(HtmlTokenizer, KnowsEveryNamedReference) {
  LUMR_NEEDS_CORPUS();
  const std::u16string file = Wide(ReadCorpus("html/mimekit-entities.json"));
  std::u16string scratch;
  const Json names = JsonReader(file).Read();
  EXPECT_EQ(names.members.size(), 2231u);
  for (const auto& [name, value] : names.members) {
    EXPECT_EQ(DecodeHtml(name, false, scratch), value[u"characters"].text) << Narrow(name);
  }
}

TEST(HtmlTokenizer, FollowsTheStatesOfTheStandard) {
  const struct {
    HtmlContent content;
    std::u16string_view source;
    const char* expected;
  } cases[] = {
      {HtmlContent::kMarkup, u"a<b", "text a\n"},
      {HtmlContent::kMarkup, u"a<b c='>'d", "text a\n"},
      {HtmlContent::kMarkup, u"<a/b/=c d = e f=\"g\"h i='j'/>", "start a/ =c= b= d=e f=g h= i=j\n"},
      {HtmlContent::kMarkup, u"<a =b=c ==d>", "start a ==d =b=c\n"},
      {HtmlContent::kMarkup, u"<a b=/>", "start a b=/\n"},
      {HtmlContent::kMarkup, u"<a/ b>", "start a b=\n"},
      {HtmlContent::kMarkup, u"</a b=c/>x</>y</ z>", "end a\ntext xy\ncomment  z\n"},
      {HtmlContent::kMarkup, u"<!-->a<!--->b<!---->c<!----!>d<!--x--!>", nullptr},
      {HtmlContent::kMarkup, u"<!--a--!-->b", "comment a--!\ntext b\n"},
      {HtmlContent::kMarkup, u"<!--a--", "comment a\n"},
      {HtmlContent::kMarkup, u"<![CDATA[a]]>", "comment [CDATA[a]]\n"},
      {HtmlContent::kRcData, u"&lt;<b></x ></x >y", "text <<b>\nend x\nend x\ntext y\n"},
      {HtmlContent::kRawText, u"&lt;</xy></X/>", "text &lt;</xy>\nend x\n"},
      {HtmlContent::kScript, u"<!--<x></x>--></x>a", "text <!--<x></x>-->\nend x\ntext a\n"},
      {HtmlContent::kScript, u"<!--<x></x></x>a", "text <!--<x></x>\nend x\ntext a\n"},
      {HtmlContent::kScript, u"<!--><x></x>a", "text <!--><x>\nend x\ntext a\n"},
      {HtmlContent::kScript, u"<!--<xy></x>a", "text <!--<xy>\nend x\ntext a\n"},
      {HtmlContent::kPlainText, u"<b></x>&lt;", "text <b></x>&lt;\n"},
  };
  for (const auto& c : cases) {
    HtmlTokenizer tokenizer(c.source);
    tokenizer.SetContent(c.content, u"x");
    const char* const expected =
        c.expected != nullptr ? c.expected
                              : "comment \ntext a\ncomment \ntext b\ncomment \ntext c\ncomment \n"
                                "text d\ncomment x\n";
    EXPECT_EQ(Narrow(Shown(tokenizer)), expected) << Narrow(c.source);
  }
}

}  // namespace
}  // namespace lumr
