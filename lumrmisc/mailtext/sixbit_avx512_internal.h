// Groups of three bytes to four characters and back, sixteen at a time. For processors with AVX-512
// only; on others than x86-64 these do nothing.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace lumr::transfer {

// The two characters of each 12-bit value, the first one in the low byte.
using PairTable = std::array<std::uint16_t, 4096>;

// Writes the characters of whole groups; gives their end.
char* EncodeGroupsAvx512(const PairTable& pairs, const char* in, std::size_t groups, char* out);

// Writes whole lines of so many groups each, every one ended by CR LF; gives their end.
char* EncodeLinesAvx512(const PairTable& pairs, const char* in, std::size_t lines,
                        std::size_t groupsPerLine, char* out);

// The value of each byte in an alphabet; -1 outside.
using ValueTable = std::array<std::int8_t, 256>;

// Decodes whole groups up to the first one that holds anything outside the alphabet, and steps over
// blanks and line breaks between groups. out has room for three bytes for each group in the text.
void DecodeGroupsAvx512(const ValueTable& values, const char*& in, const char* end, char*& out);

// Decodes the low six bits of each of size characters, less the bit of the space; gives count
// bytes, zeros where there are no more characters.
char* DecodeSixBitsAvx512(const char* in, std::size_t size, std::size_t count, char* out);

// ---- Modified UTF-7 ----

// Writes the characters of so many little-endian units, the last one filled up with zero bits;
// gives their end.
char* EncodeUnitsAvx512(const PairTable& pairs, const char* in, std::size_t units, char* out);

// Narrows the printable units of ASCII, "&" excepted, that in begins with, and gives their number.
// out has room for a byte for each of the units.
std::size_t CopyPlainUnitsAvx512(const char* in, std::size_t units, char* out);

// The number of units at the start of in that are not printable ASCII.
std::size_t CountOtherUnitsAvx512(const char* in, std::size_t units);

// Decodes what in begins with, up to an "&" that begins no run of Base64, or into a run that is not
// well-formed or that the text may go on with. inRun says where in begins and where it stops:
// inside such a run, at a border of units, or outside. Clears isAscii where a character outside is
// above 7F. out has room for a unit for each byte.
void DecodeNameAvx512(const ValueTable& values, bool& inRun, const char*& in, const char* end,
                      char*& out, bool& isAscii);

}  // namespace lumr::transfer
