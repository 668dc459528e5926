// The search for words by units of comparison: places where a word may begin are found by its first
// unit's characters, then the units are compared one by one. At worst text times words.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>
#include <vector>

#include "lumrmisc/buffer/characterborders_internal.h"
#include "lumrmisc/search/codescan_internal.h"
#include "lumrmisc/search/equivalence_internal.h"

namespace lumr {

struct UnitMatch {
  std::size_t pos;
  std::size_t length;
};

template <class Characters>
class UnitSearch {
 public:
  static constexpr std::size_t npos = std::string_view::npos;

  explicit UnitSearch(std::uint32_t mask) : reader_(mask) {}

  // An empty word is never found.
  void AddWord(std::string_view word) {
    if (word.empty()) return;
    AddBegins(reader_.Read(word, 0).key);
    for (std::size_t pos = 0; pos < word.size();) {
      const TextUnit unit = reader_.Read(word, pos);
      keys_.push_back(unit.key);
      pos += unit.length;
    }
    ends_.push_back(keys_.size());
  }

  // The bytes of text from pos on, a border of characters, that are the first word to match there
  // in the order added; npos when none does.
  std::size_t LengthAt(std::string_view text, std::size_t pos) const {
    std::size_t begin = 0;
    for (const std::size_t end : ends_) {
      std::size_t at = pos;
      std::size_t i = begin;
      for (; i < end && at < text.size(); ++i) {
        const TextUnit unit = reader_.Read(text, at);
        if (unit.key != keys_[i]) break;
        at += unit.length;
      }
      if (i == end) return at - pos;
      begin = end;
    }
    return npos;
  }

  // The first match that begins at from, a border of characters, or behind it; the last one that
  // begins before end. pos is npos when there is none.
  UnitMatch First(std::string_view text, std::size_t from = 0) const {
    if (ends_.empty()) return {npos, 0};
    Borders borders(reader_, text);
    for (std::size_t pos = begins_.Next(text, from); pos != npos;
         pos = begins_.Next(text, pos + Characters::kStep)) {
      const std::size_t length = borders.IsBorder(pos) ? LengthAt(text, pos) : npos;
      if (length != npos) return {pos, length};
    }
    return {npos, 0};
  }
  UnitMatch Last(std::string_view text, std::size_t end) const {
    if (ends_.empty()) return {npos, 0};
    Borders borders(reader_, text);
    for (std::size_t pos = begins_.Previous(text, end); pos != npos;
         pos = begins_.Previous(text, pos)) {
      const std::size_t length = borders.IsBorder(pos) ? LengthAt(text, pos) : npos;
      if (length != npos) return {pos, length};
    }
    return {npos, 0};
  }

 private:
  static constexpr bool kWide = std::is_same_v<Characters, WideCharacters>;

  struct EveryUnit {
    EveryUnit(const UnitReader<Characters>&, std::string_view) {}
    bool IsBorder(std::size_t) const { return true; }
  };
  struct PageBorders : CharacterBorders {
    PageBorders(const UnitReader<Characters>& reader, std::string_view text)
        : CharacterBorders(reader.Page(), text) {}
  };
  using Borders = std::conditional_t<kWide, EveryUnit, PageBorders>;

  void AddBegins(std::uint32_t key) {
    char16_t codes[EquivalenceTable::kMostBegins];
    const std::size_t count = reader_.Table().BeginsOf(key, reader_.Mask(), codes);
    for (std::size_t i = 0; i < count; ++i) begins_.Add(codes[i]);
  }

  UnitReader<Characters> reader_;
  std::vector<std::uint32_t> keys_;  // of all words
  std::vector<std::size_t> ends_;    // where the keys of each word end
  CodeScan<kWide> begins_;
};

}  // namespace lumr
