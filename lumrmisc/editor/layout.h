// Turning: how a logical line is cut into physical lines.
//
// A layout sees one line and the parameters, and neither a window nor a document. It follows the
// habits of Japanese typesetting (JIS X 4051): closing marks begin no line and opening ones end
// none, a closing mark may hang over the limit, words of letters and digits stay whole, and links
// too where NoTurnURL says so. A physical line takes one character at least, however small the
// limit. What stands before a place is read in the context of the line, so that the second byte of
// a character is never taken for the first of another one.
//
// A layout takes time linear in the text behind the changed place, whatever the text; what is
// appended to a physical line that nothing can turn takes time by itself alone.
#pragma once

#include <span>
#include <string_view>

#include "lumrmisc/editor/line.h"
#include "lumrmisc/editor/linemetrics.h"

namespace lumr {

// What a layout reads of a line. Links are in rising order, and none overlaps another.
struct LineView {
  std::string_view text;
  std::span<const CUrlRange> urls;
  int quoteIndex = -1;  // 0 or more: the line is quoted

  LineView(std::string_view lineText, std::span<const CUrlRange> lineUrls = {}, int index = -1)
      : text(lineText), urls(lineUrls), quoteIndex(index) {}
  LineView(const CLLineData& line)
      : LineView(line.Text(), line.UrlRanges(), line.GetQuoteIndex()) {}
};

// Where a line differs from what its physical lines were laid out from.
struct LineChange {
  int first = 0;   // the first byte at which the text, or a link, differs
  int text = 0;    // the first byte at which the text does; 0 or less: other parameters, too
  int border = 0;  // a byte near the end of the text before at which a character begins now

  LineChange(int changed) : first(changed), text(changed) {}
};

// Lays a line out into lines, which are reused: a record that has grown once needs no memory.
//
// change is 0 for a new line and for other parameters than before: from the start. What stands
// before the change is not looked at again. Gives the smaller of its first byte and the first byte
// at which the start of a physical line differs from before: from there on the line must be
// drawn again.
int LayoutLine(const CEditorLineMetrics& metrics, const LineView& line, const LineChange& change,
               CPhysicalLines& lines);
int LayoutLine(CEditorLineFontMetrics& metrics, const LineView& line, const LineChange& change,
               CPhysicalLines& lines);

// Whether a single physical line of so many bytes is within the limit, so that it would be laid
// out as it is. True when lines are never turned; not for a line that may have been taken to fit
// unseen by a smaller limit.
bool IsWithinLimit(const CEditorLineMetrics& metrics, const CPhysicalLine& line, int length);

// ---- Why a physical line ends where it does

// What moved a break, as bits.
enum BreakRule : unsigned {
  kBreakAtLimit = 0,        // nothing did
  kBreakUrlEnd = 1,         // it stays behind the link that ends there
  kBreakBeforeUrl = 2,      // back to the start of a link
  kBreakBehindUrl = 4,      // on to the end of a link that fills the line
  kBreakWord = 8,           // back to the start of a word
  kBreakHang = 16,          // on over a Head2Prev character that hangs
  kBreakPushBack = 32,      // back, since a character must not end or begin a line
  kBreakOneCharacter = 64,  // on, since not even one character is within the limit
};

struct LineBreak {
  int limit = 0;       // the byte at which the line passes the limit
  int end = 0;         // the byte at which it is turned; both count from the line's start
  unsigned rules = 0;  // BreakRule bits; 0 too for the last physical line
};

// The break behind the physical line that begins at start.
LineBreak FindBreak(const CEditorLineMetrics& metrics, const LineView& line, int start);

// The width of a text that begins in column 0, in columns and in pixels; those are 0 where the font
// is not measured.
int CountColumns(const CEditorLineMetrics& metrics, std::string_view text);
int CountPixels(CEditorLineFontMetrics& metrics, std::string_view text);

}  // namespace lumr
