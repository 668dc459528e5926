// The quote prefixes of a document, each of them once.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "lumrmisc/charset/codetype.h"

namespace lumr {

// A line keeps the index of its prefix. Indices hold until Clear.
class CQuoteTable {
 public:
  int GetCount() const { return static_cast<int>(prefixes_.size()); }
  // Unchecked: index is 0 to GetCount() - 1.
  std::string_view operator[](int index) const {
    return prefixes_[static_cast<std::size_t>(index)];
  }

  // The index of a prefix in text of a code type, which is added when it is new. A table of another
  // code type is cleared first.
  int IndexOf(std::string_view prefix, CodeType codeType);
  void Clear();

 private:
  CodeType codeType_ = CT_UNKNOWN;
  std::deque<std::string> prefixes_;  // never moved: the keys of the index are views of them
  std::unordered_map<std::string_view, int> index_;
  int last_ = -1;  // neighbouring lines are mostly quoted alike
};

}  // namespace lumr
