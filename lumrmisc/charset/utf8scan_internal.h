// The form of UTF-8: lead bytes and the bytes that follow them.
#pragma once

#include <string_view>

namespace lumr {

// The first byte of 80 hex or more, or the end.
const char* SkipAscii(const char* p, const char* end);

// Whether every lead byte is followed by as many bytes 80 to BF as it says, and there are no
// others, in text that holds bytes above 7F. Form only: longer forms than needed, surrogates and
// the former sequences of five and six bytes pass.
bool HasUtf8Form(std::string_view text);

}  // namespace lumr
