#include "peers.h"

#ifdef LUMRMISC_BENCH_OPENSSL

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/provider.h>

#include <stdexcept>

#include "peer_internal.h"

namespace lumr::bench {
namespace {

// Fetched once, as the library's makers ask of who wants speed.
const EVP_MD* Md5() {
  static const EVP_MD* const md5 = EVP_MD_fetch(nullptr, "MD5", nullptr);
  return md5;
}

using Cipher = std::shared_ptr<EVP_CIPHER_CTX>;

// Blowfish stands in the provider of old algorithms.
Cipher OpenBlowfish(std::string_view key, int encipher) {
  static const EVP_CIPHER* const blowfish = [] {
    OSSL_PROVIDER_load(nullptr, "legacy");
    OSSL_PROVIDER_load(nullptr, "default");
    return EVP_CIPHER_fetch(nullptr, "BF-ECB", nullptr);
  }();
  if (blowfish == nullptr) throw std::runtime_error("OpenSSL has no Blowfish here");
  const Cipher cipher(EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
  EVP_CipherInit_ex2(cipher.get(), blowfish, BytesOf(key), nullptr, encipher, nullptr);
  EVP_CIPHER_CTX_set_padding(cipher.get(), 0);
  return cipher;
}

Contender Blowfish(int encipher) {
  return {"OpenSSL", [encipher](std::string_view sample) -> Operation {
            return [cipher = OpenBlowfish(kBlowfishKey, encipher),
                    out = MakeRoom<unsigned char>(sample.size() + 8)](std::string_view input) {
              int size = 0;
              EVP_CipherUpdate(cipher.get(), out.get(), &size, BytesOf(input),
                               static_cast<int>(input.size()));
              return ViewOf(out, size);
            };
          }};
}

}  // namespace

Contender OpensslMd5() {
  return {"OpenSSL", [](std::string_view) -> Operation {
            const std::shared_ptr<EVP_MD_CTX> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
            return [context, out = MakeRoom<unsigned char>(16)](std::string_view input) {
              EVP_DigestInit_ex2(context.get(), Md5(), nullptr);
              EVP_DigestUpdate(context.get(), input.data(), input.size());
              EVP_DigestFinal_ex(context.get(), out.get(), nullptr);
              return ViewOf(out, 16);
            };
          }};
}

Contender OpensslHmacMd5() {
  return {"OpenSSL", [](std::string_view) -> Operation {
            static EVP_MAC* const mac = EVP_MAC_fetch(nullptr, "HMAC", nullptr);
            const std::shared_ptr<EVP_MAC_CTX> context(EVP_MAC_CTX_new(mac), &EVP_MAC_CTX_free);
            char name[] = "MD5";
            const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string("digest", name, 0),
                                             OSSL_PARAM_construct_end()};
            EVP_MAC_CTX_set_params(context.get(), parameters);
            return [context, out = MakeRoom<unsigned char>(16)](std::string_view input) {
              std::size_t size = 0;
              EVP_MAC_init(context.get(), BytesOf(input), kHmacKeySize, nullptr);
              EVP_MAC_update(context.get(), BytesOf(input), input.size());
              EVP_MAC_final(context.get(), out.get(), &size, 16);
              return ViewOf(out, size);
            };
          }};
}

Contender OpensslBlowfishEncipher() {
  return Blowfish(1);
}

Contender OpensslBlowfishDecipher() {
  return Blowfish(0);
}

Contender OpensslBlowfishKey() {
  return {"OpenSSL", [](std::string_view) -> Operation {
            return [cipher = OpenBlowfish(kBlowfishKey, 1),
                    out = MakeRoom<unsigned char>(16)](std::string_view key) {
              constexpr unsigned char kZero[8] = {};
              int size = 0;
              EVP_CipherInit_ex2(cipher.get(), nullptr, BytesOf(key), nullptr, 1, nullptr);
              EVP_CipherUpdate(cipher.get(), out.get(), &size, kZero, 8);
              return ViewOf(out, size);
            };
          }};
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender OpensslMd5() {
  return NotBuilt("OpenSSL");
}
Contender OpensslHmacMd5() {
  return NotBuilt("OpenSSL");
}
Contender OpensslBlowfishEncipher() {
  return NotBuilt("OpenSSL");
}
Contender OpensslBlowfishDecipher() {
  return NotBuilt("OpenSSL");
}
Contender OpensslBlowfishKey() {
  return NotBuilt("OpenSSL");
}
}  // namespace lumr::bench

#endif
