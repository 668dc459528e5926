#include "lumrmisc/platform/doublebyte_avx512_internal.h"

#if defined(__x86_64__)

#include "lumrmisc/platform/avx512_internal.h"

namespace lumr {
namespace {

using namespace avx512;

// A vector costs as much as about so many characters one by one.
constexpr std::ptrdiff_t kWorthVector = 8;

constexpr __mmask32 kOddLanes = 0xAAAAAAAA;

// Sixteen entries of a table, each in the low half of its lane. What the high halves hold stands
// behind the entries: the tables end with an entry that nobody asks for.
LUMR_AVX512_INLINE __m512i LookUp16(const std::uint16_t* table, __m512i places) {
  return _mm512_i32gather_epi32(places, table, sizeof *table);
}

// 32 entries, of which the first count are wanted.
LUMR_AVX512_INLINE __m512i LookUp32(const std::uint16_t* table, __m512i places, int count) {
  if (count <= 16) {
    const __m512i found = LookUp16(table, _mm512_cvtepu16_epi32(_mm512_castsi512_si256(places)));
    return _mm512_zextsi256_si512(_mm512_cvtepi32_epi16(found));
  }
  const __m512i even = LookUp16(table, _mm512_and_si512(places, _mm512_set1_epi32(0xFFFF)));
  const __m512i odd = LookUp16(table, _mm512_srli_epi32(places, 16));
  return _mm512_mask_blend_epi16(kOddLanes, even, _mm512_slli_epi32(odd, 16));
}

// The values of 32 units, of which the first count are wanted, other than those of isAscii. A
// look-up takes most of the time that there is to take: where all units lie in the runs, one for
// each does.
LUMR_AVX512_INLINE __m512i ValuesOf(const EncodingTable& table, __m512i units, __mmask32 isAscii,
                                    int count) {
  __mmask32 isInRun = isAscii;
  __m512i shifts = _mm512_setzero_si512();
  for (const PlacedRun& run : table.runs) {
    const __m512i inRun = _mm512_sub_epi16(units, _mm512_set1_epi32(static_cast<int>(run.first)));
    const __mmask32 isHere =
        _mm512_cmple_epu16_mask(inRun, _mm512_set1_epi32(static_cast<int>(run.span)));
    isInRun |= isHere;
    shifts = _mm512_mask_mov_epi16(shifts, isHere, _mm512_set1_epi32(static_cast<int>(run.shift)));
  }
  if (table.hasRuns && isInRun == 0xFFFFFFFF) {
    return LookUp32(table.codes, _mm512_add_epi16(units, shifts), count);
  }
  static_assert(kEncodeBlock == 32);
  const __m512i blocks = LookUp32(table.index, _mm512_srli_epi16(units, 5), count);
  const __m512i inBlock = _mm512_and_si512(units, Units(kEncodeBlock - 1));
  return LookUp32(table.codes, _mm512_add_epi16(blocks, inBlock), count);
}

// 32 characters, each of them a byte, or a lead byte and its trail.
struct Characters {
  __m512i first;
  __m512i trails;
  std::uint32_t isPair;
};

// Gives their units and a bit for each that has none.
LUMR_AVX512_INLINE __m512i UnitsOf(const std::uint16_t* cells, bool hasKatakana,
                                   const Characters& c, int count, std::uint32_t& bad) {
  __m512i rows = _mm512_sub_epi16(c.first, Units(kFirstLead));
  if (hasKatakana) {
    const __mmask32 behind = _mm512_cmpge_epu16_mask(c.first, Units(0xE0));
    rows = _mm512_mask_sub_epi16(rows, behind, rows, Units(0x40));
  }
  const __m512i places = _mm512_maskz_add_epi16(c.isPair, _mm512_mullo_epi16(rows, Units(kTrails)),
                                                _mm512_sub_epi16(c.trails, Units(kFirstTrail)));
  // No trail so low: its place would be in the row before.
  const __mmask32 isLow = _mm512_mask_cmplt_epu16_mask(c.isPair, c.trails, Units(kFirstTrail));
  const __m512i cell = LookUp32(cells, _mm512_mask_mov_epi16(places, isLow, Units(0)), count);
  const __mmask32 isEscape =
      _mm512_cmpeq_epi16_mask(_mm512_and_si512(cell, Units(0xF800)), Units(0xD800));
  __m512i singles = c.first;
  __mmask32 isSingle = _mm512_cmplt_epu16_mask(singles, Units(0x80));
  if (hasKatakana) {
    const __m512i fromKatakana = _mm512_sub_epi16(c.first, Units(0xA1));
    const __mmask32 isKatakana = _mm512_cmple_epu16_mask(fromKatakana, Units(0xDF - 0xA1));
    singles = _mm512_mask_add_epi16(singles, isKatakana, singles, Units(0xFF61 - 0xA1));
    isSingle |= isKatakana;
  }
  bad = (c.isPair & (isEscape | isLow)) | (~c.isPair & ~isSingle);
  return _mm512_mask_blend_epi16(c.isPair, singles, cell);
}

LUMR_AVX512_INLINE std::uint64_t MayLead(__m512i bytes, bool hasKatakana) {
  const __m512i fromFirst = _mm512_sub_epi8(bytes, Bytes(kFirstLead));
  if (!hasKatakana) return _mm512_cmple_epu8_mask(fromFirst, Bytes(0xFE - kFirstLead));
  const std::uint64_t inRange = _mm512_cmple_epu8_mask(fromFirst, Bytes(0xFC - kFirstLead));
  const __m512i fromGap = _mm512_sub_epi8(bytes, Bytes(0xA0));
  return _mm512_mask_cmpgt_epu8_mask(inRange, fromGap, Bytes(0xDF - 0xA0));
}

}  // namespace

LUMR_AVX512 void DecodeDoubleByteAvx512(const std::uint16_t* cells, bool hasKatakana,
                                        const Byte*& in, const Byte* end, char*& out) {
  while (in != end) {
    const std::ptrdiff_t left = end - in;
    const std::uint64_t here = FirstBits(left);
    const __m512i bytes = _mm512_maskz_loadu_epi8(here, in);
    if (_mm512_movepi8_mask(bytes) == 0) {
      const std::ptrdiff_t count = left < 64 ? left : 64;
      StoreWidened(bytes, count, out);
      in += count;
      out += 2 * count;
      continue;
    }
    if (left < kWorthVector) return;
    const std::uint64_t allLeads = LeadsAmong(MayLead(bytes, hasKatakana));
    const std::uint64_t whole = here & ~(allLeads & (here ^ here >> 1));
    const std::uint64_t leads = allLeads & whole;
    const std::uint64_t starts = whole & ~(leads << 1);
    const __m512i first = _mm512_maskz_compress_epi8(starts, bytes);
    const __m512i trails =
        _mm512_maskz_compress_epi8(starts, _mm512_maskz_loadu_epi8(here >> 1, in + 1));
    const std::uint64_t isPair = _pext_u64(leads, starts);
    const int count = std::popcount(starts);

    std::uint32_t lowBad;
    const Characters low = {_mm512_cvtepu8_epi16(_mm512_castsi512_si256(first)),
                            _mm512_cvtepu8_epi16(_mm512_castsi512_si256(trails)),
                            static_cast<std::uint32_t>(isPair)};
    const __m512i lowUnits = UnitsOf(cells, hasKatakana, low, count, lowBad);
    _mm512_mask_storeu_epi16(out, FirstBits32(count), lowUnits);
    std::uint64_t bad = lowBad;
    if (count > 32) {
      std::uint32_t highBad;
      const Characters high = {_mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(first, 1)),
                               _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(trails, 1)),
                               static_cast<std::uint32_t>(isPair >> 32)};
      const __m512i highUnits = UnitsOf(cells, hasKatakana, high, count - 32, highBad);
      _mm512_mask_storeu_epi16(out + 64, FirstBits32(count - 32), highUnits);
      bad |= std::uint64_t{highBad} << 32;
    }
    bad &= FirstBits(count);
    if (bad != 0) {
      const int good = std::countr_zero(bad);
      in += std::countr_zero(_pdep_u64(std::uint64_t{1} << good, starts));
      out += 2 * good;
      return;
    }
    in += std::popcount(whole);
    out += 2 * count;
    if (left <= 64 && whole != here) return;  // the last byte waits for its trail
  }
}

LUMR_AVX512 void EncodeDoubleByteAvx512(const EncodingTable& table, const Byte*& in,
                                        const Byte* end, char*& out) {
  while (end - in >= 2) {
    const std::ptrdiff_t left = (end - in) / 2;
    const int count = left < 32 ? static_cast<int>(left) : 32;
    const std::uint32_t here = FirstBits32(count);
    const __m512i units = _mm512_maskz_loadu_epi16(here, in);
    const __mmask32 isAscii = _mm512_testn_epi16_mask(units, Units(0xFF80));
    if (isAscii == 0xFFFFFFFF) {
      _mm256_mask_storeu_epi8(out, here, _mm512_cvtepi16_epi8(units));
      in += 2 * count;
      out += count;
      continue;
    }
    if (left < kWorthVector) return;
    const __m512i looked = ValuesOf(table, units, isAscii, count);
    const __m512i values = _mm512_mask_blend_epi16(isAscii, looked, units);
    const __mmask32 isPair = _mm512_movepi16_mask(values);  // the codes from kFirstPair on
    const __mmask32 isByte =
        isAscii | _mm512_cmplt_epu16_mask(_mm512_sub_epi16(values, Units(1)), Units(0xFF));
    const std::uint32_t bad = ~(isPair | isByte) & here;
    const int good = bad == 0 ? count : std::countr_zero(bad);
    const __m512i swapped =
        _mm512_or_si512(_mm512_slli_epi16(values, 8), _mm512_srli_epi16(values, 8));
    const __m512i lanes = _mm512_mask_blend_epi16(isPair, values, swapped);
    const std::uint32_t written = FirstBits32(good);
    const std::uint64_t kept =
        _pdep_u64(written, kEvenBits) | _pdep_u64(isPair & written, kEvenBits) << 1;
    const int size = std::popcount(kept);
    _mm512_mask_storeu_epi8(out, FirstBits(size), _mm512_maskz_compress_epi8(kept, lanes));
    in += 2 * good;
    out += size;
    if (bad != 0) return;
  }
}

}  // namespace lumr

#else

namespace lumr {

void DecodeDoubleByteAvx512(const std::uint16_t*, bool, const Byte*&, const Byte*, char*&) {}
void EncodeDoubleByteAvx512(const EncodingTable&, const Byte*&, const Byte*, char*&) {}

}  // namespace lumr

#endif
