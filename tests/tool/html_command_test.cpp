// lumr html.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/tool_runner.h"

namespace lumr::test {

TEST(HtmlCommand, MakesWhatIsAskedFor) {
  const struct {
    const char* arguments;
    std::string_view input;
    int status;
    std::string_view out;
    std::string_view err;  // a part of it; empty: nothing is said
  } cases[] = {
      {"html safe", "<script>x</script><img src=http://a/>", 0, "<img src=http_//a/>", ""},
      {"html safe", "<meta charset=Shift_JIS>\x93\xFA\x96\x7B", 0, "<meta charset=UTF-8>日本", ""},
      {"html text", "<p>a<br>b", 0, "a\nb\n", ""},
      {"html text --links", "<a href=http://b/>a</a>", 0, "a (=> http://b/ )\n", ""},
      {"html text --reading", "<ul><li>a", 0, "- a\n", ""},
      {"html text", "<title>x</title>\x1B$B$\"\x1B(B", 0, "あ\n", ""},
      {"html text", std::string_view("a\0b\x1B[2J", 7), 0, "a\u2400b\u241B[2J\n", ""},
      {"html text", "a<b", 0, "a\n", ""},
      {"html text", "", 0, "", ""},
      {"html from-text", "a\n<", 0, "<div>a</div>\n<div>&lt;</div>\n", ""},
      {"html from-text --charset none", "a", 2, "", "unknown charset"},
      {"html charset", "<meta charset=x-sjis>", 0, "x-sjis\n", ""},
      {"html charset", "<p>", 1, "", "no charset is declared"},
      {"html charset shift_jis", "<meta charset=utf-8>\xE3\x81\x82\xF0\xA0\xAE\x9F", 0,
       "<meta charset=Shift_JIS>\x82\xA0&#134047;", ""},
      {"html lead \"a b\"", "<body>x", 0, "<body>\n<div>a b</div>\nx", ""},
      {"html links", "<a href=\"http://b.example/\">http://a.example/</a>", 0,
       "http://b.example/\thttp://a.example/\n", "leads to b.example"},
      {"html links", "<p>", 1, "", ""},
      {"html safe --report", "<p>", 2, "", "--strict"},
      {"html text nothing.html", "", 2, "", "nothing.html"},
  };
  const ToolRunner tool;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments);
    SCOPED_TRACE(c.input);
    const RunResult result =
        tool.Run(std::string(c.arguments) + " --lang en", std::string(c.input));
    EXPECT_EQ(result.status, c.status) << result.err;
    EXPECT_EQ(result.out, c.out);
    EXPECT_EQ(result.err.empty(), c.err.empty()) << result.err;
    EXPECT_NE(result.err.find(c.err), std::string::npos) << result.err;
  }
}

TEST(HtmlCommand, ReportsWhatItRemoved) {
  const ToolRunner tool;
  const RunResult result =
      tool.Run("html safe --strict --report --json",
               "<p onclick=x>a<script>b</script><img src=http://c/><a href=tel:1>d</a>");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 4) << result.err;
  EXPECT_EQ(result.out.find("http:"), std::string::npos) << result.out;
  EXPECT_EQ(result.out.find("script"), std::string::npos) << result.out;
  for (const char* const removed : {"event-handler", "script", "remote-image"}) {
    EXPECT_NE(result.err.find("\"removed\":\"" + std::string(removed) + '"'), std::string::npos)
        << result.err;
  }
}

}  // namespace lumr::test
