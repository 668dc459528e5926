#include "lumrmisc/charset/casefold.h"

#include <array>
#include <cstdint>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

// Hiragana and katakana stand in the order of JIS X 0208 rows 4 and 5 in every set: cell 1 is
// the small a. These are the cells of the small kana; each large one follows its small one.
constexpr std::uint8_t kSmallCells[] = {1, 3, 5, 7, 9, 35, 67, 69, 71, 78};
constexpr unsigned kCells = 80;

constexpr auto kIsSmallCell = [] {
  std::array<bool, kCells> set{};
  for (const std::uint8_t cell : kSmallCells) set[cell] = true;
  return set;
}();

// Where the cells of hiragana and of katakana begin in a code page: the character of cell 0.
// Cells run through one lead byte; in 932 the trail byte 7F is left out.
struct KanaRow {
  unsigned codePage;
  unsigned hiragana;
  unsigned katakana;
};
constexpr KanaRow kKanaRows[] = {
    {932, 0x829E, 0x833F},
    {936, 0xA4A0, 0xA5A0},
    {949, 0xAAA0, 0xABA0},
    {51949, 0xAAA0, 0xABA0},
};
constexpr char16_t kHiraganaUnit = 0x3040;
constexpr char16_t kKatakanaUnit = 0x30A0;

// The large form of half-width small kana A7 to AF (wo stands before them, the prolonged sound
// mark behind).
constexpr unsigned kFirstSmallByte = 0xA7;
constexpr std::uint8_t kLargeBytes[] = {0xB1, 0xB2, 0xB3, 0xB4, 0xB5, 0xD4, 0xD5, 0xD6, 0xC2};
constexpr unsigned kHalfUnitsFromBytes = 0xFF61 - 0xA1;

constexpr unsigned FoldCell(unsigned character, unsigned cell) {
  return cell < kCells && kIsSmallCell[cell] ? character + 1 : character;
}

constexpr unsigned FoldHalfWidth(unsigned byte) {
  return byte - kFirstSmallByte < std::size(kLargeBytes) ? kLargeBytes[byte - kFirstSmallByte]
                                                         : byte;
}

const KanaRow* FindKanaRow(unsigned codePage) {
  for (const KanaRow& row : kKanaRows) {
    if (row.codePage == codePage) return &row;
  }
  return nullptr;
}

unsigned FoldKana(const KanaRow& row, unsigned character) {
  if (character < 0x100) return row.codePage == 932 ? FoldHalfWidth(character) : character;
  if (character - row.hiragana < kCells) return FoldCell(character, character - row.hiragana);
  unsigned cell = character - row.katakana;
  if (row.codePage == 932 && character > 0x837F) --cell;
  return cell < kCells && character != 0x837F ? FoldCell(character, cell) : character;
}

char16_t FoldKanaUnit(char16_t unit) {
  if (unit < kHiraganaUnit) return unit;
  if (unit < kHiraganaUnit + kCells) {
    return static_cast<char16_t>(FoldCell(unit, unit - kHiraganaUnit));
  }
  if (unit >= kKatakanaUnit && unit < kKatakanaUnit + kCells) {
    return static_cast<char16_t>(FoldCell(unit, unit - kKatakanaUnit));
  }
  if (unit < 0xFF61 || unit > 0xFF9F) return unit;
  return static_cast<char16_t>(FoldHalfWidth(unit - kHalfUnitsFromBytes) + kHalfUnitsFromBytes);
}

unsigned FoldLetter(const MbcsPage& page, unsigned character, LetterFold letters) {
  switch (letters) {
    case LetterFold::kUpper:
      return page.ToUpper(character);
    case LetterFold::kLower:
      return page.ToLower(character);
    default:
      return character;
  }
}

unsigned FoldIn(const MbcsPage& page, const KanaRow* row, unsigned character, CaseFold fold) {
  const unsigned letter = FoldLetter(page, character, fold.letters);
  return fold.kana && row != nullptr ? FoldKana(*row, letter) : letter;
}

CaseFold Upper(int latin, int kana) {
  return {latin != 0 ? LetterFold::kUpper : LetterFold::kNone, kana != 0};
}
CaseFold Lower(int kana) {
  return {LetterFold::kLower, kana != 0};
}

}  // namespace

unsigned FoldCharacter(const MbcsPage& page, unsigned character, CaseFold fold) {
  return FoldIn(page, FindKanaRow(page.CodePage()), character, fold);
}

char16_t FoldUnit(char16_t unit, CaseFold fold) {
  char16_t folded = unit;
  if (fold.letters == LetterFold::kUpper) folded = UnitToUpper(unit);
  if (fold.letters == LetterFold::kLower) folded = UnitToLower(unit);
  return fold.kana ? FoldKanaUnit(folded) : folded;
}

void FoldBytes(const MbcsPage& page, char* text, std::size_t size, CaseFold fold) {
  const KanaRow* const row = FindKanaRow(page.CodePage());
  std::array<char, 256> single;
  for (unsigned byte = 0; byte < 256; ++byte) {
    single[byte] = static_cast<char>(FoldIn(page, row, byte, fold));
  }
  const std::string_view view(text, size);
  for (std::size_t pos = 0; pos < size;) {
    const unsigned byte = static_cast<unsigned char>(text[pos]);
    if (!page.IsPair(view, pos)) {
      text[pos++] = single[byte];
      continue;
    }
    const unsigned pair = byte << 8 | static_cast<unsigned char>(text[pos + 1]);
    const unsigned folded = FoldIn(page, row, pair, fold);
    text[pos] = static_cast<char>(folded >> 8);
    text[pos + 1] = static_cast<char>(folded);
    pos += 2;
  }
}

void FoldUnits(char* text, std::size_t size, CaseFold fold) {
  for (std::size_t pos = 0; pos + 1 < size; pos += 2) {
    StoreUnit(text + pos, FoldUnit(LoadUnit(text + pos), fold));
  }
}

void TextToUpper(char* text, int length, int latin, int kana) {
  FoldBytes(CurrentMbcsPage(), text, CountedText(text, length).size(), Upper(latin, kana));
}
void TextToUpperW(char16_t* text, int length, int latin, int kana) {
  FoldUnits(reinterpret_cast<char*>(text), CountedUnits(text, length).size(), Upper(latin, kana));
}
void TextToLower(char* text, int length, int kana) {
  FoldBytes(CurrentMbcsPage(), text, CountedText(text, length).size(), Lower(kana));
}
void TextToLowerW(char16_t* text, int length, int kana) {
  FoldUnits(reinterpret_cast<char*>(text), CountedUnits(text, length).size(), Lower(kana));
}

}  // namespace lumr
