// What an editor keeps of places in its text besides the text: caret, selection, line markers,
// found ranges and the undo history.
//
// Each calls a visitor with all of its places, so that they can follow when lines are inserted
// above them or laid out again.
#pragma once

#include <algorithm>
#include <tuple>
#include <vector>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/editor/textpos.h"

namespace lumr {

class CEditorCaret {
 public:
  CTextPos pos;
  CTextPos home;  // where the movement up or down began that keeps to its column

  void Reset() { *this = {}; }
};

class CEditorSelection {
 public:
  CTextPos anchor;  // where it began
  CTextPos caret;   // where it ends

  void Clear() { *this = {}; }
  int IsEmpty() const { return anchor.IsEmpty(caret); }

  template <typename Visitor>
  void VisitPlaces(Visitor visit) {
    visit(anchor);
    visit(caret);
  }
};

// Ranges in the order in which they were added: what a search found, or lines that are kept.
class CTextRanges {
 public:
  void Add(const CTextRange& range) { ranges_.push_back(range); }
  void Clear() { ranges_.clear(); }
  const std::vector<CTextRange>& Items() const { return ranges_; }

  template <typename Visitor>
  void VisitPlaces(Visitor visit) {
    for (CTextRange& range : ranges_) {
      visit(range.from);
      visit(range.to);
    }
  }

 private:
  std::vector<CTextRange> ranges_;
};

// Marks on lines, in the order of the text and at most one of each kind on a line; and how many
// of them were made one after the other.
class CLineMarkers {
 public:
  struct Marker {
    CTextPos pos;
    int kind = 0;
  };

  // Adds a marker, unless the line has one of the kind.
  void Add(const CTextPos& pos, int kind) {
    const Marker marker{pos, kind};
    const auto place = std::lower_bound(markers_.begin(), markers_.end(), marker, IsBefore);
    if (place != markers_.end() && !IsBefore(marker, *place)) return;
    markers_.insert(place, marker);
    ++historySize_;
  }
  // Removes all, and the history.
  void Clear() {
    markers_.clear();
    historySize_ = 0;
  }
  const std::vector<Marker>& Items() const { return markers_; }
  int GetHistorySize() const { return historySize_; }

  // Rearranges the markers afterwards: those that came to stand on one line become one of each
  // kind.
  template <typename Visitor>
  void VisitPlaces(Visitor visit) {
    for (Marker& marker : markers_) visit(marker.pos);
    std::stable_sort(markers_.begin(), markers_.end(), IsBefore);
    const auto same = [](const Marker& a, const Marker& b) { return !IsBefore(a, b); };
    markers_.erase(std::unique(markers_.begin(), markers_.end(), same), markers_.end());
  }

 private:
  static bool IsBefore(const Marker& a, const Marker& b) {
    return std::tie(a.pos.line, a.kind) < std::tie(b.pos.line, b.kind);
  }

  std::vector<Marker> markers_;
  int historySize_ = 0;
};

// Changes that can be undone: between two places stood other text.
class CUndoHistory {
 public:
  struct Record {
    CTextRange range;
    CBuffer text;
  };

  void Add(const CTextRange& range, const CBuffer& text) { records_.push_back({range, text}); }
  void Clear() { records_.clear(); }
  const std::vector<Record>& Items() const { return records_; }

  template <typename Visitor>
  void VisitPlaces(Visitor visit) {
    for (Record& record : records_) {
      visit(record.range.from);
      visit(record.range.to);
    }
  }

 private:
  std::vector<Record> records_;
};

}  // namespace lumr
