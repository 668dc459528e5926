#include "lumrmisc/editor/line.h"

#include <algorithm>

namespace lumr {

int CPhysicalLines::IndexAt(int byte) const {
  const auto items = Items();
  const auto after =
      std::upper_bound(items.begin(), items.end(), byte,
                       [](int value, const CPhysicalLine& line) { return value < line.start; });
  return after == items.begin() ? 0 : static_cast<int>(after - items.begin()) - 1;
}

void CPhysicalLines::Set(int index, const CPhysicalLine& line) {
  if (more_.Size() == 0) {
    if (index == 0) {
      single_ = line;
      return;
    }
    more_.Append(single_);
  }
  if (index < static_cast<int>(more_.Size())) {
    more_[static_cast<std::size_t>(index)] = line;
  } else {
    more_.Append(line);
  }
}

void CPhysicalLines::Truncate(int count) {
  if (count > 1 || more_.Size() == 0) return more_.Truncate(static_cast<std::size_t>(count));
  single_ = more_[0];
  more_.Truncate(0);
}

}  // namespace lumr
