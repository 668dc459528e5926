// Code pages to UTF-16 and back, from the library's own tables; UTF-8 (65001) and UTF-7 (65000)
// by code; 1200 is UTF-16LE itself, copied as it is. Code page 0 stands for the ANSI code page.
//
// The coders work in chunks: what a chunk ends with incomplete is kept for the next one, so
// that the pieces of a text give the same as the whole, wherever it is cut. UTF-16 stands in
// little-endian bytes at any address. Input must not lie in the output. Nothing fails: what
// cannot be converted is replaced, counted and, on request, reported.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "lumrmisc/platform/conversion_report.h"

namespace lumr {

// 932, 936, 949, 950, 51949, 20866, 20127, 28591, 28592, 28594, 28595, 28597, 28599, 1250 to
// 1254, 1257, 1200, 65000, 65001, and 0.
bool IsCodePageSupported(unsigned codePage);

// The tables of a code page, which live as long as the program; null for one that is not
// supported.
struct CodePageTable;
const CodePageTable* FindCodePage(unsigned codePage);

// What a coder met so far, in characters.
struct CodePageCounts {
  long long fits = 0;
  long long replaced = 0;
};

// Internal: where in a text of UTF-7 a coder stands between two chunks.
struct Utf7State {
  bool base64 = false;     // inside a Base64 run
  bool empty = false;      // a run of which only the "+" was read
  int bitCount = 0;        // bits of a unit that were read or written in part
  std::uint32_t bits = 0;  // those bits
  int strayBytes = 0;      // bytes above 7F read and not replaced yet
};

// Bytes of one code page to UTF-16.
//
// Each byte sequence is exact, a fit or replaced:
// - A fit decodes, but would come back as another code: it is a duplicate.
// - What the code page does not define is replaced. A bad pair uses up both bytes, whatever the
//   second one is, except that a zero is kept, and gives one U+30FB in 932 and "?" in the others;
//   so does a lead byte at the end. Some single bytes give private-use units, which encode back.
//   EUC-KR (51949) is read as 949, and what only 949 has counts as replaced.
// - Malformed UTF-8 gives one U+FFFD for each maximal subpart (The Unicode Standard, 3.9), as in
//   browsers. Surrogates and sequences of five or six bytes are malformed.
// - Malformed UTF-7 (RFC 2152) gives one U+FFFD for a run of bytes above 7F; for a "+" that
//   neither a "-" nor Base64 follows; and for what a Base64 run ends with that is no whole unit:
//   six bits or more, or fewer that are not zero. ASCII outside Base64 is taken as it is. UTF-7
//   carries UTF-16 units, so half a surrogate pair passes.
// No byte-order mark is removed. NUL and controls are characters.
class CodePageDecoder {
 public:
  // A code page that is not supported is taken for the ANSI code page.
  explicit CodePageDecoder(unsigned codePage);
  explicit CodePageDecoder(const CodePageTable& table) : table_(&table) {}

  // The most bytes that Decode writes for that many more bytes of input, what is kept included.
  std::size_t MaxOutput(std::size_t inputBytes) const;

  // Decodes all of in, and with last also what is incomplete (then the decoder is as new,
  // counts and offsets excepted). Writes at out and gives the end of what it wrote. Losses go
  // to report when it is not null, with offsets counted over all chunks.
  char* Decode(std::string_view in, bool last, char* out, CConversionReport* report = nullptr);

  // The number of bytes kept for the next chunk; 0 on the border of characters. UTF-7 keeps
  // bits instead of bytes.
  std::size_t Pending() const { return pendingSize_; }
  const CodePageCounts& Counts() const { return counts_; }

 private:
  char* DecodePart(std::span<const unsigned char> part, bool last, char* out,
                   CConversionReport* report);

  const CodePageTable* table_;
  unsigned char pending_[8] = {};
  std::size_t pendingSize_ = 0;
  Utf7State utf7_;
  CodePageCounts counts_;
  long long inputOffset_ = 0;  // where in the source pending_, or else the next chunk, begins
  long long outputOffset_ = 0;
};

// UTF-16 to bytes of one code page.
//
// A unit that the code page has only a look-alike for counts as a fit; one that it has not
// counts as replaced and gives the replacement ("?", or nothing). Each half of a surrogate pair
// counts as one unit except in UTF-8 and UTF-7, where a pair is one character; a half alone
// is replaced by U+FFFD in UTF-8 and passes in UTF-7. To 932 the JIS names of five cells are
// taken beside Microsoft's: U+301C, U+2016, U+2212, U+2014 and U+203E encode to 8160, 8161, 817C,
// 815C and 8150 and count as fits.
// UTF-7 writes set D of RFC 2152, space, tab, CR and LF as they are and the rest as Base64, also
// set O, of which mail headers garble some; a text never ends inside Base64.
class CodePageEncoder {
 public:
  // As for the decoder; replacement is any bytes, and must outlive the encoder.
  CodePageEncoder(unsigned codePage, std::string_view replacement);
  CodePageEncoder(const CodePageTable& table, std::string_view replacement)
      : table_(&table), replacement_(replacement) {}

  // As in the decoder. An odd last byte of the whole text counts as replaced and gives nothing
  // (except for 1200, which copies it).
  std::size_t MaxOutput(std::size_t inputBytes) const;
  char* Encode(std::string_view in, bool last, char* out, CConversionReport* report = nullptr);

  std::size_t Pending() const { return pendingSize_; }
  const CodePageCounts& Counts() const { return counts_; }

 private:
  char* EncodePart(std::span<const unsigned char> part, bool last, char* out,
                   CConversionReport* report);

  const CodePageTable* table_;
  std::string_view replacement_;
  unsigned char pending_[8] = {};
  std::size_t pendingSize_ = 0;
  Utf7State utf7_;
  CodePageCounts counts_;
  long long inputOffset_ = 0;
  long long outputOffset_ = 0;
};

// A whole text at once: what a new coder writes for it as its last chunk, without the cost of
// making the coder, which for a header line is as much as the conversion. The room to write into
// is that of the coder's MaxOutput; counts are added to, and the end of what was written is given.
std::size_t MaxDecoded(std::size_t inputBytes);
char* DecodeText(const CodePageTable& table, std::string_view in, char* out,
                 CodePageCounts& counts);
std::size_t MaxEncoded(const CodePageTable& table, std::string_view replacement,
                       std::size_t inputBytes);
char* EncodeText(const CodePageTable& table, std::string_view replacement, std::string_view in,
                 char* out, CodePageCounts& counts);

// One unit in the code page: a byte, or lead * 256 + trail, or -1 when it has none. With exact,
// look-alikes count as none. -1 too for code pages without a table: 1200, 65000, 65001 and what
// is not supported.
int EncodeUnit(unsigned codePage, char16_t unit, bool exact);

}  // namespace lumr
