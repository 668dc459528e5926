// Input of the targets that read setting data files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

inline void Require(bool holds) {
  if (!holds) __builtin_trap();
}

// The text of a setting data file, in a block of just its size. A first byte that is odd says that
// the rest is the low bytes of the units, so that a fuzzer finds its way faster; otherwise the rest
// is the file as it is.
class SdInput {
 public:
  SdInput(const std::uint8_t* data, std::size_t size) {
    const bool narrow = size > 0 && data[0] % 2 != 0;
    size_ = size == 0 ? 0 : (size - 1) * (narrow ? 2 : 1);
    bytes_ = std::make_unique<char[]>(size_);
    for (std::size_t i = 1; i < size; ++i) {
      bytes_[narrow ? i * 2 - 2 : i - 1] = static_cast<char>(data[i]);
    }
  }

  std::string_view Bytes() const { return {bytes_.get(), size_}; }

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t size_;
};
