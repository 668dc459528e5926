#include <algorithm>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/mailtext/encodedword_internal.h"
#include "lumrmisc/mailtext/quotedprintable_internal.h"
#include "lumrmisc/mailtext/transfer_internal.h"

namespace lumr {
namespace {

// No charset has a longer name; the bound keeps the scan of "=?=?=?..." linear.
constexpr std::size_t kMaxLabel = 64;

bool IsLabelCharacter(char c) {
  return c > ' ' && c < '\x7F' && c != '?' && c != '=';
}

bool IsBase64Character(char c) {
  return c == '=' || transfer::kBase64Alphabet.find(c) != std::string_view::npos;
}

// The number of characters of Base64 text that count, padding too.
std::size_t CountBase64(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsBase64Character));
}

// How much of a text belongs to a word without "?=": as far as its encoding may go.
std::size_t EncodedSize(std::string_view text, bool isBase64) {
  if (!isBase64) return std::min(text.find_first_of(" \t\r\n"), text.size());
  const auto end = std::find_if_not(text.begin(), text.end(), IsBase64Character);
  const auto size = static_cast<std::size_t>(end - text.begin());
  return size < text.size() && text[size] == '?' ? size + 1 : size;
}

}  // namespace

std::size_t EncodedWordScanner::Cursor::At(std::string_view text, std::size_t from) {
  if (searched_ && found_ >= from) return found_;
  searched_ = true;
  // Words are short, and a general search would cost more than it finds.
  std::size_t anchor = text.find(anchor_, std::min(from + anchorOffset_, text.size()));
  while (anchor != text.npos) {
    const std::size_t found = anchor - anchorOffset_;
    const std::size_t other = found + 1 - anchorOffset_;
    if (other < text.size() && text[other] == other_) return found_ = found;
    anchor = text.find(anchor_, anchor + 1);
  }
  return found_ = text.size();
}

bool EncodedWordScanner::Next(EncodedWord& word, std::size_t& begin, std::size_t& end) {
  std::size_t textStart = 0;
  begin = FindOpening(word, textStart);
  if (begin == raw_.size()) return false;
  const std::size_t textEnd = FindTextEnd(word.isBase64, textStart, end);
  word.text = raw_.substr(textStart, textEnd - textStart);
  pos_ = end;
  return true;
}

// "=?", the label, "?", "B" or "Q", "?".
bool EncodedWordScanner::ReadOpening(std::size_t pos, EncodedWord& word,
                                     std::size_t& textStart) const {
  if (raw_.substr(pos, 2) != "=?") return false;
  const std::string_view after = raw_.substr(pos + 2, kMaxLabel + 3);
  std::size_t size = 0;
  while (size < after.size() && IsLabelCharacter(after[size])) ++size;
  if (size + 2 >= after.size() || after[size] != '?' || after[size + 2] != '?') return false;
  const char kind = AsciiUpper(after[size + 1]);
  if (kind != 'B' && kind != 'Q') return false;
  word.label = after.substr(0, size);
  word.isBase64 = kind == 'B';
  textStart = pos + 2 + size + 3;
  return true;
}

// The next opening, or the end. In raw ISO-2022-JP text the same bytes are halves of characters.
std::size_t EncodedWordScanner::FindOpening(EncodedWord& word, std::size_t& textStart) {
  // Most words stand at the start, or with only white space before them.
  std::size_t first = pos_;
  while (first < raw_.size() && transfer::IsLayout(raw_[first])) ++first;
  if (first == raw_.size() || ReadOpening(first, word, textStart)) return first;
  while (true) {
    const std::size_t escape = kanjiEscapes_.At(raw_, pos_);
    const std::size_t opening = openings_.At(raw_, pos_);
    if (escape < opening) {
      pos_ = SkipKanji(escape);
    } else if (opening == raw_.size() || ReadOpening(opening, word, textStart)) {
      return opening;
    } else {
      pos_ = opening + 2;
    }
  }
}

// Behind the two-byte characters that an escape sequence begins: another one or a line end.
std::size_t EncodedWordScanner::SkipKanji(std::size_t escape) const {
  return std::min(raw_.find_first_of("\x1b\r\n", escape + 2), raw_.size());
}

// The next opening below limit, or limit. Those that the cursor passes are none, so it may stay.
std::size_t EncodedWordScanner::FindOpeningBelow(std::size_t limit, std::size_t from) {
  EncodedWord word;
  std::size_t textStart = 0;
  std::size_t opening = openings_.At(raw_, from);
  while (opening < limit && !ReadOpening(opening, word, textStart)) {
    opening = openings_.At(raw_, opening + 2);
  }
  return std::min(opening, limit);
}

// Where the text of a word ends, and (end) the word itself.
std::size_t EncodedWordScanner::FindTextEnd(bool isBase64, std::size_t textStart,
                                            std::size_t& end) {
  // With "?=" at the first "?" there is none left for an opening before it.
  const std::size_t mark = raw_.find('?', textStart);
  const bool isWhole = mark != raw_.npos && raw_.substr(mark + 1, 1) == "=";
  const std::size_t closing = isWhole ? mark : closings_.At(raw_, textStart);
  const std::size_t limit = isWhole ? mark : FindOpeningBelow(closing, textStart);
  if (limit == closing && closing < raw_.size()) {
    // "?=" may share its "=" with the "=?" of the next word.
    EncodedWord next;
    std::size_t nextStart = 0;
    end = closing + (ReadOpening(closing + 1, next, nextStart) ? 1 : 2);
    return closing;
  }
  // "?=" is missing, or perhaps only its "=".
  end = textStart + EncodedSize(raw_.substr(textStart, limit - textStart), isBase64);
  return end > textStart && raw_[end - 1] == '?' ? end - 1 : end;
}

void EncodedWordReader::Append(const EncodedWord& word, const EncodedWord* next,
                               std::string& bytes) {
  const std::size_t size = bytes.size();
  const std::size_t room = word.isBase64 ? decoder_.MaxOutput(word.text.size()) : word.text.size();
  bytes.resize(size + room);
  char* end = bytes.data() + size;
  if (word.isBase64) {
    end = decoder_.Write(word.text, end);
    if (!GoesOnIn(next)) {
      end = decoder_.Finish(end);
      decoder_ = transfer::Base64Decoder(true);
    }
  } else {
    end = transfer::DecodeQWord(word.text, end);
  }
  bytes.resize(static_cast<std::size_t>(end - bytes.data()));
}

// Some senders cut the Base64 text into words without regard to its groups. The next word goes on
// with a group when it is no whole number of groups itself, and either the bits left over
// here cannot be padding or the two make whole groups together.
bool EncodedWordReader::GoesOnIn(const EncodedWord* next) const {
  if (decoder_.Pending() == 0 || next == nullptr || !next->isBase64) return false;
  const std::size_t count = CountBase64(next->text);
  if (count % 4 == 0) return false;
  return !decoder_.CanEndHere() || (decoder_.Pending() + count) % 4 == 0;
}

}  // namespace lumr
