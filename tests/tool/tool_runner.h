// Runs the built tool as a user does.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/scratch_folder.h"

namespace lumr::test {

using Json = nlohmann::json;

struct RunResult {
  int status;  // the exit status; a crash gives another number than 0, 1 and 2
  std::string out;
  std::string err;
};

// One run of the tool and what it must do.
struct Step {
  std::string_view arguments;
  std::string_view input = {};  // standard input
  std::string_view out = {};    // standard output, all of it, or a part
  int status = 0;
  std::string_view err = {};  // a part of standard error; empty: nothing is said
};

// A folder of its own for each test, in which the tool runs.
class ToolRunner {
 public:
  ToolRunner();
  ~ToolRunner();

  // Arguments are separated by spaces; what needs quotation marks brings its own. Messages are in
  // English unless the arguments choose.
  RunResult Run(std::string_view arguments, std::string_view input = {}) const;
  // Runs steps in their order and compares; what cannot be typed is left out.
  enum class Out { kWhole, kPart };
  void Check(std::initializer_list<Step> steps, Out out = Out::kWhole) const;
  // What a POSIX shell makes of a line in which LUMR stands for the tool; only the status and
  // standard error count.
  RunResult Shell(std::string line) const;
  // What the tool shows on a terminal of so many columns, which the program `script` of util-linux
  // gives it; nothing where there is none.
  std::optional<std::string> OnTerminal(int columns, const std::string& arguments) const;

  void Write(const std::string& name, std::string_view content) const;
  std::string Read(const std::string& name) const;
  // How many files there are besides those that hold what went in and came out.
  std::size_t FileCount() const;

 private:
  RunResult System(const std::string& line, const std::string& number) const;

  ScratchFolder folder_;
  mutable int runs_ = 0;
  std::string before_;
};

// Whether the shell hands arguments on as they stand: cmd.exe reads a command line of bytes in the
// system's code page, which may be any, so there they have to be ASCII.
bool CanBeTyped(std::string_view arguments);

// The content of a file outside the runner's folder.
std::string Contents(const std::filesystem::path& path);

std::vector<Json> JsonLines(std::string_view text);

// The first thing in text that no terminal should get: a control character other than a line
// feed or tab, or bytes that are no UTF-8. Empty when there is none.
std::string UnsafeIn(std::string_view text);

}  // namespace lumr::test
