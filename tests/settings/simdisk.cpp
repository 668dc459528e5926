#include "settings/simdisk.h"

#include <algorithm>

namespace lumr {
namespace {

const FileError kMissing = ErrorOf(FileErrorKind::kMissing);

CStringW Trimmed(CStringW path) {
  while (path.size() > 1 && (path.back() == PathSeparator() || path.back() == u'/'))
    path.pop_back();
  return path;
}

}  // namespace

SimDisk::SimDisk(const DiskImage& image) {
  for (const auto& [path, content] : image) {
    names_[path] = std::make_shared<File>(File{content, content});
    for (CStringW folder = path; !folder.empty();) {
      folder = Trimmed(CStringW(FolderOfPath(folder)));
      if (!folders_.insert(folder).second || folder.size() < 2) break;
    }
  }
  flushedNames_ = names_;
}

DiskImage SimDisk::Content() const {
  return AfterCrash(Unflushed::kKept, pending_.size());
}

DiskImage SimDisk::AfterCrash(Unflushed unflushed, std::size_t renamed) const {
  Names names = flushedNames_;
  for (std::size_t i = 0; i < renamed; ++i) {
    names[pending_[i].path] = pending_[i].file;
    if (pending_[i].file == nullptr) names.erase(pending_[i].path);
  }
  DiskImage image;
  for (const auto& [path, file] : names) {
    std::string content = unflushed == Unflushed::kDropped ? file->flushed : file->live;
    if (unflushed == Unflushed::kZeroFilled || unflushed == Unflushed::kTorn) {
      const auto differs =
          std::mismatch(content.begin(), content.end(), file->flushed.begin(), file->flushed.end());
      auto from = static_cast<std::size_t>(differs.first - content.begin());
      if (unflushed == Unflushed::kTorn) from = std::max(from, content.size() / 512 * 512);
      std::fill(content.begin() + static_cast<std::ptrdiff_t>(from), content.end(), '\0');
    }
    image[path] = content;
  }
  return image;
}

FileError SimDisk::Enter(const char* call) {
  const int number = calls_++;
  return fault ? fault(call, number) : FileError();
}

FileError SimDisk::Leave(FileError error) {
  if (afterStep) afterStep();
  return error;
}

void SimDisk::SetName(const CStringW& path, std::shared_ptr<File> file) {
  if (file == nullptr) {
    names_.erase(path);
  } else {
    names_[path] = file;
  }
  pending_.push_back({path, std::move(file)});
}

FileError SimDisk::Open(const CStringW& path, internal::OpenMode mode, internal::FileHandle& file) {
  if (const FileError error = Enter("open")) return error;
  using internal::OpenMode;
  const bool exists = names_.count(path) != 0;
  const bool create = mode == OpenMode::kCreate || mode == OpenMode::kCreatePrivate;
  if (create && exists) return Leave(ErrorOf(FileErrorKind::kExists));
  if (folders_.count(path) != 0) return Leave(ErrorOf(FileErrorKind::kIsFolder));
  if (!exists) {
    if (mode == OpenMode::kRead || mode == OpenMode::kOverwrite) return Leave(kMissing);
    if (folders_.count(Trimmed(CStringW(FolderOfPath(path)))) == 0) return Leave(kMissing);
    SetName(path, std::make_shared<File>());
  }
  Handle handle{names_[path], 0, mode == OpenMode::kAppend};
  if (mode == OpenMode::kReplace) handle.file->live.clear();
  handles_.push_back(handle);
  file = static_cast<internal::FileHandle>(handles_.size() - 1);
  return Leave();
}

FileError SimDisk::Read(internal::FileHandle file, char* buffer, std::size_t size,
                        std::size_t& got) {
  if (const FileError error = Enter("read")) return error;
  Handle& handle = handles_[static_cast<std::size_t>(file)];
  got = std::min(size, handle.file->live.size() - handle.at);
  handle.file->live.copy(buffer, got, handle.at);
  handle.at += got;
  return Leave();
}

FileError SimDisk::Write(internal::FileHandle file, const char* bytes, std::size_t size,
                         std::size_t& done) {
  if (const FileError error = Enter("write")) return error;
  Handle& handle = handles_[static_cast<std::size_t>(file)];
  std::string& live = handle.file->live;
  if (handle.append) handle.at = live.size();
  for (done = 0; done < std::min(size, writeLimit); ++done) {
    if (handle.at >= live.size()) live.resize(handle.at + 1);
    live[handle.at++] = bytes[done];
    if (afterStep) afterStep();
  }
  return {};
}

FileError SimDisk::Truncate(internal::FileHandle file, std::uint64_t size) {
  if (const FileError error = Enter("truncate")) return error;
  handles_[static_cast<std::size_t>(file)].file->live.resize(size);
  return Leave();
}

FileError SimDisk::Sync(internal::FileHandle file) {
  if (const FileError error = Enter("sync")) return error;
  File& synced = *handles_[static_cast<std::size_t>(file)].file;
  synced.flushed = synced.live;
  return Leave();
}

FileError SimDisk::Close(internal::FileHandle) {
  return Leave(Enter("close"));
}

FileError SimDisk::FollowLinks(const CStringW& path, CStringW& target, bool& isReplaceable) {
  if (const FileError error = Enter("follow links")) return error;
  target = path;
  isReplaceable = true;
  return Leave();
}

FileError SimDisk::Query(const CStringW& path, FileInfo& info) {
  if (const FileError error = Enter("query")) return error;
  const CStringW trimmed = Trimmed(path);
  info = {};
  info.isFolder = folders_.count(trimmed) != 0;
  if (info.isFolder) return Leave();
  const auto found = names_.find(path);
  if (found == names_.end()) return Leave(kMissing);
  info.isRegular = true;
  info.size = found->second->live.size();
  return Leave();
}

FileError SimDisk::CopyPermissions(const CStringW&, internal::FileHandle) {
  return Leave(Enter("copy permissions"));
}

FileError SimDisk::Rename(const CStringW& from, const CStringW& to) {
  if (const FileError error = Enter("rename")) return error;
  const auto found = names_.find(from);
  if (found == names_.end()) return Leave(kMissing);
  const std::shared_ptr<File> file = found->second;
  SetName(to, file);
  SetName(from, nullptr);
  return Leave();
}

FileError SimDisk::Remove(const CStringW& path) {
  if (const FileError error = Enter("remove")) return error;
  if (names_.count(path) == 0) return Leave(kMissing);
  SetName(path, nullptr);
  return Leave();
}

FileError SimDisk::SetModified(const CStringW&, CTime) {
  return Leave(Enter("set modified"));
}

FileError SimDisk::SetReadOnly(const CStringW&, bool) {
  return Leave(Enter("set read-only"));
}

FileError SimDisk::MakeFolder(const CStringW& path) {
  if (const FileError error = Enter("make folder")) return error;
  const bool made = folders_.insert(Trimmed(path)).second;
  return Leave(made ? FileError() : ErrorOf(FileErrorKind::kExists));
}

FileError SimDisk::RemoveFolder(const CStringW& path) {
  if (const FileError error = Enter("remove folder")) return error;
  return Leave(folders_.erase(Trimmed(path)) != 0 ? FileError() : kMissing);
}

FileError SimDisk::ListFolder(const CStringW& path, std::vector<CStringW>& names) {
  if (const FileError error = Enter("list folder")) return error;
  names.clear();
  for (const auto& [file, content] : names_) {
    if (Trimmed(CStringW(FolderOfPath(file))) == Trimmed(path)) {
      names.emplace_back(NameOfPath(file));
    }
  }
  return Leave();
}

FileError SimDisk::SyncFolder(const CStringW& path) {
  if (const FileError error = Enter("sync folder")) return error;
  const CStringW folder = Trimmed(path);
  std::vector<NameChange> others;
  for (NameChange& change : pending_) {
    if (Trimmed(CStringW(FolderOfPath(change.path))) != folder) {
      others.push_back(std::move(change));
    } else if (change.file == nullptr) {
      flushedNames_.erase(change.path);
    } else {
      flushedNames_[change.path] = change.file;
    }
  }
  pending_ = std::move(others);
  return Leave();
}

}  // namespace lumr
