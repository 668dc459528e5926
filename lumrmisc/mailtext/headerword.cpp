#include "lumrmisc/mailtext/headerword.h"

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/mailcharset.h"
#include "lumrmisc/mailtext/encodedword_internal.h"
#include "lumrmisc/mailtext/headertext_internal.h"

namespace lumr {
namespace {

using header::ReadingResult;

struct CharsetWord : EncodedWord {
  CodeType codeType = CT_UNKNOWN;
};

std::string_view WithoutLanguage(std::string_view label) {
  return label.substr(0, label.find('*'));
}

bool EqualNoCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return AsciiLower(x) == AsciiLower(y); });
}

// An unknown charset, and the byte order of UTF-16, are known by the label only.
bool SameCharset(const CharsetWord& a, const CharsetWord& b) {
  if (a.codeType != b.codeType) return false;
  if (a.codeType != CT_UNKNOWN && a.codeType != CT_UNICODE) return true;
  return EqualNoCase(WithoutLanguage(a.label), WithoutLanguage(b.label));
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

class HeaderReader {
 public:
  HeaderReader(std::string_view raw, std::string_view rawCharset)
      : raw_(header::TrimmedFold(raw)), rawLabel_(rawCharset) {}

  CStringW Read();

 private:
  void AppendRaw(std::string_view text);
  void AppendRun(std::span<const CharsetWord> run);
  void AppendGroup(std::span<const CharsetWord> group);
  void AppendSegment(std::span<const CharsetWord> words, std::string_view joined);
  ReadingResult ReadSeparately(std::span<const CharsetWord> words, CStringW& text);
  ReadingResult ReadBytes(const CharsetWord& word, std::string_view bytes, CStringW& text);

  std::string_view raw_;
  std::string_view rawLabel_;
  bool rawResolved_ = false;
  MailCharset rawCharset_{};
  CStringW out_;
  CBuffer units_;  // scratch
};

CStringW HeaderReader::Read() {
  out_.reserve(raw_.size());
  EncodedWordScanner scanner(raw_);
  std::vector<CharsetWord> run;
  CharsetWord word;
  std::size_t done = 0;
  for (std::size_t begin = 0, end = 0; scanner.Next(word, begin, end); done = end) {
    const std::string_view gap = raw_.substr(done, begin - done);
    if (run.empty() || !header::TrimmedFold(gap).empty()) {
      AppendRun(run);
      run.clear();
      AppendRaw(gap);
    }
    const bool sameLabel = !run.empty() && run.back().label == word.label;
    word.codeType = sameLabel ? run.back().codeType : CodeTypeOfMailLabel(word.label);
    run.push_back(word);
  }
  AppendRun(run);
  AppendRaw(raw_.substr(done));
  return std::move(out_);
}

void HeaderReader::AppendRaw(std::string_view text) {
  std::string unfolded;
  if (text.find_first_of("\r\n") != text.npos) {
    header::AppendUnfolded(text, unfolded);
    text = unfolded;
  }
  if (header::IsPlainIn(CT_ASCII, text)) return header::AppendCleanAscii(text, out_);
  // All raw text of a value is in one charset, and the more there is the better it tells.
  if (!rawResolved_) rawCharset_ = ResolveMailCharset(header::RawLabel(rawLabel_), raw_);
  rawResolved_ = true;
  ConvertMailText(rawCharset_, text, units_);
  header::AppendCleanUnits(units_.Bytes(), out_);
}

// Words with nothing but white space between them.
void HeaderReader::AppendRun(std::span<const CharsetWord> run) {
  while (!run.empty()) {
    std::size_t size = 1;
    while (size < run.size() && SameCharset(run[0], run[size])) ++size;
    AppendGroup(run.first(size));
    run = run.subspan(size);
  }
}

// Adjacent words of one charset. They go on as one text wherever their bytes do.
void HeaderReader::AppendGroup(std::span<const CharsetWord> group) {
  EncodedWordReader reader;
  std::string joined;
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

void HeaderReader::AppendSegment(std::span<const CharsetWord> words, std::string_view joined) {
  const std::size_t begin = out_.size();
  const ReadingResult asJoined = ReadBytes(words[0], joined, out_);
  if (words.size() == 1 || IsProved(words[0].codeType, asJoined)) return;
  CStringW text;
  const ReadingResult separate = ReadSeparately(words, text);
  if (SeparateWins(words[0].codeType, asJoined, separate)) out_.replace(begin, out_.npos, text);
}

// Each word as a text of its own.
ReadingResult HeaderReader::ReadSeparately(std::span<const CharsetWord> words, CStringW& text) {
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

ReadingResult HeaderReader::ReadBytes(const CharsetWord& word, std::string_view bytes,
                                      CStringW& text) {
  if (header::IsPlainIn(word.codeType, bytes)) {
    header::AppendCleanAscii(bytes, text);
    return {};
  }
  const ReadingResult result = header::ReadLabelledBytes(word.label, word.codeType, bytes, units_);
  header::AppendCleanUnits(units_.Bytes(), text);
  return result;
}

}  // namespace

CStringW DecodeHeaderValue(std::string_view raw, std::string_view rawCharset) {
  return HeaderReader(raw, rawCharset).Read();
}

}  // namespace lumr
