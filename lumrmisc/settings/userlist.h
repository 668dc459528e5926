// The people of an installation.
#pragma once

#include <memory>
#include <vector>

#include "lumrmisc/settings/users.h"

namespace lumr {

// Owns its users, in the order in which they are shown and stored.
class CUserList {
 public:
  CUserList() = default;
  virtual ~CUserList();
  CUserList(const CUserList&) = delete;
  CUserList& operator=(const CUserList&) = delete;

  // Replaces the list by the one of the users file, which is recovered from its reserve copy where
  // that is needed. A file of an older version is written back at once in the current naming. 1; 0
  // after a failure (a missing file too), which the user has been shown and which leaves the list
  // as it was.
  int LoadUserList();
  // Writes the list to the users file, which is made where it is missing; what the file holds
  // besides stays, behind the users. 1; 0 after a failure, which the user has been shown.
  int SaveUserList() const;

  // The same from and to settings in memory. 1, or 0 for null.
  int GetUserListData(CSettingData* data);
  int SetUserListData(CSettingData* data) const;

  // Give the user's index; the list owns the user from then on. Null, or an index outside the list:
  // -1, and nothing is added.
  int AddUser(CUser* user);
  int InsertUserAt(int index, CUser* user);
  int RemoveUser(const CUser* user);  // and deletes it; 1, or 0 when it is not in the list
  int RemoveUserAt(int index);
  void ClearUserList();

  int GetCount() const { return static_cast<int>(users_.size()); }
  CUser* GetUserAt(int index) const;  // null outside the list
  CUser* GetUserAtID(int id) const;   // null when there is none
  int GetIdx(int id) const;           // -1 when there is none
  int GetMaxUserID() const;           // -1 for an empty list

 private:
  std::vector<std::unique_ptr<CUser>> users_;
};

}  // namespace lumr
