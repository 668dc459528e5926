// The substring search under CBuffer and the text scanning functions: one engine for bytes,
// characters of a code page and UTF-16, forward and backward, with and without case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "lumrmisc/platform/mbcs.h"

namespace lumr {

// How text is read, and with that where a match may begin and what ignoring case means.
enum class TextForm {
  kBytes,       // at every byte; case of ASCII letters
  kCharacters,  // at every character of the current code page; case of that page
  kUnits,       // at every second byte: UTF-16LE at any address; case of Unicode
};

// Whether two texts are equal; in kUnits both have an even number of bytes.
bool EqualText(TextForm form, std::string_view a, std::string_view b, bool ignoreCase);

// What the search knows of its word.
struct SearchWord {
  // A place in the word by which candidates are found, and the byte (in kUnits the unit) that
  // stands there, in both cases when case is ignored.
  struct Anchor {
    std::size_t offset = 0;
    char16_t lower = 0;
    char16_t upper = 0;
  };

  std::string_view bytes;
  bool ignoreCase = false;
  const MbcsPage* page = nullptr;
  Anchor anchors[2];
  // The automaton, made when the first text asks for it: the word's characters (in lower case
  // when case is ignored), and for the first n of them the length of the longest part that is
  // both a proper beginning and an end.
  std::vector<std::uint32_t> symbols;
  std::vector<std::uint32_t> fallback;
};

// Looks for one word in any number of texts. Lengths and positions are bytes.
//
// A match is as long as the word; its end may cut a two-byte character when the word itself
// ends in a lead byte. Time is linear in text and word whatever they are. Memory is taken (and
// std::bad_alloc thrown) only for texts and words that repeat themselves much.
class TextFinder {
 public:
  static constexpr std::size_t npos = std::string_view::npos;

  // word must outlive the finder; in kUnits an odd last byte of the word or a text does not
  // count. The code page is the current one of the calling thread at this moment.
  TextFinder(TextForm form, std::string_view word, bool ignoreCase);

  // The first or last position of the word in text, or npos; npos for an empty word. Characters
  // and units are counted from the start of text.
  std::size_t First(std::string_view text);
  std::size_t Last(std::string_view text);

 private:
  TextForm form_;
  SearchWord word_;
};

}  // namespace lumr
