#include "lumrmisc/html/htmlcharset.h"

#include <algorithm>

#include "lumrmisc/html/sourcecopy_internal.h"
#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

constexpr std::size_t kDeclarationLimit = 16384;  // bytes in which a declaration is looked for

std::u16string CharsetNameOf(CodeType codeType) {
  const char* const name = CharSetCode2Name(codeType);
  if (name == nullptr) return {};
  const std::string_view text = name;
  return {text.begin(), text.end()};
}

// ---- Adding --------------------------------------------------------------------------------

std::size_t SkipLineEnds(std::u16string_view text, std::size_t pos) {
  while (pos < text.size() && IsLineEnd(text[pos])) ++pos;
  return pos;
}

// Moves pos behind a tag that begins like this, and behind one line end; line ends before the
// tag are stepped over with it.
bool PassTag(std::u16string_view html, std::string_view begin, std::size_t& pos) {
  const std::size_t start = SkipLineEnds(html, pos);
  if (!StartsWithNoCase(html.substr(start), begin)) return false;
  pos = std::min(FindUnit(html, start, u'>') + 1, html.size());
  const std::u16string_view rest = html.substr(pos);
  if (!rest.empty() && IsLineEnd(rest[0])) pos += rest.starts_with(u"\r\n") ? 2 : 1;
  return true;
}

// ---- Reading and changing --------------------------------------------------------------------

// The charset named in the content of a meta tag ("text/html; charset=utf-8"), as a part of it;
// empty when there is none.
std::u16string_view CharsetInContent(std::u16string_view content) {
  constexpr std::string_view kWord = "charset";
  std::size_t pos = 0;
  const auto skipSpace = [&] {
    while (pos < content.size() && IsHtmlSpace(content[pos])) ++pos;
  };
  for (; pos < content.size(); ++pos) {
    if (!StartsWithNoCase(content.substr(pos), kWord)) continue;
    pos += kWord.size();
    skipSpace();
    if (pos < content.size() && content[pos] == u'=') break;
    --pos;  // it may begin another one
  }
  if (pos >= content.size()) return {};
  ++pos;
  skipSpace();
  if (pos < content.size() && (content[pos] == u'"' || content[pos] == u'\'')) {
    const std::size_t close = FindUnit(content, pos + 1, content[pos]);
    return content.substr(pos + 1, close - pos - 1);
  }
  std::size_t end = pos;
  while (end < content.size() && content[end] != u';' && !IsHtmlSpace(content[end])) ++end;
  return content.substr(pos, end - pos);
}

// Calls found with the charset of each declaration, a part of html, until it gives false.
template <class Found>
void ForEachDeclaration(std::u16string_view html, Found found) {
  TagSpan span;
  for (std::size_t pos = 0; FindTag(html, pos, span);) {
    pos = span.end;
    const TagNameKey name = TagNameOf(html, span);
    if (name == TagName("script")) pos = EndOfElement(html, pos, TagName("/script"));
    if (name == TagName("style")) pos = EndOfElement(html, pos, TagName("/style"));
    if (name != TagName("meta")) continue;
    const std::u16string_view tag = TagText(html, span);
    std::u16string_view charset, equivalent;
    FindAttribute(tag, "http-equiv", equivalent);
    const bool isContentType = EqualsNoCase(equivalent, "content-type");
    AttributeWalk walk(tag);
    for (TagAttribute attribute; walk.Next(attribute);) {
      if (EqualsNoCase(attribute.name, "charset")) {
        charset = attribute.value;
      } else if (isContentType && EqualsNoCase(attribute.name, "content")) {
        charset = CharsetInContent(attribute.value);
      } else {
        continue;
      }
      if (!charset.empty() && !found(charset)) return;
    }
  }
}

// The start of a text in bytes, read as characters of one byte each; what stands between the
// escape sequences of ISO-2022-JP is never markup.
std::u16string MarkupOf(std::string_view bytes) {
  std::u16string units;
  bool isKanji = false;
  for (std::size_t i = 0; i < std::min(bytes.size(), kDeclarationLimit); ++i) {
    if (bytes[i] == '\x1B' && i + 1 < bytes.size()) isKanji = bytes[i + 1] == '$';
    units += isKanji ? u'x' : static_cast<char16_t>(static_cast<unsigned char>(bytes[i]));
  }
  return units;
}

}  // namespace

int AddHtmlCharSetW(CStringW& html, CodeType codeType) {
  const std::u16string name = CharsetNameOf(codeType);
  if (name.empty() || html.empty()) return 0;
  std::size_t place = 0;
  const bool hasType = PassTag(html, "<!doctype", place);
  const bool hasHtml = PassTag(html, "<html", place);
  const bool hasHead = PassTag(html, "<head", place);
  const std::u16string_view rest = std::u16string_view(html).substr(SkipLineEnds(html, place));
  const bool hasBody = StartsWithNoCase(rest, "<body");

  const bool isBare = !hasType && !hasHtml && !hasHead && !hasBody;
  const bool wrapsAll = !hasType && !hasHtml;
  std::u16string out;
  out.reserve(html.size() + 160);
  if (wrapsAll) out += u"<html>\r\n";
  out.append(html, 0, place);
  if (!hasHead) out += u"<head>\r\n";
  out += u"<meta http-equiv=\"Content-Type\" content=\"text/html; charset=" + name + u"\">\r\n";
  if (!hasHead) out += u"</head>\r\n";
  if (isBare) out += u"<body>\r\n";
  out.append(html, place);
  if (isBare) out += u"</body>\r\n";
  if (wrapsAll) out += u"</html>\r\n";
  html = std::move(out);
  return 1;
}

int ChangeHtmlCharSetW(CStringW& html, CodeType codeType) {
  const std::u16string name = CharsetNameOf(codeType);
  if (name.empty()) return 0;
  SourceCopy copy(html);
  ForEachDeclaration(html, [&](std::u16string_view charset) {
    const std::size_t start = static_cast<std::size_t>(charset.data() - html.data());
    copy.Replace(start, start + charset.size(), name);
    return true;
  });
  copy.Store(html);
  return copy.IsEdited();
}

int GetHtmlCharSetW(std::u16string_view html, CStringA& charset) {
  charset.clear();
  ForEachDeclaration(html, [&](std::u16string_view declared) {
    for (const char16_t unit : declared) {
      if (unit > 0x7F) return charset.clear(), false;
      charset += static_cast<char>(unit);
    }
    return false;
  });
  return !charset.empty();
}

MailCharset ResolveHtmlCharset(std::string_view label, std::string_view bytes) {
  constexpr std::string_view kMarks[] = {"\xFF\xFE", "\xFE\xFF", "\xEF\xBB\xBF"};
  if (CodeTypeOfMailLabel(label) != CT_UNKNOWN) return ResolveMailCharset(label, bytes);
  if (bytes.starts_with(kMarks[2])) return ResolveMailCharset("utf-8", bytes);
  if (bytes.starts_with(kMarks[0]) || bytes.starts_with(kMarks[1])) {
    return ResolveMailCharset({}, bytes);
  }
  CStringA declared;
  GetHtmlCharSetW(MarkupOf(bytes), declared);
  return ResolveMailCharset(CodeTypeOfMailLabel(declared) == CT_UNKNOWN ? label : declared, bytes);
}

}  // namespace lumr
