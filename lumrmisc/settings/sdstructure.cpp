// The operations on whole keys and groups of entries.
#include <utility>

#include "lumrmisc/settings/settingdata.h"

namespace lumr {
namespace {

// Adds the entries of from to those of to; what has the same name is replaced. Gives whether
// anything changed.
bool JoinEntries(CSettingDataKey& to, const CSettingDataKey& from) {
  bool changed = false;
  for (int i = 0; i < from.GetPairList().Count(); ++i) {
    const CSettingDataPair& pair = *from.GetPairList().At(i);
    changed |= to.SetValue(pair.Name(), pair.GetValue());
  }
  return changed;
}

bool EqualEntries(const CSettingDataKey& a, const CSettingDataKey& b) {
  const SdPairList& pairs = a.GetPairList();
  if (pairs.Count() != b.GetPairList().Count()) return false;
  for (int i = 0; i < pairs.Count(); ++i) {
    const CSettingDataPair* const other = b.GetPairList().Find(pairs.At(i)->Name());
    if (other == nullptr || other->GetValue() != pairs.At(i)->GetValue()) return false;
  }
  return true;
}

}  // namespace

int CSettingData::RemoveKey(const SdName& key, int) {
  const CSettingDataKey* const found = keys_.Find(key);
  if (found == nullptr) return 0;
  keys_.RemoveAt(keys_.IndexOf(found));
  return modified_ = 1;
}

int CSettingData::RemoveKeyBegin(const SdName& prefix, int) {
  const int removed = keys_.RemoveIf(
      [&](const CSettingDataKey& key) { return SdNameBeginsWith(key.Name(), prefix.Text()); });
  if (removed > 0) modified_ = 1;
  return removed > 0 ? 1 : 0;
}

int CSettingData::RemoveName(const SdName& key, const SdName& name) {
  CSettingDataKey* const found = keys_.Find(key);
  const CSettingDataPair* const pair = found == nullptr ? nullptr : found->Pairs().Find(name);
  if (pair == nullptr) return 0;
  found->Pairs().RemoveAt(found->Pairs().IndexOf(pair));
  return modified_ = 1;
}

int CSettingData::RemoveNameAt(const SdName& key, int index) {
  CSettingDataKey* const found = keys_.Find(key);
  if (found == nullptr || index < 0 || index >= found->Pairs().Count()) return 0;
  found->Pairs().RemoveAt(index);
  return modified_ = 1;
}

int CSettingData::RemoveNameBegin(const SdName& key, const SdName& prefix) {
  CSettingDataKey* const found = keys_.Find(key);
  if (found == nullptr) return 0;
  const int removed = found->Pairs().RemoveIf(
      [&](const CSettingDataPair& pair) { return SdNameBeginsWith(pair.Name(), prefix.Text()); });
  if (removed > 0) modified_ = 1;
  return removed > 0 ? 1 : 0;
}

int CSettingData::RenameKey(const SdName& key, const SdName& newName) {
  CSettingDataKey* const found = keys_.Find(key);
  const CSettingDataKey* const there = keys_.Find(newName);
  if (found == nullptr || (there != nullptr && there != found)) return 0;
  if (!IsSdKeyName(newName.Text()) || newName.Text() == found->Name()) return 0;
  CStringW name(newName.Text());
  keys_.Rename(found, [&name](CSettingDataKey& item) { item.ReplaceName(std::move(name)); });
  return modified_ = 1;
}

int CSettingData::RenameKeyBegin(const SdName& oldPrefix, const SdName& newPrefix) {
  SdKeyList renamed;
  bool changed = false;
  for (int i = 0; i < keys_.Count(); ++i) {
    const CSettingDataKey& key = *keys_.At(i);
    CStringW name(key.Name());
    if (SdNameBeginsWith(name, oldPrefix.Text())) {
      name.replace(0, oldPrefix.Text().size(), newPrefix.Text());
      if (!IsSdKeyName(name)) return 0;
      changed |= name != key.Name();
    }
    CSettingDataKey* target = renamed.Find(name);
    if (target == nullptr) target = renamed.Append(CSettingDataKey(name));
    JoinEntries(*target, key);
  }
  if (!changed) return 0;
  keys_ = std::move(renamed);
  return modified_ = 1;
}

int CSettingData::MoveKeyPosition(const SdName& key, int position) {
  const CSettingDataKey* const found = keys_.Find(key);
  if (found == nullptr || position < 0 || position >= keys_.Count()) return 0;
  const int from = keys_.IndexOf(found);
  if (from == position) return 0;
  keys_.Move(from, position);
  return modified_ = 1;
}

int CSettingData::CopySD(const CSettingData& from) {
  if (this == &from) return 0;
  SdKeyList copies;
  for (int i = 0; i < from.keys_.Count(); ++i) {
    copies.Append(CSettingDataKey(*from.keys_.At(i)));
  }
  keys_ = std::move(copies);
  return modified_ = 1;
}

int CSettingData::CopySdKey(int, const CSettingData& from, const SdName& key, int) {
  const CSettingDataKey* const source = from.keys_.Find(key);
  if (this == &from || source == nullptr) return 0;
  CSettingDataKey copy(*source);
  if (const CSettingDataKey* const old = keys_.Find(key)) {
    keys_.ReplaceAt(keys_.IndexOf(old), std::move(copy));
  } else {
    keys_.Append(std::move(copy));
  }
  return modified_ = 1;
}

int CSettingData::CopySdName(int, const CSettingData& from, const SdName& key, const SdName& name,
                             int) {
  const CSettingDataPair* const source = from.FindPair(key, name);
  if (this == &from || source == nullptr) return 0;
  const int before = std::exchange(modified_, 0);
  Write(key, source->Name(), source->GetValue());
  const int changed = modified_;
  modified_ |= before;
  return changed;
}

int CSettingData::CopySdNameBegin(int, const CSettingData& from, const SdName& key,
                                  const SdName& prefix, int) {
  const CSettingDataKey* const source = from.keys_.Find(key);
  if (this == &from || source == nullptr) return 0;
  int changed = 0;
  for (int i = 0; i < source->GetPairList().Count(); ++i) {
    const CSettingDataPair& pair = *source->GetPairList().At(i);
    if (!SdNameBeginsWith(pair.Name(), prefix.Text())) continue;
    changed |= CopySdName(0, from, key, pair.Name(), 0);
  }
  return changed;
}

int CSettingData::EqualSD(const CSettingData& other, int anyOrder) const {
  if (keys_.Count() != other.keys_.Count()) return 0;
  for (int i = 0; i < keys_.Count(); ++i) {
    const CSettingDataKey& key = *keys_.At(i);
    const CSettingDataKey* const there =
        anyOrder != 0 ? other.keys_.Find(key.Name()) : other.keys_.At(i);
    if (there == nullptr || !EqualSdNames(there->Name(), key.Name()) ||
        !EqualEntries(key, *there)) {
      return 0;
    }
  }
  return 1;
}

}  // namespace lumr
