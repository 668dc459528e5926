// Finds the places of a text where one of a few characters stands, 16 bytes of text at a time.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "lumrmisc/platform/types.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lumr {

// A set of character codes: UTF-16 units for wide text; bytes and pairs of bytes for narrow text,
// where the places found need not be borders of characters: who asks checks that.
template <bool kWide>
class CodeScan {
 public:
  static constexpr std::size_t npos = std::string_view::npos;

  void Add(char16_t code) {
    if (std::find(codes_.begin(), codes_.end(), code) != codes_.end()) return;
    codes_.push_back(code);
    if (codes_.size() > kFew) {
      Mark();
    } else if (kWide || code < 0x100) {
      AddSingle(code);
    } else {
      AddPair(code);
    }
  }

  // The first place at pos or behind it, or npos.
  std::size_t Next(std::string_view text, std::size_t pos) const {
#if defined(__SSE2__)
    for (; codes_.size() <= kFew && pos + kReach <= text.size(); pos += kBlock) {
      const unsigned found = InBlock(text.data() + pos);
      if (found != 0) return pos + static_cast<std::size_t>(std::countr_zero(found));
    }
#endif
    while (pos + kStep <= text.size() && !IsAt(text, pos)) pos += kStep;
    return pos + kStep <= text.size() ? pos : npos;
  }

  // The last place before end, or npos.
  std::size_t Previous(std::string_view text, std::size_t end) const {
    std::size_t pos = end;
#if defined(__SSE2__)
    while (codes_.size() <= kFew && pos >= kBlock) {
      if (pos - kBlock + kReach > text.size()) {  // a block would reach behind the text
        pos -= kStep;
        if (IsAt(text, pos)) return pos;
        continue;
      }
      const unsigned found = InBlock(text.data() + pos - kBlock);
      if (found != 0) return pos - kBlock + LastPlace(found);
      pos -= kBlock;
    }
#endif
    while (pos >= kStep) {
      pos -= kStep;
      if (IsAt(text, pos)) return pos;
    }
    return npos;
  }

 private:
  static constexpr std::size_t kStep = kWide ? 2 : 1;
  static constexpr std::size_t kFew = 16;

  bool IsAt(std::string_view text, std::size_t pos) const {
    if constexpr (kWide) return Has(LoadUnit(text.data() + pos));
    const auto first = static_cast<unsigned char>(text[pos]);
    if (Has(first)) return true;
    return pos + 1 < text.size() &&
           Has(static_cast<char16_t>(first << 8 | static_cast<unsigned char>(text[pos + 1])));
  }

  bool Has(char16_t code) const {
    if (marked_.empty()) return std::find(codes_.begin(), codes_.end(), code) != codes_.end();
    return (marked_[code / 64] >> code % 64 & 1) != 0;
  }

  // Many codes are looked up one by one.
  void Mark() {
    marked_.resize(0x10000 / 64);
    for (const char16_t code : codes_) marked_[code / 64] |= std::uint64_t{1} << code % 64;
  }

#if defined(__SSE2__)
  static constexpr std::size_t kBlock = 16;
  static constexpr std::size_t kReach = kWide ? kBlock : kBlock + 1;  // bytes that a block reads

  void AddSingle(char16_t code) {
    singles_[singleCount_++] =
        kWide ? _mm_set1_epi16(static_cast<short>(code)) : _mm_set1_epi8(static_cast<char>(code));
  }
  void AddPair(char16_t code) {
    pairs_[pairCount_][0] = _mm_set1_epi8(static_cast<char>(code >> 8));
    pairs_[pairCount_++][1] = _mm_set1_epi8(static_cast<char>(code));
  }

  // A bit for each byte of the block at which a code stands (wide: two bits for a unit).
  unsigned InBlock(const char* block) const {
    const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block));
    __m128i any = _mm_setzero_si128();
    if constexpr (kWide) {
      for (std::size_t i = 0; i < singleCount_; ++i) {
        any = _mm_or_si128(any, _mm_cmpeq_epi16(here, singles_[i]));
      }
      return static_cast<unsigned>(_mm_movemask_epi8(any));
    }
    for (std::size_t i = 0; i < singleCount_; ++i) {
      any = _mm_or_si128(any, _mm_cmpeq_epi8(here, singles_[i]));
    }
    const __m128i behind = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 1));
    for (std::size_t i = 0; i < pairCount_; ++i) {
      any = _mm_or_si128(any, _mm_and_si128(_mm_cmpeq_epi8(here, pairs_[i][0]),
                                            _mm_cmpeq_epi8(behind, pairs_[i][1])));
    }
    return static_cast<unsigned>(_mm_movemask_epi8(any));
  }
  static std::size_t LastPlace(unsigned found) {
    return (static_cast<std::size_t>(std::bit_width(found)) - 1) / kStep * kStep;
  }

  __m128i singles_[kFew];
  std::size_t singleCount_ = 0;
  __m128i pairs_[kFew][2];
  std::size_t pairCount_ = 0;
#else
  void AddSingle(char16_t) {}
  void AddPair(char16_t) {}
#endif

  std::vector<char16_t> codes_;
  std::vector<std::uint64_t> marked_;
};

}  // namespace lumr
