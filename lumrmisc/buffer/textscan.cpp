#include "lumrmisc/buffer/textscan.h"

#include <algorithm>
#include <string_view>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/buffer/textfinder.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

// Both forms see their text as bytes; a unit is read at its address.

struct NarrowText {
  static constexpr TextForm kForm = TextForm::kCharacters;
  using Unit = char;
  const MbcsPage& page = CurrentMbcsPage();

  static std::string_view View(const char* text, int length) { return CountedText(text, length); }
  static char UnitAt(std::string_view text, std::size_t pos) { return text[pos]; }
  static bool IsSpace(char unit) { return IsAsciiSpace(unit); }
  bool IsPair(std::string_view text, std::size_t pos) const { return page.IsPair(text, pos); }
};

struct WideText {
  static constexpr TextForm kForm = TextForm::kUnits;
  using Unit = char16_t;

  static std::string_view View(const char16_t* text, int length) {
    return CountedUnits(text, length);
  }
  static char16_t UnitAt(std::string_view text, std::size_t pos) {
    return LoadUnit(text.data() + 2 * pos);
  }
  static bool IsSpace(char16_t unit) { return IsUnitSpace(unit); }
  bool IsPair(std::string_view, std::size_t) const { return false; }
};

template <class Unit>
bool IsPlainAscii(Unit unit) {
  return (unit >= 0x20 && unit <= 0x7E) || (unit >= 0x09 && unit <= 0x0D);
}

template <class Text>
int HasNotAscii(const typename Text::Unit* text, int length) {
  const std::string_view bytes = Text::View(text, length);
  for (std::size_t i = 0; i < bytes.size() / sizeof(typename Text::Unit); ++i) {
    if (!IsPlainAscii(Text::UnitAt(bytes, i))) return 1;
  }
  return 0;
}

// Stops at a character that is (or, with space false, is not) white space.
template <class Text>
int SkipUntil(const typename Text::Unit* text, int length, bool space, int& pos) {
  if (text == nullptr || pos < 0) return 0;
  const Text form;
  const std::string_view bytes = Text::View(text, length);
  const std::size_t count = bytes.size() / sizeof(typename Text::Unit);
  std::size_t i = static_cast<std::size_t>(pos);
  if (i > count) return 0;
  while (i < count) {
    if (form.IsPair(bytes, i)) {
      i += 2;
      continue;
    }
    if (Text::IsSpace(Text::UnitAt(bytes, i)) == space) break;
    ++i;
  }
  pos = static_cast<int>(i);
  return i < count;
}

// The first or last place of word in text. As the search of the C library would, an empty word
// without a length is found at either end of a text without one, as long as case counts.
template <class Text>
const typename Text::Unit* FindWord(const typename Text::Unit* text, int textLength,
                                    const typename Text::Unit* word, int wordLength, int ignoreCase,
                                    bool last) {
  if (text == nullptr || word == nullptr) return nullptr;
  const std::string_view textBytes = Text::View(text, textLength);
  const std::string_view wordBytes = Text::View(word, wordLength);
  constexpr std::size_t kUnit = sizeof(typename Text::Unit);
  if (wordBytes.empty() && textLength < 0 && wordLength < 0 && ignoreCase == 0) {
    return last ? text + textBytes.size() / kUnit : text;
  }
  TextFinder finder(Text::kForm, wordBytes, ignoreCase != 0);
  const std::size_t pos = last ? finder.Last(textBytes) : finder.First(textBytes);
  return pos == TextFinder::npos ? nullptr : text + pos / kUnit;
}

template <class Text>
int BeginsWith(const typename Text::Unit* text, int textLength, const typename Text::Unit* prefix,
               int prefixLength, int ignoreCase) {
  const std::string_view prefixBytes = Text::View(prefix, prefixLength);
  if (prefixBytes.empty()) return 1;
  const std::string_view textBytes = Text::View(text, textLength);
  if (textBytes.size() < prefixBytes.size()) return 0;
  return EqualText(Text::kForm, textBytes.substr(0, prefixBytes.size()), prefixBytes,
                   ignoreCase != 0);
}

template <class Text, class Array>
int LookUp(const Array& array, std::string_view text, int ignoreCase) {
  constexpr std::size_t kUnit = sizeof(typename Text::Unit);
  const auto found = std::find_if(array.begin(), array.end(), [&](const auto& element) {
    const std::string_view bytes(reinterpret_cast<const char*>(element.data()),
                                 element.size() * kUnit);
    return EqualText(Text::kForm, bytes, text, ignoreCase != 0);
  });
  return found == array.end() ? -1 : static_cast<int>(found - array.begin());
}

}  // namespace

int IsTLead(const char* text, int pos, int len) {
  if (text == nullptr || pos < 0 || (len >= 0 && pos >= len - 1)) return 0;
  const MbcsPage& page = CurrentMbcsPage();
  return page.IsLead(text[pos]) && page.IsTrail(text[pos + 1]);
}

int IsNotAsciiText(const char* text, int len) {
  return HasNotAscii<NarrowText>(text, len);
}
int IsNotAsciiText(const char16_t* text, int len) {
  return HasNotAscii<WideText>(text, len);
}

int SkipSpace(const char* text, int len, int& pos) {
  return SkipUntil<NarrowText>(text, len, false, pos);
}
int SkipSpace(const char16_t* text, int len, int& pos) {
  return SkipUntil<WideText>(text, len, false, pos);
}
int SkipNotSpace(const char* text, int len, int& pos) {
  return SkipUntil<NarrowText>(text, len, true, pos);
}
int SkipNotSpace(const char16_t* text, int len, int& pos) {
  return SkipUntil<WideText>(text, len, true, pos);
}

int iswalnumH(char16_t c) {
  return IsAsciiLetter(c) || IsAsciiDigit(c);
}

int iswalnumZ(char16_t c) {
  constexpr char16_t kDistance = u'Ａ' - u'A';
  return c >= u'０' && c <= u'ｚ' && iswalnumH(static_cast<char16_t>(c - kDistance));
}

int iswalnumHZ(char16_t c) {
  return iswalnumH(c) || iswalnumZ(c);
}

const char* mbsnnstr(const char* text, int textLen, const char* word, int wordLen, int ignoreCase) {
  return FindWord<NarrowText>(text, textLen, word, wordLen, ignoreCase, false);
}
const char* mbsrnnstr(const char* text, int textLen, const char* word, int wordLen,
                      int ignoreCase) {
  return FindWord<NarrowText>(text, textLen, word, wordLen, ignoreCase, true);
}
const char16_t* wcsnnstr(const char16_t* text, int textLen, const char16_t* word, int wordLen,
                         int ignoreCase) {
  return FindWord<WideText>(text, textLen, word, wordLen, ignoreCase, false);
}
const char16_t* wcsrnnstr(const char16_t* text, int textLen, const char16_t* word, int wordLen,
                          int ignoreCase) {
  return FindWord<WideText>(text, textLen, word, wordLen, ignoreCase, true);
}

int ismbsnnstart(const char* text, int textLen, const char* prefix, int prefixLen, int ignoreCase) {
  return BeginsWith<NarrowText>(text, textLen, prefix, prefixLen, ignoreCase);
}
int iswcsnnstart(const char16_t* text, int textLen, const char16_t* prefix, int prefixLen,
                 int ignoreCase) {
  return BeginsWith<WideText>(text, textLen, prefix, prefixLen, ignoreCase);
}

int LookupStringArray(const CStringArray& array, const char* text, int ignoreCase) {
  return LookUp<NarrowText>(array, CountedText(text), ignoreCase);
}
int LookupStringArray(const CArray<CStringW>& array, const char16_t* text, int ignoreCase) {
  return LookUp<WideText>(array, CountedUnits(text), ignoreCase);
}

}  // namespace lumr
