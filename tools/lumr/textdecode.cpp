#include "textdecode.h"

#include <array>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/charset/transcoder.h"
#include "lumrmisc/mailtext/headerword.h"

namespace lumr::tool {

namespace {

constexpr std::size_t kPieceSize = 1u << 20;

struct TransferRow {
  std::string_view name;
  Transfer transfer;
};
constexpr TransferRow kTransfers[] = {
    {"7bit", Transfer::kNone},
    {"8bit", Transfer::kNone},
    {"binary", Transfer::kNone},
    {"base64", Transfer::kBase64},
    {"quoted-printable", Transfer::kQuotedPrintable},
    {"quoted", Transfer::kQuotedPrintable},  // "quoted printable"
    {"x-uuencode", Transfer::kUuencode},
    {"x-uue", Transfer::kUuencode},
    {"uuencode", Transfer::kUuencode},
    {"x-binhex", Transfer::kBinHex},
    {"x-binhex40", Transfer::kBinHex},
    {"binhex", Transfer::kBinHex},
};

TransferEncoding EncodingOf(Transfer transfer) {
  switch (transfer) {
    case Transfer::kQuotedPrintable:
      return TransferEncoding::kQuotedPrintable;
    case Transfer::kUuencode:
      return TransferEncoding::kUuencode;
    case Transfer::kBinHex:
      return TransferEncoding::kBinHex;
    default:
      return TransferEncoding::kBase64;
  }
}

bool IsTokenChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
}

constexpr auto kBase64Digits = [] {
  std::array<unsigned char, 256> digits{};
  for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                       "0123456789+/")) {
    digits[static_cast<unsigned char>(c)] = 1;
  }
  return digits;
}();

long long Base64Size(std::string_view raw) {
  long long digits = 0;
  for (const char c : raw) digits += kBase64Digits[static_cast<unsigned char>(c)];
  return digits * 3 / 4;
}

// Runs text through a converter in pieces, since a buffer's length is an int.
DecodedText Transcoded(const MailCharset& charset, std::string_view bytes) {
  auto utf8 = std::make_unique<CBuffer>();
  CConversionReport report(0);
  Transcoder transcoder(charset.codeType, CT_UTF8, 0, charset.order);
  do {
    const std::string_view piece = bytes.substr(0, kPieceSize);
    bytes.remove_prefix(piece.size());
    transcoder.Convert(piece, bytes.empty(), *utf8, &report);
  } while (!bytes.empty());
  return {HeldBytes(std::move(utf8)), charset, report.Replaced()};
}

}  // namespace

std::string Utf8(std::u16string_view text) {
  CBuffer utf8;
  const std::string_view bytes(reinterpret_cast<const char*>(text.data()), text.size() * 2);
  ConvertToOtherCodeType2(CT_UNICODE, bytes, CT_UTF8, utf8);
  return std::string(utf8.Bytes());
}

std::string DecodedHeader(std::string_view raw, std::string_view rawCharset) {
  return Utf8(DecodeHeaderValue(raw, rawCharset));
}

Transfer TransferOf(std::string_view raw) {
  std::string token;
  for (const char c : raw) {
    const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    if (IsTokenChar(lower)) {
      token += lower;
    } else if (!token.empty()) {
      break;
    }
  }
  if (token.empty()) return Transfer::kNone;
  for (const TransferRow& row : kTransfers) {
    if (row.name == token) return row.transfer;
  }
  return Transfer::kUnknown;
}

HeldBytes DecodeTransfer(Transfer transfer, std::string_view raw, bool& wellFormed) {
  wellFormed = true;
  if (transfer == Transfer::kNone || transfer == Transfer::kUnknown) return HeldBytes(raw);
  auto plain = std::make_unique<CBuffer>();
  const auto decoder = MakeTransferDecoder(EncodingOf(transfer), true);
  for (; !raw.empty(); raw.remove_prefix(std::min(kPieceSize, raw.size()))) {
    decoder->Update(raw.substr(0, kPieceSize), *plain);
  }
  wellFormed = decoder->Finish(*plain) != 0;
  return HeldBytes(std::move(plain));
}

bool IsProse(std::string_view raw) {
  std::size_t inside = 0;
  for (std::size_t i = 1; i + 1 < raw.size(); ++i) {
    inside += raw[i] == ' ' && raw[i - 1] > ' ' && raw[i + 1] > ' ';
  }
  return inside * 20 > raw.size();
}

long long DecodedSize(Transfer transfer, std::string_view raw) {
  if (transfer == Transfer::kBase64) return Base64Size(raw);
  bool wellFormed;
  return static_cast<long long>(DecodeTransfer(transfer, raw, wellFormed).View().size());
}

DecodedText DecodeText(std::string_view label, std::string_view bytes) {
  return DecodeText(ResolveMailCharset(label, bytes), bytes);
}

DecodedText DecodeText(const MailCharset& charset, std::string_view bytes) {
  // UTF-8 is checked and mended by the writer, in the same pass that makes it safe.
  const bool isUtf8 = charset.codeType == CT_ASCII || charset.codeType == CT_UTF8;
  if (isUtf8) return {HeldBytes(bytes), charset, 0};
  return Transcoded(charset, bytes);
}

}  // namespace lumr::tool
