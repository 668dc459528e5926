// lumr settings encrypt and decrypt: a file with a key put on or taken off.
#include "settingscommands.h"

namespace lumr::tool {

namespace {

// Writes data to the output that the user names.
void WriteOutput(Session& session, const std::string& output, const CSettingData& data) {
  CBuffer bytes;
  data.SaveSdText(bytes);
  if (output == "-") return session.Write(bytes.Bytes());
  if (const FileError error = WriteFileDurably(PathFromUtf8(output), bytes.Bytes())) {
    session.TellUnwritable(output, error);
  }
}

bool IsInForm(Session& session, const std::string& file, bool isEnciphered, bool encipher) {
  if (isEnciphered != encipher) return false;
  session.Tell(file, encipher ? Say::kEncipheredAlready : Say::kPlainAlready);
  session.Raise(kFailed);
  return true;
}

void ChangeForm(Session& session, SettingsOptions& options, const std::string& file,
                bool encipher) {
  SettingsTarget target(session, file);
  CSettingData data;
  if (options.output.empty()) {
    if (!target.Load(options.keys, false, data)) return;
    if (IsInForm(session, file, target.IsEnciphered(), encipher)) return;
  } else {
    const SettingsForm form = LoadSettings(session, options.keys, file, data);
    if (form == SettingsForm::kDamaged) return;
    if (IsInForm(session, file, form == SettingsForm::kEnciphered, encipher)) return;
  }
  CSettingData changed;
  changed.CopySD(data);  // counts as changed, and so is written
  if (encipher) {
    const Secret* const key = options.keys.Get(session, true);
    if (key == nullptr) return;
    changed.SetCryptKey(1, key->Text());
  }
  if (options.output.empty()) {
    target.Save(changed);
  } else {
    WriteOutput(session, options.output, changed);
  }
}

void ChangeForms(Session& session, SettingsOptions& options, bool encipher) {
  if (!options.output.empty() && options.files.size() > 1) {
    session.Tell({}, Say::kOneOutput);
    return session.Raise(kFailed);
  }
  for (const std::string& file : options.files) ChangeForm(session, options, file, encipher);
}

}  // namespace

void RunSettingsEncrypt(Session& session, SettingsOptions& options) {
  ChangeForms(session, options, true);
}

void RunSettingsDecrypt(Session& session, SettingsOptions& options) {
  ChangeForms(session, options, false);
}

}  // namespace lumr::tool
