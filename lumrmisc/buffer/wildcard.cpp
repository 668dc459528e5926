#include <string_view>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/buffer/textscan.h"

namespace lumr {
namespace {

// Taken as recursion, a "*" tries its rest at every byte that equals the one behind it, so
// several of them would try all combinations. But what a place can still match depends only on
// where it is, and starting earlier can only help the next "*": it is enough to go back to the
// latest "*" and try the next byte there.
class WildcardMatch {
 public:
  WildcardMatch(std::string_view text, std::string_view pattern) : text_(text), pattern_(pattern) {}

  bool Run() {
    while (at_ < text_.size()) {
      if (InPattern() && pattern_[in_] == '*') {
        if (in_ + 1 == pattern_.size()) return true;
        star_ = in_;
        if (!ResumeBehindStar(at_)) return false;
      } else if (InPattern() && (pattern_[in_] == '?' || Equal(text_[at_], pattern_[in_]))) {
        ++at_;
        ++in_;
      } else if (star_ == kNone || !ResumeBehindStar(tried_ + 1)) {
        return false;
      }
    }
    const std::string_view rest = pattern_.substr(in_);
    return rest.empty() || rest == "*";
  }

 private:
  static constexpr std::size_t kNone = std::string_view::npos;

  bool InPattern() const { return in_ < pattern_.size(); }
  static bool Equal(char a, char b) { return AsciiLower(a) == AsciiLower(b); }

  // Goes on with the byte behind the star at the first place from pos on where it stands as
  // itself; as "*" it then is the next star, as "?" it takes the byte.
  bool ResumeBehindStar(std::size_t pos) {
    in_ = star_ + 1;
    while (pos < text_.size() && !Equal(text_[pos], pattern_[in_])) ++pos;
    at_ = tried_ = pos;
    return pos < text_.size();
  }

  std::string_view text_;
  std::string_view pattern_;
  std::size_t at_ = 0;
  std::size_t in_ = 0;
  std::size_t star_ = kNone;  // the latest star, and where its rest was tried last
  std::size_t tried_ = 0;
};

}  // namespace

int wildicmp(const char* text, const char* pattern) {
  return WildcardMatch(CountedText(text), CountedText(pattern)).Run() ? 0 : 1;
}

}  // namespace lumr
