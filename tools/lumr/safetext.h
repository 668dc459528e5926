// Text of foreign origin on its way to a terminal.
//
// Mail may hold anything: escape sequences that move the cursor, rename the window or make a
// terminal answer, characters that turn the reading direction, bytes that are no UTF-8. None
// of it reaches a terminal as it is.
#pragma once

#include <string>
#include <string_view>

namespace lumr::tool {

enum class SafeForm {
  // Text of several lines. Line feeds and tabs stay; CR LF and a CR alone end a line. Other
  // control characters of ASCII are shown by their pictures (ESC is U+241B), those of
  // U+0080 to U+009F as U+FFFD.
  kLines,
  // One line: a header value, a file name. Line breaks and tabs are shown by their pictures
  // too, and characters that turn the reading direction as U+FFFD, since they make
  // "exe.txt" out of "txt.exe".
  kOneLine,
  // Only what is no UTF-8 is replaced. For JSON, which escapes control characters itself.
  kUtf8,
};

// Appends text to out in the form. What is no valid UTF-8 becomes U+FFFD, one for each maximal
// part of a sequence (as the Unicode Standard recommends); gives how often that was.
long long AppendSafe(std::string_view text, SafeForm form, std::string& out);

std::string SafeLine(std::string_view text);  // kOneLine

// The columns that UTF-8 text takes on a terminal; wide characters take two.
int DisplayWidth(std::string_view utf8);

// Text followed by spaces up to a number of columns.
std::string Padded(std::string_view utf8, int columns);

}  // namespace lumr::tool
