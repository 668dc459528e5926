#include "lumrmisc/settings/sdkey.h"

#include <cstring>
#include <new>
#include <utility>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/crypto/secret_internal.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/settings/sdescape_internal.h"

namespace lumr {

CStringA NarrowSdText(std::u16string_view text) {
  SecretBuffer narrow;
  ConvertToOtherCodePage2(
      1200, std::string_view(reinterpret_cast<const char*>(text.data()), text.size() * 2),
      AnsiCodePage(), narrow);
  return CStringA(narrow.Bytes());
}

CStringW WidenSdText(std::string_view text) {
  SecretBuffer wide;
  ConvertToOtherCodePage2(AnsiCodePage(), text, 1200, wide);
  return CStringW(wide.Units());
}

SdTextBlock::SdTextBlock(std::string_view utf16Bytes)
    : units(new char16_t[utf16Bytes.size() / 2 + 1]), size(utf16Bytes.size() / 2) {
  if (size > 0) std::memcpy(units.get(), utf16Bytes.data(), size * 2);
}

SdTextBlock::~SdTextBlock() {
  Wipe(units.get(), size * sizeof units[0]);
}

// ---- Entries

CSettingDataPair::CSettingDataPair(const SdName& name, std::u16string_view value) {
  MakeText(name.Text(), value, name.Hash());
}

CSettingDataPair::CSettingDataPair(const CSettingDataPair& other) {
  MakeText(other.Name(), other.GetValue(), other.NameHash());
}

CSettingDataPair::CSettingDataPair(CSettingDataPair&& other) noexcept
    : text_(std::exchange(other.text_, Text())) {}

CSettingDataPair& CSettingDataPair::operator=(CSettingDataPair&& other) noexcept {
  std::swap(text_, other.text_);
  return *this;
}

// name and value may be parts of the text there is.
void CSettingDataPair::MakeText(std::u16string_view name, std::u16string_view value,
                                std::uint32_t hash) {
  if (name.size() + value.size() > INT32_MAX / 2) throw std::bad_alloc();
  auto* const start = new char16_t[name.size() + 1 + value.size()];
  name.copy(start, name.size());
  start[name.size()] = u'=';
  value.copy(start + name.size() + 1, value.size());
  const bool asWritten =
      !NeedsSdEscape(name, SdField::kEntryName) && !NeedsSdEscape(value, SdField::kKeyNameOrValue);
  const Text made = {start,
                     static_cast<std::uint32_t>(name.size()),
                     static_cast<std::uint32_t>(value.size()),
                     hash,
                     asWritten,
                     true};
  ReleaseText();
  text_ = made;
}

void CSettingDataPair::ReleaseText() noexcept {
  if (!text_.isOwn) return;
  Wipe(const_cast<char16_t*>(text_.start), Line().size() * sizeof *text_.start);
  delete[] text_.start;
  text_ = Text();
}

CStringA CSettingDataPair::GetName() const {
  return NarrowSdText(Name());
}

void CSettingDataPair::ReplaceValue(std::u16string_view value) {
  MakeText(Name(), value, NameHash());
}

// ---- Keys

CSettingDataKey::CSettingDataKey(const SdName& name, std::shared_ptr<SdTextBlock> block)
    : block_(std::move(block)), name_(name.Text()), hash_(name.Hash()) {}

CSettingDataKey::CSettingDataKey(const CSettingDataKey& other)
    : block_(other.block_), name_(other.name_), hash_(other.hash_) {
  for (int i = 0; i < other.pairs_.Count(); ++i) {
    const CSettingDataPair& pair = *other.pairs_.At(i);
    pairs_.Append(pair.text_.isOwn ? CSettingDataPair(pair) : CSettingDataPair(pair.text_));
  }
}

CStringA CSettingDataKey::GetName() const {
  return NarrowSdText(name_);
}

void CSettingDataKey::ReplaceName(CStringW&& name) noexcept {
  name_ = std::move(name);
  hash_ = SdName::HashOf(name_);
}

bool CSettingDataKey::SetValue(const SdName& name, std::u16string_view value) {
  CSettingDataPair* const pair = pairs_.Find(name);
  if (pair == nullptr) {
    pairs_.Append(CSettingDataPair(name, value));
    return true;
  }
  if (pair->GetValue() == value) return false;
  pair->ReplaceValue(value);
  return true;
}

void CSettingDataKey::AppendFromBlock(const SdName& name, const char16_t* text,
                                      std::size_t valueLength, bool asWritten) {
  pairs_.Append(CSettingDataPair(
      CSettingDataPair::Text{text, static_cast<std::uint32_t>(name.Text().size()),
                             static_cast<std::uint32_t>(valueLength), name.Hash(), asWritten}));
}

}  // namespace lumr
