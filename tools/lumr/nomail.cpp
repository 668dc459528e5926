// Stands in for the mail commands in a build without GMime.
#include <memory>
#include <string>
#include <vector>

#include "command.h"
#include "grep.h"

namespace lumr::tool {

const bool kHasMailCommands = false;

namespace {

Runner AddMissing(CLI::App& command) {
  const auto ignored = std::make_shared<std::vector<std::string>>();
  command.add_option("MAIL", *ignored, Text(Say::kShowMail))->type_name("");
  command.allow_extras();
  return [ignored](Session& session) {
    session.Tell({}, Say::kNoMailCommands);
    session.Raise(kFailed);
  };
}

}  // namespace

Runner AddShow(CLI::App& command) {
  return AddMissing(command);
}

Runner AddReply(CLI::App& command) {
  return AddMissing(command);
}

Runner AddCheck(CLI::App& command) {
  return AddMissing(command);
}

void GrepMail(Session& session, const std::string&, Grep&) {
  session.Tell({}, Say::kNoMailCommands);
  session.Raise(kFailed);
}

}  // namespace lumr::tool
