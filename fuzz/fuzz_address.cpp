// Address functions: entries are parts of their list, ranges lie inside it, what is made is read
// again, narrow and wide agree on ASCII, and no encoded word gives an address.
#include <algorithm>
#include <cstdint>
#include <string>

#include "fuzz/transfer_properties.h"
#include "lumrmisc/mailtext/address.h"
#include "lumrmisc/mailtext/addressheader.h"

namespace {

using namespace lumr;

void CheckRanges(const std::string& list, std::size_t entries) {
  std::size_t found = 0;
  int last = -1;
  for (int position = 0; position <= static_cast<int>(list.size()); ++position) {
    int start = -1;
    int end = -1;
    if (GetAddressRange(list.c_str(), position, start, end) == 0) continue;
    Require(start >= 0 && start <= position && position <= end);
    Require(end == static_cast<int>(list.size()) || list[static_cast<std::size_t>(end)] == ',');
    Require(start == last || start > last);
    found += start != last && start != end;
    last = start;
  }
  Require(found >= entries);
}

// Every entry is a piece of the list, in its order, and not empty.
void CheckPieces(std::string_view list, const CStringArray& entries) {
  std::size_t at = 0;
  for (const CStringA& entry : entries) {
    at = list.find(entry, at);
    Require(!entry.empty() && at != list.npos);
    at += entry.size();
  }
}

bool HasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; });
}

void CheckHeader(std::string_view raw) {
  CArray<HeaderAddress> entries;
  ReadAddressHeader(raw, entries);
  // Where nothing is converted, unfolded or joined an address is a piece of the value.
  const bool isPlain =
      !HasControl(raw) && raw.find('(') == raw.npos &&
      std::all_of(raw.begin(), raw.end(), [](char c) { return c > 0 && c != '\x7F'; });
  for (const HeaderAddress& entry : entries) {
    Require(!entry.entry.empty() && !HasControl(entry.name));
    Require(!isPlain || raw.find(entry.address) != raw.npos);
  }
  Require(!HasControl(DecodeAddressHeaderUtf8(raw)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const TightCopy list(input);
  CStringArray entries;
  CStringA message;
  const int isWhole = GetAddrArray2(list, entries, message);
  Require((isWhole != 0) == message.empty());
  CheckPieces(input, entries);
  CStringArray members;
  Require(GetAddrArray3(list, members, message) == isWhole);
  CheckPieces(input, members);
  CheckHeader(list);
  const std::string text(input.substr(0, input.find('\0')));
  if (isWhole != 0 && text.size() == size && size < 200 && text[0] != '"' &&
      text.find(" \"") == text.npos) {
    CheckRanges(text, entries.size());
  }

  CStringArray addresses;
  CStringArray names;
  Require(GetAddrNameArray(list, addresses, names) == static_cast<int>(entries.size()));
  Require(names.size() == addresses.size());
  for (std::size_t i = 0; i < names.size() && i < 20; ++i) {
    const CStringA made = MakeAddress("u@x", names[i].c_str(), 1) + ", v@x";
    CStringArray again;
    Require(GetAddrArray2(made, again, message) == 1 && again.size() == 2);
  }

  const bool isAscii = std::all_of(input.begin(), input.end(), [](char c) { return c > 0; });
  if (isAscii) {
    CArray<CStringW> wide;
    CStringW wideMessage;
    Require(GetAddrArray2(CStringW(input.begin(), input.end()).c_str(), wide, wideMessage) ==
            isWhole);
    Require(wide.size() == entries.size());
    for (std::size_t i = 0; i < wide.size(); ++i) {
      Require(std::equal(wide[i].begin(), wide[i].end(), entries[i].begin(), entries[i].end(),
                         [](char16_t a, char b) { return a == static_cast<char16_t>(b); }));
    }
  }
  for (const AddressField field : {AddressField::kAddress, AddressField::kName}) {
    const AddressProblem problem = FindAddressProblem(field, list);
    Require(problem.position < static_cast<int>(size));
    Require((problem.result == 0) == (problem.message == 0));
  }
  CStringArray plain;
  ParseAddrList(text.c_str(), plain);
  CStringA id(input);
  ExtractLastMessageID(id);
  Require(id.size() <= size);
  return 0;
}
