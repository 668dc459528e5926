// What the cleaning of received HTML and the setting of link targets both do to tags.
#pragma once

#include <string>
#include <string_view>

#include "lumrmisc/html/sourcecopy_internal.h"
#include "lumrmisc/html/tagscan.h"

namespace lumr {

// Replaces the value of every target attribute that is not "_self" (ignoring case) by "\"_self\"".
// tag is a TagText; true when something had to be replaced, which is then in out.
bool RetargetTag(std::u16string_view tag, std::u16string& out);

// Replaces a document type tag by the standard one, unless it is that one but for case.
void ReplaceDocumentType(std::u16string_view html, const TagSpan& span, SourceCopy& copy);

}  // namespace lumr
