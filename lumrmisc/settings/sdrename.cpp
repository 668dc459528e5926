// The functions that treat a settings file and its reserve copy alike.
#include "lumrmisc/platform/files.h"
#include "lumrmisc/settings/appdirs.h"
#include "lumrmisc/settings/sdpath_internal.h"
#include "lumrmisc/settings/settingdata.h"

namespace lumr {
namespace {

CStringW TextOf(const char16_t* text) {
  return text == nullptr ? CStringW() : CStringW(text);
}

// Applies a change to the file and its reserve copy, given by the folder of each. 1 when at least
// one was there and the change worked on all that were.
template <typename Change>
int ForBoth(const char16_t* dir, const CStringW& name, Change change) {
  const CStringW folder = WithSeparator(TextOf(dir));
  int found = 0;
  int failed = 0;
  for (const CStringW& each : {folder, ReserveFolder(folder)}) {
    if (name.empty() || !PathExists(each + name)) continue;
    ++found;
    if (change(each)) ++failed;
  }
  return found > 0 && failed == 0 ? 1 : 0;
}

bool HasFiles(const char16_t* dir, const CStringW& name) {
  return ForBoth(dir, name, [](const CStringW&) { return FileError(); }) != 0;
}

int Rename(const char16_t* dir, const CStringW& oldName, const CStringW& newName) {
  if (oldName == newName) return HasFiles(dir, oldName) ? 1 : 0;
  if (newName.empty() || HasFiles(dir, newName)) return 0;
  return ForBoth(dir, oldName, [&](const CStringW& folder) {
    return RenameFile(folder + oldName, folder + newName);
  });
}

}  // namespace

int ChangeSdFileName(const char16_t* dir, const char16_t* oldName, const char16_t* newName) {
  return Rename(dir, TextOf(oldName), TextOf(newName));
}

CStringW GetChangedSdFileName(const char16_t* dir, const char16_t* name1, const char16_t* name2) {
  const CStringW current = TextOf(name1);
  const CStringW former = TextOf(name2);
  if (HasFiles(dir, current) || !HasFiles(dir, former)) return current;
  return Rename(dir, former, current) != 0 ? current : former;
}

int ChangeSdFilesExt(const char16_t* dir, const char16_t* name, const char16_t* oldExt,
                     const char16_t* newExt) {
  return Rename(dir, TextOf(name) + TextOf(oldExt), TextOf(name) + TextOf(newExt));
}

int ChangeSdFileTime(const char16_t* dir, const char16_t* name, const CTime& time) {
  const CStringW file = TextOf(name);
  return ForBoth(dir, file,
                 [&](const CStringW& folder) { return SetFileModified(folder + file, time); });
}

}  // namespace lumr
