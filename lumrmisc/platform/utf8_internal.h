// UTF-8 (RFC 3629) to UTF-16 and back.
//
// Malformed input is replaced as the Unicode Standard recommends and browsers do: each longest
// part that begins a well-formed sequence, else each byte, gives one U+FFFD. Surrogates, what
// lies above U+10FFFF, and longer forms than needed are malformed.
#pragma once

#include <algorithm>
#include <cstddef>

#include "lumrmisc/platform/codepage_internal.h"
#include "lumrmisc/platform/cpu.h"
#include "lumrmisc/platform/utf8_kernels_internal.h"

namespace lumr {

// What the bytes at a position of UTF-8 text are.
struct Utf8Sequence {
  int length;      // bytes of the sequence or, when it is malformed, of what one U+FFFD replaces
  bool complete;   // a character
  bool truncated;  // well-formed so far, but the text ends
};

// Looks at the sequence that begins at in with a byte of 80 or above.
inline Utf8Sequence ScanUtf8(const Byte* in, const Byte* end) {
  const Byte lead = *in;
  const int wanted = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (wanted == 0) return {1, false, false};
  // The second byte excludes longer forms than needed, surrogates, and what is out of range.
  Byte low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  Byte high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  for (int length = 1; length < wanted; ++length) {
    if (in + length == end) return {length, false, true};
    if (in[length] < low || in[length] > high) return {length, false, false};
    low = 0x80;
    high = 0xBF;
  }
  return {wanted, true, false};
}

inline char* PutUtf8Sequence(char* out, const Byte* in, int length) {
  if (length == 2) return PutUnit(out, static_cast<char16_t>((in[0] & 0x1F) << 6 | (in[1] & 0x3F)));
  if (length == 3) {
    return PutUnit(
        out, static_cast<char16_t>((in[0] & 0x0F) << 12 | (in[1] & 0x3F) << 6 | (in[2] & 0x3F)));
  }
  const int character =
      (in[0] & 0x07) << 18 | (in[1] & 0x3F) << 12 | (in[2] & 0x3F) << 6 | (in[3] & 0x3F);
  out = PutUnit(out, static_cast<char16_t>(0xD7C0 + (character >> 10)));
  return PutUnit(out, static_cast<char16_t>(0xDC00 | (character & 0x3FF)));
}

// Whether a well-formed three-byte sequence, which most Japanese text is made of, stands at in.
inline bool IsUtf8Three(const Byte* in, const Byte* end) {
  if (end - in < 3 || (in[0] & 0xF0) != 0xE0) return false;
  if (((in[1] ^ 0x80) | (in[2] ^ 0x80)) & 0xC0) return false;
  const int top = in[0] << 8 | in[1];
  return top >= 0xE0A0 && (top < 0xEDA0 || top > 0xEDBF);
}

// Decodes the characters that begin before stop; false when one waits for more text.
inline bool DecodeUtf8Plain(const Byte*& in, const Byte* stop, const Byte* end, bool last,
                            char*& out, Losses& losses) {
  while (in < stop) {
    if (*in < 0x80) {
      WidenAscii(in, stop, out);
    } else if (IsUtf8Three(in, end)) {
      out = PutUtf8Sequence(out, in, 3);
      in += 3;
    } else {
      const Utf8Sequence found = ScanUtf8(in, end);
      if (found.truncated && !last) return false;
      if (found.complete) {
        out = PutUtf8Sequence(out, in, found.length);
      } else {
        losses.Add(ConversionLossKind::kReplaced, in, found.length, out);
        out = PutUnit(out, kReplacementCharacter);
      }
      in += found.length;
    }
  }
  return true;
}

inline CoderEnds DecodeUtf8(const Byte* in, const Byte* end, bool last, char* out, Losses& losses) {
  const Utf8Kernel vectors = Cpu().avx512 ? DecodeUtf8Avx512
                             : Cpu().avx2 ? DecodeUtf8Avx2
                                          : nullptr;
  PlainStretch stretch(vectors != nullptr);
  while (in != end) {
    const Byte* const begin = in;
    if (vectors != nullptr) vectors(in, end, out);
    const Byte* const stop = stretch.End(in, end, in == begin);
    if (!DecodeUtf8Plain(in, stop, end, last, out, losses)) break;
  }
  return {in, out};
}

inline char* PutUtf8Three(char* out, char16_t unit) {
  *out++ = static_cast<char>(0xE0 | unit >> 12);
  *out++ = static_cast<char>(0x80 | (unit >> 6 & 0x3F));
  *out++ = static_cast<char>(0x80 | (unit & 0x3F));
  return out;
}

inline char* PutUtf8Pair(char* out, char16_t high, char16_t low) {
  const int character = ((high & 0x3FF) << 10 | (low & 0x3FF)) + 0x10000;
  *out++ = static_cast<char>(0xF0 | character >> 18);
  *out++ = static_cast<char>(0x80 | (character >> 12 & 0x3F));
  *out++ = static_cast<char>(0x80 | (character >> 6 & 0x3F));
  *out++ = static_cast<char>(0x80 | (character & 0x3F));
  return out;
}

// Encodes the characters that begin before stop; false when one waits for more text. Half of a
// surrogate pair that stands alone counts as replaced and gives U+FFFD.
inline bool EncodeUtf8Plain(const Byte*& in, const Byte* stop, const Byte* end, bool last,
                            char*& out, Losses& losses) {
  while (in < stop) {
    if (end - in < 2) return false;
    const char16_t unit = LoadUnit(in);
    if (unit < 0x80) {
      NarrowAscii(in, stop, out);
      continue;
    }
    if (unit < 0x800) {
      *out++ = static_cast<char>(0xC0 | unit >> 6);
      *out++ = static_cast<char>(0x80 | (unit & 0x3F));
    } else if ((unit & 0xF800) != 0xD800) {
      out = PutUtf8Three(out, unit);
    } else if (IsHighSurrogate(unit) && end - in < 4 && !last) {
      return false;
    } else if (IsHighSurrogate(unit) && end - in >= 4 && IsLowSurrogate(LoadUnit(in + 2))) {
      out = PutUtf8Pair(out, unit, LoadUnit(in + 2));
      in += 2;
    } else {
      losses.Add(ConversionLossKind::kReplaced, in, 2, out);
      out = PutUtf8Three(out, kReplacementCharacter);
    }
    in += 2;
  }
  return true;
}

inline CoderEnds EncodeUtf8(const Byte* in, const Byte* end, bool last, char* out, Losses& losses) {
  const Utf8Kernel vectors = Cpu().avx512 ? EncodeUtf8Avx512
                             : Cpu().avx2 ? EncodeUtf8Avx2
                                          : nullptr;
  PlainStretch stretch(vectors != nullptr);
  while (in != end) {
    const Byte* const begin = in;
    if (vectors != nullptr) vectors(in, end, out);
    const Byte* const stop = stretch.End(in, end, in == begin);
    if (!EncodeUtf8Plain(in, stop, end, last, out, losses)) break;
  }
  return {in, out};
}

}  // namespace lumr
