#include <cstddef>
#include <numeric>
#include <string_view>

#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/search/characterfold_internal.h"

namespace lumr {
namespace {

constexpr std::size_t kCodes = 0x10000;
constexpr unsigned kShiftJis = 932;

constexpr char16_t kFirstHalf = 0xFF61;
constexpr std::u16string_view kFullOfHalf =
    u"。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソ"
    u"タチツテトナニヌネノハヒフヘホマミムメモヤユヨラリルレロワン゛゜";

// Half-width symbols whose full-width partner in Japanese text is not their own full-width form.
struct SymbolPair {
  char16_t full;
  char16_t half;
};
constexpr SymbolPair kSymbols[] = {
    {u'\u3000', u' '}, {u'\u201D', u'"'}, {u'\u2019', u'\''}, {u'\uFFE5', u'\\'}, {u'\uFFE3', u'~'},
};

// Katakana that take a voiced and a semi-voiced mark. The voiced form is the next character, the
// semi-voiced one the next but one; that of u stands apart.
constexpr std::u16string_view kVoiced = u"カキクケコサシスセソタチツテトハヒフヘホ";
constexpr std::u16string_view kSemiVoiced = u"ハヒフヘホ";
constexpr char16_t kVoicedMark = 0xFF9E;
constexpr char16_t kSemiVoicedMark = 0xFF9F;

bool IsHalfKana(char16_t unit) {
  return unit >= kFirstHalf && unit < kFirstHalf + kFullOfHalf.size();
}

char16_t FoldWidth(char16_t unit) {
  if (unit >= 0xFF01 && unit <= 0xFF5E) return static_cast<char16_t>(unit - 0xFF01 + u'!');
  if (IsHalfKana(unit)) return kFullOfHalf[unit - kFirstHalf];
  for (const SymbolPair& pair : kSymbols) {
    if (unit == pair.full) return pair.half;
  }
  return unit;
}

// Hiragana, and its iteration marks, to katakana.
char16_t FoldKanaKind(char16_t unit) {
  const bool hiragana = (unit >= 0x3041 && unit <= 0x3096) || unit == 0x309D || unit == 0x309E;
  return hiragana ? static_cast<char16_t>(unit + 0x60) : unit;
}

char16_t CombineUnits(char16_t unit, char16_t mark) {
  if (!IsHalfKana(unit)) return 0;
  const char16_t full = kFullOfHalf[unit - kFirstHalf];
  if (mark == kVoicedMark && full == u'ウ') return u'ヴ';
  if (mark == kVoicedMark && kVoiced.find(full) != kVoiced.npos) {
    return static_cast<char16_t>(full + 1);
  }
  if (mark == kSemiVoicedMark && kSemiVoiced.find(full) != kSemiVoiced.npos) {
    return static_cast<char16_t>(full + 2);
  }
  return 0;
}

}  // namespace

CharacterFold::CharacterFold(const MbcsPage* page, bool width, bool kanaKind)
    : page_(page), width_(width) {
  if (!width && !kanaKind) return;
  auto codes = std::make_shared<Table>(kCodes);
  std::iota(codes->begin(), codes->end(), std::uint16_t{0});
  for (unsigned unit = 0; unit < kCodes; ++unit) {
    auto folded = static_cast<char16_t>(unit);
    if (width) folded = FoldWidth(folded);
    if (kanaKind) folded = FoldKanaKind(folded);
    if (folded == unit) continue;
    const int from = CodeOf(static_cast<char16_t>(unit));
    const int to = CodeOf(folded);
    if (from >= 0 && to >= 0)
      (*codes)[static_cast<std::size_t>(from)] = static_cast<std::uint16_t>(to);
  }
  codes_ = std::move(codes);
}

int CharacterFold::CodeOf(char16_t unit) const {
  return page_ == nullptr ? unit : EncodeUnit(page_->CodePage(), unit, true);
}

std::uint32_t CharacterFold::Combine(std::uint32_t code, std::uint32_t next) const {
  if (!width_ || next > 0xFFFF) return 0;
  if (page_ == nullptr) {
    return CombineUnits(static_cast<char16_t>(code), static_cast<char16_t>(next));
  }
  if (page_->CodePage() != kShiftJis || code > 0xFF || next > 0xFF) return 0;
  const auto unitOf = [](std::uint32_t byte) {
    return static_cast<char16_t>(byte + kFirstHalf - 0xA1);
  };
  const char16_t both = CombineUnits(unitOf(code), unitOf(next));
  return both == 0 ? 0 : static_cast<std::uint32_t>(CodeOf(both));
}

CharacterFold::Ranges CharacterFold::FoldRanges(const Ranges& ranges) const {
  std::vector<bool> members(kCodes);
  for (const auto& [low, high] : ranges) {
    for (std::uint32_t code = low; code <= high && code < kCodes; ++code)
      members[Fold(code)] = true;
  }
  Ranges folded;
  for (std::uint32_t code = 0; code < kCodes; ++code) {
    if (!members[code]) continue;
    if (!folded.empty() && folded.back().second + 1 == code) {
      folded.back().second = code;
    } else {
      folded.emplace_back(code, code);
    }
  }
  return folded;
}

}  // namespace lumr
