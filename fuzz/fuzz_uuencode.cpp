// Uuencode: any data comes back; any text decodes within bounds, the same in pieces. Text that
// names a file names it on one line.
#include "fuzz/transfer_properties.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumr;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string text = CheckEncoder(TransferEncoding::kUuencode, {}, input);
  Require(text == Uuencode(input));
  CheckDecoder(TransferEncoding::kUuencode, input, 95);
  CheckDecoder(TransferEncoding::kUuencode, "begin 644 a\n" + std::string(input), 95);
  CStringA mode;
  CStringA name;
  if (DecodeUuencodeBegin(TightCopy(input), &mode, &name) != 0) {
    Require(mode.size() == 3 && name.find_first_of("\r\n") == name.npos);
  } else {
    Require(mode.empty() && name.empty());
  }
  return 0;
}
