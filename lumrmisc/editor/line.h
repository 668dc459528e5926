// A logical line of the editor: the text between two line ends, with what was found out about it.
//
// Positions and lengths are bytes, also in UTF-16 text, where they are even. Records are small,
// since a document has millions of them: a line without links that is not turned takes one piece
// of memory besides its record, for its text.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "lumrmisc/editor/compactarray.h"
#include "lumrmisc/mailtext/links.h"

namespace lumr {

// A physical line: what stands on one row of the screen.
struct CPhysicalLine {
  int start = 0;    // the byte of the logical line that it begins with
  int columns = 0;  // its width in columns
  int pixels = 0;   // its width in pixels; 0 when pixels were not measured
  // No byte from here on had a say in where this physical line and those before it end. A layout
  // goes on after a change at the first physical line that reaches beyond the changed byte.
  int reach = 0;

  bool operator==(const CPhysicalLine&) const = default;
};

// What a layout looks at behind the place where a physical line passes the limit, in bytes: two
// characters. The reach of a logical line's last physical line is so much more than its text.
inline constexpr int kLayoutLookAhead = 4;

// The physical lines of a logical line, at least one, in order. The first begins at 0. A single
// one takes no memory of its own.
class CPhysicalLines {
 public:
  int Count() const { return more_.Size() == 0 ? 1 : static_cast<int>(more_.Size()); }
  std::span<const CPhysicalLine> Items() const {
    return more_.Size() == 0 ? std::span<const CPhysicalLine>(&single_, 1) : more_.Items();
  }
  // Unchecked: index is 0 to Count() - 1.
  const CPhysicalLine& operator[](int index) const {
    return more_.Size() == 0 ? single_ : more_[static_cast<std::size_t>(index)];
  }

  // The last physical line that begins at or before the byte, 0 for a negative one. Logarithmic.
  int IndexAt(int byte) const;
  // The byte behind the physical line, given the length of the logical line's text.
  int EndOf(int index, int length) const {
    return index + 1 < Count() ? (*this)[index + 1].start : length;
  }

  // Replaces the physical line at index, or appends it when index is Count(). Nothing else.
  void Set(int index, const CPhysicalLine& line);
  // Keeps the first count lines, at least one, and the memory.
  void Truncate(int count);
  // Gives back the memory that Truncate and growing left over.
  void ShrinkToFit() { more_.ShrinkToFit(); }

 private:
  CPhysicalLine single_;
  CompactArray<CPhysicalLine> more_;  // all lines when there are several, else empty
};

// A link in a line, of kind kLinkUrl or kLinkMail.
using CUrlRange = LinkRange;

class CLLineData {
 public:
  // ---- Text, in the document's code type, without a line end

  std::string_view Text() const { return {text_.Data(), text_.Size()}; }
  int Length() const { return static_cast<int>(text_.Size()); }
  void SetText(std::string_view text) { text_.Assign({text.data(), text.size()}); }
  void AppendText(std::string_view text) { ReplaceText(Length(), 0, text); }
  // Puts text, which does not lie in the line, in the place of removed bytes at pos.
  void ReplaceText(int pos, int removed, std::string_view text) {
    text_.Replace(static_cast<std::size_t>(pos), static_cast<std::size_t>(removed),
                  {text.data(), text.size()});
  }

  // ---- What layout, quote table and link finder say about it

  // The index of the line's quote prefix in the document's table, or -1 when it is not quoted.
  int GetQuoteIndex() const { return quoteIndex_; }
  void SetQuoteIndex(int index) { quoteIndex_ = index; }

  const CPhysicalLines& PhysicalLines() const { return physical_; }
  CPhysicalLines& PhysicalLines() { return physical_; }

  // In rising order, none overlapping another.
  std::span<const CUrlRange> UrlRanges() const { return urls_.Items(); }
  CompactArray<CUrlRange>& MutableUrlRanges() { return urls_; }

  // Gives back memory that growing left over.
  void ShrinkToFit() {
    text_.ShrinkToFit();
    physical_.ShrinkToFit();
    urls_.ShrinkToFit();
  }

 private:
  CompactArray<char> text_;
  CompactArray<CUrlRange> urls_;
  CPhysicalLines physical_;
  int quoteIndex_ = -1;
};

}  // namespace lumr
