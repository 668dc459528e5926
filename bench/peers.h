// The other ways to do the tasks: libraries and a command of the distribution, each used as its
// own makers would for speed: handles kept open, outputs allocated beforehand, its own line
// lengths. A peer that was not found at configure time gives a contender that cannot open.
#pragma once

#include <string>
#include <vector>

#include "harness.h"

namespace lumr::bench {

inline Contender NotBuilt(const char* name) {
  return {name, nullptr};
}

// The C library's iconv, by its own charset names. Steps over what it cannot convert and writes
// "?" for it.
Contender Iconv(const std::string& from, const std::string& to);

// ICU: a charset to UTF-16, UTF-16 to a charset, and two charsets by way of UTF-16.
Contender IcuDecode(const std::string& charset);
Contender IcuEncode(const std::string& charset);
Contender IcuConvert(const std::string& from, const std::string& to);
// ICU's converters between its two inner forms, faster than its general ones.
Contender IcuUtf8ToUtf16();
Contender IcuUtf16ToUtf8();
Contender IcuIsUtf8();  // "1" or "0"

// The nkf command with its options: a process for every call, input from memory, output to the
// null device (but the first, which is looked at).
Contender Nkf(const std::vector<std::string>& options);

Contender GmimeBase64Encode();
Contender GmimeBase64Decode();
Contender GmimeQuotedEncode();
Contender GmimeQuotedDecode();
Contender GmimeUuencode();  // without the begin line
Contender GmimeUudecode();

Contender OpensslBase64Encode();
Contender OpensslBase64Decode();

Contender GlibBase64Encode();
Contender GlibBase64Decode();
Contender GlibUtf8ToUtf16();
Contender GlibUtf16ToUtf8();
Contender GlibIsUtf8();  // "1" or "0"; pure ASCII is UTF-8 to it

Contender Uchardet();                             // the charset's name
Contender Oniguruma(std::string_view word);       // in Shift_JIS; the position in decimal
Contender Memmem(std::string_view word);          // on bytes; the position in decimal
Contender StringViewFind(std::string_view word);  // on bytes; the position in decimal
Contender StringPushBack();                       // the input, appended byte by byte

// "ICU 72.1" and so on, for the peers that are built in.
std::vector<std::string> PeerVersions();
std::string IcuVersion();
std::string NkfVersion();
std::string GmimeVersion();
std::string OpensslVersion();
std::string GlibVersion();
std::string UchardetVersion();
std::string OnigurumaVersion();

}  // namespace lumr::bench
