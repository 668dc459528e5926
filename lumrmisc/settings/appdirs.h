// Where the application keeps its files.
//
// The host may set the folders once, at start; until then they are the platform's. All folders end
// in a separator.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

struct AppDirs {
  CStringW common;       // what all users of the installation share: the users file
  CStringW module;       // where the program stands
  CStringW roamingData;  // the user's application data that may follow to other machines
  CStringW localData;    // the user's application data on this machine
};

// Empty members stand for the platform's folders: for common, "Lumora" in the user's settings
// folder; for the data folders, the user's (files.h, UserDataFolder).
void SetAppDirs(const AppDirs& dirs);

CStringW GetCommonAppDir();
CStringW GetModuleAppDir();
CStringW GetRoamingDataDir();
CStringW GetLocalDataDir();

// A path that is not absolute, taken from the common folder; an absolute one as it is.
CStringW GetFullAppPath(std::u16string_view path);

// The folder, with a separator at its end where there was none; empty stays empty.
CStringW WithSeparator(std::u16string_view folder);

}  // namespace lumr
