// The transfer encodings chunk by chunk, for input that is too large to hold.
#pragma once

#include <memory>
#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

enum class TransferEncoding {
  kBase64,
  kQuotedPrintable,
  kUuencode,
  kBinHex,
  kHex,
  kUrl,
  kImapUtf7
};

// Turns bytes into an encoding or back. The chunks together give what the whole-text function of
// the encoding (transfer.h) gives, wherever the input is cut. Memory does not grow with the
// input; only a run of white space in quoted-printable is held until what follows it tells
// whether it counts. Mailbox names are UTF-16LE bytes on their plain side.
//
// A coder codes one input. It is not shared between threads.
class TransferCoder {
 public:
  virtual ~TransferCoder() = default;
  // Appends what the chunk gives to out, which must not hold the chunk.
  virtual void Update(std::string_view chunk, CBuffer& out) = 0;
  // Appends the rest. 1 when the input was well formed, 0 when something was skipped, missing or
  // left over: the whole-text functions forgive much of that silently; a tool must say it. White
  // space around and between Base64 characters is no fault, nor is text around a block.
  virtual int Finish(CBuffer& out) = 0;
};

struct TransferOptions {
  int lineLength = 76;      // Base64: characters a line; below 1 one line
  int textMode = 1;         // quoted-printable: 1 keeps line breaks as line breaks
  int encodeAll = 0;        // hex: 1 encodes ASCII letters and digits too
  CStringA uuMode = "644";  // uuencode: the begin line
  CStringA uuName = "dummy";
};

// Null for BinHex, which is only decoded.
std::unique_ptr<TransferCoder> MakeTransferEncoder(TransferEncoding encoding,
                                                   const TransferOptions& options = {});

// Without lenient the decoders are exactly the whole-text functions, except that what stands
// before a fault (a missing colon of BinHex) has been written when the fault is met.
// With it they read as readers of real mail want it:
// - Base64 keeps an incomplete last group of four and goes on after padding.
// - Uuencode skips text before the begin line, and takes missing characters of a short line,
//   whose spaces transport stripped, as 0 (Finish gives 0 then).
// - "+" is a space in the encoding of URLs.
// - An empty input is not well formed where a block is expected (uuencode, BinHex).
std::unique_ptr<TransferCoder> MakeTransferDecoder(TransferEncoding encoding, bool lenient);

}  // namespace lumr
