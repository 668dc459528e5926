#include "peers.h"

#ifdef LUMRMISC_BENCH_NETTLE

#include <nettle/blowfish.h>
#include <nettle/hmac.h>
#include <nettle/md5.h>
#include <nettle/version.h>

#include "peer_internal.h"

namespace lumr::bench {
namespace {

Contender Blowfish(void (*direction)(const blowfish_ctx*, std::size_t, std::uint8_t*,
                                     const std::uint8_t*)) {
  return {"nettle", [direction](std::string_view sample) -> Operation {
            const auto context = std::make_shared<blowfish_ctx>();
            blowfish_set_key(context.get(), kBlowfishKey.size(), BytesOf(kBlowfishKey));
            return [context, direction,
                    out = MakeRoom<std::uint8_t>(sample.size())](std::string_view input) {
              direction(context.get(), input.size(), out.get(), BytesOf(input));
              return ViewOf(out, input.size());
            };
          }};
}

}  // namespace

Contender NettleMd5() {
  return {"nettle", [](std::string_view) -> Operation {
            return [out = MakeRoom<std::uint8_t>(16)](std::string_view input) {
              md5_ctx context;
              md5_init(&context);
              md5_update(&context, input.size(), BytesOf(input));
              md5_digest(&context, 16, out.get());
              return ViewOf(out, 16);
            };
          }};
}

Contender NettleHmacMd5() {
  return {"nettle", [](std::string_view) -> Operation {
            return [out = MakeRoom<std::uint8_t>(16)](std::string_view input) {
              hmac_md5_ctx context;
              hmac_md5_set_key(&context, kHmacKeySize, BytesOf(input));
              hmac_md5_update(&context, input.size(), BytesOf(input));
              hmac_md5_digest(&context, 16, out.get());
              return ViewOf(out, 16);
            };
          }};
}

Contender NettleBlowfishEncipher() {
  return Blowfish(blowfish_encrypt);
}

Contender NettleBlowfishDecipher() {
  return Blowfish(blowfish_decrypt);
}

Contender NettleBlowfishKey() {
  return {"nettle", [](std::string_view) -> Operation {
            return [out = MakeRoom<std::uint8_t>(8)](std::string_view key) {
              constexpr std::uint8_t kZero[8] = {};
              blowfish_ctx context;
              blowfish_set_key(&context, key.size(), BytesOf(key));
              blowfish_encrypt(&context, 8, out.get(), kZero);
              return ViewOf(out, 8);
            };
          }};
}

std::string NettleVersion() {
  return "nettle " + std::to_string(nettle_version_major()) + "." +
         std::to_string(nettle_version_minor());
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender NettleMd5() {
  return NotBuilt("nettle");
}
Contender NettleHmacMd5() {
  return NotBuilt("nettle");
}
Contender NettleBlowfishEncipher() {
  return NotBuilt("nettle");
}
Contender NettleBlowfishDecipher() {
  return NotBuilt("nettle");
}
Contender NettleBlowfishKey() {
  return NotBuilt("nettle");
}
std::string NettleVersion() {
  return {};
}
}  // namespace lumr::bench

#endif
