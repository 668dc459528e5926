#include "lumrmisc/settings/userlist.h"

#include <algorithm>
#include <utility>

namespace lumr {
namespace {

constexpr char kPrefix[] = "UID";

// Without a folder a key is no user of any list.
bool IsUser(const CSettingDataKey& key) {
  return UserIdOfKey(key.Name()) >= 0 && key.GetPairList().Find("UserDir") != nullptr;
}

}  // namespace

CUserList::~CUserList() = default;

int CUserList::LoadUserList() {
  CSettingData data;
  return LoadUsersFile(data, false) != 0 ? GetUserListData(&data) : 0;
}

int CUserList::SaveUserList() const {
  CSettingData data;
  if (LoadUsersFile(data, true) == 0) return 0;
  SetUserListData(&data);
  return SaveUsersFile(data);
}

int CUserList::GetUserListData(CSettingData* data) {
  if (data == nullptr) return 0;
  std::vector<std::unique_ptr<CUser>> users;
  for (int i = 0; i < data->GetKeyCount(); ++i) {
    if (!IsUser(*data->GetKeyAt(i))) continue;
    users.push_back(std::make_unique<CUser>());
    users.back()->SetUserID(UserIdOfKey(data->GetKeyAt(i)->Name()));
    users.back()->GetUserData(data, kPrefix);
  }
  users_ = std::move(users);
  return 1;
}

int CUserList::SetUserListData(CSettingData* data) const {
  if (data == nullptr) return 0;
  CSettingData ordered;
  for (const auto& user : users_) {
    const CStringA key = kPrefix + std::to_string(user->GetUserID());
    if (ordered.FindKey(key) == nullptr) ordered.CopySdKey(0, *data, key, 0);
    user->SetUserData(&ordered);
  }
  for (int i = 0; i < data->GetKeyCount(); ++i) {
    const CSettingDataKey& key = *data->GetKeyAt(i);
    if (IsUser(key) || ordered.FindKey(key.Name()) != nullptr) continue;
    ordered.CopySdKey(0, *data, key.Name(), 0);
  }
  if (ordered.EqualSD(*data, 0) == 0) data->CopySD(ordered);
  return 1;
}

int CUserList::AddUser(CUser* user) {
  return InsertUserAt(GetCount(), user);
}

int CUserList::InsertUserAt(int index, CUser* user) {
  if (user == nullptr || index < 0 || index > GetCount()) return -1;
  users_.insert(users_.begin() + index, std::unique_ptr<CUser>(user));
  return index;
}

int CUserList::RemoveUser(const CUser* user) {
  const auto found = std::find_if(users_.begin(), users_.end(),
                                  [user](const auto& other) { return other.get() == user; });
  if (found == users_.end()) return 0;
  users_.erase(found);
  return 1;
}

int CUserList::RemoveUserAt(int index) {
  return RemoveUser(GetUserAt(index));
}

void CUserList::ClearUserList() {
  users_.clear();
}

CUser* CUserList::GetUserAt(int index) const {
  if (index < 0 || index >= GetCount()) return nullptr;
  return users_[static_cast<std::size_t>(index)].get();
}

CUser* CUserList::GetUserAtID(int id) const {
  return GetUserAt(GetIdx(id));
}

int CUserList::GetIdx(int id) const {
  for (int i = 0; i < GetCount(); ++i) {
    if (GetUserAt(i)->GetUserID() == id) return i;
  }
  return -1;
}

int CUserList::GetMaxUserID() const {
  int most = -1;
  for (const auto& user : users_) most = std::max(most, user->GetUserID());
  return most;
}

}  // namespace lumr
