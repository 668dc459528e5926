// Classes and case of ASCII bytes. Bytes from 80 hex on are in no class and have no case: the
// code pages decide about those (platform/mbcs.h), never the locale of the process.
#pragma once

namespace lumr {

template <class Unit>
constexpr bool IsAsciiUpper(Unit c) {
  return c >= Unit('A') && c <= Unit('Z');
}
template <class Unit>
constexpr bool IsAsciiLower(Unit c) {
  return c >= Unit('a') && c <= Unit('z');
}
template <class Unit>
constexpr bool IsAsciiLetter(Unit c) {
  return IsAsciiUpper(c) || IsAsciiLower(c);
}
template <class Unit>
constexpr bool IsAsciiDigit(Unit c) {
  return c >= Unit('0') && c <= Unit('9');
}
// 09-0D and 20 hex.
constexpr bool IsAsciiSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr char AsciiLower(char c) {
  return IsAsciiUpper(c) ? static_cast<char>(c + 0x20) : c;
}
constexpr char AsciiUpper(char c) {
  return IsAsciiLower(c) ? static_cast<char>(c - 0x20) : c;
}

}  // namespace lumr
