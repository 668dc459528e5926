// The logical lines of a document, with running sums of their bytes and physical lines.
#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "lumrmisc/editor/line.h"

namespace lumr {

// Lines are counted from 0. Sums over the lines before a line, and the line in which a sum lies,
// are found in logarithmic time after any change of a line. Inserting and removing lines anywhere
// but at the end takes time linear in the number of lines.
class LineStore {
 public:
  int Count() const { return static_cast<int>(lines_.size()); }
  // Unchecked. Whoever changes the text or the layout of a line says so.
  const CLLineData& operator[](int line) const { return lines_[static_cast<std::size_t>(line)]; }
  CLLineData& Line(int line) { return lines_[static_cast<std::size_t>(line)]; }

  void Clear();
  // Appends a line without text and gives it. References to lines stay good.
  CLLineData& Append();
  void Insert(int line, std::vector<CLLineData> lines);
  void Remove(int line, int count);

  // What a line was like before a change, and the change reported: the sums follow it.
  struct Sums {
    long long bytes = 0;
    long long physicalLines = 0;
  };
  Sums SumsOf(int line) const { return {(*this)[line].Length(), CountOf(line)}; }
  void Changed(int line, const Sums& before);
  // After a change of many lines.
  void AllChanged() { Rebuild(); }

  // The sums over the lines before a line; those over all lines for Count().
  long long BytesBefore(int line) const { return SumsBefore(line).bytes; }
  long long PhysicalLinesBefore(int line) const { return SumsBefore(line).physicalLines; }

  // The first line of which the end, in bytes from the start of the document without line ends,
  // is at bytes or behind it (behind not 0: behind it only); Count() when there is none.
  int LineOfByte(long long bytes, bool behind) const;

 private:
  int CountOf(int line) const { return (*this)[line].PhysicalLines().Count(); }
  // Over the lines from begin to before end.
  Sums SumsOver(int begin, int end) const;
  Sums SumsBefore(int line) const;
  void Rebuild();

  std::deque<CLLineData> lines_;
  // A binary indexed tree over blocks of lines: the node at i holds the sums of the blocks that end
  // with block i - 1, as many as the lowest set bit of i says.
  std::vector<Sums> tree_{1};
};

}  // namespace lumr
