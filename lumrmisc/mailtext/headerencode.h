// Text to header fields: the inverse of headerword.h and headerparam.h.
//
// All functions append to field, which holds what stands of the field so far ("Subject: ",
// "Content-Type: text/plain"), so that its first line is counted; unless it is empty or ends in a
// space, what is appended stands behind a space or a fold. They write lines of at most 76
// characters (what cannot be cut may be longer, where it says so), folded by CR LF and a space;
// no line break is written at the end. Nothing but printable ASCII, spaces and folds is ever
// written: white space among control characters of the text becomes one space a run, the others
// and byte-order marks are dropped, so that no text can begin a header field of its own.
#pragma once

#include <string_view>

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// How encoded words (RFC 2047) are written.
enum class HeaderWordKind {
  kSmaller,  // B or Q, whichever is smaller; always B in ISO-2022-JP, whose old readers know no Q
  kBase64,
  kQuoted,
};

struct HeaderEncoding {
  // The charset of encoded words. UTF-8 stands in for what no header is written in (UTF-7,
  // UTF-16), for CT_ASCII and for unknown ones.
  CodeType codeType = CT_UTF8;
  HeaderWordKind kind = HeaderWordKind::kSmaller;
  // The text is the name of an address: what RFC 5322 calls no atom is encoded too.
  bool isName = false;
};

// Appends text as a header value. ASCII words stay as they are where that reads back as the same
// text; the rest becomes encoded words of at most 75 characters, with the spaces between
// them inside. Words are cut between characters only (a surrogate pair, a two-byte character, and
// as long as they fit in a word a character and its combining marks stay together), and each is
// complete: one in ISO-2022-JP begins and ends in ASCII. DecodeHeaderValue gives the text back.
// 1 when the charset has every character, 0 when "?", U+FFFD or a look-alike of the code page
// stands for one. Linear in the text.
int AppendHeaderText(std::u16string_view text, const HeaderEncoding& encoding, CStringA& field);

// Appends "; name=value". Printable ASCII stands in quotes; all else is RFC 2231
// (name*=charset''%..), in numbered pieces where a line does not hold it, each of whole
// characters. DecodeHeaderParameter gives the value back. Result as above; a name that is no token
// of at most 40 characters, and nothing is appended: 0.
int AppendHeaderParameter(std::string_view name, std::u16string_view value, CodeType codeType,
                          CStringA& field);

// Appends a value that is made of printable ASCII already, such as message ids or addresses, folded
// at white space outside of double quotes; each run of white space becomes one space or fold. What
// stands between is never cut, however long it is. Bytes that are not printable ASCII are dropped.
void AppendHeaderTokens(std::string_view value, CStringA& field);

}  // namespace lumr
