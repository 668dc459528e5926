// How the editor behaves and lays text out: a plain record that the application fills from its
// settings and hands to the editor.
#pragma once

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/editor/fonts.h"
#include "lumrmisc/settings/settingdata.h"

namespace lumr {

// Fields are named as their keys in a settings section. Flags are 0 or not. Lists hold Shift_JIS
// text and are read by whole characters. The Editable lists are the same five in the code type of
// the document: what layout and editing look at.
class CEditorMetrics {
 public:
  int ShowCaret = 1;
  int FreeCursor = 0;    // the caret may stand behind the end of a line and below the last one
  int FixCursorPos = 0;  // the caret stays in its place in the text when the view scrolls
  int AutoIndent = 1;    // a new line copies the indent of the one that it splits
  int Tab2Space = 0;     // typed tabs become spaces
  CBuffer IndentList;    // the characters of an indent
  int SingleClickURL = 1;
  CBuffer QuoteList;  // the characters that mark a quoted line
  int QuoteLen = 8;   // how many bytes of other characters may stand before one of them
  CBuffer QuoteMark;  // put before each line when text is quoted
  int NoTurnQuoted = 0;
  int NoTurnURL = 0;
  int LineSpace = 2;  // pixels between lines
  int ShowCR = 0;
  int ShowEOF = 0;
  int ShowTab = 0;
  int ShowSpace = 0;
  int ShowZenSpace = 0;
  int ShowColRuler = 0;
  int ShowLineRuler = 0;
  int PhisicalLineNo = 1;  // the line ruler counts physical lines; stored files spell it so
  int AutoTurn = 0;        // 0: never; 1: at TurnCols columns; 2: at the width of the window
  int TurnCols = 72;
  CBuffer Head2Prev;  // characters that begin no physical line; ends in a space that is not stored
  CBuffer Tail2Next;  // characters that end no physical line
  int WordWrap = 1;   // kept for the application; layout keeps words whole whatever it says
  int TabColumn = 4;  // columns from one tab stop to the next
  CMultiFont MultiFont;

  CBuffer EditableIndentList;
  CBuffer EditableQuoteList;
  CBuffer EditableQuoteMark;
  CBuffer EditableHead2Prev;
  CBuffer EditableTail2Next;

  // The defaults; the editable lists are copies of the Shift_JIS lists.
  CEditorMetrics();

  // Equal when all but the editable lists and the selected font are.
  bool operator==(const CEditorMetrics& other) const;

  // Loads from a section of data. What is missing or no number gets its default, which for some
  // keys depends on whether the record is for a viewer of texts (not 0) or an editor (0):
  // ShowCaret 0 or 1 (an editor's is never read), NoTurnQuoted and NoTurnURL 0 or 1, AutoTurn 2 or
  // 1. TurnCols is held within 10 and 400, LineSpace is at least 0, a TabColumn below 1 is 4. A
  // space is appended to Head2Prev, so that none ever begins a physical line. Null data is an
  // empty section.
  void GetEditorMetrics(const CSettingData* data, const char* section, int viewer);
  // Saves to a section: Head2Prev without its last byte, so that loading and saving leaves it as
  // it is. Null data: nothing.
  void SetEditorMetrics(CSettingData* data, const char* section) const;

  // Makes ready for a document in a code type: selects its font, and converts the five lists into
  // the editable ones. What the code type lacks is left out.
  void ChangeCodePage(CodeType type);
};

}  // namespace lumr
