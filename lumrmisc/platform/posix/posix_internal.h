// What the sources of this folder share.
#pragma once

#include <errno.h>

#include "lumrmisc/platform/files.h"

namespace lumr::posix {

inline FileError LastError() {
  return {errno};
}

// Makes a call that answers -1 and EINTR when a signal came in between until it gets through.
template <typename Call>
auto Retried(Call call) {
  for (;;) {
    const auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

// A path as the system takes it. A path that no name on disk can have (empty, or with a NUL
// inside) has an error instead.
class NativePath {
 public:
  explicit NativePath(const CStringW& path) : bytes_(PathToUtf8(path)) {
    if (bytes_.empty()) error_.code = ENOENT;
    if (bytes_.find('\0') != CStringA::npos) error_.code = EINVAL;
  }
  FileError Error() const { return error_; }
  const char* Get() const { return bytes_.c_str(); }

 private:
  CStringA bytes_;
  FileError error_;
};

// Runs a call that takes a native path and answers -1 and errno.
template <typename Call>
FileError OnPath(const CStringW& path, Call call) {
  const NativePath native(path);
  if (native.Error()) return native.Error();
  return Retried([&] { return call(native.Get()); }) == -1 ? LastError() : FileError();
}

}  // namespace lumr::posix
