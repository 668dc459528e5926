#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "lumrmisc/charset/japanese.h"
#include "lumrmisc/charset/japanese_internal.h"
#include "lumrmisc/charset/japanese_pairs_internal.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {
namespace {

constexpr char16_t kFirstHalf = 0xFF61;  // the character of byte A1
constexpr int kHalfCount = 63;
constexpr int kVoicedMark = 0xFF9E - kFirstHalf;
constexpr int kSemiVoicedMark = 0xFF9F - kFirstHalf;

constexpr std::u16string_view kFullWidth =
    u"。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソ"
    u"タチツテトナニヌネノハヒフヘホマミムメモヤユヨラリルレロワン゛゜";
static_assert(kFullWidth.size() == kHalfCount);

// Half-width kana from a first one on, with a mark behind each of them.
struct MarkedRow {
  char16_t first;
  int mark;
  std::u16string_view full;
};

constexpr MarkedRow kMarked[] = {
    {u'ｶ', kVoicedMark, u"ガギグゲゴザジズゼゾダヂヅデド"},
    {u'ﾊ', kVoicedMark, u"バビブベボ"},
    {u'ﾊ', kSemiVoicedMark, u"パピプペポ"},
    {u'ｳ', kVoicedMark, u"ヴ"},
};

// Full-width characters by the index of the half-width one: alone, and with a mark (0: none).
struct FullWidthTable {
  std::array<char16_t, kHalfCount> single{};
  std::array<char16_t, kHalfCount> voiced{};
  std::array<char16_t, kHalfCount> semiVoiced{};

  constexpr char16_t Marked(int kana, int mark) const {
    if (mark == kVoicedMark) return voiced[static_cast<std::size_t>(kana)];
    if (mark == kSemiVoicedMark) return semiVoiced[static_cast<std::size_t>(kana)];
    return 0;
  }
};

constexpr FullWidthTable kTable = [] {
  FullWidthTable table;
  kFullWidth.copy(table.single.data(), kHalfCount);
  for (const MarkedRow& row : kMarked) {
    auto& target = row.mark == kVoicedMark ? table.voiced : table.semiVoiced;
    row.full.copy(target.data() + (row.first - kFirstHalf), row.full.size());
  }
  return table;
}();

// The cells of JIS X 0208 that punctuation of kFullWidth has; its kana are row 5 in order.
constexpr std::pair<char16_t, unsigned> kPunctuation[] = {
    {u'、', 0x2122}, {u'。', 0x2123}, {u'・', 0x2126}, {u'゛', 0x212B},
    {u'゜', 0x212C}, {u'ー', 0x213C}, {u'「', 0x2156}, {u'」', 0x2157},
};

constexpr BytePair SJisOf(char16_t unit) {
  for (const auto& [character, cell] : kPunctuation) {
    if (character == unit) return JisToSJis(MakePair(cell / 256, cell % 256));
  }
  return JisToSJis(MakePair(0x25, 0x21u + unit - u'ァ'));
}

// What differs between Shift_JIS bytes and UTF-16 units: Index gives the number of a half-width
// katakana or -1, Skip the length of a character, MostLength a bound on the length of a result;
// Put writes a full-width character.
struct NarrowRules {
  using Text = CStringA;
  const MbcsPage& page;

  static int Index(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return IsKanaByte(value) ? value - 0xA1 : -1;
  }
  std::size_t Skip(std::string_view text, std::size_t pos) const {
    return page.CharLength(text, pos);
  }
  // Trail bytes that look like half-width katakana are counted with them.
  static std::size_t MostLength(std::string_view text) {
    const auto isHalf = [](char byte) { return Index(byte) >= 0; };
    return text.size() + static_cast<std::size_t>(std::ranges::count_if(text, isHalf));
  }
  static void Put(CStringA& out, char16_t unit) {
    const BytePair pair = SJisOf(unit);
    out += static_cast<char>(pair.first);
    out += static_cast<char>(pair.second);
  }
};

struct WideRules {
  using Text = CStringW;

  static int Index(char16_t unit) {
    return unit >= kFirstHalf && unit < kFirstHalf + kHalfCount ? unit - kFirstHalf : -1;
  }
  static std::size_t Skip(std::u16string_view, std::size_t) { return 1; }
  static std::size_t MostLength(std::u16string_view text) { return text.size(); }
  static void Put(CStringW& out, char16_t unit) { out += unit; }
};

// The position of the first half-width katakana at or after pos; npos when there is none.
template <typename Rules, typename View>
std::size_t FindHalf(const Rules& rules, View text, std::size_t pos) {
  while (pos < text.size()) {
    const std::size_t length = rules.Skip(text, pos);
    if (length == 1 && rules.Index(text[pos]) >= 0) return pos;
    pos += length;
  }
  return View::npos;
}

// Writes text with full-width katakana to out; false, with out untouched, when there is nothing
// to replace.
template <typename Rules, typename View>
bool MakeFullWidth(const Rules& rules, View text, typename Rules::Text& out) {
  std::size_t pos = FindHalf(rules, text, 0);
  if (pos == View::npos) return false;
  out.reserve(rules.MostLength(text));
  std::size_t done = 0;
  for (; pos != View::npos; pos = FindHalf(rules, text, done)) {
    out.append(text.substr(done, pos - done));
    const int kana = Rules::Index(text[pos]);
    const int mark = pos + 1 < text.size() ? Rules::Index(text[pos + 1]) : -1;
    const char16_t marked = kTable.Marked(kana, mark);
    Rules::Put(out, marked != 0 ? marked : kTable.single[static_cast<std::size_t>(kana)]);
    done = pos + (marked != 0 ? 2 : 1);
  }
  out.append(text.substr(done));
  return true;
}

}  // namespace

int KatakanaHanToZen(CStringA& text) {
  CStringA full;
  if (!MakeFullWidth(NarrowRules{CurrentMbcsPage()}, std::string_view(text), full)) return 0;
  text = std::move(full);
  return 1;
}

int KatakanaHanToZen(CStringW& text) {
  CStringW full;
  if (!MakeFullWidth(WideRules(), std::u16string_view(text), full)) return 0;
  text = std::move(full);
  return 1;
}

int KatakanaHanToZen(CBuffer& text) {
  CStringA full;
  if (!MakeFullWidth(NarrowRules{CurrentMbcsPage()}, text.Bytes(), full)) return 0;
  text = full;
  return 1;
}

int IsHankakuKatakana(const char* p) {
  return p != nullptr && NarrowRules::Index(*p) >= 0;
}

int FindHankakuKatakana(const char* text, int len) {
  const std::size_t pos = FindHalf(NarrowRules{CurrentMbcsPage()}, JapaneseText(text, len), 0);
  return pos == std::string_view::npos ? -1 : static_cast<int>(pos);
}

int GetHankakuKatakanaLen(const char* text, int len) {
  const std::string_view view = JapaneseText(text, len);
  const auto isOther = [](char byte) { return NarrowRules::Index(byte) < 0; };
  return static_cast<int>(std::ranges::find_if(view, isOther) - view.begin());
}

}  // namespace lumr
