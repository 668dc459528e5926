// What the kernels of the Japanese conversions are made of.
//
// A kernel has two parts. Its fast part takes well-formed text as far as it comes, by tables and
// eight bytes at a time, and stops before anything else. Its step takes whatever one character or
// escape sequence stands there, by the rules, and knows what was lost.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "lumrmisc/charset/japanese_avx512_internal.h"
#include "lumrmisc/charset/japanese_pairs_internal.h"
#include "lumrmisc/charset/japanese_sse2_internal.h"
#include "lumrmisc/charset/wordscan_internal.h"
#include "lumrmisc/platform/conversion_report.h"
#include "lumrmisc/platform/cpu.h"

namespace lumr {

using Byte = unsigned char;

// A conversion at work on a piece of text.
struct JapaneseWork {
  const Byte* in;
  const Byte* end;
  Byte* out;
  bool last;  // nothing follows the piece
  const Byte* begin;
  const Byte* outBegin;
  long long inputOffset;   // of begin
  long long outputOffset;  // of outBegin
  CConversionReport* report;
  long long lost = 0;

  std::size_t Left() const { return static_cast<std::size_t>(end - in); }
  std::string_view Rest() const { return {reinterpret_cast<const char*>(in), Left()}; }

  void Put(Byte byte) { *out++ = byte; }
  void Put(BytePair pair) {
    out[0] = pair.first;
    out[1] = pair.second;
    out += 2;
  }
  void Copy(int count) {
    while (count-- > 0) Put(*in++);
  }
  void Lose(ConversionLossKind kind, int length) {
    ++lost;
    if (report == nullptr) return;
    report->Add({kind, inputOffset + (in - begin), length, outputOffset + (out - outBegin)});
  }
  void CopyLost(int count) {
    Lose(ConversionLossKind::kReplaced, count);
    Copy(count);
  }
  void CopyOne(bool exact) {
    if (!exact) Lose(ConversionLossKind::kReplaced, 1);
    Copy(1);
  }
};

inline constexpr Byte kEscape = 0x1B;
inline constexpr Byte kShiftOut = 0x0E;
inline constexpr Byte kShiftIn = 0x0F;

constexpr bool IsControl(Byte byte) {
  return byte == kEscape || byte == kShiftOut || byte == kShiftIn;
}

// Marks the first byte that ends a run of plain text: one above 7F and, in a form with control
// characters of its own, one of these (SO and SI differ in their last bit).
template <bool kWithControls>
std::uint64_t MarkRunEnd(std::uint64_t word) {
  std::uint64_t marks = word & WordOf<Byte>::kHighBits;
  if constexpr (kWithControls) {
    marks |= WordOf<Byte>::Mark(word, kEscape) |
             WordOf<Byte>::Mark(word & WordOf<Byte>::All(0xFE), kShiftOut);
  }
  return marks;
}

// Copies the run of plain text at in. Whole words are stored before it is known how much of them
// belongs to the run: the output has room for at least as many bytes as input is left.
template <bool kWithControls>
void CopyPlain(const Byte*& in, const Byte* end, Byte*& out) {
  while (end - in >= 8) {
    const auto word = LoadValue<std::uint64_t>(in);
    std::memcpy(out, &word, 8);
    const std::uint64_t marks = MarkRunEnd<kWithControls>(word);
    const std::size_t length = WordOf<Byte>::FirstMark(marks);
    in += length;
    out += length;
    if (marks != 0) return;
    // Behind eight such bytes there are often many more.
    if (end - in >= 64 && Cpu().avx512) {
      if (CopyPlainAvx512(kWithControls, in, end, out)) return;
    }
  }
  while (in < end && *in < 0x80 && !(kWithControls && IsControl(*in))) *out++ = *in++;
}

// Converts the run of well-formed pairs at in; mark is added to each of their bytes. kEight does
// the same for eight pairs as the table for one. It stores all of them before it is known how many
// belong to the run: the output has room for at least as many bytes as input is left.
template <int (*kEight)(const Byte*, Byte*), typename Table>
void ConvertPairs(const Table& table, std::uint32_t mark, const Byte*& in, const Byte* end,
                  Byte*& out) {
  while (kHasSse2 && end - in >= 16) {
    const int pairs = kEight(in, out);
    if (pairs != 8) {
      in += 2 * pairs;
      out += 2 * pairs;
      return;
    }
    in += 16;
    out += 16;
  }
  while (end - in >= 2) {
    const std::uint32_t code = table.Code(in[0], in[1]);
    if (code >= kNoPair) return;
    const auto pair = static_cast<std::uint16_t>(code | mark);
    std::memcpy(out, &pair, 2);
    in += 2;
    out += 2;
  }
}

// One conversion. state is 0 at the start of a text and after close.
struct JapaneseKernel {
  std::size_t growth;   // bytes written for one byte read, at most
  std::size_t closing;  // bytes written behind the last one, at most
  // Converts all of a piece that it can; what is left is incomplete, and nothing is with last.
  void (*run)(JapaneseWork&, Byte& state);
  // Converts one character or escape sequence; false when it is incomplete and more may follow.
  bool (*step)(JapaneseWork&, Byte& state);
  void (*close)(JapaneseWork&, Byte& state);  // at the end of the text
};

// From a class with Fast, Step and Close.
template <typename Rules>
constexpr JapaneseKernel MakeJapaneseKernel() {
  constexpr auto run = [](JapaneseWork& w, Byte& state) {
    while (w.in < w.end) {
      Rules::Fast(w, state);
      if (w.in == w.end || !Rules::Step(w, state)) return;
    }
  };
  return {Rules::kGrowth, Rules::kClosing, run, Rules::Step, Rules::Close};
}

extern const JapaneseKernel kSJisToEucKernel;
extern const JapaneseKernel kEucToSJisKernel;
extern const JapaneseKernel kSJisToJisKernel;
extern const JapaneseKernel kJisToSJisKernel;

}  // namespace lumr
