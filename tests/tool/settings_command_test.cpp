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

}  // namespace

TEST(Settings, AreReadAndChanged) {
  const ToolRunner tool;
  tool.Write("other", "[L]\nB=2\n");
  tool.Write("random", "\xFE\x01\x02\x03\x04\x05\x06\x07");
  tool.Check({
      {"settings set a.ini K A 1", "", "", 2, "cannot be read"},
      {"settings set --create a.ini K A 1"},
      {"settings set a.ini K \xE6\xBC\xA2 \xE5\xAD\x97"},
      {"settings get a.ini K \xE6\xBC\xA2", "", "\xE5\xAD\x97\n"},
      {"settings unset a.ini K \xE6\xBC\xA2"},
      {"settings set a.ini K x=[ [v]"},
      {"settings set --json a.ini k a 1", "", "{\"file\":\"a.ini\",\"changed\":false}\n"},
      {"settings get a.ini k X=[", "", "[v]\n"},
      {"settings get a.ini K none", "", "", 1, "there is no none in [K]"},
      {"settings get --json a.ini k a", "",
       "{\"file\":\"a.ini\",\"key\":\"K\",\"name\":\"A\",\"value\":\"1\"}\n"},
      {"settings list a.ini", "", "[K]\nA=1\nx\\=\\[=[v]\n"},
      {"settings list a.ini none", "", "", 1, "no key [none]"},
      {"settings unset a.ini K x=["},
      {"settings set a.ini DATA-END A 1", "", "", 2, "cannot hold"},
      {"settings set - K A 1", "", "", 2, "standard input cannot be rewritten"},
      {"settings unset a.ini none", "", "", 1, "no key"},
      {"settings check -", "[L]\nB=2\n", "", 1, "not UTF-16"},
      {"settings set other K A 1", "", "", 1, "other: this is no setting data file"},
      {"settings list --key-file none random", "", "", 2, "random: it is enciphered, or damaged"},
      {"settings list - ", Utf16("[L]\nB=2\n"), "[L]\nB=2\n"},
      {"settings", "", "", 2, "wrong usage"},
  });
  EXPECT_EQ(tool.Read("a.ini"), Utf16("[DATA-START]\r\n\r\n[K]\r\nA=1\r\n\r\n[DATA-END]\r\n\r\n"));
}

TEST(Settings, AreCheckedToTheLastLine) {
  const ToolRunner tool;
  tool.Write("a.ini", Utf16("A=1\n[DATA-START]\n[K]\nB=1\nb=\x1B\nnone\n[L\nC=1\n[k]\n"));
  tool.Write("whole", Utf16("[K]\nA=1\n"));
  tool.Check({
      {"settings check a.ini", "",
       "a.ini: line 1: an entry stands before any key: A=1\n"
       "a.ini: line 5: the name b stands twice in [K]\n"
       "a.ini: line 6: it is not of the form name=value, in [K]: none\n"
       "a.ini: line 7: a key line does not end with ]: [L\n"
       "a.ini: line 9: the key [k] stands twice\n"
       "a.ini: [DATA-END] is missing at the end: the file is cut off\n"
       "a.ini: defects: 6; readable keys: 1, values: 1\n",
       1},
      {"settings check whole", "", "whole: no defects; keys: 1, values: 1\n"},
      {"settings get a.ini K B", "", "", 1, "line 1: an entry"},
      {"settings set a.ini K B 2", "", "", 1, "line 1: an entry"},
      {"settings check missing", "", "", 2, "cannot be read"},
  });
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
  tool.Check({
      {"settings diff a b", "", "-[K] A=1\n+[K] a=2\n+[K] E=5\n-[L]\n-[L] C=3\n+[M]\n+[M] D=4\n",
       1},
      {"settings diff a c"},
      {"settings diff a none", "", "", 2, "cannot be read"},
  });
}

TEST(Settings, AreEncipheredWithTheirReserveCopy) {
  const ToolRunner tool;
  tool.Write("key", "secret\r\nno part of it\n");
  tool.Write("wrong", "Secret\n");
  tool.Check({
      {"settings set --create --reserve a.ini K A 1"},
      {"settings encrypt --key-file key a.ini"},
      {"settings encrypt --key-file key a.ini", "", "", 2, "already"},
      {"settings set --key-file key a.ini K A 2"},
      {"settings list --key-file key a.ini", "", "[K]\nA=2\n"},
      {"settings list --key-file wrong a.ini", "", "", 1, "The key may be wrong"},
      {"settings list --key-file none a.ini", "", "", 2, "none: cannot be read"},
      {"settings decrypt --key-file key -o plain a.ini"},
      {"settings diff --key-file key plain a.ini"},
      {"settings decrypt --key-file key -o - a.ini plain", "", "", 2, "one file only"},
  });
  EXPECT_EQ(tool.Read("Reserve/a.ini"), tool.Read("a.ini"));
  EXPECT_EQ(tool.Read("plain").substr(0, 2), "\xFF\xFE");

  // Cut off, it comes back from the reserve copy, still enciphered.
  tool.Write("a.ini", tool.Read("a.ini").substr(0, 40));
  tool.Check(
      {{"settings set --key-file key a.ini K A 2", "", "", 0, "restored from its reserve copy"}});
  EXPECT_EQ(tool.Read("Reserve/a.ini"), tool.Read("a.ini"));
}

TEST(Users, AreAddedListedAndRemoved) {
  const ToolRunner tool;
  tool.Check({
      {"users list .", "", "", 2, "LumrUser.ini: cannot be read: there is no such file"},
      {"users list none", "", "", 2, "cannot be read"},
      {"users add . a --user-dir d1", "", "0\n"},
      {"users add . b --user-dir d2 --id 7", "", "7\n"},
      {"users add . c --user-dir d3 --id 7", "", "", 2, "the ID 7 is taken"},
      {"users add . \xED\x95\x9C --user-dir d3", "", "", 2, "Shift_JIS"},
      {"users password . 7 --required", "pass\n"},
      {"users password . 8", "pass\n", "", 1, "no user with the ID 8"},
      {"users password . 7", "\n", "", 2, "its first line is empty"},
      {"users remove --json . 0", "", "{\"id\":0,\"removed\":true}\n"},
      {"users remove . 0", "", "", 1, "no user"},
  });
  const auto users = JsonLines(tool.Run("users list --json .").out);
  ASSERT_EQ(users.size(), 1u);
  tool.Check({{"users add . \xE6\xBC\xA2\xE5\xAD\x97 --user-dir d8 --id 8", "", "8\n"}});
  EXPECT_EQ(users[0].at("name"), "b");
  EXPECT_EQ(users[0].at("hasPassword"), true);
  EXPECT_EQ(users[0].at("passwordRequired"), true);
  EXPECT_EQ(tool.Read("LumrUser.ini").find(std::string("p\0a\0s\0s\0", 8)), std::string::npos);
}

// A folder is made at the first login, so until then the next user must not get it too.
TEST(Users, NeverShareAFolder) {
  const ToolRunner tool;
  tool.Check({{"users add . a", "", "0\n"}, {"users add . b", "", "1\n"}});
  const auto users = JsonLines(tool.Run("users list --json .").out);
  ASSERT_EQ(users.size(), 2u);
  EXPECT_NE(users[0].at("userDir"), users[1].at("userDir"));
}

TEST(Digest, AndCipherWorkOnAnyBytes) {
  const ToolRunner tool;
  tool.Write("key", "Jefe\n");
  const std::string data("a\0b\r\n\xFF", 6);
  tool.Write("data", data);
  tool.Check({
      {"digest md5 -", "", "d41d8cd98f00b204e9800998ecf8427e  -\n"},
      {"digest md5 none -", "abc", "900150983cd24fb0d6963f7d28e17f72  -\n", 2, "none: cannot"},
      {"digest hmac-md5 --key-file key", "what do ya want for nothing?",
       "750c783e6ab0b503eaa86e310a5db738  -\n"},
      {"cipher decrypt --key-file key data", "", "", 1, "not valid"},
      {"cipher encrypt --key-file data key", "", "", 2, "holds a zero byte"},
  });
  tool.Write("enciphered", tool.Run("cipher encrypt --key-file key data").out);
  tool.Check({{"cipher decrypt --key-file key enciphered", "", data}});
}

}  // namespace lumr::test
