// Double quotes and parentheses in a line of text, as mail headers use them.
#pragma once

#include <cstddef>
#include <string_view>

#include "lumrmisc/buffer/characterform_internal.h"

namespace lumr {

enum class NestingMark {
  kEnd,
  kDelimiter,  // outside of quotes and parentheses
  kOpen,       // a parenthesis that opens an outermost part
  kClose,      // the one that closes it
};

// Goes through a text once and stops at marks.
//
// - Quotes hold everything up to the next quote. In them a backslash makes the next character
//   ordinary, be it a quote or another backslash.
// - Outside of them a quote behind a backslash, or inside parentheses, opens nothing. Nor does one
//   that the text begins with and that is the only one: a forgotten quote swallows no rest.
// - Parentheses count outside of quotes, and nest; a closing one too many is ordinary.
template <class Unit>
class NestingScanner {
 public:
  using View = std::basic_string_view<Unit>;

  // Scans from start, which is at most the text's length.
  NestingScanner(View text, std::size_t start)
      : text_(text), next_(start), hasPairs_(!IsLoneQuote(text, start)) {}

  // The next mark. The delimiter is any ASCII character but a quote, backslash or parenthesis.
  NestingMark Next(Unit delimiter) {
    return NextOf([delimiter](Unit c) { return c == delimiter; });
  }

  // The same with several delimiters, of which isDelimiter(unit) tells.
  template <class Test>
  NestingMark NextOf(Test isDelimiter) {
    while (next_ < text_.size()) {
      if (IsOrdinary(text_[next_]) && !isDelimiter(text_[next_])) {
        ++next_;
        continue;
      }
      position_ = next_;
      next_ += form_.CharLength(text_, position_);
      if (next_ - position_ > 1) continue;
      if (inQuotes_) {
        ReadQuoted(text_[position_]);
        continue;
      }
      const NestingMark mark = ReadPlain(text_[position_], isDelimiter);
      if (mark != NestingMark::kEnd) return mark;
    }
    position_ = text_.size();
    return NestingMark::kEnd;
  }

  // Of the latest mark.
  std::size_t Position() const { return position_; }

  // What is still open, at the end: what was never closed.
  bool InQuotes() const { return inQuotes_; }
  bool InParentheses() const { return depth_ > 0; }

 private:
  static bool IsLoneQuote(View text, std::size_t start) {
    return start < text.size() && text[start] == Unit('"') &&
           text.find(Unit('"'), start + 1) == text.npos;
  }

  static bool IsOrdinary(Unit c) {
    static constexpr AsciiSet kMarks("\"()\\");
    if constexpr (sizeof(Unit) == 1) {
      return static_cast<unsigned char>(c) < 0x80 && !kMarks.Holds(c);
    } else {
      return !kMarks.Holds(c);
    }
  }

  void ReadQuoted(Unit c) {
    if (c == Unit('"')) inQuotes_ = false;
    if (c == Unit('\\') && next_ < text_.size()) next_ += form_.CharLength(text_, next_);
  }

  // kEnd when the character is no mark.
  template <class Test>
  NestingMark ReadPlain(Unit c, Test isDelimiter) {
    switch (c) {
      case Unit('\\'):
        behindBackslash_ = next_;
        return NestingMark::kEnd;
      case Unit('"'):
        inQuotes_ = hasPairs_ && depth_ == 0 && behindBackslash_ != position_;
        return NestingMark::kEnd;
      case Unit('('):
        return depth_++ == 0 ? NestingMark::kOpen : NestingMark::kEnd;
      case Unit(')'):
        return depth_ > 0 && --depth_ == 0 ? NestingMark::kClose : NestingMark::kEnd;
      default:
        return depth_ == 0 && isDelimiter(c) ? NestingMark::kDelimiter : NestingMark::kEnd;
    }
  }

  const FormOf<Unit> form_{};
  View text_;
  std::size_t next_;
  std::size_t position_ = 0;
  std::size_t behindBackslash_ = View::npos;  // where a quote would stand behind a backslash
  std::size_t depth_ = 0;
  bool hasPairs_;
  bool inQuotes_ = false;
};

}  // namespace lumr
