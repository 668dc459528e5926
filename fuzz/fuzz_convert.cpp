// Any bytes from any code type to any other: the pieces give the same as the whole, what is
// reported lies in the text, in order, what has no loss comes back, and what a charset label is
// resolved to converts.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/charset/mailcharset.h"
#include "lumrmisc/charset/transcoder.h"

namespace {

void Require(bool holds) {
  if (!holds) __builtin_trap();
}

struct Converted {
  std::string bytes;
  long status = 0;
  std::vector<lumr::ConversionLoss> losses;
  bool operator==(const Converted&) const = default;
};

Converted Whole(lumr::CodeType from, std::string_view text, lumr::CodeType to, int emptyFallback) {
  lumr::CBuffer out;
  lumr::CConversionReport report(text.size() + 1);
  const long status = lumr::ConvertToOtherCodeType2(from, text, to, out, emptyFallback, &report);
  lumr::CBuffer unreported;
  Require(lumr::ConvertToOtherCodeType2(from, text, to, unreported, emptyFallback) == status);
  Require(unreported == out);
  return {std::string(out.Bytes()), status, report.First()};
}

Converted InPieces(lumr::CodeType from, std::string_view text, lumr::CodeType to, int emptyFallback,
                   std::size_t pieceSize) {
  lumr::Transcoder transcoder(from, to, emptyFallback);
  lumr::CConversionReport report(text.size() + 1);
  lumr::CBuffer out;
  bool last = text.empty();
  for (std::size_t begin = 0; !last; begin += pieceSize) {
    const std::string_view piece = text.substr(begin, pieceSize);
    last = piece.size() == text.size() - begin;
    const auto copy = std::make_unique<char[]>(piece.size());
    std::copy(piece.begin(), piece.end(), copy.get());
    transcoder.Convert({copy.get(), piece.size()}, last, out, &report);
  }
  return {std::string(out.Bytes()), transcoder.Status(), report.First()};
}

void CheckLosses(const Converted& converted, std::size_t textSize) {
  long long inputOffset = 0;
  long long outputOffset = 0;
  for (const lumr::ConversionLoss& loss : converted.losses) {
    Require(loss.inputOffset >= inputOffset && loss.inputLength > 0);
    inputOffset = loss.inputOffset;
    Require(loss.inputOffset + loss.inputLength <= static_cast<long long>(textSize));
    Require(loss.outputOffset >= outputOffset);
    outputOffset = loss.outputOffset;
  }
  Require(outputOffset <= static_cast<long long>(converted.bytes.size()));
  Require(converted.status == 0 || !converted.losses.empty());
  Require(converted.bytes.size() <= 8 * textSize + 16);
}

void CheckWayBack(lumr::CodeType from, std::string_view text, lumr::CodeType to,
                  const Converted& there) {
  if (!there.losses.empty()) return;
  Require(lumr::ConvertsExactly(from, text, to));
  const Converted back = Whole(to, there.bytes, from, 0);
  // ISO-2022-JP and UTF-7 say one text in many ways: it must be the same text.
  Require(from == lumr::CT_JIS || from == lumr::CT_UTF7
              ? Whole(from, back.bytes, lumr::CT_UNICODE, 0).bytes ==
                    Whole(from, text, lumr::CT_UNICODE, 0).bytes
              : back.bytes == text);
}

void CheckLabel(lumr::CodeType codeType, std::string_view text) {
  const char* const name = lumr::CharSetCode2Name(codeType);
  const lumr::MailCharset charset = lumr::ResolveMailCharset(name != nullptr ? name : "", text);
  lumr::CBuffer out;
  lumr::ConvertMailText(charset, text, out);
  Require(out.GetLength() % 2 == 0 || charset.codeType == lumr::CT_UNICODE);
}

lumr::CodeType CodeTypeAt(std::size_t index) {
  const auto types = lumr::AllCodeTypes();
  index %= types.size() + 1;
  return index == types.size() ? lumr::CT_UNKNOWN : types[index];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const lumr::CodeType from = CodeTypeAt(data[0]);
  const lumr::CodeType to = CodeTypeAt(data[1]);
  const int emptyFallback = data[2] & 1;
  const std::size_t pieceSize = 1 + data[2] / 2u;
  const auto copy = std::make_unique<char[]>(size - 3);
  std::memcpy(copy.get(), data + 3, size - 3);
  const std::string_view text(copy.get(), size - 3);

  const Converted whole = Whole(from, text, to, emptyFallback);
  CheckLosses(whole, text.size());
  // A stream keeps the zero bytes that the whole may have to drop.
  const Converted pieces = InPieces(from, text, to, emptyFallback, pieceSize);
  Require(pieces == whole || (emptyFallback != 0 && pieces.bytes.find('\0') != text.npos));
  CheckWayBack(from, text, to, whole);
  CheckLabel(from, text);
  return 0;
}
