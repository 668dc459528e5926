#include "lumrmisc/editor/textpos.h"

#include <algorithm>

namespace lumr {

int CTextPos::Compare(const CTextPos& other) const {
  const auto order = [](int a, int b) { return (a > b) - (a < b); };
  if (line != other.line) return order(line, other.line);
  if (physLine != other.physLine) return order(physLine, other.physLine);
  return order(byteP, other.byteP);
}

int CTextPos::IsInRange(const CTextPos& a, const CTextPos& b) const {
  const CTextPos& low = b < a ? b : a;
  const CTextPos& high = b < a ? a : b;
  return low <= *this && *this < high;
}

void CTextPos::UpLineL(int delta, int minLine, int maxLine) {
  const long long moved = static_cast<long long>(line) + delta;
  if (moved >= minLine && moved <= maxLine) {
    line = static_cast<int>(moved);
  } else {
    *this = CTextPos(moved < minLine ? minLine : maxLine, 0);
  }
}

}  // namespace lumr
