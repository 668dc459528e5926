// How the characters of a text are read, for both kinds of text: everything that runs over a
// text is one template over these.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lumrmisc/buffer/characterborders_internal.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// Characters of a code page: bytes, and pairs as lead * 256 + trail.
class NarrowText {
 public:
  static constexpr bool kWide = false;
  static constexpr std::size_t kUnit = 1;  // the size of the terminator

  // Places are asked for from from on, where a character begins.
  NarrowText(const MbcsPage* page, std::string_view text, std::size_t from = 0)
      : page_(page),
        text_(text),
        from_(std::min(from, text.size())),
        borders_(*page, text.substr(from_)) {}

  const MbcsPage* Page() const { return page_; }
  std::string_view View() const { return text_; }
  std::size_t Size() const { return text_.size(); }

  // The character at pos, which is inside the text; pos goes behind it.
  std::uint32_t Read(std::size_t& pos) const {
    const std::uint32_t byte = static_cast<unsigned char>(text_[pos]);
    if (!page_->IsPair(text_, pos)) {
      ++pos;
      return byte;
    }
    const std::uint32_t trail = static_cast<unsigned char>(text_[pos + 1]);
    pos += 2;
    return byte << 8 | trail;
  }

  // Whether a character begins at pos; asked in rising or in falling order.
  bool IsBorder(std::size_t pos) { return pos >= text_.size() || borders_.IsBorder(pos - from_); }
  // Where the character before pos, a border behind the start, begins.
  std::size_t Before(std::size_t pos) { return IsBorder(pos - 1) ? pos - 1 : pos - 2; }

 private:
  const MbcsPage* page_;
  std::string_view text_;
  std::size_t from_;
  CharacterBorders borders_;
};

// UTF-16 units at any address; an odd last byte is no part of the text.
class WideText {
 public:
  static constexpr bool kWide = true;
  static constexpr std::size_t kUnit = 2;

  WideText(const MbcsPage*, std::string_view text)
      : text_(text.substr(0, text.size() & ~std::size_t{1})) {}

  const MbcsPage* Page() const { return nullptr; }
  std::string_view View() const { return text_; }
  std::size_t Size() const { return text_.size(); }

  std::uint32_t Read(std::size_t& pos) const {
    const std::uint32_t unit = LoadUnit(text_.data() + pos);
    pos += 2;
    return unit;
  }

  bool IsBorder(std::size_t pos) const { return pos % 2 == 0; }
  std::size_t Before(std::size_t pos) const { return pos - 2; }

 private:
  std::string_view text_;
};

struct RegExpSpan {
  std::size_t start = 0;
  std::size_t end = 0;
};

}  // namespace lumr
