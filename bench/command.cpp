#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>

#include "command_internal.h"

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

void Run(const std::vector<std::string>& words, int in, int out) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  lseek(in, 0, SEEK_SET);
  pid_t child = 0;
  const int failed =
      posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) throw std::runtime_error(words[0] + " cannot be started");
  waitpid(child, nullptr, 0);
}

std::string ReadAll(int file) {
  std::string content(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
  if (pread(file, content.data(), content.size(), 0) < 0) content.clear();
  return content;
}

class Job {
 public:
  Job(std::vector<std::string> words, std::string_view input)
      : words_(std::move(words)), in_(MemoryFile()) {
    if (write(*in_, input.data(), input.size()) < 0) throw std::runtime_error("no memory");
  }

  std::string_view operator()(std::string_view) {
    if (!first_) {
      Run(words_, *in_, *null_);
      return {};
    }
    first_ = false;
    const auto out = MemoryFile();
    Run(words_, *in_, *out);
    output_ = ReadAll(*out);
    return output_;
  }

 private:
  std::vector<std::string> words_;
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

Operation RunCommand(const std::string& program, const std::vector<std::string>& arguments,
                     std::string_view input) {
  std::vector<std::string> words = {program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return Job(std::move(words), input);
}

}  // namespace lumr::bench
