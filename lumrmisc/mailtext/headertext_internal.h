// What header words and header parameters share: labelled bytes to text that is safe to show.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/charset/mailcharset.h"
#include "lumrmisc/platform/types.h"

namespace lumr::header {

// Whether the bytes of a code type tell that its label is right: text in another encoding seldom
// passes. A single-byte set takes anything.
bool IsTelling(CodeType codeType);

// Memory for one text at a time. Header values are short, and a buffer of the heap for each of
// their words would cost more than all the work on them.
class Scratch {
 public:
  // size bytes, until the next call.
  char* Room(std::size_t size) {
    if (size <= sizeof inline_) return inline_;
    heap_ = std::make_unique_for_overwrite<char[]>(size);
    return heap_.get();
  }

 private:
  alignas(char16_t) char inline_[1024];
  std::unique_ptr<char[]> heap_;
};

// Two texts: a conversion and what it passes through.
struct ScratchPair {
  Scratch middle;
  Scratch result;
};

// Bytes as UTF-16LE when they are exactly a text of the code type, which must be a telling one:
// nothing was replaced, no character has another code, there is no byte-order mark. False in
// doubt. The text lives in scratch.
bool ReadExactly(CodeType codeType, std::string_view bytes, ScratchPair& scratch,
                 std::string_view& utf16);

// Whether bytes are well-formed UTF-8 from which AppendCleanUnits would take nothing out.
bool IsCleanUtf8(std::string_view bytes);

// How well bytes could be read.
struct ReadingResult {
  long long errors = 0;    // characters that had to be replaced
  bool asLabelled = true;  // the bytes are wholly in the labelled charset
};

// Bytes in the charset of a label, whose code type is given (CT_UNKNOWN where nobody knows it: the
// charset is then detected, as it is when the bytes are plainly in another one), as UTF-16LE in
// text, which is replaced.
ReadingResult ReadLabelledBytes(std::string_view label, CodeType codeType, std::string_view bytes,
                                CBuffer& text);

// The label under which raw text of a header is read when the body has the given one: no header
// is in UTF-16, whose ASCII is not ASCII.
std::string_view RawLabel(std::string_view rawCharset);

// Reads the parts of a value that stand outside of its words. They are all in one charset, and the
// more there is the better it tells: raw is the whole value.
class RawTextReader {
 public:
  RawTextReader(std::string_view raw, std::string_view rawCharset)
      : raw_(raw), rawCharset_(rawCharset) {}

  // Appends a part, unfolded, as AppendCleanUnits does.
  template <class Text>
  void Append(std::string_view part, Text& out) {
    if (!part.empty()) AppendPart(part, out);
  }

 private:
  template <class Text>
  void AppendPart(std::string_view part, Text& out);

  std::string_view raw_;
  std::string_view rawCharset_;
  bool resolved_ = false;
  MailCharset charset_{};
};
extern template void RawTextReader::AppendPart(std::string_view part, CStringW& out);
extern template void RawTextReader::AppendPart(std::string_view part, CStringA& out);

// Whether bytes are the same text in ASCII and in the code type.
bool IsPlainIn(CodeType codeType, std::string_view bytes);

// Append text to a header value without any control character: a run of line breaks, tabs and
// other white space among them becomes one space, the others and byte-order marks are dropped.
// Narrow text is UTF-8, with U+FFFD for half a surrogate pair.
void AppendCleanAscii(std::string_view text, CStringW& out);
void AppendCleanAscii(std::string_view text, CStringA& out);
void AppendCleanUnits(std::string_view utf16, CStringW& out);
void AppendCleanUnits(std::string_view utf16, CStringA& out);

// Takes folds out: a line break, with all white space around it, becomes one space.
void AppendUnfolded(std::string_view raw, std::string& out);

// Without the white space and line breaks at both ends.
std::string_view TrimmedFold(std::string_view raw);

}  // namespace lumr::header
