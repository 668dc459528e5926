// An ordered list of named things that are found by name.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "lumrmisc/settings/sdname.h"

namespace lumr {

// Owns its items, keeps their order, and finds one by its name, without regard to case, in
// constant time. An item has Name() (UTF-16) and NameHash() (SdName::HashOf of it). Pointers to
// items stay valid until the item is removed.
template <typename T>
class NamedList {
 public:
  int Count() const { return static_cast<int>(items_.size()); }
  T* At(int index) { return items_[static_cast<std::size_t>(index)].get(); }
  const T* At(int index) const { return items_[static_cast<std::size_t>(index)].get(); }

  T* Find(const SdName& name) { return const_cast<T*>(std::as_const(*this).Find(name)); }

  const T* Find(const SdName& name) const {
    if (slots_.empty()) {
      for (const auto& item : items_) {
        if (IsNamed(*item, name)) return item.get();
      }
      return nullptr;
    }
    for (std::size_t at = SlotOf(name.Hash()); slots_[at] != nullptr; at = Next(at)) {
      if (IsNamed(*slots_[at], name)) return slots_[at];
    }
    return nullptr;
  }

  // The name must not be in the list yet.
  T* Append(std::unique_ptr<T> item) {
    const std::size_t count = items_.size() + 1;
    if (count > kScanned && count * 2 > slots_.size()) BuildSlots(count);
    items_.push_back(std::move(item));
    T* const appended = items_.back().get();
    if (!slots_.empty()) InsertSlot(appended);
    return appended;
  }

  // The place of an item of the list. Linear.
  int IndexOf(const T* item) const {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [item](const auto& other) { return other.get() == item; });
    return static_cast<int>(found - items_.begin());
  }

  void RemoveAt(int index) {
    if (!slots_.empty()) EraseSlot(At(index));
    items_.erase(items_.begin() + index);
  }

  // Puts an item of the same name in another's place.
  void ReplaceAt(int index, std::unique_ptr<T> item) {
    if (!slots_.empty()) EraseSlot(At(index));
    items_[static_cast<std::size_t>(index)] = std::move(item);
    if (!slots_.empty()) InsertSlot(At(index));
  }

  // Has an item of the list change its name; change(item) must not throw.
  template <typename Change>
  void Rename(T* item, Change change) {
    if (!slots_.empty()) EraseSlot(item);
    change(*item);
    if (!slots_.empty()) InsertSlot(item);
  }

  // Removes all items that the condition holds for, in one pass; gives their number.
  template <typename Condition>
  int RemoveIf(Condition condition) {
    const auto kept = std::remove_if(items_.begin(), items_.end(),
                                     [&](const auto& item) { return condition(*item); });
    const auto removed = static_cast<int>(items_.end() - kept);
    items_.erase(kept, items_.end());
    slots_.clear();
    if (items_.size() > kScanned) BuildSlots(items_.size());
    return removed;
  }

  // Takes the item at one place to another; those between close up.
  void Move(int from, int to) {
    const auto begin = items_.begin();
    if (from < to) std::rotate(begin + from, begin + from + 1, begin + to + 1);
    if (to < from) std::rotate(begin + to, begin + from, begin + from + 1);
  }

  void Clear() {
    items_.clear();
    slots_.clear();
  }

 private:
  // Up to so many items are looked through; that is faster than an index, and smaller.
  static constexpr std::size_t kScanned = 12;

  static bool IsNamed(const T& item, const SdName& name) {
    return item.NameHash() == name.Hash() && EqualSdNames(item.Name(), name.Text());
  }

  std::size_t SlotOf(std::uint32_t hash) const { return hash & (slots_.size() - 1); }
  std::size_t Next(std::size_t at) const { return (at + 1) & (slots_.size() - 1); }

  void InsertSlot(T* item) {
    std::size_t at = SlotOf(item->NameHash());
    while (slots_[at] != nullptr) at = Next(at);
    slots_[at] = item;
  }

  // Room for a number of items, with those that there are.
  void BuildSlots(std::size_t count) {
    std::size_t size = 64;
    while (size < count * 3) size *= 2;
    slots_.assign(size, nullptr);
    for (const auto& item : items_) InsertSlot(item.get());
  }

  // Open addressing with linear probing: what stood behind the gap because of it moves up.
  void EraseSlot(const T* item) {
    std::size_t gap = SlotOf(item->NameHash());
    while (slots_[gap] != item) gap = Next(gap);
    for (std::size_t at = Next(gap); slots_[at] != nullptr; at = Next(at)) {
      const std::size_t home = SlotOf(slots_[at]->NameHash());
      if (((at - home) & (slots_.size() - 1)) >= ((at - gap) & (slots_.size() - 1))) {
        slots_[gap] = slots_[at];
        gap = at;
      }
    }
    slots_[gap] = nullptr;
  }

  std::vector<std::unique_ptr<T>> items_;
  std::vector<T*> slots_;  // empty, or a power of two
};

}  // namespace lumr
