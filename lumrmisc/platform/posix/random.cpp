#include "lumrmisc/platform/random.h"

#include <errno.h>
#include <sys/random.h>

#include <algorithm>
#include <system_error>

namespace lumr {

void FillRandom(void* memory, std::size_t size) {
  // A request of up to 256 bytes is never answered short or by a signal once the pool is ready.
  char* next = static_cast<char*>(memory);
  while (size != 0) {
    const ssize_t got = getrandom(next, std::min<std::size_t>(size, 256), 0);
    if (got < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category());
    if (got <= 0) continue;
    next += got;
    size -= static_cast<std::size_t>(got);
  }
}

std::uint64_t RandomSeed() {
  std::uint64_t seed;
  FillRandom(&seed, sizeof seed);
  return seed;
}

}  // namespace lumr
