// The fields of a message that hold addresses (From, Reply-To, To, Cc, Bcc) as they stand in its
// bytes: folded, with encoded words, or raw Japanese.
//
// A list is split before the encoded words in it are read, since what they say is part of a name
// and nothing else (RFC 2047, 5): a comma in a word divides nothing, and an address in one is
// nobody's address. Raw 8-bit text and raw ISO-2022-JP are read before, so that half of a character
// is no comma, quote or backslash. What comes out is UTF-8 without control characters, as from
// DecodeHeaderValueUtf8 (mailtext/headerword.h), which also says what rawCharset is. The current
// code page plays no part. Nothing here throws except for memory; both functions are linear.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

struct HeaderAddress {
  CStringA entry;    // as it stands in the value, unfolded, its words still encoded
  CStringA address;  // empty where there is none
  CStringA name;     // decoded
};

// Reads the addresses of a raw value, members of groups too (GetAddrArray3, mailtext/address.h).
// Entries are taken apart by SplitMailAddr. 0; or the id of the message (3161, 3162) when quotes or
// parentheses are left open: the rest from there is then the last entry.
unsigned ReadAddressHeader(std::string_view raw, CArray<HeaderAddress>& out,
                           std::string_view rawCharset = {});

// The value as text for people. Words that say anything that would change the list ("Doe, J") are
// put in quotes; in quotes and comments it is escaped (RFC 5322, quoted-pair).
CStringA DecodeAddressHeaderUtf8(std::string_view raw, std::string_view rawCharset = {});

}  // namespace lumr
