#include <algorithm>
#include <array>
#include <string>

#include "lumrmisc/mailtext/quotedprintable_internal.h"
#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/mailtext/transfer_internal.h"
#include "lumrmisc/platform/cpu.h"

namespace lumr {
namespace transfer {
namespace {

// ---- Encoding ----

// An encoded line holds 75 characters before the "=" of its soft break, which RFC 2045 counts
// in its limit of 76.
constexpr std::size_t kLineLength = 75;

// Spaces belong to runs of literal bytes; whether the last one of a run may stay depends on the
// byte behind it.
bool IsLiteral(char c) {
  return (c >= ' ' && c < '=') || (c > '=' && c <= '~');
}

std::uint64_t FlagNotLiteral(std::uint64_t bytes) {
  // Bytes from 0x7F on have bit 7 after 1 is added, or have it already.
  const std::uint64_t above = ((bytes + EachByte(1)) | bytes) & EachByte(0x80);
  return BytesBelow(bytes, ' ') | BytesEqual(bytes, '=') | above;
}

// What each byte becomes whatever stands around it: 1 character, an escape of 3, or 0 where the
// next byte matters.
constexpr auto kLengths = [] {
  std::array<std::uint8_t, 256> lengths{};
  lengths.fill(3);
  for (std::size_t c = '!'; c <= '~'; ++c) lengths[c] = 1;
  lengths['='] = 3;
  for (const char c : {' ', '\t', '\r', '\n'}) lengths[static_cast<std::size_t>(c)] = 0;
  return lengths;
}();

constexpr auto kPieces = [] {
  auto pieces = kEscapes<'='>;
  for (std::size_t c = 0; c < 256; ++c) {
    if (kLengths[c] == 1) pieces[c] = {static_cast<char>(c), 0, 0, 0};
  }
  return pieces;
}();

class QuotedPrintableEncoder {
 public:
  explicit QuotedPrintableEncoder(int textMode) : textMode_(textMode != 0) {}

  // Every byte an escape, and a soft break for every line: one is never shorter than 73.
  std::size_t MaxOutput(std::size_t n) const {
    const std::size_t characters = 3 * (n + 1);
    return characters + (column_ + characters) / (kLineLength - 2) * 3 + 3 + kStoreSlack;
  }

  char* Write(std::string_view in, char* out) {
    const char* p = in.data();
    const char* const end = p + in.size();
    if (held_ != '\0' && p < end) out = WriteHeld(p, out);
    while (p < end) out = WriteSome(p, end, out);
    return out;
  }

  char* Finish(char* out) {
    if (held_ == '\r') out = WriteLineBreak(out);
    if (IsBlank(held_)) out = WriteEscaped(held_, out);
    held_ = '\0';
    return out;
  }

  bool WellFormed() const { return true; }

 private:
  // A space, tab or CR at the end of a chunk, now that the next byte is known.
  char* WriteHeld(const char*& p, char* out) {
    const char held = held_;
    held_ = '\0';
    if (held == '\r') {
      if (*p == '\n') ++p;
      return WriteLineBreak(out);
    }
    return IsLineBreak(*p) ? WriteEscaped(held, out) : WriteOne(held, out);
  }

  char* WriteSome(const char*& p, const char* end, char* out) {
    const char c = *p;
    if (kLengths[static_cast<unsigned char>(c)] != 0) {
      return IsLiteral(c) && StartsLongRun(p, end) ? WriteRun(p, end, out)
                                                   : WritePieces(p, end, out);
    }
    if (c == ' ' && p + 1 < end && !IsLineBreak(p[1])) return WriteRun(p, end, out);
    ++p;
    if (textMode_ && IsLineBreak(c)) {
      if (c == '\r' && p == end) {
        held_ = c;
        return out;
      }
      if (c == '\r' && *p == '\n') ++p;
      return WriteLineBreak(out);
    }
    if (!IsBlank(c)) return WriteEscaped(c, out);
    if (p == end) {
      held_ = c;
      return out;
    }
    return IsLineBreak(*p) ? WriteEscaped(c, out) : WriteOne(c, out);
  }

  // In dense text runs are not worth their start.
  static bool StartsLongRun(const char* p, const char* end) {
    if (end - p < 8) return true;
    const std::uint64_t found = FlagNotLiteral(Load64(p));
    return found == 0 || std::countr_zero(found) >= 5 * 8;
  }

  // A few bytes of dense text, each by its row.
  char* WritePieces(const char*& p, const char* end, char* out) {
    if (vectors_) {
      const char* const begin = p;
      out = EncodeDenseAvx512(p, end, kLineLength, column_, out);
      if (p != begin) return out;
    }
    constexpr std::ptrdiff_t kFew = 16;
    for (const char* const stop = p + std::min(end - p, kFew); p < stop; ++p) {
      const auto c = static_cast<unsigned char>(*p);
      if (kLengths[c] == 0) break;
      out = MakeRoom(kLengths[c], out);
      std::memcpy(out, kPieces[c].data(), 4);
      out += kLengths[c];
      column_ += kLengths[c];
    }
    return out;
  }

  // The literal bytes that fit on the line, but not a space that more must be known about.
  char* WriteRun(const char*& p, const char* end, char* out) {
    out = MakeRoom(1, out);
    const char* const begin = p;
    const char* const limit =
        p + std::min(static_cast<std::size_t>(end - p), kLineLength - column_);
    CopyRun(p, limit, out, FlagNotLiteral, [](char c) { return !IsLiteral(c); });
    if (p[-1] == ' ' && (p == end || IsLineBreak(*p))) {
      --p;
      --out;
    }
    column_ += static_cast<std::size_t>(p - begin);
    return out;
  }

  char* WriteOne(char c, char* out) {
    out = MakeRoom(1, out);
    ++column_;
    *out = c;
    return out + 1;
  }

  char* WriteEscaped(char c, char* out) {
    out = MakeRoom(3, out);
    column_ += 3;
    return WriteEscape<'='>(c, out);
  }

  // A soft line break when so many characters do not fit on the line any more.
  char* MakeRoom(std::size_t characters, char* out) {
    if (column_ + characters <= kLineLength) return out;
    *out++ = '=';
    return WriteLineBreak(out);
  }

  char* WriteLineBreak(char* out) {
    column_ = 0;
    *out++ = '\r';
    *out++ = '\n';
    return out;
  }

  bool textMode_;
  bool vectors_ = Cpu().avx512;
  std::size_t column_ = 0;
  char held_ = '\0';  // a space, tab or CR whose next byte is not known yet
};

// ---- Decoding ----

// "=" and what ends a line; the few other control characters below 0x0E are as good as plain.
std::uint64_t FlagSpecial(std::uint64_t bytes) {
  return BytesEqual(bytes, '=') | BytesBelow(bytes, 0x0E);
}
bool IsSpecial(char c) {
  return c == '=' || static_cast<unsigned char>(c) < 0x0E;
}

class QuotedPrintableDecoder {
 public:
  std::size_t MaxOutput(std::size_t n) const { return held_.size() + n + kStoreSlack; }

  char* Write(std::string_view in, char* out) {
    if (afterSoftCr_ && !in.empty()) {
      afterSoftCr_ = false;
      if (in.front() == '\n') in.remove_prefix(1);
    }
    if (!held_.empty()) out = WriteHeld(in, out);
    const char* p = in.data();
    const char* const end = p + in.size();
    // White space is copied at once and taken back when a line ends, but only down to here:
    // what an escape gave is content.
    const char* floor = out;
    while (p < end) {
      CopyRun(p, end, out, FlagSpecial, IsSpecial);
      if (p == end) break;
      if (*p == '=') {
        out = WriteAfterEquals(p, end, out);
        floor = out;
      } else if (IsLineBreak(*p)) {
        out = DropBlanks(floor, out);
        while (p < end && IsLineBreak(*p)) *out++ = *p++;
      } else {
        *out++ = *p++;
      }
    }
    char* const kept = held_.empty() ? DropBlanks(floor, out) : out;
    if (kept < out) held_.assign(kept, out);
    return kept;
  }

  char* Finish(char* out) {
    if (held_.size() == 2 && held_[0] == '=' && HexValue(held_[1]) >= 0) out = WriteLiteral(out);
    // A soft break that ends the text looks like a text that is cut short.
    if (!held_.empty() && held_[0] == '=') wellFormed_ = false;
    held_.clear();
    return out;
  }

  bool WellFormed() const { return wellFormed_; }

 private:
  static char* DropBlanks(const char* floor, char* out) {
    while (out > floor && IsBlank(out[-1])) --out;
    return out;
  }

  // p is at "=". Escapes stand together as a rule. Where the chunk does not tell what an "=" is,
  // the rest of the chunk is held.
  char* WriteAfterEquals(const char*& p, const char* end, char* out) {
    const char* const begin = p;
    while (end - p >= 3 && *p == '=') {
      const int byte = HexByte(p[1], p[2]);
      if (byte < 0) break;
      *out++ = static_cast<char>(byte);
      p += 3;
    }
    if (p > begin) return out;
    const bool halfEscape = end - p == 2 && HexValue(p[1]) >= 0;
    const char* const next = halfEscape ? end : std::find_if_not(p + 1, end, IsBlank);
    if (next == end) {
      held_.assign(p, end);
      p = end;
    } else if (IsLineBreak(*next)) {
      p = next;
      SkipLineBreak(p, end);
    } else {
      wellFormed_ = false;
      *out++ = *p++;
    }
    return out;
  }

  // One line break behind a soft break's "="; the LF of a pair may be in the next chunk.
  void SkipLineBreak(const char*& p, const char* end) {
    if (*p++ == '\n') return;
    afterSoftCr_ = p == end;
    if (p < end && *p == '\n') ++p;
  }

  // Goes on with what is held: white space, "=" and white space, or "=" and a digit.
  char* WriteHeld(std::string_view& in, char* out) {
    if (held_ == "=" && !in.empty() && HexValue(in.front()) >= 0) TakeIntoHeld(in, 1);
    if (held_.size() == 2 && HexValue(held_[1]) >= 0) {
      if (in.empty()) return out;
      const int byte = HexByte(held_[1], in.front());
      if (byte < 0) return WriteLiteral(out);
      held_.clear();
      in.remove_prefix(1);
      *out = static_cast<char>(byte);
      return out + 1;
    }
    TakeIntoHeld(in, std::min(in.find_first_not_of(" \t"), in.size()));
    if (in.empty()) return out;
    if (!IsLineBreak(in.front())) return WriteLiteral(out);
    if (held_[0] == '=') {
      const char* p = in.data();
      SkipLineBreak(p, in.data() + in.size());
      in.remove_prefix(static_cast<std::size_t>(p - in.data()));
    }
    held_.clear();
    return out;
  }

  void TakeIntoHeld(std::string_view& in, std::size_t count) {
    held_.append(in.substr(0, count));
    in.remove_prefix(count);
  }

  // What is held is neither an escape nor a break nor trailing.
  char* WriteLiteral(char* out) {
    if (held_[0] == '=') wellFormed_ = false;
    out += held_.copy(out, held_.size());
    held_.clear();
    return out;
  }

  std::string held_;          // what the end of a chunk left undecided
  bool afterSoftCr_ = false;  // an LF right here belongs to the soft break before it
  bool wellFormed_ = true;
};

}  // namespace

char* DecodeQWord(std::string_view text, char* out) {
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p < end) {
    const char c = *p;
    if (c == '=') {
      const int byte = end - p >= 3 ? HexByte(p[1], p[2]) : -1;
      if (byte >= 0) {
        *out++ = static_cast<char>(byte);
        p += 3;
        continue;
      }
    } else if (c > ' ') {
      *out++ = c == '_' ? ' ' : c;
      ++p;
      continue;
    }
    if (IsLineBreak(c) || (c == '=' && p + 1 < end && IsLineBreak(p[1]))) {
      p = std::find_if_not(p + 1, end, [](char b) { return IsBlank(b) || IsLineBreak(b); });
    } else {
      *out++ = c;
      ++p;
    }
  }
  return out;
}

std::unique_ptr<TransferCoder> MakeQuotedPrintableEncoder(const TransferOptions& options) {
  return MakeCoder(QuotedPrintableEncoder(options.textMode));
}

std::unique_ptr<TransferCoder> MakeQuotedPrintableDecoder(bool /*lenient*/) {
  return MakeCoder(QuotedPrintableDecoder());
}

}  // namespace transfer

void EncodeQuotedPrintable(const unsigned char* data, int length, int textMode, CBuffer& out) {
  EncodeQuotedPrintable(transfer::DataView(data, length), textMode, out);
}

void EncodeQuotedPrintable(std::string_view data, int textMode, CBuffer& out) {
  transfer::RunWhole(transfer::QuotedPrintableEncoder(textMode), data, out);
}

int DecodeQuotedPrintable(const char* text, CBuffer& out) {
  return DecodeQuotedPrintable(CountedText(text), out);
}

int DecodeQuotedPrintable(std::string_view text, CBuffer& out) {
  transfer::RunWhole(transfer::QuotedPrintableDecoder(), text, out);
  return 1;
}

int IsQuotedPrintable(const char* text) {
  return IsQuotedPrintable(CountedText(text));
}

int IsQuotedPrintable(std::string_view text) {
  if (text.empty()) return 0;
  std::size_t escapes = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (static_cast<unsigned char>(text[i]) >= 0x80) return 0;
    if (text[i] == '=' && i + 2 < text.size()) {
      escapes += transfer::HexByte(text[i + 1], text[i + 2]) >= 0;
    }
  }
  return 3 * escapes >= 3 * text.size() / 10 ? 1 : 0;
}

}  // namespace lumr
