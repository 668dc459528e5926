// Every code and every unit of every code page beside iconv and ICU, and the differences that
// are wanted.
#include <gtest/gtest.h>
#include <iconv.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>

#include <random>

#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/unicode.h"
#include "platform/codepage_testing.h"

namespace lumr {
namespace {

enum Peer { kIconv = 1, kIcu = 2, kBoth = 3 };
enum Direction { kDecoding = 1, kEncoding = 2, kEither = 3 };

// Differences that are wanted: in decoding by code, in encoding by unit; in either direction by
// unit. Code page 0 is all of them.
struct Difference {
  unsigned codePage;
  int peer;
  int direction;
  unsigned first;
  unsigned last;
  const char* reason;
};
constexpr Difference kDifferences[] = {
    {0, kBoth, kEither, 0xE000, 0xF8FF, "user-defined areas, private use for undefined bytes"},
    {0, kIconv, kEither, 0x80, 0x9F, "Microsoft fills unused bytes with the C1 controls"},
    {932, kIcu, kEither, 0x1A, 0x1A, "ICU turns 1A, 1C and 7F around as the IBM PC does"},
    {932, kIcu, kEither, 0x1C, 0x1C, "as 1A"},
    {932, kIcu, kEither, 0x7F, 0x7F, "as 1A"},
    {932, kIcu, kEither, 0x80, 0x80, "a control on Windows"},
    {932, kIconv, kEncoding, 0x203E, 0x203E, "8150 is the JIS overline, 7E stays ASCII"},
    {950, kIconv, kEncoding, 0x2550, 0x256A, "of two codes Windows prefers the row F9"},
    {1253, kIcu, kEither, 0xAA, 0xAA, "undefined on Windows"},
    {20127, kBoth, kDecoding, 0x80, 0xFF, "Windows takes the low seven bits"},
    {28597, kBoth, kDecoding, 0xA1, 0xA2, "Windows has the table of 1987, the peers that of 2003"},
    {28597, kBoth, kDecoding, 0xA4, 0xA5, "as A1"},
    {28597, kBoth, kDecoding, 0xAA, 0xAA, "as A1"},
    {28597, kBoth, kEncoding, 0x02BC, 0x02BD, "as A1"},
    {28597, kBoth, kEncoding, 0x037A, 0x037A, "as A1"},
    {28597, kBoth, kEncoding, 0x2018, 0x2019, "as A1"},
    {28597, kBoth, kEncoding, 0x20AC, 0x20AF, "as A1"},
    {51949, kIcu, kEither, 0x80, 0x9F, "no C1 controls in EUC-KR"},
    {51949, kIcu, kEither, 0x00AE, 0x00AE, "added to KS X 1001 in 1998, as in 949"},
    {51949, kIcu, kEither, 0x20AC, 0x20AC, "added to KS X 1001 in 1998, as in 949"},
    {51949, kIconv, kEither, 0x327E, 0x327E, "added to KS X 1001 in 2002"},
    {51949, kIconv, kEncoding, 0x20A9, 0x20A9, "a look-alike of iconv's own"},
};

struct PeerNames {
  unsigned codePage;
  const char* iconvName;
  const char* icuName;
};
constexpr PeerNames kPeers[] = {
    {932, "CP932", "ibm-943_P15A-2003"},
    {936, "CP936", "windows-936-2000"},
    {949, "CP949", "windows-949-2000"},
    {950, "BIG5", "windows-950-2000"},
    {51949, "EUC-KR", "ibm-970_P110_P110-2006_U2"},
    {1250, "CP1250", "windows-1250"},
    {1251, "CP1251", "windows-1251"},
    {1252, "CP1252", "windows-1252"},
    {1253, "CP1253", "windows-1253"},
    {1254, "CP1254", "windows-1254"},
    {1257, "CP1257", "windows-1257"},
    {20127, "ASCII", "US-ASCII"},
    {20866, "KOI8-R", "KOI8-R"},
    {28591, "ISO-8859-1", "ISO-8859-1"},
    {28592, "ISO-8859-2", "ISO-8859-2"},
    {28594, "ISO-8859-4", "ISO-8859-4"},
    {28595, "ISO-8859-5", "ISO-8859-5"},
    {28597, "ISO-8859-7", "ISO-8859-7"},
    {28599, "ISO-8859-9", "ISO-8859-9"},
};

using Result = std::string;  // empty when the conversion is refused

class IconvConverter {
 public:
  IconvConverter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    EXPECT_NE(handle_, reinterpret_cast<iconv_t>(-1)) << to << " from " << from;
  }
  ~IconvConverter() { iconv_close(handle_); }
  IconvConverter(const IconvConverter&) = delete;
  IconvConverter& operator=(const IconvConverter&) = delete;

  Result operator()(std::string text) const {
    std::string result(4 * text.size() + 16, '\0');
    char* in = text.data();
    char* out = result.data();
    std::size_t inLeft = text.size();
    std::size_t outLeft = result.size();
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(handle_, &in, &inLeft, &out, &outLeft) != 0) return {};
    iconv(handle_, nullptr, nullptr, &out, &outLeft);
    result.resize(result.size() - outLeft);
    return result;
  }

 private:
  iconv_t handle_;
};

class IcuConverter {
 public:
  IcuConverter(const char* name, bool fallback) {
    UErrorCode status = U_ZERO_ERROR;
    handle_ = ucnv_open(name, &status);
    EXPECT_TRUE(U_SUCCESS(status)) << name;
    ucnv_setFallback(handle_, fallback);
  }
  ~IcuConverter() { ucnv_close(handle_); }
  IcuConverter(const IcuConverter&) = delete;
  IcuConverter& operator=(const IcuConverter&) = delete;

  void Stop() {
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(handle_, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(handle_, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  }
  Result Decode(std::string_view text) const {
    UErrorCode status = U_ZERO_ERROR;
    std::u16string units(text.size() + 1, u'\0');
    const int size = ucnv_toUChars(handle_, units.data(), static_cast<int>(units.size()),
                                   text.data(), static_cast<int>(text.size()), &status);
    if (U_FAILURE(status)) return {};
    return std::string(Bytes(units.substr(0, static_cast<std::size_t>(size))));
  }
  // ICU drops characters that are not shown instead of refusing them.
  Result Encode(std::u16string_view units) const {
    UErrorCode status = U_ZERO_ERROR;
    char bytes[16];
    const int size = ucnv_fromUChars(handle_, bytes, sizeof bytes, units.data(),
                                     static_cast<int>(units.size()), &status);
    if (U_FAILURE(status) || size == 0) return {};
    return std::string(bytes, static_cast<std::size_t>(size));
  }

 private:
  UConverter* handle_ = nullptr;
};

class CodePagePeers : public testing::Test {
 protected:
  // Notes that ours and a peer's result differ; unit is what the code stands for.
  void Differ(unsigned codePage, Peer peer, Direction direction, unsigned value, unsigned unit,
              const Result& ours, const Result& theirs) {
    for (std::size_t i = 0; i < std::size(kDifferences); ++i) {
      const Difference& row = kDifferences[i];
      const unsigned key = row.direction == kEither ? unit : value;
      if ((row.codePage == 0 || row.codePage == codePage) && (row.peer & peer) != 0 &&
          (row.direction & direction) != 0 && row.first <= key && key <= row.last) {
        used_[i] |= peer;
        return;
      }
    }
    if (++wrong_ > 50) return;
    ADD_FAILURE() << codePage << (peer == kIconv ? " iconv " : " ICU ")
                  << (direction == kDecoding ? "decodes " : "encodes ") << std::hex << value
                  << " to " << Shown(theirs) << ", we to " << Shown(ours);
  }

  void CompareDecoding(const PeerNames& names, const IconvConverter& iconv,
                       const IcuConverter& icu) {
    const MbcsPage& page = *FindMbcsPage(names.codePage);
    for (unsigned code = 0; code < 0x10000; ++code) {
      if (code > 0xFF && !page.IsLead(static_cast<char>(code >> 8))) continue;
      if (code <= 0xFF && page.IsLead(static_cast<char>(code))) continue;
      const std::string text = CodeBytes(code);
      const Converted got = Decode(names.codePage, text);
      const Result ours = got.replaced > 0 ? Result() : got.bytes;
      for (const Peer peer : {kIconv, kIcu}) {
        Result theirs = peer == kIconv ? iconv(text) : icu.Decode(text);
        if (theirs.size() != 2) theirs.clear();  // two characters are not this code
        if (theirs == ours) continue;
        Differ(names.codePage, peer, kDecoding, code,
               LoadUnit((ours.empty() ? theirs : ours).data()), ours, theirs);
      }
    }
  }

  void CompareEncoding(const PeerNames& names, const IconvConverter& iconv,
                       const IcuConverter& icu) {
    for (unsigned value = 0; value < 0x10000; ++value) {
      const auto unit = static_cast<char16_t>(value);
      const Converted got = Encode(names.codePage, Bytes({&unit, 1}));
      const Result ours = got.replaced + got.fits > 0 ? Result() : got.bytes;
      for (const Peer peer : {kIconv, kIcu}) {
        const Result theirs =
            peer == kIconv ? iconv(std::string(Bytes({&unit, 1}))) : icu.Encode({&unit, 1});
        // What is a fit here is an equal of the exact ones for iconv.
        if (theirs == ours || (got.fits > 0 && theirs == got.bytes)) continue;
        Differ(names.codePage, peer, kEncoding, value, value, ours, theirs);
      }
    }
  }

  int wrong_ = 0;
  int used_[std::size(kDifferences)] = {};
};

TEST_F(CodePagePeers, AgreeExceptWhereListed) {
  for (const PeerNames& names : kPeers) {
    IcuConverter icu(names.icuName, false);
    icu.Stop();
    CompareDecoding(names, IconvConverter("UTF-16LE", names.iconvName), icu);
    CompareEncoding(names, IconvConverter(names.iconvName, "UTF-16LE"), icu);
  }
  for (std::size_t i = 0; i < std::size(kDifferences); ++i) {
    EXPECT_EQ(used_[i], kDifferences[i].peer)
        << "there is no difference any more: " << kDifferences[i].codePage << " "
        << kDifferences[i].reason;
  }
}

// ICU's tables of 936, 949 and 950 have Microsoft's look-alikes in full, the others some.
TEST(CodePageFits, AreThoseOfIcu) {
  const struct {
    unsigned codePage;
    char16_t first, last;
    const char* reason;
  } differences[] = {
      {932, 0x00A6, 0x00A6, "ICU prefers the IBM broken bar"},
      {932, 0x203E, 0x203E, "8150 is the JIS overline"},
      {936, 0xFFE9, 0xFFEE, "ICU makes controls of half-width arrows"},
      {28592, 0x00A2, 0x00D0, "IBM has other look-alikes"},
      {28592, 0x2022, 0x2022, "IBM has other look-alikes"},
      {51949, 0x20A9, 0x20A9, "IBM has the full-width won"},
      {28597, 0x2018, 0x2019, "exact in the table of 2003, not in that of 1987"},
  };
  int compared = 0;
  for (const PeerNames& names : kPeers) {
    IcuConverter icu(names.icuName, true);
    icu.Stop();
    const bool full = names.codePage == 936 || names.codePage == 949 || names.codePage == 950;
    for (unsigned value = 0x80; value < 0x10000; ++value) {
      if (value >= 0xD800 && value <= 0xF8FF) continue;  // surrogates and private use
      const auto unit = static_cast<char16_t>(value);
      const int code = EncodeUnit(names.codePage, unit, false);
      if (code == EncodeUnit(names.codePage, unit, true) && !(full && code < 0)) continue;
      const Result theirs = icu.Encode({&unit, 1});
      const Result ours = code < 0 ? Result() : CodeBytes(static_cast<unsigned>(code));
      if (theirs == ours || (theirs.empty() && !full)) {
        compared += theirs == ours;
        continue;
      }
      const bool listed =
          std::any_of(std::begin(differences), std::end(differences), [&](const auto& row) {
            return row.codePage == names.codePage && row.first <= unit && unit <= row.last;
          });
      EXPECT_TRUE(listed) << names.codePage << " U+" << std::hex << value << " " << Shown(ours)
                          << ", ICU " << Shown(theirs);
    }
  }
  EXPECT_GT(compared, 1000);
}

// Random bytes that are nearly UTF-8: as many replacements as ICU makes, in the same places.
TEST(Utf8Peers, ReplaceTheSameParts) {
  const IcuConverter icu("UTF-8", false);
  const unsigned seed = 20240601;
  std::mt19937 random(seed);
  constexpr unsigned char kBytes[] = {0x41, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0,
                                      0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE,
                                      0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    for (auto size = random() % 24; text.size() < size;) {
      text += static_cast<char>(kBytes[random() % std::size(kBytes)]);
    }
    ASSERT_EQ(Shown(Decode(65001, text).bytes), Shown(icu.Decode(text))) << Shown(text);
  }
}

TEST(Utf7Peers, WriteTheSame) {
  const IconvConverter encode("UTF-7", "UTF-16LE");
  const IconvConverter decode("UTF-16LE", "UTF-7");
  const unsigned seed = 20240602;
  std::mt19937 random(seed);
  for (int i = 0; i < 20000; ++i) {
    std::u16string units;
    for (auto size = random() % 12; units.size() < size;) {
      units += u"aZ09+/- '~=\r\nあ漢é\u00FF\uFFFF"[random() % 18];
    }
    const Converted encoded = Encode(65000, Bytes(units));
    ASSERT_EQ(encoded.bytes, encode(std::string(Bytes(units)))) << Shown(std::string(Bytes(units)));
    ASSERT_EQ(Shown(decode(encoded.bytes)), Shown(std::string(Bytes(units))));
  }
}

TEST(UnicodePeers, ClassifyUnitsAlike) {
  const std::u16string noLower =
      u"\u0130ǅǈǋǲϴẞ\u2126\u212A\u212B";  // these only in a language's own rules
  const std::u16string noUpper =
      u"\u00B5\u0131\u017Fǅǈǋǲ\u0345ςϐϑϕϖϰϱϵ\u1C80\u1C81\u1C82\u1C83\u1C84\u1C85\u1C86\u1C87\u1C88"
      u"\u1E9B\u1FBE";
  const std::u16string extraDigits = u"²³¹";
  for (unsigned value = 0; value < 0x10000; ++value) {
    const auto unit = static_cast<char16_t>(value);
    const auto c = static_cast<UChar32>(value);
    const auto has = [unit](const std::u16string& list) { return list.find(unit) != list.npos; };
    const int type = u_charType(c);
    SCOPED_TRACE(testing::Message() << "U+" << std::hex << value);
    ASSERT_EQ(UnitToLower(unit), has(noLower) ? unit : u_tolower(c));
    ASSERT_EQ(UnitToUpper(unit), has(noUpper) ? unit : u_toupper(c));
    ASSERT_EQ(IsUnitSpace(unit), u_isUWhiteSpace(c) != 0);
    ASSERT_EQ(IsUnitDigit(unit), u_isdigit(c) != 0 || has(extraDigits));
    ASSERT_EQ(IsUnitAlpha(unit), u_isalpha(c) != 0 || type == U_LETTER_NUMBER);
    ASSERT_EQ(IsUnitDefined(unit), type != U_UNASSIGNED);
    ASSERT_EQ(IsUnitIdeograph(unit), u_hasBinaryProperty(c, UCHAR_IDEOGRAPHIC) != 0);
  }
  for (UChar32 c = 0; c <= 0x10FFFF; ++c) {
    const int width = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    ASSERT_EQ(IsEastAsianWide(static_cast<char32_t>(c)),
              width == U_EA_WIDE || width == U_EA_FULLWIDTH)
        << std::hex << c;
  }
}

}  // namespace
}  // namespace lumr
