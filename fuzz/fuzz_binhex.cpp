// BinHex: any data fork comes back; any block expands to no more than its runs can, the same in
// pieces, and as the whole-text function where the block is closed.
#include "fuzz/transfer_properties.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumr;
  constexpr auto kEncoding = TransferEncoding::kBinHex;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string file = BinHexFile("name", input);
  Require(DecodeWhole(kEncoding, file) == input);
  Require(RunCoder(MakeTransferDecoder(kEncoding, true), file, CutsOf(file)).text == input);
  for (const std::string& text : {std::string(input), BinHexText(input)}) {
    CheckDecoder(kEncoding, text, 128);
    CBuffer out;
    if (DecodeBinHex(TightCopy(text), out) == 0 || text.empty()) continue;
    Require(RunCoder(MakeTransferDecoder(kEncoding, false), text).text == out.Bytes());
  }
  return 0;
}
