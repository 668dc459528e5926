#include <algorithm>
#include <utility>

#include "lumrmisc/charset/japanese_internal.h"
#include "lumrmisc/charset/wordscan_internal.h"
#include "lumrmisc/mailtext/headertext_internal.h"
#include "lumrmisc/mailtext/transfer_internal.h"
#include "lumrmisc/platform/codepage.h"

namespace lumr::header {
namespace {

constexpr char kEscape = '\x1b';
constexpr char kShiftOut = '\x0e';

enum class UnitUse { kText, kSpace, kNothing };

UnitUse UseOf(char16_t unit) {
  if (unit == 0x2028 || unit == 0x2029 || unit == 0x85) return UnitUse::kSpace;
  if (unit >= '\t' && unit <= '\r') return UnitUse::kSpace;
  if (unit == 0xFEFF) return UnitUse::kNothing;  // the byte-order mark of a word that was joined
  return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) ? UnitUse::kNothing : UnitUse::kText;
}

bool IsSuspect(char16_t unit) {
  if (unit > 0x2029) return unit == 0xFEFF;
  return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit >= 0x2028;
}

// Writes units as UTF-16 or UTF-8 at the end of a text that has room for them.
class WideWriter {
 public:
  static constexpr std::size_t kMostPerUnit = 1;
  explicit WideWriter(char16_t* out) : out_(out) {}
  void Put(char16_t unit) { *out_++ = unit; }
  char16_t* Finish() { return out_; }

 private:
  char16_t* out_;
};

class Utf8Writer {
 public:
  static constexpr std::size_t kMostPerUnit = 3;
  explicit Utf8Writer(char* out) : out_(out) {}

  void Put(char16_t unit) {
    if (high_ != 0) return PutBehindHigh(unit);
    if (unit >= 0x800 && unit < 0xD800) return PutThree(unit);
    if (unit < 0x80) {
      *out_++ = static_cast<char>(unit);
    } else if (unit < 0x800) {
      PutByte(0xC0 | unit >> 6);
      PutByte(0x80 | (unit & 63));
    } else if (unit >= 0xD800 && unit < 0xDC00) {
      high_ = unit;
    } else {
      PutThree(unit >= 0xDC00 && unit < 0xE000 ? 0xFFFD : unit);
    }
  }
  char* Finish() {
    if (high_ != 0) PutThree(0xFFFD);
    return out_;
  }

 private:
  void PutByte(int byte) { *out_++ = static_cast<char>(byte); }
  void PutThree(int unit) {
    PutByte(0xE0 | unit >> 12);
    PutByte(0x80 | (unit >> 6 & 63));
    PutByte(0x80 | (unit & 63));
  }
  void PutBehindHigh(char16_t unit) {
    const char16_t high = std::exchange(high_, u'\0');
    if (unit < 0xDC00 || unit >= 0xE000) {
      PutThree(0xFFFD);
      return Put(unit);
    }
    const int character = 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00);
    PutByte(0xF0 | character >> 18);
    PutByte(0x80 | (character >> 12 & 63));
    PutByte(0x80 | (character >> 6 & 63));
    PutByte(0x80 | (character & 63));
  }

  char* out_;
  char16_t high_ = 0;
};

// Appends count units that unitAt gives.
template <class Writer, class UnitAt, class Text>
void AppendClean(std::size_t count, UnitAt unitAt, Text& out) {
  const std::size_t size = out.size();
  out.resize(size + count * Writer::kMostPerUnit);
  Writer writer(out.data() + size);
  bool spaced = false;
  for (std::size_t i = 0; i < count; ++i) {
    const char16_t unit = unitAt(i);
    if (!IsSuspect(unit)) {
      writer.Put(unit);
      spaced = false;
      continue;
    }
    const UnitUse use = UseOf(unit);
    if (use == UnitUse::kSpace && !spaced) writer.Put(u' ');
    spaced = spaced || use == UnitUse::kSpace;
  }
  out.resize(static_cast<std::size_t>(writer.Finish() - out.data()));
}

template <class Writer, class Text>
void AppendAscii(std::string_view text, Text& out) {
  const auto isControl = [](char c) { return c < ' ' || c == '\x7F'; };
  if (std::none_of(text.begin(), text.end(), isControl)) {
    out.append(text.begin(), text.end());
    return;
  }
  AppendClean<Writer>(
      text.size(), [text](std::size_t i) { return static_cast<unsigned char>(text[i]); }, out);
}

template <class Writer, class Text>
void AppendUnits(std::string_view utf16, Text& out) {
  AppendClean<Writer>(
      utf16.size() / 2, [utf16](std::size_t i) { return LoadUnit(utf16.data() + 2 * i); }, out);
}

constexpr unsigned kJapanesePage = 932;

}  // namespace

bool IsTelling(CodeType codeType) {
  switch (codeType) {
    case CT_JIS:
    case CT_EUC:
    case CT_SJIS:
    case CT_GB2312:
    case CT_BIG5:
    case CT_KSC5601:
    case CT_EUCKR:
    case CT_UTF7:
    case CT_UTF8:
      return true;
    default:
      return false;
  }
}

bool ReadExactly(CodeType codeType, std::string_view bytes, ScratchPair& scratch,
                 std::string_view& utf16) {
  unsigned codePage = CharSetCode2CodePage(codeType);
  if (codeType == CT_JIS || codeType == CT_EUC) {
    JapaneseConverter converter(codeType == CT_JIS ? JapaneseConversion::kJisToSJis
                                                   : JapaneseConversion::kEucToSJis);
    char* const begin = scratch.middle.Room(converter.MaxOutput(bytes.size()));
    const char* const end = converter.Convert(bytes, true, begin);
    if (converter.Lost() > 0) return false;
    bytes = {begin, static_cast<std::size_t>(end - begin)};
    codePage = kJapanesePage;
  }
  CodePageDecoder decoder(codePage);
  char* const begin = scratch.result.Room(decoder.MaxOutput(bytes.size()));
  const char* const end = decoder.Decode(bytes, true, begin);
  utf16 = {begin, static_cast<std::size_t>(end - begin)};
  const bool hasMark = utf16.size() >= 2 && LoadUnit(begin) == 0xFEFF;
  return decoder.Counts().fits + decoder.Counts().replaced == 0 && !hasMark;
}

namespace {

// Whether eight bytes begin with two characters of three bytes, with leads E3 to E9. Most of
// Japanese text is made of these, and nothing among them has to be looked at.
bool BeginWithTwoClean(const unsigned char* p) {
  const std::uint64_t bytes = LoadValue<std::uint64_t>(p);
  if ((bytes & 0xC0C0'F0C0'C0F0) != 0x8080'E080'80E0) return false;
  // The low half of a lead carries into bit 4 when it is 3 or more, and when it is past 9.
  constexpr std::uint64_t kLeads = 0x0100'0001;
  const std::uint64_t halves = bytes & 0xF * kLeads;
  const std::uint64_t inRange = (halves + 0xD * kLeads) & ~(halves + 0x6 * kLeads);
  return (inRange & 0x10 * kLeads) == 0x10 * kLeads;
}

}  // namespace

bool IsCleanUtf8(std::string_view bytes) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  const unsigned char* const end = p + bytes.size();
  const auto isTail = [](unsigned byte) { return (byte & 0xC0) == 0x80; };
  while (p < end) {
    while (end - p >= 8 && BeginWithTwoClean(p)) p += 6;
    const unsigned lead = *p;
    const auto left = end - p;
    if (lead < 0x80) {
      if (lead < 0x20 || lead == 0x7F) return false;
      p += 1;
    } else if (lead < 0xE0) {
      // C2 80 to C2 9F are control characters.
      if (lead < 0xC2 || left < 2 || !isTail(p[1]) || (lead == 0xC2 && p[1] < 0xA0)) return false;
      p += 2;
    } else if (lead < 0xF0) {
      if (left < 3 || !isTail(p[1]) || !isTail(p[2])) return false;
      const unsigned unit = (lead & 15) << 12 | (p[1] & 63u) << 6 | (p[2] & 63u);
      if (unit < 0x800 || (unit >= 0xD800 && unit < 0xE000)) return false;
      if (unit == 0x2028 || unit == 0x2029 || unit == 0xFEFF) return false;
      p += 3;
    } else {
      if (lead > 0xF4 || left < 4 || !isTail(p[1]) || !isTail(p[2]) || !isTail(p[3])) return false;
      if ((lead == 0xF0 && p[1] < 0x90) || (lead == 0xF4 && p[1] >= 0x90)) return false;
      p += 4;
    }
  }
  return true;
}

ReadingResult ReadLabelledBytes(std::string_view label, CodeType codeType, std::string_view bytes,
                                CBuffer& text) {
  ReadingResult result;
  ScratchPair scratch;
  std::string_view exact;
  if (IsTelling(codeType) && ReadExactly(codeType, bytes, scratch, exact)) {
    text = exact;
    return result;
  }
  const MailCharset charset = ResolveMailCharset(label, bytes);
  CConversionReport report(0);
  ConvertMailText(charset, bytes, text, &report);
  result.errors = report.Replaced();
  result.asLabelled = charset.source == CharsetSource::kLabel;
  return result;
}

std::string_view RawLabel(std::string_view rawCharset) {
  return CodeTypeOfMailLabel(rawCharset) == CT_UNICODE ? std::string_view() : rawCharset;
}

bool IsPlainIn(CodeType codeType, std::string_view bytes) {
  if (codeType == CT_UTF7 || codeType == CT_UNICODE) return false;
  return std::all_of(bytes.begin(), bytes.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x80 && c != kEscape && c != kShiftOut;
  });
}

void AppendCleanAscii(std::string_view text, CStringW& out) {
  AppendAscii<WideWriter>(text, out);
}

void AppendCleanAscii(std::string_view text, CStringA& out) {
  AppendAscii<Utf8Writer>(text, out);
}

void AppendCleanUnits(std::string_view utf16, CStringW& out) {
  AppendUnits<WideWriter>(utf16, out);
}

void AppendCleanUnits(std::string_view utf16, CStringA& out) {
  AppendUnits<Utf8Writer>(utf16, out);
}

void AppendUnfolded(std::string_view raw, std::string& out) {
  while (true) {
    const std::size_t lineEnd = raw.find_first_of("\r\n");
    if (lineEnd == raw.npos) break;
    std::string_view line = raw.substr(0, lineEnd);
    while (!line.empty() && transfer::IsBlank(line.back())) line.remove_suffix(1);
    out += line;
    out += ' ';
    raw.remove_prefix(std::min(raw.find_first_not_of(" \t\r\n", lineEnd), raw.size()));
  }
  out += raw;
}

template <class Text>
void RawTextReader::AppendPart(std::string_view part, Text& out) {
  std::string unfolded;
  if (part.find_first_of("\r\n") != part.npos) {
    AppendUnfolded(part, unfolded);
    part = unfolded;
  }
  if (IsPlainIn(CT_ASCII, part)) return AppendCleanAscii(part, out);
  if (!resolved_) charset_ = ResolveMailCharset(RawLabel(rawCharset_), raw_);
  resolved_ = true;
  CBuffer units;
  ConvertMailText(charset_, part, units);
  AppendCleanUnits(units.Bytes(), out);
}
template void RawTextReader::AppendPart(std::string_view part, CStringW& out);
template void RawTextReader::AppendPart(std::string_view part, CStringA& out);

std::string_view TrimmedFold(std::string_view raw) {
  while (!raw.empty() && transfer::IsLayout(raw.front())) raw.remove_prefix(1);
  while (!raw.empty() && transfer::IsLayout(raw.back())) raw.remove_suffix(1);
  return raw;
}

}  // namespace lumr::header
