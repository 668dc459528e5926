// Folding of text in place: letters to one case, small kana to large. A text never changes its
// length, no two-byte character is made or broken, and what is not folded stays as it is, so
// positions in the folded text are those of the original.
//
// A text is a pointer and a length (bytes, or UTF-16 units); a negative length means up to the
// terminating NUL. Null does nothing. Narrow text is in the current code page of the calling
// thread, or in the page that is given; letters are those of the page (platform/mbcs.h), in wide
// text those of Unicode (platform/unicode.h), full-width letters among them in both.
//
// Kana folding makes small kana large: a, i, u, e, o, tsu, ya, yu, yo in half-width katakana,
// and these and wa in full-width katakana and hiragana. Voiced kana and marks stay. The small ka
// and ke of full-width katakana stay too: they are signs for counting words, not small sounds,
// and the usual range for "all katakana" ends with them. Narrow kana are those of the code pages
// 932, 936 and 949.
#pragma once

#include <cstddef>

#include "lumrmisc/platform/mbcs.h"

namespace lumr {

// Letters to upper case when latin is not 0, small kana to large when kana is not 0.
void TextToUpper(char* text, int length, int latin, int kana);
void TextToUpperW(char16_t* text, int length, int latin, int kana);

// Letters to lower case, and small kana to large when kana is not 0.
void TextToLower(char* text, int length, int kana);
void TextToLowerW(char16_t* text, int length, int kana);

// What happens to a text.
enum class LetterFold { kNone, kUpper, kLower };
struct CaseFold {
  LetterFold letters = LetterFold::kNone;
  bool kana = false;
};

// The same for size bytes of text in a code page, and of UTF-16 at any address (an odd last byte
// stays).
void FoldBytes(const MbcsPage& page, char* text, std::size_t size, CaseFold fold);
void FoldUnits(char* text, std::size_t size, CaseFold fold);

// One character: of a code page (one byte, or lead * 256 + trail), or a unit.
unsigned FoldCharacter(const MbcsPage& page, unsigned character, CaseFold fold);
char16_t FoldUnit(char16_t unit, CaseFold fold);

}  // namespace lumr
