// Secrets as text in settings files.
//
// What this protects against: somebody who looks at a settings file does not read the password.
// What not: the pass phrase is the same in every installation and comes with the library, so
// whoever has the library can read every stored secret. A file that must stay secret needs a pass
// phrase of its user's own (DecodeBlowFish) or the system's key store.
//
// A text that goes in must not lie in the buffer or the message that comes out.
#pragma once

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

// Turns a secret (bytes up to the terminator; null is empty) into one line of printable text, in
// out, which is emptied first. Always 1; message is emptied.
int EncryptText(const char* text, CBuffer& out, CStringA& message);

// The inverse, for the current form and for that of the first versions, which is recognised by not
// being the current one. 1 when done; out is then the secret, whose bytes the caller should wipe.
// An empty or null text gives an empty secret. Text that holds no Base64 at all gives 0, an empty
// out and message 3118. A damaged text reads as one of the first versions and gives garbage: that
// form has no mark to know it by.
int DecryptText(const char* text, CBuffer& out, CStringA& message);

}  // namespace lumr
