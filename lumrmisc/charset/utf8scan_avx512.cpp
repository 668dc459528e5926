#include "lumrmisc/charset/utf8scan_avx512_internal.h"

#if defined(__x86_64__)

#include "lumrmisc/platform/avx512_internal.h"

namespace lumr {

namespace {

using namespace avx512;

constexpr std::uint64_t kAll = ~std::uint64_t{0};

// Bits where something else stands than the sequences so far want. owed has bits for the tails of
// this block that those before it still want, and then those of the next one.
template <bool kFours>
LUMR_AVX512_INLINE std::uint64_t WrongBytes(__m512i bytes, std::uint64_t here,
                                            std::uint64_t& owed) {
  const std::uint64_t leads = _mm512_cmpge_epu8_mask(bytes, Bytes(0xC0));
  const std::uint64_t threes = _mm512_cmpge_epu8_mask(bytes, Bytes(0xE0));
  const std::uint64_t fours = kFours ? _mm512_cmpge_epu8_mask(bytes, Bytes(0xF0)) : 0;
  const std::uint64_t tails = _mm512_movepi8_mask(bytes) & ~leads;
  const std::uint64_t wanted = leads << 1 | threes << 2 | fours << 3 | owed;
  owed = leads >> 63 | threes >> 62 | fours >> 61 | (wanted & ~here);
  return (wanted & here) ^ tails;
}

// The text in four blocks a step, up to one with sequences of four bytes, which most texts do not
// have, or that is wrong.
LUMR_AVX512_INLINE const char* SkipSteps(const char* p, const char* end, std::uint64_t& owed) {
  for (; end - p >= 4 * 64; p += 4 * 64) {
    __m512i highest = _mm512_setzero_si512();
    std::uint64_t wrong = 0;
    std::uint64_t next = owed;
    for (std::ptrdiff_t i = 0; i < 4 * 64; i += 64) {
      const __m512i bytes = _mm512_loadu_si512(p + i);
      highest = _mm512_max_epu8(highest, bytes);
      wrong |= WrongBytes<false>(bytes, kAll, next);
    }
    if ((wrong | _mm512_cmpge_epu8_mask(highest, Bytes(0xF0))) != 0) return p;
    owed = next;
  }
  return p;
}

}  // namespace

LUMR_AVX512 const char* SkipUtf8Avx512(const char* p, const char* end) {
  const char* const begin = p;
  std::uint64_t owed = 0;
  p = SkipSteps(p, end, owed);
  while (p != end) {
    const std::uint64_t here = FirstBits(end - p);
    const __m512i bytes = _mm512_maskz_loadu_epi8(here, p);
    if ((WrongBytes<true>(bytes, here, owed) | _mm512_cmpge_epu8_mask(bytes, Bytes(0xF8))) != 0) {
      break;
    }
    p = end - p < 64 ? end : p + 64;
  }
  if (p == begin || (p == end && owed == 0)) return p;
  do --p;
  while ((*p & 0xC0) == 0x80);
  return p;
}

}  // namespace lumr

#else

namespace lumr {

const char* SkipUtf8Avx512(const char* p, const char*) {
  return p;
}

}  // namespace lumr

#endif
