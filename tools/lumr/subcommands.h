// Commands of commands: "lumr settings get". A family is a table of rows that share one set of
// options.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "command.h"

namespace lumr::tool {

template <typename Options>
struct Subcommand {
  const char* name;
  Say help;
  void (*declare)(CLI::App& command, Options& options);
  void (*run)(Session& session, Options& options);
};

// Declares the rows below a command, each with the options that all commands have.
template <typename Options>
Runner AddSubcommands(CLI::App& command, std::span<const Subcommand<Options>> rows) {
  struct State {
    Options options;
    bool json = false;
    std::string language;  // has been looked at before options are read
    std::vector<CLI::App*> commands;
  };
  const auto state = std::make_shared<State>();
  command.require_subcommand(1);
  for (const Subcommand<Options>& row : rows) {
    CLI::App* const sub = command.add_subcommand(row.name, Text(row.help));
    sub->group(Text(Say::kCommands));
    row.declare(*sub, state->options);
    sub->set_help_flag("-h,--help", Text(Say::kOptHelp));
    sub->add_flag("--json", state->json, Text(Say::kOptJson));
    sub->add_option("--lang", state->language, Text(Say::kOptLang))->type_name("ja|en");
    state->commands.push_back(sub);
  }
  return [state, rows](Session& session) {
    session.json = session.json || state->json;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (state->commands[i]->parsed()) rows[i].run(session, state->options);
    }
  };
}

}  // namespace lumr::tool
