// Base64: any data comes back, in lines as long as asked for; any text decodes within bounds, the
// same in pieces.
#include "fuzz/transfer_properties.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumr;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  TransferOptions options;
  options.lineLength = size == 0 ? 0 : data[size - 1] % 90;
  const std::string text = CheckEncoder(TransferEncoding::kBase64, options, input);
  Require(text == Base64(input, options.lineLength));
  Require(DecodeWhole(TransferEncoding::kBase64, text) == input);
  CheckDecoder(TransferEncoding::kBase64, input, 1);
  CBuffer extracted;
  ExtractBase64Text(TightCopy(input), extracted);
  Require(input.find(extracted.Bytes()) != input.npos);
  return 0;
}
