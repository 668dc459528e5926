// UTF-8 to UTF-16 and back, a vector at a time. Each kernel is for processors that have what its
// name says; on others than x86-64 they do nothing.
#pragma once

#include "lumrmisc/platform/codepage_internal.h"

namespace lumr {

// Converts what in begins with, as long as it is well-formed and of at most three bytes a character
// (no surrogates); AVX2 stops near the end. All three then point behind characters. out has room
// for as much as the whole text can give: two bytes a byte, and three bytes a unit.
using Utf8Kernel = void (*)(const Byte*& in, const Byte* end, char*& out);

void DecodeUtf8Avx2(const Byte*& in, const Byte* end, char*& out);
void EncodeUtf8Avx2(const Byte*& in, const Byte* end, char*& out);

void DecodeUtf8Avx512(const Byte*& in, const Byte* end, char*& out);
void EncodeUtf8Avx512(const Byte*& in, const Byte* end, char*& out);

}  // namespace lumr
