#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "maildir.h"

namespace lumr::bench {
namespace {

constexpr int kRuns = 5;

struct Times {
  double wall = 1e9;
  double cpu = 1e9;
  void KeepLess(const Times& other) {
    wall = std::min(wall, other.wall);
    cpu = std::min(cpu, other.cpu);
  }
};

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

// A folder of its own under the system's temporary one; removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "lumr_bench.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// Runs a program with its output thrown away.
Times Run(std::vector<std::string> command) {
  std::vector<char*> arguments;
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);

  const auto start = std::chrono::steady_clock::now();
  pid_t child = 0;
  const int failed =
      posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) throw std::runtime_error("cannot start " + command[0]);
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error(command[0] + " failed");
  }
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  return {wall.count(), Seconds(usage.ru_utime) + Seconds(usage.ru_stime)};
}

}  // namespace

bool CompareShow(const std::string& lumr, const std::string& gmimeShow, std::size_t count) {
  const TemporaryFolder folder;
  const std::filesystem::path maildir = folder.Path() / "maildir";
  MakeMaildir(maildir, count);
  Times ours;
  Times peer;
  for (int run = 0; run < kRuns; ++run) {
    peer.KeepLess(Run({gmimeShow, maildir.string()}));
    ours.KeepLess(Run({lumr, "show", maildir.string()}));
  }
  std::printf("%zu messages, the fastest of %d runs in turn\n", count, kRuns);
  std::printf("%-12s %8s %8s\n", "", "wall s", "CPU s");
  std::printf("%-12s %8.3f %8.3f\n", "lumr show", ours.wall, ours.cpu);
  std::printf("%-12s %8.3f %8.3f\n", "gmime_show", peer.wall, peer.cpu);
  std::printf("%-12s %7.2fx %7.2fx\n", "ratio", ours.wall / peer.wall, ours.cpu / peer.cpu);
  return ours.wall <= peer.wall;
}

}  // namespace lumr::bench
