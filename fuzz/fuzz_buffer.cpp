// CBuffer edits against std::string as the model, and the substring search against the obvious
// one. The first byte chooses.
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/buffer/textfinder.h"
#include "tests/buffer/buffer_model.h"

namespace {

using lumr::TextFinder;
using lumr::TextForm;

// The second byte is the word's length and the case.
void CheckSearch(TextForm form, std::string_view input) {
  if (input.empty()) return;
  const unsigned head = static_cast<unsigned char>(input[0]);
  const bool ignoreCase = head % 2 != 0;
  input.remove_prefix(1);
  const std::size_t length = std::min<std::size_t>(head / 2 % 32, input.size());
  const std::vector<char> word(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(length));
  const std::vector<char> text(input.begin() + static_cast<std::ptrdiff_t>(length), input.end());
  std::string_view wordView(word.data(), word.size());
  std::string_view textView(text.data(), text.size());
  if (form == TextForm::kUnits) {
    wordView.remove_suffix(wordView.size() % 2);
    textView.remove_suffix(textView.size() % 2);
  }
  TextFinder finder(form, wordView, ignoreCase);
  const auto places = lumr::reference::Places(form, textView, wordView, ignoreCase);
  const std::size_t first = places.empty() ? TextFinder::npos : places.front();
  const std::size_t last = places.empty() ? TextFinder::npos : places.back();
  if (finder.First(textView) != first || finder.Last(textView) != last) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input(reinterpret_cast<const char*>(data), size);
  if (input.empty()) return 0;
  const unsigned choice = static_cast<unsigned char>(input[0]) % 4;
  input.remove_prefix(1);
  if (choice < 3) {
    CheckSearch(static_cast<TextForm>(choice), input);
    return 0;
  }
  const std::string fault = lumr::reference::BufferModel(input).Run();
  if (!fault.empty()) {
    std::fprintf(stderr, "%s\n", fault.c_str());
    __builtin_trap();
  }
  return 0;
}
