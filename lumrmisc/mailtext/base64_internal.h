// The inside of Base64: groups of three bytes to four characters of any alphabet, and the
// decoder, which encoded header words use as well.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "lumrmisc/mailtext/sixbit_avx512_internal.h"
#include "lumrmisc/mailtext/transfer_internal.h"
#include "lumrmisc/platform/cpu.h"

namespace lumr::transfer {

inline constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr PairTable MakePairs(std::string_view alphabet) {
  PairTable pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const auto first = static_cast<unsigned char>(alphabet[i >> 6]);
    const auto second = static_cast<unsigned char>(alphabet[i & 63]);
    pairs[i] = static_cast<std::uint16_t>(first | second << 8);
  }
  return pairs;
}

// The value of each byte in the alphabet; -1 outside.
constexpr ValueTable MakeValues(std::string_view alphabet) {
  ValueTable values{};
  values.fill(-1);
  for (std::size_t v = 0; v < alphabet.size(); ++v) {
    values[static_cast<unsigned char>(alphabet[v])] = static_cast<std::int8_t>(v);
  }
  return values;
}

// Encodes whole groups; gives the end of the output, four characters a group.
inline char* EncodeGroups(const PairTable& pairs, const char* in, std::size_t groups, char* out) {
  if (groups >= 8 && Cpu().avx512) return EncodeGroupsAvx512(pairs, in, groups, out);
  // Two groups a step. Eight bytes are loaded and six used, so the last ones go singly.
  for (; groups > 2; groups -= 2, in += 6, out += 8) {
    const std::uint64_t bits = LoadBig64(in);
    const std::uint64_t text = std::uint64_t{pairs[bits >> 52]} |
                               std::uint64_t{pairs[bits >> 40 & 0xfff]} << 16 |
                               std::uint64_t{pairs[bits >> 28 & 0xfff]} << 32 |
                               std::uint64_t{pairs[bits >> 16 & 0xfff]} << 48;
    std::memcpy(out, &text, sizeof text);
  }
  for (; groups > 0; --groups, in += 3, out += 4) {
    const unsigned bits = static_cast<unsigned>(static_cast<unsigned char>(in[0]) << 16 |
                                                static_cast<unsigned char>(in[1]) << 8 |
                                                static_cast<unsigned char>(in[2]));
    const std::uint32_t text = pairs[bits >> 12] | std::uint32_t{pairs[bits & 0xfff]} << 16;
    std::memcpy(out, &text, sizeof text);
  }
  return out;
}

// Decodes Base64: strictly as DecodeBase64, or leniently as MakeTransferDecoder says.
class Base64Decoder {
 public:
  explicit Base64Decoder(bool lenient) : lenient_(lenient) {}

  std::size_t MaxOutput(std::size_t n) const { return (count_ + n + 3) / 4 * 3; }
  char* Write(std::string_view in, char* out);
  char* Finish(char* out);
  bool WellFormed() const { return wellFormed_; }

  // The characters of the group that is not complete yet, and whether these alone can be the end
  // of a text (no bits are left over but zeros).
  std::size_t Pending() const { return count_; }
  bool CanEndHere() const;

 private:
  char* Take(char c, char* out);
  char* TakePadding(char* out);
  char* WriteQuartet(char* out);
  char* WritePartial(char* out);

  bool lenient_;
  bool wellFormed_ = true;
  bool done_ = false;            // strict: behind the first padded group
  std::uint32_t bits_ = 0;       // the characters of the incomplete group
  std::size_t count_ = 0;        // their number, 0 to 3
  unsigned padding_ = 0;         // strict: a bit for each "=" among them, the first one lowest
  std::size_t padsMissing_ = 0;  // lenient: "=" that still belong to the last group
};

}  // namespace lumr::transfer
