#include <algorithm>

#include "lumrmisc/mailtext/base64_internal.h"
#include "lumrmisc/mailtext/transfer.h"
#include "lumrmisc/mailtext/transfer_internal.h"

namespace lumr {
namespace transfer {
namespace {

constexpr std::string_view kImapAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+,";
constexpr auto kImapValues = MakeValues(kImapAlphabet);
constexpr PairTable kImapPairs = MakePairs(kImapAlphabet);

// Units to modified Base64, six bits as soon as they are there.
class UnitEncoder {
 public:
  // The characters of so many units.
  static std::size_t Length(std::size_t units) { return (units * 16 + 5) / 6; }

  char* Write(char16_t unit, char* out) {
    bits_ = bits_ << 16 | unit;
    for (count_ += 16; count_ >= 6; count_ -= 6) *out++ = Character(bits_ >> (count_ - 6));
    return out;
  }

  char* Finish(char* out) {
    if (count_ > 0) *out++ = Character(bits_ << (6 - count_));
    count_ = 0;
    return out;
  }

 private:
  static char Character(std::uint32_t bits) { return kImapAlphabet[bits & 63]; }

  std::uint32_t bits_ = 0;
  unsigned count_ = 0;  // of bits not written yet, at most 4 between two units
};

// And back, to little-endian bytes. An incomplete unit is dropped at the end.
class UnitDecoder {
 public:
  // The bytes of so many characters.
  static std::size_t Length(std::size_t characters) { return characters * 6 / 16 * 2; }

  char* Write(int value, char* out) {
    bits_ = bits_ << 6 | static_cast<std::uint32_t>(value);
    count_ += 6;
    if (count_ < 16) return out;
    count_ -= 16;
    StoreUnit(out, static_cast<char16_t>(bits_ >> count_));
    return out + 2;
  }

  // Whether no bits are left over.
  bool IsAtBorder() const { return count_ == 0; }

  // Whether nothing but padding is left over.
  bool IsComplete() const { return count_ < 6 && (bits_ & ((1u << count_) - 1)) == 0; }

 private:
  std::uint32_t bits_ = 0;
  unsigned count_ = 0;
};

int ImapValue(char c) {
  return kImapValues[static_cast<unsigned char>(c)];
}

// ---- Modified UTF-7 ----

bool IsPlain(char16_t unit) {
  return unit >= 0x20 && unit <= 0x7E;
}

// UTF-16LE bytes to a mailbox name.
class ImapUtf7Encoder {
 public:
  // A single unit between plain ones is the longest form: "&" and three characters and "-".
  std::size_t MaxOutput(std::size_t n) const { return (n + 1) / 2 * 5 + kRunEnd; }

  char* Write(std::string_view in, char* out) {
    if (hasOddByte_ && !in.empty()) {
      const char pair[2] = {oddByte_, in.front()};
      in.remove_prefix(1);
      hasOddByte_ = false;
      out = WriteUnit(LoadUnit(pair), out);
    }
    while (in.size() >= 2) {
      if (vectors_ && !inRun_) out = WriteVectors(in, out);
      if (in.size() < 2) break;
      out = WriteUnit(LoadUnit(in.data()), out);
      in.remove_prefix(2);
    }
    if (!in.empty()) {
      hasOddByte_ = true;
      oddByte_ = in.front();
    }
    return out;
  }

  char* Finish(char* out) { return inRun_ ? EndRun(out) : out; }
  bool WellFormed() const { return !hasOddByte_; }

 private:
  static constexpr std::size_t kRunEnd = 2;  // the last bits and "-"

  // Plain units and whole runs, up to an "&" or to a run that the text may go on with.
  static char* WriteVectors(std::string_view& in, char* out) {
    while (in.size() >= 2) {
      const std::size_t plain = CopyPlainUnitsAvx512(in.data(), in.size() / 2, out);
      in.remove_prefix(2 * plain);
      out += plain;
      const std::size_t run = CountOtherUnitsAvx512(in.data(), in.size() / 2);
      if (run == 0 || run == in.size() / 2) break;
      *out++ = '&';
      out = EncodeUnitsAvx512(kImapPairs, in.data(), run, out);
      *out++ = '-';
      in.remove_prefix(2 * run);
    }
    return out;
  }

  char* WriteUnit(char16_t unit, char* out) {
    if (!IsPlain(unit)) {
      if (!inRun_) *out++ = '&';
      inRun_ = true;
      return run_.Write(unit, out);
    }
    if (inRun_) out = EndRun(out);
    *out++ = static_cast<char>(unit);
    if (unit == u'&') *out++ = '-';
    return out;
  }

  char* EndRun(char* out) {
    inRun_ = false;
    out = run_.Finish(out);
    *out++ = '-';
    return out;
  }

  UnitEncoder run_;
  bool vectors_ = Cpu().avx512;
  bool inRun_ = false;
  bool hasOddByte_ = false;
  char oddByte_ = 0;
};

// A mailbox name to UTF-16LE bytes.
class ImapUtf7Decoder {
 public:
  std::size_t MaxOutput(std::size_t n) const { return 2 * n; }

  char* Write(std::string_view in, char* out) {
    const char* p = in.data();
    const char* const end = p + in.size();
    while (true) {
      if (vectors_) WriteVectors(p, end, out);
      if (p == end) return out;
      out = WriteChar(*p++, out);
    }
  }

  char* Finish(char* out) {
    if (state_ != State::kPlain) wellFormed_ = false;
    return out;
  }

  bool WellFormed() const { return wellFormed_; }

 private:
  enum class State { kPlain, kAmpersand, kRun, kRunOver };

  void WriteVectors(const char*& p, const char* end, char*& out) {
    bool inRun = state_ == State::kRun && run_.IsAtBorder();
    if (state_ != State::kPlain && !inRun) return;
    DecodeNameAvx512(kImapValues, inRun, p, end, out, wellFormed_);
    state_ = inRun ? State::kRun : State::kPlain;
    run_ = UnitDecoder();
  }

  char* WriteChar(char c, char* out) {
    if (state_ == State::kPlain) {
      if (c == '&') {
        state_ = State::kAmpersand;
        return out;
      }
      if (static_cast<unsigned char>(c) >= 0x80) wellFormed_ = false;
      StoreUnit(out, static_cast<unsigned char>(c));
      return out + 2;
    }
    if (c == '-') return EndRun(out);
    if (state_ == State::kAmpersand) StartRun();
    const int value = ImapValue(c);
    if (state_ == State::kRun && value >= 0) return run_.Write(value, out);
    // The run ends here, but all up to its "-" goes with it.
    state_ = State::kRunOver;
    wellFormed_ = false;
    return out;
  }

  void StartRun() {
    state_ = State::kRun;
    run_ = UnitDecoder();
  }

  char* EndRun(char* out) {
    if (state_ == State::kRun && !run_.IsComplete()) wellFormed_ = false;
    const bool isAmpersand = state_ == State::kAmpersand;
    state_ = State::kPlain;
    if (!isAmpersand) return out;
    StoreUnit(out, u'&');
    return out + 2;
  }

  UnitDecoder run_;
  bool vectors_ = Cpu().avx512;
  State state_ = State::kPlain;
  bool wellFormed_ = true;
};

std::u16string_view UnitsView(const char16_t* text, int length) {
  if (text == nullptr || length < 1) return {};
  return {text, static_cast<std::size_t>(length)};
}

}  // namespace

std::unique_ptr<TransferCoder> MakeImapUtf7Encoder(const TransferOptions& /*options*/) {
  return MakeCoder(ImapUtf7Encoder());
}

std::unique_ptr<TransferCoder> MakeImapUtf7Decoder(bool /*lenient*/) {
  return MakeCoder(ImapUtf7Decoder());
}

}  // namespace transfer

void EncodeImap4Base64(const char16_t* text, int length, CBuffer& out) {
  EncodeImap4Base64(transfer::UnitsView(text, length), out);
}

void EncodeImap4Base64(std::u16string_view text, CBuffer& out) {
  out.Empty();
  char* end = transfer::GetRoom(out, transfer::UnitEncoder::Length(text.size()));
  transfer::UnitEncoder encoder;
  for (const char16_t unit : text) end = encoder.Write(unit, end);
  transfer::ReleaseRoom(out, encoder.Finish(end));
}

int DecodeImap4Base64(const char* text, CStringW& out) {
  return DecodeImap4Base64(CountedText(text), out);
}

int DecodeImap4Base64(std::string_view text, CStringW& out) {
  const auto isOutside = [](char c) { return transfer::ImapValue(c) < 0; };
  const auto textEnd = std::find_if(text.begin(), text.end(), isOutside);
  text = text.substr(0, static_cast<std::size_t>(textEnd - text.begin()));
  out.assign(transfer::UnitDecoder::Length(text.size()) / 2, u'\0');
  char* end = reinterpret_cast<char*>(out.data());
  transfer::UnitDecoder decoder;
  for (const char c : text) end = decoder.Write(transfer::ImapValue(c), end);
  return 1;
}

void EncodeImap4UTF7(const char16_t* text, int length, CBuffer& out) {
  EncodeImap4UTF7(transfer::UnitsView(text, length), out);
}

void EncodeImap4UTF7(std::u16string_view text, CBuffer& out) {
  transfer::RunWhole(transfer::ImapUtf7Encoder(), BytesOf(text), out);
}

int DecodeImap4UTF7(const char* text, int length, CStringW& out) {
  return DecodeImap4UTF7(transfer::DataView(text, length), out);
}

int DecodeImap4UTF7(std::string_view text, CStringW& out) {
  // A string has no room that is not written yet: filling it first would take as long as decoding
  // into it, while these units stay in the first-level cache.
  char16_t units[2048];
  transfer::ImapUtf7Decoder decoder;
  out.clear();
  out.reserve(text.size());
  while (!text.empty()) {
    const std::string_view slice = text.substr(0, std::size(units));
    text.remove_prefix(slice.size());
    char* const begin = reinterpret_cast<char*>(units);
    const char* const end = decoder.Write(slice, begin);
    out.append(units, static_cast<std::size_t>(end - begin) / 2);
  }
  return 1;
}

}  // namespace lumr
