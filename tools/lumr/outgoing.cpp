#include "outgoing.h"

#include <algorithm>
#include <iterator>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/buffer/texttool.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/mailtext/address.h"
#include "lumrmisc/mailtext/addressheader.h"
#include "lumrmisc/mailtext/body.h"
#include "lumrmisc/mailtext/headerencode.h"
#include "lumrmisc/mailtext/preflight.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/messages.h"
#include "safetext.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kMaxBodyLine = 998;  // RFC 5322, 2.1.1

bool IsAscii(std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

// ---- Addresses ----

// What no message can be sent to. address is UTF-8, but the rules speak of Shift_JIS.
std::string AddressFault(const std::string& address) {
  // Signs of lists, a colon but in "@[IPv6:...]" among them.
  const std::size_t literal = address.find("@[");
  const auto isBad = [&](const char& c) {
    const auto pos = static_cast<std::size_t>(&c - address.data());
    return c <= ' ' || c >= '\x7F' || c == ',' || (c == ':' && pos < literal);
  };
  constexpr unsigned kNoAt = 3104;
  if (address.empty()) return MessageTextUtf8(kNoAt);  // the entry is taken for a name
  CStringW text;
  long long notUtf8 = 0;
  Utf16Of(address, text, notUtf8);
  const CApplyLocale locale(CT_SJIS);
  const AddressProblem problem = FindAddressProblem(AddressField::kAddress, ShiftJisOf(text));
  if (problem.result != 0) return MessageTextUtf8(problem.message);
  const auto bad = std::find_if(address.begin(), address.end(), isBad);
  if (bad == address.end()) return {};
  return Text(Say::kAddressCharacter, {std::to_string(bad - address.begin() + 1)});
}

// Appends a mailbox of texts in UTF-8, or the problem that it has; entry is what they stand in.
void TakeMailbox(const std::string& address, const std::string& name, const std::string& entry,
                 std::vector<Mailbox>& mailboxes, std::vector<MailboxProblem>& problems) {
  const std::string fault = AddressFault(address);
  if (!fault.empty()) {
    problems.push_back({DecodeAddressHeaderUtf8(entry, "UTF-8"), fault});
    return;
  }
  Mailbox& mailbox = mailboxes.emplace_back();
  mailbox.address = address;
  long long bad = 0;
  Utf16Of(name, mailbox.name, bad);
}

// ---- Header fields ----

class HeaderWriter {
 public:
  HeaderWriter(CodeType codeType, std::string& out) : encoding_{codeType}, out_(out) {}

  void Text(const char* name, std::u16string_view text) {
    std::string field = std::string(name) + ": ";
    AppendHeaderText(text, encoding_, field);
    End(field);
  }

  void Tokens(const char* name, std::string_view value) {
    if (value.empty()) return;
    std::string field = std::string(name) + ": ";
    AppendHeaderTokens(value, field);
    End(field);
  }

  void Mailboxes(const char* name, const std::vector<Mailbox>& mailboxes) {
    if (mailboxes.empty()) return;
    std::string field = std::string(name) + ": ";
    for (std::size_t i = 0; i < mailboxes.size(); ++i) {
      AppendMailbox(mailboxes[i], i + 1 < mailboxes.size() ? "," : "", field);
    }
    End(field);
  }

 private:
  void AppendMailbox(const Mailbox& mailbox, const char* behind, std::string& field) const {
    constexpr std::size_t kLongName = 60;
    const bool isPlain = IsAscii(mailbox.name) && mailbox.name.size() <= kLongName &&
                         mailbox.name.find(u"=?") == mailbox.name.npos;
    if (isPlain) {
      const std::string name(mailbox.name.begin(), mailbox.name.end());
      AppendHeaderTokens(MakeAddress(mailbox.address.c_str(), name.c_str(), 1) + behind, field);
      return;
    }
    HeaderEncoding encoding = encoding_;
    encoding.isName = true;
    AppendHeaderText(mailbox.name, encoding, field);
    AppendHeaderTokens('<' + mailbox.address + '>' + behind, field);
  }

  // Folds are written with CR LF.
  void End(std::string& field) {
    std::erase(field, '\r');
    out_ += field + '\n';
  }

  HeaderEncoding encoding_;
  std::string& out_;
};

// ---- The body ----

CStringW WithCrLf(std::u16string_view text) {
  CStringW out;
  out.reserve(text.size() + text.size() / 16);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\r' || text[i] == u'\n') {
      out += u"\r\n";
      if (text.substr(i, 2) == u"\r\n") ++i;
    } else {
      out += text[i];
    }
  }
  return out;
}

bool HasLongLine(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    const std::size_t size = end > 0 && bytes[end - 1] == '\r' ? end - 1 : end;
    if (size > kMaxBodyLine) return true;
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  return false;
}

// All that a charset has to carry.
CStringW AllText(const OutgoingMail& mail) {
  CStringW all = mail.subject + u'\n' + mail.body;
  for (const auto* mailboxes : {&mail.from, &mail.to, &mail.cc, &mail.bcc}) {
    for (const Mailbox& mailbox : *mailboxes) all += u'\n' + mailbox.name;
  }
  return all;
}

CodeType ChooseCharset(const SendCharset& charset, const CStringW& all) {
  if (charset.wanted != CT_UNKNOWN) return charset.wanted;
  if (charset.preferred != CT_UNKNOWN) {
    std::vector<PreflightFinding> findings;
    CheckBeforeSending(all, CodeType2DefSend(charset.preferred), findings);
    if (findings.empty()) return charset.preferred;
  }
  return NarrowestCodeType(all);
}

// The characters that do not arrive in a charset.
CStringW LostIn(CodeType codeType, const CStringW& all) {
  constexpr std::size_t kFew = 20;
  CStringW lost;
  std::vector<PreflightFinding> findings;
  CheckBeforeSending(all, codeType, findings);
  for (const PreflightFinding& finding : findings) {
    const std::u16string_view found =
        std::u16string_view(all).substr(finding.position, finding.length);
    CBuffer carried;
    CConversionReport report(0);
    ConvertToOtherCodeType2(CT_UNICODE, BytesOf(found), codeType, carried, 0, &report);
    if (finding.kind != PreflightKind::kNotEncodable && report.Replaced() == 0) continue;
    lost += found;
    if (lost.size() > kFew) break;
  }
  return lost;
}

}  // namespace

bool Utf16Of(std::string_view utf8, CStringW& text, long long& bad) {
  CBuffer wide;
  CConversionReport report(1);
  ConvertToOtherCodeType2(CT_UTF8, utf8, CT_UNICODE, wide, 0, &report);
  text = wide.Units();
  if (report.Replaced() == 0) return true;
  CConversionReport all(static_cast<std::size_t>(report.Fits()) + 1);
  ConvertToOtherCodeType2(CT_UTF8, utf8, CT_UNICODE, wide, 0, &all);
  for (const ConversionLoss& loss : all.First()) {
    if (loss.kind != ConversionLossKind::kReplaced) continue;
    bad = loss.inputOffset;
    break;
  }
  return false;
}

CStringA ShiftJisOf(std::u16string_view text) {
  constexpr unsigned kShiftJis = 932;
  constexpr int kMissing = 0x81AC;  // GETA MARK
  CStringA out;
  out.reserve(2 * text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPair = i + 1 < text.size() && GetCharCount(text.data() + i, 2) == 1;
    const int code = isPair ? -1 : EncodeUnit(kShiftJis, text[i], true);
    const int bytes = code < 0 ? kMissing : code;
    if (bytes > 0xFF) out += static_cast<char>(bytes >> 8);
    out += static_cast<char>(bytes);
    if (isPair) ++i;
  }
  return out;
}

void ParseMailboxes(std::string_view utf8, std::vector<Mailbox>& mailboxes,
                    std::vector<MailboxProblem>& problems) {
  // In a single-byte code page no byte of UTF-8 takes the next one with it.
  const CApplyLocale singleByte(CT_WIN1252);
  CStringArray entries;
  CStringA message;
  if (GetAddrArray3(utf8, entries, message) == 0) {
    problems.push_back({{}, Text(Say::kAddressUnclosed)});
    return;
  }
  for (const CStringA& entry : entries) {
    CStringA address;
    CStringA name;
    SplitMailAddr(entry, address, name, message);
    TakeMailbox(address, name, entry, mailboxes, problems);
  }
}

void ReadMailboxes(std::string_view raw, std::string_view rawCharset,
                   std::vector<Mailbox>& mailboxes, std::vector<MailboxProblem>& problems) {
  CArray<HeaderAddress> entries;
  if (ReadAddressHeader(raw, entries, rawCharset) != 0) {
    problems.push_back({{}, Text(Say::kAddressUnclosed)});
    return;
  }
  for (const HeaderAddress& entry : entries) {
    TakeMailbox(entry.address, entry.name, entry.entry, mailboxes, problems);
  }
}

bool WriteMail(const OutgoingMail& mail, const SendCharset& charset, std::string& out,
               CStringW& lost) {
  const CStringW all = AllText(mail);
  CodeType codeType = ChooseCharset(charset, all);
  if (charset.wanted != CT_UNKNOWN) {
    lost = LostIn(CodeType2DefSend(codeType), all);
    if (!lost.empty()) return false;
  }
  CBuffer body;
  std::string transfer;
  ConvertToOtherCodeType2(CT_UNICODE, BytesOf(WithCrLf(mail.body)), CodeTypeSave2Edit(codeType),
                          body);
  EncodeBodyForSend(0, codeType, transfer, body);
  if (HasLongLine(body.Bytes()) || body.Bytes().find('\0') != std::string_view::npos) {
    transfer = "base64";
  }
  CBuffer encoded;
  EncodeBody(transfer, body.Bytes(), 1, encoded);

  HeaderWriter header(codeType, out);
  header.Mailboxes("From", mail.from);
  header.Mailboxes("To", mail.to);
  header.Mailboxes("Cc", mail.cc);
  header.Mailboxes("Bcc", mail.bcc);
  header.Text("Subject", mail.subject);
  header.Tokens("In-Reply-To", mail.inReplyTo);
  header.Tokens("References", mail.references);
  header.Tokens("MIME-Version", "1.0");
  header.Tokens("Content-Type", std::string("text/plain; charset=") + CharSetCode2Name(codeType));
  header.Tokens("Content-Transfer-Encoding", transfer);
  out += '\n';
  const std::string_view bytes = encoded.Bytes();
  std::copy_if(bytes.begin(), bytes.end(), std::back_inserter(out),
               [](char c) { return c != '\r'; });
  if (!bytes.empty() && out.back() != '\n') out += '\n';
  return true;
}

bool CheckHeaderOption(Session& session, const char* option, const std::string& value) {
  CStringW text;
  long long bad = 0;
  const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; };
  const auto control = std::find_if(value.begin(), value.end(), isControl);
  if (control != value.end()) {
    const bool isBreak = *control == '\r' || *control == '\n';
    session.Tell({}, isBreak ? Say::kOptionLineBreak : Say::kOptionControl,
                 {option, std::to_string(control - value.begin() + 1)});
  } else if (!Utf16Of(value, text, bad)) {
    session.Tell({}, Say::kOptionNotUtf8, {option, std::to_string(bad + 1)});
  } else {
    return true;
  }
  session.Raise(kFailed);
  return false;
}

}  // namespace lumr::tool
