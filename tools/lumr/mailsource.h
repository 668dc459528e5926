// Where messages come from: a file, standard input, an mbox, a maildir, a folder of files.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "mail.h"
#include "session.h"

namespace lumr::tool {

struct MailOrigin {
  std::string file;     // the file's name, "-" for standard input
  std::int64_t number;  // of the message in an mbox of several, from 1; 0 elsewhere
  std::int64_t of;      // how many files the folder holds; 0 when unknown
};

// Takes one message; the bytes are free to be changed.
using TakeMail = std::function<void(const MailOrigin& origin, MailBytes& bytes)>;

// Hands out every message at a place, one after the other: no more than one is in memory. A
// maildir gives what is in new and cur, another folder its files, by name, numbers as numbers;
// folders inside and names that begin with a dot are left alone. A file that begins with "From "
// is an mbox. What cannot be read is told to the session, and the rest is handed out.
void ForEachMail(Session& session, const std::string& place, const TakeMail& take);

}  // namespace lumr::tool
