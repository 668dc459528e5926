// Transfer encodings: bytes to the 7-bit text forms of mail and back.
//
// What holds for every function here:
// - Output buffers and strings are emptied first, sized once and written once. They must not
//   hold the input.
// - Lengths are bytes, of char16_t text UTF-16 units. A null pointer is an empty text. A pointer
//   alone ends at its NUL; where there is a length or a view, all of it counts and NUL is a byte
//   like others.
// - Encoded lines end in CR LF. A byte of 0x80 or above is in no alphabet.
// - Bad input is never an error that throws: decoders skip, keep or stop at what they cannot
//   read, as each one says. Only std::bad_alloc is thrown: memory, or an output that would pass
//   the size of a buffer.
// - Time and memory are linear in the input. There is no state between two calls.
//
// Input that is too large to hold goes through the same code chunk by chunk: transfercoder.h.
#pragma once

#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// ---- Base64 (RFC 2045) ----

// Writes data as Base64 with padding. A lineLength of 1 or more ends a line after that many
// characters, and the last line too: "abc" with 4 gives "YWJj\r\n". With 0 or less there are no
// line breaks. A length below 1 gives an empty output without a line break.
void EncodeBase64(const unsigned char* data, int length, int lineLength, CBuffer& out);
void EncodeBase64(std::string_view data, int lineLength, CBuffer& out);

// Decodes Base64 up to and with the first padded group of four, and gives 1. What is not in the
// alphabet is skipped wherever it stands; an incomplete last group is dropped; what follows the
// padding is not read, because mail appends other text there. "=" inside a group counts as the
// value 0. (The lenient decoder of transfercoder.h keeps incomplete groups and goes on.)
int DecodeBase64(const char* text, CBuffer& out);
int DecodeBase64(std::string_view text, CBuffer& out);

// Finds the first run of Base64 characters and copies it as it is, with the "=" right behind it.
// A NUL inside the length counts as one of them, and callers rely on it. A negative length means
// up to the NUL.
void ExtractBase64Text(const char* text, int length, CBuffer& out);
void ExtractBase64Text(std::string_view text, CBuffer& out);

// ---- Quoted-printable (RFC 2045) ----

// Writes data as quoted-printable in lines of at most 76 characters, the "=" of a soft line
// break included. With textMode, line breaks (CR LF, a lone CR, a lone LF) are written as CR LF;
// without it CR and LF are written as "=0D" and "=0A". White space before a line break of the
// data and at its end is always encoded. A length below 1 gives an empty output.
void EncodeQuotedPrintable(const unsigned char* data, int length, int textMode, CBuffer& out);
void EncodeQuotedPrintable(std::string_view data, int textMode, CBuffer& out);

// Decodes quoted-printable and gives 1. "=" with nothing but white space up to the line break or
// the end is a soft break and goes with it; white space before any other line break or the end is
// dropped, since transport may have added it; an "=" that is no escape is kept; hexadecimal
// digits may be of either case. All else, bytes of 0x80 and above too, is copied.
int DecodeQuotedPrintable(const char* text, CBuffer& out);
int DecodeQuotedPrintable(std::string_view text, CBuffer& out);

// Guesses whether an unlabelled text is quoted-printable: 1 when it is pure ASCII and about one
// tenth of it are escapes. The rule counts in integers, so that any ASCII text of 1 to 3
// characters passes, and callers rely on it. 0 for an empty text.
int IsQuotedPrintable(const char* text);
int IsQuotedPrintable(std::string_view text);

// ---- Uuencode ----

// Writes a whole uuencode block: the line "begin MODE NAME", the data in lines of 45 bytes, "`"
// and "end". mode and fileName are written as given; null or empty ones are "644" and "dummy".
// 0 bits are written as "`", never as a space, which transport would strip.
void EncodeUuencode(const char* mode, const char* fileName, const unsigned char* data, int length,
                    CBuffer& out);
void EncodeUuencode(std::string_view mode, std::string_view fileName, std::string_view data,
                    CBuffer& out);

// Tells whether a line is "begin", three octal digits and a file name (1) or not (0), ignoring the
// case of "begin". The line may end at a CR or LF. mode receives the digits and fileName the name
// without white space around it, as the bytes stand; both may be null, and are emptied when the
// answer is 0.
int DecodeUuencodeBegin(const char* line, CStringA* mode, CStringA* fileName);
int DecodeUuencodeBegin(std::string_view line, CStringA* mode, CStringA* fileName);

// Decodes a text that begins with a begin line and is one uuencode block; empty lines do not
// count. Characters that are missing from the last group of a line count as 0; what follows "end"
// is not read. Each output may be null; without data only the begin line is read.
// 1 when the block is complete, also for an empty text; 0 when the begin line or "end" is missing
// or a line is too short (what was decoded before stays in data).
int DecodeUuencode(const char* text, CStringA* mode, CStringA* fileName, CBuffer* data);
int DecodeUuencode(std::string_view text, CStringA* mode, CStringA* fileName, CBuffer* data);

// ---- BinHex 4.0 (RFC 1741) ----

// Decodes the data fork of the first BinHex 4.0 block of a text. 1, also for an empty text; 0
// when the line that announces a block, or one of the colons around it, is missing (out is empty).
// Checksums are not checked and the resource fork is dropped; a block that is cut short gives what
// there is of the data fork. Runs expand to no more than the length that the header names.
int DecodeBinHex(const char* text, CBuffer& out);
int DecodeBinHex(std::string_view text, CBuffer& out);

// ---- Percent encodings ----

// Writes each byte as "%" and two upper-case hexadecimal digits; with encodeAll 0 ASCII letters
// and digits stay as they are. Gives the text of out, never null.
const char* EncodeHex(const char* text, int encodeAll, CBuffer& out);
const char* EncodeHex(std::string_view text, int encodeAll, CBuffer& out);

// The form encoding of URLs: ASCII letters, digits, "-", "." and "_" stay, a space becomes "+",
// every other byte "%" and two hexadecimal digits. Gives the text of out, never null.
const char* EncodeUrlEncode(const char* text, CBuffer& out);
const char* EncodeUrlEncode(std::string_view text, CBuffer& out);

// Makes "%" and two hexadecimal digits the byte (in wide text: the unit 0 to 255) that they
// spell; all else stays, a "%" alone too. "+" stays on purpose: outside of forms it is a plus.
void DecodeHex(const char* text, CBuffer& out);
void DecodeHex(std::string_view text, CBuffer& out);
CStringA DecodeHex(const char* text);
CStringA DecodeHex(std::string_view text);
CStringW DecodeHex(const char16_t* text);
CStringW DecodeHex(std::u16string_view text);

// The value 0 to 15 of a hexadecimal digit of either case, or -1.
int Decode1Hex(char digit);
int Decode1Hex(char16_t digit);

// ---- IMAP4 mailbox names (RFC 3501, 5.1.3) ----

// UTF-16 text as modified Base64: big-endian units, "," for "/", no padding, no line breaks.
// A length below 1 gives an empty output.
void EncodeImap4Base64(const char16_t* text, int length, CBuffer& out);
void EncodeImap4Base64(std::u16string_view text, CBuffer& out);

// Decodes modified Base64 up to the first character outside its alphabet; an odd last byte and
// unused bits are dropped. Gives 1.
int DecodeImap4Base64(const char* text, CStringW& out);
int DecodeImap4Base64(std::string_view text, CStringW& out);

// A mailbox name in modified UTF-7: printable ASCII stays, "&" becomes "&-", runs of anything
// else become "&", modified Base64 and "-". A length below 1 gives an empty output.
void EncodeImap4UTF7(const char16_t* text, int length, CBuffer& out);
void EncodeImap4UTF7(std::u16string_view text, CBuffer& out);

// And back; gives 1. A run without its "-" goes on to the end; what is behind a character
// outside the alphabet in a run is dropped with the run; a lone "&" at the end is dropped; a byte
// outside a run is the unit of its value. A length below 1 gives an empty output.
int DecodeImap4UTF7(const char* text, int length, CStringW& out);
int DecodeImap4UTF7(std::string_view text, CStringW& out);

}  // namespace lumr
