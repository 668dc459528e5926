// An ordered list of named things that are found by name.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "lumrmisc/settings/sdname.h"

namespace lumr {

// Holds its items, keeps their order, and finds one by its name, without regard to case, in
// constant time. An item has Name() (UTF-16) and NameHash() (the hash of an SdName of it), and is
// moved without fail. Pointers to items are valid until the list changes.
template <typename T>
class NamedList {
 public:
  int Count() const { return static_cast<int>(items_.size()); }
  T* At(int index) { return &items_[static_cast<std::size_t>(index)]; }
  const T* At(int index) const { return &items_[static_cast<std::size_t>(index)]; }
  int IndexOf(const T* item) const { return static_cast<int>(item - items_.data()); }

  T* Find(const SdName& name) { return const_cast<T*>(std::as_const(*this).Find(name)); }

  const T* Find(const SdName& name) const {
    if (slots_.empty()) {
      // All hashes are compared before any name: where an item stands cannot be foreseen, and a
      // wrong guess costs more than the comparisons.
      unsigned alike = 0;
      for (std::size_t i = 0; i < items_.size(); ++i) {
        alike |= static_cast<unsigned>(items_[i].NameHash() == name.Hash()) << i;
      }
      for (; alike != 0; alike &= alike - 1) {
        const T& item = items_[static_cast<std::size_t>(std::countr_zero(alike))];
        if (EqualSdNames(item.Name(), name.Text())) return &item;
      }
      return nullptr;
    }
    for (std::size_t at = Home(name.Hash()); slots_[at].place != 0; at = Next(at)) {
      if (slots_[at].hash != name.Hash()) continue;
      const T& item = items_[slots_[at].place - 1];
      if (EqualSdNames(item.Name(), name.Text())) return &item;
    }
    return nullptr;
  }

  // The name must not be in the list yet.
  T* Append(T&& item) {
    const std::size_t count = items_.size() + 1;
    if (count > kScanned && count * 2 > slots_.size()) BuildSlots(count);
    if (items_.capacity() == 0) items_.reserve(kFirstItems);
    items_.push_back(std::move(item));
    if (!slots_.empty()) InsertSlot(items_.back().NameHash(), count);
    return &items_.back();
  }

  void RemoveAt(int index) {
    const auto place = static_cast<std::uint32_t>(index) + 1;
    if (!slots_.empty()) {
      EraseSlot(place);
      for (Slot& slot : slots_) slot.place -= slot.place > place ? 1 : 0;
    }
    items_.erase(items_.begin() + index);
  }

  // Puts an item of the same name in another's place.
  void ReplaceAt(int index, T&& item) { *At(index) = std::move(item); }

  // Has an item of the list change its name; change(item) must not throw.
  template <typename Change>
  void Rename(T* item, Change change) {
    const auto place = static_cast<std::uint32_t>(IndexOf(item)) + 1;
    if (!slots_.empty()) EraseSlot(place);
    change(*item);
    if (!slots_.empty()) InsertSlot(item->NameHash(), place);
  }

  // Removes all items that the condition holds for, in one pass; gives their number.
  template <typename Condition>
  int RemoveIf(Condition condition) {
    const auto kept = std::remove_if(items_.begin(), items_.end(), condition);
    const auto removed = static_cast<int>(items_.end() - kept);
    items_.erase(kept, items_.end());
    if (removed > 0) NumberAnew();
    return removed;
  }

  // Takes the item at one place to another; those between close up.
  void Move(int from, int to) {
    const auto begin = items_.begin();
    if (from < to) std::rotate(begin + from, begin + from + 1, begin + to + 1);
    if (to < from) std::rotate(begin + to, begin + from, begin + from + 1);
    NumberAnew();
  }

  void Clear() {
    items_.clear();
    slots_.clear();
  }

 private:
  // Up to so many items are looked through; that is faster than an index, and smaller.
  static constexpr std::size_t kScanned = 12;
  static constexpr std::size_t kFirstItems = 8;

  struct Slot {
    std::uint32_t hash;
    std::uint32_t place;  // index + 1; 0: empty
  };

  std::size_t Home(std::uint32_t hash) const { return hash & (slots_.size() - 1); }
  std::size_t Next(std::size_t at) const { return (at + 1) & (slots_.size() - 1); }

  void InsertSlot(std::uint32_t hash, std::size_t place) {
    std::size_t at = Home(hash);
    while (slots_[at].place != 0) at = Next(at);
    slots_[at] = {hash, static_cast<std::uint32_t>(place)};
  }

  void InsertAll() {
    for (std::size_t i = 0; i < items_.size(); ++i) InsertSlot(items_[i].NameHash(), i + 1);
  }

  // Room for a number of items, with those that there are.
  void BuildSlots(std::size_t count) {
    std::size_t size = 64;
    while (size < count * 3) size *= 2;
    slots_.assign(size, Slot{0, 0});
    InsertAll();
  }

  void NumberAnew() {
    std::fill(slots_.begin(), slots_.end(), Slot{0, 0});
    if (!slots_.empty()) InsertAll();
  }

  // Open addressing with linear probing: what stood behind the gap because of it moves up.
  void EraseSlot(std::uint32_t place) {
    std::size_t gap = Home(items_[place - 1].NameHash());
    while (slots_[gap].place != place) gap = Next(gap);
    for (std::size_t at = Next(gap); slots_[at].place != 0; at = Next(at)) {
      const std::size_t home = Home(slots_[at].hash);
      if (((at - home) & (slots_.size() - 1)) >= ((at - gap) & (slots_.size() - 1))) {
        slots_[gap] = slots_[at];
        gap = at;
      }
    }
    slots_[gap] = {0, 0};
  }

  std::vector<T> items_;
  std::vector<Slot> slots_;  // empty, or a power of two
};

}  // namespace lumr
