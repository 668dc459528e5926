#include "lumrmisc/editor/linemetrics.h"

#include <algorithm>
#include <cstddef>

#include "lumrmisc/editor/linetext_internal.h"

namespace lumr {
namespace {

constexpr std::size_t kCharacters = 0x10000;
constexpr unsigned kUtf16 = 1200;

}  // namespace

void CEditorLineMetrics::SetLineMetrics(const CEditorMetrics& metrics, CodeType codeType,
                                        int turnMode, int limit, int noPixels) {
  codeType_ = codeType;
  page_ = IsCodeTypeUnicode(codeType) ? nullptr : &EditPageOf(codeType);
  quoteList_.Assign(metrics.EditableQuoteList.Bytes(), codeType);
  quoteLen_ = metrics.QuoteLen;
  indentList_.Assign(metrics.EditableIndentList.Bytes(), codeType);
  noTurnQuoted_ = metrics.NoTurnQuoted != 0;
  noTurnUrl_ = metrics.NoTurnURL != 0;
  const bool turns = turnMode == kTurnAtColumns || turnMode == kTurnAtPixels;
  mode_ = turns ? static_cast<TurnMode>(turnMode) : kTurnNever;
  noPixels_ = noPixels != 0;
  limit_ = std::max(limit, 0);
  head2Prev_.Assign(metrics.EditableHead2Prev.Bytes(), codeType);
  tail2Next_.Assign(metrics.EditableTail2Next.Bytes(), codeType);
  wordWrap_ = metrics.WordWrap != 0;
  tabColumn_ = std::max(metrics.TabColumn, 1);
}

void CEditorLineFontMetrics::SetFont(CWnd* window, const CFontInfo& font) {
  ReleaseContext();
  font_ = font;
  if (window == nullptr) return;
  widths_ = std::make_unique<int[]>(kCharacters);
  std::fill_n(widths_.get(), kCharacters, -1);
  context_ = window->TakeMeasuringContext();
  window_ = window;
}

void CEditorLineFontMetrics::ReleaseContext() {
  widths_.reset();
  if (context_ != nullptr) window_->ReleaseMeasuringContext(context_);
  context_ = nullptr;
  window_ = nullptr;
}

int CEditorLineFontMetrics::WidthOf(std::string_view character) {
  return WithLineText(
      Page(), character,
      [&](const auto& text) {
        const unsigned codePage = Page() != nullptr ? Page()->CodePage() : kUtf16;
        // What is no single character of the table is measured each time: pairs kept whole.
        if (character.size() > 2) return context_->TextWidth(character, codePage);
        int& width = widths_[text.At(0)];
        if (width < 0) width = std::max(context_->TextWidth(character, codePage), 0);
        return width;
      },
      KeepsPairs());
}

}  // namespace lumr
