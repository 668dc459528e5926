// The arithmetic of japanese_pairs_internal.h on eight pairs at once, with the instructions that
// every x86-64 processor has.
#pragma once

#if defined(__SSE2__)

#include <emmintrin.h>

#include <bit>

namespace lumr {

inline constexpr bool kHasSse2 = true;

namespace sse2 {

inline __m128i All(int value) {
  return _mm_set1_epi16(static_cast<short>(value));
}

// Whether each of the words, none of which is negative, lies between the two.
inline __m128i IsBetween(__m128i words, int first, int last) {
  return _mm_and_si128(_mm_cmpgt_epi16(words, All(first - 1)),
                       _mm_cmpgt_epi16(All(last + 1), words));
}

// Writes pairs, and gives how many of them count: those before the first that is not valid.
inline int PutPairs(__m128i first, __m128i second, __m128i valid, unsigned char* out) {
  const __m128i pairs = _mm_or_si128(first, _mm_slli_epi16(second, 8));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), pairs);
  return std::countr_one(static_cast<unsigned>(_mm_movemask_epi8(valid))) / 2;
}

// Reads eight pairs from JIS (offset 0) or EUC-JP (80), writes eight pairs of Shift_JIS, and gives
// how many at the start were well-formed.
template <int kOffset>
int JisToSJis(const unsigned char* in, unsigned char* out) {
  const __m128i pairs = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  const __m128i jis = _mm_xor_si128(pairs, All(kOffset * 0x101));
  const __m128i row = _mm_and_si128(jis, All(0xFF));
  const __m128i cell = _mm_srli_epi16(jis, 8);
  const __m128i valid = _mm_and_si128(IsBetween(row, 0x21, 0x7E), IsBetween(cell, 0x21, 0x7E));

  const __m128i half = _mm_srli_epi16(_mm_add_epi16(row, All(1)), 1);
  const __m128i gap = _mm_and_si128(_mm_cmpgt_epi16(row, All(94)), All(176 - 112));
  const __m128i lead = _mm_add_epi16(_mm_add_epi16(half, All(112)), gap);
  const __m128i isOdd = _mm_cmpeq_epi16(_mm_and_si128(row, All(1)), All(1));
  // 126 in even rows; 31 in odd ones, and 1 more behind 7E, the -1 of the comparison.
  const __m128i shift = _mm_sub_epi16(All(126), _mm_and_si128(isOdd, All(126 - 31)));
  const __m128i more = _mm_and_si128(isOdd, _mm_cmpgt_epi16(cell, All(95)));
  return PutPairs(lead, _mm_sub_epi16(_mm_add_epi16(cell, shift), more), valid, out);
}

// Likewise from Shift_JIS to JIS, with an offset added to each byte.
template <int kOffset>
int SJisToJis(const unsigned char* in, unsigned char* out) {
  const __m128i pairs = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  const __m128i trail = _mm_srli_epi16(pairs, 8);
  // The change of one bit joins the two ranges of lead bytes, 81-9F and E0-EF.
  const __m128i lead = _mm_xor_si128(_mm_and_si128(pairs, All(0xFF)), All(0x20));
  const __m128i isTrail =
      _mm_andnot_si128(_mm_cmpeq_epi16(trail, All(0x7F)), IsBetween(trail, 0x40, 0xFC));
  const __m128i valid = _mm_and_si128(IsBetween(lead, 0xA1, 0xCF), isTrail);

  const __m128i isOdd = _mm_cmpgt_epi16(All(159), trail);  // -1
  const __m128i twice = _mm_slli_epi16(_mm_sub_epi16(lead, All(112 + 0x20)), 1);
  const __m128i row = _mm_add_epi16(twice, isOdd);
  const __m128i shift = _mm_sub_epi16(All(126), _mm_and_si128(isOdd, All(126 - 31)));
  const __m128i more = _mm_and_si128(isOdd, _mm_cmpgt_epi16(trail, All(127)));
  const __m128i cell = _mm_add_epi16(_mm_sub_epi16(trail, shift), more);
  return PutPairs(_mm_add_epi16(row, All(kOffset)), _mm_add_epi16(cell, All(kOffset)), valid, out);
}

}  // namespace sse2

}  // namespace lumr

#else

namespace lumr {

inline constexpr bool kHasSse2 = false;

namespace sse2 {

template <int kOffset>
int JisToSJis(const unsigned char*, unsigned char*) {
  return 0;
}
template <int kOffset>
int SJisToJis(const unsigned char*, unsigned char*) {
  return 0;
}

}  // namespace sse2

}  // namespace lumr

#endif
