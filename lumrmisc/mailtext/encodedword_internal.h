// Encoded words (RFC 2047) in a raw header value: finding them and undoing their transfer
// encoding. What charset they are in is not looked at here.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "lumrmisc/mailtext/base64_internal.h"

namespace lumr {

struct EncodedWord {
  std::string_view label;  // of the charset, with a language suffix (RFC 2231) where there is one
  bool isBase64 = false;   // kind "B", otherwise "Q"
  std::string_view text;   // still encoded; may hold folds
};

// Finds the encoded words of a header value from its start on, in one pass. A word may stand
// anywhere, glued to text or in quotes, and may hold raw white space or lack its "?="; it then
// ends at the next word, or where its encoding must end.
class EncodedWordScanner {
 public:
  explicit EncodedWordScanner(std::string_view raw) : raw_(raw) {}

  // The next word. begin and end are where it stands with all its signs; end is where the search
  // goes on. False when there is none.
  bool Next(EncodedWord& word, std::size_t& begin, std::size_t& end);

 private:
  // A search for two characters that never looks at a place twice. It looks for the one that is
  // rarer in header values: text of kind Q is full of "=".
  class Cursor {
   public:
    // anchorOffset: 0 when the rare one is the first of the two, else 1.
    Cursor(char anchor, char other, std::size_t anchorOffset)
        : anchor_(anchor), other_(other), anchorOffset_(anchorOffset) {}
    std::size_t At(std::string_view text, std::size_t from);

   private:
    char anchor_;
    char other_;
    std::size_t anchorOffset_;
    std::size_t found_ = 0;
    bool searched_ = false;
  };

  bool ReadOpening(std::size_t pos, EncodedWord& word, std::size_t& textStart) const;
  std::size_t FindOpening(EncodedWord& word, std::size_t& textStart);
  std::size_t FindOpeningBelow(std::size_t limit, std::size_t from);
  std::size_t SkipKanji(std::size_t escape) const;
  std::size_t FindTextEnd(bool isBase64, std::size_t textStart, std::size_t& end);

  std::string_view raw_;
  std::size_t pos_ = 0;
  Cursor openings_{'?', '=', 1};
  Cursor closings_{'?', '=', 0};
  Cursor kanjiEscapes_{'\x1b', '$', 0};
};

// Undoes the transfer encoding of words that follow one another, so that their bytes run on: a
// Base64 group that one word begins and the next one completes is one group.
class EncodedWordReader {
 public:
  // Appends the bytes of word; next is the word behind it, or null.
  void Append(const EncodedWord& word, const EncodedWord* next, std::string& bytes);

  // Whether the last word ended inside a Base64 group that the next one goes on with.
  bool IsInsideGroup() const { return decoder_.Pending() > 0; }

 private:
  bool GoesOnIn(const EncodedWord* next) const;

  transfer::Base64Decoder decoder_{true};
};

}  // namespace lumr
