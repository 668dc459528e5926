// Address fields: groups, encoded words and raw Japanese in them.
#include "lumrmisc/mailtext/addressheader.h"

#include <gtest/gtest.h>

#include <random>

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/mailtext/address.h"
#include "lumrmisc/mailtext/headerword.h"
#include "search/sample.h"

namespace lumr {
namespace {

// "address|name" of each entry.
CStringArray Read(std::string_view raw, std::string_view rawCharset = {}) {
  CArray<HeaderAddress> entries;
  ReadAddressHeader(raw, entries, rawCharset);
  CStringArray texts;
  for (const HeaderAddress& entry : entries) texts.push_back(entry.address + '|' + entry.name);
  return texts;
}

TEST(GetAddrArray3, FindsTheMembersOfGroups) {
  const struct {
    const char* list;
    CStringArray entries;
  } cases[] = {
      {"Team: a@x.jp, \"B; C\" <b@y.jp> ;", {"a@x.jp", "\"B; C\" <b@y.jp>"}},
      {"undisclosed-recipients:;", {}},
      {"a@x, A: b@x;, c@x, \"B: b\":d@x,;e@x", {"a@x", "b@x", "c@x", "d@x", "e@x"}},
      {"A: a@x; B: b@x;", {"a@x", "b@x"}},
      {"A:B: c <a@x>, b@x;", {"c <a@x>", "b@x"}},
      // Not ended.
      {"A: a@x, b@x", {"a@x", "b@x"}},
      {"A: a@x, B: b@x", {"a@x", "b@x"}},
      // Names of one address, which should be quoted.
      {"Re: J <j@x>, k@x", {"Re: J <j@x>", "k@x"}},
      {"Re: J <j@x>, A: k@x;", {"Re: J <j@x>", "k@x"}},
      {"a@x;b@x", {"a@x;b@x"}},
      // No signs of groups.
      {"\"A: b\" <a@x>, b (c: d;) <e@x>", {"\"A: b\" <a@x>", "b (c: d;) <e@x>"}},
      {"a@[IPv6:::1], <@b:a@x>, c <d;e@x>", {"a@[IPv6:::1]", "<@b:a@x>", "c <d;e@x>"}},
      {"\x83\x5c: \x83\x5c <a@x>;", {"\x83\x5c <a@x>"}},
      // What is left open is one entry.
      {"A: a@x, B: \"b;", {"a@x", "B: \"b;"}},
  };
  for (const auto& c : cases) {
    CStringArray entries{"x"};
    CStringA message;
    const bool isWhole = GetAddrArray3(c.list, entries, message) != 0;
    EXPECT_EQ(isWhole, message.empty());
    EXPECT_EQ(entries, c.entries) << c.list;
  }
}

TEST(ReadAddressHeader, SplitsBeforeWordsAreRead) {
  const struct {
    const char* raw;
    CStringArray entries;
    const char* text;
  } cases[] = {
      {"=?utf-8?Q?Doe,_J?= <a@x>,\r\n b@x", {"a@x|Doe, J", "b@x|"}, "\"Doe, J\" <a@x>, b@x"},
      {"=?utf-8?B?ZXZpbEBlLmpwLCA=?= <a@x>", {"a@x|evil@e.jp, "}, "\"evil@e.jp, \" <a@x>"},
      {"=?utf-8?Q?=3Ce@f=3E?=", {"|<e@f>"}, "\"<e@f>\""},
      {"=?utf-8?Q?e@f?=", {"|e@f"}, "e@f"},
      {"\"=?utf-8?Q?a=22,=5C(?=\" <a@x>", {"a@x|a\",\\("}, "\"a\\\",\\\\\\(\" <a@x>"},
      {"a@x (=?utf-8?Q?b),?= =?utf-8?Q?c?=), d@x", {"a@x|b),c", "d@x|"}, "a@x (b\\),c), d@x"},
      {"=?utf-8?Q?A(b)?= <a@x>", {"a@x|A(b)"}, "A(b) <a@x>"},
      {"=?utf-8?Q?a(?= <a@x>, b@x", {"a@x|a(", "b@x|"}, "\"a(\" <a@x>, b@x"},
      {"=?utf-8?Q?A:?= =?utf-8?Q?B;?= <a@x>", {"a@x|A:B;"}, "\"A:B;\" <a@x>"},
      {"=?ISO_8859-1:1987?Q?A?=: a@x;", {"a@x|"}, "A: a@x;"},
      // A character that two words share; words on both sides of the address share nothing.
      {"=?utf-8?B?44E=?= =?utf-8?B?gg==?= <a@x>", {"a@x|\u3042"}, "\u3042 <a@x>"},
      {"=?utf-8?Q?A?= <a@x> =?utf-8?Q?B?=", {"a@x|A  B"}, "A <a@x> B"},
      // Raw bytes whose halves are signs.
      {"\x83\x5c \x81\x40 =?utf-8?Q?,?= <a@x>",
       {"a@x|\u30BD \u3000 ,"},
       "\u30BD \u3000 \",\" <a@x>"},
      {"\x1b$B$\"%,\x1b(B =?utf-8?Q?,?= <a@x>, b@x",
       {"a@x|\u3042\u30AC ,", "b@x|"},
       "\u3042\u30AC \",\" <a@x>, b@x"},
      {"\x01"
       "0\x02 =?utf-8?Q?a?= <a@x>",
       {"a@x|0 a"},
       "0 a <a@x>"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Read(c.raw), c.entries) << c.raw;
    EXPECT_EQ(DecodeAddressHeaderUtf8(c.raw), c.text);
  }
  CArray<HeaderAddress> open;
  EXPECT_EQ(ReadAddressHeader("a@x, \"=?utf-8?Q?b?=", open), 3161u);
  EXPECT_EQ(open.at(1).entry, "\"=?utf-8?Q?b?=");
}

// Whatever the bytes of a raw character are, they are a name.
TEST(ReadAddressHeader, TakesEveryRawCharacterForAName) {
  const std::string rest = " =?utf-8?Q?=2C?= <a@x>, b@x";
  for (int i = 0; i < 94 * 94; i += static_cast<int>(kSampleStep)) {
    const int row = i / 94;
    const int cell = i % 94;
    const std::string jis{
        '\x1b', '$', 'B', static_cast<char>(0x21 + row), static_cast<char>(0x21 + cell),
        '\x1b', '(', 'B'};
    const std::string sjis{
        static_cast<char>((row < 62 ? 0x81 : 0xC1) + row / 2),
        static_cast<char>(row % 2 == 0 ? 0x40 + cell + (cell > 62 ? 1 : 0) : 0x9F + cell)};
    const CStringA name = DecodeHeaderValueUtf8(jis);
    const bool isDefined = DecodeHeaderValueUtf8(sjis, "Shift_JIS") == name && name.size() < 4;
    EXPECT_EQ(Read(jis + rest), (CStringArray{"a@x|" + name + " ,", "b@x|"})) << i;
    if (!isDefined) continue;
    EXPECT_EQ(Read(sjis + rest, "Shift_JIS"), (CStringArray{"a@x|" + name + " ,", "b@x|"})) << i;
  }
}

// The text for people gives the same list.
TEST(DecodeAddressHeader, KeepsTheList) {
  constexpr std::string_view kPieces[] = {"a@x",
                                          "<b@x>",
                                          ",",
                                          " ",
                                          " N ",
                                          "(c, d)",
                                          "\"e, =?utf-8?Q?=22=2C?= f\"",
                                          "g:",
                                          ";",
                                          " =?utf-8?Q?h=2C?= ",
                                          " =?utf-8?Q?=22?=",
                                          " =?utf-8?B?aUB4LCA=?= ",
                                          "=?utf-8?Q?=28?=",
                                          "=?utf-8?Q?=29?= ",
                                          "=?utf-8?Q?=3A?=",
                                          "=?utf-8?Q?=3B?="};
  std::mt19937 random(7);
  for (int i = 0; i < 20000; i += static_cast<int>(kSampleStep)) {
    std::string raw;
    for (std::size_t n = random() % 10; n > 0; --n) raw += kPieces[random() % std::size(kPieces)];
    CArray<HeaderAddress> entries;
    ReadAddressHeader(raw, entries);
    CStringArray again;
    CStringA message;
    const CApplyLocale singleByte(CT_WIN1252);
    GetAddrArray3(DecodeAddressHeaderUtf8(raw), again, message);
    ASSERT_EQ(again.size(), entries.size()) << raw << '\n' << DecodeAddressHeaderUtf8(raw);
  }
}

}  // namespace
}  // namespace lumr
