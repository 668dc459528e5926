// What stands under japanese.h: the conversions between the three byte forms, chunk by chunk.
#pragma once

#include <cstddef>
#include <string_view>

#include "lumrmisc/platform/conversion_report.h"

namespace lumr {

// A text argument of the functions of japanese.h: null, or a length below 1, is an empty text.
inline std::string_view JapaneseText(const char* text, int len) {
  return text == nullptr || len < 1 ? std::string_view()
                                    : std::string_view(text, static_cast<std::size_t>(len));
}

struct JapaneseWork;  // a conversion at work on one piece of text

enum class JapaneseConversion { kSJisToEuc, kEucToSJis, kSJisToJis, kJisToSJis };

// The pieces of a text give the same as the whole, wherever it is cut: an incomplete pair or
// escape at the end of a chunk is kept for the next one. The rules are those of japanese.h.
class JapaneseConverter {
 public:
  explicit JapaneseConverter(JapaneseConversion conversion) : conversion_(conversion) {}

  // The most bytes that Convert writes for that many more bytes of input, what is kept included.
  // Convert may use that room up to its end before it knows how much it needs.
  std::size_t MaxOutput(std::size_t inputBytes) const;

  // Converts all of in, and with last also what is incomplete and the closing escape (then the
  // converter is as new, count and offsets excepted). Writes at out, which must not lie in in,
  // and gives the end of what it wrote. Losses go to report when it is not null, with offsets
  // counted over all chunks.
  char* Convert(std::string_view in, bool last, char* out, CConversionReport* report = nullptr);

  // The number of bytes kept for the next chunk; 0 on the border of characters and escapes.
  std::size_t Pending() const { return pendingSize_; }
  long long Lost() const { return lost_; }  // fits and replacements so far

 private:
  JapaneseWork Begin(std::string_view piece, bool last, char* out, CConversionReport* report) const;
  void End(const JapaneseWork& work);
  char* ConvertPending(std::string_view& in, bool last, char* out, CConversionReport* report);
  void Keep(std::string_view rest);

  JapaneseConversion conversion_;
  unsigned char state_ = 0;
  char pending_[4] = {};
  std::size_t pendingSize_ = 0;
  long long lost_ = 0;
  long long inputOffset_ = 0;  // of the first byte that is not converted yet
  long long outputOffset_ = 0;
};

}  // namespace lumr
