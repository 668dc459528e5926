// The commands that read no mail.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <sstream>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/mailtext/transfer.h"
#include "tool/tool_runner.h"

namespace lumr::test {

namespace {

constexpr char kKanjiUtf8[] = "\xE6\xBC\xA2\xE5\xAD\x97";
constexpr char kKanjiSJis[] = "\x8A\xBF\x8E\x9A";
constexpr char kKanjiJis[] = "\x1B$B4A;z\x1B(B";
constexpr char kKanjiEuc[] = "\xB4\xC1\xBB\xFA";
constexpr char kHangulUtf8[] = "\xED\x95\x9C";

}  // namespace

TEST(Convert, GivesTheTextAndSaysWhatWasLost) {
  ToolRunner().Check({
      {"convert -f utf-8 -t iso-2022-jp", kKanjiUtf8, kKanjiJis},
      {"convert -f cp932 -t euc-jp -", kKanjiSJis, kKanjiEuc},
      {"convert -f 11 -t 12", kKanjiEuc, kKanjiSJis},
      {"convert -t utf-8", kKanjiJis, kKanjiUtf8},
      {"convert -t utf-8"},
      {"convert -f utf-8 -t shift_jis", kHangulUtf8, "?", 1, "lacks were replaced: 1 (at byte 0)"},
      {"convert -f utf-8 -t shift_jis --strict", kHangulUtf8, "", 1, "nothing was written"},
      {"convert -f utf-8 -t shift_jis --strict", kKanjiUtf8, kKanjiSJis},
      {"convert -f utf-8 -t utf-16 --report", "a", std::string_view("a\0", 2), 0, "exactly"},
      {"convert -t utf-8 --report", kKanjiSJis, kKanjiUtf8, 0, "detected as Shift_JIS"},
      {"convert -f utf-8 -t x-nothing", "a", "", 2, "cannot convert to the charset 'x-nothing'"},
      {"convert -f utf-8 -t us-ascii", "a", "", 2, "cannot convert to the charset 'us-ascii'"},
      {"convert -t utf-8", "caf\xE9 x", "", 1, "cannot be detected"},
      {"convert -f shift_jis -t utf-8", "\x82", "\xE3\x83\xBB", 1, "cannot be read as Shift_JIS"},
      {"convert -t utf-8", std::string(1500, 'a') + kKanjiSJis,
       std::string(1500, 'a') + kKanjiUtf8},
      {"convert -f 999 -t utf-8", "a", "", 2, "unknown charset '999'"},
      {"convert -f utf-8", "a", "", 2, "wrong usage"},
      {"convert -t utf-8 --in-place", "a", "", 2, "--in-place needs"},
      {"convert -t utf-8 --in-place -", "a", "", 2, "--in-place needs"},
  });
}

TEST(Convert, InPlaceKeepsWhatItCannotReplace) {
  const ToolRunner tool;
  tool.Write("good", kKanjiSJis);
  tool.Write("lossy", kHangulUtf8);
  RunResult result = tool.Run("convert -f sjis -t utf-8 --in-place --json good missing");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(tool.Read("good"), kKanjiUtf8);
  EXPECT_EQ(tool.Read("missing"), "(missing)");
  EXPECT_EQ(JsonLines(result.out).at(0).at("written"), true);

  result = tool.Run("convert -f utf-8 -t euc-jp --in-place --strict good lossy");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(tool.Read("good"), kKanjiEuc);
  EXPECT_EQ(tool.Read("lossy"), kHangulUtf8);
  EXPECT_EQ(tool.FileCount(), 2u);  // nothing is left beside

  result = tool.Run("convert -f utf-8 -t euc-jp --in-place --json lossy");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(tool.Read("lossy"), "?");
  const Json report = JsonLines(result.out).at(0);
  EXPECT_EQ(report.at("replaced"), 1);
  EXPECT_EQ(report.at("losses").at(0).at("length"), 3);
}

TEST(Convert, StreamsWhatTheWholeGives) {
  // Prose with a line of every length, so that pieces are cut at every kind of border.
  std::string prose;
  std::mt19937 random(20240601);
  const std::string_view words[] = {"abc ", kKanjiUtf8, "\xE3\x81\x8B\xE3\x81\xAA", "\n", "-- "};
  while (prose.size() < 3'000'000) prose += words[random() % std::size(words)];
  const ToolRunner tool;
  for (const CodeType codeType : {CT_JIS, CT_EUC, CT_SJIS, CT_UTF7, CT_UNICODE}) {
    SCOPED_TRACE(codeType);
    CBuffer whole;
    ConvertToOtherCodeType2(CT_UTF8, prose, codeType, whole);
    const std::string number = std::to_string(codeType);
    const RunResult there = tool.Run("convert -f utf-8 -t " + number, prose);
    EXPECT_EQ(there.status, 0) << there.err;
    EXPECT_TRUE(there.out == whole.Bytes());
    const RunResult back = tool.Run("convert -t utf-8 -f " + number, there.out);
    EXPECT_EQ(back.status, 0) << back.err;
    EXPECT_TRUE(back.out == prose);
  }
}

TEST(Detect, NamesTheTellingByte) {
  const struct {
    std::string_view content;
    int status;
    int codeType;
    const char* rule;
    int offset;  // -1: none
  } cases[] = {
      {"abc\n", 0, 1, "plain-ascii", -1},     {kKanjiJis, 0, 10, "escape", 0},
      {"ab\x8A\xBF", 0, 12, "sjis-byte", 2},  {"abc\xF4\xA1", 0, 11, "euc-byte", 3},
      {"a\xE6\xBC\xA2", 0, 1008, "utf-8", 1}, {"", 1, 1, "empty", -1},
      {"\xA4\xA2", 0, 11, "ambiguous", 1},
  };
  const ToolRunner tool;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.rule);
    const RunResult result = tool.Run("detect --json -", c.content);
    EXPECT_EQ(result.status, c.status) << result.err;
    const Json found = JsonLines(result.out).at(0);
    EXPECT_EQ(found.at("codeType"), c.codeType);
    EXPECT_EQ(found.at("rule"), c.rule);
    EXPECT_EQ(found.value("offset", -1), c.offset);
  }
}

TEST(Transfer, EncodesDecodesAndSaysWhatIsMalformed) {
  ToolRunner().Check({
      {"encode base64", "abc", "YWJj\r\n"},
      {"encode base64 --wrap 0", "abc", "YWJj"},
      {"encode qp", "a=\xE3\n", "a=3D=E3\r\n"},
      {"encode qp --binary", "a\n", "a=0A"},
      {"encode uu --name photo.jpg", "", "begin 644 photo.jpg\r\n`\r\nend\r\n"},
      {"encode hex", "a/", "a%2F"},
      {"encode hex --all", "a", "%61"},
      {"encode url", "a b", "a+b"},
      {"encode imap", "\xE6\x97\xA5\na&b\n", "&ZeU-\na&-b\n"},
      {"decode imap", "&ZeU-\na&-b\n", "\xE6\x97\xA5\na&b\n"},
      {"encode imap", "\xFF", "&,,0-", 1, "not valid UTF-8"},
      {"decode base64", "YWJj\n", "abc"},
      {"decode base64", "YWJj!", "abc", 1, "not well-formed base64"},
      {"decode qp", "a=3D=\r\nb", "a=b"},
      {"decode url", "a+b%2f", "a b/"},
      {"decode uu", "begin 644 a\n#86)C\n`\n", "abc", 1, "not well-formed uu"},
      {"decode binhex", "no such block", "", 1, "not well-formed binhex"},
      {"encode binhex", "a", "", 2, "only be decoded"},
      {"encode qp --wrap 10", "a", "", 2, "--wrap is an option of base64 alone"},
      {"encode base64 --binary", "a", "", 2, "--binary is an option of qp alone"},
      {"encode uu --all", "a", "", 2, "--all is an option of hex alone"},
      {"encode hex --name a", "a", "", 2, "--name is an option of uu alone"},
      {"encode uu --name \"a\tb\"", "a", "", 2, "--name (byte 2)"},
      {"decode rot13", "a", "", 2, "unknown encoding 'rot13'"},
      {"decode", "a", "", 2, "wrong usage"},
  });
}

TEST(Transfer, StreamsAndComesBack) {
  std::string bytes(1'000'003, '\0');
  std::mt19937 random(7);
  for (char& c : bytes) c = static_cast<char>(random());
  const ToolRunner tool;
  for (const std::string encoding : {"base64", "qp --binary", "uu", "hex", "url"}) {
    SCOPED_TRACE(encoding);
    const RunResult encoded = tool.Run("encode " + encoding, bytes);
    EXPECT_EQ(encoded.status, 0) << encoded.err;
    const RunResult back =
        tool.Run("decode " + encoding.substr(0, encoding.find(' ')), encoded.out);
    EXPECT_EQ(back.status, 0) << back.err;
    EXPECT_TRUE(back.out == bytes);
  }
}

TEST(Tool, AnswersBadInputWithASentence) {
  ToolRunner().Check({
      {"detect missing", "", "", 2, "missing: cannot be read: there is no such file"},
      {"detect .", "", "", 2, ".: cannot be read: it is a folder"},
      {"convert -f utf-8 -t sjis missing", "", "", 2, "there is no such file"},
      {"convert -f utf-8 -t sjis .", "", "", 2, "it is a folder"},
      {"decode base64 missing", "", "", 2, "there is no such file"},
      {"", "", "", 2, "wrong usage"},
      {"frobnicate", "", "", 2, "unknown command 'frobnicate'"},
      {"detect --foo --bar=b a", "", "", 2, "this was not expected: --foo --bar=b"},
      {"wrap -w x", "", "", 2, "the value 'x' of --width is no number from 1 to 1048576"},
      {"--lang ja wrap -w", "", "", 2, "--width の値がありません"},
      {"grep --color a b", "", "", 2, "--color cannot be 'a', only one of auto,always,never"},
      {"grep --all --any a", "", "", 2, "--any and --all exclude each other"},
      {"html safe --report", "", "", 2, "--report needs --strict too"},
      {"html charset a b c", "", "", 2, "at most 2 of NAME FILE, and there are 3"},
      {"detect --json=x a", "", "", 2, "--json cannot be 'x'"},
      {"encode --lang ja", "", "", 2, "使い方が違います: ENCODING がありません"},
      {"address foo --lang ja", "", "", 2, "使い方が違います: コマンド「foo」は知りません"},
      {"detect --lang tlh -", "a", "", 2, "unknown language 'tlh'"},
      {"detect --lang ja missing", "", "", 2, "\xE8\xAA\xAD\xE3\x82\x81\xE3\x81\xBE\xE3\x81\x9B"},
  });
}

TEST(Tool, HelpsInBothLanguages) {
  const ToolRunner tool;
  for (const std::string command :
       {"", "show", "detect", "convert", "encode", "decode", "charsets"}) {
    SCOPED_TRACE(command);
    const RunResult english = tool.Run(command + " --help --lang en");
    const RunResult japanese = tool.Run(command + " --help --lang ja");
    EXPECT_EQ(english.status, 0) << english.out << english.err;
    EXPECT_EQ(japanese.status, 0) << japanese.out << japanese.err;
    EXPECT_EQ(english.out.find_first_not_of(
                  "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 \n"
                  ".,:;()[]{}<>|/&'*=~+-\xE5\x8F\x97\xE4\xBF\xA1\xE7\xAE\xB1"),  // 受信箱
              std::string::npos)
        << english.out;
    EXPECT_NE(japanese.out.find("\xE4\xBD\xBF\xE3\x81\x84\xE6\x96\xB9"), std::string::npos)
        << japanese.out;
  }
}

TEST(Tool, KeepsToTheTerminal) {
  const ToolRunner tool;
  tool.Write("text", "a\x1B[31mb\xC2\x9Bm\n");
  if (!tool.OnTerminal(60, "charsets")) GTEST_SKIP() << "there is no script command";
  const auto show = [&tool](const std::string& arguments) {
    return *tool.OnTerminal(60, arguments);
  };
  EXPECT_EQ(show("wrap text"), "a\u241B[31mb\uFFFDm\n");
  EXPECT_EQ(show("unwrap text"), "a\u241B[31mb\uFFFDm\n");
  for (const std::string language : {"en", "ja"}) {
    std::istringstream help(show("--help --lang " + language));
    int lines = 0;
    for (std::string line; std::getline(help, line); ++lines) {
      int columns = 0;
      for (const char c : line) columns += (c & 0x80) == 0 ? 1 : (c & 0xC0) == 0xC0 ? 2 : 0;
      EXPECT_LE(columns, lines == 0 ? 80 : 60) << line;  // what it is about is not turned
    }
    EXPECT_GT(lines, 20);
  }
}

TEST(Charsets, ListsEveryCodeType) {
  const ToolRunner tool;
  const std::vector<Json> rows = JsonLines(tool.Run("charsets --json").out);
  ASSERT_EQ(rows.size(), AllCodeTypes().size());
  for (const Json& row : rows) {
    SCOPED_TRACE(row.dump());
    const std::string name = row.at("names").at(0);
    EXPECT_EQ(CharSetName2CodeExact(name), row.at("codeType").get<int>());
  }
  const std::string table = tool.Run("charsets").out;
  EXPECT_NE(table.find("ISO-2022-JP"), std::string::npos);
  EXPECT_EQ(UnsafeIn(table), "");
}

TEST(Tool, EndsWithAnErrorWhenItsOutputIsNotTaken) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  const ToolRunner tool;
  tool.Write("big", std::string(2'000'000, 'a'));
  const RunResult full =
      tool.Shell("LUMR convert -f utf-8 -t sjis big --lang en >/dev/full 2>.err");
  EXPECT_EQ(full.status, 2);
  EXPECT_NE(full.err.find("standard output: cannot be written: the disk is full"),
            std::string::npos)
      << full.err;
  const RunResult closed = tool.Shell(
      "{ LUMR convert -f utf-8 -t sjis big 2>.err; echo $? >.out; } | head -c 1 >/dev/null");
  EXPECT_EQ(closed.err, "");
  EXPECT_NE(closed.out, "0\n");
}

}  // namespace lumr::test
