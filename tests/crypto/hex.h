// Bytes as hexadecimal digits, as vectors are printed.
#pragma once

#include <cstddef>
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
