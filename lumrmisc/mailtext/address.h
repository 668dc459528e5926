// Mail addresses: checking what users type, splitting lists, taking an address apart and building
// it, and small helpers around them.
//
// Narrow text is in the current code page of the calling thread, and a character is a whole
// multibyte character: the second byte of one is never an "@", a quote, a backslash, a comma
// or a bracket. Wide text is UTF-16. A null pointer is an empty text; a pointer ends at its NUL, a
// view counts whole. White space, where text is trimmed, is 09-0D and 20 hex, in wide text
// that of Unicode. Positions are bytes, in the wide functions UTF-16 units. Inputs must not lie in
// the outputs, which are emptied or overwritten. Nothing here throws except for memory; every
// function is linear in its input, but for the patterns of IsWildAddrIncluded.
//
// Messages come from the message table, in the language and code page of messages.
#pragma once

#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

// ---- Checks of what a user types ----
//
// 0: valid, and the message is emptied. Else the message says what is wrong: -1 nothing was
// entered; 1 there is no "@"; 2 one of ( ) < > ; \ " is in it; 3 a lead byte of a two-byte
// character, half-width katakana or a machine-dependent character is in it. The first rule that
// fails, in that order, decides. Nothing else about the form is checked.

int CheckEMailAddress(const char* address, CStringA& message);      // rules -1, 1, 2, 3
int CheckWildEMailAddress(const char* pattern, CStringA& message);  // -1, 2, 3: "*.example" is one
// Display name and organization may be empty, and hold anything but half-width katakana and
// machine-dependent characters, which other systems show wrongly.
int CheckEMailName(const char* name, CStringA& message);
int CheckEMailOrgani(const char* organisation, CStringA& message);
int CheckServerName(const char* server, int allowEmpty, CStringA& message);  // -1, 2, 3 (lead byte)
int CheckAccountName(const char* account, CStringA& message);                // -1, 3 (lead byte)

// The same with the place of the first character that the rule is about (-1 where there is
// none: nothing was entered, no "@") and the message's id (0 for none).
enum class AddressField { kAddress, kWildAddress, kName, kOrganisation, kServer, kAccount };
struct AddressProblem {
  int result = 0;
  unsigned message = 0;
  int position = -1;
};
AddressProblem FindAddressProblem(AddressField field, std::string_view text);

// ---- Trimming ----

// Trim the text, then take off a leading "<" (quote), and a trailing ">" (quote) whether or not
// there was a leading one.
void ExcludeAngleBracket(CStringA& text);
void ExcludeQuote(CStringA& text);
void ExcludeQuote(CStringW& text);

// The last message ID of a References header: what stands between the last "<" and the next ">"
// behind it. Without these the text is only trimmed.
void ExtractLastMessageID(CStringA& text);

// ---- Lists ----

// Finds the first delimiter at or behind start that stands outside double quotes and parentheses:
// 1, and position is there, or -1 when there is none (also when the text is empty or start is at
// its end or past it).
//
// In quotes a backslash makes the next character ordinary, so that "a\\" is closed. Outside of them
// a quote behind a backslash, or inside parentheses, opens nothing. When the character at start is
// a quote and none follows in the rest of the text, it is ordinary. Parentheses nest, and count
// outside of quotes; a closing one too many is ordinary.
//
// 0 and position -1 when the text ends inside quotes or parentheses: message is then text 3161 or
// 3162, a line feed and the trimmed text from start; else it is emptied. 0 for a negative start
// too, without a message. The delimiter is an ASCII character other than a quote, a backslash
// or a parenthesis, and start a border of characters.
int FindAddrDelimiter(const char* text, int start, char delimiter, int& position,
                      CStringA& message);
int FindAddrDelimiter(const char16_t* text, int start, char16_t delimiter, int& position,
                      CStringW& message);
int FindAddrDelimiter(std::string_view text, int start, char delimiter, int& position,
                      CStringA& message);

// Splits a list at its commas outside quotes and parentheses. Entries are trimmed, and empty ones
// dropped. 1; or 0 with the message of FindAddrDelimiter when something is left open: the rest,
// from the entry where it was opened, is then the last entry.
int GetAddrArray2(const char* list, CStringArray& out, CStringA& message);
int GetAddrArray2(std::string_view list, CStringArray& out, CStringA& message);
int GetAddrArray2(const char16_t* list, CArray<CStringW>& out, CStringW& message);

// The same for lists that may hold groups (RFC 5322, 3.4: "Team: a@x, b@y;"): a member of a group
// is an entry like any other, without the name of the group and its signs. An empty group
// ("undisclosed-recipients:;") has no entries.
//
// A colon begins a group outside of quotes, parentheses, angle brackets and "@[...]" when a
// semicolon ends it before the next colon, or when no "<" follows in its entry: "Re: J <j@x>" is
// one address, and "Team: a@x" a group that was not ended. A semicolon outside of a group is
// ordinary. The last entry of a list in which something is left open is not searched for groups.
int GetAddrArray3(std::string_view list, CStringArray& out, CStringA& message);

// Cuts at every comma, space, tab, CR and LF; quotes and parentheses mean nothing. Gives the
// number of entries, none of which is empty.
int ParseAddrList(const char* list, CStringArray& out);

// The entry that holds a position (as of a caret): 1, start at its first character and end at
// its comma, for the last one at the end of the text. Both ends belong to the entry. 0, and
// nothing is set, for a position in the white space before an entry or outside the text, and when
// quotes or parentheses are left open before the entry is found.
int GetAddressRange(const char* list, int position, int& start, int& end);

// ---- One address ----

// Takes an entry apart: "Name <user@host>", "user@host (Name)", a bare address or a bare name (a
// text without "@" is one). "%(" ... ")" is a placeholder and an address. A name in quotes loses
// them and the backslashes in it. When quotes or parentheses are left open the result is 0, the
// name is the whole text, trimmed, the address empty, and message is that of FindAddrDelimiter.
// Else 1, also for an empty text.
int SplitMailAddr(const char* text, CStringA& address, CStringA& name, CStringA& message);
int SplitMailAddr(std::string_view text, CStringA& address, CStringA& name, CStringA& message);

// Builds "name <address>", or the address alone when there is no name. With quoteName, a name that
// holds one of ()<>[]:;@,. or a quote or a backslash is put into quotes, with a backslash before
// the last two; the quotes that enclose a whole name are taken off before that. Narrow: see
// AddQuotedToken about half a character. Line breaks are the caller's business.
CStringA MakeAddress(const char* address, const char* name, int quoteName);
CStringW MakeAddress(const char16_t* address, const char16_t* name, int quoteName);
// The same, but the name as it is when there is no address.
CStringA MakeAddress2(const char* address, const char* name, int quoteName);
CStringW MakeAddress2(const char16_t* address, const char16_t* name, int quoteName);

// Splits the text and builds it again, with the defaults for an address or a name that is missing.
CStringA CustomizeAddress(const char* text, const char* defaultAddress, const char* defaultName,
                          int quoteName);

// ---- Addresses of a list ----

// Splits a list and each of its entries; the address and the name of an entry have the same index.
// Something left open costs nothing but the entries behind it. Gives the number of entries.
int GetAddrNameArray(const char* list, CStringArray& addresses, CStringArray& names);
int GetAddrNameArray(std::string_view list, CStringArray& addresses, CStringArray& names);

// Case does not count in the functions below.

// The index of the first entry with this address. With an empty address: of the first one that has
// no address either and has this name. -1 when there is none, and for two empty texts.
int LookupAddrNameArray(const CStringArray& addresses, const CStringArray& names,
                        const char* address, const char* name);

// anyOther 0: whether the list holds the address. Else: whether it holds another one. Entries that
// cannot be split do not count; a list that cannot be split, or is empty, gives 0.
int IsAddressIncluded(const char* address, int anyOther, const char* list);

// anyUnmatched 0: whether an address of the list matches one of the patterns (wildicmp,
// buffer/textscan.h). Else: whether an address matches none of them.
int IsWildAddrIncluded(const CStringArray& patterns, int anyUnmatched, const char* list);

// ---- mailto ----

// Appends "?" (or "&" when the URL holds a "?"), key, "=" and value, as they are: escaping
// (EncodeHex, mailtext/transfer.h) is the caller's.
void AddMailtoParam(const char* key, const char* value, CStringA& url);

}  // namespace lumr
