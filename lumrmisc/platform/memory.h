// Blocks of memory for byte buffers, and a wipe that is never optimised away.
//
// A block of fewer than kPageBlockMinimum bytes comes from the heap, a larger one from the
// page allocator, so that big mail bodies do not fragment the heap. The block's byte count
// decides at allocation and at release alike; whoever owns a block passes the same count. A page
// block has room behind its end that belongs to nobody and that growth takes up. Blocks are
// aligned for every type, and may be released by another thread than the one that took them.
#pragma once

#include <cstddef>

namespace lumr {

inline constexpr std::size_t kPageBlockMinimum = 1024;

// The content is undefined. Never null, not for size 0 either: throws std::bad_alloc.
void* AllocateBlock(std::size_t size);
// Null is ignored. The size decides which allocator the block goes back to.
void ReleaseBlock(void* block, std::size_t size) noexcept;

// Makes a block of oldSize bytes one of newSize bytes (newSize > oldSize), keeping at least the
// first used bytes (used <= oldSize), in place where that is possible: a block that grows 16 bytes
// at a time takes time linear in its final size. Gives the block's address from now on. On
// failure throws std::bad_alloc and leaves the old block as it was.
void* GrowBlock(void* block, std::size_t oldSize, std::size_t used, std::size_t newSize);

// Overwrites memory with zero bytes even where nobody reads it again.
void Wipe(void* memory, std::size_t size) noexcept;

}  // namespace lumr
