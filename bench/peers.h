// The other ways to do the tasks: libraries and a command of the distribution, each used as its
// own makers would for speed: handles kept open, outputs allocated beforehand, its own line
// lengths. A peer that was not found at configure time gives a contender that cannot open.
#pragma once

#include <string>
#include <string_view>
#include <utility>
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
Contender GmimeAddressList();  // the number of entries, bytes of addresses, bytes of names
Contender GmimeDate();         // seconds and minutes of the zone, added
// Header values, each with a zero byte behind it, to UTF-8 and from it.
Contender GmimeHeaderDecode();
Contender GmimeHeaderEncode(const char* charset);
template <typename Take>
void ForEachValue(std::string_view values, Take take) {
  while (!values.empty()) {
    const std::size_t end = values.find('\0');
    take(values.substr(0, end));
    values.remove_prefix(end + 1);
  }
}

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

// All matches of a pattern, given in UTF-8, in a text of CP932 or UTF-16LE; their number. PCRE2
// reads the text in UTF-16 in either case, by units, and is timed on the input's bytes.
Contender OnigurumaAll(const std::string& utf8, const std::string& charset);
Contender Pcre2All(const std::string& utf8, const std::string& charset, bool jit);

// A word whatever its case, width and kind of kana, in a text of the charset (converted to UTF-16
// first where it is another): by collation for Japanese at secondary strength, the position in
// units; and in the text normalized to NFKC and case-folded, the position there.
Contender IcuStringSearch(const std::string& charset, std::u16string_view word);
Contender IcuFoldAndFind(const std::string& charset, std::u16string_view word);

// Pages in UTF-16, converted to UTF-8 beforehand. Their text as libxml2's parser reports it, the
// page parsed and written again, and the text as text browsers print it.
Contender Libxml2Sax();
Contender Libxml2Serialise();
Contender W3mDump();
Contender LynxDump();

// Line-break opportunities for Japanese in a text of CP932 or UTF-16LE, read in UTF-16; their
// number.
Contender IcuLineBreaks(const std::string& charset);
Contender UnibreakLineBreaks(const std::string& charset);

// Digests of the input, 16 bytes; the HMAC under the input's first bytes. Blowfish in blocks of
// its own (electronic codebook) under a fixed key; the key schedule of the input as key, shown by a
// block of zero bytes.
inline constexpr std::string_view kBlowfishKey = "sixteen byte key";
inline constexpr int kHmacKeySize = 16;
Contender OpensslMd5();
Contender NettleMd5();
Contender GcryptMd5();
Contender OpensslHmacMd5();
Contender NettleHmacMd5();
Contender GcryptHmacMd5();
Contender OpensslBlowfishEncipher();
Contender NettleBlowfishEncipher();
Contender GcryptBlowfishEncipher();
Contender OpensslBlowfishDecipher();
Contender NettleBlowfishDecipher();
Contender GcryptBlowfishDecipher();
Contender OpensslBlowfishKey();
Contender NettleBlowfishKey();
Contender GcryptBlowfishKey();

// GLib's key files of the content of a setting data file: loaded (the last value), written (the
// text), and every value looked up (how many there are), in the order of the file or shuffled.
using SettingNames = std::vector<std::pair<std::string, std::string>>;  // keys and names
void Shuffle(SettingNames& names);
Contender KeyFileLoad();
Contender KeyFileSave();
Contender KeyFileLookup(bool shuffled);

// "ICU 72.1" and so on, for the peers that are built in.
std::vector<std::string> PeerVersions();
std::string IcuVersion();
std::string NkfVersion();
std::string GmimeVersion();
std::string OpensslVersion();
std::string GlibVersion();
std::string UchardetVersion();
std::string OnigurumaVersion();
std::string Pcre2Version();
std::string Libxml2Version();
std::string NettleVersion();
std::string GcryptVersion();
std::string UnibreakVersion();

}  // namespace lumr::bench
