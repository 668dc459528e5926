#include "usageerror.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "safetext.h"

namespace lumr::tool {

namespace {

// CLI11 tells what it found in English sentences only. "%" stands for a text that differs; the
// first row that fits counts. A sentence without a row is told as it is.
struct SentenceRow {
  std::string_view sentence;
  Say what;
};
constexpr SentenceRow kSentences[] = {
    {"The following argument was not expected: %", Say::kExtraArguments},
    {"The following arguments were not expected: %", Say::kExtraArguments},
    {"Could not convert: % = %", Say::kOptionValue},
    {"A subcommand is required", Say::kCommandMissing},
    {"%: Value % not in range % to %", Say::kOptionRange},
    {"%: % not in {%}", Say::kOptionChoice},
    {"%: At Most % required but received %", Say::kOptionTooOften},
    {"%: % required % missing", Say::kOptionValueMissing},
    {"%: % required  missing", Say::kOptionValueMissing},
    {"% requires %", Say::kOptionNeeds},
    {"% excludes %", Say::kOptionExcludes},
    {"% is required", Say::kArgumentMissing},
};
constexpr std::size_t kMostParts = 4;

using Parts = std::array<std::string, kMostParts>;

// What stands where the sentence of a row has its signs; false when the text is another one.
bool Fits(std::string_view sentence, std::string_view text, Parts& parts) {
  std::size_t sign = sentence.find('%');
  if (sign == sentence.npos) return text == sentence;
  if (text.substr(0, sign) != sentence.substr(0, sign)) return false;
  text.remove_prefix(sign);
  for (std::size_t count = 0; sign != sentence.npos && count < kMostParts; ++count) {
    const std::size_t next = sentence.find('%', sign + 1);
    const std::size_t literal = next == sentence.npos ? next : next - sign - 1;
    const std::string_view behind = sentence.substr(sign + 1, literal);
    std::size_t end = text.size();
    if (next != sentence.npos) {
      end = text.find(behind);
      if (end == text.npos) return false;
    } else if (!text.ends_with(behind)) {
      return false;
    } else {
      end -= behind.size();
    }
    parts[count] = SafeLine(text.substr(0, end));
    text.remove_prefix(end + behind.size());
    sign = next;
  }
  return true;
}

const CLI::App& InnermostCommand(const CLI::App& app) {
  const CLI::App* command = &app;
  while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
  return *command;
}

// What could not be understood, as it was typed.
std::string UnknownArguments(const CLI::App& app) {
  std::string joined;
  for (const std::string& argument : app.remaining(true)) {
    joined += (joined.empty() ? "" : " ") + argument;
  }
  return SafeLine(joined);
}

// The word in the place of a command.
std::string UnknownCommand(const CLI::App& app) {
  for (const std::string& word : InnermostCommand(app).remaining()) {
    if (!word.starts_with('-')) return SafeLine(word);
  }
  return {};
}

std::string Sentence(const CLI::App& app, std::string_view text) {
  for (const SentenceRow& row : kSentences) {
    Parts parts;
    if (!Fits(row.sentence, text, parts)) continue;
    if (row.what == Say::kExtraArguments) parts[0] = UnknownArguments(app);
    if (row.what == Say::kCommandMissing) {
      const std::string word = UnknownCommand(app);
      if (!word.empty()) return Text(Say::kUnknownCommand, {word});
    }
    return Text(row.what, {parts[0], parts[1], parts[2], parts[3]});
  }
  return SafeLine(text);
}

}  // namespace

int TellUsage(Session& session, const CLI::App& app, const CLI::ParseError& error) {
  std::string name = "lumr";
  for (const CLI::App* command = &app; !command->get_subcommands().empty();) {
    command = command->get_subcommands().front();
    name += ' ' + command->get_name();
  }
  session.Tell({}, Say::kUsageError, {Sentence(app, error.what())});
  session.Tell({}, Say::kTryHelp, {name});
  return kFailed;
}

}  // namespace lumr::tool
