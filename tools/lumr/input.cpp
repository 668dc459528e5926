#include "input.h"

#include "lumrmisc/platform/terminal.h"

namespace lumr::tool {

FileError Input::Open(const std::string& name) {
  isStandardInput_ = name == "-";
  return isStandardInput_ ? FileError() : file_.Open(PathFromUtf8(name));
}

FileError Input::Read(char* buffer, std::size_t size, std::size_t& got) {
  return isStandardInput_ ? ReadStandardInput(buffer, size, got) : file_.Read(buffer, size, got);
}

std::uint64_t ExpectedSize(const std::string& name) {
  FileInfo info;
  if (name == "-" || QueryFile(PathFromUtf8(name), info)) return 0;
  return info.isRegular ? info.size : 0;
}

}  // namespace lumr::tool
