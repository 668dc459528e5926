// The rules of detection written down once more, plainly: the slow reference of tests and fuzzer.
#pragma once

#include <cstddef>
#include <string_view>

#include "lumrmisc/charset/codetype.h"

namespace lumr {

// DetectCodeType as a state machine over numbered states, byte by byte.
class DetectionModel {
 public:
  static CodeType DetectCodeType(std::string_view text) { return DetectionModel(text).Run(); }

 private:
  static constexpr int kAmbiguous = -1;

  explicit DetectionModel(std::string_view text) : text_(text) {}

  int Now() const { return pos_ < text_.size() ? static_cast<unsigned char>(text_[pos_]) : 0; }
  int Next() {
    ++pos_;
    return Now();
  }
  static bool In(int byte, int first, int last) { return first <= byte && byte <= last; }

  CodeType Run() {
    const std::size_t range = text_.size() < 1024 ? text_.size() : 1024;
    while (pos_ < range) {
      if (state_ != CT_ASCII && state_ != kAmbiguous) break;
      Step(Now());
      ++pos_;
    }
    return state_ == kAmbiguous ? CT_EUC : static_cast<CodeType>(state_);
  }

  void Step(int c) {
    if (c == 0x1B) return Escape(Next());
    if (c == 0x8E) {
      const int d = Next();
      if (In(d, 0xA1, 0xDF)) {
        state_ = kAmbiguous;
      } else if (In(d, 0x40, 0x7E) || In(d, 0x80, 0xA0) || In(d, 0xE0, 0xFC)) {
        state_ = CT_SJIS;
      }
    } else if (In(c, 0x81, 0x9F)) {
      state_ = CT_SJIS;
    } else if (In(c, 0xA1, 0xDF)) {
      const int d = Next();
      if (In(d, 0xA1, 0xDF)) state_ = kAmbiguous;
      if (In(d, 0xF0, 0xFE)) state_ = CT_EUC;
      if (In(d, 0xE0, 0xEF)) AmbiguousRun();
    } else if (In(c, 0xE0, 0xEF)) {
      const int d = Next();
      if (In(d, 0x40, 0x7E) || In(d, 0x80, 0xA0)) state_ = CT_SJIS;
      if (In(d, 0xA1, 0xFC)) state_ = kAmbiguous;
      if (In(d, 0xFD, 0xFE)) state_ = CT_EUC;
    } else if (In(c, 0xF0, 0xFE)) {
      state_ = CT_EUC;
    }
  }

  void Escape(int c) {
    if (c == 'K' || c == 'H') {
      state_ = CT_JIS;
    } else if (c == '$') {
      const int d = Next();
      if (d == 'B' || d == '@') state_ = CT_JIS;
    } else if (c == '(') {
      const int d = Next();
      if (d == 'B' || d == 'J' || d == 'H' || d == 'I') state_ = CT_JIS;
    }
  }

  void AmbiguousRun() {
    state_ = kAmbiguous;
    while (Now() >= 0x40 && state_ == kAmbiguous) {
      if (In(Now(), 0x81, 0x8D) || In(Now(), 0x8F, 0x9F)) state_ = CT_SJIS;
      if (Now() == 0xFD || Now() == 0xFE) state_ = CT_EUC;
      ++pos_;
    }
  }

  std::string_view text_;
  std::size_t pos_ = 0;
  int state_ = CT_ASCII;
};

inline bool IsUtf8ByModel(std::string_view text) {
  bool multiByte = false;
  std::size_t pos = 0;
  while (pos < text.size()) {
    const auto lead = static_cast<unsigned char>(text[pos++]);
    if (lead < 0x80) continue;
    int tails = -1;
    for (int count = 1; count <= 5; ++count) {
      if ((lead & (0xFF << (6 - count))) == (0xFF << (7 - count) & 0xFF)) tails = count;
    }
    if (tails < 0) return false;
    for (; tails > 0; --tails, ++pos) {
      if (pos >= text.size() || (static_cast<unsigned char>(text[pos]) & 0xC0) != 0x80)
        return false;
    }
    multiByte = true;
  }
  return multiByte;
}

}  // namespace lumr
