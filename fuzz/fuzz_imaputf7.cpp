// IMAP4 mailbox names: any UTF-16 comes back; any bytes decode within bounds, the same in pieces;
// and a decoded name is a fixed point of encoding and decoding.
#include "fuzz/transfer_properties.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumr;
  constexpr auto kEncoding = TransferEncoding::kImapUtf7;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  CheckEncoder(kEncoding, {}, input.substr(0, size / 2 * 2));
  CheckDecoder(kEncoding, input, 2);
  CStringW name;
  DecodeImap4UTF7(TightCopy(input), name);
  CBuffer encoded;
  EncodeImap4UTF7(name, encoded);
  CStringW again;
  DecodeImap4UTF7(encoded.Bytes(), again);
  Require(again == name);
  CBuffer base64;
  EncodeImap4Base64(name, base64);
  DecodeImap4Base64(base64.Bytes(), again);
  Require(again == name);
  return 0;
}
