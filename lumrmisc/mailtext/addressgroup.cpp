// Lists with groups of addresses.
#include <vector>

#include "lumrmisc/buffer/characterform_internal.h"
#include "lumrmisc/mailtext/address.h"
#include "lumrmisc/mailtext/address_internal.h"

namespace lumr {
namespace {

// A colon or a semicolon that may belong to a group: outside of quotes, comments, angle brackets
// and the literals of domains ("[IPv6:...]").
struct GroupSign {
  std::size_t entry;  // the index of the entry that it stands in
  std::size_t pos;    // in that entry
  char sign;
  bool hasBracket = false;  // "<" stands behind it, in the same entry
};

bool IsGroupMark(char c) {
  return c == ':' || c == ';' || c == '<' || c == '>' || c == '[' || c == ']';
}

void FindSigns(std::string_view entry, std::size_t index, std::vector<GroupSign>& signs) {
  const std::size_t first = signs.size();
  NestingScanner<char> scanner(entry, 0);
  bool inAngle = false;
  bool inLiteral = false;
  for (;;) {
    const NestingMark mark = scanner.NextOf(IsGroupMark);
    if (mark == NestingMark::kEnd) return;
    if (mark != NestingMark::kDelimiter) continue;
    const std::size_t pos = scanner.Position();
    switch (const char c = entry[pos]) {
      case '<':
        inAngle = true;
        if (signs.size() > first) signs.back().hasBracket = true;
        break;
      case '>':
        inAngle = false;
        break;
      case '[':
        inLiteral = pos > 0 && entry[pos - 1] == '@';
        break;
      case ']':
        inLiteral = false;
        break;
      default:
        if (!inAngle && !inLiteral) signs.push_back({index, pos, c});
    }
  }
}

// Whether a colon ends the name of a group. Names of single addresses have colons too, where they
// should be quoted ("Re: John <j@x>"): these lack the semicolon, and have the brackets.
bool OpensGroup(const std::vector<GroupSign>& signs, std::size_t index) {
  const bool isClosed = index + 1 < signs.size() && signs[index + 1].sign == ';';
  return signs[index].sign == ':' && (isClosed || !signs[index].hasBracket);
}

// Cuts entries at the signs of groups.
class GroupReader {
 public:
  explicit GroupReader(CStringArray& out) : out_(out) {}

  void Read(const std::vector<std::string_view>& entries, const std::vector<GroupSign>& signs) {
    std::size_t next = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      std::size_t begin = 0;
      for (; next < signs.size() && signs[next].entry == i; ++next) {
        const std::size_t pos = signs[next].pos;
        if (OpensGroup(signs, next)) {
          inGroup_ = true;  // what stands before is its name
        } else if (signs[next].sign == ';' && inGroup_) {
          Add(entries[i].substr(begin, pos - begin));
          inGroup_ = false;
        } else {
          continue;
        }
        begin = pos + 1;
      }
      Add(entries[i].substr(begin));
    }
  }

 private:
  void Add(std::string_view entry) {
    entry = TrimmedText(entry);
    if (!entry.empty()) out_.emplace_back(entry);
  }

  CStringArray& out_;
  bool inGroup_ = false;
};

}  // namespace

namespace address {

Fault SplitGroups(std::string_view list, CStringArray& out, std::string_view& faulty) {
  out.clear();
  std::vector<std::string_view> entries;
  const Fault fault =
      ForEachEntry(list, faulty, [&entries](std::string_view entry) { entries.push_back(entry); });
  std::vector<GroupSign> signs;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const bool isOpen = fault != kNoFault && i + 1 == entries.size();
    if (!isOpen) FindSigns(entries[i], i, signs);
  }
  GroupReader(out).Read(entries, signs);
  return fault;
}

}  // namespace address

int GetAddrArray3(std::string_view list, CStringArray& out, CStringA& message) {
  std::string_view faulty;
  const address::Fault fault = address::SplitGroups(list, out, faulty);
  address::SetMessage(fault, faulty, message);
  return fault == address::kNoFault;
}

}  // namespace lumr
