// Mail bytes to UTF-8 text: transfer encodings undone, charsets resolved, header values read.
// The work is the library's; this is how the tool puts its pieces together.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/mailcharset.h"
#include "lumrmisc/mailtext/transfercoder.h"

namespace lumr::tool {

// A raw header value (folded or not) in UTF-8. rawCharset: see DecodeHeaderValue.
std::string DecodedHeader(std::string_view raw, std::string_view rawCharset = {});

// Bytes that stand in another block, or in one of their own. Moving keeps the view good.
class HeldBytes {
 public:
  HeldBytes() = default;
  explicit HeldBytes(std::string_view view) : view_(view) {}
  explicit HeldBytes(std::unique_ptr<CBuffer> own) : own_(std::move(own)), view_(own_->Bytes()) {}

  std::string_view View() const { return view_; }

 private:
  std::unique_ptr<CBuffer> own_;
  std::string_view view_;
};

// What a Content-Transfer-Encoding asks for.
enum class Transfer { kNone, kUnknown, kBase64, kQuotedPrintable, kUuencode, kBinHex };

// From the raw value of the header, forgiving what mailers get wrong ("quoted printable;").
Transfer TransferOf(std::string_view raw);

// Undoes the encoding; the result may be a view of raw. wellFormed becomes false when something
// had to be skipped or was missing.
HeldBytes DecodeTransfer(Transfer transfer, std::string_view raw, bool& wellFormed);

// Whether a text that says it is Base64 is prose: it has spaces inside its lines.
bool IsProse(std::string_view raw);

// The size in bytes of what DecodeTransfer would give, without making it where that can be.
long long DecodedSize(Transfer transfer, std::string_view raw);

// A text in UTF-8, or in bytes that its writer still has to check (AppendSafe).
struct DecodedText {
  HeldBytes utf8;
  MailCharset charset;
  long long replaced = 0;  // characters that have no place in Unicode
};

// Decodes by the label (may be empty) checked against the bytes. bytes must outlive the result.
DecodedText DecodeText(std::string_view label, std::string_view bytes);

// The same in a charset that is settled.
DecodedText DecodeText(const MailCharset& charset, std::string_view bytes);

// UTF-16 in UTF-8.
std::string Utf8(std::u16string_view text);

}  // namespace lumr::tool
