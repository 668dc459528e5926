// How the help of a command looks.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace lumr::tool {

// Options with the name of their argument and no more: which of them exclude or need one another
// is said where they meet, and in the user's language. Descriptions are turned at the width of the
// terminal by the rules of Japanese.
class HelpFormat : public CLI::Formatter {
 public:
  HelpFormat();

  std::string make_option_opts(const CLI::Option* option) const override;
  std::string make_option_desc(const CLI::Option* option) const override;
  std::string make_option_usage(const CLI::Option* option) const override;
  std::string make_subcommand(const CLI::App* command) const override;

 private:
  std::string Turned(const std::string& description) const;

  int columns_;  // of a description
};

}  // namespace lumr::tool
