// The editor's document under operations in any order: what a list of strings would be, places that
// map there and back, and every line laid out as from scratch.
#include <cstdint>
#include <string_view>

#include "fuzz/transfer_properties.h"
#include "tests/editor/document_model.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumr;
  documentmodel::Driver driver;
  driver.Do(0, {}, 0);
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  // An operation is two bytes, and a text up to FF, which no text of the code types begins with.
  for (int steps = 0; rest.size() >= 2 && steps < 40; ++steps) {
    const auto op = static_cast<unsigned char>(rest[0]);
    const int number = static_cast<unsigned char>(rest[1]);
    rest.remove_prefix(2);
    const TightCopy text(rest.substr(0, rest.find('\xFF')));
    const std::string_view view = text;
    rest.remove_prefix(std::min(rest.size(), view.size() + 1));
    driver.Do(op, view, number);
    Require(steps % 4 != 3 || documentmodel::Differs(driver.editor, driver.model).empty());
  }
  Require(documentmodel::Differs(driver.editor, driver.model).empty());
  return 0;
}
