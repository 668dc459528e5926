// CBuffer: comparison, search, replacement, tokens.
#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/buffer/characterborders_internal.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/buffer/frame.h"
#include "lumrmisc/buffer/textfinder.h"
#include "lumrmisc/buffer/textscan.h"

namespace lumr {
namespace {

constexpr std::size_t npos = std::string_view::npos;

std::string_view CountedForm(const char* s, int wide) {
  return wide != 0 ? CountedUnits(s) : CountedText(s);
}

TextForm FormOf(int wide) {
  return wide != 0 ? TextForm::kUnits : TextForm::kCharacters;
}

// The text from start on; empty, in which nothing is found, where start is not in the content.
std::string_view TextFrom(std::string_view text, int start) {
  if (start < 0 || static_cast<std::size_t>(start) >= text.size()) return {};
  return text.substr(static_cast<std::size_t>(start));
}

// The text before end; any negative end, and one past the end, stand for all of it.
std::string_view TextBefore(std::string_view text, int end) {
  return end < 0 ? text : text.substr(0, static_cast<std::size_t>(end));
}

int Position(std::size_t found, int origin) {
  return found == npos ? -1 : origin + static_cast<int>(found);
}

int FindWord(TextForm form, std::string_view text, std::string_view word, int start, int nocase) {
  return Position(TextFinder(form, word, nocase != 0).First(TextFrom(text, start)), start);
}

int FindLastWord(TextForm form, std::string_view text, std::string_view word, int nocase) {
  return Position(TextFinder(form, word, nocase != 0).Last(text), 0);
}

class CharacterSet {
 public:
  explicit CharacterSet(std::string_view members) {
    for (std::size_t pos = 0; pos < members.size();) {
      if (page_.IsPair(members, pos)) {
        pairs_.push_back(members.substr(pos, 2));
        pos += 2;
      } else {
        singles_[static_cast<unsigned char>(members[pos++])] = true;
      }
    }
    std::sort(pairs_.begin(), pairs_.end());
  }

  // The length of the character at pos if it is in the set, else 0.
  std::size_t LengthAt(std::string_view text, std::size_t pos) const {
    if (!page_.IsPair(text, pos)) return singles_[static_cast<unsigned char>(text[pos])] ? 1 : 0;
    return std::binary_search(pairs_.begin(), pairs_.end(), text.substr(pos, 2)) ? 2 : 0;
  }

 private:
  const MbcsPage& page_ = CurrentMbcsPage();
  std::array<bool, 256> singles_{};
  std::vector<std::string_view> pairs_;
};

std::size_t CountWords(TextFinder& finder, std::string_view text, std::size_t size) {
  std::size_t count = 0;
  for (std::size_t pos; (pos = finder.First(text)) != npos; ++count) {
    text.remove_prefix(pos + size);
  }
  return count;
}

char* MoveTo(char* out, std::string_view text) {
  if (out != text.data()) std::memmove(out, text.data(), text.size());
  return out + text.size();
}

// Writes scanned with its words replaced to out, which may lie before it in the same block.
char* WriteReplaced(char* out, std::string_view scanned, TextFinder& finder, std::size_t wordSize,
                    std::string_view to) {
  for (std::size_t pos; (pos = finder.First(scanned)) != npos;) {
    out = MoveTo(MoveTo(out, scanned.substr(0, pos)), to);
    scanned.remove_prefix(pos + wordSize);
  }
  return MoveTo(out, scanned);
}

}  // namespace

// ---- Comparison ----

bool operator==(const CBuffer& a, const char* b) {
  return a.Bytes() == CountedText(b);
}

int CBuffer::Equal(const char* s, int wide, int pos, int nocase) const {
  if (pos < 0 || pos > size_ || data_ == nullptr || s == nullptr) return 0;
  const std::string_view rest = Bytes().substr(static_cast<std::size_t>(pos));
  return EqualText(FormOf(wide), rest, CountedForm(s, wide), nocase != 0);
}

int CBuffer::EqualN(const char* s, int n, int wide, int pos, int nocase) const {
  if (pos < 0 || pos > size_ || data_ == nullptr || s == nullptr) return 0;
  std::size_t count = n < 0 ? CountedForm(s, wide).size() : static_cast<std::size_t>(n);
  if (count > static_cast<std::size_t>(size_ - pos)) return 0;
  if (wide != 0) count = count / 2 * 2;
  // A string may end before n bytes. It is read on only where the content has a NUL there too.
  const int max = static_cast<int>(count);
  const int length =
      wide != 0 ? lu_wcsnlen(reinterpret_cast<const char16_t*>(s), max) : lu_strnlen(s, max);
  const char* const place = data_ + pos;
  if (length < max && (place[length] != '\0' || (wide != 0 && place[length + 1] != '\0'))) return 0;
  return EqualText(FormOf(wide), {place, count}, {s, count}, nocase != 0);
}

int CBuffer::EndWith(const char* s, int wide, int nocase) const {
  const std::size_t length = CountedForm(s, wide).size();
  if (length > static_cast<std::size_t>(size_)) return 0;
  return Equal(s, wide, size_ - static_cast<int>(length), nocase);
}

int CBuffer::IsMbsTrail(int pos) const {
  if (pos < 1 || pos >= size_) return 0;
  return CurrentMbcsPage().IsTrailInContext(Bytes(), static_cast<std::size_t>(pos));
}

int CBuffer::GetNumber(int start, int len, int sign, int& value) const {
  if (start < 0 || len < 0 || start >= size_ - len) return 0;
  const int end = start + len;
  int pos = start;
  if (sign != 0 && data_[pos] != '-' && data_[pos] != '+') return 0;
  const bool negative = sign != 0 && data_[pos++] == '-';
  // Negative numbers reach one further, so the value is built below zero.
  constexpr long long kLowest = -0x80000000LL;
  long long number = 0;
  for (; pos < end; ++pos) {
    if (!IsAsciiDigit(data_[pos])) return 0;
    number = number * 10 - (data_[pos] - '0');
    if (number < kLowest) return 0;
  }
  if (!negative && number == kLowest) return 0;
  value = static_cast<int>(negative ? number : -number);
  return 1;
}

// ---- Search ----

int CBuffer::FindAsciiChar(char c, int start) const {
  return Position(TextFrom(Bytes(), start).find(c), start);
}

int CBuffer::FindChar(char c, int start) const {
  const std::string_view text = TextFrom(Bytes(), start);
  const MbcsPage& page = CurrentMbcsPage();
  CharacterBorders borders(page, text);
  std::size_t pos = text.find(c);
  while (pos != npos && (!borders.IsBorder(pos) || page.IsPair(text, pos))) {
    pos = text.find(c, pos + 1);
  }
  return Position(pos, start);
}

int CBuffer::FindOneOfChar(const char* set, int start) const {
  std::array<bool, 256> members{};
  for (const char c : CountedText(set)) members[static_cast<unsigned char>(c)] = true;
  const std::string_view text = TextFrom(Bytes(), start);
  const auto found = std::find_if(text.begin(), text.end(),
                                  [&](char c) { return members[static_cast<unsigned char>(c)]; });
  return found == text.end() ? -1 : start + static_cast<int>(found - text.begin());
}

int CBuffer::FindAsciiPhrase(const char* s, int start, int nocase) const {
  return FindWord(TextForm::kBytes, Bytes(), CountedText(s), start, nocase);
}

int CBuffer::FindPhrase(const char* s, int start, int nocase) const {
  return FindWord(TextForm::kCharacters, Bytes(), CountedText(s), start, nocase);
}

int CBuffer::FindPhrase(const char16_t* s, int start, int nocase) const {
  return FindWord(TextForm::kUnits, Bytes(), CountedUnits(s), start, nocase);
}

int CBuffer::ReverseFindAsciiChar(char c, int end) const {
  if (end < -1) return -1;
  return Position(TextBefore(Bytes(), end).rfind(c), 0);
}

int CBuffer::ReverseFindChar(char c, int end) const {
  if (end < -1) return -1;
  const std::string_view text = TextBefore(Bytes(), end);
  const MbcsPage& page = CurrentMbcsPage();
  CharacterBorders borders(page, text);
  std::size_t pos = text.rfind(c);
  while (pos != npos && (!borders.IsBorder(pos) || page.IsPair(text, pos))) {
    pos = pos == 0 ? npos : text.rfind(c, pos - 1);
  }
  return Position(pos, 0);
}

int CBuffer::ReverseFindAsciiPhrase(const char* s, int end, int nocase) const {
  return FindLastWord(TextForm::kBytes, TextBefore(Bytes(), end), CountedText(s), nocase);
}

int CBuffer::ReverseFindPhrase(const char* s, int end, int nocase) const {
  return FindLastWord(TextForm::kCharacters, TextBefore(Bytes(), end), CountedText(s), nocase);
}

int CBuffer::ReverseFindPhrase(const char16_t* s, int end, int nocase) const {
  if (end < -1) return -1;
  if (end == -1) end = size_;
  // The places looked at are as far from end as the word is long and a multiple of 2 bytes.
  const int odd = end % 2;
  const int last = std::min(end, size_ - (size_ - odd) % 2);
  if (last < odd) return -1;
  const std::string_view text(Data() + odd, static_cast<std::size_t>(last - odd));
  return Position(TextFinder(TextForm::kUnits, CountedUnits(s), nocase != 0).Last(text), odd);
}

int CBuffer::SkipSpace(int& pos) const {
  return lumr::SkipSpace(Data(), size_, pos);
}

int CBuffer::SkipNotSpace(int& pos) const {
  return lumr::SkipNotSpace(Data(), size_, pos);
}

// ---- Replacement ----

// Counts first, so that the result is sized once and nothing can fail half way. The content moves
// up by what the result is longer, and is written from there to its place.
int CBuffer::ReplaceAll(TextForm form, std::string_view from, std::string_view to, int start,
                        int count, int nocase) {
  const std::size_t range = count > 0 ? static_cast<std::size_t>(count) : npos;
  std::string_view scanned = TextFrom(Bytes(), start).substr(0, range);
  if (from.empty() || scanned.empty()) return 0;
  const std::string ownFrom(from);
  const std::string ownTo(to);
  TextFinder finder(form, ownFrom, nocase != 0);
  const std::size_t found = CountWords(finder, scanned, ownFrom.size());
  if (found == 0) return 0;

  const auto size = static_cast<std::size_t>(size_);
  const std::uint64_t newSize = size - found * ownFrom.size() + std::uint64_t{found} * ownTo.size();
  Reserve(newSize);
  char* const begin = data_ + start;
  std::string_view rest(begin, size - static_cast<std::size_t>(start));
  const std::size_t shift = newSize > size ? static_cast<std::size_t>(newSize) - size : 0;
  MoveTo(begin + shift, rest);
  rest = {begin + shift, rest.size()};
  scanned = rest.substr(0, scanned.size());
  char* const end = WriteReplaced(begin, scanned, finder, ownFrom.size(), ownTo);
  MoveTo(end, rest.substr(scanned.size()));
  SetSize(static_cast<int>(newSize));
  return static_cast<int>(found);
}

int CBuffer::ReplaceAsciiPhraseAll(const char* from, const char* to, int start, int count,
                                   int nocase) {
  return ReplaceAll(TextForm::kBytes, CountedText(from), CountedText(to), start, count, nocase);
}

int CBuffer::ReplacePhraseAll(const char* from, const char* to, int start, int count, int nocase) {
  return ReplaceAll(TextForm::kCharacters, CountedText(from), CountedText(to), start, count,
                    nocase);
}

int CBuffer::ReplacePhraseAll(const char16_t* from, const char16_t* to, int start, int count,
                              int nocase) {
  return ReplaceAll(TextForm::kUnits, CountedUnits(from), CountedUnits(to), start, count, nocase);
}

// ---- Tokens ----

void CBuffer::Tokenize(const char* delims, int& pos, CBuffer& token) const {
  // token is written last: delims, or the content itself, may be in it.
  const std::string_view members = CountedText(delims);
  const std::string_view text = members.empty() ? members : TextFrom(Bytes(), pos);
  const CharacterSet set(members);
  const MbcsPage& page = CurrentMbcsPage();
  std::size_t begin = 0;
  for (std::size_t length; begin < text.size() && (length = set.LengthAt(text, begin)) > 0;) {
    begin += length;
  }
  std::size_t end = begin;
  std::size_t delimiter = 0;
  while (end < text.size() && (delimiter = set.LengthAt(text, end)) == 0) {
    end += page.CharLength(text, end);
  }
  token.Assign(text.substr(begin, end - begin));
  if (end > begin) pos += static_cast<int>(end + delimiter);
}

}  // namespace lumr
