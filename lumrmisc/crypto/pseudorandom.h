// A small pseudo-random number source.
#pragma once

namespace lumr {

// The next number, 0 to 32767, of the calling thread's sequence, which the clock seeds at the first
// call. For delays, boundaries and the like; whoever knows one number can foretell the next.
int GetRandom();

}  // namespace lumr
