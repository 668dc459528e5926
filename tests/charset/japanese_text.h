// What the tests of the Japanese encodings share.
#pragma once

#include <string>
#include <string_view>

#include "lumrmisc/charset/japanese.h"
#include "lumrmisc/charset/japanese_internal.h"
#include "support/bytes.h"

namespace lumr {

constexpr JapaneseConversion kSJisToEuc = JapaneseConversion::kSJisToEuc;
constexpr JapaneseConversion kEucToSJis = JapaneseConversion::kEucToSJis;
constexpr JapaneseConversion kSJisToJis = JapaneseConversion::kSJisToJis;
constexpr JapaneseConversion kJisToSJis = JapaneseConversion::kJisToSJis;
constexpr JapaneseConversion kConversions[] = {kSJisToEuc, kEucToSJis, kSJisToJis, kJisToSJis};

inline JapaneseConversion Reverse(JapaneseConversion conversion) {
  constexpr JapaneseConversion kReverse[] = {kEucToSJis, kSJisToEuc, kJisToSJis, kSJisToJis};
  return kReverse[static_cast<int>(conversion)];
}

// The exported function.
inline std::string Converted(JapaneseConversion conversion, std::string_view text,
                             CConversionReport* report = nullptr) {
  constexpr decltype(&ConvertSJisToEuc) kFunctions[] = {ConvertSJisToEuc, ConvertEucToSJis,
                                                        ConvertSJisToJis, ConvertJisToSJis};
  const ExactCopy copy(text);
  CBuffer out("left over");
  kFunctions[static_cast<int>(conversion)](copy.Data(), copy.Size(), out, report);
  return std::string(out.Bytes());
}

// Calls visit with every text of one byte and of two bytes, 65,792 in all.
template <typename Visit>
void ForEachShortText(Visit visit) {
  for (int first = 0; first < 256; ++first) {
    std::string text(1, static_cast<char>(first));
    visit(text);
    text += '\0';
    for (int second = 0; second < 256; ++second) {
      text[1] = static_cast<char>(second);
      visit(text);
    }
  }
}

}  // namespace lumr
