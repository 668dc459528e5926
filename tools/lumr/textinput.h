// A text file in any charset, whole, as UTF-16.
#pragma once

#include <string>

#include "lumrmisc/buffer/buffer.h"
#include "session.h"

namespace lumr::tool {

// Reads a file or standard input ("-"). from: its charset, by a name that mail knows or a number of
// `lumr charsets`; empty: detected. Characters that cannot be read are replaced, told and raise
// kLost. False after telling why nothing was read.
bool ReadText(Session& session, const std::string& file, const std::string& from, CBuffer& utf16);

}  // namespace lumr::tool
