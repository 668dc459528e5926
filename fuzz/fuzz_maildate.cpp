// Dates: faults have a place inside the text, and what is read is written so that it is read again.
#include <cstdint>
#include <cstring>
#include <string_view>

#include "fuzz/transfer_properties.h"
#include "lumrmisc/mailtext/date.h"

namespace {

template <class Text>
void CheckDate(const Text& text) {
  using namespace lumr;
  MailDate date;
  DateFault fault;
  if (ParseMailDate(text, date, &fault, 540) == 0) {
    Require(fault.problem != DateProblem::kNone);
    Require(fault.position >= 0 && fault.position <= static_cast<int>(text.size()));
    return;
  }
  const CStringA written = FormatMailDate(date.time, date.zoneMinutes);
  Require(!written.empty() || date.time.time_since_epoch().count() > 253'000'000'000);
  if (written.empty()) return;  // the leap second at the end of the year 9999
  const CStringW japanese = FormatJapaneseDate(date.time, date.zoneMinutes);
  const CStringA iso = FormatIsoDate(date.time, date.zoneMinutes);
  MailDate again;
  Require(ParseMailDate(written, again) == 1 && again.time == date.time);
  Require(again.zoneMinutes == date.zoneMinutes && again.assumed == 0);
  Require(ParseMailDate(japanese, again) == 1 && again.time == date.time && again.assumed == 0);
  Require(ParseMailDate(iso, again) == 1 && again.time == date.time && again.assumed == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const lumr::TightCopy text({reinterpret_cast<const char*>(data), size});
  CheckDate(std::string_view(text));
  lumr::CStringW wide(size / 2, u'\0');
  std::memcpy(wide.data(), data, size / 2 * 2);
  CheckDate(std::u16string_view(wide));
  return 0;
}
