// What received HTML may keep: the elements, their content model and their attributes, as tables.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "lumrmisc/html/htmltokenizer_internal.h"
#include "lumrmisc/html/sanitize.h"

namespace lumr {

// The elements that are written. kBody is the division that stands for the source's body.
enum class ElementId : std::uint8_t {
  kA,
  kAbbr,
  kAddress,
  kArticle,
  kAside,
  kB,
  kBdi,
  kBdo,
  kBig,
  kBlockquote,
  kBody,
  kBr,
  kCaption,
  kCenter,
  kCite,
  kCode,
  kCol,
  kColgroup,
  kDd,
  kDel,
  kDfn,
  kDiv,
  kDl,
  kDt,
  kEm,
  kFigcaption,
  kFigure,
  kFont,
  kFooter,
  kH1,
  kH2,
  kH3,
  kH4,
  kH5,
  kH6,
  kHeader,
  kHr,
  kI,
  kImg,
  kIns,
  kKbd,
  kLi,
  kMain,
  kMark,
  kNav,
  kNobr,
  kOl,
  kP,
  kPre,
  kQ,
  kRp,
  kRt,
  kRuby,
  kS,
  kSamp,
  kSection,
  kSmall,
  kSpan,
  kStrike,
  kStrong,
  kSub,
  kSup,
  kTable,
  kTbody,
  kTd,
  kTfoot,
  kTh,
  kThead,
  kTime,
  kTr,
  kTt,
  kU,
  kUl,
  kVar,
  kWbr,
  kCount
};
inline constexpr std::size_t kElementCount = static_cast<std::size_t>(ElementId::kCount);

constexpr std::size_t IndexOf(ElementId id) {
  return static_cast<std::size_t>(id);
}

// What the standard's rules for building the tree ask of an element.
enum ElementTrait : std::uint16_t {
  kClosesP = 0x0001,     // its start tag ends an open paragraph
  kFormatting = 0x0002,  // goes on behind an end tag that closed it by the way
  kSpecial = 0x0004,     // end tags of plain inline elements do not reach over it
  kVoid = 0x0008,        // has neither content nor end tag
  kImpliedEnd = 0x0010,  // ends where its neighbour begins
  kHeading = 0x0020,
  kTablePart = 0x0040,  // stands only in its place in a table
  kBoundary = 0x0080,   // nothing inside reaches anything outside: cells, captions
  kSplits = 0x0100,     // may be cut in two where a formatting element around it ends
};

struct ElementRow {
  std::u16string_view name;  // as it is written
  ElementId id;
  std::uint16_t traits;
};
extern const std::array<ElementRow, kElementCount> kElements;  // in the order of ElementId
inline const ElementRow& RowOf(ElementId id) {
  return kElements[IndexOf(id)];
}

// What happens to a start tag of the source.
enum class Treatment : std::uint8_t {
  kKeep,     // written as the element `as`
  kUnwrap,   // the tag goes, the content stays
  kDrop,     // the same for a tag that never has content
  kSkip,     // goes with its content, elements inside it counted
  kSkipRaw,  // goes with its content, which is raw text
  kForeign,  // svg and math: goes with its content, which has rules of its own
  kIgnore,   // the frame of a page; of no interest
  kPageBody,
};

struct SourceRow {
  std::u16string_view name;
  Treatment treatment;
  ElementId as = ElementId::kCount;
  SafeHtmlReason reason = SafeHtmlReason::kUnknownElement;
  HtmlContent content = HtmlContent::kMarkup;
};
// Null for an element that the table does not know.
const SourceRow* FindSourceElement(std::u16string_view name);

// Whether a start tag of this element ends svg or math content that it stands in.
bool BreaksOutOfForeign(std::u16string_view name);
// Whether content of this element inside svg or math is HTML again.
bool IsForeignIntegrationPoint(std::u16string_view name);

enum class AttributeKind : std::uint8_t {
  kText,
  kLength,     // a number, a percentage, or a number of shares ("2*"); font sizes have signs
  kKeyword,    // letters and hyphens, written in lower case
  kListStyle,  // the same, case kept: "a" and "A" number differently
  kColor,
  kLanguage,
  kFlag,  // there or not there
  kName,  // an id or anchor name
  kStyle,
  kLinkAddress,
  kImageAddress,
};

// A set of elements.
class ElementSet {
 public:
  constexpr ElementSet() = default;  // all of them
  constexpr ElementSet(std::initializer_list<ElementId> ids) {
    bits_[0] = bits_[1] = 0;
    for (const ElementId id : ids) bits_[IndexOf(id) / 64] |= std::uint64_t{1} << IndexOf(id) % 64;
  }
  constexpr bool Has(ElementId id) const {
    return (bits_[IndexOf(id) / 64] >> IndexOf(id) % 64 & 1) != 0;
  }

 private:
  std::uint64_t bits_[2] = {~std::uint64_t{0}, ~std::uint64_t{0}};
};

struct AttributeRow {
  std::u16string_view name;
  AttributeKind kind;
  ElementSet elements = {};
};
// Null for an attribute that no element may have.
const AttributeRow* FindAttribute(std::u16string_view name);
// The place of a row in the table, below kMostAttributeRows.
std::size_t AttributeIndex(const AttributeRow& row);
inline constexpr std::size_t kMostAttributeRows = 64;

// Whether a decoded value has the form of its kind; kText, kName, kStyle and addresses have rules
// elsewhere.
bool IsAttributeValue(AttributeKind kind, std::u16string_view value);

}  // namespace lumr
