#include "settingsfile.h"

#include <algorithm>
#include <utility>

#include "input.h"
#include "json.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/charset/detect.h"
#include "lumrmisc/crypto/blowfish.h"
#include "safetext.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

// What is shorter is an empty file, enciphered or not.
constexpr std::size_t kShortestText = 5;
constexpr std::size_t kCipherBlock = 8;

struct DefectRow {
  SdDefectKind kind;
  const char* name;
  Say what;
};
constexpr DefectRow kDefects[] = {
    {SdDefectKind::kBadKeyLine, "bad-key-line", Say::kDefectKeyLine},
    {SdDefectKind::kBadEntry, "bad-entry", Say::kDefectEntry},
    {SdDefectKind::kZeroUnit, "zero-unit", Say::kDefectZero},
    {SdDefectKind::kNoKey, "no-key", Say::kDefectNoKey},
    {SdDefectKind::kNoStart, "no-start", Say::kDefectNoStart},
    {SdDefectKind::kNoEnd, "no-end", Say::kDefectNoEnd},
    {SdDefectKind::kKeyTwice, "key-twice", Say::kDefectKeyTwice},
    {SdDefectKind::kNameTwice, "name-twice", Say::kDefectNameTwice},
};

const DefectRow& RowOf(SdDefectKind kind) {
  return *std::find_if(std::begin(kDefects), std::end(kDefects) - 1,
                       [kind](const DefectRow& row) { return row.kind == kind; });
}

SettingsForm FormOf(std::string_view bytes) {
  if (bytes.size() < kShortestText) return SettingsForm::kEmpty;
  constexpr std::string_view kTextStarts[] = {
      {"\xFF\xFE", 2}, {"[\0", 2}, {"\r\0", 2}, {"\n\0", 2}};
  for (const std::string_view start : kTextStarts) {
    if (bytes.starts_with(start)) return SettingsForm::kText;
  }
  const bool isZero = bytes.find_first_not_of('\0') == std::string_view::npos;
  return isZero || bytes.size() % kCipherBlock != 0 ? SettingsForm::kDamaged
                                                    : SettingsForm::kEnciphered;
}

// Whether these are the bytes of ASCII or UTF-8: a file of another program.
bool IsByteText(std::string_view bytes) {
  const auto isText = [](char c) {
    return (c & 0x80) != 0 || c >= ' ' || (c >= '\t' && c <= '\r');
  };
  const auto isHigh = [](char c) { return (c & 0x80) != 0; };
  return std::all_of(bytes.begin(), bytes.end(), isText) &&
         (IsUTF8(bytes) != 0 || std::none_of(bytes.begin(), bytes.end(), isHigh));
}

// Whether the bytes are text of another kind than that of a setting data file.
bool IsOtherText(const SettingsBytes& settings) {
  return settings.form != SettingsForm::kText && settings.form != SettingsForm::kEmpty &&
         IsByteText(settings.bytes);
}

bool TellOtherText(Session& session, const std::string& file) {
  session.Tell(file, Say::kNotSettings);
  session.Raise(kLost);
  return false;
}

// As much of a defect's text as helps to find it.
std::string Excerpt(std::u16string_view text) {
  constexpr std::size_t kMost = 60;  // UTF-16 units
  if (text.size() <= kMost) return SafeLine(Utf8(text));
  return SafeLine(Utf8(text.substr(0, kMost)) + "\xE2\x80\xA6");
}

}  // namespace

const char* DefectName(SdDefectKind kind) {
  return RowOf(kind).name;
}

std::string DefectText(const SdDefect& defect) {
  const std::string text =
      Text(RowOf(defect.kind).what, {Excerpt(defect.text), Excerpt(defect.key)});
  return defect.line == 0 ? text : Text(Say::kDefectAt, {std::to_string(defect.line), text});
}

bool Widen(Session& session, const std::string& utf8, CStringW& wide) {
  CBuffer buffer;
  const long status = ConvertToOtherCodePage2(65001, utf8, 1200, buffer);
  wide = buffer.Units();
  if (status == 0) return true;
  session.Tell({}, Say::kNotUtf8, {SafeLine(utf8)});
  session.Raise(kFailed);
  return false;
}

bool ReadSettings(Session& session, const std::string& file, SettingsBytes& settings) {
  settings.bytes.clear();
  if (const FileError error = ReadAll(file, settings.bytes)) {
    session.TellUnreadable(file, error);
    return false;
  }
  settings.form = FormOf(settings.bytes);
  return true;
}

bool SettingsText(Session& session, KeySource& keys, const std::string& file,
                  const SettingsBytes& settings, CBuffer& plain, std::string_view& text) {
  text = settings.bytes;
  const bool mayBeEnciphered = settings.form == SettingsForm::kDamaged && keys.IsGiven();
  if (!keys.IsGiven() && IsOtherText(settings)) return TellOtherText(session, file);
  if (settings.form != SettingsForm::kEnciphered && !mayBeEnciphered) return true;
  const Secret* const key = keys.Get(session);
  if (key == nullptr) {
    session.Tell(file, Say::kNotDeciphered);
    return false;
  }
  CStringA message;
  if (DecodeBlowFish(key->Text(), reinterpret_cast<const unsigned char*>(text.data()),
                     static_cast<int>(text.size()), plain, message) == 0) {
    session.Tell(file, LibraryText(message));
    session.Raise(kLost);
    return false;
  }
  text = plain.Bytes();
  return true;
}

SettingsForm LoadSettings(Session& session, KeySource& keys, const std::string& file,
                          CSettingData& data) {
  SettingsBytes settings;
  CBuffer plain;
  std::string_view text;
  if (!ReadSettings(session, file, settings) ||
      !SettingsText(session, keys, file, settings, plain, text)) {
    return SettingsForm::kDamaged;
  }
  if (data.LoadSdText(text) != 0) return settings.form;
  session.Tell(file, DefectText(data.GetReading().error));
  session.Raise(kLost);
  return SettingsForm::kDamaged;
}

SettingsTarget::SettingsTarget(Session& session, std::string file)
    : session_(session), file_(std::move(file)) {
  const CStringW path = PathFromUtf8(file_);
  folder_ = FolderOfPath(path);
  name_ = NameOfPath(path);
  reserve_ = JoinPath(JoinPath(folder_, u"Reserve"), name_);
  useReserve_ = PathExists(reserve_);
}

// What the file does not show any more, its reserve copy tells.
bool SettingsTarget::FindForm(bool exists, bool hasReserve) {
  SettingsBytes settings;
  if (exists && !ReadSettings(session_, file_, settings)) return false;
  if (!hasReserve && IsOtherText(settings)) return TellOtherText(session_, file_);
  const bool isTelling =
      settings.form == SettingsForm::kText || settings.form == SettingsForm::kEnciphered;
  if (!isTelling && hasReserve && !ReadSettings(session_, PathToUtf8(reserve_), settings)) {
    return false;
  }
  isEnciphered_ = settings.form == SettingsForm::kEnciphered;
  return true;
}

bool SettingsTarget::TellLoadFailure(const CSettingData& data) {
  const SdDefect& defect = data.GetReading().error;
  session_.Tell(file_, defect.kind == SdDefectKind::kNone ? LibraryText(data.GetErrorMessage())
                                                          : DefectText(defect));
  session_.Raise(kLost);
  return false;
}

bool SettingsTarget::Load(KeySource& keys, bool create, CSettingData& data) {
  if (file_ == "-") {
    session_.Tell({}, Say::kNeedsFile);
    session_.Raise(kFailed);
    return false;
  }
  const bool exists = PathExists(folder_ + name_);
  const bool hasReserve = PathExists(reserve_);
  const bool isNew = !exists && !hasReserve && create;
  if (!isNew && !exists && !hasReserve) {
    session_.TellUnreadable(file_, ErrorOf(FileErrorKind::kMissing));
    return false;
  }
  if (!FindForm(exists, hasReserve)) return false;
  isEnciphered_ = isEnciphered_ || (isNew && keys.IsGiven());
  if (isEnciphered_) {
    const Secret* const key = keys.Get(session_);
    if (key == nullptr) return false;
    data.SetCryptKey(1, key->Text());
  }
  if (isNew) {
    data.LoadNone();
    return true;
  }
  if (data.LoadSdFile(folder_.c_str(), name_.c_str(), hasReserve ? 1 : 0) == 0) {
    return TellLoadFailure(data);
  }
  if (data.IsRecovered() != 0) session_.Tell(file_, Say::kRecovered);
  return true;
}

bool SettingsTarget::Save(CSettingData& data) {
  CStringA message;
  const bool changed = data.IsModified() != 0;
  if (data.SaveSdFile(folder_.c_str(), name_.c_str(), useReserve_ ? 1 : 0, kIfErrReturn, 0, nullptr,
                      &message, nullptr) == 0) {
    session_.Tell(file_, LibraryText(message));
    session_.Raise(kFailed);
    return false;
  }
  if (session_.json) {
    session_.Write(JsonLine({{"file", JsonText(file_)}, {"changed", changed}}));
  }
  if (data.IsModified() == 0) return true;
  session_.Tell(file_, Say::kSavedInPart, {LibraryText(data.GetErrorMessage())});
  session_.Raise(kFailed);
  return false;
}

}  // namespace lumr::tool
