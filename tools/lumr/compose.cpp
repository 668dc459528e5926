// lumr compose: a message from what is given on the command line and on standard input.
#include <algorithm>
#include <memory>
#include <string>

#include "charsets.h"
#include "command.h"
#include "input.h"
#include "outgoing.h"
#include "safetext.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

struct ComposeOptions {
  std::string from, to, cc, bcc, subject, charset;
  std::string body = "-";
};

struct AddressOption {
  const char* name;
  std::string ComposeOptions::*value;
  std::vector<Mailbox> OutgoingMail::*mailboxes;
  Say help;
};
constexpr AddressOption kAddressOptions[] = {
    {"--from", &ComposeOptions::from, &OutgoingMail::from, Say::kOptFrom},
    {"--to", &ComposeOptions::to, &OutgoingMail::to, Say::kOptTo},
    {"--cc", &ComposeOptions::cc, &OutgoingMail::cc, Say::kOptCc},
    {"--bcc", &ComposeOptions::bcc, &OutgoingMail::bcc, Say::kOptBcc},
};

bool ReadAddresses(Session& session, const ComposeOptions& options, OutgoingMail& mail) {
  bool isGood = true;
  for (const AddressOption& option : kAddressOptions) {
    const std::string& value = options.*option.value;
    std::vector<MailboxProblem> problems;
    if (CheckHeaderOption(session, option.name, value)) {
      ParseMailboxes(value, mail.*option.mailboxes, problems);
    } else {
      isGood = false;
    }
    for (const MailboxProblem& problem : problems) {
      session.Tell({}, Say::kBadAddressOption,
                   {option.name, SafeLine(problem.entry), problem.what});
      isGood = false;
    }
  }
  if (isGood && mail.to.empty() && mail.cc.empty() && mail.bcc.empty()) {
    session.Tell({}, Say::kNoRecipient);
    isGood = false;
  }
  if (!isGood) session.Raise(kFailed);
  return isGood;
}

// Where a byte stands, for people: "3:14".
std::string PlaceOf(std::string_view text, long long offset) {
  const std::string_view before = text.substr(0, static_cast<std::size_t>(offset));
  const auto lines = std::count(before.begin(), before.end(), '\n');
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 when there is none
  return std::to_string(lines + 1) + ':' + std::to_string(before.size() - lineStart + 1);
}

void Compose(Session& session, const ComposeOptions& options) {
  OutgoingMail mail;
  SendCharset charset;
  Utf16Order order;
  if (!options.charset.empty()) {
    charset.wanted = CodeTypeOfArgument(options.charset, order);
    if (charset.wanted == CT_UNKNOWN) {
      session.Tell({}, Say::kUnknownCharset, {SafeLine(options.charset)});
      return session.Raise(kFailed);
    }
  }
  const bool isSubjectGood = CheckHeaderOption(session, "--subject", options.subject);
  if (!ReadAddresses(session, options, mail) || !isSubjectGood) return;
  std::string body;
  if (const FileError error = ReadAll(options.body, body)) {
    return session.TellUnreadable(options.body, error);
  }
  long long bad = 0;
  Utf16Of(options.subject, mail.subject, bad);
  if (!Utf16Of(body, mail.body, bad)) {
    session.Tell(options.body, Say::kBodyNotUtf8, {PlaceOf(body, bad)});
    return session.Raise(kLost);
  }
  std::string out;
  CStringW lost;
  if (WriteMail(mail, charset, out, lost)) return session.Write(out);
  session.Tell({}, Say::kCharsetLacks, {SafeLine(options.charset), SafeLine(Utf8(lost))});
  session.Raise(kLost);
}

}  // namespace

Runner AddCompose(CLI::App& command) {
  const auto options = std::make_shared<ComposeOptions>();
  command.add_option("BODY", options->body, Text(Say::kComposeBody))->type_name("");
  for (const AddressOption& option : kAddressOptions) {
    command.add_option(option.name, (*options).*option.value, Text(option.help))
        ->type_name("ADDRESS,...");
  }
  command.add_option("--subject", options->subject, Text(Say::kOptSubject))->type_name("TEXT");
  command.add_option("--charset", options->charset, Text(Say::kComposeCharset))
      ->type_name("CHARSET");
  return [options](Session& session) { Compose(session, *options); };
}

}  // namespace lumr::tool
