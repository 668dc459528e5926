// Saving that asks the user, on a disk in memory.
#include <gtest/gtest.h>

#include "lumrmisc/platform/messages.h"
#include "lumrmisc/platform/window.h"
#include "settings/sdsave.h"

namespace lumr {
namespace {

// A window that gives prepared answers and keeps the questions.
class AskedWindow : public HeadlessWindow {
 public:
  std::vector<int> answers;
  std::vector<MessageBoxRequest> asked;
  std::function<void()> onAsk;

  int Ask(const MessageBoxRequest& request) override {
    asked.push_back(request);
    if (onAsk) onAsk();
    return asked.size() <= answers.size() ? answers[asked.size() - 1] : -1;
  }
};

struct FullDisk {
  FullDisk() : calls(disk) {
    disk.fault = [this](const char* call, int) {
      return full && std::string_view(call) == "write" ? ErrorOf(FileErrorKind::kNoSpace)
                                                       : FileError();
    };
  }

  SimDisk disk{DiskImage{{kPath, ""}, {TemporaryFolder() + u"other", ""}}};
  internal::FileCallsForTest calls;
  bool full = true;
};

int Save(CSettingData& data, IfErrAsk ask, int allowTempSave, const char* prompt,
         CStringA* errorText, CWnd* parent) {
  return data.SaveSdFile(kDir.c_str(), u"Test.ini", 0, ask, allowTempSave, prompt, errorText,
                         parent);
}

TEST(SaveSdFile, OffersTheButtonsOfItsQuestion) {
  const CStringA retry = MessageText(10100);
  const CStringA cancel = MessageText(10101);
  const CStringA goOn = MessageText(10102);
  const struct {
    IfErrAsk ask;
    CStringArray buttons;
  } cases[] = {
      {kIfErrReturn, {}},
      {kIfErrRetryCancel, {retry, cancel}},
      {kIfErrRetryContinue, {retry, goOn}},
      {kIfErrRetryCancelContinue, {retry, cancel, goOn}},
      {static_cast<IfErrAsk>(9), {}},
  };
  for (const auto& c : cases) {
    FullDisk full;
    AskedWindow window;  // nobody answers
    CSettingData data;
    data.SetValue("K", "A", 1);
    CStringA message;
    EXPECT_EQ(Save(data, c.ask, 0, nullptr, &message, &window), 0);
    EXPECT_EQ(message.find(MessageText(3171) + "\n"), 0u);
    EXPECT_EQ(data.IsModified(), 1);
    ASSERT_EQ(window.asked.size(), c.buttons.empty() ? 0u : 1u) << c.ask;
    if (!c.buttons.empty()) {
      EXPECT_EQ(window.asked[0].buttons, c.buttons);
    }
  }
}

TEST(SaveSdFile, RetriesUntilItWorks) {
  FullDisk full;
  AskedWindow window;
  window.answers = {0, 0};
  window.onAsk = [&] { full.full = window.asked.size() < 2; };
  CSettingData data;
  data.SetValue("K", "A", 1);
  EXPECT_EQ(Save(data, kIfErrRetryCancel, 0, nullptr, nullptr, &window), 1);
  EXPECT_EQ(window.asked.size(), 2u);
  EXPECT_EQ(data.IsModified(), 0);
}

TEST(SaveSdFile, SavesElsewhereWhenTheUserGoesOn) {
  FullDisk full;
  AskedWindow window;
  // Go on, no; go on, yes.
  window.answers = {1, 1, 1, 0, 0};
  window.onAsk = [&] { full.full = window.asked.size() < 4; };
  CSettingData data;
  data.SetValue("K", "A", 1);
  EXPECT_EQ(Save(data, kIfErrRetryContinue, 1, "Really?", nullptr, &window), 1);
  ASSERT_EQ(window.asked.size(), 5u);
  EXPECT_EQ(window.asked[1].text, "Really?");
  EXPECT_EQ(window.asked[1].defaultButton, 1);
  EXPECT_EQ(window.asked[2].buttons, window.asked[0].buttons);
  EXPECT_EQ(data.IsModified(), 1);
  // The file with its time in its name, told to the user.
  CStringW saved;
  for (const auto& [path, content] : full.disk.Content()) {
    if (path.find(u"Test.ini_") != CStringW::npos) saved = path;
  }
  EXPECT_EQ(saved.size(), (TemporaryFolder() + u"Test.ini_YYMMDD_HHMMSS").size());
  EXPECT_NE(window.asked[4].text.find(NarrowSdText(saved)), CStringA::npos);
  EXPECT_NE(window.asked[4].text.find(NarrowSdText(kPath) + "\n"), CStringA::npos);
}

TEST(SaveSdFile, WritesOnlyWhatHasChanged) {
  SimDisk disk(DiskImage{{kPath, ""}});
  const internal::FileCallsForTest calls(disk);
  CSettingData data;
  data.SetValue("K", "A", 1);
  ASSERT_EQ(Save(data, kIfErrReturn, 0, nullptr, nullptr, nullptr), 1);
  int writes = 0;
  disk.fault = [&](const char* call, int) {
    writes += std::string_view(call) == "write" ? 1 : 0;
    return FileError();
  };
  data.SetValue("k", "a", "1");
  ASSERT_EQ(Save(data, kIfErrReturn, 0, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(writes, 0);
}

TEST(LoadSdFile, AnswersWhatIsNotThere) {
  SimDisk disk(DiskImage{{kPath, "abcd"}});
  const internal::FileCallsForTest calls(disk);
  CSettingData missing;
  EXPECT_EQ(missing.LoadSdFile(kDir.c_str(), u"None.ini", 1), 0);
  EXPECT_EQ(missing.GetErrorMessage().find(SystemErrorText(ErrorOf(FileErrorKind::kMissing))), 0u);
  CSettingData small;  // too short to be settings: empty
  EXPECT_EQ(small.LoadSdFile(kDir.c_str(), u"Test.ini", 1), 1);
  EXPECT_EQ(small.GetKeyCount(), 0);
  small.SetValue("K", "A", 1);
  EXPECT_EQ(small.LoadSdFile(kDir.c_str(), u"None.ini", 0), 1) << "it is loaded already";
  EXPECT_EQ(small.GetKeyCount(), 1);
}

// A disk whose file is said to be longer than what can be read of it.
class LyingDisk : public SimDisk {
 public:
  using SimDisk::SimDisk;
  int lies = 0;

  FileError Query(const CStringW& path, FileInfo& info) override {
    const FileError error = SimDisk::Query(path, info);
    if (info.isRegular && lies > 0) info.size += 2, --lies;
    return error;
  }
};

TEST(LoadSdFile, ReadsTheWholeFileOrFails) {
  LyingDisk disk(DiskImage{{kPath, std::string("[\0K\0]\0", 6)}});
  const internal::FileCallsForTest calls(disk);
  disk.lies = 1;  // a file that is replaced by a shorter one between two calls
  CSettingData replaced;
  EXPECT_EQ(replaced.LoadSdFile(kDir.c_str(), u"Test.ini", 0), 1) << replaced.GetErrorMessage();
  EXPECT_EQ(replaced.GetKeyCount(), 1);
  disk.lies = 100;
  CSettingData cut;
  EXPECT_EQ(cut.LoadSdFile(kDir.c_str(), u"Test.ini", 0), 0);
  EXPECT_EQ(cut.GetErrorMessage(), "File Read Error (8 => 6)\nFile: " + NarrowSdText(kPath));
}

TEST(ChangeSdFile, NeverTakesTheNameOfOtherSettings) {
  const CStringW reserve = kDir + u"Reserve" + PathSeparator();
  const DiskImage image = {
      {kDir + u"a.ini", "a"}, {kDir + u"b.ini", "b"}, {reserve + u"c.ini", "lost but for this"}};
  SimDisk disk(image);
  const internal::FileCallsForTest calls(disk);
  EXPECT_EQ(ChangeSdFileName(kDir.c_str(), u"a.ini", u"b.ini"), 0);
  EXPECT_EQ(ChangeSdFileName(kDir.c_str(), u"a.ini", u"c.ini"), 0);
  EXPECT_EQ(ChangeSdFileName(kDir.c_str(), u"a.ini", u"a.ini"), 1);
  EXPECT_EQ(ChangeSdFileName(kDir.c_str(), u"x.ini", u"x.ini"), 0);
  EXPECT_EQ(disk.Content(), image);
}

TEST(ChangeSdFile, TreatsFileAndReserveAlike) {
  const CStringW reserve = kDir + u"Reserve" + PathSeparator();
  SimDisk disk(DiskImage{{kDir + u"a.ini", "file"}, {reserve + u"a.ini", "reserve"}});
  const internal::FileCallsForTest calls(disk);
  EXPECT_EQ(ChangeSdFileName(kDir.c_str(), u"a.ini", u"b.ini"), 1);
  EXPECT_EQ(ChangeSdFileName(kDir.c_str(), u"a.ini", u"c.ini"), 0);
  EXPECT_EQ(ChangeSdFilesExt(kDir.c_str(), u"b", u".ini", u".ein"), 1);
  EXPECT_EQ(GetChangedSdFileName(kDir.c_str(), u"new.ein", u"b.ein"), u"new.ein");
  EXPECT_EQ(GetChangedSdFileName(kDir.c_str(), u"x", u"y"), u"x");
  EXPECT_EQ(disk.Content(),
            (DiskImage{{kDir + u"new.ein", "file"}, {reserve + u"new.ein", "reserve"}}));
}

}  // namespace
}  // namespace lumr
