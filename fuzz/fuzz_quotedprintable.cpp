// Quoted-printable: any data comes back (in text mode with CR LF for every line break), in lines
// of at most 76 characters without white space at their ends; any text decodes to no more than
// itself, the same in pieces.
#include "fuzz/transfer_properties.h"

namespace {

std::string WithCrLf(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r' && text[i] != '\n') {
      out += text[i];
      continue;
    }
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    out += "\r\n";
  }
  return out;
}

void CheckLines(std::string_view text) {
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find("\r\n", begin), text.size());
    lumr::Require(end - begin <= 76);
    lumr::Require(end == begin || (text[end - 1] != ' ' && text[end - 1] != '\t'));
    begin = end + 2;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumr;
  constexpr auto kEncoding = TransferEncoding::kQuotedPrintable;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  for (const int textMode : {0, 1}) {
    TransferOptions options;
    options.textMode = textMode;
    const std::string text = CheckEncoder(kEncoding, options, input);
    Require(text == QuotedPrintable(input, textMode));
    Require(DecodeWhole(kEncoding, text) == (textMode != 0 ? WithCrLf(input) : input));
    CheckLines(text);
  }
  CheckDecoder(kEncoding, input, 1);
  return 0;
}
