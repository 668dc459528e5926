#include "lumrmisc/mailtext/headerword.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "mailtext/coders.h"
#include "mailtext/corpus.h"
#include "mailtext/subjects.h"

namespace lumr {
namespace {

using namespace std::string_view_literals;

// Through UTF-16, which what is made at once has to agree with.
std::string Decoded(std::string_view raw, std::string_view rawCharset = {}) {
  const std::string text = Utf8(DecodeHeaderValue(TightCopy(raw), rawCharset));
  EXPECT_EQ(DecodeHeaderValueUtf8(TightCopy(raw), rawCharset), text) << raw;
  return text;
}

TEST(DecodeHeaderValue, ReadsWordsInEveryState) {
  const struct {
    const char* what;
    std::string_view raw;
    const char* expected;
  } cases[] = {
      {"nothing", "", ""},
      {"plain text", "Hello  World", "Hello  World"},
      {"white space around", " \t Hello \r\n", "Hello"},
      {"a fold", "a\r\n b\n\t c \r\n\t d", "a b c d"},
      {"kind B", "=?UTF-8?B?44GC?=", "あ"},
      {"kind q", "=?utf-8?q?=E3=81=82_=e3=81=84?=", "あ い"},
      {"text around", "Re: =?UTF-8?B?44GC?= (1)", "Re: あ (1)"},
      {"two words", "=?UTF-8?B?44GC?= =?UTF-8?B?44GE?=", "あい"},
      {"two words, folded", "=?UTF-8?B?44GC?=\r\n =?UTF-8?B?44GE?=", "あい"},
      {"two words, glued", "=?UTF-8?B?44GC?==?UTF-8?B?44GE?=", "あい"},
      {"two words share an =", "=?UTF-8?B?44GC?=?UTF-8?B?44GE?=", "あい"},
      {"two charsets", "=?UTF-8?B?44GC?= =?ISO-2022-JP?B?GyRCJCQbKEI=?=", "あい"},
      {"text between words", "=?UTF-8?B?44GC?= - =?UTF-8?B?44GE?=", "あ - い"},
      {"glued to text", "x=?UTF-8?B?44GC?=y", "xあy"},
      {"in quotes", "\"=?UTF-8?B?44GC?=\" <a@example.jp>", "\"あ\" <a@example.jp>"},
      {"in a comment", "(=?UTF-8?B?44GC?=)", "(あ)"},
      {"damaged", "=?UTF-8?Q?=E3=81=82=E5A=81=E9=81=7F=E3=81?=", "あ\uFFFDA\uFFFD\uFFFD\uFFFD"},
      {"empty word", "a =?UTF-8?Q?\?= b", "a  b"},
      {"a space ends a word", "=?UTF-8?Q?a_?= =?UTF-8?Q?b?=", "a b"},
      {"raw spaces in a word", "=?UTF-8?Q?a b ?= =?UTF-8?Q?c?=", "a b c"},
      {"folds in words", "=?UTF-8?Q?a=\r\n b\r\n\t_c?= =?UTF-8?B?44\r\n GC?=", "ab cあ"},
      {"white space in Base64", "=?UTF-8?B?44 GC 44GE?=", "あい"},
      {"= that is no escape", "=?UTF-8?Q?a=b=4?=", "a=b=4"},
      {"? in the text", "=?UTF-8?Q?what?\?=", "what?"},
      {"Base64 without padding", "=?UTF-8?B?YQ?= =?UTF-8?B?YmI?=", "abb"},
      {"text behind padding", "=?UTF-8?B?44GCYQ==44GE?=", "あaい"},
      {"no encoded word", "=?UTF-8?X?abc?= =? ?= =?=", "=?UTF-8?X?abc?= =? ?= =?="},
      {"=? before a word", "=?=?UTF-8?B?44GC?=", "=?あ"},

      {"without ?= at the end", "=?UTF-8?B?44GC", "あ"},
      {"without the last =", "=?UTF-8?B?44GC? <a@b>", "あ <a@b>"},
      {"without ?= before text", "=?UTF-8?Q?=E3=81=82 <a@b>", "あ <a@b>"},
      {"without ?=, glued to text", "=?UTF-8?B?44GC<a@b>", "あ<a@b>"},
      {"without ?= before a word", "=?UTF-8?B?44GC =?UTF-8?B?44GE?=", "あい"},
      {"without ?=, glued to a word", "=?UTF-8?B?44GC=?UTF-8?B?44GE?=", "あい"},

      {"language", "=?utf-8*ja?B?44GC?= =?utf-8*en-US?B?44GE?=", "あい"},
      {"x-sjis", "=?x-sjis?B?gqA=?=", "あ"},
      {"windows-31j, machine-dependent", "=?Windows-31J?B?h0A=?=", "①"},
      {"iso-2022-jp-ms", "=?iso-2022-jp-ms?B?GyRCLSEbKEI=?=", "①"},
      {"cp50220", "=?cp50220?B?GyRCJCIbKEI=?=", "あ"},
      {"cp50220-2", "=?cp50220-2?B?GyRCJCIbKEI=?=", "あ"},
      {"unknown label, ISO-2022-JP", "=?x-nobody?B?GyRCJCIbKEI=?=", "あ"},
      {"unknown label, UTF-8", "=?x-nobody?B?44GC?=", "あ"},
      {"unknown label, ASCII", "=?x-nobody?Q?abc?=", "abc"},
      {"no label", "=??B?44GC?=", "あ"},
      {"a label that lies", "=?iso-2022-jp?B?44GC44GE44GG44GI?=", "あいうえ"},
      {"us-ascii that is not", "=?us-ascii?Q?=E3=81=82=E3=81=84?=", "あい"},
      {"windows text as ISO-8859-1", "=?iso-8859-1?Q?=80_=93x=94?=", "€ “x”"},
      {"half-width katakana by SO", "=?ISO-2022-JP?B?DjEyDw==?=", "ｱｲ"},
      {"UTF-7", "=?utf-7?Q?M+APw-zner?=", "Müzner"},
      {"UTF-16 with its mark", "=?utf-16?B?/v8wQjBE?=", "あい"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Decoded(c.raw), c.expected);
  }
}

TEST(DecodeHeaderText, DecodesByTheLetter) {
  const struct {
    const char* encoding;
    const char* text;
    int result;
    const char* expected;
  } cases[] = {
      {"q", "a_b=41", 1, "a_bA"}, {"Q", "=E3=81=82 ", 1, "\xe3\x81\x82"},
      {"b", "YQ==YWJj", 1, "a"},  {"B", "YWJ", 1, ""},
      {"Q", nullptr, 1, ""},      {"X", "YQ==", 0, "old"},
      {"BB", "YQ==", 0, "old"},   {nullptr, "YQ==", 0, "old"},
  };
  for (const auto& c : cases) {
    CBuffer out("old");
    EXPECT_EQ(DecodeHeaderText(c.encoding, c.text, out), c.result) << (c.text ? c.text : "null");
    EXPECT_EQ(out.Bytes(), c.expected);
  }
}

TEST(DecodeHeaderValue, ReadsRawText) {
  const std::u16string subject = u"日本語の件名です";
  for (const CodeType codeType : {CT_UTF8, CT_SJIS, CT_EUC, CT_JIS}) {
    CBuffer raw;
    ConvertToOtherCodeType2(CT_UNICODE, BytesOf(subject), codeType, raw);
    const std::string bytes = "Re: " + String(raw) + "\r\n =?UTF-8?Q?=3F?= " + String(raw);
    EXPECT_EQ(Decoded(bytes), "Re: " + Utf8(subject) + " ? " + Utf8(subject)) << codeType;
  }
  // Two characters could be anything: the label of the body decides.
  EXPECT_EQ(Decoded("\xb1\xb2", "Shift_JIS"), "ｱｲ");
  EXPECT_EQ(Decoded("\xb1\xb2", "EUC-JP"), "渦");
  // Halves of two-byte characters begin no word.
  const std::string kanji = "\x1b$B=?=?=?UTF-8?B?44GC?=\x1b(B";
  CBuffer text;
  ConvertToOtherCodeType2(CT_JIS, kanji, CT_UNICODE, text);
  EXPECT_EQ(DecodeHeaderValue(kanji), text.Units());
}

TEST(DecodeHeaderValue, LetsNoControlCharacterThrough) {
  const struct {
    std::string_view raw;
    const char* expected;
  } cases[] = {
      {"=?UTF-8?Q?a=0D=0ABcc:_x?=", "a Bcc: x"},
      {"=?UTF-8?B?YQANCgBi?=", "a b"},
      {"=?UTF-8?Q?a=1B[31mb=7F=00?=", "a[31mb"},
      {"=?UTF-8?Q?a=C2=85b=C2=9Bc=E2=80=A8=E2=80=A9d?=", "a bc d"},
      {"=?UTF-8?Q?=EF=BB=BF=EF=BB=BFab?=", "ab"},
      {"=?UTF-8?Q?=ED=A0=80=ED=B0=80ab?=", "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDab"},
      {"=?ISO-2022-JP?Q?a=09=0B=0Cb=1B?=", "a b"},
      {"=?UTF-7?Q?a+AAoADQ-b?=", "a b"},
      {"=?UTF-16BE?B?AGEACgBi?=", "a b"},
      {"a\x01\tb\0c\x0b"sv, "a bc "},
      {"\xe3\x81\x82\x1b\x07\xe3\x81\x84", "あい"},
  };
  for (const auto& c : cases) EXPECT_EQ(Decoded(c.raw), c.expected) << c.raw;
}

// ---- Words that are cut anywhere ----

std::string Word(const char* label, bool isBase64, std::string_view bytes) {
  std::string text;
  if (isBase64) {
    text = Base64(bytes, 0);
  } else {
    CBuffer escaped;
    EncodeHex(bytes, 1, escaped);
    text = String(escaped);
    std::replace(text.begin(), text.end(), '%', '=');
  }
  return "=?" + std::string(label) + (isBase64 ? "?B?" : "?Q?") + text + "?=";
}

TEST(DecodeHeaderValue, JoinsWordsAtEveryCut) {
  const struct {
    CodeType codeType;
    const char* label;
  } charsets[] = {
      {CT_JIS, "ISO-2022-JP"}, {CT_SJIS, "Shift_JIS"}, {CT_EUC, "EUC-JP"}, {CT_UTF8, "UTF-8"}};
  for (const char16_t* subject : kSubjects) {
    for (const auto& charset : charsets) {
      CBuffer text;
      ConvertToOtherCodeType2(CT_UNICODE, BytesOf(subject), charset.codeType, text);
      const std::string_view bytes = text.Bytes();
      // What the charset has; the JIS forms of "～" differ from the subject's.
      CBuffer carried;
      ConvertToOtherCodeType2(charset.codeType, bytes, CT_UNICODE, carried);
      const std::string expected = Utf8(carried.Units());
      for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        for (const int kinds : {0, 1, 2, 3}) {
          const std::string raw = Word(charset.label, kinds & 1, bytes.substr(0, cut)) + "\r\n " +
                                  Word(charset.label, kinds & 2, bytes.substr(cut));
          ASSERT_EQ(Decoded(raw), expected) << charset.label << " cut at " << cut << ": " << raw;
        }
      }
      // Every byte a word.
      std::string raw;
      for (const char byte : bytes) raw += Word(charset.label, true, {&byte, 1}) + " ";
      ASSERT_EQ(Decoded(raw), expected) << charset.label;
    }
    const std::string whole = Word("UTF-8", true, Utf8(subject));
    EXPECT_EQ(Decoded(whole), Utf8(subject));
  }
}

// The Base64 text itself, cut without regard to its groups.
TEST(DecodeHeaderValue, JoinsBase64Groups) {
  for (const char16_t* subject : kSubjects) {
    const std::string text = Base64(Utf8(subject), 0);
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
      const std::string raw =
          "=?UTF-8?B?" + text.substr(0, cut) + "?= =?UTF-8?B?" + text.substr(cut) + "?=";
      ASSERT_EQ(Decoded(raw), Utf8(subject)) << raw;
    }
  }
}

TEST(DecodeHeaderValue, TakesTheReadingWithFewerErrors) {
  const struct {
    const char* what;
    std::string raw;
    const char* expected;
  } cases[] = {
      {"closed words",
       Word("ISO-2022-JP", true, "\x1b$B$\"\x1b(B") + " " + Word("ISO-2022-JP", true, "abc"),
       "あabc"},
      {"an open word, then ASCII that is no kanji",
       Word("ISO-2022-JP", true, "\x1b$B$\"") + " " + Word("ISO-2022-JP", false, " abc"), "あ abc"},
      {"open words with escapes of their own",
       Word("ISO-2022-JP", true, "\x1b$B$\"") + " " + Word("ISO-2022-JP", true, "\x1b$B$$"),
       "あい"},
      {"an open word, and one that goes on without an escape",
       Word("ISO-2022-JP", true, "\x1b$B$\"") + " " + Word("ISO-2022-JP", true, "$$\x1b(B"),
       "あい"},
      {"half a character is missing, the next word is complete",
       Word("Shift_JIS", true, "\x82\xa0\x82") + " " + Word("Shift_JIS", true, "\x82\xa0\x82\xa4"),
       "あ・あう"},
      {"UTF-7 runs without their end", "=?UTF-7?Q?+MEI?= =?UTF-7?Q?+MEQ?=", "あい"},
      {"a UTF-7 run that is cut", "=?UTF-7?Q?+ME?= =?UTF-7?Q?IwRA-?=", "あい"},
      {"big-endian words, one mark", "=?UTF-16?B?/v8wQg==?= =?UTF-16?B?MEQwRg==?=", "あいう"},
      {"a label that lies, cut inside a character",
       Word("us-ascii", true, "\xe3\x81") + " " + Word("us-ascii", true, "\x82"), "あ"},
      {"the same in a single-byte set",
       Word("iso-8859-1", true, "\xe3\x81") + " " + Word("iso-8859-1", true, "\x82"), "あ"},
      {"UTF-8 words with a mark each",
       Word("utf-8", true,
            "\xef\xbb\xbf"
            "a") +
           " " + Word("utf-8", true, "\xef\xbb\xbf\xe3\x81\x82"),
       "aあ"},
      {"big-endian words with a mark each", "=?UTF-16?B?/v8wQg==?= =?UTF-16?B?/v8wRA==?=", "あい"},
  };
  for (const auto& c : cases) EXPECT_EQ(Decoded(c.raw), c.expected) << c.what;
}

// Whatever is not linear here takes minutes.
TEST(DecodeHeaderValue, EndsOnHostileInput) {
  const auto repeat = [](std::string_view text, int count) {
    std::string all;
    while (count-- > 0) all += text;
    return all;
  };
  const std::string inputs[] = {
      repeat("=?", 500000),
      repeat("=?u?Q?", 200000),
      repeat("=?u?Q?a", 200000),
      repeat("=?u?Q?a?", 200000),
      repeat("=?utf-8?Q?=E3?= ", 20000),
      repeat("=?utf-8?B?4?= ", 20000),
      repeat("=?iso-2022-jp?B?GyQ=?= ", 20000),
      repeat("=?iso-2022-jp?Q?=1B$B$?= ", 20000),
      repeat("=?utf-7?Q?+M?= ", 20000),
      repeat("\x1b$", 500000),
      repeat("\x1b$=?", 500000),
      repeat("=?x?B?", 100000) + repeat(" ", 1000000),
      "=?utf-8?B?" + repeat("44GC", 250000) + "?=",
      "=?utf-8?Q?" + std::string(1000000, ' ') + "?=",
      std::string(1000000, '\r'),
      repeat(" \r\n", 300000) + "a",
      repeat("a \r\n ", 200000),
  };
  for (const std::string& input : inputs) {
    EXPECT_LE(DecodeHeaderValue(input).size(), input.size());
  }
}

TEST(DecodeHeaderValue, HoldsItsPropertiesOnRandomInput) {
  constexpr unsigned kSeed = 2047;
  std::mt19937 random(kSeed);
  const std::string_view pieces[] = {
      "=?",     "?=",   "?B?", "?Q?",   "utf-8",  "iso-2022-jp", "shift_jis",
      "utf-7",  "*ja",  " ",   "\r\n ", "=1B$B",  "=1B(B",       "=82",
      "=E3=81", "GyRC", "JCI", "+MEI-", "\x1b$B", "\x1b(B",      "\x82\xa0",
      "\xe3",   "a",    "?",   "=",     "_",      "\x7f",        "=00=0A"};
  for (int round = 0; round < 20000; ++round) {
    std::string raw;
    for (std::size_t n = random() % 24; n > 0; --n) raw += pieces[random() % std::size(pieces)];
    const CStringW text = DecodeHeaderValue(TightCopy(raw));
    ASSERT_LE(text.size(), raw.size()) << raw;
    for (const char16_t unit : text) {
      ASSERT_FALSE(unit < 0x20 || (unit >= 0x7f && unit < 0xa0) || unit == 0x2028 || unit == 0x2029)
          << "seed " << kSeed << ": " << raw;
    }
  }
}

}  // namespace
}  // namespace lumr
