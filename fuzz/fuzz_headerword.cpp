// Header values and parameters: no control character comes out, and never more units than there
// were bytes; a single parameter is the one of the list.
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/transfer_properties.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/mailtext/headerparam.h"
#include "lumrmisc/mailtext/headerword.h"

namespace {

void CheckText(const lumr::CStringW& text, std::size_t size) {
  lumr::Require(text.size() <= size);
  for (const char16_t unit : text) {
    lumr::Require(unit >= 0x20 && !(unit >= 0x7F && unit < 0xA0) && unit != 0x2028 &&
                  unit != 0x2029);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumr;
  const TightCopy input({reinterpret_cast<const char*>(data), size});
  const CStringW text = DecodeHeaderValue(input);
  CheckText(text, size);
  // The UTF-8 form is the same text.
  CBuffer wide;
  ConvertToOtherCodeType2(CT_UNICODE, BytesOf(text), CT_UTF8, wide);
  Require(DecodeHeaderValueUtf8(input) == wide.Bytes());
  CheckText(DecodeHeaderValue(input, "Shift_JIS"), size);
  std::vector<HeaderParameter> parameters;
  DecodeHeaderParameters(input, parameters);
  std::size_t total = 0;
  for (const HeaderParameter& parameter : parameters) {
    CheckText(parameter.value, size);
    total += parameter.value.size();
    CStringW value;
    if (parameters.size() > 20) continue;
    Require(DecodeHeaderParameter(input, parameter.name, value) == 1 && value == parameter.value);
  }
  Require(total <= size);
  return 0;
}
