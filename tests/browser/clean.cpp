// Cleans a batch of pages for the tests in a browser: records from standard input to standard
// output. A record is the number of bytes in four bytes, lowest first, and so many bytes of
// UTF-16LE.
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "lumrmisc/html/sanitize.h"

namespace {

bool ReadRecord(lumr::CStringW& text) {
  std::uint32_t size = 0;
  if (std::fread(&size, sizeof size, 1, stdin) != 1) return false;
  text.resize(size / sizeof(char16_t));
  return std::fread(text.data(), sizeof(char16_t), text.size(), stdin) == text.size();
}

bool WriteRecord(std::u16string_view text) {
  const std::uint32_t size = static_cast<std::uint32_t>(text.size() * sizeof(char16_t));
  return std::fwrite(&size, sizeof size, 1, stdout) == 1 &&
         std::fwrite(text.data(), sizeof(char16_t), text.size(), stdout) == text.size();
}

}  // namespace

int main() {
  lumr::CStringW text;
  while (ReadRecord(text)) {
    lumr::ToSafeHtmlW2(text);
    if (!WriteRecord(text)) return 1;
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
