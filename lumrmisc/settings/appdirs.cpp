#include "lumrmisc/settings/appdirs.h"

#include <mutex>

#include "lumrmisc/platform/files.h"

namespace lumr {
namespace {

std::mutex dirsMutex;

AppDirs& Dirs() {
  static AppDirs dirs;
  return dirs;
}

CStringW HostDir(CStringW AppDirs::*member) {
  const std::lock_guard lock(dirsMutex);
  return WithSeparator(Dirs().*member);
}

bool IsSeparator(char16_t unit) {
  return unit == PathSeparator() || unit == u'/';
}

bool IsAbsolute(std::u16string_view path) {
  if (path.empty()) return false;
  return IsSeparator(path[0]) || (PathSeparator() == u'\\' && path.size() > 2 && path[1] == u':');
}

}  // namespace

CStringW WithSeparator(std::u16string_view folder) {
  CStringW dir(folder);
  if (!dir.empty() && !IsSeparator(dir.back())) dir += PathSeparator();
  return dir;
}

void SetAppDirs(const AppDirs& dirs) {
  const std::lock_guard lock(dirsMutex);
  Dirs() = dirs;
}

CStringW GetCommonAppDir() {
  const CStringW dir = HostDir(&AppDirs::common);
  if (!dir.empty()) return dir;
  return WithSeparator(JoinPath(UserDataFolder(UserFolder::kSettings), u"Lumora"));
}

CStringW GetModuleAppDir() {
  const CStringW dir = HostDir(&AppDirs::module);
  return dir.empty() ? ProgramFolder() : dir;
}

CStringW GetRoamingDataDir() {
  const CStringW dir = HostDir(&AppDirs::roamingData);
  return dir.empty() ? UserDataFolder(UserFolder::kSettings) : dir;
}

CStringW GetLocalDataDir() {
  const CStringW dir = HostDir(&AppDirs::localData);
  return dir.empty() ? UserDataFolder(UserFolder::kData) : dir;
}

CStringW GetFullAppPath(std::u16string_view path) {
  return IsAbsolute(path) ? CStringW(path) : JoinPath(GetCommonAppDir(), path);
}

}  // namespace lumr
