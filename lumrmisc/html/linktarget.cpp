#include "lumrmisc/html/adjust.h"
#include "lumrmisc/html/linktarget_internal.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

constexpr std::u16string_view kStandardType =
    u"<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">";
constexpr std::string_view kStandardTypeLower =
    "<!doctype html public \"-//w3c//dtd html 4.01 transitional//en\">";

}  // namespace

bool RetargetTag(std::u16string_view tag, std::u16string& out) {
  SourceCopy copy(tag);
  AttributeWalk walk(tag);
  for (TagAttribute attribute; walk.Next(attribute);) {
    const bool isTarget = attribute.hasValue && EqualsNoCase(attribute.name, "target");
    if (!isTarget || EqualsNoCase(attribute.value, "_self")) continue;
    copy.Replace(attribute.sourceStart, attribute.end, u"\"_self\"");
  }
  if (copy.IsEdited()) out = copy.Take();
  return copy.IsEdited();
}

void ReplaceDocumentType(std::u16string_view html, const TagSpan& span, SourceCopy& copy) {
  const std::u16string_view tag = html.substr(span.start, span.end - span.start);
  if (StartsWithNoCase(tag, kStandardTypeLower)) return;
  copy.Replace(span.start, span.end, kStandardType);
}

void ToHtmlLinkSelfW(CStringW& html) {
  SourceCopy copy(html);
  std::u16string retargeted;
  TagSpan span;
  for (std::size_t pos = 0; FindTag(html, pos, span); pos = span.end) {
    const TagNameKey name = TagNameOf(html, span);
    if (name == TagName("!doctype")) {
      ReplaceDocumentType(html, span, copy);
    } else if (name == TagName("a")) {
      const std::u16string_view tag = TagText(html, span);
      if (RetargetTag(tag, retargeted))
        copy.Replace(span.start, span.start + tag.size(), retargeted);
    }
  }
  copy.Store(html);
}

}  // namespace lumr
