// HTML to plain text that a person reads or quotes in a reply.
#pragma once

#include "lumrmisc/platform/types.h"

namespace lumr {

// Turns an HTML source into its text, as a browser would show it to someone who sees text only.
// Unlike ExtractTextFromHtmlW (html/totext.h) it reads markup by the HTML standard and keeps what
// lines mean to one another:
// - Blocks stand on lines of their own, paragraphs, headings and quotes between empty ones. A
//   quote (blockquote) has "> " before each line, once for each level.
// - Lists: items begin with "- " or their number, further lines are indented.
// - Ruby: the reading follows its word in full-width parentheses, 漢字（かんじ）.
// - A table whose cells are one line each, 78 columns wide at most, has its columns below one
//   another, two spaces apart; wide characters take two columns. The cells of others stand on
//   lines of their own.
// - White space of HTML becomes one blank a run; a line end between two characters of the East
//   Asian scripts goes, since these write no blanks. U+3000 and no-break spaces stay (the
//   latter as spaces); so does all white space in pre.
// - The alternative text of an image is kept as "[text]". keepLinks not 0: the address of a link
//   to a place outside of the page follows its text as " <address>", where it is not the text
//   itself.
// - Scripts, style sheets, the title and comments go.
// All character references are decoded. Line ends are CR LF; the text ends in one unless it is
// empty. Well-formed UTF-16 stays well-formed. More than ten levels of quotes or lists are
// shown as ten. Linear in the text, whatever it is.
void ExtractTextFromHtmlW2(CStringW& html, int keepLinks);

}  // namespace lumr
