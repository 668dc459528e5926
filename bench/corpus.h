// Seeded texts to measure on: the same bytes on every machine and in every run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace lumr::bench {

// A small generator of its own: the distributions of the standard library differ between
// implementations, and the inputs must not.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t Next();
  // A number of 0 to below - 1.
  std::size_t Below(std::size_t below) { return static_cast<std::size_t>(Next() % below); }
  bool OneIn(std::size_t n) { return Below(n) == 0; }

 private:
  std::uint64_t state_;
};

enum class Corpus {
  kJapanese,  // business mail: kanji, kana, ASCII words and digits, quoted lines, CR LF
  kAscii,     // English mail
  kWestern,   // French and German mail, with what windows-1252 has beyond Latin-1
  kRandom,    // uniform bytes
};

const char* CorpusName(Corpus corpus);

// One line of UTF-8 without its line end; kRandom has no lines.
std::string MakeLine(Corpus corpus, Random& random);

// A text of size bytes in a charset that iconv knows (a UTF-16 text is a byte shorter where size
// is odd), filled up with "x" behind its last whole line.
std::string MakeText(Corpus corpus, const std::string& charset, std::size_t size);

// count records of exactly size bytes each, one behind the other, each of whole characters.
std::string MakeRecords(Corpus corpus, const std::string& charset, std::size_t count,
                        std::size_t size);

// UTF-8 in another charset. Throws std::runtime_error when iconv cannot do it.
std::string EncodeText(std::string_view utf8, const std::string& charset);

// Two kanji that the Japanese corpus never holds, in Shift_JIS. Their lead bytes are common.
extern const std::string_view kAbsentWord;

}  // namespace lumr::bench
