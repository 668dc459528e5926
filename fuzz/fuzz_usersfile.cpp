// Any bytes as a users file: the users that are read are written so that they read back the same,
// a second writing changes nothing, and what is no user stays.
#include "fuzz/sdinput.h"
#include "lumrmisc/settings/userlist.h"

namespace {

using lumr::CSettingData;
using lumr::CUser;
using lumr::CUserList;

void RequireSame(const CUser& a, const CUser& b) {
  Require(a.GetUserID() == b.GetUserID() && a.GetUserName() == b.GetUserName());
  Require(a.GetUserDir() == b.GetUserDir() && a.GetRestore() == b.GetRestore());
  Require(a.IsPasswordRequired() == b.IsPasswordRequired());
  Require(a.GetPassword() == b.GetPassword() && a.GetSecondSecret() == b.GetSecondSecret());
}

void RequireSame(const CUserList& a, const CUserList& b) {
  Require(a.GetCount() == b.GetCount());
  for (int i = 0; i < a.GetCount(); ++i) RequireSame(*a.GetUserAt(i), *b.GetUserAt(i));
}

int CountOthers(const CSettingData& data) {
  int others = 0;
  for (int i = 0; i < data.GetKeyCount(); ++i) {
    others += lumr::UserIdOfKey(data.GetKeyAt(i)->Name()) < 0 ? 1 : 0;
  }
  return others;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const SdInput input(data, size);
  CSettingData settings;
  if (settings.LoadSdText(input.Bytes()) == 0) return 0;
  CUserList list;
  list.GetUserListData(&settings);

  CSettingData saved;
  saved.CopySD(settings);
  list.SetUserListData(&saved);
  Require(CountOthers(saved) == CountOthers(settings));
  CUserList back;
  back.GetUserListData(&saved);
  RequireSame(list, back);

  CSettingData again;
  again.CopySD(saved);
  back.SetUserListData(&again);
  Require(again.EqualSD(saved, 0) == 1);

  // A new password is what is read then.
  if (back.GetCount() == 0) return 0;
  const std::string password = "p" + std::to_string(size);
  back.GetUserAt(0)->SetPassword(password);
  back.SetUserListData(&again);
  list.GetUserListData(&again);
  Require(list.GetUserAt(0)->GetPassword() == password);
  return 0;
}
