// Random bytes of the system, that nobody can guess: for keys, names of temporary files and the
// seeds of faster generators. Safe to call from any thread; std::system_error on the systems
// (none that is known) that refuse them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumr {

std::uint64_t RandomSeed();
void FillRandom(void* memory, std::size_t size);

}  // namespace lumr
