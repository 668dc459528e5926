// lumr grep --mail: the decoded headers and texts of messages.
#include <algorithm>
#include <new>

#include "grep.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/html/reading.h"
#include "mail.h"
#include "mailsource.h"

namespace lumr::tool {

namespace {

struct HeaderRow {
  const char* name;
  std::string MailHeaders::*value;
};
constexpr HeaderRow kHeaders[] = {
    {"From", &MailHeaders::from}, {"To", &MailHeaders::to},           {"Cc", &MailHeaders::cc},
    {"Date", &MailHeaders::date}, {"Subject", &MailHeaders::subject},
};

// A header is one line to search, whatever folds and breaks it was sent with.
std::string HeaderLine(const HeaderRow& row, const MailHeaders& headers) {
  std::string line = std::string(row.name) + ": " + headers.*row.value;
  for (char& c : line) {
    if (c == '\r' || c == '\n') c = ' ';
  }
  return line;
}

void SearchHeaders(const MailHeaders& headers, const std::string& id, GrepText& text, Grep& grep) {
  for (const HeaderRow& row : kHeaders) {
    if ((headers.*row.value).empty()) continue;
    const std::string line = HeaderLine(row, headers);
    text.part = id.empty() ? row.name : id + ' ' + row.name;
    text.bytes = line;
    grep.Search(text);
  }
}

// What a reader sees of it, with the addresses of its links.
void SearchHtml(std::string_view utf8, GrepText text, Grep& grep) {
  const std::string wide = WideBytes(utf8);
  CStringW html(wide.size() / 2, u'\0');
  std::copy(wide.begin(), wide.end(), reinterpret_cast<char*>(html.data()));
  ExtractTextFromHtmlW2(html, 1);
  text.codeType = CT_UNICODE;
  text.order = Utf16Order::kLittleEndian;
  text.bytes = BytesOf(html);
  grep.Search(text);
}

void SearchMessage(const MailOrigin& origin, MailBytes& bytes, Session& session, Grep& grep) {
  Mail mail;
  ReadMail(bytes, mail);
  GrepText text;
  text.name = origin.file;
  text.number = origin.number;
  text.codeType = CT_UTF8;
  if (!mail.isMail) return session.Tell(origin.file, Say::kNotMail);
  SearchHeaders(mail.headers, {}, text, grep);
  for (const MailPart& part : mail.parts) {
    if (grep.IsDecided()) break;
    if (part.kind == PartKind::kMessage) {
      SearchHeaders(part.headers, part.id, text, grep);
      continue;
    }
    text.part = part.id;
    if (part.kind == PartKind::kHtml) {
      SearchHtml(part.text.utf8.View(), text, grep);
    } else {
      text.bytes = part.text.utf8.View();
      grep.Search(text);
    }
  }
  grep.EndFile(text);
}

}  // namespace

void GrepMail(Session& session, const std::string& place, Grep& grep) {
  std::int64_t done = 0;
  ForEachMail(session, place, [&](const MailOrigin& origin, MailBytes& bytes) {
    try {
      SearchMessage(origin, bytes, session, grep);
    } catch (const std::bad_alloc&) {  // the next message may be smaller
      session.Tell(origin.file, Say::kOutOfMemory);
      session.Raise(kFailed);
    }
    session.Progress(++done, origin.of, origin.file);
  });
}

}  // namespace lumr::tool
