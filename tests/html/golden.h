// Golden files: what a function makes of a text, side by side and readable.
//
//     == what the case shows | argument
//     input
//     -- result
//     output
//
// Lines are joined by CR LF, none behind the last one; "\r", "\n", "\t", "\s" (a space at the end
// of a line), "\\" and "\uXXXX" (one unit) stand for what cannot be seen.
#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "html/html_text.h"

namespace lumr {

struct GoldenCase {
  std::string name, argument, result;
  std::u16string input, output;
};

inline std::u16string Unescaped(std::string_view shown) {
  constexpr std::string_view kLetters = "rnts\\";
  constexpr std::u16string_view kUnits = u"\r\n\t \\";
  std::u16string text;
  std::size_t done = 0;
  for (std::size_t i = 0; i < shown.size(); ++i) {
    if (shown[i] != '\\' || i + 1 == shown.size()) continue;
    text += Wide(shown.substr(done, i - done));
    if (shown[i + 1] == 'u') {
      text += static_cast<char16_t>(std::stoi(std::string(shown.substr(i + 2, 4)), nullptr, 16));
      i += 4;
    } else {
      text += kUnits[kLetters.find(shown[i + 1])];
    }
    done = ++i + 1;
  }
  return text + Wide(shown.substr(done));
}

inline std::string Escaped(std::u16string_view text) {
  std::string shown;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    const bool isPair =
        (unit & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
    if (text.substr(i, 2) == u"\r\n") {
      if (shown.ends_with(' ')) shown.replace(shown.size() - 1, 1, "\\s");
      shown += '\n';
      ++i;
    } else if (isPair) {
      shown += Narrow(text.substr(i++, 2));
    } else if (unit == u'\t' || unit == u'\r' || unit == u'\n' || unit == u'\\') {
      shown += unit == u'\t' ? "\\t" : unit == u'\r' ? "\\r" : unit == u'\n' ? "\\n" : "\\\\";
    } else if (unit < 0x20 || (unit & 0xF800) == 0xD800 || unit == 0xA0 || unit == 0x3000) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04X", static_cast<unsigned>(unit));
      shown += code;
    } else {
      shown += Narrow(text.substr(i, 1));
    }
  }
  if (shown.ends_with(' ')) shown.replace(shown.size() - 1, 1, "\\s");
  return shown;
}

// The cases of tests/data/html/NAME.
inline std::vector<GoldenCase> ReadGolden(const std::string& name) {
  std::ifstream file(std::string(LUMRMISC_TEST_DATA "/html/") + name, std::ios::binary);
  std::vector<GoldenCase> cases;
  std::u16string* text = nullptr;
  bool isFirst = true;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("== ")) {
      const std::size_t bar = line.find(" | ");
      cases.push_back({line.substr(3, bar == line.npos ? bar : bar - 3), {}, {}, {}, {}});
      if (bar != line.npos) cases.back().argument = line.substr(bar + 3);
      text = &cases.back().input;
      isFirst = true;
    } else if (!cases.empty() && text == &cases.back().input && line.starts_with("--")) {
      cases.back().result = line.substr(std::min<std::size_t>(3, line.size()));
      text = &cases.back().output;
      isFirst = true;
    } else if (text != nullptr) {
      if (!isFirst) *text += u"\r\n";
      *text += Unescaped(line);
      isFirst = false;
    }
  }
  return cases;
}

}  // namespace lumr
