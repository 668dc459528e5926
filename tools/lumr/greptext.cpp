#include "greptext.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/charset/linescan.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/types.h"

namespace lumr::tool {

namespace {

// Lines are looked at together as long as none of them matches.
constexpr std::size_t kAheadSize = std::size_t{1} << 16;

constexpr char kEscape = 0x1B;
constexpr std::string_view kAsciiEscape = "\x1B(B";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// The length of the escape sequence (ISO/IEC 2022) that text begins with; 0 when it begins with
// none.
std::size_t EscapeLength(std::string_view text) {
  if (text.empty() || text[0] != kEscape) return 0;
  std::size_t length = 1;
  while (length < text.size() && text[length] >= 0x20 && text[length] < 0x30) ++length;
  return std::min(length + 1, text.size());
}

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

// A decoder that is fed byte by byte and can tell what it holds back, as far as that is known.
class ByteDecoder {
 public:
  explicit ByteDecoder(CodeType codeType) {
    if (codeType == CT_JIS || codeType == CT_EUC) {
      chained_.emplace(codeType, CT_UNICODE, 0);
    } else {
      direct_.emplace(CharSetCode2CodePage(codeType));
    }
  }
  // Gives the units of what is complete now, good until the next call.
  std::string_view Feed(std::string_view byte, bool last) {
    if (!direct_) {
      out_.Empty();
      chained_->Convert(byte, last, out_);
      return out_.Bytes();
    }
    const char* const end = direct_->Decode(byte, last, units_);
    return {units_, static_cast<std::size_t>(end - units_)};
  }
  std::size_t Pending() const { return direct_ ? direct_->Pending() : 0; }

 private:
  std::optional<CodePageDecoder> direct_;
  std::optional<Transcoder> chained_;
  CBuffer out_;
  char units_[32];
};

}  // namespace

// Goes through a line a second time, byte by byte, to see which byte each unit came from.
class TextLines::Walk {
 public:
  Walk(CodeType codeType, std::string_view escape, std::string_view line)
      : decoder_(codeType), line_(line), lineBegin_(line.data()) {
    for (std::size_t i = 0; i < escape.size(); ++i) decoder_.Feed(escape.substr(i, 1), false);
    if (codeType == CT_UTF8 && line.starts_with(kUtf8Mark)) pos_ = begin_ = kUtf8Mark.size();
  }
  bool IsOf(std::string_view line) const { return line.data() == lineBegin_; }

  std::size_t Find(std::size_t unitPos) {
    while (given_ <= unitPos && pos_ < line_.size()) Step();
    if (given_ <= unitPos) return line_.size();
    // The second of two units is the byte that showed the first one to be broken, or half a pair.
    return unitPos > givenBefore_ && !gavePair_ ? pos_ - 1 : givenBegin_;
  }

 private:
  void Step() {
    const bool last = pos_ + 1 == line_.size();
    const std::string_view units = decoder_.Feed(line_.substr(pos_, 1), last);
    ++pos_;
    if (units.empty()) return;
    givenBegin_ = begin_;
    while (givenBegin_ < pos_ && EscapeLength(line_.substr(givenBegin_)) > 0) {
      givenBegin_ += EscapeLength(line_.substr(givenBegin_));
    }
    givenBefore_ = given_;
    given_ += units.size();
    gavePair_ = IsHighSurrogate(LoadUnit(units.data()));
    begin_ = pos_ - decoder_.Pending();
  }

  ByteDecoder decoder_;
  std::string_view line_;
  const char* lineBegin_;
  std::size_t pos_ = 0;          // bytes fed
  std::size_t begin_ = 0;        // where the character that is being fed begins
  std::size_t given_ = 0;        // bytes of units so far
  std::size_t givenBefore_ = 0;  // before those that came last
  std::size_t givenBegin_ = 0;   // where the character begins that those came from
  bool gavePair_ = false;        // those are a surrogate pair
};

TextLines::~TextLines() = default;

TextLines::TextLines(std::string_view bytes, CodeType codeType, Utf16Order order)
    : bytes_(bytes), codeType_(codeType) {
  if (codeType != CT_UNICODE || bytes.size() < 2) return;
  const char16_t mark = LoadUnit(bytes.data());
  const bool isMarked = mark == 0xFEFF || mark == 0xFFFE;
  const bool isSwapped = isMarked ? mark == 0xFFFE : order == Utf16Order::kBigEndian;
  if (isMarked) markSize_ = 2;
  bytes_.remove_prefix(markSize_);
  if (!isSwapped) return;
  UTF16BE2LE(bytes_.data(), static_cast<int>(bytes_.size()), swapped_);
  bytes_ = swapped_.Bytes();
}

// escape: what ISO-2022-JP text is in where the bytes begin.
std::string_view TextLines::Convert(std::string_view escape, std::string_view bytes) {
  if (codeType_ == CT_UNICODE) return bytes.substr(0, bytes.size() & ~std::size_t{1});
  if (!escape.empty()) {
    prefixed_ = escape;
    prefixed_ += bytes;
    bytes = prefixed_.Bytes();
  }
  ConvertToOtherCodeType2(codeType_, bytes, CT_UNICODE, converted_);
  return converted_.Bytes();
}

std::string_view TextLines::Ahead() {
  const std::size_t size = bytes_.size();
  aheadEnd_ = size;
  const std::size_t middle = pos_ + kAheadSize;
  const char* lineEnd = nullptr;
  int breakLength = 0;
  if (middle < size && GetNextLine(bytes_.data() + middle, static_cast<int>(size - middle),
                                   LineType(), lineEnd, breakLength)) {
    aheadEnd_ = static_cast<std::size_t>(lineEnd + breakLength - bytes_.data());
  }
  return Convert(escape_, bytes_.substr(pos_, aheadEnd_ - pos_));
}

void TextLines::SkipAhead() {
  Line line;
  while (IsAhead()) Next(line);
}

void TextLines::Next(Line& line) {
  const char* const begin = bytes_.data() + pos_;
  const char* lineEnd = nullptr;
  int breakLength = 0;
  GetNextLine(begin, static_cast<int>(bytes_.size() - pos_), LineType(), lineEnd, breakLength);
  line.bytes = {begin, static_cast<std::size_t>(lineEnd - begin)};
  line.offset = markSize_ + pos_;
  line.number = ++number_;
  pos_ += line.bytes.size() + static_cast<std::size_t>(breakLength);
  lineEscape_ = escape_;
  if (codeType_ == CT_JIS) FollowEscapes(line.bytes);
}

// Lines end in ASCII (RFC 1468), but not in the text of mailers that fold lines at any place.
void TextLines::FollowEscapes(std::string_view bytes) {
  const std::size_t last = bytes.rfind(kEscape);
  if (last == bytes.npos) return;
  const std::string_view sequence = bytes.substr(last);
  escape_ = sequence.substr(0, EscapeLength(sequence));
  if (escape_ == kAsciiEscape) escape_.clear();
}

std::string_view TextLines::UnitsOf(const Line& line) {
  return Convert(lineEscape_, line.bytes);
}

std::size_t TextLines::OffsetOf(const Line& line, std::size_t unitPos) {
  if (codeType_ == CT_UNICODE) return line.offset + unitPos;
  if (walk_ == nullptr || !walk_->IsOf(line.bytes)) {
    walk_ = std::make_unique<Walk>(codeType_, lineEscape_, line.bytes);
  }
  return line.offset + walk_->Find(unitPos);
}

// Lines of byte text end alike in all its code types.
CodeType TextLines::LineType() const {
  return codeType_ == CT_UNICODE ? CT_UNICODE : CT_ASCII;
}

}  // namespace lumr::tool
