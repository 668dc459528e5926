// UTF-16 text of the tests, written and shown as UTF-8.
#pragma once

#include <string>
#include <string_view>

#include "lumrmisc/charset/convert.h"

namespace lumr {

inline std::u16string Wide(std::string_view utf8) {
  CBuffer units;
  ConvertToOtherCodeType2(CT_UTF8, utf8, CT_UNICODE, units);
  std::u16string text(units.Bytes().size() / 2, u'\0');
  units.Bytes().copy(reinterpret_cast<char*>(text.data()), text.size() * 2);
  return text;
}

inline std::string Narrow(std::u16string_view text) {
  CBuffer utf8;
  const std::string_view bytes(reinterpret_cast<const char*>(text.data()), text.size() * 2);
  ConvertToOtherCodeType2(CT_UNICODE, bytes, CT_UTF8, utf8);
  return std::string(utf8.Bytes());
}

inline bool IsWellFormed(std::u16string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((text[i] & 0xF800) != 0xD800) continue;
    const bool isPair =
        (text[i] & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
    if (!isPair) return false;
    ++i;
  }
  return true;
}

}  // namespace lumr
