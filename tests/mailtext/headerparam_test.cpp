#include "lumrmisc/mailtext/headerparam.h"

#include <gtest/gtest.h>

#include <string>

#include "mailtext/coders.h"
#include "mailtext/corpus.h"

namespace lumr {
namespace {

TEST(DecodeHeaderParameter, ReadsFileNamesInEveryForm) {
  const struct {
    const char* what;
    std::string raw;  // behind "attachment"
    const char* expected;
  } cases[] = {
      {"bare", "; filename=a.txt", "a.txt"},
      {"name in capitals, white space", " ;\r\n\tFileName = a.txt ; x=y", "a.txt"},
      {"quoted, with quotes inside", R"(; filename="a;\"b\"\\.txt" )", "a;\"b\"\\.txt"},
      {"bare with spaces", "; filename=my file (1).txt; size=3", "my file (1).txt"},
      {"a comment behind", "; filename=a.txt (the file)", "a.txt"},
      {"quotes never closed", "; filename=\"a.txt", "a.txt"},
      {"extended", "; filename*=utf-8'ja'%E3%81%82.txt", "あ.txt"},
      {"extended Shift_JIS", "; filename*=Shift_JIS''%82%A0%5C.txt", "あ\\.txt"},
      {"extended ISO-2022-JP", "; filename*=iso-2022-jp''%1B$B$%22%1B(B", "あ"},
      {"extended, charset detected", "; filename*=''%E3%81%82", "あ"},
      {"a character cut between pieces", "; filename*0*=utf-8''%E3%81; filename*1*=%82.txt",
       "あ.txt"},
      {"pieces in disorder", "; filename*1=b; filename*2=c; filename*0=a", "abc"},
      {"encoded words in quotes",
       "; filename=\"=?ISO-2022-JP?B?GyRCJCIbKEI=?= =?ISO-2022-JP?B?GyRCJCQbKEI=?=\"", "あい"},
      {"an encoded word cut into pieces", "; filename*0=\"=?UTF-8?B?44\"; filename*1=\"GC?=\"",
       "あ"},
      {"broken extended form beside a plain one", "; filename*=utf-8''%E3%81; filename=b", "b"},
      {"broken extended form alone", "; filename*=utf-8''a%E3%81", "a\xef\xbf\xbd"},
      {"raw Shift_JIS with 5C as a trail byte", "; filename=\"\x95\x5c\x8e\xa6.txt\"", "表示.txt"},
      {"raw UTF-8 before a quoted quote", "; filename=\"\xe3\x81\x82\\\"\xe3\x81\x84.txt\"",
       "あ\"い.txt"},
      {"raw ISO-2022-JP with a quote inside", "; filename=\"\x1b$B$\"\x1b(B.txt\"; x=y", "あ.txt"},
      {"control characters", "; filename*=utf-8''a%0D%0Ab%00%1Bc", "a bc"},
      {"a fold in quotes", "; filename=\"a\r\n b\"", "a b"},
      {"a number that cannot be", "; filename*x=1; filename*0=a; filename*99999999999=z", "a"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CStringW value = u"old";
    EXPECT_EQ(DecodeHeaderParameter(TightCopy("attachment" + c.raw), "FILENAME", value), 1);
    EXPECT_EQ(Utf8(value), c.expected);
  }
  CStringW value = u"old";
  for (const char* raw : {"", "attachment", "attachment; filename", "a; xfilename=b; file=c", ";;;",
                          "filename=a", "a; filename*1=b"}) {
    EXPECT_EQ(DecodeHeaderParameter(raw, "filename", value), 0) << raw;
    EXPECT_EQ(value, u"") << raw;
  }
}

TEST(DecodeHeaderParameters, KeepsTheOrder) {
  std::vector<HeaderParameter> parameters = {{"old", u"old"}};
  EXPECT_EQ(DecodeHeaderParameters(" Text/Plain ; B*1=y; a=\"1;2\"; b*0=x; C=;d", parameters),
            "Text/Plain");
  EXPECT_EQ(parameters, (std::vector<HeaderParameter>{{"b", u"xy"}, {"a", u"1;2"}, {"c", u""}}));
}

// What the expectation of the vectors is deliberately not.
constexpr struct {
  const char* source;
  const char* expected;  // ours
  const char* reason;
} kDifferent[] = {
    {"jsmime-params-048", "foo", "RFC 2231 lets the charset be empty, and a name beats none"},
    {"jsmime-params-054", "€", "UTF-8 under a single-byte label is UTF-8"},
};

TEST(DecodeHeaderParameters, AgreesWithVectors) {
  LUMR_NEEDS_CORPUS();
  for (const auto& row : ReadJsonLines("parameters.jsonl")) {
    // input, INPUT, expected, MAIN, [filename, NAME,] source, SOURCE
    const bool hasName = row.size() == 8;
    std::string expected = hasName ? row[5] : "(none)";
    for (const auto& different : kDifferent) {
      if (row.back() == different.source) expected = different.expected;
    }
    std::vector<HeaderParameter> parameters;
    EXPECT_EQ(DecodeHeaderParameters(row[1], parameters), row[3]);
    CStringW value;
    const int found = DecodeHeaderParameter(row[1], "filename", value);
    EXPECT_EQ(found ? Utf8(value) : "(none)", expected) << row.back() << ": " << row[1];
    for (const HeaderParameter& parameter : parameters) {
      EXPECT_TRUE(parameter.name != "filename" || parameter.value == value);
    }
  }
}

TEST(DecodeHeaderParameters, EndsOnHostileInput) {
  std::string many = "a";
  for (int i = 0; i < 100000; ++i) many += "; p*" + std::to_string(i) + "=x";
  CStringW value;
  EXPECT_EQ(DecodeHeaderParameter(many, "p", value), 1);
  EXPECT_EQ(value.size(), 100000u);
  std::string names = "a";
  for (int i = 0; i < 100000; ++i) names += ";p" + std::to_string(i) + "=\xe3\x81\x82";
  std::vector<HeaderParameter> parameters;
  DecodeHeaderParameters(names, parameters);
  EXPECT_EQ(parameters.size(), 100000u);
  DecodeHeaderParameters(std::string(1000000, ';') + std::string(1000000, '"'), parameters);
}

}  // namespace
}  // namespace lumr
