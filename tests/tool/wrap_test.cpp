// lumr wrap and unwrap.
#include <gtest/gtest.h>

#include <random>

#include "charset/convert_text.h"
#include "charset/corpus.h"
#include "tool/tool_runner.h"

namespace lumr::test {

TEST(Wrap, TurnsLines) {
  ToolRunner().Check({
      {"wrap -w 6", "あい「う\nabc def", "あい\n「う\nabc \ndef"},
      {"wrap -w 6", "あいう。\r\n\r\nあいう。。\r\n", "あいう。\r\n\r\nあい\r\nう。。\r\n"},
      {"wrap -w 6", "あいうえ\rx", "あいう\rえ\rx"},
      {"wrap -w 6 -", Encoded("かなかな\n", CT_SJIS), "かなか\nな\n"},
      {"wrap -w 6", Encoded("漢字かな\n", CT_JIS), "漢字か\nな\n"},
      {"wrap -w 6 -f euc-jp", Encoded("漢字かな\n", CT_EUC), "漢字か\nな\n"},
      {"wrap -w 8 --quote \"> \"", "あいうえ\n\nx\n", "> あいう\n> え\n> \n> x\n"},
      {"wrap -w 4", "> あいうえお\n", "> あいうえお\n"},  // quoted: left alone
      {"wrap -w 4", "あhttp://a.jp/。次\n", "あ\nhttp://a.jp/。\n次\n"},
      {"wrap -w 1", "😀a😀", "😀\na\n😀"},
      {"wrap -w 3"},
      {"wrap", std::string("a\0b\x01\n", 5), std::string_view("a\0b\x01\n", 5)},
      {"wrap --explain -w 6", "あい「う\nabc\n",
       "1\t4\tあい\tback, for what must not begin or end a line\n1\t4\t「う\tend of the line\n"
       "2\t3\tabc\tend of the line\n"},
      {"wrap --json -w 6", "あいう。x",
       "{\"line\":1,\"columns\":8,\"text\":\"あいう。\",\"rules\":[\"hang\"]}\n"
       "{\"line\":1,\"columns\":1,\"text\":\"x\",\"rules\":[]}\n"},
      {"wrap -w 0", "x", "", 2, "wrong usage"},
      {"wrap -w -5", "x", "", 2, "wrong usage"},
      {"wrap -w many", "x", "", 2, "wrong usage"},
      {"wrap -f x-none", "x", "", 2, "unknown charset 'x-none'"},
      {"wrap -f utf-8", "a\xFF\n", "a\xEF\xBF\xBD\n", 1, "cannot be read as UTF-8 were replaced"},
      {"unwrap -w 6", "あいう\nえお\n次の\n行\n", "あいうえお\n次の\n行\n"},
      {"unwrap -w 6", "あい\n「う\n", "あい「う\n"},
      {"unwrap -w 6", "あい\nうえ\n", "あい\nうえ\n"},  // both fit one line
      {"unwrap -w 6", "abc \ndef\n\nx", "abc def\n\nx"},
      {"unwrap -w 4", "> あいう\nえお\n", "> あいう\nえお\n"},
  });
}

// Of any text: what wrapping parts, joining parts again in the same places.
TEST(Unwrap, IsUndoneByWrap) {
  static const char* const kPieces[] = {
      "あ", "漢", "。", "、",           "「",     "」",       "a",  "b",    " ",  "c.", "\t",
      ">",  "(",  ")",  "http://a.jp/", "x@y.jp", "\\\\s\\t", "\n", "\r\n", "ー", "😀"};
  std::mt19937 random(7);
  std::vector<std::string> texts;
  for (int i = 0; i < 24; ++i) {
    std::string text;
    for (int n = 0; n < 1500; ++n) text += kPieces[random() % (i < 12 ? 14 : std::size(kPieces))];
    texts.push_back(text);
  }
  if (std::getenv("LUMRMISC_CORPUS") != nullptr) {
    texts.push_back(ReadCorpus("charset/utf-8/uchardet-ja.txt"));
  }
  const ToolRunner tool;
  int width = 1;
  for (const std::string& text : texts) {
    width += 3;
    SCOPED_TRACE("width " + std::to_string(width) + ":\n" + text);
    const std::string option = " -f utf-8 -w " + std::to_string(width);
    const std::string wrapped = tool.Run("wrap" + option, text).out;
    const std::string joined = tool.Run("unwrap" + option, wrapped).out;
    EXPECT_EQ(tool.Run("wrap" + option, joined).out, wrapped);
  }
}

TEST(Wrap, TakesOneEndlessLine) {
  std::string line;
  while (line.size() < (4u << 20)) line += "日本語の長い長い行。abc http://example.jp/ ";
  const ToolRunner tool;
  const std::string wrapped = tool.Run("wrap -w 40", line).out;
  std::string back = wrapped;
  std::erase(back, '\n');
  EXPECT_TRUE(back == line);
  EXPECT_TRUE(tool.Run("unwrap -w 40", wrapped).out == line);
}

}  // namespace lumr::test
