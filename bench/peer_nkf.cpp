#include "peers.h"

#ifdef LUMRMISC_BENCH_NKF

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>

namespace lumr::bench {
namespace {

// A file in memory; closed with the last copy.
std::shared_ptr<const int> MemoryFile() {
  const int file = memfd_create("bench", MFD_CLOEXEC);
  if (file < 0) throw std::runtime_error("no file in memory");
  return {new int(file), [](const int* descriptor) {
            close(*descriptor);
            delete descriptor;
          }};
}

void RunNkf(const std::vector<std::string>& options, int in, int out) {
  std::vector<char*> arguments = {const_cast<char*>(LUMRMISC_BENCH_NKF)};
  for (const std::string& option : options) arguments.push_back(const_cast<char*>(option.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  lseek(in, 0, SEEK_SET);
  pid_t child = 0;
  const int failed =
      posix_spawn(&child, LUMRMISC_BENCH_NKF, &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) throw std::runtime_error("nkf cannot be started");
  waitpid(child, nullptr, 0);
}

std::string ReadAll(int file) {
  std::string content(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
  if (pread(file, content.data(), content.size(), 0) < 0) content.clear();
  return content;
}

class NkfJob {
 public:
  NkfJob(std::vector<std::string> options, std::string_view input)
      : options_(std::move(options)), in_(MemoryFile()) {
    if (write(*in_, input.data(), input.size()) < 0) throw std::runtime_error("no memory");
  }

  std::string_view operator()(std::string_view) {
    if (!first_) {
      RunNkf(options_, *in_, *null_);
      return {};
    }
    first_ = false;
    const auto out = MemoryFile();
    RunNkf(options_, *in_, *out);
    output_ = ReadAll(*out);
    return output_;
  }

 private:
  std::vector<std::string> options_;
  std::shared_ptr<const int> in_;
  std::shared_ptr<const int> null_{new int(open("/dev/null", O_WRONLY | O_CLOEXEC)),
                                   [](const int* descriptor) {
                                     close(*descriptor);
                                     delete descriptor;
                                   }};
  bool first_ = true;
  std::string output_;
};

}  // namespace

Contender Nkf(const std::vector<std::string>& options) {
  Contender nkf{"nkf command",
                [options](std::string_view input) -> Operation { return NkfJob(options, input); }};
  nkf.isCommand = true;
  return nkf;
}

std::string NkfVersion() {
  return "nkf " LUMRMISC_BENCH_NKF_VERSION;
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender Nkf(const std::vector<std::string>&) {
  return NotBuilt("nkf command");
}
std::string NkfVersion() {
  return {};
}
}  // namespace lumr::bench

#endif
