#include "lumrmisc/charset/japanese.h"

#include <gtest/gtest.h>

#include <random>
#include <span>
#include <vector>

#include "charset/convert_text.h"
#include "charset/corpus.h"
#include "charset/japanese_text.h"
#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/cpu_internal.h"
#include "lumrmisc/platform/mbcs.h"

namespace lumr {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
namespace fs = std::filesystem;

// Converts in pieces of the lengths that cuts has a bit for, into memory of exactly the promised
// size.
std::string ConvertedInPieces(JapaneseConversion conversion, std::string_view text, unsigned cuts,
                              CConversionReport* report) {
  JapaneseConverter converter(conversion);
  std::string result;
  for (std::size_t begin = 0; begin < text.size();) {
    std::size_t end = begin + 1;
    while (end < text.size() && (cuts >> (end - 1) & 1) == 0) ++end;
    const std::string_view piece = text.substr(begin, end - begin);
    const auto room = std::make_unique<char[]>(converter.MaxOutput(piece.size()));
    result.append(room.get(), converter.Convert(piece, end == text.size(), room.get(), report));
    begin = end;
  }
  EXPECT_EQ(converter.Pending(), 0u);
  EXPECT_EQ(converter.Lost(), report->Fits() + report->Replaced());
  return result;
}

void ExpectSameInPieces(JapaneseConversion conversion, std::string_view text, unsigned cuts) {
  CConversionReport whole;
  CConversionReport pieces;
  const std::string expected = Converted(conversion, text, &whole);
  ASSERT_EQ(Shown(ConvertedInPieces(conversion, text, cuts, &pieces)), Shown(expected))
      << Shown(text) << ", cuts " << cuts;
  ASSERT_EQ(Shown(pieces), Shown(whole)) << Shown(text) << ", cuts " << cuts;
}

struct Case {
  const char* what;
  JapaneseConversion conversion;
  std::string_view text;
  std::string_view expected;
  const char* losses = "";  // as Shown
};

constexpr Case kCases[] = {
    {"kanji among ASCII", kSJisToJis,
     "a\x82\xA0"
     "b"sv,
     "a\x1B$B$\"\x1B(Bb"sv},
    {"half-width katakana", kSJisToJis, "\xB1"sv, "\x1B(I1\x1B(B"sv},
    {"kanji, katakana, line break", kSJisToJis, "\x82\xA0\xB1\r\n\xB1"sv,
     "\x1B$B$\"\x1B(I1\x1B(B\r\n\x1B(I1\x1B(B"sv},
    {"lead byte at the end", kSJisToJis, "\x82\xA0\x82"sv, "\x1B$B$\"\x1B(B\x82"sv,
     "replaced 2+1>8"},
    {"lead byte before another byte", kSJisToJis, "\x82\xA0\x82\n"sv, "\x1B$B$\"\x1B(B\x82\n"sv,
     "replaced 2+2>8"},
    {"F0 and above are no lead bytes", kSJisToJis, "\xF0\x40\xFC\xB1"sv,
     "\xF0\x40\xFC\x1B(I1\x1B(B"sv, "replaced 0+1>0, replaced 2+1>2"},
    {"control characters of the target", kSJisToJis, "a\x1B(I\x0E\x0F"sv, "a\x1B(I\x0E\x0F"sv,
     "replaced 1+1>1, replaced 4+1>4, replaced 5+1>5"},
    {"SI in a long run", kSJisToJis,
     "abc\x0F"
     "defghijk"sv,
     "abc\x0F"
     "defghijk"sv,
     "replaced 3+1>3"},
    {"7F for a trail byte", kSJisToJis, "\x81\x7F"sv, "\x1B$B!`\x1B(B"sv, "replaced 0+2>3"},

    {"kanji", kJisToSJis, "\x1B$B$\"\x1B(B"sv, "\x82\xA0"sv},
    {"katakana by SO and SI", kJisToSJis,
     "\x0E"
     "1\x0F"
     "1"sv,
     "\xB1"
     "1"sv},
    {"old and NEC designations", kJisToSJis,
     "\x1B$@$\"\x1BH-\x1BK$\"\x1B(J-\x1B&@\x1B$B$\"\x1B(H-"sv, "\x82\xA0-\x82\xA0-\x82\xA0-"sv},
    {"SI in a long run", kJisToSJis,
     "abc\x0F"
     "defghijk"sv,
     "abcdefghijk"sv},
    {"SI returns to kanji", kJisToSJis,
     "\x1B$B\x0E"
     "1\x0F$\""sv,
     "\xB1\x82\xA0"sv},
    {"ESC (I ends kanji for good", kJisToSJis, "\x1B$B\x1B(I1\x0F$\""sv, "\xB1$\""sv},
    {"ESC K and $(D leave katakana invoked", kJisToSJis, "\x0E\x1BK1\x1B$(D1"sv, "\xB1\xB1"sv},
    {"the state lasts over line ends", kJisToSJis, "\x1B$B$\"\r\n$\"\x1B(I1\n1"sv,
     "\x82\xA0\r\n\x82\xA0\xB1\n\xB1"sv},
    {"kanji of another set", kJisToSJis, "\x1B$(D$\"\x1B(B"sv, "\x82\xA0"sv, "replaced 4+2>0"},
    {"ESC at the end", kJisToSJis, "a\x1B"sv, "a"sv, "replaced 1+1>1"},
    {"cut designations", kJisToSJis, "\x1B$"sv, "$"sv, "replaced 0+1>0"},
    {"cut designation of four", kJisToSJis, "\x1B$("sv, "$("sv, "replaced 0+1>0"},
    {"unknown $ and ( keep the state", kJisToSJis, "\x1B$B\x1B$A\x1B(C\x1B("sv,
     "\x82\xBF\x84\xC1("sv, "replaced 3+1>0, replaced 6+1>2, replaced 9+1>4, replaced 10+1>4"},
    {"other escapes clear it", kJisToSJis, "\x1B$B\x1B.A\x1B$B\x1B&$"sv, ".A&$"sv,
     "replaced 3+1>0, replaced 9+1>2"},
    {"a lone byte of kanji", kJisToSJis, "\x1B$B$"sv, "$"sv, "replaced 3+1>0"},
    {"a pair takes what follows", kJisToSJis, "\x1B$B$\n\x00\x1B\xFF\xFF!"sv,
     "\x82\x88\x70\x99\x30\x1F!"sv,
     "replaced 3+2>0, replaced 5+2>2, replaced 7+2>4, replaced 9+1>6"},
    {"8-bit bytes", kJisToSJis, "\xB1\x82\x0E\xB1\x21\x60\xFF"sv, "\xB1\x82\xB1\xA1\xE0\xFF"sv,
     "fit 0+1>0, replaced 1+1>1, fit 3+1>2, replaced 5+1>4, replaced 6+1>5"},

    {"kanji and katakana", kSJisToEuc, "\x82\xA0\xB1z"sv, "\xA4\xA2\x8E\xB1z"sv},
    {"lead bytes alone", kSJisToEuc, "\x82\n\x8E"sv, "\x82\n\x8E"sv,
     "replaced 0+2>0, replaced 2+1>2"},
    {"user-defined", kSJisToEuc, "\xF0\xB1"sv, "\xF0\x8E\xB1"sv, "replaced 0+1>0"},
    {"no characters at all", kSJisToEuc, "\x80\xA0\xFD"sv, "\x80\xA0\xFD"sv,
     "replaced 0+1>0, replaced 1+1>1, replaced 2+1>2"},

    {"kanji and katakana", kEucToSJis, "\xA4\xA2\x8E\xB1z"sv, "\x82\xA0\xB1z"sv},
    {"first byte at the end", kEucToSJis, "z\xA4"sv, "z\xA4"sv, "replaced 1+1>1"},
    {"shift byte at the end", kEucToSJis, "z\x8E"sv, "z\x8E"sv, "replaced 1+1>1"},
    {"a wrong second byte goes with the first", kEucToSJis, "\xA4\x8E\xB1\xB2\x8E\xE0z"sv,
     "\xA4\x8E\x89\x51\x8E\xE0z"sv, "replaced 0+2>0, replaced 4+2>4"},
    {"JIS X 0212", kEucToSJis, "\x8F\xA4\xA2z\x8F\xA4"sv, "\x8F\x82\xA0z\x8F\xA4"sv,
     "replaced 0+3>0, replaced 4+1>4, replaced 5+1>5"},
    {"C1 and FF", kEucToSJis, "\x80\xA0\xFF"sv, "\x80\xA0\xFF"sv,
     "replaced 0+1>0, replaced 1+1>1, replaced 2+1>2"},
};

TEST(JapaneseConversions, FollowTheRules) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what + " "s + Shown(c.text));
    CConversionReport report;
    EXPECT_EQ(Shown(Converted(c.conversion, c.text, &report)), Shown(c.expected));
    EXPECT_EQ(Shown(report), c.losses);
    for (std::size_t shift = 1; shift <= 31; ++shift) {
      const std::string before(shift, 'x');
      CConversionReport shifted;
      EXPECT_EQ(Shown(Converted(c.conversion, before + std::string(c.text), &shifted)),
                Shown(before + std::string(c.expected)));
      EXPECT_EQ(shifted.First().size(), report.First().size()) << shift;
    }
    ExpectSameInPieces(c.conversion, c.text, ~0u);
  }
}

TEST(JapaneseConversions, NullAndEmptyTextsGiveNothing) {
  for (const auto& [text, length] : kNoTexts) {
    CBuffer out("before");
    ConvertSJisToJis(text, length, out);
    EXPECT_TRUE(out.IsEmpty()) << length;
  }
}

// All texts of five telling bytes, in each of the ways to cut them.
TEST(JapaneseConversions, PiecesGiveTheWhole) {
  const struct {
    JapaneseConversion conversion;
    std::string_view bytes;
  } alphabets[] = {
      {kSJisToEuc, "A\n\x82\xA0\xB1\xF0\x7F"sv},
      {kEucToSJis, "A\n\x8E\x8F\xA4\xB1\x80"sv},
      {kSJisToJis, "A\n\x1B\x82\xA0\xB1\xFD"sv},
      {kJisToSJis, "\x1B$(BDI@&K\x0E\x0F\n\xB1"sv},
  };
  for (const auto& [conversion, bytes] : alphabets) {
    const std::size_t length = conversion == kJisToSJis ? 4 : 5;
    std::string text(length, '\0');
    std::vector<std::size_t> digits(length, 0);
    for (std::size_t place = 0; place < length;) {
      for (std::size_t i = 0; i < length; ++i) text[i] = bytes[digits[i]];
      for (unsigned cuts = 0; cuts < 1u << (length - 1); ++cuts) {
        ASSERT_NO_FATAL_FAILURE(ExpectSameInPieces(conversion, text, cuts));
      }
      for (place = 0; place < length && ++digits[place] == bytes.size(); ++place) digits[place] = 0;
    }
  }
}

// Every pair of bytes among eight in a row, which the whole text converts at once.
TEST(JapaneseConversions, PairsInARowAreThoseAlone) {
  for (const auto conversion : {kSJisToEuc, kEucToSJis, kSJisToJis, kJisToSJis}) {
    for (unsigned code = 0; code < 0x10000; code += 5) {
      std::string text = conversion == kJisToSJis ? "\x1B$B" : "";
      for (unsigned pair = code; pair < code + 9; ++pair) {
        text += static_cast<char>(pair >> 8);
        text += static_cast<char>(pair);
      }
      ASSERT_NO_FATAL_FAILURE(ExpectSameInPieces(conversion, text, ~0u));
    }
  }
}

// Texts of few kinds of pieces: some are whole vectors of pairs, others break off at every place.
TEST(JapaneseConversions, KernelsAgree) {
  constexpr unsigned kSeed = 77;
  // Those from kSevenBit on are what ISO-2022-JP is made of.
  constexpr std::size_t kSevenBit = 13;
  constexpr std::string_view kPieces[] = {"\xA4\xA2",
                                          "a",
                                          "0123456789abcdef",
                                          "\x82\xA0",
                                          "\xB0\xA1\xCC\xE3",
                                          "\x88\x9F",
                                          "\x8E\xB1",
                                          "\xEF\xFC",
                                          "\x8F\xA2\xAF",
                                          "\xFE\xFE",
                                          "\xA1\x20",
                                          "\xFF",
                                          "\x80",
                                          "\x30\x21",
                                          "\x1B$B",
                                          "\x1B(B",
                                          "b",
                                          "\x24\x22\x7E\x7E",
                                          "0123456789",
                                          "\r\n",
                                          "\x1B$",
                                          "\x1B(J",
                                          "\x0E",
                                          "\x0F",
                                          "\xB1"};
  std::mt19937 random(kSeed);
  for (int round = 0; round < 20000; ++round) {
    const JapaneseConversion conversion = kConversions[random() % 4];
    const bool fromJis = conversion == kJisToSJis;
    const auto kinds = std::span(kPieces).subspan(fromJis ? kSevenBit : 0);
    const std::size_t pieces = 1 + random() % kinds.size();
    std::string text = fromJis && round % 2 == 0 ? "\x1B$B" : "";
    for (const std::size_t size = random() % 300; text.size() < size;) {
      text += kinds[random() % 40 == 0 ? random() % kinds.size() : random() % pieces];
    }
    CConversionReport plainReport;
    CConversionReport report;
    internal::LimitCpu(internal::CpuLevel::kPortable);
    const std::string plain = Converted(conversion, text, &plainReport);
    internal::LimitCpu(internal::CpuLevel::kAll);
    ASSERT_EQ(Shown(Converted(conversion, text, &report)), Shown(plain)) << Shown(text);
    ASSERT_EQ(Shown(report), Shown(plainReport)) << Shown(text);
  }
}

// A slow reader of well-formed text: appends the characters of text to tokens, each with the set
// that it is of (a: ASCII, k: katakana, j: JIS X 0208). False for any other text.
bool ReadEightBit(std::string_view text, bool euc, std::string& tokens) {
  const auto within = [&](std::size_t pos, int first, int last) {
    const int byte = pos < text.size() ? static_cast<unsigned char>(text[pos]) : -1;
    return byte >= first && byte <= last;
  };
  for (std::size_t pos = 0; pos < text.size();) {
    std::size_t length = 1;
    char set = 'a';
    if (euc && within(pos, 0x8E, 0x8E) && within(pos + 1, 0xA1, 0xDF)) {
      set = 'k';
      length = 2;
    } else if (!euc && within(pos, 0xA1, 0xDF)) {
      set = 'k';
    } else if (euc ? within(pos, 0xA1, 0xFE) && within(pos + 1, 0xA1, 0xFE)
                   : (within(pos, 0x81, 0x9F) || within(pos, 0xE0, 0xEF)) &&
                         (within(pos + 1, 0x40, 0x7E) || within(pos + 1, 0x80, 0xFC))) {
      set = 'j';
      length = 2;
    } else if (!within(pos, 0x00, 0x7F)) {
      return false;
    }
    (tokens += set) += text.substr(pos, length);
    pos += length;
  }
  return true;
}

bool ReadJis(std::string_view text, std::string& tokens) {
  constexpr struct {
    std::string_view sequence;
    char set;  // of bytes outside katakana state; s: JIS X 0212; 0: as it was
    int kana;  // whether katakana state follows; -1: as it was
  } kControls[] = {
      {"\x1B(B", 'a', 0}, {"\x1B(J", 'a', 0}, {"\x1B(H", 'a', 0},   {"\x1BH", 'a', 0},
      {"\x1B$B", 'j', 0}, {"\x1B$@", 'j', 0}, {"\x1B$(D", 's', -1}, {"\x1BK", 'j', -1},
      {"\x1B(I", 'a', 1}, {"\x1B&@", 0, -1},  {"\x0E", 0, 1},       {"\x0F", 0, 0},
  };
  char set = 'a';
  bool kana = false;
  while (!text.empty()) {
    const auto* const control =
        std::find_if(std::begin(kControls), std::end(kControls),
                     [text](const auto& row) { return text.starts_with(row.sequence); });
    if (control != std::end(kControls)) {
      if (control->set != 0) set = control->set;
      if (control->kana >= 0) kana = control->kana != 0;
      text.remove_prefix(control->sequence.size());
      continue;
    }
    const auto within = [text](std::size_t pos, char first, char last) {
      return pos < text.size() && text[pos] >= first && text[pos] <= last;
    };
    const char now = text[0] == '\r' || text[0] == '\n' ? 'a' : kana ? 'k' : set;
    const bool known = now == 'a' ? within(0, '\0', '\x7F') && text[0] != '\x1B'
                       : now == 'k'
                           ? within(0, '\x21', '\x5F')
                           : now == 'j' && within(0, '\x21', '\x7E') && within(1, '\x21', '\x7E');
    if (!known) return false;
    (tokens += now) += text.substr(0, now == 'j' ? 2 : 1);
    text.remove_prefix(now == 'j' ? 2 : 1);
  }
  return true;
}

bool Read(JapaneseConversion conversion, std::string_view text, std::string& tokens) {
  if (conversion == kJisToSJis) return ReadJis(text, tokens);
  if (!ReadEightBit(text, conversion == kEucToSJis, tokens)) return false;
  // These are characters of Shift_JIS, but a reader of ISO-2022-JP would obey them.
  return conversion != kSJisToJis || text.find_first_of("\x1B\x0E\x0F") == text.npos;
}

// The report is empty just for well-formed text, and then the way back gives the same characters
// (the same bytes, where there are no escape sequences to choose).
TEST(JapaneseConversions, AnEmptyReportMeansAnExactRoundTrip) {
  for (const JapaneseConversion conversion : kConversions) {
    const bool jis = conversion == kJisToSJis;
    for (const std::string_view before :
         {""sv, "\x1B$B"sv, "\x1B(I"sv, "\x1B$B\x0E"sv, "\x1B$(D"sv}) {
      if (!jis && !before.empty()) continue;
      ForEachShortText([&](const std::string& bytes) {
        if (HasFatalFailure()) return;
        const std::string text = std::string(before) + bytes;
        std::string tokens;
        CConversionReport report;
        CConversionReport reportBack;
        const std::string there = Converted(conversion, text, &report);
        const bool wellFormed = Read(conversion, text, tokens);
        ASSERT_EQ(report.IsEmpty(), wellFormed) << Shown(text) << " > " << Shown(there);
        if (!wellFormed) return;
        const std::string back = Converted(Reverse(conversion), there, &reportBack);
        std::string tokensBack;
        Read(conversion, back, tokensBack);
        ASSERT_EQ(Shown(tokensBack), Shown(tokens)) << Shown(text) << " > " << Shown(there);
        ASSERT_TRUE(reportBack.IsEmpty()) << Shown(text) << " > " << Shown(there);
        ASSERT_TRUE(jis || back == text) << Shown(text) << " > " << Shown(there);
        ExpectSameInPieces(conversion, text, ~0u);
      });
    }
  }
}

// ISO-2022-JP can be four times the source; that much is not reserved beforehand.
TEST(JapaneseConversions, LongTextsOfEveryDensity) {
  const struct {
    std::string_view unit, before, expected, after;
  } rows[] = {{"abcdefgh", "", "abcdefgh", ""},
              {"\x82\xA0", "\x1B$B", "$\"", "\x1B(B"},
              {"\xB1"
               "a",
               "", "\x1B(I1\x1B(Ba", ""}};
  for (const auto& row : rows) {
    std::string text, expected(row.before);
    for (int count = 1; count <= 30000; ++count) {
      text += row.unit;
      expected += row.expected;
      if (count > 33 && count % 997 != 0) continue;
      ASSERT_TRUE(Converted(kSJisToJis, text) == expected + std::string(row.after))
          << Shown(row.unit) << " x " << count;
    }
  }
}

TEST(JapaneseConversions, RealTextsComeBack) {
  LUMR_NEEDS_CORPUS();
  const struct {
    const char* folder;
    JapaneseConversion conversion;
  } forms[] = {{"shift_jis", kSJisToEuc},
               {"shift_jis", kSJisToJis},
               {"euc-jp", kEucToSJis},
               {"iso-2022-jp", kJisToSJis}};
  for (const auto& form : forms) {
    for (const auto& entry : fs::directory_iterator(CorpusPath() / "charset" / form.folder)) {
      if (entry.path().string().ends_with(".utf8.txt")) continue;
      SCOPED_TRACE(entry.path().string());
      const std::string text = ReadCorpus(entry.path());
      CConversionReport report;
      const std::string there = Converted(form.conversion, text, &report);
      EXPECT_EQ(Shown(report), "");
      std::string tokens;
      std::string tokensBack;
      EXPECT_TRUE(Read(form.conversion, text, tokens));
      EXPECT_TRUE(Read(form.conversion, Converted(Reverse(form.conversion), there), tokensBack));
      EXPECT_TRUE(tokensBack == tokens);
    }
  }
  const auto text = [](const char* name) { return ReadCorpus(fs::path("charset") / name); };
  const std::string sjis = text("shift_jis/cpython-shift_jis.txt");
  EXPECT_EQ(Shown(Converted(kSJisToEuc, sjis)), Shown(text("euc-jp/cpython-euc_jp.txt")));
  EXPECT_EQ(Shown(Converted(kSJisToJis, sjis)), Shown(text("iso-2022-jp/cpython-iso2022_jp.txt")));
}

}  // namespace
}  // namespace lumr
