// Text into HTML source, in the one form that a browser's own serialisation has: what comes out
// is well-formed UTF-16 without control characters, and reads back as the same text.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

// Appends text of the source, its references decoded where they count, escaped anew. CR LF and CR
// become LF, FF a blank; other control characters go; a lone surrogate becomes U+FFFD.
void AppendHtmlText(std::u16string_view text, bool hasReferences, CStringW& out);

// The same for what stands between the double quotes of an attribute. The value is plain text.
void AppendHtmlAttribute(std::u16string_view value, CStringW& out);

// Text or the value of an attribute of the source with its references decoded: a view of the
// source where it holds none, else of scratch.
std::u16string_view DecodeHtml(std::u16string_view source, bool inAttribute, CStringW& scratch);

}  // namespace lumr
