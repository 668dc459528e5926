// What a crash at any moment of a save leaves on the disk: in every image a load gives the old
// settings or the new ones.
#include <gtest/gtest.h>

#include <random>

#include "settings/sdsave.h"

namespace lumr {
namespace {

int SaveVersion(const SaveSetup& setup, SimDisk& disk, int version) {
  CSettingData data;
  data.SetCryptKey(setup.enciphered ? 1 : 0, "pass phrase");
  if (Load(disk, data, setup.useReserve) == 0) return 0;
  Fill(setup, data, version);
  return Save(disk, data, setup.useReserve);
}

// The images, each with how often a crash leaves it.
std::map<DiskImage, std::size_t> CrashImages(const SaveSetup& setup) {
  std::map<DiskImage, std::size_t> images;
  SimDisk disk(Before(setup));
  disk.afterStep = [&] {
    using Unflushed = SimDisk::Unflushed;
    for (const auto way :
         {Unflushed::kKept, Unflushed::kDropped, Unflushed::kZeroFilled, Unflushed::kTorn}) {
      for (std::size_t renamed = 0; renamed <= disk.PendingNames(); ++renamed) {
        ++images[disk.AfterCrash(way, renamed)];
      }
    }
  };
  EXPECT_EQ(SaveVersion(setup, disk, 2), 1);
  return images;
}

TEST(Crash, LeavesTheOldOrTheNewSettingsAlways) {
  const SaveSetup setups[] = {
      {0, false, false}, {0, true, false}, {1, false, true}, {1, true, true}, {1, false, false}};
  std::size_t total = 0;
  for (const SaveSetup& setup : setups) {
    SCOPED_TRACE(&setup - setups);
    int found[4] = {};
    for (const auto& [image, count] : CrashImages(setup)) {
      total += count;
      SimDisk disk(image);
      const int version = LoadVersion(setup, disk, setup.useReserve);
      ASSERT_TRUE(version == 1 || version == 2) << testing::PrintToString(image);
      ++found[version];
      if (setup.useReserve == 0) continue;
      // The load has mended the file, and the next save mends the reserve.
      ASSERT_EQ(LoadVersion(setup, disk, 0), version) << testing::PrintToString(image);
      ASSERT_EQ(SaveVersion(setup, disk, 3), 1) << testing::PrintToString(image);
      DiskImage onlyReserve = disk.Content();
      onlyReserve.erase(kPath);
      SimDisk reserve(onlyReserve);
      ASSERT_EQ(LoadVersion(setup, reserve, 1), 3) << testing::PrintToString(image);
    }
    EXPECT_GT(found[1], 0);
    EXPECT_GT(found[2], 0);
  }
  EXPECT_GE(total, 20000u);
  RecordProperty("images", static_cast<int>(total));
}

// Cut anywhere, a file gives all of the settings, none, or a failure.
TEST(Damage, IsNoticedWhereverAFileIsCut) {
  for (const bool enciphered : {false, true}) {
    const SaveSetup setup = {1, enciphered, true};
    const std::string whole = StoredForm(setup, 1);
    for (std::size_t length = 0; length < whole.size(); ++length) {
      SimDisk alone({{kPath, whole.substr(0, length)}});
      CSettingData data;
      data.SetCryptKey(enciphered ? 1 : 0, "pass phrase");
      if (Load(alone, data, 0) == 0 || data.GetKeyCount() == 0) continue;
      CSettingData expected;
      Fill(setup, expected, 1);
      ASSERT_EQ(data.EqualSD(expected, 0), 1) << length;
    }
    for (std::size_t length = 0; length < whole.size(); length += 5) {
      SimDisk recovered({{kPath, whole.substr(0, length)}, {kReservePath, whole}});
      ASSERT_EQ(LoadVersion(setup, recovered, 1), 1) << length;
      ASSERT_EQ(LoadVersion(setup, recovered, 0), 1) << length;
      SimDisk intact({{kPath, whole}, {kReservePath, whole.substr(0, length)}});
      ASSERT_EQ(LoadVersion(setup, intact, 1), 1) << length;
      ASSERT_EQ(SaveVersion(setup, intact, 2), 1) << length;
      ASSERT_EQ(intact.Content()[kReservePath], StoredForm(setup, 2)) << length;
    }
  }
}

TEST(Damage, OfAnyKindNeverHarmsTheLoad) {
  std::mt19937 engine(10000);
  const auto random = [&engine](std::size_t below) { return engine() % below; };
  for (int run = 0; run < 10000; ++run) {
    const SaveSetup setup = {1, run % 2 != 0, true};
    DiskImage image = Before(setup);
    std::string& content = image[run % 3 == 0 ? kReservePath : kPath];
    for (std::size_t i = random(8) + 1; i > 0 && !content.empty(); --i) {
      const std::size_t at = random(content.size());
      switch (random(4)) {
        case 0:
          content[at] = static_cast<char>(random(256));
          break;
        case 1:
          content.erase(at, random(40));
          break;
        case 2:
          content.insert(at, random(40), static_cast<char>(random(256)));
          break;
        default:
          content.replace(at, 16, 16, '\0');
      }
    }
    SimDisk disk(image);
    // The undamaged one of the two gives the settings unless the damage is one that the text
    // cannot show, and what was loaded saves and loads again.
    CSettingData data;
    data.SetCryptKey(setup.enciphered ? 1 : 0, "pass phrase");
    ASSERT_EQ(Load(disk, data, 1), 1) << run;
    data.SetValue("Further", "Run", run);
    ASSERT_EQ(Save(disk, data, 1), 1);
    CSettingData back;
    back.SetCryptKey(data);
    ASSERT_EQ(Load(disk, back, 0), 1) << run;
    ASSERT_EQ(back.EqualSD(data, 0), 1) << run;
  }
}

}  // namespace
}  // namespace lumr
