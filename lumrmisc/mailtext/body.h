// Between a text and a message that is sent: the charset and the transfer encoding of a body, and
// the quoted text of a reply.
//
// Outputs are replaced and must not hold the input. A null text, or a length below 1 (a length
// never means "up to the terminator" here), is an empty text. Nothing fails on content; only
// memory throws.
#pragma once

#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/conversion_report.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// Encodes bytes under the label of a Content-Transfer-Encoding, ignoring the label's case:
// "base64" in lines of 76 characters, "quoted-printable" (textMode as in EncodeQuotedPrintable),
// "x-uuencode" as a block that begins "begin 644 dummy". Under any other label, unknown ones and
// null included, the bytes are copied.
void EncodeBody(const char* transferEncoding, const unsigned char* data, int length, int textMode,
                CBuffer& out);
void EncodeBody(std::string_view transferEncoding, std::string_view data, int textMode,
                CBuffer& out);

// The transfer encoding that a body is sent in, a constant: "base64" unless it is text and plain
// text may be sent; else "7bit" for US-ASCII, ISO-2022-JP and UTF-7, and "8bit" for all others.
// Never quoted-printable, which old Japanese mailers show as it is.
const char* GetDefaultSendEncoding(int isText, int plainAllowed, CodeType codeType);

// Makes a body in edit form ready for sending. codeType is that of the mail, in any form: the
// body is converted from its edit form (CodeTypeSave2Edit) to its sending form
// (CodeType2DefSend), which codeType then is; transferEncoding becomes "7bit" or "8bit". With
// asciiAsJis US-ASCII is labelled as ISO-2022-JP, so that mailers take the thread for Japanese.
// 1 when the body was converted (with "?" for what the sending form lacks; report tells), 0 when
// it is empty or both forms are the same.
int EncodeBodyForSend(int asciiAsJis, CodeType& codeType, CStringA& transferEncoding, CBuffer& body,
                      CConversionReport* report = nullptr);

// Puts mark at the start of every line of text and gives the number of line breaks (CR LF, a
// lone CR, a lone LF; all stay as they are). Behind a line break at the very end stands no mark.
// An empty text gives no mark either. Under a Unicode code type mark (up to a zero unit) and text
// are UTF-16 at any address, length counts bytes, and an odd last byte is dropped; otherwise both
// are bytes of a code page.
int InsertQuoteMark(CodeType codeType, const char* mark, const char* text, int length,
                    CBuffer& out);
int InsertQuoteMark(std::string_view mark, std::string_view text, CBuffer& out);
int InsertQuoteMark(std::u16string_view mark, std::u16string_view text, CBuffer& out);

}  // namespace lumr
