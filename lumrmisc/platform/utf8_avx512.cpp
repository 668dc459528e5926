#include "lumrmisc/platform/utf8_kernels_internal.h"

#if defined(__x86_64__)

#include "lumrmisc/platform/avx512_internal.h"

namespace lumr {
namespace {

using namespace avx512;

// A block of 64 bytes, and the bytes one and two places before each of them.
struct Block {
  __m512i bytes;
  __m512i before;
  __m512i first;
};

// Writes the units whose last bytes stand at up to 32 places. Bits of isLong and isThree tell which
// take two bytes or three, and which three.
LUMR_AVX512_INLINE void StoreUnits(const Block& block, __m256i lastPlaces, std::uint32_t isLong,
                                   std::uint32_t isThree, std::ptrdiff_t count, char* out) {
  const __m512i places = _mm512_cvtepu8_epi16(lastPlaces);
  const __m512i last = _mm512_maskz_permutexvar_epi8(kEvenBits, places, block.bytes);
  const __m512i before = _mm512_maskz_permutexvar_epi8(kEvenBits, places, block.before);
  const __m512i first = _mm512_maskz_permutexvar_epi8(kEvenBits, places, block.first);
  // A tail has the bits 10 in front, a lead byte of two 110, a lead byte of three 1110.
  const __m512i low = _mm512_mask_blend_epi16(isLong, last, _mm512_and_si512(last, Units(0x3F)));
  const __m512i middle = _mm512_maskz_slli_epi16(isLong, _mm512_and_si512(before, Units(0x3F)), 6);
  const __m512i high = _mm512_maskz_slli_epi16(isThree, first, 12);
  _mm512_mask_storeu_epi16(out, FirstBits32(count),
                           _mm512_ternarylogic_epi32(low, middle, high, 0xFE));
}

// The UTF-8 of 16 units that are no surrogates; gives its end.
LUMR_AVX512_INLINE char* PutSequences(__m256i sixteen, int count, char* out) {
  const __m512i units = _mm512_cvtepu16_epi32(sixteen);
  const __mmask16 here = static_cast<__mmask16>(FirstBits32(count));
  const __mmask16 isLong = _mm512_mask_cmpgt_epu32_mask(here, units, _mm512_set1_epi32(0x7F));
  const __mmask16 isThree = _mm512_mask_cmpgt_epu32_mask(here, units, _mm512_set1_epi32(0x7FF));
  // A sequence ends in the third byte of its lane; the second byte leads where there are two.
  const __m512i first = _mm512_srli_epi32(units, 12);
  const __m512i second = _mm512_slli_epi32(_mm512_and_si512(units, _mm512_set1_epi32(0xFC0)), 2);
  const __m512i third = _mm512_slli_epi32(_mm512_and_si512(units, _mm512_set1_epi32(0x3F)), 16);
  const __m512i marks =
      _mm512_mask_blend_epi32(isThree, _mm512_set1_epi32(0x80C000), _mm512_set1_epi32(0x8080E0));
  const __m512i bytes =
      _mm512_ternarylogic_epi32(_mm512_or_si512(first, second), third, marks, 0xFE);
  const __m512i lanes = _mm512_mask_blend_epi32(isLong, _mm512_slli_epi32(units, 16), bytes);
  constexpr std::uint64_t kEveryLane = 0x1111111111111111;
  const std::uint64_t kept = _pdep_u64(here, kEveryLane) << 2 | _pdep_u64(isLong, kEveryLane) << 1 |
                             _pdep_u64(isThree, kEveryLane);
  const int size = std::popcount(kept);
  _mm512_mask_storeu_epi8(out, FirstBits(size), _mm512_maskz_compress_epi8(kept, lanes));
  return out + size;
}

}  // namespace

// A unit is written where its sequence ends, so that a sequence may reach into the next block; what
// stops there is read again.
LUMR_AVX512 void DecodeUtf8Avx512(const Byte*& in, const Byte* end, char*& out) {
  // Bits of the next block: tails that are owed to sequences before it, the last ones among them,
  // and those of sequences of three bytes.
  std::uint64_t owed = 0;
  std::uint64_t owedEnds = 0;
  std::uint64_t owedThreeEnds = 0;
  std::uint64_t known = ~std::uint64_t{3};  // what may be read two places before the block
  while (in != end) {
    const std::ptrdiff_t left = end - in;
    const std::uint64_t here = FirstBits(left);
    const __m512i bytes = _mm512_maskz_loadu_epi8(here, in);
    const std::uint64_t notAscii = _mm512_movepi8_mask(bytes);
    if ((notAscii | owed) == 0) {
      const std::ptrdiff_t count = left < 64 ? left : 64;
      StoreWidened(bytes, count, out);
      in += count;
      out += 2 * count;
      known = ~std::uint64_t{0};
      continue;
    }
    const std::uint64_t tails = _mm512_mask_cmplt_epu8_mask(notAscii, bytes, Bytes(0xC0));
    const std::uint64_t threes = _mm512_cmpge_epu8_mask(bytes, Bytes(0xE0));
    const std::uint64_t leads = notAscii & ~tails;
    const std::uint64_t twos = leads & ~threes;
    const std::uint64_t ends = (~notAscii | twos << 1 | threes << 2 | owedEnds) & here;
    const std::uint64_t threeEnds = (threes << 2 | owedThreeEnds) & here;
    const __m512i first = _mm512_maskz_loadu_epi8(known & (here << 2 | 3), in - 2);
    const __m512i before =
        _mm512_maskz_loadu_epi8((known >> 1 | std::uint64_t{1} << 63) & (here << 1 | 1), in - 1);

    // Longer than needed, a surrogate, or of four bytes.
    const std::uint64_t bad = _mm512_mask_cmplt_epu8_mask(leads, bytes, Bytes(0xC2)) |
                              _mm512_cmpge_epu8_mask(bytes, Bytes(0xF0)) |
                              _mm512_mask_cmplt_epu8_mask(
                                  _mm512_cmpeq_epi8_mask(before, Bytes(0xE0)), bytes, Bytes(0xA0)) |
                              _mm512_mask_cmpge_epu8_mask(
                                  _mm512_cmpeq_epi8_mask(before, Bytes(0xED)), bytes, Bytes(0xA0));
    if (((((leads << 1 | threes << 2 | owed) & here) ^ tails) | bad) != 0) break;

    const __m512i places = _mm512_maskz_compress_epi8(ends, Places());
    const std::uint64_t isLong = _pext_u64(notAscii, ends);
    const std::uint64_t isThree = _pext_u64(threeEnds, ends);
    const int count = std::popcount(ends);
    const Block block = {bytes, before, first};
    StoreUnits(block, _mm512_castsi512_si256(places), static_cast<std::uint32_t>(isLong),
               static_cast<std::uint32_t>(isThree), count, out);
    if (count > 32) {
      StoreUnits(block, _mm512_extracti64x4_epi64(places, 1),
                 static_cast<std::uint32_t>(isLong >> 32),
                 static_cast<std::uint32_t>(isThree >> 32), count - 32, out + 64);
    }
    out += 2 * count;
    if (left < 64) {
      in = end;
      owed = (leads << 1 | threes << 2) & ~here;
      break;
    }
    in += 64;
    known = ~std::uint64_t{0};
    owed = leads >> 63 | threes >> 62;
    owedEnds = twos >> 63 | threes >> 62;
    owedThreeEnds = threes >> 62;
  }
  if (owed == 0) return;
  do --in;
  while ((*in & 0xC0) == 0x80);
}

LUMR_AVX512 void EncodeUtf8Avx512(const Byte*& in, const Byte* end, char*& out) {
  while (end - in >= 2) {
    const std::ptrdiff_t left = (end - in) / 2;
    const int count = left < 32 ? static_cast<int>(left) : 32;
    const __m512i units = _mm512_maskz_loadu_epi16(FirstBits32(count), in);
    if (_mm512_test_epi16_mask(units, Units(0xFF80)) == 0) {
      _mm256_mask_storeu_epi8(out, FirstBits32(count), _mm512_cvtepi16_epi8(units));
      in += 2 * count;
      out += count;
      continue;
    }
    if (_mm512_cmpeq_epi16_mask(_mm512_and_si512(units, Units(0xF800)), Units(0xD800)) != 0) return;
    out = PutSequences(_mm512_castsi512_si256(units), count, out);
    if (count > 16) out = PutSequences(_mm512_extracti64x4_epi64(units, 1), count - 16, out);
    in += 2 * count;
  }
}

}  // namespace lumr

#else

namespace lumr {

void DecodeUtf8Avx512(const Byte*&, const Byte*, char*&) {}
void EncodeUtf8Avx512(const Byte*&, const Byte*, char*&) {}

}  // namespace lumr

#endif
