#include "lumrmisc/search/equivalence_internal.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "lumrmisc/platform/codepage.h"

namespace lumr {

namespace {

// The forms of one character, 0 where it has none: half-width large and small, full-width (of kana
// the katakana) large and small, hiragana large and small. Capitals are large.
struct EquivalenceRow {
  char16_t forms[6] = {};
  std::uint8_t takes = 0;  // the marks that the kana of the row takes
};
constexpr std::uint8_t kVoiced = 1;
constexpr std::uint8_t kBoth = 3;  // voiced and semi-voiced

constexpr EquivalenceRow kRows[] = {
    // Latin letters.
    {{u'A', u'a', u'Ａ', u'ａ'}},
    {{u'B', u'b', u'Ｂ', u'ｂ'}},
    {{u'C', u'c', u'Ｃ', u'ｃ'}},
    {{u'D', u'd', u'Ｄ', u'ｄ'}},
    {{u'E', u'e', u'Ｅ', u'ｅ'}},
    {{u'F', u'f', u'Ｆ', u'ｆ'}},
    {{u'G', u'g', u'Ｇ', u'ｇ'}},
    {{u'H', u'h', u'Ｈ', u'ｈ'}},
    {{u'I', u'i', u'Ｉ', u'ｉ'}},
    {{u'J', u'j', u'Ｊ', u'ｊ'}},
    {{u'K', u'k', u'Ｋ', u'ｋ'}},
    {{u'L', u'l', u'Ｌ', u'ｌ'}},
    {{u'M', u'm', u'Ｍ', u'ｍ'}},
    {{u'N', u'n', u'Ｎ', u'ｎ'}},
    {{u'O', u'o', u'Ｏ', u'ｏ'}},
    {{u'P', u'p', u'Ｐ', u'ｐ'}},
    {{u'Q', u'q', u'Ｑ', u'ｑ'}},
    {{u'R', u'r', u'Ｒ', u'ｒ'}},
    {{u'S', u's', u'Ｓ', u'ｓ'}},
    {{u'T', u't', u'Ｔ', u'ｔ'}},
    {{u'U', u'u', u'Ｕ', u'ｕ'}},
    {{u'V', u'v', u'Ｖ', u'ｖ'}},
    {{u'W', u'w', u'Ｗ', u'ｗ'}},
    {{u'X', u'x', u'Ｘ', u'ｘ'}},
    {{u'Y', u'y', u'Ｙ', u'ｙ'}},
    {{u'Z', u'z', u'Ｚ', u'ｚ'}},
    // Digits.
    {{u'0', 0, u'０'}},
    {{u'1', 0, u'１'}},
    {{u'2', 0, u'２'}},
    {{u'3', 0, u'３'}},
    {{u'4', 0, u'４'}},
    {{u'5', 0, u'５'}},
    {{u'6', 0, u'６'}},
    {{u'7', 0, u'７'}},
    {{u'8', 0, u'８'}},
    {{u'9', 0, u'９'}},
    // Symbols. The quotation marks, the backslash and the tilde have the partners that Japanese
    // fonts give them, not the full-width forms of Unicode.
    {{u' ', 0, u'　'}},
    {{u'!', 0, u'！'}},
    {{u'"', 0, u'”'}},
    {{u'#', 0, u'＃'}},
    {{u'$', 0, u'＄'}},
    {{u'%', 0, u'％'}},
    {{u'&', 0, u'＆'}},
    {{u'\'', 0, u'’'}},
    {{u'(', 0, u'（'}},
    {{u')', 0, u'）'}},
    {{u'*', 0, u'＊'}},
    {{u'+', 0, u'＋'}},
    {{u',', 0, u'，'}},
    {{u'-', 0, u'－'}},
    {{u'.', 0, u'．'}},
    {{u'/', 0, u'／'}},
    {{u':', 0, u'：'}},
    {{u';', 0, u'；'}},
    {{u'<', 0, u'＜'}},
    {{u'=', 0, u'＝'}},
    {{u'>', 0, u'＞'}},
    {{u'?', 0, u'？'}},
    {{u'@', 0, u'＠'}},
    {{u'[', 0, u'［'}},
    {{u'\\', 0, u'￥'}},
    {{u']', 0, u'］'}},
    {{u'^', 0, u'＾'}},
    {{u'_', 0, u'＿'}},
    {{u'`', 0, u'｀'}},
    {{u'{', 0, u'｛'}},
    {{u'|', 0, u'｜'}},
    {{u'}', 0, u'｝'}},
    {{u'~', 0, u'￣'}},
    // Kana.
    {{u'ｱ', u'ｧ', u'ア', u'ァ', u'あ', u'ぁ'}},
    {{u'ｲ', u'ｨ', u'イ', u'ィ', u'い', u'ぃ'}},
    {{u'ｳ', u'ｩ', u'ウ', u'ゥ', u'う', u'ぅ'}, kVoiced},
    {{u'ｴ', u'ｪ', u'エ', u'ェ', u'え', u'ぇ'}},
    {{u'ｵ', u'ｫ', u'オ', u'ォ', u'お', u'ぉ'}},
    {{u'ｶ', 0, u'カ', 0, u'か'}, kVoiced},
    {{u'ｷ', 0, u'キ', 0, u'き'}, kVoiced},
    {{u'ｸ', 0, u'ク', 0, u'く'}, kVoiced},
    {{u'ｹ', 0, u'ケ', 0, u'け'}, kVoiced},
    {{u'ｺ', 0, u'コ', 0, u'こ'}, kVoiced},
    {{u'ｻ', 0, u'サ', 0, u'さ'}, kVoiced},
    {{u'ｼ', 0, u'シ', 0, u'し'}, kVoiced},
    {{u'ｽ', 0, u'ス', 0, u'す'}, kVoiced},
    {{u'ｾ', 0, u'セ', 0, u'せ'}, kVoiced},
    {{u'ｿ', 0, u'ソ', 0, u'そ'}, kVoiced},
    {{u'ﾀ', 0, u'タ', 0, u'た'}, kVoiced},
    {{u'ﾁ', 0, u'チ', 0, u'ち'}, kVoiced},
    {{u'ﾂ', u'ｯ', u'ツ', u'ッ', u'つ', u'っ'}, kVoiced},
    {{u'ﾃ', 0, u'テ', 0, u'て'}, kVoiced},
    {{u'ﾄ', 0, u'ト', 0, u'と'}, kVoiced},
    {{u'ﾅ', 0, u'ナ', 0, u'な'}},
    {{u'ﾆ', 0, u'ニ', 0, u'に'}},
    {{u'ﾇ', 0, u'ヌ', 0, u'ぬ'}},
    {{u'ﾈ', 0, u'ネ', 0, u'ね'}},
    {{u'ﾉ', 0, u'ノ', 0, u'の'}},
    {{u'ﾊ', 0, u'ハ', 0, u'は'}, kBoth},
    {{u'ﾋ', 0, u'ヒ', 0, u'ひ'}, kBoth},
    {{u'ﾌ', 0, u'フ', 0, u'ふ'}, kBoth},
    {{u'ﾍ', 0, u'ヘ', 0, u'へ'}, kBoth},
    {{u'ﾎ', 0, u'ホ', 0, u'ほ'}, kBoth},
    {{u'ﾏ', 0, u'マ', 0, u'ま'}},
    {{u'ﾐ', 0, u'ミ', 0, u'み'}},
    {{u'ﾑ', 0, u'ム', 0, u'む'}},
    {{u'ﾒ', 0, u'メ', 0, u'め'}},
    {{u'ﾓ', 0, u'モ', 0, u'も'}},
    {{u'ﾔ', u'ｬ', u'ヤ', u'ャ', u'や', u'ゃ'}},
    {{u'ﾕ', u'ｭ', u'ユ', u'ュ', u'ゆ', u'ゅ'}},
    {{u'ﾖ', u'ｮ', u'ヨ', u'ョ', u'よ', u'ょ'}},
    {{u'ﾗ', 0, u'ラ', 0, u'ら'}},
    {{u'ﾘ', 0, u'リ', 0, u'り'}},
    {{u'ﾙ', 0, u'ル', 0, u'る'}},
    {{u'ﾚ', 0, u'レ', 0, u'れ'}},
    {{u'ﾛ', 0, u'ロ', 0, u'ろ'}},
    {{u'ﾜ', 0, u'ワ', u'ヮ', u'わ', u'ゎ'}},
    {{0, 0, u'ヰ', 0, u'ゐ'}},
    {{0, 0, u'ヱ', 0, u'ゑ'}},
    {{u'ｦ', 0, u'ヲ', 0, u'を'}},
    {{u'ﾝ', 0, u'ン', 0, u'ん'}},
    // Marks.
    {{u'ﾞ', 0, u'゛'}},
    {{u'ﾟ', 0, u'゜'}},
    {{u'｡', 0, u'。'}},
    {{u'｢', 0, u'「'}},
    {{u'｣', 0, u'」'}},
    {{u'､', 0, u'、'}},
    {{u'･', 0, u'・'}},
    {{u'ｰ', 0, u'ー'}},
};

// Kana with the voicing built in, each before the kana that it is read as.
constexpr std::u16string_view kVoicedPairs =
    u"ガカギキグクゲケゴコザサジシズスゼセゾソダタヂチヅツデテドトバハビヒブフベヘボホヴウ"
    u"がかぎきぐくげけごこざさじしずすぜせぞそだたぢちづつでてどとばはびひぶふべへぼほ";
constexpr std::u16string_view kSemiVoicedPairs = u"パハピヒプフペヘポホぱはぴひぷふぺへぽほ";

// The voicing codes that the marks give, and that built-in voicing has.
constexpr std::uint32_t kFullWidthMark = 0x10;
constexpr std::uint32_t kVoicedCode = 1;
constexpr std::uint32_t kSemiVoicedCode = 2;

struct MarkRow {
  char16_t character;
  std::uint32_t gives;
};
constexpr MarkRow kMarks[] = {
    {u'ﾞ', kVoicedCode},
    {u'ﾟ', kSemiVoicedCode},
    {u'゛', kVoicedCode | kFullWidthMark},
    {u'゜', kSemiVoicedCode | kFullWidthMark},
};

// By the columns of a row.
constexpr std::uint32_t kFormCodes[] = {0x111, 0x112, 0x121, 0x122, 0x221, 0x222};

constexpr unsigned kShiftJis = 932;

char16_t SameCode(char16_t character) {
  return character;
}

char16_t ShiftJisCode(char16_t character) {
  return static_cast<char16_t>(EncodeUnit(kShiftJis, character, true));
}

}  // namespace

const EquivalenceTable& EquivalenceTable::Wide() {
  static const EquivalenceTable table(&SameCode);
  return table;
}

const EquivalenceTable& EquivalenceTable::Narrow() {
  static const EquivalenceTable table(&ShiftJisCode);
  return table;
}

EquivalenceTable::EquivalenceTable(char16_t (*codeOf)(char16_t character)) {
  static_assert(std::size(kRows) == kRowCount);
  std::uint32_t number = 0;
  for (const EquivalenceRow& row : kRows) {
    const std::uint32_t common =
        ++number << unitkey::kRowShift | row.takes * (1u << unitkey::kTakesShift);
    for (std::size_t column = 0; column < std::size(row.forms); ++column) {
      if (row.forms[column] != 0) Put(codeOf(row.forms[column]), common | kFormCodes[column]);
    }
  }
  PutBuiltIn(kVoicedPairs, kVoicedCode, codeOf);
  PutBuiltIn(kSemiVoicedPairs, kSemiVoicedCode, codeOf);
  for (const MarkRow& mark : kMarks) {
    const char16_t code = codeOf(mark.character);
    blocks_[blockOf_[code >> 8]][code & 0xFF] |= mark.gives << unitkey::kGivesShift;
  }
}

void EquivalenceTable::Put(char16_t code, std::uint32_t value) {
  std::uint8_t& block = blockOf_[code >> 8];
  if (block == 0) block = static_cast<std::uint8_t>(blockCount_++);
  blocks_[block][code & 0xFF] = value;
  auto& members = members_[((value & unitkey::kRow) >> unitkey::kRowShift) - 1];
  *std::find(std::begin(members), std::end(members), 0) = code;
}

// What is voiced takes no further mark.
void EquivalenceTable::PutBuiltIn(std::u16string_view pairs, std::uint32_t voicing,
                                  char16_t (*codeOf)(char16_t character)) {
  for (std::size_t i = 0; i < pairs.size(); i += 2) {
    const std::uint32_t base = At(codeOf(pairs[i + 1])) & unitkey::kAll;
    Put(codeOf(pairs[i]), base | (voicing | kFullWidthMark) << unitkey::kVoicingShift);
  }
}

std::size_t EquivalenceTable::BeginsOf(std::uint32_t key, std::uint32_t mask,
                                       char16_t* codes) const {
  if ((key & unitkey::kNoRow) != 0) {
    codes[0] = static_cast<char16_t>(key);
    return 1;
  }
  std::size_t count = 0;
  for (const char16_t code : members_[((key & unitkey::kRow) >> unitkey::kRowShift) - 1]) {
    if (code == 0) break;
    const std::uint32_t entry = At(code);
    const std::uint32_t takes = entry >> unitkey::kTakesShift & 3;
    const auto reads = [&](std::uint32_t voicing) {
      return ((entry | voicing << unitkey::kVoicingShift) & mask) == key;
    };
    const bool isBegin =
        reads(0) || std::any_of(std::begin(kMarks), std::end(kMarks), [&](const MarkRow& mark) {
          return (mark.gives & takes) != 0 && reads(mark.gives);
        });
    if (isBegin) codes[count++] = code;
  }
  return count;
}

}  // namespace lumr
