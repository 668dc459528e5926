#include "lumrmisc/platform/terminal.h"

#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <mutex>

#include "lumrmisc/platform/memory.h"
#include "lumrmisc/platform/windows/windows_internal.h"

namespace lumr {

using windows::Answer;
using windows::LastError;
using windows::Units;
using windows::Wide;

namespace {

HANDLE HandleOf(StandardStream stream) {
  static constexpr DWORD kIds[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
  return GetStdHandle(kIds[static_cast<int>(stream)]);
}

bool IsConsole(HANDLE handle) {
  DWORD mode = 0;
  return GetConsoleMode(handle, &mode) != 0;
}

FileError WriteAllTo(HANDLE handle, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 0x40000000));
    DWORD done = 0;
    if (!WriteFile(handle, bytes.data(), size, &done, nullptr)) return LastError();
    if (done == 0) return ErrorOf(FileErrorKind::kNoSpace);
    bytes.remove_prefix(done);
  }
  return {};
}

// ---- Text on the console goes and comes as UTF-16, which needs no code page.

FileError WriteConsoleText(HANDLE console, std::string_view utf8) {
  constexpr std::size_t kMostAtOnce = 8192;  // older consoles take no more than 64 KiB
  const std::wstring text = Wide(PathFromUtf8(utf8));
  for (std::size_t pos = 0; pos < text.size();) {
    const auto size = static_cast<DWORD>(std::min(text.size() - pos, kMostAtOnce));
    DWORD done = 0;
    if (!WriteConsoleW(console, text.data() + pos, size, &done, nullptr)) return LastError();
    pos += std::max<DWORD>(done, 1);
  }
  return {};
}

// The length of a character that the end of the text cuts off.
std::size_t CutOffLength(std::string_view utf8) {
  for (std::size_t back = 1; back <= std::min<std::size_t>(utf8.size(), 3); ++back) {
    const auto byte = static_cast<unsigned char>(utf8[utf8.size() - back]);
    if ((byte & 0xC0) == 0x80) continue;
    const std::size_t length = byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
    return length > back ? back : 0;
  }
  return 0;
}

// What a console was given of a character whose rest is still to come.
struct ConsoleOutput {
  std::mutex mutex;
  std::string cutOff;
};

ConsoleOutput& OutputOf(StandardStream stream) {
  static ConsoleOutput outputs[2];
  return outputs[stream == StandardStream::kError ? 1 : 0];
}

FileError WriteToConsole(StandardStream stream, std::string_view utf8) {
  ConsoleOutput& output = OutputOf(stream);
  const std::lock_guard<std::mutex> lock(output.mutex);
  std::string text = output.cutOff;
  text += utf8;
  const std::size_t whole = text.size() - CutOffLength(text);
  output.cutOff = text.substr(whole);
  return WriteConsoleText(HandleOf(stream), std::string_view(text).substr(0, whole));
}

// Units of console input, until a line's end has come at the latest.
FileError ReadConsoleUnits(HANDLE console, std::wstring& text) {
  wchar_t buffer[2048];
  DWORD got = 0;
  text.clear();
  do {
    if (!ReadConsoleW(console, buffer, std::size(buffer), &got, nullptr)) return LastError();
    text.append(buffer, got);
    // Half a character is no good: its other half is there already.
  } while (got != 0 && IS_HIGH_SURROGATE(text.back()));
  SecureZeroMemory(buffer, sizeof buffer);
  return {};
}

constexpr wchar_t kEndOfInput = 0x1A;  // Ctrl+Z, at the start of a line

// The rest of a line that was longer than the caller's buffer.
struct ConsoleInput {
  std::mutex mutex;
  std::string rest;
};

FileError ReadFromConsole(HANDLE console, char* buffer, std::size_t size, std::size_t& got) {
  static ConsoleInput input;
  const std::lock_guard<std::mutex> lock(input.mutex);
  if (input.rest.empty()) {
    std::wstring text;
    if (const FileError error = ReadConsoleUnits(console, text)) return error;
    if (text.empty() || text.front() == kEndOfInput) return {};
    input.rest = PathToUtf8(Units(text));
  }
  got = input.rest.copy(buffer, size);
  input.rest.erase(0, got);
  return {};
}

// ---- The password prompt

struct HiddenConsole {
  std::atomic<HANDLE> handle{nullptr};  // null: nothing is hidden
  std::atomic<DWORD> mode{0};

  void Show() {
    const HANDLE console = handle.exchange(nullptr);
    if (console != nullptr) SetConsoleMode(console, mode);
  }
} hiddenConsole;

// Runs in a thread of its own when the user breaks off; the program then ends as usual.
BOOL WINAPI ShowOnBreak(DWORD) {
  hiddenConsole.Show();
  return FALSE;
}

// Hides what is typed, for as long as it lives.
class HiddenInput {
 public:
  explicit HiddenInput(HANDLE console) {
    DWORD mode = 0;
    if (!GetConsoleMode(console, &mode)) return;
    hiddenConsole.mode = mode;
    hiddenConsole.handle = console;
    SetConsoleCtrlHandler(ShowOnBreak, TRUE);
    isHidden_ = SetConsoleMode(console, ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT) != 0;
  }
  ~HiddenInput() {
    hiddenConsole.Show();
    SetConsoleCtrlHandler(ShowOnBreak, FALSE);
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;

  bool IsHidden() const { return isHidden_; }

 private:
  bool isHidden_ = false;
};

class ConsoleFile {
 public:
  explicit ConsoleFile(const wchar_t* name)
      : handle_(CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, OPEN_EXISTING, 0, nullptr)) {}
  ~ConsoleFile() {
    if (IsOpen()) CloseHandle(handle_);
  }
  ConsoleFile(const ConsoleFile&) = delete;
  ConsoleFile& operator=(const ConsoleFile&) = delete;
  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return handle_; }

 private:
  HANDLE handle_;
};

FileError ReadLine(HANDLE console, std::string& line) {
  std::wstring text;
  do {
    std::wstring more;
    if (const FileError error = ReadConsoleUnits(console, more)) return error;
    if (text.empty() && (more.empty() || more.front() == kEndOfInput)) {
      return ErrorOf(FileErrorKind::kInterrupted);
    }
    text += more;
    Wipe(more.data(), more.size() * sizeof(wchar_t));
    if (more.empty()) break;
  } while (text.back() != L'\n');
  while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r')) text.pop_back();
  CStringW units = Units(text);
  line = PathToUtf8(units);
  Wipe(units.data(), units.size() * sizeof(char16_t));
  Wipe(text.data(), text.size() * sizeof(wchar_t));
  return {};
}

UINT codePageBefore = 0;

}  // namespace

void PrepareStandardStreams() {
  for (FILE* const stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  codePageBefore = GetConsoleOutputCP();
  if (codePageBefore == 0 || codePageBefore == CP_UTF8) return;
  // The code page is the console's, not ours, and stays when the program has ended.
  if (SetConsoleOutputCP(CP_UTF8)) std::atexit([] { SetConsoleOutputCP(codePageBefore); });
}

std::vector<std::string> Utf8Arguments(int, char**) {
  std::vector<std::string> arguments;
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  if (words == nullptr) return arguments;
  for (int i = 0; i < count; ++i) arguments.push_back(PathToUtf8(Units(words[i])));
  LocalFree(words);
  return arguments;
}

bool IsTerminal(StandardStream stream) {
  return IsConsole(HandleOf(stream));
}

int TerminalWidth(StandardStream stream, int otherwise) {
  CONSOLE_SCREEN_BUFFER_INFO facts;
  if (!GetConsoleScreenBufferInfo(HandleOf(stream), &facts)) return otherwise;
  return facts.srWindow.Right - facts.srWindow.Left + 1;
}

FileError ReadStandardInput(char* buffer, std::size_t size, std::size_t& got) {
  got = 0;
  const HANDLE handle = HandleOf(StandardStream::kInput);
  if (IsConsole(handle)) return ReadFromConsole(handle, buffer, size, got);
  DWORD count = 0;
  const auto most = static_cast<DWORD>(std::min<std::size_t>(size, 0x40000000));
  const FileError error = Answer(ReadFile(handle, buffer, most, &count, nullptr));
  got = count;
  // The end of a pipe.
  return error.code == ERROR_BROKEN_PIPE ? FileError() : error;
}

FileError WriteStandard(StandardStream stream, std::string_view utf8) {
  const HANDLE handle = HandleOf(stream);
  return IsConsole(handle) ? WriteToConsole(stream, utf8) : WriteAllTo(handle, utf8);
}

FileError ReadPassword(std::string_view prompt, std::string& password) {
  static std::mutex oneAtATime;
  const std::lock_guard<std::mutex> lock(oneAtATime);
  password.clear();
  const ConsoleFile input(L"CONIN$");
  const ConsoleFile output(L"CONOUT$");
  if (!input.IsOpen() || !output.IsOpen()) return ErrorOf(FileErrorKind::kMissing);
  const HiddenInput hidden(input.Get());
  if (!hidden.IsHidden()) return LastError();
  if (const FileError error = WriteConsoleText(output.Get(), prompt)) return error;
  const FileError error = ReadLine(input.Get(), password);
  static_cast<void>(WriteConsoleText(output.Get(), "\r\n"));
  return error;
}

}  // namespace lumr
