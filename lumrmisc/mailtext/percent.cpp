#include <algorithm>
#include <array>

#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/mailtext/transfer_internal.h"

namespace lumr {
namespace transfer {
namespace {

// ---- Encoding ----

using ByteSet = std::array<bool, 256>;

constexpr ByteSet MakeByteSet(std::string_view members) {
  ByteSet set{};
  for (const char c : members) set[static_cast<unsigned char>(c)] = true;
  return set;
}

constexpr ByteSet kNothing{};
constexpr ByteSet kAlphanumeric =
    MakeByteSet("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789");
constexpr ByteSet kUrlSafe =
    MakeByteSet("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._");

class PercentEncoder {
 public:
  PercentEncoder(const ByteSet& kept, bool plusForSpace)
      : kept_(kept), plusForSpace_(plusForSpace) {}

  std::size_t MaxOutput(std::size_t n) const { return 3 * n + kStoreSlack; }

  char* Write(std::string_view in, char* out) {
    for (const char c : in) {
      if (kept_[static_cast<unsigned char>(c)]) {
        *out++ = c;
      } else if (c == ' ' && plusForSpace_) {
        *out++ = '+';
      } else {
        out = WriteEscape<'%'>(c, out);
      }
    }
    return out;
  }

  char* Finish(char* out) { return out; }
  bool WellFormed() const { return true; }

 private:
  const ByteSet& kept_;
  bool plusForSpace_;
};

PercentEncoder HexEncoder(int encodeAll) {
  return PercentEncoder(encodeAll != 0 ? kNothing : kAlphanumeric, false);
}

PercentEncoder UrlEncoder() {
  return PercentEncoder(kUrlSafe, true);
}

// ---- Decoding ----

class PercentDecoder {
 public:
  explicit PercentDecoder(bool plusIsSpace) : plusIsSpace_(plusIsSpace) {}

  std::size_t MaxOutput(std::size_t n) const { return heldSize_ + n + kStoreSlack; }

  char* Write(std::string_view in, char* out) {
    const char* p = in.data();
    const char* const end = p + in.size();
    if (heldSize_ > 0 && p < end) out = WriteHeld(p, end, out);
    while (p < end) {
      CopyRun(p, end, out, FlagSpecial, [](char c) { return c == '%' || c == '+'; });
      if (p == end) break;
      if (*p == '%') {
        out = WriteAfterPercent(p, end, out);
      } else {
        *out++ = plusIsSpace_ ? ' ' : '+';
        ++p;
      }
    }
    return out;
  }

  char* Finish(char* out) { return heldSize_ > 0 ? ReleaseHeld(out) : out; }

  bool WellFormed() const { return wellFormed_; }

 private:
  static std::uint64_t FlagSpecial(std::uint64_t bytes) {
    return BytesEqual(bytes, '%') | BytesEqual(bytes, '+');
  }

  // p is at "%". Escapes stand together as a rule. One that the chunk may have cut is held.
  char* WriteAfterPercent(const char*& p, const char* end, char* out) {
    const char* const begin = p;
    while (end - p >= 3 && *p == '%') {
      const int byte = HexByte(p[1], p[2]);
      if (byte < 0) break;
      *out++ = static_cast<char>(byte);
      p += 3;
    }
    if (p > begin) return out;
    if (end - p == 1 || (end - p == 2 && HexValue(p[1]) >= 0)) {
      heldSize_ = static_cast<std::size_t>(std::copy(p, end, held_) - held_);
      p = end;
    } else {
      wellFormed_ = false;
      *out++ = *p++;
    }
    return out;
  }

  // Goes on with "%", or "%" and a digit.
  char* WriteHeld(const char*& p, const char* end, char* out) {
    if (heldSize_ == 1 && HexValue(*p) >= 0) {
      held_[heldSize_++] = *p++;
      if (p == end) return out;
    }
    if (heldSize_ == 1 || HexValue(*p) < 0) return ReleaseHeld(out);
    heldSize_ = 0;
    *out = static_cast<char>(HexByte(held_[1], *p++));
    return out + 1;
  }

  char* ReleaseHeld(char* out) {
    wellFormed_ = false;
    out = std::copy_n(held_, heldSize_, out);
    heldSize_ = 0;
    return out;
  }

  bool plusIsSpace_;
  bool wellFormed_ = true;
  char held_[2] = {};
  std::size_t heldSize_ = 0;
};

}  // namespace

std::unique_ptr<TransferCoder> MakeHexEncoder(const TransferOptions& options) {
  return MakeCoder(HexEncoder(options.encodeAll));
}

std::unique_ptr<TransferCoder> MakeHexDecoder(bool /*lenient*/) {
  return MakeCoder(PercentDecoder(false));
}

std::unique_ptr<TransferCoder> MakeUrlEncoder(const TransferOptions& /*options*/) {
  return MakeCoder(UrlEncoder());
}

std::unique_ptr<TransferCoder> MakeUrlDecoder(bool lenient) {
  return MakeCoder(PercentDecoder(lenient));
}

}  // namespace transfer

const char* EncodeHex(const char* text, int encodeAll, CBuffer& out) {
  return EncodeHex(CountedText(text), encodeAll, out);
}

const char* EncodeHex(std::string_view text, int encodeAll, CBuffer& out) {
  transfer::RunWhole(transfer::HexEncoder(encodeAll), text, out);
  return out;
}

const char* EncodeUrlEncode(const char* text, CBuffer& out) {
  return EncodeUrlEncode(CountedText(text), out);
}

const char* EncodeUrlEncode(std::string_view text, CBuffer& out) {
  transfer::RunWhole(transfer::UrlEncoder(), text, out);
  return out;
}

void DecodeHex(const char* text, CBuffer& out) {
  DecodeHex(CountedText(text), out);
}

void DecodeHex(std::string_view text, CBuffer& out) {
  transfer::RunWhole(transfer::PercentDecoder(false), text, out);
}

CStringA DecodeHex(const char* text) {
  return DecodeHex(CountedText(text));
}

CStringA DecodeHex(std::string_view text) {
  transfer::PercentDecoder decoder(false);
  CStringA out(decoder.MaxOutput(text.size()), '\0');
  const char* const end = decoder.Finish(decoder.Write(text, out.data()));
  out.resize(static_cast<std::size_t>(end - out.data()));
  return out;
}

CStringW DecodeHex(const char16_t* text) {
  return DecodeHex(text == nullptr ? std::u16string_view() : std::u16string_view(text));
}

CStringW DecodeHex(std::u16string_view text) {
  CStringW out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    int value = -1;
    if (text[i] == u'%' && i + 2 < text.size()) {
      const int high = Decode1Hex(text[i + 1]);
      const int low = Decode1Hex(text[i + 2]);
      if (high >= 0 && low >= 0) value = high * 16 + low;
    }
    out += value < 0 ? text[i] : static_cast<char16_t>(value);
    if (value >= 0) i += 2;
  }
  return out;
}

int Decode1Hex(char digit) {
  return transfer::HexValue(digit);
}

int Decode1Hex(char16_t digit) {
  return digit < 0x80 ? transfer::HexValue(static_cast<char>(digit)) : -1;
}

}  // namespace lumr
