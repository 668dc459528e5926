// The commands of lumr settings that have a file of their own, and what they share with the others.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "settingsfile.h"

namespace lumr::tool {

struct SettingsOptions {
  std::string file;
  std::vector<std::string> files;
  std::string key, name, value, output;
  bool create = false;
  bool reserve = false;
  KeySource keys;
};

void RunSettingsCheck(Session& session, SettingsOptions& options);
void RunSettingsDiff(Session& session, SettingsOptions& options);
void RunSettingsEncrypt(Session& session, SettingsOptions& options);
void RunSettingsDecrypt(Session& session, SettingsOptions& options);

// A key and an entry as lines of a setting data file, fit for a terminal.
std::string KeyLine(std::u16string_view name);
std::string EntryLine(const CSettingDataPair& pair);

}  // namespace lumr::tool
