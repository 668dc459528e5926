// The charset that an HTML document declares, and the one that its bytes are in.
//
// A declaration is a meta tag with an attribute charset, or with http-equiv "Content-Type" and a
// content in which "charset=" stands; one inside a comment, a script or a style sheet is none. Tags
// are those of FindTag (html/tagscan.h). An empty document stays as it is. Linear in the
// text, whatever it is.
#pragma once

#include <string_view>

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/charset/mailcharset.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// Declares the charset of codeType in a document that declares none, and adds what of its frame
// (html, head, body) is missing: behind the opening head tag, else with a head of its own behind
// the html tag, the document type or at the start. These are recognised only at the start of
// the text, where nothing but line ends stands between them. 1, or 0 when the code type has no
// charset name. A declaration that is there is not looked for (ChangeHtmlCharSetW).
int AddHtmlCharSetW(CStringW& html, CodeType codeType);

// Replaces the charset of every declaration by that of codeType: 1. Returns 0, and changes
// nothing, when there is none or the code type has no charset name.
int ChangeHtmlCharSetW(CStringW& html, CodeType codeType);

// The charset name of the first declaration, as it stands: 1. Returns 0 with an empty name when
// there is none, or when it is not in ASCII.
int GetHtmlCharSetW(std::u16string_view html, CStringA& charset);

// Decides the encoding of HTML in bytes: by the label of the mail or file (may be empty) where
// it is a known one, else by a byte-order mark, else by the declaration in the first 16 KB, else
// by detection. Whatever says it is checked against the bytes as ResolveMailCharset
// (charset/mailcharset.h) does.
MailCharset ResolveHtmlCharset(std::string_view label, std::string_view bytes);

}  // namespace lumr
