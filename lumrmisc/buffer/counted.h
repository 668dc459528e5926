// Text arguments of the exported functions, checked once: a pointer and a length become a view.
//
// A null pointer is an empty text. A negative length means up to the terminating NUL; with any
// other length NUL is an ordinary character.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

inline std::string_view CountedText(const char* text, int length = -1) {
  if (text == nullptr) return {};
  return length < 0 ? std::string_view(text)
                    : std::string_view(text, static_cast<std::size_t>(length));
}

// The number of UTF-16 units before the first zero unit; text may stand at any address.
inline std::size_t UnitLength(const void* text) {
  const char* const begin = static_cast<const char*>(text);
  const char* end = begin;
  while (LoadUnit(end) != 0) end += sizeof(char16_t);
  return static_cast<std::size_t>(end - begin) / sizeof(char16_t);
}

// The bytes of UTF-16 text at any address; length counts units. Wide text is handled by its
// bytes because a u16string_view is only for addresses known to be even.
inline std::string_view CountedUnits(const void* text, int length = -1) {
  if (text == nullptr) return {};
  const std::size_t units = length < 0 ? UnitLength(text) : static_cast<std::size_t>(length);
  return {static_cast<const char*>(text), units * sizeof(char16_t)};
}

// Wide text for code that works on a view: where it stands at an odd address, a copy of it. The
// view is good as long as the object and the text live.
class EvenUnits {
 public:
  explicit EvenUnits(const char16_t* text, int length = -1) {
    const std::string_view bytes = CountedUnits(text, length);
    if (reinterpret_cast<std::uintptr_t>(bytes.data()) % alignof(char16_t) == 0) {
      view_ = {text, bytes.size() / sizeof(char16_t)};
      return;
    }
    copy_.resize(bytes.size() / sizeof(char16_t));
    std::memcpy(copy_.data(), bytes.data(), bytes.size());
    view_ = copy_;
  }
  EvenUnits(const EvenUnits&) = delete;
  EvenUnits& operator=(const EvenUnits&) = delete;

  operator std::u16string_view() const { return view_; }

 private:
  CStringW copy_;
  std::u16string_view view_;
};

// The bytes of a wide view.
inline std::string_view BytesOf(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

}  // namespace lumr
