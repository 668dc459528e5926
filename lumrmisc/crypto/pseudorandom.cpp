#include "lumrmisc/crypto/pseudorandom.h"

#include <atomic>
#include <cstdint>

#include "lumrmisc/platform/clock.h"

namespace lumr {
namespace {

// The first thread is seeded by the clock alone; those that start in the same millisecond must
// not draw the same numbers.
std::uint32_t SeedOfThread() {
  static std::atomic<std::uint32_t> threads{0};
  const auto seconds = static_cast<std::uint32_t>(Now().time_since_epoch().count());
  return TickMilliseconds() + seconds + threads.fetch_add(1) * 0x9e3779b9u;
}

}  // namespace

int GetRandom() {
  thread_local std::uint32_t state = SeedOfThread();
  // A linear congruential generator; its upper bits are the better ones.
  state = state * 214013u + 2531011u;
  return static_cast<int>((state >> 16) & 0x7fff);
}

}  // namespace lumr
