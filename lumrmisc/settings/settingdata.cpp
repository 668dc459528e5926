#include "lumrmisc/settings/settingdata.h"

#include <algorithm>

#include "lumrmisc/crypto/secret_internal.h"
#include "lumrmisc/settings/sdvalue_internal.h"

namespace lumr {
namespace {

// Sets value from a pair's text by convert; the answer of the typed accessors.
template <typename T, typename Convert>
int Take(const CSettingDataPair* pair, T& value, Convert convert) {
  if (pair == nullptr) return 0;
  value = convert(pair->GetValue());
  return 1;
}

template <typename T>
CArray<T> ParseNumbers(std::u16string_view text) {
  CArray<T> numbers;
  for (const auto piece : SplitSdText(text, u',', true)) {
    numbers.push_back(ParseSdNumber<T>(piece));
  }
  return numbers;
}

template <typename T>
CStringW FormatNumbers(const T* values, std::size_t count) {
  const std::vector<long long> wide(values, values + count);
  return FormatSdNumbers(wide.data(), wide.size());
}

CStringW IndexedName(const SdName& prefix, std::size_t index) {
  return CStringW(prefix.Text()) + FormatSdNumber(static_cast<long long>(index));
}

}  // namespace

const CSettingDataPair* CSettingData::FindPair(const SdName& key, const SdName& name) const {
  const CSettingDataKey* const found = keys_.Find(key);
  return found == nullptr ? nullptr : found->GetPairList().Find(name);
}

const CSettingDataKey* CSettingData::GetKeyAt(int index) const {
  return index < 0 || index >= keys_.Count() ? nullptr : keys_.At(index);
}

// ---- Reading

int CSettingData::GetValue(const SdName& key, const SdName& name, int& value) const {
  return Take(FindPair(key, name), value, ParseSdNumber<int>);
}

int CSettingData::GetValue(const SdName& key, const SdName& name, std::uint32_t& value) const {
  return Take(FindPair(key, name), value, ParseSdNumber<std::uint32_t>);
}

int CSettingData::GetValue(const SdName& key, const SdName& name, long long& value) const {
  return Take(FindPair(key, name), value, ParseSdNumber<long long>);
}

int CSettingData::GetValue(const SdName& key, const SdName& name, CStringA& value) const {
  return Take(FindPair(key, name), value, NarrowSdText);
}

int CSettingData::GetValue(const SdName& key, const SdName& name, CStringW& value) const {
  return Take(FindPair(key, name), value, [](std::u16string_view text) { return text; });
}

int CSettingData::GetValue(const SdName& key, const SdName& name, CBuffer& value) const {
  return Take(FindPair(key, name), value, NarrowSdText);
}

int CSettingData::GetValue(const SdName& key, const SdName& name, CRect& value) const {
  const CSettingDataPair* const pair = FindPair(key, name);
  return pair != nullptr && ParseSdRect(pair->GetValue(), value) ? 1 : 0;
}

int CSettingData::GetValue(const SdName& key, const SdName& name, CStringArray& value) const {
  return Take(FindPair(key, name), value, [](std::u16string_view text) {
    CStringArray elements;
    for (const auto piece : SplitSdText(text, u'\t', false))
      elements.push_back(NarrowSdText(piece));
    return elements;
  });
}

int CSettingData::GetValue(const SdName& key, const SdName& name, CUIntArray& value) const {
  return Take(FindPair(key, name), value, ParseNumbers<unsigned>);
}

int CSettingData::GetValue(const SdName& key, const SdName& name, CArray<int>& value) const {
  return Take(FindPair(key, name), value, ParseNumbers<int>);
}

int CSettingData::GetValue(const SdName& key, const SdName& name, int* values, int count,
                           int defaultValue, int* complete) const {
  CArray<int> numbers;
  if (values == nullptr || count < 0 || GetValue(key, name, numbers) == 0) return 0;
  const auto wanted = static_cast<std::size_t>(count);
  if (complete != nullptr) *complete = numbers.size() == wanted ? 1 : 0;
  const std::size_t taken = std::min(wanted, numbers.size());
  std::fill_n(std::copy_n(numbers.begin(), taken, values), wanted - taken, defaultValue);
  return 1;
}

int CSettingData::GetHexValue(const SdName& key, const SdName& name, std::uint32_t& value) const {
  return Take(FindPair(key, name), value, ParseSdHexNumber);
}

int CSettingData::GetValueBegin(const SdName& key, const SdName& prefix,
                                CStringArray& value) const {
  const CSettingDataKey* const found = keys_.Find(key);
  CStringArray elements;
  while (found != nullptr) {
    const auto* const pair = found->GetPairList().Find(IndexedName(prefix, elements.size()));
    if (pair == nullptr) break;
    elements.push_back(NarrowSdText(pair->GetValue()));
  }
  if (elements.empty()) return 0;
  value = std::move(elements);
  return 1;
}

int CSettingData::GetIntValue(const SdName& key, const SdName& name, int min, int max,
                              int defaultValue) const {
  int value = 0;
  if (GetValue(key, name, value) == 0) return defaultValue;
  return std::max(min, std::min(value, max));
}

int CSettingData::GetBoolValue(const SdName& key, const SdName& name, int defaultValue) const {
  int value = defaultValue;
  GetValue(key, name, value);
  return value != 0 ? 1 : 0;
}

// ---- Writing

int CSettingData::Write(const SdName& key, const SdName& name, std::u16string_view value) {
  if (!IsSdEntryName(name.Text()) || !IsSdValue(value) || SetKey(key) == 0) return 0;
  if (keys_.Find(key)->SetValue(name, value)) modified_ = 1;
  return 1;
}

int CSettingData::WriteNarrow(const SdName& key, const SdName& name, std::string_view value) {
  CStringW wide = WidenSdText(value);
  const int written = Write(key, name, wide);
  WipeText(wide);
  return written;
}

int CSettingData::SetKey(const SdName& key) {
  if (!IsSdKeyName(key.Text())) return 0;
  if (keys_.Find(key) == nullptr) {
    keys_.Append(CSettingDataKey(key));
    modified_ = 1;
  }
  return 1;
}

int CSettingData::SetValue(const SdName& key, const SdName& name, const char* value) {
  return WriteNarrow(key, name, value == nullptr ? std::string_view() : value);
}

int CSettingData::SetValue(const SdName& key, const SdName& name, const char16_t* value) {
  return Write(key, name, value == nullptr ? std::u16string_view() : value);
}

int CSettingData::SetValue(const SdName& key, const SdName& name, const CStringA& value) {
  return WriteNarrow(key, name, value);
}

int CSettingData::SetValue(const SdName& key, const SdName& name, const CStringW& value) {
  return Write(key, name, value);
}

int CSettingData::SetValue(const SdName& key, const SdName& name, const CBuffer& value) {
  return WriteNarrow(key, name, value.Bytes());
}

int CSettingData::SetValue(const SdName& key, const SdName& name, int value) {
  return Write(key, name, FormatSdNumber(value));
}

int CSettingData::SetValue(const SdName& key, const SdName& name, std::uint32_t value) {
  return Write(key, name, FormatSdNumber(value));
}

int CSettingData::SetValue(const SdName& key, const SdName& name, long long value) {
  return Write(key, name, FormatSdNumber(value));
}

int CSettingData::SetValue(const SdName& key, const SdName& name, const CRect& value) {
  const int numbers[] = {value.left, value.top, value.right, value.bottom};
  return SetValue(key, name, numbers, 4);
}

int CSettingData::SetValue(const SdName& key, const SdName& name, const CStringArray& value) {
  CStringW joined;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (i > 0) joined += u'\t';
    joined += WidenSdText(value[i]);
  }
  return Write(key, name, joined);
}

int CSettingData::SetValue(const SdName& key, const SdName& name, const CUIntArray& value) {
  return Write(key, name, FormatNumbers(value.data(), value.size()));
}

int CSettingData::SetValue(const SdName& key, const SdName& name, const int* values, int count) {
  if (values == nullptr || count < 0) return 0;
  return Write(key, name, FormatNumbers(values, static_cast<std::size_t>(count)));
}

int CSettingData::SetHexValue(const SdName& key, const SdName& name, std::uint32_t value) {
  return Write(key, name, FormatSdHexNumber(value));
}

int CSettingData::SetValueBegin(const SdName& key, const SdName& prefix,
                                const CStringArray& value) {
  CStringArray stored;
  GetValueBegin(key, prefix, stored);
  if (stored == value) return 1;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (!IsSdValue(WidenSdText(value[i]))) return 0;
  }
  RemoveNameBegin(key, prefix);
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (Write(key, IndexedName(prefix, i), WidenSdText(value[i])) == 0) return 0;
  }
  return 1;
}

}  // namespace lumr
