// lumr settings, users, digest and cipher.
#include <gtest/gtest.h>

#include "tool/tool_runner.h"

namespace lumr::test {

namespace {

// The text of a setting data file from ASCII.
std::string Utf16(std::string_view text) {
  std::string bytes = "\xFF\xFE";
  for (const char c : text) bytes += {c, '\0'};
  return bytes;
}

struct Step {
  std::string arguments;
  int status;
  std::string out;
  std::string err;         // a part of it; empty: nothing is said
  std::string input = "";  // standard input
};

void Do(const ToolRunner& tool, const Step& step) {
  if (!CanBeTyped(step.arguments)) return;
  SCOPED_TRACE(step.arguments);
  const RunResult result = tool.Run(step.arguments, step.input);
  EXPECT_EQ(result.status, step.status) << result.err;
  EXPECT_EQ(result.out, step.out);
  EXPECT_EQ(UnsafeIn(result.err), "");
  EXPECT_EQ(result.err.empty(), step.err.empty()) << result.err;
  EXPECT_NE(result.err.find(step.err), std::string::npos) << result.err;
}

template <std::size_t kCount>
void DoAll(const ToolRunner& tool, const Step (&steps)[kCount]) {
  for (const Step& step : steps) Do(tool, step);
}

}  // namespace

TEST(Settings, AreReadAndChanged) {
  const ToolRunner tool;
  const Step steps[] = {
      {"settings set a.ini K A 1", 2, "", "cannot be read"},
      {"settings set --create a.ini K A 1", 0, "", ""},
      {"settings set a.ini K \xE6\xBC\xA2 \xE5\xAD\x97", 0, "", ""},
      {"settings get a.ini K \xE6\xBC\xA2", 0, "\xE5\xAD\x97\n", ""},
      {"settings unset a.ini K \xE6\xBC\xA2", 0, "", ""},
      {"settings set a.ini K x=[ [v]", 0, "", ""},
      {"settings set --json a.ini k a 1", 0, "{\"file\":\"a.ini\",\"changed\":false}\n", ""},
      {"settings get a.ini k X=[", 0, "[v]\n", ""},
      {"settings get a.ini K none", 1, "", "there is no none in [K]"},
      {"settings get --json a.ini k a", 0,
       "{\"file\":\"a.ini\",\"key\":\"K\",\"name\":\"A\",\"value\":\"1\"}\n", ""},
      {"settings list a.ini", 0, "[K]\nA=1\nx\\=\\[=[v]\n", ""},
      {"settings list a.ini none", 1, "", "no key [none]"},
      {"settings unset a.ini K x=[", 0, "", ""},
      {"settings set a.ini DATA-END A 1", 2, "", "cannot hold"},
      {"settings set - K A 1", 2, "", "standard input cannot be rewritten"},
      {"settings unset a.ini none", 1, "", "no key"},
      {"settings check -", 1, "", "not UTF-16", "[L]\nB=2\n"},
      {"settings list - ", 0, "[L]\nB=2\n", "", Utf16("[L]\nB=2\n")},
      {"settings", 2, "", "wrong usage"},
  };
  DoAll(tool, steps);
  EXPECT_EQ(tool.Read("a.ini"), Utf16("[DATA-START]\r\n\r\n[K]\r\nA=1\r\n\r\n[DATA-END]\r\n\r\n"));
}

TEST(Settings, AreCheckedToTheLastLine) {
  const ToolRunner tool;
  tool.Write("a.ini", Utf16("A=1\n[DATA-START]\n[K]\nB=1\nb=\x1B\nnone\n[L\nC=1\n[k]\n"));
  tool.Write("whole", Utf16("[K]\nA=1\n"));
  const Step steps[] = {
      {"settings check a.ini", 1,
       "a.ini: line 1: an entry stands before any key: A=1\n"
       "a.ini: line 5: the name b stands twice in [K]\n"
       "a.ini: line 6: it is not of the form name=value, in [K]: none\n"
       "a.ini: line 7: a key line does not end with ]: [L\n"
       "a.ini: line 9: the key [k] stands twice\n"
       "a.ini: [DATA-END] is missing at the end: the file is cut off\n"
       "a.ini: defects: 6; readable keys: 1, values: 1\n",
       ""},
      {"settings check whole", 0, "whole: no defects; keys: 1, values: 1\n", ""},
      {"settings get a.ini K B", 1, "", "line 1: an entry"},
      {"settings set a.ini K B 2", 1, "", "line 1: an entry"},
      {"settings check missing", 2, "", "cannot be read"},
  };
  DoAll(tool, steps);
  const auto defects = JsonLines(tool.Run("settings check --json a.ini").out);
  ASSERT_EQ(defects.size(), 7u);
  EXPECT_EQ(defects[2].at("defect"), "bad-entry");
  EXPECT_EQ(defects[2].at("line"), 6);
  EXPECT_EQ(defects[5].count("line"), 0u);
  EXPECT_EQ(defects[6].at("defects"), 6);
}

TEST(Settings, AreComparedEntryByEntry) {
  const ToolRunner tool;
  tool.Write("a", Utf16("[K]\nA=1\nB=2\n[L]\nC=3\n"));
  tool.Write("b", Utf16("[M]\nD=4\n[k]\nB=2\nE=5\na=2\n"));
  tool.Write("c", Utf16("[L]\nC=3\n[K]\nB=2\nA=1\n"));
  const Step steps[] = {
      {"settings diff a b", 1, "-[K] A=1\n+[K] a=2\n+[K] E=5\n-[L]\n-[L] C=3\n+[M]\n+[M] D=4\n",
       ""},
      {"settings diff a c", 0, "", ""},
      {"settings diff a none", 2, "", "cannot be read"},
  };
  DoAll(tool, steps);
}

TEST(Settings, AreEncipheredWithTheirReserveCopy) {
  const ToolRunner tool;
  tool.Write("key", "secret\r\nno part of it\n");
  tool.Write("wrong", "Secret\n");
  const Step steps[] = {
      {"settings set --create --reserve a.ini K A 1", 0, "", ""},
      {"settings encrypt --key-file key a.ini", 0, "", ""},
      {"settings encrypt --key-file key a.ini", 2, "", "already"},
      {"settings set --key-file key a.ini K A 2", 0, "", ""},
      {"settings list --key-file key a.ini", 0, "[K]\nA=2\n", ""},
      {"settings list --key-file wrong a.ini", 1, "", "The key may be wrong"},
      {"settings list --key-file none a.ini", 2, "", "none: cannot be read"},
      {"settings decrypt --key-file key -o plain a.ini", 0, "", ""},
      {"settings diff --key-file key plain a.ini", 0, "", ""},
      {"settings decrypt --key-file key -o - a.ini plain", 2, "", "one file only"},
  };
  DoAll(tool, steps);
  EXPECT_EQ(tool.Read("Reserve/a.ini"), tool.Read("a.ini"));
  EXPECT_EQ(tool.Read("plain").substr(0, 2), "\xFF\xFE");

  // Cut off, it comes back from the reserve copy, still enciphered.
  tool.Write("a.ini", tool.Read("a.ini").substr(0, 40));
  Do(tool, {"settings set --key-file key a.ini K A 2", 0, "", "restored from its reserve copy"});
  EXPECT_EQ(tool.Read("Reserve/a.ini"), tool.Read("a.ini"));
}

TEST(Users, AreAddedListedAndRemoved) {
  const ToolRunner tool;
  const Step steps[] = {
      {"users list .", 2, "", "."},
      {"users list none", 2, "", "cannot be read"},
      {"users add . a --user-dir d1", 0, "0\n", ""},
      {"users add . b --user-dir d2 --id 7", 0, "7\n", ""},
      {"users add . c --user-dir d3 --id 7", 2, "", "the ID 7 is taken"},
      {"users add . \xED\x95\x9C --user-dir d3", 2, "", "Shift_JIS"},
      {"users password . 7 --required", 0, "", "", "pass\n"},
      {"users password . 8", 1, "", "no user with the ID 8", "pass\n"},
      {"users password . 7", 2, "", "cannot be used", "\n"},
      {"users remove --json . 0", 0, "{\"id\":0,\"removed\":true}\n", ""},
      {"users remove . 0", 1, "", "no user"},
  };
  DoAll(tool, steps);
  const auto users = JsonLines(tool.Run("users list --json .").out);
  ASSERT_EQ(users.size(), 1u);
  Do(tool, {"users add . \xE6\xBC\xA2\xE5\xAD\x97 --user-dir d8 --id 8", 0, "8\n", ""});
  EXPECT_EQ(users[0].at("name"), "b");
  EXPECT_EQ(users[0].at("hasPassword"), true);
  EXPECT_EQ(users[0].at("passwordRequired"), true);
  EXPECT_EQ(tool.Read("LumrUser.ini").find(std::string("p\0a\0s\0s\0", 8)), std::string::npos);
}

TEST(Digest, AndCipherWorkOnAnyBytes) {
  const ToolRunner tool;
  tool.Write("key", "Jefe\n");
  const std::string data("a\0b\r\n\xFF", 6);
  tool.Write("data", data);
  const Step steps[] = {
      {"digest md5 -", 0, "d41d8cd98f00b204e9800998ecf8427e  -\n", ""},
      {"digest md5 none -", 2, "900150983cd24fb0d6963f7d28e17f72  -\n", "none: cannot", "abc"},
      {"digest hmac-md5 --key-file key", 0, "750c783e6ab0b503eaa86e310a5db738  -\n", "",
       "what do ya want for nothing?"},
      {"cipher decrypt --key-file key data", 1, "", "not valid"},
      {"cipher encrypt --key-file data key", 2, "", "cannot be used"},
  };
  DoAll(tool, steps);
  tool.Write("enciphered", tool.Run("cipher encrypt --key-file key data").out);
  Do(tool, {"cipher decrypt --key-file key enciphered", 0, data, ""});
}

}  // namespace lumr::test
