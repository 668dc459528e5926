// The C library maps large blocks by itself and extends them in place (mremap), which no rule of
// ours could do better.
#include <cstdlib>

#include "lumrmisc/platform/memory_internal.h"

namespace lumr::internal {

void* AllocatePages(std::size_t size) {
  return std::malloc(size);
}

void* GrowPages(void* block, std::size_t, std::size_t, std::size_t newSize) {
  return std::realloc(block, newSize);
}

void ReleasePages(void* block, std::size_t) noexcept {
  std::free(block);
}

}  // namespace lumr::internal
