// One person of an installation.
#pragma once

#include "lumrmisc/platform/types.h"
#include "lumrmisc/settings/settingdata.h"

namespace lumr {

class CWnd;

// A user: who it is, the password asked for at start, where the data is. Secrets are wiped when
// they are replaced and when the object ends; how they are stored, and what that is worth, says
// crypto/passwordtext.h.
class CUser {
 public:
  CUser() = default;
  virtual ~CUser();
  CUser(const CUser& other);
  CUser& operator=(const CUser& other);

  int GetUserID() const { return userId_; }
  void SetUserID(int id) { userId_ = id; }  // 0 or more, unique within a list
  int IsPasswordRequired() const { return passwordRequired_; }
  void SetPasswordRequired(int required) { passwordRequired_ = required; }
  int GetRestore() const { return restore_; }
  void SetRestore(int restore) { restore_ = restore; }
  const CStringA& GetPassword() const { return password_; }
  void SetPassword(const CStringA& password);  // without a line feed: what is behind one is cut
  // A second secret, stored behind the password's line.
  const CStringA& GetSecondSecret() const { return secondSecret_; }
  void SetSecondSecret(const CStringA& secret);
  const CStringA& GetUserName() const { return userName_; }
  void SetUserName(const CStringA& name) { userName_ = name; }

  // The name to show: the user name, or a text with the ID where there is none. Narrow text in the
  // current code page.
  CStringA GetDispUserName() const;

  // The folder, ending in a separator; one is added where it is missing.
  const CStringW& GetUserDir() const { return userDir_; }
  void SetUserDir(const char16_t* dir);
  // The same as an absolute path (GetFullAppPath).
  CStringW GetFullUserDir() const;

  // Reads or writes the fields of this user, under the ID it has, in the users file. 1; 0 after a
  // failure, which the user has been shown, and when the file has no such user.
  int LoadUser();
  int SaveUser() const;

  // Reads the fields from the key that prefix and the ID name ("UID", or "User" in files of an
  // older version). Gives whether the user's folder was there, without which it is no user. A
  // password that cannot be deciphered is reported to the user and counts as none.
  int GetUserData(CSettingData* data, const char* prefix);
  // Writes the fields under "UID" and the ID. 1, or 0 for null. Secrets that nobody has set since
  // they were read are written back as they were stored: what could not be deciphered here may be
  // read by another version.
  int SetUserData(CSettingData* data) const;

  // A folder for a new user that does not exist yet: Lumora, User0 (User1, ... up to User999) in
  // the local application data. Empty where the platform names no such place. parent is not needed
  // any more; callers still pass it.
  static CStringW GetNewStdUserDir(CWnd* parent);

 private:
  void ReadSecrets(const CStringW& stored);
  CStringW EncipherSecrets() const;

  int userId_ = 0;
  int passwordRequired_ = 0;
  CStringA password_;
  CStringA secondSecret_;
  CStringW storedSecrets_;  // what both were read from; empty once one has been set
  int restore_ = 0;
  CStringA userName_;
  mutable CStringW fullUserDir_;  // empty until asked for
  CStringW userDir_;
};

// The users file: LumrUser.ini in the common folder, or LumrUser.ein enciphered under a key that
// the host sets once at start (empty: none).
void SetUsersFileKey(const char* key);
// Loads the file, with keys of an older version renamed to the current naming. A missing file is a
// failure, or counts as empty with mayBeMissing. 1; 0 after a failure, which the user has been
// shown.
int LoadUsersFile(CSettingData& data, bool mayBeMissing);
int SaveUsersFile(CSettingData& data);
// The ID in the name of a user's key; -1 for any other name.
int UserIdOfKey(std::u16string_view name);

}  // namespace lumr
