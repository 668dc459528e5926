#include "lumrmisc/settings/sdname.h"

#include <algorithm>
#include <cstring>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/charset/wordscan_internal.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/random.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

constexpr std::uint64_t kEveryUnit = WordOf<char16_t>::kOnes;
constexpr std::uint64_t kEveryByte = WordOf<unsigned char>::kOnes;
constexpr std::size_t kUnitsAtOnce = 4;

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

// The product of two numbers in 128 bits, its halves as one.
std::uint64_t FoldedProduct(std::uint64_t a, std::uint64_t b) {
#if defined(__SIZEOF_INT128__)
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
#else
  const std::uint64_t low = (a & 0xffffffff) * (b & 0xffffffff);
  const std::uint64_t middle = (a >> 32) * (b & 0xffffffff) + (low >> 32);
  const std::uint64_t other = (a & 0xffffffff) * (b >> 32) + (middle & 0xffffffff);
  return ((low & 0xffffffff) | other << 32) ^
         ((a >> 32) * (b >> 32) + (middle >> 32) + (other >> 32));
#endif
}

// The hash of a name, which is fed by eights, or with all at once where there are fewer. Eight of
// ASCII are one step, so that they need not be widened to be hashed.
//
// Whoever writes the names knows the rule, but not the numbers of this process. The upper half of a
// product by an unknown number hides what a difference of two names becomes; in the lower half
// alone one of the highest bit stays one, and the next step could be made to undo it.
class Hasher {
 public:
  explicit Hasher(std::size_t size) : hash_(Secret().start + size) {}

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

  std::uint32_t Result() const { return static_cast<std::uint32_t>(hash_); }

 private:
  struct Numbers {
    std::uint64_t start;
    std::uint64_t factor;
  };
  static const Numbers& Secret() {
    static const Numbers numbers = {RandomSeed(), RandomSeed() | 1};
    return numbers;
  }

  void Add(std::uint64_t value) { hash_ = FoldedProduct(hash_ ^ value, factor_); }

  std::uint64_t hash_;
  std::uint64_t factor_ = Secret().factor;
};

bool AreWrittenAlike(std::u16string_view a, std::u16string_view b) {
  if (a.size() < kUnitsAtOnce) return a == b;
  return ForEach<kUnitsAtOnce>(a.size(), [&](std::size_t i) {
    return LoadValue<std::uint64_t>(a.data() + i) == LoadValue<std::uint64_t>(b.data() + i);
  });
}

}  // namespace

std::uint32_t SdName::HashOf(std::u16string_view name) {
  Hasher hasher(name.size());
  const auto four = [&](std::size_t i) { return LoadValue<std::uint64_t>(name.data() + i); };
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
    const auto bytes = LoadValue<std::uint32_t>(name.data() + i);
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
