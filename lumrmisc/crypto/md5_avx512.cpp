#include "lumrmisc/crypto/md5_internal.h"

#if defined(__x86_64__)

#include <utility>

#include "lumrmisc/platform/avx512_internal.h"
#include "lumrmisc/platform/cpu.h"

namespace lumr {
namespace {

// Only the lowest lanes of the vectors are used: what is gained is the instruction that does a
// whole function of three words at once, for from one step to the next every instruction counts.
using Word = __m128i;
using Words = Word[4];

// The functions F, G, H and I as their values for the eight combinations of bits of b, c, d.
constexpr int kFunction[4] = {0xca, 0xe4, 0x96, 0x39};

template <unsigned kStep>
LUMR_AVX512_INLINE void Step(Word& a, Word b, Word c, Word d, const unsigned char* block) {
  const auto addend = static_cast<int>(Md5Addend<kStep>(block));
  a = _mm_add_epi32(a, _mm_cvtsi32_si128(addend));
  __asm__("" : "+v"(a));  // this sum is ready long before b: do not add the function to one part
  a = _mm_add_epi32(a, _mm_ternarylogic_epi32(b, c, d, kFunction[kStep / 16]));
  a = _mm_add_epi32(_mm_rol_epi32(a, Md5Rotation(kStep)), b);
}

// The state turns by one place a step.
template <unsigned kStep>
LUMR_AVX512_INLINE void StepOf(Words& s, const unsigned char* block) {
  Step<kStep>(s[(64 - kStep) % 4], s[(65 - kStep) % 4], s[(66 - kStep) % 4], s[(67 - kStep) % 4],
              block);
}

template <unsigned... kSteps>
LUMR_AVX512_INLINE void AllSteps(std::integer_sequence<unsigned, kSteps...>, Words& s,
                                 const unsigned char* block) {
  (StepOf<kSteps>(s, block), ...);
}

template <unsigned... kSteps>
LUMR_AVX512_INLINE void AllSteps(std::integer_sequence<unsigned, kSteps...>, Words& s,
                                 const unsigned char* block, Words& other,
                                 const unsigned char* otherBlock) {
  ((StepOf<kSteps>(s, block), StepOf<kSteps>(other, otherBlock)), ...);
}

constexpr std::make_integer_sequence<unsigned, 64> kAllSteps;

LUMR_AVX512_INLINE void Load(const Md5State& state, Words& words) {
  for (unsigned i = 0; i < 4; ++i) words[i] = _mm_cvtsi32_si128(static_cast<int>(state[i]));
}

LUMR_AVX512_INLINE void AddTo(Md5State& state, const Words& words) {
  for (unsigned i = 0; i < 4; ++i) {
    state[i] += static_cast<std::uint32_t>(_mm_cvtsi128_si32(words[i]));
  }
}

LUMR_AVX512 void DigestBlocks(Md5State& state, const unsigned char* blocks, std::size_t count) {
  Words sum;
  Load(state, sum);
  for (; count > 0; --count, blocks += kMd5Block) {
    Words s = {sum[0], sum[1], sum[2], sum[3]};
    AllSteps(kAllSteps, s, blocks);
    for (unsigned i = 0; i < 4; ++i) sum[i] = _mm_add_epi32(sum[i], s[i]);
  }
  state = {};
  AddTo(state, sum);
}

LUMR_AVX512 void DigestTwo(Md5State& first, const unsigned char* firstBlock, Md5State& second,
                           const unsigned char* secondBlock) {
  Words a;
  Words b;
  Load(first, a);
  Load(second, b);
  AllSteps(kAllSteps, a, firstBlock, b, secondBlock);
  AddTo(first, a);
  AddTo(second, b);
}

constexpr Md5Kernel kKernel = {DigestBlocks, DigestTwo};

}  // namespace

const Md5Kernel* Avx512Md5Kernel() {
  return Cpu().avx512 ? &kKernel : nullptr;
}

}  // namespace lumr

#else

namespace lumr {

const Md5Kernel* Avx512Md5Kernel() {
  return nullptr;
}

}  // namespace lumr

#endif
