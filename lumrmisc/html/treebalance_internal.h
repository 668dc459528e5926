// Writes elements so that a browser reads back the very tree that was written.
//
// HTML's rules for building a tree move, close and repeat elements. This writer follows the same
// rules while it writes: a block ends an open paragraph, a list item the item before it, cells get
// the row and the row group they need, formatting goes on behind an end tag that closed it by the
// way. What a browser would move out of a table goes into a cell instead. So nothing is left for
// the browser to correct, and reading the result again changes nothing.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "lumrmisc/html/sanitize_policy_internal.h"

namespace lumr {

class TreeWriter {
 public:
  static constexpr std::size_t kMostDepth = 256;
  static constexpr std::size_t kNoLink = static_cast<std::size_t>(-1);

  // Writes behind what out holds. Repeated formatting takes at most so many units in all: without
  // a bound, a page of paragraphs could repeat any amount of it in each.
  TreeWriter(CStringW& out, std::size_t repeatBudget);

  enum Place { kPlaced, kMisplaced, kTooDeep };
  // Makes way for the start tag of an element. When it is placed the caller writes the tag and, but
  // for void elements, calls Opened; otherwise the tag is to be left out.
  Place Prepare(ElementId id);
  // The tag just written begins at tagBegin of out. link is the caller's number of a link.
  void Opened(ElementId id, std::size_t tagBegin, std::size_t link);
  void End(ElementId id);

  // Text to be written escaped; references count or not.
  void Text(std::u16string_view text, bool hasReferences);
  // The link that the text goes to, or kNoLink.
  std::size_t CurrentLink() const;

  void CloseAll();

 private:
  struct Element {
    ElementId id;
    bool hasEnded = false;     // its end tag came where it could not end yet
    std::size_t tagBegin = 0;  // its start tag in out
    std::size_t tagLength = 0;
    std::size_t link = kNoLink;
    std::size_t pendingBase = 0;  // of boundaries: the pending elements of outside
  };
  using Elements = std::vector<Element>;
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  bool IsCurrent(ElementId id) const { return !stack_.empty() && stack_.back().id == id; }
  bool InTableStructure() const;
  std::size_t PendingBase() const;
  template <class Matches>
  std::size_t FindInScope(Matches matches, std::uint16_t boundaries) const;
  std::size_t FindInScope(ElementId id) const;
  std::size_t FindOpen(ElementId id) const;
  std::size_t FindTable() const;

  void PopTo(std::size_t index);
  void CloseDownTo(std::size_t size);
  void Remember(const Element& element);
  void WriteEndTag(const Element& element);
  void PopEnded();
  void Forget(std::size_t pending);
  void ForgetBlocks();
  bool ForgetLast(ElementId id);

  void OpenImplied(ElementId id);
  bool OpenCell();
  Place PrepareTablePart(ElementId id);
  void CloseListItems(ElementId id);
  void CloseParagraph();
  bool PrepareRuby();
  void Repeat(bool onlyToBlocks);
  void EndFormatting(ElementId id);
  void Split(std::size_t index);
  void EndTablePart(ElementId id);

  CStringW& out_;
  std::size_t repeatBudget_;
  Elements stack_;
  // What was closed by the way and goes on where content comes: formatting elements, and blocks
  // that were cut in two.
  Elements pending_;
  std::array<std::uint32_t, kElementCount> openCount_{};
  // Start tags left out for their depth, whose end tags mean nothing either, and the depth at
  // which the first of them was.
  std::array<std::uint32_t, kElementCount> flattened_{};
  std::size_t flattenedAt_ = kNone;
  std::size_t preBegin_ = kNone;  // out's size behind the start tag of a pre
};

}  // namespace lumr
