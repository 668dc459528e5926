#include "lumrmisc/platform/utf8_kernels_internal.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#define LUMR_AVX2 __attribute__((target("avx2")))

namespace lumr {
namespace {

using Shuffle = std::array<Byte, 16>;

constexpr std::array<Shuffle, 256> MakeUnitShuffles() {
  std::array<Shuffle, 256> shuffles{};
  for (unsigned mask = 0; mask < 256; ++mask) {
    std::size_t to = 0;
    for (unsigned unit = 0; unit < 8; ++unit) {
      if ((mask >> unit & 1) == 0) continue;
      shuffles[mask][to++] = static_cast<Byte>(2 * unit);
      shuffles[mask][to++] = static_cast<Byte>(2 * unit + 1);
    }
  }
  return shuffles;
}

constexpr std::array<Shuffle, 256> MakeSequenceShuffles() {
  std::array<Shuffle, 256> shuffles{};
  for (unsigned lengths = 0; lengths < 256; ++lengths) {
    std::size_t to = 0;
    for (unsigned unit = 0; unit < 4; ++unit) {
      const unsigned length = 1 + (lengths >> unit & 1) + (lengths >> (unit + 4) & 1);
      for (unsigned byte = 3 - length; byte < 3; ++byte) {
        shuffles[lengths][to++] = static_cast<Byte>(4 * unit + byte);
      }
    }
  }
  return shuffles;
}

// Moves those of eight units together that the bits of the index stand for.
alignas(16) constexpr auto kUnitShuffles = MakeUnitShuffles();

// Moves four sequences together, each of which ends in the third byte of a 32-bit lane. Bits 0
// to 3 of the index tell which take two bytes or three, bits 4 to 7 which take three.
alignas(16) constexpr auto kSequenceShuffles = MakeSequenceShuffles();

LUMR_AVX2 inline __m256i All(int byte) {
  return _mm256_set1_epi8(static_cast<char>(byte));
}
LUMR_AVX2 inline __m256i Load(const Byte* in) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
}
LUMR_AVX2 inline void Store(char* out, __m128i value) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), value);
}
LUMR_AVX2 inline unsigned Mask(__m256i bytes) {
  return static_cast<unsigned>(_mm256_movemask_epi8(bytes));
}
LUMR_AVX2 inline __m128i Low(__m256i value) {
  return _mm256_castsi256_si128(value);
}
LUMR_AVX2 inline __m128i High(__m256i value) {
  return _mm256_extracti128_si256(value, 1);
}
LUMR_AVX2 inline __m128i Shuffled(__m128i value, const Shuffle& shuffle) {
  return _mm_shuffle_epi8(value, _mm_load_si128(reinterpret_cast<const __m128i*>(&shuffle)));
}

LUMR_AVX2 inline void WidenBlock(__m256i bytes, char* out) {
  const __m256i low = _mm256_cvtepu8_epi16(Low(bytes));
  const __m256i high = _mm256_cvtepu8_epi16(High(bytes));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), low);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + 32), high);
}

// Writes those of eight units that starts has bits for. Overwrites 16 bytes.
LUMR_AVX2 inline char* PutUnits(__m128i units, unsigned starts, char* out) {
  Store(out, Shuffled(units, kUnitShuffles[starts]));
  return out + 2 * std::popcount(starts);
}

// The sequences of 32 bytes, as if one began at each of them.
struct Sequences {
  __m256i low;   // the low bytes of their units
  __m256i high;  // the high bytes
  __m256i bad;   // not 0: longer than needed, a surrogate, or of four bytes
};

LUMR_AVX2 inline Sequences ReadSequences(const Byte* in, __m256i first, __m256i isThree) {
  const __m256i second = Load(in + 1);
  const __m256i third = Load(in + 2);
  // The last two bytes of each; those of two bytes have no third one.
  const __m256i upper = _mm256_blendv_epi8(first, second, isThree);
  const __m256i last = _mm256_blendv_epi8(second, third, isThree);
  const __m256i top =
      _mm256_and_si256(isThree, _mm256_and_si256(_mm256_slli_epi16(first, 4), All(0xF0)));
  const __m256i low = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(upper, 6), All(0xC0)),
                                      _mm256_and_si256(last, All(0x3F)));
  const __m256i high =
      _mm256_or_si256(top, _mm256_and_si256(_mm256_srli_epi16(upper, 2), All(0x0F)));

  const __m256i block = _mm256_and_si256(high, All(0xF8));  // of 800 units
  const __m256i badThree = _mm256_or_si256(_mm256_cmpeq_epi8(block, _mm256_setzero_si256()),
                                           _mm256_cmpeq_epi8(block, All(0xD8)));
  const __m256i badTwo = _mm256_cmpeq_epi8(_mm256_and_si256(first, All(0xFE)), All(0xC0));
  const __m256i bad = _mm256_or_si256(_mm256_subs_epu8(first, All(0xEF)),
                                      _mm256_or_si256(badTwo, _mm256_and_si256(isThree, badThree)));
  const __m256i isMulti = _mm256_cmpgt_epi8(_mm256_setzero_si256(), first);
  return {_mm256_blendv_epi8(first, low, isMulti), _mm256_and_si256(high, isMulti), bad};
}

// Writes the UTF-8 of eight units that are no surrogates. Overwrites 28 bytes.
LUMR_AVX2 inline char* PutSequences(__m128i eight, char* out) {
  const __m256i units = _mm256_cvtepu16_epi32(eight);
  const __m256i isLong = _mm256_cmpgt_epi32(units, _mm256_set1_epi32(0x7F));
  const __m256i isThree = _mm256_cmpgt_epi32(units, _mm256_set1_epi32(0x7FF));
  const __m256i first = _mm256_srli_epi32(units, 12);
  const __m256i second = _mm256_slli_epi32(_mm256_and_si256(units, _mm256_set1_epi32(0xFC0)), 2);
  const __m256i third = _mm256_slli_epi32(_mm256_and_si256(units, _mm256_set1_epi32(0x3F)), 16);
  // The second byte leads where there are two.
  const __m256i marks =
      _mm256_blendv_epi8(_mm256_set1_epi32(0x80C000), _mm256_set1_epi32(0x8080E0), isThree);
  const __m256i bytes =
      _mm256_or_si256(_mm256_or_si256(first, second), _mm256_or_si256(third, marks));
  const __m256i lanes = _mm256_blendv_epi8(_mm256_slli_epi32(units, 16), bytes, isLong);

  const auto two = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(isLong)));
  const auto three = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(isThree)));
  const unsigned lowLengths = (two & 0x0F) | (three & 0x0F) << 4;
  const unsigned highLengths = two >> 4 | (three & 0xF0);
  Store(out, Shuffled(Low(lanes), kSequenceShuffles[lowLengths]));
  out += 4 + std::popcount(lowLengths);
  Store(out, Shuffled(High(lanes), kSequenceShuffles[highLengths]));
  return out + 4 + std::popcount(highLengths);
}

}  // namespace

// A sequence that reaches into the next block is written when its lead byte is seen, and taken
// back when that block does not bear it out.
LUMR_AVX2 void DecodeUtf8Avx2(const Byte*& in, const Byte* end, char*& out) {
  std::uint64_t owed = 0;  // bits of the bytes in the next block that have to continue a sequence
  for (; end - in >= 32 + 2; in += 32) {
    const __m256i bytes = Load(in);
    const unsigned notAscii = Mask(bytes);
    if ((notAscii | owed) == 0) {
      WidenBlock(bytes, out);
      out += 64;
      continue;
    }
    const __m256i isThree = _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, All(0xE0)), bytes);
    const unsigned tails = Mask(_mm256_cmpgt_epi8(All(0xC0), bytes));
    const std::uint64_t leads = notAscii & ~tails;
    const std::uint64_t wanted = owed | leads << 1 | std::uint64_t{Mask(isThree)} << 2;
    const Sequences found = ReadSequences(in, bytes, isThree);
    if (static_cast<unsigned>(wanted) != tails || !_mm256_testz_si256(found.bad, found.bad)) break;
    owed = wanted >> 32;

    const __m256i even = _mm256_unpacklo_epi8(found.low, found.high);
    const __m256i odd = _mm256_unpackhi_epi8(found.low, found.high);
    const unsigned starts = ~tails;
    out = PutUnits(Low(even), starts & 0xFF, out);
    out = PutUnits(Low(odd), starts >> 8 & 0xFF, out);
    out = PutUnits(High(even), starts >> 16 & 0xFF, out);
    out = PutUnits(High(odd), starts >> 24, out);
  }
  if (owed == 0) return;
  do --in;
  while ((*in & 0xC0) == 0x80);
  out -= 2;
}

LUMR_AVX2 void EncodeUtf8Avx2(const Byte*& in, const Byte* end, char*& out) {
  // Two more units than are read: the last store is four bytes longer than what it is for.
  for (; end - in >= 32 + 4; in += 32) {
    const __m256i units = Load(in);
    if (_mm256_testz_si256(units, _mm256_set1_epi16(static_cast<short>(0xFF80)))) {
      Store(out, _mm_packus_epi16(Low(units), High(units)));
      out += 16;
      continue;
    }
    const __m256i block = _mm256_and_si256(units, _mm256_set1_epi16(static_cast<short>(0xF800)));
    const __m256i surrogates =
        _mm256_cmpeq_epi16(block, _mm256_set1_epi16(static_cast<short>(0xD800)));
    if (!_mm256_testz_si256(surrogates, surrogates)) return;
    out = PutSequences(Low(units), out);
    out = PutSequences(High(units), out);
  }
}

}  // namespace lumr

#else

namespace lumr {

void DecodeUtf8Avx2(const Byte*&, const Byte*, char*&) {}
void EncodeUtf8Avx2(const Byte*&, const Byte*, char*&) {}

}  // namespace lumr

#endif
