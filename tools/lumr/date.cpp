// lumr date: what a Date header says.
#include "lumrmisc/mailtext/date.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "command.h"
#include "json.h"
#include "lumrmisc/mailtext/headerword.h"
#include "lumrmisc/platform/clock.h"
#include "outgoing.h"
#include "safetext.h"
#include "textdecode.h"
#include "values.h"

namespace lumr::tool {

namespace {

struct DateOptions {
  std::vector<std::string> texts;
  std::string format = "rfc5322";
  std::string zone;
  std::string missingZone;
  bool isNow = false;
};

struct FormatRow {
  const char* name;
  std::string (*write)(CTime time, int zone);
};
constexpr FormatRow kFormats[] = {
    {"rfc5322", FormatMailDate},
    {"iso8601", FormatIsoDate},
    {"ja", [](CTime time, int zone) { return Utf8(FormatJapaneseDate(time, zone)); }},
    {"unix", [](CTime time, int) { return std::to_string(time.time_since_epoch().count()); }},
};

struct ProblemRow {
  DateProblem problem;
  const char* name;  // in JSON
  Say what;
};
constexpr ProblemRow kProblems[] = {
    {DateProblem::kNoDate, "no-date", Say::kDateNoDate},
    {DateProblem::kUnexpected, "unexpected", Say::kDateUnexpected},
    {DateProblem::kTwice, "twice", Say::kDateTwice},
    {DateProblem::kYearRange, "year", Say::kDateYear},
    {DateProblem::kMonthRange, "month", Say::kDateMonth},
    {DateProblem::kDayRange, "day", Say::kDateDay},
    {DateProblem::kHourRange, "hour", Say::kDateHour},
    {DateProblem::kMinuteRange, "minute", Say::kDateMinute},
    {DateProblem::kSecondRange, "second", Say::kDateSecond},
    {DateProblem::kZoneRange, "zone", Say::kDateZoneBad},
    {DateProblem::kAmbiguous, "ambiguous", Say::kDateAmbiguousOrder},
};

struct AssumptionRow {
  DateAssumption flag;
  const char* name;  // in JSON
  Say what;
};
constexpr AssumptionRow kAssumptions[] = {
    {kDateNoTime, "no-time", Say::kDateAssumedTime},
    {kDateNoZone, "no-zone", Say::kDateAssumedZone},
    {kDateUnknownZone, "unknown-zone", Say::kDateAssumedUtc},
    {kDateShortYear, "short-year", Say::kDateAssumedYear},
    {kDateWrongWeekday, "wrong-weekday", Say::kDateAssumedWeekday},
    {kDateUnsignedZone, "unsigned-zone", Say::kDateAssumedSign},
    {kDateZoneConflict, "zone-conflict", Say::kDateAssumedConflict},
    {kDateTextIgnored, "text-ignored", Say::kDateAssumedIgnored},
    {kDateOrderGuessed, "order-guessed", Say::kDateAssumedOrder},
};

// The minutes of an offset or of a zone's name.
std::optional<int> ZoneOf(std::string_view text) {
  MailDate date;
  const std::string whole = "1 Jan 2000 00:00 " + std::string(text);
  if (ParseMailDate(whole, date) == 0 || date.assumed != 0) return std::nullopt;
  return date.zoneMinutes;
}

class DateCommand {
 public:
  DateCommand(Session& session, const DateOptions& options)
      : session_(session), options_(options) {}

  void Run() {
    if (!ReadOptions()) return session_.Raise(kFailed);
    if (options_.isNow) return WriteNow();
    ForEachValue(session_, options_.texts, true, [this](std::string_view text) { Read(text); });
  }

 private:
  bool ReadOptions() {
    for (const FormatRow& row : kFormats) {
      if (options_.format == row.name) format_ = &row;
    }
    if (format_ == nullptr) {
      session_.Tell({}, Say::kUnknownDateFormat, {SafeLine(options_.format)});
      return false;
    }
    return ReadZone(options_.zone, zone_) && ReadZone(options_.missingZone, missingZone_);
  }

  bool ReadZone(const std::string& text, std::optional<int>& zone) {
    if (text.empty()) return true;
    zone = ZoneOf(text);
    if (!zone) session_.Tell({}, Say::kBadZone, {SafeLine(text)});
    return zone.has_value();
  }

  void WriteNow() {
    const CTime now = Now();
    Write({now, LocalTimeOf(now).utcOffsetMinutes, 0}, {});
  }

  void Read(std::string_view raw) {
    // As it stands in a header: "Date: ...".
    constexpr std::string_view kName = "Date:";
    if (raw.starts_with(kName)) raw.remove_prefix(kName.size());
    const CStringW text = DecodeHeaderValue(raw);
    MailDate date;
    DateFault fault;
    if (ParseMailDate(text, date, &fault, missingZone_.value_or(0)) == 0) {
      return TellFault(text, fault);
    }
    Write(date, text);
  }

  void TellFault(const CStringW& text, const DateFault& fault) {
    session_.Raise(kLost);
    const ProblemRow* problem = kProblems;
    while (problem->problem != fault.problem) ++problem;
    const auto position = static_cast<std::size_t>(fault.position);
    const std::string number = CharacterNumber(text, position);
    if (session_.json) {
      session_.Write(JsonLine({{"input", JsonText(Utf8(text))},
                               {"problem", problem->name},
                               {"message", Text(problem->what)},
                               {"character", std::stoi(number)}}));
      return;
    }
    session_.Tell(SafeLine(Utf8(text)), Say::kDateAt,
                  {Text(problem->what), number, SafeLine(Utf8(text.substr(position, 20)))});
  }

  void Write(const MailDate& date, const CStringW& text) {
    const int zone = zone_.value_or(date.zoneMinutes);
    if (!session_.json) {
      session_.Write(format_->write(date.time, zone) + '\n');
      for (const AssumptionRow& row : kAssumptions) {
        if ((date.assumed & row.flag) != 0) session_.Tell(SafeLine(Utf8(text)), row.what);
      }
      return;
    }
    Json object = {{"input", JsonText(Utf8(text))}};
    if (text.empty()) object.erase("input");
    object["unix"] = date.time.time_since_epoch().count();
    object["zoneMinutes"] = date.zoneMinutes;
    object["rfc5322"] = FormatMailDate(date.time, zone);
    object["iso8601"] = FormatIsoDate(date.time, zone);
    object["assumed"] = Json::array();
    for (const AssumptionRow& row : kAssumptions) {
      if ((date.assumed & row.flag) != 0) object["assumed"].push_back(row.name);
    }
    session_.Write(JsonLine(object));
  }

  Session& session_;
  const DateOptions& options_;
  const FormatRow* format_ = nullptr;
  std::optional<int> zone_;
  std::optional<int> missingZone_;
};

}  // namespace

Runner AddDate(CLI::App& command) {
  const auto options = std::make_shared<DateOptions>();
  command.add_option("TEXT", options->texts, Text(Say::kDateText))->type_name("");
  command.add_option("--format", options->format, Text(Say::kDateFormat))
      ->type_name("rfc5322|iso8601|ja|unix");
  command.add_option("--zone", options->zone, Text(Say::kDateZone))->type_name("ZONE");
  command.add_option("--missing-zone", options->missingZone, Text(Say::kDateMissingZone))
      ->type_name("ZONE");
  command.add_flag("--now", options->isNow, Text(Say::kDateNow));
  return [options](Session& session) { DateCommand(session, *options).Run(); };
}

}  // namespace lumr::tool
