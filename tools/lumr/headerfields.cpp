#include "headerfields.h"

#include <algorithm>

namespace lumr::tool {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

std::string_view LineAt(std::string_view text, std::size_t pos) {
  const std::size_t feed = text.find('\n', pos);
  return text.substr(pos, feed == kNone ? kNone : feed + 1 - pos);
}

bool IsFold(std::string_view line) {
  return line[0] == ' ' || line[0] == '\t';
}

std::string_view WithoutBreak(std::string_view line) {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  return line;
}

// The length of the field name that a line begins with; 0 when it begins with none.
std::size_t NameLength(std::string_view line) {
  std::size_t length = 0;
  while (length < line.size() && line[length] > ' ' && line[length] < 0x7F && line[length] != ':') {
    ++length;
  }
  return length < line.size() && line[length] == ':' ? length : 0;
}

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

}  // namespace

std::size_t SplitHeader(std::string_view message, std::vector<HeaderField>& fields) {
  fields.clear();
  std::size_t pos = message.substr(0, 5) == "From " ? LineAt(message, 0).size() : 0;
  while (pos < message.size()) {
    const std::string_view line = LineAt(message, pos);
    if (line == "\n" || line == "\r\n") return pos;
    const std::size_t name = NameLength(line);
    if (name == 0) return kNone;
    std::size_t end = pos + line.size();
    while (end < message.size() && IsFold(message.substr(end))) end += LineAt(message, end).size();
    const std::string_view whole = message.substr(pos, end - pos);
    fields.push_back({line.substr(0, name), WithoutBreak(whole.substr(name + 1)), whole});
    pos = end;
  }
  return pos;
}

bool SameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return Lower(x) == Lower(y); });
}

}  // namespace lumr::tool
