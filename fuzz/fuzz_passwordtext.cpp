// Any text as a stored password, and any text as a secret: reading never fails in another way than
// it says, and a secret comes back from its one printable line.
#include <cstdint>
#include <string>

#include "lumrmisc/crypto/passwordtext.h"

namespace {

using lumr::CBuffer;

void Require(bool holds) {
  if (!holds) __builtin_trap();
}

void CheckSecret(const std::string& secret) {
  CBuffer stored;
  CBuffer back;
  lumr::CStringA message;
  Require(lumr::EncryptText(secret.c_str(), stored, message) == 1);
  for (const char c : stored.Bytes()) Require(c > ' ' && c < 0x7f);
  Require(lumr::DecryptText(stored, back, message) == 1);
  Require(back.Bytes() == secret.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  CheckSecret(text);
  CBuffer secret;
  lumr::CStringA message;
  const int read = lumr::DecryptText(text.c_str(), secret, message);
  Require((read == 0) == !message.empty());
  if (read == 0) Require(secret.IsEmpty());
  Require(static_cast<std::size_t>(secret.GetLength()) <= text.size());
  return 0;
}
