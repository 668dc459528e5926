#include "lumrmisc/charset/japanese_avx512_internal.h"

#if defined(__x86_64__)

#include "lumrmisc/platform/avx512_internal.h"

namespace lumr {
namespace {

using namespace avx512;

// The arithmetic of japanese_pairs_internal.h: Shift_JIS puts two rows under one lead byte. leads
// has bits for the first bytes of the pairs; what stands between two pairs gives nothing of use.
LUMR_AVX512_INLINE __m512i PairsToSJis(__m512i jis, std::uint64_t leads) {
  const __m512i half = _mm512_avg_epu8(jis, _mm512_setzero_si512());  // of the row, rounded up
  const __m512i rows = _mm512_add_epi8(half, Bytes(112));
  const __mmask64 isHigh = _mm512_cmpgt_epu8_mask(jis, Bytes(94));
  const __m512i first = _mm512_mask_add_epi8(rows, isHigh, rows, Bytes(176 - 112));

  const __mmask64 isOdd = _mm512_test_epi8_mask(PreviousBytes(jis), Bytes(1));
  const __m512i shift = _mm512_mask_blend_epi8(isOdd, Bytes(126), Bytes(31));
  const __m512i second = _mm512_add_epi8(jis, shift);
  // 7F is no trail byte.
  const __mmask64 isBehind = _mm512_mask_cmpgt_epu8_mask(isOdd, jis, Bytes(95));
  const __m512i trails = _mm512_mask_add_epi8(second, isBehind, second, Bytes(1));
  return _mm512_mask_blend_epi8(leads, trails, first);
}

}  // namespace

LUMR_AVX512 void EucToSJisAvx512(const unsigned char*& in, const unsigned char* end,
                                 unsigned char*& out) {
  while (in != end) {
    const std::ptrdiff_t left = end - in;
    const std::uint64_t here = FirstBits(left);
    const __m512i bytes = _mm512_maskz_loadu_epi8(here, in);
    const std::uint64_t high = _mm512_movepi8_mask(bytes);
    if (high == 0) {
      _mm512_mask_storeu_epi8(out, here, bytes);
      const std::ptrdiff_t count = left < 64 ? left : 64;
      in += count;
      out += count;
      continue;
    }
    const std::uint64_t leads = LeadsAmong(high);
    const std::uint64_t pairBytes =
        _mm512_cmple_epu8_mask(_mm512_sub_epi8(bytes, Bytes(0xA1)), Bytes(0xFE - 0xA1));
    const std::uint64_t faults = (high & ~pairBytes) | ((leads << 1) & here & ~high);
    const std::uint64_t sound = faults == 0 ? here : _blsmsk_u64(faults) >> 1;
    // A pair that is cut off, by the end of the block or by a fault, is not taken.
    const std::uint64_t whole = sound & ~(leads & (sound ^ sound >> 1));
    const __m512i pairs = PairsToSJis(_mm512_and_si512(bytes, Bytes(0x7F)), leads);
    _mm512_mask_storeu_epi8(out, whole, _mm512_mask_blend_epi8(high, bytes, pairs));
    const int count = std::popcount(whole);
    in += count;
    out += count;
    if (faults != 0 || (left <= 64 && whole != here)) return;
  }
}

// Kanji and ASCII alternate every few characters, so a block is taken with all its designations
// at once. Where they alternate, kanji stand between each to kanji and the next one to ASCII, which
// a subtraction shows; where they do not, its result and they differ.
LUMR_AVX512 void JisToSJisAvx512(bool& inKanji, const unsigned char*& in, const unsigned char* end,
                                 unsigned char*& out) {
  while (in != end) {
    const std::uint64_t here = FirstBits(end - in);
    const __m512i bytes = _mm512_maskz_loadu_epi8(here, in);
    const std::uint64_t escapes = _mm512_cmpeq_epi8_mask(bytes, Bytes(0x1B));
    const std::uint64_t notPlain =
        _mm512_movepi8_mask(bytes) | escapes |
        _mm512_cmpeq_epi8_mask(_mm512_or_si512(bytes, Bytes(1)), Bytes(0x0F));
    if (!inKanji && notPlain == 0) {
      _mm512_mask_storeu_epi8(out, here, bytes);
      const std::ptrdiff_t count = std::min<std::ptrdiff_t>(end - in, 64);
      in += count;
      out += count;
      continue;
    }
    const std::uint64_t beforeB = escapes & (_mm512_cmpeq_epi8_mask(bytes, Bytes('B')) >> 2);
    const std::uint64_t toKanji = beforeB & (_mm512_cmpeq_epi8_mask(bytes, Bytes('$')) >> 1);
    const std::uint64_t toAscii = beforeB & (_mm512_cmpeq_epi8_mask(bytes, Bytes('(')) >> 1);
    const std::uint64_t starts = toKanji | toAscii;
    const std::uint64_t isKanji = toAscii - toKanji - (inKanji ? 1 : 0);
    if ((isKanji & starts) != toKanji) return;
    const std::uint64_t designations = starts | starts << 1 | starts << 2;
    const std::uint64_t pairBytes = isKanji & ~designations & here;
    const std::uint64_t leads = LeadsAmong(pairBytes);
    const std::uint64_t notInPair =
        _mm512_cmpgt_epu8_mask(_mm512_sub_epi8(bytes, Bytes(0x21)), Bytes(0x7E - 0x21));
    const std::uint64_t halves = leads & ~(pairBytes >> 1) & (here >> 1);
    const std::uint64_t faults =
        (pairBytes & notInPair) | (notPlain & ~isKanji & ~designations) | halves;
    const std::uint64_t sound = faults == 0 ? here : _blsmsk_u64(faults) >> 1;
    // A pair that is cut off, by the end of the block or by a fault, is not taken.
    const std::uint64_t whole = sound & ~(leads & (sound ^ sound >> 1));
    if (whole == 0) return;
    const std::uint64_t kept = whole & ~designations;
    const __m512i text = _mm512_mask_blend_epi8(pairBytes, bytes, PairsToSJis(bytes, leads));
    const int size = std::popcount(kept);
    _mm512_mask_storeu_epi8(out, FirstBits(size), _mm512_maskz_compress_epi8(kept, text));
    const int count = std::popcount(whole);
    in += count;
    out += size;
    inKanji = (isKanji >> (count - 1) & 1) != 0;
  }
}

LUMR_AVX512 bool CopyPlainAvx512(bool withControls, const unsigned char*& in,
                                 const unsigned char* end, unsigned char*& out) {
  while (end - in >= 64) {
    const __m512i bytes = _mm512_loadu_si512(in);
    std::uint64_t others = _mm512_movepi8_mask(bytes);
    if (withControls) {
      others |= _mm512_cmpeq_epi8_mask(bytes, Bytes(0x1B)) |
                _mm512_cmpeq_epi8_mask(_mm512_or_si512(bytes, Bytes(1)), Bytes(0x0F));
    }
    _mm512_storeu_si512(out, bytes);
    const int count = std::countr_zero(others);
    in += count;
    out += count;
    if (count < 64) return true;
  }
  return false;
}

}  // namespace lumr

#else

namespace lumr {

void EucToSJisAvx512(const unsigned char*&, const unsigned char*, unsigned char*&) {}
void JisToSJisAvx512(bool&, const unsigned char*&, const unsigned char*, unsigned char*&) {}
bool CopyPlainAvx512(bool, const unsigned char*&, const unsigned char*, unsigned char*&) {
  return false;
}

}  // namespace lumr

#endif
