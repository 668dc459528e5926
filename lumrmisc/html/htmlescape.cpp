#include "lumrmisc/html/htmlescape_internal.h"

#include "lumrmisc/html/characterreference_internal.h"
#include "lumrmisc/html/decode_internal.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {
namespace {

enum class Place { kText, kAttribute };

constexpr char16_t kNoBreakSpace = 0x00A0;
constexpr char16_t kReplacement = 0xFFFD;

constexpr bool IsSurrogate(char16_t unit) {
  return (unit & 0xF800) == 0xD800;
}
constexpr bool IsHighSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xDC00;
}

// Whether a unit is written as it is.
template <Place kPlace>
bool IsPlain(char16_t unit) {
  if (unit < 0x80) {
    return unit >= 0x20 && unit != 0x7F && unit != u'&' && unit != u'<' && unit != u'>' &&
           !(kPlace == Place::kAttribute && unit == u'"');
  }
  return unit > kNoBreakSpace && !IsSurrogate(unit);
}

// The position of the first unit from pos on that is not plain.
template <Place kPlace>
std::size_t SkipPlain(std::u16string_view text, std::size_t pos) {
#if defined(__SSE2__)
  constexpr std::size_t kStep = 8;
  const __m128i zero = _mm_setzero_si128();
  const auto all = [](int value) { return _mm_set1_epi16(static_cast<short>(value)); };
  for (; text.size() >= kStep && pos <= text.size() - kStep; pos += kStep) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + pos));
    // Saturated subtraction gives zero for what is not above a bound.
    __m128i found = _mm_cmpeq_epi16(_mm_subs_epu16(block, all(0x1F)), zero);
    const __m128i fromDelete = _mm_sub_epi16(block, all(0x7F));
    found = _mm_or_si128(
        found, _mm_cmpeq_epi16(_mm_subs_epu16(fromDelete, all(kNoBreakSpace - 0x7F)), zero));
    found = _mm_or_si128(found, _mm_cmpeq_epi16(_mm_and_si128(block, all(0xF800)), all(0xD800)));
    found = _mm_or_si128(found, _mm_cmpeq_epi16(block, all(u'&')));
    found = _mm_or_si128(found, _mm_cmpeq_epi16(_mm_or_si128(block, all(2)), all(u'>')));  // < >
    if (kPlace == Place::kAttribute) found = _mm_or_si128(found, _mm_cmpeq_epi16(block, all(u'"')));
    const int mask = _mm_movemask_epi8(found);
    if (mask != 0) {
      return pos + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(mask))) / 2;
    }
  }
#endif
  while (pos < text.size() && IsPlain<kPlace>(text[pos])) ++pos;
  return pos;
}

// One unit that is no half of a pair.
template <Place kPlace>
void AppendUnit(char16_t unit, CStringW& out) {
  switch (unit) {
    case u'&':
      out += u"&amp;";
      break;
    case u'<':
      out += u"&lt;";
      break;
    case u'>':
      out += u"&gt;";
      break;
    case kNoBreakSpace:
      out += u"&nbsp;";
      break;
    case u'\r':
    case u'\n':
      out += u'\n';
      break;
    case u'\t':
      out += u'\t';
      break;
    case u'\f':
      out += u' ';
      break;
    default:
      if (kPlace == Place::kAttribute && unit == u'"') {
        out += u"&quot;";
      } else if (IsSurrogate(unit)) {
        out += kReplacement;
      } else if (IsPlain<kPlace>(unit) || unit == u'"') {
        out += unit;
      }
  }
}

// Appends the unit or the pair at pos, and gives the position behind it.
template <Place kPlace>
std::size_t AppendCharacter(std::u16string_view text, std::size_t pos, CStringW& out) {
  const char16_t unit = text[pos];
  const bool hasNext = pos + 1 < text.size();
  if (hasNext && IsHighSurrogate(unit) && IsLowSurrogate(text[pos + 1])) {
    out.append(text, pos, 2);
    return pos + 2;
  }
  if (hasNext && unit == u'\r' && text[pos + 1] == u'\n') return pos + 1;
  AppendUnit<kPlace>(unit, out);
  return pos + 1;
}

// The length of a reference at the start that is written again as it is; 0 for another one.
std::size_t KeptReference(std::u16string_view text) {
  for (const std::u16string_view kept : {u"&nbsp;", u"&amp;", u"&lt;", u"&gt;"}) {
    if (text.starts_with(kept)) return kept.size();
  }
  return 0;
}

template <Place kPlace>
void AppendEscaped(std::u16string_view text, bool hasReferences, CStringW& out) {
  for (std::size_t pos = 0; pos < text.size();) {
    const std::size_t end = SkipPlain<kPlace>(text, pos);
    out.append(text, pos, end - pos);
    pos = end;
    if (pos == text.size()) break;
    if (hasReferences && text[pos] == u'&') {
      if (const std::size_t length = KeptReference(text.substr(pos)); length != 0) {
        out.append(text, pos, length);
        pos += length;
        continue;
      }
      const CharacterReference reference = ReadCharacterReference(text.substr(pos), false);
      if (reference.length != 0) {
        const std::u16string_view meant(reference.units, reference.count);
        for (std::size_t i = 0; i < meant.size();) i = AppendCharacter<kPlace>(meant, i, out);
        pos += reference.length;
        continue;
      }
    }
    pos = AppendCharacter<kPlace>(text, pos, out);
  }
}

}  // namespace

void AppendHtmlText(std::u16string_view text, bool hasReferences, CStringW& out) {
  AppendEscaped<Place::kText>(text, hasReferences, out);
}

void AppendHtmlAttribute(std::u16string_view value, CStringW& out) {
  AppendEscaped<Place::kAttribute>(value, false, out);
}

std::u16string_view DecodeHtml(std::u16string_view source, bool inAttribute, CStringW& scratch) {
  if (FindUnit(source, 0, u'&') == source.size()) return source;
  scratch.clear();
  AppendDecoded(source, inAttribute, scratch);
  return scratch;
}

}  // namespace lumr
