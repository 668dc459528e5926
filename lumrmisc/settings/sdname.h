// Names of keys and entries in settings.
#pragma once

#include <cstdint>
#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

// A name that a function of the settings is asked for. Narrow names are in the ANSI code page;
// names are kept, compared and saved as UTF-16, so that a name which the code page cannot hold
// survives. Null is an empty name. Made for the time of a call: it may point into the caller's
// text.
class SdName {
 public:
  SdName(const char* name);
  SdName(const CStringA& name);
  SdName(const char16_t* name) : SdName(name == nullptr ? std::u16string_view() : name) {}
  SdName(const CStringW& name) : SdName(std::u16string_view(name)) {}
  SdName(std::u16string_view name);
  SdName(const SdName&) = delete;
  SdName& operator=(const SdName&) = delete;

  std::u16string_view Text() const { return text_; }
  // Equal for names that are equal without regard to case, and another in every process, so that
  // no file can be made to collide.
  std::uint32_t Hash() const { return hash_; }

  static std::uint32_t HashOf(std::u16string_view name);

 private:
  void SetNarrow(std::string_view name);
  bool SetAscii(std::string_view name);

  char16_t short_[40];
  CStringW long_;
  std::u16string_view text_;
  std::uint32_t hash_ = 0;
};

// Equality and prefixes without regard to case, as names are compared everywhere.
bool EqualSdNames(std::u16string_view a, std::u16string_view b);
bool SdNameBeginsWith(std::u16string_view name, std::u16string_view prefix);

}  // namespace lumr
