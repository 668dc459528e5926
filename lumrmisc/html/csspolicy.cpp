#include "lumrmisc/html/csspolicy_internal.h"

#include <algorithm>
#include <array>

#include "lumrmisc/html/htmltokenizer_internal.h"
#include "lumrmisc/html/nametable_internal.h"

namespace lumr {
namespace {

enum PropertyRule : unsigned {
  kPlainValue = 0,
  kFontNames = 1,     // quoted strings are names of fonts
  kNotNegative = 2,   // a negative length would lay the element over others or hide it
  kDropsAddress = 4,  // the value counts without its url()
};

struct PropertyRow {
  std::u16string_view name;
  unsigned rule = kPlainValue;
};
// Nothing here takes an element out of the flow, loads anything, or makes text of its own.
constexpr auto kProperties = std::to_array<PropertyRow>({
    {u"background", kDropsAddress},
    {u"background-color"},
    {u"border"},
    {u"border-bottom"},
    {u"border-bottom-color"},
    {u"border-bottom-left-radius"},
    {u"border-bottom-right-radius"},
    {u"border-bottom-style"},
    {u"border-bottom-width"},
    {u"border-collapse"},
    {u"border-color"},
    {u"border-left"},
    {u"border-left-color"},
    {u"border-left-style"},
    {u"border-left-width"},
    {u"border-radius"},
    {u"border-right"},
    {u"border-right-color"},
    {u"border-right-style"},
    {u"border-right-width"},
    {u"border-spacing"},
    {u"border-style"},
    {u"border-top"},
    {u"border-top-color"},
    {u"border-top-left-radius"},
    {u"border-top-right-radius"},
    {u"border-top-style"},
    {u"border-top-width"},
    {u"border-width"},
    {u"box-sizing"},
    {u"caption-side"},
    {u"clear"},
    {u"color"},
    {u"direction"},
    {u"display"},
    {u"empty-cells"},
    {u"float"},
    {u"font", kFontNames},
    {u"font-family", kFontNames},
    {u"font-size"},
    {u"font-style"},
    {u"font-variant"},
    {u"font-weight"},
    {u"height"},
    {u"letter-spacing", kNotNegative},
    {u"line-break"},
    {u"line-height"},
    {u"list-style", kDropsAddress},
    {u"list-style-position"},
    {u"list-style-type"},
    {u"margin", kNotNegative},
    {u"margin-bottom", kNotNegative},
    {u"margin-left", kNotNegative},
    {u"margin-right", kNotNegative},
    {u"margin-top", kNotNegative},
    {u"max-height"},
    {u"max-width"},
    {u"min-height"},
    {u"min-width"},
    {u"opacity"},
    {u"outline"},
    {u"outline-color"},
    {u"outline-style"},
    {u"outline-width"},
    {u"overflow"},
    {u"overflow-wrap"},
    {u"padding"},
    {u"padding-bottom"},
    {u"padding-left"},
    {u"padding-right"},
    {u"padding-top"},
    {u"page-break-after"},
    {u"page-break-before"},
    {u"page-break-inside"},
    {u"ruby-align"},
    {u"ruby-position"},
    {u"table-layout"},
    {u"text-align"},
    {u"text-align-last"},
    {u"text-decoration"},
    {u"text-decoration-color"},
    {u"text-decoration-line"},
    {u"text-decoration-style"},
    {u"text-emphasis"},
    {u"text-indent", kNotNegative},
    {u"text-justify"},
    {u"text-orientation"},
    {u"text-overflow"},
    {u"text-transform"},
    {u"unicode-bidi"},
    {u"vertical-align"},
    {u"visibility"},
    {u"white-space"},
    {u"width"},
    {u"word-break"},
    {u"word-spacing", kNotNegative},
    {u"word-wrap"},
    {u"writing-mode"},
});
constexpr NameTable kPropertyTable(kProperties);

constexpr auto kUnits = std::to_array<NameRow>({{u"ch"},
                                                {u"cm"},
                                                {u"deg"},
                                                {u"em"},
                                                {u"ex"},
                                                {u"in"},
                                                {u"mm"},
                                                {u"pc"},
                                                {u"pt"},
                                                {u"px"},
                                                {u"q"},
                                                {u"rem"},
                                                {u"vh"},
                                                {u"vw"},
                                                {u"vmin"},
                                                {u"vmax"},
                                                {u"grad"},
                                                {u"turn"}});
constexpr NameTable kUnitTable(kUnits);
constexpr auto kColorFunctions = std::to_array<NameRow>({{u"rgb"}, {u"rgba"}, {u"hsl"}, {u"hsla"}});
constexpr NameTable kColorFunctionTable(kColorFunctions);

constexpr std::size_t kLongestWord = 64;
constexpr std::size_t kLongestNumber = 12;

bool IsNameUnit(char16_t unit) {
  return IsAsciiLetter(unit) || IsAsciiDigit(unit) || unit == u'-' || unit == u'_';
}

// Letters of font names that are not quoted: also those of other scripts.
bool IsFontUnit(char16_t unit) {
  return IsNameUnit(unit) ||
         (unit >= 0x00C0 && unit < 0xD800 && !IsHtmlSpace(unit) &&
          !(unit >= 0x2000 && unit < 0x2070)) ||
         (unit >= 0xF900 && unit < 0xFE00) || (unit > 0xFF00 && unit < 0xFFF0);
}

// Reads one declaration value and writes it back, or finds that it may not stand.
class ValueReader {
 public:
  ValueReader(std::u16string_view text, unsigned rule, CStringW& out)
      : text_(text), rule_(rule), out_(out), begin_(out.size()) {}

  // False when the value is to be left out; out is then as it was.
  bool Read() {
    while (pos_ < text_.size()) {
      if (!ReadPart()) {
        out_.resize(begin_);
        return false;
      }
    }
    const bool isWhole = parts_ != 0 && !isOpen_;
    if (!isWhole) out_.resize(begin_);
    return isWhole;
  }
  bool LeftOutAddress() const { return leftOutAddress_; }

 private:
  // What stands before the next part: a blank, but not at the start, behind a parenthesis or
  // before a comma.
  void Separate() {
    if (out_.size() > begin_ && !glued_) out_ += u' ';
    glued_ = false;
    ++parts_;
  }

  bool ReadPart() {
    const char16_t unit = text_[pos_];
    if (IsMarkupSpace(unit)) {
      ++pos_;
      return true;
    }
    if (IsAsciiDigit(unit) || unit == u'+' || unit == u'.' ||
        (unit == u'-' && pos_ + 1 < text_.size() &&
         (IsAsciiDigit(text_[pos_ + 1]) || text_[pos_ + 1] == u'.'))) {
      return ReadNumber();
    }
    if (unit == u'#') return ReadHash();
    if (unit == u',' || unit == u'/') return ReadSign(unit);
    if (unit == u'!') return ReadImportant();
    if (unit == u')') return CloseFunction();
    if (unit == u'"' || unit == u'\'') return ReadFontName(unit);
    return IsFontUnit(unit) && ReadWord();
  }

  bool ReadNumber() {
    std::size_t end = pos_;
    if (text_[end] == u'+' || text_[end] == u'-') ++end;
    const std::size_t digits = end;
    while (end < text_.size() && (IsAsciiDigit(text_[end]) || text_[end] == u'.')) ++end;
    const std::u16string_view number = text_.substr(pos_, end - pos_);
    const auto points = std::count(number.begin(), number.end(), u'.');
    if (end - digits == static_cast<std::size_t>(points) || points > 1 || number.back() == u'.' ||
        number.size() > kLongestNumber) {
      return false;
    }
    if (number.front() == u'-' && (rule_ & kNotNegative) != 0) return false;
    const std::size_t unitBegin = end;
    if (end < text_.size() && text_[end] == u'%') {
      ++end;
    } else {
      while (end < text_.size() && IsNameUnit(text_[end])) ++end;
      if (end > unitBegin && kUnitTable.Find(text_.substr(unitBegin, end - unitBegin)) == nullptr) {
        return false;
      }
    }
    Separate();
    AppendLower(end);
    return true;
  }

  bool ReadHash() {
    constexpr std::size_t kLongestColor = 9;
    std::size_t end = pos_ + 1;
    while (end < text_.size() && IsNameUnit(text_[end])) ++end;
    if (end == pos_ + 1 || end - pos_ > kLongestColor) return false;
    Separate();
    AppendLower(end);
    return true;
  }

  bool ReadSign(char16_t sign) {
    if (out_.size() == begin_) return false;
    if (sign == u'/') out_ += u' ';
    out_ += sign;
    ++pos_;
    return true;
  }

  bool ReadImportant() {
    std::size_t begin = pos_ + 1;
    while (begin < text_.size() && IsMarkupSpace(text_[begin])) ++begin;
    std::size_t end = begin;
    while (end < text_.size() && IsNameUnit(text_[end])) ++end;
    while (end < text_.size() && IsMarkupSpace(text_[end])) ++end;
    std::size_t wordEnd = end;
    while (wordEnd > begin && IsMarkupSpace(text_[wordEnd - 1])) --wordEnd;
    if (parts_ == 0 || isOpen_ || end != text_.size() ||
        !EqualsNoCase(text_.substr(begin, wordEnd - begin), "important")) {
      return false;
    }
    out_ += u" !important";
    pos_ = end;
    return true;
  }

  bool CloseFunction() {
    if (!isOpen_) return false;
    isOpen_ = false;
    glued_ = false;
    out_ += u')';
    ++pos_;
    return true;
  }

  bool ReadFontName(char16_t quote) {
    const std::size_t end = text_.find(quote, pos_ + 1);
    if ((rule_ & kFontNames) == 0 || end == std::u16string_view::npos) return false;
    const std::u16string_view name = text_.substr(pos_ + 1, end - pos_ - 1);
    const auto isAllowed = [](char16_t unit) { return IsFontUnit(unit) || unit == u' '; };
    if (name.size() > kLongestWord || !std::all_of(name.begin(), name.end(), isAllowed))
      return false;
    Separate();
    (((out_ += u'\'') += name) += u'\'');
    pos_ = end + 1;
    return true;
  }

  bool ReadWord() {
    std::size_t end = pos_;
    bool isAscii = true;
    for (; end < text_.size() && IsFontUnit(text_[end]); ++end) {
      isAscii = isAscii && text_[end] < 0x80;
    }
    const std::u16string_view word = text_.substr(pos_, end - pos_);
    if (end < text_.size() && text_[end] == u'(') return ReadFunction(word);
    const bool isFont = (rule_ & kFontNames) != 0;
    if (word.size() > kLongestWord || (!isAscii && !isFont) || word.starts_with(u"--"))
      return false;
    Separate();
    if (isFont) {
      out_ += word;
      pos_ = end;
    } else {
      AppendLower(end);
    }
    return true;
  }

  bool ReadFunction(std::u16string_view name) {
    if (EqualsNoCase(name, "url")) return SkipAddress(name.size() + 1);
    if (isOpen_ || kColorFunctionTable.Find(name) == nullptr) return false;
    Separate();
    AppendLower(pos_ + name.size() + 1);
    isOpen_ = true;
    glued_ = true;
    return true;
  }

  // Of "#fff url(...) no-repeat" the colour is worth keeping.
  bool SkipAddress(std::size_t opener) {
    if ((rule_ & kDropsAddress) == 0 || isOpen_) return false;
    std::size_t pos = pos_ + opener;
    while (pos < text_.size() && IsMarkupSpace(text_[pos])) ++pos;
    if (pos < text_.size() && (text_[pos] == u'"' || text_[pos] == u'\'')) {
      pos = text_.find(text_[pos], pos + 1);
      if (pos == std::u16string_view::npos) return false;
    }
    const std::size_t end = text_.find(u')', pos);
    if (end == std::u16string_view::npos) return false;
    leftOutAddress_ = true;
    pos_ = end + 1;
    return true;
  }

  void AppendLower(std::size_t end) {
    for (; pos_ < end; ++pos_) out_ += UnitAsciiLower(text_[pos_]);
  }

  std::u16string_view text_;
  unsigned rule_;
  CStringW& out_;
  std::size_t begin_;
  std::size_t pos_ = 0;
  std::size_t parts_ = 0;
  bool isOpen_ = false;  // inside the parentheses of a colour
  bool glued_ = false;   // the next part follows without a blank
  bool leftOutAddress_ = false;
};

std::size_t SkipString(std::u16string_view text, std::size_t pos) {
  const char16_t quote = text[pos++];
  for (; pos < text.size() && text[pos] != quote; ++pos) {
    if (text[pos] == u'\n') return pos;  // a string that its line broke off
    if (text[pos] == u'\\') ++pos;
  }
  return std::min(pos + 1, text.size());
}

// The end of the declaration at pos: a semicolon outside strings and parentheses.
std::size_t FindDeclarationEnd(std::u16string_view text, std::size_t pos) {
  std::size_t open = 0;
  while (pos < text.size()) {
    const char16_t unit = text[pos];
    if (unit == u'"' || unit == u'\'') {
      pos = SkipString(text, pos);
      continue;
    }
    if (unit == u'\\') {
      pos = std::min(pos + 2, text.size());
      continue;
    }
    if (unit == u'(' || unit == u'[' || unit == u'{') ++open;
    if ((unit == u')' || unit == u']' || unit == u'}') && open > 0) --open;
    if (unit == u';' && open == 0) return pos;
    ++pos;
  }
  return pos;
}

// The text without its comments; a comment stands for a blank. A view of scratch where there are
// any.
std::u16string_view WithoutComments(std::u16string_view text, CStringW& scratch) {
  if (text.find(u"/*") == std::u16string_view::npos) return text;
  scratch.clear();
  for (std::size_t pos = 0; pos < text.size();) {
    if (text.substr(pos, 2) == u"/*") {
      const std::size_t end = text.find(u"*/", pos + 2);
      scratch += u' ';
      pos = end == std::u16string_view::npos ? text.size() : end + 2;
    } else if (text[pos] == u'"' || text[pos] == u'\'') {
      const std::size_t end = SkipString(text, pos);
      scratch.append(text, pos, end - pos);
      pos = end;
    } else {
      scratch += text[pos++];
    }
  }
  return scratch;
}

// Appends one declaration; gives whether it was taken whole.
bool AppendDeclaration(std::u16string_view declaration, bool isFirst, CStringW& out) {
  const std::size_t colon = declaration.find(u':');
  if (colon == std::u16string_view::npos) return false;
  const PropertyRow* const row = kPropertyTable.Find(TrimMarkupSpace(declaration.substr(0, colon)));
  if (row == nullptr) return false;
  const std::size_t begin = out.size();
  if (!isFirst) out += u"; ";
  out += row->name;
  out += u": ";
  ValueReader value(declaration.substr(colon + 1), row->rule, out);
  if (!value.Read()) {
    out.resize(begin);
    return false;
  }
  return !value.LeftOutAddress();
}

}  // namespace

std::size_t AppendSafeStyle(std::u16string_view style, CStringW& out) {
  CStringW scratch;
  const std::u16string_view text = WithoutComments(style, scratch);
  const std::size_t begin = out.size();
  std::size_t leftOut = 0;
  for (std::size_t pos = 0; pos < text.size();) {
    const std::size_t end = FindDeclarationEnd(text, pos);
    const std::u16string_view declaration = TrimMarkupSpace(text.substr(pos, end - pos));
    if (!declaration.empty() && !AppendDeclaration(declaration, out.size() == begin, out))
      ++leftOut;
    pos = end + 1;
  }
  return leftOut;
}

}  // namespace lumr
