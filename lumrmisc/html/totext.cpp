#include "lumrmisc/html/totext.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <span>

#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

constexpr std::size_t kLongTag = 256;  // units; such a tag is not looked at

struct BreakRow {
  std::string_view prefix;  // of a tag, in lower case
  int lineEnds;
};
constexpr BreakRow kOpenBreaks[] = {
    {"<br", 1}, {"<div", 1}, {"<h1", 2}, {"<h2", 2}, {"<h3", 2}, {"<h4", 2},
    {"<h5", 2}, {"<h6", 2},  {"<hr", 2}, {"<p>", 2}, {"<p ", 2}, {"<table>", 1},
};
constexpr BreakRow kCloseBreaks[] = {
    {"</div>", 1}, {"</h1>", 2}, {"</h2>", 2}, {"</h3>", 2}, {"</h4>", 2},
    {"</h5>", 2},  {"</h6>", 2}, {"</p>", 2},  {"</tr>", 1}, {"</table>", 1},
};

struct ReferenceRow {
  std::string_view name;
  std::string_view text;
};
constexpr ReferenceRow kReferences[] = {
    {"nbsp", " "},  {"lt", "<"},     {"gt", ">"},    {"amp", "&"},
    {"quot", "\""}, {"copy", "(c)"}, {"reg", "(R)"},
};

int DigitValue(char16_t unit, int base) {
  if (IsAsciiDigit(unit)) return unit - u'0';
  const char16_t lower = UnitAsciiLower(unit);
  return base == 16 && lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

// Decodes the reference that begins at the "&" at pos, moves pos behind it and writes its text;
// what is no reference is its "&" alone. What is written is never longer than what is read.
char16_t* DecodeReference(std::u16string_view text, std::size_t& pos, char16_t* out) {
  const std::u16string_view rest = text.substr(pos + 1);
  const auto skipSemicolon = [&] { pos += pos < text.size() && text[pos] == u';'; };
  for (const ReferenceRow& row : kReferences) {
    if (!StartsWithNoCase(rest, row.name)) continue;
    pos += 1 + row.name.size();
    skipSemicolon();
    return std::copy(row.text.begin(), row.text.end(), out);
  }
  const int base = StartsWithNoCase(rest, "#x") ? 16 : 10;
  const std::size_t digits = base == 16 ? 2 : 1;
  if (!rest.starts_with(u'#') || rest.size() == digits || DigitValue(rest[digits], base) < 0) {
    *out = text[pos++];
    return out + 1;
  }
  std::uint32_t value = 0;
  for (pos += 1 + digits; pos < text.size() && DigitValue(text[pos], base) >= 0; ++pos) {
    value = (value * static_cast<std::uint32_t>(base) +
             static_cast<std::uint32_t>(DigitValue(text[pos], base))) &
            0xFFFF;
  }
  skipSemicolon();
  *out = static_cast<char16_t>(value);
  return out + 1;
}

// The units that text is copied up to: "<", "&" and white space.
bool IsPlain(char16_t unit) {
  constexpr auto kPlain = [] {
    std::array<bool, 0x80> plain{};
    for (std::size_t i = 0; i < plain.size(); ++i) {
      plain[i] = i != '<' && i != '&' && i != ' ' && !(i >= '\t' && i <= '\r');
    }
    return plain;
  }();
  return unit < 0x80 ? kPlain[unit] : unit > 0x3000 || !IsHtmlSpace(unit);
}

// Copies a block of units, and gives how many at its start are plain, or a blank before something
// that is no white space. Those that are neither in ASCII nor behind U+3000 are left to IsPlain.
// The unit at last is looked at only, and there is room for a block in out.
constexpr std::size_t kBlock = 8;
inline std::size_t CopyBlock(const char16_t* in, const char16_t* last, char16_t* out) {
#if defined(__SSE2__)
  if (last - in < static_cast<std::ptrdiff_t>(kBlock)) return 0;
  const auto load = [](const char16_t* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  };
  const auto all = [](int value) { return _mm_set1_epi16(static_cast<short>(value)); };
  // Of first to first + more, by the saturated difference.
  const auto isIn = [&](__m128i units, int first, int more) {
    return _mm_cmpeq_epi16(_mm_subs_epu16(_mm_sub_epi16(units, all(first)), all(more)),
                           _mm_setzero_si128());
  };
  const __m128i units = load(in);
  const __m128i next = load(in + 1);
  const __m128i unclear = _mm_or_si128(isIn(units, 0, 0x1F), isIn(units, 0x80, 0x3000 - 0x80));
  const __m128i isSpaceNext = _mm_or_si128(isIn(next, 0, 0x20), isIn(next, 0x80, 0x3000 - 0x80));
  const __m128i isRun = _mm_and_si128(_mm_cmpeq_epi16(units, all(' ')), isSpaceNext);
  const __m128i isMarkup =
      _mm_or_si128(_mm_cmpeq_epi16(units, all('<')), _mm_cmpeq_epi16(units, all('&')));
  const __m128i stops = _mm_or_si128(_mm_or_si128(unclear, isRun), isMarkup);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), units);
  const auto mask = static_cast<unsigned>(_mm_movemask_epi8(stops));
  return mask == 0 ? kBlock : static_cast<std::size_t>(std::countr_zero(mask)) / 2;
#else
  static_cast<void>(in), static_cast<void>(last), static_cast<void>(out);
  return 0;
#endif
}

// Whether a tag begins as an element of this name with attributes: "<img" and white space.
bool OpensWithSpace(std::u16string_view tag, std::string_view begin) {
  return StartsWithNoCase(tag, begin) && tag.size() > begin.size() &&
         IsHtmlSpace(tag[begin.size()]);
}

// A stretch of the output that goes if the very next tag is the closing one.
class Dropped {
 public:
  constexpr Dropped(std::string_view open, std::string_view openBlank, std::string_view close)
      : open_(open), openBlank_(openBlank), close_(close) {}

  bool IsOpen() const { return start_ != nullptr; }

  // Looks at a tag at the place where the output ends now; gives where it ends then.
  char16_t* Inspect(std::u16string_view tag, char16_t* end) {
    if (start_ == nullptr) {
      if (EqualsNoCase(tag, open_) || StartsWithNoCase(tag, openBlank_)) start_ = end;
      return end;
    }
    char16_t* const start = start_;
    start_ = nullptr;
    return EqualsNoCase(tag, close_) ? start : end;
  }

 private:
  std::string_view open_, openBlank_, close_;
  char16_t* start_ = nullptr;
};

class TextExtractor {
 public:
  TextExtractor(std::u16string_view html, bool keepLinks) : html_(html), keepLinks_(keepLinks) {}

  // Gives the text; it stands in room, which has RoomFor units.
  std::u16string_view Run(char16_t* room) {
    begin_ = end_ = room;
    std::size_t pos = 0;
    while (pos < html_.size()) {
      const char16_t unit = html_[pos];
      if (IsPlain(unit)) {
        pos = CopyPlain(pos);
      } else if (unit == u'&') {
        end_ = DecodeReference(html_, pos, end_);
      } else if (unit != u'<') {
        pos = ReadSpace(pos);
      } else if (pos = ReadMarkup(pos); pos == kCutOff) {
        break;
      }
    }
    if (end_ - begin_ >= 2 && !(end_[-2] == u'\r' && end_[-1] == u'\n')) Write(u"\r\n");
    return {begin_, static_cast<std::size_t>(end_ - begin_)};
  }

  // Only "<p>" writes more than it reads, 4 units for 3, and it needs a unit before it. Blocks are
  // written whole.
  static std::size_t RoomFor(std::size_t size) { return size + size / 4 + 8 + kBlock; }

 private:
  static constexpr std::size_t kCutOff = std::u16string_view::npos;

  void Write(std::u16string_view text) { end_ = std::copy(text.begin(), text.end(), end_); }

  // Plain text, single blanks inside included.
  std::size_t CopyPlain(std::size_t pos) {
    const char16_t* in = html_.data() + pos;
    const char16_t* const last = html_.data() + html_.size() - 1;
    char16_t* out = end_;
    *out++ = *in++;
    while (in < last) {
      const std::size_t count = CopyBlock(in, last, out);
      in += count;
      out += count;
      if (count == kBlock) continue;
      if (!IsPlain(*in)) break;
      *out++ = *in++;
    }
    end_ = out;
    return static_cast<std::size_t>(in - html_.data());
  }

  std::size_t ReadSpace(std::size_t pos) {
    if (isInPre_) {
      *end_++ = html_[pos];
      return pos + 1;
    }
    while (pos < html_.size() && IsHtmlSpace(html_[pos])) ++pos;
    if (pos < html_.size()) *end_++ = u' ';
    return pos;
  }

  std::size_t ReadMarkup(std::size_t pos) {
    TagSpan span;
    const bool isMarkup = pos + 1 < html_.size() && !IsHtmlSpace(html_[pos + 1]);
    if (!isMarkup) {
      *end_++ = u'<';
      return pos + 1;
    }
    FindTag(html_, pos, span);
    if (span.kind == SpanKind::kComment) return span.end;
    if (!span.isClosed) return kCutOff;
    if (span.end - span.start < kLongTag) ReadTag(html_.substr(span.start, span.end - span.start));
    return span.end;
  }

  // Whether a tag may mean something, by its first letter: most tags in mail do not.
  bool Matters(std::u16string_view tag) const {
    if (keepLinks_ || isInPre_ || title_.IsOpen() || style_.IsOpen()) return true;
    const bool isClosing = tag[1] == u'/';
    switch (UnitAsciiLower(tag[isClosing ? 2 : 1])) {
      case u'd':
      case u'h':
      case u'p':
      case u't':
        return true;
      case u'b':
      case u's':
        return !isClosing;
      default:
        return false;
    }
  }

  void ReadTag(std::u16string_view tag) {
    if (!Matters(tag)) return;
    BreakLines(tag);
    if (EqualsNoCase(tag, "</td>")) *end_++ = u'\t';
    if (keepLinks_) KeepLinks(tag);
    end_ = title_.Inspect(tag, end_);
    end_ = style_.Inspect(tag, end_);
    if (isInPre_) {
      isInPre_ = !EqualsNoCase(tag, "</pre>");
    } else {
      isInPre_ = EqualsNoCase(tag, "<pre>") || StartsWithNoCase(tag, "<pre ");
    }
  }

  void BreakLines(std::u16string_view tag) {
    const bool isClosing = tag[1] == u'/';
    const std::size_t letter = isClosing ? 2 : 1;
    const std::span<const BreakRow> rows =
        isClosing ? std::span<const BreakRow>(kCloseBreaks) : kOpenBreaks;
    for (const BreakRow& row : rows) {
      if (static_cast<char16_t>(row.prefix[letter]) != UnitAsciiLower(tag[letter]) ||
          !StartsWithNoCase(tag, row.prefix)) {
        continue;
      }
      while (end_ > begin_ && (end_[-1] == u' ' || end_[-1] == u'\t')) --end_;
      const std::u16string_view text(begin_, static_cast<std::size_t>(end_ - begin_));
      if (text.ends_with(u"\r\n\r\n")) return;
      for (int i = 0; i < row.lineEnds; ++i) Write(u"\r\n");
      return;
    }
  }

  void KeepLinks(std::u16string_view tag) {
    const std::u16string_view inside = tag.substr(0, tag.size() - 1);
    std::u16string_view value;
    if (OpensWithSpace(tag, "<img")) {
      if (!FindAttribute(inside, "alt", value) || value.empty()) return;
      Write(u" [");
      for (std::size_t pos = 0; pos < value.size();) {
        if (value[pos] == u'&') {
          end_ = DecodeReference(value, pos, end_);
        } else {
          *end_++ = value[pos++];
        }
      }
      Write(u"] ");
    } else if (OpensWithSpace(tag, "<a")) {
      address_ = FindAttribute(inside, "href", value) ? value : std::u16string_view();
    } else if (!address_.empty() && EqualsNoCase(tag, "</a>")) {
      Write(u" (=> ");
      Write(address_);
      Write(u" ) ");
      address_ = {};
    }
  }

  std::u16string_view html_;
  bool keepLinks_;
  char16_t* begin_ = nullptr;  // the output
  char16_t* end_ = nullptr;
  bool isInPre_ = false;
  std::u16string_view address_;  // of the open link
  Dropped title_{"<title>", "<title ", "</title>"};
  Dropped style_{"<style>", "<style ", "</style>"};
};

}  // namespace

void ExtractTextFromHtmlW(CStringW& html, int keepLinks) {
  const auto room = std::make_unique_for_overwrite<char16_t[]>(TextExtractor::RoomFor(html.size()));
  html.assign(TextExtractor(html, keepLinks != 0).Run(room.get()));
}

}  // namespace lumr
