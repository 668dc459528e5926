// Where the reserve copy of a settings file stands.
#pragma once

#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// folder ends in a separator, and so does the answer.
inline CStringW ReserveFolder(const CStringW& folder) {
  return folder + u"Reserve" + PathSeparator();
}

}  // namespace lumr
