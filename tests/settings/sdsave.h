// Settings of versions that can be told apart, saved to a disk in memory and loaded from it.
#pragma once

#include <string>

#include "lumrmisc/settings/settingdata.h"
#include "settings/simdisk.h"

namespace lumr {

inline const CStringW kDir = CStringW(u"/home") + PathSeparator();
inline const CStringW kName = u"Test.ini";
inline const CStringW kPath = kDir + kName;
inline const CStringW kReservePath = kDir + u"Reserve" + PathSeparator() + kName;

struct SaveSetup {
  int useReserve;
  bool enciphered;
  bool reserveThere;  // before the save
};

// They fill more than one block of a disk.
inline void Fill(const SaveSetup& setup, CSettingData& data, int version) {
  data.SetCryptKey(setup.enciphered ? 1 : 0, "pass phrase");
  for (int i = 0; i < 16; ++i) {
    data.SetValue("Key" + std::to_string(i % 3), "Entry" + std::to_string(i), version * 1000 + i);
  }
}

inline std::string StoredForm(const SaveSetup& setup, int version) {
  CSettingData data;
  Fill(setup, data, version);
  CBuffer bytes;
  data.SaveSdText(bytes);
  return std::string(bytes.Bytes());
}

// The disk with version 1 on it.
inline DiskImage Before(const SaveSetup& setup) {
  DiskImage image = {{kPath, StoredForm(setup, 1)}};
  if (setup.reserveThere) image[kReservePath] = image[kPath];
  return image;
}

// Both with the disk in the system's place for their own time only.
inline int Load(SimDisk& disk, CSettingData& data, int useReserve) {
  const internal::FileCallsForTest calls(disk);
  return data.LoadSdFile(kDir.c_str(), kName.c_str(), useReserve);
}

inline int Save(SimDisk& disk, CSettingData& data, int useReserve, CStringA* message = nullptr) {
  const internal::FileCallsForTest calls(disk);
  return data.SaveSdFile(kDir.c_str(), kName.c_str(), useReserve, kIfErrReturn, 0, nullptr, message,
                         nullptr);
}

// The version that a load from the disk gives, which may mend it; 0 for anything else.
inline int LoadVersion(const SaveSetup& setup, SimDisk& disk, int useReserve) {
  CSettingData data;
  data.SetCryptKey(setup.enciphered ? 1 : 0, "pass phrase");
  if (Load(disk, data, useReserve) == 0) return 0;
  for (const int version : {1, 2, 3}) {
    CSettingData expected;
    Fill(setup, expected, version);
    if (data.EqualSD(expected, 1) != 0) return version;
  }
  return 0;
}

}  // namespace lumr
