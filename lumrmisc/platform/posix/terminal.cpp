#include "lumrmisc/platform/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <iterator>
#include <mutex>

#include "lumrmisc/platform/files_internal.h"
#include "lumrmisc/platform/memory.h"
#include "lumrmisc/platform/posix/posix_internal.h"

namespace lumr {

using posix::LastError;
using posix::Retried;

namespace {

int Descriptor(StandardStream stream) {
  return static_cast<int>(stream);
}

// A stream that another program made non-blocking is waited for.
bool WaitFor(int descriptor, short event) {
  if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
  struct pollfd wait = {descriptor, event, 0};
  return poll(&wait, 1, -1) != -1 || errno == EINTR;
}

FileError WriteAllTo(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t done = Retried([&] { return write(descriptor, bytes.data(), bytes.size()); });
    if (done < 0 && !WaitFor(descriptor, POLLOUT)) return LastError();
    if (done > 0) bytes.remove_prefix(static_cast<std::size_t>(done));
  }
  return {};
}

// ---- The password prompt

// The signals that would end or stop the program while the terminal hides what is typed.
constexpr int kSignals[] = {SIGALRM, SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM, SIGTSTP};
volatile sig_atomic_t caught[std::size(kSignals)];
volatile sig_atomic_t stopped;

extern "C" void NoteSignal(int signal) {
  for (std::size_t i = 0; i < std::size(kSignals); ++i) {
    if (kSignals[i] == signal) caught[i] = 1;
  }
  stopped = signal == SIGTSTP ? 1 : 0;
}

// Notes the signals instead of letting them act; at its end they act after all. No automatic
// restart, so that a read returns.
class DeferredSignals {
 public:
  DeferredSignals() {
    struct sigaction note = {};
    note.sa_handler = NoteSignal;
    sigemptyset(&note.sa_mask);
    stopped = 0;
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
      caught[i] = 0;
      sigaction(kSignals[i], &note, &before_[i]);
      if (before_[i].sa_handler == SIG_IGN) sigaction(kSignals[i], &before_[i], nullptr);
    }
  }
  ~DeferredSignals() {
    for (std::size_t i = 0; i < std::size(kSignals); ++i)
      sigaction(kSignals[i], &before_[i], nullptr);
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
      if (caught[i] != 0) kill(getpid(), kSignals[i]);
    }
  }
  DeferredSignals(const DeferredSignals&) = delete;
  DeferredSignals& operator=(const DeferredSignals&) = delete;

  static bool Any() {
    for (const sig_atomic_t one : caught) {
      if (one != 0) return true;
    }
    return false;
  }

 private:
  std::array<struct sigaction, std::size(kSignals)> before_ = {};
};

// Hides what is typed, for as long as it lives.
class HiddenInput {
 public:
  explicit HiddenInput(int terminal) : terminal_(terminal) {
    changed_ = tcgetattr(terminal, &before_) == 0;
    if (!changed_) return;
    struct termios hidden = before_;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
    changed_ = tcsetattr(terminal, TCSAFLUSH, &hidden) == 0;
  }
  ~HiddenInput() {
    if (changed_) tcsetattr(terminal_, TCSAFLUSH, &before_);
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;

  bool IsHidden() const { return changed_; }

 private:
  int terminal_;
  bool changed_;
  struct termios before_ = {};
};

// A byte at a time, so that nothing behind the line is taken from the terminal.
FileError ReadLine(int terminal, std::string& line) {
  for (;;) {
    char byte = 0;
    const ssize_t got = read(terminal, &byte, 1);
    if (got < 0 && errno == EINTR && !DeferredSignals::Any()) continue;
    if (got < 0) return LastError();
    if (got == 0) return line.empty() ? ErrorOf(FileErrorKind::kInterrupted) : FileError();
    if (byte == '\n') return {};
    line += byte;
  }
}

FileError PromptOn(int terminal, std::string_view prompt, std::string& password) {
  const DeferredSignals signals;
  const HiddenInput hidden(terminal);
  if (!hidden.IsHidden()) return LastError();
  if (const FileError error = WriteAllTo(terminal, prompt)) return error;
  const FileError error = ReadLine(terminal, password);
  static_cast<void>(WriteAllTo(terminal, "\n"));
  return error;
}

}  // namespace

void PrepareStandardStreams() {}

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  return std::vector<std::string>(argv, argv + argc);
}

bool IsTerminal(StandardStream stream) {
  return isatty(Descriptor(stream)) == 1;
}

int TerminalWidth(StandardStream stream, int otherwise) {
  struct winsize size = {};
  if (ioctl(Descriptor(stream), TIOCGWINSZ, &size) == -1 || size.ws_col == 0) return otherwise;
  return size.ws_col;
}

FileError ReadStandardInput(char* buffer, std::size_t size, std::size_t& got) {
  got = 0;
  for (;;) {
    const ssize_t result = Retried([&] { return read(STDIN_FILENO, buffer, size); });
    if (result >= 0) {
      got = static_cast<std::size_t>(result);
      return {};
    }
    if (!WaitFor(STDIN_FILENO, POLLIN)) return LastError();
  }
}

FileError WriteStandard(StandardStream stream, std::string_view utf8) {
  return WriteAllTo(Descriptor(stream), utf8);
}

FileError ReadPassword(std::string_view prompt, std::string& password) {
  static std::mutex oneAtATime;
  const std::lock_guard<std::mutex> lock(oneAtATime);
  password.clear();
  password.reserve(4096);  // a terminal's longest line, so that growing leaves no copies behind
  const int terminal = Retried([] { return open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC); });
  if (terminal == -1) return ErrorOf(FileErrorKind::kMissing);
  FileError error;
  do {  // once more when the user stopped the program with Ctrl+Z and continued it
    error = PromptOn(terminal, prompt, password);
  } while (error.code == EINTR && stopped != 0);
  close(terminal);
  if (error) {
    Wipe(password.data(), password.size());
    password.clear();
  }
  return error;
}

}  // namespace lumr
