#include "lumrmisc/settings/users.h"

#include <mutex>

#include "lumrmisc/crypto/passwordtext.h"
#include "lumrmisc/crypto/secret_internal.h"
#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/messages.h"
#include "lumrmisc/platform/window.h"
#include "lumrmisc/settings/appdirs.h"
#include "lumrmisc/settings/sdvalue_internal.h"

namespace lumr {
namespace {

constexpr unsigned kMessageNamelessUser = 3522;
constexpr int kLastStandardDir = 999;
constexpr char kKeyPrefix[] = "UID";
constexpr char kFormerKeyPrefix[] = "User";

void ShowMessage(const CStringA& text) {
  MessageBoxRequest request;
  request.text = text;
  request.icon = MessageBoxIcon::kError;
  AskUser(nullptr, request);
}

std::mutex usersKeyMutex;

CStringA& UsersKey() {
  static CStringA key;
  return key;
}

CStringA CurrentUsersKey() {
  const std::lock_guard lock(usersKeyMutex);
  return UsersKey();
}

const char16_t* UsersFileName(const CStringA& key) {
  return key.empty() ? u"LumrUser.ini" : u"LumrUser.ein";
}

// The ID in a key's name that is prefix and ID, as they are written; -1 for any other name.
int IdBehind(std::u16string_view name, const SdName& prefix) {
  if (!SdNameBeginsWith(name, prefix.Text())) return -1;
  const std::u16string_view number = name.substr(prefix.Text().size());
  const int id = ParseSdNumber<int>(number);
  return id >= 0 && FormatSdNumber(id) == number ? id : -1;
}

bool HasUsers(const CSettingData& data, const SdName& prefix) {
  for (int i = 0; i < data.GetKeyCount(); ++i) {
    if (IdBehind(data.GetKeyAt(i)->Name(), prefix) >= 0) return true;
  }
  return false;
}

CStringA KeyOfUser(const char* prefix, int id) {
  return (prefix == nullptr ? "" : prefix) + std::to_string(id);
}

// Files of an older version are those with keys of the former naming only. Gives whether this was
// one.
bool RenameFormerUsers(CSettingData& data) {
  if (HasUsers(data, kKeyPrefix) || !HasUsers(data, kFormerKeyPrefix)) return false;
  for (int i = 0; i < data.GetKeyCount(); ++i) {
    const std::u16string_view name = data.GetKeyAt(i)->Name();
    const int id = IdBehind(name, kFormerKeyPrefix);
    if (id >= 0) data.RenameKey(name, KeyOfUser(kKeyPrefix, id));
  }
  return true;
}

}  // namespace

// ---- The users file

void SetUsersFileKey(const char* key) {
  const std::lock_guard lock(usersKeyMutex);
  WipeText(UsersKey());
  UsersKey() = key == nullptr ? "" : key;
}

int UserIdOfKey(std::u16string_view name) {
  return IdBehind(name, kKeyPrefix);
}

int LoadUsersFile(CSettingData& data, bool mayBeMissing) {
  CStringA key = CurrentUsersKey();
  const CStringW dir = GetCommonAppDir();
  const char16_t* const name = UsersFileName(key);
  data.SetCryptKey(key.empty() ? 0 : 1, key.c_str());
  WipeText(key);
  const CStringW reserve = JoinPath(dir, u"Reserve");
  if (mayBeMissing && !PathExists(JoinPath(dir, name)) && !PathExists(JoinPath(reserve, name))) {
    data.LoadNone();
    // Counts as changed from now on: the file is to be made even for no users.
    data.SetKey("UID");
    data.RemoveKeyAll();
    return 1;
  }
  if (data.LoadSdFile(dir.c_str(), name, 1) == 0) {
    ShowMessage(data.GetErrorMessage());
    return 0;
  }
  if (RenameFormerUsers(data)) SaveUsersFile(data);
  return 1;
}

int SaveUsersFile(CSettingData& data) {
  CStringA key = CurrentUsersKey();
  const char16_t* const name = UsersFileName(key);
  WipeText(key);
  CStringA message;
  if (data.SaveSdFile(GetCommonAppDir().c_str(), name, 1, kIfErrReturn, 0, nullptr, &message,
                      nullptr) != 0) {
    return 1;
  }
  ShowMessage(message);
  return 0;
}

// ---- One user

CUser::~CUser() {
  WipeText(password_);
  WipeText(secondSecret_);
}

CUser::CUser(const CUser& other) {
  *this = other;
}

CUser& CUser::operator=(const CUser& other) {
  if (this == &other) return *this;
  userId_ = other.userId_;
  passwordRequired_ = other.passwordRequired_;
  SetPassword(other.password_);
  SetSecondSecret(other.secondSecret_);
  restore_ = other.restore_;
  userName_ = other.userName_;
  storedSecrets_ = other.storedSecrets_;
  fullUserDir_ = other.fullUserDir_;
  userDir_ = other.userDir_;
  return *this;
}

void CUser::SetPassword(const CStringA& password) {
  // Built before the old one goes: password may be the old one.
  CStringA taken = password.substr(0, password.find('\n'));
  WipeText(password_);
  password_ = taken;
  WipeText(taken);
  storedSecrets_.clear();
}

void CUser::SetSecondSecret(const CStringA& secret) {
  CStringA taken = secret;
  WipeText(secondSecret_);
  secondSecret_ = taken;
  WipeText(taken);
  storedSecrets_.clear();
}

CStringA CUser::GetDispUserName() const {
  if (!userName_.empty()) return userName_;
  const CStringA format = MessageText(kMessageNamelessUser);
  const std::size_t number = format.find("%d");
  if (number == CStringA::npos) return format;
  return format.substr(0, number) + std::to_string(userId_) + format.substr(number + 2);
}

void CUser::SetUserDir(const char16_t* dir) {
  userDir_ = WithSeparator(dir == nullptr ? std::u16string_view() : dir);
  fullUserDir_.clear();
}

CStringW CUser::GetFullUserDir() const {
  if (fullUserDir_.empty() && !userDir_.empty()) fullUserDir_ = GetFullAppPath(userDir_);
  return fullUserDir_;
}

int CUser::LoadUser() {
  CSettingData data;
  return LoadUsersFile(data, false) != 0 ? GetUserData(&data, kKeyPrefix) : 0;
}

int CUser::SaveUser() const {
  CSettingData data;
  if (LoadUsersFile(data, true) == 0) return 0;
  SetUserData(&data);
  return SaveUsersFile(data);
}

void CUser::ReadSecrets(const CStringW& stored) {
  WipeText(password_);
  WipeText(secondSecret_);
  storedSecrets_ = stored;
  SecretBuffer plain;
  CStringA message;
  if (DecryptText(NarrowSdText(stored).c_str(), plain, message) == 0) ShowMessage(message);
  const std::string_view text = plain.Bytes();
  const std::size_t lineFeed = text.find('\n');
  password_ = text.substr(0, lineFeed);
  if (lineFeed != std::string_view::npos) secondSecret_ = text.substr(lineFeed + 1);
}

CStringW CUser::EncipherSecrets() const {
  if (password_.empty() && secondSecret_.empty()) return {};
  SecretBuffer plain;
  plain.SetAllocSize(static_cast<int>(password_.size() + 1 + secondSecret_.size()));
  plain += password_;
  if (!secondSecret_.empty()) (plain += '\n') += secondSecret_;
  CBuffer stored;
  CStringA message;
  if (EncryptText(plain, stored, message) == 0) ShowMessage(message);
  return WidenSdText(stored.Bytes());
}

int CUser::GetUserData(CSettingData* data, const char* prefix) {
  if (data == nullptr) return 0;
  const CStringA key = KeyOfUser(prefix, userId_);
  userName_.clear();
  data->GetValue(key, "UserName", userName_);
  passwordRequired_ = data->GetBoolValue(key, "ReqPass", 0);
  restore_ = 0;
  data->GetValue(key, "Restore", restore_);
  CStringW stored;
  data->GetValue(key, "Password", stored);
  ReadSecrets(stored);
  CStringW dir;
  const int hasDir = data->GetValue(key, "UserDir", dir);
  SetUserDir(dir.c_str());
  return hasDir;
}

int CUser::SetUserData(CSettingData* data) const {
  if (data == nullptr) return 0;
  const CStringA key = KeyOfUser(kKeyPrefix, userId_);
  // A name that narrow text cannot hold stays as it is as long as it reads the same.
  CStringA name;
  if (data->GetValue(key, "UserName", name) == 0 || name != userName_) {
    data->SetValue(key, "UserName", userName_);
  }
  data->SetValue(key, "ReqPass", passwordRequired_ != 0 ? 1 : 0);
  data->SetValue(key, "Password", storedSecrets_.empty() ? EncipherSecrets() : storedSecrets_);
  data->SetValue(key, "Restore", restore_);
  data->SetValue(key, "UserDir", userDir_);
  return 1;
}

CStringW CUser::GetNewStdUserDir(CWnd*) {
  const CStringW data = GetLocalDataDir();
  if (data.empty()) return {};
  const CStringW base = JoinPath(JoinPath(data, u"Lumora"), u"User");
  CStringW dir;
  for (int n = 0; n <= kLastStandardDir; ++n) {
    const std::string number = std::to_string(n);
    dir = base + CStringW(number.begin(), number.end()) + PathSeparator();
    if (!PathExists(dir)) break;
  }
  return dir;
}

}  // namespace lumr
