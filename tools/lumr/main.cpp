// lumr: what the library does, on real mail.
#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "command.h"
#include "helpformat.h"
#include "lumrmisc/platform/terminal.h"
#include "safetext.h"
#include "usageerror.h"

namespace lumr::tool {

namespace {

struct Command {
  const char* name;
  Say help;
  Say examples;
  Runner (*add)(CLI::App& command);
  bool readsMail;
};
constexpr Command kCommands[] = {
    {"show", Say::kShowHelp, Say::kShowExamples, AddShow, true},
    {"reply", Say::kReplyHelp, Say::kReplyExamples, AddReply, true},
    {"compose", Say::kComposeHelp, Say::kComposeExamples, AddCompose, false},
    {"check", Say::kCheckHelp, Say::kCheckExamples, AddCheck, true},
    {"header", Say::kHeaderHelp, Say::kHeaderExamples, AddHeader, false},
    {"address", Say::kAddressHelp, Say::kAddressExamples, AddAddress, false},
    {"date", Say::kDateHelp, Say::kDateExamples, AddDate, false},
    {"grep", Say::kGrepHelp, Say::kGrepExamples, AddGrep, false},
    {"detect", Say::kDetectHelp, Say::kDetectExamples, AddDetect, false},
    {"convert", Say::kConvertHelp, Say::kConvertExamples, AddConvert, false},
    {"encode", Say::kEncodeHelp, Say::kEncodeExamples, AddEncode, false},
    {"decode", Say::kDecodeHelp, Say::kDecodeExamples, AddDecode, false},
    {"charsets", Say::kCharsetsHelp, Say::kCharsetsExamples, AddCharsets, false},
    {"links", Say::kLinksHelp, Say::kLinksExamples, AddLinks, false},
    {"wrap", Say::kWrapHelp, Say::kWrapExamples, AddWrap, false},
    {"unwrap", Say::kUnwrapHelp, Say::kUnwrapExamples, AddUnwrap, false},
    {"html", Say::kHtmlHelp, Say::kHtmlExamples, AddHtml, false},
    {"settings", Say::kSettingsHelp, Say::kSettingsExamples, AddSettings, false},
    {"users", Say::kUsersHelp, Say::kUsersExamples, AddUsers, false},
    {"digest", Say::kDigestHelp, Say::kDigestExamples, AddDigest, false},
    {"cipher", Say::kCipherHelp, Say::kCipherExamples, AddCipher, false},
};

// Help texts are made before the options are read, so the language has to be known earlier.
std::string_view LanguageOption(const std::vector<std::string>& arguments) {
  constexpr std::string_view kOption = "--lang";
  for (std::size_t i = 1; i < arguments.size() && arguments[i] != "--"; ++i) {
    const std::string_view argument = arguments[i];
    if (argument == kOption && i + 1 < arguments.size()) return arguments[i + 1];
    if (argument.substr(0, kOption.size() + 1) == "--lang=") {
      return argument.substr(kOption.size() + 1);
    }
  }
  return {};
}

void Translate(CLI::App& app) {
  const auto formatter = std::make_shared<HelpFormat>();
  app.formatter(formatter);
  formatter->label("Usage", Text(Say::kUsage));
  formatter->label("OPTIONS", Text(Say::kOption));
  formatter->label("SUBCOMMAND", Text(Say::kCommand));
  formatter->label("Positionals", Text(Say::kArguments));
  formatter->label("REQUIRED", "");
  app.option_defaults()->group(Text(Say::kOptions));
}

void AddCommonOptions(CLI::App& app, Session& session) {
  app.set_help_flag("-h,--help", Text(Say::kOptHelp));
  app.add_flag("--json", session.json, Text(Say::kOptJson));
  app.add_option("--lang", session.language, Text(Say::kOptLang))->type_name("ja|en");
}

class Tool {
 public:
  Tool(Session& session, const std::vector<std::string>& arguments)
      : session_(session), app_(Text(Say::kAbout), "lumr") {
    Translate(app_);
    AddCommonOptions(app_, session);
    app_.set_version_flag("--version", "lumr " LUMR_VERSION, Text(Say::kOptVersion));
    app_.require_subcommand(1);
    if (!kHasMailCommands) app_.footer(Text(Say::kNoMailFooter));
    for (const Command& command : kCommands) {
      CLI::App* const sub = app_.add_subcommand(command.name, Text(command.help));
      const bool isMissing = command.readsMail && !kHasMailCommands;
      sub->group(isMissing ? "" : Text(Say::kCommands));  // an empty name hides it
      // To declare all options takes as long as many a command does.
      if (std::ranges::find(arguments, command.name) == arguments.end()) continue;
      sub->footer(Text(Say::kExamples) + ":\n" + Text(command.examples));
      runners_.push_back({sub, command.add(*sub)});
      AddCommonOptions(*sub, session);
    }
  }

  int Run(const std::vector<std::string>& arguments) {
    try {
      app_.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
    } catch (const CLI::Success& success) {  // --help, --version
      session_.Write(HelpText(success));
      return kDone;
    } catch (const CLI::ParseError& error) {
      return TellUsage(session_, app_, error);
    }
    for (const auto& [sub, run] : runners_) {
      if (sub->parsed()) run(session_);
    }
    return session_.Status();
  }

 private:
  std::string HelpText(const CLI::Success& success) {
    std::ostringstream out;
    app_.exit(success, out, out);
    return out.str();
  }

  Session& session_;
  CLI::App app_;
  std::vector<std::pair<CLI::App*, Runner>> runners_;
};

int RunTool(Session& session, const std::vector<std::string>& arguments) {
  const std::string language(LanguageOption(arguments));
  if (!ChooseLanguage(language)) {
    ChooseLanguage({});
    session.Tell({}, Say::kUnknownLanguage, {SafeLine(language)});
    return kFailed;
  }
  try {
    const int status = Tool(session, arguments).Run(arguments);
    session.Flush();
    session.EndProgress();
    return status;
  } catch (const OutputFailure& failure) {
    // Who reads has gone away, as `head` does: nobody wants to hear of it.
    if (failure.error.code == EPIPE) return kLost;
    session.TellUnwritable(Text(Say::kStandardOutput), failure.error);
  } catch (const std::bad_alloc&) {
    session.Tell({}, Say::kOutOfMemory);
  }
  return kFailed;
}

}  // namespace

}  // namespace lumr::tool

int main(int argc, char** argv) {
  lumr::PrepareStandardStreams();
  lumr::tool::Session session;
  return lumr::tool::RunTool(session, lumr::Utf8Arguments(argc, argv));
}
