#include "lumrmisc/platform/files.h"
#include "lumrmisc/platform/files_internal.h"

namespace lumr {
namespace {

bool IsHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}
bool IsSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDFFF;
}

constexpr char32_t kEscapedByte = 0xDC00;  // + a byte of 80 or more

struct Character {
  char32_t code;
  std::size_t length;  // 0: malformed
};

// One character of UTF-8 in its shortest form; surrogates where the disk can have them.
Character Utf8At(std::string_view text, std::size_t pos) {
  static constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto byte = static_cast<unsigned char>(text[pos]);
  if (byte < 0x80) return {byte, 1};
  const std::size_t length = byte < 0xC0   ? 0
                             : byte < 0xE0 ? 2
                             : byte < 0xF0 ? 3
                             : byte < 0xF8 ? 4
                                           : 0;
  if (length == 0 || text.size() - pos < length) return {0, 0};
  char32_t code = byte & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[pos + i]);
    if ((next & 0xC0) != 0x80) return {0, 0};
    code = code << 6 | (next & 0x3F);
  }
  if (code < kLeast[length] || code > 0x10FFFF) return {0, 0};
  if (IsSurrogate(code) && internal::NamesAreBytes()) return {0, 0};
  return {code, length};
}

char* WriteUtf8(char32_t code, char* out) {
  const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | code >> 6);
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | code >> 12);
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | code >> 18);
    put(0x80 | (code >> 12 & 0x3F));
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  }
  return out;
}

bool IsSeparator(char16_t unit) {
  return unit == PathSeparator() || (PathSeparator() == u'\\' && unit == u'/');
}

std::size_t NameStart(std::u16string_view path) {
  std::size_t start = path.size();
  while (start != 0 && !IsSeparator(path[start - 1])) --start;
  return start;
}

}  // namespace

CStringW PathFromUtf8(std::string_view utf8) {
  CStringW path(utf8.size(), u'\0');
  char16_t* out = path.data();
  for (std::size_t pos = 0; pos < utf8.size();) {
    const Character character = Utf8At(utf8, pos);
    if (character.length == 0) {
      *out++ = static_cast<char16_t>(kEscapedByte + static_cast<unsigned char>(utf8[pos]));
      ++pos;
      continue;
    }
    if (character.code >= 0x10000) {
      *out++ = static_cast<char16_t>(0xD7C0 + (character.code >> 10));
      *out++ = static_cast<char16_t>(0xDC00 + (character.code & 0x3FF));
    } else {
      *out++ = static_cast<char16_t>(character.code);
    }
    pos += character.length;
  }
  path.resize(static_cast<std::size_t>(out - path.data()));
  return path;
}

CStringA PathToUtf8(std::u16string_view path) {
  CStringA utf8(path.size() * 3, '\0');
  char* out = utf8.data();
  for (std::size_t pos = 0; pos < path.size(); ++pos) {
    const char32_t unit = path[pos];
    if (IsHighSurrogate(unit) && pos + 1 < path.size() && IsLowSurrogate(path[pos + 1])) {
      out = WriteUtf8(0x10000 + ((unit - 0xD800) << 10) + (path[++pos] - 0xDC00u), out);
    } else if (internal::NamesAreBytes() && unit >= kEscapedByte + 0x80 &&
               unit <= kEscapedByte + 0xFF) {
      *out++ = static_cast<char>(unit - kEscapedByte);
    } else {
      out = WriteUtf8(unit, out);
    }
  }
  utf8.resize(static_cast<std::size_t>(out - utf8.data()));
  return utf8;
}

CStringW JoinPath(std::u16string_view folder, std::u16string_view name) {
  CStringW path;
  path.reserve(folder.size() + 1 + name.size());
  path += folder;
  if (!folder.empty() && !IsSeparator(folder.back())) path += PathSeparator();
  while (!folder.empty() && !name.empty() && IsSeparator(name.front())) name.remove_prefix(1);
  path += name;
  return path;
}

std::u16string_view NameOfPath(std::u16string_view path) {
  return path.substr(NameStart(path));
}

std::u16string_view FolderOfPath(std::u16string_view path) {
  return path.substr(0, NameStart(path));
}

}  // namespace lumr
