#include "lumrmisc/platform/terminal.h"

#include <algorithm>

namespace lumr {

FileError ReadAllStandardInput(std::string& content, std::uint64_t limit) {
  content.clear();
  FileError error;
  for (std::size_t size = 0, got = 0;; size += got) {
    if (size > limit) error = ErrorOf(FileErrorKind::kTooLarge);
    if (!error) {
      if (size == content.size()) content.resize(std::max<std::size_t>(size * 2, 65536));
      error = ReadStandardInput(content.data() + size, content.size() - size, got);
    }
    if (error) {
      content = std::string();
      return error;
    }
    if (got == 0) {
      content.resize(size);
      return {};
    }
  }
}

}  // namespace lumr
