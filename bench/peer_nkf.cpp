#include "peers.h"

#ifdef LUMRMISC_BENCH_NKF

#include "command_internal.h"

namespace lumr::bench {

Contender Nkf(const std::vector<std::string>& options) {
  Contender nkf{"nkf command", [options](std::string_view input) -> Operation {
                  return RunCommand(LUMRMISC_BENCH_NKF, options, input);
                }};
  nkf.isCommand = true;
  return nkf;
}

std::string NkfVersion() {
  return "nkf " LUMRMISC_BENCH_NKF_VERSION;
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender Nkf(const std::vector<std::string>&) {
  return NotBuilt("nkf command");
}
std::string NkfVersion() {
  return {};
}
}  // namespace lumr::bench

#endif
