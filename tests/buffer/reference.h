// Searches written the slow, obvious way, for tests to compare with.
#pragma once

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/buffer/textfinder.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr::reference {

inline std::size_t StepAt(TextForm form, std::string_view text, std::size_t pos) {
  if (form == TextForm::kUnits) return 2;
  return form == TextForm::kCharacters ? CurrentMbcsPage().CharLength(text, pos) : 1;
}

inline bool SameUnits(std::string_view a, std::string_view b) {
  for (std::size_t i = 0; i + 1 < a.size(); i += 2) {
    if (UnitToLower(LoadUnit(&a[i])) != UnitToLower(LoadUnit(&b[i]))) return false;
  }
  return true;
}

inline bool SameAt(TextForm form, std::string_view text, std::size_t pos, std::string_view word,
                   bool ignoreCase) {
  if (word.size() > text.size() - pos) return false;
  const std::string_view window = text.substr(pos, word.size());
  if (!ignoreCase) return window == word;
  if (form == TextForm::kCharacters) return CurrentMbcsPage().EqualNoCase(window, word);
  if (form == TextForm::kUnits) return SameUnits(window, word);
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; };
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (lower(window[i]) != lower(word[i])) return false;
  }
  return true;
}

// All places of word, overlapping ones too.
inline std::vector<std::size_t> Places(TextForm form, std::string_view text, std::string_view word,
                                       bool ignoreCase) {
  std::vector<std::size_t> places;
  for (std::size_t pos = 0; !word.empty() && pos < text.size(); pos += StepAt(form, text, pos)) {
    if (SameAt(form, text, pos, word, ignoreCase)) places.push_back(pos);
  }
  return places;
}

// Replaces within text[start, end), the way one would by hand.
inline std::string ReplaceAll(TextForm form, std::string_view text, std::string_view from,
                              std::string_view to, std::size_t start, std::size_t end,
                              bool ignoreCase, int& count) {
  std::string result(text.substr(0, start));
  count = 0;
  std::size_t pos = start;
  while (!from.empty() && pos + from.size() <= end) {
    if (SameAt(form, text, pos, from, ignoreCase)) {
      result += to;
      pos += from.size();
      ++count;
    } else {
      const std::size_t step = StepAt(form, text, pos);
      result += text.substr(pos, step);
      pos += step;
    }
  }
  return result += text.substr(std::min(pos, text.size()));
}

}  // namespace lumr::reference
