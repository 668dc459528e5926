// Under the sanitizers, and in builds for another system (which run under wine), exhaustive loops
// take every kSampleStep-th case.
#pragma once

#include <cstddef>

namespace lumr {

#if defined(__SANITIZE_ADDRESS__) || defined(_WIN32)
inline constexpr std::size_t kSampleStep = 31;
#else
inline constexpr std::size_t kSampleStep = 1;
#endif

}  // namespace lumr
