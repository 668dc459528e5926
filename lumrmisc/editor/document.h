// The text of an editor: logical lines, laid out, with their quote prefixes and links, and the ways
// to name a place in it. It knows no window.
//
// Bytes are those of the document's code type in edit form; those of a Unicode one are UTF-16, and
// an odd last byte of a text is left out. Line ends stand between lines only and are no part of
// the bytes; where text is given back they are CR LF.
#pragma once

#include <string_view>
#include <vector>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/editor/layout.h"
#include "lumrmisc/editor/linemetrics.h"
#include "lumrmisc/editor/linestore.h"
#include "lumrmisc/editor/quote.h"
#include "lumrmisc/editor/quotetable.h"
#include "lumrmisc/editor/textpos.h"
#include "lumrmisc/editor/widest.h"
#include "lumrmisc/mailtext/links.h"

namespace lumr {

class CEditorDocument {
 public:
  CodeType GetCodeType() const { return codeType_; }
  int GetLineCount() const { return lines_.Count(); }
  int GetHeaderCount() const { return headerCount_; }
  // Unchecked: line is 0 to GetLineCount() - 1.
  const CLLineData& operator[](int line) const { return lines_[line]; }
  const CQuoteTable& QuoteTable() const { return quotes_; }
  // The width in pixels of the widest physical line.
  int GetWidest() const { return widest_.Pixels(); }
  // The size in bytes with line ends.
  long long GetByteSize() const;

  // ---- Changes. The metrics are of the document's code type.

  // Makes a document without lines.
  void Clear(CodeType codeType);

  // Appends text: its first line goes on with the last line of the document. quoteMark, which may
  // be empty, is put before each line of the text, but not before a last one that is empty.
  // Only the lines that grew are laid out, and the first of them from where it grew.
  void Append(CEditorLineFontMetrics& metrics, std::string_view text, std::string_view quoteMark);

  // Reads the same bytes in another code type.
  void SetCodeType(CodeType codeType, CEditorLineFontMetrics& metrics);

  // Lays every line out anew, with its quote prefix.
  void LayOutAll(CEditorLineFontMetrics& metrics);
  // Lays out what other limits may change: every line but the single physical lines that are
  // within the limit. Gives whether there was any.
  bool LayOutTurned(CEditorLineFontMetrics& metrics);

  // Inserts the lines of a text above all others, as header lines. Gives how many, and in wider
  // whether one of them is wider than any line was.
  int InsertHeader(CEditorLineFontMetrics& metrics, std::string_view text, bool& wider);
  // Removes the header lines and gives how many there were.
  int RemoveHeader();

  // ---- The text. All replace out, and throw std::bad_alloc for a text of 2^31 - 64 bytes and
  // more.

  struct Writing {
    std::string_view quoteMark;  // before each line, but not before a last one that is empty
    bool lineEnds = true;
    bool finalLineEnd = false;  // one at the end, too, unless there is one
  };
  void Write(bool withHeader, const Writing& writing, CBuffer& out) const;
  // What is shown: the physical lines, without the header lines.
  void WriteShown(CBuffer& out) const;
  // The text between two places, of which the fields for physical lines count.
  void WriteBetween(const CTextPos& a, const CTextPos& b, const Writing& writing,
                    CBuffer& out) const;

  // ---- Places. See CEditorWnd for what each does beyond the end of the text.

  long long GetSerialLine(int line, int physLine) const;
  int GetHeaderPhysicalLines() const;
  int ByteOf(int line, int physLine, int byteP, bool inside) const;
  void LogicalToPhysical(CTextPos& pos) const;
  bool ByteToPos(int index, bool toNextLine, CTextPos& pos) const;
  int PosToByte(const CTextPos& pos) const;

 private:
  struct LinePlace {
    int line;
    int byte;
  };

  int LineEndSize() const;
  std::string_view LineEnd() const;
  void AddPiece(CEditorLineFontMetrics& metrics, std::string_view mark, std::string_view piece,
                bool goesOn);
  void Examine(CEditorLineFontMetrics& metrics, CLLineData& line, int changed);
  bool UpdateQuote(const CEditorLineMetrics& metrics, CLLineData& line, QuoteScan& scan);
  int UpdateLinks(CLLineData& line, int changed);
  void LayOut(CEditorLineFontMetrics& metrics, CLLineData& line, const LineChange& change);
  void RenewLine(CEditorLineFontMetrics& metrics, CLLineData& line, bool withLinks);
  void ForgetLast();
  void FindWidest();
  void WritePart(LinePlace from, LinePlace to, const Writing& writing, CBuffer& out) const;
  LinePlace PlaceOf(const CTextPos& pos) const;

  CodeType codeType_ = CT_SJIS;
  LineStore lines_;
  int headerCount_ = 0;
  CQuoteTable quotes_;
  CWidestLine widest_;

  // Text comes in at the end, so the last line keeps what it takes to grow without being read
  // again: its links and where the search for them stands, where that for its quote prefix does,
  // and a place near its end at which a character begins.
  LinkFinder finder_{CT_SJIS};
  std::vector<LinkRange> links_;
  bool linksKept_ = false;
  QuoteScan quoteScan_;
  std::size_t border_ = 0;
};

}  // namespace lumr
