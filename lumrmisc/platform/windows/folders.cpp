#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/platform/windows/windows_internal.h"

namespace lumr {

using windows::FilledBy;

namespace {

CStringW WithSeparator(const CStringW& folder) {
  return folder.empty() ? CStringW() : JoinPath(folder, u"");
}

CStringW KnownFolder(int id) {
  wchar_t path[MAX_PATH] = {};
  if (SHGetFolderPathW(nullptr, id, nullptr, SHGFP_TYPE_CURRENT, path) != S_OK) return {};
  return WithSeparator(windows::Units(path));
}

}  // namespace

char16_t PathSeparator() {
  return u'\\';
}

bool internal::NamesAreBytes() {
  return false;
}

CStringW TemporaryFolder() {
  const CStringW folder =
      FilledBy([](wchar_t* buffer, DWORD size) { return GetTempPathW(size, buffer); });
  return IsFolder(folder) ? WithSeparator(folder) : CStringW();
}

CStringW HomeFolder() {
  return KnownFolder(CSIDL_PROFILE);
}

CStringW CurrentFolder() {
  return WithSeparator(
      FilledBy([](wchar_t* buffer, DWORD size) { return GetCurrentDirectoryW(size, buffer); }));
}

CStringW ProgramFolder() {
  // A buffer that is too small is filled, and answered by its own size.
  return CStringW(FolderOfPath(FilledBy(
      [](wchar_t* buffer, DWORD size) { return GetModuleFileNameW(nullptr, buffer, size); })));
}

CStringW UserDataFolder(UserFolder kind) {
  return KnownFolder(kind == UserFolder::kSettings ? CSIDL_APPDATA : CSIDL_LOCAL_APPDATA);
}

}  // namespace lumr
