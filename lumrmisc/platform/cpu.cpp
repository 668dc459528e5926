#include "lumrmisc/platform/cpu.h"

#include <atomic>

#include "lumrmisc/platform/cpu_internal.h"

namespace lumr {
namespace {

CpuFeatures Detect() {
  CpuFeatures features;
#if defined(__x86_64__) || defined(__i386__)
  __builtin_cpu_init();
  features.ssse3 = __builtin_cpu_supports("ssse3");
  features.sse41 = __builtin_cpu_supports("sse4.1");
  // GCC keeps the stack of Windows programs at 16 bytes and yet spills vectors of 32 bytes as if
  // it stood at 32: vectors of that size are not for them (GCC bug 54412).
#if !defined(__MINGW32__) || defined(__clang__)
  features.avx2 = __builtin_cpu_supports("avx2");
  features.avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
                    __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
                    __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
                    __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
                    __builtin_cpu_supports("popcnt");
#endif
  features.bmi2 = __builtin_cpu_supports("bmi2");
#elif defined(__aarch64__)
  features.neon = true;  // part of the base instruction set
#endif
  return features;
}

// One set per level; the order is that of CpuLevel.
struct Levels {
  CpuFeatures sets[4];
  Levels() {
    const CpuFeatures all = Detect();
    sets[3] = all;
    sets[2] = all;
    sets[2].avx512 = false;
    sets[1].ssse3 = all.ssse3;
    sets[1].sse41 = all.sse41;
  }
};

const Levels& AllLevels() {
  static const Levels levels;
  return levels;
}

std::atomic<const CpuFeatures*> current{nullptr};

}  // namespace

const CpuFeatures& Cpu() {
  const CpuFeatures* const features = current.load(std::memory_order_acquire);
  if (features != nullptr) return *features;
  internal::LimitCpu(internal::CpuLevel::kAll);
  return AllLevels().sets[3];
}

void internal::LimitCpu(CpuLevel level) {
  current.store(&AllLevels().sets[static_cast<int>(level)], std::memory_order_release);
}

}  // namespace lumr
