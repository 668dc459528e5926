// Charset names on the command line.
#pragma once

#include <string>

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/charset/transcoder.h"

namespace lumr::tool {

// The code type of a name as mail knows it or of a number of `lumr charsets`; CT_UNKNOWN when
// it is neither. order is set for UTF-16.
CodeType CodeTypeOfArgument(const std::string& argument, Utf16Order& order);

}  // namespace lumr::tool
