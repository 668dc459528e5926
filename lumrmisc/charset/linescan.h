// Lines and searching in a text of a given code type: by bytes, or by UTF-16 units where the
// code type is a Unicode one (whose edit form is UTF-16LE).
#pragma once

#include "lumrmisc/charset/codetype.h"

namespace lumr {

// Finds the end of the line that text begins with: 1, with lineEnd at its line break (CR, LF or
// CR LF) or at the end of the text, and breakLen the bytes of the break, 0 at the end of the
// text. The next line starts at lineEnd + breakLen. len is in bytes, counted for Unicode too,
// where an odd last byte belongs to the last line. A null text or a len below 1 gives 0 and
// sets nothing. Going through a text line by line is linear.
int GetNextLine(const char* text, int len, CodeType codeType, const char*& lineEnd, int& breakLen);

// Finds the first (forward not 0) or the last occurrence of word in text; null when there is
// none, and for null or empty arguments. Lengths are in bytes; a negative one means up to the
// terminator. Byte text is searched as the code type's edit form: a match never begins inside
// a two-byte character (CT_SJIS and CT_ASCII: of the current code page).
const char* txtnnstr(CodeType codeType, int forward, const char* text, int textLen,
                     const char* word, int wordLen, int ignoreCase);

}  // namespace lumr
