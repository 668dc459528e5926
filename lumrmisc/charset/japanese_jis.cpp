// Shift_JIS and ISO-2022-JP.
#include <algorithm>

#include "lumrmisc/charset/japanese_avx512_internal.h"
#include "lumrmisc/charset/japanese_kernel_internal.h"
#include "lumrmisc/platform/cpu.h"

namespace lumr {
namespace {

using Work = JapaneseWork;

// Shift_JIS to ISO-2022-JP.
struct JisEncoder {
  static constexpr std::size_t kGrowth = 4;  // a byte in another mode than the one before
  static constexpr std::size_t kClosing = 3;

  // The state: what the last designation written invokes.
  static constexpr Byte kAscii = 0;
  static constexpr Byte kKanji = 1;
  static constexpr Byte kKana = 2;

  static void Fast(Work& w, Byte& mode) {
    const Byte* in = w.in;
    Byte* out = w.out;
    while (in < w.end) {
      if (*in < 0x80) {
        if (IsControl(*in)) break;
        Switch(out, mode, kAscii);
        CopyPlain<true>(in, w.end, out);
      } else if (IsKanaByte(*in)) {
        Switch(out, mode, kKana);
        while (in < w.end && IsKanaByte(*in)) *out++ = *in++ & 0x7F;
      } else {
        if (w.end - in < 2 || kSJisToJis.Code(in[0], in[1]) >= kNoPair) break;
        Switch(out, mode, kKanji);
        ConvertPairs<sse2::SJisToJis<0>>(kSJisToJis, 0, in, w.end, out);
      }
    }
    w.in = in;
    w.out = out;
  }

  static bool Step(Work& w, Byte& mode) {
    const Byte byte = *w.in;
    const std::size_t left = w.Left();
    if (!IsSJisLead(byte)) {
      StepSingle(w, mode);
    } else if (left == 1) {
      if (!w.last) return false;
      Switch(w.out, mode, kAscii);
      w.CopyLost(1);
    } else if (!IsSJisTrail(w.in[1])) {
      Switch(w.out, mode, kAscii);
      w.CopyLost(2);
    } else {
      Switch(w.out, mode, kKanji);
      if (w.in[1] == 0x7F) w.Lose(ConversionLossKind::kReplaced, 2);
      w.Put(SJisToJis({byte, w.in[1]}));
      w.in += 2;
    }
    return true;
  }

  static void Close(Work& w, Byte& mode) { Switch(w.out, mode, kAscii); }

 private:
  static void StepSingle(Work& w, Byte& mode) {
    const Byte byte = *w.in;
    if (IsKanaByte(byte)) {
      Switch(w.out, mode, kKana);
      w.Put(byte & 0x7F);
      ++w.in;
      return;
    }
    Switch(w.out, mode, kAscii);
    w.CopyOne(byte < 0x80 && !IsControl(byte));
  }

  static void Switch(Byte*& out, Byte& mode, Byte wanted) {
    static constexpr char kDesignations[][4] = {"\x1b(B", "\x1b$B", "\x1b(I"};
    if (mode == wanted) return;
    std::memcpy(out, kDesignations[wanted], 3);
    out += 3;
    mode = wanted;
  }
};

// ISO-2022-JP to Shift_JIS.
struct JisDecoder {
  static constexpr std::size_t kGrowth = 1;
  static constexpr std::size_t kClosing = 0;

  // The state: flags. Katakana are invoked beside what is designated otherwise.
  static constexpr Byte kKanji = 1;
  static constexpr Byte kKana = 2;
  static constexpr Byte kSupplement = 4;  // the kanji are those of JIS X 0212
  static constexpr Byte kAll = 7;

  static void Fast(Work& w, Byte& state) {
    const Byte* in = w.in;
    const bool vectors = Cpu().avx512;
    Byte* out = w.out;
    while (in < w.end) {
      if (vectors && FastVectors(in, w.end, out, state)) continue;
      if (*in == kEscape) {
        if (!FastEscape(in, w.end, state)) break;
      } else if ((state & kKana) != 0) {
        if (!IsIn(*in, 0x21, 0x5F)) break;
        while (in < w.end && IsIn(*in, 0x21, 0x5F)) *out++ = *in++ | 0x80;
      } else if (state == 0) {
        if (*in >= 0x80 || IsControl(*in)) break;
        CopyPlain<true>(in, w.end, out);
      } else {
        const Byte* const begin = in;
        if (state == kKanji) {
          ConvertPairs<sse2::JisToSJis<0>>(kJisToSJis, 0, in, w.end, out);
        }
        if (in == begin) break;
      }
    }
    w.in = in;
    w.out = out;
  }

  static bool Step(Work& w, Byte& state) {
    const Byte byte = *w.in;
    if (byte == kEscape) return StepEscape(w, state);
    if (byte == kShiftOut || byte == kShiftIn) {
      state = byte == kShiftOut ? state | kKana : state & Byte{kAll ^ kKana};
      ++w.in;
    } else if (byte == '\r' || byte == '\n') {
      w.Copy(1);
    } else if ((state & kKana) != 0) {
      LoseSingle(w, IsIn(byte, 0x21, 0x5F));
      w.Put(byte | 0x80);
      ++w.in;
    } else if ((state & kKanji) != 0) {
      return StepPair(w, state);
    } else {
      LoseSingle(w, byte < 0x80);
      w.Copy(1);
    }
    return true;
  }

  static void Close(Work&, Byte& state) { state = 0; }

 private:
  struct Escape {
    std::string_view tail;  // what follows ESC
    Byte cleared;
    Byte set;
  };

  // Also those of old mailers and terminals: $@ is JIS C 6226-1978, whose cells are read as those
  // of the later standard; K and H are NEC's. &@ announces a revision of the set that follows.
  static constexpr Escape kEscapes[] = {
      {"$B", kAll, kKanji},
      {"$@", kAll, kKanji},
      {"(B", kAll, 0},
      {"(J", kAll, 0},
      {"(H", kAll, 0},
      {"(I", kAll, kKana},
      {"$(D", 0, kKanji | kSupplement},
      {"&@", 0, 0},
      {"K", kSupplement, kKanji},
      {"H", kAll, 0},
  };

  static void Apply(const Escape& escape, Byte& state) {
    state = static_cast<Byte>((state & ~escape.cleared) | escape.set);
  }

  // Whether that came any further. Not tried where vectors would stop soon: what has bytes above 7F
  // is no text of this kind.
  static bool FastVectors(const Byte*& in, const Byte* end, Byte*& out, Byte& state) {
    if ((state != 0 && state != kKanji) || end - in < 8) return false;
    if ((LoadValue<std::uint64_t>(in) & WordOf<Byte>::kHighBits) != 0) return false;
    const Byte* const begin = in;
    bool inKanji = state == kKanji;
    JisToSJisAvx512(inKanji, in, end, out);
    state = inKanji ? kKanji : Byte{0};
    return in != begin;
  }

  static bool FastEscape(const Byte*& in, const Byte* end, Byte& state) {
    if (end - in < 3) return false;
    const bool kanji = in[1] == '$' && in[2] == 'B';
    if (!kanji && !(in[1] == '(' && in[2] == 'B')) return false;
    state = kanji ? kKanji : 0;
    in += 3;
    return true;
  }

  static bool StepEscape(Work& w, Byte& state) {
    const std::string_view tail(reinterpret_cast<const char*>(w.in) + 1,
                                std::min<std::size_t>(w.Left() - 1, 3));
    for (const Escape& escape : kEscapes) {
      if (tail.starts_with(escape.tail)) {
        Apply(escape, state);
        w.in += 1 + escape.tail.size();
        return true;
      }
      if (!w.last && escape.tail.starts_with(tail)) return false;
    }
    // The start of a designation leaves the state as it is, what else there is clears it.
    if (!tail.starts_with('$') && !tail.starts_with('(')) state = 0;
    w.Lose(ConversionLossKind::kReplaced, 1);
    ++w.in;
    return true;
  }

  static bool StepPair(Work& w, Byte state) {
    if (w.Left() == 1) {
      if (w.last) w.CopyLost(1);
      return w.last;
    }
    const BytePair jis{w.in[0], w.in[1]};
    const bool known = state == kKanji && IsJisByte(jis.first) && IsJisByte(jis.second);
    if (!known) w.Lose(ConversionLossKind::kReplaced, 2);
    w.Put(JisToSJis(jis));
    w.in += 2;
    return true;
  }

  // An 8-bit katakana is read, but would come back with an escape sequence.
  static void LoseSingle(Work& w, bool exact) {
    if (exact) return;
    w.Lose(IsKanaByte(*w.in) ? ConversionLossKind::kFit : ConversionLossKind::kReplaced, 1);
  }
};

}  // namespace

constinit const JapaneseKernel kSJisToJisKernel = MakeJapaneseKernel<JisEncoder>();
constinit const JapaneseKernel kJisToSJisKernel = MakeJapaneseKernel<JisDecoder>();

}  // namespace lumr
