// An edited copy of a source: what is edited is written once, what lies between is copied in
// as long runs as possible.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lumr {

// The edits come in ascending order of their places in the source.
class SourceCopy {
 public:
  explicit SourceCopy(std::u16string_view source) : source_(source) {}

  // Puts text in the place of the source's [from, to).
  void Replace(std::size_t from, std::size_t to, std::u16string_view text) {
    if (!isEdited_) out_.reserve(source_.size() + source_.size() / 8);
    out_.append(source_, done_, from - done_);
    out_.append(text);
    done_ = to;
    isEdited_ = true;
  }
  void Insert(std::size_t at, std::u16string_view text) { Replace(at, at, text); }
  void Delete(std::size_t from, std::size_t to) { Replace(from, to, {}); }

  // Makes every "://" of [from, to) a "_//", after which nothing is fetched from there.
  void Disarm(std::size_t from, std::size_t to);

  bool IsEdited() const { return isEdited_; }

  // The rest is copied; the copy ends here.
  std::u16string Take() {
    out_.append(source_, done_);
    return std::move(out_);
  }

  // Gives target, which may hold the source, the edited text; leaves it alone without edits.
  void Store(std::u16string& target) {
    if (isEdited_) target = Take();
  }

 private:
  std::u16string_view source_;
  std::u16string out_;
  std::size_t done_ = 0;  // what of the source is in out_
  bool isEdited_ = false;
};

}  // namespace lumr
