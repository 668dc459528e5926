#include "lumrmisc/mailtext/preflight.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/charset/japanese.h"
#include "lumrmisc/mailtext/headercoder_internal.h"
#include "lumrmisc/mailtext/offertable_internal.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

using preflight::OfferRow;

constexpr unsigned kJapanesePage = 932;
constexpr unsigned kChinesePage = 936;

constexpr auto kSortedOffers = [] {
  std::array<OfferRow, std::size(preflight::kOffers)> rows{};
  std::ranges::copy(preflight::kOffers, rows.begin());
  std::ranges::sort(rows, {}, &OfferRow::character);
  return rows;
}();

// The JIS names of cells that code page 932 has under another name: they mean the same.
constexpr std::u16string_view kJisNames = u"\u301C\u2016\u2212\u2014\u203E";

constexpr bool IsHalfKatakana(char16_t unit) {
  return unit >= 0xFF61 && unit <= 0xFF9F;
}
constexpr bool IsPrivateUse(char32_t character) {
  return (character >= 0xE000 && character <= 0xF8FF) || character >= 0xF0000;
}
constexpr bool IsKana(char16_t unit) {
  return unit >= 0x3041 && unit <= 0x30FF && unit != u'・' && unit != u'ー';
}
constexpr bool IsHangul(char16_t unit) {
  return (unit >= 0xAC00 && unit <= 0xD7A3) || (unit >= 0x1100 && unit <= 0x11FF);
}

// ---- Characters under a charset ----

// What there is to say of single characters under one charset.
class Checker {
 public:
  explicit Checker(CodeType codeType)
      : codeType_(codeType == CT_ASCII ? CT_ASCII : header::WordCodeType(codeType)),
        codePage_(CharSetCode2CodePage(codeType_)),
        isJapanese_(IsCodeTypeJapanese(codeType_) != 0) {}

  std::optional<PreflightKind> Check(char32_t character) const {
    if (character < 0x80) return {};
    if (IsPrivateUse(character)) return PreflightKind::kUserDefined;
    if (codeType_ == CT_UTF8) {
      const bool isHalfPair = character >= 0xD800 && character < 0xE000;
      return isHalfPair ? std::optional(PreflightKind::kNotEncodable) : std::nullopt;
    }
    if (codeType_ == CT_ASCII || character > 0xFFFF) return PreflightKind::kNotEncodable;
    const auto unit = static_cast<char16_t>(character);
    const int code = EncodeUnit(codePage_, unit, true);
    if (isJapanese_) return CheckJapanese(unit, code);
    return code < 0 ? std::optional(PreflightKind::kNotEncodable) : std::nullopt;
  }

  // The look-alike that the code page has for a character; empty when it has none.
  CStringW LookAlike(char16_t unit) const {
    const int code = codeType_ == CT_UTF8 ? -1 : EncodeUnit(codePage_, unit, false);
    if (code < 0) return {};
    const char bytes[2] = {static_cast<char>(code >> 8), static_cast<char>(code)};
    CBuffer wide;
    ConvertToOtherCodePage2(
        codePage_, code > 0xFF ? std::string_view(bytes, 2) : std::string_view(bytes + 1, 1), 1200,
        wide);
    return CStringW(wide.Units());
  }

 private:
  static std::optional<PreflightKind> CheckJapanese(char16_t unit, int code) {
    if (IsHalfKatakana(unit)) return PreflightKind::kHalfWidthKatakana;
    if (code < 0) {
      const bool isSame = kJisNames.find(unit) != kJisNames.npos;
      return isSame ? std::nullopt : std::optional(PreflightKind::kNotEncodable);
    }
    if (code < 0x100) return PreflightKind::kNotEncodable;
    const char bytes[2] = {static_cast<char>(code >> 8), static_cast<char>(code)};
    return IsMachineDependChar(bytes) ? std::optional(PreflightKind::kMachineDependent)
                                      : std::nullopt;
  }

  CodeType codeType_;
  unsigned codePage_;
  bool isJapanese_;
};

// ---- Offers ----

std::optional<CStringW> NumberOffer(char16_t unit) {
  for (const preflight::NumberRow& row : preflight::kNumbers) {
    if (unit < row.first || unit > row.last) continue;
    CStringW offer(row.before);
    for (const char digit : std::to_string(row.number + (unit - row.first))) {
      offer += static_cast<char16_t>(digit);
    }
    return offer += row.behind;
  }
  return {};
}

std::optional<CStringW> RunOffer(char16_t unit) {
  for (const preflight::RunRow& row : preflight::kRuns) {
    const auto index = static_cast<std::size_t>(unit - row.first);
    if (unit < row.first || index >= row.characters.size()) continue;
    return CStringW(row.before) + row.characters[index] + CStringW(row.behind);
  }
  return {};
}

// What stands for a character whatever the charset.
std::optional<CStringW> TableOffer(char16_t unit) {
  const auto row = std::ranges::lower_bound(kSortedOffers, unit, {}, &OfferRow::character);
  if (row != kSortedOffers.end() && row->character == unit) return CStringW(row->offer);
  if (auto offer = NumberOffer(unit)) return offer;
  return RunOffer(unit);
}

bool Passes(const Checker& checker, std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), [&](char16_t unit) { return !checker.Check(unit); });
}

// An offer under a charset. What stands for a character may need an offer itself; no row
// leads further than this.
std::optional<CStringW> OfferFor(const Checker& checker, std::u16string_view characters) {
  CStringW text(characters);
  KatakanaHanToZen(text);
  constexpr int kSteps = 3;
  for (int step = 0; step < kSteps; ++step) {
    CStringW next;
    for (const char16_t unit : text) {
      if (!checker.Check(unit)) {
        next += unit;
      } else if (const auto offer = TableOffer(unit)) {
        next += *offer;
      } else {
        const CStringW alike = checker.LookAlike(unit);
        if (alike.empty()) return {};
        next += alike;
      }
    }
    text = std::move(next);
    if (Passes(checker, text)) return text;
  }
  return {};
}

// ---- The walk ----

struct Character {
  char32_t value;
  std::size_t length;  // units: 2 for a pair, and for a half-width katakana and its mark
};

bool IsVoiced(char16_t kana, char16_t mark) {
  if (!IsHalfKatakana(kana) || mark < u'ﾞ' || mark > u'ﾟ') return false;
  CStringW joined = {kana, mark};
  KatakanaHanToZen(joined);
  return joined.size() == 1;
}

Character CharacterAt(std::u16string_view text, std::size_t pos) {
  const char16_t unit = text[pos];
  if (pos + 1 == text.size()) return {unit, 1};
  const char16_t next = text[pos + 1];
  if (unit >= 0xD800 && unit < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
    return {0x10000u + ((unit - 0xD800u) << 10) + (next - 0xDC00u), 2};
  }
  return {unit, IsVoiced(unit, next) ? std::size_t{2} : 1};
}

void AddFinding(PreflightFinding&& finding, std::vector<PreflightFinding>& findings) {
  if (!findings.empty()) {
    PreflightFinding& last = findings.back();
    if (last.kind == finding.kind && last.hasOffer == finding.hasOffer &&
        last.position + last.length == finding.position) {
      last.length += finding.length;
      last.offer += finding.offer;
      return;
    }
  }
  findings.push_back(std::move(finding));
}

// ---- Charsets ----

enum class Needs { kNothing, kHangul, kChinese };

struct Candidate {
  CodeType codeType;
  Needs needs;
};
constexpr Candidate kCandidates[] = {
    {CT_ASCII, Needs::kNothing},     {CT_JIS, Needs::kNothing},
    {CT_ISO8859_1, Needs::kNothing}, {CT_ISO8859_2, Needs::kNothing},
    {CT_ISO8859_4, Needs::kNothing}, {CT_ISO8859_5, Needs::kNothing},
    {CT_ISO8859_7, Needs::kNothing}, {CT_ISO8859_9, Needs::kNothing},
    {CT_KSC5601, Needs::kHangul},    {CT_GB2312, Needs::kChinese},
    {CT_BIG5, Needs::kChinese},
};

bool Meets(Needs needs, std::u16string_view text) {
  if (needs == Needs::kHangul) return std::any_of(text.begin(), text.end(), IsHangul);
  if (needs == Needs::kNothing) return true;
  return std::none_of(text.begin(), text.end(), IsKana) &&
         std::any_of(text.begin(), text.end(), [](char16_t unit) {
           return IsUnitIdeograph(unit) && EncodeUnit(kJapanesePage, unit, true) < 0;
         });
}

// Code page 936 has more than GB 2312, the set that the label names.
bool IsInSet(CodeType codeType, char32_t character) {
  if (codeType != CT_GB2312 || character < 0x80) return true;
  const int code = EncodeUnit(kChinesePage, static_cast<char16_t>(character), true);
  return (code >> 8) >= 0xA1 && (code >> 8) <= 0xF7 && (code & 0xFF) >= 0xA1;
}

bool Carries(CodeType codeType, std::u16string_view text) {
  const Checker checker(codeType);
  for (std::size_t pos = 0; pos < text.size();) {
    const Character character = CharacterAt(text, pos);
    // The user-defined area is in none of them: UTF-8 at least keeps it.
    if (checker.Check(character.value) || !IsInSet(codeType, character.value)) return false;
    pos += character.length;
  }
  return true;
}

}  // namespace

void CheckBeforeSending(std::u16string_view text, CodeType codeType,
                        std::vector<PreflightFinding>& findings) {
  findings.clear();
  const Checker checker(codeType);
  for (std::size_t pos = 0; pos < text.size();) {
    const Character character = CharacterAt(text, pos);
    if (const auto kind = checker.Check(character.value)) {
      auto offer = OfferFor(checker, text.substr(pos, character.length));
      const bool hasOffer = offer.has_value();
      AddFinding(
          {*kind, pos, character.length, hasOffer, hasOffer ? *std::move(offer) : CStringW()},
          findings);
    }
    pos += character.length;
  }
}

CStringW TextWithOffers(std::u16string_view text, const std::vector<PreflightFinding>& findings) {
  CStringW out;
  std::size_t done = 0;
  for (const PreflightFinding& finding : findings) {
    if (!finding.hasOffer || finding.position < done ||
        finding.position + finding.length > text.size()) {
      continue;
    }
    out.append(text.substr(done, finding.position - done)).append(finding.offer);
    done = finding.position + finding.length;
  }
  return out.append(text.substr(done));
}

CodeType NarrowestCodeType(std::u16string_view text) {
  for (const Candidate& candidate : kCandidates) {
    if (Carries(candidate.codeType, text) && Meets(candidate.needs, text)) {
      return candidate.codeType;
    }
  }
  return CT_UTF8;
}

}  // namespace lumr
