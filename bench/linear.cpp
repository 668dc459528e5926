// Is every row linear in its input? Time per byte at two sizes, against what plain copying into
// fresh memory takes at the same two sizes: that rises too, as the caches and pages run out.
#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "harness.h"

namespace lumr::bench {
namespace {

constexpr std::size_t kMedium = std::size_t{1} << 20;
constexpr std::size_t kLarge = std::size_t{64} << 20;
constexpr double kTolerance = 1.3;

double CpuSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Nanoseconds per byte, the fastest of the repetitions.
template <typename Task>
double TimePerByte(const Effort& effort, std::size_t size, Task task) {
  double fastest = 1e9;
  for (int repetition = 0; repetition < effort.repetitions; ++repetition) {
    int count = 0;
    const double start = CpuSeconds();
    double taken = 0;
    do {
      task();
      ++count;
      taken = CpuSeconds() - start;
    } while (taken < effort.minimumTime);
    fastest = std::min(fastest, taken / count);
  }
  return fastest * 1e9 / static_cast<double>(size);
}

double CopyTime(const Effort& effort, std::size_t size) {
  const std::string source(size, 'a');
  return TimePerByte(effort, size, [&] {
    const std::unique_ptr<char[]> copy(new char[size]);
    std::memcpy(copy.get(), source.data(), size);
    asm volatile("" : : "r"(copy.get()) : "memory");
  });
}

double RowTime(const Effort& effort, const Row& row, const Input& input, std::size_t size) {
  const std::string text = MakeInput(row, input, size);
  return TimePerByte(effort, text.size(), [&] {
    // Opened anew, so that its memory is as fresh as the copy's.
    const Operation operation = row.ours.open(text);
    asm volatile("" : : "r"(operation(text).data()) : "memory");
  });
}

// Nanoseconds per byte at the two sizes.
struct Pair {
  double medium;
  double large;
  double Growth() const { return large / medium; }
};

struct Verdict {
  Pair row;
  double growth;  // the row's, divided by the copy's
  bool atMemorySpeed;
  bool IsGood() const { return growth <= kTolerance || atMemorySpeed; }
};

Verdict Judge(const Pair& row, const Pair& copy) {
  // What is faster than copying meets the end of the caches and nothing else.
  return {row, row.Growth() / copy.Growth(), row.large <= copy.large};
}

// A busy neighbour can spoil any of the four figures: what looks bad is measured again, with the
// copy anew. A row that is worse than linear looks bad each time.
Verdict MeasureRow(const Effort& effort, const Row& row, const Input& input, const Pair& copy) {
  constexpr int kTries = 3;
  const auto measure = [&] {
    return Pair{RowTime(effort, row, input, kMedium), RowTime(effort, row, input, kLarge)};
  };
  Verdict verdict = Judge(measure(), copy);
  for (int tries = 1; tries < kTries && !verdict.IsGood(); ++tries) {
    const Pair copyNow = {CopyTime(effort, kMedium), CopyTime(effort, kLarge)};
    verdict = Judge(measure(), copyNow);
  }
  return verdict;
}

void PrintLine(const std::string& task, const std::string& input, const Pair& times, double growth,
               const char* remark) {
  std::printf("%-40s %-22s %12.3f %12.3f %7.2fx%s\n", task.c_str(), input.c_str(), times.medium,
              times.large, growth, remark);
  std::fflush(stdout);
}

}  // namespace

bool CheckLinear(const std::vector<Row>& rows, const Effort& effort) {
  // All larger blocks come from the system at both sizes, not recycled at one of them.
  mallopt(M_MMAP_THRESHOLD, 1 << 16);
  const Pair copy = {CopyTime(effort, kMedium), CopyTime(effort, kLarge)};
  std::printf("%-40s %-22s %12s %12s %8s\n", "Task", "Input", "ns/B, 1 MiB", "64 MiB", "Growth");
  PrintLine("memcpy into fresh memory", "", copy, copy.Growth(),
            "  the others' are divided by this");
  bool linear = true;
  for (const Row& row : rows) {
    if (row.recordBytes != 0) continue;
    for (const Input& input : row.inputs) {
      const Verdict verdict = MeasureRow(effort, row, input, copy);
      linear = linear && verdict.IsGood();
      PrintLine(row.task, InputName(input), verdict.row, verdict.growth,
                !verdict.IsGood()             ? "  NOT LINEAR"
                : verdict.growth > kTolerance ? "  faster than memcpy"
                                              : "");
    }
  }
  return linear;
}

}  // namespace lumr::bench
