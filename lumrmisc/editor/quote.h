// Quoted lines and indents.
#pragma once

#include <cstddef>
#include <string_view>

#include "lumrmisc/editor/linemetrics.h"

namespace lumr {

// The length in bytes of a line's quote prefix; 0 when it is not quoted. A prefix is one or more
// runs of QuoteList characters, each with at most QuoteLen bytes (in UTF-16: columns) of anything
// else before it: "> > text", "ABC> text". With QuoteLen 0 or less only an indent of at most 4
// bytes or columns may stand there.
int QuotePrefixLength(const CEditorLineMetrics& metrics, std::string_view line);

// Where the search for the prefix of a line stands that may grow.
struct QuoteScan {
  std::size_t pos = 0;     // read up to there; more text does not change what stands before
  std::size_t prefix = 0;  // the length of the prefix before pos
  long long columns = 0;   // of what stands behind the prefix
  bool inRun = false;      // of quote characters
  bool ended = false;      // nothing further belongs to the prefix
};
// The same for a line that grew at its end since scan was left by a call, or for a new scan. Takes
// time by what was added.
int QuotePrefixLength(const CEditorLineMetrics& metrics, std::string_view line, QuoteScan& scan);

// How deep a line with this prefix is quoted: the number of its QuoteList characters. The colour
// of depth n is QuotedTextColor(n - 1), the last one from depth 4 on.
int QuoteDepth(const CEditorLineMetrics& metrics, std::string_view prefix);

// The length in bytes of the run of IndentList characters that the text begins with.
int IndentRunLength(const CEditorLineMetrics& metrics, std::string_view text);

}  // namespace lumr
