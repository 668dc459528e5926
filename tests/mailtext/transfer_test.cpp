#include "lumrmisc/mailtext/transfer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "mailtext/coders.h"
#include "mailtext/decode_rows.h"

namespace lumr {
namespace {

using namespace std::string_view_literals;

std::string Repeat(std::string_view text, int count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

TEST(EncodeBase64, BreaksLinesAfterTheirLength) {
  const struct {
    std::string_view data;
    int lineLength;
    std::string expected;
  } cases[] = {
      {"", 76, ""},
      {"abc", 4, "YWJj\r\n"},
      {"abc", 0, "YWJj"},
      {"abc", -1, "YWJj"},
      {"abcd", 76, "YWJjZA==\r\n"},
      {"a", 1, "Y\r\nQ\r\n=\r\n=\r\n"},
      {"abcdef", 3, "YWJ\r\njZG\r\nVm\r\n"},
      {"ab", 5, "YWI=\r\n"},
      {"abcd", 6, "YWJjZA\r\n==\r\n"},
      {"\xfb\xff\0\x01"sv, 0, "+/8AAQ=="},
      {std::string_view(), 4, ""},
      {"abcabcabc", 2147483647, "YWJjYWJjYWJj\r\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.data) + " in lines of " + std::to_string(c.lineLength));
    EXPECT_EQ(Base64(c.data, c.lineLength), c.expected);
  }
  EXPECT_EQ(Base64(std::string(57, 'a')), Repeat("YWFh", 19) + "\r\n");
  EXPECT_EQ(Base64(std::string(58, 'a')), Repeat("YWFh", 19) + "\r\nYQ==\r\n");
  CBuffer out("old");
  EncodeBase64(nullptr, 5, 76, out);
  EXPECT_EQ(out, "");
}

// All that the decoders do with text that no encoder writes. The streaming coders give the same
// (transfercoder_test.cpp runs these rows too, cut at every place).
TEST(Decoders, ReadWhatMailHolds) {
  for (const DecodeRow& row : kDecodeRows) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(DecodeWhole(row.encoding, row.text), row.expected);
  }
}

TEST(DecodeBase64, GivesOneAndEmptiesItsOutput) {
  for (const char* text : {static_cast<const char*>(nullptr), "", "YW"}) {
    CBuffer out("old");
    EXPECT_EQ(DecodeBase64(text, out), 1);
    EXPECT_EQ(out, "");
  }
}

TEST(ExtractBase64Text, TakesTheFirstRun) {
  const struct {
    std::string_view text, expected;
  } cases[] = {
      {"", ""},
      {"..YWJj..ZGVm", "YWJj"},
      {"-- YQ== YQ==", "YQ=="},
      {"=YQ===x", "YQ==="},
      {"\xe3\x81\x82"
       "abc/+\x80",
       "abc/+"},
      {"!?", ""},
      {". \0ab\0=c"sv, "\0ab\0="sv},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    CBuffer out("old");
    ExtractBase64Text(TightCopy(c.text), out);
    EXPECT_EQ(out.Bytes(), c.expected);
  }
  CBuffer out;
  ExtractBase64Text("-abcd", 3, out);
  EXPECT_EQ(out, "ab");
  ExtractBase64Text("-abcd", -1, out);
  EXPECT_EQ(out, "abcd");
  ExtractBase64Text(nullptr, 4, out);
  EXPECT_EQ(out, "");
}

TEST(EncodeQuotedPrintable, KeepsLinesShortAndWhiteSpaceSafe) {
  const std::string full(75, 'x');
  const struct {
    const char* what;
    std::string data;
    int textMode;
    std::string expected;
  } cases[] = {
      {"nothing", "", 1, ""},
      {"space before a line break", "a \r\n", 1, "a=20\r\n"},
      {"the same in binary mode", "a \r\n", 0, "a=20=0D=0A"},
      {"tab at the end, space inside", "a\tb c\t", 1, "a\tb c=09"},
      {"only the last space before a break is encoded", "a  \n", 1, "a =20\r\n"},
      {"lone CR and LF", "a\rb\nc\r", 1, "a\r\nb\r\nc\r\n"},
      {"CR CR LF are two line breaks", "\r\r\n", 1, "\r\n\r\n"},
      {"LF CR are two line breaks", "\n\r", 1, "\r\n\r\n"},
      {"equals, controls, 8 bits", "=\x7f\x01~!\xe3", 1, "=3D=7F=01~!=E3"},
      {"NUL", std::string("a\0b", 3), 1, "a=00b"},
      {"a full line needs no break", full, 1, full},
      {"one more does", full + "y", 1, full + "=\r\ny"},
      {"a full line before a line break", full + "\r\ny", 1, full + "\r\ny"},
      {"an escape is never split", full.substr(2) + "=", 1, full.substr(2) + "=\r\n=3D"},
      {"an escape that just fits", full.substr(3) + "=", 1, full.substr(3) + "=3D"},
      {"a space at the end of a line", full.substr(1) + " y", 1, full.substr(1) + " =\r\ny"},
      {"100 equals signs", std::string(100, '='), 1,
       Repeat(Repeat("=3D", 25) + "=\r\n", 3) + Repeat("=3D", 25)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(QuotedPrintable(c.data, c.textMode), c.expected);
  }
  CBuffer out("old");
  EncodeQuotedPrintable(reinterpret_cast<const unsigned char*>("a"), 0, 1, out);
  EXPECT_EQ(out, "");
}

TEST(IsQuotedPrintable, CountsEscapesInIntegers) {
  const struct {
    const char* text;
    int expected;
  } cases[] = {
      {nullptr, 0},
      {"", 0},
      {"ab", 1},
      {"abc", 1},
      {"abcd", 0},
      {"hello world", 0},
      {"caf=C3=A9", 1},
      {"=41 23456789", 1},    // 3 * 1 >= 36 / 10
      {"=41 2345678901", 0},  // 3 * 1 < 42 / 10
      {"=4g 23456", 0},
      {"=C3=A9 \xe9", 0},
      {"x=4", 1},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(IsQuotedPrintable(c.text), c.expected) << (c.text != nullptr ? c.text : "null");
  }
}

TEST(EncodeUuencode, WritesTheBlock) {
  const auto encode = [](const char* mode, const char* name, std::string_view data) {
    CBuffer out("old");
    EncodeUuencode(mode, name, reinterpret_cast<const unsigned char*>(data.data()),
                   static_cast<int>(data.size()), out);
    return String(out);
  };
  EXPECT_EQ(encode(nullptr, "", ""), "begin 644 dummy\r\n`\r\nend\r\n");
  EXPECT_EQ(encode("755", "a b", "Cat"), "begin 755 a b\r\n#0V%T\r\n`\r\nend\r\n");
  EXPECT_EQ(encode("", nullptr, "\0"sv), "begin 644 dummy\r\n!````\r\n`\r\nend\r\n");
  EXPECT_EQ(encode("", "", std::string(46, '\0')),
            "begin 644 dummy\r\nM" + std::string(60, '`') + "\r\n!````\r\n`\r\nend\r\n");
}

TEST(DecodeUuencodeBegin, TakesTheFormApart) {
  const struct {
    const char* line;
    int expected;
    const char* mode;
    const char* name;
  } cases[] = {
      {"begin 644 a.txt", 1, "644", "a.txt"},
      {"BEGIN    755    a b \t\r\nM", 1, "755", "a b"},
      {"begin 644 \x83\x65\x83\x58\x83\x67.txt", 1, "644", "\x83\x65\x83\x58\x83\x67.txt"},
      {"begin 644 \t", 1, "644", ""},
      {"begin 64 a.txt", 0, "", ""},
      {"begin 6444 a.txt", 0, "", ""},
      {"begin 648 a.txt", 0, "", ""},
      {"begin 644", 0, "", ""},
      {"begin 644 ", 0, "", ""},
      {"begin 644 \r\na.txt", 0, "", ""},
      {"begin \n644 a.txt", 0, "", ""},
      {"begin\t644 a.txt", 0, "", ""},
      {" begin 644 a.txt", 0, "", ""},
      {"begi", 0, "", ""},
      {nullptr, 0, "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line != nullptr ? c.line : "null");
    CStringA mode = "old";
    CStringA name = "old";
    EXPECT_EQ(DecodeUuencodeBegin(c.line, &mode, &name), c.expected);
    EXPECT_EQ(mode, c.mode);
    EXPECT_EQ(name, c.name);
    EXPECT_EQ(DecodeUuencodeBegin(c.line, nullptr, nullptr), c.expected);
  }
}

TEST(DecodeUuencode, TellsWhetherTheBlockIsComplete) {
  const struct {
    const char* what;
    const char* text;
    int expected;
    const char* data;
  } cases[] = {
      {"null", nullptr, 1, ""},
      {"empty", "", 1, ""},
      {"empty lines only", "\r\n\r\n", 0, ""},
      {"end in capitals", "begin 644 a\r\n#0V%T\r\n`\r\nEND\r\n", 1, "Cat"},
      {"no end", "begin 644 a\n#0V%T\n`\n", 0, "Cat"},
      {"another line for end", "begin 644 a\n#0V%T\n`\nend \n", 0, "Cat"},
      {"no line that ends the data", "begin 644 a\n#0V%T\nend\n", 0, "Cat"},
      {"a space ends the data", "begin 644 a\n#0V%T\n \nend", 1, "Cat"},
      {"an 8-bit byte ends the data", "begin 644 a\n#0V%T\n\xa0\nend", 1, "Cat"},
      {"empty lines vanish", "\n\r\nbegin 644 a\r\r\n\n#0V%T\n\n`\n\nend\n\n", 1, "Cat"},
      {"text before begin", "hello\nbegin 644 a\n`\nend\n", 0, ""},
      {"text behind end", "begin 644 a\n#0V%T\n`\nend\nM", 1, "Cat"},
      {"a short line", "begin 644 a\n#0V%T\n#0V%\n`\nend\n", 0, "Cat"},
      {"characters missing from the last group", "begin 644 a\n\"0V\n`\nend\n", 1, "C`"},
      {"a line longer than its count", "begin 644 a\n!0V%Txyz\n`\nend\n", 1, "C"},
      {"any character has six bits", "begin 644 a\n#p\x96\xe5T\n`\nend\n", 1, "Cat"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CStringA mode = "old";
    CStringA name = "old";
    CBuffer data("old");
    EXPECT_EQ(DecodeUuencode(c.text, &mode, &name, &data), c.expected);
    EXPECT_EQ(data, c.data);
    const bool begun = c.text != nullptr && std::strstr(c.text, "begin") != nullptr;
    EXPECT_EQ(mode, begun && c.text[0] != 'h' ? "644" : "");
  }
  CStringA name;
  EXPECT_EQ(DecodeUuencode("begin 644 a.b\nnonsense", nullptr, &name, nullptr), 1);
  EXPECT_EQ(name, "a.b");
}

TEST(DecodeBinHex, NeedsItsSigns) {
  const std::string marker = "(This file must be converted with BinHex 4.0)";
  const struct {
    const char* what;
    std::string text;
    int expected;
  } cases[] = {
      {"empty", "", 1},
      {"no marker", ":#f9jC@*:", 0},
      {"no colon", marker + "\n#f9jC", 0},
      {"one colon", marker + "\n:#f9jC", 0},
      {"a colon before the marker", ":" + marker + ":", 0},
      {"nothing between the colons", marker + "::", 1},
      {"marker in capitals, broken off before",
       "(This file must (THIS FILE MUST BE CONVERTED WITH "
       "BINHEX 4.0)::",
       1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CBuffer out("old");
    EXPECT_EQ(DecodeBinHex(c.text, out), c.expected);
    EXPECT_EQ(out, "");
  }
  CBuffer out("old");
  EXPECT_EQ(DecodeBinHex(static_cast<const char*>(nullptr), out), 1);
  EXPECT_EQ(out, "");
}

// A run may not make more of a data fork than the header says it is, nor may a header take
// memory for what is not there.
TEST(DecodeBinHex, IsBoundedByItsHeader) {
  for (const std::uint32_t length : {0u, 1u, 1000u, 0xFFFFFFFFu}) {
    std::string data(22, '\0');
    for (unsigned i = 0; i < 4; ++i) data[12 + i] = static_cast<char>(length >> (24 - 8 * i));
    data += "xyz";
    for (int i = 0; i < 100; ++i) data += "\x90\xff";
    CBuffer out;
    EXPECT_EQ(DecodeBinHex(BinHexText(data), out), 1);
    const int present = 3 + 100 * 254;
    EXPECT_EQ(out.GetLength(), length < present ? static_cast<int>(length) : present);
    EXPECT_LE(out.GetAllocSize(), 2 * present);
    EXPECT_EQ(out.GetAllocSize() % 1024, 0);
  }
}

TEST(PercentEncodings, EncodeWhatIsNotKept) {
  CBuffer out("old");
  EXPECT_STREQ(EncodeHex("aZ0 -\xff", 0, out), "aZ0%20%2D%FF");
  EXPECT_STREQ(EncodeHex("aZ0", 1, out), "%61%5A%30");
  EXPECT_STREQ(EncodeHex("a\0b"sv, 0, out), "a%00b");
  EXPECT_STREQ(EncodeHex(nullptr, 1, out), "");
  EXPECT_STREQ(EncodeUrlEncode("a b/c", out), "a+b%2Fc");
  EXPECT_STREQ(EncodeUrlEncode("A-Z._~+\xe3", out), "A-Z._%7E%2B%E3");
  EXPECT_STREQ(EncodeUrlEncode("", out), "");
}

TEST(DecodeHex, IsOneRuleInAllForms) {
  const struct {
    std::string_view text;
    std::string expected;
    std::u16string wide;
  } cases[] = {
      {"", "", u""},
      {"a+b%2fc", "a+b/c", u"a+b/c"},
      {"%E3%81%82", "\xe3\x81\x82", u"\u00e3\u0081\u0082"},
      {"%", "%", u"%"},
      {"%4", "%4", u"%4"},
      {"%4g%%41%4", "%4g%A%4", u"%4g%A%4"},
      {"%00", std::string(1, '\0'), std::u16string(1, u'\0')},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(DecodeHex(TightCopy(c.text)), c.expected);
    EXPECT_EQ(DecodeHex(std::u16string(c.text.begin(), c.text.end())), c.wide);
  }
  EXPECT_EQ(DecodeHex(u"%\uff14\uff11\u3042"), u"%\uff14\uff11\u3042");
  EXPECT_EQ(DecodeHex(static_cast<const char*>(nullptr)), "");
  EXPECT_EQ(DecodeHex(static_cast<const char16_t*>(nullptr)), u"");
  for (int c = 0; c < 256; ++c) {
    const std::size_t capital = std::string_view("0123456789ABCDEF").find(static_cast<char>(c));
    const std::size_t small = std::string_view("0123456789abcdef").find(static_cast<char>(c));
    const int expected = static_cast<int>(std::min(capital, small));  // npos is -1
    EXPECT_EQ(Decode1Hex(static_cast<char>(c)), expected) << c;
    EXPECT_EQ(Decode1Hex(static_cast<char16_t>(c)), expected) << c;
    EXPECT_EQ(Decode1Hex(static_cast<char16_t>(c | 0x100)), -1) << c;
  }
}

TEST(Imap4, NamesGoThereAndBack) {
  const struct {
    std::u16string name;
    std::string encoded;
  } cases[] = {
      {u"", ""},
      {u"a&b", "a&-b"},
      {u"x\u65e5y", "x&ZeU-y"},
      {u"\u65e5\u672c\u8a9e", "&ZeVnLIqe-"},
      {u"~peter/mail/\u53f0\u5317/\u65e5\u672c\u8a9e", "~peter/mail/&U,BTFw-/&ZeVnLIqe-"},
      {u"&", "&-"},
      {u"\u3042&\u3042", "&MEI-&-&MEI-"},
      {std::u16string(1, u'\0') + u"\x7f\x1f~ ", "&AAAAfwAf-~ "},
      {u"\xd83d\xde00", "&2D3eAA-"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.encoded);
    CBuffer out("old");
    EncodeImap4UTF7(c.name.data(), static_cast<int>(c.name.size()), out);
    EXPECT_EQ(out, c.encoded);
    CStringW back = u"old";
    EXPECT_EQ(DecodeImap4UTF7(c.encoded.data(), static_cast<int>(c.encoded.size()), back), 1);
    EXPECT_EQ(back, c.name);
  }
  CBuffer out("old");
  EncodeImap4Base64(nullptr, 4, out);
  EXPECT_EQ(out, "");
  EncodeImap4Base64(u"\u65e5\u672c", 2, out);
  EXPECT_EQ(out, "ZeVnLA");
}

TEST(DecodeImap4Base64, StopsOutsideItsAlphabet) {
  const struct {
    const char* text;
    const char16_t* expected;
  } cases[] = {
      {nullptr, u""},       {"", u""},           {"Z", u""},
      {"Ze", u""},          {"ZeU", u"\u65e5"},  {"ZeU-ZeU", u"\u65e5"},
      {"ZeU/", u"\u65e5"},  {"ZeU=", u"\u65e5"}, {"ZeVnLA", u"\u65e5\u672c"},
      {"ZeVnL", u"\u65e5"}, {",,,,", u"\uffff"},
  };
  for (const auto& c : cases) {
    CStringW out = u"old";
    EXPECT_EQ(DecodeImap4Base64(c.text, out), 1);
    EXPECT_EQ(out, c.expected) << (c.text != nullptr ? c.text : "null");
  }
}

}  // namespace
}  // namespace lumr
