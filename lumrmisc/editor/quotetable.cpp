#include "lumrmisc/editor/quotetable.h"

namespace lumr {

int CQuoteTable::IndexOf(std::string_view prefix, CodeType codeType) {
  if (codeType != codeType_) Clear();
  codeType_ = codeType;
  const bool again = last_ >= 0 && (*this)[last_] == prefix;
  if (!again || last_ == own_) CloseOwn();
  if (again || Find(prefix)) return last_;
  prefixes_.emplace_back(prefix);
  return last_ = own_ = GetCount() - 1;
}

int CQuoteTable::Change(int index, std::size_t same, std::string_view prefix, CodeType codeType) {
  const bool isOwn = index >= 0 && index == own_ && codeType == codeType_;
  if (!isOwn) return prefix.empty() ? -1 : IndexOf(prefix, codeType);
  if (prefix.empty() || Find(prefix)) {
    DropOwn();
    return prefix.empty() ? -1 : last_;
  }
  std::string& own = prefixes_.back();
  own.resize(same);
  own += prefix.substr(same);
  return last_ = own_;
}

// Into last_, when it is in the index.
bool CQuoteTable::Find(std::string_view prefix) {
  const auto found = index_.find(prefix);
  if (found == index_.end()) return false;
  last_ = found->second;
  return true;
}

void CQuoteTable::CloseOwn() {
  if (own_ >= 0) index_.emplace(prefixes_.back(), own_);
  own_ = -1;
}

void CQuoteTable::DropOwn() {
  prefixes_.pop_back();
  if (last_ == own_) last_ = -1;
  own_ = -1;
}

void CQuoteTable::Clear() {
  index_.clear();
  prefixes_.clear();
  last_ = own_ = -1;
}

}  // namespace lumr
