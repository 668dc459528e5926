// Header values to text.
#pragma once

#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// Decodes the text of one encoded word into the bytes of its charset: encoding "B", ignoring case,
// by DecodeBase64 and "Q" by DecodeQuotedPrintable, whose result (1) is returned. Another
// encoding gives 0 and leaves out alone. "_" is not made a space: callers split words themselves
// and have done that before. DecodeHeaderValue reads a whole value.
int DecodeHeaderText(const char* encoding, const char* text, CBuffer& out);
int DecodeHeaderText(std::string_view encoding, std::string_view text, CBuffer& out);

// Reads a raw header value (what stands behind "Subject:", folded or not) as text.
//
// Encoded words (RFC 2047) are decoded wherever they stand: in quotes, in comments, glued to text
// or to one another, with white space or folds inside, without their "?=". White space between two
// of them is dropped. The rest is kept as it is; a fold, with all white space around it, is one
// space; white space at both ends is dropped.
//
// Adjacent words of one charset are joined as bytes before they are converted, so that a word
// reads right that is cut inside a character, inside an escape sequence or inside a Base64 group,
// or goes on without an escape sequence of its own. Words that are complete in themselves
// read right too: where the two readings differ, the one with fewer conversion errors wins (the
// joined one at a tie of ISO-2022-JP, since a cut word read alone is harmless ASCII).
//
// Labels are those of CodeTypeOfMailLabel (charset/mailcharset.h), with a language suffix
// ("utf-8*ja", RFC 2231) or not. Under an unknown label, and where the bytes are plainly not what
// the label says, the charset is detected; bytes that no charset explains become U+FFFD or "?".
// Raw 8-bit text and raw ISO-2022-JP outside of words are read in rawCharset (the label of
// the body, say) when they are in it, and detected otherwise.
//
// The result never holds a control character (U+0000 to U+001F, U+007F to U+009F, U+2028, U+2029),
// whatever was encoded: white space among them becomes one space a run, the others are dropped, so
// that no word can forge a header line or reach a terminal. Linear in the input, whatever it is.
CStringW DecodeHeaderValue(std::string_view raw, std::string_view rawCharset = {});

// The same text in UTF-8, at less cost than the other one and a conversion.
CStringA DecodeHeaderValueUtf8(std::string_view raw, std::string_view rawCharset = {});

}  // namespace lumr
