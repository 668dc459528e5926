// What decoders make of text that no encoder writes: the strict whole-text functions and streaming
// coders, and the lenient streaming coders.
#pragma once

#include <string_view>

#include "lumrmisc/mailtext/transfercoder.h"

namespace lumr {

struct DecodeRow {
  const char* what;
  TransferEncoding encoding;
  std::string_view text;
  std::string_view expected;
  int wellFormed;
  std::string_view lenient;
  int lenientWellFormed;
};

inline constexpr auto kB64 = TransferEncoding::kBase64;
inline constexpr auto kQp = TransferEncoding::kQuotedPrintable;
inline constexpr auto kUu = TransferEncoding::kUuencode;
inline constexpr auto kHex = TransferEncoding::kHex;
inline constexpr auto kUrl = TransferEncoding::kUrl;
inline constexpr auto kImap = TransferEncoding::kImapUtf7;

using namespace std::string_view_literals;

inline constexpr DecodeRow kDecodeRows[] = {
    {"nothing", kB64, "", "", 1, "", 1},
    {"what follows padding", kB64, "YQ==YWJj", "a", 0, "aabc", 1},
    {"white space behind padding", kB64, "YQ==\r\n \t", "a", 1, "a", 1},
    {"two bytes and padding", kB64, "YWI=YWJj", "ab", 0, "ababc", 1},
    {"an incomplete group", kB64, "YWJjYWJ", "abc", 0, "abcab", 0},
    {"two characters of a group", kB64, "YQ", "", 0, "a", 0},
    {"one character of a group", kB64, "YWJjY", "abc", 0, "abc", 0},
    {"white space", kB64, "Y W\r\nJ\tj", "abc", 1, "abc", 1},
    {"other characters are skipped", kB64, "Y*W-J\x80j\0"sv, "abc", 0, "abc", 0},
    {"= is 0 at the first two places", kB64, "=A==", "\0"sv, 0, "", 0},
    {"= at the third place ends it all", kB64, "YW=jYWJj", "a", 0, "a\x8d\x85\x89", 0},
    {"= at the second place is 0", kB64, "Y=JjYWJj",
     "\x60\x02\x63"
     "abc",
     0, "\x60\x98\xd8\x58\x98", 0},
    {"one = is missing", kB64, "YQ=", "", 0, "a", 0},
    {"one = is missing before more", kB64, "YQ=YWJj", "a", 0, "aabc", 0},
    {"too many =", kB64, "YWI===", "ab", 0, "ab", 0},
    {"the whole alphabet", kB64, "+/+/", "\xfb\xff\xbf", 1, "\xfb\xff\xbf", 1},

    {"soft break with white space", kQp, "ab=  \r\ncd", "abcd", 1, "abcd", 1},
    {"soft breaks of CR and of LF", kQp, "a=\rb=\nc=\r\rd", "abc\rd", 1, "abc\rd", 1},
    {"a soft break takes one line break", kQp, "a=\n\nb=\n\rc", "a\nb\rc", 1, "a\nb\rc", 1},
    {"half an escape at the end", kQp, "x=4", "x=4", 0, "x=4", 0},
    {"= at the end", kQp, "x=", "x", 0, "x", 0},
    {"= and white space at the end", kQp, "x= \t", "x", 0, "x", 0},
    {"no escape", kQp, "=4g==41= x=\xe9", "=4g=A= x=\xe9", 0, "=4g=A= x=\xe9", 0},
    {"digits of either case", kQp, "=e3=8A=Ff", "\xe3\x8a\xff", 1, "\xe3\x8a\xff", 1},
    {"white space before a line break", kQp, "ab   \r\nc \t\n\t\r", "ab\r\nc\n\r", 1, "ab\r\nc\n\r",
     1},
    {"white space at the end", kQp, "a b \t", "a b", 1, "a b", 1},
    {"an encoded space is content", kQp, "a =20 \r\n", "a  \r\n", 1, "a  \r\n", 1},
    {"white space before a soft break", kQp, "a =\r\n \r\nb", "a \r\nb", 1, "a \r\nb", 1},
    {"= before white space and text", kQp, "a=  b", "a=  b", 0, "a=  b", 0},
    {"8 bits, NUL and controls", kQp, "\xe3\0\x0b\x7f"sv, "\xe3\0\x0b\x7f"sv, 1, "\xe3\0\x0b\x7f"sv,
     1},
    {"underscore", kQp, "a_b=41", "a_bA", 1, "a_bA", 1},

    {"nothing", kUu, "", "", 1, "", 0},
    {"text before begin", kUu, "begin the\nbegin 644 a\n#0V%T\n`\nend\n", "", 0, "Cat", 1},
    {"no begin", kUu, "#0V%T\n`\nend\n", "", 0, "", 0},
    {"many spaces", kUu, "begin             644                a\n`\nend\n", "", 1, "", 1},
    {"a short line", kUu, "begin 644 a\n&0V%T\n#0V%T\n`\nend\n", "", 0, "Cat\0\0\0Cat"sv, 0},
    {"end without the line before", kUu, "begin 644 a\n#0V%T\nend\n", "Cat", 0, "Cat", 0},
    {"white space behind end", kUu, "begin 644 a\n`\nend \nxyz", "", 0, "", 1},
    {"cut short", kUu, "begin 644 a\n#0V%T\n#0V%T", "CatCat", 0, "CatCat", 0},

    {"broken escapes", kHex, "%4g%%41%4", "%4g%A%4", 0, "%4g%A%4", 0},
    {"a plus", kHex, "a+%2b", "a++", 1, "a++", 1},
    {"a plus in a form", kUrl, "a+%2b", "a++", 1, "a +", 1},
    {"NUL", kUrl, "\0%00"sv, "\0\0"sv, 1, "\0\0"sv, 1},

    {"a run without its end", kImap, "a&ZeU", "a\0\xe5\x65"sv, 0, "a\0\xe5\x65"sv, 0},
    {"a run ended by another sign", kImap, "&ZeU ab-c",
     "\xe5\x65"
     "c\0"sv,
     0,
     "\xe5\x65"
     "c\0"sv,
     0},
    {"& at the end", kImap, "a&", "a\0"sv, 0, "a\0"sv, 0},
    {"8 bits", kImap, "\xe9", "\xe9\0"sv, 0, "\xe9\0"sv, 0},
    {"half a unit", kImap, "&ZeVn-", "\xe5\x65"sv, 0, "\xe5\x65"sv, 0},
    {"a lone minus", kImap, "a-&-", "a\0-\0&\0"sv, 1, "a\0-\0&\0"sv, 1},
};

}  // namespace lumr
