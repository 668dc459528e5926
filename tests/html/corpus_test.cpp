// Pages and mails as they were sent: every function takes them, and agrees with the edits done one
// by one.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "html/golden.h"
#include "html/golden_functions.h"
#include "html/reference.h"
#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/html/htmlcharset.h"

namespace lumr {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostForReference = 40000;  // units; the reference takes their square

std::u16string DecodedFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  CBuffer units;
  ConvertMailText(ResolveHtmlCharset({}, bytes), bytes, units);
  std::u16string text(units.Bytes().size() / 2, u'\0');
  units.Bytes().copy(reinterpret_cast<char*>(text.data()), text.size() * 2);
  return text;
}

void CheckAgainstReference(const std::u16string& source) {
  std::u16string fast = source, slow = source;
  ToSafeHtmlW(fast);
  reference::ToSafeHtml(slow);
  EXPECT_TRUE(fast == slow);
  fast = slow = source;
  ExtractTextFromHtmlW(fast, 1);
  reference::ExtractText(slow, true);
  EXPECT_TRUE(fast == slow);
  fast = slow = source;
  AdjustHtmlBreakLine(fast);
  reference::AdjustBreakLine(slow);
  EXPECT_TRUE(fast == slow);
}

bool HasText(std::u16string_view text) {
  return std::any_of(text.begin(), text.end(), [](char16_t c) { return c > u' '; });
}

TEST(Html, TakesPagesAndMailsAsTheyWereSent) {
  const char* const corpus = std::getenv("LUMRMISC_CORPUS");
  if (corpus == nullptr) GTEST_SKIP() << "LUMRMISC_CORPUS does not name the test data";
  int pages = 0;
  for (const char* const folder : {"html", "mail", "xss"}) {
    for (const auto& entry : fs::directory_iterator(fs::path(corpus) / folder)) {
      SCOPED_TRACE(entry.path().string());
      const std::u16string source = DecodedFile(entry.path());
      ++pages;
      const bool isWellFormed = IsWellFormed(source);
      for (const GoldenFunction& function : kGoldenFunctions) {
        std::u16string text = source;
        function.run(text, "utf-8");
        const std::string_view name = function.file;
        const bool mayBeHalf = !isWellFormed || name == "extract.txt";
        EXPECT_TRUE(mayBeHalf || IsWellFormed(text)) << name;
        const bool mustHaveText =
            entry.path().extension() == ".html" && (name == "extract.txt" || name == "reading.txt");
        EXPECT_TRUE(!mustHaveText || HasText(text)) << name;
      }
      if (source.size() <= kMostForReference) CheckAgainstReference(source);
    }
  }
  EXPECT_GT(pages, 200);
}

// Words of a page that a reader must find in its text.
TEST(Html, KeepsTheWordsOfKnownPages) {
  const char* const corpus = std::getenv("LUMRMISC_CORPUS");
  if (corpus == nullptr) GTEST_SKIP() << "LUMRMISC_CORPUS does not name the test data";
  // Pages with the text that another program made of them: its words, in their order.
  const struct {
    const char* page;
    const char* text;
  } pairs[] = {{"html2text-basic.html", "html2text-basic.txt"},
               {"html2text-lists.html", "html2text-lists.txt"},
               {"html2text-newlines.html", "html2text-newlines.txt"}};
  for (const auto& pair : pairs) {
    SCOPED_TRACE(pair.page);
    std::u16string text = DecodedFile(fs::path(corpus) / "html" / pair.page);
    ExtractTextFromHtmlW2(text, 1);
    const auto letters = [](std::u16string words) {
      std::erase_if(words, [](char16_t c) { return !IsAsciiLetter(c); });
      return Narrow(words);
    };
    EXPECT_EQ(letters(text), letters(DecodedFile(fs::path(corpus) / "html" / pair.text)));
  }
}

}  // namespace
}  // namespace lumr
