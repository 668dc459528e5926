// What the kernels for processors with AVX-512 share. Only for sources that are compiled for
// x86-64; their code runs where Cpu().avx512 is set.
//
// The extensions are those of Ice Lake and Zen 4: bytes are looked up in 128 of a register pair
// (VBMI), and those that a mask has bits for are moved together (VBMI2), which takes the place of
// the tables of shuffles that smaller vectors need. All loads and stores are masked to what there
// is, so that these kernels serve short texts and the ends of long ones too.
#pragma once

// GCC warns of the values that its own header leaves undefined on purpose (GCC bug 105593).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#define LUMR_AVX512                                                           \
  __attribute__((                                                             \
      target("avx512f,avx512vl,avx512bw,avx512dq,avx512vbmi,avx512vbmi2,bmi," \
             "bmi2,popcnt")))
#define LUMR_AVX512_INLINE LUMR_AVX512 __attribute__((always_inline)) inline

namespace lumr::avx512 {

inline constexpr std::uint64_t kEvenBits = 0x5555555555555555;

alignas(64) inline constexpr auto kPlaces = [] {
  std::array<unsigned char, 64> places{};
  for (unsigned i = 0; i < 64; ++i) places[i] = static_cast<unsigned char>(i);
  return places;
}();

// A bit for each of the first count places of 64, or of 32; all bits for a greater count. Without a
// branch, which would be mispredicted each time that a text is not like the one before.
LUMR_AVX512_INLINE std::uint64_t FirstBits(std::ptrdiff_t count) {
  return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(std::min<std::ptrdiff_t>(count, 64)));
}
LUMR_AVX512_INLINE std::uint32_t FirstBits32(std::ptrdiff_t count) {
  return _bzhi_u32(~std::uint32_t{0}, static_cast<unsigned>(std::min<std::ptrdiff_t>(count, 32)));
}

LUMR_AVX512_INLINE __m512i Bytes(int byte) {
  return _mm512_set1_epi8(static_cast<char>(byte));
}
LUMR_AVX512_INLINE __m512i Units(int unit) {
  return _mm512_set1_epi16(static_cast<short>(unit));
}

// 0, 1, ... 63.
LUMR_AVX512_INLINE __m512i Places() {
  return _mm512_load_si512(kPlaces.data());
}

// Writes the first count of 64 bytes as units. ASCII is widened faster than the processor by itself
// fetches the lines that are written to: those of a long text are asked for ahead of time.
LUMR_AVX512_INLINE void StoreWidened(__m512i bytes, std::ptrdiff_t count, char* out) {
  constexpr std::ptrdiff_t kAhead = 1024;
  __builtin_prefetch(out + kAhead, 1);
  __builtin_prefetch(out + kAhead + 64, 1);
  _mm512_mask_storeu_epi16(out, FirstBits32(count),
                           _mm512_cvtepu8_epi16(_mm512_castsi512_si256(bytes)));
  if (count <= 32) return;
  _mm512_mask_storeu_epi16(out + 64, FirstBits32(count - 32),
                           _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(bytes, 1)));
}

// The bytes that stand one place further on; the last place repeats the first one.
LUMR_AVX512_INLINE __m512i NextBytes(__m512i bytes) {
  return _mm512_permutexvar_epi8(_mm512_add_epi8(Places(), Bytes(1)), bytes);
}
LUMR_AVX512_INLINE __m512i PreviousBytes(__m512i bytes) {
  return _mm512_permutexvar_epi8(_mm512_sub_epi8(Places(), Bytes(1)), bytes);
}

// The lead bytes among 64 bytes that begin with a character: marks has bits for the bytes that may
// lead. Such a byte leads when it is an even number of places into its run of them, since what
// stands before the run cannot lead. Runs that begin at even places are told from the others by the
// carry that an addition at their first bit sends through them.
LUMR_AVX512_INLINE std::uint64_t LeadsAmong(std::uint64_t marks) {
  const std::uint64_t starts = marks & ~(marks << 1);
  const std::uint64_t evenRuns = marks & ~(marks + (starts & kEvenBits));
  return (evenRuns & kEvenBits) | (marks & ~evenRuns & ~kEvenBits);
}

}  // namespace lumr::avx512
