// The Japanese byte forms and katakana against glibc's iconv and ICU, exhaustively.
#include <gtest/gtest.h>
#include <iconv.h>
#include <unicode/normalizer2.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <map>
#include <memory>
#include <optional>

#include "charset/japanese_text.h"

namespace lumr {
namespace {

// What a peer gives for a text, or nothing when it refuses part of it.
using Answer = std::optional<std::string>;

Answer Glibc(const char* from, const char* to, std::string text) {
  static std::map<std::string, std::shared_ptr<void>> handles;
  std::shared_ptr<void>& owner = handles[std::string(from) + ' ' + to];
  if (owner == nullptr) owner.reset(iconv_open(to, from), iconv_close);
  iconv_t handle = owner.get();
  iconv(handle, nullptr, nullptr, nullptr, nullptr);
  char result[64];
  char* in = text.data();
  char* out = result;
  std::size_t left = text.size();
  std::size_t room = sizeof result;
  if (iconv(handle, &in, &left, &out, &room) == static_cast<std::size_t>(-1)) return {};
  if (iconv(handle, nullptr, nullptr, &out, &room) == static_cast<std::size_t>(-1)) return {};
  return std::string(result, out);
}

// Reads a text as UTF-8.
Answer Icu(const char* charset, const std::string& text) {
  static std::map<std::string, std::shared_ptr<UConverter>> converters;
  UErrorCode error = U_ZERO_ERROR;
  std::shared_ptr<UConverter>& owner = converters[charset];
  if (owner == nullptr) {
    owner.reset(ucnv_open(charset, &error), ucnv_close);
    ucnv_setToUCallBack(owner.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    EXPECT_TRUE(U_SUCCESS(error)) << charset;
  }
  UConverter* const converter = owner.get();
  ucnv_reset(converter);
  UChar units[64];
  const int count =
      ucnv_toUChars(converter, units, 64, text.data(), static_cast<int>(text.size()), &error);
  if (U_FAILURE(error)) return {};
  std::string utf8;
  return icu::UnicodeString(units, count).toUTF8String(utf8);
}

// Ranges of bytes, or of two bytes, with the reason why a peer and we see them differently.
struct Range {
  int first, last;
  const char* reason;
};

bool IsListed(const std::vector<Range>& ranges, const std::string& text) {
  for (const Range& range : ranges) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      const int first = static_cast<unsigned char>(text[i]);
      const int second = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : -1;
      const int value = range.last < 0x100 ? first : second < 0 ? -1 : first * 256 + second;
      if (value >= range.first && value <= range.last) return true;
    }
  }
  return false;
}

using OursFunction = std::string(const std::string& text, CConversionReport& report);
using TheirsFunction = Answer(const std::string& text);

// Where a peer and we see texts differently.
struct Differences {
  std::vector<Range> different;   // both read it, with another result
  std::vector<Range> reported;    // the peer reads it, we report it as lost
  std::vector<Range> unassigned;  // the peer refuses it, we carry it over exactly
  int unassignedTexts;            // how many texts that makes
};

// The source of both is before and after with one or two bytes between.
void Compare(const char* what, const char* before, const char* after, OursFunction* oursOf,
             TheirsFunction* theirsOf, const Differences& row) {
  SCOPED_TRACE(what);
  int unassigned = 0;
  int agreed = 0;
  ForEachShortText([&](const std::string& middle) {
    if (testing::Test::HasFatalFailure()) return;
    const std::string text = before + middle + after;
    CConversionReport report;
    const std::string ours = oursOf(text, report);
    const Answer theirs = theirsOf(text);
    const bool exact = report.IsEmpty();
    if (theirs && exact && !IsListed(row.different, middle)) {
      ASSERT_EQ(Shown(ours), Shown(*theirs)) << Shown(text);
      ++agreed;
    } else if (theirs && !exact) {
      ASSERT_TRUE(IsListed(row.reported, middle)) << Shown(text) << " > " << Shown(ours);
    } else if (!theirs && exact) {
      ASSERT_TRUE(IsListed(row.unassigned, middle)) << Shown(text) << " > " << Shown(ours);
      ++unassigned;
    }
  });
  EXPECT_EQ(unassigned, row.unassignedTexts);
  EXPECT_GT(agreed, 4000);
}

template <JapaneseConversion kConversion>
std::string Ours(const std::string& text, CConversionReport& report) {
  return Converted(kConversion, text, &report);
}

// Through Shift_JIS from one of the other forms to the other.
template <JapaneseConversion kFirst, JapaneseConversion kSecond>
std::string OursTwice(const std::string& text, CConversionReport& report) {
  return Converted(kSecond, Converted(kFirst, text, &report), &report);
}

constexpr char kIcuSJis[] = "ibm-943_P15A-2003";
constexpr char kIcuEuc[] = "euc-jp-2007";
constexpr char kIcuJis[] = "ISO_2022,locale=ja,version=3";

template <JapaneseConversion kConversion>
std::string OursReadByIcu(const std::string& text, CConversionReport& report) {
  const std::string result = Converted(kConversion, text, &report);
  const bool toJis = kConversion == kSJisToJis;
  return Icu(toJis                       ? kIcuJis
             : kConversion == kSJisToEuc ? kIcuEuc
                                         : kIcuSJis,
             result)
      .value_or("refused");
}

// Reasons that several rows share.
constexpr Range kShifts = {0x0E, 0x0F, "SO and SI are control characters of ISO-2022-JP to us"};
constexpr Range kEscape = {0x1B, 0x1B, "copied, but a reader would obey it"};
constexpr Range kNecIn = {0x1B4B, 0x1B4B, "NEC's designation"};
constexpr Range kNecOut = {0x1B48, 0x1B48, "NEC's designation"};
constexpr Range kSub = {0x1A, 0x1A, "ICU reads its IBM tables with 1A, 1C and 7F exchanged"};
constexpr Range kFs = {0x1C, 0x1C, "as 1A"};
constexpr Range kDel = {0x7F, 0x7F, "as 1A"};
// Cells that the peer has no character for go through.
constexpr Range kPairsOfSJis = {0x8140, 0xEFFC, "unassigned"};
constexpr Range kPairsOfEuc = {0xA1A1, 0xFEFE, "unassigned"};
constexpr Range kPairsOfJis = {0x2121, 0x7E7E, "unassigned"};
constexpr int kUnassigned = 94 * 94 - 6879;             // outside JIS X 0208
constexpr int kUnassignedIbm = kUnassigned - 83 - 374;  // and outside the rows of NEC, 13 and 89-92

TEST(JapanesePeers, Glibc) {
  const auto toEuc = [](const std::string& text) { return Glibc("SHIFT_JIS", "EUC-JP", text); };
  const auto toSJis = [](const std::string& text) { return Glibc("EUC-JP", "SHIFT_JIS", text); };
  const auto toJis = [](const std::string& text) { return Glibc("EUC-JP", "ISO-2022-JP", text); };
  const auto fromJis = [](const std::string& text) { return Glibc("ISO-2022-JP", "EUC-JP", text); };
  Compare("Shift_JIS to EUC-JP", "", "", Ours<kSJisToEuc>, toEuc,
          {{}, {}, {kPairsOfSJis}, kUnassigned});
  Compare("EUC-JP to Shift_JIS", "", "", Ours<kEucToSJis>, toSJis,
          {{}, {}, {kPairsOfEuc}, kUnassigned});
  Compare("EUC-JP to ISO-2022-JP", "", "", OursTwice<kEucToSJis, kSJisToJis>, toJis,
          {{},
           {kShifts, kEscape},
           {kPairsOfEuc, {0x8EA1, 0x8EDF, "RFC 1468 has no katakana"}},
           kUnassigned + 63});
  Compare("ISO-2022-JP to EUC-JP, ASCII", "", "", OursTwice<kJisToSJis, kSJisToEuc>, fromJis,
          {{kShifts}, {kShifts}, {kNecIn, kNecOut}, 2});
  Compare("ISO-2022-JP to EUC-JP, kanji", "\x1B$B", "\x1B(B", OursTwice<kJisToSJis, kSJisToEuc>,
          fromJis,
          {{kShifts},
           {{0x00, 0x20, "taken for half of a kanji"}, {0x7F, 0x7F, "taken for half of a kanji"}},
           {kPairsOfJis, kNecIn, kNecOut, {0x0E21, 0x0E5F, "SO invokes katakana"}},
           kUnassigned + 2 + 63});
}

TEST(JapanesePeers, Icu) {
  const auto readSJis = [](const std::string& text) { return Icu(kIcuSJis, text); };
  const auto readEuc = [](const std::string& text) { return Icu(kIcuEuc, text); };
  const auto readJis = [](const std::string& text) { return Icu(kIcuJis, text); };
  const std::vector<Range> exchanged = {kSub, kFs, kDel};
  const Range vendor = {0xF040, 0xFCFC, "no cell in JIS X 0208"};
  Compare("Shift_JIS to EUC-JP", "", "", OursReadByIcu<kSJisToEuc>, readSJis,
          {exchanged, {vendor}, {kPairsOfSJis}, kUnassignedIbm});
  Compare("EUC-JP to Shift_JIS", "", "", OursReadByIcu<kEucToSJis>, readEuc,
          {exchanged, {{0x80, 0x9F, "C1 control characters"}}, {kPairsOfEuc}, kUnassignedIbm});
  Compare("Shift_JIS to ISO-2022-JP", "", "", OursReadByIcu<kSJisToJis>, readSJis,
          {exchanged, {vendor, kShifts, kEscape}, {kPairsOfSJis}, kUnassignedIbm});
  Compare("ISO-2022-JP to Shift_JIS, ASCII", "", "", OursReadByIcu<kJisToSJis>, readJis,
          {exchanged, {}, {kNecIn, kNecOut}, 2});
  Compare("ISO-2022-JP to Shift_JIS, kanji", "\x1B$B", "\x1B(B", OursReadByIcu<kJisToSJis>, readJis,
          {{},
           {{0x0A, 0x0A, "the state lasts over it"}, {0x0D, 0x0D, "the state lasts over it"}},
           {kPairsOfJis, kNecIn, kNecOut},
           kUnassignedIbm + 2});
  Compare(
      "ISO-2022-JP to Shift_JIS, katakana", "\x1B(I", "\x1B(B", OursReadByIcu<kJisToSJis>, readJis,
      {{{0x0A, 0x0A, "the state lasts over it"}, {0x0D, 0x0D, "the state lasts over it"}, kShifts},
       {{0x0A, 0x0A, "the state lasts over it"}, {0x0D, 0x0D, "the state lasts over it"}},
       {{0x0F00, 0x0F7F, "SI ends katakana"}, kNecIn, kNecOut},
       62});
}

// Compatibility composition (NFKC) says the same of half-width katakana, except that it makes
// combining marks of voiced ones, and that it joins a mark to three kana that have no such
// character in JIS X 0208.
TEST(JapanesePeers, KatakanaAsIcuComposesThem) {
  UErrorCode error = U_ZERO_ERROR;
  const icu::Normalizer2& nfkc = *icu::Normalizer2::getNFKCInstance(error);
  ASSERT_TRUE(U_SUCCESS(error));
  for (char16_t kana = 0xFF61; kana <= 0xFF9F; ++kana) {
    for (const char16_t mark : {u'\0', u'\xFF9E', u'\xFF9F'}) {
      CStringW ours(1, kana);
      if (mark != 0) ours += mark;
      icu::UnicodeString theirs =
          nfkc.normalize(icu::UnicodeString(ours.data(), static_cast<int>(ours.size())), error);
      if (theirs == u"\u30F7") theirs = u"\u30EF\u3099";
      if (theirs == u"\u30FA") theirs = u"\u30F2\u3099";
      theirs.findAndReplace(u"\u3099", u"\u309B").findAndReplace(u"\u309A", u"\u309C");
      EXPECT_EQ(KatakanaHanToZen(ours), 1);
      EXPECT_EQ(ours, CStringW(theirs.getBuffer(), static_cast<std::size_t>(theirs.length())))
          << int{kana};
    }
  }
}

}  // namespace
}  // namespace lumr
