// The commands that write mail from what is given.
#include <gtest/gtest.h>

#include "tool/tool_runner.h"

namespace lumr::test {

TEST(Compose, WritesWhatSendmailTakes) {
  constexpr std::string_view kArguments =
      "compose --from a@b.jp --to \"山田 太郎 <taro@example.jp>, \\\"Doe, J\\\" <j@x.jp>\" "
      "--subject 会議";
  if (!CanBeTyped(kArguments)) GTEST_SKIP();
  const RunResult result = ToolRunner().Run(kArguments, "本文\r\n二行目");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out,
            "From: a@b.jp\n"
            "To: =?ISO-2022-JP?B?GyRCOzNFRBsoQiAbJEJCQE86GyhC?= <taro@example.jp>,\n"
            " \"Doe, J\" <j@x.jp>\n"
            "Subject: =?ISO-2022-JP?B?GyRCMnE1RBsoQg==?=\n"
            "MIME-Version: 1.0\n"
            "Content-Type: text/plain; charset=ISO-2022-JP\n"
            "Content-Transfer-Encoding: 7bit\n"
            "\n"
            "\x1b$BK\\J8\x1b(B\n\x1b$BFs9TL\\\x1b(B\n");
}

TEST(Compose, ChoosesCharsetAndTransfer) {
  const struct {
    const char* options;
    std::string body;
    const char *charset, *transfer;
  } cases[] = {
      {"", "abc", "US-ASCII", "7bit"},
      {"", "é", "ISO-8859-1", "8bit"},
      {"", "①", "UTF-8", "8bit"},
      {"--charset utf-8", "あ", "UTF-8", "8bit"},
      {"--charset shift_jis", "①", "ISO-2022-JP", "7bit"},
      {"", std::string(999, 'x'), "US-ASCII", "base64"},
      {"", std::string(998, 'x'), "US-ASCII", "7bit"},
      {"", std::string("a\0b", 3), "US-ASCII", "base64"},
  };
  for (const auto& c : cases) {
    const RunResult result =
        ToolRunner().Run(std::string("compose --to a@b.jp --subject x ") + c.options, c.body);
    EXPECT_EQ(result.status, 0) << result.err;
    const std::string expected =
        std::string("charset=") + c.charset + "\nContent-Transfer-Encoding: " + c.transfer + "\n\n";
    EXPECT_NE(result.out.find(expected), std::string::npos) << result.out;
  }
}

TEST(Compose, SaysWhatIsWrongAndWhere) {
  ToolRunner().Check({
      {"compose --to \"a@b.jp\nBcc: x@y.jp\" --subject x", "", "", 2,
       "line break in --to (byte 7)"},
      {"compose --to a@b.jp --subject \"a\rb\"", "", "", 2, "line break in --subject (byte 2)"},
      {"compose --to a@b.jp --subject \"a\x1b[0m\"", "", "", 2,
       "control character in --subject (byte 2)"},
      {"compose --to ab --subject x", "", "", 2, "--to: 'ab': The mail address has no \"@\"."},
      {"compose --to \"a@b.jp, c;d@e.jp\" --subject x", "", "", 2, "'c;d@e.jp'"},
      {"compose --to é@b.jp --subject x", "", "", 2,
       "'é@b.jp': The mail address has Japanese or other double"},
      {"compose --to \"山田 <山田@b.jp>\" --subject x", "", "", 2, "has Japanese or other double"},
      {"compose --to ｱ@b.jp --subject x", "", "", 2, "has half-width katakana"},
      {"compose --to \"a (b@c.jp\" --subject x", "", "", 2, "not closed"},
      {"compose --subject x", "", "", 2, "nobody to send it to"},
      {"compose --to a@b.jp --subject x --charset x-no", "", "", 2, "unknown charset 'x-no'"},
      {"compose --to a@b.jp --subject x --charset iso-2022-jp", "髙", "", 1,
       "lacks characters of the message: 髙"},
      {"compose --to a@b.jp --subject x", "ab\nc\xff", "", 1, "no UTF-8 from 2:2"},
      {"compose --to a@b.jp --subject x missing", "", "", 2, "there is no such file"},
  });
}

TEST(Header, DecodesAndEncodes) {
  const ToolRunner tool;
  tool.Check({
      {"header decode \"=?UTF-8?B?44GC?=\" \"=?UTF-8?Q?a=0Ab=1B?=\"", "", "あ\na b\n"},
      {"header decode", "=?UTF-8?B?44GC?=\n =?UTF-8?B?44GE?=\nb\r\n", "あい\nb\n"},
      {"header decode --charset shift_jis", "\xb1\xb2\n", "ｱｲ\n"},
      {"header encode --charset iso-2022-jp --field Subject 会議", "",
       "Subject: =?ISO-2022-JP?B?GyRCMnE1RBsoQg==?=\n"},
      {"header decode x - y", "=?UTF-8?B?44GC?=\n =?UTF-8?B?44GE?=\nb", "x\nあい\nb\ny\n"},
      {"header encode -", "あ\n-\n", "=?UTF-8?B?44GC?=\n-\n"},
      {"header encode --kind q", "あ\nb\n", "=?UTF-8?Q?=E3=81=82?=\nb\n"},
      {"header encode --charset iso-8859-1 한", "", "=?ISO-8859-1?Q?=3F?=\n", 1, "were replaced"},
      {"header encode --kind x a", "", "", 2, "unknown kind of encoded words 'x'"},
      {"header encode \"a\nb\"", "", "", 2, "line break in VALUE (byte 2)"},
      {"header encode", "a\xff\n", "", 1, "no UTF-8 from byte 2"},
      {"header encode --field a:b x", "", "", 2, "'a:b' cannot be the name of a header field"},
      {"header encode --field 件名 x", "", "", 2, "'件名' cannot be the name"},
  });
  const Json line = JsonLines(tool.Run("header encode --json -", "あ").out).at(0);
  EXPECT_EQ(line.at("value"), "=?UTF-8?B?44GC?=");
}

}  // namespace lumr::test
