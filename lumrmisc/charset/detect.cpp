#include "lumrmisc/charset/detect.h"

#include <algorithm>
#include <cstdint>

#include "lumrmisc/buffer/textscan.h"
#include "lumrmisc/charset/detect_internal.h"
#include "lumrmisc/charset/transcoder_internal.h"
#include "lumrmisc/charset/utf8scan_internal.h"
#include "lumrmisc/charset/wordscan_internal.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {

namespace {

constexpr std::size_t kScanRange = 1024;
constexpr unsigned char kEsc = 0x1B;

std::string_view Utf16Of(const char16_t* text, int count) {
  if (text == nullptr || count < 1) return {};
  return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(count) * 2};
}

bool IsPlainAscii(std::string_view text) {
  constexpr std::size_t kPiece = 1 << 30;  // lengths are int there
  for (; !text.empty(); text.remove_prefix(std::min(kPiece, text.size()))) {
    const auto size = static_cast<int>(std::min(kPiece, text.size()));
    if (IsNotAsciiText(text.data(), size)) return false;
  }
  return true;
}

// ---- The Japanese byte forms -------------------------------------------------------------------

enum class Verdict { kNothing, kAmbiguous, kAmbiguousRun, kEuc, kSJis };

// What a lead byte says alone, and together with the byte behind it. A pair that is not listed
// says nothing, also A1-DF before a byte below A1: a half-width katakana before ASCII.
constexpr struct {
  ByteRange lead;
  Verdict verdict;
} kDecisiveLeads[] = {
    {{0x81, 0x8D}, Verdict::kSJis},
    {{0x8F, 0x9F}, Verdict::kSJis},
    {{0xF0, 0xFE}, Verdict::kEuc},
};
constexpr struct {
  ByteRange lead;
  ByteRange next;
  Verdict verdict;
} kPairs[] = {
    {{0x8E, 0x8E}, {0xA1, 0xDF}, Verdict::kAmbiguous},  // half-width katakana of EUC-JP
    {{0x8E, 0x8E}, {0x40, 0x7E}, Verdict::kSJis},
    {{0x8E, 0x8E}, {0x80, 0xA0}, Verdict::kSJis},
    {{0x8E, 0x8E}, {0xE0, 0xFC}, Verdict::kSJis},
    {{0xA1, 0xDF}, {0xA1, 0xDF}, Verdict::kAmbiguous},
    {{0xA1, 0xDF}, {0xE0, 0xEF}, Verdict::kAmbiguousRun},
    {{0xA1, 0xDF}, {0xF0, 0xFE}, Verdict::kEuc},
    {{0xE0, 0xEF}, {0x40, 0x7E}, Verdict::kSJis},
    {{0xE0, 0xEF}, {0x80, 0xA0}, Verdict::kSJis},
    {{0xE0, 0xEF}, {0xA1, 0xFC}, Verdict::kAmbiguous},
    {{0xE0, 0xEF}, {0xFD, 0xFE}, Verdict::kEuc},
};
// What a byte says inside an ambiguous run.
constexpr struct {
  ByteRange byte;
  Verdict verdict;
} kInRun[] = {
    {{0x81, 0x8D}, Verdict::kSJis},
    {{0x8F, 0x9F}, Verdict::kSJis},
    {{0xFD, 0xFE}, Verdict::kEuc},
};

template <typename Rows, typename Matches>
Verdict VerdictOf(const Rows& rows, Matches matches) {
  const auto row = std::find_if(std::begin(rows), std::end(rows), matches);
  return row == std::end(rows) ? Verdict::kNothing : row->verdict;
}

unsigned char ByteAt(std::string_view text, std::size_t pos) {
  return pos < text.size() ? static_cast<unsigned char>(text[pos]) : 0;
}

Detection MakeDetection(CodeType codeType, DetectionRule rule) {
  return {codeType, rule, -1, 0};
}

Detection MakeDetection(CodeType codeType, DetectionRule rule, std::string_view text,
                        std::size_t pos) {
  return {codeType, rule, static_cast<long long>(pos), ByteAt(text, pos)};
}

// What follows an ESC. The designations of ASCII and of the Roman set mark the text too.
struct Escape {
  bool isJapanese;
  std::size_t length;  // of what was examined, the ESC included
};
Escape ReadEscape(std::string_view text, std::size_t pos) {
  const unsigned char third = ByteAt(text, pos + 2);
  switch (ByteAt(text, pos + 1)) {
    case '$':
      return {third == 'B' || third == '@', 3};
    case '(':
      return {third == 'B' || third == 'J' || third == 'H' || third == 'I', 3};
    case 'K':
    case 'H':
      return {true, 2};
    default:
      return {false, 2};
  }
}

// Scans for what tells the Japanese byte forms apart.
class JapaneseScan {
 public:
  explicit JapaneseScan(std::string_view text) : text_(text) {}

  Detection Run() {
    const std::size_t range = std::min(text_.size(), kScanRange);
    for (; pos_ < range && !decided_; Step()) {
      while (range - pos_ >= 8 && IsPlainWord(text_.data() + pos_)) pos_ += 8;
      if (pos_ == range) break;
    }
    return found_;
  }

 private:
  // Whether the next eight bytes say nothing.
  static bool IsPlainWord(const char* text) {
    using Word = WordOf<unsigned char>;
    const auto word = LoadValue<std::uint64_t>(text);
    return ((word & Word::kHighBits) | Word::Mark(word, kEsc)) == 0;
  }

  // Looks at the byte at pos_, and with most lead bytes at the next one, and moves behind.
  void Step() {
    const unsigned char byte = ByteAt(text_, pos_);
    if (byte == kEsc) {
      StepEscape();
    } else if (byte == 0x8E || (0xA1 <= byte && byte <= 0xEF)) {
      StepPair(byte);
    } else {
      Take(VerdictOf(kDecisiveLeads, [=](const auto& row) { return row.lead.Holds(byte); }), pos_);
      ++pos_;
    }
  }

  void StepEscape() {
    const Escape escape = ReadEscape(text_, pos_);
    if (escape.isJapanese) {
      found_ = MakeDetection(CT_JIS, DetectionRule::kEscape, text_, pos_);
      decided_ = true;
    }
    pos_ += escape.length;
  }

  void StepPair(unsigned char byte) {
    const unsigned char next = ByteAt(text_, pos_ + 1);
    const Verdict verdict = VerdictOf(
        kPairs, [=](const auto& row) { return row.lead.Holds(byte) && row.next.Holds(next); });
    ++pos_;
    Take(verdict, pos_);
    if (verdict == Verdict::kAmbiguousRun) FollowRun();
    ++pos_;
  }

  // Leaves pos_ at the byte that ends the run, which is examined with that.
  void FollowRun() {
    for (; ByteAt(text_, pos_) >= 0x40 && !decided_; ++pos_) {
      const unsigned char byte = ByteAt(text_, pos_);
      Take(VerdictOf(kInRun, [=](const auto& row) { return row.byte.Holds(byte); }), pos_);
    }
  }

  void Take(Verdict verdict, std::size_t pos) {
    switch (verdict) {
      case Verdict::kNothing:
        return;
      case Verdict::kAmbiguous:
      case Verdict::kAmbiguousRun:
        if (found_.rule == DetectionRule::kAmbiguous) return;  // the first one counts
        found_ = MakeDetection(CT_EUC, DetectionRule::kAmbiguous, text_, pos);
        return;
      case Verdict::kEuc:
        found_ = MakeDetection(CT_EUC, DetectionRule::kEucByte, text_, pos);
        break;
      case Verdict::kSJis:
        found_ = MakeDetection(CT_SJIS, DetectionRule::kSJisByte, text_, pos);
        break;
    }
    decided_ = true;
  }

  std::string_view text_;
  std::size_t pos_ = 0;
  bool decided_ = false;
  Detection found_ = MakeDetection(CT_ASCII, DetectionRule::kNothingTelling);
};

// ---- UTF-16 ------------------------------------------------------------------------------------

// Whether the text is UTF-16 that code page 932 has a place for, look-alikes included. Ends at
// the first unit that it has none for, which in other text comes soon.
bool IsJapaneseUtf16(std::string_view text, bool bigEndian) {
  const std::size_t size = text.size() & ~std::size_t{1};
  for (std::size_t i = 0; i < size; i += 2) {
    const char16_t loaded = LoadUnit(text.data() + i);
    const auto unit = bigEndian ? static_cast<char16_t>(loaded << 8 | loaded >> 8) : loaded;
    if (unit >= 0x80 && EncodeUnit(kJapaneseCodePage, unit, false) < 0) return false;
  }
  return size > 0;
}

bool IsDefinedUtf16(std::string_view text) {
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    if (!IsUnitDefined(LoadUnit(text.data() + i))) return false;
  }
  return true;
}

// A code page can take a unit above 7F for ASCII by its looks; ASCII itself cannot.
CodeType NarrowestCodeType(std::string_view utf16) {
  bool isAscii = true;
  for (std::size_t i = 0; i < utf16.size() && isAscii; i += 2) {
    isAscii = LoadUnit(utf16.data() + i) < 0x80;
  }
  if (isAscii) return CT_ASCII;
  const bool isJapanese = ConversionPipeline::OfCodePages(kUtf16CodePage, kJapaneseCodePage, 0)
                              .CountLosses(utf16, {}, 0) == 0;
  return isJapanese ? CT_SJIS : CT_UNICODE;
}

// Characters of one script only; ideographs are of several.
constexpr struct {
  char16_t first;
  char16_t last;
  CodeType codeType;
} kScripts[] = {
    {0x3040, 0x30FF, CT_SJIS},     // Hiragana, Katakana
    {0x1100, 0x11FF, CT_KSC5601},  // Hangul jamo
    {0x3130, 0x318F, CT_KSC5601},  // Hangul compatibility jamo
    {0xAC00, 0xD7A3, CT_KSC5601},  // Hangul syllables
};

// DetectCodeType2, with its reason.
Detection DetectBytes(std::string_view text) {
  if (text.empty()) return MakeDetection(CT_ASCII, DetectionRule::kEmpty);
  if (IsUTF8(text)) {
    return MakeDetection(CT_UTF8, DetectionRule::kUtf8, text, FindEightBit(text));
  }
  const bool bigEndian = text.substr(0, 2) == "\xFE\xFF";
  const bool marked = bigEndian || text.substr(0, 2) == "\xFF\xFE";
  if (IsJapaneseUtf16(text.substr(marked ? 2 : 0), bigEndian)) {
    const auto rule = bigEndian ? DetectionRule::kUtf16BigEndian : DetectionRule::kUtf16;
    return MakeDetection(CT_UNICODE, rule, text, 0);
  }
  return JapaneseScan(text).Run();
}

// As the status of the conversion has it: what the arithmetic of the Japanese byte forms copies
// for want of a rule is no loss.
bool ConvertsToUtf16(CodeType from, std::string_view text) {
  return ConversionPipeline::OfCodeTypes(from, CT_UNICODE, 0)
             .CountLosses(text, {.arithmetic = false}, 0) == 0;
}

}  // namespace

std::size_t FindEightBit(std::string_view text) {
  const char* const end = text.data() + text.size();
  const char* const found = SkipAscii(text.data(), end);
  return found == end ? text.npos : static_cast<std::size_t>(found - text.data());
}

std::size_t FindJapaneseEscape(std::string_view text, bool kanjiOnly) {
  std::size_t pos = text.find(static_cast<char>(kEsc));
  while (pos != text.npos) {
    const Escape escape = ReadEscape(text, pos);
    if (escape.isJapanese && (!kanjiOnly || text[pos + 1] == '$')) break;
    pos = text.find(static_cast<char>(kEsc), pos + escape.length);
  }
  return pos;
}

CodeType DetectCodeType(std::string_view text) {
  return JapaneseScan(text).Run().codeType;
}

CodeType DetectCodeType(const char* text, int len) {
  return DetectCodeType(TextOf(text, len));
}

int IsUTF8(std::string_view text) {
  return HasUtf8Form(text) ? 1 : 0;
}

int IsUTF8(const char* text, int len) {
  return IsUTF8(TextOf(text, len));
}

CodeType DetectCodeType2(std::string_view text) {
  return DetectBytes(text).codeType;
}

CodeType DetectCodeType2(const char* text, int len) {
  return DetectCodeType2(TextOf(text, len));
}

CodeType DetectCodeType3(std::string_view text, CodeType hint) {
  if (hint == CT_UNICODE) {
    return text.size() % 2 == 0 && IsDefinedUtf16(text) ? CT_UNICODE : DetectCodeType(text);
  }
  if (hint == CT_UNKNOWN) return DetectCodeType(text);
  if (IsPlainAscii(text)) return CT_ASCII;
  if ((hint == CT_SJIS || hint == CT_EUC) && text.find(static_cast<char>(kEsc)) != text.npos &&
      ConvertsToUtf16(CT_JIS, text)) {
    return CT_JIS;
  }
  return ConvertsToUtf16(hint, text) ? hint : DetectCodeType(text);
}

CodeType DetectCodeType3(const char* text, int len, CodeType hint) {
  return DetectCodeType3(TextOf(text, len), hint);
}

CodeType GetCodeType(const char* charset, const char* text, int len) {
  if (charset != nullptr && *charset != '\0') return CharSetName2Code(charset);
  return DetectCodeType2(text, len);
}

CodeType DetectUnicodeCodeType(std::string_view utf16, CodeType defaultType) {
  for (std::size_t i = 0; i + 1 < utf16.size(); i += 2) {
    const char16_t unit = LoadUnit(utf16.data() + i);
    const auto row = std::find_if(std::begin(kScripts), std::end(kScripts),
                                  [=](const auto& r) { return r.first <= unit && unit <= r.last; });
    if (row != std::end(kScripts)) return row->codeType;
  }
  return defaultType;
}

CodeType DetectUnicodeCodeType(const char16_t* text, int count, CodeType defaultType) {
  return DetectUnicodeCodeType(Utf16Of(text, count), defaultType);
}

CodeType DetectUnicodeCodeType2(const char16_t* text, int count, CBuffer* out) {
  const std::string_view utf16 = Utf16Of(text, count);
  if (out != nullptr) out->Empty();
  if (utf16.empty()) return CT_ASCII;
  const CodeType narrowest = NarrowestCodeType(utf16);
  if (out != nullptr) {
    const unsigned codePage = CharSetCode2CodePage2(narrowest);
    ConversionPipeline::OfCodePages(kUtf16CodePage, codePage, 0)
        .Convert(utf16, true, *out, nullptr);
  }
  return narrowest;
}

Detection ExplainDetection(std::string_view text) {
  if (!text.empty() && IsPlainAscii(text)) {
    return MakeDetection(CT_ASCII, DetectionRule::kPlainAscii);
  }
  if (FindEightBit(text) == text.npos) {
    const std::size_t escape = FindJapaneseEscape(text, false);
    if (escape != text.npos) return MakeDetection(CT_JIS, DetectionRule::kEscape, text, escape);
  }
  const Detection found = DetectBytes(text);
  const std::size_t eightBit = FindEightBit(text);
  const bool isLate = eightBit != text.npos && eightBit >= kScanRange;
  const bool isText = text.find('\0') == text.npos;  // and no UTF-16
  if (found.rule != DetectionRule::kNothingTelling || !isLate || !isText) return found;
  Detection late = JapaneseScan(text.substr(eightBit)).Run();
  if (late.offset >= 0) late.offset += static_cast<long long>(eightBit);
  return late;
}

}  // namespace lumr
