#include "lumrmisc/editor/linestore.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <utility>

namespace lumr {
namespace {

constexpr std::size_t kBlockLines = 64;

constexpr std::size_t LowestBit(std::size_t node) {
  return node & (~node + 1);
}

template <typename Sums>
void Add(const Sums& more, Sums& sums) {
  sums.bytes += more.bytes;
  sums.physicalLines += more.physicalLines;
}

}  // namespace

void LineStore::Clear() {
  lines_.clear();
  lines_.shrink_to_fit();
  Rebuild();
}

CLLineData& LineStore::Append() {
  lines_.emplace_back();
  if (lines_.size() % kBlockLines == 1) {
    // The new node covers blocks that have nodes already.
    const std::size_t node = tree_.size();
    Sums sums;
    for (std::size_t step = 1; (node & step) == 0; step <<= 1) Add(tree_[node - step], sums);
    tree_.push_back(sums);
  }
  Changed(Count() - 1, {});
  return lines_.back();
}

void LineStore::Insert(int line, std::vector<CLLineData> lines) {
  lines_.insert(lines_.begin() + line, std::make_move_iterator(lines.begin()),
                std::make_move_iterator(lines.end()));
  Rebuild();
}

void LineStore::Remove(int line, int count) {
  lines_.erase(lines_.begin() + line, lines_.begin() + line + count);
  Rebuild();
}

void LineStore::Changed(int line, const Sums& before) {
  Sums more = SumsOf(line);
  more.bytes -= before.bytes;
  more.physicalLines -= before.physicalLines;
  std::size_t node = static_cast<std::size_t>(line) / kBlockLines + 1;
  for (; node < tree_.size(); node += LowestBit(node)) Add(more, tree_[node]);
}

int LineStore::LineOfByte(long long bytes, bool behind) const {
  const auto reaches = [behind](long long end, long long wanted) {
    return behind ? end > wanted : end >= wanted;
  };
  // The most blocks that end before the byte.
  std::size_t block = 0;
  for (std::size_t step = std::bit_floor(tree_.size()); step > 0; step >>= 1) {
    if (block + step >= tree_.size() || reaches(tree_[block + step].bytes, bytes)) continue;
    block += step;
    bytes -= tree_[block].bytes;
  }
  int line = static_cast<int>(block * kBlockLines);
  for (; line < Count(); ++line) {
    const int length = (*this)[line].Length();
    if (reaches(length, bytes)) break;
    bytes -= length;
  }
  return line;
}

LineStore::Sums LineStore::SumsOver(int begin, int end) const {
  Sums sums;
  for (int line = begin; line < end; ++line) Add(SumsOf(line), sums);
  return sums;
}

LineStore::Sums LineStore::SumsBefore(int line) const {
  const std::size_t block = static_cast<std::size_t>(line) / kBlockLines;
  Sums sums = SumsOver(static_cast<int>(block * kBlockLines), line);
  for (std::size_t node = block; node > 0; node -= LowestBit(node)) Add(tree_[node], sums);
  return sums;
}

void LineStore::Rebuild() {
  tree_.assign((lines_.size() + kBlockLines - 1) / kBlockLines + 1, {});
  for (std::size_t node = 1; node < tree_.size(); ++node) {
    const int begin = static_cast<int>((node - 1) * kBlockLines);
    Add(SumsOver(begin, std::min(begin + static_cast<int>(kBlockLines), Count())), tree_[node]);
    const std::size_t parent = node + LowestBit(node);
    if (parent < tree_.size()) Add(tree_[node], tree_[parent]);
  }
}

}  // namespace lumr
