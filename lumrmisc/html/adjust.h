// Small changes to the source of an HTML document that is shown, sent or replied to.
//
// A document is a text, complete or a fragment; each function changes it in place, and leaves it
// alone when it is empty. Tags are those of FindTag (html/tagscan.h). Positions are UTF-16
// units; well-formed UTF-16 stays well-formed. Every function is linear in the text, whatever
// it is, and throws nothing but std::bad_alloc.
#pragma once

#include "lumrmisc/platform/types.h"

namespace lumr {

// Inserts lead (which is HTML; null or empty: nothing) where the visible content of the document
// begins: behind the body tag; behind the closing head tag, the html tag or the document type
// (in this order) where the one before it is missing or stands further down; at the start when
// there is none of them. The lead begins on a line of its own; no line end is added behind it.
void InsertLeadTextW(const char16_t* lead, CStringW& html);

// Makes every link that has a target open in its own frame ("_self"), and a document type that of
// HTML 4.01 Transitional. A link without target gets none.
void ToHtmlLinkSelfW(CStringW& html);

// Inserts a style block that sets the font of the body, before the first of the tags style, link
// and /head: 1. Returns 0 and inserts nothing when there is none, so a fragment without a head
// gets no default font, and for a null or empty font. The font's name is put in as it is.
int InsertDefaultBodyFont(const char16_t* fontFamily, CStringW& html);

// Removes such a block, with a CR LF behind it: 1. Removed is the first style element of the
// document, when it is empty or holds exactly one colon and the words "body" and "font-family";
// a style sheet of the author's own, or with anything more, is left alone: 0.
int RemoveDefaultBodyFont(CStringW& html);

// Keeps the source lines of outgoing HTML short: line ends (CR LF) around tags that make blocks,
// behind any other tag or comment without a line end in the 76 units before it, and in running
// text where more than 76 units have passed since the last tag or break, at a blank if there is
// one. The 20 units before a tag are never broken, nor is a character reference, a surrogate pair
// or CR LF. Line ends that are in the text do not restart the count: they are blanks to a reader.
// Text behind the last tag stays as it is.
void AdjustHtmlBreakLine(CStringW& html);

}  // namespace lumr
