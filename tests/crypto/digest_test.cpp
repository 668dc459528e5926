#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>
#include <vector>

#include "crypto/hex.h"
#include "lumrmisc/crypto/legacycipher_internal.h"
#include "lumrmisc/crypto/md5.h"
#include "lumrmisc/crypto/pseudorandom.h"
#include "lumrmisc/platform/cpu_internal.h"

namespace lumr {
namespace {

std::string Md5Hex(const std::string& text) {
  unsigned char digest[16];
  MD5Void(text.data(), static_cast<unsigned>(text.size()), digest);
  return ToHex(digest, sizeof digest);
}

std::string HmacHex(const std::string& key, const std::string& text) {
  unsigned char digest[16];
  c5(Bytes(text), static_cast<int>(text.size()), Bytes(key), static_cast<int>(key.size()), digest);
  return ToHex(digest, sizeof digest);
}

// Out of the test suite of RFC 1321, A.5: no block, one and two.
TEST(Md5, GivesThePublishedDigests) {
  const struct {
    const char *text, *digest;
  } cases[] = {
      {"", "d41d8cd98f00b204e9800998ecf8427e"},
      {"abc", "900150983cd24fb0d6963f7d28e17f72"},
      {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
       "57edf4a22be3c955ac49da2e2107b67a"},
  };
  for (const auto& c : cases) {
    internal::LimitCpu(internal::CpuLevel::kPortable);
    EXPECT_EQ(Md5Hex(c.text), c.digest) << c.text;
    internal::LimitCpu(internal::CpuLevel::kAll);
    EXPECT_EQ(Md5Hex(c.text), c.digest) << c.text;
    unsigned char digest[16];
    MD5String(c.text, digest);
    EXPECT_EQ(ToHex(digest, 16), c.digest) << c.text;
  }
  unsigned char digest[16];
  MD5String(nullptr, digest);
  EXPECT_EQ(ToHex(digest, 16), "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(Md5, IsTheSameHoweverTheTextIsCut) {
  std::string text;
  for (int i = 0; i < 200; ++i) text += static_cast<char>(i * 37);
  for (std::size_t length = 0; length <= text.size(); length += 7) {
    const std::string whole = Md5Hex(text.substr(0, length));
    Md5 md5;
    for (std::size_t piece = 1; piece < 140; piece += 9) {
      for (std::size_t at = 0; at < length; at += piece) {
        md5.Update(text.data() + at, std::min(piece, length - at));
      }
      unsigned char digest[16];
      md5.Final(digest);  // and begins the next one
      EXPECT_EQ(ToHex(digest, 16), whole) << length << " bytes in pieces of " << piece;
    }
  }
}

// Out of RFC 2202, 2: keys below and above a block.
TEST(HmacMd5, GivesThePublishedDigests) {
  const struct {
    std::string key, text;
    const char* digest;
  } cases[] = {
      {"Jefe", "what do ya want for nothing?", "750c783e6ab0b503eaa86e310a5db738"},
      {std::string(16, '\xaa'), std::string(50, '\xdd'), "56be34521d144c88dbb8c733f0e8b3f6"},
      {std::string(80, '\xaa'),
       "Test Using Larger Than Block-Size Key and Larger Than One Block-Size Data",
       "6f630fad67cda0ee1fb1f562db3aa53e"},
  };
  for (const auto& c : cases) EXPECT_EQ(HmacHex(c.key, c.text), c.digest) << c.text;
  unsigned char digest[16];
  hmac_md5(nullptr, 5, nullptr, -1, digest);
  EXPECT_EQ(ToHex(digest, 16), HmacHex("", ""));
}

TEST(Sha1, GivesThePublishedDigests) {
  const struct {
    std::string text;
    const char* digest;
  } cases[] = {
      {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
      {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
      {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ToHex(Sha1(c.text).data(), 20), c.digest) << c.text.size() << " bytes";
  }
}

// RFC 6229 and the first vectors published for the cipher.
TEST(Rc4, GivesThePublishedKeyStream) {
  const struct {
    const char *key, *stream;
  } cases[] = {
      {"0102030405", "b2396305f03dc027ccc3524a0a1118a8"},
      {"0102030405060708090a0b0c0d0e0f10", "9ac7cc9a609d1ef7b2932899cde41b97"},
      {"0123456789abcdef", "7494c2e7104b0879"},
  };
  for (const auto& c : cases) {
    std::string bytes(std::string_view(c.stream).size() / 2, '\0');
    Rc4(FromHex(c.key), reinterpret_cast<unsigned char*>(bytes.data()), bytes.size());
    EXPECT_EQ(ToHex(bytes.data(), bytes.size()), c.stream) << c.key;
  }
}

TEST(GetRandom, StaysInItsRangeAndVaries) {
  std::set<int> seen;
  for (int i = 0; i < 1000; ++i) {
    const int number = GetRandom();
    ASSERT_TRUE(number >= 0 && number <= 32767) << number;
    seen.insert(number);
  }
  EXPECT_GT(seen.size(), 900u);
}

// Threads that start together, as the workers of a batch do.
TEST(GetRandom, DiffersFromThreadToThread) {
  std::vector<std::vector<int>> drawn(8);
  std::vector<std::thread> threads;
  for (auto& numbers : drawn) {
    threads.emplace_back([&numbers] {
      for (int i = 0; i < 8; ++i) numbers.push_back(GetRandom());
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ((std::set<std::vector<int>>(drawn.begin(), drawn.end()).size()), drawn.size());
}

}  // namespace
}  // namespace lumr
