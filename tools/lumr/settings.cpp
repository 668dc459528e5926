// lumr settings: setting data files, entry by entry.
#include <string>
#include <vector>

#include "json.h"
#include "lumrmisc/platform/terminal.h"
#include "safetext.h"
#include "settingscommands.h"
#include "subcommands.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

// ---- Options

void DeclareFile(CLI::App& command, SettingsOptions& options) {
  command.add_option("FILE", options.file, Text(Say::kSettingsFile))->required()->type_name("");
  options.keys.Declare(command);
}

void DeclareFiles(CLI::App& command, SettingsOptions& options) {
  command.add_option("FILE", options.files, Text(Say::kSettingsFiles))->required()->type_name("");
  options.keys.Declare(command);
}

void DeclareKey(CLI::App& command, SettingsOptions& options) {
  DeclareFile(command, options);
  command.add_option("KEY", options.key, Text(Say::kSettingsKey))->required()->type_name("");
}

void DeclareGet(CLI::App& command, SettingsOptions& options) {
  DeclareKey(command, options);
  command.add_option("NAME", options.name, Text(Say::kSettingsName))->required()->type_name("");
}

void DeclareSet(CLI::App& command, SettingsOptions& options) {
  DeclareGet(command, options);
  command.add_option("VALUE", options.value, Text(Say::kSettingsValue))->required()->type_name("");
  command.add_flag("--create", options.create, Text(Say::kSettingsCreate));
  command.add_flag("--reserve", options.reserve, Text(Say::kSettingsReserve));
}

void DeclareUnset(CLI::App& command, SettingsOptions& options) {
  DeclareKey(command, options);
  command.add_option("NAME", options.name, Text(Say::kSettingsUnsetName))->type_name("");
}

void DeclareList(CLI::App& command, SettingsOptions& options) {
  DeclareFile(command, options);
  command.add_option("KEY", options.key, Text(Say::kSettingsListKey))->type_name("");
}

void DeclareDiff(CLI::App& command, SettingsOptions& options) {
  DeclareFiles(command, options);
  command.get_option("FILE")->expected(2);
}

void DeclareCipher(CLI::App& command, SettingsOptions& options) {
  DeclareFiles(command, options);
  command.add_option("-o,--output", options.output, Text(Say::kSettingsOutput))->type_name("FILE");
}

// ---- Commands

// What the command line names, in UTF-16.
struct Place {
  CStringW key, name, value;
};

bool FindPlace(Session& session, const SettingsOptions& options, Place& place) {
  return Widen(session, options.key, place.key) && Widen(session, options.name, place.name) &&
         Widen(session, options.value, place.value);
}

void TellAbsent(Session& session, const SettingsOptions& options, bool isKey) {
  session.Tell(options.file, isKey ? Say::kNoSuchKey : Say::kNoSuchEntry,
               {SafeLine(options.key), SafeLine(options.name)});
  session.Raise(kLost);
}

void RunGet(Session& session, SettingsOptions& options) {
  Place place;
  CSettingData data;
  if (!FindPlace(session, options, place)) return;
  if (LoadSettings(session, options.keys, options.file, data) == SettingsForm::kDamaged) return;
  const CSettingDataPair* const pair = data.FindPair(place.key, place.name);
  if (pair == nullptr) return TellAbsent(session, options, data.FindKey(place.key) == nullptr);
  const std::string value = Utf8(pair->GetValue());
  if (session.json) {
    session.Write(JsonLine({{"file", JsonText(options.file)},
                            {"key", JsonText(Utf8(data.FindKey(place.key)->Name()))},
                            {"name", JsonText(Utf8(pair->Name()))},
                            {"value", JsonText(value)}}));
    return;
  }
  // To a program as it is; a terminal would obey its control characters.
  std::string shown;
  if (IsTerminal(StandardStream::kOutput)) AppendSafe(value, SafeForm::kLines, shown);
  session.Write((shown.empty() ? value : shown) + '\n');
}

void RunSet(Session& session, SettingsOptions& options) {
  Place place;
  CSettingData data;
  SettingsTarget target(session, options.file);
  if (!FindPlace(session, options, place)) return;
  if (!target.Load(options.keys, options.create, data)) return;
  if (data.SetValue(place.key, place.name, place.value) == 0) {
    session.Tell(options.file, Say::kRefusedName);
    return session.Raise(kFailed);
  }
  if (options.reserve) target.MakeReserve();
  target.Save(data);
}

void RunUnset(Session& session, SettingsOptions& options) {
  Place place;
  CSettingData data;
  SettingsTarget target(session, options.file);
  if (!FindPlace(session, options, place)) return;
  if (!target.Load(options.keys, false, data)) return;
  const bool isKey = options.name.empty();
  const int removed = isKey ? data.RemoveKey(place.key, 0) : data.RemoveName(place.key, place.name);
  if (removed == 0) {
    return TellAbsent(session, options, isKey || data.FindKey(place.key) == nullptr);
  }
  target.Save(data);
}

void PrintKeyAsJson(Session& session, const std::string& file, const CSettingDataKey& key) {
  const Json start = {{"file", JsonText(file)}, {"key", JsonText(Utf8(key.Name()))}};
  if (key.GetPairList().Count() == 0) session.Write(JsonLine(start));
  for (int i = 0; i < key.GetPairList().Count(); ++i) {
    const CSettingDataPair& pair = *key.GetPairList().At(i);
    Json entry = start;
    entry["name"] = JsonText(Utf8(pair.Name()));
    entry["value"] = JsonText(Utf8(pair.GetValue()));
    session.Write(JsonLine(entry));
  }
}

void RunList(Session& session, SettingsOptions& options) {
  Place place;
  CSettingData data;
  if (!FindPlace(session, options, place)) return;
  if (LoadSettings(session, options.keys, options.file, data) == SettingsForm::kDamaged) return;
  if (!options.key.empty() && data.FindKey(place.key) == nullptr) {
    return TellAbsent(session, options, true);
  }
  for (int i = 0; i < data.GetKeyCount(); ++i) {
    const CSettingDataKey& key = *data.GetKeyAt(i);
    if (!options.key.empty() && &key != data.FindKey(place.key)) continue;
    if (session.json) {
      PrintKeyAsJson(session, options.file, key);
    } else {
      session.Write(KeyLine(key.Name()) + '\n');
      for (int p = 0; p < key.GetPairList().Count(); ++p) {
        session.Write(EntryLine(*key.GetPairList().At(p)) + '\n');
      }
    }
  }
}

constexpr Subcommand<SettingsOptions> kRows[] = {
    {"get", Say::kSettingsGet, DeclareGet, RunGet},
    {"set", Say::kSettingsSet, DeclareSet, RunSet},
    {"unset", Say::kSettingsUnset, DeclareUnset, RunUnset},
    {"list", Say::kSettingsList, DeclareList, RunList},
    {"check", Say::kSettingsCheck, DeclareFiles, RunSettingsCheck},
    {"diff", Say::kSettingsDiff, DeclareDiff, RunSettingsDiff},
    {"encrypt", Say::kSettingsEncrypt, DeclareCipher, RunSettingsEncrypt},
    {"decrypt", Say::kSettingsDecrypt, DeclareCipher, RunSettingsDecrypt},
};

}  // namespace

Runner AddSettings(CLI::App& command) {
  return AddSubcommands<SettingsOptions>(command, kRows);
}

}  // namespace lumr::tool
