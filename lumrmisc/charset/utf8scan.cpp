#include "lumrmisc/charset/utf8scan_internal.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "lumrmisc/charset/utf8scan_avx512_internal.h"
#include "lumrmisc/charset/wordscan_internal.h"
#include "lumrmisc/platform/cpu.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace lumr {
namespace {

std::uint64_t Load64(const char* p) {
  return LoadValue<std::uint64_t>(p);
}

bool IsTail(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The length of a sequence by its lead byte; 0 for what is none.
std::ptrdiff_t SequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC0 || lead >= 0xFE) return 0;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  if (lead < 0xF8) return 4;
  return lead < 0xFC ? 5 : 6;
}

// The length of the well-formed sequence at p; 0 when there is none.
std::ptrdiff_t WholeSequence(const char* p, const char* end) {
  const std::ptrdiff_t length = SequenceLength(static_cast<unsigned char>(*p));
  return end - p >= length && std::all_of(p + 1, p + std::max<std::ptrdiff_t>(length, 1), IsTail)
             ? length
             : 0;
}

// Behind the run of sequences of one length at p, which have the given bits under the mask in
// step bytes: Japanese text is made of three bytes a character, Cyrillic and Greek of two.
constexpr std::uint64_t kTripleMask = 0x0000'C0C0'F0C0'C0F0;
constexpr std::uint64_t kTripleBits = 0x0000'8080'E080'80E0;
constexpr std::uint64_t kPairMask = 0xC0E0'C0E0'C0E0'C0E0;
constexpr std::uint64_t kPairBits = 0x80C0'80C0'80C0'80C0;

template <std::uint64_t kMask, std::uint64_t kBits, int kStep>
const char* SkipSequences(const char* p, const char* end) {
  while (end - p >= kStep + 8 && (Load64(p) & kMask) == kBits &&
         (Load64(p + kStep) & kMask) == kBits) {
    p += 2 * kStep;
  }
  while (end - p >= 8 && (Load64(p) & kMask) == kBits) p += kStep;
  return p;
}

bool IsWellFormed(const char* p, const char* end) {
  while ((p = SkipAscii(p, end)) != end) {
    const std::ptrdiff_t length = WholeSequence(p, end);
    if (length == 0) return false;
    p += length;
    if (length == 3) p = SkipSequences<kTripleMask, kTripleBits, 6>(p, end);
    if (length == 2) p = SkipSequences<kPairMask, kPairBits, 8>(p, end);
  }
  return true;
}

constexpr std::ptrdiff_t kBlock = 128;

#if defined(__x86_64__)

__attribute__((target("avx2"))) inline __m256i Load(const char* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

// Sets the high bits of the bytes that are first or more; first is C0 or more.
__attribute__((target("avx2"))) inline __m256i MarkFrom(__m256i bytes, int first) {
  return _mm256_subs_epu8(bytes, _mm256_set1_epi8(static_cast<char>(first - 0x80)));
}

// Behind the well-formed text at p as far as it has sequences of up to four bytes, in whole
// blocks. p stands behind a character, and three bytes or more stand before it.
__attribute__((target("avx2"))) const char* SkipBlocks(const char* p, const char* end) {
  const char* const begin = p;
  for (; end - p >= kBlock; p += kBlock) {
    __m256i wrong = _mm256_setzero_si256();
    __m256i highest = wrong;
    for (std::ptrdiff_t i = 0; i < kBlock; i += 32) {
      const __m256i bytes = Load(p + i);
      const __m256i isTail = _mm256_cmpgt_epi8(_mm256_set1_epi8(static_cast<char>(0xC0)), bytes);
      // By the bytes one, two and three before.
      const __m256i wantsTail = _mm256_or_si256(
          MarkFrom(Load(p + i - 1), 0xC0),
          _mm256_or_si256(MarkFrom(Load(p + i - 2), 0xE0), MarkFrom(Load(p + i - 3), 0xF0)));
      wrong = _mm256_or_si256(wrong, _mm256_xor_si256(wantsTail, isTail));
      highest = _mm256_max_epu8(highest, bytes);
    }
    if (_mm256_movemask_epi8(_mm256_or_si256(wrong, MarkFrom(highest, 0xF8))) != 0) break;
  }
  if (p == begin) return p;
  do --p;  // the last character may go on
  while (IsTail(*p));
  return p;
}

#else

const char* SkipBlocks(const char* p, const char*) {
  return p;
}

#endif

}  // namespace

const char* SkipAscii(const char* p, const char* end) {
  constexpr std::uint64_t kHighBits = WordOf<unsigned char>::kHighBits;
  while (end - p >= 32 &&
         ((Load64(p) | Load64(p + 8) | Load64(p + 16) | Load64(p + 24)) & kHighBits) == 0) {
    p += 32;
  }
  while (end - p >= 8 && (Load64(p) & kHighBits) == 0) p += 8;
  while (p != end && static_cast<signed char>(*p) >= 0) ++p;
  return p;
}

bool HasUtf8Form(std::string_view text) {
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  const char* p = SkipAscii(begin, end);
  if (p == end) return false;
  if (Cpu().avx512) {
    p = SkipUtf8Avx512(p, end);
  } else if (Cpu().avx2 && end - p >= kBlock + 8) {
    while (p - begin < 3) {
      const std::ptrdiff_t length = WholeSequence(p, end);
      if (length == 0) return false;
      p += length;
    }
    p = SkipBlocks(p, end);
  }
  return IsWellFormed(p, end);
}

}  // namespace lumr
