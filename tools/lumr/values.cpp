#include "values.h"

#include <algorithm>

#include "input.h"
#include "lumrmisc/buffer/texttool.h"

namespace lumr::tool {

namespace {

void ForEachLine(Session& session, bool unfold, const std::function<void(std::string_view)>& take) {
  std::string text;
  if (const FileError error = ReadAll("-", text)) return session.TellUnreadable("-", error);
  const auto goesOn = [&text](std::size_t next) {
    return next < text.size() && (text[next] == ' ' || text[next] == '\t');
  };
  for (std::size_t begin = 0; begin < text.size();) {
    std::size_t end = text.find('\n', begin);
    while (unfold && end != text.npos && goesOn(end + 1)) end = text.find('\n', end + 1);
    end = std::min(end, text.size());
    std::string_view line = std::string_view(text).substr(begin, end - begin);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    take(line);
    begin = end + 1;
  }
}

}  // namespace

void ForEachValue(Session& session, const std::vector<std::string>& values, bool unfold,
                  const std::function<void(std::string_view)>& take) {
  for (const std::string& value : values) {
    if (value == "-") {
      ForEachLine(session, unfold, take);
    } else {
      take(value);
    }
  }
  if (values.empty()) ForEachLine(session, unfold, take);
}

std::string CharacterNumber(std::u16string_view text, std::size_t position) {
  return std::to_string(GetCharCount(text.data(), static_cast<int>(position)) + 1);
}

}  // namespace lumr::tool
