#include "lumrmisc/mailtext/sixbit_avx512_internal.h"

#if defined(__x86_64__)

#include <algorithm>
#include <bit>

#include "lumrmisc/mailtext/transfer_internal.h"
#include "lumrmisc/platform/avx512_internal.h"

namespace lumr::transfer {
namespace {

using namespace avx512;

constexpr std::size_t kGroups = 16;  // of a vector

using PlaceTable = std::array<unsigned char, 64>;

// The places of the three bytes 0, 1, 2 of each group in a lane of four: the six bits of a
// character never cross the two bytes of the lane that hold them. Swapped, the bytes are those of
// little-endian units.
constexpr PlaceTable MakeSpread(unsigned swap) {
  PlaceTable places{};
  for (unsigned i = 0; i < 64; ++i) {
    constexpr unsigned kOrder[] = {1, 0, 2, 1};
    places[i] = static_cast<unsigned char>((i / 4 * 3 + kOrder[i % 4]) ^ swap);
  }
  return places;
}

// The bytes 2, 1, 0 of each lane of four, one group behind the other.
constexpr PlaceTable MakeGather(unsigned swap) {
  PlaceTable places{};
  for (unsigned i = 0; i < 48; ++i) {
    const unsigned from = i ^ swap;
    places[i] = static_cast<unsigned char>(from / 3 * 4 + 2 - from % 3);
  }
  return places;
}

alignas(64) constexpr PlaceTable kSpread = MakeSpread(0);
alignas(64) constexpr PlaceTable kSpreadUnits = MakeSpread(1);
alignas(64) constexpr PlaceTable kGather = MakeGather(0);
alignas(64) constexpr PlaceTable kGatherUnits = MakeGather(1);

// The second characters of the first 64 pairs are the alphabet.
LUMR_AVX512_INLINE __m512i AlphabetOf(const PairTable& pairs) {
  const __m512i low = _mm512_srli_epi16(_mm512_loadu_si512(pairs.data()), 8);
  const __m512i high = _mm512_srli_epi16(_mm512_loadu_si512(pairs.data() + 32), 8);
  return _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(low)),
                            _mm512_cvtepi16_epi8(high), 1);
}

// The 64 characters of 48 bytes.
LUMR_AVX512_INLINE __m512i Characters(__m512i alphabet, __m512i bytes,
                                      const PlaceTable& places = kSpread) {
  const __m512i spread = _mm512_permutexvar_epi8(_mm512_load_si512(places.data()), bytes);
  const __m512i shifts = _mm512_set1_epi64(0x3036242A1016040A);
  return _mm512_permutexvar_epi8(_mm512_multishift_epi64_epi8(shifts, spread), alphabet);
}

LUMR_AVX512_INLINE void EncodeSome(__m512i alphabet, const char* in, std::size_t groups,
                                   char* out) {
  const auto count = static_cast<std::ptrdiff_t>(groups);
  const __m512i bytes = _mm512_maskz_loadu_epi8(FirstBits(3 * count), in);
  _mm512_mask_storeu_epi8(out, FirstBits(4 * count), Characters(alphabet, bytes));
}

// The last vector may overlap the one before it, which is cheaper than another one of few groups.
LUMR_AVX512_INLINE void EncodeAll(__m512i alphabet, const char* in, std::size_t groups, char* out) {
  if (groups < kGroups) return EncodeSome(alphabet, in, groups, out);
  for (std::size_t i = 0; i + kGroups <= groups; i += kGroups) {
    EncodeSome(alphabet, in + 3 * i, kGroups, out + 4 * i);
  }
  if (groups % kGroups != 0) {
    EncodeSome(alphabet, in + 3 * (groups - kGroups), kGroups, out + 4 * (groups - kGroups));
  }
}

// The 48 bytes of 64 values of six bits.
LUMR_AVX512_INLINE __m512i BytesOf(__m512i values, const PlaceTable& places = kGather) {
  const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
  const __m512i lanes = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
  return _mm512_permutexvar_epi8(_mm512_load_si512(places.data()), lanes);
}

}  // namespace

LUMR_AVX512 char* EncodeGroupsAvx512(const PairTable& pairs, const char* in, std::size_t groups,
                                     char* out) {
  EncodeAll(AlphabetOf(pairs), in, groups, out);
  return out + 4 * groups;
}

LUMR_AVX512 char* EncodeLinesAvx512(const PairTable& pairs, const char* in, std::size_t lines,
                                    std::size_t groupsPerLine, char* out) {
  const __m512i alphabet = AlphabetOf(pairs);
  for (; lines > 0; --lines, in += 3 * groupsPerLine) {
    EncodeAll(alphabet, in, groupsPerLine, out);
    out += 4 * groupsPerLine;
    *out++ = '\r';
    *out++ = '\n';
  }
  return out;
}

LUMR_AVX512 void DecodeGroupsAvx512(const ValueTable& values, const char*& in, const char* end,
                                    char*& out) {
  const __m512i low = _mm512_loadu_si512(values.data());
  const __m512i high = _mm512_loadu_si512(values.data() + 64);
  while (end - in >= 4) {
    const std::uint64_t here = FirstBits(end - in);
    const __m512i text = _mm512_maskz_loadu_epi8(here, in);
    const __m512i found = _mm512_permutex2var_epi8(low, text, high);
    const std::uint64_t outside = _mm512_movepi8_mask(_mm512_or_si512(found, text)) | ~here;
    const int good = std::countr_zero(outside);  // 64 when there is none
    const int taken = good & ~3;
    if (taken == 0) return;
    _mm512_mask_storeu_epi8(out, FirstBits(taken / 4 * 3), BytesOf(found));
    in += taken;
    out += taken / 4 * 3;
    if (good == 64) continue;
    if (taken != good) return;
    while (in != end && (IsBlank(*in) || IsLineBreak(*in))) ++in;
  }
}

LUMR_AVX512 char* EncodeUnitsAvx512(const PairTable& pairs, const char* in, std::size_t units,
                                    char* out) {
  const __m512i alphabet = AlphabetOf(pairs);
  while (units > 0) {
    const auto taken = static_cast<std::ptrdiff_t>(std::min<std::size_t>(units, 24));
    const std::ptrdiff_t characters = (taken * 16 + 5) / 6;
    const __m512i bytes = _mm512_maskz_loadu_epi8(FirstBits(2 * taken), in);
    _mm512_mask_storeu_epi8(out, FirstBits(characters), Characters(alphabet, bytes, kSpreadUnits));
    in += 2 * taken;
    out += characters;
    units -= static_cast<std::size_t>(taken);
  }
  return out;
}

LUMR_AVX512 std::size_t CopyPlainUnitsAvx512(const char* in, std::size_t units, char* out) {
  for (std::size_t i = 0; i < units; i += 32) {
    const std::uint32_t here = FirstBits32(static_cast<std::ptrdiff_t>(units - i));
    const __m512i block = _mm512_maskz_loadu_epi16(here, in + 2 * i);
    const __mmask32 visible =
        _mm512_cmple_epu16_mask(_mm512_sub_epi16(block, Units(0x20)), Units(0x7E - 0x20));
    const __mmask32 plain = _mm512_mask_cmpneq_epi16_mask(visible, block, Units('&'));
    _mm256_mask_storeu_epi8(out + i, here, _mm512_cvtepi16_epi8(block));
    const int count = std::countr_one(plain & here);
    if (count < 32) return i + static_cast<std::size_t>(count);
  }
  return units;
}

LUMR_AVX512 std::size_t CountOtherUnitsAvx512(const char* in, std::size_t units) {
  for (std::size_t i = 0; i < units; i += 32) {
    const std::uint32_t here = FirstBits32(static_cast<std::ptrdiff_t>(units - i));
    const __m512i block = _mm512_maskz_loadu_epi16(here, in + 2 * i);
    const __mmask32 others =
        _mm512_cmpgt_epu16_mask(_mm512_sub_epi16(block, Units(0x20)), Units(0x7E - 0x20));
    const int count = std::countr_one(others & here);
    if (count < 32) return i + static_cast<std::size_t>(count);
  }
  return units;
}

namespace {

// A text as far as a vector reaches, and the places of its "-", which ends runs.
struct Stretch {
  __m512i text;
  std::uint64_t here;
  std::uint64_t dashes;
};

LUMR_AVX512_INLINE Stretch LoadStretch(const char* in, const char* end) {
  const std::uint64_t here = FirstBits(end - in);
  const __m512i text = _mm512_maskz_loadu_epi8(here, in);
  return {text, here, _mm512_cmpeq_epi8_mask(text, Bytes('-'))};
}

// Decodes the count characters that a text begins with and a run ends with; false, and nothing is
// done, where they are not well-formed.
LUMR_AVX512_INLINE bool DecodeEnd(const __m512i (&values)[2], __m512i text, int count, char*& out) {
  const __m512i found = _mm512_permutex2var_epi8(values[0], text, values[1]);
  const std::uint64_t outside = _mm512_movepi8_mask(_mm512_or_si512(found, text));
  if ((outside & FirstBits(count)) != 0) return false;
  // The bits of the last character that belong to no unit are zero, and fewer than six.
  const unsigned padding = 6 * static_cast<unsigned>(count) % 16;
  const std::uint64_t notZero = _mm512_test_epi8_mask(found, Bytes((1 << padding) - 1));
  if (padding >= 6 || (count > 0 && (notZero >> (count - 1) & 1) != 0)) return false;
  const int size = 6 * count / 16 * 2;
  _mm512_mask_storeu_epi8(out, FirstBits(size), BytesOf(found, kGatherUnits));
  out += size;
  return true;
}

// Decodes a run with its "-"; false where it stops before, at a border of units.
LUMR_AVX512_INLINE bool DecodeRun(const __m512i (&values)[2], const char*& in, const char* end,
                                  char*& out) {
  while (true) {
    const Stretch run = LoadStretch(in, end);
    const int count = std::countr_zero(run.dashes | ~run.here);  // 64 when there is none
    const bool isEnd = (run.dashes >> (count & 63) & 1) != 0;
    if (!isEnd && count < 64) return false;
    if (!DecodeEnd(values, run.text, count, out)) return false;
    in += count;
    if (!isEnd) continue;
    ++in;
    return true;
  }
}

}  // namespace

LUMR_AVX512 void DecodeNameAvx512(const ValueTable& values, bool& inRun, const char*& in,
                                  const char* end, char*& out, bool& isAscii) {
  const __m512i halves[] = {_mm512_loadu_si512(values.data()),
                            _mm512_loadu_si512(values.data() + 64)};
  while (in != end) {
    if (!inRun) {
      const Stretch plain = LoadStretch(in, end);
      const std::uint64_t stops = _mm512_cmpeq_epi8_mask(plain.text, Bytes('&')) | ~plain.here;
      const std::ptrdiff_t count = std::countr_zero(stops);
      if ((_mm512_movepi8_mask(plain.text) & FirstBits(count)) != 0) isAscii = false;
      StoreWidened(plain.text, count, out);
      in += count;
      out += 2 * count;
      if (in == end || count == 64) continue;
      if (in + 1 == end || values[static_cast<unsigned char>(in[1])] < 0) return;
      ++in;
      // Where the run ends is known already: the next step need not wait for its characters.
      const std::uint64_t dashes = plain.dashes & ~_blsmsk_u64(stops);
      const auto length = static_cast<int>(std::countr_zero(dashes) - count - 1);
      if (dashes != 0 && DecodeEnd(halves, LoadStretch(in, end).text, length, out)) {
        in += length + 1;
        continue;
      }
    }
    inRun = !DecodeRun(halves, in, end, out);
    if (inRun) return;
  }
}

LUMR_AVX512 char* DecodeSixBitsAvx512(const char* in, std::size_t size, std::size_t count,
                                      char* out) {
  while (count > 0) {
    const std::size_t chars = std::min<std::size_t>(size, 64);
    const std::size_t bytes = std::min<std::size_t>(count, 48);
    const std::uint64_t here = FirstBits(static_cast<std::ptrdiff_t>(chars));
    const __m512i text = _mm512_maskz_loadu_epi8(here, in);
    const __m512i moved = _mm512_xor_si512(text, _mm512_maskz_mov_epi8(here, Bytes(0x20)));
    _mm512_mask_storeu_epi8(out, FirstBits(static_cast<std::ptrdiff_t>(bytes)),
                            BytesOf(_mm512_and_si512(moved, Bytes(0x3F))));
    in += chars;
    size -= chars;
    out += bytes;
    count -= bytes;
  }
  return out;
}

}  // namespace lumr::transfer

#else

namespace lumr::transfer {

char* EncodeGroupsAvx512(const PairTable&, const char*, std::size_t, char* out) {
  return out;
}
char* EncodeLinesAvx512(const PairTable&, const char*, std::size_t, std::size_t, char* out) {
  return out;
}
void DecodeGroupsAvx512(const ValueTable&, const char*&, const char*, char*&) {}
char* DecodeSixBitsAvx512(const char*, std::size_t, std::size_t, char* out) {
  return out;
}
char* EncodeUnitsAvx512(const PairTable&, const char*, std::size_t, char* out) {
  return out;
}
std::size_t CopyPlainUnitsAvx512(const char*, std::size_t, char*) {
  return 0;
}
std::size_t CountOtherUnitsAvx512(const char*, std::size_t) {
  return 0;
}
void DecodeNameAvx512(const ValueTable&, bool&, const char*&, const char*, char*&, bool&) {}

}  // namespace lumr::transfer

#endif
