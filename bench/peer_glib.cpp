#include "peers.h"

#ifdef LUMRMISC_BENCH_GLIB

#include <glib.h>

#include <memory>

namespace lumr::bench {
namespace {

// What GLib allocates for a result; freed at the next one.
using Owned = std::unique_ptr<void, decltype(&g_free)>;

std::shared_ptr<Owned> NoResult() {
  return std::make_shared<Owned>(nullptr, &g_free);
}

gssize Signed(std::size_t size) {
  return static_cast<gssize>(size);
}

}  // namespace

Contender GlibBase64Encode() {  // lines of 76 characters
  return {"GLib", [](std::string_view sample) -> Operation {
            return [out = std::string(sample.size() * 3 / 2 + 64, '\0')](
                       std::string_view input) mutable -> std::string_view {
              gint state = 0;
              gint save = 0;
              const auto* const bytes = reinterpret_cast<const guchar*>(input.data());
              gsize size =
                  g_base64_encode_step(bytes, input.size(), TRUE, out.data(), &state, &save);
              size += g_base64_encode_close(TRUE, out.data() + size, &state, &save);
              return {out.data(), size};
            };
          }};
}

Contender GlibBase64Decode() {
  return {"GLib", [](std::string_view sample) -> Operation {
            return [out = std::string(sample.size() + 64, '\0')](
                       std::string_view input) mutable -> std::string_view {
              gint state = 0;
              guint save = 0;
              auto* const bytes = reinterpret_cast<guchar*>(out.data());
              return {out.data(),
                      g_base64_decode_step(input.data(), input.size(), bytes, &state, &save)};
            };
          }};
}

Contender GlibUtf8ToUtf16() {
  Contender glib{
      "GLib", [](std::string_view) -> Operation {
        return [result = NoResult()](std::string_view input) -> std::string_view {
          glong count = 0;
          result->reset(
              g_utf8_to_utf16(input.data(), Signed(input.size()), nullptr, &count, nullptr));
          return {static_cast<const char*>(result->get()), static_cast<std::size_t>(count) * 2};
        };
      }};
  glib.wellFormedOnly = true;
  return glib;
}

Contender GlibUtf16ToUtf8() {
  Contender glib{
      "GLib", [](std::string_view) -> Operation {
        return [result = NoResult()](std::string_view input) -> std::string_view {
          const auto* const units = reinterpret_cast<const gunichar2*>(input.data());
          glong size = 0;
          result->reset(g_utf16_to_utf8(units, Signed(input.size() / 2), nullptr, &size, nullptr));
          return {static_cast<const char*>(result->get()), static_cast<std::size_t>(size)};
        };
      }};
  glib.wellFormedOnly = true;
  return glib;
}

Contender GlibIsUtf8() {
  return {"GLib", [](std::string_view) -> Operation {
            return [](std::string_view input) -> std::string_view {
              return g_utf8_validate_len(input.data(), input.size(), nullptr) != 0 ? "1" : "0";
            };
          }};
}

std::string GlibVersion() {
  return "GLib " + std::to_string(glib_major_version) + "." + std::to_string(glib_minor_version) +
         "." + std::to_string(glib_micro_version);
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender GlibBase64Encode() {
  return NotBuilt("GLib");
}
Contender GlibBase64Decode() {
  return NotBuilt("GLib");
}
Contender GlibUtf8ToUtf16() {
  return NotBuilt("GLib");
}
Contender GlibUtf16ToUtf8() {
  return NotBuilt("GLib");
}
Contender GlibIsUtf8() {
  return NotBuilt("GLib");
}
std::string GlibVersion() {
  return {};
}
}  // namespace lumr::bench

#endif
