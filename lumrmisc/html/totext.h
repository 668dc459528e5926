// HTML to plain text.
#pragma once

#include "lumrmisc/platform/types.h"

namespace lumr {

// Turns an HTML source into its text.
// - Tags and comments (those of html/tagscan.h) go; what they mean to the text is a table of
//   line ends (CR LF) for tags that end lines; a tab stands for the end of a table cell. Blanks
//   and tabs before a line end go, and after an empty line no line end is added. A tag of
//   256 units or more only goes: such are made by machines, and full of addresses.
// - A run of white space (Unicode's, U+3000 included) is one blank, but inside pre stays.
// - "&nbsp;" and "&lt;", "&gt;", "&amp;", "&quot;", "&copy;", "&reg;", with their semicolon or
//   without, any case, and numbers in decimal and hexadecimal are decoded, once. A number is kept
//   to its low 16 bits and gives one UTF-16 unit, so here lone surrogates may come out of good
//   text.
// - The text of title and style elements goes when no other tag stands in it. The text of a
//   script stays: received mail goes through ToSafeHtmlW first.
// - keepLinks not 0: the alternative text of an image is kept as " [text] ", the address of a
//   link, as it stands in the source, behind its text as " (=> address ) ".
// - A tag that is not ended cuts the text off; an unended comment goes with all it holds.
// - The text ends in CR LF, if it has two units at least.
// Linear in the text, whatever it is.
void ExtractTextFromHtmlW(CStringW& html, int keepLinks);

}  // namespace lumr
