// Keys (sections) and entries of settings.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "lumrmisc/platform/types.h"
#include "lumrmisc/settings/namedlist.h"
#include "lumrmisc/settings/sdname.h"

namespace lumr {

// A text that many entries are part of, wiped when the last of their keys ends.
struct SdTextBlock {
  explicit SdTextBlock(std::string_view utf16Bytes);  // a copy; an odd last byte is left out
  ~SdTextBlock();
  SdTextBlock(const SdTextBlock&) = delete;
  SdTextBlock& operator=(const SdTextBlock&) = delete;

  std::unique_ptr<char16_t[]> units;
  std::size_t size;  // in units
};

// One entry: a name and its value. Its text is its own, or part of a block that its key holds: so
// a file is loaded without a piece of memory an entry. Its own is wiped when the entry ends or
// takes another value.
class CSettingDataPair {
 public:
  CSettingDataPair(const SdName& name, std::u16string_view value);
  CSettingDataPair(const CSettingDataPair& other);
  CSettingDataPair(CSettingDataPair&& other) noexcept;
  CSettingDataPair& operator=(CSettingDataPair&& other) noexcept;
  ~CSettingDataPair() { ReleaseText(); }

  CStringA GetName() const;  // in the ANSI code page
  std::u16string_view Name() const { return {text_.start, text_.nameLength}; }
  std::u16string_view GetValue() const {
    return {text_.start + text_.nameLength + 1, text_.valueLength};
  }
  std::uint32_t NameHash() const { return text_.hash; }

  void ReplaceValue(std::u16string_view value);

  // The name, "=" and the value, and whether that is how they are written in a file.
  std::u16string_view Line() const {
    return {text_.start, text_.nameLength + 1u + text_.valueLength};
  }
  bool IsLineAsWritten() const { return text_.asWritten; }

 private:
  friend class CSettingDataKey;

  struct Text {
    const char16_t* start = nullptr;  // name, "=", value
    std::uint32_t nameLength = 0;
    std::uint32_t valueLength = 0;
    std::uint32_t hash = 0;  // of the name
    bool asWritten = false;
    bool isOwn = false;
  };

  explicit CSettingDataPair(const Text& text) : text_(text) {}
  void MakeText(std::u16string_view name, std::u16string_view value, std::uint32_t hash);
  void ReleaseText() noexcept;

  Text text_;
};

using SdPairList = NamedList<CSettingDataPair>;

// One key: a name and its entries in order.
class CSettingDataKey {
 public:
  // Entries may be part of the block.
  explicit CSettingDataKey(const SdName& name, std::shared_ptr<SdTextBlock> block = nullptr);
  CSettingDataKey(const CSettingDataKey& other);
  CSettingDataKey(CSettingDataKey&&) noexcept = default;
  CSettingDataKey& operator=(CSettingDataKey&&) noexcept = default;

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
  // Appends an entry whose text, name, "=" and value, is part of the block.
  void AppendFromBlock(const SdName& name, const char16_t* text, std::size_t valueLength,
                       bool asWritten);

 private:
  std::shared_ptr<SdTextBlock> block_;
  CStringW name_;
  std::uint32_t hash_;
  SdPairList pairs_;
};

using SdKeyList = NamedList<CSettingDataKey>;

// Text of settings in the ANSI code page and back.
CStringA NarrowSdText(std::u16string_view text);
CStringW WidenSdText(std::string_view text);

}  // namespace lumr
