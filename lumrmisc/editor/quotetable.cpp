#include "lumrmisc/editor/quotetable.h"

namespace lumr {

int CQuoteTable::IndexOf(std::string_view prefix, CodeType codeType) {
  if (codeType != codeType_) Clear();
  codeType_ = codeType;
  if (last_ >= 0 && (*this)[last_] == prefix) return last_;
  const auto found = index_.find(prefix);
  if (found != index_.end()) return last_ = found->second;
  last_ = GetCount();
  prefixes_.emplace_back(prefix);
  index_.emplace(prefixes_.back(), last_);
  return last_;
}

void CQuoteTable::Clear() {
  index_.clear();
  prefixes_.clear();
  last_ = -1;
}

}  // namespace lumr
