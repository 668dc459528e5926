// The multibyte runtime: which bytes of a code page begin a two-byte character, and how its
// characters compare. Nothing here depends on the locale of the process.
//
// A two-byte character is a lead byte followed by a trail byte. A lead byte that is not
// followed by a trail byte (or stands at the end of the text) is a character of its own.
// Code pages without two-byte characters have no lead bytes. NUL is an ordinary character in
// every function that takes a view. Positions and lengths are in bytes.
//
// Lead and trail bytes are those of the C runtime of Windows: a pair of them need not be a
// character that the code page defines (codepage.h tells).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

// What the bytes and characters of one code page are. Objects are constants that live as long
// as the program; loops fetch one once and ask it per byte.
class MbcsPage {
 public:
  // Internal: so many capitals from firstUpper on, and their small letters from firstLower on.
  struct LetterRun {
    unsigned firstUpper = 0;
    unsigned firstLower = 0;
    unsigned count = 0;
  };

  constexpr unsigned CodePage() const { return codePage_; }
  bool IsDoubleByte() const { return doubleByte_; }

  bool IsLead(char byte) const { return (flags_[static_cast<unsigned char>(byte)] & kLead) != 0; }
  bool IsTrail(char byte) const { return (flags_[static_cast<unsigned char>(byte)] & kTrail) != 0; }

  // Whether a two-byte character stands at pos and lies inside the text.
  bool IsPair(std::string_view text, std::size_t pos) const {
    return pos + 1 < text.size() && IsLead(text[pos]) && IsTrail(text[pos + 1]);
  }

  // The length in bytes, 1 or 2, of the character at pos, which must be inside the text.
  std::size_t CharLength(std::string_view text, std::size_t pos) const {
    return IsPair(text, pos) ? 2 : 1;
  }

  // Whether the byte at pos is the second byte of a two-byte character when the text is read
  // from its start; false at its end and beyond. Linear in the run of lead bytes before pos, not
  // in pos; a loop over all positions steps by CharLength instead.
  bool IsTrailInContext(std::string_view text, std::size_t pos) const;

  // The character (one byte, or lead * 256 + trail) in lower case; others unchanged. 932, 936,
  // 949 and 950 fold ASCII and their own full-width Latin letters; single-byte pages fold all
  // their letters.
  unsigned ToLower(unsigned character) const;
  unsigned ToUpper(unsigned character) const;
  unsigned char ToLowerByte(unsigned char byte) const { return lower_[byte]; }
  unsigned char ToUpperByte(unsigned char byte) const { return upper_[byte]; }

  // Compares character by character; negative, 0 or positive. The NoCase form compares the
  // characters in lower case. A shorter text that begins the longer one is less.
  int Compare(std::string_view a, std::string_view b) const;
  int CompareNoCase(std::string_view a, std::string_view b) const;
  bool EqualNoCase(std::string_view a, std::string_view b) const;

 private:
  friend struct MbcsPages;
  static constexpr std::uint8_t kLead = 1;
  static constexpr std::uint8_t kTrail = 2;

  unsigned CharacterAt(std::string_view text, std::size_t pos) const {
    const unsigned byte = static_cast<unsigned char>(text[pos]);
    return IsPair(text, pos) ? byte << 8 | static_cast<unsigned char>(text[pos + 1]) : byte;
  }
  template <typename Fold>
  int CompareFolded(std::string_view a, std::string_view b, Fold fold) const;

  unsigned codePage_ = 0;
  bool doubleByte_ = false;
  LetterRun wideLetters_[2];  // full-width Latin letters
  std::uint8_t flags_[256] = {};
  std::uint8_t lower_[256] = {};
  std::uint8_t upper_[256] = {};
};

// The page of a code page number, or null when the library has none. 0 is the ANSI code page.
// 51949 has the bytes and the letters of 949, in which text labelled so is edited. 65001, 65000
// and 1200 are no multibyte pages and give null.
const MbcsPage* FindMbcsPage(unsigned codePage);

// The current code page of the calling thread: 932 until set. Setting an unknown code page
// changes nothing and gives false.
unsigned CurrentCodePage();
const MbcsPage& CurrentMbcsPage();
bool SetCurrentCodePage(unsigned codePage);

// The ANSI code page, which stands for code page 0: 932 until the host sets it, once at start.
// Only a page that FindMbcsPage knows by its own number can be set; else false, and no change.
unsigned AnsiCodePage();
bool SetAnsiCodePage(unsigned codePage);

}  // namespace lumr
