// What the coders of code pages share.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "lumrmisc/platform/codepage.h"
#include "lumrmisc/platform/conversion_report.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

using Byte = unsigned char;

constexpr char16_t kReplacementCharacter = 0xFFFD;

// How far a coder came.
struct CoderEnds {
  const Byte* in;
  char* out;
};

// The losses of one call: counted always, and reported with offsets from the start of the text
// when somebody asked for a report. Only the slow paths of the coders come here.
class Losses {
 public:
  Losses(CodePageCounts& counts, CConversionReport* report) : counts_(counts), report_(report) {}

  // Says which offsets in the source and in the result two addresses stand for.
  void SetOrigin(const Byte* in, long long inOffset, const char* out, long long outOffset) {
    in_ = in;
    inOffset_ = inOffset;
    out_ = out;
    outOffset_ = outOffset;
  }

  // Notes the loss of length bytes that begin before bytes ahead of in.
  void Add(ConversionLossKind kind, const Byte* in, int length, const char* out, int before = 0) {
    ++(kind == ConversionLossKind::kFit ? counts_.fits : counts_.replaced);
    if (report_ == nullptr) return;
    report_->Add({kind, inOffset_ + (in - in_) - before, length, outOffset_ + (out - out_)});
  }

 private:
  CodePageCounts& counts_;
  CConversionReport* report_;
  const Byte* in_ = nullptr;
  const char* out_ = nullptr;
  long long inOffset_ = 0;
  long long outOffset_ = 0;
};

// How far to convert character by character before vectors are tried again: farther each time
// that they fail, as they do in text of another kind.
class PlainStretch {
 public:
  explicit PlainStretch(bool vectors) : vectors_(vectors) {}

  const Byte* End(const Byte* in, const Byte* end, bool vectorsFailed) {
    length_ = vectorsFailed ? std::min<std::ptrdiff_t>(2 * length_, 4096) : kLeast;
    return vectors_ && end - in > length_ ? in + length_ : end;
  }

 private:
  static constexpr std::ptrdiff_t kLeast = 32;
  bool vectors_;
  std::ptrdiff_t length_ = kLeast;
};

inline std::uint64_t LoadEightBytes(const void* address) {
  std::uint64_t bytes;
  std::memcpy(&bytes, address, sizeof bytes);
  return bytes;
}

inline char* PutUnit(char* out, char16_t unit) {
  StoreUnit(out, unit);
  return out + 2;
}

// Whether size bytes, a multiple of 8, are all ASCII.
inline bool AreAsciiBytes(const Byte* in, int size) {
  std::uint64_t all = 0;
  for (int i = 0; i < size; i += 8) all |= LoadEightBytes(in + i);
  return (all & 0x8080808080808080) == 0;
}

// Whether count units, a multiple of 4, are all ASCII.
inline bool AreAsciiUnits(const Byte* in, int count) {
  std::uint64_t all = 0;
  for (int i = 0; i < 2 * count; i += 8) all |= LoadEightBytes(in + i);
  return (all & 0xFF80FF80FF80FF80) == 0;
}

template <int kSize>
char* WidenBytes(const Byte* in, char* out) {
  for (int i = 0; i < kSize; ++i) StoreUnit(out + 2 * i, in[i]);
  return out + 2 * kSize;
}

template <int kCount>
char* NarrowUnits(const Byte* in, char* out) {
  for (int i = 0; i < kCount; ++i) out[i] = static_cast<char>(in[2 * i]);
  return out + kCount;
}

// Widens the ASCII bytes that in begins with. Mail is full of them, in all encodings; where there
// are eight there are often many more. Eight are widened before it is known how many of them are
// ASCII: out has room for a unit for each byte up to end, and of all branches the one at the end
// of a run is the dearest.
inline void WidenAscii(const Byte*& in, const Byte* end, char*& out) {
  while (end - in >= 8) {
    const std::uint64_t marks = LoadEightBytes(in) & 0x8080808080808080;
    WidenBytes<8>(in, out);
    const int count = std::countr_zero(marks) / 8;
    in += count;
    out += 2 * count;
    if (marks != 0) return;
    for (; end - in >= 32 && AreAsciiBytes(in, 32); in += 32) out = WidenBytes<32>(in, out);
  }
  while (in != end && *in < 0x80) out = PutUnit(out, *in++);
}

// Narrows the ASCII units that the whole units of in begin with, likewise: out has room for a byte
// for each unit up to end.
inline void NarrowAscii(const Byte*& in, const Byte* end, char*& out) {
  while (end - in >= 16) {
    constexpr std::uint64_t kNotAscii = 0xFF80FF80FF80FF80;
    const std::uint64_t first = LoadEightBytes(in) & kNotAscii;
    const std::uint64_t second = LoadEightBytes(in + 8) & kNotAscii;
    NarrowUnits<8>(in, out);
    const int count = first != 0 ? std::countr_zero(first) / 16 : 4 + std::countr_zero(second) / 16;
    in += 2 * count;
    out += count;
    if (count != 8) return;
    for (; end - in >= 64 && AreAsciiUnits(in, 32); in += 64) out = NarrowUnits<32>(in, out);
  }
  for (; end - in >= 2 && LoadUnit(in) < 0x80; in += 2) *out++ = static_cast<char>(*in);
}

constexpr bool IsHighSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xDC00;
}

}  // namespace lumr
