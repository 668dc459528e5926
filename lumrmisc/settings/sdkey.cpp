#include "lumrmisc/settings/sdkey.h"

#include <utility>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/crypto/secret_internal.h"
#include "lumrmisc/platform/mbcs.h"

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

CSettingDataPair::CSettingDataPair(const SdName& name, std::u16string_view value)
    : nameLength_(name.Text().size()), hash_(name.Hash()) {
  text_.reserve(nameLength_ + value.size());
  text_.append(name.Text()).append(value);
}

CSettingDataPair::~CSettingDataPair() {
  WipeText(text_);
}

CStringA CSettingDataPair::GetName() const {
  return NarrowSdText(Name());
}

void CSettingDataPair::ReplaceValue(std::u16string_view value) {
  CStringW text;
  text.reserve(nameLength_ + value.size());
  text.append(Name()).append(value);
  text_.swap(text);
  WipeText(text);
}

CSettingDataKey::CSettingDataKey(const SdName& name) : name_(name.Text()), hash_(name.Hash()) {}

CSettingDataKey::CSettingDataKey(const CSettingDataKey& other)
    : name_(other.name_), hash_(other.hash_) {
  for (int i = 0; i < other.pairs_.Count(); ++i) {
    pairs_.Append(std::make_unique<CSettingDataPair>(*other.pairs_.At(i)));
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
    pairs_.Append(std::make_unique<CSettingDataPair>(name, value));
    return true;
  }
  if (pair->GetValue() == value) return false;
  pair->ReplaceValue(value);
  return true;
}

}  // namespace lumr
