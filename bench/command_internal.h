// A peer that is a command of the distribution: a process for every call, input from memory, output
// to the null device (but the first, which is looked at).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "harness.h"

namespace lumr::bench {

// Runs the program on the given input, whatever it is called with afterwards.
Operation RunCommand(const std::string& program, const std::vector<std::string>& arguments,
                     std::string_view input);

}  // namespace lumr::bench
