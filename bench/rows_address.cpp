// Mail addresses and dates.
#include <array>

#include "lumrmisc/mailtext/address.h"
#include "lumrmisc/mailtext/date.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

// A list as long as the text that it replaces: quoted names, comments, bare addresses, folds.
std::string AddressList(std::string text) {
  Random random(20240601);
  std::string list;
  while (list.size() < text.size()) {
    const std::string number = std::to_string(random.Below(1'000'000));
    const std::string address = "user" + number + "@mail" + number.substr(0, 2) + ".example.jp";
    if (!list.empty()) list += random.OneIn(3) ? ",\r\n " : ", ";
    switch (random.Below(4)) {
      case 0:
        list += "\"Yamada, Taro (" + number + ")\" <" + address + ">";
        break;
      case 1:
        list += "\"Taro \\\"T\\\" Yamada\" <" + address + ">";
        break;
      case 2:
        list += address + " (Yamada Taro)";
        break;
      default:
        list += "Yamada Taro <" + address + ">";
    }
  }
  return list;
}

constexpr std::size_t kDateSize = 31;

std::string Dates(std::string text) {
  Random random(20240602);
  std::string dates;
  while (dates.size() < text.size()) {
    const CTime time(std::chrono::seconds(random.Below(2'000'000'000)));
    dates += FormatMailDate(time, static_cast<int>(random.Below(48)) * 30 - 720);
  }
  return dates;
}

// What was found, cheaply told.
std::string Totals(std::size_t entries, std::size_t addressBytes, std::size_t nameBytes) {
  return std::to_string(entries) + " " + std::to_string(addressBytes) + " " +
         std::to_string(nameBytes);
}

std::string ParseList(std::string_view list) {
  CStringArray addresses;
  CStringArray names;
  GetAddrNameArray(list, addresses, names);
  std::size_t addressBytes = 0;
  std::size_t nameBytes = 0;
  for (const CStringA& address : addresses) addressBytes += address.size();
  for (const CStringA& name : names) nameBytes += name.size();
  return Totals(addresses.size(), addressBytes, nameBytes);
}

// Entries first, as a client shows them, then each taken apart.
std::string SplitAndParseList(std::string_view list) {
  CStringArray entries;
  CStringA message;
  GetAddrArray2(list, entries, message);
  CStringA address;
  CStringA name;
  std::size_t addressBytes = 0;
  std::size_t nameBytes = 0;
  for (const CStringA& entry : entries) {
    SplitMailAddr(entry, address, name, message);
    addressBytes += address.size();
    nameBytes += name.size();
  }
  return Totals(entries.size(), addressBytes, nameBytes);
}

std::string ReadDate(std::string_view text) {
  MailDate date;
  ParseMailDate(text, date);
  return std::to_string(date.time.time_since_epoch().count() + date.zoneMinutes);
}

}  // namespace

std::vector<Row> AddressRows() {
  const std::vector<Input> lists = {{Corpus::kAscii, "us-ascii", 4}};
  const std::vector<Input> dates = {{Corpus::kAscii, "us-ascii"}};
  Row split{
      "Address list, split and parse", lists, OursPlain(SplitAndParseList), {GmimeAddressList()}};
  Row parse{"Address list, parse", lists, OursPlain(ParseList), {GmimeAddressList()}};
  Row date{"Dates", dates, OursPlain(ReadDate), {GmimeDate()}};
  split.prepare = parse.prepare = AddressList;
  date.prepare = Dates;
  date.recordBytes = kDateSize;
  return {split, parse, date};
}

}  // namespace lumr::bench
