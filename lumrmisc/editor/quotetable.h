// The quote prefixes of a document, each of them once.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <string_view>

#include "lumrmisc/charset/codetype.h"

namespace lumr {

// A line keeps the index of its prefix. Indices hold until Clear, or until the line of the prefix
// that was added last changes it.
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
  // The same when the prefix of a line changes: index is what the last call for it gave (-1: none),
  // and so many first bytes stay the same. An empty prefix gives -1. What no other line is quoted
  // by is not kept, but becomes the new prefix, in time by what is changed: a line whose prefix
  // grows and grows leaves one prefix behind.
  int Change(int index, std::size_t same, std::string_view prefix, CodeType codeType);
  void Clear();

 private:
  // By size first, so that a long prefix is compared with equally long ones only.
  struct Before {
    bool operator()(std::string_view a, std::string_view b) const {
      return a.size() != b.size() ? a.size() < b.size() : a < b;
    }
  };
  bool Find(std::string_view prefix);
  void CloseOwn();
  void DropOwn();

  CodeType codeType_ = CT_UNKNOWN;
  std::deque<std::string> prefixes_;  // never moved: the keys of the index are views of them
  std::map<std::string_view, int, Before> index_;
  int last_ = -1;  // neighbouring lines are mostly quoted alike
  int own_ = -1;   // the last prefix while one line only has it; it is not in the index
};

}  // namespace lumr
