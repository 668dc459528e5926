#include "json.h"

#include "safetext.h"

namespace lumr::tool {

std::string JsonText(std::string_view text) {
  std::string valid;
  AppendSafe(text, SafeForm::kUtf8, valid);
  return valid;
}

std::string JsonLine(const Json& object) {
  const std::string dump = object.dump();
  std::string line;
  line.reserve(dump.size() + 1);
  for (std::size_t i = 0; i < dump.size(); ++i) {
    const auto byte = static_cast<unsigned char>(dump[i]);
    const bool isC1 =
        byte == 0xC2 && i + 1 < dump.size() && static_cast<unsigned char>(dump[i + 1]) < 0xA0;
    if (isC1 || byte == 0x7F) {
      constexpr char kDigits[] = "0123456789abcdef";
      const auto code = static_cast<unsigned char>(isC1 ? dump[++i] : dump[i]);
      line += "\\u00";
      line += kDigits[code >> 4];
      line += kDigits[code & 15];
    } else {
      line += dump[i];
    }
  }
  line += '\n';
  return line;
}

}  // namespace lumr::tool
