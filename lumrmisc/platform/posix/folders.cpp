#include <limits.h>
#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <vector>

#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/platform/posix/posix_internal.h"

namespace lumr {
namespace {

CStringW WithSeparator(const CStringW& folder) {
  return folder.empty() ? CStringW() : JoinPath(folder, u"");
}

// A folder that a variable names. The XDG base directory rules have relative ones ignored,
// which is good sense for all of them.
CStringW FolderFrom(const char* variable) {
  const char* const value = getenv(variable);
  if (value == nullptr || *value != '/') return {};
  return PathFromUtf8(value);
}

CStringW AccountHome() {
  std::vector<char> buffer(16384);
  struct passwd entry;
  struct passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0) return {};
  return found == nullptr || found->pw_dir == nullptr ? CStringW() : PathFromUtf8(found->pw_dir);
}

}  // namespace

char16_t PathSeparator() {
  return u'/';
}

bool internal::NamesAreBytes() {
  return true;
}

CStringW TemporaryFolder() {
  for (const CStringW& folder : {FolderFrom("TMPDIR"), CStringW(u"/tmp")}) {
    if (!folder.empty() && IsFolder(folder)) return WithSeparator(folder);
  }
  return {};
}

CStringW HomeFolder() {
  const CStringW home = FolderFrom("HOME");
  return WithSeparator(home.empty() ? AccountHome() : home);
}

CStringW CurrentFolder() {
  std::vector<char> buffer(PATH_MAX);
  while (getcwd(buffer.data(), buffer.size()) == nullptr) {
    if (errno != ERANGE) return {};
    buffer.resize(buffer.size() * 2);
  }
  return WithSeparator(PathFromUtf8(buffer.data()));
}

CStringW ProgramFolder() {
  std::vector<char> buffer(PATH_MAX);
  const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
  if (length <= 0) return {};
  const std::string_view program(buffer.data(), static_cast<std::size_t>(length));
  return CStringW(FolderOfPath(PathFromUtf8(program)));
}

CStringW UserDataFolder(UserFolder kind) {
  const bool isSettings = kind == UserFolder::kSettings;
  const CStringW named = FolderFrom(isSettings ? "XDG_CONFIG_HOME" : "XDG_DATA_HOME");
  if (!named.empty()) return WithSeparator(named);
  const CStringW home = HomeFolder();
  if (home.empty()) return {};
  return WithSeparator(JoinPath(home, isSettings ? u".config" : u".local/share"));
}

}  // namespace lumr
