#include "session.h"

#include <algorithm>

#include "lumrmisc/platform/clock.h"
#include "lumrmisc/platform/terminal.h"
#include "safetext.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kPendingSize = 1u << 16;
constexpr std::uint32_t kProgressDelay = 1000;  // milliseconds
constexpr std::uint32_t kProgressStep = 100;

struct ReasonRow {
  FileErrorKind kind;
  Say what;
};
constexpr ReasonRow kReasons[] = {
    {FileErrorKind::kMissing, Say::kReasonMissing},
    {FileErrorKind::kIsFolder, Say::kReasonFolder},
    {FileErrorKind::kDenied, Say::kReasonDenied},
    {FileErrorKind::kNoSpace, Say::kReasonFull},
    {FileErrorKind::kTooLarge, Say::kReasonTooLarge},
    {FileErrorKind::kBadName, Say::kReasonName},
};

}  // namespace

Session::Session()
    : flushEarly_(IsTerminal(StandardStream::kOutput)),
      showProgress_(!flushEarly_ && IsTerminal(StandardStream::kError)),
      start_(TickMilliseconds()) {}

void Session::Write(std::string_view bytes) {
  pending_ += bytes;
  if (pending_.size() >= kPendingSize) Flush();
}

void Session::Flush() {
  if (pending_.empty()) return;
  EndProgress();
  const FileError error = WriteStandard(StandardStream::kOutput, pending_);
  pending_.clear();
  if (error) throw OutputFailure{error};
}

void Session::Tell(std::string_view file, std::string_view sentence) {
  std::string line = "lumr: ";
  if (!file.empty()) line += SafeLine(file) + ": ";
  line += sentence;
  TellLine(line);
}

void Session::Tell(std::string_view file, Say what,
                   std::initializer_list<std::string_view> arguments) {
  Tell(file, Text(what, arguments));
}

void Session::TellLine(std::string_view line) {
  if (flushEarly_) Flush();
  EndProgress();
  // Who has closed standard error does not want to hear of it.
  static_cast<void>(WriteStandard(StandardStream::kError, std::string(line) + '\n'));
}

void Session::Raise(ExitStatus status) {
  status_ = std::max(status_, status);
}

void Session::Conclude(bool found) {
  if (status_ != kFailed) status_ = found ? kDone : kLost;
}

void Session::TellUnreadable(std::string_view file, FileError error) {
  Tell(file, Say::kCannotRead, {ReasonText(error)});
  Raise(kFailed);
}

void Session::TellUnwritable(std::string_view file, FileError error) {
  Tell(file, Say::kCannotWrite, {ReasonText(error)});
  Raise(kFailed);
}

void Session::Progress(std::int64_t done, std::int64_t total, std::string_view what) {
  if (!showProgress_) return;
  const std::uint32_t now = TickMilliseconds();
  if (now - start_ < kProgressDelay || now - shownAt_ < kProgressStep) return;
  shownAt_ = now;
  std::string line = Grouped(done);
  if (total > 0) line += '/' + Grouped(total);
  line += ' ' + SafeLine(what);
  const int width = TerminalWidth(StandardStream::kError) - 1;
  if (DisplayWidth(line) > width) line.resize(line.find(' '));
  static_cast<void>(WriteStandard(StandardStream::kError, '\r' + Padded(line, shownWidth_)));
  shownWidth_ = DisplayWidth(line);
}

void Session::EndProgress() {
  if (shownWidth_ == 0) return;
  const std::string blank = '\r' + Padded({}, shownWidth_) + '\r';
  static_cast<void>(WriteStandard(StandardStream::kError, blank));
  shownWidth_ = 0;
}

std::string ReasonText(FileError error) {
  for (const ReasonRow& row : kReasons) {
    if (row.kind == KindOf(error)) return Text(row.what);
  }
  return Utf8(SystemErrorTextW(error));
}

std::string Grouped(long long number) {
  std::string digits = std::to_string(number);
  for (int i = static_cast<int>(digits.size()) - 3; i > (number < 0 ? 1 : 0); i -= 3) {
    digits.insert(static_cast<std::size_t>(i), 1, ',');
  }
  return digits;
}

}  // namespace lumr::tool
