// Characters of a header to the bytes of its charset, one by one, so that words can be cut
// between any two of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/charset/codetype.h"

namespace lumr::header {

// The states of ISO-2022-JP; the other charsets have but the first one.
enum class CodeSet : std::uint8_t { kAscii, kKanji, kKatakana };

struct CodedCharacter {
  unsigned char bytes[4];
  std::uint8_t size;
  CodeSet set;
  bool isJoined;  // goes with the character before: a combining mark and its like
  bool isExact;
};

// The charset in which words of a code type are written.
CodeType WordCodeType(CodeType codeType);

// The characters of text in a charset that WordCodeType gives; appended. "?" or, in UTF-8, U+FFFD
// stands for what it lacks.
void CodeCharacters(std::u16string_view text, CodeType codeType,
                    std::vector<CodedCharacter>& characters);

// Appends the bytes of characters, which begin and end in ASCII.
void AppendCodedBytes(std::span<const CodedCharacter> characters, std::string& bytes);

// What an escape sequence to each set is.
std::string_view EscapeTo(CodeSet set);

}  // namespace lumr::header
