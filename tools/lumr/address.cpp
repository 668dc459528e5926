// lumr address: addresses and lists of them.
#include "lumrmisc/mailtext/address.h"

#include <algorithm>
#include <string>
#include <vector>

#include "command.h"
#include "json.h"
#include "lumrmisc/buffer/texttool.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/mailtext/addressheader.h"
#include "lumrmisc/platform/messages.h"
#include "lumrmisc/platform/unicode.h"
#include "outgoing.h"
#include "safetext.h"
#include "subcommands.h"
#include "textdecode.h"
#include "values.h"

namespace lumr::tool {

namespace {

struct AddressOptions {
  std::vector<std::string> values;
  std::string kind = "address";
  std::string name;
  std::string address;
  bool isPlain = false;
};

struct KindRow {
  const char* name;
  AddressField field;
};
constexpr KindRow kKinds[] = {
    {"address", AddressField::kAddress}, {"pattern", AddressField::kWildAddress},
    {"name", AddressField::kName},       {"organization", AddressField::kOrganisation},
    {"server", AddressField::kServer},   {"account", AddressField::kAccount},
};

// Gives false after telling that a value is no UTF-8.
bool ReadValue(Session& session, std::string_view value, CStringW& text) {
  long long bad = 0;
  if (Utf16Of(value, text, bad)) return true;
  session.Tell({}, Say::kValueNotUtf8, {SafeLine(value), std::to_string(bad + 1)});
  session.Raise(kLost);
  return false;
}

// ---- check ----

// The character at a place in Shift_JIS, in the text itself; both have the same characters.
std::u16string_view CharacterAt(std::u16string_view text, int number) {
  std::size_t begin = 0;
  const auto length = [&text](std::size_t at) -> std::size_t {
    return at + 1 < text.size() && GetCharCount(text.data() + at, 2) == 1 ? 2 : 1;
  };
  for (; number > 0 && begin < text.size(); --number) begin += length(begin);
  return begin < text.size() ? text.substr(begin, length(begin)) : std::u16string_view();
}

void CheckOne(Session& session, AddressField field, std::string_view value) {
  CStringW text;
  if (!ReadValue(session, value, text)) return;
  const CApplyLocale locale(CT_SJIS);
  const CStringA narrow = ShiftJisOf(text);
  const AddressProblem problem = FindAddressProblem(field, narrow);
  const int before = GetCharCount(narrow.data(), problem.position < 0 ? 0 : problem.position);
  const std::string message =
      problem.result == 0 ? Text(Say::kAddressGood) : MessageTextUtf8(problem.message);
  if (problem.result != 0) session.Raise(kLost);
  if (session.json) {
    Json object = {{"input", JsonText(value)}, {"result", problem.result}, {"message", message}};
    if (problem.position >= 0) object["character"] = before + 1;
    session.Write(JsonLine(object));
    return;
  }
  std::string line = SafeLine(value) + ": " + message;
  if (problem.position >= 0) {
    line += Text(Say::kAtCharacter,
                 {std::to_string(before + 1), SafeLine(Utf8(CharacterAt(text, before)))});
  }
  session.Write(line + '\n');
}

void Check(Session& session, AddressOptions& options) {
  const KindRow* kind = nullptr;
  for (const KindRow& row : kKinds) {
    if (options.kind == row.name) kind = &row;
  }
  if (kind == nullptr) {
    session.Tell({}, Say::kUnknownAddressKind, {SafeLine(options.kind)});
    return session.Raise(kFailed);
  }
  ForEachValue(session, options.values, false,
               [&](std::string_view value) { CheckOne(session, kind->field, value); });
}

// ---- split, parse ----

// Tells what is left open, and where the entry begins that holds it: the last one.
void TellOpen(Session& session, std::u16string_view list, const std::string& entry,
              unsigned message) {
  session.Raise(kLost);
  CStringW last;
  long long bad = 0;
  Utf16Of(entry, last, bad);
  while (!list.empty() && IsUnitSpace(list.back())) list.remove_suffix(1);
  const std::size_t size = std::min(last.size(), list.size());
  session.Tell({}, MessageTextUtf8(message) +
                       Text(Say::kAtCharacter,
                            {CharacterNumber(list, list.size() - size), SafeLine(entry)}));
}

// Calls take for each entry of the lists.
template <typename Take>
void ForEachEntry(Session& session, const AddressOptions& options, Take take) {
  ForEachValue(session, options.values, true, [&](std::string_view value) {
    CStringW list;
    if (!ReadValue(session, value, list)) return;
    CArray<HeaderAddress> entries;
    const unsigned message = ReadAddressHeader(value, entries, "UTF-8");
    for (const HeaderAddress& entry : entries) take(entry);
    if (message != 0) TellOpen(session, list, entries.back().entry, message);
  });
}

void Split(Session& session, AddressOptions& options) {
  ForEachEntry(session, options, [&session](const HeaderAddress& entry) {
    session.Write(session.json ? JsonLine({{"entry", JsonText(entry.entry)}})
                               : SafeLine(entry.entry) + '\n');
  });
}

void Parse(Session& session, AddressOptions& options) {
  ForEachEntry(session, options, [&session](const HeaderAddress& entry) {
    session.Write(session.json ? JsonLine({{"address", JsonText(entry.address)},
                                           {"name", JsonText(entry.name)}})
                               : SafeLine(entry.address) + '\t' + SafeLine(entry.name) + '\n');
  });
}

// ---- format ----

void Format(Session& session, AddressOptions& options) {
  CStringW address;
  CStringW name;
  if (!CheckHeaderOption(session, "ADDRESS", options.address) ||
      !CheckHeaderOption(session, "NAME", options.name) ||
      !ReadValue(session, options.address, address) || !ReadValue(session, options.name, name)) {
    return;
  }
  const std::string made =
      Utf8(MakeAddress2(address.c_str(), name.c_str(), options.isPlain ? 0 : 1));
  session.Write(session.json ? JsonLine({{"text", JsonText(made)}}) : SafeLine(made) + '\n');
}

// ---- The family ----

void DeclareCheck(CLI::App& command, AddressOptions& options) {
  command.add_option("VALUE", options.values, Text(Say::kAddressValue))->type_name("");
  command.add_option("--as", options.kind, Text(Say::kAddressAs))->type_name("KIND");
}

void DeclareList(CLI::App& command, AddressOptions& options) {
  command.add_option("LIST", options.values, Text(Say::kAddressList))->type_name("");
}

void DeclareFormat(CLI::App& command, AddressOptions& options) {
  command.add_option("ADDRESS", options.address, Text(Say::kAddressOne))->required()->type_name("");
  command.add_option("NAME", options.name, Text(Say::kAddressName))->type_name("");
  command.add_flag("--plain", options.isPlain, Text(Say::kAddressPlain));
}

constexpr Subcommand<AddressOptions> kAddressCommands[] = {
    {"check", Say::kAddressCheck, DeclareCheck, Check},
    {"parse", Say::kAddressParse, DeclareList, Parse},
    {"format", Say::kAddressFormat, DeclareFormat, Format},
    {"split", Say::kAddressSplit, DeclareList, Split},
};

}  // namespace

Runner AddAddress(CLI::App& command) {
  return AddSubcommands<AddressOptions>(command, kAddressCommands);
}

}  // namespace lumr::tool
