#include "lumrmisc/crypto/blowfish.h"

#include <cstring>
#include <string_view>

#include "lumrmisc/crypto/md5.h"
#include "lumrmisc/platform/memory.h"
#include "lumrmisc/platform/messages.h"

namespace lumr {
namespace {

constexpr std::size_t kBlock = 8;
constexpr int kRounds = 16;

constexpr std::uint32_t kPiWords[] = {
#include "lumrmisc/crypto/blowfish_pi.inc"
};
constexpr std::size_t kKeyWords = kRounds + 2;
static_assert(sizeof kPiWords / sizeof kPiWords[0] == kKeyWords + 4 * 256);

enum : unsigned { kMessageBadFile = 3133, kMessageBadKey = 3134 };

}  // namespace

struct CBlowFish::Tables {
  std::uint32_t key[kKeyWords];
  std::uint32_t box[4][256];

  Tables() { Reset(); }
  ~Tables() { Wipe(this, sizeof *this); }

  void Reset() {
    std::memcpy(key, kPiWords, sizeof key);
    std::memcpy(box, kPiWords + kKeyWords, sizeof box);
  }

  std::uint32_t Mix(std::uint32_t x) const {
    return ((box[0][x >> 24] + box[1][(x >> 16) & 255]) ^ box[2][(x >> 8) & 255]) + box[3][x & 255];
  }

  // Sends kLanes blocks through the rounds at once. One block is a chain of dependent look-ups in
  // which the processor mostly waits; several independent chains fill that time.
  template <int kLanes, bool kForward>
  void Cipher(const unsigned char* in, unsigned char* out) const {
    std::uint32_t left[kLanes];
    std::uint32_t right[kLanes];
    for (int lane = 0; lane < kLanes; ++lane) {
      std::memcpy(&left[lane], in + kBlock * static_cast<std::size_t>(lane), 4);
      std::memcpy(&right[lane], in + kBlock * static_cast<std::size_t>(lane) + 4, 4);
    }
    const auto word = [this](int round) { return key[kForward ? round : kRounds + 1 - round]; };
    for (int round = 0; round < kRounds; round += 2) {
      for (int lane = 0; lane < kLanes; ++lane) left[lane] ^= word(round);
      for (int lane = 0; lane < kLanes; ++lane) right[lane] ^= Mix(left[lane]);
      for (int lane = 0; lane < kLanes; ++lane) right[lane] ^= word(round + 1);
      for (int lane = 0; lane < kLanes; ++lane) left[lane] ^= Mix(right[lane]);
    }
    for (int lane = 0; lane < kLanes; ++lane) {
      left[lane] ^= word(kRounds);
      right[lane] ^= word(kRounds + 1);
      std::memcpy(out + kBlock * static_cast<std::size_t>(lane), &right[lane], 4);
      std::memcpy(out + kBlock * static_cast<std::size_t>(lane) + 4, &left[lane], 4);
    }
  }

  template <bool kForward>
  void CipherBlocks(const unsigned char* in, unsigned char* out, std::size_t count) const {
    constexpr std::size_t kLanes = 4;
    for (; count >= kLanes; count -= kLanes, in += kLanes * kBlock, out += kLanes * kBlock) {
      Cipher<kLanes, kForward>(in, out);
    }
    for (; count > 0; --count, in += kBlock, out += kBlock) Cipher<1, kForward>(in, out);
  }

  template <bool kForward>
  void CipherHalves(std::uint32_t& left, std::uint32_t& right) const {
    unsigned char block[kBlock];
    std::memcpy(block, &left, 4);
    std::memcpy(block + 4, &right, 4);
    Cipher<1, kForward>(block, block);
    std::memcpy(&left, block, 4);
    std::memcpy(&right, block + 4, 4);
  }
};

CBlowFish::CBlowFish() : tables_(std::make_unique<Tables>()) {}

CBlowFish::~CBlowFish() = default;

void CBlowFish::Blowfish_encipher(std::uint32_t& left, std::uint32_t& right) const {
  tables_->CipherHalves<true>(left, right);
}

void CBlowFish::Blowfish_decipher(std::uint32_t& left, std::uint32_t& right) const {
  tables_->CipherHalves<false>(left, right);
}

void CBlowFish::Initialize(const unsigned char* key, int keyLength) {
  if (key == nullptr || keyLength < 1) return;
  Tables& tables = *tables_;
  tables.Reset();
  int at = 0;
  for (std::uint32_t& word : tables.key) {
    std::uint32_t packed = 0;
    for (int i = 0; i < 4; ++i) {
      packed = packed << 8 | key[at];
      at = at + 1 < keyLength ? at + 1 : 0;
    }
    word ^= packed;
  }
  std::uint32_t left = 0;
  std::uint32_t right = 0;
  const auto replace = [&](std::uint32_t* words, std::size_t count) {
    for (std::size_t i = 0; i < count; i += 2) {
      Blowfish_encipher(left, right);
      words[i] = left;
      words[i + 1] = right;
    }
  };
  replace(tables.key, kKeyWords);
  for (auto& box : tables.box) replace(box, 256);
}

std::uint32_t CBlowFish::GetOutputLength(std::uint32_t length) {
  return (length + 7) & ~7u;
}

std::uint32_t CBlowFish::Encode(const unsigned char* in, unsigned char* out,
                                std::uint32_t length) const {
  const std::uint32_t outputLength = GetOutputLength(length);
  if (in == nullptr || out == nullptr || outputLength == 0) return 0;
  const std::size_t whole = length / kBlock;
  const std::size_t rest = length % kBlock;
  unsigned char last[kBlock] = {};
  if (rest > 0) std::memcpy(last, in + whole * kBlock, rest);
  tables_->CipherBlocks<true>(in, out, whole);
  if (rest > 0) tables_->CipherBlocks<true>(last, out + whole * kBlock, 1);
  Wipe(last, sizeof last);
  return outputLength;
}

void CBlowFish::Decode(const unsigned char* in, unsigned char* out, std::uint32_t length) const {
  if (in == nullptr || out == nullptr || length == 0) return;
  tables_->CipherBlocks<false>(in, out, (length - 1) / kBlock + 1);
}

namespace {

// Sets the key that a pass phrase stands for.
void SetPassPhrase(CBlowFish& cipher, const char* passPhrase) {
  unsigned char key[16];
  MD5String(passPhrase, key);
  cipher.Initialize(key, sizeof key);
  Wipe(key, sizeof key);
}

bool IsEmptyText(const char* text) {
  return text == nullptr || *text == '\0';
}

unsigned char* BytesOf(CBuffer& buffer) {
  return reinterpret_cast<unsigned char*>(buffer.GetBuffer());
}

}  // namespace

int EncodeBlowFish(const char* passPhrase, const unsigned char* data, int length, CBuffer& out) {
  out.Empty();
  if (IsEmptyText(passPhrase)) {
    out.Add(data, length);
    return 0;
  }
  if (data == nullptr || length < 1) return 1;
  // All that can fail comes first: nothing throws while the plain data stand in out.
  CBlowFish cipher;
  SetPassPhrase(cipher, passPhrase);
  if (length > INT32_MAX - 64 - 12) throw std::bad_alloc();
  const auto stored = static_cast<std::uint32_t>(length);
  const std::uint32_t total = CBlowFish::GetOutputLength(stored + 4);
  out.GetBuffer(static_cast<int>(total));
  unsigned char* const begin = BytesOf(out);
  std::memset(begin + total - kBlock, 0, kBlock);
  std::memcpy(begin, &stored, 4);
  std::memcpy(begin + 4, data, stored);
  cipher.Encode(begin, begin, total);
  out.ReleaseBuffer(static_cast<int>(total));
  return 1;
}

int DecodeBlowFish(const char* passPhrase, const unsigned char* data, int length, CBuffer& out,
                   CStringA& message) {
  if (IsEmptyText(passPhrase)) {
    message = MessageText(kMessageBadKey);
    return 0;
  }
  out.Empty();
  if (length % static_cast<int>(kBlock) != 0) {
    message = MessageText(kMessageBadFile);
    return 0;
  }
  if (data == nullptr || length < 1) return 1;
  CBlowFish cipher;
  SetPassPhrase(cipher, passPhrase);
  // The first block tells the length, so that a wrong pass phrase costs one block and the rest
  // lands in its place without being moved.
  unsigned char first[kBlock];
  cipher.Decode(data, first, kBlock);
  std::uint32_t stored;
  std::memcpy(&stored, first, sizeof stored);
  const std::uint64_t expected = (static_cast<std::uint64_t>(stored) + 4 + 7) / 8 * 8;
  if (expected != static_cast<std::uint64_t>(length)) {
    Wipe(first, sizeof first);
    message = MessageText(kMessageBadKey);
    return 0;
  }
  out.GetBuffer(length);
  std::memcpy(BytesOf(out), first + 4, 4);
  Wipe(first, sizeof first);
  if (length > static_cast<int>(kBlock)) {
    cipher.Decode(data + kBlock, BytesOf(out) + 4, static_cast<std::uint32_t>(length) - 8);
  }
  out.ReleaseBuffer(static_cast<int>(stored));
  return 1;
}

}  // namespace lumr
