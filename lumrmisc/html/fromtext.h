// Plain text to HTML.
#pragma once

#include "lumrmisc/platform/types.h"

namespace lumr {

// Makes plain text an HTML document that declares charset (put in as it is), or with a null or
// empty charset what stands between its body tags. Each line (ended by CR, LF or CR LF; the last
// one with or without) becomes a div; an empty line is a div of one "&nbsp;". "&", "<", ">" and
// the double quote become character references; of n spaces in a row the first n - 1 become
// "&nbsp;". Line ends of the result are CR LF. An empty text stays empty.
void ToHtmlDocumentW(CStringW& text, const char16_t* charset);

// Escapes "&", "<", ">" and the double quote of a text in any ASCII-compatible charset whose trail
// bytes are none of them (all code pages of platform/mbcs.h, UTF-8), and puts "<br>" before each
// CR LF. A lone CR or LF is no line break here: it is what a line wrapped by software looks
// like, and reads as a space.
void ToHtmlTextA(CStringA& text);

}  // namespace lumr
