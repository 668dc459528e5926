// Address space is reserved ahead, up to the next power of two, and committed as a block grows:
// most growth then happens in place, and the moves double in size. Both amounts follow from the
// block's size alone.
#include "lumrmisc/platform/memory_internal.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "lumrmisc/platform/windows/windows_internal.h"

namespace lumr::internal {
namespace {

// The unit in which address space is handed out.
constexpr std::size_t kReserveUnit = 65536;

std::size_t ReservedFor(std::size_t size) {
  return std::max(std::bit_ceil(size), kReserveUnit);
}

void* Commit(void* at, std::size_t size) {
  return VirtualAlloc(at, size, MEM_COMMIT, PAGE_READWRITE);
}

}  // namespace

void* AllocatePages(std::size_t size) {
  void* const block = VirtualAlloc(nullptr, ReservedFor(size), MEM_RESERVE, PAGE_READWRITE);
  if (block == nullptr || Commit(block, size) != nullptr) return block;
  VirtualFree(block, 0, MEM_RELEASE);
  return nullptr;
}

void* GrowPages(void* block, std::size_t oldSize, std::size_t used, std::size_t newSize) {
  if (newSize <= ReservedFor(oldSize)) return Commit(block, newSize);
  void* const grown = AllocatePages(newSize);
  if (grown == nullptr) return nullptr;
  std::memcpy(grown, block, used);
  ReleasePages(block, oldSize);
  return grown;
}

void ReleasePages(void* block, std::size_t) noexcept {
  VirtualFree(block, 0, MEM_RELEASE);
}

}  // namespace lumr::internal
