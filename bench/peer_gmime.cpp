#include "peers.h"

#ifdef LUMRMISC_BENCH_GMIME

#include <gmime/gmime.h>

#include "peer_internal.h"

namespace lumr::bench {
namespace {

// A function of GMime that makes a string of its own out of each value of the input.
template <typename Make>
Contender EachValue(Make make) {
  return {"GMime", [make](std::string_view) -> Operation {
            static const bool initialised = (g_mime_init(), true);
            static_cast<void>(initialised);
            return [make, out = std::string()](std::string_view input) mutable {
              out.clear();
              ForEachValue(input, [&](std::string_view value) {
                char* const made = make(value.data());
                out.append(made).append(1, '\0');
                g_free(made);
              });
              return std::string_view(out);
            };
          }};
}

// A codec of GMime that takes all the input in one step.
template <typename Step>
Contender OneStep(std::size_t roomPerByte, Step step) {
  return {"GMime", [roomPerByte, step](std::string_view sample) -> Operation {
            return [step, out = MakeRoom<unsigned char>(sample.size() * roomPerByte + 256)](
                       std::string_view input) {
              return ViewOf(out, step(BytesOf(input), input.size(), out.get()));
            };
          }};
}

}  // namespace

Contender GmimeBase64Encode() {
  return OneStep(2, [](const unsigned char* in, std::size_t size, unsigned char* out) {
    int state = 0;
    guint32 save = 0;
    return g_mime_encoding_base64_encode_close(in, size, out, &state, &save);
  });
}

Contender GmimeBase64Decode() {
  return OneStep(1, [](const unsigned char* in, std::size_t size, unsigned char* out) {
    int state = 0;
    guint32 save = 0;
    return g_mime_encoding_base64_decode_step(in, size, out, &state, &save);
  });
}

Contender GmimeQuotedEncode() {
  return OneStep(4, [](const unsigned char* in, std::size_t size, unsigned char* out) {
    int state = -1;
    guint32 save = 0;
    return g_mime_encoding_quoted_encode_close(in, size, out, &state, &save);
  });
}

Contender GmimeQuotedDecode() {
  return OneStep(1, [](const unsigned char* in, std::size_t size, unsigned char* out) {
    int state = 0;
    guint32 save = 0;
    return g_mime_encoding_quoted_decode_step(in, size, out, &state, &save);
  });
}

Contender GmimeUuencode() {
  return OneStep(2, [](const unsigned char* in, std::size_t size, unsigned char* out) {
    unsigned char line[60];
    int state = 0;
    guint32 save = 0;
    return g_mime_encoding_uuencode_close(in, size, out, line, &state, &save);
  });
}

Contender GmimeUudecode() {
  return OneStep(1, [](const unsigned char* in, std::size_t size, unsigned char* out) {
    // Finding the begin line is its caller's work.
    const std::string_view text(reinterpret_cast<const char*>(in), size);
    const std::size_t data = text.find('\n') + 1;
    int state = GMIME_UUDECODE_STATE_BEGIN;
    guint32 save = 0;
    return g_mime_encoding_uudecode_step(in + data, size - data, out, &state, &save);
  });
}

Contender GmimeHeaderDecode() {
  return EachValue(
      [](const char* value) { return g_mime_utils_header_decode_text(nullptr, value); });
}

Contender GmimeHeaderEncode(const char* charset) {
  return EachValue([charset](const char* text) {
    return g_mime_utils_header_encode_text(nullptr, text, charset);
  });
}

std::string GmimeVersion() {
  return "GMime " + std::to_string(gmime_major_version) + "." +
         std::to_string(gmime_minor_version) + "." + std::to_string(gmime_micro_version);
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender GmimeBase64Encode() {
  return NotBuilt("GMime");
}
Contender GmimeBase64Decode() {
  return NotBuilt("GMime");
}
Contender GmimeQuotedEncode() {
  return NotBuilt("GMime");
}
Contender GmimeQuotedDecode() {
  return NotBuilt("GMime");
}
Contender GmimeUuencode() {
  return NotBuilt("GMime");
}
Contender GmimeUudecode() {
  return NotBuilt("GMime");
}
Contender GmimeHeaderDecode() {
  return NotBuilt("GMime");
}
Contender GmimeHeaderEncode(const char*) {
  return NotBuilt("GMime");
}
std::string GmimeVersion() {
  return {};
}
}  // namespace lumr::bench

#endif
