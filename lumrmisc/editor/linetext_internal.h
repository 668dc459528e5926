// The characters of a line: one way to read both byte text and UTF-16 text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/characterborders_internal.h"
#include "lumrmisc/editor/characterlist.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {

// The full-width units as a set of 8 KiB, which stays in the cache where the tables of the
// platform floor, made for many questions, do not.
class WideUnits {
 public:
  static const WideUnits& Get() {
    static const WideUnits units;
    return units;
  }
  bool Contains(char16_t unit) const { return (bits_[unit / 64u] >> (unit % 64u) & 1) != 0; }

 private:
  WideUnits() {
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
      if (!IsUnitFullWidth(static_cast<char16_t>(unit))) continue;
      bits_[unit / 64] |= std::uint64_t{1} << (unit % 64);
    }
  }
  std::array<std::uint64_t, 1024> bits_ = {};
};

// The next tab stop behind a column.
inline long long NextTabStop(long long column, int tabColumn) {
  return (column + tabColumn) / tabColumn * tabColumn;
}

// A place in a line, and the columns from the start of the physical line to it.
struct ColumnPlace {
  std::size_t pos;
  long long columns;
};

// Text of a byte code type. A pair is two columns wide, a byte one.
class ByteText {
 public:
  ByteText(const MbcsPage& page, std::string_view text) : page_(page), text_(text) {}

  std::size_t Size() const { return text_.size(); }
  std::string_view Bytes(std::size_t pos, std::size_t length) const {
    return text_.substr(pos, length);
  }
  // pos is the border of a character, and inside the text.
  std::size_t CharLength(std::size_t pos) const { return page_.CharLength(text_, pos); }
  EditorCharacter At(std::size_t pos) const {
    const unsigned byte = static_cast<unsigned char>(text_[pos]);
    if (!page_.IsPair(text_, pos)) return static_cast<EditorCharacter>(byte);
    return static_cast<EditorCharacter>(byte << 8 | static_cast<unsigned char>(text_[pos + 1]));
  }
  bool IsTab(std::size_t pos) const { return text_[pos] == '\t'; }
  int CharColumns(std::size_t pos) const { return static_cast<int>(CharLength(pos)); }

  // Goes on from a place until the next character would pass the limit, or the text ends. Only
  // tabs are looked for: between them bytes are columns.
  ColumnPlace Advance(ColumnPlace place, long long limit, int tabColumn) const {
    const std::size_t start = place.pos;
    while (place.pos < text_.size() && place.columns < limit) {
      const auto room = static_cast<unsigned long long>(limit - place.columns);
      const std::size_t rest = text_.size() - place.pos;
      const std::size_t span = room < rest ? static_cast<std::size_t>(room) : rest;
      const char* const begin = text_.data() + place.pos;
      const void* const tab = std::memchr(begin, '\t', span);
      if (tab == nullptr) return Cut(start, place, span);
      const std::size_t run = static_cast<std::size_t>(static_cast<const char*>(tab) - begin);
      place.pos += run;
      place.columns += static_cast<long long>(run);
      const long long stop = NextTabStop(place.columns, tabColumn);
      if (stop > limit) return place;
      ++place.pos;
      place.columns = stop;
    }
    return place;
  }

  // The end of what reads as it does however the text grows; border is a place near the end at
  // which a character begins. What is left is one character at most.
  std::size_t SettledEnd(std::size_t border) const { return SettledSize(page_, text_, border); }
  // Whether more text may make another character of the one at pos, which is a border.
  bool IsOpen(std::size_t pos) const { return pos + 1 == text_.size() && page_.IsLead(text_[pos]); }

  ByteText First(std::size_t size) const { return {page_, text_.substr(0, size)}; }

  // Steps back over characters. start is the border of one; places are asked for from the back.
  class Steps {
   public:
    Steps(const ByteText& text, std::size_t start)
        : start_(start), borders_(text.page_, text.text_.substr(start)) {}
    // The length of the character that ends at pos, which is behind start.
    std::size_t LengthBefore(std::size_t pos) {
      return borders_.IsBorder(pos - 1 - start_) ? 1 : 2;
    }

   private:
    std::size_t start_;
    CharacterBorders borders_;
  };

 private:
  ColumnPlace Cut(std::size_t start, ColumnPlace place, std::size_t span) const {
    const std::string_view read = text_.substr(start);
    if (page_.IsTrailInContext(read, place.pos + span - start)) --span;
    return {place.pos + span, place.columns + static_cast<long long>(span)};
  }

  const MbcsPage& page_;
  std::string_view text_;
};

// UTF-16 text at any address. An odd last byte is a character of its own, so that none is lost.
class UnitText {
 public:
  UnitText(std::string_view text, bool keepsPairs)
      : wide_(WideUnits::Get()), text_(text), keepsPairs_(keepsPairs) {}

  std::size_t Size() const { return text_.size(); }
  std::string_view Bytes(std::size_t pos, std::size_t length) const {
    return text_.substr(pos, length);
  }
  std::size_t CharLength(std::size_t pos) const {
    if (text_.size() - pos < 2) return 1;
    return IsPair(pos) ? 4 : 2;
  }
  EditorCharacter At(std::size_t pos) const {
    if (text_.size() - pos < 2) return static_cast<unsigned char>(text_[pos]);
    return LoadUnit(text_.data() + pos);
  }
  bool IsTab(std::size_t pos) const { return text_.size() - pos >= 2 && At(pos) == u'\t'; }
  int CharColumns(std::size_t pos) const { return IsPair(pos) || wide_.Contains(At(pos)) ? 2 : 1; }

  ColumnPlace Advance(ColumnPlace place, long long limit, int tabColumn) const {
    const std::size_t start = place.pos;
    const std::size_t even = text_.size() - (text_.size() - start) % 2;
    while (place.pos < even) {
      const char16_t unit = LoadUnit(text_.data() + place.pos);
      const long long next = unit == u'\t' ? NextTabStop(place.columns, tabColumn)
                                           : place.columns + 1 + wide_.Contains(unit);
      if (next > limit) return KeepPair(start, place);
      place.columns = next;
      place.pos += 2;
    }
    if (even < text_.size() && place.columns < limit) {
      ++place.pos;
      ++place.columns;
    }
    return place;
  }

  std::size_t SettledEnd(std::size_t) const {
    const std::size_t even = text_.size() & ~std::size_t{1};
    return even >= 2 && IsOpen(even - 2) ? even - 2 : even;
  }
  bool IsOpen(std::size_t pos) const {
    const std::size_t rest = text_.size() - pos;
    return rest < 2 || (keepsPairs_ && rest < 4 && (At(pos) & 0xFC00) == 0xD800);
  }

  UnitText First(std::size_t size) const { return {text_.substr(0, size), keepsPairs_}; }

  class Steps {
   public:
    Steps(const UnitText& text, std::size_t start) : text_(text), start_(start) {}
    std::size_t LengthBefore(std::size_t pos) const {
      if ((pos - start_) % 2 != 0) return 1;
      return pos - start_ >= 4 && text_.IsPair(pos - 4) ? 4 : 2;
    }

   private:
    const UnitText& text_;
    std::size_t start_;
  };

  // Whether the pair of surrogates at pos is to stay whole.
  bool IsPair(std::size_t pos) const {
    return keepsPairs_ && text_.size() - pos >= 4 && (At(pos) & 0xFC00) == 0xD800 &&
           (At(pos + 2) & 0xFC00) == 0xDC00;
  }

 private:
  // A half of a pair is one column wide.
  ColumnPlace KeepPair(std::size_t start, ColumnPlace place) const {
    if (place.pos - start >= 2 && IsPair(place.pos - 2)) return {place.pos - 2, place.columns - 1};
    return place;
  }

  const WideUnits& wide_;
  std::string_view text_;
  bool keepsPairs_;
};

// Calls work with the text as the class that reads it; a null page is UTF-16.
template <typename Work>
decltype(auto) WithLineText(const MbcsPage* page, std::string_view text, Work work,
                            bool keepsPairs = false) {
  return page == nullptr ? work(UnitText(text, keepsPairs)) : work(ByteText(*page, text));
}

// A letter or digit of ASCII: what words are made of.
inline bool IsWordCharacter(EditorCharacter character) {
  return IsAsciiLetter(character) || IsAsciiDigit(character);
}

}  // namespace lumr
