// Against two independent libraries, on random input.
#include <gtest/gtest.h>
#include <nettle/blowfish.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include "crypto/hex.h"
#include "lumrmisc/crypto/blowfish.h"
#include "lumrmisc/crypto/md5.h"
#include "lumrmisc/platform/cpu_internal.h"

namespace lumr {
namespace {

constexpr int kRuns = 10000;
constexpr unsigned kSeed = 6150;

TEST(Peers, AgreeOnMd5AndItsHmac) {
  std::mt19937 random(kSeed);
  for (int run = 0; run < kRuns; ++run) {
    using internal::CpuLevel;
    internal::LimitCpu(run % 2 == 0 ? CpuLevel::kAll : CpuLevel::kPortable);
    const std::string text = RandomBytes(random, random() % 301);
    const std::string key = RandomBytes(random, random() % 101);
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

TEST(Peers, AgreeOnBlowfish) {
  std::mt19937 random(kSeed);
  for (int run = 0; run < kRuns; ++run) {
    const std::string key = RandomBytes(random, 8 + random() % 49);  // the peer takes no others
    const std::string plain = RandomBytes(random, random() % 16 * 8);
    CBlowFish ours;
    ours.Initialize(Bytes(key), static_cast<int>(key.size()));
    std::string enciphered(plain.size(), '\0');
    const std::string swapped = SwapWords(plain);
    ours.Encode(Bytes(swapped), Bytes(enciphered), static_cast<std::uint32_t>(plain.size()));
    blowfish_ctx theirs;
    ASSERT_EQ(blowfish_set_key(&theirs, key.size(), Bytes(key)), 1);
    std::string expected(plain.size(), '\0');
    blowfish_encrypt(&theirs, plain.size(), Bytes(expected), Bytes(plain));
    ASSERT_EQ(SwapWords(enciphered), expected) << "seed " << kSeed << ", run " << run;
  }
}

}  // namespace
}  // namespace lumr
