// lumr reply: an answer to a message, ready to be sent.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "charsets.h"
#include "command.h"
#include "headerfields.h"
#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/html/reading.h"
#include "lumrmisc/mailtext/body.h"
#include "lumrmisc/mailtext/headerword.h"
#include "mail.h"
#include "mailsource.h"
#include "outgoing.h"
#include "quoteturn.h"
#include "safetext.h"

namespace lumr::tool {

namespace {

constexpr int kReplyColumns = 74;
constexpr std::u16string_view kQuoteMark = u"> ";

struct ReplyOptions {
  std::string mail;
  std::string charset;
  std::string from;
};

// ---- The header of the message that is answered ----

// Raw values of fields that a reply takes something from.
class OriginalHeader {
 public:
  explicit OriginalHeader(std::string_view message) : bytes_(message) {
    SplitHeader(bytes_, fields_);
  }

  // Of the first field with this name that is not empty.
  std::string_view Raw(std::string_view name) const {
    for (const HeaderField& field : fields_) {
      const bool isBlank = field.value.find_first_not_of(" \t\r\n") == std::string_view::npos;
      if (SameName(field.name, name) && !isBlank) return field.value;
    }
    return {};
  }

  // The field's addresses; an entry that is none is named in problems.
  void Addresses(std::string_view name, std::vector<Mailbox>& mailboxes,
                 std::vector<MailboxProblem>& problems) const {
    ReadMailboxes(Raw(name), RawCharset(fields_), mailboxes, problems);
  }

 private:
  std::string bytes_;
  std::vector<HeaderField> fields_;
};

// The message ids of a raw value: what stands in angle brackets, without white space. One that
// would not fit on a line of mail is none.
std::vector<std::string> MessageIds(std::string_view raw) {
  constexpr std::size_t kMaxId = 900;
  std::vector<std::string> ids;
  std::string id;
  bool isGood = false;
  for (const char c : raw) {
    if (c == '<') {
      id = c;
      isGood = true;
    } else if (c == '>') {
      if (isGood && id.size() > 1) ids.push_back(id + c);
      isGood = false;
    } else if (isGood && !IsAsciiSpace(c)) {
      id += c;
      isGood = c > ' ' && c < '\x7F' && id.size() < kMaxId;
    }
  }
  return ids;
}

// RFC 5322, 3.6.4: the references of the message, or what it answers, and then itself.
std::string References(const OriginalHeader& header, const std::vector<std::string>& self) {
  constexpr std::size_t kMost = 200;  // of a thread that long the first and the latest are enough
  std::vector<std::string> ids = MessageIds(header.Raw("References"));
  if (ids.empty()) {
    ids = MessageIds(header.Raw("In-Reply-To"));
    if (ids.size() > 1) ids.clear();
  }
  if (!self.empty()) ids.push_back(self.front());
  if (ids.size() > kMost) ids.erase(ids.begin() + 1, ids.end() - (kMost - 1));
  std::string joined;
  for (const std::string& id : ids) joined += (joined.empty() ? "" : " ") + id;
  return joined;
}

// ---- The subject ----

constexpr std::u16string_view kReplyWords[] = {u"re", u"ｒｅ", u"返信"};

char16_t LowerOf(char16_t unit) {
  if (unit >= u'Ａ' && unit <= u'Ｚ') return static_cast<char16_t>(unit + 0x20);
  return unit < 0x80 ? static_cast<char16_t>(AsciiLower(static_cast<char>(unit))) : unit;
}

// The length of "Re:", "RE^2:", "Re[3]:", "返信：" at the start of a subject; 0 when there is none.
std::size_t ReplyPrefix(std::u16string_view subject) {
  for (const std::u16string_view word : kReplyWords) {
    if (subject.size() < word.size() ||
        !std::equal(word.begin(), word.end(), subject.begin(),
                    [](char16_t a, char16_t b) { return a == LowerOf(b); })) {
      continue;
    }
    std::size_t end = word.size();
    while (end < subject.size() &&
           (IsAsciiDigit(subject[end]) ||
            std::u16string_view(u"[]()^* ").find(subject[end]) != std::u16string_view::npos)) {
      ++end;
    }
    if (end < subject.size() && (subject[end] == u':' || subject[end] == u'：')) return end + 1;
  }
  return 0;
}

CStringW ReplySubject(std::u16string_view subject) {
  const auto trim = [&] {
    while (!subject.empty() && (subject.front() == u' ' || subject.front() == u'　')) {
      subject.remove_prefix(1);
    }
  };
  trim();
  while (const std::size_t prefix = ReplyPrefix(subject)) {
    subject.remove_prefix(prefix);
    trim();
  }
  return subject.empty() ? CStringW(u"Re:") : CStringW(u"Re: ").append(subject);
}

// ---- The text ----

// Text as it may stand in a mail: lines in CR LF, no other control characters than tabs, no
// empty lines at the end.
CStringW PlainText(std::u16string_view text) {
  CStringW out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    if (unit == u'\r' || unit == u'\n' || unit == u'\u2028' || unit == u'\u2029') {
      out += u"\r\n";
      if (text.substr(i, 2) == u"\r\n") ++i;
    } else if (unit == u'\t' ||
               (unit >= 0x20 && !(unit >= 0x7F && unit < 0xA0) && unit != 0xFEFF)) {
      out += unit;
    }
  }
  while (!out.empty() &&
         std::u16string_view(u"\r\n \t　").find(out.back()) != std::u16string_view::npos) {
    out.pop_back();
  }
  return out;
}

CStringW TextOf(const MailPart& part) {
  CStringW text;
  long long bad = 0;
  Utf16Of(part.text.utf8.View(), text, bad);
  if (part.kind == PartKind::kHtml) ExtractTextFromHtmlW2(text, 1);
  return PlainText(text);
}

struct OriginalText {
  CStringW text;
  CodeType codeType = CT_UNKNOWN;  // of the first part
};

OriginalText ReadText(const Mail& mail) {
  OriginalText original;
  for (const MailPart& part : mail.parts) {
    if (part.kind == PartKind::kMessage) break;  // what is attached is not answered
    const CStringW text = TextOf(part);
    if (text.empty()) continue;
    if (original.text.empty()) {
      original.codeType = part.text.charset.codeType;
    } else {
      original.text += u"\r\n\r\n";
    }
    original.text += text;
  }
  return original;
}

bool IsJapanese(const OriginalText& original) {
  return IsCodeTypeJapanese(original.codeType) != 0 ||
         std::any_of(original.text.begin(), original.text.end(),
                     [](char16_t unit) { return unit >= 0x3041 && unit <= 0x30FE; });
}

// "2 June, Taro wrote:", in the language of the message.
CStringW Attribution(const MailHeaders& headers, const std::vector<Mailbox>& from,
                     const OriginalText& original) {
  CStringW who;
  long long bad = 0;
  if (from.empty()) {
    Utf16Of(headers.from, who, bad);
  } else if (from.front().name.empty()) {
    who.assign(from.front().address.begin(), from.front().address.end());
  } else {
    who = from.front().name;
  }
  CStringW date;
  Utf16Of(headers.date, date, bad);
  CStringW line;
  if (IsJapanese(original)) {
    if (!date.empty()) line = date + u" に、";
    return who.empty() ? line + u"次のように書かれました:" : line + who + u" さんは書きました:";
  }
  if (!date.empty()) line = u"On " + date + u", ";
  return who.empty() ? line + u"it was written:" : line + who + u" wrote:";
}

CStringW QuotedBody(const CStringW& attribution, const CStringW& text) {
  CBuffer quoted;
  InsertQuoteMark(kQuoteMark, text, quoted);
  return TurnQuoted(attribution, kReplyColumns) + TurnQuoted(quoted.Units(), kReplyColumns);
}

// ---- The command ----

class Replier {
 public:
  Replier(Session& session, const ReplyOptions& options) : session_(session), options_(options) {}

  void Run() {
    SendCharset charset;
    Utf16Order order;
    if (!options_.charset.empty()) {
      charset.wanted = CodeTypeOfArgument(options_.charset, order);
      if (charset.wanted == CT_UNKNOWN) {
        session_.Tell({}, Say::kUnknownCharset, {SafeLine(options_.charset)});
        return session_.Raise(kFailed);
      }
    }
    OutgoingMail reply;
    if (!ReadFrom(reply.from)) return;
    std::string out;
    int count = 0;
    ForEachMail(session_, options_.mail, [&](const MailOrigin&, MailBytes& bytes) {
      if (++count == 1) Answer(bytes, charset, reply, out);
    });
    if (session_.Status() == kFailed) return;
    if (count != 1) {
      session_.Tell(options_.mail, count == 0 ? Say::kNoMessages : Say::kSeveralMessages);
      return session_.Raise(kLost);
    }
    session_.Write(out);
  }

 private:
  bool ReadFrom(std::vector<Mailbox>& from) {
    if (!CheckHeaderOption(session_, "--from", options_.from)) return false;
    std::vector<MailboxProblem> problems;
    ParseMailboxes(options_.from, from, problems);
    for (const MailboxProblem& problem : problems) {
      session_.Tell({}, Say::kBadAddressOption, {"--from", SafeLine(problem.entry), problem.what});
      session_.Raise(kFailed);
    }
    return problems.empty();
  }

  void Answer(MailBytes& bytes, const SendCharset& wanted, OutgoingMail& reply, std::string& out) {
    const OriginalHeader header(bytes.View());
    Mail mail;
    ReadMail(bytes, mail);
    if (!mail.isMail) {
      session_.Tell(options_.mail, Say::kNotMail);
      return session_.Raise(kLost);
    }
    ReadRecipient(header, reply.to);
    CStringW subject;
    long long bad = 0;
    Utf16Of(mail.headers.subject, subject, bad);
    reply.subject = ReplySubject(subject);
    const std::vector<std::string> self = MessageIds(header.Raw("Message-ID"));
    if (!self.empty()) reply.inReplyTo = self.front();
    reply.references = References(header, self);
    const OriginalText original = ReadText(mail);
    std::vector<Mailbox> from;
    std::vector<MailboxProblem> ignored;
    header.Addresses("From", from, ignored);
    if (original.text.empty()) {
      session_.Tell(options_.mail, Say::kNothingToQuote);
    } else {
      reply.body = QuotedBody(Attribution(mail.headers, from, original), original.text);
    }
    SendCharset charset = wanted;
    charset.preferred = original.codeType;
    CStringW lost;
    if (WriteMail(reply, charset, out, lost)) return;
    session_.Tell(options_.mail, Say::kCharsetLacks, {options_.charset, SafeLine(Utf8(lost))});
    session_.Raise(kLost);
  }

  // Who is answered: nobody only where the message does not say it.
  void ReadRecipient(const OriginalHeader& header, std::vector<Mailbox>& to) {
    std::vector<MailboxProblem> problems;
    for (const char* const field : {"Reply-To", "From"}) {
      if (!to.empty()) break;
      header.Addresses(field, to, problems);
    }
    for (const MailboxProblem& problem : problems) {
      session_.Tell(options_.mail, Say::kBadAddressInMail, {SafeLine(problem.entry), problem.what});
    }
    if (!to.empty()) return;
    session_.Tell(options_.mail, Say::kNobodyToAnswer);
    session_.Raise(kLost);
  }

  Session& session_;
  const ReplyOptions& options_;
};

}  // namespace

Runner AddReply(CLI::App& command) {
  const auto options = std::make_shared<ReplyOptions>();
  command.add_option("MAIL", options->mail, Text(Say::kReplyMail))->required()->type_name("");
  command.add_option("--from", options->from, Text(Say::kOptFrom))->type_name("ADDRESS");
  command.add_option("--charset", options->charset, Text(Say::kReplyCharset))->type_name("CHARSET");
  return [options](Session& session) { Replier(session, *options).Run(); };
}

}  // namespace lumr::tool
