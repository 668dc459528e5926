// Text of any code type as the UTF-16 units that it is compared by, and the way back from a place
// among them to the caller's bytes.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {

class UnitText {
 public:
  // text is in the edit form of codeType and must outlive the object. Without withMap the way back
  // is not kept.
  UnitText(CodeType codeType, std::string_view text, bool withMap);
  UnitText(UnitText&&) = default;

  // UTF-16, an even number of bytes.
  std::string_view Units() const { return units_; }

  // Where in the caller's bytes a match begins or ends that does so at unitPos (in bytes, even).
  // Always a border of characters.
  std::size_t BeginInCaller(std::size_t unitPos) const;
  std::size_t EndInCaller(std::size_t unitPos) const;

 private:
  // What the decoder was at a place of the text.
  struct Station {
    std::size_t callerPos;
    std::size_t unitPos;
    CodePageDecoder decoder;
  };

  void Decode(unsigned codePage, bool withMap);
  std::size_t CallerPos(std::size_t unitPos) const;
  bool IsInsidePair(std::size_t pos) const;

  std::string_view text_;
  std::string_view units_;
  const MbcsPage* page_ = nullptr;  // null: the text is UTF-16 itself
  CBuffer converted_;
  std::vector<Station> stations_;
};

}  // namespace lumr
