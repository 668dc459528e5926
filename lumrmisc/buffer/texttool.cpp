#include "lumrmisc/buffer/texttool.h"

#include <algorithm>
#include <string_view>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/characterform_internal.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/buffer/nesting_internal.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

template <class Unit>
using View = std::basic_string_view<Unit>;
template <class Unit>
using String = std::basic_string<Unit>;

// ---- Quoted and parenthesised parts ----

template <class Unit>
void Unescape(View<Unit> text, String<Unit>& token) {
  const FormOf<Unit> form;
  token.clear();
  std::size_t done = 0;  // everything before it is in the token
  std::size_t backslash = FindCharacter(text, '\\');
  while (backslash < text.size() - 1) {
    token.append(text, done, backslash - done);
    done = backslash + 1;
    backslash = FindCharacter(text, '\\', done + form.CharLength(text, done));
  }
  token.append(text, done);
}

// Whether a backslash behind the character at pos would become its second half.
bool TakesBackslash(const NarrowForm& form, std::string_view text, std::size_t pos) {
  return form.page.IsLead(text[pos]) && !form.page.IsPair(text, pos) && form.page.IsTrail('\\');
}
bool TakesBackslash(const WideForm&, std::u16string_view, std::size_t) {
  return false;
}

template <class Unit>
void AddQuoted(View<Unit> text, String<Unit>& out) {
  static constexpr AsciiSet kEscaped("\"\\");
  const FormOf<Unit> form;
  out += Unit('"');
  bool takesBackslash = false;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = form.CharLength(text, i);
    if (length == 1 && kEscaped.Holds(text[i])) {
      if (takesBackslash) out.back() = Unit('?');
      out += Unit('\\');
    }
    out.append(text, i, length);
    takesBackslash = TakesBackslash(form, text, i);
    i += length;
  }
  out += Unit('"');
}

template <class Unit>
int SplitAtParentheses(View<Unit> text, String<Unit>& outside, String<Unit>& inside) {
  outside.clear();
  inside.clear();
  NestingScanner<Unit> scanner(text, 0);
  std::size_t done = 0;
  bool found = false;
  for (;;) {
    const NestingMark mark = scanner.Next(Unit('('));
    String<Unit>& part = mark == NestingMark::kClose || scanner.InParentheses() ? inside : outside;
    if (mark == NestingMark::kOpen) {
      outside.append(text, done, scanner.Position() - done);
      if (found) inside += Unit(' ');
      found = true;
    } else {
      part.append(text, done, scanner.Position() - done);
    }
    if (mark == NestingMark::kEnd) return found;
    done = scanner.Position() + 1;
  }
}

// ---- Comma-separated values ----

template <class Unit>
int ReadCsvItem(View<Unit> text, int& pos, String<Unit>& item) {
  constexpr Unit kQuote('"');
  item.clear();
  if (text.empty() || pos < 0 || static_cast<std::size_t>(pos) > text.size()) return 0;
  std::size_t i = static_cast<std::size_t>(pos);
  if (i < text.size() && text[i] == kQuote) {
    for (;;) {
      const std::size_t quote = std::min(text.find(kQuote, i + 1), text.size());
      item.append(text, i + 1, quote - i - 1);
      i = std::min(quote + 1, text.size());
      if (i == text.size() || text[i] != kQuote) break;
      item += kQuote;
    }
  }
  const std::size_t comma = std::min(text.find(Unit(','), i), text.size());
  item.append(text, i, comma - i);
  pos = static_cast<int>(comma + 1);
  return 1;
}

template <class Unit>
void WriteCsvItem(View<Unit> item, String<Unit>& record) {
  static constexpr AsciiSet kQuotedFor(",\"\r\n");
  if (!record.empty()) record += Unit(',');
  const bool isPlain = !item.empty() && TrimmedText(item).size() == item.size() &&
                       FindCharacterOf(item, kQuotedFor) == item.npos;
  if (isPlain) {
    record += item;
    return;
  }
  record += Unit('"');
  for (const Unit c : item) {
    if (c == Unit('"')) record += c;
    record += c;
  }
  record += Unit('"');
}

// ---- Comparison ----

// Ten full-width digits in a row, in every code page that has them.
constexpr struct {
  unsigned codePage;
  unsigned zero;
} kWideDigits[] = {{932, 0x824F}, {936, 0xA3B0}, {949, 0xA3B0}, {950, 0xA2AF}};

// One text of a comparison and how far it has been read.
template <class Unit>
class NumberReader {
 public:
  explicit NumberReader(View<Unit> text) : text_(text) {
    if constexpr (sizeof(Unit) == 1) {
      for (const auto& row : kWideDigits) {
        if (row.codePage == form_.page.CodePage()) wideZero_ = row.zero;
      }
    }
  }

  bool IsAtEnd() const { return pos_ == text_.size(); }
  void Step() { pos_ += form_.CharLength(text_, pos_); }

  // The digit here, or -1.
  int Digit() const {
    if (IsAtEnd()) return -1;
    const unsigned code = Code();
    if (code - '0' < 10) return static_cast<int>(code - '0');
    return wideZero_ != 0 && code - wideZero_ < 10 ? static_cast<int>(code - wideZero_) : -1;
  }

  // What the character here compares by; a digit by "0", whichever it is.
  unsigned Rank() const {
    if (Digit() >= 0) return '0';
    if constexpr (sizeof(Unit) == 1) {
      return form_.page.ToLower(Code());
    } else {
      return UnitToLower(text_[pos_]);
    }
  }

  void SkipZeros() {
    while (Digit() == 0) Step();
  }

 private:
  unsigned Code() const {
    if constexpr (sizeof(Unit) == 1) {
      const unsigned byte = static_cast<unsigned char>(text_[pos_]);
      if (!form_.page.IsPair(text_, pos_)) return byte;
      return byte << 8 | static_cast<unsigned char>(text_[pos_ + 1]);
    } else {
      return text_[pos_];
    }
  }

  const FormOf<Unit> form_{};
  View<Unit> text_;
  std::size_t pos_ = 0;
  unsigned wideZero_ = sizeof(Unit) == 1 ? 0 : 0xFF10;
};

// The longer number is the larger one; among equally long ones the first difference tells.
template <class Unit>
int CompareNumbers(NumberReader<Unit>& a, NumberReader<Unit>& b) {
  a.SkipZeros();
  b.SkipZeros();
  int difference = 0;
  for (;; a.Step(), b.Step()) {
    const int digitA = a.Digit();
    const int digitB = b.Digit();
    if (digitA < 0 || digitB < 0) {
      return digitA >= 0 ? 1 : digitB >= 0 ? -1 : difference;
    }
    if (difference == 0) difference = digitA - digitB;
  }
}

int CompareExactly(std::string_view a, std::string_view b) {
  return CurrentMbcsPage().Compare(a, b);
}
int CompareExactly(std::u16string_view a, std::u16string_view b) {
  return CompareUnits(a, b);
}

template <class Unit>
int CompareWithNumbers(View<Unit> textA, View<Unit> textB) {
  NumberReader<Unit> a(textA);
  NumberReader<Unit> b(textB);
  while (!a.IsAtEnd() && !b.IsAtEnd()) {
    if (a.Digit() >= 0 && b.Digit() >= 0) {
      if (const int difference = CompareNumbers(a, b)) return difference;
      continue;
    }
    const unsigned rankA = a.Rank();
    const unsigned rankB = b.Rank();
    if (rankA != rankB) return rankA < rankB ? -1 : 1;
    a.Step();
    b.Step();
  }
  if (a.IsAtEnd() != b.IsAtEnd()) return a.IsAtEnd() ? -1 : 1;
  return CompareExactly(textA, textB);
}

}  // namespace

void GetQuotedToken(const char* text, int len, CStringA& token) {
  Unescape(CountedText(text, len), token);
}
void GetQuotedToken(const char16_t* text, int len, CStringW& token) {
  Unescape<char16_t>(EvenUnits(text, len), token);
}

void AddQuotedToken(const char* text, int len, CStringA& out) {
  AddQuoted(CountedText(text, len), out);
}
void AddQuotedToken(const char16_t* text, int len, CStringW& out) {
  AddQuoted<char16_t>(EvenUnits(text, len), out);
}

int GetParenthesisToken(const char* text, int len, CStringA& outside, CStringA& inside) {
  return SplitAtParentheses(CountedText(text, len), outside, inside);
}
int GetParenthesisToken(const char16_t* text, int len, CStringW& outside, CStringW& inside) {
  return SplitAtParentheses<char16_t>(EvenUnits(text, len), outside, inside);
}

int GetCsvItem(const char* text, int len, int& pos, CStringA& item) {
  return ReadCsvItem(CountedText(text, len), pos, item);
}
int GetCsvItem(const char16_t* text, int len, int& pos, CStringW& item) {
  return ReadCsvItem<char16_t>(EvenUnits(text, len), pos, item);
}

void AddCsvItem(const char* item, int len, CStringA& record) {
  WriteCsvItem(CountedText(item, len), record);
}
void AddCsvItem(const char16_t* item, int len, CStringW& record) {
  WriteCsvItem<char16_t>(EvenUnits(item, len), record);
}

int lstrcmp_num(const char* a, const char* b) {
  return CompareWithNumbers(CountedText(a), CountedText(b));
}
int lstrcmp_num(const char16_t* a, const char16_t* b) {
  return CompareWithNumbers<char16_t>(EvenUnits(a), EvenUnits(b));
}

int GetCharCount(const char* text, int len) {
  const std::string_view view = CountedText(text, len);
  const MbcsPage& page = CurrentMbcsPage();
  int count = 0;
  for (std::size_t i = 0; i < view.size(); i += page.CharLength(view, i)) ++count;
  return count;
}

int GetCharCount(const char16_t* text, int len) {
  const EvenUnits units(text, len);
  const std::u16string_view view = units;
  int count = 0;
  for (std::size_t i = 0; i < view.size(); ++i, ++count) {
    const bool isPair =
        (view[i] & 0xFC00) == 0xD800 && i + 1 < view.size() && (view[i + 1] & 0xFC00) == 0xDC00;
    if (isPair) ++i;
  }
  return count;
}

}  // namespace lumr
