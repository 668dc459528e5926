#include "lumrmisc/html/tagscan.h"

#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

constexpr std::u16string_view kCommentOpen = u"<!--";
constexpr std::u16string_view kCommentClose = u"-->";
constexpr std::size_t kLongestName = sizeof(TagNameKey);

// Finds the end of a comment whose text begins at pos.
void EndComment(std::u16string_view html, std::size_t pos, TagSpan& span) {
  while (true) {
    pos = FindUnit(html, pos, u'-');
    if (pos == html.size()) break;
    if (html.substr(pos, kCommentClose.size()) == kCommentClose) {
      span.end = pos + kCommentClose.size();
      span.isClosed = true;
      return;
    }
    ++pos;
  }
  span.end = html.size();
  span.isClosed = false;
}

// Finds the end of a tag whose text begins at pos, behind the "<".
void EndTag(std::u16string_view html, std::size_t pos, TagSpan& span) {
  while (true) {
    pos = FindUnit(html, pos, u'>', u'"', u'\'');
    if (pos == html.size()) break;
    if (html[pos] == u'>') {
      span.end = pos + 1;
      span.isClosed = true;
      return;
    }
    if (html[pos - 1] == u'=') {
      pos = FindUnit(html, pos + 1, html[pos]);
      if (pos == html.size()) break;
    }
    ++pos;
  }
  span.end = html.size();
  span.isClosed = false;
}

bool EndsName(char16_t unit) {
  return unit == u'>' || unit == u'/' || IsHtmlSpace(unit);
}

}  // namespace

bool FindTag(std::u16string_view html, std::size_t from, TagSpan& span) {
  for (std::size_t pos = from;; ++pos) {
    pos = FindUnit(html, pos, u'<');
    if (pos + 1 >= html.size()) return false;
    if (IsHtmlSpace(html[pos + 1])) continue;
    span.start = pos;
    if (html.substr(pos, kCommentOpen.size()) == kCommentOpen) {
      span.kind = SpanKind::kComment;
      EndComment(html, pos + kCommentOpen.size(), span);
    } else {
      span.kind = SpanKind::kTag;
      EndTag(html, pos + 1, span);
    }
    return true;
  }
}

TagNameKey TagNameOf(std::u16string_view html, const TagSpan& span) {
  if (span.kind == SpanKind::kComment) return 0;
  const std::u16string_view text = html.substr(span.start + 1, kLongestName + 1);
  TagNameKey key = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isOpeningSlash = i == 0 && text[0] == u'/';
    if (!isOpeningSlash && EndsName(text[i])) return key;
    if (text[i] == 0 || text[i] > 0x7F || i == kLongestName) return 0;
    key = key << 8 | UnitAsciiLower(text[i]);
  }
  return 0;  // the text ends in the name
}

bool FindTagNamed(std::u16string_view html, std::size_t from, TagNameKey name, TagSpan& span) {
  for (std::size_t pos = from; FindTag(html, pos, span); pos = span.end) {
    if (TagNameOf(html, span) == name) return true;
  }
  return false;
}

std::size_t EndOfElement(std::u16string_view html, std::size_t pos, TagNameKey closing) {
  TagSpan close;
  return FindTagNamed(html, pos, closing, close) ? close.end : html.size();
}

std::u16string_view TagText(std::u16string_view html, const TagSpan& span) {
  return html.substr(span.start, span.end - span.start - (span.isClosed ? 1 : 0));
}

AttributeWalk::AttributeWalk(std::u16string_view tag) : tag_(tag), pos_(tag.empty() ? 0 : 1) {
  if (pos_ < tag_.size() && tag_[pos_] == u'/') ++pos_;
  while (pos_ < tag_.size() && !EndsName(tag_[pos_])) ++pos_;
}

bool AttributeWalk::Next(TagAttribute& attribute) {
  while (pos_ < tag_.size() && (EndsName(tag_[pos_]) || tag_[pos_] == u'=')) ++pos_;
  if (pos_ == tag_.size()) return false;
  attribute = {};
  attribute.start = pos_;
  while (pos_ < tag_.size() && !EndsName(tag_[pos_]) && tag_[pos_] != u'=') ++pos_;
  attribute.name = tag_.substr(attribute.start, pos_ - attribute.start);
  attribute.end = pos_;
  std::size_t next = pos_;
  while (next < tag_.size() && IsHtmlSpace(tag_[next])) ++next;
  if (next == tag_.size() || tag_[next] != u'=') {
    pos_ = next;
    return true;
  }
  pos_ = next + 1;
  ReadValue(attribute);
  return true;
}

// The position of the partner of a quote, or npos. One failed search a kind of quote is enough:
// there is none further on either.
std::size_t AttributeWalk::ClosingQuote(std::size_t open) {
  bool& lacks = tag_[open] == u'"' ? lacksDouble_ : lacksSingle_;
  if (lacks) return std::u16string_view::npos;
  const std::size_t close = FindUnit(tag_, open + 1, tag_[open]);
  lacks = close == tag_.size();
  return lacks ? std::u16string_view::npos : close;
}

void AttributeWalk::ReadValue(TagAttribute& attribute) {
  while (pos_ < tag_.size() && IsHtmlSpace(tag_[pos_])) ++pos_;
  attribute.hasValue = true;
  attribute.sourceStart = pos_;
  if (pos_ < tag_.size() && (tag_[pos_] == u'"' || tag_[pos_] == u'\'')) {
    const std::size_t close = ClosingQuote(pos_);
    if (close != std::u16string_view::npos) {
      attribute.value = tag_.substr(pos_ + 1, close - pos_ - 1);
      pos_ = close + 1;
    }
  }
  if (pos_ == attribute.sourceStart) {
    while (pos_ < tag_.size() && tag_[pos_] != u'>' && !IsHtmlSpace(tag_[pos_])) ++pos_;
    attribute.value = tag_.substr(attribute.sourceStart, pos_ - attribute.sourceStart);
  }
  attribute.source = tag_.substr(attribute.sourceStart, pos_ - attribute.sourceStart);
  attribute.end = pos_;
}

bool FindAttribute(std::u16string_view tag, std::string_view name, std::u16string_view& value) {
  bool found = false;
  AttributeWalk walk(tag);
  for (TagAttribute attribute; walk.Next(attribute);) {
    if (!attribute.hasValue || !EqualsNoCase(attribute.name, name)) continue;
    value = attribute.value;
    found = true;
  }
  return found;
}

}  // namespace lumr
