// Comparison and search of Japanese text that can ignore case, character width and the kind of
// kana, each on its own.
//
// Texts and words are in the edit form of their code type (charset/codetype.h); lengths and
// positions are bytes, UTF-16 texts included, where an odd last byte does not count. CT_ASCII and
// CT_SJIS texts are compared as Shift_JIS, all others as UTF-16 (to which byte texts are converted
// first). Null pointers, lengths below 1 and empty lists give 0 or -1, an empty word is found
// nowhere. Nothing is thrown but std::bad_alloc.
//
// What is compared is a unit: a character together with the voicing that follows it as a mark or
// is built into it, so that half-width "ka" with its mark and full-width "ga" can be equal. A
// character that has no other form, such as a kanji, equals itself only. A match begins at any
// character (also at a mark), and the units of the text are read from there: "ka" is not found in
// "ka" with a mark.
//
// While neither width nor kind of kana is ignored, characters are compared as they are, by
// txtnnstr: marks are then characters of their own, and ignoring case folds letters only. With
// width or kind of kana, ignoring case makes small kana equal to large ones too. Stored searches
// rely on both.
//
// At worst time is text times word; it is linear on text that does not repeat itself much.
#pragma once

#include <cstdint>
#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

class COptionComp2 {
 public:
  COptionComp2() = default;  // nothing is ignored
  COptionComp2(int ignoreCase, int ignoreWidth, int ignoreKana)
      : ignoreCase_(ignoreCase), ignoreWidth_(ignoreWidth), ignoreKana_(ignoreKana) {}

  void ClearOption() { *this = {}; }
  int IsSetOption() const { return ignoreCase_ || ignoreWidth_ || ignoreKana_; }

  // 1 when text begins with word, else 0; whole says whether the part that matched is all of it.
  int StartsWith(const char* text, int textLen, const char* word, int wordLen, CodeType codeType,
                 int& whole) const;
  // 1 when the two are equal, else 0.
  int IsSameText(const char* text, int textLen, const char* word, int wordLen,
                 CodeType codeType) const;
  // 1 when a match of word ends where text ends, else 0.
  int EndsWith(const char* text, int textLen, const char* word, int wordLen,
               CodeType codeType) const;

  // The position of the first (forward not 0) or last match of word in text, or -1. matchLen, which
  // may be null, is set to the bytes of text that match, which may be more or fewer than those of
  // word; 0 when there is no match. Both are on borders of the text's characters.
  //
  // For a code type whose text is converted for the comparison, the position counts the bytes of
  // the UTF-16 text when positionInCallerUnits is 0, and matchLen the caller's all the same.
  // While neither width nor kind of kana is ignored nothing is converted, and the position is the
  // caller's.
  int FindString(const char* text, int textLen, const char* word, int wordLen, CodeType codeType,
                 int forward, int positionInCallerUnits, int* matchLen) const;
  int FindString(std::string_view text, std::string_view word, CodeType codeType, int forward,
                 int positionInCallerUnits, int* matchLen) const;

  // 0 when every word occurs in text, else -1.
  int FindStringsAnd(const char* text, int textLen, const CArray<CBuffer>& words,
                     CodeType codeType) const;

  // The position (in the caller's text) of a match of any word, or -1; matchLen as above. With
  // width or kind of kana ignored: the first (or last) place where a word matches, and the first
  // such word in the list. Otherwise: the first (or last) place of the first word that occurs;
  // with nearest, each word that is found leaves to the words behind it the text before its match
  // (or behind it), and the last one that is found counts.
  int FindStringsOr(const char* text, int textLen, const CArray<CBuffer>& words, CodeType codeType,
                    int forward, int nearest, int* matchLen) const;

 protected:
  // wide: the texts are UTF-16, else Shift_JIS. The first two give the first or last place in text
  // of a unit that equals the first one of word, or null; _StartsWith gives 1 when text begins with
  // word, and in matchLen the bytes of text that do (0 when it does not).
  const char* _FindFirstChar(const char* text, int len, const char* word, int wordLen,
                             int wide) const;
  const char* _FindLastChar(const char* text, int len, const char* word, int wordLen,
                            int wide) const;
  int _StartsWith(const char* text, int textLen, const char* word, int wordLen, int wide,
                  int& matchLen) const;

 private:
  bool ComparesAsIs() const { return !ignoreWidth_ && !ignoreKana_; }
  std::uint32_t Mask() const;
  int FindAnyAsIs(std::string_view text, const CArray<CBuffer>& words, CodeType codeType,
                  bool forward, bool nearest, int& matchLen) const;

  int ignoreCase_ = 0;
  int ignoreWidth_ = 0;
  int ignoreKana_ = 0;
};

}  // namespace lumr
