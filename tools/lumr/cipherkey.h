// Pass phrases and passwords on their way in: from a file, the terminal or standard input, never
// from the command line, which every user of the machine can see.
//
// What is typed is kept as the bytes that a mail client of Japanese Windows makes of it, in
// Shift_JIS, so that both understand each other's files.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>

#include "session.h"

namespace lumr::tool {

// UTF-8 in Shift_JIS. False when that cannot hold it exactly; sjis is then empty.
bool ToShiftJis(std::string_view utf8, std::string& sjis);

// A message that the library gave in the current code page, as one line of UTF-8, without the path
// that Tell names.
std::string LibraryText(std::string_view message);

// Bytes that are wiped when it ends.
class Secret {
 public:
  Secret() = default;
  ~Secret();
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;

  const char* Text() const { return text_.c_str(); }
  const std::string& Bytes() const { return text_; }
  bool IsEmpty() const { return text_.empty(); }

  // Asks on the terminal, for something new a second time. False after telling why not.
  bool Ask(Session& session, Say prompt, bool isNew);
  // Takes the first line of a file, or of standard input: its bytes, or when it isTyped what they
  // are as typed UTF-8. False after telling why not.
  bool ReadFirstLine(Session& session, const std::string& file, bool isTyped);

 private:
  bool TakeTyped(Session& session, std::string_view utf8);

  std::string text_;
};

// The key of a run: asked for once, whichever files need it, whether that works or not.
class KeySource {
 public:
  void Declare(CLI::App& command);  // --key-file
  bool IsGiven() const { return !file_.empty(); }
  // Null after telling why there is none. isNew: it is typed twice.
  const Secret* Get(Session& session, bool isNew = false);

 private:
  std::string file_;
  bool asked_ = false;
  Secret key_;
};

}  // namespace lumr::tool
