// Single-byte code pages to UTF-16, 32 bytes at a time. For processors with AVX2 only; on others
// than x86-64 this does nothing.
#pragma once

#include <cstdint>

#include "lumrmisc/platform/codepage_internal.h"

namespace lumr {

// Decodes what in begins with by the unit of each byte in singles (ASCII up to 7F), as far as whole
// blocks without an escape, a value among the surrogates, go. out has room for two bytes a byte.
void DecodeSinglesAvx2(const std::uint16_t* singles, const Byte*& in, const Byte* end, char*& out);

}  // namespace lumr
