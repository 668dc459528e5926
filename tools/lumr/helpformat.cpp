#include "helpformat.h"

#include <algorithm>
#include <sstream>

#include "lumrmisc/platform/terminal.h"
#include "wraplines.h"

namespace lumr::tool {

namespace {

constexpr int kWidest = 100;    // longer lines are hard to read
constexpr int kNarrowest = 20;  // of a description
constexpr int kHanging = 2;     // a closing mark may stand behind the last column

bool TakesMany(const CLI::Option* option) {
  return option->get_expected_max() >= CLI::detail::expected_max_vector_size;
}

// Texts have line breaks of their own, for the source's sake. Between words they are spaces.
std::string OnOneLine(const std::string& text) {
  std::string line;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\n') {
      line += text[i];
      continue;
    }
    const bool isInside = !line.empty() && i + 1 < text.size();
    if (isInside && ((line.back() & 0x80) == 0 || (text[i + 1] & 0x80) == 0)) line += ' ';
  }
  return line;
}

}  // namespace

HelpFormat::HelpFormat() {
  const int width = std::min(TerminalWidth(StandardStream::kOutput), kWidest);
  columns_ = std::max(width - static_cast<int>(column_width_) - kHanging, kNarrowest);
}

std::string HelpFormat::make_option_opts(const CLI::Option* option) const {
  std::string out;
  if (option->get_type_size() != 0 && !option->get_type_name().empty()) {
    out += ' ' + option->get_type_name();
  }
  if (TakesMany(option)) out += " ...";
  return out;
}

std::string HelpFormat::make_option_desc(const CLI::Option* option) const {
  return Turned(option->get_description());
}

std::string HelpFormat::make_option_usage(const CLI::Option* option) const {
  const std::string name = make_option_name(option, true);
  std::string out = name;
  for (int i = 1; i < option->get_expected_min(); ++i) out += ' ' + name;
  if (TakesMany(option)) out += "...";
  return option->get_required() ? out : '[' + out + ']';
}

std::string HelpFormat::make_subcommand(const CLI::App* command) const {
  std::ostringstream out;
  CLI::detail::format_help(out, command->get_name(), Turned(command->get_description()),
                           column_width_);
  return out.str();
}

std::string HelpFormat::Turned(const std::string& description) const {
  std::string turned;
  for (const std::string& line : TurnedLines(OnOneLine(description), columns_)) {
    turned += (turned.empty() ? "" : "\n") + line;
  }
  return turned;
}

}  // namespace lumr::tool
