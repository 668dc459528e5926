// A process that is killed while it saves leaves settings that were saved.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <random>

#include "lumrmisc/settings/settingdata.h"
#include "platform/scratch_folder.h"

namespace lumr {
namespace {

constexpr int kKills = 500;
constexpr unsigned kSeed = 9;
constexpr const char16_t* kName = u"Test.ini";

// What the process that dies tells the one that looks.
struct Progress {
  std::atomic<int> begun;
  std::atomic<int> saved;
};

class SharedProgress {
 public:
  SharedProgress() {
    void* const memory =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory != MAP_FAILED) progress_ = new (memory) Progress{};
  }
  ~SharedProgress() {
    if (progress_ != nullptr) munmap(progress_, sizeof *progress_);
  }
  Progress* operator->() { return progress_; }

 private:
  Progress* progress_ = nullptr;
};

void Fill(CSettingData& data, int version) {
  data.SetCryptKey(version % 2, "pass phrase");
  for (int i = 0; i < 200; ++i) data.SetValue("Key", "Entry" + std::to_string(i), version + i);
}

[[noreturn]] void SaveUntilKilled(const CStringW& dir, int useReserve, SharedProgress& progress) {
  for (;;) {
    const int version = progress->saved + 2;  // enciphered, or not, as the first
    progress->begun = version;
    CSettingData data;
    Fill(data, version);
    if (data.SaveSdFile(dir.c_str(), kName, useReserve, kIfErrReturn, 0, nullptr, nullptr,
                        nullptr) == 0) {
      _exit(1);
    }
    progress->saved = version;
  }
}

int LoadedVersion(const CStringW& dir, int enciphered, int useReserve) {
  CSettingData data;
  data.SetCryptKey(enciphered, "pass phrase");
  if (data.LoadSdFile(dir.c_str(), kName, useReserve) == 0) return -1;
  const int version = data.GetIntValue("Key", "Entry0", 0, INT_MAX, -1);
  CSettingData expected;
  Fill(expected, version);
  return data.EqualSD(expected, 0) != 0 ? version : -1;
}

TEST(Kill, LeavesSettingsThatWereSaved) {
  std::mt19937 random(kSeed);
  int interrupted = 0;
  for (const int setup : {0, 1, 2, 3}) {
    const int enciphered = setup % 2;
    const int useReserve = setup / 2;
    const ScratchFolder folder;
    const CStringW dir = folder.Path();
    SharedProgress progress;
    progress->saved = enciphered;
    for (int run = 0; run < kKills / 4; ++run) {
      const pid_t child = fork();
      ASSERT_NE(child, -1);
      if (child == 0) SaveUntilKilled(dir, useReserve, progress);
      while (run == 0 && progress->saved < 2) usleep(100);
      usleep(static_cast<useconds_t>(random() % 3000));
      ASSERT_EQ(kill(child, SIGKILL), 0);
      int status = 0;
      ASSERT_EQ(waitpid(child, &status, 0), child);
      ASSERT_TRUE(WIFSIGNALED(status)) << "it could not save";
      const int version = LoadedVersion(dir, enciphered, useReserve);
      ASSERT_GE(version, progress->saved.load()) << "setup " << setup << ", kill " << run;
      ASSERT_LE(version, progress->begun.load()) << "setup " << setup << ", kill " << run;
      if (progress->begun > progress->saved) ++interrupted;
      progress->saved = version;
    }
  }
  EXPECT_GT(interrupted, kKills / 4);
}

}  // namespace
}  // namespace lumr
