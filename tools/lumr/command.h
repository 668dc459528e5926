// The tool's commands: each source file of a command family gives the functions that declare
// its options and hand back what runs them.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "session.h"

namespace lumr::tool {

// Runs a command after its options have been read.
using Runner = std::function<void(Session&)>;

Runner AddShow(CLI::App& command);
Runner AddDetect(CLI::App& command);
Runner AddConvert(CLI::App& command);
Runner AddEncode(CLI::App& command);
Runner AddDecode(CLI::App& command);
Runner AddCharsets(CLI::App& command);
Runner AddLinks(CLI::App& command);
Runner AddWrap(CLI::App& command);
Runner AddUnwrap(CLI::App& command);
Runner AddSettings(CLI::App& command);
Runner AddUsers(CLI::App& command);
Runner AddDigest(CLI::App& command);
Runner AddCipher(CLI::App& command);
Runner AddHtml(CLI::App& command);
Runner AddGrep(CLI::App& command);
Runner AddReply(CLI::App& command);
Runner AddCompose(CLI::App& command);
Runner AddCheck(CLI::App& command);
Runner AddHeader(CLI::App& command);
Runner AddAddress(CLI::App& command);
Runner AddDate(CLI::App& command);

// Whether this build reads mail: without GMime it does not.
extern const bool kHasMailCommands;

}  // namespace lumr::tool
