// Turning the lines of a text for good, and joining them again.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/editor/layout.h"
#include "lumrmisc/mailtext/links.h"
#include "lumrmisc/platform/types.h"

namespace lumr::tool {

// A line of a text, with the line break behind it; both in UTF-16, as bytes.
struct TextLine {
  std::string_view text;
  std::string_view lineBreak;  // empty at the end of the text
};

// Takes the first line off a text that is not empty.
TextLine TakeLine(std::string_view& text);

// The line break that parts of a line get: its own; for the last line of a text, which has none,
// that of the line before; LF in a text without any.
class LineBreaks {
 public:
  std::string_view Of(const TextLine& line) const {
    return line.lineBreak.empty() ? last_ : line.lineBreak;
  }
  void Pass(const TextLine& line) { last_ = Of(line); }

 private:
  std::string_view last_ = {"\n\0", 2};
};

// Lays lines out at a number of columns, links and quoted lines left whole, as a mail that is
// written.
class LineWrapper {
 public:
  explicit LineWrapper(int columns);

  const CPhysicalLines& Wrap(std::string_view line);
  // Of the line that was wrapped last.
  LineBreak BreakBehind(int physicalLine) const;
  int ColumnsOf(std::string_view text) const { return CountColumns(metrics_, text); }

  const CEditorLineMetrics& Metrics() const { return metrics_; }

 private:
  LineView Viewed(std::string_view line);

  CEditorLineMetrics metrics_;
  LinkFinder finder_{CT_UNICODE};
  std::vector<LinkRange> links_;
  CPhysicalLines lines_;
  std::string_view line_;
  int quote_ = -1;
};

// A line in UTF-8 turned at a number of columns, as LineWrapper does, with no spaces at the ends of
// the lines that come out; as it is when it is no UTF-8.
std::vector<std::string> TurnedLines(const std::string& line, int columns);

// Joins the lines of a text that wrapping would part again, with the same line breaks, and hands on
// the lines that come of it, each once; what is handed on lives until the call ends. A line is laid
// out further, not anew, when another one joins it.
class LineJoiner {
 public:
  using Receiver = std::function<void(const TextLine&)>;

  LineJoiner(int columns, Receiver receiver) : wrapper_(columns), receive_(std::move(receiver)) {}

  void Join(std::string_view text);

 private:
  void Begin(const TextLine& line);
  bool Extend(const TextLine& line);
  int FindMoreLinks();
  int Quote() const;
  void HandOn();

  LineWrapper wrapper_;
  Receiver receive_;
  LineBreaks breaks_;
  // The line so far: its text, where each line that was joined begins, and the last one's break.
  std::string joined_;
  std::vector<int> starts_;
  std::string_view lineBreak_;
  LinkFinder finder_{CT_UNICODE};
  std::vector<LinkRange> links_;
  CPhysicalLines lines_;
};

}  // namespace lumr::tool
