// lumr grep over mail.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tool/tool_runner.h"

namespace lumr::test {

namespace {

// Subject and body are "ガイド" with a line behind it, in a transfer encoding each.
constexpr char kMessage[] =
    "From: =?ISO-2022-JP?B?GyRCMnE1RBsoQg==?= <a@example.jp>\r\n"
    "Subject: =?UTF-8?Q?=E3=82=AC=E3=82=A4?=\r\n =?UTF-8?Q?=E3=83=89?=\r\n"
    "Content-Type: text/plain; charset=Shift_JIS\r\n"
    "Content-Transfer-Encoding: quoted-printable\r\n\r\n"
    "x\r\n=B6=DE=B2=C4=DE =89=EF=8Bc\r\n";
constexpr char kHtml[] =
    "Subject: h\r\nContent-Type: text/html; charset=UTF-8\r\n\r\n"
    "<p class=guide>\xE3\x81\x8C<b>\xE3\x81\x84</b>&#x3069;</p>\r\n";

TEST(GrepMail, DecodedHeadersAndBodies) {
  const ToolRunner tool;
  std::filesystem::create_directories("box/cur");
  std::filesystem::create_directories("box/new");
  std::filesystem::create_directories("box/tmp");
  tool.Write("box/cur/1", kMessage);
  tool.Write("box/new/2", kHtml);
  tool.Write("box/tmp/3", kMessage);
  tool.Write("mbox", "From a Mon Jan  1 10:00:00 2024\n" + std::string(kHtml) +
                         "\nFrom b Mon Jan  1 10:00:00 2024\n" + std::string(kMessage));
  tool.Check({
      {"grep --mail -wk -n がいど box", "",
       "box/new/2:1:1:がいど\nbox/cur/1:Subject:1:Subject: ガイド\nbox/cur/1:1:2:ｶﾞｲﾄﾞ 会議\n"},
      {"grep --mail -k がいど mbox", "", "mbox:1:がいど\nmbox:2:Subject: ガイド\n"},
      {"grep --mail -l 会議 mbox", "", "mbox:2\n"},
      {"grep --mail -c -E '[会議]+' mbox", "", "mbox:1:0\nmbox:2:2\n"},
      {"grep --mail class mbox", "", "", 1},
      {"grep --mail 会議 missing", "", "", 2, "missing"},
  });
  const std::string found = tool.Run("grep --mail -wk -r がいど .").out;
  EXPECT_EQ(std::count(found.begin(), found.end(), '\n'), 6) << found;
  const auto lines = JsonLines(tool.Run("grep --mail --json 会議 mbox").out);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].at("part"), "From");
  EXPECT_EQ(lines[0].at("number"), 2);
  EXPECT_EQ(lines[1].at("matches").at(0).at("start"), 6);
  EXPECT_FALSE(lines[1].contains("offset"));
}

}  // namespace

}  // namespace lumr::test
