#include "lumrmisc/editor/editorwnd.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/editor/layout.h"
#include "lumrmisc/editor/quote.h"

namespace lumr {
namespace {

constexpr int kInsertCaretWidth = 2;
constexpr int kLineRulerColumns = 6;

int ClampToInt(long long value) {
  return static_cast<int>(std::clamp<long long>(value, std::numeric_limits<int>::min(),
                                                std::numeric_limits<int>::max()));
}

std::string_view TextOf(const char* text, int len, CodeType codeType) {
  if (len < 0 && IsCodeTypeUnicode(codeType)) return CountedUnits(text);
  return CountedText(text, len);
}

}  // namespace

CEditorWnd::CEditorWnd()
    : headless_(std::make_unique<HeadlessWindow>()),
      lineMetrics_(std::make_unique<CEditorLineFontMetrics>()) {
  SelectFont(document_.GetCodeType());
}

CEditorWnd::~CEditorWnd() = default;

int CEditorWnd::CreateEditorWnd(std::uint32_t style, std::uint32_t exStyle, const CRect& rect,
                                CWnd* parent, unsigned id, const CEditorMetrics& metrics,
                                const CEditorColor& colors) {
  lineMetrics_->ReleaseContext();
  window_ = parent != nullptr ? parent->CreateChild(style, exStyle, rect, id) : nullptr;
  if (!window_) headless_ = HeadlessWindow().CreateChild(style, exStyle, rect, id);
  if (readOnly_ != 0) Window().DetachInputMethod();
  metrics_ = metrics;
  colors_ = colors;
  SelectFont(document_.GetCodeType());
  document_.LayOutAll(*lineMetrics_);
  AfterLayout();
  return parent == nullptr || window_ ? 1 : 0;
}

// ---- Settings

int CEditorWnd::ChangeEditorColors(const CEditorColor& colors) {
  if (colors == colors_) return 0;
  colors_ = colors;
  InvalidateAll(true);
  return 1;
}

int CEditorWnd::ChangeEditorMetrics(const CEditorMetrics& metrics) {
  if (metrics == metrics_) return 0;
  const bool caretChanges = (metrics.ShowCaret != 0) != (metrics_.ShowCaret != 0);
  metrics_ = metrics;
  SelectFont(document_.GetCodeType());
  document_.LayOutAll(*lineMetrics_);
  AfterLayout();
  UpdateHorizontalBar();
  UpdateVerticalBar();
  InvalidateAll(true);
  if (caretChanges) {
    MoveCaret();
    if (Window().HasFocus()) {
      if (metrics_.ShowCaret != 0) {
        MakeCaret();
        Window().ShowCaret();
      } else {
        DropCaret();
      }
    }
  }
  return 1;
}

// Makes everything ready that depends on code type, font and settings, but the lines.
void CEditorWnd::SelectFont(CodeType codeType) {
  lineMetrics_->ReleaseContext();
  metrics_.ChangeCodePage(codeType);
  metrics_.MultiFont.SelectFont(CharSetCode2FontCharSet(codeType), window_.get());
  lineHeight_ = std::max(Window().LineHeight() + std::max(metrics_.LineSpace, 0), 1);
  charWidth_ = std::max(Window().AverageCharWidth(), 1);
  DeriveTurnLimit();
  lineMetrics_->SetLineMetrics(metrics_, codeType, turnMode_, turnLimit_, 0);
  lineMetrics_->SetFont(window_.get(), metrics_.MultiFont.GetSelectedFont());
}

void CEditorWnd::DeriveTurnLimit() {
  turnMode_ = metrics_.AutoTurn == 1 || metrics_.AutoTurn == 2 ? metrics_.AutoTurn : kTurnNever;
  turnLimit_ = 0;
  if (turnMode_ == kTurnAtColumns) turnLimit_ = metrics_.TurnCols;
  if (turnMode_ == kTurnAtPixels) turnLimit_ = TextAreaWidth();
}

int CEditorWnd::TextAreaWidth() const {
  const CRect area = Window().ClientArea();
  const int ruler = metrics_.ShowLineRuler != 0 ? kLineRulerColumns * charWidth_ : 0;
  return std::max(area.right - area.left - ruler, 0);
}

void CEditorWnd::SetLineMetrics(CEditorLineMetrics& bundle, int noPixels) const {
  bundle.SetLineMetrics(metrics_, document_.GetCodeType(), turnMode_, turnLimit_, noPixels);
}

void CEditorWnd::SetLineFontMetrics(CEditorLineFontMetrics& bundle, int noPixels) const {
  SetLineMetrics(bundle, noPixels);
  bundle.SetFont(window_.get(), metrics_.MultiFont.GetSelectedFont());
}

int CEditorWnd::UpdateAutoTurn() {
  if (turnMode_ == kTurnNever) return 0;
  DeriveTurnLimit();
  lineMetrics_->SetLineMetrics(metrics_, document_.GetCodeType(), turnMode_, turnLimit_, 0);
  if (!document_.LayOutTurned(*lineMetrics_)) return 0;
  AfterLayout();
  return 1;
}

// ---- Text

int CEditorWnd::SetDocument(CodeType type, const char* text, int len) {
  selection_.Clear();
  caret_.Reset();
  lineMarkers_.Clear();
  document_.Clear(type);
  undo_.Clear();
  found_.Clear();
  lineRanges_.Clear();
  top_.ToDocHome();
  leftPixels_ = 0;
  MoveCaret();
  SelectFont(type);
  AppendText(text, len, 0);
  return 1;
}

void CEditorWnd::AppendText(const char* text, int len, int quote) {
  const int last = GetLineCount() - 1;
  const bool wasTurned = GetLineCountP(last) > 1;
  document_.Append(*lineMetrics_, TextOf(text, len, GetCodeType()), QuoteMark(quote));
  // What the last line grew by may turn it before it, too.
  if (wasTurned || GetLineCountP(last) > 1) AfterLayout(last);
  UpdateHorizontalBar();
  UpdateVerticalBar();
  InvalidateAll(false);
  Window().NotifyOwner(kNotifyDocumentChanged);
}

void CEditorWnd::AppendDoc(const CEditorWnd& other, int quote) {
  CBuffer text;
  other.GetDocument(0, 0, 1, 0, text);
  const CodeType from = CodeTypeSave2Edit(other.GetCodeType());
  const CodeType to = CodeTypeSave2Edit(GetCodeType());
  if (from != to) {
    CBuffer converted;
    ConvertToOtherCodeType2(from, text.Bytes(), to, converted);
    text.MoveFrom(converted);
  }
  AppendText(text.GetBuffer(), text.GetLength(), quote);
}

std::string_view CEditorWnd::QuoteMark(int quote) const {
  return quote != 0 ? metrics_.EditableQuoteMark.Bytes() : std::string_view();
}

void CEditorWnd::GetDocument(int withHeader, int quote, int lineEnds, int finalLineEnd,
                             CBuffer& out) const {
  document_.Write(withHeader != 0, {QuoteMark(quote), lineEnds != 0, finalLineEnd != 0}, out);
}

void CEditorWnd::GetDocument2(CBuffer& out) const {
  document_.WriteShown(out);
}

void CEditorWnd::GetDocumentPart(const CTextPos& a, const CTextPos& b, int quote, int lineEnds,
                                 CBuffer& out) const {
  document_.WriteBetween(a, b, {QuoteMark(quote), lineEnds != 0, false}, out);
}

void CEditorWnd::GetTextWithin(const CTextPos& a, const CTextPos& b, CBuffer& out) const {
  GetDocumentPart(a, b, 0, 1, out);
}

void CEditorWnd::GetTextWithin(int fromByte, int toByte, CBuffer& out) const {
  CTextPos from;
  CTextPos to;
  const auto place = [this](int byte, CTextPos& pos) {
    if (byte < 0 || document_.ByteToPos(byte, false, pos)) return;
    pos = CTextPos(GetLineCount(), 0);
  };
  place(fromByte, from);
  place(toByte, to);
  GetTextWithin(from, to, out);
}

void CEditorWnd::InsertHeaderText(const char* text, int len) {
  if (document_.GetHeaderCount() > 0 || text == nullptr || len < 1) return;
  bool wider = false;
  const int count = document_.InsertHeader(*lineMetrics_, CountedText(text, len), wider);
  InsertHeaderLines(count);
  SetTopLine(top_.line, top_.physLine);
  if (wider) UpdateHorizontalBar();
  UpdateVerticalBar();
  InvalidateAll(false);
  caret_.pos.UpLineL(count, count, GetLineCount() - 1);
  MoveCaret();
  Window().NotifyOwner(kNotifyDocumentChanged);
}

void CEditorWnd::RemoveHeaderText() {
  const int count = document_.RemoveHeader();
  if (count == 0) return;
  InsertHeaderLines(-count);
  SetTopLine(top_.line, top_.physLine);
  UpdateHorizontalBar();
  UpdateVerticalBar();
  InvalidateAll(false);
  caret_.pos.UpLineL(-count, 0, std::max(GetLineCount() - 1, 0));
  MoveCaret();
  Window().NotifyOwner(kNotifyDocumentChanged);
}

void CEditorWnd::InsertHeaderLines(int delta) {
  if (delta == 0) return;
  const int minLine = std::max(delta, 0);
  const int maxLine = std::max(GetLineCount() - 1, minLine);
  VisitKeptPlaces([&](CTextPos& pos) { pos.UpLineL(delta, minLine, maxLine); });
}

template <typename Visitor>
void CEditorWnd::VisitKeptPlaces(Visitor visit) {
  visit(caret_.home);
  selection_.VisitPlaces(visit);
  lineRanges_.VisitPlaces(visit);
  lineMarkers_.VisitPlaces(visit);
  found_.VisitPlaces(visit);
  undo_.VisitPlaces(visit);
}

// The lines from one on are turned elsewhere now: the byte in the logical line says where a place
// is. Below the last line, where the caret may stand freely, nothing is turned.
void CEditorWnd::AfterLayout(int from) {
  const auto follow = [this, from](CTextPos& pos) {
    if (pos.line >= from && GetLine(pos.line) != nullptr) L2PByteIndex(pos);
  };
  VisitKeptPlaces(follow);
  follow(caret_.pos);
  follow(top_);
}

void CEditorWnd::SetCodeType(CodeType type) {
  SelectFont(type);
  document_.SetCodeType(type, *lineMetrics_);
  AfterLayout();
  UpdateHorizontalBar();
  UpdateVerticalBar();
  InvalidateAll(false);
}

void CEditorWnd::SetReadOnly(int on) {
  if ((on != 0) == (readOnly_ != 0)) return;
  readOnly_ = on != 0;
  if (readOnly_ != 0) {
    Window().DetachInputMethod();
    if (metrics_.ShowCaret != 0 || !Window().HasFocus()) return;
    DropCaret();
  } else {
    Window().AttachInputMethod();
    if (metrics_.ShowCaret != 0 || !Window().HasFocus()) return;
    MakeCaret();
    caret_.pos = CTextPos(top_.line, top_.physLine, 0);
    P2LByteIndex(caret_.pos, 1);
    MoveCaret();
    Window().ShowCaret();
  }
  InvalidateColumnRuler();
}

void CEditorWnd::SetOverwrite(int on) {
  if (readOnly_ != 0 || (on != 0) == (overwrite_ != 0)) return;
  overwrite_ = on != 0;
  if (!Window().HasFocus()) return;
  DropCaret();
  MakeCaret();
  MoveCaret();
  Window().ShowCaret();
}

// ---- Counts and places

const CLLineData* CEditorWnd::GetLine(int line) const {
  return line >= 0 && line < GetLineCount() ? &document_[line] : nullptr;
}

int CEditorWnd::GetLineCountP(int line) const {
  if (const CLLineData* const data = GetLine(line)) return data->PhysicalLines().Count();
  return line >= 0 && metrics_.FreeCursor != 0 ? 1 : 0;
}

int CEditorWnd::GetLineByteCountP(int line, int physLine) const {
  const CLLineData* const data = GetLine(line);
  if (data == nullptr || physLine < 0 || physLine >= data->PhysicalLines().Count()) return 0;
  const CPhysicalLines& physical = data->PhysicalLines();
  return physical.EndOf(physLine, data->Length()) - physical[physLine].start;
}

int CEditorWnd::GetSerialLineP(int line, int physLine) const {
  return ClampToInt(document_.GetSerialLine(line, physLine));
}

void CEditorWnd::L2PByteIndex(CTextPos& pos) const {
  document_.LogicalToPhysical(pos);
}

void CEditorWnd::P2LByteIndex(CTextPos& pos, int flag) const {
  const bool isStart = pos.physLine < 1 && pos.byteP < 1;
  const bool isNone = GetLine(pos.line) == nullptr;
  pos.byteL =
      isStart || isNone ? 0 : document_.ByteOf(pos.line, pos.physLine, pos.byteP, flag != 0);
}

int CEditorWnd::ByteL2ViewIndex(int index, int toNextLine, CTextPos& pos) const {
  return document_.ByteToPos(index, toNextLine != 0, pos);
}

int CEditorWnd::ViewIndex2ByteL(const CTextPos& pos) const {
  return document_.PosToByte(pos);
}

// ---- Quotes and indents

int CEditorWnd::GetQuoteLength(const CLLineData* line, int len) const {
  if (line == nullptr || len <= 0) return 0;
  const int index = line->GetQuoteIndex();
  const CQuoteTable& table = document_.QuoteTable();
  if (index < 0 || index >= table.GetCount()) return 0;
  const int prefix = static_cast<int>(table[index].size());
  len = std::min(len, line->Length());
  if (len <= prefix) return len;
  const std::string_view rest =
      line->Text().substr(static_cast<std::size_t>(prefix), static_cast<std::size_t>(len - prefix));
  return prefix + IndentRunLength(*lineMetrics_, rest);
}

int CEditorWnd::GetIndentLength(const char* text, int len) const {
  if (text == nullptr || len < 1 || metrics_.AutoIndent == 0) return 0;
  return IndentRunLength(*lineMetrics_, CountedText(text, len));
}

// ---- The window

void CEditorWnd::InvalidateAll(bool erase) {
  Window().Invalidate(nullptr, erase);
}

void CEditorWnd::InvalidateColumnRuler() {
  if (metrics_.ShowColRuler == 0) return;
  CRect ruler = Window().ClientArea();
  ruler.bottom = std::min(ruler.bottom, ruler.top + lineHeight_);
  Window().Invalidate(&ruler, false);
}

// In average character widths.
void CEditorWnd::UpdateHorizontalBar() {
  const int widest = document_.GetWidest();
  Window().SetScrollBar(ScrollBar::kHorizontal,
                        {static_cast<int>((widest + charWidth_ - 1LL) / charWidth_),
                         TextAreaWidth() / charWidth_, leftPixels_ / charWidth_});
}

// In physical lines.
void CEditorWnd::UpdateVerticalBar() {
  const CRect area = Window().ClientArea();
  Window().SetScrollBar(ScrollBar::kVertical, {GetSerialLineP(GetLineCount(), 0),
                                               std::max(area.bottom - area.top, 0) / lineHeight_,
                                               GetSerialLineP(top_.line, top_.physLine)});
}

void CEditorWnd::SetCaretPos(const CTextPos& pos) {
  caret_.pos = pos;
  P2LByteIndex(caret_.pos, 0);
  caret_.home = caret_.pos;
  MoveCaret();
}

void CEditorWnd::SetTopLine(int line, int physLine) {
  const int last = std::max(GetLineCount() - 1, 0);
  top_ = CTextPos(std::clamp(line, 0, last), 0);
  top_.physLine = std::clamp(physLine, 0, std::max(GetLineCountP(top_.line) - 1, 0));
  P2LByteIndex(top_, 1);
}

void CEditorWnd::MoveCaret() {
  Window().MoveCaret(CaretPoint());
}

void CEditorWnd::MakeCaret() {
  Window().CreateCaret(overwrite_ != 0 ? charWidth_ : kInsertCaretWidth, lineHeight_);
}

void CEditorWnd::DropCaret() {
  Window().HideCaret();
  Window().DestroyCaret();
}

CPoint CEditorWnd::CaretPoint() const {
  const long long rows = document_.GetSerialLine(caret_.pos.line, caret_.pos.physLine) -
                         document_.GetSerialLine(top_.line, top_.physLine);
  const int left = metrics_.ShowLineRuler != 0 ? kLineRulerColumns * charWidth_ : 0;
  const int upper = metrics_.ShowColRuler != 0 ? lineHeight_ : 0;
  long long x = left - leftPixels_;
  int before = caret_.pos.byteP;
  if (const CLLineData* const line = GetLine(caret_.pos.line)) {
    const CPhysicalLines& physical = line->PhysicalLines();
    if (caret_.pos.physLine >= 0 && caret_.pos.physLine < physical.Count()) {
      const int length = GetLineByteCountP(caret_.pos.line, caret_.pos.physLine);
      const int inside = std::clamp(before, 0, length);
      x += CountPixels(
          *lineMetrics_,
          line->Text().substr(static_cast<std::size_t>(physical[caret_.pos.physLine].start),
                              static_cast<std::size_t>(inside)));
      before -= inside;
    }
  }
  // Behind the end of a line every place is as wide as an average character.
  x += static_cast<long long>(before) * charWidth_;
  return {ClampToInt(x), ClampToInt(upper + rows * lineHeight_)};
}

}  // namespace lumr
