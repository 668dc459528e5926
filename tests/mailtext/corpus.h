// Real test data, found by the environment variable LUMRMISC_CORPUS.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace lumr {

inline bool HasCorpus() {
  return std::getenv("LUMRMISC_CORPUS") != nullptr;
}

#define LUMR_NEEDS_CORPUS() \
  if (!lumr::HasCorpus()) GTEST_SKIP() << "LUMRMISC_CORPUS does not name the test data"

// The bytes of vectors/NAME.
inline std::string ReadVector(const std::string& name) {
  std::ifstream file(std::string(std::getenv("LUMRMISC_CORPUS")) + "/vectors/" + name,
                     std::ios::binary);
  EXPECT_TRUE(file) << name;
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void AppendUtf8(unsigned c, std::string& out) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 63))};
  } else {
    out += {static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 63)),
            static_cast<char>(0x80 | (c & 63))};
  }
}

// All strings of a line of JSON in their order, keys too, as UTF-8; null is the string "null".
inline std::vector<std::string> JsonStrings(std::string_view line) {
  std::vector<std::string> strings;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line.substr(i, 4) == "null") strings.emplace_back("null");
    if (line[i] != '"') continue;
    std::string& text = strings.emplace_back();
    while (line[++i] != '"') {
      if (line[i] != '\\') {
        text += line[i];
      } else if (line[++i] == 'u') {
        AppendUtf8(
            static_cast<unsigned>(std::stoul(std::string(line.substr(i + 1, 4)), nullptr, 16)),
            text);
        i += 4;
      } else {
        const std::size_t escape = std::string_view("ntrbf").find(line[i]);
        text += escape == std::string_view::npos ? line[i] : "\n\t\r\b\f"[escape];
      }
    }
  }
  return strings;
}

inline std::vector<std::vector<std::string>> ReadJsonLines(const std::string& name) {
  std::vector<std::vector<std::string>> lines;
  std::istringstream file(ReadVector(name));
  for (std::string line; std::getline(file, line);) lines.push_back(JsonStrings(line));
  EXPECT_FALSE(lines.empty()) << name;
  return lines;
}

inline std::string FromHex(std::string_view digits) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
  }
  return bytes;
}

// UTF-8 of well-formed UTF-16; "\uD83D" and the like for a half alone.
inline std::string Utf8(std::u16string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned unit = text[i];
    if (unit >= 0xD800 && unit < 0xDC00 && i + 1 < text.size()) {
      const unsigned c = 0x10000 + ((unit - 0xD800) << 10) + (text[++i] - 0xDC00u);
      out += {static_cast<char>(0xF0 | c >> 18), static_cast<char>(0x80 | (c >> 12 & 63)),
              static_cast<char>(0x80 | (c >> 6 & 63)), static_cast<char>(0x80 | (c & 63))};
    } else {
      AppendUtf8(unit, out);
    }
  }
  return out;
}

}  // namespace lumr
