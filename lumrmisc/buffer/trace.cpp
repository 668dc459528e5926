#include "lumrmisc/buffer/trace.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <new>
#include <string>

#include "lumrmisc/buffer/frame.h"
#include "lumrmisc/platform/clock.h"
#include "lumrmisc/platform/files.h"

namespace lumr {
namespace {

struct TraceFile {
  std::mutex mutex;
  AppendStream stream;
  std::atomic<bool> open = false;
};

TraceFile& File() {
  static TraceFile file;
  return file;
}

thread_local int traceDepth = 0;

// Nothing is written once another thread has switched tracing off.
void WriteTrace(const CStringA& text) {
  TraceFile& file = File();
  const std::lock_guard lock(file.mutex);
  if (file.stream.IsOpen() && !text.empty()) file.stream.Write(text);
}

CStringA Formatted(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length <= 0) return {};
  CStringA text(static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

CStringA TimeLine() {
  const LocalTime now = LocalTimeOf(Now());
  char text[96];
  std::snprintf(text, sizeof text, "%d-%02d-%02d %02d:%02d:%02d\r\n", now.year, now.month, now.day,
                now.hour, now.minute, now.second);
  return text;
}

CStringW TracePath() {
  CStringW folder = TemporaryFolder();
  if (folder.empty()) folder = PathSeparator();
  return folder + u"LumoraTraceOutput.txt";
}

// "+++ name +++", with the message behind it if there is one, be it empty.
CStringA MarkedLine(const char* mark, const CStringA& name, const CStringA* message) {
  CStringA line = CStringA(mark) + " " + name + " " + mark;
  if (message != nullptr) line += "  " + *message;
  return line + "\r\n";
}

}  // namespace

int SetTraceOutput(int on) {
  TraceFile& file = File();
  const std::lock_guard lock(file.mutex);
  if (on != 0 && !file.stream.IsOpen()) {
    const CStringW path = TracePath();
    if (const FileError error = file.stream.Open(path, false)) throw CFileException(error, path);
    file.stream.Write(TimeLine());
    file.open = true;
  } else if (on == 0 && file.stream.IsOpen()) {
    file.open = false;
    file.stream.Write(TimeLine());
    file.stream.Close();
  }
  return 1;
}

int IsTraceOutput() {
  return File().open.load(std::memory_order_relaxed);
}

CTraceFunction::CTraceFunction(const char* name) : depth_(traceDepth) {
  if (name != nullptr && IsTraceOutput() != 0) name_ = name;
  ++traceDepth;
}

CTraceFunction::~CTraceFunction() {
  --traceDepth;
  if (IsTraceOutput() == 0) return;
  try {
    WriteTrace(ExitLines());
  } catch (const std::bad_alloc&) {
    // A line of the log is not worth the program.
  }
}

void CTraceFunction::operator()(const char* format, ...) {
  const bool first = entered_ == 0;
  entered_ = 1;
  if (IsTraceOutput() == 0) return;
  if (lumr::IsEmpty(format)) return WriteLine(first, nullptr);
  std::va_list arguments;
  va_start(arguments, format);
  const CStringA message = Formatted(format, arguments);
  va_end(arguments);
  WriteLine(first, &message);
}

void CTraceFunction::WriteLine(bool first, const CStringA* message) {
  if (first) return WriteTrace(GetIndentText() + MarkedLine("+++", name_, message));
  if (mode_ == 2) return WriteTrace(GetIndentText() + MarkedLine("...", name_, message));
  if (message == nullptr) return;
  if (mode_ == 1) WriteTrace(GetIndentText() + GetFuncSpace() + *message + "\r\n");
  if (mode_ == 3) pending_.push_back(*message);
}

CStringA CTraceFunction::ExitLines() const {
  const CStringA indent = GetIndentText();
  CStringA lines = indent + MarkedLine("---", name_, pending_.empty() ? nullptr : &pending_[0]);
  for (std::size_t i = 1; i < pending_.size(); ++i) {
    lines += indent + GetFuncSpace() + pending_[i] + "\r\n";
  }
  return lines;
}

CStringA CTraceFunction::GetIndentText() const {
  return CStringA(depth_ < 1 ? 0 : 4 * static_cast<std::size_t>(depth_), ' ');
}

CStringA CTraceFunction::GetFuncSpace() const {
  return CStringA(name_.size() + 10, ' ');
}

}  // namespace lumr
