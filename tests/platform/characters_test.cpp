// The multibyte runtime, and the classes of UTF-16 units beyond what ICU can vouch for.
#include <gtest/gtest.h>

#include <bitset>
#include <random>
#include <thread>

#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/unicode.h"
#include "platform/codepage_testing.h"

namespace lumr {
namespace {

using namespace std::string_view_literals;

// The runtime steps over what the conversion takes for one character, and over nothing else.
TEST(MbcsPage, HasTheLeadAndTrailBytesOfItsCodes) {
  for (const unsigned codePage : {932u, 936u, 949u, 950u}) {
    const MbcsPage& page = *FindMbcsPage(codePage);
    std::bitset<256> leads;
    std::bitset<256> trails;
    for (unsigned code = 0x8000; code < 0x10000; ++code) {
      const Converted decoded = Decode(codePage, CodeBytes(code));
      if (decoded.replaced > 0 || decoded.bytes.size() != 2) continue;
      leads.set(code >> 8);
      trails.set(code & 0xFF);
    }
    if (codePage == 932) {  // rows of JIS X 0208 and beyond that nobody filled
      for (const unsigned lead : {0x85u, 0x86u, 0xEBu, 0xECu, 0xEFu}) leads.set(lead);
    }
    for (unsigned byte = 0; byte < 256; ++byte) {
      SCOPED_TRACE(testing::Message() << codePage << " " << std::hex << byte);
      EXPECT_EQ(page.IsLead(static_cast<char>(byte)), leads[byte]);
      EXPECT_EQ(page.IsTrail(static_cast<char>(byte)), trails[byte]);
    }
  }
}

TEST(MbcsPage, FindsTrailBytesInContext) {
  constexpr char kBytes[] = "A\x40\x7F\x81\x90\xA0\xB1\xE0\xFC\xFF";
  std::mt19937 random(7);
  for (const unsigned codePage : kDoubleBytePages) {
    const MbcsPage& page = *FindMbcsPage(codePage);
    for (int i = 0; i < 2000; ++i) {
      std::string text;
      for (auto size = random() % 12; text.size() < size;) text += kBytes[random() % 10];
      std::vector<bool> trails(text.size() + 1);
      for (std::size_t pos = 0; pos < text.size(); pos += page.CharLength(text, pos)) {
        if (page.IsPair(text, pos)) trails[pos + 1] = true;
      }
      for (std::size_t pos = 0; pos <= text.size(); ++pos) {
        ASSERT_EQ(page.IsTrailInContext(text, pos), trails[pos])
            << codePage << " at " << pos << " of " << testing::PrintToString(text);
      }
    }
  }
}

TEST(MbcsPage, FoldsLettersOfItsOwn) {
  const struct {
    unsigned codePage, upper, lower, count;
  } runs[] = {
      {932, 'A', 'a', 26},       {932, 0x8260, 0x8281, 26},   {936, 'A', 'a', 26},
      {936, 0xA3C1, 0xA3E1, 26}, {949, 'A', 'a', 26},         {949, 0xA3C1, 0xA3E1, 26},
      {950, 'A', 'a', 26},       {950, 0xA2CF, 0xA2E9, 22},   {950, 0xA2E5, 0xA340, 4},
      {51949, 'A', 'a', 26},     {51949, 0xA3C1, 0xA3E1, 26}, {20127, 'A', 'a', 26},
  };
  for (const auto& run : runs) {
    SCOPED_TRACE(run.codePage);
    const MbcsPage& page = *FindMbcsPage(run.codePage);
    for (unsigned i = 0; i < run.count; ++i) {
      EXPECT_EQ(page.ToLower(run.upper + i), run.lower + i);
      EXPECT_EQ(page.ToUpper(run.lower + i), run.upper + i);
    }
  }
  // Nothing else folds: not Greek and Cyrillic of 932, no bytes above ASCII.
  for (const unsigned codePage : kDoubleBytePages) {
    const MbcsPage& page = *FindMbcsPage(codePage);
    int folded = 0;
    for (unsigned c = 0; c < 0x10000; ++c) folded += page.ToLower(c) != c || page.ToUpper(c) != c;
    EXPECT_EQ(folded, 104) << codePage;
  }
}

// A letter of a single-byte page folds as its UTF-16 unit does, when the page has both.
TEST(MbcsPage, FoldsSingleBytesThroughTheCaseTable) {
  int letters = 0;
  for (const unsigned codePage : kSingleBytePages) {
    const MbcsPage& page = *FindMbcsPage(codePage);
    for (unsigned byte = 0; byte < 256; ++byte) {
      SCOPED_TRACE(testing::Message() << codePage << " " << std::hex << byte);
      const Converted decoded = Decode(codePage, CodeBytes(byte));
      const bool exact = decoded.fits + decoded.replaced == 0;
      const char16_t unit = LoadUnit(decoded.bytes.data());
      const int lower = exact ? EncodeUnit(codePage, UnitToLower(unit), true) : -1;
      const int upper = exact ? EncodeUnit(codePage, UnitToUpper(unit), true) : -1;
      EXPECT_EQ(page.ToLower(byte), lower < 0 ? byte : static_cast<unsigned>(lower));
      EXPECT_EQ(page.ToUpperByte(static_cast<unsigned char>(byte)),
                upper < 0 ? byte : static_cast<unsigned>(upper));
      letters += page.ToLower(byte) != byte;
    }
  }
  EXPECT_EQ(FindMbcsPage(1252)->ToLower(0xC9), 0xE9u);
  EXPECT_EQ(FindMbcsPage(1251)->ToLower(0xA8), 0xB8u);
  EXPECT_GT(letters, 14 * 26);
}

TEST(MbcsPage, ComparesCharacterByCharacter) {
  const struct {
    std::string_view a, b;
    int compare, compareNoCase;
  } cases[] = {
      {"", "", 0, 0},
      {"a", "", 1, 1},
      {"abc", "abcd", -1, -1},
      {"ABC", "abc", -1, 0},
      {"_", "A", 1, -1},                 // between the capitals and the small letters
      {"\x83\x41", "\x83\x61", -1, -1},  // trail bytes have no case
      {"\x82\x60", "\x82\x81", -1, 0},   // full-width A
      {"\x83\x9F", "\x83\xBF", -1, -1},  // Greek does not fold
      {"\xB1", "\x83\x41", -1, -1},      // one byte is less than two
      {"\x83", "\x83\x41", -1, -1},      // a lead byte alone
      {"a\0b"sv, "A\0c"sv, 1, -1},
  };
  const MbcsPage& page = *FindMbcsPage(932);
  const auto sign = [](int value) { return (value > 0) - (value < 0); };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.a) + " and " + testing::PrintToString(c.b));
    EXPECT_EQ(sign(page.Compare(c.a, c.b)), c.compare);
    EXPECT_EQ(sign(page.Compare(c.b, c.a)), -c.compare);
    EXPECT_EQ(sign(page.CompareNoCase(c.a, c.b)), c.compareNoCase);
    EXPECT_EQ(sign(page.CompareNoCase(c.b, c.a)), -c.compareNoCase);
    EXPECT_EQ(page.EqualNoCase(c.a, c.b), c.compareNoCase == 0);
  }
}

TEST(CurrentCodePage, IsOfTheThread) {
  EXPECT_EQ(CurrentCodePage(), 932u);
  EXPECT_TRUE(SetCurrentCodePage(1252));
  std::thread([] {
    EXPECT_EQ(CurrentCodePage(), 932u);
    EXPECT_TRUE(SetCurrentCodePage(936));
  }).join();
  for (const unsigned unknown : {65001u, 65000u, 1200u, 437u}) {
    EXPECT_EQ(FindMbcsPage(unknown), nullptr);
    EXPECT_FALSE(SetCurrentCodePage(unknown));
    EXPECT_FALSE(SetAnsiCodePage(unknown));
  }
  EXPECT_EQ(CurrentCodePage(), 1252u);
  EXPECT_EQ(CurrentMbcsPage().ToLower(0xC9), 0xE9u);
  EXPECT_TRUE(SetCurrentCodePage(932));
}

TEST(AnsiCodePage, StandsForCodePageZero) {
  EXPECT_EQ(AnsiCodePage(), 932u);
  EXPECT_TRUE(SetAnsiCodePage(1251));
  EXPECT_EQ(FindMbcsPage(0)->CodePage(), 1251u);
  EXPECT_EQ(Units(Decode(0, "\xE0").bytes), u"а");
  EXPECT_EQ(EncodeUnit(0, u'а', true), 0xE0);
  EXPECT_FALSE(SetAnsiCodePage(0));
  EXPECT_TRUE(SetAnsiCodePage(932));
}

TEST(Units, AreAsWideAsTheirShiftJis) {
  for (unsigned value = 0; value < 0x10000; ++value) {
    const auto unit = static_cast<char16_t>(value);
    const bool wide = IsEastAsianWide(unit) || EncodeUnit(932, unit, true) > 0xFF;
    ASSERT_EQ(IsUnitFullWidth(unit), wide) << std::hex << value;
  }
  // Greek and box drawing are two bytes in Shift_JIS; half-width katakana are one.
  for (const char16_t unit : u"αЖ─ア가！"sv) EXPECT_TRUE(IsUnitFullWidth(unit));
  for (const char16_t unit : u"aｱé\u3099\xD83D"sv) EXPECT_EQ(IsUnitFullWidth(unit), unit == 0x3099);
  EXPECT_TRUE(IsEastAsianWide(U'😀') && IsEastAsianWide(U'𠮷') && !IsEastAsianWide(U'𝐀'));
}

TEST(Units, HaveClasses) {
  const struct {
    char16_t unit;
    unsigned flags;
  } cases[] = {
      {u'A', kUnitDefined | kUnitAlpha | kUnitUpper | kUnitHexDigit},
      {u'z', kUnitDefined | kUnitAlpha | kUnitLower},
      {u'9', kUnitDefined | kUnitDigit | kUnitHexDigit},
      {u'\t', kUnitDefined | kUnitControl | kUnitSpace | kUnitBlank},
      {u'\x85', kUnitDefined | kUnitControl | kUnitSpace},
      {u'\u3000', kUnitDefined | kUnitSpace | kUnitBlank},
      {u'。', kUnitDefined | kUnitPunctuation},
      {u'漢', kUnitDefined | kUnitAlpha},
      {u'\u0378', 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(UnitClassOf(c.unit), c.flags) << std::hex << unsigned{c.unit};
    EXPECT_EQ(IsUnitDefined(c.unit), c.flags != 0);
  }
}

TEST(Units, CompareWithAndWithoutCase) {
  const struct {
    std::u16string_view a, b;
    int compare, compareNoCase;
  } cases[] = {
      {u"", u"", 0, 0},          {u"ab", u"abc", -1, -1}, {u"ABC", u"abc", -1, 0},
      {u"ＡΑА", u"ａαа", -1, 0}, {u"_", u"A", 1, -1},     {u"\uFF21", u"\u0041", 1, 1},
  };
  const auto sign = [](int value) { return (value > 0) - (value < 0); };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(c.a)));
    EXPECT_EQ(sign(CompareUnits(c.a, c.b)), c.compare);
    EXPECT_EQ(sign(CompareUnits(c.b, c.a)), -c.compare);
    EXPECT_EQ(sign(CompareUnitsNoCase(c.a, c.b)), c.compareNoCase);
    EXPECT_EQ(sign(CompareUnitsNoCase(c.b, c.a)), -c.compareNoCase);
    if (c.a.size() != c.b.size()) continue;
    std::string odd = "x";  // the text begins at an odd address
    odd += Bytes(c.a);
    EXPECT_EQ(EqualUnits(odd.data() + 1, Bytes(c.b).data(), c.a.size()), c.compare == 0);
    EXPECT_EQ(EqualUnitsNoCase(odd.data() + 1, Bytes(c.b).data(), c.a.size()),
              c.compareNoCase == 0);
  }
}

}  // namespace
}  // namespace lumr
