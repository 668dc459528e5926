// Every pair of code types against iconv, on texts that both must read alike.
#include <gtest/gtest.h>
#include <iconv.h>

#include <cerrno>
#include <optional>

#include "charset/convert_text.h"
#include "lumrmisc/charset/mailcharset.h"

namespace lumr {
namespace {

// The result; nothing when iconv finds a character that it cannot convert.
std::optional<std::string> ByIconv(const char* from, std::string_view text, const char* to) {
  const iconv_t converter = iconv_open(to, from);
  if (converter == iconv_t(-1)) {
    ADD_FAILURE() << "iconv knows no " << from << " or " << to;
    return std::nullopt;
  }
  std::string source(text);
  std::string result(text.size() * 8 + 64, '\0');
  char* in = source.data();
  char* out = result.data();
  std::size_t inLeft = source.size();
  std::size_t outLeft = result.size();
  bool converted = iconv(converter, &in, &inLeft, &out, &outLeft) != std::size_t(-1);
  converted = converted && iconv(converter, nullptr, nullptr, &out, &outLeft) != std::size_t(-1);
  iconv_close(converter);
  if (!converted) return std::nullopt;
  result.resize(result.size() - outLeft);
  return result;
}

const char* IconvName(CodeType codeType) {
  switch (codeType) {
    case CT_ASCII:
    case CT_SJIS:
      return "CP932";
    case CT_GB2312:
      return "CP936";
    case CT_KSC5601:
      return "UHC";
    case CT_UNICODE:
      return "UTF-16LE";
    default:
      return CharSetCode2Name(codeType);
  }
}

// The text in a code type, from UTF-8 by iconv; nothing where it cannot be. What EUC-JP has of
// JIS X 0212 is not in the library's.
std::optional<std::string> Written(std::string_view utf8, CodeType codeType) {
  auto bytes = ByIconv("UTF-8", utf8, IconvName(codeType));
  if (bytes && codeType == CT_EUC && bytes->find('\x8F') != bytes->npos) return std::nullopt;
  return bytes;
}

TEST(ConvertToOtherCodeType2, AgreesWithIconvForEveryPairOfTypes) {
  int compared = 0;
  for (const std::string_view script : kScripts) {
    for (const CodeType from : AllCodeTypes()) {
      const auto source = Written(script, from);
      if (!source) continue;
      for (const CodeType to : AllCodeTypes()) {
        SCOPED_TRACE(std::string(IconvName(from)) + " to " + IconvName(to) + ": " +
                     std::string(script));
        const Conversion converted = Converted(from, *source, to);
        const auto expected = Written(script, to);
        ASSERT_EQ(converted.losses.empty(), expected.has_value());
        if (!expected) continue;
        ++compared;
        ASSERT_EQ(converted.status, 0);
        // UTF-7 leaves it open which characters are written in Base64.
        const bool isFree = to == CT_UTF7;
        ASSERT_EQ(Shown(isFree ? *ByIconv("UTF-7", converted.bytes, "UTF-8") : converted.bytes),
                  Shown(isFree ? std::string(script) : *expected));
      }
    }
  }
  EXPECT_GT(compared, 500);
}

// What is read as another set must be that set, but for the bytes that make the reading lenient.
TEST(ResolveMailCharset, AgreesWithIconvOnSetsThatAreNearlyKnown) {
  for (const char* const label : {"iso-8859-15", "iso-8859-13", "koi8-u"}) {
    for (int byte = 0xA0; byte <= 0xFF; ++byte) {
      // The letters make it no UTF-8 and no Japanese.
      const std::string text{'a', static_cast<char>(byte), 'a'};
      const MailCharset resolved = ResolveMailCharset(label, text);
      CBuffer utf16;
      ConvertMailText(resolved, text, utf16);
      const bool isSame = ByIconv(label, text, "UTF-16LE") == utf16.Bytes();
      EXPECT_EQ(resolved.source == CharsetSource::kLabel, isSame) << label << " " << Shown(text);
    }
  }
}

}  // namespace
}  // namespace lumr
