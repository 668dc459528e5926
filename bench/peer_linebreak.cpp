// Peers of the layout: finders of line-break opportunities. They read the text in UTF-16 whatever
// the input's charset is, converted beforehand, and are timed on the input's bytes. Each tells
// how many opportunities it found.
#include <memory>
#include <stdexcept>
#include <string>

#include "lumrmisc/charset/convert.h"
#include "peer_internal.h"
#include "peers.h"

#ifdef LUMRMISC_BENCH_ICU
#include <unicode/ubrk.h>
#endif
#ifdef LUMRMISC_BENCH_UNIBREAK
#include <linebreak.h>
#endif

namespace lumr::bench {

#if defined(LUMRMISC_BENCH_ICU) || defined(LUMRMISC_BENCH_UNIBREAK)
namespace {

std::shared_ptr<CBuffer> InUtf16(std::string_view text, const std::string& charset) {
  auto wide = std::make_shared<CBuffer>();
  const CodeType from = charset == "CP932" ? CT_SJIS : CT_UNICODE;
  ConvertToOtherCodeType2(from, text, CT_UNICODE, *wide);
  return wide;
}

}  // namespace
#endif

#ifdef LUMRMISC_BENCH_ICU

Contender IcuLineBreaks(const std::string& charset) {
  return {"ICU", [charset](std::string_view sample) -> Operation {
            UErrorCode error = U_ZERO_ERROR;
            const std::shared_ptr<UBreakIterator> breaks(
                ubrk_open(UBRK_LINE, "ja", nullptr, 0, &error), &ubrk_close);
            if (U_FAILURE(error)) throw std::runtime_error("ICU has no line breaks");
            return [breaks, wide = InUtf16(sample, charset),
                    result = std::string()](std::string_view) mutable -> std::string_view {
              UErrorCode failed = U_ZERO_ERROR;
              ubrk_setText(breaks.get(), reinterpret_cast<const UChar*>(wide->GetBuffer()),
                           wide->GetLength() / 2, &failed);
              std::size_t count = 0;
              while (ubrk_next(breaks.get()) != UBRK_DONE) ++count;
              result = std::to_string(count);
              return result;
            };
          }};
}

#else

Contender IcuLineBreaks(const std::string&) {
  return NotBuilt("ICU");
}

#endif

#ifdef LUMRMISC_BENCH_UNIBREAK

Contender UnibreakLineBreaks(const std::string& charset) {
  return {"libunibreak", [charset](std::string_view sample) -> Operation {
            init_linebreak();
            const auto wide = InUtf16(sample, charset);
            const auto units = static_cast<std::size_t>(wide->GetLength()) / 2;
            return [wide, units, kinds = MakeRoom<char>(units + 1),
                    result = std::string()](std::string_view) mutable -> std::string_view {
              set_linebreaks_utf16(reinterpret_cast<const utf16_t*>(wide->GetBuffer()), units, "ja",
                                   kinds.get());
              std::size_t count = 0;
              for (std::size_t i = 0; i < units; ++i) count += kinds[i] <= LINEBREAK_ALLOWBREAK;
              result = std::to_string(count);
              return result;
            };
          }};
}

std::string UnibreakVersion() {
  return "libunibreak " LUMRMISC_BENCH_UNIBREAK;
}

#else

Contender UnibreakLineBreaks(const std::string&) {
  return NotBuilt("libunibreak");
}

std::string UnibreakVersion() {
  return {};
}

#endif

}  // namespace lumr::bench
