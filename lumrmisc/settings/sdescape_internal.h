// The backslash escapes that keep names and values of settings in their lines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

enum class SdField { kKeyNameOrValue, kEntryName };

struct SdEscapeRow {
  char16_t character;
  char16_t letter;  // what stands behind the backslash
  bool entryNameOnly;
};
inline constexpr SdEscapeRow kSdEscapes[] = {
    {u'\\', u'\\', false}, {u'\r', u'r', false}, {u'\n', u'n', false},
    {u'=', u'=', true},    {u'[', u'[', true},
};

// The row whose member is unit; null when there is none for the field.
template <char16_t SdEscapeRow::*kMember>
const SdEscapeRow* FindSdEscape(char16_t unit, SdField field) {
  for (const SdEscapeRow& row : kSdEscapes) {
    if (row.*kMember == unit && (field == SdField::kEntryName || !row.entryNameOnly)) return &row;
  }
  return nullptr;
}

// Whether any character of a text has an escape. Looks at all of it without a branch, which
// compilers make vectors of.
inline bool NeedsSdEscape(std::u16string_view text, SdField field) {
  unsigned found = 0;
  for (const char16_t unit : text) found |= (unit == u'\\') | (unit == u'\r') | (unit == u'\n');
  if (field == SdField::kEntryName) {
    for (const char16_t unit : text) found |= (unit == u'=') | (unit == u'[');
  }
  return found != 0;
}

// Undoes the escapes of a text, to where it stands or before; gives the end of what it writes. A
// pair that means nothing stays as it is.
inline char16_t* UnescapeSdText(std::u16string_view text, SdField field, char16_t* out) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPair = text[i] == u'\\' && i + 1 < text.size();
    const SdEscapeRow* const row =
        isPair ? FindSdEscape<&SdEscapeRow::letter>(text[i + 1], field) : nullptr;
    if (row != nullptr) {
      *out++ = row->character;
      ++i;
      continue;
    }
    *out++ = text[i];
    if (isPair) *out++ = text[++i];
  }
  return out;
}

// Calls run(text) for what is written as it is and pair(letter) for each escape, in order.
template <typename Run, typename Pair>
void SplitSdEscapes(std::u16string_view text, SdField field, Run run, Pair pair) {
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const SdEscapeRow* const row = FindSdEscape<&SdEscapeRow::character>(text[i], field);
    if (row == nullptr) continue;
    run(text.substr(begin, i - begin));
    pair(row->letter);
    begin = i + 1;
  }
  run(text.substr(begin));
}

}  // namespace lumr
