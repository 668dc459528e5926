#include <algorithm>
#include <string_view>

#include "lumrmisc/charset/japanese.h"
#include "lumrmisc/charset/japanese_internal.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {
namespace {

// Values of two bytes, lead * 256 + trail, both ends included.
constexpr struct {
  unsigned first;
  unsigned last;
} kRanges[] = {
    {0x8740, 0x879F},  // NEC row 13: circled numbers, units, abbreviations
    {0xED40, 0xEEFC},  // the IBM extensions where NEC put them
    {0xF040, 0xF9FC},  // user-defined
    {0xFA40, 0xFC4B},  // IBM extensions
};

bool IsMachineDepend(std::string_view text, std::size_t pos) {
  if (pos + 1 >= text.size()) return false;
  const auto first = static_cast<unsigned char>(text[pos]);
  const unsigned value = first * 256u + static_cast<unsigned char>(text[pos + 1]);
  return std::ranges::any_of(
      kRanges, [value](const auto& range) { return value >= range.first && value <= range.last; });
}

}  // namespace

int IsMachineDependChar(const char* p) {
  return p != nullptr && *p != '\0' && IsMachineDepend({p, 2}, 0);
}

int FindMachineDependChar(const char* text, int len) {
  const std::string_view view = JapaneseText(text, len);
  const MbcsPage& page = CurrentMbcsPage();
  for (std::size_t pos = 0; pos + 1 < view.size(); pos += page.CharLength(view, pos)) {
    if (IsMachineDepend(view, pos)) return static_cast<int>(pos);
  }
  return -1;
}

int GetMachineDependCharLen(const char* text, int len) {
  const std::string_view view = JapaneseText(text, len);
  std::size_t pos = 0;
  while (IsMachineDepend(view, pos)) pos += 2;
  return static_cast<int>(pos);
}

}  // namespace lumr
