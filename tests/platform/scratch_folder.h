// A fresh folder for one test, removed with all that is in it.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/random.h"

namespace lumr {

class ScratchFolder {
 public:
  ScratchFolder() {
    const std::string name = "lumr-test-" + std::to_string(RandomSeed());
    folder_ = JoinPath(TemporaryFolder(), PathFromUtf8(name));
    std::filesystem::create_directory(folder_);
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const CStringW& Path() const { return folder_; }
  CStringW operator/(std::u16string_view name) const { return JoinPath(folder_, name); }
  std::size_t Count() const {
    std::vector<CStringW> names;
    return ListFolder(folder_, names) ? 0 : names.size();
  }

 private:
  CStringW folder_;
};

// Writes a file to start a test with, durable or not.
inline void WritePlainly(const CStringW& path, std::string_view content) {
  std::ofstream(std::filesystem::path(path), std::ios::binary) << content;
}

// The content, or "(missing)", or the error's text.
inline std::string ContentOf(const CStringW& path) {
  std::string content;
  const FileError error = ReadWholeFile(path, content);
  if (!error) return content;
  return KindOf(error) == FileErrorKind::kMissing ? "(missing)" : SystemErrorText(error);
}

}  // namespace lumr
