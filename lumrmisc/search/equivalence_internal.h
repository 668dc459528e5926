// Which characters of Japanese text are forms of one another: capital and small, half-width and
// full-width, katakana and hiragana; and the units of comparison that are read by it.
//
// A unit is one character with the voicing that follows it as a mark of its own or is built into
// it: half-width "ka" with its mark, full-width "ka" with its mark, and "ga" are one unit each.
// Two units are equal when their keys are; an option takes bits out of the keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// What is known of a character, in the bits of one number; 0 for a character of no row.
namespace unitkey {
// The key.
inline constexpr std::uint32_t kSize = 0x003;   // 1 large, 2 small
inline constexpr std::uint32_t kWidth = 0x030;  // 10 half-width, 20 full-width
inline constexpr std::uint32_t kKana = 0x300;   // 100 katakana or Latin, 200 hiragana
inline constexpr int kRowShift = 10;
inline constexpr std::uint32_t kRow = 0x7Fu << kRowShift;  // the row's number, from 1
inline constexpr int kVoicingShift = 17;
inline constexpr std::uint32_t kVoicing = 0x03u << kVoicingShift;  // 1 voiced, 2 semi-voiced
// By a full-width mark, or built in.
inline constexpr std::uint32_t kVoicingWidth = 0x10u << kVoicingShift;
inline constexpr std::uint32_t kAll = kSize | kWidth | kKana | kRow | kVoicing | kVoicingWidth;
// Beside the key.
inline constexpr int kTakesShift = 22;  // the marks that may follow, as in the row
inline constexpr int kGivesShift = 24;  // the voicing that the character gives as a mark
// Instead of all these: the character is of no row and equals only itself.
inline constexpr std::uint32_t kNoRow = 1u << 31;

// What is left of the keys under the three options.
constexpr std::uint32_t Mask(bool ignoreCase, bool ignoreWidth, bool ignoreKana) {
  return kRow | kVoicing | (ignoreCase ? 0 : kSize) | (ignoreWidth ? 0 : kWidth | kVoicingWidth) |
         (ignoreKana ? 0 : kKana);
}
}  // namespace unitkey

// The characters of one form of text. A code is a UTF-16 unit, or a byte or pair of bytes (first
// times 256 and second) of Shift_JIS. Constant, made once.
class EquivalenceTable {
 public:
  static const EquivalenceTable& Wide();
  static const EquivalenceTable& Narrow();

  std::uint32_t At(unsigned code) const { return blocks_[blockOf_[code >> 8]][code & 0xFF]; }
  // The characters that a unit of that key can begin with, under the mask, at most kMostBegins.
  static constexpr std::size_t kMostBegins = 8;
  std::size_t BeginsOf(std::uint32_t key, std::uint32_t mask, char16_t* codes) const;

 private:
  static constexpr std::size_t kMostBlocks = 6;
  static constexpr std::size_t kRowCount = 125;

  explicit EquivalenceTable(char16_t (*codeOf)(char16_t character));
  void Put(char16_t code, std::uint32_t value);
  void PutBuiltIn(std::u16string_view pairs, std::uint32_t voicing,
                  char16_t (*codeOf)(char16_t character));

  // By the upper and the lower byte of a code; block 0 is empty.
  std::uint8_t blockOf_[256] = {};
  std::uint32_t blocks_[kMostBlocks][256] = {};
  std::size_t blockCount_ = 1;
  // The characters of each row, those with voicing built in too; 0 behind the last one.
  char16_t members_[kRowCount][kMostBegins] = {};
};

// One unit: its key under the reader's mask, and its length in bytes.
struct TextUnit {
  std::uint32_t key;
  std::size_t length;
};

// Reads Shift_JIS by characters.
class NarrowCharacters {
 public:
  static constexpr std::size_t kStep = 1;

  struct Character {
    unsigned code;
    std::size_t length;
  };
  Character At(std::string_view text, std::size_t pos) const {
    const unsigned first = static_cast<unsigned char>(text[pos]);
    if (!page_.IsPair(text, pos)) return {first, 1};
    return {first << 8 | static_cast<unsigned char>(text[pos + 1]), 2};
  }
  const EquivalenceTable& Table() const { return table_; }
  const MbcsPage& Page() const { return page_; }

 private:
  const MbcsPage& page_ = *FindMbcsPage(932);
  const EquivalenceTable& table_ = EquivalenceTable::Narrow();
};

// Reads UTF-16 at any address; the text has an even number of bytes.
class WideCharacters {
 public:
  static constexpr std::size_t kStep = 2;

  struct Character {
    unsigned code;
    std::size_t length;
  };
  Character At(std::string_view text, std::size_t pos) const {
    return {LoadUnit(text.data() + pos), 2};
  }
  const EquivalenceTable& Table() const { return table_; }

 private:
  const EquivalenceTable& table_ = EquivalenceTable::Wide();
};

template <class Characters>
class UnitReader : public Characters {
 public:
  explicit UnitReader(std::uint32_t mask) : mask_(mask) {}

  // The unit at pos, which must be inside the text and on a border of characters.
  TextUnit Read(std::string_view text, std::size_t pos) const {
    const auto character = this->At(text, pos);
    const std::uint32_t entry = this->Table().At(character.code);
    if (entry == 0) return {unitkey::kNoRow | character.code, character.length};
    std::uint32_t key = entry;
    std::size_t length = character.length;
    const std::uint32_t takes = entry >> unitkey::kTakesShift & 3;
    if (takes != 0 && pos + length < text.size()) {
      const auto next = this->At(text, pos + length);
      const std::uint32_t gives = this->Table().At(next.code) >> unitkey::kGivesShift;
      if ((gives & takes) != 0) {
        key |= gives << unitkey::kVoicingShift;
        length += next.length;
      }
    }
    return {key & mask_, length};
  }
  std::uint32_t Mask() const { return mask_; }

 private:
  std::uint32_t mask_;
};

}  // namespace lumr
