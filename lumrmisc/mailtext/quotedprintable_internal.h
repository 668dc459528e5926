// Decoding of quoted-printable text inside header words.
#pragma once

#include <string_view>

namespace lumr::transfer {

// Decodes the text of an encoded word of kind "Q" (RFC 2047, 4.2): "_" is a space, white space
// stays wherever it stands, and line breaks, with the white space of the fold behind them and a
// soft break's "=" before them, are dropped. Writes no more than the size of text at out, and
// gives the end.
char* DecodeQWord(std::string_view text, char* out);

}  // namespace lumr::transfer
