// Durable writing, on a real disk, under every fault at every call.
#include <gtest/gtest.h>

#include <filesystem>

#include "lumrmisc/platform/files_internal.h"
#include "platform/scratch_folder.h"

namespace lumr {
namespace {

using internal::FileCalls;
using internal::FileCallsForTest;
using internal::FileHandle;
using internal::OpenMode;

constexpr std::u16string_view kName = u"設定.ini";

enum class Fault { kNone, kFail, kShortWrite, kNoProgress, kStop };

// The system's calls, with a fault at one of them. Handles are closed for good whatever happens,
// as the system does.
class FaultyCalls : public FileCalls {
 public:
  FaultyCalls(Fault fault, FileErrorKind kind, int at) : fault_(fault), kind_(kind), at_(at) {}

  // What a stopped program leaves behind is not left to the machine.
  ~FaultyCalls() override {
    for (const CStringW& path : created_) FileCalls::Remove(path);
  }

  bool WasHit() const { return calls_ >= at_; }
  int Renames() const { return renames_; }
  bool HitRemoval() const { return hitRemoval_; }
  // Whether the fault met a call that can be done without: tidying up, closing what was only
  // read, looking for a temporary folder.
  bool WasHarmless() const { return isHarmless_; }
  CStringW deniedFolder;  // takes no new files

  FileError Open(const CStringW& path, OpenMode mode, FileHandle& file) override {
    const bool creates = mode == OpenMode::kCreate || mode == OpenMode::kCreatePrivate;
    if (creates && !deniedFolder.empty() && path.starts_with(deniedFolder)) {
      return ErrorOf(FileErrorKind::kDenied);
    }
    if (creates) created_.push_back(path);
    file = internal::kNoFile;
    const FileError error = Next([&] { return FileCalls::Open(path, mode, file); });
    if (mode == OpenMode::kRead) reading_ = file;
    return error;
  }
  FileError Write(FileHandle file, const char* bytes, std::size_t size,
                  std::size_t& done) override {
    const bool isHit = calls_ + 1 == at_;
    if (isHit && fault_ == Fault::kNoProgress) size = 0;
    if (isHit && fault_ == Fault::kShortWrite) size = 1;
    return Next([&] { return FileCalls::Write(file, bytes, size, done); });
  }
  FileError Read(FileHandle file, char* buffer, std::size_t size, std::size_t& got) override {
    return Next([&] { return FileCalls::Read(file, buffer, size, got); });
  }
  FileError Truncate(FileHandle file, std::uint64_t size) override {
    return Next([&] { return FileCalls::Truncate(file, size); });
  }
  // What is flushed or not makes no difference that could be seen here.
  FileError Sync(FileHandle) override {
    return Next([] { return FileError(); });
  }
  FileError Close(FileHandle file) override {
    const FileError closed = FileCalls::Close(file);
    isHarmless_ = isHarmless_ || (calls_ + 1 == at_ && file == reading_);
    return Next([&] { return closed; });
  }
  FileError CopyPermissions(const CStringW& from, FileHandle to) override {
    return Next([&] { return FileCalls::CopyPermissions(from, to); });
  }
  FileError Query(const CStringW& path, FileInfo& info) override {
    // Another temporary folder may do as well.
    isHarmless_ = isHarmless_ || (calls_ + 1 == at_ && NameOfPath(path) != kName);
    return Next([&] { return FileCalls::Query(path, info); });
  }
  FileError FollowLinks(const CStringW& path, CStringW& target, bool& isReplaceable) override {
    return Next([&] { return FileCalls::FollowLinks(path, target, isReplaceable); });
  }
  FileError Rename(const CStringW& from, const CStringW& to) override {
    ++renames_;
    return Next([&] { return FileCalls::Rename(from, to); });
  }
  FileError Remove(const CStringW& path) override {
    hitRemoval_ = hitRemoval_ || calls_ + 1 == at_;
    isHarmless_ = isHarmless_ || hitRemoval_;
    return Next([&] { return FileCalls::Remove(path); });
  }
  FileError SyncFolder(const CStringW&) override {
    return Next([] { return FileError(); });
  }

 private:
  template <typename Call>
  FileError Next(Call call) {
    ++calls_;
    if (fault_ == Fault::kFail && calls_ == at_) return ErrorOf(kind_);
    if (fault_ == Fault::kStop && calls_ >= at_) return ErrorOf(FileErrorKind::kDevice);
    return call();
  }

  Fault fault_;
  FileErrorKind kind_;
  int at_;
  int calls_ = 0;
  int renames_ = 0;
  bool hitRemoval_ = false;
  bool isHarmless_ = false;
  FileHandle reading_ = internal::kNoFile;
  std::vector<CStringW> created_;
};

struct FaultRow {
  const char* what;
  Fault fault;
  FileErrorKind kind;
};
constexpr FaultRow kFaults[] = {
    {"disk full", Fault::kFail, FileErrorKind::kNoSpace},
    {"disk broken", Fault::kFail, FileErrorKind::kDevice},
    {"denied", Fault::kFail, FileErrorKind::kDenied},
    {"busy", Fault::kFail, FileErrorKind::kBusy},
    {"vanished", Fault::kFail, FileErrorKind::kMissing},
    {"short write", Fault::kShortWrite, FileErrorKind::kNone},
    {"write without progress", Fault::kNoProgress, FileErrorKind::kNone},
    {"stop", Fault::kStop, FileErrorKind::kDevice},
};

const std::string kOld = "the old content, a little longer than the new one";

FileError Replace(const CStringW& path, bool& isReplaced, CStringW& rescued) {
  DurableFile file;
  FileError error = file.Open(path);
  if (!error) error = file.Write("the new ");
  if (!error) error = file.Write("");
  if (!error) error = file.Write("content");
  if (!error) error = file.Commit();
  isReplaced = file.IsReplaced();
  rescued = file.RescuedContent();
  return error;
}
const std::string kNew = "the new content";

// Runs Replace with the fault at the first call, the second, and so on until none is left to hit.
void ReplaceUnderEveryFault(const FaultRow& row, bool isExisting, bool isInPlace) {
  for (int at = 1;; ++at) {
    SCOPED_TRACE(testing::Message()
                 << row.what << " at call " << at << (isExisting ? ", existing" : ", new")
                 << (isInPlace ? ", in place" : ""));
    const ScratchFolder folder;
    const CStringW path = folder / kName;
    if (isExisting) WritePlainly(path, kOld);
    FaultyCalls calls(row.fault, row.kind, at);
    if (isInPlace) calls.deniedFolder = folder.Path();
    bool isReplaced = false;
    CStringW rescued;
    FileError error;
    {
      const FileCallsForTest faulty(calls);
      error = Replace(path, isReplaced, rescued);
    }
    const std::string before = isExisting ? kOld : "(missing)";
    const std::string after = ContentOf(path);
    const bool isWhole = after == (isReplaced ? kNew : before);
    EXPECT_TRUE(isWhole || !rescued.empty()) << after;
    EXPECT_TRUE(isWhole || isInPlace) << after;
    if (!rescued.empty()) {
      EXPECT_EQ(ContentOf(rescued), kNew);
      EXPECT_FALSE(RemoveFile(rescued));
    }
    if (!error) {
      EXPECT_TRUE(isReplaced);
    }
    const bool isFatal = row.kind == FileErrorKind::kNoSpace || row.kind == FileErrorKind::kDevice;
    if (isFatal && calls.WasHit() && !calls.WasHarmless()) {
      EXPECT_TRUE(error);
    }
    if (row.fault == Fault::kNoProgress && error) {
      EXPECT_EQ(KindOf(error), FileErrorKind::kNoSpace);
    }
    const bool mayLeaveDraft = row.fault == Fault::kStop || calls.HitRemoval();
    if (!mayLeaveDraft) {
      EXPECT_EQ(folder.Count(), isExisting || isReplaced ? 1u : 0u);
    }
    if (!calls.WasHit()) {
      EXPECT_FALSE(error);
      EXPECT_GT(at, 6) << "open, write, flush, close, rename and flush at least";
      return;
    }
  }
}

TEST(DurableFile, LeavesTheOldContentOrTheNewUnderEveryFault) {
  for (const FaultRow& row : kFaults) {
    for (const bool isExisting : {true, false}) ReplaceUnderEveryFault(row, isExisting, false);
    ReplaceUnderEveryFault(row, true, true);
  }
}

// Nothing but the order of the calls can be seen of durability while the machine runs.
TEST(DurableFile, FlushesContentBeforeItIsRenamedAndTheFolderAfterwards) {
  class Recorder : public FileCalls {
   public:
    FileError Write(FileHandle file, const char* bytes, std::size_t size,
                    std::size_t& done) override {
      calls += "write ";
      return FileCalls::Write(file, bytes, size, done);
    }
    FileError Sync(FileHandle) override {
      calls += "flush ";
      return {};
    }
    FileError Rename(const CStringW& from, const CStringW& to) override {
      calls += "rename ";
      return FileCalls::Rename(from, to);
    }
    FileError MakeFolder(const CStringW& path) override {
      calls += "make " + PathToUtf8(NameOfPath(path)) + " ";
      return FileCalls::MakeFolder(path);
    }
    FileError SyncFolder(const CStringW& path) override {
      calls += IsFolder(path) ? "flush-folder " : "flush-nothing ";
      return {};
    }
    std::string calls;
  } recorder;
  const ScratchFolder folder;
  const FileCallsForTest recording(recorder);
  EXPECT_FALSE(MakeFolders(folder / JoinPath(u"a", u"b")));
  for (int i = 0; i < 2; ++i) EXPECT_FALSE(WriteFileDurably(folder / kName, "content"));
  EXPECT_EQ(recorder.calls,
            "make a flush-folder make b flush-folder "
            "write flush rename flush-folder write flush rename flush-folder ");
}

TEST(DurableFile, WritesInPlaceWhereTheFolderTakesNoSecondFile) {
  const ScratchFolder folder;
  const CStringW path = folder / u"target";
  for (const std::string_view content : {"longer than before", "", "short"}) {
    ASSERT_FALSE(WriteFileDurably(path, kOld));
    FaultyCalls calls(Fault::kNone, FileErrorKind::kNone, 0);
    calls.deniedFolder = folder.Path();
    const FileCallsForTest denying(calls);
    EXPECT_FALSE(WriteFileDurably(path, content));
    EXPECT_EQ(ContentOf(path), content);
    EXPECT_EQ(calls.Renames(), 0);
    EXPECT_EQ(folder.Count(), 1u);
    // A new file has nothing that could be written in place.
    EXPECT_EQ(KindOf(WriteFileDurably(folder / u"other", content)), FileErrorKind::kDenied);
  }
}

// The same by the rights of the folder. They do not bind everybody: then it is the usual way.
TEST(DurableFile, WritesIntoAReadOnlyFolder) {
  namespace fs = std::filesystem;
  const ScratchFolder folder;
  const CStringW path = folder / u"target";
  WritePlainly(path, kOld);
  fs::permissions(folder.Path(), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_FALSE(WriteFileDurably(path, kNew));
  EXPECT_EQ(ContentOf(path), kNew);
  EXPECT_EQ(folder.Count(), 1u);
  fs::permissions(folder.Path(), fs::perms::owner_all);
}

TEST(DurableFile, KeepsPermissions) {
  namespace fs = std::filesystem;
  const ScratchFolder folder;
  const fs::path target = folder / u"target";
  for (const unsigned mode : {0600u, 0640u, 0664u, 0755u}) {
    ASSERT_FALSE(WriteFileDurably(folder / u"target", "old"));
    fs::permissions(target, static_cast<fs::perms>(mode));
    const fs::perms before = fs::status(target).permissions();
    EXPECT_FALSE(WriteFileDurably(folder / u"target", "new"));
    EXPECT_EQ(fs::status(target).permissions(), before);
  }
}

TEST(DurableFile, FollowsSymbolicLinks) {
  namespace fs = std::filesystem;
  const ScratchFolder folder;
  WritePlainly(folder / u"target", "old");
  std::error_code error;
  fs::create_symlink("target", fs::path(folder / u"link"), error);
  if (error) GTEST_SKIP() << "no symbolic links here";
  fs::create_symlink(fs::path(folder / u"link"), fs::path(folder / u"chain"));
  fs::create_symlink("absent", fs::path(folder / u"dangling"));
  fs::create_symlink("loop", fs::path(folder / u"loop"));
  EXPECT_FALSE(WriteFileDurably(folder / u"chain", "through the chain"));
  EXPECT_FALSE(WriteFileDurably(folder / u"dangling", "through the dangling link"));
  EXPECT_TRUE(WriteFileDurably(folder / u"loop", "nowhere"));
  EXPECT_EQ(ContentOf(folder / u"target"), "through the chain");
  EXPECT_EQ(ContentOf(folder / u"absent"), "through the dangling link");
  for (const char16_t* name : {u"link", u"chain", u"dangling", u"loop"}) {
    EXPECT_TRUE(fs::is_symlink(fs::path(folder / name))) << fs::path(name);
  }
  EXPECT_EQ(folder.Count(), 6u);
}

TEST(DurableFile, DropsWhatIsNotCommitted) {
  const ScratchFolder folder;
  const CStringW path = folder / u"file";
  ASSERT_FALSE(WriteFileDurably(path, "old"));
  {
    DurableFile file;
    ASSERT_FALSE(file.Open(path));
    ASSERT_FALSE(file.Write("abandoned"));
    EXPECT_EQ(folder.Count(), 2u);
    ASSERT_FALSE(file.Open(path));
    ASSERT_FALSE(file.Write("abandoned again"));
    EXPECT_EQ(folder.Count(), 2u);
  }
  EXPECT_EQ(folder.Count(), 1u);
  EXPECT_EQ(ContentOf(path), "old");
  DurableFile closed;
  EXPECT_TRUE(closed.Write("x"));
  EXPECT_TRUE(closed.Commit());
}

}  // namespace
}  // namespace lumr
