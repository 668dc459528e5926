#include <algorithm>

#include "lumrmisc/html/adjust.h"
#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

constexpr std::size_t kLongLine = 76;
constexpr std::size_t kKeptWhole = 20;  // the units before a tag that are never broken
constexpr std::u16string_view kBreak = u"\r\n";

enum class Breaks { kByLength, kBefore, kAfter, kAround };

struct NameRow {
  TagNameKey name;
  Breaks breaks;
};
constexpr NameRow kNames[] = {
    {TagName("html"), Breaks::kAround},   {TagName("/html"), Breaks::kAround},
    {TagName("head"), Breaks::kAround},   {TagName("/head"), Breaks::kAround},
    {TagName("meta"), Breaks::kAround},   {TagName("body"), Breaks::kAround},
    {TagName("/body"), Breaks::kAround},  {TagName("ol"), Breaks::kAround},
    {TagName("/ol"), Breaks::kAround},    {TagName("ul"), Breaks::kAround},
    {TagName("/ul"), Breaks::kAround},    {TagName("pre"), Breaks::kAround},
    {TagName("/pre"), Breaks::kAround},   {TagName("hr"), Breaks::kAround},
    {TagName("table"), Breaks::kAround},  {TagName("/table"), Breaks::kAround},
    {TagName("tbody"), Breaks::kAround},  {TagName("/tbody"), Breaks::kAround},
    {TagName("tr"), Breaks::kAround},     {TagName("/tr"), Breaks::kAround},
    {TagName("/title"), Breaks::kBefore}, {TagName("/h1"), Breaks::kBefore},
    {TagName("/h2"), Breaks::kBefore},    {TagName("/h3"), Breaks::kBefore},
    {TagName("/h4"), Breaks::kBefore},    {TagName("/h5"), Breaks::kBefore},
    {TagName("/h6"), Breaks::kBefore},    {TagName("/div"), Breaks::kBefore},
    {TagName("/p"), Breaks::kBefore},     {TagName("/td"), Breaks::kBefore},
    {TagName("title"), Breaks::kAfter},   {TagName("h1"), Breaks::kAfter},
    {TagName("h2"), Breaks::kAfter},      {TagName("h3"), Breaks::kAfter},
    {TagName("h4"), Breaks::kAfter},      {TagName("h5"), Breaks::kAfter},
    {TagName("h6"), Breaks::kAfter},      {TagName("div"), Breaks::kAfter},
    {TagName("p"), Breaks::kAfter},       {TagName("td"), Breaks::kAfter},
};

Breaks BreaksOf(TagNameKey name) {
  const auto row = std::find_if(std::begin(kNames), std::end(kNames),
                                [=](const NameRow& r) { return r.name == name; });
  return row == std::end(kNames) ? Breaks::kByLength : row->breaks;
}

bool IsLow(char16_t unit) {
  return (unit & 0xFC00) == 0xDC00;
}

// The length of what stands at pos and is never broken: one unit, or a reference, pair or CR LF.
std::size_t WholeAt(std::u16string_view text, std::size_t pos) {
  const char16_t unit = text[pos];
  if (pos + 1 == text.size()) return 1;
  if (unit == u'\r' && text[pos + 1] == u'\n') return 2;
  if ((unit & 0xFC00) == 0xD800 && IsLow(text[pos + 1])) return 2;
  if (unit != u'&') return 1;
  std::size_t end = pos + 1;
  while (end < text.size() &&
         (IsAsciiLetter(text[end]) || IsAsciiDigit(text[end]) || text[end] == u'#')) {
    ++end;
  }
  return end < text.size() && text[end] == u';' ? end + 1 - pos : 1;
}

class LineBreaker {
 public:
  explicit LineBreaker(std::u16string_view html) : html_(html) {
    out_.reserve(html.size() + html.size() / 8);
  }

  std::u16string Run() {
    TagSpan span;
    std::size_t pos = 0;
    for (; FindTag(html_, pos, span); pos = span.end) {
      const std::u16string_view text = html_.substr(pos, span.start - pos);
      const Breaks breaks = BreaksOf(TagNameOf(html_, span));
      const bool isBefore = NeedsBreakBefore(breaks, text);
      const bool isAfter = NeedsBreakAfter(breaks, text, span.end);  // before text is wrapped
      AppendWrapped(text, isBefore ? kBreak.size() : 0);
      if (isBefore) out_ += kBreak;
      out_.append(html_, span.start, span.end - span.start);
      tagEnd_ = out_.size();
      if (isAfter) out_ += kBreak;
    }
    out_.append(html_, pos);
    return std::move(out_);
  }

 private:
  bool NeedsBreakBefore(Breaks breaks, std::u16string_view text) const {
    if (breaks != Breaks::kBefore && breaks != Breaks::kAround) return false;
    const std::u16string_view before = text.empty() ? std::u16string_view(out_) : text;
    return !before.empty() && !IsLineEnd(before.back());
  }

  bool NeedsBreakAfter(Breaks breaks, std::u16string_view text, std::size_t end) const {
    if (breaks == Breaks::kBefore) return false;
    if (breaks == Breaks::kByLength) return EndsLongLine(text);
    return end == html_.size() || !IsLineEnd(html_[end]);
  }

  // Whether no line end is among the last units of what is written and of the text behind it.
  bool EndsLongLine(std::u16string_view text) const {
    if (out_.size() + text.size() < kLongLine) return false;
    const std::size_t inText = std::min(kLongLine, text.size());
    return std::none_of(text.end() - static_cast<std::ptrdiff_t>(inText), text.end(), IsLineEnd) &&
           std::none_of(out_.end() - static_cast<std::ptrdiff_t>(kLongLine - inText), out_.end(),
                        IsLineEnd);
  }

  // Appends text that stands between two tags. Units are counted from the end of the tag before
  // it, so a break behind that tag counts, and up to the next tag, so does one before that.
  void AppendWrapped(std::u16string_view text, std::size_t behind) {
    const std::size_t before = out_.size() - tagEnd_;
    const std::size_t all = before + text.size() + behind;
    const std::size_t limit = all < kKeptWhole ? 0 : all - kKeptWhole;
    constexpr std::size_t kNone = std::u16string_view::npos;
    std::size_t done = 0, blank = kNone;
    std::ptrdiff_t lineStart = -static_cast<std::ptrdiff_t>(before);
    for (std::size_t i = 0; i < text.size() && before + i < limit; i += WholeAt(text, i)) {
      if (static_cast<std::ptrdiff_t>(i) - lineStart > static_cast<std::ptrdiff_t>(kLongLine)) {
        const std::size_t at = blank == kNone ? i : blank;
        out_.append(text, done, at - done).append(kBreak);
        done = at;
        lineStart = static_cast<std::ptrdiff_t>(at);
        blank = kNone;
      }
      if (text[i] == u' ') blank = i;
    }
    out_.append(text, done);
  }

  std::u16string_view html_;
  std::u16string out_;
  std::size_t tagEnd_ = 0;  // where in out_ the last tag ends
};

}  // namespace

void AdjustHtmlBreakLine(CStringW& html) {
  html = LineBreaker(html).Run();
}

}  // namespace lumr
