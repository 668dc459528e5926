// What the coders of the transfer encodings share.
//
// A core is the one implementation of an encoding in one direction. The whole-text functions run
// it over the whole input, the streaming coders over one chunk after the other. It has
//   std::size_t MaxOutput(std::size_t n) const;       the room that Write needs for n more bytes,
//                                                     Finish included
//   char* Write(std::string_view in, char* out);      takes all of in; gives the end of its output
//   char* Finish(char* out);                          writes what was held back for more input
//   bool WellFormed() const;                          after Finish: nothing skipped or missing
// Cores may use all of the room before they know how much they need.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/mailtext/transfercoder.h"

namespace lumr::transfer {

// Null data and a length below 1 are empty.
inline std::string_view DataView(const void* data, int length) {
  if (data == nullptr || length < 1) return {};
  return {static_cast<const char*>(data), static_cast<std::size_t>(length)};
}

inline bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}
inline bool IsLineBreak(char c) {
  return c == '\r' || c == '\n';
}
inline bool IsLayout(char c) {
  return IsBlank(c) || IsLineBreak(c);
}

// Names and labels of mail: ASCII case does not count.
inline bool EqualNoCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return AsciiLower(x) == AsciiLower(y); });
}

// ---- Hexadecimal ----

inline constexpr std::string_view kHexDigits = "0123456789ABCDEF";

// The value of each byte as a digit of either case; -1 for other bytes.
inline constexpr auto kHexValues = [] {
  std::array<std::int8_t, 256> values{};
  values.fill(-1);
  for (std::size_t v = 0; v < 16; ++v) {
    const char digit = kHexDigits[v];
    values[static_cast<unsigned char>(digit)] = static_cast<std::int8_t>(v);
    values[static_cast<unsigned char>(AsciiLower(digit))] = static_cast<std::int8_t>(v);
  }
  return values;
}();

inline int HexValue(char c) {
  return kHexValues[static_cast<unsigned char>(c)];
}

// The byte that two digits spell; -1 when one is no digit.
inline int HexByte(char high, char low) {
  const int highValue = HexValue(high);
  const int lowValue = HexValue(low);
  return (highValue | lowValue) < 0 ? -1 : highValue * 16 + lowValue;
}

// Each byte as prefix and two digits. Rows are four bytes, so that one store writes one.
template <char prefix>
inline constexpr auto kEscapes = [] {
  std::array<std::array<char, 4>, 256> rows{};
  for (std::size_t c = 0; c < 256; ++c) {
    rows[c] = {prefix, kHexDigits[c >> 4], kHexDigits[c & 15], 0};
  }
  return rows;
}();

// Writes an escape; touches four bytes of out.
template <char prefix>
inline char* WriteEscape(char c, char* out) {
  std::memcpy(out, kEscapes<prefix>[static_cast<unsigned char>(c)].data(), 4);
  return out + 3;
}

// ---- Eight bytes at a time ----

// How many bytes a core may write past its output by wide stores.
inline constexpr std::size_t kStoreSlack = 16;

inline std::uint64_t Load64(const char* p) {
  std::uint64_t bytes;
  std::memcpy(&bytes, p, sizeof bytes);
  return bytes;
}

inline std::uint64_t ReverseBytes(std::uint64_t v) {
  v = (v >> 8 & 0x00FF00FF00FF00FF) | (v & 0x00FF00FF00FF00FF) << 8;
  v = (v >> 16 & 0x0000FFFF0000FFFF) | (v & 0x0000FFFF0000FFFF) << 16;
  return v >> 32 | v << 32;
}

// Eight bytes as one number with the first byte on top.
inline std::uint64_t LoadBig64(const char* p) {
  return ReverseBytes(Load64(p));
}
inline void StoreBig64(char* p, std::uint64_t value) {
  value = ReverseBytes(value);
  std::memcpy(p, &value, sizeof value);
}

inline constexpr std::uint64_t EachByte(unsigned char value) {
  return 0x0101010101010101u * value;
}

// Bit 7 of each byte that is below limit (at most 0x80), or equals value. Bytes above a flagged
// one may be flagged wrongly: only the lowest flag counts.
inline std::uint64_t BytesBelow(std::uint64_t bytes, unsigned char limit) {
  return (bytes - EachByte(limit)) & ~bytes & EachByte(0x80);
}
inline std::uint64_t BytesEqual(std::uint64_t bytes, unsigned char value) {
  return BytesBelow(bytes ^ EachByte(value), 1);
}

// Copies bytes up to the first one that flags (eight at a time) and isStop (one) mark. The room
// at out must be as large as what is left to read, and kStoreSlack.
template <class Flags, class IsStop>
inline void CopyRun(const char*& in, const char* end, char*& out, Flags flags, IsStop isStop) {
  while (end - in >= 16) {
    const std::uint64_t first = Load64(in);
    const std::uint64_t second = Load64(in + 8);
    std::memcpy(out, &first, sizeof first);
    std::memcpy(out + 8, &second, sizeof second);
    const std::uint64_t inFirst = flags(first);
    const std::uint64_t inSecond = flags(second);
    const int count =
        inFirst != 0 ? std::countr_zero(inFirst) / 8 : 8 + std::countr_zero(inSecond) / 8;
    in += count;  // 16 when nothing is flagged
    out += count;
    if (count < 16) return;
  }
  while (in < end && !isStop(*in)) *out++ = *in++;
}

// ---- Output ----

// The largest content of a buffer.
inline constexpr std::uint64_t kMaxBufferSize = (std::uint64_t{1} << 31) - 64;

// Room for more bytes behind the content of out.
inline char* GetRoom(CBuffer& out, std::uint64_t more) {
  const int length = out.GetLength();
  if (more > kMaxBufferSize - static_cast<unsigned>(length)) throw std::bad_alloc();
  return out.GetBuffer(static_cast<int>(static_cast<unsigned>(length) + more)) + length;
}

inline void ReleaseRoom(CBuffer& out, const char* end) {
  out.ReleaseBuffer(static_cast<int>(end - out.GetBuffer()));
}

// Runs a core over one more piece of its input; with last, the last one.
template <class Core>
void RunCore(Core& core, std::string_view in, bool last, CBuffer& out) {
  char* end = core.Write(in, GetRoom(out, core.MaxOutput(in.size())));
  if (last) end = core.Finish(end);
  ReleaseRoom(out, end);
}

// Runs a core over the whole of its input.
template <class Core>
void RunWhole(Core core, std::string_view in, CBuffer& out) {
  out.Empty();
  RunCore(core, in, true, out);
}

// A streaming coder made of a core. Chunks go in slices, so that the room for the worst case
// of a slice stays small.
template <class Core>
class CoreCoder final : public TransferCoder {
 public:
  explicit CoreCoder(Core core) : core_(std::move(core)) {}

  void Update(std::string_view chunk, CBuffer& out) override {
    for (; chunk.size() > kSlice; chunk.remove_prefix(kSlice)) {
      RunCore(core_, chunk.substr(0, kSlice), false, out);
    }
    RunCore(core_, chunk, false, out);
  }

  int Finish(CBuffer& out) override {
    RunCore(core_, {}, true, out);
    return core_.WellFormed() ? 1 : 0;
  }

 private:
  static constexpr std::size_t kSlice = 16 * 1024;
  Core core_;
};

template <class Core>
std::unique_ptr<TransferCoder> MakeCoder(Core core) {
  return std::make_unique<CoreCoder<Core>>(std::move(core));
}

// ---- One maker for each family and direction ----

using EncoderMaker = std::unique_ptr<TransferCoder> (*)(const TransferOptions&);
using DecoderMaker = std::unique_ptr<TransferCoder> (*)(bool lenient);

std::unique_ptr<TransferCoder> MakeBase64Encoder(const TransferOptions& options);
std::unique_ptr<TransferCoder> MakeBase64Decoder(bool lenient);
std::unique_ptr<TransferCoder> MakeQuotedPrintableEncoder(const TransferOptions& options);
std::unique_ptr<TransferCoder> MakeQuotedPrintableDecoder(bool lenient);
std::unique_ptr<TransferCoder> MakeUuencodeEncoder(const TransferOptions& options);
std::unique_ptr<TransferCoder> MakeUuencodeDecoder(bool lenient);
std::unique_ptr<TransferCoder> MakeBinHexDecoder(bool lenient);
std::unique_ptr<TransferCoder> MakeHexEncoder(const TransferOptions& options);
std::unique_ptr<TransferCoder> MakeHexDecoder(bool lenient);
std::unique_ptr<TransferCoder> MakeUrlEncoder(const TransferOptions& options);
std::unique_ptr<TransferCoder> MakeUrlDecoder(bool lenient);
std::unique_ptr<TransferCoder> MakeImapUtf7Encoder(const TransferOptions& options);
std::unique_ptr<TransferCoder> MakeImapUtf7Decoder(bool lenient);

}  // namespace lumr::transfer
