#include "lumrmisc/editor/quote.h"

#include <gtest/gtest.h>

#include "editor/text.h"

namespace lumr {
namespace {

using testing::Fill;
using testing::TextIn;

// Lengths and depths are in characters of the text here, so that one table serves both forms.
TEST(QuotePrefixLength, CountsRunsOfQuoteCharacters) {
  const struct {
    const char* prefix;
    const char* rest;
    int quoteLen, depth;
  } cases[] = {
      {"> >", " x", 8, 2},
      {">", " text", 8, 1},
      {">>>", "", 8, 3},
      {"ABC>", " text", 8, 1},
      {"田中＞", "本文", 8, 1},
      {"        >", "x", 8, 1},   // 8 spaces, and
      {"", "         >x", 8, 0},  // 9
      {"　　　　>", "x", 8, 1},
      {"", "　　　　 >x", 8, 0},
      {"", "日本語文章>x", 8, 0},
      {"> text >", " more", 8, 2},
      {">", " longer text >", 8, 1},
      {"｜│|", "", 8, 3},
      {"", "plain", 8, 0},
      {"", "", 8, 0},
      {" \t>", "x", 0, 1},
      {"　　>", "x", 0, 1},
      {"", "　　 >x", 0, 0},  // 5 columns
      {"", "a>x", 0, 0},
      {"> >", "a>", -1, 2},
      {"a>", "ab>", 1, 1},
  };
  for (const auto& c : cases) {
    for (const CodeType codeType : {CT_SJIS, CT_UNICODE}) {
      CEditorMetrics metrics;
      metrics.QuoteLen = c.quoteLen;
      CEditorLineMetrics bundle;
      Fill(bundle, metrics, codeType, kTurnNever, 0);
      const std::string prefix = TextIn(codeType, c.prefix);
      const int length = QuotePrefixLength(bundle, prefix + TextIn(codeType, c.rest));
      EXPECT_EQ(length, static_cast<int>(prefix.size())) << c.prefix << c.rest << codeType;
      EXPECT_EQ(QuoteDepth(bundle, prefix), c.depth) << c.prefix << codeType;
    }
  }
}

TEST(IndentRunLength, CountsBytes) {
  CEditorLineMetrics bundle;
  Fill(bundle, CEditorMetrics(), CT_SJIS, kTurnNever, 0);
  EXPECT_EQ(IndentRunLength(bundle, TextIn(CT_SJIS, " \t　x ")), 4);
  Fill(bundle, CEditorMetrics(), CT_UNICODE, kTurnNever, 0);
  EXPECT_EQ(IndentRunLength(bundle, TextIn(CT_UNICODE, " \t　x ")), 6);
  EXPECT_EQ(IndentRunLength(bundle, ""), 0);
}

}  // namespace
}  // namespace lumr
