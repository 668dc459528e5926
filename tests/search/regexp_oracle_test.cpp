// The engine against the plain matcher of regexp_model.h.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <set>
#include <string>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/casefold.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/search/regexp_search_internal.h"
#include "search/regexp_model.h"
#include "search/sample.h"
#include "support/bytes.h"

namespace lumr {
namespace {

// A pattern compiled for one kind of text, and the same pattern as the model reads it.
class Pair {
 public:
  Pair(const std::u16string& pattern, bool wide, bool caseSensitive, bool remembers = false)
      : wide_(wide),
        caseSensitive_(caseSensitive),
        pattern_(Encode(pattern)),
        model_(Characters(pattern_)) {
    const RegExpOptions options = {wide ? nullptr : FindMbcsPage(932), caseSensitive, {}};
    CompileRegExp(pattern_, options, program_);
    if (program_.lastError != 0) return;
    state_ = std::make_unique<RegExpState>(program_);
    if (remembers) state_->RememberAtOnce();
  }

  int Error() const { return program_.lastError; }
  int ModelError() const { return model_.Error(); }
  bool IsAutomaton() const { return program_.plan.way == RegExpPlan::Way::kAutomaton; }

  std::string Encode(const std::u16string& text) const {
    if (wide_) return std::string(BytesOf(text));
    std::string bytes;
    for (const char16_t unit : text) {
      const int code = EncodeUnit(932, unit, true);
      if (code >= 0x100) bytes += static_cast<char>(code >> 8);
      bytes += static_cast<char>(code);
    }
    return bytes;
  }

  // "start-end" by the engine, by its machine alone and by the model; of the first match at or
  // behind from, which is a place in characters, by the first two.
  std::string Found(const std::string& text, bool machine) {
    const ExactCopy copy(text);
    const RegExpText prepared(program_.options, copy.View());
    RegExpSpan match;
    const RegExpOutcome outcome =
        machine ? state_->SearchByMachine(program_, prepared.View(), 0, kMostSteps, match)
                : state_->Search(program_, prepared.View(), 0, -1, match);
    if (outcome == RegExpOutcome::kLimit) return "limit";
    return outcome == RegExpOutcome::kFound ? Name(match.start, match.end) : "none";
  }

  std::string Expected(const std::string& text) {
    std::vector<std::size_t> places;
    const auto found = model_.Match(Characters(text, &places));
    if (!found) return "none";
    places.push_back(text.size());
    places.push_back(text.size() + (wide_ ? 2 : 1));
    return Name(places[found->first], places[found->second]);
  }

 private:
  static constexpr long long kMostSteps = 3'000'000;

  static std::string Name(std::size_t start, std::size_t end) {
    return std::to_string(start) + "-" + std::to_string(end);
  }

  RegExpModel::Text Characters(std::string text, std::vector<std::size_t>* places = nullptr) const {
    const MbcsPage* const page = FindMbcsPage(932);
    if (!caseSensitive_) {
      constexpr CaseFold kFold = {LetterFold::kLower, true};
      wide_ ? FoldUnits(text.data(), text.size(), kFold)
            : FoldBytes(*page, text.data(), text.size(), kFold);
    }
    RegExpModel::Text characters;
    for (std::size_t pos = 0; pos < text.size();) {
      if (places != nullptr) places->push_back(pos);
      const auto first = static_cast<unsigned char>(text[pos]);
      const bool two = wide_ || page->IsPair(text, pos);
      const std::uint32_t second = two ? static_cast<unsigned char>(text[pos + 1]) : 0u;
      characters.push_back(wide_ ? second << 8 | first : two ? first << 8 | second : first);
      pos += two ? 2 : 1;
    }
    return characters;
  }

  bool wide_;
  bool caseSensitive_;
  std::string pattern_;
  RegExpModel model_;
  RegExpProgram program_;
  std::unique_ptr<RegExpState> state_;
};

::testing::AssertionResult Agree(Pair& pair, const std::u16string& pattern,
                                 const std::u16string& text) {
  const std::string bytes = pair.Encode(text);
  const std::string expected = pair.Expected(bytes);
  for (const bool machine : {false, true}) {
    const std::string found = pair.Found(bytes, machine);
    if (found == expected) continue;
    CBuffer names[2];
    ConvertToOtherCodePage2(1200, BytesOf(pattern), 65001, names[0]);
    ConvertToOtherCodePage2(1200, BytesOf(text), 65001, names[1]);
    return ::testing::AssertionFailure()
           << "\"" << std::string(names[0].Bytes()) << "\" in \"" << std::string(names[1].Bytes())
           << "\": " << found << " instead of " << expected << (machine ? ", machine" : "");
  }
  return ::testing::AssertionSuccess();
}

constexpr std::u16string_view kAtoms = u"aあｱ①";
constexpr std::u16string_view kVariants = u"Aぁｧ①";  // what they are without folding

using Patterns = std::set<std::u16string>;

// Everything that count atoms and so many operators make: as one element with what it is wrapped
// in, and as a sequence of them.
class Grammar {
 public:
  const Patterns& Items(std::size_t atoms, std::size_t operators) {
    Patterns& made = items_[atoms][operators];
    if (!made.empty()) return made;
    if (atoms == 1 && operators == 0) {
      for (const char16_t atom : kAtoms) made.insert(std::u16string(1, atom));
    }
    if (operators == 0) return made;
    for (const std::u16string& inner : Patterns(Items(atoms, operators - 1))) {
      for (const char16_t* suffix : {u"*", u"+", u"?", u"*?", u"+?", u"??"}) {
        made.insert(inner + suffix);
      }
      made.insert(u"!" + inner);
    }
    for (const std::u16string& inner : Patterns(Sequences(atoms, operators - 1))) {
      made.insert(u"(" + inner + u")");
      made.insert(u"{" + inner + u"}");
    }
    for (std::size_t left = 1; left < atoms; ++left) {
      for (std::size_t of = 0; of < operators; ++of) {
        Join(Items(left, of), u"|", Items(atoms - left, operators - 1 - of), made);
      }
    }
    return made;
  }

  const Patterns& Sequences(std::size_t atoms, std::size_t operators) {
    Patterns& made = sequences_[atoms][operators];
    if (!made.empty()) return made;
    made = Items(atoms, operators);
    for (std::size_t left = 1; left < atoms; ++left) {
      for (std::size_t of = 0; of <= operators; ++of) {
        Join(Items(left, of), u"", Sequences(atoms - left, operators - of), made);
      }
    }
    return made;
  }

 private:
  static void Join(const Patterns& left, const char16_t* between, const Patterns& right,
                   Patterns& made) {
    for (const std::u16string& a : left) {
      for (const std::u16string& b : right) made.insert(a + between + b);
    }
  }

  Patterns items_[4][3];
  Patterns sequences_[4][3];
};

// All texts of up to five of two characters.
std::vector<std::u16string> TextsOver(char16_t a, char16_t b) {
  std::vector<std::u16string> texts = {u""};
  for (std::size_t i = 0; texts[i].size() < 5; ++i) {
    texts.push_back(texts[i] + a);
    texts.push_back(texts[i] + b);
  }
  return texts;
}

TEST(RegExpOracle, EveryShortPattern) {
  Grammar grammar;
  std::size_t number = 0;
  std::size_t pairs = 0;
  for (std::size_t atoms = 1; atoms <= 3; ++atoms) {
    for (std::size_t operators = 0; operators <= 2; ++operators) {
      for (const std::u16string& pattern : grammar.Sequences(atoms, operators)) {
        if (++number % kSampleStep != 0) continue;
        // Two of the characters, those of the pattern first.
        std::u16string two;
        for (const char16_t c : pattern + std::u16string(kAtoms)) {
          if (kAtoms.find(c) != kAtoms.npos && two.find(c) == two.npos) two += c;
        }
        const bool wide = number / kSampleStep % 2 == 0;
        const bool caseSensitive = number / kSampleStep / 2 % 2 == 0;
        Pair pair(pattern, wide, caseSensitive, number / kSampleStep / 4 % 2 == 0);
        ASSERT_EQ(pair.Error(), pair.ModelError()) << pair.Encode(pattern);
        if (pair.Error() != 0) continue;
        for (std::u16string text : TextsOver(two[0], two[1])) {
          for (std::size_t i = number % 2; !caseSensitive && i < text.size(); i += 2) {
            text[i] = kVariants[kAtoms.find(text[i])];
          }
          ASSERT_TRUE(Agree(pair, pattern, text));
          ++pairs;
        }
      }
    }
  }
  EXPECT_GT(pairs, kSampleStep == 1 ? 1'000'000u : 10'000u);
}

// What the automaton does only on long texts: runs of one character, states made anew.
TEST(RegExpOracle, LongTexts) {
  constexpr unsigned kSeed = 42;
  constexpr std::u16string_view kPieces[] = {u"a+", u"[^あ]*", u"(a|b)",    u"b",    u"あ?",
                                             u".*", u"ソ",     u"(ab|ソ+)", u".+?",  u"[ab]+",
                                             u"|",  u"あ",     u"b*?",      u"[^b]", u"(.*b)"};
  std::mt19937 random(kSeed);
  std::size_t compared = 0;
  for (int run = 0; run < 4000 / static_cast<int>(kSampleStep); ++run) {
    std::u16string pattern;
    for (std::size_t length = 1 + random() % 5; length > 0; --length) {
      pattern += kPieces[random() % std::size(kPieces)];
    }
    Pair pair(pattern, run % 2 == 0, true);
    if (pair.Error() != 0) continue;
    std::u16string text;
    for (int part = 0; part < 6; ++part) {
      text.append(random() % 120, u"abあソ"[random() % 4]);
      text += u"abあソ"[random() % 4];
    }
    const std::string bytes = pair.Encode(text);
    const std::string expected = pair.Found(bytes, true);
    if (expected == "limit") continue;
    ++compared;
    ASSERT_EQ(pair.Found(bytes, false), expected)
        << pair.Encode(pattern) << ", seed " << kSeed << ", run " << run;
  }
  EXPECT_GT(compared, 3000 / kSampleStep);
}

TEST(RegExpOracle, RandomPatterns) {
  constexpr unsigned kSeed = 41;
  constexpr std::u16string_view kPieces[] = {
      u"a", u"あ", u"ｱ",   u"b",     u"ソ",     u"(",   u"(",   u")",   u")",   u"{",      u"}",
      u"|", u"|",  u"*",   u"+",     u"?",      u"*?",  u"+?",  u"??",  u"!",   u".",      u"[ab]",
      u"$", u"^",  u"\\0", u"[^あ]", u"[ぁ-ｱ]", u"\\1", u"\\d", u"\\n", u"\\w", u"(a|あ)", u"{a+}"};
  constexpr std::u16string_view kLetters = u"aaabあぁｱソA1\r\n";
  std::mt19937 random(kSeed);
  std::size_t compiled = 0;
  std::size_t automata = 0;
  for (int run = 0; run < 60000 / static_cast<int>(kSampleStep); ++run) {
    std::u16string pattern;
    for (std::size_t length = 1 + random() % 9; length > 0; --length) {
      pattern += kPieces[random() % std::size(kPieces)];
    }
    Pair pair(pattern, run % 2 == 0, run / 2 % 2 == 0, run / 4 % 2 == 0);
    ASSERT_EQ(pair.Error(), pair.ModelError()) << pair.Encode(pattern);
    if (pair.Error() != 0) continue;
    ++compiled;
    automata += pair.IsAutomaton();
    for (int i = 0; i < 12; ++i) {
      std::u16string text;
      for (std::size_t length = random() % 9; length > 0; --length) {
        text += kLetters[random() % kLetters.size()];
      }
      ASSERT_TRUE(Agree(pair, pattern, text)) << "seed " << kSeed << ", run " << run;
    }
  }
  EXPECT_GT(automata, compiled / 10);
  EXPECT_GT(compiled - automata, compiled / 10);
}

}  // namespace
}  // namespace lumr
