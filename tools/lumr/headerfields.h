// The header of a message as it stands in its bytes: fields and where they end.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace lumr::tool {

struct HeaderField {
  std::string_view name;
  std::string_view value;  // raw: folds included, the last line break not
  std::string_view whole;  // from the name to the line break
};

// Splits the header at the begin of a message into fields, behind a "From " line if there is one.
// Gives the offset of the empty line that ends it (or of the end of the message). Bytes that are
// no proper header give npos: what they mean is then the parser's to guess.
std::size_t SplitHeader(std::string_view message, std::vector<HeaderField>& fields);

// Whether two field names are the same; ASCII case does not count.
bool SameName(std::string_view a, std::string_view b);

}  // namespace lumr::tool
