#include "lumrmisc/crypto/blowfish.h"

#include <gtest/gtest.h>

#include "crypto/hex.h"

namespace lumr {
namespace {

TEST(BlowFish, GivesThePublishedVectorsInItsWordOrder) {
  const struct {
    const char *key, *plain, *cipher;
  } cases[] = {
      {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
      {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
      {"7CA110454A1A6E57", "01A1D6D039776742", "59C68245EB05282B"},
      {"F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344556677", "FEDCBA9876543210", "05044B62FA52D080"},
      {"F0", "FEDCBA9876543210", "F9AD597C49DB005E"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.cipher);
    const std::string key = FromHex(c.key);
    CBlowFish cipher;
    cipher.Initialize(Bytes(key), static_cast<int>(key.size()));
    std::string block = SwapWords(FromHex(c.plain));
    EXPECT_EQ(cipher.Encode(Bytes(block), Bytes(block), 8), 8u);
    EXPECT_EQ(SwapWords(block), FromHex(c.cipher));
    cipher.Decode(Bytes(block), Bytes(block), 8);
    EXPECT_EQ(SwapWords(block), FromHex(c.plain));
    EXPECT_EQ(cipher.Encode(nullptr, Bytes(block), 8) + cipher.Encode(Bytes(block), nullptr, 8),
              0u);
    EXPECT_EQ(SwapWords(block), FromHex(c.plain));
  }
}

// Blocks that go through the rounds together must come out as each alone.
TEST(BlowFish, TreatsEveryBlockAlike) {
  std::mt19937 random(20);
  const std::string key = "key";
  CBlowFish cipher;
  cipher.Initialize(Bytes(key), 3);
  for (std::size_t length = 0; length <= 100; ++length) {
    const std::string plain = RandomBytes(random, length);
    const std::size_t padded = (length + 7) / 8 * 8;
    ASSERT_EQ(CBlowFish::GetOutputLength(static_cast<std::uint32_t>(length)), padded);
    std::string whole(padded, '\0');
    EXPECT_EQ(cipher.Encode(Bytes(plain), Bytes(whole), static_cast<std::uint32_t>(length)),
              padded);
    std::string alone = plain + std::string(padded - length, '\0');
    for (std::size_t at = 0; at < padded; at += 8) {
      cipher.Encode(Bytes(alone) + at, Bytes(alone) + at, 8);
    }
    EXPECT_EQ(whole, alone) << length;
    std::string back(padded, '\0');
    cipher.Decode(Bytes(whole), Bytes(back), static_cast<std::uint32_t>(padded));
    EXPECT_EQ(back.substr(0, length), plain) << length;
  }
}

TEST(EncodeBlowFish, IsUndoneByItsPassPhraseOnly) {
  CStringA message;
  std::mt19937 random(7);
  for (int length = 1; length < 300; length += length < 20 ? 1 : 17) {
    const std::string plain = RandomBytes(random, static_cast<std::size_t>(length));
    CBuffer stored;
    ASSERT_EQ(EncodeBlowFish("pass phrase", Bytes(plain), length, stored), 1);
    EXPECT_EQ(stored.GetLength(), (length + 4 + 7) / 8 * 8);
    const std::string enciphered(stored.Bytes());
    CBuffer back;
    ASSERT_EQ(DecodeBlowFish("pass phrase", Bytes(enciphered), stored.GetLength(), back, message),
              1);
    EXPECT_EQ(back.Bytes(), plain);
    EXPECT_EQ(DecodeBlowFish("pass phrasE", Bytes(enciphered), stored.GetLength(), back, message),
              0);
    EXPECT_EQ(message.substr(0, 4), "\x88\xc3\x8d\x86");  // 暗号 in Shift_JIS
    if (stored.GetLength() > 8) {
      EXPECT_EQ(
          DecodeBlowFish("pass phrase", Bytes(enciphered), stored.GetLength() - 8, back, message),
          0);
    }
  }
}

TEST(EncodeBlowFish, AnswersBadInput) {
  const std::string data = "data";
  CBuffer out("before");
  EXPECT_EQ(EncodeBlowFish("", Bytes(data), 4, out), 0);
  EXPECT_EQ(out.Bytes(), "data");
  EXPECT_EQ(EncodeBlowFish(nullptr, Bytes(data), 4, out), 0);
  EXPECT_EQ(EncodeBlowFish("key", nullptr, 4, out), 1);
  EXPECT_TRUE(out.IsEmpty());
  EXPECT_EQ(EncodeBlowFish("key", Bytes(data), 0, out), 1);
  EXPECT_TRUE(out.IsEmpty());

  CStringA message;
  out = "before";
  EXPECT_EQ(DecodeBlowFish("", Bytes(data), 4, out, message), 0);
  EXPECT_EQ(out.Bytes(), "before");
  const CStringA wrongKey = message;
  EXPECT_EQ(DecodeBlowFish("key", Bytes(std::string(12, 'x')), 12, out, message), 0);
  EXPECT_TRUE(out.IsEmpty());
  EXPECT_NE(message, wrongKey);
  EXPECT_FALSE(message.empty());
  EXPECT_EQ(DecodeBlowFish("key", nullptr, 8, out, message), 1);
  EXPECT_EQ(DecodeBlowFish("key", Bytes(data), 0, out, message), 1);
}

}  // namespace
}  // namespace lumr
