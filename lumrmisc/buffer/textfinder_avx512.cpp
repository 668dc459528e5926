#include "lumrmisc/buffer/textfinder_avx512_internal.h"

#if defined(__x86_64__)

#include "lumrmisc/platform/avx512_internal.h"

namespace lumr {
namespace {

using namespace avx512;

// What the lanes of bytes and those of units differ in. Masks have a bit for each lane.
struct ByteLanes {
  static constexpr std::size_t kSize = 1;
  LUMR_AVX512 static __m512i Spread(char16_t code) { return Bytes(code); }
  LUMR_AVX512 static __m512i Load(std::uint64_t here, const char* from) {
    return _mm512_maskz_loadu_epi8(here, from);
  }
  LUMR_AVX512 static std::uint64_t Equal(std::uint64_t among, __m512i a, __m512i b) {
    return _mm512_mask_cmpeq_epi8_mask(among, a, b);
  }
};

struct UnitLanes {
  static constexpr std::size_t kSize = 2;
  LUMR_AVX512 static __m512i Spread(char16_t code) { return Units(code); }
  LUMR_AVX512 static __m512i Load(std::uint64_t here, const char* from) {
    return _mm512_maskz_loadu_epi16(static_cast<__mmask32>(here), from);
  }
  LUMR_AVX512 static std::uint64_t Equal(std::uint64_t among, __m512i a, __m512i b) {
    return _mm512_mask_cmpeq_epi16_mask(static_cast<__mmask32>(among), a, b);
  }
};

template <class Lanes>
class AnchorVector {
 public:
  LUMR_AVX512_INLINE explicit AnchorVector(const TextAnchor& anchor)
      : text_(anchor.text),
        hasCase_(anchor.lower != anchor.upper),
        lower_(Lanes::Spread(anchor.lower)),
        upper_(Lanes::Spread(anchor.upper)) {}

  // The lanes among those given where the anchor stands.
  LUMR_AVX512_INLINE std::uint64_t At(std::size_t pos, std::uint64_t among) const {
    const __m512i lanes = Lanes::Load(among, text_ + pos);
    const std::uint64_t found = Lanes::Equal(among, lanes, lower_);
    return hasCase_ ? found | Lanes::Equal(among, lanes, upper_) : found;
  }

 private:
  const char* text_;
  bool hasCase_;
  __m512i lower_;
  __m512i upper_;
};

template <class Lanes>
LUMR_AVX512_INLINE std::size_t NextPlace(const TextAnchor (&anchors)[2], std::size_t pos,
                                         std::size_t last) {
  constexpr std::size_t kLanes = 64 / Lanes::kSize;
  const AnchorVector<Lanes> first(anchors[0]);
  const AnchorVector<Lanes> second(anchors[1]);
  while (pos <= last) {
    const std::size_t places = std::min((last - pos) / Lanes::kSize + 1, kLanes);
    const std::uint64_t here = FirstBits(static_cast<std::ptrdiff_t>(places));
    const std::uint64_t found = second.At(pos, first.At(pos, here));
    if (found != 0) return pos + static_cast<std::size_t>(std::countr_zero(found)) * Lanes::kSize;
    pos += places * Lanes::kSize;
  }
  return pos;
}

}  // namespace

LUMR_AVX512 std::size_t NextBytesAvx512(const TextAnchor (&anchors)[2], std::size_t pos,
                                        std::size_t last) {
  return NextPlace<ByteLanes>(anchors, pos, last);
}

LUMR_AVX512 std::size_t NextUnitsAvx512(const TextAnchor (&anchors)[2], std::size_t pos,
                                        std::size_t last) {
  return NextPlace<UnitLanes>(anchors, pos, last);
}

}  // namespace lumr

#else

namespace lumr {

std::size_t NextBytesAvx512(const TextAnchor (&)[2], std::size_t pos, std::size_t) {
  return pos;
}
std::size_t NextUnitsAvx512(const TextAnchor (&)[2], std::size_t pos, std::size_t) {
  return pos;
}

}  // namespace lumr

#endif
