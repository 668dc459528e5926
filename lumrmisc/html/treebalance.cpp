#include "lumrmisc/html/treebalance_internal.h"

#include <algorithm>

#include "lumrmisc/html/htmlescape_internal.h"

namespace lumr {
namespace {

using enum ElementId;

// A table, its row group, row and cell must fit in below the greatest depth.
constexpr std::size_t kTableDepth = 4;

bool HasTrait(ElementId id, std::uint16_t traits) {
  return (RowOf(id).traits & traits) != 0;
}

bool IsRowGroup(ElementId id) {
  return id == kTbody || id == kThead || id == kTfoot;
}
bool IsCell(ElementId id) {
  return id == kTd || id == kTh;
}

bool IsBlank(std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), IsMarkupSpace);
}

}  // namespace

TreeWriter::TreeWriter(CStringW& out, std::size_t repeatBudget)
    : out_(out), repeatBudget_(repeatBudget) {
  stack_.reserve(kMostDepth);
}

// ---- Looking ----

bool TreeWriter::InTableStructure() const {
  if (stack_.empty()) return false;
  const ElementId id = stack_.back().id;
  return id == kTable || id == kTr || id == kColgroup || IsRowGroup(id);
}

std::size_t TreeWriter::PendingBase() const {
  for (auto element = stack_.rbegin(); element != stack_.rend(); ++element) {
    if (HasTrait(element->id, kBoundary)) return element->pendingBase;
  }
  return 0;
}

// The innermost matching element that has not ended, not looking beyond an element with one of
// the traits.
template <class Matches>
std::size_t TreeWriter::FindInScope(Matches matches, std::uint16_t boundaries) const {
  for (std::size_t i = stack_.size(); i-- > 0;) {
    if (!stack_[i].hasEnded && matches(stack_[i].id)) return i;
    if (stack_[i].id == kTable || HasTrait(stack_[i].id, boundaries)) return kNone;
  }
  return kNone;
}

std::size_t TreeWriter::FindInScope(ElementId id) const {
  if (openCount_[IndexOf(id)] == 0) return kNone;
  return FindInScope([id](ElementId other) { return other == id; }, kBoundary);
}

// The same, also when its end tag has come already.
std::size_t TreeWriter::FindOpen(ElementId id) const {
  if (openCount_[IndexOf(id)] == 0) return kNone;
  for (std::size_t i = stack_.size(); i-- > 0;) {
    if (stack_[i].id == id) return i;
    if (HasTrait(stack_[i].id, kBoundary)) return kNone;
  }
  return kNone;
}

std::size_t TreeWriter::FindTable() const {
  if (openCount_[IndexOf(kTable)] == 0) return kNone;
  for (std::size_t i = stack_.size(); i-- > 0;) {
    if (stack_[i].id == kTable) return i;
  }
  return kNone;
}

std::size_t TreeWriter::CurrentLink() const {
  if (openCount_[IndexOf(kA)] == 0) return kNoLink;
  for (auto element = stack_.rbegin(); element != stack_.rend(); ++element) {
    if (element->id == kA && !element->hasEnded) return element->link;
  }
  return kNoLink;
}

// ---- Closing ----

void TreeWriter::WriteEndTag(const Element& element) {
  const std::u16string_view name = RowOf(element.id).name;
  out_ += u"</";
  out_ += name;
  out_ += u'>';
  --openCount_[IndexOf(element.id)];
}

void TreeWriter::CloseDownTo(std::size_t size) {
  while (stack_.size() > size) {
    WriteEndTag(stack_.back());
    stack_.pop_back();
  }
  if (flattenedAt_ != kNone && size < flattenedAt_) {
    flattened_.fill(0);
    flattenedAt_ = kNone;
  }
}

// Ends the element at index and all inside it. Formatting inside goes on later, but not what was
// inside a cell.
void TreeWriter::PopTo(std::size_t index) {
  std::size_t cell = index;
  while (cell < stack_.size() && !HasTrait(stack_[cell].id, kBoundary)) ++cell;
  if (cell < stack_.size()) Forget(stack_[cell].pendingBase);
  for (std::size_t i = index + 1; i < cell; ++i) {
    if (HasTrait(stack_[i].id, kFormatting) && !stack_[i].hasEnded) Remember(stack_[i]);
  }
  CloseDownTo(index);
  ForgetBlocks();
  PopEnded();
}

// Formatting goes on at most three times over, as in browsers: "<p><big>" again and again is not
// to grow without end.
void TreeWriter::Remember(const Element& element) {
  constexpr std::ptrdiff_t kMostAlike = 3;
  const std::u16string_view text = out_;
  const auto tag = [&](const Element& e) { return text.substr(e.tagBegin, e.tagLength); };
  const auto alike = std::count_if(pending_.begin(), pending_.end(), [&](const Element& other) {
    return other.id == element.id && tag(other) == tag(element);
  });
  if (alike < kMostAlike) pending_.push_back(element);
}

void TreeWriter::PopEnded() {
  while (!stack_.empty() && stack_.back().hasEnded) {
    WriteEndTag(stack_.back());
    stack_.pop_back();
  }
}

void TreeWriter::Forget(std::size_t pending) {
  pending_.resize(std::min(pending, pending_.size()), Element{kA});
}

// Blocks that were cut in two go on only where they were cut.
void TreeWriter::ForgetBlocks() {
  if (pending_.empty()) return;
  const auto base = pending_.begin() + static_cast<std::ptrdiff_t>(PendingBase());
  pending_.erase(std::remove_if(base, pending_.end(),
                                [](const Element& e) { return !HasTrait(e.id, kFormatting); }),
                 pending_.end());
}

bool TreeWriter::ForgetLast(ElementId id) {
  if (pending_.empty()) return false;
  const std::size_t base = PendingBase();
  for (std::size_t i = pending_.size(); i-- > base;) {
    if (pending_[i].id != id) continue;
    pending_.erase(pending_.begin() + static_cast<std::ptrdiff_t>(i));
    return true;
  }
  return false;
}

void TreeWriter::CloseParagraph() {
  ForgetLast(kP);
  const std::size_t index = FindInScope(kP);
  if (index != kNone) PopTo(index);
}

// A list item ends the one before it in the same list, a definition the term before it.
void TreeWriter::CloseListItems(ElementId id) {
  for (std::size_t i = stack_.size(); i-- > 0;) {
    const ElementId other = stack_[i].id;
    if (id == kLi ? other == kLi : other == kDd || other == kDt) {
      PopTo(i);
      return;
    }
    if (HasTrait(other, kSpecial) && other != kAddress && other != kDiv && other != kP) return;
  }
}

void TreeWriter::CloseAll() {
  CloseDownTo(0);
}

// ---- Opening ----

void TreeWriter::Opened(ElementId id, std::size_t tagBegin, std::size_t link) {
  stack_.push_back({id, false, tagBegin, out_.size() - tagBegin, link, pending_.size()});
  ++openCount_[IndexOf(id)];
  if (id == kPre) preBegin_ = out_.size();
}

void TreeWriter::OpenImplied(ElementId id) {
  const std::size_t begin = out_.size();
  const std::u16string_view name = RowOf(id).name;
  out_ += u'<';
  out_ += name;
  out_ += u'>';
  Opened(id, begin, kNoLink);
}

// Opens again what is pending here, or only what a pending block is among.
void TreeWriter::Repeat(bool onlyToBlocks) {
  if (pending_.empty()) return;
  const std::size_t base = PendingBase();
  std::size_t end = pending_.size();
  if (onlyToBlocks) {
    while (end > base && HasTrait(pending_[end - 1].id, kFormatting)) --end;
  }
  for (std::size_t i = base; i < end; ++i) {
    const Element element = pending_[i];
    // A heading right inside another one would end that.
    const bool endsHeading =
        HasTrait(element.id, kHeading) && !stack_.empty() && HasTrait(stack_.back().id, kHeading);
    if (endsHeading || stack_.size() + kTableDepth >= kMostDepth ||
        element.tagLength > repeatBudget_) {
      continue;
    }
    repeatBudget_ -= element.tagLength;
    const std::size_t begin = out_.size();
    out_.append(out_, element.tagBegin, element.tagLength);
    stack_.push_back({element.id, false, begin, element.tagLength, element.link, 0});
    ++openCount_[IndexOf(element.id)];
    if (element.id == kPre) preBegin_ = out_.size();
  }
  pending_.erase(pending_.begin() + static_cast<std::ptrdiff_t>(base),
                 pending_.begin() + static_cast<std::ptrdiff_t>(end));
}

TreeWriter::Place TreeWriter::PrepareTablePart(ElementId id) {
  const std::size_t table = FindTable();
  if (table == kNone) return kMisplaced;
  // Up from the table: the row group and the row that the part may stand in.
  std::size_t keep = table + 1;
  const auto stands = [&](auto is) { return keep < stack_.size() && is(stack_[keep].id); };
  if (id == kCol && stands([](ElementId other) { return other == kColgroup; })) ++keep;
  if (id == kTr || IsCell(id)) {
    if (stands(IsRowGroup)) ++keep;
    if (IsCell(id) && stands([](ElementId other) { return other == kTr; })) ++keep;
  }
  if (keep < stack_.size()) PopTo(keep);
  if (id == kCol && IsCurrent(kTable)) OpenImplied(kColgroup);
  if ((id == kTr || IsCell(id)) && IsCurrent(kTable)) OpenImplied(kTbody);
  if (IsCell(id) && !IsCurrent(kTr)) OpenImplied(kTr);
  return kPlaced;
}

// A cell for what may not stand between the parts of a table.
bool TreeWriter::OpenCell() {
  if (PrepareTablePart(kTd) != kPlaced) return false;
  OpenImplied(kTd);
  return true;
}

// A reading ends the one before it.
bool TreeWriter::PrepareRuby() {
  if (FindInScope(kRuby) == kNone) return false;
  while (HasTrait(stack_.back().id, kImpliedEnd)) PopTo(stack_.size() - 1);
  return true;
}

TreeWriter::Place TreeWriter::Prepare(ElementId id) {
  if (HasTrait(id, kTablePart)) return PrepareTablePart(id);
  if (IsCurrent(kColgroup)) PopTo(stack_.size() - 1);
  if (InTableStructure()) {
    if (id == kTable) {
      PopTo(FindTable());
    } else if (id != kImg || !OpenCell()) {
      return kMisplaced;
    }
  }
  if (id == kLi || id == kDd || id == kDt) CloseListItems(id);
  if (HasTrait(id, kClosesP)) CloseParagraph();
  if (HasTrait(id, kHeading)) {
    for (const ElementId heading : {kH1, kH2, kH3, kH4, kH5, kH6}) ForgetLast(heading);
    if (!stack_.empty() && HasTrait(stack_.back().id, kHeading)) PopTo(stack_.size() - 1);
  }
  if (id == kA) {
    ForgetLast(kA);
    const std::size_t index = FindOpen(kA);
    if (index != kNone) Split(index);
  }
  Repeat(HasTrait(id, kSpecial));
  if (id == kNobr && FindOpen(kNobr) != kNone) return kMisplaced;
  if ((id == kRt || id == kRp) && !PrepareRuby()) return kMisplaced;
  if (HasTrait(id, kVoid)) return kPlaced;
  const std::size_t needed = id == kTable ? kTableDepth : 1;
  if (stack_.size() + needed <= kMostDepth) return kPlaced;
  ++flattened_[IndexOf(id)];
  flattenedAt_ = std::min(flattenedAt_, stack_.size());
  return kTooDeep;
}

// ---- Ending ----

// Cuts all inside the element in two, so that it can end here: what is inside goes on behind it.
void TreeWriter::Split(std::size_t index) {
  Elements inside;
  for (std::size_t i = index + 1; i < stack_.size(); ++i) {
    const Element& element = stack_[i];
    if (!element.hasEnded && HasTrait(element.id, kFormatting | kSpecial))
      inside.push_back(element);
  }
  CloseDownTo(index);
  PopEnded();
  // What was pending before stands innermost.
  pending_.insert(pending_.begin() + static_cast<std::ptrdiff_t>(PendingBase()), inside.begin(),
                  inside.end());
}

void TreeWriter::EndFormatting(ElementId id) {
  if (ForgetLast(id)) return;
  const std::size_t index = FindInScope(id);
  if (index == kNone) return;
  const bool canSplit = std::all_of(
      stack_.begin() + static_cast<std::ptrdiff_t>(index) + 1, stack_.end(),
      [](const Element& e) { return !HasTrait(e.id, kSpecial) || HasTrait(e.id, kSplits); });
  if (canSplit) {
    Split(index);
  } else {
    stack_[index].hasEnded = true;  // a list cut in two would count anew
  }
}

void TreeWriter::EndTablePart(ElementId id) {
  const std::size_t table = FindTable();
  if (table == kNone) return;
  for (std::size_t i = stack_.size(); i-- > table;) {
    if (stack_[i].id == id) {
      PopTo(i);
      return;
    }
  }
}

void TreeWriter::End(ElementId id) {
  std::uint32_t& flattened = flattened_[IndexOf(id)];
  if (flattened > 0) {
    --flattened;
    return;
  }
  if (HasTrait(id, kFormatting)) {
    EndFormatting(id);
    return;
  }
  if (HasTrait(id, kTablePart) || id == kTable) {
    EndTablePart(id);
    return;
  }
  if (HasTrait(id, kSpecial) && ForgetLast(id)) return;
  std::size_t index = kNone;
  if (HasTrait(id, kHeading)) {
    index = FindInScope([](ElementId other) { return HasTrait(other, kHeading); }, kBoundary);
  } else if (openCount_[IndexOf(id)] > 0) {
    const auto isSame = [id](ElementId other) { return other == id; };
    if (id == kLi) {
      index = FindInScope([](ElementId e) { return e == kLi || e == kOl || e == kUl; }, kBoundary);
      if (index != kNone && stack_[index].id != kLi) index = kNone;
    } else {
      // End tags of inline elements do not reach over a block.
      index = FindInScope(isSame, HasTrait(id, kSpecial) ? kBoundary : kSpecial);
    }
  }
  if (index != kNone) PopTo(index);
}

void TreeWriter::Text(std::u16string_view text, bool hasReferences) {
  if (IsBlank(text)) {
    if (out_.empty()) return;
  } else {
    if (InTableStructure() && !OpenCell()) return;
    Repeat(false);
  }
  const std::size_t begin = out_.size();
  AppendHtmlText(text, hasReferences, out_);
  // Nobody sees blanks at the start of a page, and no browser keeps them or a byte-order mark
  // there; nor a line end at the start of a pre.
  std::size_t drop = 0;
  if (begin == 0) {
    while (drop < out_.size() && (IsMarkupSpace(out_[drop]) || out_[drop] == 0xFEFF)) ++drop;
  } else if (begin == preBegin_) {
    while (begin + drop < out_.size() && out_[begin + drop] == u'\n') ++drop;
  }
  if (drop > 0) out_.erase(begin, drop);
}

}  // namespace lumr
