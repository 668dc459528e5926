// Conversion between two code types chunk by chunk, for text that is too large to hold.
#pragma once

#include <memory>
#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/conversion_report.h"

namespace lumr {

// How UTF-16 source text is to be read. The order matters for CT_UNICODE as source only.
enum class Utf16Order {
  kLittleEndian,  // as ConvertToOtherCodeType2: a mark counts in UTF-16 to UTF-16 only
  kByMark,        // FE FF at the start: big-endian; the mark is dropped
  kBigEndian,     // big-endian, whether marked or not (FF FE at the start: little-endian)
};

// Converts as ConvertToOtherCodeType2 does, but in pieces: the results of the chunks together
// are the result of the whole text, wherever it is cut. Memory does not grow with the text.
//
// One difference cannot be helped: with emptyFallback, ConvertToOtherCodeType2 removes the zero
// bytes that the text itself holds when a character was replaced anywhere in it. A stream does
// not know its end; here zero bytes of the text stay.
//
// A Transcoder converts one text. It is not shared between threads.
class Transcoder {
 public:
  Transcoder(CodeType from, CodeType to, int emptyFallback,
             Utf16Order order = Utf16Order::kLittleEndian);
  ~Transcoder();
  Transcoder(Transcoder&&) noexcept;
  Transcoder& operator=(Transcoder&&) noexcept;

  // Appends the conversion of chunk to out, which must not hold the chunk; last (with an empty
  // chunk or not) ends the text. Losses go to report when it is not null, with offsets in the
  // bytes of the whole source and of the whole result.
  void Convert(std::string_view chunk, bool last, CBuffer& out,
               CConversionReport* report = nullptr);

  // The status so far, as ConvertToOtherCodeType2 gives it: 0, or 1 once a character was replaced.
  long Status() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// Whether the whole text converts from one code type to the other without any loss, fits
// included. Ends at the first loss, and keeps no output.
bool ConvertsExactly(CodeType from, std::string_view text, CodeType to);

}  // namespace lumr
