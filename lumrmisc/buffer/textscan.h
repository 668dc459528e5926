// Counted-string primitives: two-byte characters, white space, substring search, prefixes,
// wildcards, letters and digits, look-up in arrays.
//
// A text is a pointer and a length; a negative length means up to the terminating NUL, which is
// then looked for first, at each call. With a length given, NUL is an ordinary character. A null
// pointer is an empty text unless said otherwise. Narrow text is in the current code page of the
// calling thread (platform/mbcs.h): a two-byte character is a lead byte followed by a trail
// byte. Lengths and positions are bytes, in the wide functions UTF-16 units. ignoreCase compares
// the characters in lower case, by the tables of the code page or of Unicode. Nothing here
// throws, except for memory in a search; every function is linear in its input, wildicmp aside.
#pragma once

#include "lumrmisc/platform/types.h"

namespace lumr {

// ---- Characters ----

// 1 when text[pos] and text[pos + 1] form a two-byte character that lies inside the text, else 0
// (also when text is null or pos negative). With a negative len the byte after pos is read
// freely, so pos must not be past the terminator.
int IsTLead(const char* text, int pos, int len);

// 1 when the text holds anything but 09-0D and 20-7E hex, else 0.
int IsNotAsciiText(const char* text, int len);
int IsNotAsciiText(const char16_t* text, int len);

// Moves pos forward to the first character that is no white space and returns 1; returns 0 when
// there is none, with pos at the end. Narrow white space is 09-0D and 20 hex, and every two-byte
// character is stepped over as if it were white space: trimming of buffers relies on it. Wide
// white space is that of Unicode, U+3000 included. 0 and pos unchanged when text is null, or pos
// negative or past the end.
int SkipSpace(const char* text, int len, int& pos);
int SkipSpace(const char16_t* text, int len, int& pos);

// The mirror: moves pos forward to the first white space, stepping over everything else.
int SkipNotSpace(const char* text, int len, int& pos);
int SkipNotSpace(const char16_t* text, int len, int& pos);

// 1 for A-Z, a-z, 0-9.
int iswalnumH(char16_t c);
// 1 for the full-width forms of the same: U+FF21-FF3A, U+FF41-FF5A, U+FF10-FF19.
int iswalnumZ(char16_t c);
// 1 for either.
int iswalnumHZ(char16_t c);

// ---- Substrings ----

// The first or (mbsrnnstr) the last place in text where word stands, on a border of characters;
// null when there is none. Occurrences may overlap: the last "aa" of "aaa" is at 1. Null when
// text or word is null or empty; but an empty word is found at the start, and by mbsrnnstr at
// the end, of a text when neither has a length and case counts, as the C library's own search
// would do. wordLen bytes are compared, so a word that ends in half a character finds that half.
const char* mbsnnstr(const char* text, int textLen, const char* word, int wordLen, int ignoreCase);
const char* mbsrnnstr(const char* text, int textLen, const char* word, int wordLen, int ignoreCase);

// The same in UTF-16 text. A place may be the second half of a surrogate pair.
const char16_t* wcsnnstr(const char16_t* text, int textLen, const char16_t* word, int wordLen,
                         int ignoreCase);
const char16_t* wcsrnnstr(const char16_t* text, int textLen, const char16_t* word, int wordLen,
                          int ignoreCase);

// 1 when text begins with prefix. A null or empty prefix begins every text, a null one too.
int ismbsnnstart(const char* text, int textLen, const char* prefix, int prefixLen, int ignoreCase);
int iswcsnnstart(const char16_t* text, int textLen, const char16_t* prefix, int prefixLen,
                 int ignoreCase);

// ---- Wildcards ----

// 0 when the whole text matches the pattern, 1 when not (as strcmp would have it). Byte by byte,
// the case of ASCII letters ignored, two-byte characters not treated as such. "?" is any one
// byte. "*" at the end is any rest, the empty one too. "*" elsewhere is any run of bytes, the
// empty one too, up to a byte that equals the one behind the "*"; a "?" or "*" behind a "*" is
// therefore looked for as that character itself, and only then has its meaning: stored patterns
// rely on it ("a*?" does not match "ab", "**" not the empty text). At worst text times pattern.
int wildicmp(const char* text, const char* pattern);

// ---- Arrays ----

// The index of the first element equal to text (null: to the empty text), or -1.
int LookupStringArray(const CStringArray& array, const char* text, int ignoreCase);
int LookupStringArray(const CArray<CStringW>& array, const char16_t* text, int ignoreCase);

}  // namespace lumr
