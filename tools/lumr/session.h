// One run of the tool: what it prints, what it says on standard error, and how it ends.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "lumrmisc/platform/files.h"
#include "texts.h"

namespace lumr::tool {

enum ExitStatus {
  kDone = 0,    // nothing lost
  kLost = 1,    // found nothing, lost something, or the input is invalid
  kFailed = 2,  // wrong usage, or a file that cannot be read or written
};

// Standard output does not take any more. Thrown, since nothing that a command does afterwards
// could be seen.
struct OutputFailure {
  FileError error;
};

class Session {
 public:
  Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Set by --json and --lang.
  bool json = false;
  std::string language;

  // Standard output, buffered.
  void Write(std::string_view bytes);
  void Flush();

  // One line on standard error, behind the tool's name and the file's (may be empty).
  void Tell(std::string_view file, std::string_view sentence);
  void Tell(std::string_view file, Say what,
            std::initializer_list<std::string_view> arguments = {});
  // The line as it is, for objects of JSON that standard output has no room for.
  void TellLine(std::string_view line);

  // The exit status is the highest that was raised.
  void Raise(ExitStatus status);
  ExitStatus Status() const { return status_; }
  // For a search, whose status says what it found: of what was raised only kFailed counts.
  void Conclude(bool found);

  // Says why a file cannot be read or written, and raises kFailed.
  void TellUnreadable(std::string_view file, FileError error);
  void TellUnwritable(std::string_view file, FileError error);

  // Shows how far long work is: after a second, and only on a terminal that nothing else is
  // printed to. total 0 is an unknown number. EndProgress removes the line.
  void Progress(std::int64_t done, std::int64_t total, std::string_view what);
  void EndProgress();

 private:
  std::string pending_;
  bool flushEarly_;  // someone is watching
  bool showProgress_;
  std::uint32_t start_;
  std::uint32_t shownAt_ = 0;
  int shownWidth_ = 0;
  ExitStatus status_ = kDone;
};

// Why a file cannot be used, in the user's language.
std::string ReasonText(FileError error);

// A number for people: "1,234,567".
std::string Grouped(long long number);

}  // namespace lumr::tool
