#include "lumrmisc/platform/singlebyte_avx2_internal.h"

#if defined(__x86_64__)

#include <immintrin.h>

#define LUMR_AVX2 __attribute__((target("avx2")))

namespace lumr {
namespace {

// The units of the bytes from 80 on, sixteen to a vector (twice, for each half), low bytes and
// high bytes apart. Groups at the end in which each byte is its own unit are left out: of
// windows-1252 that leaves two.
struct UnitGroups {
  __m256i low[8];
  __m256i high[8];
  int count;
};

LUMR_AVX2 inline __m256i All(int byte) {
  return _mm256_set1_epi8(static_cast<char>(byte));
}

LUMR_AVX2 inline bool IsOwnUnits(const std::uint16_t* units, int first) {
  int difference = 0;
  for (int i = 0; i < 16; ++i) difference |= units[i] ^ (first + i);
  return difference == 0;
}

LUMR_AVX2 inline void LoadGroups(const std::uint16_t* singles, UnitGroups& groups) {
  groups.count = 8;
  while (groups.count > 0) {
    const int first = 0x70 + 16 * groups.count;
    if (!IsOwnUnits(singles + first, first)) break;
    --groups.count;
  }
  const __m128i lowBytes = _mm_set1_epi16(0xFF);
  for (int i = 0; i < groups.count; ++i) {
    const auto* const units = reinterpret_cast<const __m128i*>(singles + 0x80 + 16 * i);
    const __m128i begin = _mm_loadu_si128(units);
    const __m128i end = _mm_loadu_si128(units + 1);
    groups.low[i] = _mm256_broadcastsi128_si256(
        _mm_packus_epi16(_mm_and_si128(begin, lowBytes), _mm_and_si128(end, lowBytes)));
    groups.high[i] = _mm256_broadcastsi128_si256(
        _mm_packus_epi16(_mm_srli_epi16(begin, 8), _mm_srli_epi16(end, 8)));
  }
}

LUMR_AVX2 inline void StoreUnits(__m256i low, __m256i high, char* out) {
  const __m256i even = _mm256_unpacklo_epi8(low, high);  // units 0 to 7 and 16 to 23
  const __m256i odd = _mm256_unpackhi_epi8(low, high);
  auto* const to = reinterpret_cast<__m256i*>(out);
  _mm256_storeu_si256(to, _mm256_permute2x128_si256(even, odd, 0x20));
  _mm256_storeu_si256(to + 1, _mm256_permute2x128_si256(even, odd, 0x31));
}

}  // namespace

LUMR_AVX2 void DecodeSinglesAvx2(const std::uint16_t* singles, const Byte*& in, const Byte* end,
                                 char*& out) {
  UnitGroups groups;
  LoadGroups(singles, groups);
  const __m256i limit = All(16 * groups.count);
  for (; end - in >= 32; in += 32, out += 64) {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
    // Counted from 80 on; ASCII comes behind all groups.
    const __m256i places = _mm256_xor_si256(bytes, All(0x80));
    const __m256i isOwnUnit = _mm256_cmpeq_epi8(_mm256_max_epu8(places, limit), places);
    __m256i low = _mm256_and_si256(isOwnUnit, bytes);
    __m256i high = _mm256_setzero_si256();
    for (int i = 0; i < groups.count; ++i) {
      // The high bit, which makes a shuffle give 0, is set for the bytes of other groups.
      const __m256i inGroup =
          _mm256_adds_epu8(_mm256_sub_epi8(places, All(16 * i)), All(0x80 - 16));
      low = _mm256_or_si256(low, _mm256_shuffle_epi8(groups.low[i], inGroup));
      high = _mm256_or_si256(high, _mm256_shuffle_epi8(groups.high[i], inGroup));
    }
    const __m256i escapes = _mm256_cmpeq_epi8(_mm256_and_si256(high, All(0xF8)), All(0xD8));
    if (!_mm256_testz_si256(escapes, escapes)) return;
    StoreUnits(low, high, out);
  }
}

}  // namespace lumr

#else

namespace lumr {

void DecodeSinglesAvx2(const std::uint16_t*, const Byte*&, const Byte*, char*&) {}

}  // namespace lumr

#endif
