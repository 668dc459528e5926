#include "lumrmisc/crypto/passwordtext.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "lumrmisc/crypto/blowfish.h"
#include "lumrmisc/crypto/legacycipher_internal.h"
#include "lumrmisc/crypto/passphrase_internal.h"
#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/platform/files.h"

namespace lumr {
namespace {

std::string Decrypted(const char* text) {
  CBuffer out("before");
  CStringA message = "before";
  EXPECT_EQ(DecryptText(text, out, message), 1) << text;
  EXPECT_TRUE(message.empty());
  return std::string(out.Bytes());
}

std::string Base64Of(const std::string& bytes) {
  CBuffer out;
  EncodeBase64(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()),
               0, out);
  return std::string(out.Bytes());
}

TEST(EncryptText, IsOnePrintableLineThatReadsBack) {
  for (const std::string secret : {"abc", "", "7=1", "=", "secret\nsecond line", "\x83\x5c\x95\x5c",
                                   "long enough for several blocks"}) {
    CBuffer stored;
    CStringA message;
    ASSERT_EQ(EncryptText(secret.c_str(), stored, message), 1);
    EXPECT_EQ(stored.Bytes().find_first_of("\r\n"), std::string_view::npos);
    if (secret.size() > 2) {
      EXPECT_EQ(stored.Bytes().find(secret), std::string_view::npos);
    }
    EXPECT_EQ(Decrypted(stored), secret);
  }
}

// Texts that installations have on disk: they must read for ever.
TEST(DecryptText, ReadsStoredTexts) {
  EXPECT_EQ(Decrypted("XIDynssttBB4xNG8QxunHw=="), "abc");
  EXPECT_EQ(Decrypted("0+vE"), "abc");
}

TEST(DecryptText, ReadsTheFormOfTheFirstVersions) {
  const InternalPassPhrase passPhrase;
  for (const std::string secret :
       {"abc", "a much longer secret of more than a block", "12345678"}) {
    const auto hash = Sha1(passPhrase.Text());
    std::string key(reinterpret_cast<const char*>(hash.data()), 5);
    key.resize(16, '\0');
    std::string stored = secret;
    Rc4(key, reinterpret_cast<unsigned char*>(stored.data()), stored.size());
    EXPECT_EQ(Decrypted(Base64Of(stored).c_str()), secret);
  }
}

// Whoever looks at the program's text must not come upon the pass phrase.
TEST(InternalPassPhrase, StandsInNoPieceOfTheProgram) {
  const CStringW program = PathFromUtf8(testing::internal::GetArgvs()[0]);
  std::string image;
  if (ReadWholeFile(program, image) && ReadWholeFile(program + u".exe", image)) {
    GTEST_SKIP() << "the program cannot read itself";
  }
  constexpr std::size_t kPiece = 6;
  constexpr std::string_view kThere = "program's text";
  ASSERT_NE(image.find(kThere), std::string::npos);
  const InternalPassPhrase passPhrase;
  const std::string forward = passPhrase.Text();
  const std::string backward(forward.rbegin(), forward.rend());
  ASSERT_EQ(forward.size(), 21u);
  for (const std::string& text : {forward, backward}) {
    for (std::size_t at = 0; at + kPiece <= text.size(); ++at) {
      const std::string piece = text.substr(at, kPiece);
      std::string wide;
      for (const char c : piece) wide += {c, '\0'};
      EXPECT_EQ(image.find(piece), std::string::npos) << at;
      EXPECT_EQ(image.find(wide), std::string::npos) << at;
    }
  }
}

// What deciphers but is not "length=text" of that very length is not the current form.
TEST(DecryptText, TakesOnlyTheExactLengthForm) {
  const InternalPassPhrase passPhrase;
  for (const std::string plain : {"=abc", "3abc", "4=abc", "2=abc", "x3=abc", " 3=abc", "-3=abc"}) {
    CBuffer enciphered;
    EncodeBlowFish(passPhrase.Text(), reinterpret_cast<const unsigned char*>(plain.data()),
                   static_cast<int>(plain.size()), enciphered);
    const std::string stored = Base64Of(std::string(enciphered.Bytes()));
    EXPECT_NE(Decrypted(stored.c_str()), "abc") << plain;
  }
}

TEST(DecryptText, AnswersBadInput) {
  EXPECT_EQ(Decrypted(""), "");
  EXPECT_EQ(Decrypted(nullptr), "");
  for (const char* text : {"!!!", "\x83\x5c", "abc" /* no whole quartet */, " \r\n"}) {
    CBuffer out("before");
    CStringA message;
    EXPECT_EQ(DecryptText(text, out, message), 0) << text;
    EXPECT_TRUE(out.IsEmpty());
    EXPECT_FALSE(message.empty());
  }
}

}  // namespace
}  // namespace lumr
