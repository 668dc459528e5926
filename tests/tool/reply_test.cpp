// lumr reply and lumr check, on written mails and on real ones.
#include <gmime/gmime.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "tool/tool_runner.h"

namespace lumr::test {

namespace {

namespace fs = std::filesystem;

constexpr char kMail[] =
    "From: =?ISO-2022-JP?B?GyRCOzNFRBsoQiAbJEJCQE86GyhC?= <taro@example.jp>\n"
    "Reply-To: list@example.jp\n"
    "To: me@example.jp\n"
    "Subject: =?UTF-8?B?UmU6IFJFWzJdOiDov5Tkv6HvvJogUmVeMzo=?= =?UTF-8?B?IOS8muitsA==?=\n"
    "Date: Mon, 3 Jun 2024 10:00:00 +0900\n"
    "Message-ID: <3@example.jp>\n"
    "References: <1@example.jp>\n"
    " <2@example.jp>\n"
    "Content-Type: text/plain; charset=Shift_JIS\n"
    "\n"
    "\x82\xa0\n"
    "> \x82\xa2\n";

std::string Printed(std::string_view body) {
  return "Message-ID: <3@example.jp>\nFrom: a@b.jp\nSubject: x\n" + std::string(body);
}

}  // namespace

TEST(Reply, AnswersAMessage) {
  const RunResult result = ToolRunner().Run("reply --from me@example.jp -", kMail);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out,
            "From: me@example.jp\n"
            "To: list@example.jp\n"
            "Subject: Re: =?ISO-2022-JP?B?GyRCMnE1RBsoQg==?=\n"
            "In-Reply-To: <3@example.jp>\n"
            "References: <1@example.jp> <2@example.jp> <3@example.jp>\n"
            "MIME-Version: 1.0\n"
            "Content-Type: text/plain; charset=ISO-2022-JP\n"
            "Content-Transfer-Encoding: 7bit\n"
            "\n"
            "Mon, 3 Jun 2024 10:00:00 +0900 \x1b$B$K!\";3ED\x1b(B \x1b$BB@O:\x1b(B "
            "\x1b$B$5$s$O=q$-$^$7$?\x1b(B:\n"
            "> \x1b$B$\"\x1b(B\n"
            "> > \x1b$B$$\x1b(B\n");
}

TEST(Reply, TurnsLinesAndKeepsQuoteLevels) {
  std::string text;
  for (int i = 0; i < 60; ++i) text += "\xe3\x81\x82";
  const std::string link = "http://example.jp/" + std::string(90, 'x');
  const RunResult result = ToolRunner().Run(
      "reply -",
      Printed("Content-Type: text/plain; charset=UTF-8\n\n> " + text + "\n" + link + "\n"));
  ASSERT_EQ(result.status, 0) << result.err;
  const RunResult shown = ToolRunner().Run("show -", result.out);
  const std::string first = text.substr(0, 3 * 35), rest = text.substr(3 * 35);
  EXPECT_NE(shown.out.find("\n> > " + first + "\n> > " + rest + "\n> " + link + "\n"),
            std::string::npos)
      << shown.out;
}

TEST(Reply, QuotesHtmlAsItsText) {
  const RunResult result = ToolRunner().Run(
      "reply -", Printed("Content-Type: text/html; charset=utf-8\n\n"
                         "<p>a &amp; b</p><script>x()</script><blockquote>c</blockquote>\n"));
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.out.find("\na@b.jp wrote:\n> a & b\n> \n> > c\n"), std::string::npos)
      << result.out;
}

TEST(Reply, CollapsesPrefixes) {
  const struct {
    const char *subject, *expected;
  } cases[] = {{"x", "Re: x"},
               {"Re: x", "Re: x"},
               {"RE:re:x", "Re: x"},
               {"Re[2]: x", "Re: x"},
               {"Re(3): Re: x", "Re: x"},
               {"返信: x", "Re: x"},
               {"Ｒｅ：x", "Re: x"},
               {"Fwd: Re: x", "Re: Fwd: Re: x"},
               {"Regards: x", "Re: Regards: x"},
               {"[ml:1] Re: x", "Re: [ml:1] Re: x"},
               {"", "Re:"},
               {"Re:", "Re:"}};
  for (const auto& c : cases) {
    const RunResult result =
        ToolRunner().Run("reply -", "From: a@b.jp\nSubject: " + std::string(c.subject) + "\n\nx\n");
    const RunResult shown = ToolRunner().Run("show --json -", result.out);
    EXPECT_EQ(JsonLines(shown.out).at(0).at("subject"), c.expected);
  }
}

TEST(Reply, SaysWhatIsWrong) {
  const std::string inMbox = "From x Mon Jun  3 10:00:00 2024\n" + Printed("\ny\n\n");
  ToolRunner().Check(
      {
          {"reply -", "hello", "", 1, "not"},
          {"reply -", "Subject: x\n\ny\n", "", 1, "names nobody to answer to"},
          {"reply -", "From: a b\nSubject: x\n\ny\n", "", 1, "address 'a b'"},
          {"reply -", Printed("\n"), "", 0, "no text to quote"},
          {"reply --from \"a\nb\" -", Printed("\ny\n"), "", 2, "line break in --from"},
          {"reply --charset x-no -", Printed("\ny\n"), "", 2, "unknown charset"},
          {"reply --charset iso-2022-jp -",
           Printed("Content-Type: text/plain; charset=utf-8\n\né\n"), "", 1, "lacks characters"},
          {"reply -", inMbox + inMbox, "", 1, "several messages"},
      },
      ToolRunner::Out::kPart);
}

// Groups are answered to their members, and what an encoded word says is a name and no address.
TEST(Reply, AnswersThoseWhoAreNamed) {
  const struct {
    const char* field;
    const char* expected;  // To
  } cases[] = {
      {"Reply-To: Team: a@x.jp, \"B, C\" <b@y.jp>;", "a@x.jp, \"B, C\" <b@y.jp>"},
      {"Reply-To: undisclosed-recipients:;", "s@x.jp"},
      {"Reply-To: =?utf-8?Q?Doe,_J?= <a@x.jp>", "\"Doe, J\" <a@x.jp>"},
      {"Reply-To: =?utf-8?B?ZXZpbEBlLmpwLCA=?= <a@x.jp>", "\"evil@e.jp, \" <a@x.jp>"},
      {"Reply-To: \x1b$B%=\x1b(B =?utf-8?B?ZXZpbEBlLmpwLCA=?= <a@x.jp>",
       "=?ISO-2022-JP?B?GyRCJT0bKEIgZXZpbEBlLmpwLCA=?= <a@x.jp>"},
      {"Reply-To: <=?utf-8?Q?a,b?=@x.jp>", "s@x.jp"},
      {"Reply-To: a@x.jp:25", "s@x.jp"},
  };
  for (const auto& c : cases) {
    const RunResult result =
        ToolRunner().Run("reply -", std::string(c.field) + "\nFrom: s@x.jp\n\nx\n");
    EXPECT_EQ(result.out.substr(0, result.out.find('\n')), std::string("To: ") + c.expected)
        << c.field;
  }
}

TEST(Check, FindsWhatOthersWillNotSee) {
  const ToolRunner tool;
  const std::string long999(999, 'x');
  const struct {
    std::string draft;
    const char* options;
    std::vector<std::string> kinds;
  } cases[] = {
      {"To: a@b.jp\nSubject: x\n\nhello\n", "", {}},
      {"To: a@b.jp\nSubject: 第①回\n\nあ㈱ﾊﾟ\n",
       "",
       {"machine-dependent", "machine-dependent", "half-width-katakana"}},
      {"To: a@b.jp\nSubject: 第①回\n\nあ㈱ﾊﾟ\n", "--charset utf-8", {}},
      {"To: a@b.jp\nContent-Type: text/plain; charset=utf-8\n\n①\n", "", {}},
      // A comma in a word parts no addresses, even beside raw text.
      {"To: =?UTF-8?Q?a=2Cb?= <c@d.jp>, あ <e@f.jp>\nSubject: x\n\n", "", {}},
      {"To: A: a@b.jp, c@d.jp;\nCc: undisclosed-recipients:;\nSubject: x\n\n", "", {}},
      {"To: a@b.jp; c@d.jp\nSubject: x\n\n", "", {"address", "recipient"}},
      {"To: a@b.jp, c d\nSubject: x\n\né\n" + long999 + "\n",
       "",
       {"long-line", "address", "not-encodable"}},
      {"Subject: x\n\n" + std::string("\xee\x80\x80") + "\n", "", {"recipient", "user-defined"}},
  };
  for (const auto& c : cases) {
    const RunResult result = tool.Run(std::string("check --json - ") + c.options, c.draft);
    EXPECT_EQ(result.status, c.kinds.empty() ? 0 : 1) << c.draft << result.err;
    std::vector<Json> lines = JsonLines(result.out);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back().at("findings"), c.kinds.size());
    lines.pop_back();
    std::vector<std::string> kinds;
    for (const Json& line : lines) kinds.push_back(line.at("kind"));
    EXPECT_EQ(kinds, c.kinds) << result.out;
  }
  tool.Check({{"check -", "To: a@b.jp\nSubject: x\n\na\nbc①\n",
               "-: body 2:3: machine-dependent characters: ① (write (1))\n", 1}},
             ToolRunner::Out::kPart);
}

// ---- Real mail ----

namespace {

// Letters only: without white space and quote marks, which turning moves about.
std::string Letters(std::string_view text) {
  std::string letters;
  for (const char c : text) {
    if (static_cast<unsigned char>(c) > ' ' && c != '>' && c != '\x7F') letters += c;
  }
  return letters;
}

struct PeerMail {
  std::string subject;
  int recipients = 0;
};

PeerMail ReadByPeer(const std::string& bytes) {
  static const bool initialised = (g_mime_init(), true);
  static_cast<void>(initialised);
  PeerMail mail;
  GMimeStream* const stream = g_mime_stream_mem_new_with_buffer(bytes.data(), bytes.size());
  GMimeParser* const parser = g_mime_parser_new_with_stream(stream);
  if (GMimeMessage* const message = g_mime_parser_construct_message(parser, nullptr)) {
    const char* const subject = g_mime_message_get_subject(message);
    mail.subject = subject == nullptr ? "" : subject;
    mail.recipients = internet_address_list_length(g_mime_message_get_to(message));
    g_object_unref(message);
  }
  g_object_unref(parser);
  g_object_unref(stream);
  return mail;
}

bool IsHtmlOnly(const Json& mail) {
  return std::all_of(mail.at("parts").begin(), mail.at("parts").end(),
                     [](const Json& part) { return part.at("type") == "text/html"; });
}

}  // namespace

// The reply to every mail is a mail to GMime and to us, says whom it answers, and quotes every
// letter of the text.
TEST(Reply, AnswersRealMail) {
  const char* const corpus = std::getenv("LUMRMISC_CORPUS");
  if (corpus == nullptr) GTEST_SKIP() << "LUMRMISC_CORPUS names no folder of real mail";
  const ToolRunner tool;
  int quoted = 0;
  for (const auto& entry : fs::directory_iterator(fs::path(corpus) / "mail")) {
    if (entry.path().extension() != ".eml") continue;
    SCOPED_TRACE(entry.path().filename().string());
    const std::string file = '"' + entry.path().string() + '"';
    const RunResult reply = tool.Run("reply " + file);
    EXPECT_TRUE(reply.status == 0 || reply.status == 1) << reply.err;
    EXPECT_EQ(UnsafeIn(reply.err), "");
    if (reply.out.empty()) continue;
    for (std::size_t begin = 0; begin < reply.out.size();) {
      const std::size_t end = reply.out.find('\n', begin);
      ASSERT_NE(end, std::string::npos);
      EXPECT_LE(end - begin, 998u);
      begin = end + 1;
    }
    EXPECT_EQ(reply.out.find('\r'), std::string::npos);
    const PeerMail peer = ReadByPeer(reply.out);
    EXPECT_EQ(peer.recipients > 0, reply.out.rfind("To: ", 0) == 0);
    const RunResult shown = tool.Run("show --json -", reply.out);
    EXPECT_EQ(shown.status, 0) << shown.err;
    const Json mail = JsonLines(shown.out).at(0);
    EXPECT_EQ(mail.at("subject"), peer.subject.empty() ? "Re:" : peer.subject);
    ASSERT_EQ(mail.at("parts").size(), 1u);
    EXPECT_EQ(mail.at("parts").at(0).at("exact"), true);
    const std::vector<Json> originals = JsonLines(tool.Run("show --json " + file).out);
    if (originals.size() != 1 || IsHtmlOnly(originals[0])) continue;
    const std::string letters = Letters(mail.at("parts").at(0).at("text").get<std::string>());
    for (const Json& part : originals[0].at("parts")) {
      if (!part.contains("text") || part.at("type") != "text/plain") break;
      std::string expected;
      for (const char c : part.at("text").get<std::string>()) {
        if (static_cast<unsigned char>(c) >= ' ' || c == '\n') expected += c;
      }
      EXPECT_NE(letters.find(Letters(expected)), std::string::npos) << letters;
      ++quoted;
    }
  }
  EXPECT_GT(quoted, 100);
}

}  // namespace lumr::test
