// Files that stand uuencoded in the text of a message, between a "begin" and an "end" line.
#pragma once

#include <string>
#include <vector>

#include "textdecode.h"

namespace lumr::tool {

struct UuFile {
  std::string name;  // bytes as in the mail
  long long size;    // bytes when decoded
};

// Cuts the files out of a text, lists them, and gives the text that is left. A block that is not
// whole stays text.
HeldBytes CutUuFiles(HeldBytes text, std::vector<UuFile>& files);

}  // namespace lumr::tool
