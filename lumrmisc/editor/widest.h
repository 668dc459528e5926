// How wide the widest physical line of a document is.
#pragma once

#include <algorithm>
#include <vector>

#include "lumrmisc/editor/line.h"

namespace lumr {

// Follows a document that is laid out line by line, and of which the last line may be laid out
// again from any of its physical lines on, also to be narrower. That takes time by the physical
// lines that were laid out.
class CWidestLine {
 public:
  int Pixels() const {
    return rising_.empty() ? before_ : std::max(before_, rising_.back().pixels);
  }

  void Clear() { *this = {}; }
  // What is laid out from now on is another line.
  void NextLine() {
    before_ = Pixels();
    rising_.clear();
  }
  // The physical lines from first on were laid out.
  void LaidOut(const CPhysicalLines& lines, int first) {
    while (!rising_.empty() && rising_.back().index >= first) rising_.pop_back();
    for (int i = first; i < lines.Count(); ++i) {
      const bool wider = rising_.empty() || lines[i].pixels > rising_.back().pixels;
      if (wider) rising_.push_back({i, lines[i].pixels});
    }
  }
  // Another line than the one that is being laid out.
  void Add(const CPhysicalLines& lines) {
    for (const CPhysicalLine& line : lines.Items()) before_ = std::max(before_, line.pixels);
  }

 private:
  struct Wider {
    int index;
    int pixels;
  };
  int before_ = 0;             // in the lines before
  std::vector<Wider> rising_;  // in this one: each that is wider than all before it
};

}  // namespace lumr
