// Whose host a link goes to, and whom its text names.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

// A host as it stands in an address: percent escapes decoded, full-width letters and dots made
// plain, in lower case, without trailing dots. Empty when it holds what no host may hold.
CStringW PlainHost(std::u16string_view host);

// A plain host in ASCII, labels with other letters in Punycode (RFC 3492).
CStringW AsciiHost(std::u16string_view plainHost);

// Whether a label of a host, also one in Punycode, mixes letters of Latin, Greek and Cyrillic, or
// has any of them beside East Asian ones where they are not Latin.
bool HostMixesScripts(std::u16string_view plainHost);

// Between the hosts of a link that has several.
inline constexpr std::u16string_view kHostSeparator = u", ";

// Whether a host is one of a link's.
bool IsLinkHost(std::u16string_view hosts, std::u16string_view host);

// Whether text names a host, or a mail address at a host, that is not every one of the link's hosts
// nor a domain that contains it ("example.com" names "mail.example.com" too; a leading "www." is of
// no account).
bool NamesAnotherHost(std::u16string_view text, std::u16string_view hosts);

// The value of a hexadecimal digit, or -1.
int HexDigit(char16_t unit);

}  // namespace lumr
