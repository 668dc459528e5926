#include <cstring>

#include "lumrmisc/charset/japanese_internal.h"
#include "lumrmisc/charset/japanese_kernel_internal.h"

namespace lumr {
namespace {

const JapaneseKernel& KernelOf(JapaneseConversion conversion) {
  switch (conversion) {
    case JapaneseConversion::kSJisToEuc:
      return kSJisToEucKernel;
    case JapaneseConversion::kEucToSJis:
      return kEucToSJisKernel;
    case JapaneseConversion::kSJisToJis:
      return kSJisToJisKernel;
    case JapaneseConversion::kJisToSJis:
      break;
  }
  return kJisToSJisKernel;
}

// The longest character or escape sequence is ESC $(D.
constexpr std::size_t kLongest = 4;

}  // namespace

std::size_t JapaneseConverter::MaxOutput(std::size_t inputBytes) const {
  const JapaneseKernel& kernel = KernelOf(conversion_);
  return kernel.growth * (inputBytes + pendingSize_) + kernel.closing;
}

char* JapaneseConverter::Convert(std::string_view in, bool last, char* out,
                                 CConversionReport* report) {
  if (pendingSize_ > 0) out = ConvertPending(in, last, out, report);
  JapaneseWork w = Begin(in, last, out, report);
  KernelOf(conversion_).run(w, state_);
  if (last) KernelOf(conversion_).close(w, state_);
  End(w);
  if (w.Left() > 0) Keep(w.Rest());
  return reinterpret_cast<char*>(w.out);
}

// Converts what begins in the kept bytes, with as much of in as that needs, and takes it from in.
char* JapaneseConverter::ConvertPending(std::string_view& in, bool last, char* out,
                                        CConversionReport* report) {
  char joined[2 * kLongest];
  std::memcpy(joined, pending_, pendingSize_);
  const std::size_t taken = in.copy(joined + pendingSize_, kLongest);
  JapaneseWork w = Begin({joined, pendingSize_ + taken}, last && taken == in.size(), out, report);
  while (w.in < w.begin + pendingSize_ && KernelOf(conversion_).step(w, state_)) {
  }
  End(w);
  const auto used = static_cast<std::size_t>(w.in - w.begin);
  if (used < pendingSize_) {  // all of in is not enough
    Keep(w.Rest());
    in = {};
  } else {
    in.remove_prefix(used - pendingSize_);
    pendingSize_ = 0;
  }
  return reinterpret_cast<char*>(w.out);
}

JapaneseWork JapaneseConverter::Begin(std::string_view piece, bool last, char* out,
                                      CConversionReport* report) const {
  const auto* const in = reinterpret_cast<const Byte*>(piece.data());
  auto* const target = reinterpret_cast<Byte*>(out);
  return {in, in + piece.size(), target, last, in, target, inputOffset_, outputOffset_, report};
}

void JapaneseConverter::End(const JapaneseWork& w) {
  inputOffset_ += w.in - w.begin;
  outputOffset_ += w.out - w.outBegin;
  lost_ += w.lost;
}

void JapaneseConverter::Keep(std::string_view rest) {
  std::memcpy(pending_, rest.data(), rest.size());
  pendingSize_ = rest.size();
}

}  // namespace lumr
