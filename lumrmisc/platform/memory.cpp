#include "lumrmisc/platform/memory.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>

#include "lumrmisc/platform/memory_internal.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LUMRMISC_ADDRESS_SANITIZER
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define LUMRMISC_ADDRESS_SANITIZER
#endif

#ifdef LUMRMISC_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) \
  (static_cast<void>(address), static_cast<void>(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) \
  (static_cast<void>(address), static_cast<void>(size))
#endif

namespace lumr {
namespace {

// A page block has room for more than it was asked for, up to an eighth, so that growth by small
// steps moves it only once in a while and stays linear on every C library and system. The room
// is a function of the size alone: nothing has to be remembered, and the owner's count is enough
// at release.
std::size_t PageRoom(std::size_t size) {
  const std::size_t step = std::max<std::size_t>(std::bit_floor(size) / 8, 1);
  return (size + step - 1) / step * step;
}

bool IsPageBlock(std::size_t size) {
  return size >= kPageBlockMinimum;
}

// What lies behind the asked size is out of bounds to the sanitizer, room or not.
void* Guarded(void* block, std::size_t size) {
  if (!IsPageBlock(size)) return block;
  ASAN_POISON_MEMORY_REGION(static_cast<char*>(block) + size, PageRoom(size) - size);
  return block;
}

void Unguard(void* block, std::size_t size) {
  if (!IsPageBlock(size)) return;
  ASAN_UNPOISON_MEMORY_REGION(static_cast<char*>(block) + size, PageRoom(size) - size);
}

void* GrowInRoom(void* block, std::size_t oldSize, std::size_t newSize) {
  ASAN_UNPOISON_MEMORY_REGION(static_cast<char*>(block) + oldSize, newSize - oldSize);
  return block;
}

void FailIfAsked() {
  const auto fault = internal::allocationFault.load(std::memory_order_relaxed);
  if (fault != nullptr && fault()) throw std::bad_alloc();
}

void* GrowHeapBlock(void* block, std::size_t used, std::size_t newSize) {
  if (!IsPageBlock(newSize)) return std::realloc(block, newSize);
  void* const pages = internal::AllocatePages(PageRoom(newSize));
  if (pages == nullptr) return nullptr;
  if (used != 0) std::memcpy(pages, block, used);
  std::free(block);
  return pages;
}

}  // namespace

void* AllocateBlock(std::size_t size) {
  FailIfAsked();
  void* const block = IsPageBlock(size) ? internal::AllocatePages(PageRoom(size))
                                        : std::malloc(std::max<std::size_t>(size, 1));
  if (block == nullptr) throw std::bad_alloc();
  return Guarded(block, size);
}

void ReleaseBlock(void* block, std::size_t size) noexcept {
  if (block == nullptr) return;
  if (!IsPageBlock(size)) return std::free(block);
  Unguard(block, size);
  internal::ReleasePages(block, PageRoom(size));
}

void* GrowBlock(void* block, std::size_t oldSize, std::size_t used, std::size_t newSize) {
  FailIfAsked();
  if (IsPageBlock(oldSize) && newSize <= PageRoom(oldSize)) {
    return GrowInRoom(block, oldSize, newSize);
  }
  Unguard(block, oldSize);
  void* const grown = IsPageBlock(oldSize)
                          ? internal::GrowPages(block, PageRoom(oldSize), used, PageRoom(newSize))
                          : GrowHeapBlock(block, used, newSize);
  if (grown == nullptr) {
    Guarded(block, oldSize);
    throw std::bad_alloc();
  }
  return Guarded(grown, newSize);
}

void Wipe(void* memory, std::size_t size) noexcept {
  // The compiler cannot know what a volatile pointer points to, so the call stays.
  static void* (*const volatile fill)(void*, int, std::size_t) = std::memset;
  if (size != 0) fill(memory, 0, size);
}

}  // namespace lumr
