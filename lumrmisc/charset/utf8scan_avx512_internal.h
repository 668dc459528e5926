// The form of UTF-8, 64 bytes at a time. For processors with AVX-512 only; on others than x86-64
// this does nothing.
#pragma once

namespace lumr {

// The end, or a border of characters at most 67 bytes before the first byte that does not fit the
// form with sequences of up to four bytes. p stands on such a border.
const char* SkipUtf8Avx512(const char* p, const char* end);

}  // namespace lumr
