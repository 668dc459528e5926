#include "lumrmisc/buffer/chartype.h"

#include <gtest/gtest.h>

#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {

TEST(GetCharType, ClassesAsAJapaneseReader) {
  const struct {
    char16_t unit;
    int type;
  } cases[] = {
      {u'\0', kCharControl},
      {u'\t', kCharControl},
      {u'\u0085', kCharControl},
      {u' ', kCharSpace},
      {u'\u00A0', kCharSpace},
      {u'\u2003', kCharSpace},
      {u'\u3000', kCharFullSpace | kCharFullWidth},
      {u'a', kCharAlnum},
      {u'9', kCharAlnum},
      {u'é', kCharAlnum},
      {u'한', kCharAlnum | kCharFullWidth},
      {u'_', kCharSymbol},
      {u'Ａ', kCharFullAlnum | kCharFullWidth},
      {u'９', kCharFullAlnum | kCharFullWidth},
      {u'。', kCharFullSymbol | kCharFullWidth},
      {u'～', kCharFullSymbol | kCharFullWidth},
      {u'あ', kCharHiragana | kCharFullWidth},
      {u'ゝ', kCharHiragana | kCharFullWidth},
      {u'ァ', kCharKatakana | kCharFullWidth},
      {u'ー', kCharKatakana | kCharFullWidth},
      {u'ｱ', kCharHalfKatakana},
      {u'ﾟ', kCharHalfKatakana},
      {u'漢', kCharIdeograph | kCharFullWidth},
      {u'々', kCharIdeograph | kCharFullWidth},
      {u'\xD83D', kCharOther},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetCharType(c.unit), c.type) << std::hex << static_cast<unsigned>(c.unit);
    // The same through a code page, where it has the unit.
    const int code = EncodeUnit(932, c.unit, true);
    const int narrow = code < 0 ? c.type : GetCharType(static_cast<unsigned>(code), 932);
    EXPECT_EQ(narrow, c.type) << code;
    EXPECT_EQ(IsBlankType(c.type), (c.type & kCharClass) <= kCharFullSpace && c.type != kCharOther);
  }
}

TEST(GetCharType, ReadsCodePages) {
  const struct {
    unsigned character, codePage;
    int type;
  } cases[] = {
      {0xA0, 1252, kCharSpace},
      {0xE9, 1252, kCharAlnum},
      {0x8140, 936, kCharIdeograph | kCharFullWidth},
      {0xA1A1, 936, kCharFullSpace | kCharFullWidth},
      {0xA140, 950, kCharFullSpace | kCharFullWidth},
      {0xA1A1, 949, kCharFullSpace | kCharFullWidth},
      {0x81AD, 932, kCharOther | kCharFullWidth},  // not assigned
      {0x41, 950, kCharAlnum},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetCharType(c.character, c.codePage), c.type) << std::hex << c.character;
  }
  for (const unsigned codePage : {932u, 936u, 949u, 950u, 51949u}) {
    const int space = EncodeUnit(codePage, u'\u3000', true);
    EXPECT_TRUE(IsFullSpace(static_cast<unsigned>(space), codePage)) << codePage;
    EXPECT_FALSE(IsFullSpace(' ', codePage));
  }
  EXPECT_FALSE(IsFullSpace(0x8140, 1252));
}

// Full width is the width of the layout, for every unit.
TEST(GetCharType, FullWidthIsThatOfTheTables) {
  for (unsigned unit = 0; unit < 0x10000; ++unit) {
    const int type = GetCharType(static_cast<char16_t>(unit));
    ASSERT_EQ((type & kCharFullWidth) != 0, IsUnitFullWidth(static_cast<char16_t>(unit))) << unit;
    ASSERT_TRUE(IsBlankType(type) || !IsUnitSpace(static_cast<char16_t>(unit))) << unit;
  }
}

}  // namespace lumr
