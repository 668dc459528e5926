// Conversion of text between code types and between code pages.
//
// Japanese text takes its byte form (ISO-2022-JP, EUC-JP) to and from Shift_JIS by arithmetic;
// everything else passes through UTF-16 by the library's own code-page tables. Byte text that is
// not in a transfer form is in the edit form of its code type (CodeTypeSave2Edit), UTF-16 stands
// in little-endian bytes at any address.
//
// What holds for every function here:
// - A text is a pointer and a length in bytes. A null pointer or a length below 1 is an empty
//   text: the output is emptied and the status is 0.
// - The output is replaced, and must not hold the input.
// - The status is 0 when every character was carried over, exactly or by a look-alike of the
//   target's table (a fit), and 1 when characters were replaced or the code page is not
//   supported and code page 1252 stood in for it. It is never negative here: the library's
//   tables cannot fail. Status 1 is success with loss; who must not lose anything asks for 0.
// - emptyFallback chooses what stands for a character that the target lacks: 0 a "?", anything
//   else nothing. With nothing, every zero byte is removed from the code-page form of a text of
//   which something was replaced, its own zero bytes included: stored texts rely on it.
// - Code page 0 is the ANSI code page, 1200 is UTF-16 itself; CT_UNKNOWN has code page 0.
// - A leading byte-order mark that a decoding yields is removed.
// - Nothing is thrown but std::bad_alloc.
//
// A CConversionReport says which characters were not carried over exactly, with their offsets in
// the source and in the result. It knows more than the status: fits, what the arithmetic of the
// Japanese byte forms cannot hold, and a byte-order mark at the start that was removed or would be
// on the way back (as a fit).
#pragma once

#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/conversion_report.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// Text in the code type from to the code type to; returns the status.
// - Equal types copy. UTF-16 to UTF-16 swaps a text that begins with FE FF (big-endian) and
//   drops the byte-order mark; no other conversion from UTF-16 looks at a mark.
// - Types of one code page (all Japanese types and US-ASCII) never pass through UTF-16, and what
//   their arithmetic cannot hold does not change the status.
long ConvertToOtherCodeType2(CodeType from, const char* src, int len, CodeType to, CBuffer& out,
                             int emptyFallback, CConversionReport* report = nullptr);
long ConvertToOtherCodeType2(CodeType from, std::string_view text, CodeType to, CBuffer& out,
                             int emptyFallback = 0, CConversionReport* report = nullptr);

// Text in one code page to another through UTF-16; returns the status. Equal numbers copy.
// To code page 1200 the text is appended to out, since UTF-16 is built up piece by piece that
// way; only an empty text empties out there too.
long ConvertToOtherCodePage2(unsigned cpFrom, const char* src, int len, unsigned cpTo, CBuffer& out,
                             int emptyFallback, CConversionReport* report = nullptr);
long ConvertToOtherCodePage2(unsigned cpFrom, std::string_view text, unsigned cpTo, CBuffer& out,
                             int emptyFallback = 0, CConversionReport* report = nullptr);

// Text in the code page of ct to UTF-16; returns the status. The Japanese byte forms are not
// undone: text of type ISO-2022-JP or EUC-JP is read as code page 932, since edit-form text keeps
// the type of the mail it came from. A type without a code page is copied as it is.
long ConvertToWcs(CodeType ct, const char* src, int len, CBuffer& out);
CStringW ConvertToWcs(CodeType ct, const char* src, int len);

// Text in ct to the edit form of ct. 1, or 0 for CT_UNKNOWN (out is then emptied).
int ConvertToEditable(CodeType ct, const char* src, int len, CBuffer& out);

// As ConvertToEditable, and UTF-16 further to a narrow code page by ConvertToMbsIfWcs. On return
// ct is the code type of what stands in out.
int ConvertToEditableMbs(CodeType& ct, const char* src, int len, CBuffer& out, int emptyFallback);
int ConvertToEditableMbs(CodeType& ct, const char* src, int len, CStringA& out, int emptyFallback);

// When ct is a Unicode type, src is UTF-16: ct becomes the type of its script (Shift_JIS or
// KS_C_5601, see DetectUnicodeCodeType; Shift_JIS when no character tells) and the text goes to
// that type's code page. Otherwise out is a copy. Returns the status.
long ConvertToMbsIfWcs(CodeType& ct, const char* src, int len, CBuffer& out, int emptyFallback);
long ConvertToMbsIfWcs(CodeType& ct, const char* src, int len, CStringA& out, int emptyFallback);

// Shift_JIS, or UTF-16, text to the edit form of ct; returns the status.
long ConvertSjisToCTEditable(const CBuffer& sjis, CodeType ct, CBuffer& out, int emptyFallback);
long ConvertUnicodeToCTEditable(const CBuffer& utf16, CodeType ct, CBuffer& out, int emptyFallback);

// Swaps the bytes of each pair; a last odd byte is dropped.
void UTF16BE2LE(const char* src, int len, CBuffer& out);

// Appends add, edit-form text of type addCt, to cur, edit-form text of type curCt. Where the
// types differ, both go to the edit form of their common type (GetPriorCodeType), which becomes
// curCt; what has no place there becomes "?". Returns 0. add must not be cur.
long AddDifferentCodeText(CodeType& curCt, CBuffer& cur, CodeType addCt, const CBuffer& add);

// Takes text from the edit form of from to the edit form of to, in place.
void ConvToPriorCodeType(CodeType from, CodeType to, CBuffer& text);

}  // namespace lumr
