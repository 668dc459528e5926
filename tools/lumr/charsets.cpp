// lumr charsets: the table of code types.
#include "charsets.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

#include "command.h"
#include "json.h"
#include "lumrmisc/charset/mailcharset.h"
#include "safetext.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kColumns = 5;
using Row = std::array<std::string, kColumns>;

std::string Aliases(CodeType codeType) {
  std::string aliases;
  for (const char* name : CharSetNames(codeType).subspan(1)) {
    if (!aliases.empty()) aliases += ", ";
    aliases += name;
  }
  return aliases;
}

Row RowOf(CodeType codeType) {
  return {std::to_string(codeType), CharSetCode2Name(codeType), Aliases(codeType),
          std::to_string(CharSetCode2CodePage2(codeType)), Utf8(GetCodeTypeDisplayNameW(codeType))};
}

void PrintTable(Session& session) {
  std::vector<Row> rows = {{Text(Say::kHeadNumber), Text(Say::kHeadName), Text(Say::kHeadAliases),
                            Text(Say::kHeadCodePage), Text(Say::kHeadDisplayName)}};
  for (const CodeType codeType : AllCodeTypes()) rows.push_back(RowOf(codeType));
  std::array<int, kColumns> widths{};
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < kColumns; ++i) {
      widths[i] = std::max(widths[i], DisplayWidth(row[i]));
    }
  }
  for (const Row& row : rows) {
    std::string line;
    for (std::size_t i = 0; i + 1 < kColumns; ++i) line += Padded(row[i], widths[i] + 2);
    session.Write(line + row.back() + '\n');
  }
}

void PrintJson(Session& session) {
  for (const CodeType codeType : AllCodeTypes()) {
    Json names = Json::array();
    for (const char* name : CharSetNames(codeType)) names.push_back(name);
    session.Write(JsonLine({{"codeType", static_cast<int>(codeType)},
                            {"names", names},
                            {"codePage", CharSetCode2CodePage2(codeType)},
                            {"displayName", Utf8(GetCodeTypeDisplayNameW(codeType))}}));
  }
}

}  // namespace

CodeType CodeTypeOfArgument(const std::string& argument, Utf16Order& order) {
  order = Utf16Order::kByMark;
  int number = 0;
  const char* const end = argument.data() + argument.size();
  const auto parsed = std::from_chars(argument.data(), end, number);
  if (parsed.ec != std::errc() || parsed.ptr != end) {
    return CodeTypeOfMailLabel(argument, &order);
  }
  const auto all = AllCodeTypes();
  const auto found = std::find(all.begin(), all.end(), static_cast<CodeType>(number));
  return found == all.end() ? CT_UNKNOWN : *found;
}

Runner AddCharsets(CLI::App&) {
  return [](Session& session) { (session.json ? PrintJson : PrintTable)(session); };
}

}  // namespace lumr::tool
