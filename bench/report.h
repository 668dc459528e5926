// The table of results.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "harness.h"

namespace lumr::bench {

void PrintHeading(std::ostream& out);
void PrintResult(std::ostream& out, const Result& result);

// Which rows differ in result, are slower than iconv, slower than the best peer, or short of their
// mark. True when nothing differs and nothing is slower than iconv.
bool PrintSummary(std::ostream& out, const std::vector<Result>& results);

// The same as a Markdown page, with processor, compiler and the peers' versions.
void WriteMarkdown(std::ostream& out, const std::vector<Result>& results);

}  // namespace lumr::bench
