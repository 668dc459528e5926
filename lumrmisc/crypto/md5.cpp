#include "lumrmisc/crypto/md5.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>
#include <utility>

#include "lumrmisc/crypto/md5_internal.h"
#include "lumrmisc/platform/memory.h"

namespace lumr {
namespace {

// One of the 64 steps. The chain from one step to the next is what MD5's speed hangs on: all that
// does not depend on b is added first, and in the second round the two halves of the choice,
// which share no bit, are added apart for the same reason.
template <unsigned kStep>
inline void Step(std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d,
                 const unsigned char* block) {
  constexpr unsigned kRound = kStep / 16;
  a += Md5Addend<kStep>(block);
  if constexpr (kRound == 0) a += d ^ (b & (c ^ d));
  if constexpr (kRound == 1) {
    a += c & ~d;
    a += b & d;
  }
  if constexpr (kRound == 2) a += b ^ (c ^ d);
  if constexpr (kRound == 3) a += c ^ (b | ~d);
  a = std::rotl(a, Md5Rotation(kStep)) + b;
}

// A digest that goes through the steps: its block, and its state in and out.
struct Lane {
  Md5State& state;
  const unsigned char* block;
};

// Takes one or more independent digests through all steps side by side: each is a chain in which
// the processor mostly waits, so that two take little longer than one.
template <typename... Lanes, unsigned... kSteps>
inline void AllSteps(std::integer_sequence<unsigned, kSteps...>, Lanes... lanes) {
  const auto step = [](auto number, const Lane& lane) {
    constexpr unsigned kStep = number;
    constexpr unsigned kA = (64 - kStep) % 4;  // the state turns by one place a step
    Md5State& s = lane.state;
    Step<kStep>(s[kA], s[(kA + 1) % 4], s[(kA + 2) % 4], s[(kA + 3) % 4], lane.block);
  };
  const auto stepAll = [&](auto number) { (step(number, lanes), ...); };
  (stepAll(std::integral_constant<unsigned, kSteps>()), ...);
}

constexpr std::make_integer_sequence<unsigned, 64> kAllSteps;

void PlainDigestBlocks(Md5State& state, const unsigned char* blocks, std::size_t count) {
  Md5State sum = state;
  for (; count > 0; --count, blocks += kMd5Block) {
    Md5State s = sum;
    AllSteps(kAllSteps, Lane{s, blocks});
    for (unsigned i = 0; i < 4; ++i) sum[i] += s[i];
  }
  state = sum;
}

void PlainDigestTwo(Md5State& first, const unsigned char* firstBlock, Md5State& second,
                    const unsigned char* secondBlock) {
  Md5State a = first;
  Md5State b = second;
  AllSteps(kAllSteps, Lane{a, firstBlock}, Lane{b, secondBlock});
  for (unsigned i = 0; i < 4; ++i) {
    first[i] += a[i];
    second[i] += b[i];
  }
}

constexpr Md5Kernel kPlainKernel = {PlainDigestBlocks, PlainDigestTwo};

const Md5Kernel& Kernel() {
  const Md5Kernel* const avx512 = Avx512Md5Kernel();
  return avx512 != nullptr ? *avx512 : kPlainKernel;
}

void DigestBlocks(Md5State& state, const unsigned char* blocks, std::size_t count) {
  if (count > 0) Kernel().digestBlocks(state, blocks, count);
}

// Digests the rest behind the last whole block, the padding and the length of the whole in bytes.
void DigestTail(Md5State& state, const unsigned char* rest, std::size_t restLength,
                std::uint64_t totalLength) {
  unsigned char tail[2 * kMd5Block] = {};
  std::memcpy(tail, rest, restLength);
  tail[restLength] = 0x80;
  const std::size_t blocks = restLength + 9 <= kMd5Block ? 1 : 2;
  const std::uint64_t bits = totalLength * 8;
  std::memcpy(tail + blocks * kMd5Block - sizeof bits, &bits, sizeof bits);
  DigestBlocks(state, tail, blocks);
  Wipe(tail, sizeof tail);
}

}  // namespace

Md5::~Md5() {
  Wipe(this, sizeof *this);
}

void Md5::Init() {
  state_ = kMd5Start;
  length_ = 0;
  // Until the first Update the block holds nothing that is read; the compiler cannot see that.
  block_ = {};
}

void Md5::Update(const void* data, std::size_t length) {
  if (data == nullptr || length == 0) return;
  const auto* bytes = static_cast<const unsigned char*>(data);
  const std::size_t used = length_ % kMd5Block;
  length_ += length;
  if (used > 0) {
    const std::size_t taken = std::min(length, kMd5Block - used);
    std::memcpy(block_.data() + used, bytes, taken);
    if (used + taken < kMd5Block) return;
    DigestBlocks(state_, block_.data(), 1);
    bytes += taken;
    length -= taken;
  }
  const std::size_t rest = length % kMd5Block;
  DigestBlocks(state_, bytes, length / kMd5Block);
  std::memcpy(block_.data(), bytes + (length - rest), rest);
}

void Md5::Final(unsigned char digest[16]) {
  DigestTail(state_, block_.data(), length_ % kMd5Block, length_);
  std::memcpy(digest, state_.data(), 16);
  Init();
}

void MD5Void(const void* data, unsigned int length, unsigned char digest[16]) {
  Md5 md5;
  md5.Update(data, length);
  md5.Final(digest);
}

void MD5String(const char* text, unsigned char digest[16]) {
  Md5 md5;
  md5.Update(text, text == nullptr ? 0 : std::strlen(text));
  md5.Final(digest);
}

namespace {

// All that an HMAC is computed by, in one piece to be wiped.
struct HmacState {
  unsigned char innerPad[kMd5Block] = {};
  unsigned char outerPad[kMd5Block];
  Md5State inner = kMd5Start;
  Md5State outer = kMd5Start;
  unsigned char innerDigest[16];

  ~HmacState() { Wipe(this, sizeof *this); }

  void SetKey(std::span<const unsigned char> key) {
    if (key.size() > kMd5Block) {
      MD5Void(key.data(), static_cast<unsigned>(key.size()), innerPad);
    } else {
      std::copy(key.begin(), key.end(), innerPad);
    }
    for (std::size_t i = 0; i < kMd5Block; ++i) {
      outerPad[i] = innerPad[i] ^ 0x5c;
      innerPad[i] ^= 0x36;
    }
    Kernel().digestTwo(inner, innerPad, outer, outerPad);
  }
};

std::span<const unsigned char> CountedBytes(const unsigned char* bytes, int length) {
  static constexpr unsigned char kNothing = 0;
  if (bytes == nullptr || length < 1) return {&kNothing, 0};
  return {bytes, static_cast<std::size_t>(length)};
}

}  // namespace

void hmac_md5(const unsigned char* text, int textLength, const unsigned char* key, int keyLength,
              unsigned char digest[16]) {
  HmacState hmac;
  hmac.SetKey(CountedBytes(key, keyLength));
  const auto bytes = CountedBytes(text, textLength);
  const std::size_t rest = bytes.size() % kMd5Block;
  DigestBlocks(hmac.inner, bytes.data(), bytes.size() / kMd5Block);
  DigestTail(hmac.inner, bytes.data() + (bytes.size() - rest), rest, kMd5Block + bytes.size());
  std::memcpy(hmac.innerDigest, hmac.inner.data(), sizeof hmac.innerDigest);
  DigestTail(hmac.outer, hmac.innerDigest, sizeof hmac.innerDigest,
             kMd5Block + sizeof hmac.innerDigest);
  std::memcpy(digest, hmac.outer.data(), 16);
}

void c5(const unsigned char* text, int textLength, const unsigned char* key, int keyLength,
        unsigned char digest[16]) {
  hmac_md5(text, textLength, key, keyLength, digest);
}

}  // namespace lumr
