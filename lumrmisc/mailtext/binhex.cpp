#include <algorithm>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/mailtext/base64_internal.h"
#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/mailtext/transfer_internal.h"

namespace lumr {
namespace transfer {
namespace {

constexpr std::string_view kBinHexAlphabet =
    "!\"#$%&'()*+,-012345689@ABCDEFGHIJKLMNPQRSTUVXYZ[`abcdefhijklmpqr";
constexpr auto kValues = MakeValues(kBinHexAlphabet);

// The line that announces a block, in lower case. "(" stands at its start only, so a mismatch
// can begin a new match at no other character.
constexpr std::string_view kAnnouncement = "(this file must be converted with binhex 4.0)";

// How much of that line is matched after one more character.
std::size_t MatchNext(std::size_t matched, char c) {
  if (AsciiLower(c) == kAnnouncement[matched]) return matched + 1;
  return c == '(' ? 1 : 0;
}

constexpr char kRunByte = '\x90';

// A header is the name with its length, then the version, type, creator, flags, the lengths of
// the two forks and a checksum; the data fork follows.
constexpr std::size_t kHeaderBytes = 22;
constexpr std::size_t kDataLengthAt = 12;
constexpr std::size_t kMaxHeaderBytes = 255 + kHeaderBytes;

class BinHexDecoder {
 public:
  explicit BinHexDecoder(bool lenient) : lenient_(lenient) {}

  // The data fork still to come, or the most that the characters can expand to: a run of 254
  // copies from two bytes.
  std::size_t MaxOutput(std::size_t n) const {
    const std::size_t most = ((count_ + n) / 4 * 3 + 4) * 127;
    return HasHeader() ? std::min(most, static_cast<std::size_t>(dataLeft_)) : most;
  }

  char* Write(std::string_view in, char* out) {
    anyInput_ = anyInput_ || !in.empty();
    if (state_ == State::kUnannounced) SkipAnnouncement(in);
    if (state_ == State::kColon) SkipColon(in);
    if (state_ != State::kData) return out;
    const std::size_t length = std::min(in.find(':'), in.size());
    for (const char c : in.substr(0, length)) out = TakeChar(c, out);
    return length == in.size() ? out : EndData(out);
  }

  char* Finish(char* out) { return state_ == State::kData ? EndData(out, State::kData) : out; }

  // An empty text is a good strict one.
  bool WellFormed() const {
    if (!anyInput_ && !lenient_) return true;
    return state_ == State::kDone && HasHeader() && dataLeft_ == 0;
  }

  // For a caller that has found the data itself.
  void BeginData() { state_ = State::kData; }

  bool HasHeader() const { return headerSize_ > 0 && headerSize_ == HeaderLength(); }

 private:
  enum class State { kUnannounced, kColon, kData, kDone };

  void SkipAnnouncement(std::string_view& in) {
    std::size_t pos = 0;
    for (; pos < in.size() && matched_ < kAnnouncement.size(); ++pos) {
      matched_ = MatchNext(matched_, in[pos]);
    }
    in.remove_prefix(pos);
    if (matched_ == kAnnouncement.size()) state_ = State::kColon;
  }

  void SkipColon(std::string_view& in) {
    const std::size_t colon = in.find(':');
    if (colon == in.npos) return;
    in.remove_prefix(colon + 1);
    state_ = State::kData;
  }

  char* TakeChar(char c, char* out) {
    const int value = kValues[static_cast<unsigned char>(c)];
    if (value < 0) return out;
    bits_ = bits_ << 6 | static_cast<std::uint32_t>(value);
    if (++count_ < 4) return out;
    return WriteGroup(3, out);
  }

  // An incomplete group of k characters gives k bytes, one more than it holds: the fork's length
  // cuts the surplus off.
  char* EndData(char* out, State next = State::kDone) {
    const std::size_t size = count_;
    bits_ <<= (4 - count_) % 4 * 6;
    if (size > 0) out = WriteGroup(size, out);
    if (afterRunByte_) out = WriteByte(kRunByte, out);
    afterRunByte_ = false;
    state_ = next;
    return out;
  }

  char* WriteGroup(std::size_t size, char* out) {
    for (std::size_t i = 0; i < size; ++i) {
      out = Expand(static_cast<char>(bits_ >> (16 - 8 * i)), out);
    }
    bits_ = 0;
    count_ = 0;
    return out;
  }

  // The run byte and a count repeat the byte before; with 0 it is the run byte itself, and as the
  // very first byte it has nothing to repeat.
  char* Expand(char byte, char* out) {
    if (afterRunByte_) {
      afterRunByte_ = false;
      if (byte == 0) return WriteByte(kRunByte, out);
      return WriteCopies(static_cast<unsigned char>(byte) - 1u, out);
    }
    afterRunByte_ = byte == kRunByte && headerSize_ > 0;
    return afterRunByte_ ? out : WriteByte(byte, out);
  }

  char* WriteCopies(unsigned count, char* out) {
    for (; count > 0 && !HasHeader(); --count) out = WriteByte(lastByte_, out);
    const std::size_t size = std::min(std::size_t{count}, static_cast<std::size_t>(dataLeft_));
    dataLeft_ -= static_cast<std::uint32_t>(size);
    return std::fill_n(out, size, lastByte_);
  }

  char* WriteByte(char byte, char* out) {
    lastByte_ = byte;
    if (!HasHeader()) {
      header_[headerSize_++] = byte;
      if (HasHeader()) ReadDataLength();
    } else if (dataLeft_ > 0) {
      --dataLeft_;
      *out++ = byte;
    }
    return out;
  }

  std::size_t HeaderLength() const { return static_cast<unsigned char>(header_[0]) + kHeaderBytes; }

  void ReadDataLength() {
    const char* const at = header_ + static_cast<unsigned char>(header_[0]) + kDataLengthAt;
    dataLeft_ = 0;
    for (int i = 0; i < 4; ++i) dataLeft_ = dataLeft_ << 8 | static_cast<unsigned char>(at[i]);
  }

  bool lenient_;
  bool anyInput_ = false;
  State state_ = State::kUnannounced;
  std::size_t matched_ = 0;
  std::uint32_t bits_ = 0;  // the characters of the incomplete group
  std::size_t count_ = 0;
  bool afterRunByte_ = false;
  char lastByte_ = 0;
  char header_[kMaxHeaderBytes] = {};
  std::size_t headerSize_ = 0;
  std::uint32_t dataLeft_ = 0;  // of the data fork, once the header is read
};

// The text between the colons of the first block; false when there is none.
bool FindBlock(std::string_view text, std::string_view& block) {
  std::size_t matched = 0;
  std::size_t pos = 0;
  for (; pos < text.size() && matched < kAnnouncement.size(); ++pos) {
    matched = MatchNext(matched, text[pos]);
  }
  if (matched < kAnnouncement.size()) return false;
  const std::size_t begin = text.find(':', pos);
  if (begin == text.npos) return false;
  const std::size_t end = text.find(':', begin + 1);
  if (end == text.npos) return false;
  block = text.substr(begin + 1, end - begin - 1);
  return true;
}

// The output grows in steps: a header may name any length, so the room taken is never more than
// what the characters at hand can fill.
void DecodeBlock(std::string_view block, CBuffer& out) {
  constexpr std::uint64_t kGrowth = 1024;
  BinHexDecoder decoder(false);
  decoder.BeginData();
  while (!block.empty()) {
    // The first characters hold the header, whose length of the data is a closer bound.
    const std::string_view piece = block.substr(0, decoder.HasHeader() ? 1024 : 64);
    block.remove_prefix(piece.size());
    const std::uint64_t size =
        static_cast<unsigned>(out.GetLength()) + std::uint64_t{decoder.MaxOutput(piece.size())};
    const std::uint64_t rounded = (size + kGrowth - 1) / kGrowth * kGrowth;
    out.SetAllocSize(static_cast<int>(std::min(rounded, kMaxBufferSize)));
    RunCore(decoder, piece, block.empty(), out);
  }
}

}  // namespace

std::unique_ptr<TransferCoder> MakeBinHexDecoder(bool lenient) {
  return MakeCoder(BinHexDecoder(lenient));
}

}  // namespace transfer

int DecodeBinHex(const char* text, CBuffer& out) {
  return DecodeBinHex(CountedText(text), out);
}

int DecodeBinHex(std::string_view text, CBuffer& out) {
  out.Empty();
  if (text.empty()) return 1;
  std::string_view block;
  if (!transfer::FindBlock(text, block)) return 0;
  transfer::DecodeBlock(block, out);
  return 1;
}

}  // namespace lumr
