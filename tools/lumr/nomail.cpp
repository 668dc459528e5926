// Stands in for the mail commands in a build without GMime.
#include <memory>
#include <string>
#include <vector>

#include "command.h"

namespace lumr::tool {

const bool kHasMailCommands = false;

Runner AddShow(CLI::App& command) {
  const auto ignored = std::make_shared<std::vector<std::string>>();
  command.add_option("MAIL", *ignored, Text(Say::kShowMail))->type_name("");
  return [ignored](Session& session) {
    session.Tell({}, Say::kNoMailCommands);
    session.Raise(kFailed);
  };
}

}  // namespace lumr::tool
