#include "lumrmisc/html/sanitize.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "charset/corpus.h"
#include "html/golden.h"
#include "html/safe_check.h"
#include "html/soup.h"

namespace lumr {
namespace {

CStringW Clean(std::u16string_view html, const SafeHtmlOptions& options = {},
               SafeHtmlReport* report = nullptr) {
  CStringW text(html);
  ToSafeHtmlW2(text, options, report);
  return text;
}

// What must hold for every input.
void ExpectSafe(std::u16string_view html) {
  const CStringW once = Clean(html);
  ASSERT_EQ(SafeFault(once), "") << Escaped(html.substr(0, 2000)) << "\n  gave "
                                 << Escaped(once.substr(0, 2000));
  ASSERT_EQ(Escaped(Clean(once)), Escaped(once)) << Escaped(html.substr(0, 2000));
}

TEST(ToSafeHtmlW2, WritesTheGoldenFile) {
  const auto cases = ReadGolden("sanitize.txt");
  ASSERT_GT(cases.size(), 55u);
  for (const GoldenCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Escaped(Clean(c.input)), Escaped(c.output));
    ExpectSafe(c.input);
  }
}

TEST(ToSafeHtmlW2, FollowsItsOptions) {
  const std::u16string_view html =
      u"<img src=\"http://a.example/i\"><img src=\"cid:x\"><img src=\"data:image/gif;base64,AA\">"
      u"<table background=\"//a.example/b\"></table>";
  EXPECT_EQ(
      Clean(html, {.allowRemoteImages = true, .allowCidImages = false, .allowDataImages = false}),
      u"<img src=\"http://a.example/i\"><img><img>"
      u"<table background=\"https://a.example/b\"></table>");
  // A whole page, cleaned again, is the same page.
  const CStringW page = Clean(u"<title>t</title><p>x", {.wholePage = true});
  EXPECT_TRUE(page.starts_with(u"<!DOCTYPE html><html><head><meta charset=\"utf-8\">"))
      << Escaped(page);
  EXPECT_TRUE(page.ends_with(u"<body><p>x</p></body></html>")) << Escaped(page);
  EXPECT_EQ(Clean(page, {.wholePage = true}), page);
  EXPECT_EQ(Clean(page), u"<p>x</p>");
  EXPECT_EQ(Clean(u""), u"");
}

TEST(ToSafeHtmlW2, ReportsWhatItRemoved) {
  using enum SafeHtmlReason;
  const struct {
    std::u16string_view html;
    SafeHtmlReason reason;
    std::size_t offset;
    std::u16string_view name;
    std::u16string_view value = {};
  } cases[] = {
      {u"ab<script>x</script>", kScript, 2, u"script"},
      {u"<b OnClick=x>a</b>", kEventHandler, 3, u"OnClick"},
      {u"<body onload=x>a", kEventHandler, 6, u"onload"},
      {u"<style>x</style>", kStyleSheet, 0, u"style"},
      {u"a<svg><g/></svg>", kForeign, 1, u"svg"},
      {u"<iframe src=x></iframe>", kFrame, 0, u"iframe"},
      {u"<form>", kForm, 0, u"form"},
      {u"<video>", kObject, 0, u"video"},
      {u"<meta x>", kMetadata, 0, u"meta"},
      {u"<template>", kTemplate, 0, u"template"},
      {u"<blink>", kUnknownElement, 0, u"blink"},
      {u"x<td>", kMisplaced, 1, u"td"},
      {u"x<!-- -->", kComment, 1, u""},
      {u"<?x?>", kComment, 0, u""},
      {u"x<a href=", kUnfinishedTag, 1, u""},
      {u"<b class=x>", kAttribute, 3, u"class"},
      {u"<table width=x></table>", kAttribute, 7, u"width"},
      {u"<a href='x.html'>", kAddress, 3, u"href", u"x.html"},
      {u"<a href='javascript:x'>", kScript, 3, u"href", u"javascript:x"},
      {u"<a href='mailto:a@b?&ATTACH=c'>", kAddress, 3, u"href", u"mailto:a@b?&ATTACH=c"},
      {u"<a href='mailto:a%0Ab@c'>", kAddress, 3, u"href", u"mailto:a%0Ab@c"},
      {u"<a href='http://a@b/'>", kUserInfo, 3, u"href", u"http://a@b/"},
      {u"<img src='http://a/&amp;'>", kRemoteImage, 5, u"src", u"http://a/&"},
      {u"<img src='data:text/html,x'>", kEmbeddedImage, 5, u"src", u"data:text/html,x"},
      {u"<b style='top:0'>", kStyleDeclaration, 3, u"style"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Escaped(c.html));
    SafeHtmlReport report;
    Clean(c.html, {}, &report);
    ASSERT_EQ(report.removals.size(), 1u);
    EXPECT_EQ(report.removalCount, 1u);
    const SafeHtmlRemoval& removal = report.removals[0];
    EXPECT_EQ(removal.reason, c.reason) << static_cast<int>(removal.reason);
    EXPECT_EQ(removal.offset, c.offset);
    EXPECT_EQ(removal.name, c.name);
    EXPECT_EQ(removal.value, c.value);
  }
  SafeHtmlReport report;
  Clean(u"<p align=left>a <b>b</b><br>c</p>", {}, &report);
  EXPECT_EQ(report.removalCount, 0u);
  // Of endless attributes the first 512 are looked at.
  CStringW many = u"<p align=left";
  for (int i = 0; i < 600; ++i) many += u" a=" + Wide(std::to_string(i));
  EXPECT_EQ(Clean(many + u">x", {}, &report), u"<p align=\"left\">x</p>");
  EXPECT_EQ(report.removalCount, 512u);
  EXPECT_EQ(report.removals.back().name, u"p");
}

TEST(ToSafeHtmlW2, TellsWhereLinksLead) {
  struct Flags {
    bool another = false, user = false, mixed = false;
  };
  const struct {
    const char* href;
    const char* text;
    const char* host;
    Flags flags = {};
  } cases[] = {
      {"http://example.com/", "click", "example.com"},
      {"http://EXAMPLE.com./", "Example.COM", "example.com"},
      {"http://mail.example.com/", "example.com", "mail.example.com"},
      {"http://example.com/", "www.example.com", "example.com"},
      {"http://example.com/", "http://www.example.com:80/x?y", "example.com"},
      {"http://example.com/", "other.example.com", "example.com", {.another = true}},
      {"http://notexample.com/", "example.com", "notexample.com", {.another = true}},
      {"http://example.com.evil.test/", "example.com", "example.com.evil.test", {.another = true}},
      {"http://evil.test/", "http://bank.example/login", "evil.test", {.another = true}},
      {"http://evil.test/", "see <b>bank</b>.example now", "evil.test", {.another = true}},
      {"http://evil.test/", "https://evil.test@bank.example/", "evil.test", {.another = true}},
      {"http://evil.test/", "info@bank.example", "evil.test", {.another = true}},
      {"http://evil.test/", "<img alt='bank.example'>", "evil.test", {.another = true}},
      {"http://evil.test/", "report.pdf", "evil.test"},
      {"http://evil.test/", "version 1.2, e.g. 3.4", "evil.test"},
      {"http://www.example.co.jp/", "詳しくはwww.example.co.jpをご覧ください。",
       "www.example.co.jp"},
      {"http://evil.test/", "（http://www.example.co.jp/）", "evil.test", {.another = true}},
      {"http://evil.test/", "ｗｗｗ．ｂａｎｋ．ｅｘａｍｐｌｅ", "evil.test", {.another = true}},
      {"http://bank.example@evil.test/", "x", "evil.test", {.user = true}},
      {"http://bank.example:x@evil.test/",
       "bank.example",
       "evil.test",
       {.another = true, .user = true}},
      {"http://evil.test\\@bank.example/", "x", "evil.test"},
      {"http://日本語.jp/", "日本語.jp", "xn--wgv71a119e.jp"},
      {"http://xn--wgv71a119e.jp/", "日本語.jp", "xn--wgv71a119e.jp"},
      {"http://bücher.example/", "x", "xn--bcher-kva.example"},
      {"http://p\xD0\xB0ypal.com/",
       "paypal.com",
       "xn--pypal-4ve.com",
       {.another = true, .mixed = true}},
      {"http://xn--pypal-4ve.com/", "x", "xn--pypal-4ve.com", {.mixed = true}},
      {"http://メールmail.jp/", "x", "xn--mail-kt4c8b7f.jp"},
      {"http://127.0.0.1:8080/", "127.0.0.1", "127.0.0.1"},
      {"http://evil.test/", "127.0.0.1", "evil.test", {.another = true}},
      {"mailto:a@example.com?cc=b@evil.test",
       "a@example.com",
       "example.com, evil.test",
       {.another = true}},
      {"mailto:a@example.com,b@Example.com?subject=@c.test", "example.com", "example.com"},
      {"mailto:?to=%3Ca@x.test%3E%2cb%40%65vil.test%3B&BCC=c@x.test",
       "x.test",
       "x.test, evil.test",
       {.another = true}},
      {"mailto:a@%D0%B0.test", "x", "xn--80a.test"},
      {"mailto:a@evil.test", "info@bank.example", "evil.test", {.another = true}},
      {"mailto:a%40evil.test", "info@bank.example", "evil.test", {.another = true}},
      {"mailto:a%40bank.example@evil.test", "a@bank.example", "evil.test", {.another = true}},
      {"tel:110", "bank.example", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.href) + " " + c.text);
    SafeHtmlReport report;
    const CStringW out =
        Clean(u"x<a href=\"" + Wide(c.href) + u"\">" + Wide(c.text) + u"</a>y", {}, &report);
    ASSERT_EQ(report.links.size(), 1u);
    const SafeHtmlLink& link = report.links[0];
    EXPECT_EQ(Narrow(link.host), c.host);
    EXPECT_EQ(link.offset, 1u);
    EXPECT_EQ(link.namesAnotherHost, c.flags.another);
    EXPECT_EQ(link.hadUserInfo, c.flags.user);
    EXPECT_EQ(link.mixesScripts, c.flags.mixed);
    // The title says it.
    const CStringW title = out.substr(out.find(u"title="));
    for (std::size_t pos = 0; pos < link.host.size();) {
      const std::size_t end = std::min(link.host.find(u", ", pos), link.host.size());
      EXPECT_NE(title.find(link.host.substr(pos, end - pos)), CStringW::npos) << Narrow(title);
      pos = end + 2;
    }
  }
  SafeHtmlReport report;
  Clean(u"<a href=http://a.test/> a &amp;\n<p>b</a>c<a href=http://b.test/>d", {}, &report);
  ASSERT_EQ(report.links.size(), 2u);
  EXPECT_EQ(report.links[0].text, u"a & b");
  EXPECT_EQ(report.links[1].text, u"d");
}

// All text of a page that nothing hides comes out, however deep it stands.
TEST(ToSafeHtmlW2, FlattensWhatIsNestedTooDeep) {
  CStringW html, text;
  for (int i = 0; i < 2000; ++i) {
    const CStringW word = u"w" + Wide(std::to_string(i));
    text += word;
    html += (i % 7 == 0 ? u"<table><td>" : i % 3 == 0 ? u"<div>" : u"<span>") + word;
  }
  SafeHtmlReport report;
  CStringW out = Clean(html, {}, &report);
  EXPECT_EQ(SafeFault(out), "");
  EXPECT_EQ(Clean(out), out);
  EXPECT_EQ(report.removals.back().reason, SafeHtmlReason::kTooDeep);
  for (std::size_t at = 0; (at = out.find(u'<')) != CStringW::npos;) {
    out.erase(at, out.find(u'>', at) + 1 - at);
  }
  EXPECT_EQ(Narrow(out), Narrow(text));
  // End tags of what was left out end nothing else.
  CStringW deep;
  for (int i = 0; i < 300; ++i) deep += u"<div>";
  for (int i = 0; i < 50; ++i) deep += u"</div>";
  EXPECT_NE(Clean(deep + u"x")
                .find(u"x" +
                      [] {
                        CStringW ends;
                        for (int i = 0; i < 250; ++i) ends += u"</div>";
                        return ends;
                      }()),
            CStringW::npos);
}

TEST(ToSafeHtmlW2, StaysSmallOnHostileInput) {
  constexpr std::size_t kUnits = 200000;
  const std::u16string_view pieces[] = {u"<b>",
                                        u"<b class=x title=aaaaaaaaaaaaaaaaaaaaaaaaaaa>",
                                        u"<p><font color=red>",
                                        u"<a href=",
                                        u"<a href=\"http://a/\">",
                                        u"&",
                                        u"&amp",
                                        u"<",
                                        u"</b>",
                                        u"<!--",
                                        u"<script",
                                        u"<script>",
                                        u"<title>",
                                        u"<svg>",
                                        u"<table>",
                                        u"<table><td>",
                                        u"<li>",
                                        u"<p><i><b>x",
                                        u"<b><p>x</b>",
                                        u"<a href=x><ul><li>",
                                        u"\"",
                                        u"'",
                                        u" a",
                                        u" x=y",
                                        u"<b style='a:",
                                        u"<nobr><table><td>",
                                        u"<ruby><rt>",
                                        u"<h1><b>",
                                        u"\xD800",
                                        u"<pre>\n",
                                        u"<xmp>",
                                        u"</table>"};
  for (const std::u16string_view piece : pieces) {
    for (const std::u16string_view start : {u"", u"<b ", u"<svg>", u"<p style='color:red;"}) {
      CStringW html(start);
      while (html.size() < kUnits) html += piece;
      const CStringW once = Clean(html);
      // Escapes take six units for one; repeated formatting is bounded.
      ASSERT_LE(once.size(), 30 * html.size()) << Narrow(piece);
      ASSERT_EQ(SafeFault(once), "") << Narrow(start) << Narrow(piece);
      ASSERT_TRUE(Clean(once) == once) << Narrow(start) << Narrow(piece);
    }
  }
}

TEST(ToSafeHtmlW2, IsStableOnTagSoup) {
  std::mt19937 random(11);
  for (int i = 0; i < 4000; ++i) ASSERT_NO_FATAL_FAILURE(ExpectSafe(TagSoup(random, 1 + i % 80)));
}

// The names of all elements and a few attributes, crossed at random.
TEST(ToSafeHtmlW2, IsStableOnCrossedElements) {
  static constexpr std::u16string_view kNames[] = {
      u"a",       u"b",     u"font",   u"nobr",  u"p",       u"div",   u"h1",    u"li",
      u"ul",      u"dd",    u"dl",     u"table", u"tr",      u"td",    u"tbody", u"col",
      u"caption", u"ruby",  u"rt",     u"pre",   u"br",      u"hr",    u"img",   u"form",
      u"span",    u"thead", u"center", u"svg",   u"math",    u"title", u"i",     u"xmp",
      u"th",      u"style", u"body",   u"big",   u"colgroup"};
  std::mt19937 random(12);
  const auto below = [&](std::size_t n) {
    return std::uniform_int_distribution<std::size_t>(0, n - 1)(random);
  };
  for (int i = 0; i < 4000; ++i) {
    CStringW html;
    const std::size_t kinds = 3 + below(12);
    const std::size_t first = below(std::size(kNames));
    for (std::size_t part = 0; part < 40; ++part) {
      const std::u16string_view name = kNames[(first + below(kinds) * 5) % std::size(kNames)];
      const std::size_t kind = below(7);
      if (kind < 3)
        ((html += u'<') += name) += below(3) == 0 ? u" href=http://a/ style='color:red'>" : u">";
      if (kind >= 3 && kind < 6) ((html += u"</") += name) += u'>';
      if (kind == 6) html += below(2) == 0 ? u"x" : u" \n";
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSafe(html));
  }
}

TEST(ToSafeHtmlW2, IsStableOnTheCorpus) {
  LUMR_NEEDS_CORPUS();
  int pages = 0;
  for (const char* const folder : {"html", "xss", "mail"}) {
    for (const auto& entry : std::filesystem::directory_iterator(CorpusPath() / folder)) {
      SCOPED_TRACE(entry.path().string());
      const std::string bytes = ReadCorpus(std::filesystem::path(folder) / entry.path().filename());
      ASSERT_NO_FATAL_FAILURE(ExpectSafe(Wide(bytes)));
      ++pages;
    }
  }
  EXPECT_GT(pages, 200);
}

}  // namespace
}  // namespace lumr
