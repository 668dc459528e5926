// What the library has worked on is not left behind in memory: all of the process is looked
// through for it, freed blocks too.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "lumrmisc/crypto/blowfish.h"
#include "lumrmisc/crypto/md5.h"
#include "lumrmisc/crypto/passwordtext.h"
#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/memory.h"
#include "lumrmisc/settings/users.h"

namespace lumr {
namespace {

// A text that stands nowhere but where it is put: what it is made of is kept under a mask.
constexpr unsigned char kMask = 0x55;
constexpr std::size_t kSecretLength = 40;
volatile unsigned char start = 'A' ^ kMask;

char SecretAt(std::size_t i) {
  return static_cast<char>((start ^ kMask) + i * 7 % 26);
}

struct Secret {
  char text[kSecretLength + 1];
  Secret() {
    for (std::size_t i = 0; i < kSecretLength; ++i) text[i] = SecretAt(i);
    text[kSecretLength] = '\0';
  }
  ~Secret() { Wipe(text, sizeof text); }
  const unsigned char* Bytes() const { return reinterpret_cast<const unsigned char*>(text); }
};

// The middle of the secret as narrow text, or wide with a step of 2. A freed block loses its
// first bytes to the C library.
bool HoldsSecret(const char* bytes, std::size_t step) {
  for (std::size_t i = 0; i < 12; ++i) {
    if (bytes[i * step] != SecretAt(i + 20)) return false;
    if (step == 2 && bytes[i * step + 1] != '\0') return false;
  }
  return true;
}

int CountIn(const std::string& memory) {
  int found = 0;
  for (std::size_t at = 0; at + 24 <= memory.size(); ++at) {
    if (memory[at] != SecretAt(20)) continue;
    if (HoldsSecret(&memory[at], 1) || HoldsSecret(&memory[at], 2)) ++found;
  }
  return found;
}

// How often the secret stands in the memory that the process can write; -1 where the system does
// not show it.
int CountSecrets() {
  std::ifstream maps("/proc/self/maps");
  std::ifstream memory("/proc/self/mem", std::ios::binary);
  if (!maps || !memory) return -1;
  int found = 0;
  std::string content;
  for (std::string line; std::getline(maps, line);) {
    std::istringstream fields(line);
    std::uint64_t begin = 0, end = 0;
    char dash = 0;
    std::string rights;
    fields >> std::hex >> begin >> dash >> end >> rights;
    constexpr std::uint64_t kMost = 256 << 20;  // larger are the tables of a sanitizer
    if (rights.substr(0, 2) != "rw" || end - begin > kMost) continue;
    content.resize(end - begin);
    memory.seekg(static_cast<std::streamoff>(begin));
    memory.read(content.data(), static_cast<std::streamsize>(content.size()));
    found += CountIn(content);
    memory.clear();
    // What was found would be found again where it was read to.
    Wipe(content.data(), content.size());
  }
  return found;
}

void EncipherAndDecipher() {
  const Secret secret;
  CBuffer enciphered, deciphered;
  CStringA message;
  EncodeBlowFish("key", secret.Bytes(), kSecretLength, enciphered);
  CBuffer moved = enciphered;
  DecodeBlowFish("key", reinterpret_cast<const unsigned char*>(moved.GetBuffer()),
                 moved.GetLength(), deciphered, message);
  EXPECT_EQ(deciphered.Bytes(), secret.text);
  Wipe(deciphered.GetBuffer(), static_cast<std::size_t>(deciphered.GetLength()));
}

void UseAsKey() {
  const Secret secret;
  unsigned char digest[16] = {};
  hmac_md5(digest, 16, secret.Bytes(), kSecretLength, digest);
  MD5String(secret.text, digest);
  CBuffer out;
  EncodeBlowFish(secret.text, digest, 16, out);
  CSettingData data;
  data.SetCryptKey(1, secret.text);
  CSettingData other;
  other.SetCryptKey(data);
  SetUsersFileKey(secret.text);
  SetUsersFileKey("");
}

void StoreAsPassword() {
  const Secret secret;
  CBuffer stored, back;
  CStringA message;
  EncryptText(secret.text, stored, message);
  DecryptText(stored, back, message);
  EXPECT_EQ(back.Bytes(), secret.text);
  Wipe(back.GetBuffer(), static_cast<std::size_t>(back.GetLength()));
}

void KeepInSettings() {
  CBuffer stored;
  CSettingData data;
  data.SetCryptKey(1, "key");
  {
    const Secret secret;
    data.SetValue("K", "A", "before");
    data.SetValue("K", "A", secret.text);
    data.SetValue("K", "B\n", secret.text);
    CStringA escaped = CStringA("with\\escape") + secret.text;
    data.SetValue("L", "C", escaped);
    Wipe(escaped.data(), escaped.size());
    data.SaveSdText(stored);
    data.SetValue("K", "A", "after");
    data.RemoveName("K", "B\n");
    data.InitSD();
  }
  EXPECT_EQ(data.LoadSdText(stored.Bytes()), 1);
  data.RenameKeyBegin("K", "M");
  CSettingData copy;
  copy.CopySD(data);
}

void KeepInUser() {
  const Secret secret;
  CSettingData data;
  CUser user;
  user.SetUserDir(u"/d");
  CStringA password = secret.text;
  user.SetPassword(password);
  user.SetSecondSecret(password);
  Wipe(password.data(), password.size());
  user.SetUserData(&data);
  CUser back;
  EXPECT_EQ(back.GetUserData(&data, "UID"), 1);
  EXPECT_EQ(back.GetSecondSecret(), secret.text);
  CUser copy(back);
  copy.SetPassword("short");
}

TEST(Secrets, AreWiped) {
  const struct {
    const char* what;
    void (*use)();
  } cases[] = {
      {"enciphered data", EncipherAndDecipher}, {"keys", UseAsKey},
      {"password texts", StoreAsPassword},      {"enciphered settings", KeepInSettings},
      {"passwords of users", KeepInUser},
  };
  if (PathSeparator() == u'\\' || CountSecrets() < 0)
    GTEST_SKIP() << "the system does not show a process its memory";
  {
    const Secret seen;
    ASSERT_GE(CountSecrets(), 1);
  }
  for (const auto& c : cases) {
    c.use();
    EXPECT_EQ(CountSecrets(), 0) << c.what;
  }
}

}  // namespace
}  // namespace lumr
