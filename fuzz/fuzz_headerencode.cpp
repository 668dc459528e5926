// Text to header fields and back: lines of at most 76 printable characters (but for tokens, which
// are never cut), no line break outside of folds, and the reader gives the text back; what a check
// before sending offers passes the check.
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/transfer_properties.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/mailtext/headerencode.h"
#include "lumrmisc/mailtext/headerparam.h"
#include "lumrmisc/mailtext/headerword.h"
#include "lumrmisc/mailtext/preflight.h"

namespace {

using namespace lumr;

// Lines and characters of a field; the longest line.
void CheckLines(std::string_view field, std::size_t most) {
  std::size_t line = 0;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '\r') {
      Require(field.substr(i, 3) == "\r\n ");
      Require(line <= most);
      line = 0;
      ++i;
    } else {
      Require(field[i] >= ' ' && field[i] < '\x7F');
      ++line;
    }
  }
  Require(line <= most);
}

// The text as every reader gives it: what is dropped and joined is so the second time too.
CStringW Settled(std::u16string_view text) {
  CStringA field;
  AppendHeaderText(text, {CT_UTF8}, field);
  return DecodeHeaderValue(field);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const unsigned options = data[0];
  const CStringW text(reinterpret_cast<const char16_t*>(data + 2), (size - 2) / 2);
  constexpr CodeType kCodeTypes[] = {CT_UTF8, CT_JIS,       CT_SJIS,   CT_EUC,
                                     CT_UTF7, CT_ISO8859_1, CT_GB2312, CT_ASCII};
  const CodeType codeType = kCodeTypes[options % 8];
  const auto kind = static_cast<HeaderWordKind>(options / 8 % 3);
  const CStringW settled = Settled(text);
  Require(Settled(settled) == settled);
  CStringA field = "Subject: ";
  const int isExact = AppendHeaderText(settled, {codeType, kind, options >= 128}, field);
  CheckLines(field, 76);
  const bool isJapanese = codeType == CT_JIS || codeType == CT_SJIS || codeType == CT_EUC;
  const bool isReadBack = codeType == CT_UTF8 || isJapanese;
  if (isExact && isReadBack) {
    Require(DecodeHeaderValue(std::string_view(field).substr(9)) == settled);
  }
  field = "attachment";
  AppendHeaderParameter("filename", settled, codeType, field);
  CheckLines(field, 76);
  CStringW name;
  Require(DecodeHeaderParameter(field, "filename", name) == 1);
  if (codeType == CT_UTF8) Require(name == settled);

  std::vector<PreflightFinding> findings;
  CheckBeforeSending(text, codeType, findings);
  const CStringW mended = TextWithOffers(text, findings);
  CheckBeforeSending(mended, codeType, findings);
  for (const PreflightFinding& finding : findings) Require(!finding.hasOffer);
  const CodeType narrowest = NarrowestCodeType(text);
  CheckBeforeSending(text, narrowest, findings);
  Require(findings.empty() || narrowest == CT_UTF8);
  return 0;
}
