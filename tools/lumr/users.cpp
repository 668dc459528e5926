// lumr users: the people of an installation of the mail client.
#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "cipherkey.h"
#include "json.h"
#include "lumrmisc/platform/terminal.h"
#include "lumrmisc/platform/window.h"
#include "lumrmisc/settings/appdirs.h"
#include "lumrmisc/settings/userlist.h"
#include "safetext.h"
#include "subcommands.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

struct UsersOptions {
  std::string dir;
  std::string name, userDir;
  int id = -1;
  bool required = false;
  bool optional = false;
  bool noPassword = false;
  KeySource keys;
};

void DeclareDir(CLI::App& command, UsersOptions& options) {
  command.add_option("DIR", options.dir, Text(Say::kUsersDir))->required()->type_name("");
  options.keys.Declare(command);
}

void DeclareAdd(CLI::App& command, UsersOptions& options) {
  DeclareDir(command, options);
  command.add_option("NAME", options.name, Text(Say::kUsersName))->required()->type_name("");
  command.add_option("--user-dir", options.userDir, Text(Say::kUsersUserDir))->type_name("DIR");
  command.add_option("--id", options.id, Text(Say::kUsersNewId))
      ->check(CLI::Range(0, 999999999).description(""))
      ->type_name("ID");
}

void DeclareId(CLI::App& command, UsersOptions& options) {
  DeclareDir(command, options);
  command.add_option("ID", options.id, Text(Say::kUsersId))->required()->type_name("");
}

void DeclarePassword(CLI::App& command, UsersOptions& options) {
  DeclareId(command, options);
  command.add_flag("--remove", options.noPassword, Text(Say::kUsersNoPassword));
  const auto required = command.add_flag("--required", options.required, Text(Say::kUsersRequired));
  command.add_flag("--not-required", options.optional, Text(Say::kUsersNotRequired))
      ->excludes(required);
}

// ---- The users file

// The library shows its messages by a function without a state.
struct MessagePlace {
  Session* session;
  std::string dir;
};
MessagePlace messagePlace;

int TellMessage(CWnd*, const MessageBoxRequest& request) {
  messagePlace.session->Tell(messagePlace.dir, LibraryText(request.text));
  return 0;
}

bool HasFile(const CStringW& dir, const CStringW& name) {
  return PathExists(JoinPath(dir, name)) || PathExists(JoinPath(JoinPath(dir, u"Reserve"), name));
}

// Makes the folder the one that the library looks in, with the key that its users file needs.
bool UseDir(Session& session, UsersOptions& options) {
  messagePlace = {&session, options.dir};
  SetMessageBoxHandler(TellMessage);
  const CStringW dir = PathFromUtf8(options.dir);
  if (!IsFolder(dir)) {
    const FileErrorKind kind =
        PathExists(dir) ? FileErrorKind::kNotFolder : FileErrorKind::kMissing;
    session.TellUnreadable(options.dir, ErrorOf(kind));
    return false;
  }
  AppDirs dirs;
  dirs.common = dir;
  SetAppDirs(dirs);
  const bool isEnciphered = HasFile(dir, u"LumrUser.ein") && !HasFile(dir, u"LumrUser.ini");
  if (!isEnciphered && !options.keys.IsGiven()) return true;
  const Secret* const key = options.keys.Get(session);
  if (key != nullptr) SetUsersFileKey(key->Text());
  return key != nullptr;
}

bool HasUsersFile(const CStringW& dir) {
  return HasFile(dir, u"LumrUser.ini") || HasFile(dir, u"LumrUser.ein");
}

// As UseDir, of a folder that has a users file.
bool UseListDir(Session& session, UsersOptions& options) {
  if (!UseDir(session, options)) return false;
  const CStringW dir = PathFromUtf8(options.dir);
  if (HasUsersFile(dir)) return true;
  session.TellUnreadable(PathToUtf8(JoinPath(dir, u"LumrUser.ini")),
                         ErrorOf(FileErrorKind::kMissing));
  return false;
}

bool LoadList(Session& session, UsersOptions& options, CUserList& list) {
  if (!UseListDir(session, options)) return false;
  if (list.LoadUserList() != 0) return true;
  session.Raise(kFailed);
  return false;
}

CUser* FindUser(Session& session, const UsersOptions& options, const CUserList& list) {
  CUser* const user = list.GetUserAtID(options.id);
  if (user == nullptr) {
    session.Tell({}, Say::kNoSuchUser, {std::to_string(options.id)});
    session.Raise(kLost);
  }
  return user;
}

// ---- list

constexpr std::size_t kColumns = 4;
using Row = std::array<std::string, kColumns>;

bool HasPassword(const CUser& user) {
  return !user.GetPassword().empty();
}

Say PasswordState(const CUser& user) {
  if (!HasPassword(user)) return Say::kPasswordNone;
  return user.IsPasswordRequired() != 0 ? Say::kPasswordRequired : Say::kPasswordSet;
}

// The name as the file has it; narrow text may lack some of its characters.
std::string NameOf(const CSettingData& data, const CUser& user) {
  CStringW name;
  data.GetValue("UID" + std::to_string(user.GetUserID()), "UserName", name);
  return Utf8(name);
}

std::string ShownName(const CSettingData& data, const CUser& user) {
  const std::string name = NameOf(data, user);
  return SafeLine(name.empty() ? Utf8(WidenSdText(user.GetDispUserName())) : name);
}

void PrintTable(Session& session, const CSettingData& data, const CUserList& list) {
  std::vector<Row> rows = {
      {Text(Say::kHeadId), Text(Say::kHeadUser), Text(Say::kHeadPassword), Text(Say::kHeadFolder)}};
  for (int i = 0; i < list.GetCount(); ++i) {
    const CUser& user = *list.GetUserAt(i);
    rows.push_back({std::to_string(user.GetUserID()), ShownName(data, user),
                    Text(PasswordState(user)), SafeLine(PathToUtf8(user.GetUserDir()))});
  }
  std::array<int, kColumns> widths{};
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < kColumns; ++i) {
      widths[i] = std::max(widths[i], DisplayWidth(row[i]));
    }
  }
  for (const Row& row : rows) {
    std::string line;
    for (std::size_t i = 0; i + 1 < kColumns; ++i) line += Padded(row[i], widths[i] + 2);
    session.Write(line + row.back() + '\n');
  }
}

void PrintJson(Session& session, const std::string& name, const CUser& user) {
  session.Write(JsonLine({{"id", user.GetUserID()},
                          {"name", JsonText(name)},
                          {"hasPassword", HasPassword(user)},
                          {"passwordRequired", user.IsPasswordRequired() != 0},
                          {"restore", user.GetRestore()},
                          {"userDir", JsonText(PathToUtf8(user.GetUserDir()))}}));
}

void RunList(Session& session, UsersOptions& options) {
  CSettingData data;
  CUserList list;
  if (!UseListDir(session, options)) return;
  if (LoadUsersFile(data, false) == 0) return session.Raise(kFailed);
  list.GetUserListData(&data);
  if (list.GetCount() == 0) {
    session.Tell(options.dir, Say::kNoUsers);
    return session.Raise(kLost);
  }
  if (!session.json) return PrintTable(session, data, list);
  for (int i = 0; i < list.GetCount(); ++i) {
    PrintJson(session, NameOf(data, *list.GetUserAt(i)), *list.GetUserAt(i));
  }
}

// ---- The others

bool IsUserDir(const CUserList& list, const CStringW& dir) {
  for (int i = 0; i < list.GetCount(); ++i) {
    if (list.GetUserAt(i)->GetUserDir() == dir) return true;
  }
  return false;
}

// A folder for a new user. The mail client makes it at the first login, so one that does not exist
// may be another user's all the same; two users in one folder would share their mail.
CStringW FreeUserDir(const CUserList& list) {
  CStringW dir = CUser::GetNewStdUserDir(nullptr);
  if (dir.empty()) return dir;
  const char16_t separator = dir.back();
  const CStringW base = dir.substr(0, dir.find_last_not_of(u"0123456789", dir.size() - 2) + 1);
  for (int number = 1; IsUserDir(list, dir) || PathExists(dir); ++number) {
    const std::string digits = std::to_string(number);
    dir = base + CStringW(digits.begin(), digits.end()) + separator;
  }
  return dir;
}

void RunAdd(Session& session, UsersOptions& options) {
  if (!UseDir(session, options)) return;
  CUserList list;
  const bool isFirst = !HasUsersFile(PathFromUtf8(options.dir));
  if (!isFirst && !LoadList(session, options, list)) return;
  auto user = std::make_unique<CUser>();
  CStringA name;
  if (!ToShiftJis(options.name, name)) {
    session.Tell({}, Say::kNotInShiftJis);
    return session.Raise(kFailed);
  }
  user->SetUserName(name);
  user->SetUserID(options.id >= 0 ? options.id : list.GetMaxUserID() + 1);
  user->SetUserDir(options.userDir.empty() ? FreeUserDir(list).c_str()
                                           : PathFromUtf8(options.userDir).c_str());
  if (list.GetUserAtID(user->GetUserID()) != nullptr) {
    session.Tell({}, Say::kUserIdTaken, {std::to_string(user->GetUserID())});
    return session.Raise(kFailed);
  }
  const CUser* const added = user.get();
  list.AddUser(user.release());
  if (list.SaveUserList() == 0) return session.Raise(kFailed);
  if (session.json) return PrintJson(session, options.name, *added);
  session.Write(std::to_string(added->GetUserID()) + '\n');
}

void RunRemove(Session& session, UsersOptions& options) {
  CUserList list;
  if (!LoadList(session, options, list)) return;
  const CUser* const user = FindUser(session, options, list);
  if (user == nullptr) return;
  list.RemoveUser(user);
  if (list.SaveUserList() == 0) return session.Raise(kFailed);
  if (session.json) session.Write(JsonLine({{"id", options.id}, {"removed", true}}));
}

void RunPassword(Session& session, UsersOptions& options) {
  CUserList list;
  if (!LoadList(session, options, list)) return;
  CUser* const user = FindUser(session, options, list);
  if (user == nullptr) return;
  Secret password;
  const bool asked = options.noPassword || (IsTerminal(StandardStream::kInput)
                                                ? password.Ask(session, Say::kAskPassword, true)
                                                : password.ReadFirstLine(session, "-", true));
  if (!asked) return;
  user->SetPassword(password.Bytes());
  if (options.noPassword || options.optional) user->SetPasswordRequired(0);
  if (options.required) user->SetPasswordRequired(1);
  if (list.SaveUserList() == 0) return session.Raise(kFailed);
  if (session.json) PrintJson(session, Utf8(WidenSdText(user->GetUserName())), *user);
}

constexpr Subcommand<UsersOptions> kRows[] = {
    {"list", Say::kUsersList, DeclareDir, RunList},
    {"add", Say::kUsersAdd, DeclareAdd, RunAdd},
    {"remove", Say::kUsersRemove, DeclareId, RunRemove},
    {"password", Say::kUsersPassword, DeclarePassword, RunPassword},
};

}  // namespace

Runner AddUsers(CLI::App& command) {
  return AddSubcommands<UsersOptions>(command, kRows);
}

}  // namespace lumr::tool
