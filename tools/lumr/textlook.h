// How texts look on standard output: where lines are turned, and what a terminal is told.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "lumrmisc/editor/colors.h"
#include "lumrmisc/editor/metrics.h"
#include "session.h"

namespace lumr::tool {

enum class Colors { kNone, k256, kTrue };

struct TextLook {
  int columns = 0;      // where lines are turned; 0: they stay as they are
  bool styled = false;  // for a terminal: links can be clicked
  Colors shades = Colors::kNone;
  CEditorMetrics metrics;  // ready for UTF-16
  CEditorColor colors;
};

struct LookOptions {
  int width = 0;  // 0: not given
  std::string settings;
};

// Declares --width and --settings.
std::shared_ptr<LookOptions> AddLookOptions(CLI::App& command);

// The look for standard output by the options, the settings and the terminal. False after telling
// why the settings cannot be read.
bool MakeLook(Session& session, const LookOptions& options, TextLook& look);

// The columns of the widest line on a terminal of so many: a closing mark may hang over by two.
int ColumnsOfTerminal(int width);

}  // namespace lumr::tool
