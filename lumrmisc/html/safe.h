// Received HTML made harmless to look at, by the rules of a mail client of the dial-up days: it
// knows scripts, embedded objects and remote addresses, but reads HTML by its tags alone. Event
// attributes, for one, are not its business: what is shown in a browser with scripts
// switched on goes through ToSafeHtmlW2 (html/sanitize.h).
#pragma once

#include "lumrmisc/platform/types.h"

namespace lumr {

// Neutralises active and remote content. Tags are those of FindTag (html/tagscan.h); a closing
// tag is the next one of its name.
// - Elements script and object go with all that is in them; without closing tag only the tag goes.
// - The tags base, embed, applet and link go, their content stays.
// - Every "://" becomes "_//" in comments, in tags other than a, and from a style tag to its
//   closing tag, so that no image, frame or style sheet is fetched.
// - Links keep their address, but a href that starts with "javascript:" becomes "#" in quotes.
//   Each link tells it: a title of the sender goes, and the value of the last href, as it stands,
//   is put at the end of the tag as title. When it has a href that is neither such a script nor
//   starts with "#", its target becomes "_self"; a link without target gets none.
// - A document type becomes that of HTML 4.01 Transitional.
// Well-formed UTF-16 stays well-formed. Linear in the text, whatever it is.
void ToSafeHtmlW(CStringW& html);

}  // namespace lumr
