// Memory that secrets pass through.
#pragma once

#include <cstddef>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/platform/memory.h"

namespace lumr {

// Wipes a string's text and empties it.
template <typename String>
void WipeText(String& text) {
  Wipe(text.data(), text.size() * sizeof(typename String::value_type));
  text.clear();
}

// A buffer whose block is wiped when it ends. A buffer that grows gives its old block back as it
// is, so take the room before a secret goes in.
class SecretBuffer : public CBuffer {
 public:
  SecretBuffer() = default;
  ~SecretBuffer() override {
    if (GetAllocSize() > 0) Wipe(GetBuffer(), static_cast<std::size_t>(GetAllocSize()));
  }
};

}  // namespace lumr
