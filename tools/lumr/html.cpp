// lumr html: HTML made safe, to and from text, its charset, its links.
#include <array>
#include <map>
#include <string>
#include <vector>

#include "charsets.h"
#include "htmltext.h"
#include "input.h"
#include "json.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/html/adjust.h"
#include "lumrmisc/html/fromtext.h"
#include "lumrmisc/html/htmlcharset.h"
#include "lumrmisc/html/reading.h"
#include "lumrmisc/html/safe.h"
#include "lumrmisc/html/sanitize.h"
#include "safetext.h"
#include "subcommands.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

struct HtmlOptions {
  std::string file = "-";
  std::string text;
  std::string charset;
  std::vector<std::string> arguments;
  bool strict = false;
  bool report = false;
  bool links = false;
  bool reading = false;
};

// ---- Input and output
// ----------------------------------------------------------------------------

struct Document {
  MailCharset charset{CT_UNKNOWN, CharsetSource::kNoLabel};
  CStringW text;
};

// Reads a file in the charset that it says or seems to be in. False when it cannot be read.
bool ReadDocument(Session& session, const std::string& file, bool isHtml, Document& document) {
  std::string content;
  if (const FileError error = ReadAll(file, content)) {
    session.TellUnreadable(file, error);
    return false;
  }
  document.charset = isHtml ? ResolveHtmlCharset({}, content) : ResolveMailCharset({}, content);
  CBuffer units;
  CConversionReport report(0);
  ConvertMailText(document.charset, content, units, &report);
  if (report.Replaced() > 0) {
    session.Tell(file, Say::kHtmlReplaced,
                 {Grouped(report.Replaced()), CharSetCode2Name(document.charset.codeType)});
    session.Raise(kLost);
  }
  const std::string_view bytes = units.Bytes();
  document.text.resize(bytes.size() / 2);
  bytes.copy(reinterpret_cast<char*>(document.text.data()), document.text.size() * 2);
  return true;
}

// Writes text to the terminal or a pipe in UTF-8. key: its name in JSON.
void WriteDocument(Session& session, const HtmlOptions& options, const Document& document,
                   const char* key) {
  const std::string utf8 = Utf8(document.text);
  if (session.json) {
    const char* const charset = CharSetCode2Name(document.charset.codeType);
    session.Write(JsonLine({{"file", JsonText(options.file)},
                            {"charset", charset == nullptr ? "" : charset},
                            {key, JsonText(utf8)}}));
    return;
  }
  std::string safe;
  AppendSafe(utf8, SafeForm::kLines, safe);
  session.Write(safe);
}

// Printed is UTF-8, so that is what the document has to declare.
void WriteHtml(Session& session, const HtmlOptions& options, Document& document) {
  ChangeHtmlCharSetW(document.text, CT_UTF8);
  WriteDocument(session, options, document, "html");
}

void DeclareFile(CLI::App& command, HtmlOptions& options) {
  command.add_option("FILE", options.file, Text(Say::kHtmlFile))->type_name("");
}

bool FindCharset(Session& session, const std::string& name, CodeType& codeType) {
  Utf16Order order;
  codeType = CodeTypeOfArgument(name, order);
  if (codeType != CT_UNKNOWN) return true;
  session.Tell({}, Say::kUnknownCharset, {SafeLine(name)});
  session.Raise(kFailed);
  return false;
}

// ---- HTML in any charset
// -------------------------------------------------------------------------

// Which characters a charset has, asked once each.
class Repertoire {
 public:
  explicit Repertoire(CodeType codeType) : codeType_(codeType) {}

  bool Has(std::u16string_view character) {
    const auto [entry, isNew] = known_.try_emplace(std::u16string(character), true);
    if (isNew) {
      CBuffer bytes;
      CConversionReport report(0);
      ConvertToOtherCodeType2(CT_UNICODE, BytesOf(character), codeType_, bytes, 0, &report);
      entry->second = report.Replaced() == 0;
    }
    return entry->second;
  }

  static std::string_view BytesOf(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
  }

 private:
  CodeType codeType_;
  std::map<std::u16string, bool> known_;
};

std::size_t CharacterSize(std::u16string_view text) {
  const bool isPair =
      (text[0] & 0xFC00) == 0xD800 && text.size() > 1 && (text[1] & 0xFC00) == 0xDC00;
  return isPair ? 2 : 1;
}

// Writes what the charset lacks as character references, which HTML reads in any charset.
CStringW WithReferences(std::u16string_view html, CodeType codeType) {
  Repertoire repertoire(codeType);
  CStringW out;
  while (!html.empty()) {
    const std::u16string_view character = html.substr(0, CharacterSize(html));
    html.remove_prefix(character.size());
    if (character[0] < 0x80 || repertoire.Has(character)) {
      out += character;
      continue;
    }
    std::uint32_t number = character[0];
    if (character.size() == 2)
      number = 0x10000 + ((number - 0xD800) << 10) + (character[1] - 0xDC00u);
    const std::string digits = std::to_string(number);
    out += u"&#" + std::u16string(digits.begin(), digits.end()) + u';';
  }
  return out;
}

void WriteInCharset(Session& session, const HtmlOptions& options, const Document& document,
                    CodeType codeType) {
  if (session.json) return WriteDocument(session, options, document, "html");
  CBuffer bytes;
  const CStringW html = WithReferences(document.text, codeType);
  ConvertToOtherCodeType2(CT_UNICODE, Repertoire::BytesOf(html), codeType, bytes);
  if (codeType == CT_UNICODE) session.Write("\xFF\xFE");
  session.Write(bytes.Bytes());
}

// ---- safe
// ----------------------------------------------------------------------------------------

struct ReasonRow {
  SafeHtmlReason reason;
  const char* name;  // in JSON
  Say what;
};
constexpr ReasonRow kReasons[] = {
    {SafeHtmlReason::kScript, "script", Say::kRemovedScript},
    {SafeHtmlReason::kEventHandler, "event-handler", Say::kRemovedEvent},
    {SafeHtmlReason::kStyleSheet, "style-sheet", Say::kRemovedStyleSheet},
    {SafeHtmlReason::kForeign, "foreign", Say::kRemovedForeign},
    {SafeHtmlReason::kFrame, "frame", Say::kRemovedFrame},
    {SafeHtmlReason::kForm, "form", Say::kRemovedForm},
    {SafeHtmlReason::kObject, "object", Say::kRemovedObject},
    {SafeHtmlReason::kMetadata, "metadata", Say::kRemovedMetadata},
    {SafeHtmlReason::kTemplate, "template", Say::kRemovedTemplate},
    {SafeHtmlReason::kUnknownElement, "unknown-element", Say::kRemovedElement},
    {SafeHtmlReason::kMisplaced, "misplaced", Say::kRemovedMisplaced},
    {SafeHtmlReason::kTooDeep, "too-deep", Say::kRemovedTooDeep},
    {SafeHtmlReason::kComment, "comment", Say::kRemovedComment},
    {SafeHtmlReason::kUnfinishedTag, "unfinished-tag", Say::kRemovedUnfinished},
    {SafeHtmlReason::kAttribute, "attribute", Say::kRemovedAttribute},
    {SafeHtmlReason::kAddress, "address", Say::kRemovedAddress},
    {SafeHtmlReason::kUserInfo, "user-info", Say::kRemovedUserInfo},
    {SafeHtmlReason::kRemoteImage, "remote-image", Say::kRemovedRemoteImage},
    {SafeHtmlReason::kEmbeddedImage, "embedded-image", Say::kRemovedEmbeddedImage},
    {SafeHtmlReason::kStyleDeclaration, "style-declaration", Say::kRemovedStyle},
};

const ReasonRow& RowOf(SafeHtmlReason reason) {
  for (const ReasonRow& row : kReasons) {
    if (row.reason == reason) return row;
  }
  return kReasons[0];
}

// TellLine ends the line, as JsonLine does.
void TellObject(Session& session, const Json& object) {
  const std::string line = JsonLine(object);
  session.TellLine(std::string_view(line).substr(0, line.size() - 1));
}

void TellRemoval(Session& session, const std::string& file, const SafeHtmlRemoval& removal) {
  const ReasonRow& row = RowOf(removal.reason);
  if (session.json) {
    Json object = {{"file", JsonText(file)},
                   {"offset", removal.offset},
                   {"removed", row.name},
                   {"name", JsonText(Utf8(removal.name))}};
    if (!removal.value.empty()) object["value"] = JsonText(Utf8(removal.value));
    return TellObject(session, object);
  }
  const std::string name = removal.name.empty() ? "" : ": " + SafeLine(Utf8(removal.name));
  const std::string value = removal.value.empty() ? "" : ' ' + SafeLine(Utf8(removal.value));
  session.Tell(file, Say::kHtmlRemoved,
               {Grouped(static_cast<long long>(removal.offset)), Text(row.what), name + value});
}

Json LinkObject(const std::string& file, const SafeHtmlLink& link) {
  return {{"file", JsonText(file)},
          {"offset", link.offset},
          {"address", JsonText(Utf8(link.address))},
          {"host", JsonText(Utf8(link.host))},
          {"text", JsonText(Utf8(link.text))},
          {"namesAnotherHost", link.namesAnotherHost},
          {"hadUserInfo", link.hadUserInfo},
          {"mixesScripts", link.mixesScripts}};
}

bool IsSuspicious(const SafeHtmlLink& link) {
  return link.namesAnotherHost || link.hadUserInfo || link.mixesScripts;
}

void TellSuspicious(Session& session, const std::string& file, const SafeHtmlLink& link) {
  const Say what = link.namesAnotherHost ? Say::kLinkOtherHost
                   : link.hadUserInfo    ? Say::kLinkUserInfo
                                         : Say::kLinkScripts;
  session.Tell(file, what, {SafeLine(Utf8(link.text)), SafeLine(Utf8(link.host))});
}

void TellReport(Session& session, const std::string& file, const SafeHtmlReport& report) {
  for (const SafeHtmlRemoval& removal : report.removals) TellRemoval(session, file, removal);
  for (const SafeHtmlLink& link : report.links) {
    if (session.json)
      TellObject(session, LinkObject(file, link));
    else if (IsSuspicious(link))
      TellSuspicious(session, file, link);
  }
  const std::size_t untold =
      report.removalCount - report.removals.size() + report.linkCount - report.links.size();
  if (untold > 0) session.Tell(file, Say::kReportMore, {Grouped(static_cast<long long>(untold))});
}

void RunSafe(Session& session, HtmlOptions& options) {
  Document document;
  if (!ReadDocument(session, options.file, true, document)) return;
  if (!options.strict) {
    ToSafeHtmlW(document.text);
    return WriteHtml(session, options, document);
  }
  SafeHtmlOptions strict;
  strict.wholePage = true;
  SafeHtmlReport report;
  ToSafeHtmlW2(document.text, strict, &report);
  WriteDocument(session, options, document, "html");
  if (options.report) TellReport(session, options.file, report);
}

void DeclareSafe(CLI::App& command, HtmlOptions& options) {
  DeclareFile(command, options);
  auto* const strict = command.add_flag("--strict", options.strict, Text(Say::kHtmlStrict));
  command.add_flag("--report", options.report, Text(Say::kHtmlReport))->needs(strict);
}

// ---- The other commands
// --------------------------------------------------------------------------

void RunText(Session& session, HtmlOptions& options) {
  Document document;
  if (!ReadDocument(session, options.file, true, document)) return;
  if (options.reading) {
    ExtractTextFromHtmlW2(document.text, options.links);
  } else {
    document.text = ReadableHtml(std::move(document.text), options.links);
  }
  WriteDocument(session, options, document, "text");
}

void DeclareText(CLI::App& command, HtmlOptions& options) {
  DeclareFile(command, options);
  command.add_flag("--links", options.links, Text(Say::kHtmlKeepLinks));
  command.add_flag("--reading", options.reading, Text(Say::kHtmlReading));
}

void RunFromText(Session& session, HtmlOptions& options) {
  Document document;
  CodeType codeType = CT_UNKNOWN;
  if (!options.charset.empty() && !FindCharset(session, options.charset, codeType)) return;
  if (!ReadDocument(session, options.file, false, document)) return;
  const std::string_view name = codeType == CT_UNKNOWN ? "" : CharSetCode2Name(codeType);
  ToHtmlDocumentW(document.text, CStringW(name.begin(), name.end()).c_str());
  if (codeType == CT_UNKNOWN) return WriteDocument(session, options, document, "html");
  WriteInCharset(session, options, document, codeType);
}

void DeclareFromText(CLI::App& command, HtmlOptions& options) {
  command.add_option("FILE", options.file, Text(Say::kHtmlTextFile))->type_name("");
  command.add_option("--charset", options.charset, Text(Say::kHtmlCharset))->type_name("NAME");
}

void ShowCharset(Session& session, HtmlOptions& options) {
  Document document;
  if (!ReadDocument(session, options.file, true, document)) return;
  CStringA declared;
  if (GetHtmlCharSetW(document.text, declared) == 0) session.Raise(kLost);
  if (session.json) {
    const char* const charset = CharSetCode2Name(document.charset.codeType);
    session.Write(JsonLine({{"file", JsonText(options.file)},
                            {"declared", JsonText(declared)},
                            {"charset", charset == nullptr ? "" : charset}}));
  } else if (declared.empty()) {
    session.Tell(options.file, Say::kHtmlNoCharset);
  } else {
    session.Write(SafeLine(declared) + '\n');
  }
}

// "charset", "charset FILE", "charset NAME" and "charset NAME FILE": one argument is a name where
// there is a charset of that name.
void RunCharset(Session& session, HtmlOptions& options) {
  Utf16Order order;
  const std::vector<std::string>& arguments = options.arguments;
  const bool isName =
      arguments.size() == 2 ||
      (arguments.size() == 1 && CodeTypeOfArgument(arguments[0], order) != CT_UNKNOWN);
  if (!isName) {
    if (!arguments.empty()) options.file = arguments[0];
    return ShowCharset(session, options);
  }
  if (arguments.size() == 2) options.file = arguments[1];
  CodeType codeType;
  Document document;
  if (!FindCharset(session, arguments[0], codeType)) return;
  if (!ReadDocument(session, options.file, true, document)) return;
  if (ChangeHtmlCharSetW(document.text, codeType) == 0) AddHtmlCharSetW(document.text, codeType);
  WriteInCharset(session, options, document, codeType);
}

void DeclareCharset(CLI::App& command, HtmlOptions& options) {
  command.add_option("NAME FILE", options.arguments, Text(Say::kHtmlCharsetArguments))
      ->type_name("")
      ->expected(0, 2);
}

void RunLead(Session& session, HtmlOptions& options) {
  Document document;
  if (!ReadDocument(session, options.file, true, document)) return;
  long long invalid = 0;
  CStringW lead = WideText(options.text, invalid);
  ToHtmlDocumentW(lead, nullptr);
  InsertLeadTextW(lead.c_str(), document.text);
  WriteHtml(session, options, document);
}

void DeclareLead(CLI::App& command, HtmlOptions& options) {
  command.add_option("TEXT", options.text, Text(Say::kHtmlLeadText))->required()->type_name("");
  DeclareFile(command, options);
}

void RunLinks(Session& session, HtmlOptions& options) {
  Document document;
  if (!ReadDocument(session, options.file, true, document)) return;
  SafeHtmlReport report;
  ToSafeHtmlW2(document.text, {}, &report);
  for (const SafeHtmlLink& link : report.links) {
    if (session.json) {
      session.Write(JsonLine(LinkObject(options.file, link)));
      continue;
    }
    session.Write(SafeLine(Utf8(link.address)) + '\t' + SafeLine(Utf8(link.text)) + '\n');
    if (IsSuspicious(link)) TellSuspicious(session, options.file, link);
  }
  if (report.links.empty()) session.Raise(kLost);
}

constexpr Subcommand<HtmlOptions> kHtmlCommands[] = {
    {"safe", Say::kHtmlSafe, DeclareSafe, RunSafe},
    {"text", Say::kHtmlText, DeclareText, RunText},
    {"from-text", Say::kHtmlFromText, DeclareFromText, RunFromText},
    {"charset", Say::kHtmlCharsetCommand, DeclareCharset, RunCharset},
    {"lead", Say::kHtmlLead, DeclareLead, RunLead},
    {"links", Say::kHtmlLinks, DeclareFile, RunLinks},
};

}  // namespace

Runner AddHtml(CLI::App& command) {
  return AddSubcommands<HtmlOptions>(command, kHtmlCommands);
}

}  // namespace lumr::tool
