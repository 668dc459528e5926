// A place in the text of an editor.
#pragma once

namespace lumr {

// A place is named twice: by the physical line and the byte in it, and by the byte in the logical
// line. CEditorWnd::L2PByteIndex and P2LByteIndex keep the two in step. Comparisons look at the
// first name only. Indices count from 0.
class CTextPos {
 public:
  int line = 0;      // logical line
  int physLine = 0;  // physical line in it
  int byteP = 0;     // byte in the physical line
  int byteL = 0;     // byte in the logical line

  // What is not given is 0.
  CTextPos() = default;
  CTextPos(int lineIndex, int byteInLine) : line(lineIndex), byteL(byteInLine) {}
  CTextPos(int lineIndex, int physLineIndex, int byteInPhysLine)
      : line(lineIndex), physLine(physLineIndex), byteP(byteInPhysLine) {}

  friend bool operator<(const CTextPos& a, const CTextPos& b) { return a.Compare(b) < 0; }
  friend bool operator<=(const CTextPos& a, const CTextPos& b) { return a.Compare(b) <= 0; }
  friend bool operator>(const CTextPos& a, const CTextPos& b) { return a.Compare(b) > 0; }
  friend bool operator>=(const CTextPos& a, const CTextPos& b) { return a.Compare(b) >= 0; }
  friend bool operator==(const CTextPos& a, const CTextPos& b) { return a.Compare(b) == 0; }

  // 1 when the text between this place and the other one is empty, else 0.
  int IsEmpty(const CTextPos& other) const { return *this == other; }
  // 1 when this place lies between the two, which may come in either order: at the lower one or
  // behind it, and before the higher one.
  int IsInRange(const CTextPos& a, const CTextPos& b) const;

  // Moves by delta logical lines. Where that passes a bound, the place is the start of that line;
  // else the bytes stay as they are, also past the end of the new line: the caller adjusts them.
  void UpLineL(int delta, int minLine, int maxLine);
  void ToDocHome() { *this = {}; }

 private:
  // Negative, 0 or positive.
  int Compare(const CTextPos& other) const;
};

// The text between two places, which may come in either order.
struct CTextRange {
  CTextPos from;
  CTextPos to;
};

}  // namespace lumr
