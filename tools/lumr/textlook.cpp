#include "textlook.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "cipherkey.h"
#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/terminal.h"
#include "safetext.h"
#include "settingsfile.h"

namespace lumr::tool {

namespace {

constexpr const char* kDefaultSection = "Editor";

std::string_view Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string_view() : value;
}

bool FileExists(const std::string& name) {
  FileInfo info;
  return !QueryFile(PathFromUtf8(name), info);
}

// FILE[:section]. A colon of a drive, or one in the name of a file that is there, is no separator.
void SplitSettings(const std::string& argument, std::string& file, std::string& section) {
  file = argument;
  section = kDefaultSection;
  const std::size_t colon = argument.rfind(':');
  if (colon == std::string::npos || colon < 2 || FileExists(argument)) return;
  if (argument.find_first_of("/\\", colon) != std::string::npos) return;
  file = argument.substr(0, colon);
  section = argument.substr(colon + 1);
}

bool LoadLook(Session& session, const std::string& argument, TextLook& look) {
  std::string file, name;
  SplitSettings(argument, file, name);
  CSettingData data;
  KeySource keys;
  if (LoadSettings(session, keys, file, data) == SettingsForm::kDamaged ||
      session.Status() == kFailed) {
    session.Raise(kFailed);
    return false;
  }
  CStringW section;
  if (!Widen(session, name, section)) return false;
  if (data.FindKey(section) == nullptr) {
    session.Tell(file, Say::kNoSuchKey, {SafeLine(name)});
    session.Raise(kFailed);
    return false;
  }
  const CStringA narrow = NarrowSdText(section);
  look.metrics.GetEditorMetrics(&data, narrow.c_str(), 1);
  look.colors.GetEditorColor(&data, narrow.c_str());
  return true;
}

// What a terminal says of itself by custom (no-color.org, COLORTERM).
Colors ColorsOfTerminal() {
  if (!Environment("NO_COLOR").empty()) return Colors::kNone;
  const std::string_view depth = Environment("COLORTERM");
  return depth == "truecolor" || depth == "24bit" ? Colors::kTrue : Colors::k256;
}

}  // namespace

std::shared_ptr<LookOptions> AddLookOptions(CLI::App& command) {
  const auto options = std::make_shared<LookOptions>();
  command.add_option("--width", options->width, Text(Say::kLookWidth))
      ->check(CLI::Range(1, 1 << 20).description(""))
      ->type_name("N");
  command.add_option("--settings", options->settings, Text(Say::kLookSettings))
      ->type_name("FILE[:SECTION]");
  return options;
}

int ColumnsOfTerminal(int width) {
  return std::max(width - 2, 1);
}

bool MakeLook(Session& session, const LookOptions& options, TextLook& look) {
  look.metrics.GetEditorMetrics(nullptr, kDefaultSection, 1);
  if (!options.settings.empty() && !LoadLook(session, options.settings, look)) return false;
  const bool isTerminal = IsTerminal(StandardStream::kOutput);
  if (options.width > 0) {
    look.columns = options.width;
  } else if (look.metrics.AutoTurn == 1) {
    look.columns = look.metrics.TurnCols;
  } else if (look.metrics.AutoTurn == 2 && isTerminal) {
    look.columns = ColumnsOfTerminal(TerminalWidth(StandardStream::kOutput));
  }
  look.styled = isTerminal && Environment("TERM") != "dumb";
  if (look.styled) look.shades = ColorsOfTerminal();
  look.metrics.ChangeCodePage(CT_UNICODE);
  return true;
}

}  // namespace lumr::tool
