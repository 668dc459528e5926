// lumr html.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/tool_runner.h"

namespace lumr::test {

TEST(HtmlCommand, MakesWhatIsAskedFor) {
  ToolRunner().Check({
      {"html safe", "<script>x</script><img src=http://a/>", "<img src=http_//a/>"},
      {"html safe", "<meta charset=Shift_JIS>\x93\xFA\x96\x7B", "<meta charset=UTF-8>日本"},
      {"html text", "<p>a<br>b", "a\nb\n"},
      {"html text --links", "<a href=http://b/>a</a>", "a (=> http://b/ )\n"},
      {"html text --reading", "<ul><li>a", "- a\n"},
      {"html text", "<title>x</title>\x1B$B$\"\x1B(B", "あ\n"},
      {"html text", std::string_view("a\0b\x1B[2J", 7), "a\u2400b\u241B[2J\n"},
      {"html text", "a<b", "a\n"},
      {"html text"},
      {"html from-text", "a\n<", "<div>a</div>\n<div>&lt;</div>\n"},
      {"html from-text --charset none", "a", "", 2, "unknown charset"},
      {"html charset", "<meta charset=x-sjis>", "x-sjis\n"},
      {"html charset", "<p>", "", 1, "no charset is declared"},
      {"html charset shift_jis", "<meta charset=utf-8>\xE3\x81\x82\xF0\xA0\xAE\x9F",
       "<meta charset=Shift_JIS>\x82\xA0&#134047;"},
      {"html lead \"a b\"", "<body>x", "<body>\n<div>a b</div>\nx"},
      {"html links", "<a href=\"http://b.example/\">http://a.example/</a>",
       "http://b.example/\thttp://a.example/\n", 0, "leads to b.example"},
      {"html links", "<p>", "", 1},
      {"html safe --report", "<p>", "", 2, "--strict"},
      {"html text nothing.html", "", "", 2, "nothing.html"},
  });
}

TEST(HtmlCommand, ReportsWhatItRemoved) {
  const ToolRunner tool;
  tool.Check({{"html safe --strict --report", "<p onclick=x>a", "<p>a", 0,
               "at 3: removed an attribute that runs script: onclick"}},
             ToolRunner::Out::kPart);
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
