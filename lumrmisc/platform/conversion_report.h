// What a conversion could not carry over exactly, and where.
#pragma once

#include <cstddef>
#include <vector>

namespace lumr {

enum class ConversionLossKind : unsigned char {
  kFit,       // converted to a look-alike, or to a code that converts back to another one
  kReplaced,  // not convertible: replaced (or dropped, where the caller asked for that)
};

struct ConversionLoss {
  ConversionLossKind kind;
  long long inputOffset;   // bytes from the start of the source
  int inputLength;         // bytes
  long long outputOffset;  // bytes from the start of the result

  bool operator==(const ConversionLoss&) const = default;
};

// Collects the losses of one conversion in the order of the text. An empty report means that
// the conversion is exact and converting back gives the source. Counts everything, keeps the
// first entries.
class CConversionReport {
 public:
  explicit CConversionReport(std::size_t keep = 100) : keep_(keep) {}

  void Add(const ConversionLoss& loss) {
    ++(loss.kind == ConversionLossKind::kFit ? fits_ : replaced_);
    if (first_.size() < keep_) first_.push_back(loss);
  }
  bool IsEmpty() const { return fits_ + replaced_ == 0; }
  long long Fits() const { return fits_; }
  long long Replaced() const { return replaced_; }
  const std::vector<ConversionLoss>& First() const { return first_; }

 private:
  std::size_t keep_;
  long long fits_ = 0;
  long long replaced_ = 0;
  std::vector<ConversionLoss> first_;
};

}  // namespace lumr
