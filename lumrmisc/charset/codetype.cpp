#include "lumrmisc/charset/codetype.h"

#include <algorithm>
#include <array>

#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/messages.h"

namespace lumr {
namespace {

constexpr int kJapaneseFonts = 128;
constexpr unsigned kShiftJisPage = 932;

struct CharSetRow {
  CodeType codeType;
  int fontCharSet;
  unsigned codePage;
  std::array<const char*, 3> names;  // canonical name first; unused ones null
  std::uint32_t lcid;
  CodeType editForm;
  CodeType sendForm;
  unsigned displayName;  // message id; 0: the canonical name serves
};

// Names are looked up in this order. CT_ASCII has the Japanese font charset on purpose: plain
// text is shown, and edited, as the Japanese text that it may become.
constexpr CharSetRow kCharSets[] = {
    {CT_SJIS, 128, 932, {"Shift_JIS", "Shift-JIS", "x-sjis"}, 0x0411, CT_SJIS, CT_JIS, 3503},
    {CT_JIS, 128, 932, {"ISO-2022-JP"}, 0x0411, CT_SJIS, CT_JIS, 3501},
    {CT_EUC, 128, 932, {"EUC-JP"}, 0x0411, CT_SJIS, CT_JIS, 3502},
    {CT_ASCII, 128, 1252, {"US-ASCII", "ASCII"}, 0x0400, CT_ASCII, CT_ASCII, 3500},
    {CT_GB2312, 134, 936, {"GB2312"}, 0x0804, CT_GB2312, CT_GB2312, 3506},
    {CT_BIG5, 136, 950, {"Big5"}, 0x0404, CT_BIG5, CT_BIG5, 3508},
    {CT_KSC5601, 129, 949, {"KS_C_5601-1987", "KS_C_5601"}, 0x0412, CT_KSC5601, CT_KSC5601, 3507},
    {CT_EUCKR, 129, 51949, {"EUC-KR"}, 0x0412, CT_KSC5601, CT_KSC5601, 3519},
    {CT_KOI8R, 204, 20866, {"KOI8-R"}, 0x0419, CT_WIN1251, CT_KOI8R, 3514},
    {CT_ISO8859_1, 0, 28591, {"ISO-8859-1"}, 0x0400, CT_WIN1252, CT_ISO8859_1, 3509},
    {CT_ISO8859_2, 238, 28592, {"ISO-8859-2"}, 0x0400, CT_WIN1250, CT_ISO8859_2, 3510},
    {CT_ISO8859_4, 186, 28594, {"ISO-8859-4"}, 0x0400, CT_WIN1257, CT_ISO8859_4, 3512},
    {CT_ISO8859_5, 204, 28595, {"ISO-8859-5"}, 0x0419, CT_WIN1251, CT_ISO8859_5, 3513},
    {CT_ISO8859_7, 161, 28597, {"ISO-8859-7"}, 0x0408, CT_WIN1253, CT_ISO8859_7, 3516},
    {CT_ISO8859_9, 162, 28599, {"ISO-8859-9"}, 0x041F, CT_WIN1254, CT_ISO8859_9, 3518},
    {CT_WIN1250, 238, 1250, {"windows-1250"}, 0x0400, CT_WIN1250, CT_ISO8859_2, 0},
    {CT_WIN1251, 204, 1251, {"windows-1251"}, 0x0419, CT_WIN1251, CT_ISO8859_5, 0},
    {CT_WIN1252, 0, 1252, {"windows-1252"}, 0x0400, CT_WIN1252, CT_ISO8859_1, 0},
    {CT_WIN1253, 161, 1253, {"windows-1253"}, 0x0408, CT_WIN1253, CT_ISO8859_7, 0},
    {CT_WIN1254, 162, 1254, {"windows-1254"}, 0x041F, CT_WIN1254, CT_ISO8859_9, 0},
    {CT_WIN1257, 186, 1257, {"windows-1257"}, 0x0400, CT_WIN1257, CT_ISO8859_4, 0},
    {CT_UTF8, 1, 65001, {"UTF-8", "UTF8"}, 0x0400, CT_UNICODE, CT_UTF8, 3505},
    {CT_UTF7, 1, 65000, {"UTF-7", "UTF7"}, 0x0400, CT_UNICODE, CT_UTF7, 3504},
    {CT_UNICODE, 1, 1200, {"unicode", "UTF-16", "UTF16"}, 0x0400, CT_UNICODE, CT_UTF8, 0},
};

constexpr auto kCodeTypes = [] {
  std::array<CodeType, std::size(kCharSets)> codeTypes{};
  std::ranges::transform(kCharSets, codeTypes.begin(), &CharSetRow::codeType);
  return codeTypes;
}();

// The place in kCharSets of each code type.
constexpr unsigned char kNoRow = 0xFF;
constexpr auto kPlaces = [] {
  std::array<unsigned char, std::ranges::max(kCodeTypes) + 1> places{};
  places.fill(kNoRow);
  for (std::size_t i = 0; i < std::size(kCharSets); ++i) {
    places[static_cast<std::size_t>(kCharSets[i].codeType)] = static_cast<unsigned char>(i);
  }
  return places;
}();

// The code page in which the text of each code type is edited; 0 for none. On its own, since the
// conversion of one line asks for two of them.
constexpr auto kEditPages = [] {
  std::array<std::uint16_t, kPlaces.size()> pages{};
  for (const CharSetRow& row : kCharSets) {
    pages[static_cast<std::size_t>(row.codeType)] = static_cast<std::uint16_t>(
        row.fontCharSet == kJapaneseFonts ? kShiftJisPage : row.codePage);
  }
  return pages;
}();

const CharSetRow* FindRow(CodeType codeType) {
  const auto number = static_cast<std::size_t>(codeType);
  if (number >= kPlaces.size() || kPlaces[number] == kNoRow) return nullptr;
  return &kCharSets[kPlaces[number]];
}

std::span<const char* const> NamesOf(const CharSetRow& row) {
  const auto count = std::ranges::find(row.names, nullptr) - row.names.begin();
  return std::span(row.names).first(static_cast<std::size_t>(count));
}

const CharSetRow* FindRowByName(std::string_view name) {
  const MbcsPage& page = CurrentMbcsPage();
  for (const CharSetRow& row : kCharSets) {
    for (const char* const alias : NamesOf(row)) {
      if (page.EqualNoCase(name, alias)) return &row;
    }
  }
  return nullptr;
}

std::string_view ViewOf(const char* text) {
  return text == nullptr ? std::string_view() : text;
}

}  // namespace

const char* CharSetCode2Name(CodeType codeType) {
  const CharSetRow* const row = FindRow(codeType);
  return row == nullptr ? nullptr : row->names[0];
}

CodeType CharSetName2CodeExact(std::string_view name) {
  const CharSetRow* const row = FindRowByName(name);
  return row == nullptr ? CT_UNKNOWN : row->codeType;
}

CodeType CharSetName2CodeExact(const char* name) {
  return CharSetName2CodeExact(ViewOf(name));
}

CodeType CharSetName2Code(std::string_view name) {
  const CodeType codeType = CharSetName2CodeExact(name);
  return codeType == CT_UNKNOWN ? CT_JIS : codeType;
}

CodeType CharSetName2Code(const char* name) {
  return CharSetName2Code(ViewOf(name));
}

const char* ReformCharSet(CStringA& charset) {
  if (const CharSetRow* const row = FindRowByName(charset)) charset = row->names[0];
  return charset.c_str();
}

const char* ReformEncoding(CStringA& encoding) {
  const MbcsPage& page = CurrentMbcsPage();
  for (std::size_t pos = 0; pos < encoding.size();) {
    const auto byte = static_cast<unsigned char>(encoding[pos]);
    if (!page.IsPair(encoding, pos)) {
      encoding[pos++] = static_cast<char>(page.ToLowerByte(byte));
      continue;
    }
    const unsigned lower =
        page.ToLower(byte * 256u + static_cast<unsigned char>(encoding[pos + 1]));
    encoding[pos++] = static_cast<char>(lower / 256);
    encoding[pos++] = static_cast<char>(lower % 256);
  }
  return encoding.c_str();
}

CStringA GetCodeTypeDisplayName(CodeType codeType) {
  const CharSetRow* const row = FindRow(codeType);
  if (row == nullptr) return {};
  return row->displayName == 0 ? CStringA(row->names[0]) : MessageText(row->displayName);
}

CStringW GetCodeTypeDisplayNameW(CodeType codeType) {
  const CharSetRow* const row = FindRow(codeType);
  if (row == nullptr) return {};
  if (row->displayName != 0) return MessageTextW(row->displayName);
  const std::string_view name = row->names[0];
  return CStringW(name.begin(), name.end());
}

std::span<const CodeType> AllCodeTypes() {
  return kCodeTypes;
}

std::span<const char* const> CharSetNames(CodeType codeType) {
  const CharSetRow* const row = FindRow(codeType);
  return row == nullptr ? std::span<const char* const>() : NamesOf(*row);
}

int CharSetCode2FontCharSet(CodeType codeType) {
  const CharSetRow* const row = FindRow(codeType);
  return row == nullptr ? kJapaneseFonts : row->fontCharSet;
}

std::uint32_t CharSetCode2LCID(CodeType codeType) {
  const CharSetRow* const row = FindRow(codeType);
  return row == nullptr ? 0 : row->lcid;
}

unsigned CharSetCode2CodePage(CodeType codeType) {
  const auto number = static_cast<std::size_t>(codeType);
  return number < kEditPages.size() ? kEditPages[number] : 0;
}

unsigned CharSetCode2CodePage2(CodeType codeType) {
  const CharSetRow* const row = FindRow(codeType);
  return row == nullptr ? 0 : row->codePage;
}

int IsCodeTypeJapanese(CodeType codeType) {
  return codeType == CT_JIS || codeType == CT_EUC || codeType == CT_SJIS;
}

int IsCodeTypeUnicode(CodeType codeType) {
  return codeType == CT_UTF7 || codeType == CT_UTF8 || codeType == CT_UNICODE;
}

int AsciiByte2Column(int bytes, CodeType codeType) {
  return IsCodeTypeUnicode(codeType) ? bytes / 2 : bytes;
}

CodeType CodeTypeSave2Edit(CodeType codeType) {
  const CharSetRow* const row = FindRow(codeType);
  return row == nullptr ? codeType : row->editForm;
}

CodeType CodeType2DefSend(CodeType codeType) {
  const CharSetRow* const row = FindRow(codeType);
  return row == nullptr ? codeType : row->sendForm;
}

CodeType GetPriorCodeType(CodeType a, CodeType b) {
  if (a == b) return a;
  // Two Unicode code types share an edit form too, but UTF-7 beside a wider one is no carrier.
  if (a == CT_UNICODE || b == CT_UNICODE || a == CT_UTF8 || b == CT_UTF8) return CT_UTF8;
  if (CodeTypeSave2Edit(a) == CodeTypeSave2Edit(b)) return CodeTypeSave2Edit(a) == a ? b : a;
  if (a == CT_UTF7 || b == CT_UTF7) return CT_UTF7;
  if (a == CT_UNKNOWN) return b;
  if (b == CT_UNKNOWN) return a;
  if (a == CT_ASCII) return b;
  if (b == CT_ASCII) return a;
  return CT_UTF8;
}

int IsPriorCodeType(CodeType a, CodeType b) {
  if (a == CT_UNKNOWN) return b != CT_UNKNOWN;
  return a == CT_ASCII && b != CT_UNKNOWN && b != CT_ASCII;
}

CApplyLocale::CApplyLocale(CodeType codeType) {
  if (codeType == CT_ASCII || IsCodeTypeUnicode(codeType)) return;
  const unsigned codePage = CharSetCode2CodePage(CodeTypeSave2Edit(codeType));
  const unsigned current = CurrentCodePage();
  if (codePage == 0 || codePage == current || !SetCurrentCodePage(codePage)) return;
  savedCodePage_ = current;
  applied_ = 1;
}

CApplyLocale::~CApplyLocale() {
  if (applied_ != 0) SetCurrentCodePage(savedCodePage_);
}

}  // namespace lumr
