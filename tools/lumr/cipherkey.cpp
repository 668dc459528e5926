#include "cipherkey.h"

#include <algorithm>

#include "input.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/platform/memory.h"
#include "lumrmisc/platform/terminal.h"
#include "lumrmisc/settings/sdkey.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kLongestLine = 4096;

void WipeString(std::string& text) {
  Wipe(text.data(), text.size());
  text.clear();
}

void WipeBuffer(CBuffer& buffer) {
  if (buffer.GetAllocSize() > 0) {
    Wipe(buffer.GetBuffer(), static_cast<std::size_t>(buffer.GetAllocSize()));
  }
}

bool TellUnusable(Session& session, Say why) {
  session.Tell({}, why);
  session.Raise(kFailed);
  return false;
}

bool ReadTyped(Session& session, Say prompt, std::string& utf8) {
  const FileError error = ReadPassword(Text(prompt), utf8);
  if (!error) return true;
  const bool noTerminal = KindOf(error) == FileErrorKind::kMissing;
  return TellUnusable(session, noTerminal ? Say::kNoTerminal : Say::kNothingTyped);
}

}  // namespace

bool ToShiftJis(std::string_view utf8, std::string& sjis) {
  CBuffer wide;
  CBuffer narrow;
  wide.SetAllocSize(static_cast<int>(utf8.size()) * 4);  // so that growing leaves no copies behind
  narrow.SetAllocSize(static_cast<int>(utf8.size()) * 4);
  CConversionReport report;
  ConvertToOtherCodePage2(65001, utf8, 1200, wide, 0, &report);
  ConvertToOtherCodePage2(1200, wide.Bytes(), 932, narrow, 0, &report);
  sjis = report.IsEmpty() ? narrow.Bytes() : std::string_view();
  WipeBuffer(wide);
  WipeBuffer(narrow);
  return report.IsEmpty();
}

std::string LibraryText(std::string_view message) {
  std::string line = Utf8(WidenSdText(message.substr(0, message.find("\nFile: "))));
  for (std::size_t at = 0; (at = line.find('\n', at)) != std::string::npos; ++at) line[at] = ' ';
  return line;
}

Secret::~Secret() {
  WipeString(text_);
}

bool Secret::Ask(Session& session, Say prompt, bool isNew) {
  std::string typed;
  std::string again;
  bool done = ReadTyped(session, prompt, typed);
  if (done && isNew) {
    done = ReadTyped(session, Say::kAskAgain, again);
    if (done && typed != again) done = TellUnusable(session, Say::kTypedDiffers);
  }
  done = done && TakeTyped(session, typed);
  WipeString(typed);
  WipeString(again);
  return done;
}

bool Secret::TakeTyped(Session& session, std::string_view utf8) {
  WipeString(text_);
  if (utf8.empty()) return TellUnusable(session, Say::kNothingTyped);
  return ToShiftJis(utf8, text_) || TellUnusable(session, Say::kNotInShiftJis);
}

bool Secret::ReadFirstLine(Session& session, const std::string& file, bool isTyped) {
  WipeString(text_);
  std::string line(kLongestLine + 1, '\0');  // in its final size, so that no copy is left behind
  std::size_t length = 0;
  Input input;
  FileError error = input.Open(file);
  for (std::size_t got = 1; !error && got > 0 && length < line.size(); length += got) {
    error = input.Read(line.data() + length, line.size() - length, got);
  }
  if (error) {
    session.TellUnreadable(file, error);
    WipeString(line);
    return false;
  }
  const std::string_view read(line.data(), length);
  const std::size_t end = std::min(read.find_first_of("\r\n"), length);
  bool usable = end > 0 && end <= kLongestLine && read.find('\0') >= end;
  if (!usable) {
    session.Tell(file, Say::kNoSecretInFile);
    session.Raise(kFailed);
  } else if (isTyped) {
    usable = TakeTyped(session, read.substr(0, end));
  } else {
    text_ = read.substr(0, end);
  }
  WipeString(line);
  return usable;
}

void KeySource::Declare(CLI::App& command) {
  command.add_option("--key-file", file_, Text(Say::kOptKeyFile))->type_name("FILE");
}

const Secret* KeySource::Get(Session& session, bool isNew) {
  if (!asked_) {
    asked_ = true;
    if (IsGiven()) {
      key_.ReadFirstLine(session, file_, false);
    } else {
      key_.Ask(session, isNew ? Say::kAskNewKey : Say::kAskKey, isNew);
    }
  }
  return key_.IsEmpty() ? nullptr : &key_;
}

}  // namespace lumr::tool
