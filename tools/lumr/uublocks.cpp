#include "uublocks.h"

#include <algorithm>

#include "lumrmisc/mailtext/transfer.h"

namespace lumr::tool {

namespace {

constexpr std::string_view kBegin = "begin ";

// Takes the next line off the text, its line feed included.
std::string_view TakeLine(std::string_view& text) {
  const std::size_t feed = text.find('\n');
  const std::string_view line =
      text.substr(0, feed == std::string_view::npos ? text.size() : feed + 1);
  text.remove_prefix(line.size());
  return line;
}

std::string_view WithoutBreak(std::string_view line) {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  return line;
}

// The number of bytes that a data line holds; 0 for the line that ends the data, -1 for a line
// that is none.
int DataBytes(std::string_view line) {
  if (line.empty() || line[0] == '`' || line[0] == ' ') return line.size() <= 1 ? 0 : -1;
  const int count = line[0] - ' ';
  const bool clean =
      std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '`'; });
  return clean && count < 64 && static_cast<int>(line.size()) >= count * 4 / 3 + 1 ? count : -1;
}

// Takes a whole block off the text, whose first line begins like one. A line of data never
// looks like a "begin" line, so that many of them in vain cost no more than one pass.
bool TakeBlock(std::string_view& text, UuFile& file) {
  std::string_view rest = text;
  const std::string begin(WithoutBreak(TakeLine(rest)));
  if (DecodeUuencodeBegin(begin.c_str(), nullptr, &file.name) == 0) return false;
  file.size = 0;
  int count = -1;
  while (!rest.empty() && (count = DataBytes(WithoutBreak(TakeLine(rest)))) > 0) file.size += count;
  if (count != 0 || WithoutBreak(TakeLine(rest)) != "end") return false;
  text = rest;
  return true;
}

bool MayHoldBlock(std::string_view text) {
  return text.substr(0, kBegin.size()) == kBegin || text.find("\nbegin ") != std::string_view::npos;
}

}  // namespace

HeldBytes CutUuFiles(HeldBytes text, std::vector<UuFile>& files) {
  if (!MayHoldBlock(text.View())) return text;
  std::string kept;
  std::string_view rest = text.View();
  while (!rest.empty()) {
    UuFile file;
    if (rest.substr(0, kBegin.size()) == kBegin && TakeBlock(rest, file)) {
      files.push_back(std::move(file));
    } else {
      kept += TakeLine(rest);
    }
  }
  if (files.empty()) return text;
  auto left = std::make_unique<CBuffer>();
  *left = std::string_view(kept);
  return HeldBytes(std::move(left));
}

}  // namespace lumr::tool
