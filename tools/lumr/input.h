// What a command reads: a file by its name, or standard input for "-".
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "lumrmisc/platform/files.h"

namespace lumr::tool {

// The most that is read into memory at once: buffers of the library hold no more.
inline constexpr std::uint64_t kWholeLimit = (std::uint64_t{1} << 31) - 64;

class Input {
 public:
  FileError Open(const std::string& name);
  // Reads up to size bytes; got is 0 at the end only.
  FileError Read(char* buffer, std::size_t size, std::size_t& got);

 private:
  bool isStandardInput_ = false;
  ReadStream file_;
};

// Reads all that is left of an input to the end of a buffer with data, size and resize.
// expected: how much that probably is.
template <typename Buffer>
FileError ReadRest(Input& input, Buffer& buffer, std::uint64_t expected = 0) {
  std::size_t used = buffer.size();
  std::size_t room = static_cast<std::size_t>(std::min(expected, kWholeLimit)) + 1;
  for (;;) {
    buffer.resize(used + room);
    std::size_t got = 0;
    const FileError error = input.Read(buffer.data() + used, room, got);
    used += got;
    room -= got;
    if (error || got == 0 || used > kWholeLimit) {
      buffer.resize(used);
      return used > kWholeLimit ? ErrorOf(FileErrorKind::kTooLarge) : error;
    }
    if (room == 0) room = std::max<std::size_t>(used, std::size_t{1} << 16);
  }
}

// The size of a regular file; 0 for anything else.
std::uint64_t ExpectedSize(const std::string& name);

// Reads the whole of a file or of standard input into an empty buffer.
template <typename Buffer>
FileError ReadAll(const std::string& name, Buffer& buffer) {
  Input input;
  if (const FileError error = input.Open(name)) return error;
  const std::uint64_t expected = ExpectedSize(name);
  if (expected > kWholeLimit) return ErrorOf(FileErrorKind::kTooLarge);
  return ReadRest(input, buffer, expected);
}

}  // namespace lumr::tool
