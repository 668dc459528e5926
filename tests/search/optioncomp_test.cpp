#include "lumrmisc/search/optioncomp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/charset/linescan.h"
#include "mailtext/corpus.h"
#include "search/optioncomp_model.h"
#include "search/sample.h"
#include "support/bytes.h"

namespace lumr {
namespace {

using model::Options;
using model::Reader;

constexpr unsigned kOptionSets = 8;
constexpr int kStep = static_cast<int>(kSampleStep);

int Size(std::string_view text) {
  return static_cast<int>(text.size());
}

std::string Sjis(std::u16string_view text) {
  CBuffer out;
  EXPECT_EQ(
      ConvertToOtherCodeType2(
          CT_UNICODE, {reinterpret_cast<const char*>(text.data()), text.size() * 2}, CT_SJIS, out),
      0);
  return std::string(out.Bytes());
}

std::string Wide(std::u16string_view text) {
  return std::string(BytesOf(text));
}

bool Same(const COptionComp2& comparison, std::string_view a, std::string_view b, bool wide) {
  return comparison.IsSameText(a.data(), Size(a), b.data(), Size(b), wide ? CT_UNICODE : CT_SJIS) !=
         0;
}

// Every unit that characters of the table and the four marks make, and some characters beside it.
std::vector<std::string> AllUnits(const Reader& reader) {
  std::vector<std::string> units;
  const bool wide = reader.IsWide();
  const unsigned narrowMarks[] = {0xDE, 0xDF, 0x814A, 0x814B};
  const unsigned wideMarks[] = {0xFF9E, 0xFF9F, 0x309B, 0x309C};
  for (const auto& [code, what] : reader.Characters()) {
    std::string unit;
    model::AppendCode(wide, code, unit);
    units.push_back(unit);
    for (const unsigned mark : wide ? wideMarks : narrowMarks) {
      std::string marked = unit;
      model::AppendCode(wide, mark, marked);
      if (reader.Read(marked, 0).length == marked.size()) units.push_back(marked);
    }
  }
  for (const char16_t other : u"漢字ヵケΑα\x01\x7F") {
    if (other == 0) continue;
    units.push_back(wide ? Wide({&other, 1}) : Sjis({&other, 1}));
  }
  return units;
}

TEST(Equivalence, AllPairsOfUnitsUnderAllOptions) {
  for (const bool wide : {false, true}) {
    const Reader reader(wide);
    const std::vector<std::string> units = AllUnits(reader);
    EXPECT_GT(units.size(), 600u);
    for (unsigned bits = 2; bits < kOptionSets; ++bits) {
      const Options options(bits);
      const COptionComp2 comparison = options.Comparison();
      for (std::size_t a = 0; a < units.size(); a += kSampleStep) {
        const model::Unit unitA = reader.Read(units[a], 0);
        for (const std::string& b : units) {
          const bool expected = Reader::Equal(unitA, reader.Read(b, 0), options);
          ASSERT_EQ(Same(comparison, units[a], b, wide), expected)
              << Shown(units[a]) << "and " << Shown(b) << "options " << bits
              << (wide ? " wide" : "");
        }
      }
    }
  }
}

TEST(Equivalence, CorpusPairs) {
  LUMR_NEEDS_CORPUS();
  // What has another partner here, or none: the table is that of Shift_JIS.
  const std::set<std::string> others = {"＂", "＇", "＼", "～", "ﾞ",  "ﾟ",  "￠", "￡", "￢", "￣",
                                        "￤", "￥", "￦", "ｦﾞ", "ﾜﾞ", "ゔ", "ゕ", "ゖ", "ゝ", "ゞ"};
  int equal = 0;
  for (const auto& line : ReadJsonLines("../search/width-kana.jsonl")) {
    const std::string& a = line.at(1);
    const std::string& b = line.at(3);
    const std::string& relation = line.at(5);
    const bool isWidth = relation.starts_with("width");
    const bool isKana = relation == "kana";
    CBuffer wideA;
    CBuffer wideB;
    ConvertToOtherCodeType2(CT_UTF8, a, CT_UNICODE, wideA);
    ConvertToOtherCodeType2(CT_UTF8, b, CT_UNICODE, wideB);
    const bool expected = !others.contains(a);
    SCOPED_TRACE(a + " " + b);
    for (unsigned bits = 0; bits < kOptionSets; ++bits) {
      const Options options(bits);
      const bool ignored = isWidth  ? options.ignoreWidth
                           : isKana ? options.ignoreKana
                                    : options.ignoreCase;
      EXPECT_EQ(Same(options.Comparison(), wideA.Bytes(), wideB.Bytes(), true), expected && ignored)
          << bits;
    }
    equal += expected;
  }
  EXPECT_GT(equal, 280);
}

struct SearchCase {
  const char* what;
  unsigned options;  // 1 case, 2 width, 4 kana
  std::u16string_view text, word;
  int first, firstLength, last;  // characters of the text, where all are pairs of bytes or single
};

// Positions in bytes of Shift_JIS.
TEST(FindString, CasesByHand) {
  const SearchCase cases[] = {
      {"half with its mark is hiragana", 6, u"xｶﾞx", u"が", 1, 2, 1},
      {"ka is not ga", 6, u"ｶﾞ", u"か", -1, 0, -1},
      {"a mark begins a match", 6, u"ｶﾞ", u"゛", 1, 1, 1},
      {"full-width mark", 0x4, u"か゛", u"ガ", 0, 4, 0},
      {"half-width mark differs by width", 0x4, u"かﾞ", u"ガ", -1, 0, -1},
      {"small kana by case and width", 3, u"ぁアｧ", u"ｱ", 2, 2, 4},
      {"small kana not by width alone", 2, u"ァ", u"ｱ", -1, 0, -1},
      {"small kana not by case alone", 1, u"ァ", u"ア", -1, 0, -1},
      {"letters by case alone", 1, u"ａＡ", u"Ａ", 0, 2, 2},
      {"nothing ignored", 0, u"aAＡ", u"A", 1, 1, 1},
      {"kanji", 7, u"漢字漢", u"漢", 0, 2, 4},
      {"no kanji", 7, u"漢字漢", u"感", -1, 0, -1},
      {"the middle of a pair", 2, u"アA", u"a", -1, 0, -1},
      {"not in the second byte", 2, u"アＡ", u"A", 2, 2, 2},
      {"longer than the text", 7, u"か", u"かか", -1, 0, -1},
      {"overlapping", 7, u"あアｱ", u"アあ", 0, 4, 2},
      {"vu", 7, u"ヴｳﾞう゛", u"ｳﾞ", 0, 2, 4},
      {"quotation marks", 2, u"”’￥￣", u"\"'\\~", 0, 8, 0},
      {"a word longer than its match", 2, u"ab", u"ａｂ", 0, 2, 0},
      {"spaces", 2, u"a　b", u" ", 1, 2, 1},
  };
  for (const SearchCase& c : cases) {
    SCOPED_TRACE(c.what);
    const COptionComp2 comparison = Options(c.options).Comparison();
    const ExactCopy text(Sjis(c.text));
    const ExactCopy word(Sjis(c.word));
    for (const CodeType codeType : {CT_SJIS, CT_ASCII, CT_EUC, CT_JIS, CT_UNKNOWN}) {
      int length = 99;
      EXPECT_EQ(comparison.FindString(text.Data(), text.Size(), word.Data(), word.Size(), codeType,
                                      1, 1, &length),
                c.first);
      EXPECT_EQ(length, c.firstLength);
      EXPECT_EQ(comparison.FindString(text.Data(), text.Size(), word.Data(), word.Size(), codeType,
                                      0, 1, nullptr),
                c.last);
    }
  }
}

TEST(FindString, PositionsInTwoUnits) {
  const COptionComp2 comparison(1, 1, 1);
  const std::string text = Sjis(u"漢字ABｶﾞ");
  const std::string word = Sjis(u"ａｂガ");
  int length = 0;
  EXPECT_EQ(comparison.FindString(text, word, CT_SJIS, 1, 0, &length), 4);
  EXPECT_EQ(length, 4);
  EXPECT_EQ(comparison.FindString(text, word, CT_EUC, 1, 1, &length), 4);
  EXPECT_EQ(length, 4);
  EXPECT_EQ(comparison.FindString(text, word, CT_EUC, 1, 0, &length), 4);  // two units
  EXPECT_EQ(length, 4);
  EXPECT_EQ(comparison.FindString(Sjis(u"1漢字AB"), "B", CT_EUC, 1, 0, &length), 8);
  EXPECT_EQ(length, 1);
  EXPECT_EQ(COptionComp2(1, 0, 0).FindString(Sjis(u"1漢字AB"), "b", CT_EUC, 1, 0, &length), 6);
  const std::string wide = Wide(u"漢ＡＢ");
  for (const CodeType codeType : {CT_UTF8, CT_UTF7, CT_UNICODE}) {
    for (const int callerUnits : {0, 1}) {
      EXPECT_EQ(comparison.FindString(wide + "x", Wide(u"ab"), codeType, 1, callerUnits, &length),
                2);
      EXPECT_EQ(length, 4);
    }
  }
  // Bytes behind which a reader by characters and the decoder go on differently; 1252 has no pairs.
  const std::string broken("\xA4\x81\x40 \x81", 5);
  EXPECT_EQ(comparison.FindString(broken, "@", CT_BIG5, 1, 1, &length), 1);
  EXPECT_EQ(length, 2);
  EXPECT_EQ(comparison.FindString(broken, " ", CT_BIG5, 1, 1, &length), 3);
  EXPECT_EQ(comparison.FindString(broken, "@", CT_WIN1252, 1, 1, &length), 2);
  EXPECT_EQ(comparison.FindString(std::string("\x81\0a", 3), "A", CT_KSC5601, 1, 1, &length), 2);
  EXPECT_EQ(comparison.FindString(std::string("\x81\0a", 3), std::string(1, '\0'), CT_KSC5601, 0, 1,
                                  &length),
            1);
}

TEST(StartsWith, WholeAndBadArguments) {
  const COptionComp2 loose(1, 1, 1);
  const std::string text = Sjis(u"ｶﾞか");
  const std::string ga = Sjis(u"ガ");
  int whole = 7;
  EXPECT_EQ(loose.StartsWith(text.data(), Size(text), ga.data(), Size(ga), CT_SJIS, whole), 1);
  EXPECT_EQ(whole, 0);
  EXPECT_EQ(loose.StartsWith(text.data(), 2, ga.data(), Size(ga), CT_EUC, whole), 1);
  EXPECT_EQ(whole, 1);
  EXPECT_EQ(loose.StartsWith(ga.data(), Size(ga), text.data(), Size(text), CT_SJIS, whole), 0);
  EXPECT_EQ(whole, 0);
  for (unsigned bits = 0; bits < kOptionSets; ++bits) {
    const COptionComp2 comparison = Options(bits).Comparison();
    EXPECT_EQ(comparison.IsSetOption() != 0, bits != 0);
    for (const CodeType codeType : {CT_SJIS, CT_UNICODE, CT_EUC, CT_BIG5}) {
      const CArray<CBuffer> none;
      const CArray<CBuffer> empty(1);
      const CArray<CBuffer> words(1, CBuffer("aa"));
      for (const auto& [data, size] :
           {std::pair<const char*, int>(nullptr, 2), {"aa", 0}, {"aa", -1}}) {
        whole = 7;
        EXPECT_EQ(comparison.StartsWith(data, size, "aa", 2, codeType, whole), 0);
        EXPECT_EQ(comparison.StartsWith("aa", 2, data, size, codeType, whole), 0);
        EXPECT_EQ(whole, 0);
        EXPECT_EQ(comparison.EndsWith(data, size, "aa", 2, codeType), 0);
        EXPECT_EQ(comparison.EndsWith("aa", 2, data, size, codeType), 0);
        EXPECT_EQ(comparison.FindString(data, size, "aa", 2, codeType, 1, 1, nullptr), -1);
        EXPECT_EQ(comparison.FindString("aa", 2, data, size, codeType, 0, 1, nullptr), -1);
        EXPECT_EQ(comparison.FindStringsAnd(data, size, words, codeType), -1);
        EXPECT_EQ(comparison.FindStringsOr(data, size, words, codeType, 1, 0, nullptr), -1);
      }
      EXPECT_EQ(comparison.FindStringsAnd("aa", 2, none, codeType), -1);
      EXPECT_EQ(comparison.FindStringsAnd("aa", 2, empty, codeType), -1);
      EXPECT_EQ(comparison.FindStringsOr("aa", 2, none, codeType, 1, 1, nullptr), -1);
      EXPECT_EQ(comparison.FindStringsOr("aa", 2, empty, codeType, 0, 0, nullptr), -1);
      EXPECT_EQ(comparison.FindStringsAnd("aa", 2, words, codeType), 0);
    }
  }
  COptionComp2 cleared(1, 1, 1);
  cleared.ClearOption();
  EXPECT_EQ(cleared.IsSetOption(), 0);
}

TEST(FindStringsOr, AnyWord) {
  const std::string text = "xbcab";
  const struct {
    const char* what;
    CArray<CBuffer> words;
    unsigned options;
    int forward, nearest, position, length;
  } cases[] = {
      {"the first word of the list", {"ab", "bc"}, 0, 1, 0, 3, 2},
      {"its last place", {"b", "ca"}, 1, 0, 0, 4, 1},
      {"the nearest", {"ab", "bc"}, 0, 1, 1, 1, 2},
      {"the nearest from behind", {"xb", "ca"}, 0, 0, 1, 2, 2},
      {"no match across the range that is left", {"bc", "xb"}, 0, 1, 1, 1, 2},
      {"none", {"y", "z"}, 0, 1, 1, -1, 0},
      {"by place with the table", {"ab", "bc"}, 2, 1, 0, 1, 2},
      {"by place from behind", {"xb", "ca"}, 4, 0, 0, 2, 2},
      {"by list at one place", {"b", "bc"}, 2, 1, 0, 1, 1},
      {"an empty word is none", {"", "bc"}, 2, 1, 0, 1, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    for (const CodeType codeType : {CT_SJIS, CT_GB2312}) {
      int length = 9;
      EXPECT_EQ(Options(c.options).Comparison().FindStringsOr(
                    text.data(), Size(text), c.words, codeType, c.forward, c.nearest, &length),
                c.position);
      EXPECT_EQ(length, c.length);
    }
  }
}

class Protected : public COptionComp2 {
 public:
  explicit Protected(const COptionComp2& comparison) : COptionComp2(comparison) {}
  using COptionComp2::_FindFirstChar;
  using COptionComp2::_FindLastChar;
  using COptionComp2::_StartsWith;
};

// Texts over an alphabet in which much is equal, with lead bytes that lack their trail byte.
class RandomTexts {
 public:
  RandomTexts(bool wide, unsigned seed) : wide_(wide), random_(seed) {
    for (const char16_t c : std::u16string_view(u"ｶカかガがﾞﾟ゛゜ハｱァaＡアッチ漢A")) {
      letters_.push_back(wide ? Wide({&c, 1}) : Sjis({&c, 1}));
    }
    if (!wide)
      letters_.insert(letters_.end(), {"\x83", "\x81", "\xFC", "\x41", std::string(1, '\0')});
  }
  std::string Make(std::size_t most) {
    std::string text;
    for (std::size_t n = random_() % (most + 1); n > 0; --n)
      text += letters_[random_() % letters_.size()];
    return text;
  }
  unsigned Number() { return static_cast<unsigned>(random_()); }

 private:
  bool wide_;
  std::mt19937 random_;
  std::vector<std::string> letters_;
};

// All matches that searching on and on finds.
std::vector<int> AllMatches(const COptionComp2& comparison, const ExactCopy& text,
                            std::string_view word, CodeType codeType, bool forward,
                            const Reader& reader) {
  std::vector<int> found;
  int begin = 0;
  int end = text.Size();
  if (forward) {
    while (begin < end) {
      const int pos = comparison.FindString(text.Data() + begin, end - begin, word.data(),
                                            Size(word), codeType, 1, 1, nullptr);
      if (pos < 0) break;
      found.push_back(begin + pos);
      begin += pos + static_cast<int>(
                         reader.CharLength(text.View(), static_cast<std::size_t>(begin + pos)));
    }
    return found;
  }
  const Protected inner(comparison);
  while (end > 0) {  // the way a caller steps back: by the first unit, then in full
    const char* const place =
        inner._FindLastChar(text.Data(), end, word.data(), Size(word), reader.IsWide());
    if (place == nullptr) break;
    end = static_cast<int>(place - text.Data());
    int length = 0;
    if (inner._StartsWith(place, text.Size() - end, word.data(), Size(word), reader.IsWide(),
                          length))
      found.insert(found.begin(), end);
  }
  return found;
}

TEST(OptionComp, AgreesWithTheRules) {
  constexpr unsigned kSeed = 4202;
  for (const bool wide : {false, true}) {
    const Reader reader(wide);
    RandomTexts texts(wide, kSeed);
    const CodeType codeType = wide ? CT_UTF8 : CT_SJIS;
    for (int run = 0; run < 15000 / kStep; ++run) {
      const std::string whole = texts.Make(run % 50 == 0 ? 200 : 12);
      const ExactCopy text(whole);
      const ExactCopy word(texts.Make(3));
      const std::string_view wordView = word.View();
      const Options options(2 + texts.Number() % 6);
      const COptionComp2 comparison = options.Comparison();
      SCOPED_TRACE("seed " + std::to_string(kSeed) + " run " + std::to_string(run) + ": " +
                   Shown(whole) + "/ " + Shown(wordView));
      const auto places = reader.Places(whole, wordView, options);
      int length = 0;
      const auto find = [&](int forward) {
        return comparison.FindString(text.Data(), text.Size(), word.Data(), word.Size(), codeType,
                                     forward, 1, &length);
      };
      ASSERT_EQ(find(1), places.empty() ? -1 : places.front().pos);
      ASSERT_EQ(length, places.empty() ? 0 : places.front().length);
      ASSERT_EQ(find(0), places.empty() ? -1 : places.back().pos);
      ASSERT_EQ(length, places.empty() ? 0 : places.back().length);
      const bool ends = std::any_of(places.begin(), places.end(), [&](const auto& place) {
        return place.pos + place.length == text.Size();
      });
      ASSERT_EQ(comparison.EndsWith(text.Data(), text.Size(), word.Data(), word.Size(), codeType),
                ends);
      ASSERT_EQ(AllMatches(comparison, text, wordView, codeType, true, reader),
                AllMatches(comparison, text, wordView, codeType, false, reader));
    }
  }
}

TEST(OptionComp, FindsEverySubstring) {
  constexpr unsigned kSeed = 4203;
  for (const bool wide : {false, true}) {
    const Reader reader(wide);
    RandomTexts texts(wide, kSeed);
    for (int run = 0; run < 2000 / kStep; ++run) {
      const std::string text = texts.Make(8);
      std::vector<std::size_t> borders;
      for (std::size_t pos = 0; pos < text.size(); pos += reader.Read(text, pos).length)
        borders.push_back(pos);
      borders.push_back(text.size());
      for (std::size_t from = 0; from < borders.size(); ++from) {
        for (std::size_t to = from + 1; to < borders.size(); ++to) {
          const std::string word = text.substr(borders[from], borders[to] - borders[from]);
          for (unsigned bits = 0; bits < kOptionSets; ++bits) {
            const COptionComp2 comparison = Options(bits).Comparison();
            const int pos =
                comparison.FindString(text, word, wide ? CT_UNICODE : CT_SJIS, 1, 1, nullptr);
            ASSERT_TRUE(pos >= 0 && pos <= static_cast<int>(borders[from]))
                << Shown(text) << "/ " << Shown(word) << bits;
          }
        }
      }
    }
  }
}

// One text in Shift_JIS, in UTF-16, and as Japanese text that is converted for the comparison.
TEST(OptionComp, NarrowAndWideAgree) {
  constexpr unsigned kSeed = 4204;
  RandomTexts texts(true, kSeed);
  const auto sjis = [](const std::string& wide) {
    CBuffer out;
    ConvertToOtherCodeType2(CT_UNICODE, wide, CT_SJIS, out);
    return std::string(out.Bytes());
  };
  const auto bytesBefore = [&](const std::string& wide, int pos) {
    return pos < 0 ? pos : Size(sjis(wide.substr(0, static_cast<std::size_t>(pos))));
  };
  for (int run = 0; run < 10000 / kStep; ++run) {
    const std::string text = texts.Make(run % 500 == 0 ? 5000 : 12);
    const std::string narrow = sjis(text);
    CArray<CBuffer> words;
    CArray<CBuffer> wideWords;
    for (int i = 0; i < 3; ++i) {
      wideWords.emplace_back(texts.Make(2));
      words.emplace_back(sjis(std::string(wideWords.back().Bytes())));
    }
    for (unsigned bits = 0; bits < kOptionSets; ++bits) {
      const COptionComp2 comparison = Options(bits).Comparison();
      const int forward = run % 2;
      SCOPED_TRACE("run " + std::to_string(run) + ' ' + Shown(narrow).substr(0, 200) + "/ " +
                   Shown(words[0].Bytes()) + std::to_string(bits));
      int length = 0;
      int narrowLength = 0;
      const int pos =
          comparison.FindString(text, wideWords[0].Bytes(), CT_UNICODE, forward, 1, &length);
      const int expected = bytesBefore(text, pos);
      const int expectedLength = bytesBefore(text, pos + length) - expected;
      for (const CodeType codeType : {CT_SJIS, CT_JIS, CT_EUC}) {
        ASSERT_EQ(
            comparison.FindString(narrow, words[0].Bytes(), codeType, forward, 1, &narrowLength),
            expected);
        if (pos >= 0) {
          ASSERT_EQ(narrowLength, expectedLength);
        }
        const int any = comparison.FindStringsOr(text.data(), Size(text), wideWords, CT_UNICODE,
                                                 forward, run % 4 > 1, &length);
        ASSERT_EQ(comparison.FindStringsOr(narrow.data(), Size(narrow), words, codeType, forward,
                                           run % 4 > 1, &narrowLength),
                  bytesBefore(text, any));
        ASSERT_EQ(comparison.FindStringsAnd(narrow.data(), Size(narrow), words, codeType),
                  comparison.FindStringsAnd(text.data(), Size(text), wideWords, CT_UNICODE));
        ASSERT_EQ(comparison.EndsWith(narrow.data(), Size(narrow), words[0], words[0].GetLength(),
                                      codeType),
                  comparison.EndsWith(text.data(), Size(text), wideWords[0],
                                      wideWords[0].GetLength(), CT_UNICODE));
      }
      if (Options(bits).UsesTable()) {
        ASSERT_EQ(comparison.FindString(narrow, words[0].Bytes(), CT_EUC, forward, 0, nullptr),
                  pos);
      }
    }
  }
}

// The plain comparison is that of txtnnstr, whatever the code page of the thread.
TEST(OptionComp, FastPathIsTxtnnstr) {
  constexpr unsigned kSeed = 4205;
  for (const bool wide : {false, true}) {
    RandomTexts texts(wide, kSeed);
    for (int run = 0; run < 5000; ++run) {
      const CodeType codeType = wide ? CT_UNICODE : run % 2 != 0 ? CT_SJIS : CT_BIG5;
      const ExactCopy text(texts.Make(10));
      const ExactCopy word(texts.Make(2));
      const int ignoreCase = run % 3 == 0;
      const COptionComp2 comparison(ignoreCase, 0, 0);
      for (const int forward : {0, 1}) {
        const char* const place = txtnnstr(codeType, forward, text.Data(), text.Size(), word.Data(),
                                           word.Size(), ignoreCase);
        const CApplyLocale scope(CT_KSC5601);
        int length = 0;
        const int pos = comparison.FindString(text.Data(), text.Size(), word.Data(), word.Size(),
                                              codeType, forward, 0, &length);
        ASSERT_EQ(pos, place == nullptr ? -1 : place - text.Data());
        ASSERT_EQ(length, place == nullptr ? 0 : word.Size());
      }
    }
  }
}

}  // namespace
}  // namespace lumr
