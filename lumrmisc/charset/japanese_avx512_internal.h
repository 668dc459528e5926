// JIS X 0208 in EUC-JP and ISO-2022-JP to Shift_JIS, 64 bytes at a time. For processors with
// AVX-512 only; on others than x86-64 these do nothing.
#pragma once

namespace lumr {

// Converts what in begins with, up to the first byte that is neither ASCII nor of a pair. out has
// room for a byte for each byte.
void EucToSJisAvx512(const unsigned char*& in, const unsigned char* end, unsigned char*& out);

// Converts the ASCII and the pairs of ISO-2022-JP that in begins with, and the designations "ESC $
// B" and "ESC ( B" among them. inKanji says which of them is in force where in begins, and where it
// stops. out has room for a byte for each byte.
void JisToSJisAvx512(bool& inKanji, const unsigned char*& in, const unsigned char* end,
                     unsigned char*& out);

// Copies the plain text that in begins with, as long as there are 64 bytes; true where something
// else ends it: a byte above 7F and, with controls, ESC, SO or SI.
bool CopyPlainAvx512(bool withControls, const unsigned char*& in, const unsigned char* end,
                     unsigned char*& out);

}  // namespace lumr
