#include "lumrmisc/mailtext/headerword.h"

#include <cstddef>
#include <new>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/mailcharset.h"
#include "lumrmisc/mailtext/encodedword_internal.h"
#include "lumrmisc/mailtext/headertext_internal.h"
#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/mailtext/transfer_internal.h"

namespace lumr {
namespace {

using header::ReadingResult;

struct CharsetWord : EncodedWord {
  CodeType codeType = CT_UNKNOWN;
};

std::string_view WithoutLanguage(std::string_view label) {
  return label.substr(0, label.find('*'));
}

// Most words are in one of two charsets, and the table of all labels is a long one.
CodeType CodeTypeOfLabel(std::string_view label) {
  if (transfer::EqualNoCase(label, "utf-8")) return CT_UTF8;
  if (transfer::EqualNoCase(label, "iso-2022-jp")) return CT_JIS;
  return CodeTypeOfMailLabel(label);
}

// An unknown charset, and the byte order of UTF-16, are known by the label only.
bool SameCharset(const CharsetWord& a, const CharsetWord& b) {
  if (a.codeType != b.codeType) return false;
  if (a.codeType != CT_UNKNOWN && a.codeType != CT_UNICODE) return true;
  return transfer::EqualNoCase(WithoutLanguage(a.label), WithoutLanguage(b.label));
}

// Whether a text that goes on behind bytes is read as a text of its own would be. bytes are the
// last word of it, and begunClean is the answer for the words before. False when in doubt.
bool EndsClean(CodeType codeType, bool begunClean, std::string_view bytes) {
  switch (codeType) {
    case CT_JIS: {
      if (bytes.find('\x0e') != bytes.npos) return false;
      const std::size_t escape = bytes.rfind('\x1b');
      if (escape == bytes.npos) return begunClean;
      const std::string_view designation = bytes.substr(escape + 1, 2);
      return designation == "(B" || designation == "(J";
    }
    case CT_UTF7: {
      const std::size_t shift = bytes.rfind('+');
      if (shift == bytes.npos && begunClean) return true;
      return bytes.find('-', shift == bytes.npos ? 0 : shift) != bytes.npos;
    }
    case CT_UNICODE:
      return false;  // one byte-order mark may stand for all words
    default:
      return bytes.empty() ? begunClean : static_cast<unsigned char>(bytes.back()) < 0x80;
  }
}

// Whether a joined reading needs no comparison. A run of UTF-7 has no sign at its end, so
// words complete in themselves may be joined to perfect nonsense.
bool IsProved(CodeType codeType, const ReadingResult& joined) {
  if (joined.errors > 0 || codeType == CT_UTF7) return false;
  return joined.asLabelled || !header::IsTelling(codeType);
}

// At a tie of errors, words of ISO-2022-JP were cut: alone they are harmless ASCII. Words of the
// other charsets were not: a cut alone costs an error.
bool SeparateWins(CodeType codeType, const ReadingResult& joined, const ReadingResult& separate) {
  if (separate.asLabelled != joined.asLabelled) return separate.asLabelled;
  if (separate.errors != joined.errors) return separate.errors < joined.errors;
  return joined.errors > 0 ? codeType != CT_JIS : codeType == CT_UTF7;
}

template <class Text>
constexpr bool IsUtf8 = std::is_same_v<Text, CStringA>;

// Words with nothing but white space between them. Few values have more words than there is room
// for in the object; memory of the heap would cost a short value more than its decoding.
class WordRun {
 public:
  void Add(const CharsetWord& word) {
    static_assert(std::is_trivially_copyable_v<CharsetWord>);
    if (size_ == kUsualWords) many_.assign(Inline(), Inline() + size_);
    if (size_ >= kUsualWords) {
      many_.push_back(word);
    } else {
      new (inline_ + size_ * sizeof word) CharsetWord(word);
    }
    ++size_;
  }
  void Clear() { size_ = 0; }
  bool IsEmpty() const { return size_ == 0; }
  std::span<const CharsetWord> Words() const {
    if (size_ == 0) return {};
    return {size_ > kUsualWords ? many_.data() : Inline(), size_};
  }

 private:
  static constexpr std::size_t kUsualWords = 8;

  const CharsetWord* Inline() const {
    return std::launder(reinterpret_cast<const CharsetWord*>(inline_));
  }

  alignas(CharsetWord) std::byte inline_[kUsualWords * sizeof(CharsetWord)];
  std::vector<CharsetWord> many_;  // all words when there are more
  std::size_t size_ = 0;
};

// Text is what is made of a value: UTF-16, or UTF-8 in a CStringA.
template <class Text>
class HeaderReader {
 public:
  HeaderReader(std::string_view raw, std::string_view rawCharset)
      : raw_(header::TrimmedFold(raw)), rawText_(raw_, rawCharset) {}

  Text Read();

 private:
  void AppendRun(std::span<const CharsetWord> run);
  void AppendGroup(std::span<const CharsetWord> group);
  bool AppendInPlace(std::span<const CharsetWord> group);
  void AppendSegment(std::span<const CharsetWord> words, std::string_view joined);
  ReadingResult ReadSeparately(std::span<const CharsetWord> words, Text& text);
  ReadingResult ReadBytes(const CharsetWord& word, std::string_view bytes, Text& text);

  std::string_view raw_;
  header::RawTextReader rawText_;
  std::string_view label_;  // of the last word
  CodeType codeType_ = CT_UNKNOWN;
  Text out_;
  header::ScratchPair scratch_;
  std::string joined_;  // scratch
};

template <class Text>
Text HeaderReader<Text>::Read() {
  out_.reserve(raw_.size());
  EncodedWordScanner scanner(raw_);
  WordRun run;
  CharsetWord word;
  std::size_t done = 0;
  for (std::size_t begin = 0, end = 0; scanner.Next(word, begin, end); done = end) {
    const std::string_view gap = raw_.substr(done, begin - done);
    if (run.IsEmpty() || !header::TrimmedFold(gap).empty()) {
      AppendRun(run.Words());
      run.Clear();
      rawText_.Append(gap, out_);
    }
    if (word.label != label_) codeType_ = CodeTypeOfLabel(word.label);
    label_ = word.label;
    word.codeType = codeType_;
    run.Add(word);
  }
  AppendRun(run.Words());
  rawText_.Append(raw_.substr(done), out_);
  return std::move(out_);
}

// Words with nothing but white space between them.
template <class Text>
void HeaderReader<Text>::AppendRun(std::span<const CharsetWord> run) {
  while (!run.empty()) {
    std::size_t size = 1;
    while (size < run.size() && SameCharset(run[0], run[size])) ++size;
    AppendGroup(run.first(size));
    run = run.subspan(size);
  }
}

// Adjacent words of one charset. They go on as one text wherever their bytes do.
template <class Text>
void HeaderReader<Text>::AppendGroup(std::span<const CharsetWord> group) {
  if (AppendInPlace(group)) return;
  EncodedWordReader reader;
  std::string& joined = joined_;
  joined.clear();
  std::size_t first = 0;
  bool clean = true;
  for (std::size_t i = 0; i < group.size(); ++i) {
    const std::size_t wordStart = joined.size();
    const bool isLast = i + 1 == group.size();
    reader.Append(group[i], isLast ? nullptr : &group[i + 1], joined);
    const std::string_view bytes = std::string_view(joined).substr(wordStart);
    clean = !reader.IsInsideGroup() && EndsClean(group[i].codeType, clean, bytes);
    if (!clean && !isLast) continue;
    AppendSegment(group.subspan(first, i + 1 - first), joined);
    first = i + 1;
    clean = true;
    joined.clear();
  }
}

// Words of UTF-8 are decoded right into UTF-8 text, which needs no more where it is in order: what
// is in order joined is so whatever the words are alone. False, and nothing done, elsewhere.
template <class Text>
bool HeaderReader<Text>::AppendInPlace(std::span<const CharsetWord> group) {
  if constexpr (IsUtf8<Text>) {
    if (group[0].codeType != CT_UTF8) return false;
    const std::size_t begin = out_.size();
    EncodedWordReader reader;
    for (std::size_t i = 0; i < group.size(); ++i) {
      reader.Append(group[i], i + 1 < group.size() ? &group[i + 1] : nullptr, out_);
    }
    if (header::IsCleanUtf8(std::string_view(out_).substr(begin))) return true;
    out_.resize(begin);
  }
  return false;
}

template <class Text>
void HeaderReader<Text>::AppendSegment(std::span<const CharsetWord> words,
                                       std::string_view joined) {
  const std::size_t begin = out_.size();
  const ReadingResult asJoined = ReadBytes(words[0], joined, out_);
  if (words.size() == 1 || IsProved(words[0].codeType, asJoined)) return;
  Text text;
  const ReadingResult separate = ReadSeparately(words, text);
  if (SeparateWins(words[0].codeType, asJoined, separate)) out_.replace(begin, out_.npos, text);
}

// Each word as a text of its own.
template <class Text>
ReadingResult HeaderReader<Text>::ReadSeparately(std::span<const CharsetWord> words, Text& text) {
  ReadingResult sum;
  std::string bytes;
  for (const CharsetWord& word : words) {
    bytes.clear();
    EncodedWordReader().Append(word, nullptr, bytes);
    const ReadingResult one = ReadBytes(word, bytes, text);
    sum.errors += one.errors;
    sum.asLabelled = sum.asLabelled && one.asLabelled;
  }
  return sum;
}

template <class Text>
ReadingResult HeaderReader<Text>::ReadBytes(const CharsetWord& word, std::string_view bytes,
                                            Text& text) {
  if (header::IsPlainIn(word.codeType, bytes)) {
    header::AppendCleanAscii(bytes, text);
    return {};
  }
  std::string_view exact;
  if (header::IsTelling(word.codeType) &&
      header::ReadExactly(word.codeType, bytes, scratch_, exact)) {
    header::AppendCleanUnits(exact, text);
    return {};
  }
  CBuffer units;
  const ReadingResult result = header::ReadLabelledBytes(word.label, word.codeType, bytes, units);
  header::AppendCleanUnits(units.Bytes(), text);
  return result;
}

}  // namespace

int DecodeHeaderText(const char* encoding, const char* text, CBuffer& out) {
  return DecodeHeaderText(CountedText(encoding), CountedText(text), out);
}

int DecodeHeaderText(std::string_view encoding, std::string_view text, CBuffer& out) {
  if (transfer::EqualNoCase(encoding, "B")) return DecodeBase64(text, out);
  if (transfer::EqualNoCase(encoding, "Q")) return DecodeQuotedPrintable(text, out);
  return 0;
}

CStringW DecodeHeaderValue(std::string_view raw, std::string_view rawCharset) {
  return HeaderReader<CStringW>(raw, rawCharset).Read();
}

CStringA DecodeHeaderValueUtf8(std::string_view raw, std::string_view rawCharset) {
  return HeaderReader<CStringA>(raw, rawCharset).Read();
}

}  // namespace lumr
