// lumr check: a look at a draft before it is sent.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "charsets.h"
#include "command.h"
#include "headerfields.h"
#include "json.h"
#include "lumrmisc/mailtext/headerword.h"
#include "lumrmisc/mailtext/preflight.h"
#include "mail.h"
#include "mailsource.h"
#include "outgoing.h"
#include "printmail.h"
#include "safetext.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kMaxLine = 998;  // bytes without the line break (RFC 5322, 2.1.1)

struct CheckOptions {
  std::vector<std::string> drafts;
  std::string charset;
};

struct KindRow {
  PreflightKind kind;
  const char* name;  // in JSON
  Say what;
};
constexpr KindRow kKinds[] = {
    {PreflightKind::kNotEncodable, "not-encodable", Say::kFindNotEncodable},
    {PreflightKind::kMachineDependent, "machine-dependent", Say::kFindMachineDependent},
    {PreflightKind::kHalfWidthKatakana, "half-width-katakana", Say::kFindHalfKatakana},
    {PreflightKind::kUserDefined, "user-defined", Say::kFindUserDefined},
};

const KindRow& RowOf(PreflightKind kind) {
  for (const KindRow& row : kKinds) {
    if (row.kind == kind) return row;
  }
  return kKinds[0];
}

constexpr std::string_view kAddressFields[] = {"From", "Sender", "Reply-To", "To", "Cc", "Bcc"};
constexpr std::string_view kRecipientFields[] = {"To", "Cc", "Bcc"};

template <typename Table>
bool IsOneOf(const Table& names, std::string_view name) {
  return std::any_of(std::begin(names), std::end(names),
                     [name](std::string_view one) { return SameName(one, name); });
}

class DraftChecker {
 public:
  DraftChecker(Session& session, CodeType wanted, std::string file)
      : session_(session), codeType_(wanted), file_(std::move(file)) {}

  void Check(MailBytes& bytes) {
    const std::string raw(bytes.View());
    Mail mail;
    ReadMail(bytes, mail);
    if (!mail.isMail) {
      session_.Tell(file_, Say::kNotMail);
      return session_.Raise(kLost);
    }
    ChooseCharset(mail);
    CheckLines(raw);
    CheckHeader(raw);
    CheckParts(mail);
    Summarize();
  }

 private:
  // By the user's wish, the label of the text, or as Japanese mail is sent.
  void ChooseCharset(const Mail& mail) {
    for (const MailPart& part : mail.parts) {
      if (codeType_ != CT_UNKNOWN) return;
      if (!part.label.empty()) codeType_ = CodeType2DefSend(CodeTypeOfMailLabel(part.label));
    }
    if (codeType_ == CT_UNKNOWN) codeType_ = CT_JIS;
  }

  void CheckLines(std::string_view raw) {
    std::size_t number = 1;
    for (std::size_t begin = 0; begin < raw.size(); ++number) {
      const std::size_t end = std::min(raw.find('\n', begin), raw.size());
      std::size_t size = end - begin;
      if (size > 0 && raw[end - 1] == '\r') --size;
      if (size > kMaxLine) {
        Find("long-line", Text(Say::kInLine, {std::to_string(number)}),
             Text(Say::kFindLongLine, {Grouped(static_cast<long long>(size))}));
      }
      begin = end + 1;
    }
  }

  void CheckHeader(std::string_view raw) {
    std::vector<HeaderField> fields;
    const std::size_t end = SplitHeader(raw, fields);
    std::ptrdiff_t line = 1;
    bool hasRecipient = false;
    for (const HeaderField& field : fields) {
      const std::string name(field.name);
      if (IsOneOf(kAddressFields, name)) {
        hasRecipient = CheckAddresses(name, field.value, RawCharset(fields)) || hasRecipient;
      } else if (SameName(name, "Subject")) {
        CheckText(name, DecodeHeaderValue(field.value), false);
      }
      line += std::count(field.whole.begin(), field.whole.end(), '\n');
    }
    if (end == std::string_view::npos) {
      Find("header", Text(Say::kInLine, {std::to_string(line)}), Text(Say::kFindHeader));
    }
    if (!hasRecipient) Find("recipient", "To", Text(Say::kFindNoRecipient));
  }

  // Whether the field names somebody whom the message goes to.
  bool CheckAddresses(const std::string& field, std::string_view value,
                      const std::string& rawCharset) {
    std::vector<Mailbox> mailboxes;
    std::vector<MailboxProblem> problems;
    ReadMailboxes(value, rawCharset, mailboxes, problems);
    for (const MailboxProblem& problem : problems) {
      const std::string entry =
          problem.entry.empty() ? std::string() : SafeLine(problem.entry) + ": ";
      Find("address", field, entry + problem.what);
    }
    for (const Mailbox& mailbox : mailboxes) CheckText(field, mailbox.name, false);
    return !mailboxes.empty() && IsOneOf(kRecipientFields, field);
  }

  void CheckParts(const Mail& mail) {
    for (const MailPart& part : mail.parts) {
      if (part.kind == PartKind::kMessage) break;  // is sent as it is
      CStringW text;
      long long bad = 0;
      const std::string place = mail.parts.size() == 1 ? std::string() : part.id + ':';
      if (!Utf16Of(part.text.utf8.View(), text, bad) || part.text.replaced > 0) {
        Find("damaged", Text(Say::kInBody, {place + '1'}), Text(Say::kFindDamaged));
      }
      CheckText(place, text, true);
    }
    for (const MailNote& note : mail.notes) {
      if (note.lost) Find("structure", note.id, SentenceOf(note));
    }
  }

  // place: a field, or what stands before line and column.
  void CheckText(const std::string& place, const CStringW& text, bool isBody) {
    all_ += text;
    all_ += u'\n';
    std::vector<PreflightFinding> findings;
    CheckBeforeSending(text, codeType_, findings);
    std::size_t pos = 0, line = 1, lineStart = 0;
    for (const PreflightFinding& finding : findings) {
      for (; pos < finding.position; ++pos) {
        if (text[pos] != u'\n') continue;
        ++line;
        lineStart = pos + 1;
      }
      const std::string column = std::to_string(finding.position - lineStart + 1);
      const std::string where =
          isBody ? Text(Say::kInBody, {place + std::to_string(line) + ':' + column}) : place;
      FindCharacters(where, finding,
                     std::u16string_view(text).substr(finding.position, finding.length));
    }
  }

  void FindCharacters(const std::string& place, const PreflightFinding& finding,
                      std::u16string_view characters) {
    constexpr std::size_t kShown = 40;
    const KindRow& row = RowOf(finding.kind);
    const std::string shown = SafeLine(Utf8(characters.substr(0, kShown)));
    std::string what = Text(row.what, {shown, CharSetCode2Name(codeType_)});
    const std::string offer = SafeLine(Utf8(std::u16string_view(finding.offer).substr(0, kShown)));
    if (finding.hasOffer)
      what += finding.offer.empty() ? Text(Say::kOfferNothing) : Text(Say::kOffer, {offer});
    if (!session_.json) return Find(row.name, place, what);
    Json object = {{"file", JsonText(file_)}, {"place", place}, {"kind", row.name}, {"text", what}};
    object["characters"] = Utf8(characters);
    if (finding.hasOffer) object["offer"] = Utf8(finding.offer);
    Write(object);
  }

  void Find(const char* kind, const std::string& place, const std::string& what) {
    if (session_.json) {
      return Write({{"file", JsonText(file_)}, {"place", place}, {"kind", kind}, {"text", what}});
    }
    ++found_;
    session_.Write(SafeLine(file_) + ": " + (place.empty() ? std::string() : place + ": ") + what +
                   '\n');
  }

  void Write(const Json& object) {
    ++found_;
    session_.Write(JsonLine(object));
  }

  void Summarize() {
    const char* const narrowest = CharSetCode2Name(NarrowestCodeType(all_));
    if (session_.json) {
      session_.Write(JsonLine({{"file", JsonText(file_)},
                               {"findings", found_},
                               {"charset", CharSetCode2Name(codeType_)},
                               {"narrowest", narrowest}}));
    } else {
      session_.Write(SafeLine(file_) + ": " +
                     Text(Say::kCheckSummary, {Grouped(found_), narrowest}) + '\n');
    }
    if (found_ > 0) session_.Raise(kLost);
  }

  Session& session_;
  CodeType codeType_;
  std::string file_;
  CStringW all_;
  long long found_ = 0;
};

}  // namespace

Runner AddCheck(CLI::App& command) {
  const auto options = std::make_shared<CheckOptions>();
  command.add_option("DRAFT", options->drafts, Text(Say::kCheckDraft))->required()->type_name("");
  command.add_option("--charset", options->charset, Text(Say::kCheckCharset))->type_name("CHARSET");
  return [options](Session& session) {
    CodeType wanted = CT_UNKNOWN;
    Utf16Order order;
    if (!options->charset.empty()) {
      wanted = CodeTypeOfArgument(options->charset, order);
      if (wanted == CT_UNKNOWN) {
        session.Tell({}, Say::kUnknownCharset, {SafeLine(options->charset)});
        return session.Raise(kFailed);
      }
    }
    for (const std::string& draft : options->drafts) {
      bool isEmpty = true;
      ForEachMail(session, draft, [&](const MailOrigin& origin, MailBytes& bytes) {
        isEmpty = false;
        DraftChecker(session, wanted, origin.file).Check(bytes);
      });
      if (!isEmpty || session.Status() != kDone) continue;
      session.Tell(draft, Say::kNoMessages);
      session.Raise(kLost);
    }
  };
}

}  // namespace lumr::tool
