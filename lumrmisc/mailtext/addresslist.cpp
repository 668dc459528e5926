// Lists of addresses.
#include <algorithm>
#include <vector>

#include "lumrmisc/buffer/characterform_internal.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/buffer/textscan.h"
#include "lumrmisc/mailtext/address.h"
#include "lumrmisc/mailtext/address_internal.h"

namespace lumr {
namespace {

using address::Fault;
using address::FindDelimiter;
using address::ForEachEntry;

template <class Unit>
using View = std::basic_string_view<Unit>;

template <class Unit>
int SplitList(View<Unit> list, CArray<std::basic_string<Unit>>& out,
              std::basic_string<Unit>& message) {
  out.clear();
  View<Unit> faulty;
  const Fault fault =
      ForEachEntry(list, faulty, [&out](View<Unit> entry) { out.emplace_back(entry); });
  address::SetMessage(fault, faulty, message);
  return fault == address::kNoFault;
}

template <class Unit>
int FindInList(View<Unit> text, int start, Unit delimiter, int& position,
               std::basic_string<Unit>& message) {
  position = -1;
  message.clear();
  if (text.empty()) return 1;
  if (start < 0) return 0;
  if (static_cast<std::size_t>(start) >= text.size()) return 1;
  const std::size_t from = static_cast<std::size_t>(start);
  Fault fault;
  position = static_cast<int>(FindDelimiter(text, from, delimiter, fault));  // npos becomes -1
  address::SetMessage(fault, text.substr(from), message);
  return fault == address::kNoFault;
}

// The entries of a list that can be split; none of one that cannot.
std::vector<std::string_view> EntriesOf(std::string_view list) {
  std::vector<std::string_view> entries;
  std::string_view faulty;
  const Fault fault =
      ForEachEntry(list, faulty, [&entries](std::string_view entry) { entries.push_back(entry); });
  if (fault != address::kNoFault) entries.clear();
  return entries;
}

// Whether a test holds for the address of an entry.
template <class Test>
int AnyAddress(const char* list, Test holds) {
  CStringA address;
  CStringA name;
  for (const std::string_view entry : EntriesOf(CountedText(list))) {
    const address::EntryParts parts = address::TakeApart(entry);
    if (parts.fault != address::kNoFault) continue;
    address::TakeTexts(parts, address, name);
    if (holds(address)) return 1;
  }
  return 0;
}

}  // namespace

int FindAddrDelimiter(const char* text, int start, char delimiter, int& position,
                      CStringA& message) {
  return FindInList(CountedText(text), start, delimiter, position, message);
}
int FindAddrDelimiter(std::string_view text, int start, char delimiter, int& position,
                      CStringA& message) {
  return FindInList(text, start, delimiter, position, message);
}
int FindAddrDelimiter(const char16_t* text, int start, char16_t delimiter, int& position,
                      CStringW& message) {
  return FindInList<char16_t>(EvenUnits(text), start, delimiter, position, message);
}

int GetAddrArray2(const char* list, CStringArray& out, CStringA& message) {
  return SplitList(CountedText(list), out, message);
}
int GetAddrArray2(std::string_view list, CStringArray& out, CStringA& message) {
  return SplitList(list, out, message);
}
int GetAddrArray2(const char16_t* list, CArray<CStringW>& out, CStringW& message) {
  return SplitList<char16_t>(EvenUnits(list), out, message);
}

int ParseAddrList(const char* list, CStringArray& out) {
  constexpr std::string_view kSeparators = ", \t\r\n";
  out.clear();
  const std::string_view text = CountedText(list);
  for (std::size_t end = 0;;) {
    const std::size_t begin = text.find_first_not_of(kSeparators, end);
    if (begin == text.npos) return static_cast<int>(out.size());
    end = std::min(text.find_first_of(kSeparators, begin), text.size());
    out.emplace_back(text.substr(begin, end - begin));
  }
}

int GetAddressRange(const char* list, int position, int& start, int& end) {
  const std::string_view text = CountedText(list);
  if (position < 0 || static_cast<std::size_t>(position) > text.size()) return 0;
  const std::size_t wanted = static_cast<std::size_t>(position);
  for (std::size_t begin = 0;;) {
    while (begin < text.size() && IsAsciiSpace(text[begin])) ++begin;
    if (begin > wanted) return 0;
    Fault fault;
    const std::size_t comma = FindDelimiter(text, begin, ',', fault);
    if (fault != address::kNoFault) return 0;
    const std::size_t last = std::min(comma, text.size());
    if (wanted <= last) {
      start = static_cast<int>(begin);
      end = static_cast<int>(last);
      return 1;
    }
    begin = last + 1;
  }
}

int GetAddrNameArray(const char* list, CStringArray& addresses, CStringArray& names) {
  return GetAddrNameArray(CountedText(list), addresses, names);
}

int GetAddrNameArray(std::string_view list, CStringArray& addresses, CStringArray& names) {
  addresses.clear();
  names.clear();
  std::string_view faulty;
  ForEachEntry(list, faulty, [&](std::string_view entry) {
    address::TakeTexts(address::TakeApart(entry), addresses.emplace_back(), names.emplace_back());
  });
  return static_cast<int>(addresses.size());
}

int LookupAddrNameArray(const CStringArray& addresses, const CStringArray& names,
                        const char* address, const char* name) {
  if (!CountedText(address).empty()) return LookupStringArray(addresses, address, 1);
  const std::string_view wanted = CountedText(name);
  if (wanted.empty()) return -1;
  const MbcsPage& page = CurrentMbcsPage();
  const std::size_t count = std::min(addresses.size(), names.size());
  for (std::size_t i = 0; i < count; ++i) {
    if (addresses[i].empty() && page.EqualNoCase(names[i], wanted)) return static_cast<int>(i);
  }
  return -1;
}

int IsAddressIncluded(const char* address, int anyOther, const char* list) {
  const std::string_view wanted = CountedText(address);
  const MbcsPage& page = CurrentMbcsPage();
  return AnyAddress(list, [&](const CStringA& found) {
    return page.EqualNoCase(found, wanted) == (anyOther == 0);
  });
}

int IsWildAddrIncluded(const CStringArray& patterns, int anyUnmatched, const char* list) {
  return AnyAddress(list, [&](const CStringA& found) {
    const bool matches =
        std::any_of(patterns.begin(), patterns.end(), [&found](const CStringA& pattern) {
          return wildicmp(found.c_str(), pattern.c_str()) == 0;
        });
    return matches == (anyUnmatched == 0);
  });
}

}  // namespace lumr
