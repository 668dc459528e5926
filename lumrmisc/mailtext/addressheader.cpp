#include "lumrmisc/mailtext/addressheader.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <vector>

#include "lumrmisc/buffer/texttool.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/mailtext/address.h"
#include "lumrmisc/mailtext/address_internal.h"
#include "lumrmisc/mailtext/encodedword_internal.h"
#include "lumrmisc/mailtext/headertext_internal.h"
#include "lumrmisc/mailtext/headerword.h"

namespace lumr {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

// What stands in the place of a word: its index between two control characters, which no text that
// has been read holds.
constexpr char kWordBegin = '\x01';
constexpr char kWordEnd = '\x02';

// A value whose encoded words have been covered.
class CoveredValue {
 public:
  CoveredValue(std::string_view raw, std::string_view rawCharset)
      : raw_(header::TrimmedFold(raw)), rawCharset_(rawCharset) {
    header::RawTextReader rawText(raw_, rawCharset);
    EncodedWordScanner scanner(raw_);
    EncodedWord word;
    std::size_t done = 0;
    for (std::size_t begin = 0, end = 0; scanner.Next(word, begin, end); done = end) {
      rawText.Append(raw_.substr(done, begin - done), text_);
      text_ += kWordBegin;
      text_ += std::to_string(words_.size());
      text_ += kWordEnd;
      words_.push_back({begin, end});
    }
    rawText.Append(raw_.substr(done), text_);
  }

  std::string_view Text() const { return text_; }
  std::size_t WordCount() const { return words_.size(); }

  // The word whose cover begins at pos of a part of the text, and where the cover ends.
  static std::size_t WordAt(std::string_view part, std::size_t& pos) {
    std::size_t index = 0;
    const char* const end = part.data() + part.size();
    pos = static_cast<std::size_t>(std::from_chars(part.data() + pos + 1, end, index).ptr -
                                   part.data()) +
          1;
    return index;
  }

  // A part of the text with its words encoded as they were.
  CStringA Raw(std::string_view part) const {
    return Uncovered(part, [](std::size_t, std::string_view words, CStringA& out) {
      header::AppendUnfolded(words, out);
    });
  }

  CStringA Decoded(std::string_view part) const {
    return Uncovered(
        part, [this](std::size_t, std::string_view words, CStringA& out) { out += Decode(words); });
  }

  CStringA Decode(std::string_view words) const {
    return DecodeHeaderValueUtf8(words, rawCharset_);
  }

  // Calls put(index of the first, raw words, out) for words with nothing but blanks between them,
  // which are read as one.
  template <class Put>
  CStringA Uncovered(std::string_view part, Put put) const {
    CStringA out;
    for (std::size_t done = 0;;) {
      std::size_t pos = std::min(part.find(kWordBegin, done), part.size());
      out += part.substr(done, pos - done);
      if (pos == part.size()) return out;
      const std::size_t first = WordAt(part, pos);
      std::size_t last = first;
      for (std::size_t next; (next = part.find_first_not_of(' ', pos)) != kNone; pos = next) {
        if (part[next] != kWordBegin || WordAt(part, next) != last + 1 || !GoesOn(last)) break;
        ++last;
      }
      const std::size_t begin = words_[first].begin;
      put(first, raw_.substr(begin, words_[last].end - begin), out);
      done = pos;
    }
  }

 private:
  struct Place {
    std::size_t begin, end;
  };

  // An address may have stood between two words of a name.
  bool GoesOn(std::size_t index) const {
    const std::size_t end = words_[index].end;
    return header::TrimmedFold(raw_.substr(end, words_[index + 1].begin - end)).empty();
  }

  std::string_view raw_;
  std::string_view rawCharset_;
  CStringA text_;
  std::vector<Place> words_;
};

// Which words stand outside of quotes and comments.
std::vector<bool> PlainWords(const CoveredValue& value) {
  std::vector<bool> isPlain(value.WordCount());
  const std::string_view text = value.Text();
  std::size_t start = 0;
  while (start < text.size()) {
    NestingScanner<char> scanner(text, start);
    start = text.size();
    for (;;) {
      const NestingMark mark = scanner.NextOf([](char c) { return c == ',' || c == kWordBegin; });
      if (mark == NestingMark::kEnd) break;
      if (mark != NestingMark::kDelimiter) continue;
      std::size_t pos = scanner.Position();
      if (text[pos] == ',') {  // quotes are matched entry by entry
        start = pos + 1;
        break;
      }
      isPlain[CoveredValue::WordAt(text, pos)] = true;
    }
  }
  return isPlain;
}

bool IsBalanced(std::string_view text) {
  int depth = 0;
  for (const char c : text) {
    if (c == '(') ++depth;
    if (c == ')' && --depth < 0) return false;
  }
  return depth == 0;
}

// Inside of quotes or a comment, where it must not end them.
void AppendEscaped(std::string_view text, CStringA& out) {
  const bool isBalanced = IsBalanced(text);
  for (const char c : text) {
    const bool isParenthesis = c == '(' || c == ')';
    if (c == '"' || c == '\\' || (isParenthesis && !isBalanced)) out += '\\';
    out += c;
  }
}

// Outside, where a comment that is closed harms nothing.
void AppendPlain(std::string_view text, CStringA& out) {
  if (text.find_first_of("<>,;:\"\\") == kNone && IsBalanced(text)) {
    out += text;
  } else {
    AddQuotedToken(text.data(), static_cast<int>(text.size()), out);
  }
}

}  // namespace

unsigned ReadAddressHeader(std::string_view raw, CArray<HeaderAddress>& out,
                           std::string_view rawCharset) {
  // In a single-byte code page no byte of UTF-8 takes the next one with it.
  const CApplyLocale singleByte(CT_WIN1252);
  out.clear();
  const CoveredValue value(raw, rawCharset);
  CStringArray entries;
  std::string_view faulty;
  const address::Fault fault = address::SplitGroups(value.Text(), entries, faulty);
  CStringA address;
  CStringA name;
  for (const CStringA& entry : entries) {
    address::TakeTexts(address::TakeApart(entry), address, name);
    out.push_back({value.Raw(entry), value.Raw(address), value.Decoded(name)});
  }
  return fault;
}

CStringA DecodeAddressHeaderUtf8(std::string_view raw, std::string_view rawCharset) {
  if (raw.find("=?") == kNone) return DecodeHeaderValueUtf8(raw, rawCharset);
  const CApplyLocale singleByte(CT_WIN1252);
  const CoveredValue value(raw, rawCharset);
  const std::vector<bool> isPlain = PlainWords(value);
  return value.Uncovered(value.Text(),
                         [&](std::size_t first, std::string_view words, CStringA& text) {
                           const CStringA decoded = value.Decode(words);
                           (isPlain[first] ? AppendPlain : AppendEscaped)(decoded, text);
                         });
}

}  // namespace lumr
