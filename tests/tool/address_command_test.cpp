// lumr address and lumr date.
#include <gtest/gtest.h>

#include "tool/tool_runner.h"

namespace lumr::test {

namespace {

struct Case {
  const char* arguments;
  std::string_view input;
  int status;
  std::string_view out;
  std::string_view err;  // a part of it; empty: nothing is said
};

void Check(const Case& c) {
  SCOPED_TRACE(c.arguments);
  SCOPED_TRACE(c.input);
  const RunResult result = ToolRunner().Run(c.arguments, c.input);
  EXPECT_EQ(result.status, c.status) << result.err;
  EXPECT_EQ(result.out, c.out);
  EXPECT_EQ(UnsafeIn(result.out + result.err), "");
  EXPECT_EQ(result.err.empty(), c.err.empty()) << result.err;
  EXPECT_NE(result.err.find(c.err), std::string::npos) << result.err;
}

}  // namespace

TEST(Address, IsCheckedTakenApartAndBuilt) {
  const Case cases[] = {
      {"address check", "a@b.jp\r\n\n", 1, "a@b.jp: valid\n: No mail address has been entered.\n",
       ""},
      {"address check", "あい;@b", 1,
       "あい;@b: The mail address has one of the characters ()<>;\"\\ which it may not have. (from "
       "character 3: ;)\n",
       ""},
      // Hangul is no Shift_JIS, and no less a two-byte character.
      {"address check --json", "a𠮷@한", 1,
       "{\"input\":\"a𠮷@한\",\"result\":3,\"message\":\"The mail address has Japanese or other "
       "double-byte characters.\",\"character\":2}\n",
       ""},
      {"address check", "é@b", 1,
       "é@b: The mail address has Japanese or other double-byte characters. (from character 1: "
       "é)\n",
       ""},
      {"address check", "𠮷;@b", 1,
       "𠮷;@b: The mail address has one of the characters ()<>;\"\\ which it may not have. (from "
       "character 2: ;)\n",
       ""},
      {"address check --as name -", "ｱ\n", 1,
       "ｱ: The name has half-width katakana. (from character 1: ｱ)\n", ""},
      {"address check --as name", "山田 (ソ) ①", 1,
       "山田 (ソ) ①: The name has machine-dependent characters. (from character 8: ①)\n", ""},
      {"address check --as server", "mail.example.jp", 0, "mail.example.jp: valid\n", ""},
      {"address check --as nothing a", "", 2, "", "unknown kind 'nothing'"},
      {"address check", "a\xFF@b", 1, "", "UTF-8"},
      {"address parse", "\"山田, 太郎\" <t@b.jp>,\r\n k@b.jp (K), =?UTF-8?B?44GC?= <c@d>\n", 0,
       "t@b.jp\t山田, 太郎\nk@b.jp\tK\nc@d\tあ\n", ""},
      {"address parse --json", "표 <a@b>", 0, "{\"address\":\"a@b\",\"name\":\"표\"}\n", ""},
      {"address split", "山@b, \"x,y\" <c>,  d (e, f  ", 1, "山@b\n\"x,y\" <c>\nd (e, f\n",
       "parenthesis is not closed. (from character 18: d (e, f)"},
      {"address split --lang ja", "a \"b", 1, "a \"b\n", "閉じられていません。（1 文字目から"},
      {"address format t@b.jp \"Yamada, T\"", "", 0, "\"Yamada, T\" <t@b.jp>\n", ""},
      {"address format t@b.jp Yamada.T", "", 0, "\"Yamada.T\" <t@b.jp>\n", ""},
      {"address format t@b.jp Yamada.T --plain", "", 0, "Yamada.T <t@b.jp>\n", ""},
      {"address format t@b.jp", "", 0, "t@b.jp\n", ""},
      {"address", "", 2, "", "wrong usage"},
  };
  for (const Case& c : cases) Check(c);
}

TEST(Date, IsReadOrTellsWhy) {
  const Case cases[] = {
      {"date", "Date: Thu, 6 May 2004\r\n 07:08:09 +0900\n2004年5月6日 7時8分9秒 JST\n", 0,
       "Thu, 06 May 2004 07:08:09 +0900\nThu, 06 May 2004 07:08:09 +0900\n", ""},
      {"date --format ja --zone JST", "5 May 2004 22:08:09 GMT", 0,
       "2004年5月6日(木) 07:08:09 +0900\n", ""},
      {"date --format iso8601", "6 May 2004 07:08:09 -0030", 0, "2004-05-06T07:08:09-00:30\n", ""},
      {"date --format unix --missing-zone +0900", "6 May 2004 07:08:09", 0, "1083794889\n",
       "there is no zone"},
      // Raw Shift_JIS, as old mailers write the weekday.
      {"date", "\x96\xd8, 6 5\x8c\x8e 2004 07:08:09 +0900", 0, "Thu, 06 May 2004 07:08:09 +0900\n",
       ""},
      {"date", "Wed, 6 May 2004 07:08 XYZ", 0, "Thu, 06 May 2004 07:08:00 +0000\n",
       "unknown name of a zone"},
      {"date", "2004年13月6日", 1, "", "no such month (from character 6: 13月6日)"},
      {"date --lang ja", "", 0, "", ""},
      {"date --json", "30 Feb 2004", 1,
       "{\"input\":\"30 Feb 2004\",\"problem\":\"day\",\"message\":\"the month has no such "
       "day\",\"character\":1}\n",
       ""},
      {"date --json", "6 May 04 7:08 JST", 0,
       "{\"input\":\"6 May 04 7:08 "
       "JST\",\"unix\":1083794880,\"zoneMinutes\":540,\"rfc5322\":\"Thu, "
       "06 May 2004 07:08:00 "
       "+0900\",\"iso8601\":\"2004-05-06T07:08:00+09:00\",\"assumed\":[\"short-"
       "year\"]}\n",
       ""},
      {"date --format x", "", 2, "", "unknown form 'x'"},
      {"date --zone +9960 --now", "", 2, "", "'+9960' is no zone"},
  };
  for (const Case& c : cases) Check(c);
  const RunResult now = ToolRunner().Run("date --now");
  EXPECT_EQ(now.status, 0);
  EXPECT_EQ(ToolRunner().Run("date", now.out).out, now.out);
}

}  // namespace lumr::test
