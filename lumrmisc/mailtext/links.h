// Links in message text: URLs of six schemes, drive and network paths, and bare mail addresses.
//
// A search gives the first link of a text; to find all of them, search again in what stands behind
// it, or let LinkFinder do so. Either way the time is linear in the text, whatever it holds.
//
// Offsets and lengths are bytes, even ones in UTF-16. A character is a whole two-byte character
// in narrow text and one unit in wide text. "Letter or digit" means ASCII.
//
// A URL begins with "mailto:", "http:", "https:", "ftp:", "file:" or "gopher:" in any case, with a
// drive ("C:\") or with a network name ("\\server\", where the backslash behind the name may stand
// anywhere later, but another character than a backslash must follow it). No letter or digit stands
// before it. The leftmost wins; but when the first "http:" of a text is "xhttp:", a search goes on
// for the other beginnings only, and likewise for each scheme.
//
// It goes on over letters, digits and .-_=^~!$%&*+/?|#@:;, whatever stands at its end: a full stop
// that ends the sentence belongs to it. Beyond that
// - a host name may hold characters outside ASCII, all but the ideographic space,
// - behind the "?" of a "mailto:" all goes up to white space or a control character, so that
//   a Japanese subject stays whole,
// - paths and "file:" take backslashes,
// - a "mailto:" or a path behind "<" runs to the ">", a path behind a double quote to the next one.
//
// An address is letters, digits and .-_=^~!$%&*+/?| around an "@", with a dot behind the "@" that
// is not the first or last character of what follows ("a@b.c"). A full stop at its end belongs
// to it.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "lumrmisc/charset/codetype.h"

namespace lumr {

// The first URL of a text: where it begins, with its length in matchLength; -1, and a length of 0,
// when there is none. A null text has none; a negative length means up to the terminator, and an
// odd last byte of wide text is left out. Narrow text is in the edit form of its code type: of
// a Unicode one it is UTF-16. The current code page reads text of an unknown code type.
int FindUrlW(const char16_t* text, int lengthInBytes, int& matchLength);
int FindUrlA(const char* text, int length, CodeType codeType, int& matchLength);

// The first mail address of a text, in the same way; narrow text is in the current code page.
int FindEMailW(const char16_t* text, int lengthInBytes, int& matchLength);
int FindEMailA(const char* text, int length, int& matchLength);

inline constexpr int kLinkUrl = 1;   // found by the rules of FindUrlA and FindUrlW
inline constexpr int kLinkMail = 2;  // found by those of FindEMailA and FindEMailW

// A link of a text, in bytes.
struct LinkRange {
  int start = 0;
  int length = 0;
  int kind = kLinkUrl;

  int End() const { return start + length; }
  bool operator==(const LinkRange&) const = default;
};

// Where a search for all links of a text stands. Internal to LinkFinder.
struct LinkScanState {
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  struct Url {
    int kind = 0;  // 0: there is none
    std::size_t start = 0;
    std::size_t end = 0;        // of what is known to belong to it
    char closing = 0;           // what a bracketed or quoted one runs to
    bool query = false;         // behind the "?" of a "mailto:"
    std::size_t hostState = 0;  // 0 before, 1 in, 2 behind the host name
  };
  struct Network {  // an opening that still lacks the backslash behind its name
    std::size_t start = kNone;
    std::size_t searched = 0;
  };
  enum class MailPart { kLocal, kDomain, kTail };

  std::size_t border = 0;       // a character begins there, near the end of what was read
  std::size_t searchStart = 0;  // where this search for a URL began
  std::size_t urlPos = 0;       // the beginnings before it are judged
  unsigned givenUp = 0;         // a bit for each scheme that this search gave up
  Network network;
  Url ahead;  // found, but addresses may stand before it
  Url open;   // being taken

  MailPart mailPart = MailPart::kLocal;
  std::size_t mailFrom = 0;   // no address begins before it
  std::size_t mailPos = 0;    // read up to there
  std::size_t mailStart = 0;  // of an address that its "@" was found of
  std::size_t mailAt = 0;
  std::size_t addressEnd = 0;  // of the last one that was taken
};

// Finds all links of a text: each URL search begins behind the URL before, each address search
// behind the address before. Links never overlap: the earlier start wins, a URL on a tie.
class LinkFinder {
 public:
  // Text is in the edit form of the code type.
  explicit LinkFinder(CodeType codeType = CT_UNKNOWN);

  // Puts the links of a text into links, in their order.
  void FindAll(std::string_view text, std::vector<LinkRange>& links);

  // The text of the last call has grown at its end, and links is what that call left: brings
  // links up to date. Takes time by what was added, not by what stood before it; the last of the
  // links before may grow or go, and an open network path may swallow those behind it. Gives how
  // many of the first links are as they were.
  std::size_t FindMore(std::string_view text, std::vector<LinkRange>& links);

 private:
  CodeType codeType_;
  LinkScanState state_;         // at a place that more text does not change
  std::size_t stateLinks_ = 0;  // the links up to there
};

}  // namespace lumr
