// Keys (sections) and entries of settings.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "lumrmisc/platform/types.h"
#include "lumrmisc/settings/namedlist.h"
#include "lumrmisc/settings/sdname.h"

namespace lumr {

// One entry: a name and its value. Both are wiped when the entry ends, the value when another
// takes its place.
class CSettingDataPair {
 public:
  CSettingDataPair(const SdName& name, std::u16string_view value);
  CSettingDataPair(const CSettingDataPair&) = default;
  CSettingDataPair& operator=(const CSettingDataPair&) = delete;
  ~CSettingDataPair();

  CStringA GetName() const;  // in the ANSI code page
  std::u16string_view Name() const { return std::u16string_view(text_).substr(0, nameLength_); }
  std::u16string_view GetValue() const { return std::u16string_view(text_).substr(nameLength_); }
  std::uint32_t NameHash() const { return hash_; }

  void ReplaceValue(std::u16string_view value);

 private:
  CStringW text_;  // the name, then the value: one block of memory an entry
  std::size_t nameLength_;
  std::uint32_t hash_;
};

using SdPairList = NamedList<CSettingDataPair>;

// One key: a name and its entries in order.
class CSettingDataKey {
 public:
  explicit CSettingDataKey(const SdName& name);
  CSettingDataKey(const CSettingDataKey& other);
  CSettingDataKey& operator=(const CSettingDataKey&) = delete;

  CStringA GetName() const;  // in the ANSI code page
  std::u16string_view Name() const { return name_; }
  std::uint32_t NameHash() const { return hash_; }

  // The entries, read-only. Valid until the key changes.
  const SdPairList& GetPairList() const { return pairs_; }

  // For the owner of the key.
  SdPairList& Pairs() { return pairs_; }
  void ReplaceName(CStringW&& name) noexcept;
  // Sets an entry, appending a new one; gives whether that changed anything.
  bool SetValue(const SdName& name, std::u16string_view value);

 private:
  CStringW name_;
  std::uint32_t hash_;
  SdPairList pairs_;
};

using SdKeyList = NamedList<CSettingDataKey>;

// Text of settings in the ANSI code page and back.
CStringA NarrowSdText(std::u16string_view text);
CStringW WidenSdText(std::string_view text);

}  // namespace lumr
