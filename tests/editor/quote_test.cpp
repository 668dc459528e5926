#include "lumrmisc/editor/quote.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

#include "editor/text.h"
#include "lumrmisc/editor/quotetable.h"

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
    const char* list = ">＞|｜│";
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
      {"aaaa>bbbb>cccc>", "x", 8, 3},
      {">　　　", "x", 0, 4, ">　"},  // what is an indent too goes on with a run,
      {"", "　　　>x", 0, 0, ">　"},  // and is an indent before one
      {"a>　　>", "x", 8, 4, ">　"},
  };
  for (const auto& c : cases) {
    for (const CodeType codeType : {CT_SJIS, CT_UNICODE}) {
      CEditorMetrics metrics;
      metrics.QuoteLen = c.quoteLen;
      metrics.QuoteList = TextIn(CT_SJIS, c.list);
      CEditorLineMetrics bundle;
      Fill(bundle, metrics, codeType, kTurnNever, 0);
      const std::string prefix = TextIn(codeType, c.prefix);
      const std::string line = prefix + TextIn(codeType, c.rest);
      EXPECT_EQ(QuotePrefixLength(bundle, line), static_cast<int>(prefix.size()))
          << c.prefix << c.rest << codeType;
      EXPECT_EQ(QuoteDepth(bundle, prefix), c.depth) << c.prefix << codeType;
      // The line grows by so many bytes, in the middle of characters too.
      for (std::size_t step = 1; step <= 3; ++step) {
        QuoteScan scan;
        for (std::size_t end = 0; end <= line.size(); end += step) {
          const std::string_view part = std::string_view(line).substr(0, end);
          EXPECT_EQ(QuotePrefixLength(bundle, part, scan), QuotePrefixLength(bundle, part))
              << c.prefix << c.rest << codeType << ' ' << end;
        }
      }
    }
  }
}

// Lines that come at the end, of which the last may change its prefix; a table is a numbering of
// the prefixes that the lines have, and a prefix that no line has any more goes.
TEST(CQuoteTable, NumbersThePrefixesOfLines) {
  std::mt19937 random(9);
  for (int round = 0; round < 300; ++round) {
    CQuoteTable table;
    std::vector<std::pair<std::string, int>> lines;
    const auto prefix = [&random] {
      return std::string(1 + random() % 4, random() % 3 ? '>' : '|');
    };
    for (int step = 0; step < 30; ++step) {
      if (lines.empty() || random() % 3 == 0) {
        lines.emplace_back(prefix(), 0);
        lines.back().second = table.IndexOf(lines.back().first, CT_SJIS);
      } else {
        auto& [text, index] = lines.back();
        const std::size_t same = random() % (text.size() + 1);
        text.replace(same, text.npos, random() % 4 != 0 ? prefix() : "");
        index = table.Change(index, same, text, CT_SJIS);
      }
      std::set<std::string> distinct;
      for (const auto& [text, index] : lines) {
        if (!text.empty()) distinct.insert(text);
        ASSERT_EQ(index < 0, text.empty());
        ASSERT_EQ(index < 0 ? "" : table[index], text) << round << ' ' << step;
      }
      ASSERT_EQ(table.GetCount(), static_cast<int>(distinct.size()));
    }
  }
  CQuoteTable table;
  EXPECT_EQ(table.IndexOf(">", CT_SJIS) + table.IndexOf("|", CT_SJIS), 1);
  EXPECT_EQ(table.IndexOf("|", CT_BIG5), 0) << "a table is in one code type";
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
