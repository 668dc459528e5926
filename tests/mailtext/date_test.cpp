#include "lumrmisc/mailtext/date.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/platform/mbcs.h"
#include "mailtext/coders.h"
#include "search/sample.h"

namespace lumr {
namespace {

constexpr char kSixthOfMay[] = "Thu, 06 May 2004 07:08:09 +0900";

CStringW Wide(std::string_view utf8) {
  CBuffer out;
  ConvertToOtherCodeType2(CT_UTF8, utf8, CT_UNICODE, out);
  return CStringW(out.Units());
}

std::string ShiftJis(std::string_view utf8) {
  CBuffer out;
  ConvertToOtherCodeType2(CT_UTF8, utf8, CT_SJIS, out);
  return String(out);
}

// As RFC 5322, or what is wrong and where.
template <class Text>
std::string Read(const Text& text, unsigned& assumed) {
  MailDate date;
  DateFault fault;
  assumed = 0;
  if (ParseMailDate(text, date, &fault) == 0) {
    return "problem " + std::to_string(static_cast<int>(fault.problem)) + " at " +
           std::to_string(fault.position);
  }
  assumed = date.assumed;
  return FormatMailDate(date.time, date.zoneMinutes);
}

TEST(ParseMailDate, ReadsWhatSendersWrite) {
  const struct {
    const char* text;
    unsigned assumed;
    const char* expected = kSixthOfMay;
  } cases[] = {
      // RFC 5322 and its obsolete forms.
      {"Thu, 6 May 2004 07:08:09 +0900", 0},
      {" \t6 May 2004\r\n 07:08:09\r\n\t+0900 ", 0},
      {"THU, 06 may 2004 07:08:09 +0900 (JST)", 0},
      {"Thu (a \\) (b)) , 6 (c) May(d)2004 07 (e): 08 : (f)09 +0900 (unclosed", 0},
      {"Thursday, 06-May-04 07:08:09 JST", kDateShortYear},
      {"6 May 104 07:08:09 +0900", kDateShortYear},
      {"6 May 98 07:08 -0000", kDateShortYear, "Wed, 06 May 1998 07:08:00 +0000"},
      {"6 May 49 07:08 GMT", kDateShortYear, "Thu, 06 May 2049 07:08:00 +0000"},
      {"6 May 50 07:08 UT", kDateShortYear, "Sat, 06 May 1950 07:08:00 +0000"},
      {"Thu, 6 May 2004 07:08 EDT", 0, "Thu, 06 May 2004 07:08:00 -0400"},
      {"Thu, 6 May 2004 07:08 PST", 0, "Thu, 06 May 2004 07:08:00 -0800"},
      {"Thu, 6 May 2004 07:08 Z", 0, "Thu, 06 May 2004 07:08:00 +0000"},
      {"Thu, 6 May 2004 07:08 A", kDateUnknownZone, "Thu, 06 May 2004 07:08:00 +0000"},
      {"Thu, 6 May 2004 07:08 XYZ", kDateUnknownZone, "Thu, 06 May 2004 07:08:00 +0000"},
      {"Thu, 6 May 2004 07:08:60 +0000", 0, "Thu, 06 May 2004 07:09:00 +0000"},
      {"29 Feb 2000 23:59:60 -1130", 0, "Wed, 01 Mar 2000 00:00:00 -1130"},
      {"31 Dec 9999 23:59:59 -9959", 0, "Fri, 31 Dec 9999 23:59:59 -9959"},
      // What is missing or wrong.
      {"Wed, 6 May 2004 07:08:09 +0900", kDateWrongWeekday},
      {"6 May 2004", kDateNoTime | kDateNoZone, "Thu, 06 May 2004 00:00:00 +0000"},
      {"2004/05/06 JST", kDateNoTime, "Thu, 06 May 2004 00:00:00 +0900"},
      {"6 May 2004 +0900", kDateNoTime, "Thu, 06 May 2004 00:00:00 +0900"},
      {"Thu, 6 May 2004 07:08:09", kDateNoZone, "Thu, 06 May 2004 07:08:09 +0000"},
      {"Thu 6 May 2004 7:8:9 +9", 0},
      {"Thu,6 May 2004 07:08:09.123 +900", 0},
      {"Thu, 6 May 2004 07:08:09 0900", kDateUnsignedZone},
      {"Do, 6 May 2004 07:08:09 +0900", kDateTextIgnored},
      {"Thu, 6 May 2004 07:08:09 +0900 (EST)", kDateZoneConflict},
      {"Thu, 6 May 2004 07:08:09 +0900 EST", kDateZoneConflict},
      {"Thu, 6 May 2004 07:08:09 JST-9", kDateZoneConflict},
      {"Thu, 6 May 2004 07:08:09 &#43;0900", kDateTextIgnored | kDateNoZone,
       "Thu, 06 May 2004 07:08:09 +0000"},
      {"Thu, 6 May 2004 07:08:09 +0900 and so on 12", kDateTextIgnored},
      {"Thu, 6 May 2004 07:08:09 +0900, 7 May 2005", kDateTextIgnored},
      // Zones as written in Japan.
      {"Thu, 6 May 2004 07:08:09 +09:00", 0},
      {"Thu, 6 May 2004 07:08:09+0900", 0},
      {"Thu, 6 May 2004 07:08:09 GMT+9", 0},
      {"Thu, 6 May 2004 07:08:09 UTC+09:00", 0},
      {"Thu, 6 May 2004 07:08:09 JST", 0},
      {"Thu, 6 May 2004 07:08:09 (JST)", 0},
      {"Thu, 6 May 2004 07:08:09 +0900 JST", 0},
      {"Thu, 6 May 2004 07:08:09 JST +0900", 0},
      {"Thu, 6 May 2004 07:08:09 +0900 (東京 (標準時))", 0},
      {"Thu, 6 May 2004 07:08:09 +0900 東京 (標準時)", kDateTextIgnored},
      // Other orders.
      {"Thu May  6 07:08:09 2004 +0900", 0},
      {"Thu May  6 07:08:09 JST 2004", 0},
      {"May 6, 2004 7:08:09 AM +0900", 0},
      {"May 6, 2004 7:08:09 p.m. +0900", 0, "Thu, 06 May 2004 19:08:09 +0900"},
      {"12:08 AM 6 May 2004 +0900", 0, "Thu, 06 May 2004 00:08:00 +0900"},
      {"12:08 PM 6 May 2004 +0900", 0, "Thu, 06 May 2004 12:08:00 +0900"},
      {"07:08:09 +0900 6 May 2004", 0},
      {"07:08:09 06-May-2004 JST", 0},
      {"06/May/2004 07:08:09 +0900", 0},
      {"6. Sept. 2004 07.08.09 +0900", 0, "Mon, 06 Sep 2004 07:08:09 +0900"},
      {"2004-05-06T07:08:09+09:00", 0},
      {"2004-05-05T22:08:09.5Z", 0, "Wed, 05 May 2004 22:08:09 +0000"},
      {"2004/05/06 07:08:09 +0900", 0},
      {"2004/5/6 7:08:09 (JST)", 0},
      {"2004.5.6 07.08.09 JST", 0},
      {"04/05/06 07:08:09 JST", kDateShortYear | kDateOrderGuessed},
      {"06.05.2004 07:08:09 JST", 0},
      {"13/05/2004 07:08 JST", 0, "Thu, 13 May 2004 07:08:00 +0900"},
      {"05/13/2004 07:08 JST", 0, "Thu, 13 May 2004 07:08:00 +0900"},
      // In Japanese.
      {"2004年5月6日(木) 7時8分9秒 +0900", 0},
      {"２００４年０５月０６日（木）　０７：０８：０９　＋０９００", 0},
      {"Ｔｈｕ，　６　Ｍａｙ　２００４　０７：０８：０９　＋０９００", 0},
      {"2004 年 5 月 6 日 木曜日 7 時 8 分 9 秒 JST", 0},
      {"2004年5月6日木曜午前7時8分9秒JST", 0},
      {"午前7時8分 2004年5月6日 JST", 0, "Thu, 06 May 2004 07:08:00 +0900"},
      {"午後7時 2004年5月6日 JST", 0, "Thu, 06 May 2004 19:00:00 +0900"},
      {"平成16年5月6日 午後7時半 JST", 0, "Thu, 06 May 2004 19:30:00 +0900"},
      {"令和元年5月1日 0時 JST", 0, "Wed, 01 May 2019 00:00:00 +0900"},
      {"木, 6 5月 2004 07:08:09 +0900", 0},
      {"木曜日、6 五月 2004 07:08:09 +0900", 0},
      {"二〇〇四年五月六日(木) 午前七時八分九秒 JST", 0},
      {"平成十六年 五月 六日 七時八分9秒 JST", 0},
      {"二千二十六年十一月三十日 十二時半 JST", 0, "Mon, 30 Nov 2026 12:30:00 +0900"},
      {"三, 6 May 2004 07:08:09 +0900", kDateTextIgnored},
      // English ordinals.
      {"Thursday, May 6th, 2004 7:08:09 am +0900", 0},
      {"6TH May 2004 07:08:09 +0900", 0},
      {"22nd November 2026 00:00 Z", 0, "Sun, 22 Nov 2026 00:00:00 +0000"},
      {"土, 6 5月 2004 07:08:09 +0900", kDateWrongWeekday},
      {"06 十二月 2004 07:08:09 +0900", 0, "Mon, 06 Dec 2004 07:08:09 +0900"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    unsigned assumed = 0;
    EXPECT_EQ(Read(Wide(c.text), assumed), c.expected);
    EXPECT_EQ(assumed, c.assumed);
    EXPECT_EQ(Read(std::string_view(TightCopy(ShiftJis(c.text))), assumed), c.expected);
    EXPECT_EQ(assumed, c.assumed);
  }
}

TEST(ParseMailDate, TellsWhatIsWrongAndWhere) {
  const struct {
    const char* text;  // "|" stands before the place
    DateProblem problem;
  } cases[] = {
      {"|", DateProblem::kNoDate},
      {" (Thu, 6 May 2004)|", DateProblem::kNoDate},
      {"Thu, 6 May|", DateProblem::kNoDate},
      {"07:08:09 +0900|", DateProblem::kNoDate},
      {"|tomorrow", DateProblem::kUnexpected},
      {"Thu, 6 |Mai 2004", DateProblem::kUnexpected},
      {"Thu, 6 May 2004 07:|x", DateProblem::kUnexpected},
      {"6 May 2004 |@ 07:08", DateProblem::kUnexpected},
      {"Thu, 6 May 2004 07:08:09 |20:00", DateProblem::kTwice},
      {"Thu, 6 May |June 2004", DateProblem::kTwice},
      {"6 May 2004 |2005", DateProblem::kTwice},
      {"6 May 2004 07:08 |2005", DateProblem::kTwice},
      {"6 May 2004 07:08 |0960", DateProblem::kZoneRange},
      {"6 May |1899 07:08:09 +0900", DateProblem::kYearRange},
      {"6 May |20045", DateProblem::kYearRange},
      {"2004/|13/06", DateProblem::kMonthRange},
      {"2004/05/|32", DateProblem::kDayRange},
      {"|00 May 2004", DateProblem::kDayRange},
      {"|31 Jun 2004", DateProblem::kDayRange},
      {"|29 Feb 1900", DateProblem::kDayRange},
      {"6 May 2004 |24:00:00 +0900", DateProblem::kHourRange},
      {"6 May 2004 午前|13時", DateProblem::kHourRange},
      {"6 May 2004 07:|60 +0900", DateProblem::kMinuteRange},
      {"6 May 2004 07:08:|61 +0900", DateProblem::kSecondRange},
      {"6 May 2004 07:08:|99999999999999999999 +0900", DateProblem::kSecondRange},
      {"6 May 2004 07:08:09 |+0960", DateProblem::kZoneRange},
      {"6 May 2004 07:08:09 |-99999", DateProblem::kZoneRange},
      {"|05/06/2004 07:08:09", DateProblem::kAmbiguous},
      {"平成16年|13月6日", DateProblem::kMonthRange},
      {"|千年十一月二十日", DateProblem::kYearRange},
      {"二〇〇四年|十三月六日", DateProblem::kMonthRange},
      {"二〇〇四年五月|六", DateProblem::kUnexpected},
      {"二〇〇四年五月|千千千千千千千日", DateProblem::kDayRange},
      {"|一二三四五六七八九年五月六日", DateProblem::kUnexpected},
      {"6|thMay 2004 07:08:09 +0900", DateProblem::kUnexpected},
      {"1st |2nd May 2004", DateProblem::kTwice},
      {"２００４年５月|３２日", DateProblem::kDayRange},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const auto check = [&c](auto text) {
      const std::size_t position = text.find('|');
      text.erase(position, 1);
      MailDate date;
      DateFault fault;
      EXPECT_EQ(ParseMailDate(text, date, &fault), 0);
      EXPECT_EQ(static_cast<int>(fault.problem), static_cast<int>(c.problem));
      EXPECT_EQ(fault.position, static_cast<int>(position));
      EXPECT_EQ(date.assumed, 0u);
      EXPECT_EQ(date.time, CTime());
    };
    check(Wide(c.text));
    check(ShiftJis(c.text));
  }
}

TEST(ParseMailDate, TakesTheZoneOfTheCaller) {
  MailDate date;
  ASSERT_EQ(ParseMailDate("6 May 2004 07:08:09", date, nullptr, 540), 1);
  EXPECT_EQ(FormatMailDate(date.time, date.zoneMinutes), kSixthOfMay);
  ASSERT_EQ(ParseMailDate("6 May 2004 07:08:09 GMT", date, nullptr, 540), 1);
  EXPECT_EQ(date.zoneMinutes, 0);
}

TEST(FormatMailDate, WritesWhatIsReadAgain) {
  std::mt19937 random(20240501);
  for (int i = 0; i < 20000 / static_cast<int>(kSampleStep); ++i) {
    const CTime time(std::chrono::seconds(-2208988800 + static_cast<long long>(random()) * 59));
    const int zone = static_cast<int>(random() % 11999) - 5999;
    unsigned assumed = 0;
    const CStringA written = FormatMailDate(time, zone);
    if (written.empty()) continue;
    for (const CStringW& text : {CStringW(written.begin(), written.end()),
                                 Wide(FormatIsoDate(time, zone)), FormatJapaneseDate(time, zone)}) {
      ASSERT_EQ(Read(text, assumed), written);
      ASSERT_EQ(assumed, 0u) << written;
    }
  }
  EXPECT_EQ(FormatJapaneseDate(CTime(std::chrono::seconds(1083794889)), 540),
            u"2004年5月6日(木) 07:08:09 +0900");
  for (const int zone : {6000, -6000}) EXPECT_EQ(FormatMailDate(CTime(), zone), "");
  EXPECT_EQ(FormatMailDate(CTime::min(), 5999), "");
  EXPECT_EQ(FormatIsoDate(CTime::max(), -5999), "");
  EXPECT_EQ(FormatMailDate(CTime(std::chrono::seconds(-2208988800)), -1), "");
}

// Whatever is not linear here takes minutes.
TEST(ParseMailDate, EndsOnHostileInput) {
  for (const char* piece : {"(", "1", "1 ", "\\", "a", "1:", ",", "(1)", "\x93\xfa", "+1"}) {
    std::string text;
    while (text.size() < 1000000 / kSampleStep) text += piece;
    unsigned assumed = 0;
    EXPECT_EQ(Read(std::string_view(text), assumed).substr(0, 7), "problem") << piece;
    Read(std::string_view("6 May 2004 07:08 +0900 " + text), assumed);
  }
}

}  // namespace
}  // namespace lumr
