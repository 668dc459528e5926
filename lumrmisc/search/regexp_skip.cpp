#include "lumrmisc/search/regexp_skip_internal.h"

#include <vector>

namespace lumr {
namespace {

constexpr std::size_t kMostCodes = 16;

// Whether a code is one that text of the page holds.
bool IsCharacter(const MbcsPage* page, std::size_t code) {
  if (page == nullptr || code < 0x100) return true;
  return page->IsLead(static_cast<char>(code >> 8)) && page->IsTrail(static_cast<char>(code));
}

}  // namespace

void RegExpSkip::Prepare(const RegExpPlan& plan, const RegExpClassSet& classes,
                         const MbcsPage* page) {
  std::vector<char16_t> codes;
  for (std::size_t code = 0; code < plan.classOf.size(); ++code) {
    if (!HasClass(classes, plan.classOf[code]) || !IsCharacter(page, code)) continue;
    if (codes.size() == kMostCodes) return;
    codes.push_back(static_cast<char16_t>(code));
  }
  if (page == nullptr) {
    wide_.emplace();
  } else {
    narrow_.emplace();
  }
  for (const char16_t code : codes) {
    if (wide_) wide_->Add(code);
    if (narrow_) narrow_->Add(code);
  }
}

}  // namespace lumr
