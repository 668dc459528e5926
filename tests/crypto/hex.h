// Bytes of the tests of digests and ciphers: as hexadecimal digits, as vectors are printed, as the
// functions take them, and at random.
#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>

inline std::string ToHex(const void* bytes, std::size_t length) {
  std::string hex;
  for (std::size_t i = 0; i < length; ++i) {
    const unsigned char byte = static_cast<const unsigned char*>(bytes)[i];
    hex += "0123456789abcdef"[byte >> 4];
    hex += "0123456789abcdef"[byte & 15];
  }
  return hex;
}

inline std::string FromHex(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
  }
  return bytes;
}

inline const unsigned char* Bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

inline unsigned char* Bytes(std::string& text) {
  return reinterpret_cast<unsigned char*>(text.data());
}

inline std::string RandomBytes(std::mt19937& random, std::size_t size) {
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

// Between the published big-endian words of Blowfish and the little-endian ones of stored files.
inline std::string SwapWords(std::string bytes) {
  for (std::size_t i = 0; i + 3 < bytes.size(); i += 4) {
    std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                 bytes.begin() + static_cast<std::ptrdiff_t>(i + 4));
  }
  return bytes;
}
