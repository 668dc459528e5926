#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/platform/posix/posix_internal.h"

namespace lumr::internal {

using posix::LastError;
using posix::NativePath;
using posix::OnPath;
using posix::Retried;

namespace {

constexpr mode_t kRights = 0777;
constexpr mode_t kGroupRights = 0070;
constexpr mode_t kAllWrite = 0222;
constexpr mode_t kAnyone = 0666;
constexpr mode_t kOwnerOnly = 0600;

struct OpenRow {
  int flags;
  mode_t mode;
};
// In the order of OpenMode.
constexpr OpenRow kOpen[] = {
    {O_RDONLY, 0},
    {O_WRONLY | O_CREAT | O_TRUNC, kAnyone},
    {O_WRONLY | O_CREAT | O_APPEND, kAnyone},
    {O_WRONLY, 0},
    {O_WRONLY, 0},
    {O_WRONLY | O_CREAT | O_EXCL, kAnyone},
    {O_WRONLY | O_CREAT | O_EXCL, kOwnerOnly},
};

int Descriptor(FileHandle file) {
  return static_cast<int>(file);
}

// The longest single transfer that every system takes.
constexpr std::size_t kMostAtOnce = 0x40000000;

CTime TimeOf(const struct timespec& time) {
  return CTime(std::chrono::seconds(time.tv_sec));
}

// Whether a flush failed only because there is no disk behind the handle.
bool CannotBeFlushed(int error) {
  return error == EINVAL || error == ENOTSUP || error == EROFS;
}

// The text of a symbolic link. EINVAL: it is none.
FileError ReadLink(const char* path, CStringA& text) {
  text.resize(PATH_MAX);
  const ssize_t length = readlink(path, text.data(), text.size());
  if (length < 0) return LastError();
  text.resize(static_cast<std::size_t>(length));
  return {};
}

// Whether a link is one of those that the system shows open files as: /dev/stdout leads there.
bool IsOpenFile(std::u16string_view link) {
  return link.starts_with(u"/proc/") || link.starts_with(u"/dev/fd/");
}

// A file of another owner keeps its group only where we may give it; otherwise the group's
// rights would go to strangers, and shrink to what everybody has.
mode_t RightsAfterChange(const struct stat& wanted, const struct stat& now) {
  mode_t rights = wanted.st_mode & kRights;
  if (wanted.st_gid != now.st_gid) rights &= ~kGroupRights | ((rights & 07) << 3);
  return rights;
}

// The access list, where the file system has one. Without it the plain rights are all there is.
void CopyAccessList(const char* from, int to) {
  constexpr const char* kName = "system.posix_acl_access";
  char list[4096];
  const ssize_t size = getxattr(from, kName, list, sizeof list);
  if (size > 0) static_cast<void>(fsetxattr(to, kName, list, static_cast<std::size_t>(size), 0));
}

}  // namespace

FileError FileCalls::Open(const CStringW& path, OpenMode mode, FileHandle& file) {
  file = kNoFile;
  const NativePath native(path);
  if (native.Error()) return native.Error();
  const OpenRow& row = kOpen[static_cast<int>(mode)];
  const int flags = row.flags | O_CLOEXEC | O_NOCTTY;
  const int descriptor = Retried([&] { return open(native.Get(), flags, row.mode); });
  if (descriptor == -1) return LastError();
  struct stat status;
  if (mode == OpenMode::kRead && fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
    close(descriptor);
    return {EISDIR};
  }
  file = descriptor;
  return {};
}

FileError FileCalls::Read(FileHandle file, char* buffer, std::size_t size, std::size_t& got) {
  const ssize_t result =
      Retried([&] { return read(Descriptor(file), buffer, std::min(size, kMostAtOnce)); });
  got = result < 0 ? 0 : static_cast<std::size_t>(result);
  return result < 0 ? LastError() : FileError();
}

FileError FileCalls::Write(FileHandle file, const char* bytes, std::size_t size,
                           std::size_t& done) {
  const ssize_t result =
      Retried([&] { return write(Descriptor(file), bytes, std::min(size, kMostAtOnce)); });
  done = result < 0 ? 0 : static_cast<std::size_t>(result);
  return result < 0 ? LastError() : FileError();
}

FileError FileCalls::Truncate(FileHandle file, std::uint64_t size) {
  const auto length = static_cast<off_t>(size);
  return Retried([&] { return ftruncate(Descriptor(file), length); }) == -1 ? LastError()
                                                                            : FileError();
}

FileError FileCalls::Sync(FileHandle file) {
  if (Retried([&] { return fsync(Descriptor(file)); }) != -1) return {};
  return CannotBeFlushed(errno) ? FileError() : LastError();
}

FileError FileCalls::Close(FileHandle file) {
  // Not made again after a signal: the descriptor is gone already, and may be another's by now.
  return close(Descriptor(file)) == -1 && errno != EINTR ? LastError() : FileError();
}

FileError FileCalls::FollowLinks(const CStringW& path, CStringW& target, bool& isReplaceable) {
  constexpr int kMostLinks = 40;  // as many as the kernel follows
  target = path;
  isReplaceable = true;
  for (int links = 0; links <= kMostLinks; ++links) {
    const NativePath native(target);
    if (native.Error()) return native.Error();
    CStringA text;
    const FileError error = ReadLink(native.Get(), text);
    if (error.code == EINVAL || error.code == ENOENT) return {};
    if (error) return error;
    if (IsOpenFile(target)) {
      isReplaceable = false;
      return {};
    }
    const CStringW next = PathFromUtf8(text);
    target = next.starts_with(u'/') ? next : JoinPath(FolderOfPath(target), next);
  }
  return {ELOOP};
}

FileError FileCalls::Query(const CStringW& path, FileInfo& info) {
  struct stat status;
  if (const FileError error = OnPath(path, [&](const char* p) { return stat(p, &status); })) {
    return error;
  }
  info.isFolder = S_ISDIR(status.st_mode);
  info.isRegular = S_ISREG(status.st_mode);
  info.size = info.isRegular ? static_cast<std::uint64_t>(status.st_size) : 0;
  info.modified = TimeOf(status.st_mtim);
  return {};
}

FileError FileCalls::CopyPermissions(const CStringW& from, FileHandle to) {
  struct stat wanted;
  if (const FileError error = OnPath(from, [&](const char* p) { return stat(p, &wanted); })) {
    return error;
  }
  const int descriptor = Descriptor(to);
  // Only the superuser gives a file to another owner, but everybody may give it to a group of
  // his own. What is refused stays as it is.
  if (fchown(descriptor, wanted.st_uid, wanted.st_gid) == -1) {
    static_cast<void>(fchown(descriptor, static_cast<uid_t>(-1), wanted.st_gid) == 0);
  }
  struct stat now;
  if (fstat(descriptor, &now) == -1) return LastError();
  const mode_t rights = RightsAfterChange(wanted, now);
  if ((now.st_mode & kRights) != rights) {
    if (Retried([&] { return fchmod(descriptor, rights); }) == -1) return LastError();
  }
  if (now.st_gid == wanted.st_gid) CopyAccessList(NativePath(from).Get(), descriptor);
  return {};
}

FileError FileCalls::Rename(const CStringW& from, const CStringW& to) {
  const NativePath target(to);
  if (target.Error()) return target.Error();
  return OnPath(from, [&](const char* p) { return rename(p, target.Get()); });
}

FileError FileCalls::Remove(const CStringW& path) {
  return OnPath(path, [](const char* p) { return unlink(p); });
}

FileError FileCalls::SetModified(const CStringW& path, CTime modified) {
  struct timespec times[2] = {};
  times[0].tv_nsec = UTIME_OMIT;
  times[1].tv_sec = static_cast<time_t>(modified.time_since_epoch().count());
  return OnPath(path, [&](const char* p) { return utimensat(AT_FDCWD, p, times, 0); });
}

FileError FileCalls::SetReadOnly(const CStringW& path, bool readOnly) {
  struct stat status;
  if (const FileError error = OnPath(path, [&](const char* p) { return stat(p, &status); })) {
    return error;
  }
  const mode_t old = status.st_mode & 07777;
  const mode_t rights = readOnly ? old & ~kAllWrite : old | S_IWUSR;
  if (rights == old) return {};
  return OnPath(path, [&](const char* p) { return chmod(p, rights); });
}

FileError FileCalls::MakeFolder(const CStringW& path) {
  return OnPath(path, [](const char* p) { return mkdir(p, kRights); });
}

FileError FileCalls::RemoveFolder(const CStringW& path) {
  return OnPath(path, [](const char* p) { return rmdir(p); });
}

FileError FileCalls::ListFolder(const CStringW& path, std::vector<CStringW>& names) {
  const NativePath native(path);
  if (native.Error()) return native.Error();
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(native.Get()), closedir);
  if (folder == nullptr) return LastError();
  for (;;) {
    errno = 0;
    const struct dirent* const entry = readdir(folder.get());
    if (entry == nullptr) return LastError();
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.push_back(PathFromUtf8(name));
  }
}

FileError FileCalls::SyncFolder(const CStringW& path) {
  const NativePath native(path.empty() ? CStringW(u".") : path);
  if (native.Error()) return native.Error();
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  const int descriptor = Retried([&] { return open(native.Get(), kFlags); });
  // A folder that may be written but not read cannot be opened, and is left to the system.
  if (descriptor == -1) return errno == EACCES ? FileError() : LastError();
  const FileError error = Sync(descriptor);
  const FileError closed = Close(descriptor);
  return error ? error : closed;
}

}  // namespace lumr::internal
