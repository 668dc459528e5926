// Text utilities: quoting and records are read back, parts are no longer than the text, and the
// comparison is an order.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/transfer_properties.h"
#include "lumrmisc/buffer/texttool.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumr;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const TightCopy copy(input);
  const std::string_view text = copy;
  const int length = static_cast<int>(size);

  CStringA quoted;
  AddQuotedToken(text.data(), length, quoted);
  CStringA token;
  GetQuotedToken(quoted.data() + 1, static_cast<int>(quoted.size()) - 2, token);
  Require(token.size() == size);
  for (std::size_t i = 0; i < size; ++i) Require(token[i] == text[i] || token[i] == '?');

  CStringA outside;
  CStringA inside;
  const int found = GetParenthesisToken(text.data(), length, outside, inside);
  Require(outside.size() + inside.size() <= size);
  Require(found != 0 || outside == text);

  std::vector<CStringA> items;
  CStringA item;
  CStringA record;
  for (int pos = 0; GetCsvItem(text.data(), length, pos, item) != 0;) {
    items.push_back(item);
    AddCsvItem(item.data(), static_cast<int>(item.size()), record);
  }
  for (int pos = 0, i = 0; i < static_cast<int>(items.size()); ++i) {
    Require(GetCsvItem(record.data(), static_cast<int>(record.size()), pos, item) == 1);
    Require(item == items[static_cast<std::size_t>(i)]);
  }

  Require(GetCharCount(text.data(), length) <= length);
  const std::string_view parts[] = {text.substr(0, size / 3), text.substr(size / 3, size / 3),
                                    text.substr(size / 3 * 2)};
  std::vector<std::string> names(std::begin(parts), std::end(parts));
  const auto less = [](const std::string& a, const std::string& b) {
    return lstrcmp_num(a.c_str(), b.c_str()) < 0;
  };
  std::sort(names.begin(), names.end(), less);
  Require(!less(names[1], names[0]) && !less(names[2], names[1]) && !less(names[2], names[0]));
  return 0;
}
