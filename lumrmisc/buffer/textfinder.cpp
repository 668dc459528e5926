// Candidates are found by comparing two bytes (or units) of the word at their places in the
// text, 32 places at a time, then compared in full. A text in which the candidates fail late
// again and again is searched by the automaton of Knuth, Morris and Pratt instead, which reads
// every character once; so no text takes more than linear time.
#include "lumrmisc/buffer/textfinder.h"

#include <cstring>
#include <utility>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/characterborders_internal.h"
#include "lumrmisc/buffer/textfinder_avx512_internal.h"
#include "lumrmisc/platform/cpu.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

constexpr std::size_t npos = TextFinder::npos;

// ---- What the forms differ in ----

// One character as it is compared, and its length in bytes.
struct Symbol {
  std::uint32_t code;
  std::size_t length;
};

// A byte or unit in lower and in upper case: no code page and no unit of UTF-16 has a third form
// with the same lower case. The same twice where case counts or there is none.
using Forms = std::pair<char16_t, char16_t>;

Forms BothForms(unsigned lower, unsigned upper) {
  return {static_cast<char16_t>(lower), static_cast<char16_t>(upper)};
}

struct NoBorders {
  bool IsBorder(std::size_t) const { return true; }
};

class ByteReader {
 public:
  using Lane = unsigned char;
  explicit ByteReader(const SearchWord& word) : fold_(word.ignoreCase) {}

  Symbol At(std::string_view text, std::size_t pos) const {
    return {Code(fold_ ? AsciiLower(text[pos]) : text[pos]), 1};
  }
  NoBorders Borders(std::string_view) const { return {}; }
  bool EndsInLead(std::string_view) const { return false; }

  std::size_t FirstAnchor(std::string_view) const { return 0; }
  Forms FormsAt(std::string_view word, std::size_t offset) const {
    const char byte = word[offset];
    if (!fold_) return BothForms(Code(byte), Code(byte));
    return BothForms(Code(AsciiLower(byte)), Code(AsciiUpper(byte)));
  }

 private:
  static unsigned Code(char byte) { return static_cast<unsigned char>(byte); }
  bool fold_;
};

class CharacterReader {
 public:
  using Lane = unsigned char;
  explicit CharacterReader(const SearchWord& word) : fold_(word.ignoreCase), page_(*word.page) {}

  Symbol At(std::string_view text, std::size_t pos) const {
    const auto first = static_cast<unsigned char>(text[pos]);
    if (!page_.IsPair(text, pos)) return {fold_ ? page_.ToLowerByte(first) : first, 1};
    const unsigned pair = first * 256u + static_cast<unsigned char>(text[pos + 1]);
    return {fold_ ? page_.ToLower(pair) : pair, 2};
  }
  CharacterBorders Borders(std::string_view text) const { return {page_, text}; }
  bool EndsInLead(std::string_view word) const {
    return page_.IsLead(word.back()) && !page_.IsTrailInContext(word, word.size() - 1);
  }

  // Trail bytes tell characters apart better than lead bytes: much of Japanese text is hiragana,
  // which have one lead byte.
  std::size_t FirstAnchor(std::string_view word) const {
    return word.size() > 2 && page_.IsPair(word, 0) ? 1 : 0;
  }
  Forms FormsAt(std::string_view word, std::size_t offset) const {
    const unsigned byte = static_cast<unsigned char>(word[offset]);
    if (!fold_) return BothForms(byte, byte);
    const bool second = page_.IsTrailInContext(word, offset);
    const unsigned lower = At(word, second ? offset - 1 : offset).code;
    const unsigned upper = page_.ToUpper(lower);
    if (second || lower < 0x100) return BothForms(lower & 0xFF, upper & 0xFF);
    return BothForms(lower >> 8, upper >> 8);
  }

 private:
  bool fold_;
  const MbcsPage& page_;
};

class UnitReader {
 public:
  using Lane = char16_t;
  explicit UnitReader(const SearchWord& word) : fold_(word.ignoreCase) {}

  Symbol At(std::string_view text, std::size_t pos) const {
    const char16_t unit = LoadUnit(text.data() + pos);
    return {fold_ ? UnitToLower(unit) : unit, 2};
  }
  NoBorders Borders(std::string_view) const { return {}; }
  bool EndsInLead(std::string_view) const { return false; }

  std::size_t FirstAnchor(std::string_view) const { return 0; }
  Forms FormsAt(std::string_view word, std::size_t offset) const {
    const char16_t unit = LoadUnit(word.data() + offset);
    if (!fold_) return BothForms(unit, unit);
    const char16_t lower = UnitToLower(unit);
    return BothForms(lower, UnitToUpper(lower));
  }

 private:
  bool fold_;
};

// ---- Candidates ----

constexpr std::size_t kBlock = 32;

// The anchors as compilers like them to find the vectors in it: the same comparison at every
// place of a block, no way out in between.
template <class Lane, bool kTwoForms>
class AnchorPair {
 public:
  static constexpr std::size_t kStep = sizeof(Lane);

  AnchorPair(const char* text, const SearchWord::Anchor (&anchors)[2])
      : firstText_(text + anchors[0].offset),
        secondText_(text + anchors[1].offset),
        first_{static_cast<Lane>(anchors[0].lower), static_cast<Lane>(anchors[0].upper)},
        second_{static_cast<Lane>(anchors[1].lower), static_cast<Lane>(anchors[1].upper)} {}

  bool At(std::size_t pos) const {
    return static_cast<bool>(Fits(firstText_ + pos, first_) & Fits(secondText_ + pos, second_));
  }
  // The first place from pos to last by vectors; one behind last where there is none.
  std::size_t NextByVectors(std::size_t pos, std::size_t last) const {
    const TextAnchor anchors[] = {{firstText_, first_[0], first_[1]},
                                  {secondText_, second_[0], second_[1]}};
    return kStep == 1 ? NextBytesAvx512(anchors, pos, last) : NextUnitsAvx512(anchors, pos, last);
  }
  bool InBlock(std::size_t pos) const {
    Lane any = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
      any = static_cast<Lane>(any | (At(pos + i * kStep) ? kAllBits : Lane(0)));
    }
    return any != 0;
  }

 private:
  static constexpr Lane kAllBits = static_cast<Lane>(~Lane(0));

  static unsigned Fits(const char* place, const Lane (&forms)[2]) {
    Lane lane;
    std::memcpy(&lane, place, sizeof lane);
    const unsigned either = lane == forms[0];
    if constexpr (!kTwoForms) return either;
    return either | static_cast<unsigned>(lane == forms[1]);
  }

  const char* firstText_;
  const char* secondText_;
  Lane first_[2];
  Lane second_[2];
};

// The first place from pos to last, or npos.
template <class Anchors>
std::size_t NextPlace(const Anchors& anchors, std::size_t pos, std::size_t last) {
  constexpr std::size_t kStep = Anchors::kStep;
  if (Cpu().avx512) {
    pos = anchors.NextByVectors(pos, last);
    return pos <= last ? pos : npos;
  }
  while (pos + (kBlock - 1) * kStep <= last && !anchors.InBlock(pos)) pos += kBlock * kStep;
  while (pos <= last && !anchors.At(pos)) pos += kStep;
  return pos <= last ? pos : npos;
}

// The last of the first count places, or npos.
template <class Anchors>
std::size_t PreviousPlace(const Anchors& anchors, std::size_t count) {
  constexpr std::size_t kStep = Anchors::kStep;
  while (count >= kBlock && !anchors.InBlock((count - kBlock) * kStep)) count -= kBlock;
  while (count > 0 && !anchors.At((count - 1) * kStep)) --count;
  return count > 0 ? (count - 1) * kStep : npos;
}

template <class Lane, class Function>
std::size_t WithAnchors(const SearchWord& word, const char* text, Function function) {
  if (word.ignoreCase) return function(AnchorPair<Lane, true>(text, word.anchors));
  return function(AnchorPair<Lane, false>(text, word.anchors));
}

template <class Reader>
void SetAnchors(const Reader& reader, SearchWord& word) {
  const std::size_t offsets[] = {reader.FirstAnchor(word.bytes),
                                 word.bytes.size() - sizeof(typename Reader::Lane)};
  for (int i = 0; i < 2; ++i) {
    const Forms forms = reader.FormsAt(word.bytes, offsets[i]);
    word.anchors[i] = {offsets[i], forms.first, forms.second};
  }
}

// How many bytes at place agree with the word's first bytes.
template <class Reader>
std::size_t MatchedBytes(const Reader& reader, const SearchWord& word, const char* place) {
  const std::string_view window(place, word.bytes.size());
  std::size_t matched = 0;
  if (!word.ignoreCase) {
    while (matched < window.size() && window[matched] == word.bytes[matched]) ++matched;
    return matched;
  }
  while (matched < window.size()) {
    const Symbol symbol = reader.At(window, matched);
    if (symbol.code != reader.At(word.bytes, matched).code) break;
    matched += symbol.length;
  }
  return matched;
}

// ---- The automaton ----

template <class Reader>
void MakeAutomaton(const Reader& reader, SearchWord& word) {
  for (std::size_t pos = 0; pos < word.bytes.size();) {
    const Symbol symbol = reader.At(word.bytes, pos);
    word.symbols.push_back(symbol.code);
    pos += symbol.length;
  }
  word.fallback.assign(word.symbols.size() + 1, 0);
  std::uint32_t length = 0;
  for (std::size_t i = 1; i < word.symbols.size(); ++i) {
    while (length > 0 && word.symbols[i] != word.symbols[length]) length = word.fallback[length];
    if (word.symbols[i] == word.symbols[length]) ++length;
    word.fallback[i + 1] = length;
  }
}

// The first match, or with last the last one, by the automaton.
template <class Reader>
std::size_t RunAutomaton(const Reader& reader, SearchWord& word, std::string_view text, bool last) {
  if (word.symbols.empty()) MakeAutomaton(reader, word);
  // The comparison of a word that ends in a lead byte ends within a character of the text.
  const bool endsInLead = reader.EndsInLead(word.bytes);
  std::size_t found = npos;
  std::size_t state = 0;
  for (std::size_t pos = 0; pos < text.size();) {
    const Symbol symbol = reader.At(text, pos);
    while (true) {
      const bool final = state + 1 == word.symbols.size();
      const bool cut = final && endsInLead && text[pos] == word.bytes.back();
      if (cut || symbol.code == word.symbols[state]) {
        if (!final) {
          ++state;
          break;
        }
        found = pos + (endsInLead ? 1 : symbol.length) - word.bytes.size();
        if (!last) return found;
      }
      if (state == 0) break;
      state = word.fallback[state];
    }
    pos += symbol.length;
  }
  return found;
}

// ---- The search ----

// How many bytes may have been compared in vain before the automaton takes over. Prose stays far
// below; texts that repeat themselves would pass any multiple of their length.
std::size_t Patience(std::size_t searched) {
  return 1024 + 8 * searched;
}

template <class Reader>
std::size_t FindFirst(const Reader& reader, SearchWord& word, std::string_view text) {
  using Lane = typename Reader::Lane;
  const std::size_t lastPlace = text.size() - word.bytes.size();
  auto borders = reader.Borders(text);
  std::size_t compared = 0;
  for (std::size_t pos = 0;; pos += sizeof(Lane)) {
    pos = WithAnchors<Lane>(
        word, text.data(), [&](const auto& anchors) { return NextPlace(anchors, pos, lastPlace); });
    if (pos == npos) return npos;
    const std::size_t matched = MatchedBytes(reader, word, text.data() + pos);
    if (matched == word.bytes.size() && borders.IsBorder(pos)) return pos;
    compared += matched;
    if (compared <= Patience(pos)) continue;
    const std::size_t from = borders.IsBorder(pos) ? pos : pos + 1;
    const std::size_t found = RunAutomaton(reader, word, text.substr(from), false);
    return found == npos ? npos : from + found;
  }
}

template <class Reader>
std::size_t FindLast(const Reader& reader, SearchWord& word, std::string_view text) {
  using Lane = typename Reader::Lane;
  const std::size_t lastPlace = text.size() - word.bytes.size();
  auto borders = reader.Borders(text);
  std::size_t compared = 0;
  std::size_t places = lastPlace / sizeof(Lane) + 1;
  while (true) {
    const std::size_t pos = WithAnchors<Lane>(
        word, text.data(), [&](const auto& anchors) { return PreviousPlace(anchors, places); });
    if (pos == npos) return npos;
    const std::size_t matched = MatchedBytes(reader, word, text.data() + pos);
    if (matched == word.bytes.size() && borders.IsBorder(pos)) return pos;
    compared += matched;
    if (compared > Patience(lastPlace - pos)) {
      return RunAutomaton(reader, word, text.substr(0, pos + word.bytes.size()), true);
    }
    places = pos / sizeof(Lane);
  }
}

template <class Function>
auto WithReader(TextForm form, const SearchWord& word, Function function) {
  switch (form) {
    case TextForm::kCharacters:
      return function(CharacterReader(word));
    case TextForm::kUnits:
      return function(UnitReader(word));
    default:
      return function(ByteReader(word));
  }
}

std::string_view WholeUnits(TextForm form, std::string_view text) {
  return form == TextForm::kUnits ? text.substr(0, text.size() / 2 * 2) : text;
}

}  // namespace

TextFinder::TextFinder(TextForm form, std::string_view word, bool ignoreCase) : form_(form) {
  word_.bytes = WholeUnits(form, word);
  word_.ignoreCase = ignoreCase;
  if (form == TextForm::kCharacters) word_.page = &CurrentMbcsPage();
  if (word_.bytes.empty()) return;
  WithReader(form, word_, [&](const auto& reader) { SetAnchors(reader, word_); });
}

std::size_t TextFinder::First(std::string_view text) {
  text = WholeUnits(form_, text);
  if (word_.bytes.empty() || text.size() < word_.bytes.size()) return npos;
  return WithReader(form_, word_,
                    [&](const auto& reader) { return FindFirst(reader, word_, text); });
}

std::size_t TextFinder::Last(std::string_view text) {
  text = WholeUnits(form_, text);
  if (word_.bytes.empty() || text.size() < word_.bytes.size()) return npos;
  return WithReader(form_, word_,
                    [&](const auto& reader) { return FindLast(reader, word_, text); });
}

bool EqualText(TextForm form, std::string_view a, std::string_view b, bool ignoreCase) {
  if (a.size() != b.size()) return false;
  if (!ignoreCase) return a == b;
  if (form == TextForm::kCharacters) return CurrentMbcsPage().EqualNoCase(a, b);
  if (form == TextForm::kUnits) return EqualUnitsNoCase(a.data(), b.data(), a.size() / 2);
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
  }
  return true;
}

}  // namespace lumr
