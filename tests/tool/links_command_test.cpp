// lumr links.
#include <gtest/gtest.h>

#include "tool/tool_runner.h"

namespace lumr::test {
TEST(Links, GivesOffsetsOfTheTextInUtf8) {
  const std::string text =
      "a http://h\xE3\x81\x82/x\r\n\xE6\x97\xA5 a@b.c \"C:\\My Files\" \xF0\x9F\x98\x80 "
      "<mailto:a>\n";
  const std::string found =
      "2\t13\turl\thttp://h\xE3\x81\x82/x\n21\t5\tmail\ta@b.c\n28\t11\turl\tC:\\My Files\n"
      "47\t8\turl\tmailto:a\n";
  ToolRunner().Check({
      {"links -", text, found},
      {"links -f utf-8", text, found},
      // In ISO-2022-JP and Shift_JIS: one kanji before the link takes three bytes in UTF-8.
      {"links", "\x1B$B4A\x1B(Bftp:x", "3\t5\turl\tftp:x\n"},
      {"links -f shift_jis", "\x8A\xBF\x66tp:x", "3\t5\turl\tftp:x\n"},
      // A link ends with its line.
      {"links", "<C:\\a b\nc>", "1\t6\turl\tC:\\a b\n"},
      {"links", "http://a\x1B[31m", "0\t8\turl\thttp://a\n"},
      {"links", "no link", "", 1},
      {"links", "", "", 1},
      {"links -f x-nothing", "", "", 2, "unknown charset 'x-nothing'"},
      {"links missing.txt", "", "", 2, "there is no such file"},
  });
  const auto objects = JsonLines(ToolRunner().Run("links --json", text).out);
  ASSERT_EQ(objects.size(), 4u);
  EXPECT_EQ(objects[1]["offset"], 21);
  EXPECT_EQ(objects[1]["length"], 5);
  EXPECT_EQ(objects[1]["kind"], "mail");
  EXPECT_EQ(objects[2]["text"], "C:\\My Files");
}

}  // namespace lumr::test
