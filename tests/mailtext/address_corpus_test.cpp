// Addresses and lists of other projects' tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "lumrmisc/mailtext/address.h"
#include "lumrmisc/platform/mbcs.h"
#include "mailtext/corpus.h"

namespace lumr {
namespace {

using Strings = std::vector<std::string>;

std::vector<Strings> ReadCases(const std::string& name) {
  return ReadJsonLines("../address/" + name);
}

// What follows a key, each time that it stands there.
Strings ValuesOf(const Strings& line, std::string_view key) {
  Strings values;
  for (std::size_t i = 2; i + 1 < line.size(); ++i) {
    if (line[i] == key) values.push_back(line[i + 1]);
  }
  return values;
}

// The addresses that a line expects. The sources write them in four ways.
Strings ExpectedAddresses(const std::string& file, const Strings& line) {
  if (file.starts_with("jsmime")) return ValuesOf(line, "email");
  if (file.starts_with("mail-parser")) return ValuesOf(line, "address");
  Strings expected;
  if (file.starts_with("jakarta")) {
    const auto begin = std::find(line.begin() + 2, line.end(), "expected") + 1;
    expected.assign(begin, std::find_if(begin, line.end(), [](const std::string& s) {
                      return s == "count" || s == "source";
                    }));
    return expected;
  }
  // Cyrus: "a->next->mailbox", value, "a->next->domain", value.
  std::string mailbox;
  for (std::size_t i = 2; i + 1 < line.size(); ++i) {
    if (line[i].ends_with("->mailbox")) mailbox = line[i + 1];
    if (line[i].ends_with("->domain")) expected.push_back(mailbox + "@" + line[i + 1]);
  }
  return expected;
}

// Where the rules here want another result, and why.
const struct {
  const char* why;
  std::string_view sources;
} kDifferences[] = {
    {"groups: \":\" and \";\" are ordinary",
     "jsmime-addr-004 jsmime-addr-016 jsmime-addr-034 jsmime-addr-036 jsmime-addr-042 "
     "jsmime-addr-044 jsmime-addr-046 jsmime-addr-048 jsmime-addr-050 mail-parser-006 "
     "mail-parser-010 mail-parser-034 mail-parser-036 cyrus-parseaddr-023 cyrus-parseaddr-025 "
     "jakarta-mail-021 jakarta-mail-023 jakarta-mail-039 jakarta-mail-159 jakarta-mail-165 "
     "jakarta-mail-167 jakarta-mail-177 jakarta-mail-187"},
    {"an address stays as it is written, with its spaces, quotes and comments",
     "jsmime-addr-006 jsmime-addr-008 jsmime-addr-012 jsmime-addr-014 jsmime-addr-026 "
     "jsmime-addr-054 jsmime-addr-064 jsmime-addr-066 mail-parser-008 mail-parser-014 "
     "cyrus-parseaddr-017"},
    {"the last angle brackets hold the address of an entry, closed or not",
     "cyrus-parseaddr-003 jakarta-mail-129 jakarta-mail-141 jakarta-mail-145 jakarta-mail-171"},
    {"parentheses that are not closed keep the rest in one entry",
     "jakarta-mail-133 jakarta-mail-135 jakarta-mail-137 jakarta-mail-147"},
    {"a name in quotes is never an address, and loses a quote that is not closed",
     "jakarta-mail-149 jakarta-mail-181 jakarta-mail-183 jakarta-mail-185"},
    {"what stands in parentheses is the name", "jakarta-mail-047"},
    {"a line break ends no entry", "mail-parser-030"},
    {"encoded words are read after the list has been split", "jsmime-addr2047-006"},
    {"tells what it expects by another name", "cyrus-parseaddr-027"},
};

TEST(AddressCorpus, ListsAreSplitAsExpected) {
  LUMR_NEEDS_CORPUS();
  std::map<std::string, const char*> reasons;
  for (const auto& row : kDifferences) {
    std::istringstream words{std::string(row.sources)};
    for (std::string source; words >> source;) reasons[source] = row.why;
  }
  const unsigned before = CurrentCodePage();
  SetCurrentCodePage(1252);  // the bytes of UTF-8 are then characters like any others
  int same = 0;
  for (const std::string file :
       {"jsmime-lists.jsonl", "jsmime-lists-encoded.jsonl", "mail-parser-lists.jsonl",
        "cyrus-parseaddr.jsonl", "jakarta-mail-lists.jsonl"}) {
    for (const Strings& line : ReadCases(file)) {
      const bool isRefused = std::any_of(line.begin(), line.end(), [](const std::string& s) {
        return s.starts_with("Exception");
      });
      if (isRefused) continue;  // here every text is split into something
      const std::string source = ValuesOf(line, "source").back();
      CStringArray addresses;
      CStringArray names;
      GetAddrNameArray(line[1], addresses, names);
      // A local name alone is an address to some, and a name here.
      for (std::size_t i = 0; i < addresses.size(); ++i) {
        if (addresses[i].empty() && file.starts_with("jakarta")) addresses[i] = names[i];
      }
      const bool isSame = addresses == ExpectedAddresses(file, line);
      const auto reason = reasons.find(source);
      EXPECT_EQ(isSame, reason == reasons.end())
          << source << ": " << line[1] << (reason == reasons.end() ? "" : " is now the same: ")
          << ::testing::PrintToString(addresses);
      same += isSame;
    }
  }
  SetCurrentCodePage(before);
  EXPECT_GT(same, 80);
}

TEST(AddressCorpus, ChecksAskForLessAndForMore) {
  LUMR_NEEDS_CORPUS();
  // How often which result of CheckEMailAddress meets which verdict.
  const struct {
    bool isValid;
    int result;
    const char* why;
    int count;
  } expected[] = {
      {true, 0, "agreed", 81},
      {true, 1, "letters beyond ASCII, one of them ending in the byte of \"@\"", 1},
      {true, 2, "quoted local parts, comments, names: nothing to type into an address field", 42},
      {true, 3, "letters beyond ASCII", 2},
      {false, -1, "agreed", 1},
      {false, 0, "the form of an address is not checked", 38},
      {false, 1, "agreed", 5},
      {false, 2, "agreed", 31},
  };
  std::map<std::pair<bool, int>, int> counts;
  for (const std::string file : {"isemail.jsonl", "flanker-valid.jsonl", "flanker-invalid.jsonl"}) {
    for (const Strings& line : ReadCases(file)) {
      const bool isValid = file == "isemail.jsonl" ? ValuesOf(line, "category")[0] != "ISEMAIL_ERR"
                                                   : file == "flanker-valid.jsonl";
      CStringA message;
      ++counts[{isValid, CheckEMailAddress(line[1].c_str(), message)}];
    }
  }
  for (const auto& row : expected) {
    const std::pair key(row.isValid, row.result);
    EXPECT_EQ(counts[key], row.count) << row.isValid << " " << row.result << ": " << row.why;
    counts.erase(key);
  }
  EXPECT_TRUE(counts.empty());
}

}  // namespace
}  // namespace lumr
