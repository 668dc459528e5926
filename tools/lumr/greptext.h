// A text that `lumr grep` goes through line by line, and the places of its bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/charset/transcoder.h"

namespace lumr::tool {

// The lines of a text in its bytes, and each in UTF-16. A broken character at the end of a line
// never takes the line break along.
class TextLines {
 public:
  // bytes must outlive the object. order counts for CT_UNICODE.
  TextLines(std::string_view bytes, CodeType codeType, Utf16Order order);
  ~TextLines();

  struct Line {
    std::string_view bytes;   // without the line break
    std::size_t offset = 0;   // of its first byte in the text
    std::int64_t number = 0;  // from 1
  };

  // Whether there is more of the text.
  bool IsAtEnd() const { return pos_ >= bytes_.size(); }
  // The text of some whole lines from here on, in UTF-16; good until the next call of any kind.
  std::string_view Ahead();
  // Steps over the lines that Ahead gave.
  void SkipAhead();
  // Whether the next line is one that Ahead gave.
  bool IsAhead() const { return pos_ < aheadEnd_; }

  void Next(Line& line);
  // The line in UTF-16; good until the next call. Called for the lines in their order.
  std::string_view UnitsOf(const Line& line);

  // Where in the text's bytes the unit of a line begins that stands at unitPos (in bytes of
  // UTF-16) of UnitsOf. For the line that was converted last, and places in rising order.
  std::size_t OffsetOf(const Line& line, std::size_t unitPos);

 private:
  class Walk;

  std::string_view Convert(std::string_view escape, std::string_view bytes);
  CodeType LineType() const;
  void FollowEscapes(std::string_view bytes);

  std::string_view bytes_;
  CodeType codeType_;
  CBuffer swapped_;  // big-endian text made little-endian
  std::size_t markSize_ = 0;
  std::size_t pos_ = 0;
  std::size_t aheadEnd_ = 0;
  std::int64_t number_ = 0;
  std::string escape_;  // what ISO-2022-JP text is in where the next line begins
  std::string lineEscape_;
  CBuffer prefixed_;
  CBuffer converted_;
  std::unique_ptr<Walk> walk_;
};

}  // namespace lumr::tool
