#include "peers.h"

#ifdef LUMRMISC_BENCH_OPENSSL

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <memory>

#include "peer_internal.h"

namespace lumr::bench {
namespace {

using Context = std::shared_ptr<EVP_ENCODE_CTX>;

Context NewContext() {
  return Context(EVP_ENCODE_CTX_new(), &EVP_ENCODE_CTX_free);
}

}  // namespace

Contender OpensslBase64Encode() {  // lines of 64 characters
  return {"OpenSSL", [](std::string_view sample) -> Operation {
            return [context = NewContext(),
                    out = MakeRoom<unsigned char>(sample.size() * 3 / 2 + 128)](
                       std::string_view input) {
              int size = 0;
              int rest = 0;
              EVP_EncodeInit(context.get());
              EVP_EncodeUpdate(context.get(), out.get(), &size, BytesOf(input),
                               static_cast<int>(input.size()));
              EVP_EncodeFinal(context.get(), out.get() + size, &rest);
              return ViewOf(out, size + rest);
            };
          }};
}

Contender OpensslBase64Decode() {
  return {"OpenSSL", [](std::string_view sample) -> Operation {
            return [context = NewContext(),
                    out = MakeRoom<unsigned char>(sample.size() + 128)](std::string_view input) {
              int size = 0;
              int rest = 0;
              EVP_DecodeInit(context.get());
              EVP_DecodeUpdate(context.get(), out.get(), &size, BytesOf(input),
                               static_cast<int>(input.size()));
              EVP_DecodeFinal(context.get(), out.get() + size, &rest);
              return ViewOf(out, size + rest);
            };
          }};
}

std::string OpensslVersion() {
  return std::string("OpenSSL ") + OpenSSL_version(OPENSSL_VERSION_STRING);
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender OpensslBase64Encode() {
  return NotBuilt("OpenSSL");
}
Contender OpensslBase64Decode() {
  return NotBuilt("OpenSSL");
}
std::string OpensslVersion() {
  return {};
}
}  // namespace lumr::bench

#endif
