// A growable array of one pointer: what a record that exists a million times keeps its lists in.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

namespace lumr {

// An empty array has no memory; any other one has one block, whose first eight bytes are size and
// capacity. Items are plain values that may be moved as bytes. A size that does not fit the
// library's limit of 2^31 - 64 bytes is std::bad_alloc, and the array is then as it was.
template <typename T>
class CompactArray {
  static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= 8);

 public:
  CompactArray() noexcept = default;
  CompactArray(const CompactArray& other) { Assign(other.Items()); }
  CompactArray(CompactArray&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  CompactArray& operator=(const CompactArray& other) {
    if (this != &other) Assign(other.Items());
    return *this;
  }
  CompactArray& operator=(CompactArray&& other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~CompactArray() { ::operator delete(block_); }

  std::size_t Size() const { return block_ != nullptr ? block_->size : 0; }
  std::size_t Capacity() const { return block_ != nullptr ? block_->capacity : 0; }
  T* Data() { return block_ != nullptr ? FirstOf(block_) : nullptr; }
  const T* Data() const { return block_ != nullptr ? FirstOf(block_) : nullptr; }
  std::span<const T> Items() const { return {Data(), Size()}; }
  T& operator[](std::size_t i) { return FirstOf(block_)[i]; }
  const T& operator[](std::size_t i) const { return FirstOf(block_)[i]; }

  // The content becomes items, which do not lie in it, in a block of exactly their size unless a
  // larger one is there.
  void Assign(std::span<const T> items) {
    if (items.size() > Capacity()) {
      Block* const block = Allocate(items.size());
      ::operator delete(block_);
      block_ = block;
    }
    if (block_ == nullptr) return;
    std::copy(items.begin(), items.end(), FirstOf(block_));
    block_->size = static_cast<std::uint32_t>(items.size());
  }

  void Append(const T& item) {
    const T copy = item;
    if (Size() == Capacity()) Grow(Size() + 1);
    FirstOf(block_)[block_->size++] = copy;
  }

  // Puts items, which do not lie in the array, in the place of the removed ones at pos. Growing by
  // many small insertions costs time linear in the final size.
  void Replace(std::size_t pos, std::size_t removed, std::span<const T> items) {
    pos = std::min(pos, Size());
    removed = std::min(removed, Size() - pos);
    const std::size_t size = Size() - removed + items.size();
    if (size > Capacity()) Grow(size);
    if (block_ == nullptr) return;
    T* const place = FirstOf(block_) + pos;
    std::memmove(static_cast<void*>(place + items.size()), place + removed,
                 (Size() - pos - removed) * sizeof(T));
    std::copy(items.begin(), items.end(), place);
    block_->size = static_cast<std::uint32_t>(size);
  }

  // Keeps the first items, and the memory.
  void Truncate(std::size_t size) {
    if (size < Size()) block_->size = static_cast<std::uint32_t>(size);
  }

  // Gives back the memory that no item needs.
  void ShrinkToFit() {
    if (Size() == Capacity()) return;
    CompactArray exact;
    exact.Assign(Items());
    *this = std::move(exact);
  }

 private:
  struct alignas(8) Block {
    std::uint32_t size;
    std::uint32_t capacity;
  };

  static T* FirstOf(Block* block) { return reinterpret_cast<T*>(block + 1); }
  static const T* FirstOf(const Block* block) { return reinterpret_cast<const T*>(block + 1); }

  static Block* Allocate(std::size_t capacity) {
    constexpr std::uint64_t kLimit = (std::uint64_t{1} << 31) - 64;
    if (capacity > (kLimit - sizeof(Block)) / sizeof(T)) throw std::bad_alloc();
    void* const memory = ::operator new(sizeof(Block) + capacity * sizeof(T));
    return new (memory) Block{0, static_cast<std::uint32_t>(capacity)};
  }

  void Grow(std::size_t size) {
    Block* const block = Allocate(std::max(size, Size() + Size() / 2));
    if (block_ != nullptr) {
      std::memcpy(static_cast<void*>(FirstOf(block)), FirstOf(block_), Size() * sizeof(T));
      block->size = block_->size;
      ::operator delete(block_);
    }
    block_ = block;
  }

  Block* block_ = nullptr;
};

}  // namespace lumr
