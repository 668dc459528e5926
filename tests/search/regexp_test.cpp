#include "lumrmisc/search/regexp.h"

#include <gtest/gtest.h>

#include <random>
#include <span>
#include <string>

#include "charset/convert_text.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/casefold.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/messages.h"
#include "lumrmisc/platform/unicode.h"
#include "lumrmisc/search/regexp_search_internal.h"

namespace lumr {
namespace {

using namespace std::string_literals;

constexpr CodeType kCodeTypes[] = {CT_SJIS, CT_UNICODE};

// "what was matched@where it starts"; positions and lengths are counted in characters, so that
// narrow and wide text say the same. "+" stands for the terminator, "none" for no match.
std::string Found(CRegExp& regExp, std::string_view utf8, CodeType codeType) {
  const ExactCopy text(Encoded(utf8, codeType));
  const char* start = nullptr;
  const char* end = nullptr;
  if (!regExp.Match(text.Data(), text.Size(), codeType, &start, &end)) return "none";
  const bool atEnd = end - text.Data() > text.Size();
  if (atEnd) end = text.Data() + text.Size();
  CBuffer before;
  ConvertToOtherCodeType2(codeType, {text.Data(), static_cast<std::size_t>(start - text.Data())},
                          CT_UNICODE, before);
  return Decoded(codeType, {start, static_cast<std::size_t>(end - start)}) + (atEnd ? "+@" : "@") +
         std::to_string(before.GetLength() / 2);
}

struct MatchCase {
  const char* pattern;
  std::string text;
  const char* found;
};

void CheckMatches(std::span<const MatchCase> cases, int caseSensitive, bool width = false,
                  bool kanaKind = false) {
  for (const MatchCase& c : cases) {
    for (const CodeType codeType : kCodeTypes) {
      SCOPED_TRACE(c.pattern + " in "s + c.text + (codeType == CT_SJIS ? ", narrow" : ", wide"));
      CRegExp regExp;
      regExp.SetIgnoreWidth(width);
      regExp.SetIgnoreKanaKind(kanaKind);
      CStringA error;
      ASSERT_EQ(regExp.ParseRegExp(Encoded(c.pattern, codeType), codeType, caseSensitive, error), 1)
          << error;
      EXPECT_EQ(Found(regExp, c.text, codeType), c.found);
    }
  }
}

TEST(CRegExp, Matches) {
  const MatchCase cases[] = {
      {"ab|cd", "abd", "abd@0"},
      {"ab|cd", "xacd", "acd@1"},
      {"ab|cd", "ab", "none"},
      {"a||b", "|b", "|b@0"},
      {"a|)b", "b", "@0"},
      {"{a+}\\0", "aaaa", "aaaa@0"},
      {"{.}{.}\\1\\0", "xabba", "abba@1"},
      {"(a*)?", "b", "@0"},
      {"(x|()|(xy))?[xz]", "xyz", "x@0"},  // an empty turn counts once a longer one was tried
      {"[\\t]", "\t", "\t@0"},
      {"\\t", "\tt", "t@1"},
      {"[\\f\\r]+", "a\r\n\f", "\r\n@1"},
      {"[-a]+", "b-a", "-a@1"},
      {"[a\\]\\-z]+", "x]-z", "]-z@1"},
      {"^abc", "xabc", "none"},
      {"^abc", "abcd", "abc@0"},
      {"a^b", "a^b", "a^b@0"},
      {"bc$", "abc", "bc+@1"},
      {"$a", "$a", "$a@0"},
      {"$", "abc", "none"},
      {"$", "", "+@0"},
      {"a*$", "ba", "a+@1"},
      {"a*$", "ab", "none"},
      {"a\\$", "a$", "a$@0"},
      {"a!b", "abac", "a@2"},
      {"!!a.", "ba", "a@1"},
      {"a!", "a", "none"},
      {"!{a}.\\0", "aaxa", "xa@2"},  // what a failed look-ahead captured stays
      {"x)y", "xy", "x@0"},
      {"*a+", "*aa", "*aa@0"},
      {"a\\", "a\\", "a\\@0"},
      {"\\q", "'x' \"y\" z", "\"y\"@4"},
      {"a\\n", "a\r\n", "a\r@0"},
      {"a\\nb", "a\r\nb", "a\r\nb@0"},
      {"\\w\\z", "あ9ab12", "ab12@2"},
      {"\\h+\\b\\a", "xyzF0 9", "F0 9@3"},
      {"a+?b", "caab", "aab@1"},
      {"a*?", "aa", "@0"},
      {"a??b", "ab", "ab@0"},
      {".", "ソ", "ソ@0"},
      {"\\\\", "ソ\\", "\\@1"},  // the second byte of the kana is a backslash
      {"[^ァ-ヶ]+", "カナ漢字かなカ", "漢字かな@2"},
      {"[ぁ-ん]+", "漢字かなカ", "かな@2"},
      {"会議|打合", "打会合", "none"},
      {"(会議)|(打合)", "次の打合", "打合@2"},
      {"A", "a", "none"},
      {"ア", "ァ", "none"},
  };
  CheckMatches(cases, 1);
}

TEST(CRegExp, IgnoresCaseAndSmallKana) {
  const MatchCase cases[] = {
      {"ABC", "xabc", "abc@1"},
      {"ａ", "Ａ", "Ａ@0"},
      {"ア", "ァ", "ァ@0"},
      {"ｱ", "ｧ", "ｧ@0"},
      {"っ", "つ", "つ@0"},
      {"ア", "ｱ", "none"},
      {"ア", "あ", "none"},
      {"[ァ-ヶ]+", "ァカヶ", "ァカヶ@0"},
      {"{ア}\\0", "xァア", "ァア@1"},
      {"\\D", "x1", "1@1"},  // the pattern is folded before it is read
      {"ヵ", "カ", "none"},
  };
  CheckMatches(cases, 0);
}

TEST(CRegExp, IgnoresWidthAndKanaKind) {
  const MatchCase width[] = {
      {"abc", "xａｂＣ", "none"},       {"abc", "xａｂc", "ａｂc@1"},
      {"ガイド", "xｶﾞｲﾄﾞy", "ｶﾞｲﾄﾞ@1"}, {"ｶﾞ", "ガ", "ガ@0"},
      {"カ", "ｶﾞカ", "カ@2"},           {"[ァ-ヶ]+", "漢ｶﾅﾊﾟx", "ｶﾅﾊﾟ@1"},
      {"[0-9]+$", "第１2", "１2+@1"},   {"{.}\\0", "xaａ", "aａ@1"},
      {"（a）", "(a)", "(a)@0"},        {"ｱ", "あ", "none"},
      {"a　b", "a b", "a b@0"},
  };
  CheckMatches(width, 1, true);
  const MatchCase kana[] = {
      {"カナ", "xかな", "かな@1"}, {"[ァ-ヶ]+", "漢かナ", "かナ@1"},
      {"か", "ｶ", "none"},         {"か+", "かカ", "かカ@0"},
      {"ヴ", "う", "none"},
  };
  CheckMatches(kana, 1, false, true);
  const MatchCase all[] = {{"ガABC", "xｶﾞａbＣ", "ｶﾞａbＣ@1"}, {"っ", "ﾂ", "ﾂ@0"}};
  CheckMatches(all, 0, true, true);
}

TEST(CRegExp, RefusesWithCodeTextAndPlace) {
  const auto nested = [](std::size_t depth) {
    return std::string(depth, '(') + "a" + std::string(depth, ')');
  };
  std::string doubled = "a";
  for (int i = 0; i < 30; ++i) doubled = "(" + doubled + "+)";
  const struct {
    std::string pattern;
    int error;
    int place;  // in characters
  } cases[] = {
      {"{a", 2, 2},
      {"{a)", 2, 2},
      {"(a", 3, 2},
      {"(a]", 3, 2},
      {"[a", 4, 2},
      {"[a-", 4, 3},
      {"[a-]", 4, 3},
      {"[\\", 4, 2},
      {"x[]", 6, 2},
      {"[^]", 6, 2},
      {"[]a]", 6, 1},
      {"{a}\\1", 7, 4},
      {"\\0{a}", 7, 1},
      {"{a}\\10", 7, 4},
      {"[z-a]", 8, 1},
      {"[ab-a]", 8, 2},
      {"a**", 9, 2},
      {"(a?)+", 9, 4},
      {"()*", 9, 2},
      {"!a+", 9, 2},
      {"a??*", 9, 3},
      {"(a|)+?", 9, 4},
      {nested(1000), 0, 0},
      {nested(1001), 1, 1000},
      {doubled, 1, static_cast<int>(doubled.size())},
      {"{a\\0}", 0, 0},
      {"a+*", 0, 0},
      {"a]**", 0, 0},
  };
  for (const auto& c : cases) {
    for (const CodeType codeType : kCodeTypes) {
      SCOPED_TRACE(c.pattern.substr(0, 20));
      CRegExp regExp;
      CStringA error = "before";
      const std::string pattern = Encoded(c.pattern, codeType);
      EXPECT_EQ(regExp.ParseRegExp(pattern, codeType, 1, error), c.error == 0);
      EXPECT_EQ(error, c.error == 0 ? "" : MessageText(3300u + static_cast<unsigned>(c.error)));
      EXPECT_EQ(regExp.ErrorCode(), c.error);
      EXPECT_EQ(regExp.ErrorPosition(), c.place * (codeType == CT_SJIS ? 1 : 2));
      EXPECT_EQ(regExp.IsParsed(), 1);
      EXPECT_EQ(regExp.IsParsedOK(codeType, error), c.error == 0);
      if (c.error != 0) {
        EXPECT_EQ(Found(regExp, "aaaa", codeType), "none");
      }
    }
  }
  CRegExp regExp;
  CStringA error;
  for (const char* const empty : {"", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(regExp.ParseRegExp("a", CT_SJIS, 1, error), 1);
    EXPECT_EQ(regExp.ParseRegExp(empty, CT_SJIS, 1, error), 0);
    EXPECT_EQ(error, MessageText(3311));
    EXPECT_EQ(regExp.IsParsed(), 0);
    EXPECT_EQ(regExp.Match("a", CT_SJIS, nullptr, nullptr), 0);
  }
  EXPECT_EQ(RegExpErrorText(10), MessageText(3310));
  EXPECT_EQ(RegExpErrorText(11), "Invalid REParseError: 11");
  EXPECT_EQ(RegExpErrorText(-1), "Invalid REParseError: -1");
}

TEST(CRegExp, OnePatternForTextsOfManyCodeTypes) {
  CRegExp regExp;
  CStringA error;
  const std::string pattern = Encoded("請求{.}\\0", CT_UNICODE);
  ASSERT_EQ(regExp.ParseRegExp(pattern, CT_UTF8, 1, error), 1);
  for (const CodeType codeType : {CT_SJIS, CT_JIS, CT_EUC, CT_ASCII, CT_UNICODE, CT_UTF7}) {
    SCOPED_TRACE(codeType);
    EXPECT_EQ(Found(regExp, "x請求ララ", CodeTypeSave2Edit(codeType)), "請求ララ@1");
    EXPECT_EQ(regExp.IsParsedOK(codeType, error), 1);
  }
  // Characters that the code type lacks do not become operators.
  EXPECT_EQ(regExp.IsParsedOK(CT_KOI8R, error), 0);
  EXPECT_EQ(error, "");
  EXPECT_EQ(regExp.Match("????", CT_KOI8R, nullptr, nullptr), 0);
  EXPECT_EQ(CurrentCodePage(), 932u);
  regExp.ClearRegExp();
  EXPECT_EQ(regExp.IsParsed(), 0);
  EXPECT_EQ(regExp.IsParsedOK(CT_SJIS, error), 0);

  // Big5 has trail bytes that are ASCII letters, and no kana of 932.
  ASSERT_EQ(regExp.ParseRegExp("\xA4\x40|a", CT_BIG5, 1, error), 1);
  const char* start = nullptr;
  const char* const text = "\xB0\x61\xA4\x40";
  ASSERT_EQ(regExp.Match(text, CT_BIG5, &start, nullptr), 1);
  EXPECT_EQ(start - text, 2);
}

TEST(CRegExp, TerminatedAndCountedTexts) {
  CRegExp regExp;
  CStringA error;
  const char* end = nullptr;
  ASSERT_EQ(regExp.ParseRegExp("a.?$", CT_SJIS, 1, error), 1);
  const std::string text = "xa\0b"s;
  ASSERT_EQ(regExp.Match(text.c_str(), CT_SJIS, nullptr, &end), 1);
  EXPECT_EQ(end - text.c_str(), 3);
  EXPECT_EQ(regExp.Match(text, CT_SJIS, nullptr, &end), 0);  // the NUL is a character here
  ASSERT_EQ(regExp.Match(text.data(), 3, CT_SJIS, nullptr, &end), 1);
  EXPECT_EQ(end - text.data(), 4);
  EXPECT_EQ(regExp.Match(nullptr, CT_SJIS, nullptr, &end), 0);
  ASSERT_EQ(regExp.ParseRegExp("a\0b"s, CT_SJIS, 1, error), 1);
  EXPECT_EQ(regExp.Match(text, CT_SJIS, nullptr, nullptr), 1);
  EXPECT_EQ(regExp.Match("xab", CT_SJIS, nullptr, nullptr), 0);

  const std::u16string wide = u"xxa";
  const std::string odd = "?" + std::string(BytesOf(wide)) + "a"s;  // at an odd address
  ASSERT_EQ(regExp.ParseRegExp(reinterpret_cast<const char*>(u"a$"), CT_UNICODE, 1, error), 1);
  ASSERT_EQ(regExp.Match(odd.data() + 1, 7, CT_UNICODE, nullptr, &end), 1);
  EXPECT_EQ(end - odd.data() - 1, 8);
}

TEST(CREItem, CopiesOwnTheirs) {
  CREItem item;
  item.program = new RegExpProgram;
  CompileRegExp("a+b", {FindMbcsPage(932), true, {}}, *item.program);
  item.state = new RegExpState(*item.program);
  item.codeType = CT_SJIS;
  CREItem copy(item);
  item = CREItem();
  EXPECT_EQ(item.program, nullptr);
  RegExpSpan match;
  EXPECT_EQ(copy.state->Search(*copy.program, "xaab", 0, -1, match), RegExpOutcome::kFound);
  EXPECT_EQ(match.start, 1u);
}

// ---- All matches ----

// "start-end" of all matches.
std::string AllOf(std::string_view pattern, std::string_view text, CodeType codeType,
                  bool width = false) {
  CRegExp regExp;
  regExp.SetIgnoreWidth(width);
  CStringA error;
  EXPECT_EQ(regExp.ParseRegExp(Encoded(pattern, codeType), codeType, 1, error), 1) << error;
  const std::string encoded = Encoded(text, codeType);
  RegExpScanner scanner(regExp, encoded, codeType);
  std::string all;
  for (std::size_t start, end; scanner.Next(start, end) == RegExpOutcome::kFound;) {
    all += std::to_string(start) + "-" + std::to_string(end) + " ";
  }
  return all;
}

TEST(RegExpScanner, GoesThroughAllMatches) {
  const struct {
    const char *pattern, *text, *narrow, *wide;
    bool width = false;
  } cases[] = {
      {"a", "aba", "0-1 2-3 ", "0-2 4-6 "},
      {"a*", "aab", "0-2 2-2 ", "0-4 4-4 "},
      {"b*", "ソab", "0-0 2-2 3-4 ", "0-0 2-2 4-6 "},
      {"^a", "aa", "0-1 ", "0-2 "},
      {"a$", "aa", "1-3 ", "2-6 "},
      {"$", "", "0-1 ", "0-2 "},
      {"あ?", "", "0-0 ", "0-0 "},
      {"[ァ-ヶ]+", "ソフト、カナ", "0-6 8-12 ", "0-6 8-12 "},
      {"!.{a}", "a", "", ""},
      {"ガ|ア", "ｶﾞアｶ", "0-2 2-4 ", "0-4 4-6 ", true},
      {"a$", "ｶﾞａ", "2-5 ", "4-8 ", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.pattern);
    EXPECT_EQ(AllOf(c.pattern, c.text, CT_SJIS, c.width), c.narrow);
    EXPECT_EQ(AllOf(c.pattern, c.text, CT_UNICODE, c.width), c.wide);
  }
}

// Each match is followed by a look to the end of the text, for a longer one: in all that would
// be 40 thousand million characters.
TEST(RegExpScanner, LooksBehindAMatchOnce) {
  CRegExp regExp;
  CStringA error;
  ASSERT_EQ(regExp.ParseRegExp("(a[^z]*z)|(b*a)", CT_SJIS, 1, error), 1);
  const std::string text(300'000, 'a');
  RegExpScanner scanner(regExp, text, CT_SJIS);
  std::size_t count = 0;
  for (std::size_t start, end; scanner.Next(start, end) == RegExpOutcome::kFound; ++count) {
    ASSERT_EQ(start, count);
    ASSERT_EQ(end, count + 1);
  }
  EXPECT_EQ(count, text.size());

  // Where characters begin in a run of lead bytes is found out from the last match on, not from
  // the start of the run.
  ASSERT_EQ(regExp.ParseRegExp("(\x81\x81)|b", CT_SJIS, 1, error), 1);
  const std::string leads(600'000, '\x81');
  RegExpScanner pairs(regExp, leads, CT_SJIS);
  count = 0;
  for (std::size_t start, end; pairs.Next(start, end) == RegExpOutcome::kFound; ++count) {
  }
  EXPECT_EQ(count, leads.size() / 2);
}

TEST(RegExpScanner, FindsWhatASearchFromThereFinds) {
  constexpr unsigned kSeed = 4;
  std::mt19937 random(kSeed);
  for (const char* const pattern : {"[ab]+あ", "a+!b", "{a}.\\0", "ソ|ア", "ab", "[^a]*ア",
                                    "(a.*ソアソア)|a|b", "(あ.*ab+ア)|(a.*b)|."}) {
    for (int run = 0; run < 200; ++run) {
      std::string text;
      for (int i = 0; i < (run % 8 == 0 ? 1500 : 30); ++i) {
        constexpr const char* kLetters[] = {"a", "b", "あ", "ソ", "ア"};
        text += kLetters[random() % std::size(kLetters)];
      }
      CRegExp regExp;
      CStringA error;
      regExp.ParseRegExp(Encoded(pattern, CT_SJIS), CT_SJIS, 1, error);
      const std::string encoded = Encoded(text, CT_SJIS);
      RegExpScanner scanner(regExp, encoded, CT_SJIS);
      std::size_t from = 0;
      for (std::size_t start, end; scanner.Next(start, end) == RegExpOutcome::kFound; from = end) {
        const char* first = nullptr;
        const char* behind = nullptr;
        const std::string_view rest = std::string_view(encoded).substr(from);
        ASSERT_EQ(regExp.Match(rest, CT_SJIS, &first, &behind), 1);
        ASSERT_EQ(first - encoded.data(), static_cast<std::ptrdiff_t>(start))
            << pattern << ", seed " << kSeed << ", run " << run;
        ASSERT_EQ(behind - encoded.data(), static_cast<std::ptrdiff_t>(end));
        if (start == end) break;
      }
      std::size_t start = 0;
      std::size_t end = 0;
      EXPECT_EQ(regExp.Match(std::string_view(encoded).substr(from), CT_SJIS, nullptr, nullptr),
                scanner.NextFrom(from, start, end) == RegExpOutcome::kFound);
    }
  }
}

// ---- Limits ----

TEST(MatchLimited, EndsTheExponentialClassics) {
  const struct {
    const char* pattern;
    const char* repeated;
    const char* tail;
    bool ends;  // whether the limit is never reached
  } cases[] = {{"(a+)+b", "a", "", true},
               {"(a|a)*b", "a", "", true},
               {"(a|(aa))+$", "a", "b", true},
               {"(.*)(.*)(.*)(.*)b", "a", "", true},
               {"(a*)?(a*)?(a*)?b", "a", "", false},
               {"!((a+)+b)c", "a", "", true},
               {"(a!(a+c))+b", "a", "", true},
               {"{a+}+\\0b", "a", "", false},
               {"{a*}{a*}{a*}\\0\\1\\2b", "a", "", false},
               {"(x+x+)+y", "x", "", true}};
  constexpr long long kLimit = 1'000'000;
  for (const auto& c : cases) {
    for (const int length : {30, 100, 300, 1000}) {
      SCOPED_TRACE(c.pattern + (" x " + std::to_string(length)));
      std::string text;
      for (int i = 0; i < length; ++i) text += c.repeated;
      text += c.tail;
      RegExpOutcome outcomes[2];
      for (const CodeType codeType : kCodeTypes) {
        CRegExp regExp;
        CStringA error;
        ASSERT_EQ(regExp.ParseRegExp(Encoded(c.pattern, codeType), codeType, 1, error), 1);
        outcomes[codeType == CT_SJIS] =
            regExp.MatchLimited(Encoded(text, codeType), codeType, kLimit, nullptr, nullptr);
      }
      EXPECT_EQ(outcomes[0], outcomes[1]);
      EXPECT_NE(outcomes[0], RegExpOutcome::kFound);
      if (c.ends && length <= 300) {
        EXPECT_EQ(outcomes[0], RegExpOutcome::kNone);
      }
    }
  }
}

// The smallest limit that does not stop a search is the same for narrow and wide text, and every
// limit above it gives the result of a search without one.
TEST(MatchLimited, CountsAlike) {
  const struct {
    const char *pattern, *text;
    long long steps;
  } cases[] = {
      {"ab", "ソソab", 4}, {"a+", "ソaaソ", 4},    {"a+b", "aaソ", 3},
      {"x|y", "ソソ", 2},  {"[^a]*あ", "ソあ", 2}, {"{a}\\0", "aa", 8},
      {"!a.", "ab", 19},   {"http", "xhttp", 5},   {"(http)s?", "xhttpx", 6},
  };
  for (const auto& c : cases) {
    for (const CodeType codeType : kCodeTypes) {
      SCOPED_TRACE(c.pattern);
      CRegExp regExp;
      CStringA error;
      ASSERT_EQ(regExp.ParseRegExp(Encoded(c.pattern, codeType), codeType, 1, error), 1);
      const std::string text = Encoded(c.text, codeType);
      const auto expected = regExp.Match(text, codeType, nullptr, nullptr) ? RegExpOutcome::kFound
                                                                           : RegExpOutcome::kNone;
      long long least = 0;
      while (regExp.MatchLimited(text, codeType, least, nullptr, nullptr) ==
             RegExpOutcome::kLimit) {
        ++least;
      }
      EXPECT_EQ(least, c.steps);
      for (long long limit = least; limit < least + 20; ++limit) {
        EXPECT_EQ(regExp.MatchLimited(text, codeType, limit, nullptr, nullptr), expected);
      }
    }
  }
}

TEST(CRegExp, ExplainsTheProgram) {
  CRegExp regExp;
  CStringA error;
  ASSERT_EQ(regExp.ParseRegExp(Encoded("{ソ}*[^a-z]\\0$", CT_SJIS), CT_SJIS, 1, error), 1);
  EXPECT_EQ(regExp.Explain(CT_SJIS), R"(    0  Call          2
    1  Advance
    2  PushSlot      slot 0
    3  SavePos       slot 0
    4  PushPos
    5  Call          9
    6  PopPos
    7  PopSlot       slot 0
    8  Jump          19
    9  PushGroup     group 0
   10  GroupStart    group 0
   11  Call          14
   12  PopGroup      group 0
   13  Return
   14  Symbol        835C 'ソ'
   15  GroupEnd      group 0
   16  FailIfAt      slot 0
   17  SavePos       slot 0
   18  Jump          2
   19  NotRangeList  22  61 'a' to 7A 'z'
   22  BackRef       group 0
   23  Symbol        end of text
   24  Accept
search: backtracking
shortest match: 1 characters
)");
}

// ---- Folding ----

// Every character of a page folds as its unit does; no fold changes a length.
TEST(TextToUpper, FoldsAsInUtf16) {
  constexpr CaseFold kFolds[] = {{LetterFold::kNone, true}, {LetterFold::kLower, true}};
  for (const unsigned codePage : {932u, 936u, 949u}) {
    const MbcsPage& page = *FindMbcsPage(codePage);
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
      const int code = EncodeUnit(codePage, static_cast<char16_t>(unit), true);
      // Letters that only Unicode gives a case to.
      const bool greekOrCyrillic = unit >= 0x80 && unit < 0x2200;
      if (code < 0 || greekOrCyrillic) continue;
      for (const CaseFold fold : kFolds) {
        const char16_t expected = FoldUnit(static_cast<char16_t>(unit), fold);
        ASSERT_EQ(static_cast<int>(FoldCharacter(page, static_cast<unsigned>(code), fold)),
                  EncodeUnit(codePage, expected, true))
            << codePage << ' ' << std::hex << unit;
      }
    }
  }
}

TEST(TextToUpper, FoldsInPlace) {
  std::string text = Encoded("aａぁァｧヵゃソ", CT_SJIS) + "\x83";
  std::string expected = Encoded("AＡあアｱヵやソ", CT_SJIS) + "\x83";
  TextToUpper(text.data(), static_cast<int>(text.size()), 1, 1);
  EXPECT_EQ(text, expected);
  TextToLower(text.data(), -1, 0);
  EXPECT_EQ(text, Encoded("aａあアｱヵやソ", CT_SJIS) + "\x83");
  std::u16string wide = u"aａ\u3041\u30A1\uFF67ÿ";
  TextToUpperW(wide.data(), 5, 0, 1);
  EXPECT_EQ(wide, u"aａ\u3042\u30A2\uFF71ÿ");
  TextToUpperW(wide.data(), -1, 1, 0);
  EXPECT_EQ(wide, u"AＡ\u3042\u30A2\uFF71\u0178");
  TextToUpper(nullptr, 3, 1, 1);
}

}  // namespace
}  // namespace lumr
