#include "safetext.h"

#include <array>
#include <cstdint>

#include "lumrmisc/platform/unicode.h"

namespace lumr::tool {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Bytes that stand for themselves in every form.
constexpr auto kPlain = [] {
  std::array<bool, 256> plain{};
  for (std::size_t c = 0x20; c < 0x7F; ++c) plain[c] = true;
  return plain;
}();

unsigned char ByteAt(std::string_view text, std::size_t pos) {
  return static_cast<unsigned char>(text[pos]);
}

struct Character {
  char32_t code;
  std::size_t length;  // bytes
  bool valid;
};

// What may follow a lead byte (Unicode Standard, table 3-7): neither overlong forms nor
// surrogates nor anything above U+10FFFF pass.
struct LeadRow {
  unsigned char first, last;  // lead bytes
  int trails;
  unsigned char low, high;  // range of the first trail byte
};
constexpr LeadRow kLeads[] = {
    {0xC2, 0xDF, 1, 0x80, 0xBF}, {0xE0, 0xE0, 2, 0xA0, 0xBF}, {0xE1, 0xEC, 2, 0x80, 0xBF},
    {0xED, 0xED, 2, 0x80, 0x9F}, {0xEE, 0xEF, 2, 0x80, 0xBF}, {0xF0, 0xF0, 3, 0x90, 0xBF},
    {0xF1, 0xF3, 3, 0x80, 0xBF}, {0xF4, 0xF4, 3, 0x80, 0x8F},
};

Character ReadMultiByte(std::string_view text, std::size_t pos) {
  const unsigned char lead = ByteAt(text, pos);
  for (const LeadRow& row : kLeads) {
    if (lead < row.first || lead > row.last) continue;
    char32_t code = lead & (0x3Fu >> row.trails);
    std::size_t length = 1;
    for (; length <= static_cast<std::size_t>(row.trails); ++length) {
      if (pos + length >= text.size()) return {0, length, false};
      const unsigned char trail = ByteAt(text, pos + length);
      const unsigned char low = length == 1 ? row.low : 0x80;
      const unsigned char high = length == 1 ? row.high : 0xBF;
      if (trail < low || trail > high) return {0, length, false};
      code = (code << 6) | (trail & 0x3Fu);
    }
    return {code, length, true};
  }
  return {0, 1, false};
}

bool TurnsDirection(char32_t code) {
  return code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069);
}

// Code points above ASCII that are not shown as they are.
bool IsUnsafe(char32_t code, SafeForm form) {
  if (form == SafeForm::kUtf8) return false;
  if (code < 0xA0) return true;
  return form == SafeForm::kOneLine && (TurnsDirection(code) || code == 0x2028 || code == 0x2029);
}

// The picture of an ASCII control character: U+2400 and following.
void AppendPicture(unsigned char control, std::string& out) {
  out += "\xE2\x90";
  out += static_cast<char>(control == 0x7F ? 0xA1 : 0x80 + control);
}

// One ASCII control character at pos; gives the number of bytes used up.
std::size_t AppendControl(std::string_view text, std::size_t pos, SafeForm form, std::string& out) {
  const unsigned char control = ByteAt(text, pos);
  if (form == SafeForm::kUtf8) {
    out += static_cast<char>(control);
    return 1;
  }
  if (form == SafeForm::kLines) {
    if (control == '\n' || control == '\t') {
      out += static_cast<char>(control);
      return 1;
    }
    if (control == '\r') {
      out += '\n';
      return pos + 1 < text.size() && text[pos + 1] == '\n' ? 2 : 1;
    }
  }
  AppendPicture(control, out);
  return 1;
}

}  // namespace

long long AppendSafe(std::string_view text, SafeForm form, std::string& out) {
  out.reserve(out.size() + text.size());
  long long invalid = 0;
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::size_t end = pos;
    std::size_t resume = pos;
    for (;;) {  // as far as the text can be copied
      while (end < text.size() && kPlain[ByteAt(text, end)]) ++end;
      resume = end;
      if (end == text.size() || ByteAt(text, end) < 0x80) break;
      const Character character = ReadMultiByte(text, end);
      resume = end + character.length;
      if (!character.valid || IsUnsafe(character.code, form)) {
        invalid += !character.valid;
        break;
      }
      end = resume;
    }
    out.append(text, pos, end - pos);
    if (resume > end) {
      out += kReplacement;
    } else if (end < text.size()) {
      resume += AppendControl(text, end, form, out);
    }
    pos = resume;
  }
  return invalid;
}

std::string SafeLine(std::string_view text) {
  std::string line;
  AppendSafe(text, SafeForm::kOneLine, line);
  return line;
}

int DisplayWidth(std::string_view utf8) {
  int columns = 0;
  for (std::size_t pos = 0; pos < utf8.size();) {
    if (ByteAt(utf8, pos) < 0x80) {
      ++columns;
      ++pos;
      continue;
    }
    const Character character = ReadMultiByte(utf8, pos);
    columns += character.valid && IsEastAsianWide(character.code) ? 2 : 1;
    pos += character.length;
  }
  return columns;
}

std::string Padded(std::string_view utf8, int columns) {
  std::string padded(utf8);
  const int missing = columns - DisplayWidth(utf8);
  if (missing > 0) padded.append(static_cast<std::size_t>(missing), ' ');
  return padded;
}

}  // namespace lumr::tool
