// The parameters of a layout, made from the editor's settings once and read for every line.
#pragma once

#include <memory>
#include <string_view>

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/charset/editpage.h"
#include "lumrmisc/editor/characterlist.h"
#include "lumrmisc/editor/metrics.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/window.h"

namespace lumr {

// Where a layout turns lines.
enum TurnMode : int {
  kTurnNever = 0,
  kTurnAtColumns = 1,  // the limit is in columns
  kTurnAtPixels = 2,   // the limit is in pixels
};

// A copy of what layout, quote prefixes and indents need, with the lists compiled. It knows no
// window: a column is as wide as a headless one, 8 pixels. The class below measures in a font.
class CEditorLineMetrics {
 public:
  static constexpr int kHeadlessColumnPixels = HeadlessWindow::kColumnWidth;

  // Fills the bundle. metrics must have been made ready for codeType (ChangeCodePage); its
  // editable lists count. turnMode other than 1 and 2 is 0; limit is in columns or pixels;
  // noPixels not 0 leaves the pixel widths out where turning does not need them. Lists that did
  // not change are not compiled again.
  void SetLineMetrics(const CEditorMetrics& metrics, CodeType codeType, int turnMode, int limit,
                      int noPixels);

  // Null in the Unicode code types.
  const MbcsPage* Page() const { return page_; }
  CodeType GetCodeType() const { return codeType_; }
  bool IsUnicode() const { return page_ == nullptr; }

  const CharacterList& QuoteList() const { return quoteList_; }
  int QuoteLen() const { return quoteLen_; }
  const CharacterList& IndentList() const { return indentList_; }
  bool NoTurnQuoted() const { return noTurnQuoted_; }
  bool NoTurnUrl() const { return noTurnUrl_; }
  TurnMode Mode() const { return mode_; }
  bool NoPixels() const { return noPixels_; }
  int Limit() const { return limit_; }
  const CharacterList& Head2Prev() const { return head2Prev_; }
  const CharacterList& Tail2Next() const { return tail2Next_; }
  bool WordWrap() const { return wordWrap_; }
  int TabColumn() const { return tabColumn_; }

  // A character of UTF-16 text is one unit, and a line may be turned between the two halves of a
  // surrogate pair. Whoever hands out physical lines one by one keeps the pairs whole.
  bool KeepsPairs() const { return keepsPairs_; }
  void SetKeepPairs(bool keep) { keepsPairs_ = keep; }

 private:
  CodeType codeType_ = CT_SJIS;
  const MbcsPage* page_ = &EditPageOf(CT_SJIS);
  CharacterList quoteList_;
  int quoteLen_ = 8;
  CharacterList indentList_;
  bool noTurnQuoted_ = false;
  bool noTurnUrl_ = false;
  TurnMode mode_ = kTurnNever;
  bool noPixels_ = true;
  int limit_ = 0;
  CharacterList head2Prev_;
  CharacterList tail2Next_;
  bool wordWrap_ = true;
  int tabColumn_ = 4;
  bool keepsPairs_ = false;
};

// The same with a window to measure in. Widths are asked for once a character.
class CEditorLineFontMetrics : public CEditorLineMetrics {
 public:
  CEditorLineFontMetrics() = default;
  ~CEditorLineFontMetrics() { ReleaseContext(); }
  CEditorLineFontMetrics(const CEditorLineFontMetrics&) = delete;
  CEditorLineFontMetrics& operator=(const CEditorLineFontMetrics&) = delete;

  // Takes a measuring context from the window (null: headless columns), which must outlive it, and
  // forgets all widths. The context held so far goes back first.
  void SetFont(CWnd* window, const CFontInfo& font);
  void ReleaseContext();
  const CFontInfo& Font() const { return font_; }

  // Whether every column is kHeadlessColumnPixels wide.
  bool IsHeadless() const { return context_ == nullptr; }
  // The width in pixels of one character, which is not a tab.
  int WidthOf(std::string_view character);

 private:
  CWnd* window_ = nullptr;
  CMeasuringContext* context_ = nullptr;
  CFontInfo font_;
  std::unique_ptr<int[]> widths_;  // by EditorCharacter; -1: not asked for yet
};

}  // namespace lumr
