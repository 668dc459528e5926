// The look at a text before it is sent: what its charset cannot carry, what other systems do not
// show, what customarily stands for it, and which charset carries all of it.
//
// Text is UTF-16; positions and lengths are units. Linear in the text.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

enum class PreflightKind {
  // The charset has no such character; a look-alike of its code page does not count, except for
  // the JIS names of characters that the Japanese code page has under another name (wave dash).
  kNotEncodable,
  // A vendor character of Shift_JIS (IsMachineDependChar), under a Japanese charset. Whether
  // ISO-2022-JP can carry it or not, others see something else.
  kMachineDependent,
  // Under a Japanese charset: mail has no half-width katakana (RFC 1468).
  kHalfWidthKatakana,
  // Of the user-defined (private use) area, under any charset: only its user knows it.
  kUserDefined,
};

struct PreflightFinding {
  PreflightKind kind;
  std::size_t position;
  std::size_t length;
  bool hasOffer;   // whether there is a customary way to write it in the charset
  CStringW offer;  // that; empty where the characters are best left out

  bool operator==(const PreflightFinding&) const = default;
};

// What is to be said of a text that is sent in codeType (CT_UNKNOWN: UTF-8), in the order of the
// text; findings is replaced. Characters side by side of one kind, all with an offer or all
// without, are one finding. Every offer passes this check itself.
void CheckBeforeSending(std::u16string_view text, CodeType codeType,
                        std::vector<PreflightFinding>& findings);

// The text with the offers of its findings taken.
CStringW TextWithOffers(std::u16string_view text, const std::vector<PreflightFinding>& findings);

// The narrowest charset under which CheckBeforeSending has nothing to say: US-ASCII, ISO-2022-JP,
// a Western, Central European, Baltic, Cyrillic, Greek or Turkish set of ISO 8859, KS_C_5601-1987
// for a text with Hangul, GB2312 or Big5 for one without kana but with ideographs that Japanese
// does not have; else UTF-8, which at least keeps the user-defined area.
CodeType NarrowestCodeType(std::u16string_view text);

}  // namespace lumr
