#include "lumrmisc/search/optioncomp.h"

#include <algorithm>
#include <cstddef>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/buffer/textscan.h"
#include "lumrmisc/charset/linescan.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/search/equivalence_internal.h"
#include "lumrmisc/search/unitsearch_internal.h"
#include "lumrmisc/search/unittext_internal.h"

namespace lumr {

namespace {

constexpr std::size_t npos = std::string_view::npos;

// What a text with other forms of a word's units takes at most: twice the room of the word.
constexpr std::size_t kMostGrowth = 2;

bool IsText(const char* text, int length) {
  return text != nullptr && length >= 1;
}

bool IsNarrow(CodeType codeType) {
  return codeType == CT_ASCII || codeType == CT_SJIS;
}

std::string_view WholeUnits(std::string_view text) {
  return text.substr(0, text.size() & ~std::size_t{1});
}

int Size(std::string_view text) {
  return static_cast<int>(text.size());
}

// txtnnstr in the code page of the code type, Shift_JIS included.
const char* FindAsIs(CodeType codeType, bool forward, std::string_view text, std::string_view word,
                     int ignoreCase) {
  const CApplyLocale scope(codeType);
  return txtnnstr(codeType, forward, text.data(), Size(text), word.data(), Size(word), ignoreCase);
}

// Whether text begins with word, UTF-16 or text in the current code page.
bool BeginsAsIs(std::string_view text, std::string_view word, bool wide, int ignoreCase) {
  if (!wide) return ismbsnnstart(text.data(), Size(text), word.data(), Size(word), ignoreCase) != 0;
  return iswcsnnstart(reinterpret_cast<const char16_t*>(text.data()), Size(text) / 2,
                      reinterpret_cast<const char16_t*>(word.data()), Size(word) / 2,
                      ignoreCase) != 0;
}

// A match is as long as the word, so it can end at the end from one place only.
bool EndsAsIs(CodeType codeType, std::string_view text, std::string_view word, int ignoreCase) {
  const bool wide = IsCodeTypeUnicode(codeType) != 0;
  if (wide) {
    text = WholeUnits(text);
    word = WholeUnits(word);
  }
  if (word.empty() || word.size() > text.size()) return false;
  const CApplyLocale scope(codeType);
  const std::size_t pos = text.size() - word.size();
  if (!wide && CurrentMbcsPage().IsTrailInContext(text, pos)) return false;
  return BeginsAsIs(text.substr(pos), word, wide, ignoreCase);
}

// The bytes of text that begin with word, unit by unit; npos when they do not.
template <class Characters>
std::size_t BeginLength(std::uint32_t mask, std::string_view text, std::string_view word) {
  const UnitReader<Characters> reader(mask);
  std::size_t pos = 0;
  for (std::size_t wordPos = 0; wordPos < word.size();) {
    if (pos >= text.size()) return npos;
    const TextUnit wanted = reader.Read(word, wordPos);
    const TextUnit found = reader.Read(text, pos);
    if (wanted.key != found.key) return npos;
    wordPos += wanted.length;
    pos += found.length;
  }
  return pos;
}

// Looks for all the words at once.
template <class Characters, class Words>
UnitMatch Search(std::uint32_t mask, std::string_view text, const Words& words, bool forward) {
  UnitSearch<Characters> search(mask);
  for (const std::string_view word : words) search.AddWord(word);
  return forward ? search.First(text) : search.Last(text, text.size());
}

// Whether a match of word ends where text does. It begins in the last bytes of the text: no form of
// a unit is longer than twice another.
template <class Characters>
bool EndsUnits(std::uint32_t mask, std::string_view text, std::string_view word, std::size_t from) {
  const Characters characters;
  for (std::size_t pos = from; pos < text.size(); pos += characters.At(text, pos).length) {
    if (BeginLength<Characters>(mask, text.substr(pos), word) == text.size() - pos) return true;
  }
  return false;
}

std::size_t EndsFrom(std::string_view text, std::string_view word) {
  return text.size() - std::min(text.size(), kMostGrowth * word.size());
}

template <class Characters>
const char* FindFirstUnit(std::uint32_t mask, std::string_view text, std::string_view word,
                          bool forward) {
  if (word.empty()) return nullptr;
  const UnitReader<Characters> reader(mask);
  const std::string_view words[] = {word.substr(0, reader.Read(word, 0).length)};
  const UnitMatch found = Search<Characters>(mask, text, words, forward);
  return found.pos == npos ? nullptr : text.data() + found.pos;
}

// The first or last unit of text that equals the first one of word.
const char* FindFirstUnit(std::uint32_t mask, const char* text, int len, const char* word,
                          int wordLen, bool wide, bool forward) {
  if (!IsText(text, len) || !IsText(word, wordLen)) return nullptr;
  const std::string_view textView = CountedText(text, len);
  const std::string_view wordView = CountedText(word, wordLen);
  if (!wide) return FindFirstUnit<NarrowCharacters>(mask, textView, wordView, forward);
  return FindFirstUnit<WideCharacters>(mask, WholeUnits(textView), WholeUnits(wordView), forward);
}

}  // namespace

std::uint32_t COptionComp2::Mask() const {
  return unitkey::Mask(ignoreCase_ != 0, ignoreWidth_ != 0, ignoreKana_ != 0);
}

int COptionComp2::_StartsWith(const char* text, int textLen, const char* word, int wordLen,
                              int wide, int& matchLen) const {
  matchLen = 0;
  if (!IsText(text, textLen) || !IsText(word, wordLen)) return 0;
  std::string_view textView = CountedText(text, textLen);
  std::string_view wordView = CountedText(word, wordLen);
  if (wide) {
    textView = WholeUnits(textView);
    wordView = WholeUnits(wordView);
    if (wordView.empty()) return 0;
  }
  if (ComparesAsIs()) {
    const CApplyLocale scope(wide ? CT_UNICODE : CT_SJIS);
    if (!BeginsAsIs(textView, wordView, wide != 0, ignoreCase_)) return 0;
    matchLen = Size(wordView);
    return 1;
  }
  const std::size_t length = wide ? BeginLength<WideCharacters>(Mask(), textView, wordView)
                                  : BeginLength<NarrowCharacters>(Mask(), textView, wordView);
  if (length == npos) return 0;
  matchLen = static_cast<int>(length);
  return 1;
}

const char* COptionComp2::_FindFirstChar(const char* text, int len, const char* word, int wordLen,
                                         int wide) const {
  return FindFirstUnit(Mask(), text, len, word, wordLen, wide != 0, true);
}

const char* COptionComp2::_FindLastChar(const char* text, int len, const char* word, int wordLen,
                                        int wide) const {
  return FindFirstUnit(Mask(), text, len, word, wordLen, wide != 0, false);
}

int COptionComp2::StartsWith(const char* text, int textLen, const char* word, int wordLen,
                             CodeType codeType, int& whole) const {
  whole = 0;
  if (!IsText(text, textLen) || !IsText(word, wordLen)) return 0;
  int matchLen = 0;
  if (IsNarrow(codeType)) {
    if (!_StartsWith(text, textLen, word, wordLen, 0, matchLen)) return 0;
    whole = matchLen == textLen;
    return 1;
  }
  const UnitText wideText(codeType, CountedText(text, textLen), false);
  const UnitText wideWord(codeType, CountedText(word, wordLen), false);
  const std::string_view units = wideText.Units();
  const std::string_view wordUnits = wideWord.Units();
  if (!_StartsWith(units.data(), Size(units), wordUnits.data(), Size(wordUnits), 1, matchLen)) {
    return 0;
  }
  whole = matchLen == Size(units);
  return 1;
}

int COptionComp2::IsSameText(const char* text, int textLen, const char* word, int wordLen,
                             CodeType codeType) const {
  int whole = 0;
  return StartsWith(text, textLen, word, wordLen, codeType, whole) && whole;
}

int COptionComp2::EndsWith(const char* text, int textLen, const char* word, int wordLen,
                           CodeType codeType) const {
  if (!IsText(text, textLen) || !IsText(word, wordLen)) return 0;
  const std::string_view textView = CountedText(text, textLen);
  const std::string_view wordView = CountedText(word, wordLen);
  if (ComparesAsIs()) return EndsAsIs(codeType, textView, wordView, ignoreCase_);
  if (IsNarrow(codeType)) {
    std::size_t from = EndsFrom(textView, wordView);
    if (NarrowCharacters().Page().IsTrailInContext(textView, from)) ++from;
    return EndsUnits<NarrowCharacters>(Mask(), textView, wordView, from);
  }
  const UnitText wideText(codeType, textView, false);
  const UnitText wideWord(codeType, wordView, false);
  if (wideWord.Units().empty()) return 0;
  return EndsUnits<WideCharacters>(Mask(), wideText.Units(), wideWord.Units(),
                                   EndsFrom(wideText.Units(), wideWord.Units()));
}

int COptionComp2::FindString(const char* text, int textLen, const char* word, int wordLen,
                             CodeType codeType, int forward, int positionInCallerUnits,
                             int* matchLen) const {
  int ignored = 0;
  int& length = matchLen == nullptr ? ignored : *matchLen;
  length = 0;
  if (!IsText(text, textLen) || !IsText(word, wordLen)) return -1;
  const std::string_view textView = CountedText(text, textLen);
  const std::string_view wordView = CountedText(word, wordLen);
  if (ComparesAsIs()) {
    const char* const found = FindAsIs(codeType, forward != 0, textView, wordView, ignoreCase_);
    if (found == nullptr) return -1;
    length = IsCodeTypeUnicode(codeType) ? wordLen & ~1 : wordLen;
    return static_cast<int>(found - text);
  }
  if (IsNarrow(codeType)) {
    const std::string_view words[] = {wordView};
    const UnitMatch found = Search<NarrowCharacters>(Mask(), textView, words, forward != 0);
    if (found.pos == npos) return -1;
    length = static_cast<int>(found.length);
    return static_cast<int>(found.pos);
  }
  const UnitText wideText(codeType, textView, true);
  const UnitText wideWord(codeType, wordView, false);
  const std::string_view words[] = {wideWord.Units()};
  const UnitMatch found = Search<WideCharacters>(Mask(), wideText.Units(), words, forward != 0);
  if (found.pos == npos) return -1;
  const std::size_t begin = wideText.BeginInCaller(found.pos);
  length = static_cast<int>(wideText.EndInCaller(found.pos + found.length) - begin);
  return static_cast<int>(positionInCallerUnits ? begin : found.pos);
}

int COptionComp2::FindString(std::string_view text, std::string_view word, CodeType codeType,
                             int forward, int positionInCallerUnits, int* matchLen) const {
  return FindString(text.data(), Size(text), word.data(), Size(word), codeType, forward,
                    positionInCallerUnits, matchLen);
}

int COptionComp2::FindStringsAnd(const char* text, int textLen, const CArray<CBuffer>& words,
                                 CodeType codeType) const {
  if (!IsText(text, textLen) || words.empty()) return -1;
  const std::string_view textView = CountedText(text, textLen);
  if (ComparesAsIs() || IsNarrow(codeType)) {
    const bool all = std::all_of(words.begin(), words.end(), [&](const CBuffer& word) {
      return FindString(textView, word.Bytes(), codeType, 1, 1, nullptr) >= 0;
    });
    return all ? 0 : -1;
  }
  const UnitText wideText(codeType, textView, false);
  const bool all = std::all_of(words.begin(), words.end(), [&](const CBuffer& word) {
    const UnitText wideWord(codeType, word.Bytes(), false);
    return FindString(wideText.Units(), wideWord.Units(), CT_UNICODE, 1, 1, nullptr) >= 0;
  });
  return all ? 0 : -1;
}

// The range that is left for the next word begins and ends on a border of characters: a match may
// end inside one when its word does.
int COptionComp2::FindAnyAsIs(std::string_view text, const CArray<CBuffer>& words,
                              CodeType codeType, bool forward, bool nearest, int& matchLen) const {
  const CApplyLocale scope(codeType);
  std::size_t begin = 0;
  std::size_t end = text.size();
  int position = -1;
  for (const CBuffer& word : words) {
    if (word.IsEmpty() || begin == end) continue;
    const char* const found =
        FindAsIs(codeType, forward, text.substr(begin, end - begin), word.Bytes(), ignoreCase_);
    if (found == nullptr) continue;
    const auto pos = static_cast<std::size_t>(found - text.data());
    position = static_cast<int>(pos);
    matchLen = IsCodeTypeUnicode(codeType) ? word.GetLength() & ~1 : word.GetLength();
    if (!nearest) break;
    if (forward) {
      end = pos;
    } else {
      begin = pos + static_cast<std::size_t>(matchLen);
      const bool isInside =
          !IsCodeTypeUnicode(codeType) && CurrentMbcsPage().IsTrailInContext(text, begin);
      if (isInside) ++begin;
    }
  }
  return position;
}

int COptionComp2::FindStringsOr(const char* text, int textLen, const CArray<CBuffer>& words,
                                CodeType codeType, int forward, int nearest, int* matchLen) const {
  int ignored = 0;
  int& length = matchLen == nullptr ? ignored : *matchLen;
  length = 0;
  if (!IsText(text, textLen) || words.empty()) return -1;
  const std::string_view textView = CountedText(text, textLen);
  if (ComparesAsIs()) {
    return FindAnyAsIs(textView, words, codeType, forward != 0, nearest != 0, length);
  }
  if (IsNarrow(codeType)) {
    std::vector<std::string_view> views;
    for (const CBuffer& word : words) views.push_back(word.Bytes());
    const UnitMatch found = Search<NarrowCharacters>(Mask(), textView, views, forward != 0);
    length = static_cast<int>(found.length);
    return found.pos == npos ? -1 : static_cast<int>(found.pos);
  }
  const UnitText wideText(codeType, textView, true);
  std::vector<UnitText> wideWords;
  std::vector<std::string_view> views;
  wideWords.reserve(words.size());
  for (const CBuffer& word : words) {
    views.push_back(wideWords.emplace_back(codeType, word.Bytes(), false).Units());
  }
  const UnitMatch found = Search<WideCharacters>(Mask(), wideText.Units(), views, forward != 0);
  if (found.pos == npos) return -1;
  const std::size_t begin = wideText.BeginInCaller(found.pos);
  length = static_cast<int>(wideText.EndInCaller(found.pos + found.length) - begin);
  return static_cast<int>(begin);
}

}  // namespace lumr
