#include "lumrmisc/mailtext/quotedprintable_internal.h"

#if defined(__x86_64__)

#include <algorithm>
#include <cstring>

#include "lumrmisc/platform/avx512_internal.h"

namespace lumr::transfer {
namespace {

using namespace avx512;

constexpr int kStep = 21;  // bytes that give 63 characters at most
constexpr std::uint64_t kFirstOfThree = 0x1249249249249249;

// 0, 0, 0, 1, 1, 1, ...
alignas(64) constexpr auto kThrice = [] {
  std::array<unsigned char, 64> places{};
  for (unsigned i = 0; i < 64; ++i) places[i] = static_cast<unsigned char>(i / 3);
  return places;
}();

// Three characters for each byte: the escape, or the byte itself in place of the "=".
LUMR_AVX512_INLINE __m512i Escapes(__m512i bytes, std::uint64_t literals) {
  const __m512i thrice = _mm512_permutexvar_epi8(_mm512_load_si512(kThrice.data()), bytes);
  const __m512i digits = _mm512_broadcast_i32x4(_mm_setr_epi8(
      '0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'));
  const __m512i high = _mm512_and_si512(_mm512_srli_epi16(thrice, 4), Bytes(0x0F));
  const __m512i low = _mm512_and_si512(thrice, Bytes(0x0F));
  const __m512i nibbles = _mm512_mask_blend_epi8(kFirstOfThree << 2, high, low);
  const __m512i hex = _mm512_shuffle_epi8(digits, nibbles);
  const std::uint64_t isLiteral = _pdep_u64(literals, kFirstOfThree);
  const __m512i equals = _mm512_mask_mov_epi8(hex, kFirstOfThree, Bytes('='));
  return _mm512_mask_mov_epi8(equals, isLiteral, thrice);
}

// Writes 63 characters of escapes, with a soft line break where the line has no room for more.
LUMR_AVX512_INLINE char* PutEscapes(__m512i text, std::size_t lineLength, std::size_t& column,
                                    char* out) {
  constexpr std::size_t kSize = 3 * kStep;
  const std::size_t fitting = std::min((lineLength - column) / 3 * 3, kSize);
  _mm512_mask_storeu_epi8(out, FirstBits(kSize), text);
  if (fitting == kSize) {
    column += kSize;
    return out + kSize;
  }
  std::memcpy(out + fitting, "=\r\n", 4);
  column = kSize - fitting;
  const __m512i places = _mm512_add_epi8(Places(), Bytes(static_cast<int>(fitting)));
  _mm512_mask_storeu_epi8(out + fitting + 3, FirstBits(static_cast<std::ptrdiff_t>(column)),
                          _mm512_permutexvar_epi8(places, text));
  return out + kSize + 3;
}

LUMR_AVX512_INLINE char* PutKept(std::uint64_t kept, __m512i text, char* out) {
  const int count = std::popcount(kept);
  _mm512_mask_storeu_epi8(out, FirstBits(count), _mm512_maskz_compress_epi8(kept, text));
  return out + count;
}

}  // namespace

LUMR_AVX512 char* EncodeDenseAvx512(const char*& in, const char* end, std::size_t lineLength,
                                    std::size_t& column, char* out) {
  while (in != end) {
    const std::uint64_t here = FirstBits(end - in < kStep ? end - in : kStep);
    const __m512i bytes = _mm512_maskz_loadu_epi8(here, in);
    if (_mm512_movepi8_mask(bytes) == FirstBits(kStep)) {
      out = PutEscapes(Escapes(bytes, 0), lineLength, column, out);
      in += kStep;
      continue;
    }
    const std::uint64_t layout = _mm512_mask_cmpeq_epi8_mask(here, bytes, Bytes(' ')) |
                                 _mm512_mask_cmpeq_epi8_mask(here, bytes, Bytes('\t')) |
                                 _mm512_mask_cmpeq_epi8_mask(here, bytes, Bytes('\r')) |
                                 _mm512_mask_cmpeq_epi8_mask(here, bytes, Bytes('\n'));
    const int count = std::countr_zero(layout | ~here);
    const std::uint64_t taken = FirstBits(count);
    const std::uint64_t visible =
        _mm512_mask_cmple_epu8_mask(taken, _mm512_sub_epi8(bytes, Bytes('!')), Bytes('~' - '!'));
    const std::uint64_t literals = _mm512_mask_cmpneq_epi8_mask(visible, bytes, Bytes('='));
    const std::uint64_t escaped = _pdep_u64(taken & ~literals, kFirstOfThree);
    if (escaped == 0) return out;

    const std::uint64_t kept = _pdep_u64(taken, kFirstOfThree) | escaped << 1 | escaped << 2;
    // The first character that the line has no room for, and with it the byte that it is of. There
    // may be none; the next line has room for all the rest.
    const std::size_t room = lineLength - column;
    const std::uint64_t firstOver = room < 64 ? _pdep_u64(std::uint64_t{1} << room, kept) : 0;
    const std::uint64_t itsByte = (firstOver | firstOver >> 1 | firstOver >> 2) & kFirstOfThree;
    const std::uint64_t onThis = kept & (itsByte - 1);
    const std::uint64_t onNext = kept & ~onThis;
    const __m512i text = Escapes(bytes, literals);
    char* const brokenAt = PutKept(onThis, text, out);
    std::memcpy(brokenAt, "=\r\n", 4);
    out = PutKept(onNext, text, onNext == 0 ? brokenAt : brokenAt + 3);
    column = onNext == 0 ? column + static_cast<std::size_t>(std::popcount(onThis))
                         : static_cast<std::size_t>(std::popcount(onNext));
    in += count;
    if (layout != 0) return out;
  }
  return out;
}

}  // namespace lumr::transfer

#else

namespace lumr::transfer {

char* EncodeDenseAvx512(const char*&, const char*, std::size_t, std::size_t&, char* out) {
  return out;
}

}  // namespace lumr::transfer

#endif
