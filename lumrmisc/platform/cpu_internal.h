// Lets tests run the lesser kernels on a processor that has the best one.
#pragma once

namespace lumr::internal {

enum class CpuLevel { kPortable, kSse41, kAvx2, kAll };  // kSse41 includes SSSE3

// Hides the features above level from Cpu(), for all threads, until called again.
void LimitCpu(CpuLevel level);

}  // namespace lumr::internal
