// lumr grep over files. The arguments are ASCII: not every shell that this runs in takes more.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "charset/convert_text.h"
#include "tool/tool_runner.h"

namespace lumr::test {

namespace {

TEST(Grep, LinesOfFiles) {
  const ToolRunner tool;
  tool.Write("a", "one two\nONE\n\nthree one one\n");
  tool.Write("b", "two\r\nfour\rfive");
  tool.Write("empty", "");
  tool.Write("binary", std::string_view("x\none\0two\n", 10));
  tool.Write("escape", "one \x1B]0;title\x07\n");
  std::filesystem::create_directories("folder/inner");
  tool.Write("folder/inner/c", "one\n");
  tool.Write("folder/d", "none, no one\n");
  tool.Check({
      {"grep one a", "", "one two\nthree one one\n"},
      {"grep -i one a", "", "one two\nONE\nthree one one\n"},
      {"grep -n -b one a", "", "1:0:one two\n4:13:three one one\n"},
      {"grep -o -b one a", "", "0:one\n19:one\n23:one\n"},
      {"grep -c one a b", "", "a:2\nb:0\n"},
      {"grep -l two a b empty", "", "a\nb\n"},
      {"grep -n five b", "", "3:five\n"},
      {"grep one two a", "", "one two\nthree one one\n"},
      {"grep --all one two a", "", "one two\n"},
      {"grep --any -e one -e four a b", "", "a:one two\na:three one one\nb:four\n"},
      {"grep -E \"([oO][nN].)|(five)\" -o b a", "", "b:five\na:one\na:ONE\na:one\na:one\n"},
      {"grep -E \"^t.*e$\" -c a", "", "1\n"},
      {"grep -E \"^$\" -n a", "", "3:\n"},
      {"grep zero a empty", "", "", 1},
      {"grep one empty", "", "", 1},
      {"grep -e one missing a", "", "a:one two\na:three one one\n", 2, "missing: cannot be read"},
      {"grep one folder", "", "", 2, "folder: cannot be read"},
      {"grep -r one folder", "", "folder/d:none, no one\nfolder/inner/c:one\n"},
      {"grep one binary", "", "binary file binary matches\n"},
      {"grep -c one binary", "", "1\n"},
      {"grep --json one binary", "", "{\"file\":\"binary\",\"binary\":true}\n"},
      {"grep two escape -n", "", "", 1},
      {"grep one escape", "", "one \xE2\x90\x9B]0;title\xE2\x90\x87\n"},
      {"grep --color always -n one folder/d", "",
       "\x1B[32m1\x1B[m\x1B[36m:\x1B[mn\x1B[1;31mone\x1B[m, no \x1B[1;31mone\x1B[m\n"},
      {"grep", "", "", 2, "no word"},
      {"grep \"\" a", "", "", 2, "no word"},
      {"grep -e one -E two a", "", "", 2, "wrong usage"},
      {"grep -E \"a(b\" a", "", "", 2, "pattern 'a(b', character 4: "},
      {"grep -E \"[z-a]\" a", "", "", 2, "(code 8)"},
      {"grep -f nothing one a", "", "", 2, "unknown charset"},
      {"grep --all --any one a", "", "", 2, "wrong usage"},
      {"grep --mail --byte-offset one a", "", "", 2, "--byte-offset cannot go with"},
      // Exponential: given up on, not for ever, nor as if nothing were there.
      {"grep -E \"{a+}{a+}{a+}{a+}{a+}{a+}{a+}{a+}\\0\\1c\" -", std::string(40, 'a') + "b\n", "", 2,
       "line 1: the match takes too many steps"},
  });
  EXPECT_NE(tool.Run("grep --explain a+").out.find("Accept"), std::string::npos);
}

TEST(Grep, EveryCharset) {
  const ToolRunner tool;
  const std::string text = "漢字\r\nかなＡと\nx";
  const struct {
    const char* name;
    CodeType codeType;
    std::string_view letter;  // the full-width A
  } charsets[] = {{"utf-8", CT_UTF8, "\xEF\xBC\xA1"},
                  {"sjis", CT_SJIS, "\x82\x60"},
                  {"euc", CT_EUC, "\xA3\xC1"},
                  {"jis", CT_JIS, "#A"},
                  {"utf-7", CT_UTF7, "a"},
                  {"utf-16", CT_UNICODE, "\x21\xFF"}};
  for (const auto& charset : charsets) {
    SCOPED_TRACE(charset.name);
    const std::string bytes = Encoded(text, charset.codeType);
    tool.Write("file", bytes);
    const auto lines =
        JsonLines(tool.Run("grep --json -i -w a file -f " + std::to_string(charset.codeType)).out);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].at("line"), 2);
    EXPECT_EQ(lines[0].at("text"), "かなＡと");
    const auto& match = lines[0].at("matches").at(0);
    EXPECT_EQ(match.at("start"), 2);
    EXPECT_EQ(match.at("text"), "Ａ");
    const auto offset = match.at("offset").get<std::size_t>();
    if (charset.codeType != CT_UTF7) {
      EXPECT_EQ(bytes.substr(offset, charset.letter.size()), charset.letter);
    }
    EXPECT_EQ(bytes.substr(0, lines[0].at("offset")), Encoded("漢字\r\n", charset.codeType));
  }
  const struct {
    const char* what;
    std::string_view bytes, arguments, out;
  } broken[] = {
      {"half a character keeps the line", "x\x82\nab\n", "-f sjis -n ab", "2:ab\n"},
      {"kanji go on behind a line break", "\x1B$B#A\n#A\x1B(B\n", "-f jis -n -b -o -w A",
       "1:3:Ａ\n2:6:Ａ\n"},
      {"a mark at the start", "\xEF\xBB\xBFxA\n", "-b -o A", "4:A\n"},
      {"a surrogate pair is not cut", "\xF0\x9F\x98\x80-\n", "-E \".-\" -o", "\xF0\x9F\x98\x80-\n"},
      {"damaged UTF-8 before the match", "\xE3\x81\xE3\x81\x82\x82\x41\n", "-f utf-8 -b -o A",
       "6:A\n"},
      {"big-endian", std::string_view("\xFE\xFF\0x\0A\0\n", 8), "-b -o A", "4:A\n"},
  };
  for (const auto& c : broken) {
    SCOPED_TRACE(c.what);
    tool.Write("file", c.bytes);
    EXPECT_EQ(tool.Run("grep " + std::string(c.arguments) + " file").out, c.out);
  }
}

// Lines are looked at together where none matches: numbers and offsets must not suffer.
TEST(Grep, LongTexts) {
  const ToolRunner tool;
  std::string text;
  std::string expected;
  for (int line = 1; line <= 30000; ++line) {
    const bool matches = line % 7001 == 0;
    if (matches) {
      expected += std::to_string(line) + ':' + std::to_string(text.size()) + ":needle " +
                  std::to_string(line) + '\n';
    }
    text +=
        (matches ? "needle " : "straw ") + std::to_string(line) + (line % 2 == 0 ? "\n" : "\r\n");
  }
  tool.Write("file", text);
  tool.Check({
      {"grep -n -b -i -e NEEDLE file", "", expected},
      {"grep -n -b -E n[e]+dle file", "", expected},
      {"grep -n -b -E \"needle [0-9]+$\" file", "", expected},
  });
}

}  // namespace

}  // namespace lumr::test
