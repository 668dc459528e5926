// A log of function calls: indented entry and exit lines in the file LumoraTraceOutput.txt of
// the temporary folder, for looking into a running program.
//
//   CTraceFunction trace("Load");
//   trace("%d bytes", size);    // writes "+++ Load +++  120 bytes"
//   ...                         // "--- Load ---" is written when the scope ends
//
// The file is shared by all threads, a call's lines stay whole; the nesting depth is each
// thread's own. While tracing is off a traced scope costs a counter and an atomic load.
#pragma once

#include "lumrmisc/platform/types.h"

namespace lumr {

// Switches tracing on (non-zero) or off and returns 1. Switching on creates or empties the file,
// which others may read meanwhile, and writes the local time into it; switching off writes the
// time again and closes the file. What is on stays on, with its file. Throws CFileException when
// the file cannot be created. A failure to write later is ignored.
int SetTraceOutput(int on);

// 1 while tracing is on.
int IsTraceOutput();

// One traced call, on the stack. Every line ends in CR LF and begins with 4 spaces for each
// traced scope around this one on the same thread.
class CTraceFunction {
 public:
  // name is copied, only while tracing is on: the lines of a scope that began before tracing
  // was switched on have an empty name. Null is an empty name.
  explicit CTraceFunction(const char* name);
  CTraceFunction(const CTraceFunction&) = delete;
  CTraceFunction& operator=(const CTraceFunction&) = delete;

  // Writes the exit line "--- name ---", whether or not there was an entry line. The messages
  // kept in mode 3 follow it: the first on the same line, each further one on a line of its own.
  ~CTraceFunction();

  // What calls of operator() after the first one write: 1 the message alone, lined up under the
  // entry line's; 2 a line "... name ...  message"; 3 nothing yet, messages are kept for the exit
  // line; anything else nothing. 0 after construction.
  void SetMode(int mode) { mode_ = mode; }

  // The first call writes the entry line, "+++ name +++  message", or without the message when
  // format is null or empty. Later calls write what SetMode says; modes 1 and 3 leave out empty
  // messages. format and arguments are those of printf.
  void operator()(const char* format = nullptr, ...);

  // 4 spaces for each scope around this one.
  CStringA GetIndentText() const;
  // As many spaces as stand before the message in an entry line, indent aside: the length of
  // the name in bytes and 10 more.
  CStringA GetFuncSpace() const;

 private:
  void WriteLine(bool first, const CStringA* message);  // null: none
  CStringA ExitLines() const;

  CStringA name_;
  int entered_ = 0;
  int depth_;
  int mode_ = 0;
  CStringArray pending_;
};

}  // namespace lumr
