#include "lumrmisc/settings/sdname.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/random.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

constexpr std::uint64_t kEveryUnit = 0x0001000100010001;
constexpr std::size_t kUnitsAtOnce = 4;

char16_t Fold(char16_t unit) {
  if (unit >= 0x80) return UnitToLower(unit);
  return unit >= 'A' && unit <= 'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

std::uint64_t LoadUnits(const char16_t* units) {
  std::uint64_t packed;
  std::memcpy(&packed, units, sizeof packed);
  return packed;
}

// Four units in lower case.
std::uint64_t Folded(std::uint64_t packed) {
  if ((packed & (0xff80 * kEveryUnit)) == 0) {
    // In each of them bit 7 tells whether the addition went past "A" - 1, and past "Z".
    const std::uint64_t fromA = packed + (0x80 - 'A') * kEveryUnit;
    const std::uint64_t pastZ = packed + (0x80 - 'Z' - 1) * kEveryUnit;
    return packed | ((fromA & ~pastZ & (0x80 * kEveryUnit)) >> 2);
  }
  std::uint64_t folded = 0;
  for (unsigned shift = 0; shift < 64; shift += 16) {
    folded |= static_cast<std::uint64_t>(Fold(static_cast<char16_t>(packed >> shift))) << shift;
  }
  return folded;
}

// Calls take(offset) for every four units of a text of four or more, the last four of which may be
// looked at twice. Stops when that gives false.
template <typename Take>
bool ForEachFour(std::size_t size, Take take) {
  std::size_t i = 0;
  for (; i + kUnitsAtOnce <= size; i += kUnitsAtOnce) {
    if (!take(i)) return false;
  }
  return i == size || take(size - kUnitsAtOnce);
}

// Four bytes as four units.
std::uint64_t Widened(std::uint32_t bytes) {
  const std::uint64_t pairs = (bytes | std::uint64_t{bytes} << 16) & 0x0000ffff0000ffff;
  return (pairs | pairs << 8) & 0x00ff00ff00ff00ff;
}

// The hash of a name, fed with its units by fours, or one by one where there are fewer.
class Hasher {
 public:
  explicit Hasher(std::size_t size) : hash_(Seed() + size) {}

  bool Add(std::uint64_t units) {
    hash_ = std::rotl((hash_ ^ Folded(units)) * 0x9e3779b97f4a7c15, 32);
    return true;
  }

  std::uint32_t Result() const { return static_cast<std::uint32_t>(hash_ ^ hash_ >> 32); }

 private:
  static std::uint64_t Seed() {
    static const auto seed = static_cast<std::uint64_t>(RandomSeed()) << 32;
    return seed;
  }

  std::uint64_t hash_;
};

bool AreWrittenAlike(std::u16string_view a, std::u16string_view b) {
  if (a.size() < kUnitsAtOnce) return a == b;
  return ForEachFour(
      a.size(), [&](std::size_t i) { return LoadUnits(a.data() + i) == LoadUnits(b.data() + i); });
}

}  // namespace

std::uint32_t SdName::HashOf(std::u16string_view name) {
  Hasher hasher(name.size());
  if (name.size() >= kUnitsAtOnce) {
    ForEachFour(name.size(), [&](std::size_t i) { return hasher.Add(LoadUnits(name.data() + i)); });
  } else {
    for (const char16_t unit : name) hasher.Add(unit);
  }
  return hasher.Result();
}

SdName::SdName(std::u16string_view name) : text_(name), hash_(HashOf(name)) {}

SdName::SdName(const char* name) {
  SetNarrow(name == nullptr ? std::string_view() : name);
}

SdName::SdName(const CStringA& name) {
  SetNarrow(name);
}

void SdName::SetNarrow(std::string_view name) {
  if (name.size() <= std::size(short_) && SetAscii(name)) return;
  CBuffer utf16;
  ConvertToOtherCodePage2(AnsiCodePage(), name, 1200, utf16);
  long_ = utf16.Units();
  text_ = long_;
  hash_ = HashOf(text_);
}

// Widens and hashes at one go, since looking up a short name is little else. False, with nothing
// set, where a character is not of ASCII.
bool SdName::SetAscii(std::string_view name) {
  Hasher hasher(name.size());
  const auto widen = [&](std::size_t i) {
    std::uint32_t bytes;
    std::memcpy(&bytes, name.data() + i, sizeof bytes);
    const std::uint64_t units = Widened(bytes);
    std::memcpy(short_ + i, &units, sizeof units);
    return (bytes & 0x80808080) == 0 && hasher.Add(units);
  };
  if (name.size() >= kUnitsAtOnce) {
    if (!ForEachFour(name.size(), widen)) return false;
  } else {
    for (std::size_t i = 0; i < name.size(); ++i) {
      short_[i] = static_cast<unsigned char>(name[i]);
      if (short_[i] >= 0x80) return false;
      hasher.Add(short_[i]);
    }
  }
  text_ = {short_, name.size()};
  hash_ = hasher.Result();
  return true;
}

bool EqualSdNames(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return false;
  return AreWrittenAlike(a, b) || CompareUnitsNoCase(a, b) == 0;
}

bool SdNameBeginsWith(std::u16string_view name, std::u16string_view prefix) {
  return EqualSdNames(name.substr(0, prefix.size()), prefix);
}

}  // namespace lumr
