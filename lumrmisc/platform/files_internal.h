// The one table of system calls under files.h. Everything that the library does to the disk goes
// through it, so that a test that puts its own in sees, fails or imitates each call.
#pragma once

#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/messages.h"

namespace lumr::internal {

using FileHandle = std::intptr_t;
inline constexpr FileHandle kNoFile = -1;

// How many bytes are read at once where content passes through memory in pieces.
inline constexpr std::size_t kChunk = 0x40000;

enum class OpenMode {
  kRead,
  kReplace,        // writes; creates the file or truncates it
  kAppend,         // writes at the end; creates the file when it is missing
  kOverwrite,      // writes over an existing file from its start, without truncating it
  kProbe,          // the same, with the file left alone: only to see whether it may be written
  kCreate,         // writes; fails when anything of that name exists, be it a dangling link
  kCreatePrivate,  // the same, for this user's eyes only
};

// Each member is one call of the system, as it is documented there; calls that a signal
// interrupted are made again. The members of this class are the system's own; a test overrides
// those that it wants to see or to fail.
class FileCalls {
 public:
  virtual ~FileCalls();

  virtual FileError Open(const CStringW& path, OpenMode mode, FileHandle& file);
  virtual FileError Read(FileHandle file, char* buffer, std::size_t size, std::size_t& got);
  // May write less than asked; done tells how much.
  virtual FileError Write(FileHandle file, const char* bytes, std::size_t size, std::size_t& done);
  virtual FileError Truncate(FileHandle file, std::uint64_t size);
  // To the disk. What cannot be flushed (a pipe, a terminal) succeeds.
  virtual FileError Sync(FileHandle file);
  // The handle is gone afterwards, error or not.
  virtual FileError Close(FileHandle file);

  // What a path leads to when it names a symbolic link, through further ones; that may not exist.
  // A path that names no link, or nothing, is its own target. isReplaceable: whether another file
  // may take the target's place, which makes no sense for the links that stand for open files.
  virtual FileError FollowLinks(const CStringW& path, CStringW& target, bool& isReplaceable);
  virtual FileError Query(const CStringW& path, FileInfo& info);
  // Gives an open file the permissions of another one, and owner and group as far as allowed.
  virtual FileError CopyPermissions(const CStringW& from, FileHandle to);
  virtual FileError Rename(const CStringW& from, const CStringW& to);  // replaces a file
  virtual FileError Remove(const CStringW& path);
  virtual FileError SetModified(const CStringW& path, CTime modified);
  virtual FileError SetReadOnly(const CStringW& path, bool readOnly);

  virtual FileError MakeFolder(const CStringW& path);
  virtual FileError RemoveFolder(const CStringW& path);
  virtual FileError ListFolder(const CStringW& path, std::vector<CStringW>& names);
  // Makes names that were created, renamed or removed in a folder last. The empty path is the
  // current folder here.
  virtual FileError SyncFolder(const CStringW& path);
};

FileCalls& Files();  // those in use

// Puts other calls in for as long as it lives. One at a time, and no other thread meanwhile.
class FileCallsForTest {
 public:
  explicit FileCallsForTest(FileCalls& calls);
  ~FileCallsForTest();
  FileCallsForTest(const FileCallsForTest&) = delete;
  FileCallsForTest& operator=(const FileCallsForTest&) = delete;
};

// Writes all of it, in as many calls as that takes.
FileError WriteAll(FileHandle file, std::string_view bytes);

// Whether the disk keeps names as bytes (POSIX) or as UTF-16 units (Windows).
bool NamesAreBytes();

// An error's text in the system's words, one line; empty when it has none in the language.
CStringW SystemWords(FileError error, MessageLanguage language);

}  // namespace lumr::internal
