// UTF-7 (RFC 2152) to UTF-16 and back.
//
// UTF-7 carries UTF-16 units: half of a surrogate pair alone passes both ways.
#pragma once

#include <array>
#include <string_view>

#include "lumrmisc/platform/codepage_internal.h"

namespace lumr {

constexpr std::string_view kBase64Letters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// A longer run of bytes above 7F gives one more U+FFFD; lengths are counted in int.
constexpr int kLongestStray = 1 << 30;

// What each byte stands for in Base64, -1 for the others.
constexpr auto kBase64Values = [] {
  std::array<signed char, 256> values{};
  for (auto& value : values) value = -1;
  for (std::size_t i = 0; i < kBase64Letters.size(); ++i) {
    values[static_cast<Byte>(kBase64Letters[i])] = static_cast<signed char>(i);
  }
  return values;
}();

// What the encoder writes as it is: set D of RFC 2152 and white space. The characters of set O
// are allowed too, but some of them do not survive mail headers, so they go to Base64.
constexpr auto kUtf7Direct = [] {
  std::array<bool, 128> direct{};
  for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                       "0123456789'(),-./:? \t\r\n")) {
    direct[static_cast<Byte>(c)] = true;
  }
  return direct;
}();

// Ends a Base64 run of which the bytes before in were the last. A lone "+", an unfinished unit
// and filling bits that are not zero are malformed.
inline char* CloseUtf7Run(Utf7State& state, const Byte* in, bool hyphen, char* out,
                          Losses& losses) {
  if (state.empty && hyphen) {
    out = PutUnit(out, '+');
  } else if (state.empty || state.bitCount >= 6 || state.bits != 0) {
    const int length = state.empty ? 1 : (state.bitCount + 5) / 6;
    losses.Add(ConversionLossKind::kReplaced, in, length, out, length);
    out = PutUnit(out, kReplacementCharacter);
  }
  state = {};
  return out;
}

// Replaces the bytes above 7F that ended before in.
inline char* CloseUtf7Stray(Utf7State& state, const Byte* in, char* out, Losses& losses) {
  losses.Add(ConversionLossKind::kReplaced, in, state.strayBytes, out, state.strayBytes);
  state = {};
  return PutUnit(out, kReplacementCharacter);
}

inline char* DecodeUtf7Letter(Utf7State& state, int value, char* out) {
  state.empty = false;
  state.bits = state.bits << 6 | static_cast<unsigned>(value);
  state.bitCount += 6;
  if (state.bitCount < 16) return out;
  state.bitCount -= 16;
  out = PutUnit(out, static_cast<char16_t>(state.bits >> state.bitCount));
  state.bits &= (1U << state.bitCount) - 1;
  return out;
}

inline CoderEnds DecodeUtf7(Utf7State& carried, const Byte* in, const Byte* end, bool last,
                            char* out, Losses& losses) {
  Utf7State state = carried;
  for (; in != end; ++in) {
    if (state.base64) {
      if (const int value = kBase64Values[*in]; value >= 0) {
        out = DecodeUtf7Letter(state, value, out);
        continue;
      }
      out = CloseUtf7Run(state, in, *in == '-', out, losses);
      if (*in == '-') continue;
    }
    if (state.strayBytes == kLongestStray || (state.strayBytes > 0 && *in < 0x80)) {
      out = CloseUtf7Stray(state, in, out, losses);
    }
    if (*in >= 0x80) {
      ++state.strayBytes;
      continue;
    }
    if (*in == '+') {
      state.base64 = state.empty = true;
    } else {
      out = PutUnit(out, *in);
    }
  }
  if (last && state.base64) out = CloseUtf7Run(state, in, false, out, losses);
  if (last && state.strayBytes > 0) out = CloseUtf7Stray(state, in, out, losses);
  carried = state;
  return {in, out};
}

inline char* PutUtf7Unit(Utf7State& state, char16_t unit, char* out) {
  if (!state.base64) *out++ = '+';
  state.base64 = true;
  state.bits = state.bits << 16 | unit;
  state.bitCount += 16;
  for (; state.bitCount >= 6; state.bitCount -= 6) {
    *out++ = kBase64Letters[state.bits >> (state.bitCount - 6) & 0x3F];
  }
  return out;
}

// Ends a Base64 run, with a hyphen where what follows would be read as part of it.
inline char* EndUtf7Run(Utf7State& state, bool hyphen, char* out) {
  if (state.bitCount > 0) *out++ = kBase64Letters[state.bits << (6 - state.bitCount) & 0x3F];
  if (hyphen) *out++ = '-';
  state = {};
  return out;
}

// A run at the end of the text is ended with a hyphen, so that texts can be strung together.
inline CoderEnds EncodeUtf7(Utf7State& carried, const Byte* in, const Byte* end, bool last,
                            char* out) {
  Utf7State state = carried;
  for (; end - in >= 2; in += 2) {
    const char16_t unit = LoadUnit(in);
    if (unit < 0x80 && kUtf7Direct[unit]) {
      if (state.base64) {
        out = EndUtf7Run(state, kBase64Values[unit] >= 0 || unit == '-', out);
      }
      *out++ = static_cast<char>(unit);
    } else if (unit == '+' && !state.base64) {
      *out++ = '+';
      *out++ = '-';
    } else {
      out = PutUtf7Unit(state, unit, out);
    }
  }
  if (last && state.base64) out = EndUtf7Run(state, true, out);
  carried = state;
  return {in, out};
}

}  // namespace lumr
