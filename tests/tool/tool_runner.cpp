#include "tool/tool_runner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace lumr::test {

namespace {

std::string Program() {
  return std::filesystem::absolute(LUMR_PROGRAM).make_preferred().string();
}

// Paths as POSIX has them.
std::string WithSlashes(std::string_view text) {
  std::string slashes(text);
  std::replace(slashes.begin(), slashes.end(),
               static_cast<char>(std::filesystem::path::preferred_separator), '/');
  return slashes;
}

}  // namespace

ToolRunner::ToolRunner() : before_(std::filesystem::current_path().string()) {
  std::filesystem::current_path(std::filesystem::path(folder_.Path()));
}

ToolRunner::~ToolRunner() {
  std::filesystem::current_path(before_);
}

RunResult ToolRunner::Run(std::string_view arguments, std::string_view input) const {
  // Names of its own for each run: a handle that outlives its process, as on Windows some do for
  // a moment, does not stand in the way of the next one.
  const std::string number = std::to_string(++runs_);
  Write(".in" + number, input);
  const bool chosen = arguments.find("--lang") != std::string_view::npos;
  // The command line must not begin with a quotation mark: cmd.exe would take two away.
  return System("cd . && \"" + Program() + "\" " + std::string(arguments) +
                    (chosen ? "" : " --lang en") + " <.in" + number + " >.out" + number +
                    " 2>.err" + number,
                number);
}

void ToolRunner::Check(std::initializer_list<Step> steps, Out out) const {
  for (const Step& step : steps) {
    if (!CanBeTyped(step.arguments)) continue;
    SCOPED_TRACE(testing::Message() << step.arguments << '\n' << step.input.substr(0, 2000));
    const RunResult result = Run(step.arguments, step.input);
    EXPECT_EQ(result.status, step.status) << result.err;
    if (out == Out::kWhole) {
      EXPECT_EQ(WithSlashes(result.out), WithSlashes(step.out));
    } else {
      EXPECT_NE(result.out.find(step.out), std::string::npos) << result.out;
      EXPECT_EQ(UnsafeIn(result.out), "");
    }
    EXPECT_EQ(UnsafeIn(result.err), "");
    EXPECT_EQ(result.err.empty(), step.err.empty()) << result.err;
    EXPECT_NE(result.err.find(step.err), std::string::npos) << result.err;
  }
}

RunResult ToolRunner::Shell(std::string line) const {
  const std::string_view mark = "LUMR";
  line.replace(line.find(mark), mark.size(), '"' + Program() + '"');
  return System(line, {});
}

std::optional<std::string> ToolRunner::OnTerminal(int columns, const std::string& arguments) const {
  if (std::filesystem::path::preferred_separator != '/') return std::nullopt;
  const std::string end = " /dev/null </dev/null >.out 2>.err";
  if (System("command -v script >.out 2>.err && script -qec true" + end, {}).status != 0) {
    return std::nullopt;
  }
  std::string shown = Shell("COLORTERM=truecolor NO_COLOR= TERM=xterm script -qec 'stty cols " +
                            std::to_string(columns) + "; LUMR " + arguments + "'" + end)
                          .out;
  std::erase(shown, '\r');
  return shown;
}

RunResult ToolRunner::System(const std::string& line, const std::string& number) const {
  const int status = std::system(line.c_str());
  // POSIX keeps the exit status in the high byte.
  return {status > 255 ? status / 256 : status, Read(".out" + number), Read(".err" + number)};
}

void ToolRunner::Write(const std::string& name, std::string_view content) const {
  if (WriteFileDurably(folder_ / PathFromUtf8(name), content)) std::abort();
}

std::string ToolRunner::Read(const std::string& name) const {
  return ContentOf(folder_ / PathFromUtf8(name));
}

std::size_t ToolRunner::FileCount() const {
  std::vector<CStringW> names;
  if (ListFolder(folder_.Path(), names)) return 0;
  return static_cast<std::size_t>(
      std::count_if(names.begin(), names.end(), [](const CStringW& name) {
        return name.compare(0, 3, u".in") != 0 && name.compare(0, 4, u".out") != 0 &&
               name.compare(0, 4, u".err") != 0;
      }));
}

bool CanBeTyped(std::string_view arguments) {
  return std::filesystem::path::preferred_separator == '/' ||
         std::all_of(arguments.begin(), arguments.end(), [](char c) { return (c & 0x80) == 0; });
}

std::string Contents(const std::filesystem::path& path) {
  return ContentOf(PathFromUtf8(path.string()));
}

std::vector<Json> JsonLines(std::string_view text) {
  std::vector<Json> objects;
  while (!text.empty()) {
    const std::size_t feed = text.find('\n');
    objects.push_back(Json::parse(text.substr(0, feed)));
    text.remove_prefix(feed == std::string_view::npos ? text.size() : feed + 1);
  }
  return objects;
}

std::string UnsafeIn(std::string_view text) {
  try {
    static_cast<void>(Json(std::string(text)).dump());  // refuses what is no UTF-8
  } catch (const Json::exception& error) {
    return error.what();
  }
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool isC1 = byte == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    if (isC1 || byte == 0x7F || (byte < 0x20 && byte != '\n' && byte != '\t')) {
      return "control character at " + std::to_string(i) + ": " +
             Json(std::string(text.substr(i < 20 ? 0 : i - 20, 40)))
                 .dump(-1, ' ', true, Json::error_handler_t::replace);
    }
  }
  return {};
}

}  // namespace lumr::test
