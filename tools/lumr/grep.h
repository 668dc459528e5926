// The parts of `lumr grep`: its options, and the search of one text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "grepmatch.h"
#include "greptext.h"
#include "session.h"

namespace lumr::tool {

struct GrepOptions {
  MatchOptions match;
  bool recursive = false;
  bool lineNumbers = false;
  bool count = false;
  bool filesOnly = false;
  bool onlyMatching = false;
  bool byteOffset = false;
  bool mail = false;
  std::string from;   // the charset; empty: detected
  std::string color;  // "always", "never" or "auto"
};

// One text to search: a file, or a header or part of a message.
struct GrepText {
  std::string name;         // of the file
  std::int64_t number = 0;  // of the message in an mbox, from 1; 0 elsewhere
  std::string part;         // of the message: its id, or the name of a header; empty for a file
  std::string_view bytes;
  CodeType codeType = CT_UNKNOWN;
  Utf16Order order = Utf16Order::kByMark;
};

// Looks for matches in texts and prints them as the options ask.
class Grep {
 public:
  // named: every line begins with the name of its file.
  Grep(Session& session, const GrepOptions& options, LineMatcher& matcher, bool named);

  // Searches a text and adds to the count of the current file (or message).
  void Search(const GrepText& text);
  // Ends the current file: prints its name or count where that was asked for.
  void EndFile(const GrepText& file);
  // Whether nothing more of the current file is of interest.
  bool IsDecided() const { return options_.filesOnly && count_ > 0; }
  bool FoundAny() const { return foundAny_; }

 private:
  bool ShowsLines() const { return !options_.count && !options_.filesOnly; }
  void SearchLine(const GrepText& text, TextLines& lines, const TextLines::Line& line);
  void PrintBinary(const GrepText& text);
  void PrintLine(const GrepText& text, const TextLines::Line& line, std::string_view units);
  void PrintMatches(const GrepText& text, TextLines& lines, const TextLines::Line& line,
                    std::string_view units);
  void PrintJson(const GrepText& text, TextLines& lines, const TextLines::Line& line,
                 std::string_view units);
  std::string Prefix(const GrepText& text, const TextLines::Line& line, std::size_t offset) const;
  std::string Painted(const char* paint, std::string_view text) const;

  Session& session_;
  const GrepOptions& options_;
  LineMatcher& matcher_;
  bool named_;
  bool colored_;
  bool needsSpans_;
  std::vector<Span> spans_;
  std::int64_t count_ = 0;
  bool saidBinary_ = false;
  bool foundAny_ = false;
};

// Searches the messages at a place (mailsource.h). A build without the mail commands says so.
void GrepMail(Session& session, const std::string& place, Grep& grep);

}  // namespace lumr::tool
