#include "lumrmisc/charset/mailcharset.h"

#include <algorithm>
#include <array>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/charset/detect.h"
#include "lumrmisc/charset/detect_internal.h"
#include "lumrmisc/charset/transcoder_internal.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {

namespace {

// ---- Labels ------------------------------------------------------------------------------------

// How the bytes under a label relate to the code type of its row.
enum class LabelKind {
  kSame,
  kNear,       // but for a few characters the same
  kUtf16Open,  // without a mark of either byte order
  kUtf16,      // without a mark little-endian
  kUtf16Big,
};

// A charset as mail names it, by the names of CharSetName2CodeExact, registered aliases, those of
// the WHATWG encoding standard, and what mailers make up.
struct LabelRow {
  CodeType codeType;
  std::string_view names;  // in lower case, a space between two
  LabelKind kind = LabelKind::kSame;
  std::string_view differing = {};  // of kNear: bytes that are other characters, not unknown ones
};
constexpr LabelRow kLabelRows[] = {
    {CT_ASCII,
     "us-ascii ascii us csascii usascii ansi_x3.4-1968 ansi_x3.4-1986 iso-ir-6 iso646-us"
     " iso_646.irv:1991 646 ibm367 cp367 cp20127 7bit"},
    {CT_UTF8,
     "utf-8 utf8 csutf8 unicode-1-1-utf-8 unicode11utf8 unicode20utf8 x-unicode20utf8 x-utf-8 utf_8"
     " utf-8n utf8mb4 cp65001"},
    {CT_UTF7,
     "utf-7 utf7 csutf7 unicode-1-1-utf-7 csunicode11utf7 unicode-2-0-utf-7 x-unicode-2-0-utf-7"
     " cp65000"},
    {CT_JIS,
     "iso-2022-jp csiso2022jp iso2022jp iso2022-jp iso-2022jp iso_2022-jp x-iso-2022-jp"
     " iso-2022-jp-ms cp50220 cp50221 cp50222 jis jis7 jis_encoding csjisencoding junet"},
    {CT_EUC,
     "euc-jp cseucpkdfmtjapanese extended_unix_code_packed_format_for_japanese x-euc-jp x-eucjp"
     " x-euc euc eucjp euc_jp ujis eucjp-ms euc-jp-ms eucjpms eucjp-win cp51932 cp20932"},
    {CT_SJIS,
     "shift_jis shift-jis x-sjis csshiftjis sjis shiftjis x-shift-jis x-shift_jis ms_kanji mskanji"
     " ms932 windows-31j cswindows31j windows-932 cp932 x-ms-cp932 sjis-win x-sjis-win pck"},
    {CT_GB2312,
     "gb2312 csgb2312 csiso58gb231280 iso-ir-58 chinese gb_2312 gb_2312-80 gb2312-80 gbk x-gbk"
     " csgbk ms936 windows-936 cp936 euc-cn euccn x-euc-cn cn-gb"},
    {CT_BIG5, "big5 csbig5 cn-big5 x-big5 x-x-big5 big-5 big5-eten ms950 windows-950 cp950"},
    {CT_KSC5601,
     "ks_c_5601-1987 ks_c_5601 csksc56011987 iso-ir-149 korean ks_c_5601-1989 ks_c_5601_1987"
     " ks_c-5601-1987 ksc5601 ksc_5601 ksc-5601 ms949 windows-949 x-windows-949 cp949 uhc x-uhc"},
    {CT_EUCKR, "euc-kr cseuckr euckr euc_kr x-euc-kr cp51949"},
    {CT_KOI8R, "koi8-r cskoi8r koi koi8 koi8r koi8_r cp20866"},
    {CT_ISO8859_1,
     "iso-8859-1 csisolatin1 latin1 latin-1 iso-latin-1 l1 iso-ir-100 iso8859-1 iso88591 iso8859_1"
     " iso_8859-1 iso_8859-1:1987 8859-1 ibm819 cp819 cp28591"},
    {CT_ISO8859_2,
     "iso-8859-2 csisolatin2 latin2 latin-2 l2 iso-ir-101 iso8859-2 iso88592 iso8859_2 iso_8859-2"
     " iso_8859-2:1987 cp28592"},
    {CT_ISO8859_4,
     "iso-8859-4 csisolatin4 latin4 latin-4 l4 iso-ir-110 iso8859-4 iso88594 iso8859_4 iso_8859-4"
     " iso_8859-4:1988 cp28594"},
    {CT_ISO8859_5,
     "iso-8859-5 csisolatincyrillic cyrillic iso-ir-144 iso8859-5 iso88595 iso8859_5 iso_8859-5"
     " iso_8859-5:1988 cp28595"},
    {CT_ISO8859_7,
     "iso-8859-7 csisolatingreek greek greek8 ecma-118 elot_928 sun_eu_greek iso-ir-126 iso8859-7"
     " iso88597 iso8859_7 iso_8859-7 iso_8859-7:1987 cp28597"},
    {CT_ISO8859_9,
     "iso-8859-9 csisolatin5 latin5 latin-5 l5 iso-ir-148 iso8859-9 iso88599 iso8859_9 iso_8859-9"
     " iso_8859-9:1989 cp28599"},
    {CT_WIN1250, "windows-1250 cswindows1250 windows1250 cp1250 x-cp1250 ms-ee"},
    {CT_WIN1251, "windows-1251 cswindows1251 windows1251 cp1251 x-cp1251 win-1251 ms-cyrl"},
    {CT_WIN1252, "windows-1252 cswindows1252 windows1252 cp1252 x-cp1252 ms-ansi x-ansi"},
    {CT_WIN1253, "windows-1253 cswindows1253 windows1253 cp1253 x-cp1253 ms-greek"},
    {CT_WIN1254, "windows-1254 cswindows1254 windows1254 cp1254 x-cp1254 ms-turk"},
    {CT_WIN1257, "windows-1257 cswindows1257 windows1257 cp1257 x-cp1257 winbaltrim"},
    {CT_UNICODE, "unicode utf-16 utf16", LabelKind::kUtf16Open},
    {CT_UNICODE,
     "utf-16le csutf16le utf16le unicodefeff cp1200 ucs-2le csutf16 csunicode ucs-2 ucs2"
     " iso-10646-ucs-2",
     LabelKind::kUtf16},
    {CT_UNICODE, "utf-16be csutf16be utf16be unicodefffe cp1201 ucs-2be", LabelKind::kUtf16Big},
    {CT_ISO8859_1,
     "iso-8859-15 iso8859-15 iso885915 iso_8859-15 csiso885915 csisolatin9 latin-9 latin9 l9",
     LabelKind::kNear, "\xA4\xA6\xA8\xB4\xB8\xBC\xBD\xBE"},
    {CT_WIN1257, "iso-8859-13 iso8859-13 iso885913 csiso885913", LabelKind::kNear,
     "\xA1\xA5\xB4\xFF"},
    {CT_KOI8R, "koi8-u koi8u cskoi8u", LabelKind::kNear, "\xA4\xA6\xA7\xAD\xB4\xB6\xB7\xBD"},
    {CT_GB2312, "gb18030 csgb18030", LabelKind::kNear},
    {CT_BIG5, "big5-hkscs big5hkscs csbig5hkscs", LabelKind::kNear},
    {CT_JIS, "iso-2022-jp-1 iso-2022-jp-2 csiso2022jp2 iso-2022-jp-3 iso-2022-jp-2004",
     LabelKind::kNear},
    {CT_EUC, "euc-jisx0213 euc-jis-2004", LabelKind::kNear},
    {CT_SJIS, "shift_jisx0213 shift_jis-2004 ibm-943 cp943", LabelKind::kNear},
};

// Sets that are part of a larger one of the library.
constexpr struct {
  CodeType codeType;
  CodeType larger;
} kLargerSets[] = {
    {CT_ISO8859_1, CT_WIN1252},
    {CT_ISO8859_9, CT_WIN1254},
    {CT_EUCKR, CT_KSC5601},
};

struct Label {
  std::string_view name;
  const LabelRow* row = nullptr;
};

// By length first, which tells most names apart.
constexpr bool IsBefore(std::string_view a, std::string_view b) {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

constexpr std::size_t kLabelCount = [] {
  std::size_t count = 0;
  for (const LabelRow& row : kLabelRows) {
    count += 1 + static_cast<std::size_t>(std::ranges::count(row.names, ' '));
  }
  return count;
}();

// All names, in order.
constexpr auto kLabels = [] {
  std::array<Label, kLabelCount> labels{};
  auto label = labels.begin();
  for (const LabelRow& row : kLabelRows) {
    for (std::string_view rest = row.names; !rest.empty(); ++label) {
      *label = {rest.substr(0, rest.find(' ')), &row};
      rest.remove_prefix(std::min(label->name.size() + 1, rest.size()));
    }
  }
  std::ranges::sort(labels, IsBefore, &Label::name);
  return labels;
}();
static_assert(std::ranges::adjacent_find(kLabels, {}, &Label::name) == kLabels.end());

// A label in lower case without white space and quotes around and without a language; empty
// when there is none.
class NormalLabel {
 public:
  explicit NormalLabel(std::string_view label) {
    constexpr std::string_view kAround = " \t\r\n\"'";
    label = label.substr(0, label.find('*'));
    label.remove_prefix(std::min(label.find_first_not_of(kAround), label.size()));
    label = label.substr(0, label.find_last_not_of(kAround) + 1);
    size_ = std::min(label.size(), chars_.size());
    std::ranges::transform(label.substr(0, size_), chars_.begin(), AsciiLower);
  }
  std::string_view Text() const { return {chars_.data(), size_}; }

 private:
  // More than any name has, so that a longer label is none even without its end.
  std::array<char, kLabels.back().name.size() + 1> chars_;
  std::size_t size_;
};

// Null when nobody knows the label.
const LabelRow* FindLabel(const NormalLabel& label) {
  const std::string_view name = label.Text();
  const auto found = std::ranges::lower_bound(kLabels, name, IsBefore, &Label::name);
  return found != kLabels.end() && found->name == name ? found->row : nullptr;
}

Utf16Order OrderOf(const LabelRow& row) {
  if (row.codeType != CT_UNICODE) return Utf16Order::kLittleEndian;
  return row.kind == LabelKind::kUtf16Big ? Utf16Order::kBigEndian : Utf16Order::kByMark;
}

// ---- What the bytes look like ------------------------------------------------------------------

bool IsBetween(char byte, unsigned char first, unsigned char last) {
  return ByteRange{first, last}.Holds(byte);
}

bool IsEightBit(char byte) {
  return IsBetween(byte, 0x80, 0xFF);
}

bool HasZero(std::string_view text) {
  return text.find('\0') != text.npos;
}

bool HasUtf16Mark(std::string_view text) {
  return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
}

// The form of UTF-8, also of a text that was cut inside its last character.
bool IsWholeUtf8(std::string_view text) {
  for (int cut = 0; cut <= 3 && !text.empty(); ++cut) {
    if (IsUTF8(text)) return true;
    if (!IsEightBit(text.back())) return false;
    text.remove_suffix(1);
  }
  return false;
}

// The number of characters of the text that are none of the encoding, counted in blocks until
// they are more than limit.
long long CountInvalid(CodeType codeType, std::string_view text,
                       long long limit = ConversionPipeline::kNoLimit) {
  return ConversionPipeline::OfCodeTypes(codeType, CT_UNICODE, 0)
      .CountLosses(text, {.fits = false}, limit);
}

bool IsValid(CodeType codeType, std::string_view text) {
  return CountInvalid(codeType, text, 0) == 0;
}

// The form of UTF-8, but for a damaged character here and there. In other encodings most bytes that
// look like the lead of a sequence are none; even of names of a few kanji hardly one looks like
// six sequences with one of them damaged.
bool IsUtf8Text(std::string_view text) {
  constexpr long long kForEachDamaged = 6;
  if (IsWholeUtf8(text)) return true;
  const auto isLead = [](char byte) { return IsBetween(byte, 0xC2, 0xF4); };
  const long long most = std::ranges::count_if(text, isLead) / kForEachDamaged;
  return most > 0 && CountInvalid(CT_UTF8, text, most) <= most;
}

// ---- EUC-JP, Shift_JIS or neither --------------------------------------------------------------

bool IsPairAt(CodeType codeType, std::string_view text, std::size_t pos) {
  if (pos + 1 >= text.size()) return false;
  if (codeType == CT_EUC) return IsBetween(text[pos], 0xA1, 0xFE) || text[pos] == '\x8E';
  const bool isLead = IsBetween(text[pos], 0x81, 0x9F) || IsBetween(text[pos], 0xE0, 0xFC);
  return isLead && IsBetween(text[pos + 1], 0x40, 0xFC) && text[pos + 1] != '\x7F';
}

// What the two-byte characters of a text are, read as EUC-JP or Shift_JIS.
struct PairRanges {
  ByteRange common;  // leads of JIS X 0208 without the kanji of its second level, which are rare
  ByteRange kana;    // leads of punctuation and kana
};
constexpr PairRanges kEucRanges = {{0xA1, 0xCF}, {0xA1, 0xA5}};
constexpr PairRanges kSJisRanges = {{0x81, 0x9F}, {0x81, 0x83}};

struct JapaneseLook {
  long long pairs = 0;
  long long common = 0;
  long long kana = 0;
  bool hasRun = false;         // two 8-bit characters side by side
  bool touchesLetter = false;  // an ASCII letter beside an 8-bit character

  // Accented letters of a Western text make pairs too, with the letters behind them; but they
  // stand alone, and their codes are high.
  bool IsJapanese() const {
    const bool isText = pairs < kShortText || kana * 8 >= pairs;
    const bool isAlone = !hasRun && (touchesLetter || pairs == 0);
    return !isAlone && common * 4 >= pairs * 3 && isText;
  }

 private:
  static constexpr long long kShortText = 32;  // may be without kana: names, titles
};

JapaneseLook LookAs(CodeType codeType, std::string_view text) {
  const PairRanges& ranges = codeType == CT_EUC ? kEucRanges : kSJisRanges;
  JapaneseLook look;
  std::size_t pos = 0;
  while (pos < text.size()) {
    if (!IsEightBit(text[pos])) {
      ++pos;
      continue;
    }
    look.touchesLetter |= pos > 0 && IsAsciiLetter(text[pos - 1]);
    int runLength = 0;
    for (; pos < text.size() && IsEightBit(text[pos]); ++runLength) {
      const bool isPair = IsPairAt(codeType, text, pos);
      look.pairs += isPair;
      look.common += isPair && ranges.common.Holds(text[pos]);
      look.kana += isPair && ranges.kana.Holds(text[pos]);
      pos += isPair ? 2 : 1;
    }
    look.touchesLetter |= pos < text.size() && IsAsciiLetter(text[pos]);
    look.hasRun |= runLength > 1;
  }
  return look;
}

// Whether a half-width katakana that can be voiced stands before a voiced or semi-voiced mark.
bool HasVoicedKatakana(std::string_view text) {
  for (std::size_t pos = 1; pos < text.size(); ++pos) {
    const char kana = text[pos - 1];
    const bool isHaRow = IsBetween(kana, 0xCA, 0xCE);
    if (text[pos] == '\xDF' && isHaRow) return true;
    if (text[pos] == '\xDE' && (isHaRow || kana == '\xB3' || IsBetween(kana, 0xB6, 0xC4))) {
      return true;
    }
  }
  return false;
}

// Of EUC-JP and Shift_JIS the one of which more characters of the text are. Where all are of both,
// Shift_JIS is all half-width katakana: only marks in their places speak for it.
struct Guess {
  CodeType codeType;
  long long invalid;
};
Guess GuessJapanese(std::string_view text) {
  const long long euc = CountInvalid(CT_EUC, text);
  const long long sjis = CountInvalid(CT_SJIS, text);
  const bool isKatakana =
      euc == 0 && sjis == 0 && LookAs(CT_EUC, text).kana == 0 && HasVoicedKatakana(text);
  return sjis < euc || isKatakana ? Guess{CT_SJIS, sjis} : Guess{CT_EUC, euc};
}

CodeType DetectEightBit(std::string_view text) {
  const Guess guess = GuessJapanese(text);
  const auto eightBit = std::count_if(text.begin(), text.end(), IsEightBit);
  const bool isJapanese =
      guess.invalid * 4 <= eightBit && LookAs(guess.codeType, text).IsJapanese();
  return isJapanese || !IsValid(CT_WIN1252, text) ? guess.codeType : CT_WIN1252;
}

bool LooksLikeKana(CodeType codeType, std::string_view text) {
  const JapaneseLook look = LookAs(codeType, text);
  return look.kana > 0 && look.IsJapanese();
}

// The looks come first: they settle almost every Western text, at less cost than two conversions.
bool IsSurelyJapanese(std::string_view text, CodeType& codeType) {
  const bool isLikeEuc = LooksLikeKana(CT_EUC, text);
  const bool isLikeSJis = LooksLikeKana(CT_SJIS, text);
  if (!isLikeEuc && !isLikeSJis) return false;
  const Guess guess = GuessJapanese(text);
  codeType = guess.codeType;
  return guess.invalid == 0 && (codeType == CT_EUC ? isLikeEuc : isLikeSJis);
}

// ---- The decision ------------------------------------------------------------------------------

// How many zero bytes stand in the first and in the second byte of the units.
std::array<long long, 2> CountZeros(std::string_view text) {
  std::array<long long, 2> zeros{};
  for (std::size_t i = 0; i < text.size(); ++i) zeros[i % 2] += text[i] == 0;
  return zeros;
}

// Whether most pairs of bytes are two ASCII letters or spaces. Such pairs are ideographs in
// UTF-16, where at most one unit in ten looks like that.
bool IsMostlyAsciiWords(std::string_view text) {
  const auto isOfWord = [](char byte) { return IsAsciiLetter(byte) || IsAsciiSpace(byte); };
  std::size_t words = 0;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    words += isOfWord(text[i]) && isOfWord(text[i + 1]);
  }
  return words * 4 > text.size();
}

// So many bytes of 7 bits, with no zero among them, begin no text in UTF-16.
constexpr std::size_t kNarrowHead = 1024;

// Unmarked UTF-16 has zero bytes in its ASCII characters and line breaks, first or second by its
// order. A few in the other place are ideographs (and the space of U+3000). A stray zero byte in
// a byte text is none.
bool IsUnmarkedUtf16(std::string_view text, Utf16Order& order) {
  if (text.size() % 2 != 0 || !HasZero(text) || IsMostlyAsciiWords(text)) return false;
  const auto [first, second] = CountZeros(text);
  order = first > second ? Utf16Order::kBigEndian : Utf16Order::kLittleEndian;
  const long long most = std::max(first, second);
  return most * 64 >= static_cast<long long>(text.size()) && most >= 8 * std::min(first, second);
}

MailCharset Detect(std::string_view text, CharsetSource source) {
  if (HasUtf16Mark(text)) return {CT_UNICODE, source, Utf16Order::kByMark};
  const bool isSevenBit = FindEightBit(text) == text.npos;
  if (!isSevenBit && IsUtf8Text(text)) return {CT_UTF8, source};
  if (FindJapaneseEscape(text, !isSevenBit) != text.npos) return {CT_JIS, source};
  Utf16Order order;
  if (IsUnmarkedUtf16(text, order)) return {CT_UNICODE, source, order};
  return {isSevenBit ? CT_ASCII : DetectEightBit(text), source};
}

MailCharset ResolveUtf16(const LabelRow& row, std::string_view text) {
  if (!HasUtf16Mark(text) && !HasZero(text)) {
    const CodeType codeType = ExplainDetection(text).codeType;
    const bool isNarrow = codeType == CT_ASCII || codeType == CT_UTF8 || codeType == CT_JIS ||
                          std::min(FindEightBit(text), text.size()) >= kNarrowHead;
    if (!text.empty() && isNarrow) {
      return {codeType, CharsetSource::kLabelLies};
    }
  }
  Utf16Order order = OrderOf(row);
  if (row.kind == LabelKind::kUtf16Open && !HasUtf16Mark(text)) {
    const auto [first, second] = CountZeros(text);
    if (first > second) order = Utf16Order::kBigEndian;
  }
  const bool isWhole = text.size() % 2 == 0;
  return {CT_UNICODE, isWhole ? CharsetSource::kLabel : CharsetSource::kLabelLenient, order};
}

MailCharset ResolveSevenBit(CodeType codeType, std::string_view text) {
  if (codeType != CT_JIS && FindJapaneseEscape(text, true) != text.npos && IsValid(CT_JIS, text)) {
    return {CT_JIS, CharsetSource::kLabelLies};
  }
  const bool isValid = IsValid(codeType, text);
  return {codeType, isValid ? CharsetSource::kLabel : CharsetSource::kLabelLenient};
}

bool IsSingleByte(CodeType codeType) {
  const MbcsPage* const page = FindMbcsPage(CharSetCode2CodePage(codeType));
  return page != nullptr && !page->IsDoubleByte();
}

// The larger set that the text needs, or codeType.
CodeType LargerSet(CodeType codeType, std::string_view text) {
  const auto row = std::find_if(std::begin(kLargerSets), std::end(kLargerSets),
                                [=](const auto& r) { return r.codeType == codeType; });
  if (row == std::end(kLargerSets)) return codeType;
  // ISO 8859 has control characters there, which no text holds.
  const bool isNeeded =
      IsSingleByte(codeType)
          ? std::any_of(text.begin(), text.end(), [](char c) { return IsBetween(c, 0x80, 0x9F); })
          : !IsValid(codeType, text);
  return isNeeded && IsValid(row->larger, text) ? row->larger : codeType;
}

// Whether the text is better read as what detection found, though it has some valid characters
// of the labelled encoding.
bool IsBetter(CodeType guess, CodeType codeType, long long invalid, std::string_view text) {
  if (guess == CT_UNICODE) return true;
  if (guess == CT_UTF8) return guess != codeType && CountInvalid(guess, text, invalid) <= invalid;
  const auto eightBit = std::count_if(text.begin(), text.end(), IsEightBit);
  return guess != codeType && guess != CT_WIN1252 && invalid * 8 > eightBit && IsValid(guess, text);
}

MailCharset ResolveEightBit(CodeType codeType, std::string_view text) {
  const bool isUtf8 = IsUtf8Text(text);
  if (codeType == CT_JIS && !isUtf8 && FindJapaneseEscape(text, true) != text.npos) {
    return {CT_JIS, CharsetSource::kLabelLenient};
  }
  if (codeType == CT_JIS || codeType == CT_ASCII || codeType == CT_UTF7) {
    return Detect(text, CharsetSource::kLabelLies);
  }
  if (isUtf8 && IsSingleByte(codeType)) return {CT_UTF8, CharsetSource::kLabelLies};
  CodeType japanese;
  if ((codeType == CT_ISO8859_1 || codeType == CT_WIN1252) && IsSurelyJapanese(text, japanese)) {
    return {japanese, CharsetSource::kLabelLies};
  }
  codeType = LargerSet(codeType, text);
  const long long invalid = CountInvalid(codeType, text);
  if (invalid == 0) return {codeType, CharsetSource::kLabel};
  const MailCharset guess = Detect(text, CharsetSource::kLabelLies);
  if (IsBetter(guess.codeType, codeType, invalid, text)) return guess;
  return {codeType, CharsetSource::kLabelLenient};
}

}  // namespace

CodeType CodeTypeOfMailLabel(std::string_view label, Utf16Order* order) {
  const LabelRow* row = FindLabel(NormalLabel(label));
  if (row != nullptr && row->kind == LabelKind::kNear) row = nullptr;
  if (order != nullptr) *order = row == nullptr ? Utf16Order::kLittleEndian : OrderOf(*row);
  return row == nullptr ? CT_UNKNOWN : row->codeType;
}

MailCharset ResolveMailCharset(std::string_view label, std::string_view text) {
  const NormalLabel name(label);
  if (name.Text().empty()) return Detect(text, CharsetSource::kNoLabel);
  const LabelRow* const row = FindLabel(name);
  if (row == nullptr) return Detect(text, CharsetSource::kUnknownLabel);
  if (row->codeType == CT_UNICODE) return ResolveUtf16(*row, text);
  if (FindEightBit(text) == text.npos) return ResolveSevenBit(row->codeType, text);
  MailCharset resolved = ResolveEightBit(row->codeType, text);
  if (resolved.source == CharsetSource::kLabel && text.find_first_of(row->differing) != text.npos) {
    resolved.source = CharsetSource::kLabelLenient;
  }
  return resolved;
}

long ConvertMailText(const MailCharset& charset, std::string_view text, CBuffer& out,
                     CConversionReport* report) {
  if (charset.codeType != CT_UNICODE) {
    return ConvertToOtherCodeType2(charset.codeType, text, CT_UNICODE, out, 0, report);
  }
  out.Empty();
  if (text.empty()) return 0;
  ConversionPipeline pipeline =
      ConversionPipeline::OfCodeTypes(CT_UNICODE, CT_UNICODE, 0, false, charset.order);
  pipeline.Convert(text, true, out, report);
  return pipeline.Status();
}

}  // namespace lumr
