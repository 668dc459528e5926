#include <algorithm>

#include "lumrmisc/settings/sdvalue_internal.h"

namespace lumr {
namespace {

int HexDigit(char16_t unit) {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
  if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
  return -1;
}

}  // namespace

bool ParseSdRect(std::u16string_view text, CRect& rect) {
  int numbers[4];
  for (int i = 0; i < 4; ++i) {
    if (i > 0) {
      if (text.empty() || text.front() != u',') return false;
      text.remove_prefix(1);
    }
    if (!TakeSdNumber(text, numbers[i])) return false;
  }
  rect = {numbers[0], numbers[1], numbers[2], numbers[3]};
  return true;
}

std::uint32_t ParseSdHexNumber(std::u16string_view text) {
  const std::size_t start = std::min(text.find_first_not_of(u" \t"), text.size());
  const std::u16string_view number = text.substr(start);
  if (number.substr(0, 2) != u"0x" && number.substr(0, 2) != u"0X") {
    return ParseSdNumber<std::uint32_t>(number);
  }
  std::uint64_t value = 0;
  for (std::size_t i = 2; i < number.size() && HexDigit(number[i]) >= 0; ++i) {
    value = std::min<std::uint64_t>(value * 16 + static_cast<unsigned>(HexDigit(number[i])),
                                    UINT32_MAX);
  }
  return static_cast<std::uint32_t>(value);
}

CStringW FormatSdNumber(long long value) {
  const std::string digits = std::to_string(value);
  return CStringW(digits.begin(), digits.end());
}

CStringW FormatSdHexNumber(std::uint32_t value) {
  CStringW text = u"0x";
  for (int shift = 28; shift >= 0; shift -= 4) text += u"0123456789ABCDEF"[(value >> shift) & 15];
  return text;
}

CStringW FormatSdNumbers(const long long* values, std::size_t count) {
  CStringW text;
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) text += u',';
    text += FormatSdNumber(values[i]);
  }
  return text;
}

std::vector<std::u16string_view> SplitSdText(std::u16string_view text, char16_t separator,
                                             bool skipEmpty) {
  std::vector<std::u16string_view> pieces;
  std::size_t begin = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    if (!skipEmpty || end > begin) pieces.push_back(text.substr(begin, end - begin));
    if (end == text.size()) break;
    begin = end + 1;
  }
  return pieces;
}

}  // namespace lumr
