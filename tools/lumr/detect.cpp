// lumr detect: which code type a file is in, and why.
#include "lumrmisc/charset/detect.h"

#include <memory>
#include <string>
#include <vector>

#include "command.h"
#include "input.h"
#include "json.h"
#include "safetext.h"

namespace lumr::tool {

namespace {

struct RuleRow {
  DetectionRule rule;
  const char* name;  // in JSON
  Say what;
};
constexpr RuleRow kRules[] = {
    {DetectionRule::kEmpty, "empty", Say::kRuleEmpty},
    {DetectionRule::kPlainAscii, "plain-ascii", Say::kRulePlainAscii},
    {DetectionRule::kEscape, "escape", Say::kRuleEscape},
    {DetectionRule::kUtf8, "utf-8", Say::kRuleUtf8},
    {DetectionRule::kUtf16BigEndian, "utf-16-big-endian", Say::kRuleUtf16BigEndian},
    {DetectionRule::kUtf16, "utf-16", Say::kRuleUtf16},
    {DetectionRule::kEucByte, "euc-byte", Say::kRuleEucByte},
    {DetectionRule::kSJisByte, "sjis-byte", Say::kRuleSJisByte},
    {DetectionRule::kAmbiguous, "ambiguous", Say::kRuleAmbiguous},
    {DetectionRule::kNothingTelling, "nothing-telling", Say::kRuleNothingTelling},
};

const RuleRow& RowOf(DetectionRule rule) {
  for (const RuleRow& row : kRules) {
    if (row.rule == rule) return row;
  }
  return kRules[0];
}

std::string HexByte(unsigned char byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  return {kDigits[byte >> 4], kDigits[byte & 15]};
}

void PrintText(Session& session, const std::string& file, const Detection& found) {
  std::string line = SafeLine(file) + ": " + std::to_string(found.codeType) + ' ' +
                     CharSetCode2Name(found.codeType) + ": " + Text(RowOf(found.rule).what);
  if (found.offset >= 0) {
    line += Text(Say::kAtByte, {Grouped(found.offset), HexByte(found.byte)});
  }
  session.Write(line + '\n');
}

void PrintJson(Session& session, const std::string& file, const Detection& found) {
  Json object = {{"file", JsonText(file)},
                 {"codeType", static_cast<int>(found.codeType)},
                 {"charset", CharSetCode2Name(found.codeType)},
                 {"rule", RowOf(found.rule).name}};
  if (found.offset >= 0) {
    object["offset"] = found.offset;
    object["byte"] = found.byte;
  }
  session.Write(JsonLine(object));
}

void DetectFile(Session& session, const std::string& file) {
  std::string content;
  if (const FileError error = ReadAll(file, content)) {
    session.TellUnreadable(file, error);
    return;
  }
  const Detection found = ExplainDetection(content);
  (session.json ? PrintJson : PrintText)(session, file, found);
  const bool nothingFound =
      found.rule == DetectionRule::kEmpty || found.rule == DetectionRule::kNothingTelling;
  if (nothingFound) session.Raise(kLost);
}

}  // namespace

Runner AddDetect(CLI::App& command) {
  const auto files = std::make_shared<std::vector<std::string>>();
  command.add_option("FILE", *files, Text(Say::kDetectFile))->required()->type_name("");
  return [files](Session& session) {
    std::int64_t done = 0;
    for (const std::string& file : *files) {
      DetectFile(session, file);
      session.Progress(++done, static_cast<std::int64_t>(files->size()), file);
    }
  };
}

}  // namespace lumr::tool
