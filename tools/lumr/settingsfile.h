// Setting data files as the commands read and write them.
#pragma once

#include <string>
#include <string_view>

#include "cipherkey.h"
#include "lumrmisc/settings/settingdata.h"
#include "session.h"

namespace lumr::tool {

// A file as its beginning and size show it: without content; a text, which begins with a byte-order
// mark or a key; enciphered, which shows nothing but whole blocks; or damaged.
enum class SettingsForm { kEmpty, kText, kEnciphered, kDamaged };

struct SettingsBytes {
  std::string bytes;
  SettingsForm form = SettingsForm::kEmpty;
};

// Reads a file or standard input ("-"). False after telling why not.
bool ReadSettings(Session& session, const std::string& file, SettingsBytes& settings);

// The text of a file. plain is where it is deciphered to; the view is of that or of the bytes. A
// damaged file is taken for an enciphered one when a key is given. False after telling why not.
bool SettingsText(Session& session, KeySource& keys, const std::string& file,
                  const SettingsBytes& settings, CBuffer& plain, std::string_view& text);

// Loads a file to be looked at: neither it nor its reserve copy is touched. Gives its form;
// kDamaged after telling what is wrong.
SettingsForm LoadSettings(Session& session, KeySource& keys, const std::string& file,
                          CSettingData& data);

// A file that is to be changed, with its reserve copy when it has one or is to have one.
class SettingsTarget {
 public:
  SettingsTarget(Session& session, std::string file);

  void MakeReserve() { useReserve_ = true; }
  // Loads it, from the reserve copy where that is needed; with create a missing file is an empty
  // one. False after telling why not.
  bool Load(KeySource& keys, bool create, CSettingData& data);
  bool IsEnciphered() const { return isEnciphered_; }
  // Saves what has changed, and with --json says whether that was anything. False after telling why
  // not.
  bool Save(CSettingData& data);

 private:
  bool FindForm(bool exists, bool hasReserve);
  bool TellLoadFailure(const CSettingData& data);

  Session& session_;
  std::string file_;
  CStringW folder_;
  CStringW name_;
  CStringW reserve_;
  bool useReserve_ = false;
  bool isEnciphered_ = false;
};

// What is wrong in a line of a text, for people, and its name for programs.
std::string DefectText(const SdDefect& defect);
const char* DefectName(SdDefectKind kind);

// UTF-8 of an argument in UTF-16; false after telling that it is none.
bool Widen(Session& session, const std::string& utf8, CStringW& wide);

}  // namespace lumr::tool
