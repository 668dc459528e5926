#include "lumrmisc/mailtext/links.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/platform/codepage.h"
#include "mailtext/corpus.h"
#include "mailtext/link_model.h"

namespace lumr {
namespace {

constexpr CodeType kCodeTypes[] = {CT_SJIS, CT_GB2312, CT_KSC5601, CT_BIG5, CT_WIN1252, CT_UTF8};

std::string ToUtf16(std::string_view text, unsigned codePage) {
  CodePageDecoder decoder(codePage);
  std::string units(decoder.MaxOutput(text.size()) + 1, '\0');
  units.resize(static_cast<std::size_t>(decoder.Decode(text, true, units.data()) - units.data()));
  return units;
}

std::string ToSJis(std::string_view units) {
  CodePageEncoder encoder(932, "?");
  std::string text(encoder.MaxOutput(units.size()) + 1, '\0');
  text.resize(static_cast<std::size_t>(encoder.Encode(units, true, text.data()) - text.data()));
  return text;
}

// From a block that ends where the text does; wide text from an odd address.
LinkRange First(std::string_view text, CodeType codeType, int kind) {
  const auto block = std::make_unique<char[]>(text.size() + 1);
  text.copy(block.get() + 1, text.size());
  const char* const begin = block.get() + 1;
  const int size = static_cast<int>(text.size());
  const auto* const wide = reinterpret_cast<const char16_t*>(begin);
  LinkRange found{-1, -1, kind};
  if (kind == kLinkUrl) {
    found.start = FindUrlA(begin, size, codeType, found.length);
    if (IsCodeTypeUnicode(codeType)) {
      int length = -1;
      EXPECT_EQ(FindUrlW(wide, size, length), found.start);
      EXPECT_EQ(length, found.length);
    }
  } else if (IsCodeTypeUnicode(codeType)) {
    found.start = FindEMailW(wide, size, found.length);
  } else {
    const CApplyLocale scope(codeType);
    found.start = FindEMailA(begin, size, found.length);
  }
  return found;
}

std::vector<LinkRange> All(std::string_view text, CodeType codeType) {
  std::vector<LinkRange> links{{7, 7, 7}};
  const std::string copy(text);
  LinkFinder(codeType).FindAll(copy, links);
  return links;
}

std::string Show(const std::vector<LinkRange>& links) {
  std::string out;
  for (const LinkRange& link : links) {
    out += std::to_string(link.start) + '+' + std::to_string(link.length) +
           (link.kind == kLinkUrl ? "u " : "m ");
  }
  return out;
}

std::string Escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    char code[8];
    std::snprintf(code, sizeof code, c < 0x20 ? "\\x%02x" : "%c", static_cast<unsigned char>(c));
    out += code;
  }
  return out;
}

void ExpectModel(std::string_view text, CodeType codeType) {
  const linkmodel::Model model(text, codeType);
  std::size_t start = 0;
  std::size_t end = 0;
  LinkRange url{-1, 0, kLinkUrl};
  LinkRange mail{-1, 0, kLinkMail};
  if (model.FindUrl(0, start, end)) url = model.Range(start, end, kLinkUrl);
  if (model.FindEMail(0, start, end)) mail = model.Range(start, end, kLinkMail);
  ASSERT_EQ(Show({First(text, codeType, kLinkUrl)}), Show({url})) << Escaped(text);
  ASSERT_EQ(Show({First(text, codeType, kLinkMail)}), Show({mail})) << Escaped(text);
  ASSERT_EQ(Show(All(text, codeType)), Show(model.FindAll())) << Escaped(text);
}

struct Case {
  std::string_view text;   // UTF-8
  std::string_view match;  // the first match; empty: none
};

void Check(const Case& c, int kind) {
  SCOPED_TRACE(c.text);
  for (const CodeType codeType : {CT_SJIS, CT_UTF8}) {
    std::string bytes = ToUtf16(c.text, 65001);
    std::string wanted = ToUtf16(c.match, 65001);
    if (codeType == CT_SJIS) {
      bytes = ToSJis(bytes);
      wanted = ToSJis(wanted);
    }
    const LinkRange found = First(bytes, codeType, kind);
    EXPECT_EQ(found.start >= 0, !wanted.empty());
    if (found.start >= 0) {
      EXPECT_EQ(Escaped(bytes.substr(static_cast<std::size_t>(found.start),
                                     static_cast<std::size_t>(found.length))),
                Escaped(wanted));
    }
  }
}

}  // namespace

TEST(FindUrl, TakesWhatTheRulesSay) {
  const Case cases[] = {
      {"see http://host/a?b=1. Bye", "http://host/a?b=1."},
      {"xhttp://a", ""},
      {"xhttp://a http://b", ""},
      {"xhttp://a https://b", "https://b"},
      {"9ftp://a gopher:b", "gopher:b"},
      {"あhttp://a/い", "http://a/"},
      {"HtTpS:あ", "HtTpS:あ"},
      {"http://日本語.jp/日本", "http://日本語.jp/"},
      {"http://日本　語", "http://日本"},
      {"http:////日本/a", "http:////日本/a"},
      {"http:日本/a\"", "http:日本/a"},
      {"http://a<b", "http://a"},
      {"http:", "http:"},
      {"<http://a b>", "http://a"},
      {"<mailto:a@b?subject=日本 語>", "mailto:a@b?subject=日本 語"},
      {"mailto:a@b?subject=日本 語", "mailto:a@b?subject=日本"},
      {"mailto:a@b?subject=<日本>　語", "mailto:a@b?subject=<日本>"},
      {"mailto:a@b日?x", "mailto:a@b"},
      {"\"mailto:a b\"", "mailto:a"},
      {"C:\\dir\\file.txt rest", "C:\\dir\\file.txt"},
      {"\"C:\\My Files\\a\" b", "C:\\My Files\\a"},
      {"<C:\\My Files\\日本> b", "C:\\My Files\\日本"},
      {"<C:\\My Files", "C:\\My Files"},
      {"\"C:\\a", "C:\\a"},
      {"aC:\\dir 1d:\\x c:x", ""},
      {"表C:\\dir", "C:\\dir"},
      {"ソC:\\ソ", "C:\\"},
      {"file://x\\y z", "file://x\\y"},
      {"xfile:\\y", ""},
      {"\\\\server\\share\\a b", "\\\\server\\share\\a"},
      {"\\\\server", ""},
      {"\\\\server\\", ""},
      {"\\\\server\\\\", ""},
      {"\\\\server\\\\x", "\\\\server\\\\x"},
      {"\\\\\\server\\x", "\\\\server\\x"},
      {"\\\\\\\\", ""},
      {"a\\\\server\\x", ""},
      {"\\\\a\nb c\\d e", "\\\\a\nb c\\d"},
      {"<\\\\a b\\c d>", "\\\\a b\\c d"},
      {"\\\\日本\\表", "\\\\日本\\"},
      {"\\\\http://a", "http://a"},
      {"\\\\http://a\\b", "\\\\http://a\\b"},
      {"C:\\\\server\\x", "C:\\\\server\\x"},
      {"", ""},
  };
  for (const Case& c : cases) Check(c, kLinkUrl);
}

TEST(FindEMail, TakesWhatTheRulesSay) {
  const Case cases[] = {
      {"x a@b", ""},
      {"mail me: abc@host.ab.", "abc@host.ab."},
      {"a@b.c", "a@b.c"},
      {"a@.bc", ""},
      {"a@.b@c.d", ".b@c.d"},
      {"a@b..c@d.e", ".c@d.e"},
      {"a@b@c.d", ""},
      {"@b.c", ""},
      {"ソa@b.cソ", "a@b.c"},
      {"a＠b.c　　d@e.f", "d@e.f"},
      {"<a.b+c/d@host-1.example.co.jp>", "a.b+c/d@host-1.example.co.jp"},
      {"mailto:a@b.c,d", "a@b.c"},
      {"", ""},
  };
  for (const Case& c : cases) Check(c, kLinkMail);
}

TEST(FindLinks, BadArgumentsFindNothing) {
  int length = 5;
  EXPECT_EQ(FindUrlA(nullptr, 3, CT_SJIS, length), -1);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(FindUrlW(nullptr, -1, length), -1);
  EXPECT_EQ(FindEMailA("a@b.c", 0, length), -1);
  EXPECT_EQ(FindEMailW(nullptr, 4, length), -1);
  EXPECT_EQ(FindUrlA(" http://a\0b", -1, CT_SJIS, length), 1);
  EXPECT_EQ(length, 8);
  EXPECT_EQ(FindUrlW(u" http://a", -1, length), 2);
  EXPECT_EQ(length, 16);
  EXPECT_EQ(FindUrlW(u" http://a", 17, length), 2);
  EXPECT_EQ(length, 14);
}

// Every text of up to five of the characters that the rules look at.
TEST(FindLinks, IsTheModelOnEveryShortText) {
  constexpr std::string_view kSigns = "C:\\<>\"@. \x83?";
  for (int length = 1; length <= 5; ++length) {
    std::string text(static_cast<std::size_t>(length), kSigns[0]);
    for (std::vector<std::size_t> digits(text.size());;) {
      std::size_t i = 0;
      for (; i < digits.size(); ++i) {
        digits[i] = (digits[i] + 1) % kSigns.size();
        text[i] = kSigns[digits[i]];
        if (digits[i] != 0) break;
      }
      if (i == digits.size()) break;
      ASSERT_NO_FATAL_FAILURE(ExpectModel(text, CT_SJIS));
    }
  }
}

namespace {

std::string RandomText(std::mt19937& random, CodeType codeType, int pieces) {
  static constexpr std::string_view kPieces[] = {
      "http:", "https:", "mailto:", "ftp:", "FILE:",      "gopher:",  "C:\\",
      "\\\\",  "\\",     "<",       ">",    "\"",         "@",        ".",
      "?",     "/",      ":",       " ",    "a",          "b@c.d",    "x1",
      "-",     "\n",     "\t",      "a@b",  "http://a/b", "\\\\a\\b", "x.y@host.o:\\"};
  static constexpr std::u16string_view kWide = u"日本　　表ソäн\u00A0\u2028\xD83D";
  std::string text;
  for (int i = 0; i < pieces; ++i) {
    const bool unicode = IsCodeTypeUnicode(codeType);
    if (random() % 5 != 0) {
      const std::string_view piece = kPieces[random() % std::size(kPieces)];
      text += unicode ? ToUtf16(piece, 1252) : std::string(piece);
    } else if (unicode) {
      text += BytesOf(kWide.substr(random() % kWide.size(), 1));
    } else {
      const int unit = EncodeUnit(CharSetCode2CodePage(CodeTypeSave2Edit(codeType)),
                                  kWide[random() % kWide.size()], false);
      const char byte = static_cast<char>(0x80 + random() % 0x80);
      if (unit > 0xFF) text += static_cast<char>(unit >> 8);
      // Runs of bytes that are lead and trail byte at once.
      text +=
          unit > 0 ? std::string(1, static_cast<char>(unit)) : std::string(1 + random() % 5, byte);
    }
  }
  return text;
}

}  // namespace

TEST(FindLinks, IsTheModelOnRandomTexts) {
  std::mt19937 random(4);
  for (int round = 0; round < 30000; ++round) {
    const CodeType codeType = kCodeTypes[random() % std::size(kCodeTypes)];
    const std::string text = RandomText(random, codeType, 1 + static_cast<int>(random() % 24));
    ASSERT_NO_FATAL_FAILURE(ExpectModel(text, codeType)) << "code type " << codeType;
  }
}

// A text that grows at its end has the links that it would have as a whole.
TEST(LinkFinder, GoesOnWhereTheTextGrew) {
  std::mt19937 random(5);
  for (int round = 0; round < 400; ++round) {
    const CodeType codeType = kCodeTypes[random() % std::size(kCodeTypes)];
    const std::string text = std::string(4200, '.') + RandomText(random, codeType, 60);
    LinkFinder finder(codeType);
    std::vector<LinkRange> links;
    std::size_t size = 4190;
    finder.FindAll(std::string_view(text).substr(0, size), links);
    while (size < text.size()) {
      size = std::min(text.size(), size + (1 + random() % 9) * 2);
      const std::vector<LinkRange> before = links;
      const std::string part = text.substr(0, size);
      const std::size_t same = finder.FindMore(part, links);
      ASSERT_LE(same, std::min(before.size(), links.size()));
      for (std::size_t i = 0; i < same; ++i) ASSERT_EQ(links[i], before[i]);
      ASSERT_EQ(Show(links), Show(All(part, codeType))) << Escaped(part.substr(4190));
    }
  }
}

namespace {

// What these rules find in the texts of others that those would not, or not so.
struct Difference {
  const char* reason;
  std::vector<std::string_view> sources;
};
const Difference kDifferences[] = {
    {"a URL begins with one of six schemes",
     {"linkify-023", "linkify-029", "linkify-033", "linkify-035", "linkify-037", "linkify-081",
      "linkify-101", "linkify-103", "linkify-111", "linkify-115", "twitter-text-urls-028",
      "twitter-text-urls-030", "twitter-text-urls-036", "twitter-text-urls-038",
      "twitter-text-urls-046", "twitter-text-urls-072", "twitter-text-urls-086",
      "twitter-text-urls_with_indices-003", "twitter-text-urls_with_directional_markers-001"}},
    {"nothing is trimmed from the end",
     {"linkify-025", "linkify-053", "linkify-055", "linkify-063", "linkify-069", "linkify-075",
      "mimekit-023", "mimekit-029", "twitter-text-urls-076", "twitter-text-urls-078",
      "twitter-text-urls-082", "twitter-text-urls_with_indices-005"}},
    {"brackets, quotes and apostrophes end a URL",
     {"flanker-url-valid-003", "linkify-041", "linkify-043", "linkify-045", "mimekit-011",
      "mimekit-013", "twitter-text-urls-014", "twitter-text-urls-020"}},
    {"a host name holds all but ASCII signs and the ideographic space",
     {"linkify-113", "twitter-text-urls-042"}},
    {"a path is ASCII", {"twitter-text-urls-034"}},
    {"no host name is checked",
     {"linkify-not-003", "linkify-not-017", "linkify-not-021", "linkify-not-023", "linkify-not-025",
      "twitter-text-urls-022", "twitter-text-urls-026", "twitter-text-urls-040",
      "twitter-text-urls-054", "twitter-text-urls-056", "twitter-text-urls-058",
      "twitter-text-urls-060", "twitter-text-urls-062", "twitter-text-urls-064",
      "twitter-text-urls-084"}},
    {"an address has a plain local part and a plain domain",
     {"mimekit-003", "mimekit-005", "mimekit-007"}},
    {"addresses are links too", {"twitter-text-urls-044", "twitter-text-urls-090"}},
};

}  // namespace

TEST(FindLinks, FindsTheLinksOfOtherLibraries) {
  LUMR_NEEDS_CORPUS();
  std::map<std::string_view, const char*> differing;
  for (const Difference& row : kDifferences) {
    for (const std::string_view source : row.sources) differing[source] = row.reason;
  }
  for (const char* name :
       {"flanker-urls", "linkify", "linkify-not", "mimekit-scanner", "twitter-text"}) {
    for (const auto& line : ReadJsonLines(std::string("../url/") + name + ".jsonl")) {
      const std::string text = ToUtf16(line[1], 65001);
      std::string wanted, found;
      if (line[2] != "expected") wanted = line[1] + '\n';  // a list of URLs that are valid as such
      for (std::size_t i = 3; i + 2 < line.size() && line[i] != "note"; ++i) {
        if (line[i] != "url" && line[i] != "indices") wanted += line[i] + '\n';
      }
      for (const LinkRange& link : All(text, CT_UTF8)) {
        CStringW units(static_cast<std::size_t>(link.length) / 2, u'\0');
        text.copy(reinterpret_cast<char*>(units.data()), units.size() * 2,
                  static_cast<std::size_t>(link.start));
        found += Utf8(units) + '\n';
      }
      const bool listed = differing.count(line.back()) != 0;
      EXPECT_EQ(found == wanted, !listed) << line.back() << '\n' << line[1] << '\n' << found;
    }
  }
}

}  // namespace lumr
