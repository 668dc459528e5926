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

}  // namespace lumr::transfer
