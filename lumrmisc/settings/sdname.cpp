#include "lumrmisc/settings/sdname.h"

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/random.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

char16_t Fold(char16_t unit) {
  if (unit >= 0x80) return UnitToLower(unit);
  return unit >= 'A' && unit <= 'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

}  // namespace

std::uint32_t SdName::HashOf(std::u16string_view name) {
  static const auto seed = static_cast<std::uint32_t>(RandomSeed());
  std::uint32_t hash = seed;
  for (const char16_t unit : name) {
    hash = (hash ^ Fold(unit)) * 0x01000193u;
    hash ^= hash >> 15;
  }
  return hash;
}

SdName::SdName(std::u16string_view name) : text_(name), hash_(HashOf(name)) {}

SdName::SdName(const char* name) {
  SetNarrow(name == nullptr ? std::string_view() : name);
}

SdName::SdName(const CStringA& name) {
  SetNarrow(name);
}

void SdName::SetNarrow(std::string_view name) {
  std::size_t ascii = 0;
  if (name.size() <= std::size(short_)) {
    for (; ascii < name.size() && static_cast<unsigned char>(name[ascii]) < 0x80; ++ascii) {
      short_[ascii] = static_cast<char16_t>(name[ascii]);
    }
  }
  if (ascii == name.size()) {
    text_ = {short_, ascii};
  } else {
    CBuffer utf16;
    ConvertToOtherCodePage2(AnsiCodePage(), name, 1200, utf16);
    long_ = utf16.Units();
    text_ = long_;
  }
  hash_ = HashOf(text_);
}

bool EqualSdNames(std::u16string_view a, std::u16string_view b) {
  return a.size() == b.size() && CompareUnitsNoCase(a, b) == 0;
}

bool SdNameBeginsWith(std::u16string_view name, std::u16string_view prefix) {
  return EqualSdNames(name.substr(0, prefix.size()), prefix);
}

}  // namespace lumr
