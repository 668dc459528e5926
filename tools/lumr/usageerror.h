// What is wrong with a command line, in the user's language.
#pragma once

#include <CLI/CLI.hpp>

#include "session.h"

namespace lumr::tool {

// Says what the option parser found wrong, and where help is. Gives the exit status.
int TellUsage(Session& session, const CLI::App& app, const CLI::ParseError& error);

}  // namespace lumr::tool
