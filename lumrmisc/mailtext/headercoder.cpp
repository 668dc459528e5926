#include <algorithm>
#include <iterator>

#include "lumrmisc/charset/japanese_pairs_internal.h"
#include "lumrmisc/mailtext/headercoder_internal.h"
#include "lumrmisc/platform/codepage.h"

namespace lumr::header {
namespace {

// Characters that belong to the one before them.
constexpr struct {
  char32_t first;
  char32_t last;
} kJoined[] = {
    {0x0300, 0x036F},    // combining marks
    {0x0483, 0x0489},    //
    {0x0591, 0x05BD},    //
    {0x064B, 0x065F},    //
    {0x0900, 0x0903},    //
    {0x093A, 0x094F},    //
    {0x0E31, 0x0E31},    //
    {0x0E34, 0x0E3A},    //
    {0x0E47, 0x0E4E},    //
    {0x1160, 0x11FF},    // vowels and finals of Hangul
    {0x1AB0, 0x1AFF},    //
    {0x1DC0, 0x1DFF},    //
    {0x200D, 0x200D},    // the joiner of emoji
    {0x20D0, 0x20FF},    // marks around symbols
    {0x302A, 0x302F},    //
    {0x3099, 0x309A},    // the voiced and the semi-voiced mark of kana
    {0xFE00, 0xFE0F},    // variation selectors
    {0xFE20, 0xFE2F},    //
    {0xFF9E, 0xFF9F},    // the marks of half-width katakana
    {0x1F3FB, 0x1F3FF},  // colours of skin
    {0xE0020, 0xE007F},  // tags of flags
    {0xE0100, 0xE01EF},  // variants of ideographs
};
constexpr char32_t kJoiner = 0x200D;

bool IsJoined(char32_t character) {
  if (character < kJoined[0].first) return false;
  const auto row =
      std::ranges::lower_bound(kJoined, character, {}, [](const auto& r) { return r.last; });
  return row != std::end(kJoined) && character >= row->first;
}

constexpr bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool IsLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

// The character at pos, which goes behind it; half a pair is one of its own.
char32_t TakeCharacter(std::u16string_view text, std::size_t& pos) {
  const char16_t unit = text[pos++];
  if (!IsHighSurrogate(unit) || pos == text.size() || !IsLowSurrogate(text[pos])) return unit;
  return 0x10000u + ((unit - 0xD800u) << 10) + (text[pos++] - 0xDC00u);
}

void Put(CodedCharacter& coded, unsigned byte) {
  coded.bytes[coded.size++] = static_cast<unsigned char>(byte);
}

void PutUtf8(char32_t character, CodedCharacter& coded) {
  if (character >= 0xD800 && character < 0xE000) {
    character = 0xFFFD;
    coded.isExact = false;
  }
  if (character < 0x80) return Put(coded, character);
  if (character < 0x800) {
    Put(coded, 0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      Put(coded, 0xE0 | character >> 12);
    } else {
      Put(coded, 0xF0 | character >> 18);
      Put(coded, 0x80 | (character >> 12 & 63));
    }
    Put(coded, 0x80 | (character >> 6 & 63));
  }
  Put(coded, 0x80 | (character & 63));
}

void PutUnknown(CodedCharacter& coded) {
  Put(coded, '?');
  coded.isExact = false;
}

// A code of page 932 in ISO-2022-JP or EUC-JP, which have no cells for the area from F0 on.
void PutJapanese(CodeType codeType, unsigned code, CodedCharacter& coded) {
  const bool isJis = codeType == CT_JIS;
  if (code < 0x80) return Put(coded, code);
  if (code < 0x100) {
    if (!IsKanaByte(code)) return PutUnknown(coded);
    if (!isJis) Put(coded, kKanaShift);
    Put(coded, isJis ? code - 0x80 : code);
    if (isJis) coded.set = CodeSet::kKatakana;
    return;
  }
  const std::uint32_t pair = kSJisToJis.Code(code >> 8, code & 0xFF);
  if (pair >= kNoPair) return PutUnknown(coded);
  const unsigned offset = isJis ? 0 : 0x80;
  Put(coded, (pair & 0xFF) + offset);
  Put(coded, (pair >> 8) + offset);
  if (isJis) coded.set = CodeSet::kKanji;
}

void PutInPage(CodeType codeType, unsigned codePage, char32_t character, CodedCharacter& coded) {
  if (character < 0x80) return Put(coded, character);
  if (character > 0xFFFF) return PutUnknown(coded);
  const auto unit = static_cast<char16_t>(character);
  int code = EncodeUnit(codePage, unit, true);
  if (code < 0) {
    code = EncodeUnit(codePage, unit, false);
    coded.isExact = false;
    if (code < 0) return PutUnknown(coded);
  }
  const auto value = static_cast<unsigned>(code);
  if (codeType == CT_JIS || codeType == CT_EUC) return PutJapanese(codeType, value, coded);
  if (value > 0xFF) Put(coded, value >> 8);
  Put(coded, value & 0xFF);
}

}  // namespace

CodeType WordCodeType(CodeType codeType) {
  const bool hasPage = CharSetCode2Name(codeType) != nullptr && codeType != CT_ASCII;
  return hasPage && !IsCodeTypeUnicode(codeType) ? codeType : CT_UTF8;
}

void CodeCharacters(std::u16string_view text, CodeType codeType,
                    std::vector<CodedCharacter>& characters) {
  const unsigned codePage = CharSetCode2CodePage(codeType);
  characters.reserve(characters.size() + text.size());
  bool joinsNext = false;
  for (std::size_t pos = 0; pos < text.size();) {
    const char32_t character = TakeCharacter(text, pos);
    CodedCharacter coded{{}, 0, CodeSet::kAscii, joinsNext || IsJoined(character), true};
    if (codeType == CT_UTF8) {
      PutUtf8(character, coded);
    } else {
      PutInPage(codeType, codePage, character, coded);
    }
    joinsNext = character == kJoiner;
    characters.push_back(coded);
  }
}

void AppendCodedBytes(std::span<const CodedCharacter> characters, std::string& bytes) {
  CodeSet set = CodeSet::kAscii;
  for (const CodedCharacter& coded : characters) {
    if (coded.set != set) bytes += EscapeTo(coded.set);
    set = coded.set;
    bytes.append(reinterpret_cast<const char*>(coded.bytes), coded.size);
  }
  if (set != CodeSet::kAscii) bytes += EscapeTo(CodeSet::kAscii);
}

std::string_view EscapeTo(CodeSet set) {
  switch (set) {
    case CodeSet::kKanji:
      return "\x1b$B";
    case CodeSet::kKatakana:
      return "\x1b(I";
    default:
      return "\x1b(B";
  }
}

}  // namespace lumr::header
