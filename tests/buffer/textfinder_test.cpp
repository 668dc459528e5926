#include "lumrmisc/buffer/textfinder.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "lumrmisc/platform/cpu_internal.h"
#include "tests/buffer/reference.h"

namespace lumr {
namespace {

class CodePages : public testing::TestWithParam<unsigned> {
 protected:
  void SetUp() override { ASSERT_TRUE(SetCurrentCodePage(GetParam())); }
  void TearDown() override { SetCurrentCodePage(932); }
};
INSTANTIATE_TEST_SUITE_P(All, CodePages, testing::Values(932, 936, 949, 950, 1252, 1254));

// Full of lead bytes, trail bytes, bytes that are both, letters in both cases.
std::string RandomText(std::mt19937& random, std::string_view alphabet, std::size_t size) {
  std::string text(size, '\0');
  for (char& byte : text) byte = alphabet[random() % alphabet.size()];
  return text;
}

std::string Repeated(std::string_view piece, std::size_t count) {
  std::string text;
  for (; count > 0; --count) text += piece;
  return text;
}

void ExpectPlaces(TextForm form, std::string_view text, std::string_view word, bool ignoreCase) {
  const std::vector<char> copy(text.begin(), text.end());  // of exactly this size, for sanitizers
  const auto places = reference::Places(form, text, word, ignoreCase);
  TextFinder finder(form, word, ignoreCase);
  for (const auto level : {internal::CpuLevel::kPortable, internal::CpuLevel::kAll}) {
    internal::LimitCpu(level);
    EXPECT_EQ(finder.First({copy.data(), copy.size()}),
              places.empty() ? TextFinder::npos : places.front());
  }
  EXPECT_EQ(finder.Last({copy.data(), copy.size()}),
            places.empty() ? TextFinder::npos : places.back());
  EXPECT_EQ(EqualText(form, text.substr(0, word.size()), word, ignoreCase),
            reference::SameAt(form, text, 0, word, ignoreCase));
}

TEST_P(CodePages, FindsWhatTheObviousSearchFinds) {
  constexpr std::string_view kAlphabets[] = {"aA",
                                             "aAb\x82",
                                             "\x82\x83",
                                             "\x81\xa3\x41\x61",
                                             "ab\xa3\xc1\xe1\x40\x82\x60\x81\xa2\xe5",
                                             std::string_view("k\0\x2a\x21i\x30K", 7)};
  constexpr std::string_view kPieces[] = {
      "aA", "\x82\x83", "\x82\xa0", "\x82\x82\x83", "\x81\xa3z", "\xa3\xc1\xa3\xe1", "\x82"};
  std::mt19937 random(GetParam());
  for (int round = 0; round < 20000 && !HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "seed " << GetParam() << ", round " << round);
    const std::string_view alphabet = kAlphabets[random() % std::size(kAlphabets)];
    const auto form = static_cast<TextForm>(random() % 3);
    const std::size_t unit = form == TextForm::kUnits ? 2 : 1;
    std::string text = RandomText(random, alphabet, random() % 120 * unit);
    std::string word = RandomText(random, alphabet, (1 + random() % 4) * unit);
    if (round % 4 == 0 && !text.empty()) {  // one that is there
      const std::size_t from = random() % text.size() / unit * unit;
      word = text.substr(from, (1 + random() % 40) * unit);
    }
    if (round % 133 == 0) {  // long words that match late or nearly, over and over
      const std::string_view piece = kPieces[random() % std::size(kPieces)];
      text = Repeated(piece, 6000 / piece.size());
      for (unsigned n = random() % 4; n > 0; --n) text[random() % text.size()] ^= 0x20;
      word = text.substr(random() % 5000 / 2 * 2, 2 * (1 + random() % 400));
      if (random() % 2 == 0) word[random() % word.size()] ^= 0x21;
    }
    ExpectPlaces(form, text, word, random() % 2 == 0);
  }
}

// Every byte alone, and below every unit: the search relies on a character having no third form
// with the same lower case.
TEST_P(CodePages, KnowsTheCaseOfEveryByte) {
  std::string text;
  for (int byte = 0; byte < 256; ++byte) (text += static_cast<char>(byte)) += '\n';
  for (std::size_t i = 0; i < text.size(); i += 2) {
    ExpectPlaces(TextForm::kCharacters, text, text.substr(i, 1), true);
  }
}

TEST(TextFinder, KnowsTheCaseOfEveryUnit) {
  std::u16string all;
  for (unsigned unit = 1; unit < 0x10000; ++unit) all += static_cast<char16_t>(unit);
  const std::string_view text(reinterpret_cast<const char*>(all.data()), all.size() * 2);
  std::vector<std::size_t> first(0x10000), last(0x10000);
  for (std::size_t i = 0; i < all.size(); ++i) last[UnitToLower(all[i])] = 2 * i;
  for (std::size_t i = all.size(); i-- > 0;) first[UnitToLower(all[i])] = 2 * i;
  for (std::size_t i = 0; i < all.size(); i += i < 0x600 ? 1 : 67) {
    TextFinder finder(TextForm::kUnits, text.substr(2 * i, 2), true);
    ASSERT_EQ(finder.First(text), first[UnitToLower(all[i])]) << std::hex << i + 1;
    ASSERT_EQ(finder.Last(text), last[UnitToLower(all[i])]) << std::hex << i + 1;
  }
}

// Sizes at which anything worse than linear would take minutes.
TEST(TextFinder, IsLinearInTextsThatRepeatThemselves) {
  constexpr std::size_t kSize = 2000000;
  constexpr std::size_t kNone = TextFinder::npos;
  const std::string a(kSize, 'a'), half(kSize / 2, 'a'), quarter(kSize / 4, 'a');
  const std::string inside = Repeated("\x82\x83", kSize / 2), leads(kSize, '\x82');
  const struct {
    const char* what;
    const std::string& text;
    std::string word;
    std::size_t first, last;
  } cases[] = {
      {"last differs", a, half + 'b', kNone, kNone},
      {"first differs", a, 'b' + half, kNone, kNone},
      {"middle differs", a, quarter + 'b' + quarter, kNone, kNone},
      {"overlapping", a, half, 0, kSize / 2},
      {"inside characters", inside, Repeated("\x83\x82", 50), kNone, kNone},
      {"short, inside characters", inside, "\x83\x82", kNone, kNone},
      {"lead bytes only", leads, leads.substr(kSize / 2) + '\x83', kNone, kNone},
      {"ends in a lead byte", inside, Repeated("\x82\x83", 2000) + '\x82', 0, kSize - 4002}};
  for (const auto& c : cases) {
    for (const bool ignoreCase : {false, true}) {
      SCOPED_TRACE(testing::Message() << c.what << (ignoreCase ? ", no case" : ""));
      TextFinder finder(TextForm::kCharacters, c.word, ignoreCase);
      EXPECT_EQ(finder.First(c.text), c.first);
      EXPECT_EQ(finder.Last(c.text), c.last);
    }
  }
}

}  // namespace
}  // namespace lumr
