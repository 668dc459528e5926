// lumr header: header values to text and back.
#include <algorithm>
#include <string>
#include <vector>

#include "charsets.h"
#include "command.h"
#include "json.h"
#include "lumrmisc/mailtext/headerencode.h"
#include "lumrmisc/mailtext/headerword.h"
#include "outgoing.h"
#include "safetext.h"
#include "subcommands.h"
#include "textdecode.h"
#include "values.h"

namespace lumr::tool {

namespace {

struct HeaderOptions {
  std::vector<std::string> values;
  std::string charset;
  std::string kind;
  std::string field;
  bool isName = false;
};

bool FindCharset(Session& session, const std::string& name, CodeType& codeType) {
  Utf16Order order;
  if (name.empty()) return true;
  codeType = CodeTypeOfArgument(name, order);
  if (codeType != CT_UNKNOWN) return true;
  session.Tell({}, Say::kUnknownCharset, {SafeLine(name)});
  session.Raise(kFailed);
  return false;
}

void Decode(Session& session, HeaderOptions& options) {
  CodeType codeType = CT_UNKNOWN;
  if (!FindCharset(session, options.charset, codeType)) return;
  const char* const name = CharSetCode2Name(codeType);
  ForEachValue(session, options.values, true, [&](std::string_view raw) {
    const std::string text = DecodedHeader(raw, name == nullptr ? "" : name);
    if (session.json) {
      session.Write(JsonLine({{"raw", JsonText(raw)}, {"text", JsonText(text)}}));
    } else {
      session.Write(SafeLine(text) + '\n');
    }
  });
}

bool FindKind(Session& session, const std::string& name, HeaderWordKind& kind) {
  const bool isBase64 = name == "b" || name == "B";
  const bool isQuoted = name == "q" || name == "Q";
  if (isBase64) kind = HeaderWordKind::kBase64;
  if (isQuoted) kind = HeaderWordKind::kQuoted;
  if (name.empty() || isBase64 || isQuoted) return true;
  session.Tell({}, Say::kUnknownWordKind, {SafeLine(name)});
  session.Raise(kFailed);
  return false;
}

void EncodeOne(Session& session, const HeaderOptions& options, const HeaderEncoding& encoding,
               std::string_view value) {
  CStringW text;
  long long bad = 0;
  if (!Utf16Of(value, text, bad)) {
    session.Tell({}, Say::kValueNotUtf8, {SafeLine(value), std::to_string(bad + 1)});
    return session.Raise(kLost);
  }
  std::string field = options.field.empty() ? std::string() : options.field + ": ";
  const bool isExact = AppendHeaderText(text, encoding, field) != 0;
  if (!isExact) {
    session.Tell({}, Say::kValueLost, {SafeLine(value), CharSetCode2Name(encoding.codeType)});
    session.Raise(kLost);
  }
  std::erase(field, '\r');
  if (session.json) {
    session.Write(JsonLine({{"text", JsonText(value)}, {"value", field}, {"exact", isExact}}));
  } else {
    session.Write(field + '\n');
  }
}

// A field's name is of printable ASCII without a colon (RFC 5322, 2.2).
bool CheckFieldName(Session& session, const std::string& name) {
  if (std::ranges::all_of(name, [](char c) { return c > ' ' && c < '\x7F' && c != ':'; })) {
    return true;
  }
  session.Tell({}, Say::kBadFieldName, {SafeLine(name)});
  session.Raise(kFailed);
  return false;
}

void Encode(Session& session, HeaderOptions& options) {
  HeaderEncoding encoding;
  encoding.isName = options.isName;
  if (!FindCharset(session, options.charset, encoding.codeType) ||
      !FindKind(session, options.kind, encoding.kind) ||
      !CheckHeaderOption(session, "--field", options.field) ||
      !CheckFieldName(session, options.field)) {
    return;
  }
  for (const std::string& value : options.values) {
    if (!CheckHeaderOption(session, "VALUE", value)) return;
  }
  ForEachValue(session, options.values, false,
               [&](std::string_view value) { EncodeOne(session, options, encoding, value); });
}

void DeclareDecode(CLI::App& command, HeaderOptions& options) {
  command.add_option("VALUE", options.values, Text(Say::kHeaderRaw))->type_name("");
  command.add_option("--charset", options.charset, Text(Say::kHeaderRawCharset))
      ->type_name("CHARSET");
}

void DeclareEncode(CLI::App& command, HeaderOptions& options) {
  command.add_option("VALUE", options.values, Text(Say::kHeaderText))->type_name("");
  command.add_option("--charset", options.charset, Text(Say::kHeaderCharset))->type_name("CHARSET");
  command.add_option("--kind", options.kind, Text(Say::kHeaderKind))->type_name("b|q");
  command.add_option("--field", options.field, Text(Say::kHeaderField))->type_name("NAME");
  command.add_flag("--name", options.isName, Text(Say::kHeaderName));
}

constexpr Subcommand<HeaderOptions> kHeaderCommands[] = {
    {"decode", Say::kHeaderDecode, DeclareDecode, Decode},
    {"encode", Say::kHeaderEncode, DeclareEncode, Encode},
};

}  // namespace

Runner AddHeader(CLI::App& command) {
  return AddSubcommands<HeaderOptions>(command, kHeaderCommands);
}

}  // namespace lumr::tool
