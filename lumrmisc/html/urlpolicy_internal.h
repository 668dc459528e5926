// The addresses that links and images may have.
#pragma once

#include <string_view>

#include "lumrmisc/html/sanitize.h"

namespace lumr {

// Ids and anchor names, and the targets of links within the page, begin with this.
inline constexpr std::u16string_view kNamePrefix = u"mail-";

// An id or anchor name with the prefix; empty when it holds what a name may not hold.
CStringW SafeName(std::u16string_view name);

struct LinkAddress {
  CStringW address;  // as it is written out; empty when the address is not allowed
  CStringW title;    // the same with its host in ASCII, and recipients readable
  CStringW host;     // ASCII, see SafeHtmlLink
  bool hadUserInfo = false;
  bool mixesScripts = false;
  bool lostFields = false;  // of a message that the link begins, see ReadLinkAddress
  bool isScript = false;    // javascript: and the like
};
// Reads an address as a browser does: white space at its ends and line ends inside it are nothing,
// "\" is "/", "//host" means https. What could end an attribute or hide part of the address is
// written as percent escapes. Of the fields of a mailto: address those of a list stay. Reading the
// result again gives the result.
LinkAddress ReadLinkAddress(std::u16string_view value);

struct ImageAddress {
  CStringW address;  // as it is written out; empty when the image is left out
  SafeHtmlReason reason = SafeHtmlReason::kAddress;
};
ImageAddress ReadImageAddress(std::u16string_view value, const SafeHtmlOptions& options);

}  // namespace lumr
