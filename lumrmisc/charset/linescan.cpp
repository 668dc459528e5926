#include "lumrmisc/charset/linescan.h"

#include <cstddef>
#include <cstdint>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/buffer/textscan.h"
#include "lumrmisc/charset/wordscan_internal.h"

namespace lumr {
namespace {

// CR and LF are no trail bytes in any code page, so a byte of either value ends a line wherever
// it stands, and lines are found without reading characters.

// The first CR or LF among the units of text; the end when there is none.
template <typename Unit>
const char* FindBreak(const char* text, const char* end) {
  using Word = WordOf<Unit>;
  for (; end - text >= 8; text += 8) {
    const auto word = LoadValue<std::uint64_t>(text);
    const std::uint64_t marks = Word::Mark(word, '\r') | Word::Mark(word, '\n');
    if (marks != 0) return text + Word::FirstMark(marks);
  }
  for (; end - text >= static_cast<std::ptrdiff_t>(sizeof(Unit)); text += sizeof(Unit)) {
    const auto unit = LoadValue<Unit>(text);
    if (unit == '\r' || unit == '\n') return text;
  }
  return end;
}

template <typename Unit>
void ScanLine(std::string_view text, const char*& lineEnd, int& breakLen) {
  constexpr auto kSize = static_cast<std::ptrdiff_t>(sizeof(Unit));
  const char* const end = text.data() + text.size();
  lineEnd = FindBreak<Unit>(text.data(), end);
  breakLen = 0;
  if (lineEnd == end) return;
  const bool pair = LoadValue<Unit>(lineEnd) == '\r' && end - lineEnd >= 2 * kSize &&
                    LoadValue<Unit>(lineEnd + kSize) == '\n';
  breakLen = static_cast<int>(pair ? 2 * kSize : kSize);
}

const char* FindBytes(bool forward, const char* text, int textLen, const char* word, int wordLen,
                      int ignoreCase) {
  return forward ? mbsnnstr(text, textLen, word, wordLen, ignoreCase)
                 : mbsrnnstr(text, textLen, word, wordLen, ignoreCase);
}

// Wide text may stand at any address: the wide searches read it by its bytes.
const char* FindUnits(bool forward, const char* text, int textLen, const char* word, int wordLen,
                      int ignoreCase) {
  const auto* const units = reinterpret_cast<const char16_t*>(text);
  const auto* const wordUnits = reinterpret_cast<const char16_t*>(word);
  const auto halved = [](int length) { return length < 0 ? length : length / 2; };
  const char16_t* const found =
      forward ? wcsnnstr(units, halved(textLen), wordUnits, halved(wordLen), ignoreCase)
              : wcsrnnstr(units, halved(textLen), wordUnits, halved(wordLen), ignoreCase);
  return reinterpret_cast<const char*>(found);
}

}  // namespace

int GetNextLine(const char* text, int len, CodeType codeType, const char*& lineEnd, int& breakLen) {
  if (text == nullptr || len < 1) return 0;
  const std::string_view view = CountedText(text, len);
  if (IsCodeTypeUnicode(codeType)) {
    ScanLine<std::uint16_t>(view, lineEnd, breakLen);
  } else {
    ScanLine<std::uint8_t>(view, lineEnd, breakLen);
  }
  return 1;
}

const char* txtnnstr(CodeType codeType, int forward, const char* text, int textLen,
                     const char* word, int wordLen, int ignoreCase) {
  if (IsCodeTypeUnicode(codeType)) {
    return FindUnits(forward != 0, text, textLen, word, wordLen, ignoreCase);
  }
  if (codeType == CT_SJIS || codeType == CT_ASCII) {
    return FindBytes(forward != 0, text, textLen, word, wordLen, ignoreCase);
  }
  const CApplyLocale scope(codeType);
  return FindBytes(forward != 0, text, textLen, word, wordLen, ignoreCase);
}

}  // namespace lumr
