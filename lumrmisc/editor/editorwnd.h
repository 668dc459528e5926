// The plain-text mail editor: a document, laid out by the settings, in a window.
//
// The editor runs on the thread that owns its window. Without one (before CreateEditorWnd, or with
// a null parent) it is headless: every column is 8 pixels wide and every line 16 high.
//
// Texts are pointers with lengths in bytes in the document's code type, in edit form (a Unicode one
// is UTF-16, whose odd last byte is left out), and lie outside the document. A negative length
// means up to the terminator in SetDocument and AppendText, and no text elsewhere. Lines are
// counted from 0 and hold no line ends; those that are given back are CR LF. Bad arguments do
// nothing or give 0. Nothing is thrown but std::bad_alloc.
#pragma once

#include <cstdint>
#include <memory>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/editor/colors.h"
#include "lumrmisc/editor/document.h"
#include "lumrmisc/editor/editstate.h"
#include "lumrmisc/editor/linemetrics.h"
#include "lumrmisc/editor/metrics.h"
#include "lumrmisc/editor/textpos.h"
#include "lumrmisc/platform/window.h"

namespace lumr {

class CEditorWnd {
 public:
  CEditorWnd();
  CEditorWnd(const CEditorWnd&) = delete;
  CEditorWnd& operator=(const CEditorWnd&) = delete;
  virtual ~CEditorWnd();

  // Makes the editor's window, a child of parent, and takes copies of both records; the document
  // stays. Style, extended style and id are the host's own. Returns 1, or 0 when the parent makes
  // no window: the editor is headless then, as it is with a null parent, which returns 1.
  int CreateEditorWnd(std::uint32_t style, std::uint32_t exStyle, const CRect& rect, CWnd* parent,
                      unsigned id, const CEditorMetrics& metrics, const CEditorColor& colors);
  CWnd* GetWindow() const { return window_.get(); }

  // ---- Settings

  const CEditorMetrics& GetEditorMetrics() const { return metrics_; }
  const CEditorColor& GetEditorColors() const { return colors_; }
  // Return 0, and do nothing, when the record is equal to the editor's; else 1. New metrics lay
  // every line out again.
  int ChangeEditorMetrics(const CEditorMetrics& metrics);
  int ChangeEditorColors(const CEditorColor& colors);

  // Fill the parameters of a layout as the editor's own lines are laid out. noPixels not 0 leaves
  // pixel widths out where turning does not need them. The second form takes a measuring
  // context of the window, which must outlive it.
  void SetLineMetrics(CEditorLineMetrics& bundle, int noPixels) const;
  void SetLineFontMetrics(CEditorLineFontMetrics& bundle, int noPixels) const;
  int GetTurnMode() const { return turnMode_; }
  int GetTurnLimit() const { return turnLimit_; }

  // For after a change of the window's size or of the limit: lays out again every line that is
  // turned or passes the limit. Returns 1 when there was one, else 0; 0 when lines are not turned.
  int UpdateAutoTurn();

  // ---- Text

  // Replaces the document, its code type, and all that is kept of places in the old one. The new
  // one has no header lines. Returns 1.
  int SetDocument(CodeType type, const char* text, int len);
  // Appends text, which goes on with the last line. CR LF, CR and LF end lines; behind a line end
  // at the end stands an empty line. With quote not 0 each line of the text, but an empty last
  // one, gets the quote mark before it.
  void AppendText(const char* text, int len, int quote);
  // Appends another editor's document without its header lines, converted from its code type.
  void AppendDoc(const CEditorWnd& other, int quote);

  // Give the text; out is replaced. withHeader: from the first header line on. quote: the
  // quote mark before each line but an empty last one. lineEnds: between lines, else they are
  // joined. finalLineEnd, with lineEnds: one at the end too, unless there is one. GetDocument2
  // gives the text as it is shown, without header lines: turned lines become lines.
  void GetDocument(int withHeader, int quote, int lineEnds, int finalLineEnd, CBuffer& out) const;
  void GetDocument2(CBuffer& out) const;
  // Give the text between two places, which may come in either order and are named by their
  // physical lines; or between two bytes of the document, line ends not counted. GetTextWithin
  // gives it with line ends and without quote marks.
  void GetDocumentPart(const CTextPos& a, const CTextPos& b, int quote, int lineEnds,
                       CBuffer& out) const;
  void GetTextWithin(const CTextPos& a, const CTextPos& b, CBuffer& out) const;
  void GetTextWithin(int fromByte, int toByte, CBuffer& out) const;

  // Inserts the lines of a text above the document as header lines, which GetDocument can leave
  // out. Nothing when there are header lines already, or no text.
  void InsertHeaderText(const char* text, int len);
  void RemoveHeaderText();
  // Moves every place that is kept by delta logical lines: the caret's home, the selection, line
  // ranges, line markers, found ranges, the undo history. The caret itself stays.
  void InsertHeaderLines(int delta);

  CodeType GetCodeType() const { return document_.GetCodeType(); }
  // Reads the same bytes in another code type.
  void SetCodeType(CodeType type);

  // A read-only editor has no input method, and shows a caret only when the settings say so.
  void SetReadOnly(int on);
  int IsReadOnly() const { return readOnly_; }
  // Typed text replaces what stands there. Cannot be changed while the editor is read-only.
  void SetOverwrite(int on);
  int IsOverwrite() const { return overwrite_; }

  // ---- Counts and places

  int GetLineCount() const { return document_.GetLineCount(); }
  int GetHeaderLineCount() const { return document_.GetHeaderCount(); }
  // The size in bytes with line ends.
  long long GetDocumentSize() const { return document_.GetByteSize(); }
  // The width in pixels of the widest physical line.
  int GetWidest() const { return document_.GetWidest(); }
  // A line, or null; valid until the document changes.
  const CLLineData* GetLine(int line) const;

  // The number of physical lines of a line. Behind the last line: 1 with FreeCursor, else 0.
  int GetLineCountP(int line) const;
  // The length of a physical line in bytes, 0 when there is none.
  int GetLineByteCountP(int line, int physLine) const;
  // The number of physical lines before a physical line. Lines behind the last one count 1 each;
  // 0 for a negative line.
  int GetSerialLineP(int line, int physLine) const;
  // The number of physical lines of the header lines.
  int GetHeaderLineP() const { return document_.GetHeaderPhysicalLines(); }

  // From the byte in the logical line to the physical line and the byte in it; a place where the
  // line is turned is the start of the later physical line. 0 and 0 for a byte of 0 or less and for
  // a line that is none.
  void L2PByteIndex(CTextPos& pos) const;
  // The way back. A physical line that is none gives the line's end. With flag not 0 the byte is
  // held within the physical line. 0 when both are below 1, and for a line that is none.
  void P2LByteIndex(CTextPos& pos, int flag) const;
  // From a byte of the document, line ends not counted, to a place. Between two lines that is the
  // end of the first, or with toNextLine not 0 the start of the next one that is not empty.
  // Returns 1, or 0 (and leaves pos) when the document has no such byte.
  int ByteL2ViewIndex(int index, int toNextLine, CTextPos& pos) const;
  // The way back, from the physical line and the byte in it; 0 when there are no lines.
  int ViewIndex2ByteL(const CTextPos& pos) const;

  // ---- Quotes and indents

  // How many of the first len bytes of a line are quote prefix and the indent behind it; 0 for a
  // line that is not quoted, and for null.
  int GetQuoteLength(const CLLineData* line, int len) const;
  // The length of the indent that text begins with; 0 when AutoIndent is off.
  int GetIndentLength(const char* text, int len) const;

  // ---- What is kept of places. Whoever adds one brings both its names in step.

  const CEditorCaret& GetCaret() const { return caret_; }
  // Takes the place by its physical line; it may lie beyond the text.
  void SetCaretPos(const CTextPos& pos);
  // The first physical line in sight, held within the text.
  const CTextPos& GetTopLine() const { return top_; }
  void SetTopLine(int line, int physLine);
  CEditorSelection& Selection() { return selection_; }
  CTextRanges& LineRanges() { return lineRanges_; }
  CLineMarkers& LineMarkers() { return lineMarkers_; }
  CTextRanges& FoundRanges() { return found_; }
  CUndoHistory& UndoHistory() { return undo_; }

 private:
  void SelectFont(CodeType codeType);
  void DeriveTurnLimit();
  int TextAreaWidth() const;
  std::string_view QuoteMark(int quote) const;
  void UpdateHorizontalBar();
  void UpdateVerticalBar();
  void InvalidateAll(bool erase);
  void InvalidateColumnRuler();
  void AfterLayout(int from = 0);
  template <typename Visitor>
  void VisitKeptPlaces(Visitor visit);
  void MoveCaret();
  void MakeCaret();
  void DropCaret();
  CPoint CaretPoint() const;

  // The window that is asked: the editor's own, or one without a screen.
  CWnd& Window() const { return window_ ? *window_ : *headless_; }

  std::unique_ptr<CWnd> window_;
  std::unique_ptr<CWnd> headless_;
  CEditorMetrics metrics_;
  CEditorColor colors_;
  int turnMode_ = 0;
  int turnLimit_ = 0;
  int lineHeight_ = HeadlessWindow::kLineHeight;
  int charWidth_ = HeadlessWindow::kColumnWidth;

  CEditorDocument document_;
  std::unique_ptr<CEditorLineFontMetrics> lineMetrics_;  // behind the window, so that it goes first

  int readOnly_ = 0;
  int overwrite_ = 0;
  CTextPos top_;        // the first physical line in sight
  int leftPixels_ = 0;  // of the text that is out of sight
  CEditorCaret caret_;
  CEditorSelection selection_;
  CTextRanges lineRanges_;
  CLineMarkers lineMarkers_;
  CTextRanges found_;
  CUndoHistory undo_;
};

}  // namespace lumr
