#include "printmail.h"

#include <algorithm>

#include "htmltext.h"
#include "json.h"
#include "lumrmisc/charset/codetype.h"
#include "safetext.h"
#include "textprinter.h"
#include "wraplines.h"

namespace lumr::tool {

namespace {

struct HeaderLine {
  const char* label;
  const char* key;
  std::string MailHeaders::*member;
};
constexpr HeaderLine kHeaderLines[] = {
    {"From:    ", "from", &MailHeaders::from},       {"To:      ", "to", &MailHeaders::to},
    {"Cc:      ", "cc", &MailHeaders::cc},           {"Date:    ", "date", &MailHeaders::date},
    {"Subject: ", "subject", &MailHeaders::subject},
};

// Long values go on below their beginning. columns: where they are turned; 0: nowhere.
void AppendHeaders(const MailHeaders& headers, int columns, std::string& out) {
  constexpr int kIndent = 9;
  constexpr int kNarrowest = 20;  // of a value that is worth turning
  for (const HeaderLine& line : kHeaderLines) {
    const std::string& value = headers.*line.member;
    if (value.empty()) continue;
    std::vector<std::string> lines = {SafeLine(value)};
    if (columns - kIndent >= kNarrowest) lines = TurnedLines(lines[0], columns - kIndent);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      out += (i == 0 ? std::string(line.label) : std::string(kIndent, ' ')) + lines[i] + '\n';
    }
  }
}

// A line between parts, with the number and type of the one that follows.
void AppendRule(const MailPart& part, std::string_view what, std::string& out) {
  out += "\n---- " + SafeLine(part.id) + ' ';
  out += what.empty() ? SafeLine(part.type) : std::string(what);
  out += " ----\n";
}

// invalid: what was no UTF-8 in the text.
void NoteReplaced(const MailPart& part, long long invalid, std::vector<MailNote>& notes) {
  const long long replaced = part.text.replaced + invalid;
  if (replaced == 0) return;
  const char* const charset = CharSetCode2Name(part.text.charset.codeType);
  MailNote note{part.id, part.type, Say::kReplacedInPart, Grouped(replaced), {}, true, false};
  note.argument = charset == nullptr ? "" : charset;
  notes.push_back(std::move(note));
}

void AppendAttachments(const std::vector<MailAttachment>& attachments, std::string& out) {
  if (attachments.empty()) return;
  std::size_t idWidth = 0;
  int nameWidth = 0;
  std::vector<std::string> names;
  for (const MailAttachment& attachment : attachments) {
    names.push_back(attachment.name.empty() ? Text(Say::kUnnamed) : SafeLine(attachment.name));
    idWidth = std::max(idWidth, attachment.id.size());
    nameWidth = std::max(nameWidth, DisplayWidth(names.back()));
  }
  constexpr int kWidestColumn = 40;
  nameWidth = std::min(nameWidth, kWidestColumn);
  out += '\n' + Text(Say::kAttachments, {std::to_string(attachments.size())}) + '\n';
  for (std::size_t i = 0; i < attachments.size(); ++i) {
    out += "  " + Padded(attachments[i].id, static_cast<int>(idWidth)) + "  " +
           Padded(names[i], nameWidth) + "  " + SafeLine(attachments[i].type) + "  " +
           Text(Say::kAttachmentSize, {Grouped(attachments[i].size)}) + '\n';
  }
}

CStringW TextOfHtml(const MailPart& part, long long& invalid) {
  return ReadableHtml(WideText(part.text.utf8.View(), invalid), true);
}

// Writes a text some lines at a time, so that a large one is not held twice.
void WriteText(const MailPart& part, TextPrinter& printer, std::vector<MailNote>& notes) {
  if (part.kind == PartKind::kHtml) {
    long long invalid = 0;
    printer.Print(TextOfHtml(part, invalid));
    return NoteReplaced(part, invalid, notes);
  }
  constexpr std::size_t kPieceSize = 1u << 16;
  std::string_view rest = part.text.utf8.View();
  std::string out;
  long long invalid = 0;
  while (!rest.empty()) {
    const std::size_t feed = rest.find('\n', std::min(kPieceSize, rest.size() - 1));
    const std::string_view piece = rest.substr(0, feed == std::string_view::npos ? feed : feed + 1);
    rest.remove_prefix(piece.size());
    out.clear();
    invalid += AppendSafe(piece, SafeForm::kLines, out);
    if (rest.empty() && !out.ends_with('\n')) out += '\n';
    printer.PrintSafe(out);
  }
  NoteReplaced(part, invalid, notes);
}

const char* SourceName(CharsetSource source) {
  switch (source) {
    case CharsetSource::kLabel:
      return "label";
    case CharsetSource::kLabelLenient:
      return "label-lenient";
    case CharsetSource::kNoLabel:
      return "no-label";
    case CharsetSource::kUnknownLabel:
      return "unknown-label";
    case CharsetSource::kLabelLies:
      return "label-lies";
  }
  return "";
}

void AddHeaders(const MailHeaders& headers, Json& object) {
  for (const HeaderLine& line : kHeaderLines) {
    object[line.key] = JsonText(headers.*line.member);
  }
}

Json PartObject(const MailPart& part, std::vector<MailNote>& notes) {
  Json object = {{"id", part.id}, {"type", JsonText(part.type)}};
  if (part.kind == PartKind::kMessage) {
    AddHeaders(part.headers, object);
    return object;
  }
  const char* const charset = CharSetCode2Name(part.text.charset.codeType);
  object["charset"] = charset == nullptr ? "" : charset;
  object["label"] = JsonText(part.label);
  object["decidedBy"] = SourceName(part.text.charset.source);
  std::string text;
  const std::size_t before = notes.size();
  long long invalid = 0;
  if (part.kind == PartKind::kHtml) {
    text = Utf8(TextOfHtml(part, invalid));
  } else {
    invalid = AppendSafe(part.text.utf8.View(), SafeForm::kUtf8, text);
  }
  NoteReplaced(part, invalid, notes);
  object["exact"] = notes.size() == before;
  object["text"] = std::move(text);
  return object;
}

Json NoteObject(const MailNote& note) {
  return {{"part", note.id},
          {"lost", note.lost},
          {"skipped", note.skipped},
          {"text", JsonText(SentenceOf(note))}};
}

}  // namespace

std::string SentenceOf(const MailNote& note) {
  const std::string what = Text(note.what, {SafeLine(note.label), SafeLine(note.argument)});
  if (note.id.empty()) return what;
  const std::string type = note.type.empty() ? std::string() : " (" + SafeLine(note.type) + ')';
  return Text(Say::kPartNote, {note.id, type}) +
         (note.skipped ? Text(Say::kPartSkipped, {what}) : what);
}

void PrintMailText(Mail& mail, const TextLook& look, Session& session) {
  TextPrinter printer(look, session);
  std::string out;
  AppendHeaders(mail.headers, look.columns, out);
  bool first = true;
  for (const MailPart& part : mail.parts) {
    if (part.kind == PartKind::kMessage) {
      AppendRule(part, Text(Say::kAttachedMessage), out);
      AppendHeaders(part.headers, look.columns, out);
      first = true;
      continue;
    }
    if (!first) AppendRule(part, {}, out);
    session.Write(out + '\n');
    out.clear();
    WriteText(part, printer, mail.notes);
    first = false;
  }
  AppendAttachments(mail.attachments, out);
  session.Write(out);
}

void PrintMailJson(const std::string& file, std::int64_t number, Mail& mail, Session& session) {
  Json object = {{"file", JsonText(file)}};
  if (number > 0) object["number"] = number;
  AddHeaders(mail.headers, object);
  Json parts = Json::array();
  for (const MailPart& part : mail.parts) parts.push_back(PartObject(part, mail.notes));
  object["parts"] = std::move(parts);
  Json attachments = Json::array();
  for (const MailAttachment& attachment : mail.attachments) {
    attachments.push_back({{"id", attachment.id},
                           {"name", JsonText(attachment.name)},
                           {"type", JsonText(attachment.type)},
                           {"size", attachment.size}});
  }
  object["attachments"] = std::move(attachments);
  Json notes = Json::array();
  for (const MailNote& note : mail.notes) notes.push_back(NoteObject(note));
  object["notes"] = std::move(notes);
  session.Write(JsonLine(object));
}

}  // namespace lumr::tool
