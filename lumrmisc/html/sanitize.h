// Received HTML made safe to display, by construction: nothing of the source is copied as it is.
//
// ToSafeHtmlW2 reads the page as a browser would, keeps the elements, attributes, addresses and
// style declarations that its lists know, and writes all of it anew: balanced tags, quoted and
// escaped attributes, and only structures that a browser keeps as they are written. What it gives
// can neither run nor fetch anything:
//
// - Scripts, style sheets, svg, math, templates, frames, plug-ins, media, forms, meta, base and
// link
//   elements, comments and event attributes are gone. Text that a reader would have seen stays:
//   of a form or an unknown element only the tags go.
// - Links keep http, https, ftp, mailto and tel addresses, and targets within the page. Each
//   shows its address as its title, the host in ASCII (RFC 3492), recipients of mail without
//   escapes, and has rel="noopener noreferrer". User names and passwords in addresses are taken
//   out, and so are the fields of mailto: addresses that could do more than begin a message
//   ("attach").
// - Images keep cid: addresses and data: addresses of raster images in Base64, as the options say.
//   Remote images lose their address unless the caller allows them.
// - style attributes are read as declarations and written back from a list: no url(), no escapes,
// no
//   positions outside the flow. Classes go. Names and ids get the prefix "mail-", so that no
//   element can pass for an object of the page around it.
// - Elements nested over 256 deep are left out, their content stays.
//
// The result is the content of a body element, or a whole page where the options ask for one. It is
// well-formed UTF-16 whatever came in (a lone surrogate becomes U+FFFD), holds no control
// characters but tab and LF, and cleaning it again changes nothing. Time and memory are linear in
// the source.
#pragma once

#include <cstddef>
#include <vector>

#include "lumrmisc/platform/types.h"

namespace lumr {

struct SafeHtmlOptions {
  bool allowRemoteImages = false;  // http and https
  bool allowCidImages = true;      // parts of the same mail, which the caller resolves
  bool allowDataImages = true;     // PNG, GIF, JPEG, WebP and BMP
  // A page of its own with its charset (UTF-8), and a policy that forbids scripts and requests once
  // more and has no browser look up the hosts of links beforehand; for a file or a frame, where a
  // bare fragment would be read in a guessed charset.
  bool wholePage = false;
};

enum class SafeHtmlReason {
  kScript,            // script elements
  kEventHandler,      // attributes that run script
  kStyleSheet,        // style elements
  kForeign,           // svg and math
  kFrame,             // frames and iframes
  kForm,              // forms and their controls
  kObject,            // plug-ins, applets, audio, video, canvas
  kMetadata,          // meta, base, link, title
  kTemplate,          // templates, whose content nobody sees
  kUnknownElement,    // not in the list
  kMisplaced,         // a browser would move it elsewhere or leave it out
  kTooDeep,           // nested over 256 deep
  kComment,           // comments, processing instructions, marked sections
  kUnfinishedTag,     // the source ends inside a tag
  kAttribute,         // not in the list, or a value of another form; of a tag: its 513th and more
  kAddress,           // an address, or a field of one, that is not allowed here; or none at all
  kUserInfo,          // a user name or password in an address
  kRemoteImage,       // the address of a remote image
  kEmbeddedImage,     // a cid: or data: image that the options or its kind forbid
  kStyleDeclaration,  // style declarations that are not in the list
};

struct SafeHtmlRemoval {
  SafeHtmlReason reason;
  // The name of the element or attribute as in the source, at most 64 units; empty for comments
  // and unfinished tags.
  CStringW name;
  CStringW value;      // of an address, as in the source, at most 2,048 units; else empty
  std::size_t offset;  // of the tag, attribute or comment, in UTF-16 units of the source
};

struct SafeHtmlLink {
  // What stands between its tags, alternative texts of images too; at most 1,024 units, white space
  // reduced to single blanks.
  CStringW text;
  CStringW address;  // as it is written out
  // The host in lower case and ASCII, without user, port and trailing dots. Of a mailto: address
  // the domains of all recipients (to, cc and bcc), each once, with ", " between them; "?" stands
  // for what can be no domain, "…" for the 17th and all that follow. Empty for other addresses.
  CStringW host;
  std::size_t offset = 0;  // of the tag, in UTF-16 units of the source
  // The text names a host, or holds a mail address, of somebody else: neither host nor a domain
  // that host lies in; of several hosts, for one of them.
  bool namesAnotherHost = false;
  bool hadUserInfo = false;   // "https://bank.example@other.example/"
  bool mixesScripts = false;  // a label of the host mixes letters of scripts that look alike
};

struct SafeHtmlReport {
  // In the order of the source; no more than this many of each, the rest is counted only.
  static constexpr std::size_t kMostEntries = 10000;
  std::vector<SafeHtmlRemoval> removals;
  std::vector<SafeHtmlLink> links;
  std::size_t removalCount = 0;
  std::size_t linkCount = 0;
};

// Cleans html in place. The report, where one is wanted, is emptied first.
void ToSafeHtmlW2(CStringW& html, const SafeHtmlOptions& options = {},
                  SafeHtmlReport* report = nullptr);

}  // namespace lumr
