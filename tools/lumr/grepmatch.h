// What `lumr grep` looks for in a line: words under options, or a regular expression.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "session.h"

namespace lumr::tool {

struct MatchOptions {
  bool ignoreCase = false;
  bool ignoreWidth = false;
  bool ignoreKana = false;
  bool allWords = false;
  std::vector<std::string> words;  // UTF-8
  std::string pattern;             // UTF-8; stands in place of the words when isPattern
  bool isPattern = false;
};

// A part of a line, in bytes of UTF-16.
struct Span {
  std::size_t begin;
  std::size_t end;
};

enum class LineOutcome { kNone, kFound, kGivenUp };

// Text is UTF-16 in bytes at any address.
class LineMatcher {
 public:
  virtual ~LineMatcher() = default;

  // Whether any of several whole lines may match; true when that cannot be told from all of them
  // together.
  virtual bool MayMatch(std::string_view lines) = 0;
  // Whether a line without its line break matches. spans, when not null, gets every match in the
  // order of the line; they do not overlap, and may be empty.
  virtual LineOutcome Match(std::string_view line, std::vector<Span>* spans) = 0;
};

// Null when the pattern is wrong, which is told to the session.
std::unique_ptr<LineMatcher> MakeMatcher(Session& session, const MatchOptions& options);

// Prints what a pattern is compiled to.
void ExplainPattern(Session& session, const MatchOptions& options);

// UTF-8 as UTF-16 in bytes.
std::string WideBytes(std::string_view utf8);

}  // namespace lumr::tool
