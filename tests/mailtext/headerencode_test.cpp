#include "lumrmisc/mailtext/headerencode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/mailtext/headerparam.h"
#include "lumrmisc/mailtext/headerword.h"
#include "mailtext/coders.h"
#include "mailtext/corpus.h"
#include "mailtext/subjects.h"

namespace lumr {
namespace {

constexpr CodeType kWordTypes[] = {CT_UTF8, CT_JIS, CT_SJIS, CT_EUC};
constexpr HeaderWordKind kKinds[] = {HeaderWordKind::kSmaller, HeaderWordKind::kBase64,
                                     HeaderWordKind::kQuoted};

// What holds for every output: printable lines of at most 76 characters, words of at most 75, each
// of whole characters and, alone, without an error.
void CheckField(std::string_view field, CodeType codeType) {
  std::size_t begin = 0;
  while (begin < field.size()) {
    const std::size_t end = std::min(field.find("\r\n", begin), field.size());
    const std::string_view line = field.substr(begin, end - begin);
    EXPECT_LE(line.size(), 76u) << field;
    EXPECT_TRUE(begin == 0 || line.front() == ' ') << field;
    for (const char c : line) EXPECT_TRUE(c >= ' ' && c < '\x7F') << field;
    std::size_t word = 0;
    while ((word = line.find("=?", word)) != line.npos) {
      const std::size_t text = line.find('?', line.find('?', word + 2) + 1) + 1;
      const std::size_t close = line.find("?=", text);
      if (text == 0 || close == line.npos) break;
      EXPECT_LE(close + 2 - word, 75u) << field;
      CBuffer bytes;
      const std::string kind(1, line[text - 2]);
      std::string coded(line.substr(text, close - text));
      std::replace(coded.begin(), coded.end(), '_', ' ');
      DecodeHeaderText(kind, coded, bytes);
      CBuffer units;
      CConversionReport report;
      ConvertToOtherCodeType2(codeType, bytes.Bytes(), CT_UNICODE, units, 0, &report);
      EXPECT_EQ(report.Replaced(), 0) << line;
      if (codeType == CT_JIS) {
        const std::size_t escape = bytes.Bytes().rfind('\x1b');
        EXPECT_TRUE(escape == std::string_view::npos ||
                    bytes.Bytes().substr(escape + 1, 2) == "(B");
      }
      word = close + 2;
    }
    begin = end + 2;
  }
}

// The text as the charset has it: the Japanese code pages have but one of the two wave dashes.
std::string Carried(std::u16string text, CodeType codeType) {
  if (codeType != CT_UTF8) std::replace(text.begin(), text.end(), u'\u301C', u'～');
  return Utf8(text);
}

std::string Encoded(std::u16string_view text, const HeaderEncoding& encoding = {},
                    std::string_view begin = {}) {
  CStringA field(begin);
  AppendHeaderText(text, encoding, field);
  return field;
}

TEST(AppendHeaderText, WritesWhatReadersExpect) {
  const struct {
    const char* what;
    std::u16string_view text;
    HeaderEncoding encoding;
    const char* expected;
  } cases[] = {
      {"nothing", u"", {}, "Subject: "},
      {"ASCII", u"Hello  World", {}, "Subject: Hello  World"},
      {"ISO-2022-JP is B", u"日本", {CT_JIS}, "Subject: =?ISO-2022-JP?B?GyRCRnxLXBsoQg==?="},
      {"the smaller kind",
       u"Frühlingsgrüße",
       {CT_ISO8859_1},
       "Subject: =?ISO-8859-1?Q?Fr=FChlingsgr=FC=DFe?="},
      {"the smaller kind is B", u"あ", {}, "Subject: =?UTF-8?B?44GC?="},
      {"ASCII words around", u"Re: あ (1)", {}, "Subject: Re: =?UTF-8?B?44GC?= (1)"},
      {"spaces go inside", u"あ い", {}, "Subject: =?UTF-8?B?44GCIOOBhA==?="},
      {"what looks like a word", u"=?x?q?y?=", {}, "Subject: =?UTF-8?B?PT94P3E/eT89?="},
      {"spaces at the ends", u" a ", {}, "Subject: =?UTF-8?Q?_a_?="},
      {"control characters", u"a\r\nBcc: b\x1b\x85\u2028c", {}, "Subject: a Bcc: b c"},
      {"a mark of byte order", u"\uFEFFa", {}, "Subject: a"},
      {"half a pair", u"\xD83D", {}, "Subject: =?UTF-8?B?77+9?="},
      {"not in the charset", u"é한", {CT_ISO8859_1}, "Subject: =?ISO-8859-1?B?6T8=?="},
      {"UTF-7 and UTF-16 are UTF-8", u"あ", {CT_UTF7}, "Subject: =?UTF-8?B?44GC?="},
      {"a name",
       u"山田 (営業) J.",
       {CT_UTF8, HeaderWordKind::kQuoted, true},
       "Subject: =?UTF-8?Q?=E5=B1=B1=E7=94=B0_=28=E5=96=B6=E6=A5=AD=29_J=2E?="},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Encoded(c.text, c.encoding, "Subject: "), c.expected) << c.what;
  }
  CStringA field;
  EXPECT_EQ(AppendHeaderText(u"é", {CT_ISO8859_1}, field), 1);
  EXPECT_EQ(AppendHeaderText(u"한", {CT_ISO8859_1}, field), 0);
  EXPECT_EQ(AppendHeaderText(u"髙橋", {CT_JIS}, field), 0);  // outside the cells of JIS X 0208
  EXPECT_EQ(AppendHeaderText(u"\xDC00", {}, field), 0);
}

TEST(AppendHeaderText, KeepsWhatBelongsTogether) {
  // A base with its marks at every column: the cut is before the base.
  const std::u16string_view clusters[] = {u"か\u3099", u"👨\u200D👩\u200D👧", u"e\u0301\u0302",
                                          u"葛\U000E0100", u"👍🏽"};
  for (const std::u16string_view cluster : clusters) {
    for (int before = 1; before < 60; ++before) {
      std::u16string text(static_cast<std::size_t>(before), u'あ');
      for (int i = 0; i < 4; ++i) text += cluster;
      const std::string field = Encoded(text, {}, "Subject: ");
      CheckField(field, CT_UTF8);
      for (std::size_t at = 0; (at = field.find("=?UTF-8?B?", at)) != field.npos; ++at) {
        const std::size_t end = field.find("?=", at + 10) + 2;
        const CStringW word = DecodeHeaderValue(std::string_view(field).substr(at, end - at));
        EXPECT_TRUE(word.front() == u'あ' || word.front() == cluster.front()) << field;
      }
    }
  }
  // More marks than a word holds are cut all the same.
  const std::u16string many = u"a" + std::u16string(1000, u'\u0301');
  CheckField(Encoded(many), CT_UTF8);
  EXPECT_EQ(DecodeHeaderValue(Encoded(many)), many);
}

TEST(AppendHeaderText, ReadsBackAsTheSameText) {
  constexpr unsigned kSeed = 1522;
  std::mt19937 random(kSeed);
  const std::u16string_view pieces[] = {
      u"あ", u"漢字", u"ア", u"ｱﾞ", u"abc", u" ",    u" ",  u"  ",
      u"=?", u"?=",   u"_",  u"=",  u"\"",  u"Re: ", u"、", u"longer-than-most",
      u"!",  u"　",   u"Ω",  u"ё"};
  std::vector<std::u16string> texts(std::begin(kSubjects), std::end(kSubjects));
  for (int round = 0; round < 3000; ++round) {
    std::u16string& text = texts.emplace_back();
    for (std::size_t n = random() % 60; n > 0; --n) text += pieces[random() % std::size(pieces)];
  }
  texts.emplace_back(5000, u'x');
  texts.emplace_back(5000, u' ');
  texts.emplace_back(5000, u'あ');
  for (const std::u16string& text : texts) {
    for (const CodeType codeType : kWordTypes) {
      const HeaderWordKind kind = kKinds[random() % 3];
      const bool isName = random() % 2 == 0;
      CStringA field(random() % 90, 'X');
      const std::size_t begin = field.size();
      if (begin > 76) field[80 - 10] = '\n';
      AppendHeaderText(text, {codeType, kind, isName}, field);
      const std::string_view value = std::string_view(field).substr(begin);
      if (begin <= 70) CheckField(field, codeType);
      ASSERT_EQ(Utf8(DecodeHeaderValue(value)), Carried(text, codeType))
          << codeType << ", seed " << kSeed;
    }
  }
  // Beyond the plane, in UTF-8 only; any unit that is text.
  for (int round = 0; round < 3000; ++round) {
    std::u16string text;
    for (std::size_t n = random() % 80; n > 0; --n) {
      const auto unit = static_cast<char16_t>(random());
      if (unit >= 0xD800 && unit < 0xE000) {
        text += {static_cast<char16_t>(0xD800 + unit % 0x400),
                 static_cast<char16_t>(0xDC00 + random() % 0x400)};
      } else if (unit >= 0xA0 && unit != 0x2028 && unit != 0x2029 && unit != 0xFEFF) {
        text += unit;
      }
    }
    const std::string field = Encoded(text);
    CheckField(field, CT_UTF8);
    ASSERT_EQ(DecodeHeaderValue(field), text) << field << ", seed " << kSeed;
  }
}

TEST(AppendHeaderParameter, WritesFileNames) {
  const struct {
    std::u16string_view value;
    CodeType codeType;
    const char* expected;
  } cases[] = {
      {u"a.txt", CT_UTF8, "C: attachment; filename=\"a.txt\""},
      {u"", CT_UTF8, "C: attachment; filename=\"\""},
      {u"a \"b\"\\.txt", CT_UTF8, "C: attachment; filename=\"a \\\"b\\\"\\\\.txt\""},
      {u"あ.txt", CT_UTF8, "C: attachment; filename*=UTF-8''%E3%81%82.txt"},
      {u"あ", CT_JIS, "C: attachment; filename*=ISO-2022-JP''%1B$B$%22%1B%28B"},
      {u" a", CT_UTF8, "C: attachment; filename*=UTF-8''%20a"},
      {u"a\r\nX: b", CT_UTF8, "C: attachment; filename=\"a X: b\""},
  };
  for (const auto& c : cases) {
    CStringA field = "C: attachment";
    EXPECT_EQ(AppendHeaderParameter("filename", c.value, c.codeType, field), 1);
    EXPECT_EQ(field, c.expected);
  }
  for (const char* name : {"", "a b", "a=", "a*", "a\r\n"}) {
    CStringA field = "C: x";
    EXPECT_EQ(AppendHeaderParameter(name, u"a", CT_UTF8, field), 0) << name;
    EXPECT_EQ(field, "C: x");
  }
}

TEST(AppendHeaderParameter, ReadsBackAsTheSameText) {
  std::vector<std::u16string> values(std::begin(kSubjects), std::end(kSubjects));
  std::u16string all;
  for (const char16_t* const subject : kSubjects) all += subject;
  for (std::size_t size = 0; size < all.size(); size += 7) values.push_back(all.substr(0, size));
  values.emplace_back(3000, u'x');
  for (const std::u16string& value : values) {
    for (const CodeType codeType : kWordTypes) {
      CStringA field = "attachment";
      AppendHeaderParameter("filename", value, codeType, field);
      AppendHeaderParameter("size", u"1", codeType, field);
      CheckField(field, codeType);
      CStringW back;
      ASSERT_EQ(DecodeHeaderParameter(field, "filename", back), 1);
      ASSERT_EQ(Utf8(back), Carried(value, codeType)) << field;
      DecodeHeaderParameter(field, "size", back);
      EXPECT_EQ(back, u"1");
    }
  }
}

TEST(AppendHeaderTokens, FoldsAtWhiteSpaceOnly) {
  CStringA field = "References: ";
  const std::string id = "<" + std::string(38, 'i') + "@example.jp>";
  AppendHeaderTokens("  " + id + "\r\n\t" + id + " \x1b\x80" + std::string(100, 'x') + "\r\n",
                     field);
  EXPECT_EQ(field, "References: " + id + "\r\n " + id + "\r\n " + std::string(100, 'x'));
  field = "To: " + std::string(60, 'x');
  AppendHeaderTokens(R"("Doe,  \"J\" x" <j@x>)", field);
  EXPECT_EQ(field, "To: " + std::string(60, 'x') + "\r\n \"Doe, \\\"J\\\" x\" <j@x>");
}

}  // namespace
}  // namespace lumr
