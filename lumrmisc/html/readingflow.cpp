#include "lumrmisc/html/readingflow_internal.h"

#include <algorithm>

#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

constexpr char16_t kNoBreakSpace = 0xA0;

bool IsHighSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xD800;
}
bool IsLowSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xDC00;
}

// Scripts that write no blanks between words. Hangul is wide too, but does.
bool WritesNoBlanks(char16_t unit) {
  const bool isHangul = (unit >= 0xAC00 && unit <= 0xD7FF) || (unit >= 0x1100 && unit <= 0x11FF);
  const bool isSurrogate = IsHighSurrogate(unit) || IsLowSurrogate(unit);
  return unit >= 0x1100 && !isHangul && !isSurrogate && IsEastAsianWide(unit);
}

}  // namespace

int ColumnsOf(std::u16string_view text) {
  int columns = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPair =
        IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]);
    if (isPair) {
      const char32_t high = static_cast<char32_t>(text[i] - 0xD800) << 10;
      columns += IsEastAsianWide(0x10000 + high + (text[i + 1] - 0xDC00)) ? 2 : 1;
      ++i;
    } else {
      columns += IsUnitFullWidth(text[i]) ? 2 : 1;
    }
  }
  return columns;
}

void ReadingFlow::PutExactly(std::u16string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsLineEnd(text[i])) {
      if (text.substr(i, 2) == u"\r\n") ++i;
      BreakLine();
    } else {
      if (!isLineOpen_) OpenLine();
      text_ += text[i] == kNoBreakSpace ? u' ' : text[i];
    }
  }
}

void ReadingFlow::PutRunning(std::u16string_view text) {
  for (const char16_t unit : text) {
    if (unit == u' ' || (unit >= u'\t' && unit <= u'\r')) {
      hasGap_ = true;
      gapHasLineEnd_ |= IsLineEnd(unit);
    } else {
      Put(unit);
    }
  }
}

void ReadingFlow::Put(char16_t unit) {
  if (!isLineOpen_) {
    OpenLine();
  } else if (hasGap_) {
    const bool isJoined = gapHasLineEnd_ && WritesNoBlanks(text_.back()) && WritesNoBlanks(unit);
    if (!isJoined) text_ += u' ';
  }
  hasGap_ = gapHasLineEnd_ = false;
  text_ += unit == kNoBreakSpace ? u' ' : unit;
}

void ReadingFlow::Break(int lines) {
  hasGap_ = gapHasLineEnd_ = false;
  if (isLineOpen_) quotesBefore_ = quotes_;
  isLineOpen_ = false;
  if (!text_.empty()) breaks_ = std::max(breaks_, lines);
}

void ReadingFlow::BreakLine() {
  if (isLineOpen_) {
    Break(1);
  } else if (!text_.empty()) {
    breaks_ = std::min(breaks_ + 1, kMostBreaks);
  }
}

void ReadingFlow::OpenQuote() {
  Break(2);
  ++quotes_;
}

void ReadingFlow::CloseQuote() {
  Break(2);
  if (quotes_ > 0) --quotes_;
}

void ReadingFlow::OpenList(bool isNumbered) {
  Break(lists_.empty() ? 2 : 1);
  lists_.push_back({isNumbered, 1});
}

void ReadingFlow::CloseList() {
  marker_.clear();
  if (!lists_.empty()) lists_.pop_back();
  Break(lists_.empty() ? 2 : 1);
}

void ReadingFlow::BeginItem() {
  Break(1);
  marker_ = u"- ";
  if (lists_.empty() || !lists_.back().isNumbered) return;
  const std::string number = std::to_string(lists_.back().next++);
  marker_ = std::u16string(number.begin(), number.end()) + u". ";
}

void ReadingFlow::AppendPrefix(int quotes, bool isEmptyLine) {
  for (int i = 0; i < std::min(quotes, kMostLevels); ++i) text_ += u"> ";
  if (!isEmptyLine) {
    const std::size_t levels = std::min<std::size_t>(lists_.size(), kMostLevels);
    for (std::size_t i = 0; i < levels; ++i) {
      const bool isMarked = i + 1 == levels && !marker_.empty();
      text_ += isMarked ? std::u16string_view(marker_) : lists_[i].isNumbered ? u"   " : u"  ";
    }
    if (levels == 0) text_ += marker_;  // an item outside of any list
    marker_.clear();
  } else if (text_.ends_with(u' ')) {
    text_.pop_back();
  }
}

void ReadingFlow::OpenLine() {
  for (; breaks_ > 0; --breaks_) {
    text_ += u"\r\n";
    if (breaks_ > 1) AppendPrefix(std::min(quotes_, quotesBefore_), true);
  }
  AppendPrefix(quotes_, false);
  isLineOpen_ = true;
  hasGap_ = gapHasLineEnd_ = false;
}

std::u16string ReadingFlow::Take() {
  if (!text_.empty()) text_ += u"\r\n";
  return std::move(text_);
}

}  // namespace lumr
