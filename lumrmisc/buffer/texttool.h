// Text utilities of general use: quoted and parenthesised parts, items of comma-separated
// values, comparison that reads numbers, counting of characters.
//
// A text is a pointer and a length; a negative length means up to the terminating NUL, and with a
// length given NUL is an ordinary character. A null pointer is an empty text. Narrow text is in the
// current code page of the calling thread, and the second byte of a two-byte character is never a
// quote, a backslash or anything else; wide text is UTF-16. Lengths and positions are bytes, in the
// wide functions units. The input must not lie in the output. Nothing here throws except for
// memory; every function is linear in its input.
#pragma once

#include "lumrmisc/platform/types.h"

namespace lumr {

// ---- Quoted and parenthesised parts ----

// What the inside of a quoted string stands for (RFC 5322, quoted-pair): each backslash goes and
// the character behind it stays, be it a backslash. One at the very end stays. Quotes among
// the text, escaped or not, stay too: taking off the outer ones is the caller's.
void GetQuotedToken(const char* text, int len, CStringA& token);
void GetQuotedToken(const char16_t* text, int len, CStringW& token);

// The inverse: appends the text in double quotes to out, a backslash before each quote and
// backslash in it. Narrow: half a two-byte character that stands before one of those becomes
// "?", because the backslash would complete it and the quote behind would end the string.
void AddQuotedToken(const char* text, int len, CStringA& out);
void AddQuotedToken(const char16_t* text, int len, CStringW& out);

// Takes a text apart at its parentheses ("user@host (Name)"): outside is what stands outside of
// them, joined as it is, inside what stands inside, with a space between one part and the next;
// inner parentheses stay. Nothing is trimmed. Parentheses inside double quotes are ordinary, with
// the rules for quotes of FindAddrDelimiter (mailtext/address.h). A part that is not closed reaches
// to the end of the text. 1 when there is a part, an empty one too; else 0, and outside is the
// whole text.
int GetParenthesisToken(const char* text, int len, CStringA& outside, CStringA& inside);
int GetParenthesisToken(const char16_t* text, int len, CStringW& outside, CStringW& inside);

// ---- Items of comma-separated values (RFC 4180) ----

// Reads the item of one record that begins at pos, and moves pos behind its comma; 0, an empty
// item and pos as it was when there is no further one. An empty text has no items, "a," has two.
// An item that begins with a double quote reaches to the next single quote, "" in it is a quote,
// and what stands between that quote and the comma belongs to it; one that is never closed
// reaches to the end of the text. Elsewhere quotes, and everywhere spaces and line breaks, are
// ordinary. A negative pos gives 0.
int GetCsvItem(const char* text, int len, int& pos, CStringA& item);
int GetCsvItem(const char16_t* text, int len, int& pos, CStringW& item);

// Appends an item to a record, behind a comma unless the record is empty. The item is quoted when
// it is empty, begins or ends with white space or holds a comma, a quote or a line break, so that
// reading gives back what was written.
void AddCsvItem(const char* item, int len, CStringA& record);
void AddCsvItem(const char16_t* item, int len, CStringW& record);

// ---- Comparison and counting ----

// Compares texts as people sort names with numbers in them: negative, 0 or positive. A run of
// digits, full-width ones too, is a number of any size ("a9" before "a10"), and stands where "0"
// would. Other characters compare by their codes in lower case. Texts that are equal so far,
// but for leading zeros, width and case, are ordered by their codes, so that 0 means the same text:
// this is a total order, fit for sorting.
int lstrcmp_num(const char* a, const char* b);
int lstrcmp_num(const char16_t* a, const char16_t* b);

// The number of characters: a two-byte character, and in UTF-16 a surrogate pair, is one. A lead
// byte without its trail byte, and half a pair, is one of its own.
int GetCharCount(const char* text, int len);
int GetCharCount(const char16_t* text, int len);

}  // namespace lumr
