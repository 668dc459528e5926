// Loading and saving of settings: the file, its reserve copy, and what to do when neither goes.
#include <array>
#include <cstdio>
#include <utility>

#include "lumrmisc/crypto/blowfish.h"
#include "lumrmisc/crypto/secret_internal.h"
#include "lumrmisc/platform/clock.h"
#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/messages.h"
#include "lumrmisc/platform/window.h"
#include "lumrmisc/settings/appdirs.h"
#include "lumrmisc/settings/sdpath_internal.h"
#include "lumrmisc/settings/settingdata.h"

namespace lumr {
namespace {

// What is shorter holds no settings, whatever it is.
constexpr std::size_t kShortestText = 5;

constexpr std::uint64_t kLargestText = (std::uint64_t{1} << 31) - 64;

enum : unsigned {
  kMessageNotSaved = 3171,
  kMessageSavedElsewhere = 3172,
  kMessageReallyContinue = 3173,
};

CStringW TextOf(const char16_t* text) {
  return text == nullptr ? CStringW() : CStringW(text);
}

const unsigned char* BytesOf(std::string_view bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

// Reads a file of size bytes, which comes from its folder. Another process may put a shorter file
// in its place meanwhile; then the next reading is of that one alone.
FileError ReadSettings(const CStringW& path, std::string& bytes, std::uint64_t& size) {
  FileError error;
  for (int triesLeft = 3; triesLeft > 0; --triesLeft) {
    FileInfo info;
    error = QueryFile(path, info);
    if (!error) error = ReadWholeFile(path, bytes, kLargestText);
    size = info.isRegular ? info.size : 0;
    if (error || bytes.size() >= size) break;
  }
  return error;
}

// A file that the user has marked read-only is saved all the same; what this cannot change shows
// when the file is written.
void ClearReadOnly(const CStringW& path) {
  FileInfo info;
  if (!QueryFile(path, info)) SetFileReadOnly(path, false);
}

// ---- Questions

enum class Answer { kRetry, kCancel, kContinue, kNobody };

struct AskRow {
  IfErrAsk ask;
  std::array<Answer, 3> answers;  // in the order of the buttons; kNobody: no further one
};
constexpr AskRow kAskRows[] = {
    {kIfErrRetryCancel, {Answer::kRetry, Answer::kCancel, Answer::kNobody}},
    {kIfErrRetryContinue, {Answer::kRetry, Answer::kContinue, Answer::kNobody}},
    {kIfErrRetryCancelContinue, {Answer::kRetry, Answer::kCancel, Answer::kContinue}},
};

unsigned ButtonOf(Answer answer) {
  if (answer == Answer::kRetry) return kMessageRetryButton;
  return answer == Answer::kCancel ? kMessageCancelButton : kMessageContinueButton;
}

Answer AskAfterFailure(CWnd* parent, IfErrAsk ask, const CStringA& message) {
  for (const AskRow& row : kAskRows) {
    if (row.ask != ask) continue;
    MessageBoxRequest request;
    request.text = message;
    request.icon = MessageBoxIcon::kError;
    for (const Answer answer : row.answers) {
      if (answer == Answer::kNobody) break;
      if (answer == Answer::kCancel)
        request.cancelButton = static_cast<int>(request.buttons.size());
      request.buttons.push_back(MessageText(ButtonOf(answer)));
    }
    const int pressed = AskUser(parent, request);
    if (pressed < 0 || pressed >= static_cast<int>(request.buttons.size())) break;
    return row.answers[static_cast<std::size_t>(pressed)];
  }
  return Answer::kNobody;
}

bool ConfirmContinue(CWnd* parent, const char* prompt) {
  MessageBoxRequest request;
  request.text =
      prompt != nullptr && *prompt != '\0' ? prompt : MessageText(kMessageReallyContinue);
  request.buttons = {MessageText(kMessageYesButton), MessageText(kMessageNoButton)};
  request.defaultButton = request.cancelButton = 1;
  request.icon = MessageBoxIcon::kWarning;
  return AskUser(parent, request) == 0;
}

void TellSavedElsewhere(CWnd* parent, const CStringW& saved, const CStringW& real) {
  MessageBoxRequest request;
  request.text = MessageText(kMessageSavedElsewhere);
  request.icon = MessageBoxIcon::kInformation;
  std::size_t at = 0;
  for (const CStringW& path : {saved, real}) {
    const CStringA narrow = NarrowSdText(path);
    at = request.text.find("%s", at);
    if (at == CStringA::npos) break;
    request.text.replace(at, 2, narrow);
    at += narrow.size();
  }
  AskUser(parent, request);
}

// "_year month day_hour minute second", two digits each.
CStringW TimeSuffix() {
  const LocalTime now = LocalTimeOf(Now());
  char text[64];
  std::snprintf(text, sizeof text, "_%02d%02d%02d_%02d%02d%02d", now.year % 1000, now.month,
                now.day, now.hour, now.minute, now.second);
  const std::string_view suffix = text;
  return CStringW(suffix.begin(), suffix.end());
}

}  // namespace

CSettingData::~CSettingData() {
  WipeText(cryptKey_);
}

// ---- State

void CSettingData::LoadNone() {
  InitSD();
  loaded_ = 1;
}

void CSettingData::InitSD() {
  keys_.Clear();
  loaded_ = 0;
  modified_ = 0;
  recovered_ = 0;
  loadFailure_ = LoadFailure::kNone;
  errorMessage_.clear();
  reading_ = {};
}

void CSettingData::RemoveKeyAll() {
  if (keys_.Count() > 0) modified_ = 1;
  keys_.Clear();
}

void CSettingData::SetCryptKey(int enable, const char* key) {
  // Built before the old one goes: key may be the old one.
  std::string taken = key == nullptr ? "" : key;
  WipeText(cryptKey_);
  cryptKey_ = taken;
  WipeText(taken);
  enciphered_ = enable != 0 ? 1 : 0;
}

void CSettingData::SetCryptKey(const CSettingData& other) {
  SetCryptKey(other.enciphered_, other.cryptKey_.c_str());
}

void CSettingData::SetErrorText(std::string_view message, const char16_t* path,
                                std::string_view data) {
  errorMessage_ = message;
  if (path != nullptr) errorMessage_ += "\nFile: " + NarrowSdText(path);
  if (!data.empty()) errorMessage_.append("\nData: ").append(data);
}

void CSettingData::SetErrorMessage(const char* message, const char16_t* path, const char* data) {
  const auto id = reinterpret_cast<std::uintptr_t>(message);
  SetErrorText(id < 0x10000 ? MessageText(static_cast<unsigned>(id)) : CStringA(message), path,
               data == nullptr ? std::string_view() : data);
}

// ---- Loading

int CSettingData::TakeText(std::string_view bytes, const char16_t* path) {
  SecretBuffer plain;
  if (enciphered_ != 0 && !cryptKey_.empty()) {
    CStringA message;
    if (bytes.size() > kLargestText) throw std::bad_alloc();
    if (DecodeBlowFish(cryptKey_.c_str(), BytesOf(bytes), static_cast<int>(bytes.size()), plain,
                       message) == 0) {
      SetErrorText(message, path, {});
      return 0;
    }
    bytes = plain.Bytes();
  }
  reading_ = ReadSdText(bytes, keys_);
  modified_ = reading_.repaired ? 1 : 0;
  const unsigned message = MessageIdOf(reading_.error.kind);
  if (message == 0) return 1;
  SetErrorText(MessageText(message), path, NarrowSdText(QuotedBy(reading_.error)));
  return 0;
}

int CSettingData::LoadSdText(std::string_view bytes) {
  if (loaded_ != 0) return 1;
  InitSD();
  loadFailure_ = LoadFailure::kDamaged;
  if (bytes.size() >= kShortestText && TakeText(bytes, nullptr) == 0) return 0;
  loadFailure_ = LoadFailure::kNone;
  return loaded_ = 1;
}

int CSettingData::LoadFile(const char16_t* path, int& hadContent) {
  hadContent = 0;
  if (loaded_ != 0) return 1;
  InitSD();
  loadFailure_ = LoadFailure::kUnreadable;
  std::string bytes;
  std::uint64_t size = 0;
  if (const FileError error = ReadSettings(TextOf(path), bytes, size)) {
    if (KindOf(error) == FileErrorKind::kMissing) loadFailure_ = LoadFailure::kMissing;
    if (KindOf(error) == FileErrorKind::kIsFolder) loadFailure_ = LoadFailure::kDamaged;
    SetErrorText(SystemErrorText(error), path, {});
    return 0;
  }
  if (bytes.size() < size) {
    SetErrorText(
        "File Read Error (" + std::to_string(size) + " => " + std::to_string(bytes.size()) + ")",
        path, {});
    return 0;
  }
  loadFailure_ = LoadFailure::kDamaged;
  if (bytes.size() >= kShortestText) {
    if (TakeText(bytes, path) == 0) return 0;
    hadContent = 1;
  }
  loadFailure_ = LoadFailure::kNone;
  return loaded_ = 1;
}

int CSettingData::LoadSdFile(const char16_t* dir, const char16_t* name, int useReserve) {
  if (loaded_ != 0) return 1;
  const CStringW folder = WithSeparator(TextOf(dir));
  const CStringW file = TextOf(name);
  int hadContent = 0;
  const int loaded = LoadFile((folder + file).c_str(), hadContent);
  if (loaded != 0 && hadContent != 0) return 1;
  return useReserve != 0 && LoadReserve(folder, file) != 0 ? 1 : loaded;
}

// Takes the reserve copy, when that can be loaded and is not empty, and mends the file.
int CSettingData::LoadReserve(const CStringW& folder, const CStringW& name) {
  CSettingData reserve;
  reserve.SetCryptKey(*this);
  int hadContent = 0;
  if (reserve.LoadFile((ReserveFolder(folder) + name).c_str(), hadContent) == 0) {
    // Not only missing, so not to be replaced either.
    if (loaded_ == 0 && reserve.loadFailure_ != LoadFailure::kMissing) {
      loadFailure_ = reserve.loadFailure_;
    }
    return 0;
  }
  if (hadContent == 0) return 0;
  InitSD();
  keys_ = std::move(reserve.keys_);
  reading_ = std::move(reserve.reading_);
  loaded_ = modified_ = recovered_ = 1;
  // Should that fail, the settings count as changed still, and the reserve copy stays.
  SaveFile(folder.c_str(), name.c_str());
  errorMessage_.clear();
  return 1;
}

// ---- Saving

struct CSettingData::Written {
  bool inPlace = false;  // a load finds the new text
  bool durable = false;  // and after a crash too
  CStringW rescued;      // where else the new text is, when the file is spoilt
};

void CSettingData::SaveSdText(CBuffer& bytes) const {
  if (enciphered_ == 0 || cryptKey_.empty()) {
    WriteSdText(keys_, bytes);
    return;
  }
  SecretBuffer plain;
  WriteSdText(keys_, plain);
  EncodeBlowFish(cryptKey_.c_str(), BytesOf(plain.Bytes()), plain.GetLength(), bytes);
}

CSettingData::Written CSettingData::WriteFile(const CStringW& folder, const CStringW& name) {
  const CStringW path = folder + name;
  CBuffer bytes;
  SaveSdText(bytes);
  FileError error;
  DurableFile file;
  if (!folder.empty()) error = MakeFolders(folder);
  if (!error) ClearReadOnly(path);
  if (!error) error = file.Open(path);
  if (!error) error = file.Write(bytes.Bytes());
  if (!error) error = file.Commit();
  if (error) {
    SetErrorText(SystemErrorText(error), path.c_str(), NarrowSdText(file.RescuedContent()));
  }
  return {file.IsReplaced(), !error, file.RescuedContent()};
}

int CSettingData::SaveFile(const char16_t* dir, const char16_t* name) {
  if (modified_ == 0) return 1;
  const Written written = WriteFile(WithSeparator(TextOf(dir)), TextOf(name));
  if (written.durable) modified_ = 0;
  return written.inPlace ? 1 : 0;
}

// What could not be loaded may still be there to be saved by hand. Where there was nothing, there
// is nothing to lose.
bool CSettingData::MayReplaceReserve(const CStringW& path) const {
  if (loadFailure_ != LoadFailure::kMissing) return loadFailure_ == LoadFailure::kNone;
  FileInfo info;
  return KindOf(QueryFile(path, info)) == FileErrorKind::kMissing;
}

// Saves to the reserve copy and to the file; 1 when a load finds the new text.
int CSettingData::SaveBoth(const CStringW& folder, const CStringW& name, bool useReserve) {
  if (modified_ == 0) return 1;
  const CStringW path = folder + name;
  const CStringW reserve = ReserveFolder(folder) + name;
  bool reserveSaved = false;
  if (useReserve && MayReplaceReserve(reserve)) {
    reserveSaved = WriteFile(ReserveFolder(folder), name).durable;
  }
  const Written written = WriteFile(folder, name);
  if (written.durable) modified_ = 0;
  if (written.inPlace) return 1;
  if (!reserveSaved) return 0;
  if (!written.rescued.empty()) RemoveFile(written.rescued);
  if (!DuplicateFile(reserve, path)) return 1;
  if (!RemoveFile(path)) {
    FlushFolder(folder);
    return 1;
  }
  return HidesReserve(path) ? 0 : 1;
}

// Whether a file that could not be removed is loaded before its reserve copy.
bool CSettingData::HidesReserve(const CStringW& path) const {
  CSettingData hiding;
  hiding.SetCryptKey(*this);
  int hadContent = 0;
  if (hiding.LoadFile(path.c_str(), hadContent) != 0) return hadContent != 0;
  return hiding.loadFailure_ == LoadFailure::kUnreadable;  // now, but perhaps not the next time
}

int CSettingData::SaveSdFile(const char16_t* dir, const char16_t* name, int useReserve,
                             IfErrAsk ask, int allowTempSave, const char* ignorePrompt,
                             CStringA* errorText, CWnd* parent) {
  const CStringW folder = WithSeparator(TextOf(dir));
  const CStringW file = TextOf(name);
  errorMessage_.clear();
  while (SaveBoth(folder, file, useReserve != 0) == 0) {
    const CStringA message = MessageText(kMessageNotSaved) + "\n" + errorMessage_;
    // Who does not want to go on without saving after all is asked the first question again.
    Answer answer;
    do {
      answer = AskAfterFailure(parent, ask, message);
    } while (answer == Answer::kContinue && !ConfirmContinue(parent, ignorePrompt));
    if (answer == Answer::kRetry) continue;
    if (answer != Answer::kContinue) {
      if (errorText != nullptr) *errorText = message;
      return 0;
    }
    const CStringW rescue = TemporaryFolder();
    const CStringW rescueName = file + TimeSuffix();
    if (allowTempSave != 0 && !rescue.empty() && WriteFile(rescue, rescueName).inPlace) {
      TellSavedElsewhere(parent, rescue + rescueName, folder + file);
    }
    return 1;
  }
  return 1;
}

}  // namespace lumr
