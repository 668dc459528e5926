// Where the characters of a multibyte text begin, asked from anywhere in it.
#pragma once

#include <cstddef>
#include <string_view>

#include "lumrmisc/platform/mbcs.h"

namespace lumr {

// Tells for a position whether a character begins there when the text is read from its start.
//
// A byte that is no trail byte begins a character, and so does one behind a byte that is no lead
// byte. What is left are runs of bytes that are both, and these pair up from the run's start.
// The run of the last question is remembered, so that questions in rising or in falling order
// take time linear in the text in all, even when the whole text is one such run.
class CharacterBorders {
 public:
  CharacterBorders(const MbcsPage& page, std::string_view text) : page_(page), text_(text) {}

  bool IsBorder(std::size_t pos) {
    if (!MayBeTrail(pos)) return true;
    if (pos < runBegin_ || pos > runEnd_) FindRun(pos);
    return (pos - runBegin_) % 2 == 0;
  }

 private:
  bool MayBeTrail(std::size_t pos) const {
    return pos > 0 && page_.IsTrail(text_[pos]) && page_.IsLead(text_[pos - 1]);
  }

  void FindRun(std::size_t pos) {
    std::size_t begin = pos;
    while (MayBeTrail(begin)) begin = begin == runEnd_ ? runBegin_ : begin - 1;
    runBegin_ = begin;
    runEnd_ = pos;
  }

  const MbcsPage& page_;
  std::string_view text_;
  // Every position behind runBegin_, up to runEnd_, may be a trail byte; runBegin_ may not.
  std::size_t runBegin_ = 0;
  std::size_t runEnd_ = 0;
};

// The size of a text without a lead byte at its end that is no trail byte: what stands before reads
// as it does, however the text grows. border is a place at which a character begins; the nearer to
// the end, the less is read.
inline std::size_t SettledSize(const MbcsPage& page, std::string_view text, std::size_t border) {
  const std::string_view rest = text.substr(border);
  if (rest.empty() || !page.IsLead(rest.back())) return text.size();
  return text.size() - (page.IsTrailInContext(rest, rest.size() - 1) ? 0 : 1);
}

}  // namespace lumr
