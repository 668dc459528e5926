// SHA-1 and RC4, only to read password texts of the first versions. Neither is safe for anything
// new.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace lumr {

// SHA-1 (FIPS 180-4) of a text.
std::array<unsigned char, 20> Sha1(std::string_view text);

// Enciphers or deciphers bytes in place with RC4 (RFC 6229 has its test vectors) under a key of 1
// to 256 bytes.
void Rc4(std::string_view key, unsigned char* bytes, std::size_t length);

}  // namespace lumr
