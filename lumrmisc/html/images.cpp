#include "lumrmisc/html/images.h"

#include "lumrmisc/html/decode_internal.h"
#include "lumrmisc/html/sourcecopy_internal.h"
#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

struct ImageRow {
  TagNameKey tag;
  std::string_view attribute;
};
constexpr ImageRow kImages[] = {
    {TagName("img"), "src"},          {TagName("image"), "src"},
    {TagName("input"), "src"},        {TagName("body"), "background"},
    {TagName("table"), "background"}, {TagName("td"), "background"},
    {TagName("th"), "background"},    {TagName("tr"), "background"},
    {TagName("video"), "poster"},
};

std::string_view AttributeOf(TagNameKey tag) {
  for (const ImageRow& row : kImages) {
    if (row.tag == tag) return row.attribute;
  }
  return {};
}

std::u16string AddressOf(std::u16string_view value) {
  while (!value.empty() && IsHtmlSpace(value.front())) value.remove_prefix(1);
  while (!value.empty() && IsHtmlSpace(value.back())) value.remove_suffix(1);
  std::u16string address;
  AppendDecoded(value, true, address);
  return address;
}

std::u16string Quoted(std::u16string_view address) {
  std::u16string quoted = u"\"";
  for (const char16_t unit : address) {
    if (const std::string_view reference = ReferenceOf(unit); !reference.empty()) {
      quoted.append(reference.begin(), reference.end());
    } else {
      quoted += unit;
    }
  }
  return quoted + u'"';
}

}  // namespace

int ConvertImgSrc(CStringW& html, const ImageSourceConverter& convert) {
  if (!convert) return 0;
  const std::u16string_view source = html;
  SourceCopy copy(source);
  int replaced = 0;
  TagSpan span;
  for (std::size_t pos = 0; FindTag(source, pos, span); pos = span.end) {
    const std::string_view name = AttributeOf(TagNameOf(source, span));
    if (name.empty() || !span.isClosed) continue;
    AttributeWalk walk(TagText(source, span));
    for (TagAttribute attribute; walk.Next(attribute);) {
      if (!attribute.hasValue || !EqualsNoCase(attribute.name, name)) continue;
      std::u16string address = AddressOf(attribute.value);
      if (convert(address) == 0) continue;
      copy.Replace(span.start + attribute.sourceStart, span.start + attribute.end, Quoted(address));
      ++replaced;
    }
  }
  copy.Store(html);
  return replaced;
}

}  // namespace lumr
