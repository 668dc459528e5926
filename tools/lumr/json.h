// One JSON object a line, as --json prints it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace lumr::tool {

// Members keep the order in which they are added.
using Json = nlohmann::ordered_json;

// Text that may hold anything as valid UTF-8.
std::string JsonText(std::string_view text);

// The object in one line with its line break. Pure printable UTF-8: control characters are
// escaped, U+007F to U+009F too, which terminals obey and JSON allows.
std::string JsonLine(const Json& object);

}  // namespace lumr::tool
