// Decoding of quoted-printable text inside header words.
#pragma once

#include <cstddef>
#include <string_view>

namespace lumr::transfer {

// Decodes the text of an encoded word of kind "Q" (RFC 2047, 4.2): "_" is a space, white space
// stays wherever it stands, and line breaks, with the white space of the fold behind them and a
// soft break's "=" before them, are dropped. Writes no more than the size of text at out, and
// gives the end.
char* DecodeQWord(std::string_view text, char* out);

// Encodes the bytes that in begins with, up to a blank or a line break, or where escapes are too
// few to be worth it; breaks lines softly where a line has no room for the next byte. column is
// that of out, at most lineLength, which is 63 to 127 less a soft break's "=". Writes up to four
// bytes behind the end that it gives. For processors with AVX-512 only; on others than x86-64 it
// does nothing.
char* EncodeDenseAvx512(const char*& in, const char* end, std::size_t lineLength,
                        std::size_t& column, char* out);

}  // namespace lumr::transfer
