#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>

#include "lumrmisc/platform/cpu_internal.h"
#include "lumrmisc/platform/mbcs.h"
#include "platform/codepage_testing.h"

namespace lumr {
namespace {

using namespace std::string_view_literals;

TEST(CodePageDecoder, DecodesLeniently) {
  const struct {
    const char* what;
    unsigned codePage;
    std::string_view text;
    std::u16string_view units;
    int fits, replaced;
  } cases[] = {
      {"kana, kanji, half-width katakana", 932, "\x83\x41\x88\x9F\xB1", u"ア亜ｱ", 0, 0},
      {"backslash and tilde stay ASCII", 932, "\\~", u"\\~", 0, 0},
      {"Microsoft's names of the JIS cells", 932, "\x81\x60\x81\x61\x81\x7C\x81\x5C\x81\x91",
       u"～∥－―￠", 0, 0},
      {"NEC row 13, decodes only", 932, "\x87\x90", u"≒", 1, 0},
      {"NEC-selected, decodes only", 932, "\xED\x40", u"纊", 1, 0},
      {"IBM, comes back", 932, "\xFA\x5C", u"纊", 0, 0},
      {"IBM, decodes only", 932, "\xFA\x54", u"￢", 1, 0},
      {"user-defined", 932, "\xF0\x40\xF9\xFC", u"\uE000\uE757", 0, 0},
      {"80 is a control", 932, "\x80", u"\u0080", 0, 0},
      {"private-use single bytes", 932, "\xA0\xFD\xFE\xFF", u"\uF8F0\uF8F1\uF8F2\uF8F3", 0, 4},
      {"a bad pair uses up an ASCII byte", 932, "\x81 x", u"・x", 0, 1},
      {"a bad pair uses up a lead byte", 932, "\x81\xFD\x41", u"・A", 0, 1},
      {"zero is no trail byte", 932, "\x81\0\x41"sv, u"・\0A"sv, 0, 1},
      {"lead byte without characters", 932, "\x85\x41\x42", u"・B", 0, 1},
      {"lead byte at the end", 932, "A\x81", u"A・", 0, 1},
      {"controls pass", 932, "\0\x1A\x7F\x1B"sv, u"\0\x1A\x7F\x1B"sv, 0, 0},
      {"euro and private use", 936, "\x80\xFF\xB0\xA1", u"€\uF8F5啊", 0, 1},
      {"user-defined areas", 936, "\xAA\xA1\xA1\x40\xA7\xA0", u"\uE000\uE4C6\uE765", 0, 0},
      {"7F is no trail byte", 936, "\x81\x7F\x41", u"?A", 0, 1},
      {"syllables of Unified Hangul", 949, "\x81\x41\xB0\xA1\xC6\x52", u"갂가힣", 0, 0},
      {"user-defined rows", 949, "\xC9\xA1\xFE\xA1\x80\xFF", u"\uE000\uE05E\u0080\uF8F7", 0, 1},
      {"a bad pair", 949, "\x81\x5B\x41", u"?A", 0, 1},
      {"the part of KS X 1001", 51949, "A\xB0\xA1\xC8\xFE\xFD\xFE", u"A가힝詰", 0, 0},
      {"the rest as in 949", 51949, "\x8C\x63\xA1\x41\xC9\xA1\x80\xFF",
       u"똠\uC8A5\uE000\u0080\uF8F7", 0, 5},
      {"no pair", 51949, "\xB0\x20\xB0\0\xB0"sv, u"??\0?"sv, 0, 3},
      {"duplicates", 950, "\xA2\xA4\xF9\xF9\xA2\xCC\xA4\x51", u"══十十", 2, 0},
      {"user-defined", 950, "\xFA\x40\x8E\x40\x81\x40\xFF", u"\uE000\uE311\uEEB8\uF8F8", 0, 1},
      {"unused bytes are controls", 1252, "\x80\x81\x9D\xFF", u"€\u0081\u009Dÿ", 0, 0},
      {"undefined bytes", 1253, "\xAA\xD2\xFF\xE1", u"\uF8F9\uF8FA\uF8FBα", 0, 3},
      {"undefined bytes", 28597, "\xA4\xE1\xFF", u"\uF7C2α\uF7C7", 0, 2},
      {"high bytes lose the high bit", 20127, "A\xC1\xBF", u"AA?", 1, 1},
      {"KOI8", 20866, "\xC1\xD0", u"ап", 0, 0},
      {"UTF-16 is itself, odd or not", 1200, "A\0\xFF\xFE\x42"sv, u"A\uFEFF", 0, 0},
      {"a byte-order mark stays", 65001,
       "\xEF\xBB\xBF"
       "A",
       u"\uFEFFA", 0, 0},
      {"the ANSI page", 0, "\x83\x41", u"ア", 0, 0},
  };
  for (const auto& c : cases) {
    // Long enough for the loops that take many bytes at once; behind each distance from their
    // borders.
    for (std::size_t before : {0u, 1u, 7u, 31u, 64u}) {
      SCOPED_TRACE(std::to_string(c.codePage) + " " + c.what + " after " + std::to_string(before));
      const std::size_t filler = c.codePage == 1200 ? before * 2 : before;
      const Converted got = Decode(c.codePage, std::string(filler, 'a') + std::string(c.text));
      const std::u16string units = Units(got.bytes);
      EXPECT_EQ(units.substr(std::min(before, units.size())), c.units);
      EXPECT_EQ(got.fits, c.fits);
      EXPECT_EQ(got.replaced, c.replaced);
    }
  }
}

TEST(CodePageEncoder, EncodesExactlyOrBestOrReplaces) {
  const struct {
    const char* what;
    unsigned codePage;
    std::u16string_view units;
    std::string_view bytes;
    int fits, replaced;
  } cases[] = {
      {"kana, kanji, half-width katakana", 932, u"ア亜ｱA",
       "\x83\x41\x88\x9F\xB1"
       "A",
       0, 0},
      {"JIS names of the cells", 932, u"〜‖−—‾", "\x81\x60\x81\x61\x81\x7C\x81\x5C\x81\x50", 5, 0},
      {"Microsoft's names", 932, u"～∥－―￣", "\x81\x60\x81\x61\x81\x7C\x81\x5C\x81\x50", 0, 0},
      {"look-alikes", 932, u"¥é©¢ヴゔ", "\\ec\x81\x91\x83\x94\x83\x94", 5, 0},
      {"not there", 932, u"가\u00A0€", "???", 0, 3},
      {"a pair is two units", 932, u"😀\xD800", "???", 0, 3},
      {"private use of single bytes", 932, u"\uF8F0\uF8F3\uE757\uE758", "\xA0\xFF\xF9\xFC?", 0, 1},
      {"NUL and controls", 932, u"\0\x1A\x80"sv, "\0\x1A\x80"sv, 0, 0},
      {"Unified Hangul is not EUC-KR", 51949, u"가똠A", "\xB0\xA1?A", 0, 1},
      {"949", 949, u"가똠", "\xB0\xA1\x8C\x63", 0, 0},
      {"duplicates go to one code", 950, u"═十", "\xF9\xF9\xA4\x51", 0, 0},
      {"Latin", 1252, u"é€Ａā",
       "\xE9\x80"
       "Aa",
       2, 0},
      {"Latin", 28591, u"é€", "\xE9?", 0, 1},
      {"ASCII", 20127, u"Aé中", "Ae?", 1, 1},
      {"pair and halves", 65001,
       u"😀\xD800"
       u"A\xDC00",
       "😀\xEF\xBF\xBD"
       "A\xEF\xBF\xBD",
       0, 2},
      {"UTF-16 is itself", 1200, u"A\xD800", "A\0\0\xD8"sv, 0, 0},
  };
  for (const auto& c : cases) {
    for (std::size_t before : {0u, 1u, 7u, 31u, 64u}) {
      SCOPED_TRACE(std::to_string(c.codePage) + " " + c.what + " after " + std::to_string(before));
      std::u16string units(before, u'a');
      const Converted got = Encode(c.codePage, Bytes(units += c.units));
      const std::size_t filler = c.codePage == 1200 ? before * 2 : before;
      EXPECT_EQ(Shown(got.bytes.substr(std::min(filler, got.bytes.size()))), Shown(c.bytes));
      EXPECT_EQ(got.fits, c.fits);
      EXPECT_EQ(got.replaced, c.replaced);
    }
  }
}

TEST(CodePageEncoder, EmptyReplacementDrops) {
  EXPECT_EQ(Encode(932, Bytes(u"A가B\xD800😀C"), {}, "").bytes, "ABC");
  EXPECT_EQ(Encode(1252, Bytes(u"中a中b中c中d中"), {}, "").bytes, "abcd");
}

TEST(CodePageCoders, ReportWhatIsLostAndWhere) {
  const auto fit = ConversionLossKind::kFit;
  const auto replaced = ConversionLossKind::kReplaced;
  const struct {
    const char* what;
    Converted got;
    std::vector<ConversionLoss> losses;
  } cases[] = {
      {"932",
       Decode(932, "ab\x87\x90\x83\x41\x81 \xA0\x81\0\x81"sv),
       {{fit, 2, 2, 4},
        {replaced, 6, 2, 8},
        {replaced, 8, 1, 10},
        {replaced, 9, 1, 12},
        {replaced, 11, 1, 16}}},
      {"to 932",
       Encode(932, Bytes(u"ア가〜😀é")),
       {{replaced, 2, 2, 2},
        {fit, 4, 2, 3},
        {replaced, 6, 2, 5},
        {replaced, 8, 2, 6},
        {fit, 10, 2, 7}}},
      {"to 932, an odd byte", Encode(932, "A\0B"sv), {{replaced, 2, 1, 1}}},
      {"1253, in the middle of eight",
       Decode(1253,
              "0123456789\xAA"
              "bcdef"),
       {{replaced, 10, 1, 20}}},
      {"UTF-8",
       Decode(65001, "\xE3\x81x\xF0\x9F\x98\xED\xA0\x80"),
       {{replaced, 0, 2, 0},
        {replaced, 3, 3, 4},
        {replaced, 6, 1, 6},
        {replaced, 7, 1, 8},
        {replaced, 8, 1, 10}}},
      {"to UTF-8",
       Encode(65001, Bytes(u"é\xDC00\xD800")),
       {{replaced, 2, 2, 2}, {replaced, 4, 2, 5}}},
      {"UTF-7",
       Decode(65000, "a+ \xFF\xFE+AGEx-+AGF "),
       {{replaced, 1, 1, 2}, {replaced, 3, 2, 6}, {replaced, 8, 2, 10}, {replaced, 14, 1, 14}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ASSERT_EQ(c.got.losses.size(), c.losses.size());
    for (std::size_t i = 0; i < c.losses.size(); ++i) {
      SCOPED_TRACE(i);
      EXPECT_EQ(c.got.losses[i].kind, c.losses[i].kind);
      EXPECT_EQ(c.got.losses[i].inputOffset, c.losses[i].inputOffset);
      EXPECT_EQ(c.got.losses[i].inputLength, c.losses[i].inputLength);
      EXPECT_EQ(c.got.losses[i].outputOffset, c.losses[i].outputOffset);
    }
    EXPECT_EQ(c.got.fits + c.got.replaced, static_cast<long long>(c.losses.size()));
  }
}

// Every byte sequence that a page decodes without loss comes back, and only those do; every unit
// that it encodes exactly comes back, and only those do.
TEST(CodePageCoders, ExactMeansThatItComesBack) {
  for (const unsigned codePage : TablePages()) {
    const MbcsPage& page = *FindMbcsPage(codePage);
    SCOPED_TRACE(codePage);
    int wrong = 0;
    for (unsigned code = 0; code < 0x10000; ++code) {
      if (code > 0xFF && !page.IsLead(static_cast<char>(code >> 8))) continue;
      const std::string text = CodeBytes(code);
      const Converted decoded = Decode(codePage, text);
      const Converted back = Encode(codePage, decoded.bytes);
      const bool comesBack = back.bytes == text && back.fits + back.replaced == 0;
      // The private-use units of undefined bytes come back, and are replacements all the same.
      const bool exact = decoded.fits + decoded.replaced == 0;
      const char16_t unit = LoadUnit(decoded.bytes.data());
      const bool lenientByte = decoded.replaced > 0 && unit >= 0xF7C2 && unit <= 0xF8FD;
      if (exact != comesBack && !(comesBack && (lenientByte || text == "?")) && ++wrong < 10) {
        ADD_FAILURE() << Shown(text) << " gives " << Shown(decoded.bytes) << ", back "
                      << Shown(back.bytes);
      }
    }
    for (unsigned value = 0; value < 0x10000; ++value) {
      const auto unit = static_cast<char16_t>(value);
      const Converted encoded = Encode(codePage, Bytes({&unit, 1}));
      const bool comesBack = Decode(codePage, encoded.bytes).bytes == Bytes({&unit, 1});
      const bool exact = encoded.fits + encoded.replaced == 0;
      const int code = EncodeUnit(codePage, unit, false);
      EXPECT_EQ(encoded.replaced == 0, code >= 0);
      EXPECT_EQ(encoded.bytes, code < 0 ? "?" : CodeBytes(static_cast<unsigned>(code)));
      EXPECT_EQ(EncodeUnit(codePage, unit, true), exact ? code : -1);
      if (exact != comesBack && ++wrong < 10) {
        ADD_FAILURE() << "U+" << std::hex << value << " gives " << Shown(encoded.bytes);
      }
    }
  }
}

// What is cut anywhere must give the same as the whole, losses and their places included.
TEST(CodePageCoders, ChunksGiveTheSameAsTheWhole) {
  const struct {
    unsigned codePage;
    std::string_view text;
    std::u16string_view units;
  } cases[] = {
      {932, "a\x83\x41\x81 \xED\x40\xB1\x81\x81\0\x81\xFD\xA0 0123456789abcdef\x88\x9F\x81"sv,
       u"aア가〜\xD83D\xDE00é0123456789abcdef亜"},
      {936, "\xB0\xA1\x81\x7F\x80\xFF\xAA\xA1\x81", u"啊€é가\uE000"},
      {51949, "\xB0\xA1\x8C\x63\xA1\x41\xC9", u"가똠é\uE000"},
      {1253,
       "abc\xAA"
       "defgh\xE1\xE2\xD2jklmnopqrstuvwxyz0123456789abcdef",
       u"αβγ中abcdefghijklmnopqrstuvwxyz0123456789αβγéa"},
      {65001, "a\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80\xE3\x81x\xF4\x90\x80\xED\xA0\x80\xF0\x9F\x98",
       u"aéあ\xD83D\xDE00\xD83Dx\xDE00\xD83D"},
      {65000, "a+AOkwQg-b+2D3eAA-+-+ +\xFF\xFE+MEI\xFF+MEIxx-c+MEJ.+MEJC+",
       u"aéあ\xD83D\xDE00+-/\xD83Dx~é"},
      {1200, "abc", u"ab"},
  };
  for (const auto& c : cases) {
    const std::string odd = std::string(Bytes(c.units)) + "z";
    const Converted decoded = Decode(c.codePage, c.text);
    const Converted encoded = Encode(c.codePage, odd);
    std::vector<std::size_t> all;
    for (std::size_t cut = 0; cut <= odd.size(); ++cut) {
      SCOPED_TRACE(std::to_string(c.codePage) + " cut at " + std::to_string(cut));
      EXPECT_EQ(Decode(c.codePage, c.text, {std::min(cut, c.text.size())}), decoded);
      EXPECT_EQ(Encode(c.codePage, odd, {cut}), encoded);
    }
    SCOPED_TRACE(c.codePage);
    for (std::size_t cut = 0; cut <= c.text.size(); ++cut) all.push_back(cut);
    EXPECT_EQ(Decode(c.codePage, c.text, all), decoded);
    all.clear();
    for (std::size_t cut = 0; cut <= odd.size(); ++cut) all.push_back(cut);
    EXPECT_EQ(Encode(c.codePage, odd, all), encoded);
  }
}

TEST(CodePageCoders, PendingTellsWhereCharactersEnd) {
  char out[64];
  CodePageDecoder sjis(932);
  sjis.Decode("A\x83", false, out);
  EXPECT_EQ(sjis.Pending(), 1u);
  sjis.Decode("\x41", false, out);
  EXPECT_EQ(sjis.Pending(), 0u);
  CodePageEncoder utf8(65001, "?");
  utf8.Encode("A\0\x3D\xD8\x00"sv, false, out);
  EXPECT_EQ(utf8.Pending(), 3u);
}

TEST(CodePageDecoder, SingleByteKernelsAgree) {
  constexpr unsigned kSeed = 17;
  std::mt19937 random(kSeed);
  for (const unsigned codePage : kSingleBytePages) {
    SCOPED_TRACE(codePage);
    std::string text;
    for (int byte = 0; byte < 256; ++byte) text += static_cast<char>(byte);
    for (int i = 0; i < 2000; ++i) text += static_cast<char>(random());
    for (int i = 0; i < 2000; ++i)
      text += static_cast<char>(i % 40 == 0 ? 0x80 + random() % 128 : 'x');
    internal::LimitCpu(internal::CpuLevel::kPortable);
    const Converted decoded = Decode(codePage, text);
    internal::LimitCpu(internal::CpuLevel::kAll);
    EXPECT_EQ(Decode(codePage, text), decoded);
  }
}

// Bytes of few kinds, so that some texts are all pairs and others break off at every place.
TEST(CodePageDecoder, DoubleByteKernelsAgree) {
  constexpr unsigned kSeed = 23;
  constexpr std::string_view kPieces[] = {"a",        "0123456789abcdef",
                                          "\x82\xA0", "\x88\x9F\x98\x72",
                                          "\xB1\xDE", "\xE0\x9F\xFC\x4B",
                                          "\x81\x7F", "\x85\x40",
                                          "\x80",     "\xA0",
                                          "\xFF",     "\x9F\x20",
                                          "\xFE\xFE", "\xFD\xA1",
                                          "\xA1"};
  std::mt19937 random(kSeed);
  for (int round = 0; round < 20000; ++round) {
    const unsigned codePage = std::array{932u, 936u, 949u, 950u, 51949u}[random() % 5];
    const std::size_t pieces = 1 + random() % std::size(kPieces);
    std::string text;
    for (const std::size_t size = random() % 300; text.size() < size;) {
      text += random() % 40 == 0 ? std::string(1, static_cast<char>(random()))
                                 : std::string(kPieces[random() % pieces]);
    }
    internal::LimitCpu(internal::CpuLevel::kPortable);
    const Converted decoded = Decode(codePage, text);
    std::string units = decoded.bytes;
    if (round % 3 == 0 && !units.empty())
      units[random() % units.size()] = static_cast<char>(random());
    const Converted encoded = Encode(codePage, units);
    internal::LimitCpu(internal::CpuLevel::kAll);
    ASSERT_EQ(Decode(codePage, text), decoded) << codePage << ' ' << Shown(text);
    ASSERT_EQ(Encode(codePage, units), encoded) << codePage << ' ' << Shown(units);
  }
}

TEST(Utf8, CarriesEveryCharacter) {
  std::u16string units;
  for (unsigned c = 0; c < 0x110000; ++c) {
    if (c >= 0xD800 && c < 0xE000) continue;
    if (c >= 0x10000) units += static_cast<char16_t>(0xD7C0 + (c >> 10));
    units += static_cast<char16_t>(c < 0x10000 ? c : 0xDC00 | (c & 0x3FF));
  }
  const Converted encoded = Encode(65001, Bytes(units));
  const Converted decoded = Decode(65001, encoded.bytes);
  EXPECT_EQ(encoded.bytes.size(), 0x80u + 2 * 0x780 + 3 * (0xF800 - 0x800) + 4 * 0x100000);
  EXPECT_TRUE(decoded.bytes == Bytes(units));
  EXPECT_TRUE(encoded.losses.empty() && decoded.losses.empty());
}

TEST(Utf8, ReplacesMalformedParts) {
  const struct {
    std::string_view text;
    std::u16string_view units;
  } cases[] = {
      {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41",
       u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
      {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41",
       u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
      {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB"},
      {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", u"\uFFFD\uFFFD\uFFFD\uFFFDA"},
      {"\xF8\x88\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"\xF4\x8F\xBF\xBF\xEF\xBF\xBF\xED\x9F\xBF\xE0\xA0\x80\xF0\x90\x80\x80",
       u"\U0010FFFF\uFFFF\uD7FF\u0800\U00010000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Shown(c.text));
    const Converted got = Decode(65001, c.text);
    EXPECT_EQ(Units(got.bytes), c.units);
    EXPECT_EQ(got.replaced, std::count(c.units.begin(), c.units.end(), u'\uFFFD'));
  }
}

// Every piece may meet every other one at any place of a vector.
std::string RandomUtf8(std::mt19937& random) {
  constexpr std::string_view kPieces[] = {"a",
                                          "0123456789abcdef",
                                          "\xC3\xA9",
                                          "\xD1\x8F\xD0\x9F",
                                          "\xE3\x81\x82",
                                          "\xE6\xBC\xA2",
                                          "\xE0\xA0\x80",
                                          "\xED\x9F\xBF",
                                          "\xEE\x80\x80",
                                          "\xEF\xBF\xBF",
                                          "\xC2\x80",
                                          "\xDF\xBF",
                                          "\x7F",
                                          "\xF0\x9F\x98\x80"};
  // A short alphabet for each text: of some, vectors take all.
  const std::size_t pieces = 1 + random() % std::size(kPieces);
  std::string text;
  for (const std::size_t size = random() % 300; text.size() < size;) {
    text += kPieces[random() % pieces];
  }
  return text;
}

TEST(Utf8, KernelsAgree) {
  constexpr unsigned kSeed = 41;
  std::mt19937 random(kSeed);
  for (int round = 0; round < 20000; ++round) {
    std::string text = RandomUtf8(random);
    if (round % 2 != 0 && !text.empty()) {
      // Most of all what turns one lead byte into another, or cuts a sequence.
      constexpr std::string_view kOdd =
          "\x80\xBF\xC0\xC1\xC2\xE0\xE3\xED\xEF\xF0\xF4\xF5\xFF\x41\x9F\xA0";
      text[random() % text.size()] = kOdd[random() % kOdd.size()];
    }
    internal::LimitCpu(internal::CpuLevel::kPortable);
    const Converted decoded = Decode(65001, text);
    std::string units = decoded.bytes;
    if (round % 3 == 0 && !units.empty()) units[random() % units.size()] = '\xD9';
    const Converted encoded = Encode(65001, units);
    for (const auto level : {internal::CpuLevel::kAvx2, internal::CpuLevel::kAll}) {
      internal::LimitCpu(level);
      ASSERT_EQ(Decode(65001, text), decoded) << Shown(text);
      ASSERT_EQ(Encode(65001, units), encoded) << Shown(units);
    }
  }
}

TEST(Utf7, DecodesAndReplacesMalformedParts) {
  const struct {
    std::string_view text;
    std::u16string_view units;
    int replaced;
  } cases[] = {{"A+ImIDkQ.", u"A≢Α.", 0},
               {"Hi Mom -+Jjo--!", u"Hi Mom -☺-!", 0},
               {"+ZeVnLIqe-", u"日本語", 0},
               {"Item 3 is +AKM-1.", u"Item 3 is £1.", 0},
               {"+2D3eAA-", u"😀", 0},
               {"+2D0-", u"\xD83D", 0},
               {"+-+--", u"++-", 0},
               {"~\\\0"sv, u"~\\\0"sv, 0},
               {"+AGEAYg", u"ab", 0},
               {"+AGE\r\n", u"a\r\n", 0},
               {"+", u"\uFFFD", 1},
               {"+!", u"\uFFFD!", 1},
               {"a\xE3\x81\x82z", u"a\uFFFDz", 1},
               {"+AGE\xFF-", u"a\uFFFD-", 1},
               {"+AGF-", u"a\uFFFD", 1},
               {"+AGEA-", u"a\uFFFD", 1},
               {"+A-", u"\uFFFD", 1},
               {"+AGEAA", u"a\uFFFD", 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const Converted got = Decode(65000, c.text);
    EXPECT_EQ(Units(got.bytes), c.units);
    EXPECT_EQ(got.replaced, c.replaced);
  }
}

TEST(Utf7, EncodesAndComesBack) {
  const struct {
    std::u16string_view units;
    std::string_view text;
  } cases[] = {{u"A≢Α.", "A+ImIDkQ."},
               {u"Hi Mom -☺-!", "Hi Mom -+Jjo--+ACE-"},
               {u"日本語", "+ZeVnLIqe-"},
               {u"+ é+/", "+- +AOkAKw-/"},
               {u"~\\=\0\r\n\t"sv, "+AH4AXAA9AAA\r\n\t"},
               {u"é😀\xD800", "+AOnYPd4A2AA-"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(Encode(65000, Bytes(c.units)).bytes, c.text);
  }
  std::u16string all;
  for (unsigned i = 0; i < 0x20000; ++i) {
    all += static_cast<char16_t>(i);
    if (i % 3 == 0) all += u'a';
  }
  const Converted encoded = Encode(65000, Bytes(all));
  const Converted decoded = Decode(65000, encoded.bytes);
  EXPECT_TRUE(decoded.bytes == Bytes(all));
  EXPECT_TRUE(
      std::all_of(encoded.bytes.begin(), encoded.bytes.end(), [](char c) { return c > 0; }));
  EXPECT_TRUE(encoded.losses.empty() && decoded.losses.empty());
}

// The value of a JSON string on one line; the files hold no escape but \".
std::string JsonString(const std::string& line, const std::string& key) {
  const std::size_t begin = line.find("\"" + key + "\": \"") + key.size() + 5;
  return line.substr(begin, line.find("\", \"", begin) - begin);
}

TEST(Utf7, DecodesTheVectorsOfMailPrograms) {
  const char* const corpus = std::getenv("LUMRMISC_CORPUS");
  if (corpus == nullptr) GTEST_SKIP() << "LUMRMISC_CORPUS is not set";
  std::ifstream file(std::string(corpus) + "/vectors/utf7.jsonl");
  int count = 0;
  for (std::string line; std::getline(file, line); ++count) {
    SCOPED_TRACE(line);
    const Converted decoded = Decode(65000, JsonString(line, "utf7"));
    EXPECT_EQ(decoded.bytes, Decode(65001, JsonString(line, "text")).bytes);
    EXPECT_EQ(decoded.replaced, 0);
  }
  EXPECT_GT(count, 0);
}

TEST(CodePages, AreSupportedByNumber) {
  for (const unsigned codePage : TablePages()) EXPECT_TRUE(IsCodePageSupported(codePage));
  for (const unsigned codePage : {0u, 1200u, 65000u, 65001u}) {
    EXPECT_TRUE(IsCodePageSupported(codePage));
  }
  for (const unsigned codePage : {1u, 437u, 1201u, 20949u, 50220u, 51932u, 54936u}) {
    EXPECT_FALSE(IsCodePageSupported(codePage));
    EXPECT_EQ(EncodeUnit(codePage, u'A', false), -1);
  }
  EXPECT_EQ(EncodeUnit(65001, u'A', false), -1);
}

}  // namespace
}  // namespace lumr
