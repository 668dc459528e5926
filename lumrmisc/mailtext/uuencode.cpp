#include <algorithm>
#include <string>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/mailtext/base64_internal.h"
#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/mailtext/transfer_internal.h"

namespace lumr {
namespace transfer {
namespace {

// The value v is the character v + 32, and 0 is "`": transport strips spaces.
constexpr std::string_view kUuAlphabet =
    "`!\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_";
constexpr PairTable kUuPairs = MakePairs(kUuAlphabet);
constexpr std::size_t kLineBytes = 45;
constexpr std::string_view kTail = "`\r\nend\r\n";

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsAsciiSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsAsciiSpace(text.back())) text.remove_suffix(1);
  return text;
}

// ---- Encoding ----

CStringA MakeHeader(std::string_view mode, std::string_view fileName) {
  CStringA header = "begin ";
  header += mode.empty() ? std::string_view("644") : mode;
  header += ' ';
  header += fileName.empty() ? std::string_view("dummy") : fileName;
  header += "\r\n";
  return header;
}

class UuEncoder {
 public:
  UuEncoder(std::string_view mode, std::string_view fileName)
      : header_(MakeHeader(mode, fileName)) {}

  std::size_t MaxOutput(std::size_t n) const {
    const std::size_t bytes = heldSize_ + n;
    return header_.size() + bytes / kLineBytes * LineLength(kLineBytes) +
           LineLength(bytes % kLineBytes) + kTail.size();
  }

  char* Write(std::string_view in, char* out) {
    out += header_.copy(out, header_.size());
    header_.clear();
    if (heldSize_ > 0) {
      const std::size_t taken = std::min(in.size(), kLineBytes - heldSize_);
      in.copy(held_ + heldSize_, taken);
      heldSize_ += taken;
      in.remove_prefix(taken);
      if (heldSize_ < kLineBytes) return out;
      out = WriteLine(held_, kLineBytes, out);
    }
    for (; in.size() >= kLineBytes; in.remove_prefix(kLineBytes)) {
      out = WriteLine(in.data(), kLineBytes, out);
    }
    heldSize_ = in.copy(held_, in.size());
    return out;
  }

  char* Finish(char* out) {
    if (heldSize_ > 0) out = WriteLine(held_, heldSize_, out);
    heldSize_ = 0;
    return out + kTail.copy(out, kTail.size());
  }

  bool WellFormed() const { return true; }

 private:
  static std::size_t LineLength(std::size_t bytes) {
    return bytes == 0 ? 0 : 1 + (bytes + 2) / 3 * 4 + 2;
  }

  static char* WriteLine(const char* in, std::size_t size, char* out) {
    *out++ = kUuAlphabet[size];
    out = EncodeGroups(kUuPairs, in, size / 3, out);
    if (size % 3 != 0) {
      char last[3] = {};
      std::copy(in + size / 3 * 3, in + size, last);
      out = EncodeGroups(kUuPairs, last, 1, out);
    }
    *out++ = '\r';
    *out++ = '\n';
    return out;
  }

  CStringA header_;  // empty once written
  char held_[kLineBytes] = {};
  std::size_t heldSize_ = 0;
};

// ---- Decoding ----

// A line of data cannot name more bytes: "~" is the last printable character.
constexpr std::size_t kMaxLineBytes = 0x7F - ' ';

// The number of bytes that a line of data names; 0 for a line that ends the data.
std::size_t LineBytes(std::string_view line) {
  const auto first = static_cast<unsigned char>(line.front());
  return first <= ' ' || first == '`' || first >= 0x80 ? 0 : first - std::size_t{' '};
}

// The six bits of each of eight characters as 48 bits, the first character on top. The code
// minus 32, modulo 64, is the code with bit 5 flipped; "`" comes out as 0 by itself.
std::uint64_t PackSixBits(std::uint64_t big) {
  big = (big ^ EachByte(0x20)) & EachByte(0x3F);
  big = (big & 0x003F003F003F003F) | (big & 0x3F003F003F003F00) >> 2;
  big = (big & 0x00000FFF00000FFF) | (big & 0x0FFF00000FFF0000) >> 4;
  return (big & 0x0000000000FFFFFF) | (big & 0x00FFFFFF00000000) >> 8;
}

// Writes count bytes of what the characters spell; missing characters count as 0.
char* DecodeLine(std::string_view chars, std::size_t count, char* out) {
  if (Cpu().avx512) return DecodeSixBitsAvx512(chars.data(), chars.size(), count, out);
  // Eight bytes are stored for six, so the last ones go through a block of their own.
  for (; count >= 8 && chars.size() >= 8; count -= 6, chars.remove_prefix(8)) {
    StoreBig64(out, PackSixBits(LoadBig64(chars.data())) << 16);
    out += 6;
  }
  while (count > 0) {
    char group[8];
    std::fill(group + chars.copy(group, sizeof group), group + sizeof group, '`');
    chars.remove_prefix(std::min(chars.size(), sizeof group));
    const std::uint64_t bits = PackSixBits(LoadBig64(group));
    const std::size_t size = std::min<std::size_t>(count, 6);
    for (std::size_t i = 0; i < size; ++i) *out++ = static_cast<char>(bits >> (40 - 8 * i));
    count -= size;
  }
  return out;
}

// Decodes a block line by line; lines never hold their line break, and empty ones are left out.
class UuDecoder {
 public:
  explicit UuDecoder(bool lenient) : lenient_(lenient), wellFormed_(!lenient) {}

  // A strict line is longer than what it gives; a lenient one may be a single character, and
  // needs a line break to the next one.
  std::size_t MaxOutput(std::size_t n) const {
    const std::size_t chars = heldSize_ + n;
    return lenient_ ? (chars / 2 + 1) * kMaxLineBytes : chars;
  }

  char* Write(std::string_view in, char* out) {
    while (!in.empty() && !IsOver()) {
      const std::size_t length = FindLineBreak(in);
      const std::string_view line = in.substr(0, length);
      if (length == in.size() || heldSize_ > 0) {
        Hold(line);
      } else if (length > 0) {
        out = TakeLine(line, out);
      }
      if (length == in.size()) break;
      if (heldSize_ > 0) out = TakeHeldLine(out);
      in.remove_prefix(length + 1);
    }
    return out;
  }

  char* Finish(char* out) {
    if (heldSize_ > 0 && !IsOver()) out = TakeHeldLine(out);
    if (anyLine_ || lenient_) wellFormed_ = wellFormed_ && state_ == State::kDone;
    return out;
  }

  bool WellFormed() const { return wellFormed_; }

  // For a caller that has read the begin line itself.
  void BeginIsRead() {
    anyLine_ = true;
    state_ = State::kData;
  }

 private:
  enum class State { kBegin, kData, kEnd, kDone, kFailed };

  // More of a line than this is never looked at: a begin line is known by its first characters
  // when runs of spaces count as one, a line of data cannot be longer.
  static constexpr std::size_t kHeldMax = 1 + (kMaxLineBytes + 2) / 3 * 4;

  static std::size_t FindLineBreak(std::string_view in) {
    const char* const begin = in.data();
    const char* const end = begin + in.size();
    const char* p = begin;
    for (; end - p >= 8; p += 8) {
      const std::uint64_t bytes = Load64(p);
      const std::uint64_t found = BytesEqual(bytes, '\r') | BytesEqual(bytes, '\n');
      if (found != 0) return static_cast<std::size_t>(p - begin + std::countr_zero(found) / 8);
    }
    return static_cast<std::size_t>(std::find_if(p, end, IsLineBreak) - begin);
  }

  bool IsOver() const { return state_ == State::kDone || state_ == State::kFailed; }

  void Hold(std::string_view piece) {
    for (const char c : piece) {
      if (heldSize_ == kHeldMax) return;
      const bool repeats = c == ' ' && heldSize_ > 0 && held_[heldSize_ - 1] == ' ';
      if (repeats && state_ == State::kBegin) continue;
      held_[heldSize_++] = c;
    }
  }

  char* TakeHeldLine(char* out) {
    const std::string_view line(held_, heldSize_);
    heldSize_ = 0;
    return TakeLine(line, out);
  }

  char* TakeLine(std::string_view line, char* out) {
    anyLine_ = true;
    switch (state_) {
      case State::kBegin:
        if (DecodeUuencodeBegin(line, nullptr, nullptr)) {
          state_ = State::kData;
          wellFormed_ = true;
        } else if (!lenient_) {
          state_ = State::kFailed;
        }
        return out;
      case State::kData:
        return TakeData(line, out);
      case State::kEnd:
        state_ = IsEndLine(line) ? State::kDone : State::kFailed;
        return out;
      default:
        return out;
    }
  }

  char* TakeData(std::string_view line, char* out) {
    const std::size_t count = LineBytes(line);
    if (count == 0) {
      state_ = State::kEnd;
      return out;
    }
    if (line.size() < count * 4 / 3 + 1) {
      wellFormed_ = false;
      if (!lenient_) state_ = State::kFailed;
      if (lenient_ && IsEndLine(line)) state_ = State::kDone;
      if (IsOver()) return out;
    }
    return DecodeLine(line.substr(1), count, out);
  }

  // A line as long as what is held may go on.
  bool IsEndLine(std::string_view line) const {
    return line.size() < kHeldMax && EqualNoCase(lenient_ ? Trimmed(line) : line, "end");
  }

  bool lenient_;
  bool wellFormed_;  // an empty text is a good strict one
  bool anyLine_ = false;
  State state_ = State::kBegin;
  char held_[kHeldMax] = {};  // the start of a line that began in an earlier chunk
  std::size_t heldSize_ = 0;
};

// The begin line of a text, without its line break; empty when the text has no line.
std::string_view TakeFirstLine(std::string_view& text) {
  const auto begin = std::find_if_not(text.begin(), text.end(), IsLineBreak);
  const auto end = std::find_if(begin, text.end(), IsLineBreak);
  const std::string_view line = text.substr(static_cast<std::size_t>(begin - text.begin()),
                                            static_cast<std::size_t>(end - begin));
  text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
  return line;
}

void SkipSpaces(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

// The digits of the mode and the file name of a begin line; false when the form is broken.
bool ReadBeginLine(std::string_view line, std::string_view& mode, std::string_view& fileName) {
  constexpr std::string_view kBegin = "begin ";
  line = line.substr(0, std::min(line.find_first_of("\r\n"), line.size()));
  if (line.size() < kBegin.size() || !EqualNoCase(line.substr(0, kBegin.size()), kBegin)) {
    return false;
  }
  line.remove_prefix(kBegin.size());
  SkipSpaces(line);
  if (line.size() < 4 || line[3] != ' ') return false;
  mode = line.substr(0, 3);
  if (mode.find_first_not_of("01234567") != mode.npos) return false;
  line.remove_prefix(4);
  SkipSpaces(line);
  fileName = Trimmed(line);
  return !line.empty();
}

}  // namespace

std::unique_ptr<TransferCoder> MakeUuencodeEncoder(const TransferOptions& options) {
  return MakeCoder(UuEncoder(options.uuMode, options.uuName));
}

std::unique_ptr<TransferCoder> MakeUuencodeDecoder(bool lenient) {
  return MakeCoder(UuDecoder(lenient));
}

}  // namespace transfer

void EncodeUuencode(const char* mode, const char* fileName, const unsigned char* data, int length,
                    CBuffer& out) {
  EncodeUuencode(CountedText(mode), CountedText(fileName), transfer::DataView(data, length), out);
}

void EncodeUuencode(std::string_view mode, std::string_view fileName, std::string_view data,
                    CBuffer& out) {
  transfer::RunWhole(transfer::UuEncoder(mode, fileName), data, out);
}

int DecodeUuencodeBegin(const char* line, CStringA* mode, CStringA* fileName) {
  return DecodeUuencodeBegin(CountedText(line), mode, fileName);
}

int DecodeUuencodeBegin(std::string_view line, CStringA* mode, CStringA* fileName) {
  std::string_view modeFound;
  std::string_view nameFound;
  const bool found = transfer::ReadBeginLine(line, modeFound, nameFound);
  if (mode != nullptr) mode->assign(found ? modeFound : std::string_view());
  if (fileName != nullptr) fileName->assign(found ? nameFound : std::string_view());
  return found ? 1 : 0;
}

int DecodeUuencode(const char* text, CStringA* mode, CStringA* fileName, CBuffer* data) {
  return DecodeUuencode(CountedText(text), mode, fileName, data);
}

int DecodeUuencode(std::string_view text, CStringA* mode, CStringA* fileName, CBuffer* data) {
  if (data != nullptr) data->Empty();
  const bool isEmpty = text.empty();
  const int begun = DecodeUuencodeBegin(transfer::TakeFirstLine(text), mode, fileName);
  if (isEmpty) return 1;
  if (!begun || data == nullptr) return begun;
  transfer::UuDecoder decoder(false);
  decoder.BeginIsRead();
  transfer::RunCore(decoder, text, true, *data);
  return decoder.WellFormed() ? 1 : 0;
}

}  // namespace lumr
