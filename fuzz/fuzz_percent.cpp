// Percent encodings: any data comes back; any text decodes to no more than itself, the same in
// pieces and in all forms.
#include "fuzz/transfer_properties.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumr;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  for (const int encodeAll : {0, 1}) {
    TransferOptions options;
    options.encodeAll = encodeAll;
    CheckEncoder(TransferEncoding::kHex, options, input);
  }
  CheckEncoder(TransferEncoding::kUrl, {}, input);
  CheckDecoder(TransferEncoding::kHex, input, 1);
  CheckDecoder(TransferEncoding::kUrl, input, 1);
  const std::string decoded = DecodeHex(TightCopy(input));
  Require(decoded == DecodeWhole(TransferEncoding::kHex, input));
  std::u16string wide;
  for (const char c : input) wide += static_cast<unsigned char>(c);
  const std::u16string wideDecoded = DecodeHex(wide);
  Require(wideDecoded.size() == decoded.size());
  for (std::size_t i = 0; i < decoded.size(); ++i) {
    Require(wideDecoded[i] == static_cast<unsigned char>(decoded[i]));
  }
  return 0;
}
