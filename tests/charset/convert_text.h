// What the tests of conversion and detection share.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/charset/convert.h"
#include "support/bytes.h"

namespace lumr {

// "fit 3+2>4": kind, offset and length in the source, offset in the result.
inline std::string Shown(const CConversionReport& report) {
  std::string shown;
  for (const ConversionLoss& loss : report.First()) {
    if (!shown.empty()) shown += ", ";
    shown += loss.kind == ConversionLossKind::kFit ? "fit " : "replaced ";
    shown += std::to_string(loss.inputOffset) + '+' + std::to_string(loss.inputLength) + '>' +
             std::to_string(loss.outputOffset);
  }
  return shown;
}

struct Conversion {
  std::string bytes;
  long status = 0;
  std::string losses;
  bool operator==(const Conversion&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Conversion& conversion) {
  return out << Shown(conversion.bytes) << " status " << conversion.status << " losses "
             << conversion.losses;
}

// The exported function.
inline Conversion Converted(CodeType from, std::string_view text, CodeType to,
                            int emptyFallback = 0) {
  const ExactCopy copy(text);
  CBuffer out("left over");
  CConversionReport report(text.size());
  const long status =
      ConvertToOtherCodeType2(from, copy.Data(), copy.Size(), to, out, emptyFallback, &report);
  return {std::string(out.Bytes()), status, Shown(report)};
}

// UTF-8 text as bytes of a code type; what that lacks is left out.
inline std::string Encoded(std::string_view utf8, CodeType to) {
  return Converted(CT_UTF8, utf8, to, 1).bytes;
}

inline std::string Decoded(CodeType from, std::string_view text) {
  return Converted(from, text, CT_UTF8).bytes;
}

// Arguments that are no text.
constexpr std::pair<const char*, int> kNoTexts[] = {{nullptr, 3}, {"abc", 0}, {"abc", -1}};

inline std::vector<CodeType> CodeTypesAndUnknown() {
  std::vector<CodeType> types(AllCodeTypes().begin(), AllCodeTypes().end());
  types.push_back(CT_UNKNOWN);
  return types;
}

// One text a script, of characters that every charset of the script has with one code; and
// characters that few charsets have, or twice, or only alike.
constexpr std::string_view kScripts[] = {
    "plain text, 100% (US-ASCII)\r\n",
    "日本語のテキスト、カタカナ。漢字",
    "Быстрая лиса и ёж",
    "Ελληνικό κείμενο",
    "Žluťoučký kůň",
    "Größe, où, señor, naïve",
    "Dünyanın İstanbul şehri ğ",
    "Ąžuolas, ēķģļņ",
    "한국어 텍스트",
    "简体中文文字",
    "繁體中文與字",
};
constexpr std::string_view kOddText =
    "～∥－―￣〜‖−—‾①㈱ⅰ∵纊¥\\é€ｶﾞ𠮷😀“’Ａ１가\u00A0\uE000\uF8F0\u0301\uFEFF";

}  // namespace lumr
