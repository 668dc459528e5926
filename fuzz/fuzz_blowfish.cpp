// Any bytes under any pass phrase: what was enciphered comes back, and what deciphers is
// enciphered to something that deciphers to the same.
#include <cstdint>
#include <memory>
#include <string>

#include "lumrmisc/crypto/blowfish.h"

namespace {

using lumr::CBuffer;

void Require(bool holds) {
  if (!holds) __builtin_trap();
}

// From a block of just its size.
bool Decode(const std::string& passPhrase, std::string_view data, CBuffer& out) {
  const auto block = std::make_unique<unsigned char[]>(data.size());
  std::copy(data.begin(), data.end(), block.get());
  lumr::CStringA message;
  const int decoded = lumr::DecodeBlowFish(passPhrase.c_str(), block.get(),
                                           static_cast<int>(data.size()), out, message);
  Require((decoded == 0) == !message.empty());
  return decoded != 0;
}

std::string Encode(const std::string& passPhrase, std::string_view data) {
  CBuffer out;
  const int encoded =
      lumr::EncodeBlowFish(passPhrase.c_str(), reinterpret_cast<const unsigned char*>(data.data()),
                           static_cast<int>(data.size()), out);
  Require(encoded == 1);
  Require(data.empty() ? out.IsEmpty() : out.GetLength() == (out.GetLength() + 7) / 8 * 8);
  return std::string(out.Bytes());
}

void CheckRoundTrip(const std::string& passPhrase, std::string_view data) {
  CBuffer back;
  Require(Decode(passPhrase, Encode(passPhrase, data), back) && back.Bytes() == data);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  std::string passPhrase(1 + data[0] % 4, '\0');
  for (std::size_t i = 0; i < passPhrase.size(); ++i) {
    passPhrase[i] = static_cast<char>('a' + (data[0] + i * data[1]) % 26);
  }
  const std::string_view rest(reinterpret_cast<const char*>(data) + 2, size - 2);
  CheckRoundTrip(passPhrase, rest);
  CBuffer plain;
  if (Decode(passPhrase, rest, plain)) {
    const std::string kept(plain.Bytes());
    CheckRoundTrip(passPhrase, kept);
  } else {
    Require(plain.IsEmpty());
  }
  return 0;
}
