#include "lumrmisc/mailtext/address.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/messages.h"
#include "mailtext/address_model.h"
#include "mailtext/coders.h"
#include "search/sample.h"

namespace lumr {
namespace {

using Entries = CStringArray;
constexpr int kStep = static_cast<int>(kSampleStep);

// Wide text of narrow text, two-byte characters as one unit: for rules about ASCII.
CStringW Widened(std::string_view text) {
  CStringW wide;
  for (const char32_t c : model::Split(text)) wide += static_cast<char16_t>(c);
  return wide;
}

std::string Message(int id, std::string_view text) {
  return id == 0 ? "" : MessageText(static_cast<unsigned>(id)) + "\n" + std::string(text);
}

TEST(CheckAddress, NamesTheFirstRuleThatFails) {
  const struct {
    AddressField field;
    const char* text;
    int result;
    unsigned message;
    int position;
  } cases[] = {
      {AddressField::kAddress, "a@b", 0, 0, -1},
      {AddressField::kAddress, "@", 0, 0, -1},
      {AddressField::kAddress, "a@b@[c] ,:", 0, 0, -1},
      {AddressField::kAddress, "", -1, 3103, -1},
      {AddressField::kAddress, "ab", 1, 3104, -1},
      {AddressField::kAddress, "\x83\x40", 1, 3104, -1},  // "@" is half of a character
      {AddressField::kAddress, "a@b;c", 2, 3105, 3},
      {AddressField::kAddress, "a(@b", 2, 3105, 1},
      {AddressField::kAddress, "a@b)", 2, 3105, 3},
      {AddressField::kAddress, "<a@b", 2, 3105, 0},
      {AddressField::kAddress, "a@b>", 2, 3105, 3},
      {AddressField::kAddress, "a\"@b", 2, 3105, 1},
      {AddressField::kAddress, "\x83\x5c@b\\", 2, 3105, 4},  // the first backslash is half
      {AddressField::kAddress, "a@b\x83\x5c", 3, 3106, 3},
      {AddressField::kAddress, "a@b\xb1\x83", 3, 3106, 4},  // a lead byte alone, before katakana
      {AddressField::kAddress, "a@b\xb1", 3, 3132, 3},
      {AddressField::kWildAddress, "", -1, 3103, -1},
      {AddressField::kWildAddress, "*.example", 0, 0, -1},
      {AddressField::kWildAddress, "*;", 2, 3105, 1},
      {AddressField::kWildAddress, "\x82\xa0", 3, 3106, 0},
      {AddressField::kWildAddress, "\xb1", 3, 3132, 0},
      {AddressField::kName, "", 0, 0, -1},
      {AddressField::kName, "\x83\x5c (\"<>;", 0, 0, -1},
      {AddressField::kName, "\x83\xb1 \xb1", 3, 3116, 3},
      {AddressField::kName, "a\x87\x40", 3, 3129, 1},
      {AddressField::kName, "\x87\x40\xb1", 3, 3116, 2},
      {AddressField::kOrganisation, "\xb1", 3, 3130, 0},
      {AddressField::kOrganisation, "\x87\x40", 3, 3131, 0},
      {AddressField::kServer, "mail.example", 0, 0, -1},
      {AddressField::kServer, "", -1, 3107, -1},
      {AddressField::kServer, "a;", 2, 3108, 1},
      {AddressField::kServer, "\x83\x5c", 3, 3109, 0},
      {AddressField::kServer, "\xb1", 0, 0, -1},
      {AddressField::kAccount, "()<>;\"\\\xb1", 0, 0, -1},
      {AddressField::kAccount, "", -1, 3110, -1},
      {AddressField::kAccount, "a\x82\xa0", 3, 3111, 1},
  };
  const auto allowEmptyNot = [](const char* text, CStringA& m) {
    return CheckServerName(text, 0, m);
  };
  int (*const checks[])(const char*, CStringA&) = {CheckEMailAddress, CheckWildEMailAddress,
                                                   CheckEMailName,    CheckEMailOrgani,
                                                   allowEmptyNot,     CheckAccountName};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const AddressProblem problem = FindAddressProblem(c.field, TightCopy(c.text));
    EXPECT_EQ(problem.result, c.result);
    EXPECT_EQ(problem.message, c.message);
    EXPECT_EQ(problem.position, c.position);
    CStringA message = "old";
    EXPECT_EQ(checks[static_cast<int>(c.field)](c.text, message), c.result);
    EXPECT_EQ(message, MessageText(c.message));
  }
  CStringA message = "old";
  EXPECT_EQ(CheckServerName("", 1, message), 0);
  EXPECT_EQ(message, "");
  EXPECT_EQ(CheckEMailAddress(nullptr, message), -1);
  EXPECT_EQ(message, MessageText(3103));
}

TEST(FindAddrDelimiter, HonoursQuotesAndParentheses) {
  const struct {
    const char* text;
    int start;
    int result;
    int position;
    int message;
    const char* told = "";
  } cases[] = {
      {"", 0, 1, -1, 0},
      {"a,b", 0, 1, 1, 0},
      {"a,b", 2, 1, -1, 0},
      {"a,b", 3, 1, -1, 0},
      {"a,b", 9, 1, -1, 0},
      {"a,b", -1, 0, -1, 0},
      {"", -1, 1, -1, 0},
      {"\"a,b\",c", 0, 1, 5, 0},
      {"\"a\\\",b\",c", 0, 1, 7, 0},
      {"\"a\\\\\",b", 0, 1, 5, 0},
      {"\\\"a,b", 0, 1, 3, 0},
      {"(a,(b),c),d", 0, 1, 9, 0},
      {"a),b", 0, 1, 2, 0},
      {"(\"),b", 0, 1, 3, 0},
      {"\"(\",b", 0, 1, 3, 0},
      {"\"a,b", 0, 1, 2, 0},
      {"x\"a,b ", 0, 0, -1, 3161, "x\"a,b"},
      {"x, \"a,b ", 2, 0, -1, 3161, "\"a,b"},
      {"x, \"a,b ", 3, 1, 5, 0},
      {"\"a\" \"b,", 0, 0, -1, 3161, "\"a\" \"b,"},
      {"a, (b,c ", 2, 0, -1, 3162, "(b,c"},
      {"\"x(,", 0, 0, -1, 3162, "\"x(,"},
      {"\x83\x5c\"a,b\"", 0, 1, -1, 0},  // no backslash before the quote
      {"\"\x83\x5c\",b", 0, 1, 4, 0},
      {"\"\\\x83\x5c\",b", 0, 1, 5, 0},
      {"\x81,b", 0, 1, 1, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    int position = 7;
    CStringA message = "old";
    EXPECT_EQ(FindAddrDelimiter(c.text, c.start, ',', position, message), c.result);
    EXPECT_EQ(position, c.position);
    EXPECT_EQ(message, Message(c.message, c.told));
    if (model::Split(c.text).size() != std::string_view(c.text).size()) continue;
    CStringW wideMessage = u"old";
    EXPECT_EQ(FindAddrDelimiter(Widened(c.text).c_str(), c.start, u',', position, wideMessage),
              c.result);
    EXPECT_EQ(position, c.position);
    const CStringW expected = MessageTextW(static_cast<unsigned>(c.message)) + u"\n";
    EXPECT_EQ(wideMessage, c.message == 0 ? u"" : expected + Widened(c.told));
  }
  int position = 7;
  CStringA message = "old";
  EXPECT_EQ(FindAddrDelimiter(static_cast<const char*>(nullptr), 0, ',', position, message), 1);
  EXPECT_EQ(position, -1);
}

TEST(GetAddrArray2, SplitsAtOuterCommas) {
  const struct {
    const char* list;
    int result;
    Entries entries;
    int message = 0;
    const char* told = "";
  } cases[] = {
      {"", 1, {}},
      {" , ,\t", 1, {}},
      {"\"Doe, J\" <j@x>, k@y", 1, {"\"Doe, J\" <j@x>", "k@y"}},
      {"\"Doe <j@x>", 1, {"\"Doe <j@x>"}},
      {"\"Doe <j@x>, k", 1, {"\"Doe <j@x>", "k"}},
      {"k, \"Doe <j@x>, l", 0, {"k", "\"Doe <j@x>, l"}, 3161, "\"Doe <j@x>, l"},
      {"a (b, c@x", 0, {"a (b, c@x"}, 3162, "a (b, c@x"},
      {"z, a (b, c@x ", 0, {"z", "a (b, c@x"}, 3162, "a (b, c@x"},
      {"\x83\x5c\"x,y\" <a@b>,c", 1, {"\x83\x5c\"x,y\" <a@b>", "c"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.list);
    Entries entries = {"old"};
    CStringA message = "old";
    EXPECT_EQ(GetAddrArray2(c.list, entries, message), c.result);
    EXPECT_EQ(entries, c.entries);
    EXPECT_EQ(message, Message(c.message, c.told));
  }
  CArray<CStringW> wide;
  CStringW message;
  EXPECT_EQ(GetAddrArray2(u"\u3000\u5c71\"a,b\" , \"c", wide, message), 0);
  EXPECT_EQ(wide, (CArray<CStringW>{u"\u5c71\"a,b\"", u"\"c"}));
}

TEST(ParseAddrList, CutsAtEverySeparator) {
  Entries entries = {"old"};
  EXPECT_EQ(ParseAddrList(" a,b\tc\r\n\"d,e\" (f)\x81\x40,", entries), 6);
  EXPECT_EQ(entries, (Entries{"a", "b", "c", "\"d", "e\"", "(f)\x81\x40"}));
  EXPECT_EQ(ParseAddrList(nullptr, entries), 0);
  EXPECT_EQ(entries, Entries());
}

TEST(GetAddressRange, FindsTheEntryOfThePosition) {
  // Below each position the first character of its entry; a space where there is none.
  const char* cases[][2] = {
      {"", "a"},
      {"ab", "aaa"},
      {" ab , c,,d ", " aaaa bbcddd"},
      {"\"a,b\" <c>,d", "aaaaaaaaaabb"},
      {"a, ", "aa b"},
      {"a,(b,c", "aa     "},
      {"a, \"b,c", "aa bbbcc"},
  };
  for (const auto& [list, owners] : cases) {
    const std::string_view text = list;
    std::vector<std::pair<int, int>> ranges;
    for (int position = 0; position <= static_cast<int>(text.size()); ++position) {
      SCOPED_TRACE(std::string(list) + " " + std::to_string(position));
      int start = -7;
      int end = -7;
      const int found = GetAddressRange(list, position, start, end);
      const std::string_view all = owners;
      const char owner = static_cast<std::size_t>(position) < all.size() ? all[position] : ' ';
      ASSERT_EQ(found, owner != ' ');
      if (found == 0) {
        EXPECT_EQ(start, -7);
        continue;
      }
      EXPECT_EQ(start, static_cast<int>(all.find(owner)));
      EXPECT_EQ(end, static_cast<int>(all.rfind(owner)));
    }
  }
  int start = 0;
  int end = 0;
  EXPECT_EQ(GetAddressRange("a", -1, start, end), 0);
  EXPECT_EQ(GetAddressRange("a", 2, start, end), 0);
}

TEST(SplitMailAddr, TakesAddressAndNameApart) {
  const struct {
    const char* text;
    const char* address;
    const char* name;
    int message = 0;
    const char* told = "";
  } cases[] = {
      {"", "", ""},
      {" \t", "", ""},
      {"\"J \\\"D\\\"\" <j@x>", "j@x", "J \"D\""},
      {"j@x (John)", "j@x", "John"},
      {"John", "", "John"},
      {" John Doe < j@x > ", "j@x", "John Doe"},
      {"<j@x>", "j@x", ""},
      {"a <b> <j@x>", "j@x", "a <b>"},
      {"\"a <b\" c>", "b\" c", "a"},
      {"\"abc\\\" <j@x>", "j@x", "abc\\"},
      {"\"a\\\\\" <j@x>", "j@x", "a\\"},
      {"\"\x83\x5c\\\x83\x5c\" <j@x>", "j@x", "\x83\x5c\x83\x5c"},
      {"\x83\x5c\"x\" <j@x>", "j@x", "\x83\x5c\"x\""},
      {"%(name)", "%(name)", ""},
      {"%()", "%", ""},
      {"(c1) a (c2 (c3)) @b (c4)", "a  @b", "c1 c2 (c3) c4"},
      {"\"a (b)\"@x", "\"a (b)\"@x", ""},
      {"\x83\x40", "", "\x83\x40"},  // half of it is "@"
      {"\"j\"@x", "\"j\"@x", ""},
      {"\"j@x\"", "", "j@x"},
      {"\"", "", ""},
      {"\"j@x", "\"j@x", ""},
      {"\"j", "", "j"},
      {"n <j@x", "j@x", "n"},
      {"n <j@x> m", "j@x", "n  m"},
      {"\"n\" <j@x> (\"m\")", "j@x", "n\"  (\"m\")"},
      {"<j@x> \"n\"", "j@x", "n"},
      {"a \"b <c@d", "", "a \"b <c@d", 3161, "a \"b <c@d"},
      {" a (b <c@d ", "", "a (b <c@d", 3162, "a (b <c@d"},
      {"a <b (c@d ", "", "a <b (c@d", 3162, "b (c@d"},
      {"a <b \"c> x", "", "a <b \"c> x", 3161, "b \"c> x"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    CStringA address = "old";
    CStringA name = "old";
    CStringA message = "old";
    EXPECT_EQ(SplitMailAddr(c.text, address, name, message), c.message == 0);
    EXPECT_EQ(address, c.address);
    EXPECT_EQ(name, c.name);
    EXPECT_EQ(message, Message(c.message, c.told));
  }
}

TEST(MakeAddress, QuotesWhereNeeded) {
  const struct {
    const char* address;
    const char* name;
    int quoteName;
    const char* expected;
  } cases[] = {
      {"j@x", "Doe, J", 1, "\"Doe, J\" <j@x>"},
      {"j@x", "Doe, J", 0, "Doe, J <j@x>"},
      {"j@x", "", 1, "j@x"},
      {"j@x", nullptr, 0, "j@x"},
      {"", "John", 1, "John <>"},
      {nullptr, "", 1, ""},
      {"j@x", "John", 1, "John <j@x>"},
      {"j@x", "\"John\"", 1, "John <j@x>"},
      {"j@x", "\"Doe, J\"", 1, "\"Doe, J\" <j@x>"},
      {"j@x", "\"Doe\"", 0, "\"Doe\" <j@x>"},
      {"j@x", "\"\"", 1, "\"\\\"\\\"\" <j@x>"},
      {"j@x", "\"a\\\"", 1, "\"\\\"a\\\\\\\"\" <j@x>"},
      {"j@x", "a\\b \"c\"", 1, "\"a\\\\b \\\"c\\\"\" <j@x>"},
      {"j@x", "\x83\x5c", 1, "\x83\x5c <j@x>"},
      {"j@x", "\"\x83\x5c\"", 1, "\x83\x5c <j@x>"},
      {"j@x", "\x83\x40.", 1, "\"\x83\x40.\" <j@x>"},
      {"j@x", "\x81\", <k@y>", 1, "\"?\\\", <k@y>\" <j@x>"},  // half a character
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(MakeAddress(c.address, c.name, c.quoteName), c.expected);
    const bool hasAddress = c.address != nullptr && *c.address != '\0';
    EXPECT_EQ(MakeAddress2(c.address, c.name, c.quoteName), hasAddress ? c.expected : c.name);
    if (c.address == nullptr || c.name == nullptr) continue;
    if (c.name[0] == '\x81') continue;
    EXPECT_EQ(MakeAddress(Widened(c.address).c_str(), Widened(c.name).c_str(), c.quoteName),
              Widened(c.expected));
  }
  for (const char special : std::string_view("()<>[]:;@,.\"\\")) {
    EXPECT_EQ(MakeAddress("j@x", std::string(1, special).c_str(), 1)[0], '"') << special;
  }
  EXPECT_EQ(MakeAddress("j@x", "!#$%&'*+-/=?^_`{|}~ 09azAZ", 1)[0], '!');
  EXPECT_EQ(MakeAddress2(u"", u"a.b", 1), u"a.b");
  EXPECT_EQ(MakeAddress2(u"j@x", u"a.b", 1), u"\"a.b\" <j@x>");

  EXPECT_EQ(CustomizeAddress("j@x", "k@y", "Doe, K", 1), "\"Doe, K\" <j@x>");
  EXPECT_EQ(CustomizeAddress("John", "k@y", "K", 1), "John <k@y>");
  EXPECT_EQ(CustomizeAddress(nullptr, "k@y", "K", 0), "K <k@y>");
}

TEST(AddressEnds, AreTakenOff) {
  const struct {
    void (*function)(CStringA&);
    const char* text;
    const char* expected;
  } cases[] = {
      {ExcludeAngleBracket, " <a@b> ", "a@b"},
      {ExcludeAngleBracket, "<a", "a"},
      {ExcludeAngleBracket, "a>", "a"},
      {ExcludeAngleBracket, "< a >", " a "},
      {ExcludeAngleBracket, "<", ""},
      {ExcludeAngleBracket, "<<a>>", "<a>"},
      {ExcludeQuote, "\t\"a\"\n", "a"},
      {ExcludeQuote, "\"", ""},
      {ExcludeQuote, "a\"", "a"},
      {ExcludeQuote, "\"\"\"", "\""},
      {ExtractLastMessageID, " <a@b> <c@d> ", "c@d"},
      {ExtractLastMessageID, "<a@b> <c@d", "<a@b> <c@d"},
      {ExtractLastMessageID, "<a> <b> x>", "b"},
      {ExtractLastMessageID, " a@b ", "a@b"},
      {ExtractLastMessageID, "", ""},
  };
  for (const auto& c : cases) {
    CStringA text = c.text;
    c.function(text);
    EXPECT_EQ(text, c.expected) << c.text;
  }
  CStringW wide = u"\u3000\"a\"";
  ExcludeQuote(wide);
  EXPECT_EQ(wide, u"a");

  CStringA url = "mailto:a@b";
  AddMailtoParam("subject", "hi", url);
  AddMailtoParam("body", "a b&c", url);
  EXPECT_EQ(url, "mailto:a@b?subject=hi&body=a b&c");
}

TEST(AddressLists, AreSearched) {
  const char* list = "\"Doe, J\" <J@x>, John, k@y (K)";
  Entries addresses = {"old"};
  Entries names = {"old"};
  EXPECT_EQ(GetAddrNameArray(list, addresses, names), 3);
  EXPECT_EQ(addresses, (Entries{"J@x", "", "k@y"}));
  EXPECT_EQ(names, (Entries{"Doe, J", "John", "K"}));
  EXPECT_EQ(LookupAddrNameArray(addresses, names, "K@Y", ""), 2);
  EXPECT_EQ(LookupAddrNameArray(addresses, names, "z", "K"), -1);
  EXPECT_EQ(LookupAddrNameArray(addresses, names, "", "jOHN"), 1);
  EXPECT_EQ(LookupAddrNameArray(addresses, names, nullptr, "K"), -1);
  EXPECT_EQ(LookupAddrNameArray({""}, {""}, "", ""), -1);
  EXPECT_EQ(LookupAddrNameArray({}, {}, "", "K"), -1);

  EXPECT_EQ(GetAddrNameArray("a@b, c (d, e", addresses, names), 2);
  EXPECT_EQ(names, (Entries{"", "c (d, e"}));

  const struct {
    const char* address;
    int anyOther;
    const char* list;
    int expected;
  } included[] = {
      {"j@X", 0, list, 1},     {"z@x", 0, list, 0},
      {"j@x", 1, list, 1},     {"j@x", 1, "J@X, N <j@x>", 0},
      {"j@x", 0, "", 0},       {"j@x", 1, "", 0},
      {"j@x", 0, "j@x, (", 0}, {"j@x", 1, "k@x, (", 0},
      {"", 0, "John", 1},      {"\x82\x60@x", 0, "\x82\x81@x", 1},
  };
  for (const auto& c : included) {
    EXPECT_EQ(IsAddressIncluded(c.address, c.anyOther, c.list), c.expected)
        << c.address << " in " << c.list;
  }
  const struct {
    Entries patterns;
    int anyUnmatched;
    const char* list;
    int expected;
  } wild[] = {
      {{"*@X"}, 0, list, 1},
      {{"*@x"}, 1, list, 1},
      {{"*@x", "*@y", ""}, 1, list, 0},
      {{"q", "?@y"}, 0, list, 1},
      {{"*@z"}, 0, list, 0},
      {{}, 0, list, 0},
      {{}, 1, list, 1},
      {{"*"}, 1, list, 0},
      {{"*"}, 0, "", 0},
      {{}, 1, "", 0},
      {{"*"}, 0, "a@b, \"c\" \"", 0},
      {{}, 1, "a@b, (", 0},
  };
  for (const auto& c : wild) {
    EXPECT_EQ(IsWildAddrIncluded(c.patterns, c.anyUnmatched, c.list), c.expected) << c.list;
  }
}

// ---- Against the plain model, and there and back ----

std::string RuleRichText(std::mt19937& random) {
  static const std::string_view pieces[] = {
      "\"", "\"", "(",  ")", "\\",  ",",        "<",        ">",        "@",    " ",
      "a",  "%(", "\t", ".", "b c", "\x83\x5c", "\x83\x40", "\x82\xa0", "\x81", "\xb1"};
  std::string text;
  for (std::size_t left = random() % 16; left > 0; --left) {
    text += pieces[random() % std::size(pieces)];
  }
  return text;
}

TEST(Addresses, AreReadAsThePlainModelDoes) {
  std::mt19937 random(20240502);
  for (int i = 0; i < 60000 / kStep; ++i) {
    const std::string text = RuleRichText(random);
    const model::Characters characters = model::Split(text);
    const TightCopy copy(text);
    SCOPED_TRACE(::testing::PrintToString(text));

    int expectedMessage = 0;
    const std::size_t start = characters.empty() ? 0 : random() % characters.size();
    const int from = static_cast<int>(model::Join(characters.substr(0, start)).size());
    const int expected = model::Find(characters, start, ',', expectedMessage);
    int position = 0;
    CStringA message;
    ASSERT_EQ(FindAddrDelimiter(copy, from, ',', position, message), expectedMessage == 0);
    const std::size_t before = static_cast<std::size_t>(std::max(expected, 0));
    ASSERT_EQ(position, expected < 0
                            ? -1
                            : static_cast<int>(model::Join(characters.substr(0, before)).size()));
    ASSERT_EQ(message,
              Message(expectedMessage, model::Join(model::Trim(characters.substr(start)))));
    const CStringW wide = Widened(text);
    CStringW wideMessage;
    ASSERT_EQ(FindAddrDelimiter(wide.c_str(), static_cast<int>(start), u',', position, wideMessage),
              expectedMessage == 0);
    ASSERT_EQ(position, expected);

    Entries entries;
    const int split = GetAddrArray2(copy, entries, message);
    const std::vector<model::Characters> modelEntries =
        model::SplitList(characters, expectedMessage);
    ASSERT_EQ(split, expectedMessage == 0);
    ASSERT_EQ(message.empty(), split != 0);
    ASSERT_EQ(entries.size(), modelEntries.size());
    for (std::size_t k = 0; k < entries.size(); ++k) {
      ASSERT_EQ(entries[k], model::Join(modelEntries[k]));
    }
    CStringA address;
    CStringA name;
    const model::Entry entry = model::TakeApart(characters);
    ASSERT_EQ(SplitMailAddr(copy, address, name, message), entry.message == 0);
    ASSERT_EQ(address, model::Join(entry.address));
    ASSERT_EQ(name, model::Join(entry.name));
  }
}

TEST(Addresses, AreSplitIntoWhatTheyWereMadeOf) {
  std::mt19937 random(20240503);
  for (int i = 0; i < 20000 / kStep; ++i) {
    Entries addresses;
    Entries names;
    CStringA list;
    for (std::size_t left = 1 + random() % 4; left > 0; --left) {
      CStringA name = model::Join(model::Trim(model::Split(RuleRichText(random))));
      ExcludeQuote(name);
      name = model::Join(model::Trim(model::Split(name)));
      // Half a character may have to give way, and enclosing quotes are the caller's way to quote.
      const bool isHalf = name.find('\x81') != name.npos;
      const bool isEnclosed = name.size() > 1 && name.front() == '"' && name.back() == '"';
      if (isHalf || isEnclosed) name = "x";
      addresses.push_back("u" + std::to_string(random() % 100) + "@example.jp");
      names.push_back(name);
      if (!list.empty()) list += ", ";
      list += MakeAddress(addresses.back().c_str(), name.c_str(), 1);
    }
    Entries addressesAgain;
    Entries namesAgain;
    GetAddrNameArray(list, addressesAgain, namesAgain);
    ASSERT_EQ(addressesAgain, addresses) << list;
    ASSERT_EQ(namesAgain, names) << list;
  }
}

// Half a character at any place lets no name out of its quotes.
TEST(Addresses, StayWholeWhateverTheName) {
  std::mt19937 random(20240504);
  for (int i = 0; i < 50000 / kStep; ++i) {
    const std::string name = RuleRichText(random);
    const CStringA list = MakeAddress("u@example.jp", name.c_str(), 1) + ", v@example.jp";
    Entries addresses;
    Entries names;
    ASSERT_EQ(GetAddrNameArray(list, addresses, names), 2) << list;
    ASSERT_EQ(addresses, (Entries{"u@example.jp", "v@example.jp"})) << list;
  }
}

TEST(Addresses, KnowOtherCodePages) {
  const unsigned before = CurrentCodePage();
  // In a single-byte page a lead byte of Shift_JIS is a letter, and the backslash behind it one.
  SetCurrentCodePage(1252);
  int position = 0;
  CStringA message;
  EXPECT_EQ(FindAddrDelimiter("\"\x83\\\",b", 0, ',', position, message), 0);
  EXPECT_EQ(message.substr(message.find('\n')), "\n\"\x83\\\",b");
  EXPECT_EQ(MakeAddress("j@x", "\x83\\", 1), "\"\x83\\\\\" <j@x>");
  SetCurrentCodePage(949);  // where it is no trail byte
  EXPECT_EQ(MakeAddress("j@x", "\x83\\", 1), "\"\x83\\\\\" <j@x>");
  SetCurrentCodePage(before);
}

// Whatever is not linear here takes minutes.
TEST(Addresses, EndOnHostileInput) {
  for (const char* piece : {"(", ")", "\"", "\\", ",", "\",", "\"\\\",", "<", ">", "(<", " ",
                            "\x81", "\"a\" <b@c>, ", "\\\"", "%(", "@,"}) {
    std::string text;
    while (text.size() < 1000000 / kSampleStep) text += piece;
    CStringA message;
    CStringA address;
    CStringA name;
    Entries entries;
    Entries names;
    CArray<CStringW> wide;
    CStringW wideMessage;
    int start = 0;
    int end = 0;
    GetAddrArray2(text, entries, message);
    GetAddrArray2(Widened(text).c_str(), wide, wideMessage);
    GetAddrNameArray(text, entries, names);
    SplitMailAddr(text, address, name, message);
    GetAddressRange(text.c_str(), static_cast<int>(text.size()), start, end);
    IsAddressIncluded("z", 0, text.c_str());
    MakeAddress("a", text.c_str(), 1);
  }
}

}  // namespace
}  // namespace lumr
