// The text of a date, read character by character.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/mailtext/datewords_internal.h"

namespace lumr::date {

// A unit as the grammar sees it: full-width forms as ASCII, the ideographic space as a space.
inline char16_t Folded(char unit) {
  return static_cast<unsigned char>(unit);
}
inline char16_t Folded(char16_t unit) {
  if (unit >= 0xFF01 && unit <= 0xFF5E) return static_cast<char16_t>(unit - 0xFEE0);
  switch (unit) {
    case 0x3000:
    case 0x00A0:
      return u' ';
    case 0x2212:  // minus sign
    case 0x2010:  // hyphen
      return u'-';
    case 0x3001:  // ideographic comma
      return u',';
    default:
      return unit;
  }
}

struct Number {
  int value = 0;  // 100000 and more are all the same
  int digits = 0;
  std::size_t begin = 0;
};

// Stands somewhere in the text. White space and comments are passed over as one.
template <class Unit>
class DateCursor {
 protected:
  explicit DateCursor(std::basic_string_view<Unit> text) : text_(text) {}

  char16_t At(std::size_t pos) const { return pos < text_.size() ? Folded(text_[pos]) : u'\0'; }
  char16_t Here() const { return At(pos_); }
  bool DigitAt(std::size_t pos) const { return IsAsciiDigit(At(pos)); }
  bool Take(char16_t wanted) {
    if (pos_ >= text_.size() || Here() != wanted) return false;
    ++pos_;
    return true;
  }
  bool SkipBlank();
  bool TakeMark(char16_t mark);
  // Digits; or Japanese numerals with a sign of dates behind them, since they are parts of other
  // words too.
  bool NumberHere() const { return DigitAt(pos_) || NumeralsHere(); }
  Number ReadNumber();
  bool TakeOrdinalEnding();

  std::basic_string_view<Unit> text_;
  std::size_t pos_ = 0;
  std::optional<int> commentZone_;  // the latest zone that was a comment

 private:
  void SkipComment();
  bool NumeralsHere() const;
  Number ReadNumerals();
};

// Comments are passed over with the white space. Gives whether there was anything.
template <class Unit>
bool DateCursor<Unit>::SkipBlank() {
  const std::size_t begin = pos_;
  for (; pos_ < text_.size(); ++pos_) {
    const char16_t c = Here();
    if (c == u'(') {
      SkipComment();
      if (pos_ >= text_.size()) break;
    } else if (c != u' ' && (c < u'\t' || c > u'\r')) {
      break;
    }
  }
  return pos_ != begin;
}

// Stops on the parenthesis that closes the comment, or at the end. A comment may be all that tells
// the zone: "23:34:45 (JST)".
template <class Unit>
void DateCursor<Unit>::SkipComment() {
  const std::size_t begin = pos_ + 1;
  int depth = 0;
  for (; pos_ < text_.size(); ++pos_) {
    const char16_t c = Here();
    if (c == u'\\') ++pos_;
    if (c == u'(') ++depth;
    if (c == u')' && --depth == 0) break;
  }
  pos_ = std::min(pos_, text_.size());
  WordText word;
  for (std::size_t i = begin; i < pos_ && word.size < kLongestWord; ++i) word.Add(At(i));
  const DateWord* const found = FindWord(word);
  if (pos_ - begin == word.size && found != nullptr && found->kind == WordKind::kZone) {
    commentZone_ = found->value;
  }
}

// A sign of Japanese dates, behind blanks or not: "7 時".
template <class Unit>
bool DateCursor<Unit>::TakeMark(char16_t mark) {
  const std::size_t before = pos_;
  SkipBlank();
  if (Take(mark)) return true;
  pos_ = before;
  return false;
}

template <class Unit>
Number DateCursor<Unit>::ReadNumber() {
  if (!DigitAt(pos_)) return ReadNumerals();
  Number number;
  number.begin = pos_;
  for (; DigitAt(pos_); ++pos_) {
    if (number.value < 100000) number.value = number.value * 10 + (Here() - u'0');
    if (number.digits < 100) ++number.digits;
  }
  return number;
}

// Of longer texts than any number only the begin is looked at.
template <class Unit>
bool DateCursor<Unit>::NumeralsHere() const {
  constexpr std::size_t kMost = 8;
  std::size_t end = pos_;
  while (end - pos_ < kMost && NumeralValue(At(end)) >= 0) ++end;
  return end != pos_ &&
         std::u16string_view(u"年月日時分秒").find(At(end)) != std::u16string_view::npos;
}

// "二〇二六" digit by digit, "二千二十六" by its tens and hundreds.
template <class Unit>
Number DateCursor<Unit>::ReadNumerals() {
  Number number;
  number.begin = pos_;
  int whole = 0;  // of what stands before the latest ten, hundred or thousand
  int digits = 0;
  for (int value; (value = NumeralValue(Here())) >= 0; ++pos_) {
    if (value < 10) {
      digits = std::min(digits * 10 + value, 99999);
    } else {
      whole = std::min(whole + std::max(digits, 1) * value, 99999);
      digits = 0;
    }
  }
  number.value = whole + digits;
  for (int rest = number.value; rest > 0 || number.digits == 0; rest /= 10) ++number.digits;
  return number;
}

// The letters directly behind a number, when they make it an ordinal.
template <class Unit>
bool DateCursor<Unit>::TakeOrdinalEnding() {
  WordText word;
  std::size_t end = pos_;
  for (; IsAsciiLetter(At(end)) && word.size < kLongestWord; ++end) word.Add(At(end));
  if (!IsOrdinalEnding(word)) return false;
  pos_ = end;
  return true;
}

}  // namespace lumr::date
