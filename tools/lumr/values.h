// Values that a command takes as arguments or, where there are none, line by line.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "session.h"

namespace lumr::tool {

// Calls take for each of the values; in the place of "-", or where there are no values, for each
// line of standard input without its line break.
// With unfold a line that begins with white space goes on with the one before, as in a header.
void ForEachValue(Session& session, const std::vector<std::string>& values, bool unfold,
                  const std::function<void(std::string_view)>& take);

// "character 5" for people: the number of characters up to a unit of a text, counted from 1.
std::string CharacterNumber(std::u16string_view text, std::size_t position);

}  // namespace lumr::tool
