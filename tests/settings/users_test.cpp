#include "lumrmisc/settings/users.h"

#include <gtest/gtest.h>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/settings/appdirs.h"
#include "lumrmisc/settings/userlist.h"
#include "settings/simdisk.h"

namespace lumr {
namespace {

// The application's folders on a disk in memory.
class Users : public testing::Test {
 protected:
  Users() : calls_(disk_) {
    SetAppDirs({u"/app", u"/app", u"/roaming", u"/local"});
    SetUsersFileKey("");
  }
  ~Users() override { SetAppDirs({}); }

  static CStringW PathOf(const CStringW& name) {
    return CStringW(u"/app") + PathSeparator() + name;
  }

  void Put(std::u16string_view text) {
    disk_.~SimDisk();
    new (&disk_) SimDisk({{PathOf(u"LumrUser.ini"), std::string(BytesOf(text))}});
  }

  CStringW Stored(const CStringW& name) {
    const std::string bytes = disk_.Content()[PathOf(name)];
    CStringW text(bytes.size() / 2, u'\0');
    bytes.copy(reinterpret_cast<char*>(text.data()), text.size() * 2);
    return text;
  }

  SimDisk disk_{DiskImage{{CStringW(u"/app") + PathSeparator() + u"other", ""}}};
  internal::FileCallsForTest calls_;
};

CUser* NewUser(int id, const char* name, const char16_t* dir) {
  auto* const user = new CUser;
  user->SetUserID(id);
  user->SetUserName(name);
  user->SetUserDir(dir);
  return user;
}

TEST_F(Users, AreStoredAndReadBackInOrder) {
  CUserList list;
  EXPECT_EQ(list.GetMaxUserID(), -1);
  EXPECT_EQ(list.AddUser(NewUser(0, "\x82\xa0", u"/data/a")), 0);
  EXPECT_EQ(list.AddUser(NewUser(4, "", u"/data/b/")), 1);
  EXPECT_EQ(list.InsertUserAt(0, NewUser(2, "c", u"c")), 0);
  EXPECT_EQ(list.GetMaxUserID(), 4);
  list.GetUserAtID(4)->SetPassword("abc");
  list.GetUserAtID(4)->SetSecondSecret("xyz");
  list.GetUserAtID(4)->SetPasswordRequired(1);
  list.GetUserAtID(2)->SetPassword("only");
  ASSERT_EQ(list.SaveUserList(), 1);
  EXPECT_EQ(Stored(u"LumrUser.ini").find(u"abc"), CStringW::npos);

  CUserList back;
  ASSERT_EQ(back.LoadUserList(), 1);
  ASSERT_EQ(back.GetCount(), 3);
  EXPECT_EQ(back.GetUserAt(0)->GetUserID(), 2);
  EXPECT_EQ(back.GetUserAt(0)->GetPassword(), "only");
  EXPECT_EQ(back.GetUserAt(0)->GetSecondSecret(), "");
  EXPECT_EQ(back.GetUserAt(1)->GetUserName(), "\x82\xa0");
  EXPECT_EQ(back.GetUserAt(1)->GetUserDir(), CStringW(u"/data/a") + PathSeparator());
  EXPECT_EQ(back.GetUserAtID(4)->GetPassword(), "abc");
  EXPECT_EQ(back.GetUserAtID(4)->GetSecondSecret(), "xyz");
  EXPECT_EQ(back.GetUserAtID(4)->IsPasswordRequired(), 1);
  EXPECT_EQ(back.GetUserAtID(7), nullptr);
  EXPECT_EQ(back.GetIdx(4), 2);
  EXPECT_EQ(back.GetIdx(7), -1);

  EXPECT_EQ(back.RemoveUserAt(0), 1);
  ASSERT_EQ(back.SaveUserList(), 1);
  ASSERT_EQ(list.LoadUserList(), 1);
  EXPECT_EQ(list.GetCount(), 2);
}

// What this version does not know must survive its save; keys without a folder are no users.
TEST_F(Users, OfALaterVersionLoseNothing) {
  Put(u"[DATA-START]\r\n[View]\r\nA=1\r\n[UID3]\r\nUserName=x\r\nUserDir=/d/\r\nNew=5\r\n"
      u"[UID9]\r\nUserName=no folder\r\n[UIDefault]\r\nUserDir=/e/\r\n[DATA-END]\r\n");
  CUserList list;
  ASSERT_EQ(list.LoadUserList(), 1);
  ASSERT_EQ(list.GetCount(), 1);
  EXPECT_EQ(list.GetUserAt(0)->GetUserID(), 3);
  list.GetUserAt(0)->SetUserName("y");
  ASSERT_EQ(list.SaveUserList(), 1);
  const CStringW stored = Stored(u"LumrUser.ini");
  for (const char16_t* kept : {u"[View]\r\nA=1", u"New=5", u"[UID9]\r\nUserName=no folder",
                               u"[UIDefault]", u"UserName=y"}) {
    EXPECT_NE(stored.find(kept), CStringW::npos) << NarrowSdText(kept);
  }
}

TEST_F(Users, OfAnOlderVersionAreRenamedAtOnce) {
  Put(u"[DATA-START]\r\n[User1]\r\nUserName=old\r\nUserDir=/d/\r\n[DATA-END]\r\n");
  CUserList list;
  ASSERT_EQ(list.LoadUserList(), 1);
  ASSERT_EQ(list.GetCount(), 1);
  EXPECT_EQ(list.GetUserAtID(1)->GetUserName(), "old");
  const CStringW stored = Stored(u"LumrUser.ini");
  EXPECT_NE(stored.find(u"[UID1]"), CStringW::npos);
  EXPECT_EQ(stored.find(u"[User1]"), CStringW::npos);
}

// What stands beside the users in a file of the older version, and keys that only look like users.
TEST_F(Users, OfAnOlderVersionKeepAllTheyHave) {
  const CStringW former =
      u"[DATA-START]\r\n[User7]\r\nUserDir=/b/\r\nNew=5\r\n[UserView]\r\nA=1\r\n"
      u"[User1]\r\nUserName=old\r\nUserDir=/d/\r\n[User01]\r\nUserDir=/e/\r\n[DATA-END]\r\n";
  Put(former);
  CUser user;
  user.SetUserID(1);
  EXPECT_EQ(user.LoadUser(), 1);
  EXPECT_EQ(user.GetUserName(), "old");

  Put(former);
  user.SetUserName("new");
  EXPECT_EQ(user.SaveUser(), 1);
  CUserList list;
  ASSERT_EQ(list.LoadUserList(), 1);
  ASSERT_EQ(list.GetCount(), 2);
  EXPECT_EQ(list.GetUserAt(0)->GetUserID(), 7);
  EXPECT_EQ(list.GetUserAt(1)->GetUserName(), "new");
  ASSERT_EQ(list.SaveUserList(), 1);
  const CStringW stored = Stored(u"LumrUser.ini");
  for (const char16_t* kept : {u"New=5", u"[UserView]\r\nA=1", u"[User01]\r\nUserDir=/e/"}) {
    EXPECT_NE(stored.find(kept), CStringW::npos) << NarrowSdText(kept);
  }
}

TEST_F(Users, AreOnlyKeysInTheWrittenForm) {
  Put(u"[DATA-START]\r\n[View]\r\nA=1\r\n[UID03]\r\nUserDir=/a/\r\n[uid5]\r\nUserDir=/b/\r\n"
      u"[User1]\r\nUserDir=/c/\r\n[UID99999999999]\r\nUserDir=/e/\r\n[UID-1]\r\nUserDir=/f/\r\n"
      u"[UID6]\r\nUserDir=/g/\r\n[DATA-END]\r\n");
  CUserList list;
  ASSERT_EQ(list.LoadUserList(), 1);
  ASSERT_EQ(list.GetCount(), 2);
  EXPECT_EQ(list.RemoveUserAt(1), 1);
  EXPECT_EQ(list.GetUserAt(0)->GetUserID(), 5);
  ASSERT_EQ(list.SaveUserList(), 1);
  EXPECT_EQ(Stored(u"LumrUser.ini"),
            u"\xfeff[DATA-START]\r\n\r\n[uid5]\r\nUserDir=/b/"
            u"\r\nUserName=\r\nReqPass=0\r\nPassword=\r\nRestore=0\r\n\r\n[View]\r\nA=1\r\n\r\n"
            u"[UID03]\r\nUserDir=/a/\r\n\r\n[User1]\r\nUserDir=/c/\r\n\r\n"
            u"[UID99999999999]\r\nUserDir=/e/\r\n\r\n[UID-1]\r\nUserDir=/f/\r\n\r\n"
            u"[DATA-END]\r\n\r\n");
}

// Nothing that this version cannot read is written over unless something new is set.
TEST_F(Users, KeepWhatCannotBeRead) {
  Put(u"[DATA-START]\r\n[UID1]\r\nUserName=한국\r\nPassword=(!)\r\nUserDir=/d/\r\n"
      u"[UID2]\r\nPassword=0+vE\r\nUserDir=/e/\r\n[DATA-END]\r\n");
  CUserList list;
  ASSERT_EQ(list.LoadUserList(), 1);
  EXPECT_EQ(list.GetUserAt(0)->GetPassword(), "");
  EXPECT_EQ(list.GetUserAt(1)->GetPassword(), "abc");
  const CUser copy = *list.GetUserAt(0);
  *list.GetUserAt(0) = copy;
  list.GetUserAt(0)->SetRestore(1);
  ASSERT_EQ(list.SaveUserList(), 1);
  CStringW stored = Stored(u"LumrUser.ini");
  for (const char16_t* kept : {u"UserName=한국", u"Password=(!)", u"Password=0+vE"}) {
    EXPECT_NE(stored.find(kept), CStringW::npos) << NarrowSdText(kept);
  }

  list.GetUserAt(0)->SetPassword("");
  list.GetUserAt(0)->SetUserName("name");
  list.GetUserAt(1)->SetSecondSecret("second");
  ASSERT_EQ(list.SaveUserList(), 1);
  stored = Stored(u"LumrUser.ini");
  EXPECT_EQ(stored.find(u"(!)"), CStringW::npos);
  EXPECT_NE(stored.find(u"UserName=name"), CStringW::npos);
  ASSERT_EQ(list.LoadUserList(), 1);
  EXPECT_EQ(list.GetUserAt(1)->GetPassword(), "abc");
  EXPECT_EQ(list.GetUserAt(1)->GetSecondSecret(), "second");
}

TEST_F(Users, HaveNoFileAtFirst) {
  CUserList list;
  list.AddUser(NewUser(1, "a", u"/d"));
  EXPECT_EQ(list.LoadUserList(), 0);
  EXPECT_EQ(list.GetCount(), 1) << "a failed load keeps the list";
  CUser* const spare = NewUser(2, "b", u"/e");
  EXPECT_EQ(list.InsertUserAt(2, spare), -1);
  EXPECT_EQ(list.InsertUserAt(-1, spare), -1);
  EXPECT_EQ(list.AddUser(nullptr), -1);
  EXPECT_EQ(spare->SaveUser(), 1);
  delete spare;
  EXPECT_EQ(list.LoadUserList(), 1);
  EXPECT_EQ(list.GetMaxUserID(), 2);
  list.ClearUserList();
  EXPECT_EQ(list.SaveUserList(), 1);
  EXPECT_EQ(list.LoadUserList(), 1);
  EXPECT_EQ(list.GetCount(), 0);
}

// Many users, in the opposite order of the file: linear, or this takes minutes.
TEST_F(Users, OfAWholeTownAreSavedAtOnce) {
  CSettingData data;
  CUserList list;
  for (int id = 0; id < 30000; ++id) {
    data.SetValue("UID" + std::to_string(id), "UserDir", u"/d/");
    if (id % 2 == 0) list.InsertUserAt(list.GetCount(), NewUser(29999 - id, "", u"/d"));
  }
  ASSERT_EQ(list.SetUserListData(&data), 1);
  CUserList back;
  ASSERT_EQ(back.GetUserListData(&data), 1);
  ASSERT_EQ(back.GetCount(), 15000);
  for (int i = 0; i < back.GetCount(); ++i) {
    ASSERT_EQ(back.GetUserAt(i)->GetUserID(), list.GetUserAt(i)->GetUserID());
  }
}

TEST_F(Users, AreEncipheredUnderAKey) {
  SetUsersFileKey("key");
  CUserList list;
  list.AddUser(NewUser(1, "secret name", u"/d"));
  ASSERT_EQ(list.SaveUserList(), 1);
  EXPECT_EQ(Stored(u"LumrUser.ein").find(u"UserName"), CStringW::npos);
  CUserList back;
  ASSERT_EQ(back.LoadUserList(), 1);
  EXPECT_EQ(back.GetCount(), 1);
  SetUsersFileKey("another");
  EXPECT_EQ(back.LoadUserList(), 0);
  EXPECT_EQ(back.GetCount(), 1) << "a failed load keeps the list";
  EXPECT_EQ(back.SaveUserList(), 0) << "and is not written over the file";
}

TEST_F(Users, ShowANameAlwaysAndGetAFreeFolder) {
  CUser user;
  EXPECT_EQ(user.GetUserID() + user.IsPasswordRequired(), 0);
  user.SetUserID(3);
  EXPECT_EQ(WidenSdText(user.GetDispUserName()), u"（ユーザー名未設定 ID:3）");
  user.SetUserName("name");
  EXPECT_EQ(user.GetDispUserName(), "name");
  user.SetUserDir(u"sub");
  EXPECT_EQ(user.GetFullUserDir(), PathOf(u"sub") + PathSeparator());

  const CStringW first = CUser::GetNewStdUserDir(nullptr);
  const CStringW base = JoinPath(JoinPath(u"/local", u"Lumora"), u"User");
  EXPECT_EQ(first, base + u"0" + PathSeparator());
  EXPECT_FALSE(MakeFolders(first));
  EXPECT_EQ(CUser::GetNewStdUserDir(nullptr), base + u"1" + PathSeparator());
}

}  // namespace
}  // namespace lumr
