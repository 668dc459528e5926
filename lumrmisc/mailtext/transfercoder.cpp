#include "lumrmisc/mailtext/transfercoder.h"

#include "lumrmisc/mailtext/transfer_internal.h"

namespace lumr {
namespace {

struct MakerRow {
  TransferEncoding encoding;
  transfer::EncoderMaker makeEncoder;  // null: decoded only
  transfer::DecoderMaker makeDecoder;
};

constexpr MakerRow kMakers[] = {
    {TransferEncoding::kBase64, transfer::MakeBase64Encoder, transfer::MakeBase64Decoder},
    {TransferEncoding::kQuotedPrintable, transfer::MakeQuotedPrintableEncoder,
     transfer::MakeQuotedPrintableDecoder},
    {TransferEncoding::kUuencode, transfer::MakeUuencodeEncoder, transfer::MakeUuencodeDecoder},
    {TransferEncoding::kBinHex, nullptr, transfer::MakeBinHexDecoder},
    {TransferEncoding::kHex, transfer::MakeHexEncoder, transfer::MakeHexDecoder},
    {TransferEncoding::kUrl, transfer::MakeUrlEncoder, transfer::MakeUrlDecoder},
    {TransferEncoding::kImapUtf7, transfer::MakeImapUtf7Encoder, transfer::MakeImapUtf7Decoder},
};

const MakerRow* FindMaker(TransferEncoding encoding) {
  for (const MakerRow& row : kMakers) {
    if (row.encoding == encoding) return &row;
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<TransferCoder> MakeTransferEncoder(TransferEncoding encoding,
                                                   const TransferOptions& options) {
  const MakerRow* const row = FindMaker(encoding);
  return row == nullptr || row->makeEncoder == nullptr ? nullptr : row->makeEncoder(options);
}

std::unique_ptr<TransferCoder> MakeTransferDecoder(TransferEncoding encoding, bool lenient) {
  const MakerRow* const row = FindMaker(encoding);
  return row == nullptr ? nullptr : row->makeDecoder(lenient);
}

}  // namespace lumr
