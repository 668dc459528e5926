// Files and folders.
//
// Paths are UTF-16 text with the platform's separator: "/" on POSIX, where they are UTF-8 on
// disk, "\" on Windows, where any length is taken. An empty path, or one with a NUL in it, is
// an error of the call. Failures are answered as the system's error number, never thrown; only
// running out of memory is std::bad_alloc. Objects are used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/platform/types.h"

namespace lumr {

// The system's error number of a failed call (errno, GetLastError); 0 is success, and an error
// is true in a condition: if (const FileError error = ...) return error;
struct FileError {
  int code = 0;
  explicit operator bool() const { return code != 0; }
  bool operator==(const FileError&) const = default;
};

// The errors that programs tell apart, the same on every system.
enum class FileErrorKind {
  kNone,
  kMissing,      // no such file, or no such folder on the way to it
  kDenied,       // permissions, or a read-only file system
  kExists,       // something of that name exists already
  kIsFolder,     // a folder where a file is wanted
  kNotFolder,    // a file where a folder is wanted
  kNotEmpty,     // a folder that still has something in it
  kNoSpace,      // disk full, or quota used up
  kTooLarge,     // larger than the file system or the memory can take
  kBusy,         // in use by another program
  kDevice,       // the disk failed to read or write
  kBadName,      // empty, too long, or with characters that names may not have
  kTooManyOpen,  // no file handles left
  kInterrupted,  // stopped by the user
  kOther,
};
FileErrorKind KindOf(FileError error);
// An error that KindOf tells to be of that kind; kOther gives the system's plainest error.
FileError ErrorOf(FileErrorKind kind);

// What to tell the user: one line without a line break, in the message language as far as the
// system speaks it, in the current code page. Success gives an empty text.
CStringA SystemErrorText(FileError error);
CStringW SystemErrorTextW(FileError error);

// ---- Paths

char16_t PathSeparator();

// Between path text and UTF-8. On POSIX every name that a disk can hold survives the way to
// UTF-16 and back: a byte that is not part of valid UTF-8 becomes the lone surrogate
// U+DC00 + byte, and only that. On Windows every name survives the way to UTF-8 and back: a lone
// surrogate becomes the three bytes that UTF-8 would have for it.
CStringW PathFromUtf8(std::string_view utf8);
CStringA PathToUtf8(std::u16string_view path);

// folder, one separator, name. An empty folder gives the name alone, an empty name the folder
// with a separator behind it.
CStringW JoinPath(std::u16string_view folder, std::u16string_view name);
// The part behind the last separator, and the part before it, with it.
std::u16string_view NameOfPath(std::u16string_view path);
std::u16string_view FolderOfPath(std::u16string_view path);

// ---- Whole files

// Reads a whole file, which may be a pipe or a device too. content is emptied first and keeps
// nothing of a file that failed. A folder is kIsFolder. A file that memory cannot hold is
// kTooLarge, as is one of more than limit bytes.
FileError ReadWholeFile(const CStringW& path, std::string& content,
                        std::uint64_t limit = ~std::uint64_t{0});

// Replaces a file's content as DurableFile does. What that would rescue stays in the temporary
// folder under its unguessable name.
FileError WriteFileDurably(const CStringW& path, std::string_view content);

// Copies content, durably like DurableFile, over what stands at to. Permissions are those of
// the file replaced, or of a new file.
FileError DuplicateFile(const CStringW& from, const CStringW& to);

// Replaces the content of a file, or creates it, so that a reader and a crash see the old
// content or the new one, whole.
//
// The new content is written to a file of an unguessable name beside the target (".lumr-" and
// ".tmp"), flushed to the disk, and renamed over the target; then the folder is flushed. The
// target's permissions stay, its owner and group too where the system lets them; a symbolic link
// stays and the file that it leads to is replaced. Other hard links keep the old content. A
// target that may not be written is refused, as if it had been opened for writing. On Windows a
// file that somebody holds open is not replaced (kBusy, kDenied), so close it before Commit.
//
// Where no second file may stand beside the target, or none may take its place (a read-only
// folder, a mount point, another's file in a sticky folder, a device), the content is gathered in
// the temporary folder and copied into the target at Commit. That way alone can leave a mixture
// when it is interrupted; when it fails, RescuedContent still has the new content.
//
// A process that is killed leaves its file behind, and nothing here takes it away: its name tells
// neither its target nor whether another process, of another machine perhaps, is still writing it,
// and content that was rescued has such a name too.
class DurableFile {
 public:
  DurableFile() = default;
  DurableFile(const DurableFile&) = delete;
  DurableFile& operator=(const DurableFile&) = delete;
  ~DurableFile();  // without Commit, drops what was written; the target stays as it was

  FileError Open(const CStringW& path);
  bool IsOpen() const { return handle_ != kClosed; }
  // Appends to the new content. After a failed Write, Commit gives the same error.
  FileError Write(std::string_view bytes);
  // Puts the new content in place and closes the file. After a failure the target is as it was,
  // apart from the copying way above, and unless IsReplaced.
  FileError Commit();
  // Drops what was written and closes the file.
  void Discard();
  // Where the whole new content was left, for its owner to take and remove, when the copying way
  // failed after it had begun to change the target; empty otherwise.
  const CStringW& RescuedContent() const { return rescued_; }
  // Whether Commit put the new content in place. Together with an error of Commit: the content
  // is there, whole, but flushing the folder failed, so that a crash may yet bring the old back.
  bool IsReplaced() const { return replaced_; }

 private:
  FileError CreateBeside(bool targetExists);
  FileError CreateIn(std::u16string_view folder, bool isPrivate);
  FileError CloseDraft();
  FileError PutInPlace();
  FileError CopyIntoTarget();

  static constexpr std::intptr_t kClosed = -1;
  std::intptr_t handle_ = kClosed;
  CStringW target_;  // links followed
  CStringW draft_;   // the file being written; empty when there is none
  CStringW rescued_;
  bool besideTarget_ = false;
  bool replaced_ = false;
  FileError failure_;
};

// ---- Streams

// A file that is read from its start in pieces.
class ReadStream {
 public:
  ReadStream() = default;
  ReadStream(const ReadStream&) = delete;
  ReadStream& operator=(const ReadStream&) = delete;
  ~ReadStream() { Close(); }

  FileError Open(const CStringW& path);  // a folder is kIsFolder
  bool IsOpen() const { return handle_ != kClosed; }
  // Reads up to size bytes; got is 0 at the end of the file only.
  FileError Read(char* buffer, std::size_t size, std::size_t& got);
  void Close();

 private:
  static constexpr std::intptr_t kClosed = -1;
  std::intptr_t handle_ = kClosed;
};

// A file that is written from its start or its end in pieces, for logs: a crash may leave a
// part. Nothing is buffered: what Write took stands in the file.
class AppendStream {
 public:
  AppendStream() = default;
  AppendStream(const AppendStream&) = delete;
  AppendStream& operator=(const AppendStream&) = delete;
  ~AppendStream();

  // Creates or truncates the file (or keeps its content when append). Others may read it
  // meanwhile, and on Windows not write it. A stream that was open is closed first.
  FileError Open(const CStringW& path, bool append);
  bool IsOpen() const { return handle_ != kClosed; }
  FileError Write(std::string_view bytes);
  FileError Close();  // flushes to the disk; success when nothing is open

 private:
  static constexpr std::intptr_t kClosed = -1;
  std::intptr_t handle_ = kClosed;
};

// ---- Files and folders by name. Symbolic links are followed, except by RemoveFile, RenameFile
// and RemoveFolder, which take the link itself.

struct FileInfo {
  bool isFolder = false;
  bool isRegular = false;  // neither folder nor device nor pipe
  std::uint64_t size = 0;  // bytes; of regular files
  CTime modified;
};
FileError QueryFile(const CStringW& path, FileInfo& info);

bool PathExists(const CStringW& path);
bool IsFolder(const CStringW& path);
FileError RemoveFile(const CStringW& path);
// Gives a file or folder another name on the same file system; a file of that name is replaced.
FileError RenameFile(const CStringW& from, const CStringW& to);
FileError SetFileModified(const CStringW& path, CTime modified);
// Lets the owner write the file, or no longer.
FileError SetFileReadOnly(const CStringW& path, bool readOnly);
// With those above it, flushed to the disk; a folder that exists is success.
FileError MakeFolders(const CStringW& path);
FileError RemoveFolder(const CStringW& path);  // an empty one
// Makes what was created, renamed or removed in a folder so far survive a crash.
FileError FlushFolder(const CStringW& path);
// The names in a folder, without "." and "..", in no particular order.
FileError ListFolder(const CStringW& path, std::vector<CStringW>& names);

// ---- Places. All end in a separator, and are empty when the system names none.

CStringW TemporaryFolder();  // TMPDIR or /tmp; on Windows GetTempPath
CStringW HomeFolder();
CStringW CurrentFolder();
CStringW ProgramFolder();  // where the running program stands

// Where programs keep what belongs to the user: settings, which may follow the user to other
// machines (XDG_CONFIG_HOME or ~/.config; on Windows the roaming application data), and data
// (XDG_DATA_HOME or ~/.local/share; on Windows the local application data).
enum class UserFolder { kSettings, kData };
CStringW UserDataFolder(UserFolder kind);

}  // namespace lumr
