// Shift_JIS and EUC-JP.
#include "lumrmisc/charset/japanese_avx512_internal.h"
#include "lumrmisc/charset/japanese_kernel_internal.h"
#include "lumrmisc/platform/cpu.h"

namespace lumr {
namespace {

using Work = JapaneseWork;

// Shift_JIS to EUC-JP.
struct EucEncoder {
  static constexpr std::size_t kGrowth = 2;
  static constexpr std::size_t kClosing = 0;

  static void Fast(Work& w, Byte&) {
    const Byte* in = w.in;
    Byte* out = w.out;
    for (;;) {
      ConvertPairs<sse2::SJisToJis<0x80>>(kSJisToJis, 0x8080, in, w.end, out);
      if (in == w.end) break;
      if (*in < 0x80) {
        CopyPlain<false>(in, w.end, out);
      } else if (IsKanaByte(*in)) {
        *out++ = kKanaShift;
        *out++ = *in++;
      } else {
        break;
      }
    }
    w.in = in;
    w.out = out;
  }

  static bool Step(Work& w, Byte&) {
    const Byte byte = *w.in;
    if (!IsSJisLead(byte)) {
      const bool kana = IsKanaByte(byte);
      if (kana) w.Put(kKanaShift);
      w.CopyOne(byte < 0x80 || kana);
      return true;
    }
    if (w.Left() == 1) {
      if (w.last) w.CopyLost(1);
      return w.last;
    }
    if (!IsSJisTrail(w.in[1])) {
      w.CopyLost(2);
      return true;
    }
    if (w.in[1] == 0x7F) w.Lose(ConversionLossKind::kReplaced, 2);
    const BytePair jis = SJisToJis({byte, w.in[1]});
    w.Put(MakePair(jis.first + 0x80u, jis.second + 0x80u));
    w.in += 2;
    return true;
  }

  static void Close(Work&, Byte&) {}
};

// EUC-JP to Shift_JIS.
struct EucDecoder {
  static constexpr std::size_t kGrowth = 1;
  static constexpr std::size_t kClosing = 0;

  static void Fast(Work& w, Byte&) {
    const Byte* in = w.in;
    Byte* out = w.out;
    const bool vectors = Cpu().avx512;
    for (;;) {
      if (vectors) {
        EucToSJisAvx512(in, w.end, out);
      } else {
        ConvertPairs<sse2::JisToSJis<0x80>>(kEucToSJis, 0, in, w.end, out);
      }
      if (in == w.end) break;
      if (*in < 0x80) {
        CopyPlain<false>(in, w.end, out);
      } else if (*in == kKanaShift && w.end - in >= 2 && IsKanaByte(in[1])) {
        *out++ = in[1];
        in += 2;
      } else {
        break;
      }
    }
    w.in = in;
    w.out = out;
  }

  static bool Step(Work& w, Byte&) {
    const Byte byte = *w.in;
    if (byte == kSupplementShift) return StepSupplement(w);
    if (byte != kKanaShift && !IsEucByte(byte)) {
      w.CopyOne(byte < 0x80);
      return true;
    }
    if (w.Left() == 1) {
      if (w.last) w.CopyLost(1);
      return w.last;
    }
    const Byte next = w.in[1];
    if (byte == kKanaShift && IsKanaByte(next)) {
      ++w.in;
      w.Copy(1);
    } else if (byte != kKanaShift && IsEucByte(next)) {
      PutPair(w);
    } else {
      w.CopyLost(2);
    }
    return true;
  }

  static void Close(Work&, Byte&) {}

 private:
  // Reports a character of JIS X 0212 whole, though its pair is converted like any other one.
  static bool StepSupplement(Work& w) {
    const std::size_t left = w.Left();
    const bool cut = left == 1 || (left == 2 && IsEucByte(w.in[1]));
    if (cut && !w.last) return false;
    if (cut || !IsEucByte(w.in[1]) || !IsEucByte(w.in[2])) {
      w.CopyLost(1);
      return true;
    }
    w.Lose(ConversionLossKind::kReplaced, 3);
    w.Copy(1);
    PutPair(w);
    return true;
  }

  static void PutPair(Work& w) {
    w.Put(JisToSJis(MakePair(w.in[0] - 0x80u, w.in[1] - 0x80u)));
    w.in += 2;
  }
};

}  // namespace

constinit const JapaneseKernel kSJisToEucKernel = MakeJapaneseKernel<EucEncoder>();
constinit const JapaneseKernel kEucToSJisKernel = MakeJapaneseKernel<EucDecoder>();

}  // namespace lumr
