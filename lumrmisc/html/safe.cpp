#include "lumrmisc/html/safe.h"

#include "lumrmisc/html/linktarget_internal.h"
#include "lumrmisc/html/sourcecopy_internal.h"
#include "lumrmisc/html/tagscan.h"
#include "lumrmisc/html/unitscan_internal.h"

namespace lumr {

namespace {

// The closing tags of one name. Asked for ascending positions it goes through the text once,
// also where there is none.
class ClosingTags {
 public:
  ClosingTags(std::u16string_view html, TagNameKey name) : html_(html), name_(name) {}

  // The first at or behind pos, or null.
  const TagSpan* Behind(std::size_t pos) {
    if (!isLooked_ || (isThere_ && next_.start < pos)) {
      isLooked_ = true;
      isThere_ = FindTagNamed(html_, pos, name_, next_);
    }
    return isThere_ ? &next_ : nullptr;
  }

 private:
  std::u16string_view html_;
  TagNameKey name_;
  TagSpan next_;
  bool isLooked_ = false;
  bool isThere_ = false;
};

class Cleaner {
 public:
  explicit Cleaner(std::u16string_view html)
      : html_(html),
        copy_(html),
        scriptEnds_(html, TagName("/script")),
        objectEnds_(html, TagName("/object")),
        styleEnds_(html, TagName("/style")) {}

  void Clean(CStringW& out) {
    TagSpan span;
    std::size_t pos = 0;
    while (FindTag(html_, pos, span)) {
      CleanText(pos, span.start);
      pos = CleanSpan(span);
    }
    CleanText(pos, html_.size());
    copy_.Store(out);
  }

 private:
  void CleanText(std::size_t from, std::size_t to) {
    if (from < styleEnd_) copy_.Disarm(from, std::min(to, styleEnd_));
  }

  // Gives where to go on.
  std::size_t CleanSpan(const TagSpan& span) {
    switch (TagNameOf(html_, span)) {
      case TagName("base"):
      case TagName("embed"):
      case TagName("applet"):
      case TagName("link"):
        copy_.Delete(span.start, span.end);
        return span.end;
      case TagName("script"):
        return DeleteElement(span, scriptEnds_);
      case TagName("object"):
        return DeleteElement(span, objectEnds_);
      case TagName("a"):
        CleanLink(span);
        return span.end;
      case TagName("!doctype"):
        ReplaceDocumentType(html_, span, copy_);
        return span.end;
      case TagName("style"):
        if (const TagSpan* const close = styleEnds_.Behind(span.end)) {
          styleEnd_ = close->start;
          copy_.Disarm(span.start, span.end);
        }
        return span.end;
      default:
        copy_.Disarm(span.start, span.end);
        return span.end;
    }
  }

  std::size_t DeleteElement(const TagSpan& span, ClosingTags& ends) {
    const TagSpan* const close = ends.Behind(span.end);
    const std::size_t end = close == nullptr ? span.end : close->end;
    copy_.Delete(span.start, end);
    return end;
  }

  void CleanLink(const TagSpan& span) {
    const std::u16string_view tag = TagText(html_, span);
    if (span.start >= styleEnd_)
      return copy_.Replace(span.start, span.start + tag.size(), CleanedLink(tag));
    SourceCopy disarmed(tag);
    disarmed.Disarm(0, tag.size());
    copy_.Replace(span.start, span.start + tag.size(), CleanedLink(disarmed.Take()));
  }

  // The tag of a link, cleaned; valid until the next call.
  const std::u16string& CleanedLink(std::u16string_view tag) {
    SourceCopy copy(tag);
    std::u16string_view address;
    bool hasAddress = false;
    bool isExternal = false;
    AttributeWalk walk(tag);
    for (TagAttribute attribute; walk.Next(attribute);) {
      if (EqualsNoCase(attribute.name, "title")) copy.Delete(attribute.start, attribute.end);
      if (!attribute.hasValue || !EqualsNoCase(attribute.name, "href")) continue;
      hasAddress = true;
      address = attribute.source;
      if (StartsWithNoCase(attribute.value, "javascript:")) {
        address = u"\"#\"";
        copy.Replace(attribute.sourceStart, attribute.end, address);
      } else if (!attribute.value.starts_with(u'#')) {
        isExternal = true;
      }
    }
    if (hasAddress) {
      copy.Insert(tag.size(), u" title=");
      copy.Insert(tag.size(), address);
    }
    link_ = copy.Take();
    // The targets are looked for in the tag as it is now: an address with half a pair of quotes
    // may have got its other half.
    if (isExternal && RetargetTag(link_, retargeted_)) link_.swap(retargeted_);
    return link_;
  }

  std::u16string_view html_;
  SourceCopy copy_;
  ClosingTags scriptEnds_, objectEnds_, styleEnds_;
  std::size_t styleEnd_ = 0;  // up to where text belongs to a style element
  std::u16string link_, retargeted_;
};

}  // namespace

void ToSafeHtmlW(CStringW& html) {
  Cleaner(html).Clean(html);
}

}  // namespace lumr
