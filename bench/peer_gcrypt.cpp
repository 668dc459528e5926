#include "peers.h"

#ifdef LUMRMISC_BENCH_GCRYPT

#include <gcrypt.h>

#include <stdexcept>

#include "peer_internal.h"

namespace lumr::bench {
namespace {

void StartLibrary() {
  static const bool started = [] {
    gcry_check_version(nullptr);
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    return true;
  }();
  static_cast<void>(started);
}

using Digest = std::shared_ptr<gcry_md_handle>;

Digest OpenMd5(unsigned flags) {
  StartLibrary();
  gcry_md_hd_t handle;
  if (gcry_md_open(&handle, GCRY_MD_MD5, flags) != 0) throw std::runtime_error("no MD5");
  return Digest(handle, gcry_md_close);
}

std::string_view DigestOf(const Digest& digest) {
  return {reinterpret_cast<const char*>(gcry_md_read(digest.get(), GCRY_MD_MD5)), 16};
}

using Cipher = std::shared_ptr<gcry_cipher_handle>;

Cipher OpenBlowfish() {
  StartLibrary();
  gcry_cipher_hd_t handle;
  if (gcry_cipher_open(&handle, GCRY_CIPHER_BLOWFISH, GCRY_CIPHER_MODE_ECB, 0) != 0) {
    throw std::runtime_error("no Blowfish");
  }
  return Cipher(handle, gcry_cipher_close);
}

using Direction = decltype(&gcry_cipher_encrypt);

Contender Blowfish(Direction direction) {
  return {"libgcrypt", [direction](std::string_view sample) -> Operation {
            const Cipher cipher = OpenBlowfish();
            gcry_cipher_setkey(cipher.get(), kBlowfishKey.data(), kBlowfishKey.size());
            return [cipher, direction, out = MakeRoom<char>(sample.size())](std::string_view in) {
              direction(cipher.get(), out.get(), in.size(), in.data(), in.size());
              return ViewOf(out, in.size());
            };
          }};
}

}  // namespace

Contender GcryptMd5() {
  return {"libgcrypt", [](std::string_view) -> Operation {
            return [digest = OpenMd5(0)](std::string_view input) {
              gcry_md_reset(digest.get());
              gcry_md_write(digest.get(), input.data(), input.size());
              return DigestOf(digest);
            };
          }};
}

Contender GcryptHmacMd5() {
  return {"libgcrypt", [](std::string_view) -> Operation {
            return [digest = OpenMd5(GCRY_MD_FLAG_HMAC)](std::string_view input) {
              gcry_md_reset(digest.get());
              gcry_md_setkey(digest.get(), input.data(), kHmacKeySize);
              gcry_md_write(digest.get(), input.data(), input.size());
              return DigestOf(digest);
            };
          }};
}

Contender GcryptBlowfishEncipher() {
  return Blowfish(gcry_cipher_encrypt);
}

Contender GcryptBlowfishDecipher() {
  return Blowfish(gcry_cipher_decrypt);
}

Contender GcryptBlowfishKey() {
  return {"libgcrypt", [](std::string_view) -> Operation {
            return [cipher = OpenBlowfish(), out = MakeRoom<char>(8)](std::string_view key) {
              constexpr char kZero[8] = {};
              gcry_cipher_setkey(cipher.get(), key.data(), key.size());
              gcry_cipher_encrypt(cipher.get(), out.get(), 8, kZero, 8);
              return ViewOf(out, 8);
            };
          }};
}

std::string GcryptVersion() {
  return std::string("libgcrypt ") + gcry_check_version(nullptr);
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender GcryptMd5() {
  return NotBuilt("libgcrypt");
}
Contender GcryptHmacMd5() {
  return NotBuilt("libgcrypt");
}
Contender GcryptBlowfishEncipher() {
  return NotBuilt("libgcrypt");
}
Contender GcryptBlowfishDecipher() {
  return NotBuilt("libgcrypt");
}
Contender GcryptBlowfishKey() {
  return NotBuilt("libgcrypt");
}
std::string GcryptVersion() {
  return {};
}
}  // namespace lumr::bench

#endif
