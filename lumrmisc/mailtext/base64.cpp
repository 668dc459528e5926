#include <algorithm>

#include "lumrmisc/mailtext/base64_internal.h"
#include "lumrmisc/mailtext/transfer.h"

namespace lumr {
namespace transfer {
namespace {

constexpr PairTable kPairs = MakePairs(kBase64Alphabet);
constexpr auto kValues = MakeValues(kBase64Alphabet);

int ValueOf(char c) {
  return kValues[static_cast<unsigned char>(c)];
}

// ---- Encoding ----

class Base64Encoder {
 public:
  explicit Base64Encoder(int lineLength)
      : lineLength_(lineLength < 1 ? 0 : static_cast<std::size_t>(lineLength)) {}

  std::size_t MaxOutput(std::size_t n) const {
    const std::size_t chars = (heldSize_ + n + 2) / 3 * 4;
    if (lineLength_ == 0) return chars;
    return chars + (column_ + chars + lineLength_ - 1) / lineLength_ * 2;
  }

  char* Write(std::string_view in, char* out) {
    if (heldSize_ > 0) {
      const std::size_t taken = std::min(in.size(), 3 - heldSize_);
      in.copy(held_ + heldSize_, taken);
      heldSize_ += taken;
      in.remove_prefix(taken);
      if (heldSize_ < 3) return out;
      out = WriteGroups(held_, 1, out);
    }
    const std::size_t groups = in.size() / 3;
    out = WriteGroups(in.data(), groups, out);
    in.remove_prefix(groups * 3);
    heldSize_ = in.copy(held_, in.size());
    return out;
  }

  char* Finish(char* out) {
    if (heldSize_ > 0) {
      std::fill(held_ + heldSize_, held_ + 3, '\0');
      char group[4];
      EncodeGroups(kPairs, held_, 1, group);
      std::fill(group + heldSize_ + 1, group + 4, '=');
      out = WriteAcrossLines(group, out);
      heldSize_ = 0;
    }
    if (column_ > 0) out = EndLine(out);
    return out;
  }

  bool WellFormed() const { return true; }

 private:
  char* WriteGroups(const char* in, std::size_t groups, char* out) {
    if (lineLength_ == 0) return EncodeGroups(kPairs, in, groups, out);
    if (column_ == 0 && lineLength_ % 4 == 0 && Cpu().avx512) {
      const std::size_t perLine = lineLength_ / 4;
      const std::size_t lines = groups / perLine;
      out = EncodeLinesAvx512(kPairs, in, lines, perLine, out);
      in += 3 * perLine * lines;
      groups -= perLine * lines;
    }
    while (groups > 0) {
      const std::size_t fitting = std::min((lineLength_ - column_) / 4, groups);
      if (fitting == 0) {
        char group[4];
        EncodeGroups(kPairs, in, 1, group);
        out = WriteAcrossLines(group, out);
      } else {
        out = EncodeGroups(kPairs, in, fitting, out);
        column_ += fitting * 4;
        if (column_ == lineLength_) out = EndLine(out);
      }
      const std::size_t written = std::max<std::size_t>(fitting, 1);
      in += written * 3;
      groups -= written;
    }
    return out;
  }

  char* WriteAcrossLines(const char (&group)[4], char* out) {
    for (const char c : group) {
      *out++ = c;
      if (lineLength_ > 0 && ++column_ == lineLength_) out = EndLine(out);
    }
    return out;
  }

  char* EndLine(char* out) {
    column_ = 0;
    *out++ = '\r';
    *out++ = '\n';
    return out;
  }

  std::size_t lineLength_;  // 0: no lines
  std::size_t column_ = 0;  // always below lineLength_, or 0
  char held_[3] = {};
  std::size_t heldSize_ = 0;
};

// ---- Decoding ----

// The bits of a character at each place of a group, laid out so that the sum of four is the
// three bytes in the order of memory; kNoValue for what is not in the alphabet, "=" included.
constexpr std::uint32_t kNoValue = 1u << 31;
using PlaceTable = std::array<std::array<std::uint32_t, 256>, 4>;

constexpr PlaceTable MakePlaces() {
  PlaceTable places{};
  for (std::size_t c = 0; c < 256; ++c) {
    for (auto& place : places) place[c] = kNoValue;
    if (kValues[c] < 0) continue;
    const auto v = static_cast<std::uint32_t>(kValues[c]);
    places[0][c] = v << 2;
    places[1][c] = v >> 4 | (v & 15) << 12;
    places[2][c] = (v >> 2) << 8 | (v & 3) << 22;
    places[3][c] = v << 16;
  }
  return places;
}

constexpr PlaceTable kPlaces = MakePlaces();

std::uint32_t DecodeGroup(const char* in) {
  return kPlaces[0][static_cast<unsigned char>(in[0])] |
         kPlaces[1][static_cast<unsigned char>(in[1])] |
         kPlaces[2][static_cast<unsigned char>(in[2])] |
         kPlaces[3][static_cast<unsigned char>(in[3])];
}

// Decodes whole groups up to the first one that holds anything outside the alphabet.
void DecodeGroups(const char*& in, const char* end, char*& out) {
  if (end - in >= 32 && Cpu().avx512) DecodeGroupsAvx512(kValues, in, end, out);
  // The store of eight bytes for six needs room that the group after the next two guarantees.
  while (end - in >= 12) {
    const std::uint32_t first = DecodeGroup(in);
    const std::uint32_t second = DecodeGroup(in + 4);
    if (((first | second) & kNoValue) != 0) break;
    const std::uint64_t bytes = first | std::uint64_t{second} << 24;
    std::memcpy(out, &bytes, sizeof bytes);
    in += 8;
    out += 6;
  }
  while (end - in >= 4) {
    const std::uint32_t bytes = DecodeGroup(in);
    if ((bytes & kNoValue) != 0) return;
    std::memcpy(out, &bytes, 3);
    in += 4;
    out += 3;
  }
}

}  // namespace

char* Base64Decoder::Write(std::string_view in, char* out) {
  const char* p = in.data();
  const char* const end = p + in.size();
  while (p < end && !done_) {
    if (count_ == 0 && padsMissing_ == 0) DecodeGroups(p, end, out);
    if (p < end) out = Take(*p++, out);
  }
  if (p < end) wellFormed_ = wellFormed_ && std::all_of(p, end, IsLayout);
  return out;
}

char* Base64Decoder::Take(char c, char* out) {
  if (c == '=' && lenient_) return TakePadding(out);
  const int value = c == '=' ? 0 : ValueOf(c);
  if (value < 0) {
    if (!IsLayout(c)) wellFormed_ = false;
    return out;
  }
  if (c == '=') padding_ |= 1u << count_;
  if (padsMissing_ > 0) wellFormed_ = false;
  padsMissing_ = 0;
  bits_ = bits_ << 6 | static_cast<std::uint32_t>(value);
  return ++count_ < 4 ? out : WriteQuartet(out);
}

char* Base64Decoder::TakePadding(char* out) {
  if (count_ >= 2) {
    padsMissing_ = 3 - count_;
    return WritePartial(out);
  }
  if (padsMissing_ > 0) {
    --padsMissing_;
  } else {
    wellFormed_ = false;
  }
  return out;
}

char* Base64Decoder::WriteQuartet(char* out) {
  const bool oneByte = (padding_ & 4) != 0;
  const bool twoBytes = (padding_ & 8) != 0;
  *out++ = static_cast<char>(bits_ >> 16);
  if (!oneByte) *out++ = static_cast<char>(bits_ >> 8);
  if (!oneByte && !twoBytes) *out++ = static_cast<char>(bits_);
  done_ = oneByte || twoBytes;
  // Well-formed padding is "=" at the last place, or at the last two.
  if (padding_ != 0 && padding_ != 8 && padding_ != 12) wellFormed_ = false;
  bits_ = 0;
  count_ = 0;
  padding_ = 0;
  return out;
}

// The bytes that an incomplete group holds: one character holds none.
char* Base64Decoder::WritePartial(char* out) {
  const std::uint32_t bits = bits_ << (4 - count_) * 6;
  if (count_ >= 2) *out++ = static_cast<char>(bits >> 16);
  if (count_ >= 3) *out++ = static_cast<char>(bits >> 8);
  bits_ = 0;
  count_ = 0;
  return out;
}

char* Base64Decoder::Finish(char* out) {
  if (count_ > 0 || padsMissing_ > 0) wellFormed_ = false;
  if (lenient_ && count_ > 0) out = WritePartial(out);
  return out;
}

bool Base64Decoder::CanEndHere() const {
  if (count_ == 0) return true;
  return count_ != 1 && (bits_ & (count_ == 2 ? 15u : 3u)) == 0;
}

std::unique_ptr<TransferCoder> MakeBase64Encoder(const TransferOptions& options) {
  return MakeCoder(Base64Encoder(options.lineLength));
}

std::unique_ptr<TransferCoder> MakeBase64Decoder(bool lenient) {
  return MakeCoder(Base64Decoder(lenient));
}

}  // namespace transfer

void EncodeBase64(const unsigned char* data, int length, int lineLength, CBuffer& out) {
  EncodeBase64(transfer::DataView(data, length), lineLength, out);
}

void EncodeBase64(std::string_view data, int lineLength, CBuffer& out) {
  transfer::RunWhole(transfer::Base64Encoder(lineLength), data, out);
}

int DecodeBase64(const char* text, CBuffer& out) {
  return DecodeBase64(CountedText(text), out);
}

int DecodeBase64(std::string_view text, CBuffer& out) {
  transfer::RunWhole(transfer::Base64Decoder(false), text, out);
  return 1;
}

void ExtractBase64Text(const char* text, int length, CBuffer& out) {
  ExtractBase64Text(length < 0 ? CountedText(text) : transfer::DataView(text, length), out);
}

void ExtractBase64Text(std::string_view text, CBuffer& out) {
  out.Empty();
  const auto isInRun = [](char c) { return c == '\0' || transfer::ValueOf(c) >= 0; };
  const auto begin = std::find_if(text.begin(), text.end(), isInRun);
  auto end = std::find_if_not(begin, text.end(), isInRun);
  if (begin == end) return;
  end = std::find_if(end, text.end(), [](char c) { return c != '='; });
  out.Add(text.data() + (begin - text.begin()), static_cast<int>(end - begin));
}

}  // namespace lumr
