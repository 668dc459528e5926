#include "lumrmisc/html/sanitize.h"

#include <algorithm>
#include <utility>

#include "lumrmisc/html/csspolicy_internal.h"
#include "lumrmisc/html/htmlescape_internal.h"
#include "lumrmisc/html/linkhost_internal.h"
#include "lumrmisc/html/sanitize_policy_internal.h"
#include "lumrmisc/html/treebalance_internal.h"
#include "lumrmisc/html/unitscan_internal.h"
#include "lumrmisc/html/urlpolicy_internal.h"

namespace lumr {
namespace {

using Reason = SafeHtmlReason;

constexpr std::size_t kLongestName = 64;
constexpr std::size_t kLongestValue = 2048;
constexpr std::size_t kLongestLinkText = 1024;

constexpr std::u16string_view kPageStart =
    u"<!DOCTYPE html><html><head><meta charset=\"utf-8\">"
    u"<meta http-equiv=\"x-dns-prefetch-control\" content=\"off\">"
    u"<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; ";
constexpr std::u16string_view kImagesOfMail = u"img-src data: cid:";
constexpr std::u16string_view kImagesOfAll = u"img-src data: cid: http: https:";
constexpr std::u16string_view kPageBody = u"; style-src 'unsafe-inline'\"></head><body>";
constexpr std::u16string_view kPageEnd = u"</body></html>";

// The report, where one is wanted.
class Reporter {
 public:
  Reporter(std::u16string_view source, SafeHtmlReport* report) : source_(source), report_(report) {
    if (report_ != nullptr) *report_ = {};
  }
  bool IsWanted() const { return report_ != nullptr; }

  void Removed(Reason reason, std::size_t offset, std::u16string_view name = {},
               std::u16string_view value = {}) {
    if (report_ == nullptr || report_->removalCount++ >= SafeHtmlReport::kMostEntries) return;
    report_->removals.push_back({reason, CStringW(name.substr(0, kLongestName)),
                                 CStringW(value.substr(0, kLongestValue)), offset});
  }
  void RemovedAttribute(Reason reason, const HtmlAttribute& attribute,
                        std::u16string_view value = {}) {
    Removed(reason, static_cast<std::size_t>(attribute.name.data() - source_.data()),
            attribute.name, value);
  }

  // The number of the link, for LinkText.
  std::size_t Link(const LinkAddress& link, std::size_t offset) {
    if (report_ == nullptr || report_->linkCount++ >= SafeHtmlReport::kMostEntries) {
      return TreeWriter::kNoLink;
    }
    report_->links.push_back(
        {{}, link.address, link.host, offset, false, link.hadUserInfo, link.mixesScripts});
    return report_->links.size() - 1;
  }

  void LinkText(std::size_t number, std::u16string_view text) {
    if (number == TreeWriter::kNoLink) return;
    CStringW& out = report_->links[number].text;
    for (std::size_t i = 0; i < text.size() && out.size() < kLongestLinkText; ++i) {
      if (!IsHtmlSpace(text[i])) {
        out += text[i];
      } else if (!out.empty() && out.back() != u' ') {
        out += u' ';
      }
    }
  }

  void Finish() {
    if (report_ == nullptr) return;
    for (SafeHtmlLink& link : report_->links) {
      if (link.text.ends_with(u' ')) link.text.pop_back();
      link.namesAnotherHost = !link.host.empty() && NamesAnotherHost(link.text, link.host);
    }
  }

 private:
  std::u16string_view source_;
  SafeHtmlReport* report_;
};

class Sanitizer {
 public:
  Sanitizer(std::u16string_view source, const SafeHtmlOptions& options, SafeHtmlReport* report)
      : options_(options),
        reporter_(source, report),
        tokenizer_(source),
        tree_(out_, source.size() * 2 + kLeastRepeats) {
    out_.reserve(source.size() + source.size() / 2 + kLeastRepeats);
  }

  CStringW Run();

 private:
  static constexpr std::size_t kLeastRepeats = 4096;

  // Content that goes: of which element, and how many of its kind are open.
  struct Skipped {
    const SourceRow* row = nullptr;
    std::size_t depth = 0;
    std::size_t htmlDepth = 0;  // elements inside svg and math whose content is HTML
    bool IsForeign() const { return row->treatment == Treatment::kForeign; }
  };

  void Handle();
  bool SkipToken();
  bool SkipStartTag();
  bool SkipEndTag();
  void StartSkipping(const SourceRow& row);
  void StopSkipping();

  void StartTag();
  void EndTag();
  void Text();
  void Write(ElementId id);
  void OpenBody();

  std::size_t WriteAttributes(ElementId id);
  void WriteAttribute(ElementId id, const AttributeRow& row, const HtmlAttribute& attribute);
  void WriteImageAddress(const AttributeRow& row, const HtmlAttribute& attribute,
                         std::u16string_view value);
  void WriteStyle(const HtmlAttribute* attribute, std::u16string_view value);
  std::size_t WriteLink(const HtmlAttribute& attribute);
  void WriteNamed(std::u16string_view name, std::u16string_view value);

  const SafeHtmlOptions& options_;
  Reporter reporter_;
  HtmlTokenizer tokenizer_;
  HtmlToken token_;
  CStringW out_;
  TreeWriter tree_;
  Skipped skipped_;
  bool hadBody_ = false;
  CStringW scratch_;
  CStringW styleScratch_;
};

CStringW Sanitizer::Run() {
  while (tokenizer_.Next(token_)) {
    if (skipped_.row == nullptr || !SkipToken()) Handle();
  }
  tree_.CloseAll();
  reporter_.Finish();
  return std::move(out_);
}

void Sanitizer::Handle() {
  switch (token_.kind) {
    case HtmlToken::kText:
      Text();
      break;
    case HtmlToken::kStartTag:
      StartTag();
      break;
    case HtmlToken::kEndTag:
      EndTag();
      break;
    case HtmlToken::kComment:
      reporter_.Removed(Reason::kComment, token_.begin);
      break;
    case HtmlToken::kUnfinishedTag:
      reporter_.Removed(Reason::kUnfinishedTag, token_.begin);
      break;
    case HtmlToken::kDocType:
      break;
  }
}

// ---- Content that goes ----

void Sanitizer::StartSkipping(const SourceRow& row) {
  if (row.treatment == Treatment::kForeign && token_.isSelfClosing) return;
  skipped_ = {&row, 1, 0};
  tokenizer_.AllowCData(row.treatment == Treatment::kForeign);
}

void Sanitizer::StopSkipping() {
  skipped_ = {};
  tokenizer_.AllowCData(false);
}

// False when the token ends the skipped content and is to be handled.
bool Sanitizer::SkipToken() {
  if (token_.kind == HtmlToken::kStartTag) return SkipStartTag();
  if (token_.kind == HtmlToken::kEndTag) return SkipEndTag();
  return true;
}

bool Sanitizer::SkipStartTag() {
  const bool isForeign = skipped_.IsForeign();
  const bool isHtml = !isForeign || skipped_.htmlDepth > 0;
  if (!isHtml && BreaksOutOfForeign(token_.name)) {
    StopSkipping();
    return false;
  }
  const SourceRow* const row = FindSourceElement(token_.name);
  const bool isEmpty = isForeign && token_.isSelfClosing;
  if (row == skipped_.row && !isEmpty) ++skipped_.depth;
  if (isHtml && row != nullptr && row->content != HtmlContent::kMarkup) {
    tokenizer_.SetContent(row->content, token_.name);
  }
  if (isForeign && !isEmpty && IsForeignIntegrationPoint(token_.name)) ++skipped_.htmlDepth;
  if (isForeign) tokenizer_.AllowCData(skipped_.htmlDepth == 0);
  return true;
}

bool Sanitizer::SkipEndTag() {
  const bool isForeign = skipped_.IsForeign();
  if (isForeign && skipped_.htmlDepth == 0 &&
      (EqualsNoCase(token_.name, "p") || EqualsNoCase(token_.name, "br"))) {
    StopSkipping();
    return false;
  }
  if (isForeign && skipped_.htmlDepth > 0 && IsForeignIntegrationPoint(token_.name)) {
    --skipped_.htmlDepth;
    tokenizer_.AllowCData(skipped_.htmlDepth == 0);
  }
  if (FindSourceElement(token_.name) == skipped_.row && --skipped_.depth == 0) StopSkipping();
  return true;
}

// ---- Content that stays ----

void Sanitizer::StartTag() {
  const SourceRow* const row = FindSourceElement(token_.name);
  if (row == nullptr) {
    reporter_.Removed(Reason::kUnknownElement, token_.begin, token_.name);
    return;
  }
  if (row->content != HtmlContent::kMarkup) tokenizer_.SetContent(row->content, token_.name);
  switch (row->treatment) {
    case Treatment::kKeep:
      if (row->name != RowOf(row->as).name) {
        reporter_.Removed(row->reason, token_.begin, token_.name);
      }
      Write(row->as);
      break;
    case Treatment::kPageBody:
      OpenBody();
      break;
    case Treatment::kIgnore:
      break;
    case Treatment::kSkip:
    case Treatment::kSkipRaw:
    case Treatment::kForeign:
      StartSkipping(*row);
      [[fallthrough]];
    default:
      reporter_.Removed(row->reason, token_.begin, token_.name);
  }
}

void Sanitizer::EndTag() {
  const SourceRow* const row = FindSourceElement(token_.name);
  if (row == nullptr || row->treatment != Treatment::kKeep) return;
  if (row->as == ElementId::kBr) {  // "</br>" is a break to every browser
    Write(ElementId::kBr);
  } else {
    tree_.End(row->as);
  }
}

void Sanitizer::Text() {
  tree_.Text(token_.text, token_.hasReferences);
  if (!reporter_.IsWanted()) return;
  const std::size_t link = tree_.CurrentLink();
  if (link == TreeWriter::kNoLink) return;
  reporter_.LinkText(link,
                     token_.hasReferences ? DecodeHtml(token_.text, false, scratch_) : token_.text);
}

void Sanitizer::Write(ElementId id) {
  const TreeWriter::Place place = tree_.Prepare(id);
  if (place != TreeWriter::kPlaced) {
    reporter_.Removed(place == TreeWriter::kTooDeep ? Reason::kTooDeep : Reason::kMisplaced,
                      token_.begin, token_.name);
    return;
  }
  const ElementRow& row = RowOf(id);
  const std::size_t begin = out_.size();
  out_ += u'<';
  out_ += row.name;
  const std::size_t link =
      token_.kind == HtmlToken::kStartTag ? WriteAttributes(id) : TreeWriter::kNoLink;
  out_ += u'>';
  if ((row.traits & kVoid) == 0) tree_.Opened(id, begin, link);
}

// The colours and the language of the page become those of a division around all of it.
void Sanitizer::OpenBody() {
  if (hadBody_ || !out_.empty()) return;
  hadBody_ = true;
  CStringW style;
  const HtmlAttribute* ownStyle = nullptr;
  CStringW tag = u"<div";
  for (const HtmlAttribute& attribute : token_.attributes) {
    const CStringW value(DecodeHtml(attribute.value, true, scratch_));
    const bool isBack = EqualsNoCase(attribute.name, "bgcolor");
    if (isBack || EqualsNoCase(attribute.name, "text")) {
      constexpr std::size_t kHexColor = 6;
      const bool isBare = value.size() == kHexColor && !value.starts_with(u'#') &&
                          value.find_first_not_of(u"0123456789abcdefABCDEF") == CStringW::npos;
      ((style += isBack ? u"background-color:" : u"color:") += isBare ? u"#" : u"") += value;
      style += u';';
    } else if (EqualsNoCase(attribute.name, "style") && ownStyle == nullptr) {
      ownStyle = &attribute;
    } else if (StartsWithNoCase(attribute.name, "on")) {
      reporter_.RemovedAttribute(Reason::kEventHandler, attribute);
    }
  }
  if (ownStyle != nullptr) style += DecodeHtml(ownStyle->value, true, scratch_);
  if (style.empty()) return;
  out_ = tag;
  WriteStyle(ownStyle, style);
  if (out_ == tag) {
    out_.clear();
    return;
  }
  out_ += u'>';
  tree_.Opened(ElementId::kBody, 0, TreeWriter::kNoLink);
}

// ---- Attributes ----

void Sanitizer::WriteNamed(std::u16string_view name, std::u16string_view value) {
  out_ += u' ';
  out_ += name;
  out_ += u"=\"";
  AppendHtmlAttribute(value, out_);
  out_ += u'"';
}

// Gives the number of the link, where the element is one.
std::size_t Sanitizer::WriteAttributes(ElementId id) {
  std::uint64_t seen = 0;
  const HtmlAttribute* href = nullptr;
  for (const HtmlAttribute& attribute : token_.attributes) {
    const AttributeRow* const row = FindAttribute(attribute.name);
    const bool isAllowed = row != nullptr && row->elements.Has(id);
    const std::uint64_t bit = isAllowed ? std::uint64_t{1} << AttributeIndex(*row) : 0;
    // A link has the title and relation that it is given below.
    const bool isOwn = id == ElementId::kA && (EqualsNoCase(attribute.name, "rel") ||
                                               EqualsNoCase(attribute.name, "title"));
    if (isOwn) continue;
    if (!isAllowed || (seen & bit) != 0) {
      reporter_.RemovedAttribute(
          StartsWithNoCase(attribute.name, "on") ? Reason::kEventHandler : Reason::kAttribute,
          attribute);
      continue;
    }
    seen |= bit;
    if (row->kind == AttributeKind::kLinkAddress) {
      href = &attribute;
    } else {
      WriteAttribute(id, *row, attribute);
    }
  }
  if (token_.hasMoreAttributes) reporter_.Removed(Reason::kAttribute, token_.begin, token_.name);
  return href == nullptr ? TreeWriter::kNoLink : WriteLink(*href);
}

void Sanitizer::WriteAttribute(ElementId id, const AttributeRow& row,
                               const HtmlAttribute& attribute) {
  const std::u16string_view value = DecodeHtml(attribute.value, true, scratch_);
  switch (row.kind) {
    case AttributeKind::kText:
      WriteNamed(row.name, value);
      if (id == ElementId::kImg && reporter_.IsWanted() && row.name == u"alt") {
        reporter_.LinkText(tree_.CurrentLink(), value);
      }
      return;
    case AttributeKind::kStyle:
      WriteStyle(&attribute, value);
      return;
    case AttributeKind::kImageAddress:
      WriteImageAddress(row, attribute, value);
      return;
    case AttributeKind::kFlag:
      WriteNamed(row.name, {});
      return;
    case AttributeKind::kName: {
      const CStringW name = SafeName(TrimMarkupSpace(value));
      if (!name.empty()) {
        WriteNamed(row.name, name);
      } else {
        reporter_.RemovedAttribute(Reason::kAttribute, attribute);
      }
      return;
    }
    default:
      break;
  }
  const std::u16string_view word = TrimMarkupSpace(value);
  if (!IsAttributeValue(row.kind, word)) {
    reporter_.RemovedAttribute(Reason::kAttribute, attribute);
    return;
  }
  const std::size_t begin = out_.size();
  WriteNamed(row.name, word);
  if (row.kind == AttributeKind::kKeyword) {
    for (std::size_t i = begin; i < out_.size(); ++i) out_[i] = UnitAsciiLower(out_[i]);
  }
}

void Sanitizer::WriteStyle(const HtmlAttribute* attribute, std::u16string_view value) {
  styleScratch_.clear();
  if (AppendSafeStyle(value, styleScratch_) > 0 && attribute != nullptr) {
    reporter_.RemovedAttribute(Reason::kStyleDeclaration, *attribute);
  }
  if (!styleScratch_.empty()) WriteNamed(u"style", styleScratch_);
}

void Sanitizer::WriteImageAddress(const AttributeRow& row, const HtmlAttribute& attribute,
                                  std::u16string_view value) {
  const ImageAddress image = ReadImageAddress(value, options_);
  if (image.address.empty()) {
    reporter_.RemovedAttribute(image.reason, attribute, value);
  } else {
    WriteNamed(row.name, image.address);
  }
}

std::size_t Sanitizer::WriteLink(const HtmlAttribute& attribute) {
  const std::u16string_view value = DecodeHtml(attribute.value, true, scratch_);
  const LinkAddress link = ReadLinkAddress(value);
  if (link.address.empty()) {
    reporter_.RemovedAttribute(link.isScript ? Reason::kScript : Reason::kAddress, attribute,
                               value);
    return TreeWriter::kNoLink;
  }
  if (link.hadUserInfo) reporter_.RemovedAttribute(Reason::kUserInfo, attribute, value);
  if (link.lostFields) reporter_.RemovedAttribute(Reason::kAddress, attribute, value);
  WriteNamed(u"href", link.address);
  WriteNamed(u"title", link.title);
  out_ += u" rel=\"noopener noreferrer\"";
  return reporter_.Link(link, token_.begin);
}

}  // namespace

void ToSafeHtmlW2(CStringW& html, const SafeHtmlOptions& options, SafeHtmlReport* report) {
  CStringW content = Sanitizer(html, options, report).Run();
  if (!options.wholePage) {
    html = std::move(content);
    return;
  }
  const std::u16string_view images = options.allowRemoteImages ? kImagesOfAll : kImagesOfMail;
  html.clear();
  html.reserve(kPageStart.size() + images.size() + kPageBody.size() + content.size() +
               kPageEnd.size());
  ((((html += kPageStart) += images) += kPageBody) += content) += kPageEnd;
}

}  // namespace lumr
