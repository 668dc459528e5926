// What a save and a load do when a call of the system, or an allocation, fails.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <utility>

#include "lumrmisc/platform/memory_internal.h"
#include "lumrmisc/platform/messages.h"
#include "settings/sdsave.h"

namespace {

// The n-th allocation of the thread from now on fails; negative: none.
thread_local int allocationsLeft = -1;
thread_local long liveAllocations = 0;

bool NextAllocationFails() {
  return allocationsLeft >= 0 && allocationsLeft-- == 0;
}

void* Allocate(std::size_t size) {
  void* const block = NextAllocationFails() ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++liveAllocations;
  return block;
}

void Release(void* block) {
  if (block != nullptr) --liveAllocations;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
  return Allocate(size);
}
void* operator new[](std::size_t size) {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  Release(block);
}
void operator delete[](void* block) noexcept {
  Release(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  Release(block);
}

namespace lumr {
namespace {

constexpr SaveSetup kSaveSetups[] = {
    {0, false, false}, {0, true, false}, {1, false, true}, {1, true, true}};

int VersionOn(const SaveSetup& setup, const DiskImage& image) {
  SimDisk disk(image);
  return LoadVersion(setup, disk, setup.useReserve);
}

void CheckSave(const SaveSetup& setup, SimDisk& disk, const bool& mayFail) {
  CSettingData data;
  Fill(setup, data, 2);
  CStringA message;
  const int saved = Save(disk, data, setup.useReserve, &message);
  const int version = VersionOn(setup, disk.Content());
  EXPECT_EQ(version, saved != 0 ? 2 : 1);
  if (saved != 0) return;
  EXPECT_TRUE(mayFail);
  EXPECT_EQ(message.find(MessageText(3171) + "\n"), 0u);
  EXPECT_NE(message.find("\nFile: "), CStringA::npos);
  EXPECT_EQ(data.IsModified(), 1);
  EXPECT_EQ(disk.Content()[kPath], Before(setup)[kPath]);
}

TEST(Faults, OfEveryCallLeaveTheSettingsWhole) {
  const FileErrorKind kinds[] = {FileErrorKind::kNoSpace, FileErrorKind::kDevice,
                                 FileErrorKind::kDenied};
  for (const SaveSetup& setup : kSaveSetups) {
    for (const FileErrorKind kind : kinds) {
      for (const bool lasting : {false, true}) {
        for (int failing = 0;; ++failing) {
          bool reached = false;
          SimDisk disk(Before(setup));
          disk.fault = [&](const char*, int number) {
            if (number < failing || (number > failing && !lasting)) return FileError();
            reached = true;
            return ErrorOf(kind);
          };
          SCOPED_TRACE("reserve " + std::to_string(setup.useReserve) + ", enciphered " +
                       std::to_string(setup.enciphered) + ", call " + std::to_string(failing) +
                       ", lasting " + std::to_string(lasting) + ", kind " +
                       std::to_string(static_cast<int>(kind)));
          CheckSave(setup, disk, reached);
          if (!reached) break;
        }
      }
    }
  }
}

TEST(Faults, ShortWritesAreGoneOnWith) {
  for (const std::size_t limit : {1u, 7u, 100u}) {
    SimDisk disk(Before(kSaveSetups[2]));
    disk.writeLimit = limit;
    CheckSave(kSaveSetups[2], disk, false);
    EXPECT_EQ(VersionOn(kSaveSetups[0], disk.Content()), 2);
  }
}

// Once the reserve copy is in place nothing else can take a file's place, nor be removed unless
// removable.
void FailBehindTheReserve(SimDisk& disk, bool removable) {
  disk.fault = [removable, reserveDone = false](const char* call, int) mutable {
    const bool renames = std::string_view(call) == "rename";
    const bool removes = std::string_view(call) == "remove" && reserveDone && !removable;
    const bool fails = (renames && reserveDone) || removes;
    reserveDone |= renames;
    return fails ? ErrorOf(FileErrorKind::kDevice) : FileError();
  };
}

// The file cannot be written, the reserve copy can: the new settings win on the next load, or it
// is told that they will not. What hides the reserve copy only matters when it can be loaded.
TEST(Faults, ASavedReserveStandsInForTheFile) {
  const std::string old = Before(kSaveSetups[2])[kPath];
  const struct {
    const char* what;
    DiskImage before;
    bool removable;
    int saved;
  } cases[] = {
      {"the file can be removed", {{kPath, old}, {kReservePath, old}}, true, 1},
      {"the file stays", {{kPath, old}, {kReservePath, old}}, false, 0},
      {"a damaged file stays", {{kPath, "damaged"}}, false, 1},
      {"an empty file stays", {{kPath, ""}}, false, 1},
      {"a folder is in the way", {{kPath + PathSeparator() + u"x", ""}}, true, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    SimDisk disk(c.before);
    FailBehindTheReserve(disk, c.removable);
    CSettingData data;
    Fill(kSaveSetups[2], data, 2);
    EXPECT_EQ(Save(disk, data, 1), c.saved);
    EXPECT_EQ(data.IsModified(), 1);
    EXPECT_EQ(VersionOn(kSaveSetups[2], disk.Content()), c.saved != 0 ? 2 : 1);
  }
}

// The new text is in place, but a crash may bring the old one back: saved, to be saved again.
TEST(Faults, OfFlushingAFolderAreTriedAgain) {
  SimDisk disk(Before(kSaveSetups[0]));
  bool broken = true;
  int renames = 0;
  disk.fault = [&](const char* call, int) {
    if (std::string_view(call) == "rename") ++renames;
    return broken && std::string_view(call) == "sync folder" ? ErrorOf(FileErrorKind::kDevice)
                                                             : FileError();
  };
  CSettingData data;
  Fill(kSaveSetups[0], data, 2);
  for (const int useReserve : {0, 1, 0}) {
    SCOPED_TRACE(useReserve);
    if (renames > 1) broken = false;
    EXPECT_EQ(Save(disk, data, useReserve), 1);
    EXPECT_EQ(VersionOn(kSaveSetups[0], disk.Content()), 2);
    EXPECT_EQ(data.IsModified(), broken ? 1 : 0);
  }
  EXPECT_GE(renames, 3);
}

// A reserve copy that a crash may take away again is no reason to give the file up.
TEST(Faults, AReserveThatWasNotFlushedDoesNotStandIn) {
  SimDisk disk(Before(kSaveSetups[0]));
  int renames = 0;
  disk.fault = [&](const char* call, int) {
    const std::string_view name = call;
    const bool fails = name == "sync folder" ? renames == 1 : name == "rename" && ++renames > 1;
    return fails ? ErrorOf(FileErrorKind::kDevice) : FileError();
  };
  CSettingData data;
  Fill(kSaveSetups[0], data, 2);
  EXPECT_EQ(Save(disk, data, 1), 0);
  EXPECT_EQ(disk.Content()[kPath], Before(kSaveSetups[0])[kPath]);
}

// Where the file had to be written over and that failed, the message tells where the text is.
TEST(Faults, ASpoiltFileIsNotTheOnlyCopy) {
  SimDisk disk(Before(kSaveSetups[0]));
  disk.MakeFolder(TemporaryFolder());
  int writes = 0;
  disk.fault = [&](const char* call, int) {
    const std::string_view name = call;
    if (name == "rename") return ErrorOf(FileErrorKind::kDenied);
    return name == "write" && ++writes > 1 ? ErrorOf(FileErrorKind::kDevice) : FileError();
  };
  CSettingData data;
  Fill(kSaveSetups[0], data, 2);
  EXPECT_EQ(Save(disk, data, 0), 0);
  const CStringA& message = data.GetErrorMessage();
  const std::size_t at = message.find("\nData: ");
  ASSERT_NE(at, CStringA::npos) << message;
  DiskImage content = disk.Content();
  content[kPath] = content[WidenSdText(message.substr(at + 7))];
  EXPECT_EQ(VersionOn(kSaveSetups[0], content), 2);
}

// A load that failed must never cost the reserve copy that may yet save the day.
TEST(Faults, AFailedLoadNeverTouchesTheReserve) {
  SimDisk disk({{kPath, "damaged"}, {kReservePath, "damaged too"}});
  CSettingData data;
  EXPECT_EQ(Load(disk, data, 1), 0);
  EXPECT_NE(data.GetErrorMessage().find("/home"), CStringA::npos);
  EXPECT_EQ(data.GetErrorMessage().find("Reserve"), CStringA::npos);
  data.SetValue("K", "A", 1);
  EXPECT_EQ(Save(disk, data, 1), 1);
  EXPECT_EQ(disk.Content()[kReservePath], "damaged too");

  // Nor one that nobody has looked for; but where there was nothing, the first save makes both.
  for (const bool reserveThere : {true, false}) {
    SimDisk other({{reserveThere ? kReservePath : kDir + u"other", "reserve"}});
    CSettingData missing;
    EXPECT_EQ(Load(other, missing, 0), 0);
    missing.SetValue("K", "A", 1);
    EXPECT_EQ(Save(other, missing, 1), 1);
    EXPECT_EQ(other.Content()[kReservePath],
              reserveThere ? std::string("reserve") : other.Content()[kPath]);
  }
}

// Runs an operation with its n-th allocation failing, for every n until none fails.
template <typename Operation>
void FailEveryAllocation(Operation operation) {
  internal::allocationFault = NextAllocationFails;
  for (int n = 0; n < 100000; ++n) {
    allocationsLeft = n;
    bool failed = false;
    try {
      operation();
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    allocationsLeft = -1;
    if (!failed) break;
  }
  internal::allocationFault = nullptr;
}

TEST(Faults, OfEveryAllocationLoseNothing) {
  for (const SaveSetup& setup : kSaveSetups) {
    CSettingData source;
    Fill(setup, source, 1);
    CBuffer bytes;
    source.SaveSdText(bytes);  // and whatever runs once only, before allocations are counted
    const long before = liveAllocations;
    FailEveryAllocation([&] {
      CSettingData data;
      data.SetCryptKey(setup.enciphered ? 1 : 0, "pass phrase");
      data.LoadSdText(bytes.Bytes());
    });
    EXPECT_EQ(liveAllocations, before) << "a leak of loading";
    FailEveryAllocation([&] {
      CBuffer out;
      source.SaveSdText(out);
    });
    EXPECT_EQ(liveAllocations, before) << "a leak of saving";

    CBuffer again;
    source.SaveSdText(again);
    EXPECT_EQ(again.Bytes(), bytes.Bytes());
  }
}

// Whichever allocation of a change failed, the object finds and saves what it holds.
TEST(Faults, OfAllocationsLeaveAnObjectThatWorks) {
  const auto change = [](CSettingData& data) {
    for (int i = 0; i < 40; ++i) data.SetValue("K" + std::to_string(i), "A", i);
    for (int i = 0; i < 40; ++i) data.SetValue("K", "A" + std::to_string(i), i);
    data.RenameKey("K1", "L1");
    data.RenameKeyBegin("K2", "M");
    data.RemoveNameBegin("K", "A1");
  };
  FailEveryAllocation([&] {
    CSettingData data;
    CSettingData copied;
    bool failed = false;
    try {
      change(data);
      copied.CopySD(data);
      copied.CopySdKey(0, data, "K", 0);
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    const int failing = std::exchange(allocationsLeft, -1);
    for (CSettingData* const each : {&data, &copied}) {
      change(*each);
      CBuffer text;
      each->SaveSdText(text);
      CSettingData back;
      EXPECT_EQ(back.LoadSdText(text.Bytes()), 1) << failing;
      EXPECT_EQ(back.IsModified(), 0) << "a name stands twice";
      EXPECT_EQ(back.EqualSD(*each, 0), 1) << failing;
    }
    if (failed) throw std::bad_alloc();
  });
}

// The file is whole whichever allocation of the save failed.
TEST(Faults, OfAllocationsDuringASaveLeaveTheFileWhole) {
  const SaveSetup setup = kSaveSetups[2];
  const DiskImage before = Before(setup);
  FailEveryAllocation([&] {
    const int failing = std::exchange(allocationsLeft, -1);
    SimDisk disk(before);
    CSettingData data;
    Fill(setup, data, 2);
    allocationsLeft = failing;
    bool failed = false;
    try {
      Save(disk, data, 1);
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    allocationsLeft = -1;
    const int version = VersionOn(setup, disk.Content());
    EXPECT_TRUE(failed ? version == 1 || version == 2 : version == 2) << failing;
    if (failed) throw std::bad_alloc();
  });
}

}  // namespace
}  // namespace lumr
