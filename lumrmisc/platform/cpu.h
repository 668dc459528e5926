// Which vector kernels this processor runs. Code with more than one kernel asks here, at each
// call, and nowhere else; a kernel compiled for a feature runs only where its flag is set.
#pragma once

namespace lumr {

struct CpuFeatures {
  bool ssse3 = false;
  bool sse41 = false;
  bool avx2 = false;
  bool bmi2 = false;
  bool avx512 = false;  // with the extensions that avx512_internal.h names
  bool neon = false;
};

// The features of this processor (and of the system on it), less what LimitCpu took away.
const CpuFeatures& Cpu();

}  // namespace lumr
