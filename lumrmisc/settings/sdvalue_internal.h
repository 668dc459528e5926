// Values of settings as text and back.
#pragma once

#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "lumrmisc/platform/types.h"

namespace lumr {

// Takes a decimal number from the start of a text, behind white space and a sign, up to the first
// character that is no digit, and gives whether there was one; without a digit value is 0. What the
// type cannot hold gives its nearest number.
template <typename T>
bool TakeSdNumber(std::u16string_view& text, T& value) {
  using Limits = std::numeric_limits<T>;
  std::size_t i = 0;
  while (i < text.size() && (text[i] == u' ' || (text[i] >= 9 && text[i] <= 13))) ++i;
  const bool negative = i < text.size() && text[i] == u'-';
  if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) ++i;
  std::uint64_t most = static_cast<std::uint64_t>(Limits::max());
  if (negative) most = Limits::min() == 0 ? 0 : most + 1;
  std::uint64_t magnitude = 0;
  const std::size_t digits = i;
  for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
    const auto digit = static_cast<std::uint64_t>(text[i] - u'0');
    const bool fits = digit <= most && magnitude <= (most - digit) / 10;
    magnitude = fits ? magnitude * 10 + digit : most;
  }
  value = static_cast<T>(negative ? 0 - magnitude : magnitude);
  text.remove_prefix(i);
  return i > digits;
}

template <typename T>
T ParseSdNumber(std::u16string_view text) {
  T value;
  TakeSdNumber(text, value);
  return value;
}

// Reads four numbers with commas between, a comma directly behind its number; what is behind the
// fourth number does not matter. False when there are not four.
bool ParseSdRect(std::u16string_view text, CRect& rect);

// A number that begins with 0x is hexadecimal, any other decimal.
std::uint32_t ParseSdHexNumber(std::u16string_view text);

CStringW FormatSdNumber(long long value);
CStringW FormatSdHexNumber(std::uint32_t value);  // "0x%08X"
CStringW FormatSdNumbers(const long long* values, std::size_t count);

// The pieces of a text between separators; none for an empty text. With skipEmpty, pieces without
// a character are left out.
std::vector<std::u16string_view> SplitSdText(std::u16string_view text, char16_t separator,
                                             bool skipEmpty);

}  // namespace lumr
