// Long lines of a reply.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr::tool {

// Turns lines of more than so many columns by the editor's layout rules (half-width characters
// take one column), with the quote marks of a line before each of its pieces: no quote level is
// ever broken. Links stay whole, however long. Line breaks become CR LF.
CStringW TurnQuoted(std::u16string_view text, int columns);

}  // namespace lumr::tool
