#include <algorithm>
#include <memory>
#include <vector>

#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/platform/windows/windows_internal.h"

namespace lumr {

using windows::Answer;
using windows::FilledBy;
using windows::LastError;
using windows::NativePath;
using windows::TimeOf;
using windows::Units;
using windows::Wide;

// Paths of MAX_PATH units and more have to be absolute and marked as verbatim; the room below
// that is for the names that the system itself puts behind a folder's.
NativePath::NativePath(const CStringW& path) : text_(Wide(path)) {
  constexpr std::size_t kShort = MAX_PATH - 14;
  if (text_.empty()) error_.code = ERROR_PATH_NOT_FOUND;
  if (text_.find(L'\0') != std::wstring::npos) error_.code = ERROR_INVALID_NAME;
  if (error_ || text_.starts_with(LR"(\\?\)") || text_.starts_with(LR"(\\.\)")) return;
  const CStringW full = FilledBy([this](wchar_t* buffer, DWORD size) {
    return GetFullPathNameW(text_.c_str(), size, buffer, nullptr);
  });
  if (full.size() < kShort) return;
  const bool isShare = full.starts_with(uR"(\\)");
  text_ = isShare ? LR"(\\?\UNC\)" + Wide(full).substr(2) : LR"(\\?\)" + Wide(full);
}

namespace internal {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
// Whatever holds a file open for a moment (an index, a virus scanner) is waited for that often,
// 1, 2, 4... milliseconds long.
constexpr int kPatience = 8;

struct OpenRow {
  DWORD access;
  DWORD share;
  DWORD creation;
};
// In the order of OpenMode. Writing over a file in place shares it with nobody, so that nobody
// sees half of it.
constexpr OpenRow kOpen[] = {
    {GENERIC_READ, kShareAll, OPEN_EXISTING},
    {GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS},
    {FILE_APPEND_DATA, FILE_SHARE_READ, OPEN_ALWAYS},
    {GENERIC_WRITE, 0, OPEN_EXISTING},
    {GENERIC_WRITE, kShareAll, OPEN_EXISTING},
    {GENERIC_WRITE | WRITE_DAC, FILE_SHARE_READ, CREATE_NEW},
    {GENERIC_WRITE | WRITE_DAC, FILE_SHARE_READ, CREATE_NEW},
};

HANDLE Handle(FileHandle file) {
  return reinterpret_cast<HANDLE>(file);
}

DWORD AtMost(std::size_t size) {
  return static_cast<DWORD>(std::min<std::size_t>(size, 0x40000000));
}

// Closes what it holds.
class OpenHandle {
 public:
  explicit OpenHandle(HANDLE handle) : handle_(handle) {}
  ~OpenHandle() {
    if (IsOpen()) CloseHandle(handle_);
  }
  OpenHandle(const OpenHandle&) = delete;
  OpenHandle& operator=(const OpenHandle&) = delete;
  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return handle_; }

 private:
  HANDLE handle_;
};

// Opens a file or folder for its attributes, links followed.
HANDLE OpenAttributes(const NativePath& path, DWORD access) {
  return CreateFileW(path.Get(), access, kShareAll, nullptr, OPEN_EXISTING,
                     FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

bool IsFolderItself(const NativePath& path) {
  const DWORD attributes = GetFileAttributesW(path.Get());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// The access list, where the file system has one.
void CopyAccessList(const NativePath& from, HANDLE to) {
  DWORD size = 0;
  GetFileSecurityW(from.Get(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  std::vector<char> list(size);
  if (size == 0 ||
      !GetFileSecurityW(from.Get(), DACL_SECURITY_INFORMATION, list.data(), size, &size)) {
    return;
  }
  SetKernelObjectSecurity(to, DACL_SECURITY_INFORMATION, list.data());
}

template <typename Call>
FileError OnPath(const CStringW& path, Call call) {
  const NativePath native(path);
  return native.Error() ? native.Error() : Answer(call(native));
}

}  // namespace

FileError FileCalls::Open(const CStringW& path, OpenMode mode, FileHandle& file) {
  file = kNoFile;
  const NativePath native(path);
  if (native.Error()) return native.Error();
  const OpenRow& row = kOpen[static_cast<int>(mode)];
  const HANDLE handle = CreateFileW(native.Get(), row.access, row.share, nullptr, row.creation,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle != INVALID_HANDLE_VALUE) {
    file = reinterpret_cast<FileHandle>(handle);
    return {};
  }
  const FileError error = LastError();
  const bool isFolder = error.code == ERROR_ACCESS_DENIED && IsFolderItself(native);
  return isFolder ? ErrorOf(FileErrorKind::kIsFolder) : error;
}

FileError FileCalls::Read(FileHandle file, char* buffer, std::size_t size, std::size_t& got) {
  DWORD count = 0;
  const FileError error = Answer(ReadFile(Handle(file), buffer, AtMost(size), &count, nullptr));
  got = count;
  // The end of a pipe.
  return error.code == ERROR_BROKEN_PIPE ? FileError() : error;
}

FileError FileCalls::Write(FileHandle file, const char* bytes, std::size_t size,
                           std::size_t& done) {
  DWORD count = 0;
  const FileError error = Answer(WriteFile(Handle(file), bytes, AtMost(size), &count, nullptr));
  done = count;
  return error;
}

FileError FileCalls::Truncate(FileHandle file, std::uint64_t size) {
  LARGE_INTEGER end;
  end.QuadPart = static_cast<LONGLONG>(size);
  if (!SetFilePointerEx(Handle(file), end, nullptr, FILE_BEGIN)) return LastError();
  return Answer(SetEndOfFile(Handle(file)));
}

FileError FileCalls::Sync(FileHandle file) {
  if (GetFileType(Handle(file)) != FILE_TYPE_DISK) return {};
  return Answer(FlushFileBuffers(Handle(file)));
}

FileError FileCalls::Close(FileHandle file) {
  return Answer(CloseHandle(Handle(file)));
}

FileError FileCalls::FollowLinks(const CStringW& path, CStringW& target, bool& isReplaceable) {
  target = path;
  isReplaceable = true;
  const NativePath native(path);
  if (native.Error()) return native.Error();
  const CStringW full = FilledBy([&](wchar_t* buffer, DWORD size) {
    return GetFullPathNameW(native.Get(), size, buffer, nullptr);
  });
  if (!full.empty()) target = full;
  const DWORD attributes = GetFileAttributesW(native.Get());
  if (attributes == INVALID_FILE_ATTRIBUTES) return {};
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return {};
  const OpenHandle file(OpenAttributes(native, FILE_READ_ATTRIBUTES));
  if (!file.IsOpen()) return LastError();
  const CStringW final = FilledBy([&](wchar_t* buffer, DWORD size) {
    return GetFinalPathNameByHandleW(file.Get(), buffer, size, FILE_NAME_NORMALIZED);
  });
  if (!final.empty()) target = final;
  return {};
}

FileError FileCalls::Query(const CStringW& path, FileInfo& info) {
  const NativePath native(path);
  if (native.Error()) return native.Error();
  const OpenHandle file(OpenAttributes(native, FILE_READ_ATTRIBUTES));
  if (!file.IsOpen()) return LastError();
  BY_HANDLE_FILE_INFORMATION facts;
  if (GetFileType(file.Get()) != FILE_TYPE_DISK) return {};
  if (!GetFileInformationByHandle(file.Get(), &facts)) return LastError();
  info.isFolder = (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  info.isRegular = !info.isFolder;
  info.size = info.isFolder ? 0 : (std::uint64_t{facts.nFileSizeHigh} << 32) | facts.nFileSizeLow;
  info.modified = TimeOf(facts.ftLastWriteTime);
  return {};
}

FileError FileCalls::CopyPermissions(const CStringW& from, FileHandle to) {
  const NativePath native(from);
  if (native.Error()) return native.Error();
  const DWORD attributes = GetFileAttributesW(native.Get());
  if (attributes == INVALID_FILE_ATTRIBUTES) return LastError();
  FILE_BASIC_INFO facts = {};  // zero times stay as they are
  facts.FileAttributes = attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                       FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED);
  if (facts.FileAttributes == 0) facts.FileAttributes = FILE_ATTRIBUTE_NORMAL;
  SetFileInformationByHandle(Handle(to), FileBasicInfo, &facts, sizeof facts);
  CopyAccessList(native, Handle(to));
  return {};
}

FileError FileCalls::Rename(const CStringW& from, const CStringW& to) {
  const NativePath target(to);
  if (target.Error()) return target.Error();
  for (int tries = 0;; ++tries) {
    const FileError error = OnPath(from, [&](const NativePath& source) {
      return MoveFileExW(source.Get(), target.Get(),
                         MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    });
    const FileErrorKind kind = KindOf(error);
    const bool mayPass = kind == FileErrorKind::kBusy || kind == FileErrorKind::kDenied;
    if (!mayPass || tries == kPatience || IsFolderItself(target)) return error;
    Sleep(1u << tries);
  }
}

FileError FileCalls::Remove(const CStringW& path) {
  return OnPath(path, [](const NativePath& native) { return DeleteFileW(native.Get()); });
}

FileError FileCalls::SetModified(const CStringW& path, CTime modified) {
  const NativePath native(path);
  if (native.Error()) return native.Error();
  const OpenHandle file(OpenAttributes(native, FILE_WRITE_ATTRIBUTES));
  if (!file.IsOpen()) return LastError();
  const FILETIME time = windows::FileTimeOf(modified);
  return Answer(SetFileTime(file.Get(), nullptr, nullptr, &time));
}

FileError FileCalls::SetReadOnly(const CStringW& path, bool readOnly) {
  return OnPath(path, [&](const NativePath& native) -> BOOL {
    const DWORD old = GetFileAttributesW(native.Get());
    if (old == INVALID_FILE_ATTRIBUTES) return FALSE;
    const DWORD wanted =
        readOnly ? old | FILE_ATTRIBUTE_READONLY : old & ~DWORD{FILE_ATTRIBUTE_READONLY};
    return wanted == old ? TRUE : SetFileAttributesW(native.Get(), wanted);
  });
}

FileError FileCalls::MakeFolder(const CStringW& path) {
  return OnPath(path, [](const NativePath& p) { return CreateDirectoryW(p.Get(), nullptr); });
}

FileError FileCalls::RemoveFolder(const CStringW& path) {
  return OnPath(path, [](const NativePath& native) { return RemoveDirectoryW(native.Get()); });
}

FileError FileCalls::ListFolder(const CStringW& path, std::vector<CStringW>& names) {
  const NativePath native(path.empty() ? path : JoinPath(path, u"*"));
  if (native.Error()) return native.Error();
  WIN32_FIND_DATAW entry;
  const HANDLE first = FindFirstFileW(native.Get(), &entry);
  if (first == INVALID_HANDLE_VALUE) return LastError();
  const std::unique_ptr<void, BOOL(WINAPI*)(HANDLE)> search(first, FindClose);
  do {
    const std::wstring_view name = entry.cFileName;
    if (name != L"." && name != L"..") names.push_back(Units(name));
  } while (FindNextFileW(search.get(), &entry));
  const FileError error = LastError();
  return error.code == ERROR_NO_MORE_FILES ? FileError() : error;
}

// The system keeps a log of what happens to names, and renaming writes through to it.
FileError FileCalls::SyncFolder(const CStringW&) {
  return {};
}

}  // namespace internal
}  // namespace lumr
