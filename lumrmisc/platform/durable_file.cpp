#include <array>
#include <vector>

#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/platform/random.h"

namespace lumr {

using internal::Files;
using internal::OpenMode;

namespace {

constexpr std::u16string_view kDraftPrefix = u".lumr-";
constexpr std::u16string_view kDraftSuffix = u".tmp";

CStringW DraftName() {
  std::array<unsigned char, 10> bytes;
  FillRandom(bytes.data(), bytes.size());
  CStringW name(kDraftPrefix);
  for (const unsigned byte : bytes) {
    name += u"0123456789abcdef"[byte >> 4];
    name += u"0123456789abcdef"[byte & 15];
  }
  name += kDraftSuffix;
  return name;
}

// What a folder answers that takes no second file, or not in the target's place. Then the target
// itself may still be written.
bool IsRefusal(FileError error) {
  const FileErrorKind kind = KindOf(error);
  return kind == FileErrorKind::kDenied || kind == FileErrorKind::kBusy ||
         kind == FileErrorKind::kBadName;
}

// Whether an existing file may be written at all. Its rights say so, not those of its folder.
FileError TryOpening(const CStringW& target) {
  internal::FileHandle handle = internal::kNoFile;
  if (const FileError error = Files().Open(target, OpenMode::kProbe, handle)) return error;
  return Files().Close(handle);
}

// Writes the draft over what the target holds.
FileError CopyOver(ReadStream& draft, internal::FileHandle target, bool isRegular,
                   std::vector<char>& buffer) {
  std::uint64_t size = 0;
  for (;;) {
    std::size_t got = 0;
    if (const FileError error = draft.Read(buffer.data(), buffer.size(), got)) return error;
    if (got == 0) break;
    if (const FileError error = internal::WriteAll(target, {buffer.data(), got})) return error;
    size += got;
  }
  if (isRegular) {
    if (const FileError error = Files().Truncate(target, size)) return error;
  }
  return Files().Sync(target);
}

}  // namespace

DurableFile::~DurableFile() {
  Discard();
}

FileError DurableFile::Open(const CStringW& path) {
  Discard();
  replaced_ = false;
  rescued_.clear();
  failure_ = FileError();
  bool isReplaceable = true;
  if (const FileError error = Files().FollowLinks(path, target_, isReplaceable)) return error;
  FileInfo info;
  const FileError query = QueryFile(target_, info);
  if (query && KindOf(query) != FileErrorKind::kMissing) return query;
  if (info.isFolder) return ErrorOf(FileErrorKind::kIsFolder);
  FileError refusal = ErrorOf(FileErrorKind::kDenied);
  if (isReplaceable && (query || info.isRegular)) {
    if (!query) {
      if (const FileError error = TryOpening(target_)) return error;
    }
    refusal = CreateBeside(!query);
    if (!refusal || query || !IsRefusal(refusal)) return refusal;
  }
  besideTarget_ = false;
  const CStringW elsewhere = TemporaryFolder();
  return elsewhere.empty() ? refusal : CreateIn(elsewhere, true);
}

FileError DurableFile::CreateBeside(bool targetExists) {
  besideTarget_ = true;
  FileError error = CreateIn(FolderOfPath(target_), targetExists);
  if (!error && targetExists) error = Files().CopyPermissions(target_, handle_);
  if (error) Discard();
  return error;
}

FileError DurableFile::CreateIn(std::u16string_view folder, bool isPrivate) {
  const OpenMode mode = isPrivate ? OpenMode::kCreatePrivate : OpenMode::kCreate;
  for (int triesLeft = 8;; --triesLeft) {
    CStringW draft = JoinPath(folder, DraftName());
    const FileError error = Files().Open(draft, mode, handle_);
    if (!error) draft_ = std::move(draft);
    if (!error || triesLeft == 0 || KindOf(error) != FileErrorKind::kExists) return error;
  }
}

FileError DurableFile::Write(std::string_view bytes) {
  if (!IsOpen()) return failure_ ? failure_ : ErrorOf(FileErrorKind::kOther);
  if (!failure_) failure_ = internal::WriteAll(handle_, bytes);
  return failure_;
}

FileError DurableFile::Commit() {
  if (!IsOpen()) return failure_ ? failure_ : ErrorOf(FileErrorKind::kOther);
  if (!failure_) failure_ = Files().Sync(handle_);
  const FileError closed = CloseDraft();
  if (!failure_) failure_ = closed;
  if (!failure_) failure_ = PutInPlace();
  Discard();
  return failure_;
}

FileError DurableFile::CloseDraft() {
  const FileError error = Files().Close(handle_);
  handle_ = kClosed;
  return error;
}

FileError DurableFile::PutInPlace() {
  if (!besideTarget_) return CopyIntoTarget();
  const FileError error = Files().Rename(draft_, target_);
  if (error) return IsRefusal(error) && PathExists(target_) ? CopyIntoTarget() : error;
  draft_.clear();
  replaced_ = true;
  return Files().SyncFolder(CStringW(FolderOfPath(target_)));
}

FileError DurableFile::CopyIntoTarget() {
  ReadStream draft;
  if (const FileError error = draft.Open(draft_)) return error;
  FileInfo info;
  if (const FileError error = QueryFile(target_, info)) return error;
  std::vector<char> buffer(internal::kChunk);
  internal::FileHandle target = internal::kNoFile;
  if (const FileError error = Files().Open(target_, OpenMode::kOverwrite, target)) return error;
  const FileError copied = CopyOver(draft, target, info.isRegular, buffer);
  const FileError closed = Files().Close(target);
  replaced_ = !copied && !closed;
  if (!replaced_) rescued_.swap(draft_);
  return copied ? copied : closed;
}

void DurableFile::Discard() {
  if (IsOpen()) CloseDraft();
  if (!draft_.empty()) Files().Remove(draft_);
  draft_.clear();
}

}  // namespace lumr
