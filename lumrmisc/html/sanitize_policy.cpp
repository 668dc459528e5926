#include "lumrmisc/html/sanitize_policy_internal.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "lumrmisc/html/nametable_internal.h"

namespace lumr {
namespace {

using enum ElementId;
using enum Treatment;
using Kind = AttributeKind;
using Reason = SafeHtmlReason;

constexpr std::uint16_t kBlock = kClosesP | kSpecial;
constexpr std::uint16_t kTableStructure = kTablePart | kSpecial;

// In the order of ElementId.
constexpr auto kRows = std::to_array<ElementRow>({
    {u"a", kA, kFormatting},
    {u"abbr", kAbbr, 0},
    {u"address", kAddress, kBlock | kSplits},
    {u"article", kArticle, kBlock},
    {u"aside", kAside, kBlock},
    {u"b", kB, kFormatting},
    {u"bdi", kBdi, 0},
    {u"bdo", kBdo, 0},
    {u"big", kBig, kFormatting},
    {u"blockquote", kBlockquote, kBlock},
    {u"div", kBody, kBlock | kBoundary},
    {u"br", kBr, kVoid},
    {u"caption", kCaption, kTableStructure | kBoundary},
    {u"center", kCenter, kBlock | kSplits},
    {u"cite", kCite, 0},
    {u"code", kCode, kFormatting},
    {u"col", kCol, kTableStructure | kVoid},
    {u"colgroup", kColgroup, kTableStructure},
    {u"dd", kDd, kBlock | kImpliedEnd},
    {u"del", kDel, 0},
    {u"dfn", kDfn, 0},
    {u"div", kDiv, kBlock | kSplits},
    {u"dl", kDl, kBlock},
    {u"dt", kDt, kBlock | kImpliedEnd},
    {u"em", kEm, kFormatting},
    {u"figcaption", kFigcaption, kBlock},
    {u"figure", kFigure, kBlock},
    {u"font", kFont, kFormatting},
    {u"footer", kFooter, kBlock},
    {u"h1", kH1, kBlock | kHeading | kSplits},
    {u"h2", kH2, kBlock | kHeading | kSplits},
    {u"h3", kH3, kBlock | kHeading | kSplits},
    {u"h4", kH4, kBlock | kHeading | kSplits},
    {u"h5", kH5, kBlock | kHeading | kSplits},
    {u"h6", kH6, kBlock | kHeading | kSplits},
    {u"header", kHeader, kBlock},
    {u"hr", kHr, kBlock | kVoid},
    {u"i", kI, kFormatting},
    {u"img", kImg, kVoid},
    {u"ins", kIns, 0},
    {u"kbd", kKbd, 0},
    {u"li", kLi, kBlock | kImpliedEnd},
    {u"main", kMain, kBlock},
    {u"mark", kMark, 0},
    {u"nav", kNav, kBlock},
    {u"nobr", kNobr, kFormatting},
    {u"ol", kOl, kBlock},
    {u"p", kP, kBlock | kImpliedEnd | kSplits},
    {u"pre", kPre, kBlock},
    {u"q", kQ, 0},
    {u"rp", kRp, kImpliedEnd},
    {u"rt", kRt, kImpliedEnd},
    {u"ruby", kRuby, 0},
    {u"s", kS, kFormatting},
    {u"samp", kSamp, 0},
    {u"section", kSection, kBlock},
    {u"small", kSmall, kFormatting},
    {u"span", kSpan, 0},
    {u"strike", kStrike, kFormatting},
    {u"strong", kStrong, kFormatting},
    {u"sub", kSub, 0},
    {u"sup", kSup, 0},
    {u"table", kTable, kBlock},
    {u"tbody", kTbody, kTableStructure},
    {u"td", kTd, kTableStructure | kBoundary},
    {u"tfoot", kTfoot, kTableStructure},
    {u"th", kTh, kTableStructure | kBoundary},
    {u"thead", kThead, kTableStructure},
    {u"time", kTime, 0},
    {u"tr", kTr, kTableStructure},
    {u"tt", kTt, kFormatting},
    {u"u", kU, kFormatting},
    {u"ul", kUl, kBlock},
    {u"var", kVar, 0},
    {u"wbr", kWbr, kVoid},
});
static_assert(kRows.size() == kElementCount);
static_assert([] {
  for (std::size_t i = 0; i < kElementCount; ++i) {
    if (IndexOf(kRows[i].id) != i) return false;
  }
  return true;
}());

// Elements that go or are written as another one. Those that are written under their own name are
// added below.
constexpr SourceRow kOtherSources[] = {
    {u"html", kIgnore},
    {u"head", kIgnore},
    {u"body", kPageBody},
    {u"title", kSkipRaw, kCount, Reason::kMetadata, HtmlContent::kRcData},
    {u"meta", kDrop, kCount, Reason::kMetadata},
    {u"base", kDrop, kCount, Reason::kMetadata},
    {u"basefont", kDrop, kCount, Reason::kMetadata},
    {u"bgsound", kDrop, kCount, Reason::kObject},
    {u"link", kDrop, kCount, Reason::kMetadata},
    {u"script", kSkipRaw, kCount, Reason::kScript, HtmlContent::kScript},
    {u"style", kSkipRaw, kCount, Reason::kStyleSheet, HtmlContent::kRawText},
    {u"template", kSkip, kCount, Reason::kTemplate},
    {u"svg", kForeign, kCount, Reason::kForeign},
    {u"math", kForeign, kCount, Reason::kForeign},
    {u"iframe", kSkipRaw, kCount, Reason::kFrame, HtmlContent::kRawText},
    // What stands in for frames and scripts is what a reader of mail sees.
    {u"frame", kDrop, kCount, Reason::kFrame},
    {u"frameset", kUnwrap, kCount, Reason::kFrame},
    {u"noframes", kUnwrap, kCount, Reason::kFrame},
    {u"noembed", kUnwrap, kCount, Reason::kObject},
    {u"noscript", kUnwrap, kCount, Reason::kScript},
    {u"object", kUnwrap, kCount, Reason::kObject},
    {u"applet", kUnwrap, kCount, Reason::kObject},
    {u"audio", kUnwrap, kCount, Reason::kObject},
    {u"video", kUnwrap, kCount, Reason::kObject},
    {u"canvas", kUnwrap, kCount, Reason::kObject},
    {u"picture", kUnwrap, kCount, Reason::kObject},
    {u"map", kUnwrap, kCount, Reason::kObject},
    {u"area", kDrop, kCount, Reason::kObject},
    {u"embed", kDrop, kCount, Reason::kObject},
    {u"param", kDrop, kCount, Reason::kObject},
    {u"source", kDrop, kCount, Reason::kObject},
    {u"track", kDrop, kCount, Reason::kObject},
    {u"input", kDrop, kCount, Reason::kForm},
    {u"keygen", kDrop, kCount, Reason::kForm},
    {u"button", kUnwrap, kCount, Reason::kForm},
    {u"label", kUnwrap, kCount, Reason::kForm},
    {u"select", kUnwrap, kCount, Reason::kForm},
    {u"optgroup", kUnwrap, kCount, Reason::kForm},
    {u"option", kUnwrap, kCount, Reason::kForm},
    {u"datalist", kUnwrap, kCount, Reason::kForm},
    {u"output", kUnwrap, kCount, Reason::kForm},
    {u"progress", kUnwrap, kCount, Reason::kForm},
    {u"meter", kUnwrap, kCount, Reason::kForm},
    {u"textarea", kUnwrap, kCount, Reason::kForm, HtmlContent::kRcData},
    // Lines of their own stay lines of their own.
    {u"form", kKeep, kDiv, Reason::kForm},
    {u"fieldset", kKeep, kDiv, Reason::kForm},
    {u"legend", kKeep, kDiv, Reason::kForm},
    {u"details", kKeep, kDiv},
    {u"summary", kKeep, kDiv},
    {u"dialog", kKeep, kDiv},
    {u"hgroup", kKeep, kDiv},
    {u"search", kKeep, kDiv},
    {u"marquee", kKeep, kDiv},
    {u"dir", kKeep, kUl},
    {u"menu", kKeep, kUl},
    {u"acronym", kKeep, kAbbr},
    {u"image", kKeep, kImg},
    {u"listing", kKeep, kPre},
    {u"xmp", kKeep, kPre, Reason::kUnknownElement, HtmlContent::kRawText},
    {u"plaintext", kKeep, kPre, Reason::kUnknownElement, HtmlContent::kPlainText},
};

constexpr auto kSources = [] {
  std::array<SourceRow, std::size(kOtherSources) + kElementCount - 1> rows{};
  std::size_t count = 0;
  for (const SourceRow& row : kOtherSources) rows[count++] = row;
  for (const ElementRow& row : kRows) {
    if (row.id != kBody) rows[count++] = {row.name, kKeep, row.id};
  }
  return rows;
}();
constexpr NameTable kSourceTable(kSources);

// The list of the standard, "font" without the condition on its attributes.
constexpr auto kBreakOuts = std::to_array<NameRow>(
    {{u"b"},    {u"big"},    {u"blockquote"}, {u"body"}, {u"br"},      {u"center"}, {u"code"},
     {u"dd"},   {u"div"},    {u"dl"},         {u"dt"},   {u"em"},      {u"embed"},  {u"font"},
     {u"h1"},   {u"h2"},     {u"h3"},         {u"h4"},   {u"h5"},      {u"h6"},     {u"head"},
     {u"hr"},   {u"i"},      {u"img"},        {u"li"},   {u"listing"}, {u"menu"},   {u"meta"},
     {u"nobr"}, {u"ol"},     {u"p"},          {u"pre"},  {u"ruby"},    {u"s"},      {u"small"},
     {u"span"}, {u"strong"}, {u"strike"},     {u"sub"},  {u"sup"},     {u"table"},  {u"tt"},
     {u"u"},    {u"ul"},     {u"var"}});
constexpr NameTable kBreakOutTable(kBreakOuts);
constexpr auto kIntegrationPoints = std::to_array<NameRow>({{u"foreignobject"},
                                                            {u"desc"},
                                                            {u"title"},
                                                            {u"annotation-xml"},
                                                            {u"mi"},
                                                            {u"mo"},
                                                            {u"mn"},
                                                            {u"ms"},
                                                            {u"mtext"}});
constexpr NameTable kIntegrationPointTable(kIntegrationPoints);

constexpr ElementSet kCells = {kTd, kTh};
constexpr ElementSet kTableParts = {kTable, kCaption, kColgroup, kCol, kTbody,
                                    kThead, kTfoot,   kTr,       kTd,  kTh};

constexpr auto kAttributes = std::to_array<AttributeRow>({
    {u"abbr", Kind::kText, kCells},
    {u"align", Kind::kKeyword},
    {u"alt", Kind::kText, {kImg}},
    {u"background", Kind::kImageAddress, kTableParts},
    {u"bgcolor", Kind::kColor, kTableParts},
    {u"border", Kind::kLength, {kTable, kImg}},
    {u"bordercolor", Kind::kColor, kTableParts},
    {u"cellpadding", Kind::kLength, {kTable}},
    {u"cellspacing", Kind::kLength, {kTable}},
    {u"clear", Kind::kKeyword, {kBr}},
    {u"color", Kind::kColor, {kFont, kHr}},
    {u"cols", Kind::kLength, {kTable}},
    {u"colspan", Kind::kLength, kCells},
    {u"compact", Kind::kFlag, {kUl, kOl, kDl}},
    {u"datetime", Kind::kText, {kTime, kIns, kDel}},
    {u"dir", Kind::kKeyword},
    {u"face", Kind::kText, {kFont}},
    {u"frame", Kind::kKeyword, {kTable}},
    {u"height", Kind::kLength, {kImg, kTable, kTr, kTd, kTh, kThead, kTbody, kTfoot}},
    {u"href", Kind::kLinkAddress, {kA}},
    {u"hspace", Kind::kLength, {kImg, kTable}},
    {u"id", Kind::kName},
    {u"lang", Kind::kLanguage},
    {u"name", Kind::kName, {kA}},
    {u"noshade", Kind::kFlag, {kHr}},
    {u"nowrap", Kind::kFlag, kCells},
    {u"reversed", Kind::kFlag, {kOl}},
    {u"rowspan", Kind::kLength, kCells},
    {u"rules", Kind::kKeyword, {kTable}},
    {u"scope", Kind::kKeyword, {kTh, kTd}},
    {u"size", Kind::kLength, {kFont, kHr}},
    {u"span", Kind::kLength, {kCol, kColgroup}},
    {u"src", Kind::kImageAddress, {kImg}},
    {u"start", Kind::kLength, {kOl}},
    {u"style", Kind::kStyle},
    {u"summary", Kind::kText, {kTable}},
    {u"title", Kind::kText},
    {u"type", Kind::kListStyle, {kOl, kUl, kLi, kBlockquote}},
    {u"valign", Kind::kKeyword, kTableParts},
    {u"value", Kind::kLength, {kLi}},
    {u"vspace", Kind::kLength, {kImg, kTable}},
    {u"width", Kind::kLength, {kImg, kTable, kCol, kColgroup, kTd, kTh, kHr, kPre}},
});
static_assert(kAttributes.size() <= kMostAttributeRows);
constexpr NameTable kAttributeTable(kAttributes);

// A sign, up to four digits with a fraction, and a unit that tables and rulers know. Four digits,
// so that no span or width asks the browser for a table of millions of cells.
bool IsLength(std::u16string_view value) {
  constexpr std::size_t kMostDigits = 4;
  if (value.starts_with(u'+') || value.starts_with(u'-')) value.remove_prefix(1);
  std::size_t digits = 0;
  while (digits < value.size() && IsAsciiDigit(value[digits])) ++digits;
  if (digits == 0 || digits > kMostDigits) return value == u"*";
  value.remove_prefix(digits);
  if (value.starts_with(u'.')) {
    value.remove_prefix(1);
    while (!value.empty() && IsAsciiDigit(value.front())) value.remove_prefix(1);
  }
  return value.empty() || value == u"%" || value == u"*" || EqualsNoCase(value, "px");
}

template <class Predicate>
bool IsWord(std::u16string_view value, Predicate isMember) {
  constexpr std::size_t kLongestWord = 40;
  return !value.empty() && value.size() <= kLongestWord &&
         std::all_of(value.begin(), value.end(), isMember);
}

}  // namespace

constinit const std::array<ElementRow, kElementCount> kElements = kRows;

const SourceRow* FindSourceElement(std::u16string_view name) {
  return kSourceTable.Find(name);
}

bool BreaksOutOfForeign(std::u16string_view name) {
  return kBreakOutTable.Find(name) != nullptr;
}

bool IsForeignIntegrationPoint(std::u16string_view name) {
  return kIntegrationPointTable.Find(name) != nullptr;
}

const AttributeRow* FindAttribute(std::u16string_view name) {
  return kAttributeTable.Find(name);
}

std::size_t AttributeIndex(const AttributeRow& row) {
  return static_cast<std::size_t>(&row - kAttributes.data());
}

bool IsAttributeValue(AttributeKind kind, std::u16string_view value) {
  const auto isLetterOrHyphen = [](char16_t c) { return IsAsciiLetter(c) || c == u'-'; };
  const auto isLanguage = [&](char16_t c) { return isLetterOrHyphen(c) || IsAsciiDigit(c); };
  switch (kind) {
    case Kind::kLength:
      return IsLength(value);
    case Kind::kKeyword:
      return IsWord(value, isLetterOrHyphen);
    case Kind::kListStyle:
      return value == u"1" || IsWord(value, isLetterOrHyphen);
    case Kind::kLanguage:
      return IsWord(value, isLanguage);
    case Kind::kColor:
      return IsWord(value.starts_with(u'#') ? value.substr(1) : value,
                    [](char16_t c) { return IsAsciiLetter(c) || IsAsciiDigit(c); });
    default:
      return true;
  }
}

}  // namespace lumr
