#include "lumrmisc/crypto/md5.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>
#include <utility>

#include "lumrmisc/platform/memory.h"

namespace lumr {
namespace {

using State = std::array<std::uint32_t, 4>;

constexpr std::size_t kBlock = 64;  // bytes

constexpr State kStart = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};

// floor(2^32 * |sin(i + 1)|), i = 0..63 (RFC 1321, 3.4).
constexpr std::uint32_t kSine[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

constexpr int kRotation[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// Which word of the block step i of a round takes: (factor * i + offset) mod 16.
constexpr unsigned kWordFactor[4] = {1, 5, 3, 7};
constexpr unsigned kWordOffset[4] = {0, 1, 5, 0};

std::uint32_t LoadWord(const unsigned char* block, unsigned index) {
  std::uint32_t word;
  std::memcpy(&word, block + index * sizeof word, sizeof word);
  return word;
}

// One of the 64 steps. The chain from one step to the next is what MD5's speed hangs on: all that
// does not depend on b is added first, and in the second round the two halves of the choice,
// which share no bit, are added apart for the same reason.
template <unsigned kStep>
inline void Step(std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d,
                 const unsigned char* block) {
  constexpr unsigned kRound = kStep / 16;
  a += LoadWord(block, (kWordFactor[kRound] * kStep + kWordOffset[kRound]) % 16) + kSine[kStep];
  if constexpr (kRound == 0) a += d ^ (b & (c ^ d));
  if constexpr (kRound == 1) {
    a += c & ~d;
    a += b & d;
  }
  if constexpr (kRound == 2) a += b ^ (c ^ d);
  if constexpr (kRound == 3) a += c ^ (b | ~d);
  a = std::rotl(a, kRotation[kRound][kStep % 4]) + b;
}

// A digest that goes through the steps: its block, and its state in and out.
struct Lane {
  State& state;
  const unsigned char* block;
};

// Takes one or more independent digests through all steps side by side: each is a chain in which
// the processor mostly waits, so that two take little longer than one.
template <typename... Lanes, unsigned... kSteps>
inline void AllSteps(std::integer_sequence<unsigned, kSteps...>, Lanes... lanes) {
  const auto step = [](auto number, const Lane& lane) {
    constexpr unsigned kStep = number;
    constexpr unsigned kA = (64 - kStep) % 4;  // the state turns by one place a step
    State& s = lane.state;
    Step<kStep>(s[kA], s[(kA + 1) % 4], s[(kA + 2) % 4], s[(kA + 3) % 4], lane.block);
  };
  const auto stepAll = [&](auto number) { (step(number, lanes), ...); };
  (stepAll(std::integral_constant<unsigned, kSteps>()), ...);
}

constexpr std::make_integer_sequence<unsigned, 64> kAllSteps;

void DigestBlocks(State& state, const unsigned char* blocks, std::size_t count) {
  State sum = state;
  for (; count > 0; --count, blocks += kBlock) {
    State s = sum;
    AllSteps(kAllSteps, Lane{s, blocks});
    for (unsigned i = 0; i < 4; ++i) sum[i] += s[i];
  }
  state = sum;
}

// Digests one first block each into two states.
void DigestTwoBlocks(State& first, const unsigned char* firstBlock, State& second,
                     const unsigned char* secondBlock) {
  State a = kStart;
  State b = kStart;
  AllSteps(kAllSteps, Lane{a, firstBlock}, Lane{b, secondBlock});
  for (unsigned i = 0; i < 4; ++i) {
    first[i] = kStart[i] + a[i];
    second[i] = kStart[i] + b[i];
  }
}

// Digests the rest behind the last whole block, the padding and the length of the whole in bytes.
void DigestTail(State& state, const unsigned char* rest, std::size_t restLength,
                std::uint64_t totalLength) {
  unsigned char tail[2 * kBlock] = {};
  std::memcpy(tail, rest, restLength);
  tail[restLength] = 0x80;
  const std::size_t blocks = restLength + 9 <= kBlock ? 1 : 2;
  const std::uint64_t bits = totalLength * 8;
  std::memcpy(tail + blocks * kBlock - sizeof bits, &bits, sizeof bits);
  DigestBlocks(state, tail, blocks);
  Wipe(tail, sizeof tail);
}

}  // namespace

Md5::~Md5() {
  Wipe(this, sizeof *this);
}

void Md5::Init() {
  state_ = kStart;
  length_ = 0;
  // Until the first Update the block holds nothing that is read; the compiler cannot see that.
  block_ = {};
}

void Md5::Update(const void* data, std::size_t length) {
  if (data == nullptr || length == 0) return;
  const auto* bytes = static_cast<const unsigned char*>(data);
  const std::size_t used = length_ % kBlock;
  length_ += length;
  if (used > 0) {
    const std::size_t taken = std::min(length, kBlock - used);
    std::memcpy(block_.data() + used, bytes, taken);
    if (used + taken < kBlock) return;
    DigestBlocks(state_, block_.data(), 1);
    bytes += taken;
    length -= taken;
  }
  const std::size_t rest = length % kBlock;
  DigestBlocks(state_, bytes, length / kBlock);
  std::memcpy(block_.data(), bytes + (length - rest), rest);
}

void Md5::Final(unsigned char digest[16]) {
  DigestTail(state_, block_.data(), length_ % kBlock, length_);
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
  unsigned char innerPad[kBlock] = {};
  unsigned char outerPad[kBlock];
  State inner;
  State outer;
  unsigned char innerDigest[16];

  ~HmacState() { Wipe(this, sizeof *this); }

  void SetKey(std::span<const unsigned char> key) {
    if (key.size() > kBlock) {
      MD5Void(key.data(), static_cast<unsigned>(key.size()), innerPad);
    } else {
      std::copy(key.begin(), key.end(), innerPad);
    }
    for (std::size_t i = 0; i < kBlock; ++i) {
      outerPad[i] = innerPad[i] ^ 0x5c;
      innerPad[i] ^= 0x36;
    }
    DigestTwoBlocks(inner, innerPad, outer, outerPad);
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
  const std::size_t rest = bytes.size() % kBlock;
  DigestBlocks(hmac.inner, bytes.data(), bytes.size() / kBlock);
  DigestTail(hmac.inner, bytes.data() + (bytes.size() - rest), rest, kBlock + bytes.size());
  std::memcpy(hmac.innerDigest, hmac.inner.data(), sizeof hmac.innerDigest);
  DigestTail(hmac.outer, hmac.innerDigest, sizeof hmac.innerDigest,
             kBlock + sizeof hmac.innerDigest);
  std::memcpy(digest, hmac.outer.data(), 16);
}

void c5(const unsigned char* text, int textLength, const unsigned char* key, int keyLength,
        unsigned char digest[16]) {
  hmac_md5(text, textLength, key, keyLength, digest);
}

}  // namespace lumr
