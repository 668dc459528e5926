// lumr show: texts laid out, for a terminal and not.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "charset/convert_text.h"
#include "charset/corpus.h"
#include "lumrmisc/platform/unicode.h"
#include "tool/tool_runner.h"

namespace lumr::test {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kMail =
    "Subject: x\nContent-Type: text/plain; charset=utf-8\n\n"
    "あいう。\n> 引用された長い行です。\n> > > > > a\nhttp://example.jp/?q=あ と a@b.jp\n"
    "\\\\server\\share\\x.exe\n";

// Columns as the layout counts them.
int ColumnsOf(std::string_view utf8) {
  const CBuffer wide(Encoded(utf8, CT_UNICODE));
  int columns = 0;
  for (const char16_t unit : wide.Units()) columns += IsUnitFullWidth(unit) ? 2 : 1;
  return columns;
}

// The text of a setting data file.
std::string Settings(std::string_view utf8) {
  return "\xFF\xFE" + Encoded(utf8, CT_UNICODE);
}

std::string BodyOf(const std::string& shown) {
  const std::size_t blank = shown.find("\n\n");
  return blank == std::string::npos ? "" : shown.substr(blank + 2);
}

}  // namespace

TEST(ShowLayout, TurnsAtAWidth) {
  const ToolRunner tool;
  EXPECT_EQ(BodyOf(tool.Run("show -", kMail).out), kMail.substr(kMail.find("\n\n") + 2))
      << "no terminal: as it is";
  EXPECT_EQ(BodyOf(tool.Run("show --width 6 -", kMail).out),
            "あいう。\n> 引用\nされた\n長い行\nです。\n> > > \n> > a\nhttp:/\n/\nexampl\ne.jp/?\n"
            "q=あ \nと a@b.\njp\n\\\\\nserver\n\\share\n\\x.exe\n");
  tool.Write(
      "set.ini",
      Settings("[DATA-START]\n[Editor]\nAutoTurn=1\nTurnCols=10\nNoTurnURL=1\n[Own]\nAutoTurn=1\n"
               "TurnCols=12\nNoTurnQuoted=1\nHead2Prev=い\n[DATA-END]\n"));
  EXPECT_EQ(BodyOf(tool.Run("show --settings set.ini -", kMail).out),
            "あいう。\n> 引用され\nた長い行で\nす。\n> > > > > \na\nhttp://example.jp/?q=\nあ と \n"
            "a@b.jp\n\\\\server\\share\\x.exe\n");
  EXPECT_EQ(BodyOf(tool.Run("show --settings set.ini:Own --width 2 -", kMail).out)
                .substr(0, std::string("あい\nう\n。\n> 引用された").size()),
            "あい\nう\n。\n> 引用された");
  tool.Check({
      {"show --width 30 -", "To: a@example.jp, b@example.jp,\n c@example.jp\nSubject: あい\n",
       "To:      a@example.jp,\n         b@example.jp,\n         c@example.jp\nSubject: あい\n"},
      {"show --width 0 -", kMail, "", 2, "wrong usage"},
      {"show --width x -", kMail, "", 2, "wrong usage"},
      {"show --settings none.ini -", kMail, "", 2, "none.ini"},
      {"show --settings set.ini:Nobody -", kMail, "", 2, "no key [Nobody]"},
  });
}

// In the mails of the corpus, no line is wider than the width and one closing mark.
TEST(ShowLayout, KeepsToTheWidth) {
  LUMR_NEEDS_CORPUS();
  const ToolRunner tool;
  int seen = 0;
  int turned = 0;
  for (const auto& entry : fs::directory_iterator(CorpusPath() / "mail")) {
    if (entry.path().extension() != ".eml" || ++seen % 4 != 0) continue;
    const std::string mail = ReadCorpus(entry.path());
    const Json plain = Json::parse(tool.Run("show --json -", mail).out, nullptr, false);
    if (!plain.is_object() || plain["parts"].size() != 1 || !plain["attachments"].empty()) continue;
    if (!plain["parts"][0].contains("text") || plain["parts"][0]["type"] != "text/plain") continue;
    const std::string laid = tool.Run("show --width 40 -", mail).out;
    std::istringstream lines(BodyOf(laid));
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(ColumnsOf(line), 42) << entry.path() << line;
    }
    turned += laid != tool.Run("show -", mail).out;
  }
  EXPECT_GT(turned, 5);
}

// What a terminal is told.
TEST(ShowLayout, ColoursQuotesAndLinks) {
  const ToolRunner tool;
  tool.Write("mail.eml", kMail);
  const auto shown = tool.OnTerminal(80, "show mail.eml");
  if (!shown) GTEST_SKIP() << "there is no script command";
  const char* const parts[] = {
      "\nあいう。\n",
      "\n\x1B[38;2;0;128;0m> 引用された長い行です。\x1B[39m\n",
      "\n\x1B[38;2;128;0;128m> > > > > a\x1B[39m\n",
      "\n\x1B]8;id=lumr1;http://example.jp/?q=\x1B\\\x1B[4mhttp://example.jp/?q=\x1B[24m\x1B]8;;"
      "\x1B\\あ と \x1B]8;id=lumr2;mailto:a@b.jp\x1B\\\x1B[4ma@b.jp\x1B[24m\x1B]8;;\x1B\\\n",
      // Nobody clicks on a program.
      "\n\x1B[4m\\\\server\\share\\x.exe\x1B[24m\n",
  };
  for (const char* const part : parts) EXPECT_NE(shown->find(part), std::string::npos) << *shown;
}

}  // namespace lumr::test
