// A mail message on standard output, for people and for programs.
#pragma once

#include <cstdint>
#include <string>

#include "mail.h"
#include "session.h"
#include "textlook.h"

namespace lumr::tool {

// Both add to the notes of mail what they find out while they write: texts that are not wholly
// in their charset.

// Headers, texts and a list of attachments, safe for a terminal. Texts are laid out in the look.
void PrintMailText(Mail& mail, const TextLook& look, Session& session);

// One JSON object a line. number is the message's in an mbox, 0 elsewhere.
void PrintMailJson(const std::string& file, std::int64_t number, Mail& mail, Session& session);

// What a note says, in the user's language, in one line that is safe for a terminal.
std::string SentenceOf(const MailNote& note);

}  // namespace lumr::tool
