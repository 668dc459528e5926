#include "lumrmisc/html/htmltokenizer_internal.h"

#include <algorithm>

#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {
namespace {

bool EndsName(char16_t unit) {
  return IsMarkupSpace(unit) || unit == u'/' || unit == u'>';
}

bool EqualNames(std::u16string_view a, std::u16string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char16_t x, char16_t y) { return UnitAsciiLower(x) == UnitAsciiLower(y); });
}

}  // namespace

void HtmlTokenizer::SetContent(HtmlContent content, std::u16string_view name) {
  content_ = content;
  endName_ = name;
}

bool HtmlTokenizer::Next(HtmlToken& token) {
  for (;;) {
    if (pos_ == source_.size()) return false;
    token.begin = pos_;
    token.isSelfClosing = false;
    token.hasMoreAttributes = false;
    token.attributes.clear();
    if (content_ != HtmlContent::kMarkup) {
      ReadSpecialText(token);
      return true;
    }
    if (source_[pos_] != u'<') {
      SetText(FindUnit(source_, pos_, u'<'), true, token);
      return true;
    }
    if (StartsWith(pos_, u"</>")) {  // means nothing
      pos_ += 3;
      continue;
    }
    if (!ReadMarkup(token)) SetText(FindUnit(source_, pos_ + 1, u'<'), true, token);
    return true;
  }
}

void HtmlTokenizer::SetText(std::size_t end, bool hasReferences, HtmlToken& token) {
  token.kind = HtmlToken::kText;
  token.text = source_.substr(pos_, end - pos_);
  token.hasReferences = hasReferences;
  token.end = pos_ = end;
}

// Whether the end tag of the special content is at this place, which holds a "<".
bool HtmlTokenizer::IsEndTagAt(std::size_t pos) const {
  const std::size_t nameEnd = pos + 2 + endName_.size();
  return nameEnd < source_.size() && source_[pos + 1] == u'/' && EndsName(source_[nameEnd]) &&
         EqualNames(source_.substr(pos + 2, endName_.size()), endName_);
}

void HtmlTokenizer::ReadSpecialText(HtmlToken& token) {
  std::size_t end = source_.size();
  if (content_ == HtmlContent::kScript) {
    end = FindScriptEnd();
  } else if (content_ != HtmlContent::kPlainText) {
    end = FindUnit(source_, pos_, u'<');
    while (end < source_.size() && !IsEndTagAt(end)) end = FindUnit(source_, end + 1, u'<');
  }
  const bool hasReferences = content_ == HtmlContent::kRcData;
  content_ = HtmlContent::kMarkup;
  if (end == pos_) {
    ReadTag(token);
  } else {
    SetText(end, hasReferences, token);
  }
}

// In a comment of a script, "<script" up to "</script>" is text too.
std::size_t HtmlTokenizer::FindScriptEnd() const {
  enum { kCode, kEscaped, kDoubleEscaped } state = kCode;
  std::size_t pos = pos_;
  while ((pos = FindUnit(source_, pos, u'<', u'-')) < source_.size()) {
    if (state != kCode && StartsWith(pos, u"-->")) {
      state = kCode;
    } else if (state == kCode && StartsWith(pos, u"<!--")) {
      state = kEscaped;
      ++pos;  // its two hyphens may already be those of "-->"
    } else if (source_[pos] == u'<' && IsEndTagAt(pos)) {
      if (state != kDoubleEscaped) return pos;
      state = kEscaped;
    } else if (state == kEscaped && source_[pos] == u'<') {
      const std::size_t nameEnd = pos + 1 + endName_.size();
      if (nameEnd < source_.size() && EndsName(source_[nameEnd]) &&
          EqualNames(source_.substr(pos + 1, endName_.size()), endName_)) {
        state = kDoubleEscaped;
      }
    }
    ++pos;
  }
  return pos;
}

// False when the "<" is text.
bool HtmlTokenizer::ReadMarkup(HtmlToken& token) {
  if (pos_ + 1 == source_.size()) return false;
  const char16_t next = source_[pos_ + 1];
  if (IsAsciiLetter(next)) {
    ReadTag(token);
  } else if (next == u'!') {
    ReadDeclaration(token);
  } else if (next == u'?') {
    ReadBogusComment(pos_ + 1, token);
  } else if (next == u'/' && pos_ + 2 < source_.size()) {
    if (IsAsciiLetter(source_[pos_ + 2])) {
      ReadTag(token);
    } else {
      ReadBogusComment(pos_ + 2, token);
    }
  } else {
    return false;
  }
  return true;
}

void HtmlTokenizer::ReadDeclaration(HtmlToken& token) {
  const std::u16string_view rest = source_.substr(pos_ + 2);
  if (rest.starts_with(u"--")) {
    ReadComment(token);
  } else if (allowCData_ && rest.starts_with(u"[CDATA[")) {
    ReadCData(token);
  } else {
    const bool isDocType = StartsWithNoCase(rest, "doctype");
    ReadBogusComment(isDocType ? pos_ + 9 : pos_ + 2, token);
    if (isDocType) token.kind = HtmlToken::kDocType;
  }
}

void HtmlTokenizer::ReadBogusComment(std::size_t dataBegin, HtmlToken& token) {
  const std::size_t dataEnd = FindUnit(source_, dataBegin, u'>');
  token.kind = HtmlToken::kComment;
  token.text = source_.substr(dataBegin, dataEnd - dataBegin);
  token.end = pos_ = std::min(dataEnd + 1, source_.size());
}

// Ends at "-->" or "--!>"; "<!-->" and "<!--->" are whole comments.
void HtmlTokenizer::ReadComment(HtmlToken& token) {
  const std::size_t begin = pos_ + 4;
  token.kind = HtmlToken::kComment;
  token.text = {};
  if (StartsWith(begin, u">") || StartsWith(begin, u"->")) {
    token.end = pos_ = begin + (source_[begin] == u'>' ? 1 : 2);
    return;
  }
  for (std::size_t pos = FindUnit(source_, begin, u'-'); pos < source_.size();
       pos = FindUnit(source_, pos + 1, u'-')) {
    const bool isPlain = StartsWith(pos, u"-->");
    if (!isPlain && !StartsWith(pos, u"--!>")) continue;
    token.text = source_.substr(begin, pos - begin);
    token.end = pos_ = pos + (isPlain ? 3 : 4);
    return;
  }
  token.text = source_.substr(begin);
  for (const std::u16string_view start : {u"--!", u"--", u"-"}) {  // of an end that never came
    if (!token.text.ends_with(start)) continue;
    token.text.remove_suffix(start.size());
    break;
  }
  token.end = pos_ = source_.size();
}

void HtmlTokenizer::ReadCData(HtmlToken& token) {
  constexpr std::size_t kOpener = 9;  // <![CDATA[
  pos_ += kOpener;
  const std::size_t end = std::min(source_.find(u"]]>", pos_), source_.size());
  SetText(end, false, token);
  token.end = pos_ = std::min(end + 3, source_.size());
}

void HtmlTokenizer::ReadTag(HtmlToken& token) {
  const bool isEnd = source_[pos_ + 1] == u'/';
  const std::size_t nameBegin = pos_ + (isEnd ? 2 : 1);
  std::size_t pos = nameBegin;
  while (pos < source_.size() && !EndsName(source_[pos])) ++pos;
  token.name = source_.substr(nameBegin, pos - nameBegin);
  token.kind = isEnd ? HtmlToken::kEndTag : HtmlToken::kStartTag;
  while (pos < source_.size() && source_[pos] != u'>') {
    if (EndsName(source_[pos])) {  // white space or a slash
      token.isSelfClosing = source_[pos] == u'/' && StartsWith(pos + 1, u">");
      ++pos;
    } else {
      pos = ReadAttribute(pos, token);
    }
  }
  if (pos == source_.size()) {
    token.kind = HtmlToken::kUnfinishedTag;
    token.name = {};
    token.attributes.clear();
    token.end = pos_ = pos;
    return;
  }
  token.end = pos_ = pos + 1;
}

// Gives the position behind the attribute that begins here.
std::size_t HtmlTokenizer::ReadAttribute(std::size_t pos, HtmlToken& token) {
  const std::size_t size = source_.size();
  const std::size_t nameBegin = pos++;  // may be "="
  while (pos < size && !EndsName(source_[pos]) && source_[pos] != u'=') ++pos;
  HtmlAttribute attribute{source_.substr(nameBegin, pos - nameBegin), {}};
  std::size_t ahead = pos;
  while (ahead < size && IsMarkupSpace(source_[ahead])) ++ahead;
  if (ahead < size && source_[ahead] == u'=') {
    pos = ahead + 1;
    while (pos < size && IsMarkupSpace(source_[pos])) ++pos;
    if (pos < size && (source_[pos] == u'"' || source_[pos] == u'\'')) {
      const std::size_t end = FindUnit(source_, pos + 1, source_[pos]);
      attribute.value = source_.substr(pos + 1, end - pos - 1);
      pos = std::min(end + 1, size);
    } else {
      const std::size_t begin = pos;
      while (pos < size && !IsMarkupSpace(source_[pos]) && source_[pos] != u'>') ++pos;
      attribute.value = source_.substr(begin, pos - begin);
    }
  }
  token.hasMoreAttributes = token.attributes.size() == kMostAttributes;
  if (!token.hasMoreAttributes) token.attributes.push_back(attribute);
  return pos;
}

}  // namespace lumr
