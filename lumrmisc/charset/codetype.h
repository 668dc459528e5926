// Code types: the character encodings that texts come in, their charset names, and the rules
// that map one to another.
//
// A text has a transfer form (what a mail part or a file holds) and an edit form (what is worked
// on): Shift_JIS for Japanese, UTF-16LE for Unicode, a windows code page for most others. A
// function that takes a code type with byte text reads the text in the code type's edit form.
//
// Every function takes any number; one that is no code type is like CT_UNKNOWN unless said
// otherwise. Nothing here throws except for memory.
#pragma once

#include <cstdint>
#include <span>

#include "lumrmisc/platform/types.h"

namespace lumr {

// The numbers are stored in setting files.
enum CodeType : int {
  CT_UNKNOWN = 0,      // no information
  CT_ASCII = 1,        // 7-bit text
  CT_JIS = 10,         // ISO-2022-JP: 7-bit Japanese with escape sequences, as mail sends it
  CT_EUC = 11,         // EUC-JP
  CT_SJIS = 12,        // Shift_JIS: the edit form of all Japanese text
  CT_GB2312 = 20,      // Simplified Chinese
  CT_BIG5 = 21,        // Traditional Chinese
  CT_KSC5601 = 30,     // Korean
  CT_EUCKR = 31,       // Korean EUC
  CT_KOI8R = 40,       // Cyrillic
  CT_ISO8859_1 = 101,  // Western European
  CT_ISO8859_2 = 102,  // Central European
  CT_ISO8859_4 = 104,  // Baltic
  CT_ISO8859_5 = 105,  // Cyrillic
  CT_ISO8859_7 = 107,  // Greek
  CT_ISO8859_9 = 109,  // Turkish
  CT_WIN1250 = 200,    // Central European
  CT_WIN1251 = 201,    // Cyrillic
  CT_WIN1252 = 202,    // Western European
  CT_WIN1253 = 203,    // Greek
  CT_WIN1254 = 204,    // Turkish
  CT_WIN1257 = 207,    // Baltic
  CT_UTF7 = 1007,      // Unicode, UTF-7
  CT_UTF8 = 1008,      // Unicode, UTF-8
  CT_UNICODE = 2000,   // Unicode, UTF-16 little-endian: the edit form of all Unicode text
};

// Names.

// The canonical charset name, or null when the code type has none (CT_UNKNOWN). Constant.
const char* CharSetCode2Name(CodeType codeType);

// The code type of a charset name or of one of its aliases, ignoring case as the current code
// page does. Exact: CT_UNKNOWN for any other name. The other form: an empty, null or unknown
// name gives CT_JIS, because unlabelled Japanese mail is ISO-2022-JP.
CodeType CharSetName2CodeExact(const char* name);
CodeType CharSetName2CodeExact(std::string_view name);
CodeType CharSetName2Code(const char* name);
CodeType CharSetName2Code(std::string_view name);

// Makes a charset name or alias the canonical name; another text stays as it is. Gives the
// text of charset.
const char* ReformCharSet(CStringA& charset);

// Makes the name of a transfer encoding lower case, two-byte characters of the current code page
// kept whole. Gives the text of encoding.
const char* ReformEncoding(CStringA& encoding);

// The name that users are shown, in the current code page (or in UTF-16) and in the language of
// messages; the charset name where there is no other; empty for CT_UNKNOWN.
CStringA GetCodeTypeDisplayName(CodeType codeType);
CStringW GetCodeTypeDisplayNameW(CodeType codeType);

// All code types but CT_UNKNOWN, in the order in which names are looked up; and the names of
// one, the canonical one first. Both are constant; an unknown code type has no names.
std::span<const CodeType> AllCodeTypes();
std::span<const char* const> CharSetNames(CodeType codeType);

// What belongs to a code type.

// The charset number of fonts: 128 (Japanese) for an unknown code type, and for CT_ASCII, which
// is shown with Japanese fonts too.
int CharSetCode2FontCharSet(CodeType codeType);

std::uint32_t CharSetCode2LCID(CodeType codeType);  // the locale id; 0 when unknown

// The code page of the charset; 0 when unknown. The first form gives, for the Japanese code types
// and CT_ASCII, 932, the code page in which such text is edited; the second one gives 1252 for
// CT_ASCII. The other two Japanese forms have no table of their own and give 932 in both.
unsigned CharSetCode2CodePage(CodeType codeType);
unsigned CharSetCode2CodePage2(CodeType codeType);

int IsCodeTypeJapanese(CodeType codeType);  // 1 for CT_JIS, CT_EUC and CT_SJIS
int IsCodeTypeUnicode(CodeType codeType);   // 1 for CT_UTF7, CT_UTF8 and CT_UNICODE

// The number of columns that a count of bytes of ASCII characters in edit form takes.
int AsciiByte2Column(int bytes, CodeType codeType);

// ---- From one code type to another
// ---------------------------------------------------------------

// The code type in which a text is edited, and the one in which an edited text is sent unless
// the user says otherwise. An unknown number is returned unchanged.
CodeType CodeTypeSave2Edit(CodeType codeType);
CodeType CodeType2DefSend(CodeType codeType);

// The code type that can carry a text in a together with one in b. Two with one edit form keep
// the transfer form; CT_UTF8 carries what nothing narrower can.
CodeType GetPriorCodeType(CodeType a, CodeType b);

// 1 when b says more than a: a is CT_UNKNOWN and b is not, or a is CT_ASCII and b is neither.
int IsPriorCodeType(CodeType a, CodeType b);

// ---- The current code page
// -----------------------------------------------------------------------

// Makes the code page of a code type's edit form the current one of the calling thread for as
// long as the object lives, then restores exactly what was there. CT_ASCII, the Unicode code types
// and unknown ones change nothing. Objects nest; each must end in the thread it began in.
class CApplyLocale {
 public:
  explicit CApplyLocale(CodeType codeType);
  ~CApplyLocale();
  CApplyLocale(const CApplyLocale&) = delete;
  CApplyLocale& operator=(const CApplyLocale&) = delete;

 private:
  unsigned savedCodePage_ = 0;
  int applied_ = 0;
};

}  // namespace lumr
