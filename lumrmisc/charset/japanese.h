// Japanese text in its three byte forms: Shift_JIS (the edit form), EUC-JP, and ISO-2022-JP, the
// 7-bit form of mail with escape sequences (RFC 1468); half-width katakana; and characters that
// only some systems show.
//
// The forms are converted by arithmetic on the row and cell of JIS X 0208, so that every cell
// goes through, assigned or not: the vendor characters that lie inside its 94 x 94 cells too.
#pragma once

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/platform/conversion_report.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// The three byte forms.
//
// out is emptied first; a null src or a len below 1 gives nothing more. src must not lie in out.
// Whatever the bytes, every function reads len bytes only and is linear.
//
// Losses go to report when it is not null. An empty report means that src was well formed and
// that converting back gives the same text: the same bytes, for ISO-2022-JP up to escape sequences
// that are redundant or mean the same. Reported as replaced is what is no character of the source
// form or has none in the target form: it is written as the rules say, mostly unchanged, but a
// reader of the result sees something else. Reported as a fit is what is read rightly but comes
// back as other bytes (8-bit katakana in ISO-2022-JP).

// Half-width katakana take the shift byte 8E. Lead bytes are 81-9F and E0-EF: F0 and above (the
// user-defined and the IBM area) have no cell in JIS X 0208 and are copied byte by byte. A lead
// byte before a byte outside 40-FC, or at the end, is copied (with that byte).
void ConvertSJisToEuc(const char* src, int len, CBuffer& out, CConversionReport* report = nullptr);

// A byte of A1-FE takes the next one with it: both in that range are converted, otherwise both
// are copied. So are 8E and a byte that is no half-width katakana, and any other byte; after the
// shift byte 8F a pair of JIS X 0212 is converted as if it were one of JIS X 0208.
void ConvertEucToSJis(const char* src, int len, CBuffer& out, CConversionReport* report = nullptr);

// Writes ESC $B before kanji, ESC (I before half-width katakana and ESC (B before all else, and
// ends in the latter state; so each line break is in it. Lead bytes as in ConvertSJisToEuc.
// Nothing is escaped: ESC, SO and SI of the text are copied and reported, since a reader takes
// them for control.
void ConvertSJisToJis(const char* src, int len, CBuffer& out, CConversionReport* report = nullptr);

// Reads ISO-2022-JP and its relatives as old and broken mailers write them: ESC $@, $B, $(D, K
// (kanji), (I and SO (half-width katakana; SI ends it), (B, (J, H (ASCII), and the announcement
// ESC &@. The state lasts over line ends. Of an unknown escape sequence only ESC goes; the state
// stays as it is when $ or ( follows, otherwise it is ASCII. In kanji state any two bytes are a
// pair, a control character or line break as its second byte too: outside 21-7E the bytes of the
// result are those of the arithmetic modulo 256. A last byte without a partner is copied.
void ConvertJisToSJis(const char* src, int len, CBuffer& out, CConversionReport* report = nullptr);

// Half-width katakana.
//
// The narrow functions are for Shift_JIS text, where a half-width katakana is a byte of A1-DF.
// Two-byte characters are those of the current code page.

// Replaces half-width katakana by full-width ones, a kana and its voiced or semi-voiced mark by
// one character. 1 when anything changed, otherwise 0 with the text untouched.
int KatakanaHanToZen(CStringA& text);
int KatakanaHanToZen(CStringW& text);
int KatakanaHanToZen(CBuffer& text);  // narrow text

int IsHankakuKatakana(const char* p);  // the byte at p; 0 for null
// The position of the first one outside two-byte characters, or -1. 0 or less: empty text.
int FindHankakuKatakana(const char* text, int len);
// The number of half-width katakana that text begins with.
int GetHankakuKatakanaLen(const char* text, int len);

// Machine-dependent characters.
//
// Vendor characters of Shift_JIS that other systems show wrongly or not at all: NEC row 13, the
// IBM extensions (NEC's copy of them too) and the user-defined area.

int IsMachineDependChar(const char* p);  // the two bytes at p; 0 for null or an empty text
// The position of the first one outside two-byte characters, or -1.
int FindMachineDependChar(const char* text, int len);
// The length in bytes of the run of them that text begins with.
int GetMachineDependCharLen(const char* text, int len);

}  // namespace lumr
