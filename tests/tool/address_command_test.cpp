// lumr address and lumr date.
#include <gtest/gtest.h>

#include "tool/tool_runner.h"

namespace lumr::test {

TEST(Address, IsCheckedTakenApartAndBuilt) {
  const ToolRunner tool;
  tool.Check({
      {"address check", "a@b.jp\r\n\n", "a@b.jp: valid\n: No mail address has been entered.\n", 1},
      {"address check", "あい;@b",
       "あい;@b: The mail address has one of the characters ()<>;\"\\ which it may not have. (from "
       "character 3: ;)\n",
       1},
      // Hangul is no Shift_JIS, and no less a two-byte character.
      {"address check --json", "a𠮷@한",
       "{\"input\":\"a𠮷@한\",\"result\":3,\"message\":\"The mail address has Japanese or other "
       "double-byte characters.\",\"character\":2}\n",
       1},
      {"address check", "é@b",
       "é@b: The mail address has Japanese or other double-byte characters. (from character 1: "
       "é)\n",
       1},
      {"address check", "𠮷;@b",
       "𠮷;@b: The mail address has one of the characters ()<>;\"\\ which it may not have. (from "
       "character 2: ;)\n",
       1},
      {"address check --as name -", "ｱ\n",
       "ｱ: The name has half-width katakana. (from character 1: ｱ)\n", 1},
      {"address check --as name", "山田 (ソ) ①",
       "山田 (ソ) ①: The name has machine-dependent characters. (from character 8: ①)\n", 1},
      {"address check --as server", "mail.example.jp", "mail.example.jp: valid\n"},
      {"address check --as nothing a", "", "", 2, "unknown kind 'nothing'"},
      {"address check", "a\xFF@b", "", 1, "UTF-8"},
      {"address parse", "\"山田, 太郎\" <t@b.jp>,\r\n k@b.jp (K), =?UTF-8?B?44GC?= <c@d>\n",
       "t@b.jp\t山田, 太郎\nk@b.jp\tK\nc@d\tあ\n"},
      {"address parse --json", "표 <a@b>", "{\"address\":\"a@b\",\"name\":\"표\"}\n"},
      {"address split", "山@b, \"x,y\" <c>,  d (e, f  ", "山@b\n\"x,y\" <c>\nd (e, f\n", 1,
       "parenthesis is not closed. (from character 18: d (e, f)"},
      {"address split", "A: b@c, =?utf-8?Q?d,?= <e@f>;, x:;", "b@c\n=?utf-8?Q?d,?= <e@f>\n"},
      {"address parse", "=?utf-8?Q?d@x,?= <e@f>, A: \xE3\x81\x82 <b@c>;", "e@f\td@x,\nb@c\tあ\n"},
      {"address split --lang ja", "a \"b", "a \"b\n", 1, "閉じられていません。（1 文字目から"},
      {"address format t@b.jp \"Yamada, T\"", "", "\"Yamada, T\" <t@b.jp>\n"},
      {"address format t@b.jp Yamada.T", "", "\"Yamada.T\" <t@b.jp>\n"},
      {"address format t@b.jp Yamada.T --plain", "", "Yamada.T <t@b.jp>\n"},
      {"address format t@b.jp", "", "t@b.jp\n"},
      {"address", "", "", 2, "wrong usage"},
  });
}

TEST(Date, IsReadOrTellsWhy) {
  const ToolRunner tool;
  tool.Check({
      {"date", "Date: Thu, 6 May 2004\r\n 07:08:09 +0900\n2004年5月6日 7時8分9秒 JST\n",
       "Thu, 06 May 2004 07:08:09 +0900\nThu, 06 May 2004 07:08:09 +0900\n"},
      {"date --format ja --zone JST", "5 May 2004 22:08:09 GMT",
       "2004年5月6日(木) 07:08:09 +0900\n"},
      {"date --format iso8601", "6 May 2004 07:08:09 -0030", "2004-05-06T07:08:09-00:30\n"},
      {"date --format unix --missing-zone +0900", "6 May 2004 07:08:09", "1083794889\n", 0,
       "there is no zone"},
      // Raw Shift_JIS, as old mailers write the weekday.
      {"date", "\x96\xd8, 6 5\x8c\x8e 2004 07:08:09 +0900", "Thu, 06 May 2004 07:08:09 +0900\n"},
      {"date", "Wed, 6 May 2004 07:08 XYZ", "Thu, 06 May 2004 07:08:00 +0000\n", 0,
       "unknown name of a zone"},
      {"date", "2004年13月6日", "", 1, "no such month (from character 6: 13月6日)"},
      {"date --lang ja"},
      {"date", "令和六年五月六日 七時八分 JST\nMay 6th, 2024 7:08 +0900\n",
       "Mon, 06 May 2024 07:08:00 +0900\nMon, 06 May 2024 07:08:00 +0900\n"},
      {"date --json", "30 Feb 2004",
       "{\"input\":\"30 Feb 2004\",\"problem\":\"day\",\"message\":\"the month has no such "
       "day\",\"character\":1}\n",
       1},
      {"date --json", "6 May 04 7:08 JST",
       "{\"input\":\"6 May 04 7:08 "
       "JST\",\"unix\":1083794880,\"zoneMinutes\":540,\"rfc5322\":\"Thu, "
       "06 May 2004 07:08:00 "
       "+0900\",\"iso8601\":\"2004-05-06T07:08:00+09:00\",\"assumed\":[\"short-"
       "year\"]}\n"},
      {"date --format x", "", "", 2, "unknown form 'x'"},
      {"date --zone +9960 --now", "", "", 2, "'+9960' is no zone"},
  });
  const RunResult now = tool.Run("date --now");
  EXPECT_EQ(now.status, 0);
  EXPECT_EQ(tool.Run("date", now.out).out, now.out);
}

}  // namespace lumr::test
