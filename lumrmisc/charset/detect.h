// Which code type a text of unknown encoding is in.
//
// A text is a pointer and a length in bytes (in units for UTF-16); null or a length below 1 is
// an empty text. Nothing outside the given length is read: where a rule looks at a byte behind
// the end, that byte counts as zero.
#pragma once

#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"

namespace lumr {

// CT_ASCII, CT_JIS, CT_EUC or CT_SJIS by the byte patterns of the three Japanese forms. Looks at
// the first 1024 bytes, and ends at the first byte that decides; only a run of bytes that fit
// EUC-JP and Shift_JIS alike is followed further. Text that stays ambiguous is EUC-JP: two
// half-width katakana in Shift_JIS are the same bytes, but rare in mail.
CodeType DetectCodeType(const char* text, int len);
CodeType DetectCodeType(std::string_view text);

// 1 when the text has the form of UTF-8 and holds at least one multi-byte sequence, else 0.
// Sequences of up to 6 bytes pass (RFC 2279); overlong forms and surrogates are not looked for.
int IsUTF8(const char* text, int len);
int IsUTF8(std::string_view text);

// CT_ASCII for empty text; CT_UTF8 by IsUTF8; CT_UNICODE when all of the text, read as UTF-16 of
// either byte order (big-endian by its mark only), has a place in code page 932; otherwise as
// DetectCodeType. Some short plain ASCII passes for UTF-16: who may have that tests for it
// first, as ExplainDetection does.
CodeType DetectCodeType2(const char* text, int len);
CodeType DetectCodeType2(std::string_view text);

// The hint when the text really is in it, else as DetectCodeType.
// - CT_UNICODE: an even length, and every unit is a defined character.
// - CT_ASCII for plain ASCII text, whatever the hint (CT_UNKNOWN and CT_UNICODE excepted).
// - CT_SJIS, CT_EUC: CT_JIS when there is an ESC and the text is exactly convertible as
//   ISO-2022-JP.
// - Any other: the text converts to UTF-16 exactly; a character that would come back as another
//   code is not exact. The arithmetic of CT_JIS and CT_EUC copies what it has no rule for, so
//   that Shift_JIS text passes under these hints too.
CodeType DetectCodeType3(const char* text, int len, CodeType hint);
CodeType DetectCodeType3(std::string_view text, CodeType hint);

// The code type of a text with a charset label: CharSetName2Code of the label when it is not
// empty, so an unknown label means ISO-2022-JP and the text is not looked at (the label wins);
// otherwise DetectCodeType2. ResolveMailCharset (mailcharset.h) is the one that doubts labels.
CodeType GetCodeType(const char* charset, const char* text, int len);

// CT_SJIS or CT_KSC5601 by the first unit that is kana or Hangul; ideographs do not tell.
// defaultType when there is none. The second form takes UTF-16LE bytes at any address.
CodeType DetectUnicodeCodeType(const char16_t* text, int count, CodeType defaultType);
CodeType DetectUnicodeCodeType(std::string_view utf16, CodeType defaultType);

// The narrowest encoding that holds the text: CT_ASCII, CT_SJIS (every unit has an exact code),
// else CT_UNICODE. out, when not null, receives the text in it, and must not hold the input.
CodeType DetectUnicodeCodeType2(const char16_t* text, int count, CBuffer* out);

// What decided a detection.
enum class DetectionRule {
  kEmpty,           // nothing to look at
  kPlainAscii,      // only printable ASCII and white space
  kEscape,          // an escape sequence of ISO-2022-JP
  kUtf8,            // the form of UTF-8
  kUtf16BigEndian,  // UTF-16 that begins with a big-endian byte-order mark
  kUtf16,           // every UTF-16 unit has a place in code page 932
  kEucByte,         // a byte that only EUC-JP has
  kSJisByte,        // a byte that only Shift_JIS has
  kAmbiguous,       // bytes of EUC-JP or Shift_JIS: EUC-JP wins the tie
  kNothingTelling,  // no byte of a Japanese form in the scanned part
};

struct Detection {
  CodeType codeType;
  DetectionRule rule;
  // The first byte that the rule rests on (of a pair of bytes the second): its offset from the
  // start of the text, and its value. -1 and 0 where no byte decided (kEmpty, kPlainAscii,
  // kNothingTelling).
  long long offset;
  unsigned char byte;
};

// Detection for people and programs that want to know why: plain ASCII first, then the escapes
// of 7-bit text, then DetectCodeType2 with its own reasons. Text that is ASCII for longer than
// DetectCodeType looks is scanned from its first byte of 8 bits on, unless it has a zero byte: a
// Japanese text may stand behind a long preamble in English.
Detection ExplainDetection(std::string_view text);

}  // namespace lumr
