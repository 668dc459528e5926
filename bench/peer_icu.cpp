#include "peers.h"

#ifdef LUMRMISC_BENCH_ICU

#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <memory>
#include <stdexcept>

#include "peer_internal.h"

namespace lumr::bench {
namespace {

using Converter = std::shared_ptr<UConverter>;

Converter OpenConverter(const std::string& charset) {
  UErrorCode error = U_ZERO_ERROR;
  Converter converter(ucnv_open(charset.c_str(), &error), &ucnv_close);
  if (U_FAILURE(error)) throw std::runtime_error("ICU has no charset " + charset);
  return converter;
}

const UChar* InputUnits(std::string_view input) {
  return reinterpret_cast<const UChar*>(input.data());
}

std::int32_t Count(std::size_t size) {
  return static_cast<std::int32_t>(size);
}

}  // namespace

Contender IcuDecode(const std::string& charset) {
  return {"ICU", [charset](std::string_view sample) -> Operation {
            const std::int32_t room = Count(sample.size() + 16);
            return [converter = OpenConverter(charset), room,
                    out = MakeRoom<UChar>(sample.size() + 16)](std::string_view input) {
              UErrorCode error = U_ZERO_ERROR;
              return ViewOf(out, ucnv_toUChars(converter.get(), out.get(), room, input.data(),
                                               Count(input.size()), &error));
            };
          }};
}

Contender IcuEncode(const std::string& charset) {
  return {"ICU", [charset](std::string_view sample) -> Operation {
            const std::size_t room = sample.size() * 4 + 16;
            return [converter = OpenConverter(charset), room,
                    out = MakeRoom<char>(room)](std::string_view input) {
              UErrorCode error = U_ZERO_ERROR;
              return ViewOf(
                  out, ucnv_fromUChars(converter.get(), out.get(), Count(room), InputUnits(input),
                                       Count(input.size() / 2), &error));
            };
          }};
}

Contender IcuConvert(const std::string& from, const std::string& to) {
  return {"ICU", [from, to](std::string_view sample) -> Operation {
            constexpr std::size_t kPivot =
                4096;  // fits the first-level cache, as its makers advise
            const std::size_t room = sample.size() * 4 + 16;
            return [source = OpenConverter(from), target = OpenConverter(to), room,
                    out = MakeRoom<char>(room),
                    pivot = MakeRoom<UChar>(kPivot)](std::string_view input) {
              UErrorCode error = U_ZERO_ERROR;
              char* write = out.get();
              const char* read = input.data();
              UChar* pivotSource = pivot.get();
              UChar* pivotTarget = pivot.get();
              ucnv_convertEx(target.get(), source.get(), &write, out.get() + room, &read,
                             input.data() + input.size(), pivot.get(), &pivotSource, &pivotTarget,
                             pivot.get() + kPivot, true, true, &error);
              return std::string_view(out.get(), static_cast<std::size_t>(write - out.get()));
            };
          }};
}

Contender IcuUtf8ToUtf16() {
  return {"ICU", [](std::string_view sample) -> Operation {
            return [room = Count(sample.size() + 16),
                    out = MakeRoom<UChar>(sample.size() + 16)](std::string_view input) {
              UErrorCode error = U_ZERO_ERROR;
              std::int32_t count = 0;
              u_strFromUTF8WithSub(out.get(), room, &count, input.data(), Count(input.size()),
                                   0xFFFD, nullptr, &error);
              return ViewOf(out, count);
            };
          }};
}

Contender IcuUtf16ToUtf8() {
  return {"ICU", [](std::string_view sample) -> Operation {
            const std::size_t room = sample.size() * 2 + 16;
            return [room, out = MakeRoom<char>(room)](std::string_view input) {
              UErrorCode error = U_ZERO_ERROR;
              std::int32_t count = 0;
              u_strToUTF8WithSub(out.get(), Count(room), &count, InputUnits(input),
                                 Count(input.size() / 2), 0xFFFD, nullptr, &error);
              return ViewOf(out, count);
            };
          }};
}

Contender IcuIsUtf8() {
  return {"ICU", [](std::string_view) -> Operation {
            return [](std::string_view input) -> std::string_view {
              const auto* const bytes = reinterpret_cast<const std::uint8_t*>(input.data());
              const std::int32_t size = Count(input.size());
              UChar32 character = 0;
              for (std::int32_t at = 0; at < size && character >= 0;) {
                U8_NEXT(bytes, at, size, character);
              }
              return character >= 0 ? "1" : "0";
            };
          }};
}

std::string IcuVersion() {
  return "ICU " U_ICU_VERSION;
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender IcuDecode(const std::string&) {
  return NotBuilt("ICU");
}
Contender IcuEncode(const std::string&) {
  return NotBuilt("ICU");
}
Contender IcuConvert(const std::string&, const std::string&) {
  return NotBuilt("ICU");
}
Contender IcuUtf8ToUtf16() {
  return NotBuilt("ICU");
}
Contender IcuUtf16ToUtf8() {
  return NotBuilt("ICU");
}
Contender IcuIsUtf8() {
  return NotBuilt("ICU");
}
std::string IcuVersion() {
  return {};
}
}  // namespace lumr::bench

#endif
