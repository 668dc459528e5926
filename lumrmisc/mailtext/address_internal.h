// What the functions on one address and those on lists share.
#pragma once

#include <cstddef>
#include <string_view>

#include "lumrmisc/buffer/nesting_internal.h"
#include "lumrmisc/platform/messages.h"
#include "lumrmisc/platform/types.h"

namespace lumr::address {

// Why a text could not be split: the id of the message, 0 for no reason.
enum Fault : unsigned { kNoFault = 0, kOpenQuote = 3161, kOpenParenthesis = 3162 };

// The first delimiter from start on, which is at most the text's length: its position or npos.
template <class Unit>
std::size_t FindDelimiter(std::basic_string_view<Unit> text, std::size_t start, Unit delimiter,
                          Fault& fault) {
  NestingScanner<Unit> scanner(text, start);
  fault = kNoFault;
  for (;;) {
    switch (scanner.Next(delimiter)) {
      case NestingMark::kDelimiter:
        return scanner.Position();
      case NestingMark::kEnd:
        fault = scanner.InQuotes()        ? kOpenQuote
                : scanner.InParentheses() ? kOpenParenthesis
                                          : kNoFault;
        return text.npos;
      default:
        break;
    }
  }
}

inline CStringA TextOf(Fault fault, std::string_view) {
  return MessageText(fault);
}
inline CStringW TextOf(Fault fault, std::u16string_view) {
  return MessageTextW(fault);
}

// The message of a fault and the text that it was found in, or an empty one.
template <class Unit>
void SetMessage(Fault fault, std::basic_string_view<Unit> text, std::basic_string<Unit>& message) {
  message.clear();
  if (fault == kNoFault) return;
  message = TextOf(fault, text);
  message += Unit('\n');
  message += TrimmedText(text);
}

// Calls take(entry) for each entry that is not empty, the rest behind a fault included. Gives
// the fault; faulty is then the text from the entry in which it is.
//
// Each entry is looked at once: a quote that begins one is answered by the next quote, which lies
// in the same entry, or by none, after which there is no such quote to ask for.
template <class Unit, class Take>
Fault ForEachEntry(std::basic_string_view<Unit> list, std::basic_string_view<Unit>& faulty,
                   Take take) {
  std::size_t start = 0;
  for (;;) {
    Fault fault;
    const std::size_t comma = FindDelimiter(list, start, Unit(','), fault);
    const std::size_t length = comma == list.npos ? list.npos : comma - start;
    const std::basic_string_view<Unit> entry = TrimmedText(list.substr(start, length));
    if (!entry.empty()) take(entry);
    if (comma == list.npos) {
      faulty = list.substr(start);
      return fault;
    }
    start = comma + 1;
  }
}

// The entries of a list, members of groups too (GetAddrArray3). Gives what is left open, and faulty
// is then the text from the entry in which it is.
Fault SplitGroups(std::string_view list, CStringArray& out, std::string_view& faulty);

// What an entry consists of, as it stands in its text.
struct EntryParts {
  Fault fault = kNoFault;
  std::string_view faulty;  // the text from where the fault was looked for
  std::string_view address;
  std::string_view name;
  std::string_view nameTail;  // goes on behind the name
  bool isQuoted = false;      // the name begins with a quote
  bool isComment = false;     // address is the whole text, whose parentheses hold the name
};
EntryParts TakeApart(std::string_view text);

// Sets both outputs from the parts.
void TakeTexts(const EntryParts& parts, CStringA& address, CStringA& name);

}  // namespace lumr::address
