// The title under which a page or a bookmark is shown.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

// The title of an HTML document, or of an Internet-shortcut text (a file ".url"); 1, or 0 with an
// empty title when it has none.
// - A text that begins with a section in brackets (a byte-order mark, white space and comments
//   before it aside) is a shortcut: the title is the value of the key Title in the section
//   [InternetShortcut], or where there is none the value of URL, by which such a file is known.
// - Anything else is a document: the text of its first title element with a text, character
//   references decoded. It may lack its closing tag; then any next tag ends it.
// White space (and what a terminal would take for a command) becomes one blank a run and none at
// the ends. Linear in the text.
int GetURLTitle(std::u16string_view text, CStringW& title);

}  // namespace lumr
