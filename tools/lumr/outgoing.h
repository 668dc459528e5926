// A message that is about to be sent: its headers and its body, and how they become bytes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/types.h"
#include "session.h"

namespace lumr::tool {

struct Mailbox {
  std::string address;
  CStringW name;
};

struct OutgoingMail {
  std::vector<Mailbox> from, to, cc, bcc;
  CStringW subject;
  std::string inReplyTo, references;  // message ids in their brackets
  CStringW body;                      // any line ends
};

// UTF-8 that a user gave as UTF-16. False when it is none; bad is then the offset of the first
// byte that is no part of a character.
bool Utf16Of(std::string_view utf8, CStringW& text, long long& bad);

// Text in Shift_JIS, of which the rules for addresses speak, character by character: a two-byte
// one stands for each that it lacks, look-alikes included ("é" is no "e").
CStringA ShiftJisOf(std::u16string_view text);

// What is wrong with a list of addresses that a user gave, or with one of them.
struct MailboxProblem {
  std::string entry;  // the list's entry, in UTF-8; empty: the problem is of the whole list
  std::string what;   // a sentence
};

// Splits a list of addresses in UTF-8 ("Name <a@b>, c@d", "Team: a@b, c@d;") and appends its
// entries to mailboxes. Entries that no message can be sent to are left out and named in problems.
void ParseMailboxes(std::string_view utf8, std::vector<Mailbox>& mailboxes,
                    std::vector<MailboxProblem>& problems);

// The same with a raw header value, which may be folded, hold encoded words, or be raw Japanese in
// rawCharset (see DecodeHeaderValue).
void ReadMailboxes(std::string_view raw, std::string_view rawCharset,
                   std::vector<Mailbox>& mailboxes, std::vector<MailboxProblem>& problems);

// The charset that a mail is sent in.
struct SendCharset {
  CodeType wanted = CT_UNKNOWN;     // by the user; CT_UNKNOWN: the next one, or what carries all
  CodeType preferred = CT_UNKNOWN;  // taken when it carries all in good form
};

// Writes the whole message, lines ending in LF, as sendmail takes it from standard input; who
// sends it adds a date, a message id, and the sender where from is empty. Every line of the header
// is at most 78 characters long as far as addresses and ids allow it. False when the wanted
// charset lacks characters: lost then holds the first of them.
bool WriteMail(const OutgoingMail& mail, const SendCharset& charset, std::string& out,
               CStringW& lost);

// For option values that become header fields: tells and gives false when there is a line break or
// another control character in a value, or bytes that are no UTF-8.
bool CheckHeaderOption(Session& session, const char* option, const std::string& value);

}  // namespace lumr::tool
