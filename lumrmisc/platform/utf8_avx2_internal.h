// UTF-8 to UTF-16 and back, 32 bytes at a time. For processors with AVX2 only; on others than
// x86-64 these do nothing.
#pragma once

#include "lumrmisc/platform/codepage_internal.h"

namespace lumr {

// Converts what in begins with, as long as it is well-formed, of at most three bytes a character
// (no surrogates), and not near the end; all three then point behind characters. out has room for
// as much as the whole text can give: two bytes a byte, and three bytes a unit.
void DecodeUtf8Avx2(const Byte*& in, const Byte* end, char*& out);
void EncodeUtf8Avx2(const Byte*& in, const Byte* end, char*& out);

}  // namespace lumr
