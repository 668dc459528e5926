// HTML of a mail or a file as text for a reader.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr::tool {

// UTF-8 as UTF-16; what is no UTF-8 becomes U+FFFD, and invalid counts it.
CStringW WideText(std::string_view utf8, long long& invalid);

// The text of an HTML source: scripts out, then ExtractTextFromHtmlW (html/totext.h), then lines
// without blanks at their ends and no more than one empty line in a row. A blank at the start of a
// line goes too, unless the source has preformatted text.
CStringW ReadableHtml(CStringW html, bool keepLinks);

}  // namespace lumr::tool
