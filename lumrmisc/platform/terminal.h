// The terminal and the standard streams, for command-line programs. Text is UTF-8 on every
// system, whatever the console's code page is, and streams are binary: no line end is changed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/platform/files.h"

namespace lumr {

enum class StandardStream { kInput, kOutput, kError };

// Makes the standard streams of C and C++ binary too and, on Windows, the console speak UTF-8
// until the program ends. Once, first thing in main.
void PrepareStandardStreams();

// The program's arguments in UTF-8, its name first. On POSIX the bytes are as they came
// (PathFromUtf8 takes any); on Windows argv is not looked at, since it has lost what the code page
// lacks.
std::vector<std::string> Utf8Arguments(int argc, char** argv);

bool IsTerminal(StandardStream stream);

// The width in columns of the terminal that an output stream goes to; otherwise when it goes to
// none, or to one that does not tell.
int TerminalWidth(StandardStream stream, int otherwise = 80);

// Reads up to size bytes of standard input; got is 0 at its end only.
FileError ReadStandardInput(char* buffer, std::size_t size, std::size_t& got);

// Reads standard input to its end. content is emptied first and keeps nothing after an error;
// more than limit bytes are kTooLarge.
FileError ReadAllStandardInput(std::string& content, std::uint64_t limit = ~std::uint64_t{0});

// Writes all bytes to standard output or standard error, unbuffered: large pieces are fast. What
// went through the streams of C or C++ has to be flushed before.
FileError WriteStandard(StandardStream stream, std::string_view utf8);

// Shows prompt on the terminal and reads a line from it that is not shown, even when the
// standard streams go elsewhere. password gets the line in UTF-8 without its end. kMissing
// without a terminal; kInterrupted when the user ends the input (Ctrl+D, Ctrl+Z) on an empty
// line. A signal ends the program as usual, with the terminal as it was. Wiping the password
// is the caller's business; nothing else keeps it.
FileError ReadPassword(std::string_view prompt, std::string& password);

}  // namespace lumr
