// Against two independent libraries, on random input.
#include <gtest/gtest.h>
#include <nettle/blowfish.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <random>

#include "crypto/hex.h"
#include "lumrmisc/crypto/blowfish.h"
#include "lumrmisc/crypto/md5.h"
#include "lumrmisc/platform/cpu_internal.h"

namespace lumr {
namespace {

constexpr int kRuns = 10000;
constexpr unsigned kSeed = 6150;

std::string RandomBytes(std::mt19937& random, std::size_t most) {
  std::string bytes(random() % (most + 1), '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

const unsigned char* Bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

TEST(Peers, AgreeOnMd5AndItsHmac) {
  std::mt19937 random(kSeed);
  for (int run = 0; run < kRuns; ++run) {
    using internal::CpuLevel;
    internal::LimitCpu(run % 2 == 0 ? CpuLevel::kAll : CpuLevel::kPortable);
    const std::string text = RandomBytes(random, 300);
    const std::string key = RandomBytes(random, 100);
    unsigned char ours[16];
    unsigned char theirs[16];
    unsigned length = 16;
    MD5Void(text.data(), static_cast<unsigned>(text.size()), ours);
    ASSERT_EQ(EVP_Digest(text.data(), text.size(), theirs, &length, EVP_md5(), nullptr), 1);
    ASSERT_EQ(ToHex(ours, 16), ToHex(theirs, 16)) << "seed " << kSeed << ", run " << run;
    c5(Bytes(text), static_cast<int>(text.size()), Bytes(key), static_cast<int>(key.size()), ours);
    HMAC(EVP_md5(), key.data(), static_cast<int>(key.size()), Bytes(text), text.size(), theirs,
         &length);
    ASSERT_EQ(ToHex(ours, 16), ToHex(theirs, 16)) << "seed " << kSeed << ", run " << run;
  }
  internal::LimitCpu(internal::CpuLevel::kAll);
}

std::string SwapWords(std::string bytes) {
  for (std::size_t i = 0; i + 3 < bytes.size(); i += 4) {
    std::swap(bytes[i], bytes[i + 3]);
    std::swap(bytes[i + 1], bytes[i + 2]);
  }
  return bytes;
}

TEST(Peers, AgreeOnBlowfish) {
  std::mt19937 random(kSeed);
  for (int run = 0; run < kRuns; ++run) {
    std::string key = RandomBytes(random, 48);
    key.resize(key.size() + 8, 'k');  // the peer takes keys of 8 to 56 bytes
    std::string plain = RandomBytes(random, 120);
    plain.resize(plain.size() / 8 * 8);
    CBlowFish ours;
    ours.Initialize(Bytes(key), static_cast<int>(key.size()));
    std::string enciphered(plain.size(), '\0');
    const std::string swapped = SwapWords(plain);
    ours.Encode(Bytes(swapped), reinterpret_cast<unsigned char*>(enciphered.data()),
                static_cast<std::uint32_t>(plain.size()));
    blowfish_ctx theirs;
    ASSERT_EQ(blowfish_set_key(&theirs, key.size(), Bytes(key)), 1);
    std::string expected(plain.size(), '\0');
    blowfish_encrypt(&theirs, plain.size(), reinterpret_cast<unsigned char*>(expected.data()),
                     Bytes(plain));
    ASSERT_EQ(SwapWords(enciphered), expected) << "seed " << kSeed << ", run " << run;
  }
}

}  // namespace
}  // namespace lumr
