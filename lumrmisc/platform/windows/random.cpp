#include "lumrmisc/platform/random.h"

#include <algorithm>
#include <system_error>

#include "lumrmisc/platform/windows/windows_internal.h"

// Documented under this name as RtlGenRandom; it needs no library beyond the usual ones.
extern "C" BOOLEAN NTAPI SystemFunction036(PVOID buffer, ULONG size);

namespace lumr {

void FillRandom(void* memory, std::size_t size) {
  char* next = static_cast<char*>(memory);
  while (size != 0) {
    const ULONG part = static_cast<ULONG>(std::min<std::size_t>(size, 1u << 30));
    if (!SystemFunction036(next, part)) {
      throw std::system_error(ERROR_GEN_FAILURE, std::system_category());
    }
    next += part;
    size -= part;
  }
}

std::uint64_t RandomSeed() {
  std::uint64_t seed;
  FillRandom(&seed, sizeof seed);
  return seed;
}

}  // namespace lumr
