#include <algorithm>

#include "lumrmisc/charset/mailcharset.h"
#include "lumrmisc/mailtext/headertext_internal.h"
#include "lumrmisc/mailtext/transfer_internal.h"

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

// Appends count units that unitAt gives.
template <class UnitAt>
void AppendClean(std::size_t count, UnitAt unitAt, CStringW& out) {
  bool spaced = false;
  for (std::size_t i = 0; i < count; ++i) {
    const char16_t unit = unitAt(i);
    const UnitUse use = UseOf(unit);
    if (use == UnitUse::kText) out += unit;
    if (use == UnitUse::kSpace && !spaced) out += u' ';
    spaced = use == UnitUse::kSpace || (use == UnitUse::kNothing && spaced);
  }
}

bool IsFoldSpace(char c) {
  return transfer::IsBlank(c) || transfer::IsLineBreak(c);
}

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

ReadingResult ReadLabelledBytes(std::string_view label, CodeType codeType, std::string_view bytes,
                                CBuffer& text) {
  ReadingResult result;
  if (IsTelling(codeType)) {
    CConversionReport report(0);
    ConvertMailText({codeType, CharsetSource::kLabel}, bytes, text, &report);
    if (report.IsEmpty()) return result;
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
  AppendClean(
      text.size(), [text](std::size_t i) { return static_cast<unsigned char>(text[i]); }, out);
}

void AppendCleanUnits(std::string_view utf16, CStringW& out) {
  AppendClean(
      utf16.size() / 2, [utf16](std::size_t i) { return LoadUnit(utf16.data() + 2 * i); }, out);
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

std::string_view TrimmedFold(std::string_view raw) {
  while (!raw.empty() && IsFoldSpace(raw.front())) raw.remove_prefix(1);
  while (!raw.empty() && IsFoldSpace(raw.back())) raw.remove_suffix(1);
  return raw;
}

}  // namespace lumr::header
