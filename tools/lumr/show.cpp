// lumr show: mail as text.
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "command.h"
#include "mail.h"
#include "mailsource.h"
#include "printmail.h"
#include "safetext.h"
#include "textlook.h"

namespace lumr::tool {

namespace {

// The name of a message: its file, in an mbox with its number.
std::string NameOf(const MailOrigin& origin) {
  return origin.number == 0 ? origin.file : origin.file + ':' + std::to_string(origin.number);
}

class Shower {
 public:
  Shower(Session& session, const TextLook& look) : session_(session), look_(look) {}

  // several: whether each message gets a line with its name.
  void ShowPlace(const std::string& place, bool several) {
    const std::int64_t before = shown_;
    ForEachMail(session_, place, [&](const MailOrigin& origin, MailBytes& bytes) {
      ShowMail(origin, bytes, several || origin.of > 0 || origin.number > 0);
      if (origin.of > 0) session_.Progress(shown_ - before, origin.of, origin.file);
    });
    if (shown_ > before || session_.Status() != kDone) return;
    session_.Tell(place, Say::kNoMessages);
    session_.Raise(kLost);
  }

 private:
  void ShowMail(const MailOrigin& origin, MailBytes& bytes, bool named) {
    ++shown_;
    try {
      ReadAndPrint(origin, bytes, named);
    } catch (const std::bad_alloc&) {  // the next message may be smaller
      session_.Tell(NameOf(origin), Say::kOutOfMemory);
      session_.Raise(kFailed);
    }
  }

  void ReadAndPrint(const MailOrigin& origin, MailBytes& bytes, bool named) {
    Mail mail;
    ReadMail(bytes, mail);
    const std::string name = NameOf(origin);
    if (mail.isMail && session_.json) {
      PrintMailJson(origin.file, origin.number, mail, session_);
    } else if (mail.isMail) {
      if (named) session_.Write((shown_ > 1 ? "\n==> " : "==> ") + SafeLine(name) + " <==\n");
      PrintMailText(mail, look_, session_);
    }
    for (const MailNote& note : mail.notes) TellNote(name, note);
  }

  void TellNote(const std::string& name, const MailNote& note) {
    if (note.lost) session_.Raise(kLost);
    session_.Tell(name, SentenceOf(note));
  }

  Session& session_;
  const TextLook& look_;
  std::int64_t shown_ = 0;
};

}  // namespace

const bool kHasMailCommands = true;

Runner AddShow(CLI::App& command) {
  const auto places = std::make_shared<std::vector<std::string>>();
  command.add_option("MAIL", *places, Text(Say::kShowMail))->required()->type_name("");
  const auto options = AddLookOptions(command);
  return [places, options](Session& session) {
    TextLook look;
    if (!MakeLook(session, *options, look)) return;
    Shower shower(session, look);
    for (const std::string& place : *places) shower.ShowPlace(place, places->size() > 1);
  };
}

}  // namespace lumr::tool
