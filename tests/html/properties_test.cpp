// The one-pass code against the edits done one by one, and what holds for every text.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "html/golden.h"
#include "html/golden_functions.h"
#include "html/html_text.h"
#include "html/reference.h"
#include "html/soup.h"
#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {
namespace {

constexpr int kSoups = 6000;

void ExtractPlain(std::u16string& text) {
  ExtractTextFromHtmlW(text, 0);
}
void ExtractLinks(std::u16string& text) {
  ExtractTextFromHtmlW(text, 1);
}
void ReferencePlain(std::u16string& text) {
  reference::ExtractText(text, false);
}
void ReferenceLinks(std::u16string& text) {
  reference::ExtractText(text, true);
}

TEST(Html, EditsInOnePassAsOneByOne) {
  const struct {
    const char* what;
    void (*fast)(std::u16string&);
    void (*slow)(std::u16string&);
  } pairs[] = {
      {"ToSafeHtmlW", ToSafeHtmlW, reference::ToSafeHtml},
      {"ToHtmlLinkSelfW", ToHtmlLinkSelfW, reference::ToHtmlLinkSelf},
      {"AdjustHtmlBreakLine", AdjustHtmlBreakLine, reference::AdjustBreakLine},
      {"ExtractTextFromHtmlW", ExtractPlain, ReferencePlain},
      {"ExtractTextFromHtmlW, links", ExtractLinks, ReferenceLinks},
  };
  std::mt19937 random(7);
  for (int i = 0; i < kSoups; ++i) {
    const std::u16string soup = TagSoup(random, 1 + i % 60);
    for (const auto& pair : pairs) {
      std::u16string fast = soup, slow = soup;
      pair.fast(fast);
      pair.slow(slow);
      ASSERT_EQ(Escaped(fast), Escaped(slow)) << pair.what << " of " << Escaped(soup);
      ASSERT_TRUE(fast == slow);
    }
  }
}

// A tag of 255 units is looked at, one of 256 is not.
TEST(Html, LooksAtShortTagsOnly) {
  for (const std::size_t size : {255u, 256u}) {
    std::u16string text = u"a<br" + std::u16string(size - 4, u' ') + u">b";
    ExtractTextFromHtmlW(text, 0);
    EXPECT_EQ(Escaped(text), size == 255 ? "a\nb\n" : "ab\n");
  }
}

TEST(Html, KeepsWellFormedTextWellFormed) {
  std::mt19937 random(8);
  const std::string arguments[] = {"", "utf-8", "links"};
  for (int i = 0; i < kSoups / 10; ++i) {
    const std::u16string soup = TagSoup(random, 1 + i % 60);
    for (const GoldenFunction& function : kGoldenFunctions) {
      if (std::string_view(function.file) == "extract.txt") continue;  // it may name half a pair
      for (const std::string& argument : arguments) {
        std::u16string text = soup;
        function.run(text, argument);
        ASSERT_TRUE(IsWellFormed(text)) << function.file << " of " << Escaped(soup);
      }
    }
  }
}

std::u16string WithoutSpace(std::u16string text) {
  std::erase_if(text, IsHtmlSpace);
  return text;
}

TEST(ToHtmlDocumentW, KeepsTheCharacters) {
  std::mt19937 random(9);
  for (int i = 0; i < kSoups / 10; ++i) {
    const std::u16string soup = TagSoup(random, 1 + i % 60);
    for (const char16_t* const charset : {u"utf-8", u""}) {
      for (const auto extract : {ExtractTextFromHtmlW, ExtractTextFromHtmlW2}) {
        std::u16string text = soup;
        ToHtmlDocumentW(text, charset);
        extract(text, 1);
        ASSERT_EQ(Escaped(WithoutSpace(text)), Escaped(WithoutSpace(soup)));
      }
    }
  }
}

TEST(RemoveDefaultBodyFont, UndoesTheInsertion) {
  std::mt19937 random(10);
  int inserted = 0;
  for (int i = 0; i < kSoups; ++i) {
    const std::u16string soup = TagSoup(random, 1 + i % 30);
    std::u16string font = TagSoup(random, 1 + i % 4);
    std::erase_if(font, [](char16_t c) { return c == u':' || c == u'<' || c == u'>'; });
    std::u16string text = soup;
    if (InsertDefaultBodyFont(font.c_str(), text) == 0) {
      ASSERT_EQ(text, soup);
      continue;
    }
    ++inserted;
    ASSERT_EQ(RemoveDefaultBodyFont(text), 1);
    ASSERT_EQ(Escaped(text), Escaped(soup)) << Escaped(font);
  }
  EXPECT_GT(inserted, kSoups / 10);
}

// A charset that has been added or changed is the one that is read.
TEST(ChangeHtmlCharSetW, IsReadBack) {
  std::mt19937 random(11);
  for (int i = 0; i < kSoups / 10; ++i) {
    std::u16string text = u"<p>" + TagSoup(random, i % 20);
    std::string charset;
    EXPECT_EQ(AddHtmlCharSetW(text, CT_JIS), 1);
    ASSERT_EQ(GetHtmlCharSetW(text, charset), 1);
    EXPECT_EQ(charset, "ISO-2022-JP");
    EXPECT_EQ(ChangeHtmlCharSetW(text, CT_SJIS), 1);
    ASSERT_EQ(GetHtmlCharSetW(text, charset), 1);
    EXPECT_EQ(charset, "Shift_JIS");
  }
}

TEST(ResolveHtmlCharset, AsksLabelMarkAndDeclaration) {
  const struct {
    const char* what;
    std::string_view label, bytes;
    MailCharset expected;
  } cases[] = {
      {"the label",
       "windows-1252",
       "<meta charset=koi8-r>\xE9",
       {CT_WIN1252, CharsetSource::kLabel}},
      {"a mark", "", "\xEF\xBB\xBF<meta charset=koi8-r>\xC3\xA9", {CT_UTF8, CharsetSource::kLabel}},
      {"the declaration",
       "",
       "<meta charset=koi8-r>\xD4\xC5\xD3\xD4",
       {CT_KOI8R, CharsetSource::kLabel}},
      {"an unknown label",
       "x-none",
       "<meta charset=koi8-r>\xD4",
       {CT_KOI8R, CharsetSource::kLabel}},
      {"a declaration that lies",
       "",
       "<meta charset=iso-8859-1>\xE3\x81\x82\xE3\x81\x84",
       {CT_UTF8, CharsetSource::kLabelLies}},
      {"an unknown declaration",
       "",
       "<meta charset=none>\xE3\x81\x82\xE3\x81\x84",
       {CT_UTF8, CharsetSource::kNoLabel}},
      {"behind Japanese text in JIS",
       "",
       "<title>\x1B$B$<\"<\x1B(B</title><meta charset=iso-2022-jp>",
       {CT_JIS, CharsetSource::kLabel}},
      {"a mark of UTF-16",
       "",
       std::string_view("\xFE\xFF\0<\0p", 6),
       {CT_UNICODE, CharsetSource::kNoLabel, Utf16Order::kByMark}},
      {"nothing", "", "<p>\xE3\x81\x82", {CT_UTF8, CharsetSource::kNoLabel}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const MailCharset got = ResolveHtmlCharset(c.label, c.bytes);
    EXPECT_EQ(got.codeType, c.expected.codeType);
    EXPECT_EQ(got.source, c.expected.source);
    EXPECT_EQ(got.order, c.expected.order);
  }
}

TEST(Html, KnowsTheWhiteSpaceOfTheTable) {
  for (int unit = 0; unit < 0x10000; ++unit) {
    ASSERT_EQ(IsHtmlSpace(static_cast<char16_t>(unit)), IsUnitSpace(static_cast<char16_t>(unit)));
  }
}

// Bad arguments and empty texts do nothing.
TEST(Html, LeavesEmptyTextsAlone) {
  for (const GoldenFunction& function : kGoldenFunctions) {
    std::u16string text;
    const std::string result = function.run(text, "utf-8");
    EXPECT_TRUE(text.empty() && (result.empty() || result == "0")) << function.file;
  }
  std::u16string text = u"<head></head>";
  InsertLeadTextW(nullptr, text);
  EXPECT_EQ(InsertDefaultBodyFont(nullptr, text), 0);
  EXPECT_EQ(ConvertImgSrc(text, nullptr), 0);
  EXPECT_EQ(text, u"<head></head>");
  ToHtmlDocumentW(text, nullptr);
  EXPECT_EQ(text, u"<div>&lt;head&gt;&lt;/head&gt;</div>\r\n");
}

// Finishes in seconds only if every function is linear; time is measured in the benchmarks.
TEST(Html, IsLinearOnHostileText) {
  constexpr int kTimes = 100000;
  const std::u16string_view pieces[] = {u"<script",    u"<script>",
                                        u"<a href=",   u"<a href=\"x\" target=",
                                        u"<!--",       u"<title>",
                                        u"<style>",    u"&",
                                        u"&#",         u"=\"'",
                                        u"<a =\"'",    u" target=x",
                                        u"<b '=\"'>",  u"<blockquote>",
                                        u"<ul><li>",   u"<table><tr><td>",
                                        u"<ruby><rt>", u"<meta charset=a>",
                                        u"<pre>",      u"<",
                                        u">",          u" ",
                                        u"\r",         u"<p>x",
                                        u"<img alt=",  u"</"};
  for (const std::u16string_view piece : pieces) {
    for (const std::u16string_view first : {u"", u"<a "}) {
      std::u16string hostile(first);
      for (int i = 0; i < kTimes; ++i) hostile += piece;
      for (const GoldenFunction& function : kGoldenFunctions) {
        std::u16string text = hostile;
        function.run(text, "utf-8");
        EXPECT_LE(text.size(), hostile.size() * 50) << function.file;
      }
    }
  }
}

}  // namespace
}  // namespace lumr
