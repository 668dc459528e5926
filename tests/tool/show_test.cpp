// lumr show on mails of our own.
#include <gtest/gtest.h>

#include <filesystem>

#include "tool/tool_runner.h"

namespace lumr::test {

namespace {

namespace fs = std::filesystem;

}  // namespace

TEST(Show, PrintsTheSampleMailsAsReviewed) {
  const struct {
    const char *mail, *arguments, *golden;
  } cases[] = {
      {"first-light.eml", "--lang ja", "first-light.ja.txt"},
      {"first-light.eml", "--json", "first-light.json"},
      {"holiday-shift-jis.eml", "", "holiday-shift-jis.txt"},
      {"newsletter-alternative.eml", "", "newsletter-alternative.txt"},
      {"mislabelled-euc.eml", "--lang ja", "mislabelled-euc.ja.txt"},
      {"order-html-only.eml", "", "order-html-only.txt"},
  };
  const ToolRunner tool;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.golden);
    const std::string content = Contents(fs::path(LUMR_SAMPLES) / c.mail);
    const RunResult result = tool.Run(std::string("show - ") + c.arguments, content);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + "----\n" + result.err, Contents(fs::path(LUMR_GOLDEN) / c.golden));
  }
}

TEST(Show, ReadsWhatMailersGetWrong) {
  const struct {
    const char* what;
    std::string_view mail;
    int status;
    std::string_view shown;  // a part of standard output
    std::string_view said;   // a part of standard error; empty: nothing
  } cases[] = {
      {"nothing", "", 1, "", "the file is empty"},
      {"no mail", "{\"a\": 1}\n", 1, "", "this is no mail"},
      {"a header alone", "Subject: x\n", 0, "Subject: x\n", ""},
      {"a header cut off in a name", "Subject: x\nDate: now\nFr", 1, "Subject: x\n",
       "it has no content"},
      {"Macintosh line ends", "Subject: x\r\rbody\r", 0, "Subject: x\n\nbody\n", ""},
      {"a From line", "From a@example.jp Mon Jan  1 00:00:00 2024\nSubject: x\n\nbody\n", 0,
       "Subject: x\n\nbody\n", ""},
      {"two fields of addresses", "To: a@example.jp\nTo: b@example.jp\n\n", 0,
       "To:      a@example.jp, b@example.jp\n", ""},
      {"raw header in the charset of the body",
       "Subject: \xC5\x81\xC3\xB3\nContent-Type: text/plain; charset=utf-8\n\n", 0,
       "Subject: \xC5\x81\xC3\xB3\n", ""},
      {"damaged Base64", "Content-Transfer-Encoding: base64\n\nYWJj!ZGVm\n", 1, "\nabcdef\n",
       "encoding is damaged"},
      {"prose under Base64", "Content-Transfer-Encoding: base64\n\nit is not so\n", 0,
       "\nit is not so\n", "labelled Base64, which"},
      {"a faulty name of an encoding", "Content-Transfer-Encoding: quoted printable;\n\n=41\n", 0,
       "\nA\n", ""},
      {"an unknown encoding", "Content-Transfer-Encoding: x-rot13\n\nnopq\n", 0, "\nnopq\n",
       "unknown transfer encoding"},
      {"an unknown charset", "Content-Type: text/plain; charset=x-none\n\n\x1B$B4A\x1B(B\n", 0,
       "\xE6\xBC\xA2\n", "unknown charset 'x-none'; read as ISO-2022-JP"},
      {"not even a type", "Content-Type: text\n\nbody\n", 0, "\nbody\n", ""},
      {"a multipart cut off", "Content-Type: multipart/mixed; boundary=b\n\n--b\n\nbody\n", 1,
       "\nbody\n", "cut off"},
      {"a boundary that the header lacks",
       "Content-Type: multipart/mixed\n\n--bound\nContent-Type: text/plain\n\nbody\n--bound--\n", 0,
       "\nbody\n", "found in the text"},
      {"a boundary that the text lacks", "Content-Type: multipart/mixed; boundary=b\n\nbody\n", 1,
       "\nbody\n", "a multipart without a boundary"},
      {"a blank plain text beside HTML",
       "Content-Type: multipart/alternative; boundary=b\n\n--b\n\n \n--b\nContent-Type: "
       "text/html\n\n<p>x\n--b--\n",
       0, "\nx\n", ""},
      {"HTML with its own charset",
       "Content-Type: text/html\n\n<meta charset=euc-jp><p>\xC6\xFC\xCB\xDC</p>\n", 0, "\n日本\n",
       ""},
      {"HTML with a script and a link",
       "Content-Type: text/html; charset=us-ascii\n\n<script>x</script>a<br><a href=c>b</a>", 0,
       "\na\nb (=> c )\n", ""},
      {"an attachment inside the alternative that is not taken",
       "Content-Type: multipart/alternative; boundary=b\n\n--b\n\nplain\n--b\nContent-Type: "
       "multipart/mixed; boundary=c\n\n--c\nContent-Type: text/html\n\n<p>\n--c\nContent-Type: "
       "application/pdf; name=a.pdf\n\nxyz\n--c--\n--b--\n",
       0, "\nplain\n\nAttachments (1):\n  2.2  a.pdf  application/pdf  3 bytes\n", ""},
      {"a message inside in Base64",
       "Content-Type: message/rfc822\nContent-Transfer-Encoding: base64\n\n"
       "U3ViamVjdDogaW5uZXIKCmJvZHkK\n",
       0, "---- 1 attached message ----\nSubject: inner\n\nbody\n", ""},
      {"a uuencoded file in the text",
       "Subject: x\n\nbefore\nbegin 644 a.bin\n#86)C\n`\nend\nafter\n", 0,
       "\nbefore\nafter\n\nAttachments (1):\n  1  a.bin  x-uuencode  3 bytes\n", ""},
      {"something like a uuencoded file", "Subject: x\n\nbegin 644 a.bin\nit is\nend\n", 0,
       "\nbegin 644 a.bin\nit is\nend\n", ""},
      {"nothing inside a message part",
       "Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: message/rfc822\n\n--b\n\n"
       "rest\n--b--\n",
       1, "\nrest\n", "part 1 (message/rfc822): not shown: it has no content"},
  };
  const ToolRunner tool;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    tool.Check({{"show -", c.mail, c.shown, c.status, c.said}}, ToolRunner::Out::kPart);
  }
}

TEST(Show, LetsNothingCommandTheTerminal) {
  const std::string_view parts[] = {
      "Subject: \x1B]0;x\x07=?utf-8?Q?=1B[31m=0AFrom:_x=C2=9B?=\n",
      "Content-Type: application/x; name=\"\x1B[2J\xE2\x80\xAE"
      "txt.exe\"\n\nx",
      "Content-Type: text/plain; charset=\"\x1B[31m\"\nContent-Transfer-Encoding: \x1B[m\n\n\xE9",
      "Content-Type: text/plain; charset=utf-8\n\n\x1B[31m \xC2\x9B over\rwrite \x7F \xC0\xAF",
      "Content-Type: \x1B[31m/\x9B\n\nx",
  };
  const ToolRunner tool;
  for (const std::string_view part : parts) {
    SCOPED_TRACE(part);
    std::string mail = "Date: now\n";
    mail += part;
    for (const std::string arguments : {"show -", "show --json -"}) {
      const RunResult result = tool.Run(arguments, mail);
      EXPECT_EQ(UnsafeIn(result.out), "");
      EXPECT_EQ(UnsafeIn(result.err), "");
      const bool turns = result.out.find("\xE2\x80\xAE") != std::string::npos;
      EXPECT_FALSE(turns && arguments == "show -");  // JSON keeps what a name is
    }
  }
}

TEST(Show, EndsOnMailMadeToHurt) {
  std::string nested = "Content-Type: multipart/mixed; boundary=\"b0\"\n\n";
  std::string messages;
  for (int i = 0; i < 20000; ++i) {
    const std::string number = std::to_string(i);
    nested += "--b" + number + "\nContent-Type: multipart/alternative; boundary=\"b" +
              std::to_string(i + 1) + "\"\n\n";
    messages += "Content-Type: message/rfc822\n\n";
  }
  std::string begins = "Subject: x\n\n";
  for (int i = 0; i < 100000; ++i) begins += "begin 644 a\n";
  const struct {
    const char* what;
    const std::string& mail;
    int status;
  } cases[] = {{"multiparts", nested, 1}, {"messages", messages, 1}, {"uuencode", begins, 0}};
  const ToolRunner tool;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(tool.Run("show -", c.mail).status, c.status);
  }
}

TEST(Show, ReadsFoldersAndMboxes) {
  const ToolRunner tool;
  const std::string_view separator = "From a@example.jp Mon Jan  1 00:00:00 2024\n";
  std::string mbox;
  for (const char* subject : {"one", "two", "three"}) {
    mbox += std::string(separator) + "Subject: " + subject +
            "\n\nFrom here it is text.\n\nFrom here too.\n>From there\n\n";
  }
  tool.Write("mbox", mbox);
  fs::create_directories("box/cur");
  fs::create_directories("box/new");
  fs::create_directories("box/tmp");
  fs::create_directories("folder/inner");
  tool.Write("box/cur/2:2,S", "Subject: two\n\n");
  tool.Write("box/new/9", "Subject: one\n\n");
  tool.Write("box/tmp/1", "Subject: unfinished\n\n");
  tool.Write("folder/10", "Subject: two\n\n");
  tool.Write("folder/9", "Subject: one\n\n");
  tool.Write("folder/.hidden", "Subject: hidden\n\n");
  fs::create_directories("empty");
  const struct {
    const char* place;
    std::vector<std::string> subjects;
  } cases[] = {{"mbox", {"one", "two", "three"}},
               {"box", {"one", "two"}},
               {"folder", {"one", "two"}},
               {"mbox folder", {"one", "two", "three", "one", "two"}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.place);
    const RunResult result = tool.Run(std::string("show --json ") + c.place);
    EXPECT_EQ(result.status, 0) << result.err;
    std::vector<std::string> subjects;
    for (const Json& mail : JsonLines(result.out)) subjects.push_back(mail.at("subject"));
    EXPECT_EQ(subjects, c.subjects);
  }
  EXPECT_EQ(JsonLines(tool.Run("show --json mbox").out).at(1).at("parts").at(0).at("text"),
            "From here it is text.\n\nFrom here too.\nFrom there\n\n");
  EXPECT_EQ(tool.Run("show empty").status, 1);
  EXPECT_EQ(tool.Run("show missing mbox").status, 2);
}

}  // namespace lumr::test
