// The edits of received and outgoing HTML done one by one in the string, as their rules are told:
// slow, and easy to compare with the rules.
#pragma once

#include <string>
#include <string_view>

#include "lumrmisc/platform/unicode.h"

namespace lumr::reference {

using Text = std::u16string;
constexpr std::size_t npos = Text::npos;

inline Text Lower(Text text) {
  for (char16_t& unit : text) unit = UnitToLower(unit);
  return text;
}

// [start, end) of the next tag or comment; start is npos when there is none.
struct Span {
  std::size_t start = npos, end = npos;
  bool isComment = false, isClosed = false;
};

inline Span Scan(const Text& text, std::size_t from) {
  for (std::size_t i = from; i + 1 < text.size(); ++i) {
    if (text[i] != u'<' || IsUnitSpace(text[i + 1])) continue;
    if (text.compare(i, 4, u"<!--") == 0) {
      const std::size_t end = text.find(u"-->", i + 4);
      return {i, end == npos ? text.size() : end + 3, true, end != npos};
    }
    char16_t quote = 0;
    for (std::size_t j = i + 1; j < text.size(); ++j) {
      if (quote != 0) {
        if (text[j] == quote) quote = 0;
      } else if ((text[j] == u'"' || text[j] == u'\'') && text[j - 1] == u'=') {
        quote = text[j];
      } else if (text[j] == u'>') {
        return {i, j + 1, false, true};
      }
    }
    return {i, text.size(), false, false};
  }
  return {};
}

inline bool IsNamed(const Text& text, const Span& span, const Text& name) {
  if (span.isComment || span.start + 1 + name.size() >= text.size()) return false;
  const char16_t next = text[span.start + 1 + name.size()];
  return Lower(text.substr(span.start + 1, name.size())) == name &&
         (next == u'>' || next == u'/' || IsUnitSpace(next));
}

inline Span ScanNamed(const Text& text, std::size_t from, const Text& name) {
  Span span = Scan(text, from);
  while (span.start != npos && !IsNamed(text, span, name)) span = Scan(text, span.end);
  return span;
}

// Replaces "://" in [start, end), whose length it keeps.
inline void Disarm(Text& text, std::size_t start, std::size_t end) {
  for (std::size_t i = start; i + 3 <= end; ++i) {
    if (text.compare(i, 3, u"://") == 0) text[i] = u'_';
  }
}

struct Attribute {
  Text name, value;
  std::size_t start = 0, source = 0, end = 0;
  bool hasValue = false;
};

// The attribute at or behind pos in a tag that ends before tagEnd; false when there is none.
inline bool NextAttribute(const Text& text, std::size_t pos, std::size_t tagEnd, Attribute& a) {
  const auto isSpace = [&](std::size_t i) { return IsUnitSpace(text[i]) != 0; };
  const auto ends = [&](std::size_t i) { return isSpace(i) || text[i] == u'/' || text[i] == u'>'; };
  while (pos < tagEnd && (ends(pos) || text[pos] == u'=')) ++pos;
  if (pos == tagEnd) return false;
  a = {};
  a.start = pos;
  while (pos < tagEnd && !ends(pos) && text[pos] != u'=') ++pos;
  a.name = Lower(text.substr(a.start, pos - a.start));
  a.end = pos;
  while (pos < tagEnd && isSpace(pos)) ++pos;
  if (pos == tagEnd || text[pos] != u'=') return true;
  for (++pos; pos < tagEnd && isSpace(pos);) ++pos;
  a.hasValue = true;
  a.source = pos;
  if (pos < tagEnd && (text[pos] == u'"' || text[pos] == u'\'')) {
    const std::size_t close = text.find(text[pos], pos + 1);
    if (close < tagEnd) {
      a.value = text.substr(pos + 1, close - pos - 1);
      a.end = close + 1;
      return true;
    }
  }
  while (pos < tagEnd && !isSpace(pos) && text[pos] != u'>') ++pos;
  a.value = text.substr(a.source, pos - a.source);
  a.end = pos;
  return true;
}

inline std::size_t NameEnd(const Text& text, const Span& span) {
  std::size_t pos = span.start + 1;
  if (text[pos] == u'/') ++pos;
  while (pos < span.end && text[pos] != u'>' && text[pos] != u'/' && !IsUnitSpace(text[pos])) ++pos;
  return pos;
}

inline std::size_t Inside(const Span& span) {  // where its closing ">" stands
  return span.isClosed ? span.end - 1 : span.end;
}

inline void Replace(Text& text, Span& span, std::size_t at, std::size_t size, const Text& by) {
  text.replace(at, size, by);
  span.end = span.end - size + by.size();
}

inline void Retarget(Text& text, Span& span) {
  Attribute a;
  for (std::size_t pos = NameEnd(text, span); NextAttribute(text, pos, Inside(span), a);) {
    pos = a.end;
    if (!a.hasValue || a.name != u"target" || Lower(a.value) == u"_self") continue;
    Replace(text, span, a.source, a.end - a.source, u"\"_self\"");
    pos = a.source + 7;
  }
}

inline void SetDocumentType(Text& text, Span& span) {
  const Text standard = u"<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">";
  if (Lower(text.substr(span.start, standard.size())) == Lower(standard)) return;
  Replace(text, span, span.start, span.end - span.start, standard);
}

inline void CleanLink(Text& text, Span& span) {
  Attribute a;
  Text address;
  bool hasAddress = false, isExternal = false;
  for (std::size_t pos = NameEnd(text, span); NextAttribute(text, pos, Inside(span), a);) {
    pos = a.end;
    if (a.name == u"title") {
      Replace(text, span, a.start, a.end - a.start, u"");
      pos = a.start;
    } else if (a.name == u"href" && a.hasValue) {
      hasAddress = true;
      if (Lower(a.value).starts_with(u"javascript:")) {
        Replace(text, span, a.source, a.end - a.source, u"\"#\"");
        pos = a.source + 3;
      } else if (a.value.empty() || a.value[0] != u'#') {
        isExternal = true;
      }
      address = text.substr(a.source, pos - a.source);
    }
  }
  if (hasAddress) Replace(text, span, Inside(span), 0, u" title=" + address);
  if (isExternal) Retarget(text, span);
}

inline void ToSafeHtml(Text& text) {
  Span span = Scan(text, 0);
  while (span.start != npos) {
    std::size_t next = npos;
    for (const Text name : {u"base", u"embed", u"applet", u"link"}) {
      if (!IsNamed(text, span, name)) continue;
      text.erase(span.start, span.end - span.start);
      next = span.start;
      break;
    }
    for (const Text name : {u"script", u"object"}) {
      if (next != npos || !IsNamed(text, span, name)) continue;
      const Span close = ScanNamed(text, span.end, u"/" + name);
      text.erase(span.start, (close.start == npos ? span.end : close.end) - span.start);
      next = span.start;
    }
    if (next == npos) {
      if (IsNamed(text, span, u"a")) {
        CleanLink(text, span);
      } else if (IsNamed(text, span, u"!doctype")) {
        SetDocumentType(text, span);
      } else if (IsNamed(text, span, u"style")) {
        const Span close = ScanNamed(text, span.end, u"/style");
        if (close.start != npos) Disarm(text, span.start, close.start);
      } else {
        Disarm(text, span.start, span.end);
      }
      next = span.end;
    }
    span = Scan(text, next);
  }
}

inline void ToHtmlLinkSelf(Text& text) {
  for (Span span = Scan(text, 0); span.start != npos; span = Scan(text, span.end)) {
    if (IsNamed(text, span, u"a")) Retarget(text, span);
    if (IsNamed(text, span, u"!doctype")) SetDocumentType(text, span);
  }
}

inline bool IsOneOf(const Text& text, const Span& span, std::u16string_view names) {
  while (!names.empty()) {
    const std::size_t end = names.find(u' ');
    if (IsNamed(text, span, Text(names.substr(0, end)))) return true;
    names.remove_prefix(end == npos ? names.size() : end + 1);
  }
  return false;
}

inline bool IsBreak(char16_t unit) {
  return unit == u'\r' || unit == u'\n';
}

inline std::size_t StepOver(const Text& text, std::size_t i) {
  if (text.compare(i, 2, u"\r\n") == 0) return i + 2;
  if ((text[i] & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00) {
    return i + 2;
  }
  const std::size_t end = text.find_first_not_of(
      u"#0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", i + 1);
  return text[i] == u'&' && end != npos && text[end] == u';' ? end + 1 : i + 1;
}

inline void AdjustBreakLine(Text& text) {
  const Text around =
      u"html /html head /head meta body /body ol /ol ul /ul pre /pre hr table /table tbody /tbody "
      u"tr /tr";
  std::size_t previous = 0;
  for (Span span = Scan(text, 0); span.start != npos; span = Scan(text, span.end)) {
    const bool isAround = IsOneOf(text, span, around);
    const bool isBefore = IsOneOf(text, span, u"/title /h1 /h2 /h3 /h4 /h5 /h6 /div /p /td");
    const bool isAfter = IsOneOf(text, span, u"title h1 h2 h3 h4 h5 h6 div p td");
    bool breaksAfter =
        (isAround || isAfter) && (span.end == text.size() || !IsBreak(text[span.end]));
    if (!isAround && !isBefore && !isAfter && span.start >= 76) {
      breaksAfter = text.substr(span.start - 76, 76).find_first_of(u"\r\n") == npos;
    }
    if ((isAround || isBefore) && span.start > 0 && !IsBreak(text[span.start - 1])) {
      text.insert(span.start, u"\r\n");
      span.start += 2;
      span.end += 2;
    }
    if (breaksAfter) text.insert(span.end, u"\r\n");
    std::size_t line = previous, blank = npos;
    for (std::size_t i = previous; i + 20 < span.start; i = StepOver(text, i)) {
      if (i - line > 76) {
        const std::size_t at = blank == npos ? i : blank;
        text.insert(at, u"\r\n");
        i += 2;
        span.start += 2;
        span.end += 2;
        line = at + 2;
        blank = npos;
      }
      if (text[i] == u' ') blank = i;
    }
    previous = span.end;
  }
}

struct Row {
  Text name, text;
};

// Decodes the reference at i in place; gives the position behind its text.
inline std::size_t Decode(Text& text, std::size_t i) {
  const Row rows[] = {{u"nbsp", u" "},  {u"lt", u"<"},     {u"gt", u">"},   {u"amp", u"&"},
                      {u"quot", u"\""}, {u"copy", u"(c)"}, {u"reg", u"(R)"}};
  for (const Row& row : rows) {
    if (Lower(text.substr(i + 1, row.name.size())) != row.name) continue;
    const std::size_t end = i + 1 + row.name.size();
    text.replace(i, end - i + (end < text.size() && text[end] == u';'), row.text);
    return i + row.text.size();
  }
  const bool isHex = Lower(text.substr(i, 3)) == u"&#x";
  if (text.compare(i, 2, u"&#") != 0) return i + 1;
  const std::size_t first = i + (isHex ? 3 : 2);
  std::size_t end =
      text.find_first_not_of(isHex ? u"0123456789abcdefABCDEF" : u"0123456789", first);
  if (end == npos) end = text.size();
  if (end == first) return i + 1;
  unsigned value = 0;
  for (std::size_t d = first; d < end; ++d) {
    const unsigned digit = text[d] <= u'9' ? text[d] - u'0' : (text[d] & 0xDFu) - u'A' + 10;
    value = (value * (isHex ? 16 : 10) + digit) % 65536;
  }
  text.replace(i, end - i + (end < text.size() && text[end] == u';'),
               Text(1, static_cast<char16_t>(value)));
  return i + 1;
}

inline Text ValueOf(const Text& tag, const Text& name) {
  Text value;
  Attribute a;
  const Span span{0, tag.size(), false, true};
  for (std::size_t pos = NameEnd(tag, span); NextAttribute(tag, pos, tag.size() - 1, a);) {
    pos = a.end;
    if (a.hasValue && a.name == name) value = a.value;
  }
  return value;
}

inline void ExtractText(Text& text, bool keepLinks) {
  const Row breaks[] = {{u"<br", u"1"},    {u"<div", u"1"},    {u"<h1", u"2"},   {u"<h2", u"2"},
                        {u"<h3", u"2"},    {u"<h4", u"2"},     {u"<h5", u"2"},   {u"<h6", u"2"},
                        {u"<hr", u"2"},    {u"<p>", u"2"},     {u"<p ", u"2"},   {u"<table>", u"1"},
                        {u"</div>", u"1"}, {u"</h1>", u"2"},   {u"</h2>", u"2"}, {u"</h3>", u"2"},
                        {u"</h4>", u"2"},  {u"</h5>", u"2"},   {u"</h6>", u"2"}, {u"</p>", u"2"},
                        {u"</tr>", u"1"},  {u"</table>", u"1"}};
  std::size_t title = npos, style = npos;
  bool isPre = false;
  Text address;
  const auto section = [&](std::size_t& open, const Text& tag, const Text& name, std::size_t& i) {
    if (open == npos) {
      if (tag == u"<" + name + u">" || tag.starts_with(u"<" + name + u" ")) open = i;
      return;
    }
    if (tag == u"</" + name + u">") {
      text.erase(open, i - open);
      i = open;
    }
    open = npos;
  };
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == u'&') {
      i = Decode(text, i);
    } else if (IsUnitSpace(text[i]) && !isPre) {
      std::size_t end = i;
      while (end < text.size() && IsUnitSpace(text[end])) ++end;
      text.replace(i, end - i, end == text.size() ? u"" : u" ");
      ++i;
    } else if (text[i] == u'<' && Scan(text, i).start == i) {
      const Span span = Scan(text, i);
      const Text tag = text.substr(i, span.end - i);
      text.erase(i, tag.size());
      if (span.isComment || !span.isClosed || tag.size() >= 256) continue;
      const Text lower = Lower(tag);
      for (const Row& row : breaks) {
        if (!lower.starts_with(row.name)) continue;
        while (i > 0 && (text[i - 1] == u' ' || text[i - 1] == u'\t')) text.erase(--i, 1);
        if (i >= 4 && text.compare(i - 4, 4, u"\r\n\r\n") == 0) break;
        for (char16_t n = u'0'; n < row.text[0]; ++n, i += 2) text.insert(i, u"\r\n");
        break;
      }
      const auto insert = [&](const Text& added) {
        text.insert(i, added);
        i += added.size();
      };
      if (lower == u"</td>") insert(u"\t");
      const auto opens = [&](const Text& name) {
        return lower.starts_with(name) && IsUnitSpace(tag[name.size()]);
      };
      if (keepLinks && opens(u"<img")) {
        Text alt = ValueOf(tag, u"alt");
        for (std::size_t a = 0; a < alt.size();) a = alt[a] == u'&' ? Decode(alt, a) : a + 1;
        if (!alt.empty()) insert(u" [" + alt + u"] ");
      } else if (keepLinks && opens(u"<a")) {
        address = ValueOf(tag, u"href");
      } else if (keepLinks && lower == u"</a>" && !address.empty()) {
        insert(u" (=> " + address + u" ) ");
        address.clear();
      }
      section(title, lower, u"title", i);
      section(style, lower, u"style", i);
      isPre = isPre ? lower != u"</pre>" : lower == u"<pre>" || lower.starts_with(u"<pre ");
    } else {
      ++i;
    }
  }
  if (text.size() >= 2 && !text.ends_with(u"\r\n")) text += u"\r\n";
}

}  // namespace lumr::reference
