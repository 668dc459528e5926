// Any bytes to every detection: nothing outside the text is read, and the answers are those of
// the plainly written model and agree with one another.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/charset/detect.h"
#include "lumrmisc/charset/mailcharset.h"
#include "tests/charset/detect_model.h"

namespace {

void Require(bool holds) {
  if (!holds) __builtin_trap();
}

void CheckExplanation(std::string_view text, lumr::CodeType codeType2) {
  const lumr::Detection detection = lumr::ExplainDetection(text);
  if (detection.offset >= 0) {
    const auto offset = static_cast<std::size_t>(detection.offset);
    Require(offset < text.size());
    Require(detection.byte == static_cast<unsigned char>(text[offset]));
  }
  const bool isFirst = detection.rule == lumr::DetectionRule::kPlainAscii ||
                       detection.rule == lumr::DetectionRule::kEscape;
  const bool isLate = codeType2 == lumr::CT_ASCII && detection.offset >= 1024;
  Require(isFirst || isLate || detection.codeType == codeType2);
}

void CheckUtf16(std::string_view text) {
  std::u16string units(text.size() / 2, u'\0');
  std::memcpy(units.data(), text.data(), units.size() * 2);
  const auto count = static_cast<int>(units.size());
  lumr::CBuffer out;
  const lumr::CodeType narrowest = lumr::DetectUnicodeCodeType2(units.data(), count, &out);
  Require(narrowest == lumr::DetectUnicodeCodeType2(units.data(), count, nullptr));
  Require(lumr::DetectUnicodeCodeType(units.data(), count, lumr::CT_UNKNOWN) ==
          lumr::DetectUnicodeCodeType(text, lumr::CT_UNKNOWN));
  if (narrowest == lumr::CT_UNICODE) return;
  lumr::CBuffer back;
  Require(lumr::ConvertToOtherCodeType2(narrowest, out.Bytes(), lumr::CT_UNICODE, back) == 0);
  Require(back.Bytes() == text.substr(0, units.size() * 2));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto copy = std::make_unique<char[]>(size);
  if (size > 0) std::memcpy(copy.get(), data, size);
  const std::string_view text(copy.get(), size);

  const lumr::CodeType codeType = lumr::DetectCodeType(text);
  Require(codeType == lumr::DetectionModel::DetectCodeType(text));
  Require((lumr::IsUTF8(text) != 0) == lumr::IsUtf8ByModel(text));
  const lumr::CodeType codeType2 = lumr::DetectCodeType2(text);
  if (lumr::IsUTF8(text)) Require(codeType2 == lumr::CT_UTF8);
  CheckExplanation(text, codeType2);
  for (const lumr::CodeType hint : lumr::AllCodeTypes()) {
    const lumr::CodeType answer = lumr::DetectCodeType3(text, hint);
    Require(answer == hint || answer == lumr::CT_ASCII || answer == lumr::CT_JIS ||
            answer == codeType);
  }
  CheckUtf16(text);
  for (const char* const label : {"", "utf-16", "iso-8859-1", "iso-2022-jp"}) {
    lumr::ResolveMailCharset(label, text);
  }
  return 0;
}
