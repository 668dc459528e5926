#include "lumrmisc/platform/files.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>
#include <stdexcept>

#include "lumrmisc/platform/files_internal.h"

namespace lumr {

using internal::Files;
using internal::OpenMode;

namespace internal {
namespace {

FileCalls& SystemCalls() {
  static FileCalls calls;
  return calls;
}

std::atomic<FileCalls*> callsForTest{nullptr};

}  // namespace

FileCalls::~FileCalls() = default;

FileCalls& Files() {
  FileCalls* const calls = callsForTest.load(std::memory_order_acquire);
  return calls != nullptr ? *calls : SystemCalls();
}

FileCallsForTest::FileCallsForTest(FileCalls& calls) {
  callsForTest = &calls;
}
FileCallsForTest::~FileCallsForTest() {
  callsForTest = nullptr;
}

FileError WriteAll(FileHandle file, std::string_view bytes) {
  while (!bytes.empty()) {
    std::size_t done = 0;
    if (const FileError error = Files().Write(file, bytes.data(), bytes.size(), done)) return error;
    // Some systems say so when a disk is full instead of failing.
    if (done == 0) return ErrorOf(FileErrorKind::kNoSpace);
    bytes.remove_prefix(done);
  }
  return {};
}

}  // namespace internal

namespace {

// One byte more than the file is said to have, so that its end is seen without growing.
std::size_t FirstRoom(std::uint64_t size, std::uint64_t limit) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::size_t>::max() - 1;
  return static_cast<std::size_t>(std::clamp<std::uint64_t>(std::min(size, limit), 4095, kMost)) +
         1;
}

FileError ReadToEnd(ReadStream& stream, std::string& content, std::uint64_t limit) {
  std::size_t size = 0;
  for (;;) {
    if (size > limit) return ErrorOf(FileErrorKind::kTooLarge);
    if (size == content.size()) content.resize(size * 2);
    std::size_t got = 0;
    const FileError error = stream.Read(content.data() + size, content.size() - size, got);
    if (error) return error;
    if (got == 0) break;
    size += got;
  }
  content.resize(size);
  return {};
}

FileError CopyAll(ReadStream& from, DurableFile& to) {
  std::string buffer(internal::kChunk, '\0');
  for (;;) {
    std::size_t got = 0;
    if (const FileError error = from.Read(buffer.data(), buffer.size(), got)) return error;
    if (got == 0) return {};
    if (const FileError error = to.Write({buffer.data(), got})) return error;
  }
}

// The folder that a path's entry stands in, without the separator behind it where that can be
// spared; empty for the current folder and for a root.
CStringW ParentFolder(std::u16string_view path) {
  while (path.size() > 1 && NameOfPath(path).empty()) path.remove_suffix(1);
  std::u16string_view parent = FolderOfPath(path);
  while (parent.size() > 1 && NameOfPath(parent).empty()) parent.remove_suffix(1);
  return CStringW(parent.size() < path.size() ? parent : std::u16string_view());
}

FileError MakeFolder(const CStringW& path) {
  const FileError error = Files().MakeFolder(path);
  if (error) return IsFolder(path) ? FileError() : error;
  return Files().SyncFolder(ParentFolder(path));
}

}  // namespace

FileError ReadWholeFile(const CStringW& path, std::string& content, std::uint64_t limit) {
  content.clear();
  ReadStream stream;
  if (const FileError error = stream.Open(path)) return error;
  FileInfo info;
  if (const FileError error = QueryFile(path, info)) return error;
  if (info.size > limit) return ErrorOf(FileErrorKind::kTooLarge);
  FileError error;
  try {
    content.resize(FirstRoom(info.size, limit));
    error = ReadToEnd(stream, content, limit);
  } catch (const std::length_error&) {
    error = ErrorOf(FileErrorKind::kTooLarge);
  } catch (const std::bad_alloc&) {
    // A file of ordinary size fails because memory ran out; a huge one because of its size.
    const std::uint64_t size = std::max<std::uint64_t>(info.size, content.size());
    content = std::string();
    if (size < std::uint64_t{1} << 30) throw;
    error = ErrorOf(FileErrorKind::kTooLarge);
  }
  if (error) content = std::string();
  return error;
}

FileError WriteFileDurably(const CStringW& path, std::string_view content) {
  DurableFile file;
  if (const FileError error = file.Open(path)) return error;
  if (const FileError error = file.Write(content)) return error;
  return file.Commit();
}

FileError DuplicateFile(const CStringW& from, const CStringW& to) {
  ReadStream source;
  if (const FileError error = source.Open(from)) return error;
  DurableFile copy;
  if (const FileError error = copy.Open(to)) return error;
  if (const FileError error = CopyAll(source, copy)) return error;
  source.Close();  // Windows does not replace a file that is open, should both be one
  return copy.Commit();
}

FileError ReadStream::Open(const CStringW& path) {
  Close();
  return Files().Open(path, OpenMode::kRead, handle_);
}

FileError ReadStream::Read(char* buffer, std::size_t size, std::size_t& got) {
  got = 0;
  return Files().Read(handle_, buffer, size, got);
}

void ReadStream::Close() {
  if (IsOpen()) Files().Close(handle_);
  handle_ = kClosed;
}

AppendStream::~AppendStream() {
  if (IsOpen()) Files().Close(handle_);
}

FileError AppendStream::Open(const CStringW& path, bool append) {
  if (const FileError error = Close()) return error;
  return Files().Open(path, append ? OpenMode::kAppend : OpenMode::kReplace, handle_);
}

FileError AppendStream::Write(std::string_view bytes) {
  return internal::WriteAll(handle_, bytes);
}

FileError AppendStream::Close() {
  if (!IsOpen()) return {};
  const FileError synced = Files().Sync(handle_);
  const FileError closed = Files().Close(handle_);
  handle_ = kClosed;
  return synced ? synced : closed;
}

FileError QueryFile(const CStringW& path, FileInfo& info) {
  info = FileInfo();
  return Files().Query(path, info);
}

bool PathExists(const CStringW& path) {
  FileInfo info;
  return !QueryFile(path, info);
}

bool IsFolder(const CStringW& path) {
  FileInfo info;
  return !QueryFile(path, info) && info.isFolder;
}

FileError RemoveFile(const CStringW& path) {
  return Files().Remove(path);
}

FileError RenameFile(const CStringW& from, const CStringW& to) {
  return Files().Rename(from, to);
}

FileError SetFileModified(const CStringW& path, CTime modified) {
  return Files().SetModified(path, modified);
}

FileError SetFileReadOnly(const CStringW& path, bool readOnly) {
  return Files().SetReadOnly(path, readOnly);
}

FileError MakeFolders(const CStringW& path) {
  // From the end up to the first folder that exists, and down again, so that nothing above it
  // needs to be ours to change.
  std::vector<CStringW> missing;
  for (CStringW folder = path; !folder.empty() && !IsFolder(folder);) {
    CStringW parent = ParentFolder(folder);
    missing.push_back(std::move(folder));
    folder = std::move(parent);
  }
  for (; !missing.empty(); missing.pop_back()) {
    if (const FileError error = MakeFolder(missing.back())) return error;
  }
  return path.empty() ? ErrorOf(FileErrorKind::kMissing) : FileError();
}

FileError RemoveFolder(const CStringW& path) {
  return Files().RemoveFolder(path);
}

FileError FlushFolder(const CStringW& path) {
  return Files().SyncFolder(path);
}

FileError ListFolder(const CStringW& path, std::vector<CStringW>& names) {
  names.clear();
  return Files().ListFolder(path, names);
}

}  // namespace lumr
