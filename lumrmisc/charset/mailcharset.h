// The encoding of a received text: its charset label, checked against its bytes.
#pragma once

#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/charset/transcoder.h"
#include "lumrmisc/platform/conversion_report.h"

namespace lumr {

// The code type that mail means by a charset label: the names of CharSetName2CodeExact and the
// further names met in mail (windows-31j, cp932, iso-2022-jp-ms, cp50220, eucjp-ms, gbk, uhc,
// latin1, utf-16be, ...), ignoring case, quotes and white space around, and a language after "*"
// (RFC 2231). CT_UNKNOWN when none. Every label of UTF-16 gives CT_UNICODE; which byte order it
// means is stored in order when that is not null.
CodeType CodeTypeOfMailLabel(std::string_view label, Utf16Order* order = nullptr);

enum class CharsetSource {
  kLabel,         // the label is known and the bytes are in it
  kLabelLenient,  // the label is known, the bytes are not wholly in it, nor in anything better
  kNoLabel,       // no label: detected
  kUnknownLabel,  // a label of no code type of the library: detected
  kLabelLies,     // the bytes are not in the labelled encoding but in another one
};

struct MailCharset {
  CodeType codeType;
  CharsetSource source;
  Utf16Order order = Utf16Order::kLittleEndian;  // of CT_UNICODE, marks included

  bool operator==(const MailCharset&) const = default;
};

// Decides the encoding of a text with a label (may be empty). The label stands when the bytes
// are in it, so that short text is never guessed at, with these exceptions:
// - 7-bit text with kanji escape sequences is ISO-2022-JP under any label but one of UTF-16.
// - 8-bit bytes are never US-ASCII, UTF-7 or ISO-2022-JP.
// - Text with the form of UTF-8 (one character of six may be damaged) under the label of a
//   single-byte set is UTF-8: no word of a language written in such a set looks like that.
// - Japanese text with kana under a Western label is Japanese.
// - A label of a set that the library has as a part of a larger one means the larger one where
//   the text needs it: windows-1252 for ISO-8859-1, code page 949 for EUC-KR. A label of a set
//   that differs from one of the library's in some characters (ISO-8859-15, KOI8-U, GB18030)
//   stands for that one where the text holds none of them, and leniently where it does.
// Where the label does not stand, UTF-8, UTF-16 with a mark, ISO-2022-JP, EUC-JP and Shift_JIS
// are tried over the whole text; 8-bit text that is none of them is windows-1252.
MailCharset ResolveMailCharset(std::string_view label, std::string_view text);

// The text of a resolved charset as UTF-16LE without a byte-order mark; returns the status of
// the conversion. out is replaced and must not hold the text.
long ConvertMailText(const MailCharset& charset, std::string_view text, CBuffer& out,
                     CConversionReport* report = nullptr);

}  // namespace lumr
