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
constexpr std::uint64_t kEveryByte = 0x0101010101010101;
constexpr std::size_t kUnitsAtOnce = 4;
constexpr std::uint64_t kFactor = 0x9e3779b97f4a7c15;

template <typename Value, typename Character>
Value LoadAt(const Character* text) {
  Value value;
  std::memcpy(&value, text, sizeof value);
  return value;
}

char16_t Fold(char16_t unit) {
  if (unit >= 0x80) return UnitToLower(unit);
  return unit >= 'A' && unit <= 'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

// Lanes of ASCII in lower case; every has a one in each of them. In each of them bit 7 tells
// whether the addition went past "A" - 1, and past "Z".
std::uint64_t FoldedAscii(std::uint64_t packed, std::uint64_t every) {
  const std::uint64_t fromA = packed + (0x80 - 'A') * every;
  const std::uint64_t pastZ = packed + (0x80 - 'Z' - 1) * every;
  return packed | ((fromA & ~pastZ & (0x80 * every)) >> 2);
}

bool AreAscii(std::uint64_t units) {
  return (units & (0xff80 * kEveryUnit)) == 0;
}

// Four units in lower case.
std::uint64_t Folded(std::uint64_t packed) {
  if (AreAscii(packed)) return FoldedAscii(packed, kEveryUnit);
  std::uint64_t folded = 0;
  for (unsigned shift = 0; shift < 64; shift += 16) {
    folded |= static_cast<std::uint64_t>(Fold(static_cast<char16_t>(packed >> shift))) << shift;
  }
  return folded;
}

// Four bytes as four units, and back.
std::uint64_t Widened(std::uint32_t bytes) {
  const std::uint64_t pairs = (bytes | std::uint64_t{bytes} << 16) & 0x0000ffff0000ffff;
  return (pairs | pairs << 8) & 0x00ff00ff00ff00ff;
}
std::uint32_t Narrowed(std::uint64_t units) {
  const std::uint64_t pairs = (units | units >> 8) & 0x0000ffff0000ffff;
  return static_cast<std::uint32_t>(pairs | pairs >> 16);
}

// Calls take(offset) for every count characters of a text of count or more, the last of which may
// be looked at twice. Stops when that gives false.
template <std::size_t kCount, typename Take>
bool ForEach(std::size_t size, Take take) {
  std::size_t i = 0;
  for (; i + kCount <= size; i += kCount) {
    if (!take(i)) return false;
  }
  return i == size || take(size - kCount);
}

// The hash of a name, which is fed by eights, or with all at once where there are fewer. Eight of
// ASCII are one step, so that they need not be widened to be hashed.
class Hasher {
 public:
  explicit Hasher(std::size_t size) : hash_(Seed() + size) {}

  // Eight bytes of ASCII.
  void AddBytes(std::uint64_t bytes) { Add(FoldedAscii(bytes, kEveryByte)); }

  // Twice four units.
  void AddUnits(std::uint64_t first, std::uint64_t second) {
    first = Folded(first);
    second = Folded(second);
    if (AreAscii(first | second)) {
      Add(Narrowed(first) | std::uint64_t{Narrowed(second)} << 32);
    } else {
      Add(first);
      Add(second);
    }
  }

  // Fewer than four bytes of ASCII, or units.
  template <typename Characters>
  void AddFew(Characters name) {
    std::uint64_t packed = 0;
    for (const auto c : name) packed = packed << 16 | Fold(static_cast<char16_t>(c));
    Add(packed);
  }

  // Names often differ at their end alone, and places in a table are the low bits: the last step
  // has to reach them too.
  std::uint32_t Result() const { return static_cast<std::uint32_t>(hash_ * kFactor >> 32); }

 private:
  static std::uint64_t Seed() {
    static const auto seed = static_cast<std::uint64_t>(RandomSeed()) << 32;
    return seed;
  }

  void Add(std::uint64_t value) { hash_ = std::rotl((hash_ ^ value) * kFactor, 32); }

  std::uint64_t hash_;
};

bool AreWrittenAlike(std::u16string_view a, std::u16string_view b) {
  if (a.size() < kUnitsAtOnce) return a == b;
  return ForEach<kUnitsAtOnce>(a.size(), [&](std::size_t i) {
    return LoadAt<std::uint64_t>(a.data() + i) == LoadAt<std::uint64_t>(b.data() + i);
  });
}

}  // namespace

std::uint32_t SdName::HashOf(std::u16string_view name) {
  Hasher hasher(name.size());
  const auto four = [&](std::size_t i) { return LoadAt<std::uint64_t>(name.data() + i); };
  if (name.size() < kUnitsAtOnce) {
    hasher.AddFew(name);
  } else if (name.size() < 2 * kUnitsAtOnce) {
    hasher.AddUnits(four(0), four(name.size() - kUnitsAtOnce));
  } else {
    ForEach<2 * kUnitsAtOnce>(name.size(), [&](std::size_t i) {
      hasher.AddUnits(four(i), four(i + kUnitsAtOnce));
      return true;
    });
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
  const auto widenFour = [&](std::size_t i) {
    const auto bytes = LoadAt<std::uint32_t>(name.data() + i);
    const std::uint64_t units = Widened(bytes);
    std::memcpy(short_ + i, &units, sizeof units);
    return bytes;
  };
  const auto add = [&](std::size_t first, std::size_t second) {
    const std::uint64_t bytes = widenFour(first) | std::uint64_t{widenFour(second)} << 32;
    hasher.AddBytes(bytes);
    return (bytes & (0x80 * kEveryByte)) == 0;
  };
  if (name.size() < kUnitsAtOnce) {
    for (std::size_t i = 0; i < name.size(); ++i) {
      short_[i] = static_cast<unsigned char>(name[i]);
      if (short_[i] >= 0x80) return false;
    }
    hasher.AddFew(name);
  } else if (name.size() < 2 * kUnitsAtOnce) {
    if (!add(0, name.size() - kUnitsAtOnce)) return false;
  } else if (!ForEach<2 * kUnitsAtOnce>(name.size(),
                                        [&](std::size_t i) { return add(i, i + kUnitsAtOnce); })) {
    return false;
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
