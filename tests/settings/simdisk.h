// A disk in memory that forgets like a real one: what was not flushed may be gone after a crash.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "lumrmisc/platform/files_internal.h"

namespace lumr {

using DiskImage = std::map<CStringW, std::string>;  // path to content

class SimDisk : public internal::FileCalls {
 public:
  explicit SimDisk(const DiskImage& image = {});

  // Called after every call, and after every byte written.
  std::function<void()> afterStep;
  // Asked before every call with its name and number, from 0; an error makes it fail.
  std::function<FileError(const char* call, int number)> fault;
  // Writes take at most so many bytes a call.
  std::size_t writeLimit = ~std::size_t{0};

  DiskImage Content() const;  // as programs see it

  enum class Unflushed { kKept, kDropped, kZeroFilled, kTorn };
  // What a crash now may leave: unflushed data one of the four ways (kTorn: kept up to a multiple
  // of 512 bytes), with the first renamed of the name changes that are not flushed yet.
  DiskImage AfterCrash(Unflushed unflushed, std::size_t renamed) const;
  std::size_t PendingNames() const { return pending_.size(); }

  FileError Open(const CStringW& path, internal::OpenMode mode,
                 internal::FileHandle& file) override;
  FileError Read(internal::FileHandle file, char* buffer, std::size_t size,
                 std::size_t& got) override;
  FileError Write(internal::FileHandle file, const char* bytes, std::size_t size,
                  std::size_t& done) override;
  FileError Truncate(internal::FileHandle file, std::uint64_t size) override;
  FileError Sync(internal::FileHandle file) override;
  FileError Close(internal::FileHandle file) override;
  FileError FollowLinks(const CStringW& path, CStringW& target, bool& isReplaceable) override;
  FileError Query(const CStringW& path, FileInfo& info) override;
  FileError CopyPermissions(const CStringW& from, internal::FileHandle to) override;
  FileError Rename(const CStringW& from, const CStringW& to) override;
  FileError Remove(const CStringW& path) override;
  FileError SetModified(const CStringW& path, CTime modified) override;
  FileError SetReadOnly(const CStringW& path, bool readOnly) override;
  FileError MakeFolder(const CStringW& path) override;
  FileError RemoveFolder(const CStringW& path) override;
  FileError ListFolder(const CStringW& path, std::vector<CStringW>& names) override;
  FileError SyncFolder(const CStringW& path) override;

 private:
  struct File {
    std::string live, flushed;
  };
  using Names = std::map<CStringW, std::shared_ptr<File>>;
  struct NameChange {
    CStringW path;
    std::shared_ptr<File> file;  // null: removed
  };
  struct Handle {
    std::shared_ptr<File> file;
    std::size_t at = 0;
    bool append = false;
  };

  FileError Enter(const char* call);
  FileError Leave(FileError error = {});
  void SetName(const CStringW& path, std::shared_ptr<File> file);

  int calls_ = 0;
  Names names_;
  Names flushedNames_;
  std::vector<NameChange> pending_;
  std::set<CStringW> folders_;
  std::vector<Handle> handles_;
};

}  // namespace lumr
