// The page allocator under memory.h, and the seam where tests make allocations fail.
#pragma once

#include <atomic>
#include <cstddef>

namespace lumr::internal {

// Blocks of kPageBlockMinimum bytes and more. All three answer null (or leave the block alone)
// instead of throwing. The sizes given at growth and release are those of the allocation.
void* AllocatePages(std::size_t size);
void* GrowPages(void* block, std::size_t oldSize, std::size_t used, std::size_t newSize);
void ReleasePages(void* block, std::size_t size) noexcept;

// Asked before each allocation and growth of a block when a test has set it: true makes that one
// fail as if memory had run out. Any thread may be asking.
using AllocationFault = bool (*)();
inline std::atomic<AllocationFault> allocationFault{nullptr};

}  // namespace lumr::internal
