// The pass phrase of stored secrets.
#pragma once

#include <cstddef>

#include "lumrmisc/platform/memory.h"

namespace lumr {

// Puts the pass phrase together while it is needed and wipes it then, so that it stands in no file
// in one piece: its characters are kept apart from each other, each under a mask of its place.
// Never change them: every stored secret hangs on them.
class InternalPassPhrase {
 public:
  InternalPassPhrase() {
    static constexpr unsigned char kMasked[] = {0x2c, 0x70, 0x0f, 0x99, 0xb1, 0xc3, 0x6e,
                                                0x01, 0x3a, 0xd4, 0xe8, 0x85, 0x47, 0x52,
                                                0x6b, 0x90, 0xfe, 0xcc, 0x17, 0x39, 0x2d};
    static_assert(sizeof kMasked + 1 == sizeof text_);
    volatile unsigned char mask = 0x5d;  // keeps the compiler from doing this at compile time
    for (std::size_t i = 0; i < sizeof kMasked; ++i) {
      const std::size_t place = i * 8 % sizeof kMasked;
      text_[place] = static_cast<char>(33 + (kMasked[i] ^ (mask + 29 * i)) % 94);
    }
    text_[sizeof kMasked] = '\0';
  }
  ~InternalPassPhrase() { Wipe(text_, sizeof text_); }
  InternalPassPhrase(const InternalPassPhrase&) = delete;
  InternalPassPhrase& operator=(const InternalPassPhrase&) = delete;

  const char* Text() const { return text_; }

 private:
  char text_[22];
};

}  // namespace lumr
