#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <numeric>

#include "lumrmisc/crypto/legacycipher_internal.h"
#include "lumrmisc/platform/memory.h"

namespace lumr {
namespace {

using State = std::array<std::uint32_t, 5>;

// What the rounds mix by: the function of three words and its constant, each for 20 steps.
std::uint32_t Choose(int step, const State& s) {
  switch (step / 20) {
    case 0:
      return ((s[1] & s[2]) | (~s[1] & s[3])) + 0x5a827999;
    case 1:
      return (s[1] ^ s[2] ^ s[3]) + 0x6ed9eba1;
    case 2:
      return ((s[1] & s[2]) | (s[1] & s[3]) | (s[2] & s[3])) + 0x8f1bbcdc;
    default:
      return (s[1] ^ s[2] ^ s[3]) + 0xca62c1d6;
  }
}

void Sha1Block(State& sum, const unsigned char* block) {
  std::uint32_t words[80];
  for (int i = 0; i < 16; ++i) {
    words[i] = static_cast<std::uint32_t>(block[4 * i]) << 24 |
               static_cast<std::uint32_t>(block[4 * i + 1]) << 16 |
               static_cast<std::uint32_t>(block[4 * i + 2]) << 8 | block[4 * i + 3];
  }
  for (int i = 16; i < 80; ++i) {
    words[i] = std::rotl(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
  }
  State s = sum;
  for (int i = 0; i < 80; ++i) {
    const std::uint32_t next = std::rotl(s[0], 5) + Choose(i, s) + s[4] + words[i];
    s = {next, s[0], std::rotl(s[1], 30), s[2], s[3]};
  }
  for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += s[i];
  Wipe(words, sizeof words);
}

}  // namespace

std::array<unsigned char, 20> Sha1(std::string_view text) {
  State sum = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t whole = text.size() / 64 * 64;
  for (std::size_t i = 0; i < whole; i += 64) Sha1Block(sum, bytes + i);

  unsigned char tail[128] = {};
  const std::size_t rest = text.size() - whole;
  std::copy_n(bytes + whole, rest, tail);
  tail[rest] = 0x80;
  const std::size_t end = rest < 56 ? 64 : 128;
  std::uint64_t bits = static_cast<std::uint64_t>(text.size()) * 8;
  for (std::size_t i = end; bits > 0; bits >>= 8) tail[--i] = static_cast<unsigned char>(bits);
  for (std::size_t i = 0; i < end; i += 64) Sha1Block(sum, tail + i);
  Wipe(tail, sizeof tail);

  std::array<unsigned char, 20> digest;
  for (std::size_t i = 0; i < digest.size(); ++i) {
    digest[i] = static_cast<unsigned char>(sum[i / 4] >> (24 - i % 4 * 8));
  }
  Wipe(&sum, sizeof sum);
  return digest;
}

void Rc4(std::string_view key, unsigned char* bytes, std::size_t length) {
  unsigned char box[256];
  std::iota(std::begin(box), std::end(box), static_cast<unsigned char>(0));
  unsigned char j = 0;
  for (std::size_t i = 0; i < 256; ++i) {
    j = static_cast<unsigned char>(j + box[i] + static_cast<unsigned char>(key[i % key.size()]));
    std::swap(box[i], box[j]);
  }
  unsigned char x = 0;
  unsigned char y = 0;
  for (std::size_t i = 0; i < length; ++i) {
    y = static_cast<unsigned char>(y + box[++x]);
    std::swap(box[x], box[y]);
    bytes[i] ^= box[static_cast<unsigned char>(box[x] + box[y])];
  }
  Wipe(box, sizeof box);
}

}  // namespace lumr
