#include "lumrmisc/html/sourcecopy_internal.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

void SourceCopy::Disarm(std::size_t from, std::size_t to) {
  constexpr std::u16string_view kSeparator = u"://";
  const std::u16string_view text = source_.substr(0, to);
  for (std::size_t pos = FindUnit(text, from, u':'); pos < to;
       pos = FindUnit(text, pos + 1, u':')) {
    if (text.substr(pos, kSeparator.size()) == kSeparator) Replace(pos, pos + 1, u"_");
  }
}

}  // namespace lumr
