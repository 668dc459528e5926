// Cleaned HTML: only what the lists allow, whatever came in; cleaning again changes nothing; the
// result is bounded by the input. The report's places lie in the source.
#include <cstdint>
#include <cstring>

#include "lumrmisc/html/sanitize.h"
#include "tests/html/safe_check.h"

namespace {

void Require(bool holds) {
  if (!holds) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumr;
  // UTF-16 as it comes, and the bytes as units: most markup is ASCII.
  CStringW wide(size / 2, u'\0');
  if (!wide.empty()) std::memcpy(wide.data(), data, wide.size() * 2);
  for (const CStringW& source : {wide, CStringW(data, data + size)}) {
    CStringW html = source;
    SafeHtmlReport report;
    ToSafeHtmlW2(html, {}, &report);
    Require(SafeFault(html).empty());
    Require(html.size() <= 40 * source.size() + 8192);
    for (const SafeHtmlRemoval& removal : report.removals) Require(removal.offset < source.size());
    for (const SafeHtmlLink& link : report.links) {
      Require(link.offset < source.size() && !link.address.empty());
    }
    CStringW again = html;
    ToSafeHtmlW2(again);
    Require(again == html);
  }
  return 0;
}
