// Finds where one of a few characters stands, 16 bytes of text at a time.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/search/codescan_internal.h"
#include "lumrmisc/search/regexp_plan_internal.h"

namespace lumr {

class RegExpSkip {
 public:
  static constexpr std::size_t npos = std::string_view::npos;

  // For the characters of some classes; off when there are too many.
  void Prepare(const RegExpPlan& plan, const RegExpClassSet& classes, const MbcsPage* page);
  bool IsOn() const { return narrow_.has_value() || wide_.has_value(); }

  // The first place at pos or behind it where one of the characters may stand; npos when there
  // is none. In narrow text it need not be a border of characters.
  std::size_t Next(std::string_view text, std::size_t pos) const {
    return wide_ ? wide_->Next(text, pos) : narrow_->Next(text, pos);
  }

 private:
  std::optional<CodeScan<false>> narrow_;
  std::optional<CodeScan<true>> wide_;
};

}  // namespace lumr
