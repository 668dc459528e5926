// Texts of the tests as bytes: shown in messages, and copied into blocks of their size.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace lumr {

// Printable ASCII as it is, the rest in hex.
inline std::string Shown(std::string_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (' ' < c && c < 0x7F && c != '<') {
      shown += c;
    } else {
      shown += {'<', kDigits[byte / 16], kDigits[byte % 16], '>'};
    }
  }
  return shown;
}

// A copy that begins shift bytes into a block and ends where the block does, so that the sanitizer
// sees a byte read too far.
class ExactCopy {
 public:
  explicit ExactCopy(std::string_view text, std::size_t shift = 0)
      : block_(std::make_unique<char[]>(shift + text.size())),
        view_(block_.get() + shift, text.size()) {
    text.copy(block_.get() + shift, text.size());
  }
  const char* Data() const { return view_.data(); }
  int Size() const { return static_cast<int>(view_.size()); }
  std::string_view View() const { return view_; }

 private:
  std::unique_ptr<char[]> block_;
  std::string_view view_;
};

}  // namespace lumr
