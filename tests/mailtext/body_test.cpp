#include "lumrmisc/mailtext/body.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "mailtext/coders.h"

namespace lumr {
namespace {

using namespace std::string_view_literals;

TEST(EncodeBody, EncodesByTheLabel) {
  const std::string text = "a=\xe3\x81\x82 \r\n" + std::string(60, 'x');
  CBuffer quoted, uuencoded;
  EncodeQuotedPrintable(text, 0, quoted);
  EncodeUuencode({}, {}, text, uuencoded);
  const struct {
    const char* label;
    std::string expected;
  } cases[] = {
      {"Base64", Base64(text, 76)},
      {"QUOTED-printable", String(quoted)},
      {"x-UUencode", String(uuencoded)},
      {"7bit", text},
      {"8bit", text},
      {"x-nobody", text},
      {"base64 ", text},
      {"", text},
      {nullptr, text},
  };
  for (const auto& c : cases) {
    CBuffer out("old");
    EncodeBody(c.label, reinterpret_cast<const unsigned char*>(text.data()),
               static_cast<int>(text.size()), 0, out);
    EXPECT_EQ(out.Bytes(), c.expected) << (c.label ? c.label : "null");
  }
  CBuffer out("old");
  EncodeBody("quoted-printable", "a\n"sv, 1, out);
  EXPECT_EQ(out.Bytes(), "a\r\n");
  EncodeBody("7bit", nullptr, 3, 0, out);
  EXPECT_EQ(out.Bytes(), "");
  EncodeBody("x-uuencode", ""sv, 0, out);
  EXPECT_EQ(out.Bytes(), "begin 644 dummy\r\n`\r\nend\r\n");
}

TEST(EncodeBodyForSend, ConvertsToTheSendingForm) {
  const struct {
    CodeType codeType;
    int asciiAsJis;
    std::string_view body;  // in edit form
    CodeType sent;
    const char* transfer;
    int result;
    std::string_view expected;
  } cases[] = {
      {CT_SJIS, 0, "\x82\xa0", CT_JIS, "7bit", 1, "\x1b$B$\"\x1b(B"},
      {CT_EUC, 0, "\x82\xa0", CT_JIS, "7bit", 1, "\x1b$B$\"\x1b(B"},
      {CT_JIS, 0, "\x82\xa0", CT_JIS, "7bit", 1, "\x1b$B$\"\x1b(B"},
      {CT_SJIS, 1, "", CT_JIS, "7bit", 0, ""},
      {CT_ASCII, 0, "a", CT_ASCII, "7bit", 0, "a"},
      {CT_ASCII, 1, "a", CT_JIS, "7bit", 0, "a"},
      {CT_UTF8, 0, "\x42\x30"sv, CT_UTF8, "8bit", 1, "\xe3\x81\x82"},
      {CT_UNICODE, 0, "\x42\x30"sv, CT_UTF8, "8bit", 1, "\xe3\x81\x82"},
      {CT_UTF7, 0, "\x42\x30"sv, CT_UTF7, "7bit", 1, "+MEI-"},
      {CT_EUCKR, 0, "\xb0\xa1", CT_KSC5601, "8bit", 0, "\xb0\xa1"},
      {CT_WIN1252, 0, "\xe9\x80", CT_ISO8859_1, "8bit", 1, "\xe9?"},
      {CT_KOI8R, 0, "\xe0", CT_KOI8R, "8bit", 1, "\xc1"},
      {CT_UNKNOWN, 1, "\xe9", CT_UNKNOWN, "8bit", 0, "\xe9"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.codeType);
    CodeType codeType = c.codeType;
    CStringA transfer = "old";
    CBuffer body;
    body = c.body;
    EXPECT_EQ(EncodeBodyForSend(c.asciiAsJis, codeType, transfer, body), c.result);
    EXPECT_EQ(body.Bytes(), c.expected);
    EXPECT_EQ(codeType, c.sent);
    EXPECT_EQ(transfer, c.transfer);
  }
  EXPECT_STREQ(GetDefaultSendEncoding(0, 1, CT_ASCII), "base64");
  EXPECT_STREQ(GetDefaultSendEncoding(1, 0, CT_JIS), "base64");
}

// Line by line with the standard library, in narrow text.
std::string SlowQuote(std::string_view mark, std::string_view text, int& breaks) {
  std::string out;
  bool atStart = true;
  breaks = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (atStart) out += mark;
    out += text[i];
    const bool isPair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    atStart = (text[i] == '\r' && !isPair) || text[i] == '\n';
    breaks += atStart;
  }
  return out;
}

TEST(InsertQuoteMark, MarksEveryLineInBothWidths) {
  const struct {
    std::string text;
    const char* expected;
    int breaks;
  } cases[] = {
      {"a\r\nb\nc\r\n", "> a\r\n> b\n> c\r\n", 3},
      {"", "", 0},
      {"a", "> a", 0},
      {"\n", "> \n", 1},
      {"\r\r\n", "> \r> \r\n", 2},
      {"> a\n\nb", "> > a\n> \n> b", 2},
  };
  const auto check = [](const std::string& text, const std::string& expected, int breaks) {
    CBuffer out("old");
    const TightCopy copy(text);
    const auto view = static_cast<std::string_view>(copy);
    EXPECT_EQ(InsertQuoteMark(CT_SJIS, "> ", view.data(), static_cast<int>(view.size()), out),
              breaks);
    EXPECT_EQ(out.Bytes(), expected) << text;
    // The wide form, at an odd address and with half a unit behind.
    const std::u16string wide(text.begin(), text.end());
    const TightCopy odd("x" + std::string(BytesOf(wide)) + "x");
    const auto units = static_cast<std::string_view>(odd).substr(1);
    EXPECT_EQ(InsertQuoteMark(CT_UTF8, reinterpret_cast<const char*>(u"> "), units.data(),
                              static_cast<int>(units.size()), out),
              breaks);
    EXPECT_EQ(out.Units(), std::u16string(expected.begin(), expected.end())) << text;
  };
  for (const auto& c : cases) check(c.text, c.expected, c.breaks);
  std::mt19937 random(822);
  for (int round = 0; round < 2000; ++round) {
    const std::string text = RandomText(random, random() % 12, "ab\r\n>");
    int breaks = 0;
    const std::string expected = SlowQuote("> ", text, breaks);
    check(text, expected, breaks);
  }
  CBuffer out("old");
  EXPECT_EQ(InsertQuoteMark(CT_SJIS, "> ", "a", -1, out), 0);
  EXPECT_EQ(out.Bytes(), "");
  EXPECT_EQ(InsertQuoteMark(CT_SJIS, nullptr, "a\n\x83\x0d\x83\x5c", 6, out), 2);
  EXPECT_EQ(out.Bytes(), "a\n\x83\x0d\x83\x5c");
  EXPECT_EQ(InsertQuoteMark(u"＞", u"あ\r\nい", out), 1);
  EXPECT_EQ(out.Units(), u"＞あ\r\n＞い");
}

}  // namespace
}  // namespace lumr
