// Style attributes: declarations read after CSS Syntax, and written back from a list.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

// Appends what is allowed of a list of declarations, as "color: red; font-size: 12px". Values are
// words, numbers with known units, colours, quoted font names and the functions that give colours;
// a declaration with anything else is left out whole, but for url() in backgrounds, which is left
// out alone. No escape, comment, "<", "&", '"' or "\" is ever written. Gives the number of
// declarations that were left out or cut. Cleaning the result again gives the result.
std::size_t AppendSafeStyle(std::u16string_view style, CStringW& out);

}  // namespace lumr
