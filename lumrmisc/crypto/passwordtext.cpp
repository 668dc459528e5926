#include "lumrmisc/crypto/passwordtext.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <string_view>

#include "lumrmisc/crypto/blowfish.h"
#include "lumrmisc/crypto/legacycipher_internal.h"
#include "lumrmisc/crypto/passphrase_internal.h"
#include "lumrmisc/crypto/secret_internal.h"
#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/platform/messages.h"

namespace lumr {
namespace {

constexpr unsigned kMessageBadText = 3118;

std::string_view ViewOf(const CBuffer& buffer) {
  return buffer.Bytes();
}

// The text behind "length=", when plain is of that form.
bool SplitLengthForm(std::string_view plain, std::string_view& text) {
  const std::size_t equals = plain.find('=');
  if (equals == std::string_view::npos || equals == 0) return false;
  std::size_t length = 0;
  const char* const end = plain.data() + equals;
  const auto [stop, error] = std::from_chars(plain.data(), end, length);
  if (error != std::errc() || stop != end) return false;
  text = plain.substr(equals + 1);
  return text.size() == length;
}

bool DecryptCurrentForm(const char* passPhrase, const CBuffer& stored, CBuffer& out) {
  SecretBuffer plain;
  CStringA ignored;
  const auto* bytes = reinterpret_cast<const unsigned char*>(ViewOf(stored).data());
  std::string_view text;
  if (DecodeBlowFish(passPhrase, bytes, stored.GetLength(), plain, ignored) == 0 ||
      !SplitLengthForm(ViewOf(plain), text)) {
    return false;
  }
  out.Set(text.data(), static_cast<int>(text.size()));
  return true;
}

// The form of the first versions: RC4 under the first 5 bytes of the pass phrase's SHA-1 and 11
// zero bytes, the 40-bit key of the cryptographic provider of that time.
void DecryptFirstForm(std::string_view passPhrase, const CBuffer& stored, CBuffer& out) {
  auto hash = Sha1(passPhrase);
  std::array<char, 16> key{};
  std::copy_n(hash.begin(), 5, key.begin());
  out = stored;
  Rc4({key.data(), key.size()}, reinterpret_cast<unsigned char*>(out.GetBuffer()),
      static_cast<std::size_t>(out.GetLength()));
  Wipe(key.data(), key.size());
  Wipe(hash.data(), hash.size());
}

}  // namespace

int EncryptText(const char* text, CBuffer& out, CStringA& message) {
  message.clear();
  const std::string_view secret = text == nullptr ? std::string_view() : std::string_view(text);
  const CStringA length = std::to_string(secret.size()) + "=";
  if (secret.size() > INT32_MAX - 128) throw std::bad_alloc();
  SecretBuffer plain;
  plain.SetAllocSize(static_cast<int>(length.size() + secret.size()));
  plain.Add(length.data(), static_cast<int>(length.size()));
  plain.Add(secret.data(), static_cast<int>(secret.size()));
  CBuffer enciphered;
  const InternalPassPhrase passPhrase;
  EncodeBlowFish(passPhrase.Text(), reinterpret_cast<const unsigned char*>(plain.GetBuffer()),
                 plain.GetLength(), enciphered);
  EncodeBase64(reinterpret_cast<const unsigned char*>(enciphered.GetBuffer()),
               enciphered.GetLength(), 0, out);
  return 1;
}

int DecryptText(const char* text, CBuffer& out, CStringA& message) {
  out.Empty();
  message.clear();
  if (text == nullptr || *text == '\0') return 1;
  CBuffer stored;
  DecodeBase64(text, stored);
  if (stored.IsEmpty()) {
    message = MessageText(kMessageBadText);
    return 0;
  }
  const InternalPassPhrase passPhrase;
  if (!DecryptCurrentForm(passPhrase.Text(), stored, out)) {
    DecryptFirstForm(passPhrase.Text(), stored, out);
  }
  return 1;
}

}  // namespace lumr
