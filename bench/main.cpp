// lumr_bench: the library beside its peers.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "harness.h"
#include "maildir.h"
#include "report.h"

namespace lumr::bench {
namespace {

constexpr const char* kUsage =
    "usage: lumr_bench [--filter REGEX] [--sizes 4K,1M,16M] [--markdown FILE] [--quick]\n"
    "       lumr_bench --linear [--filter REGEX]\n"
    "       lumr_bench --show [--messages N] [--lumr PROGRAM]\n"
    "       lumr_bench --maildir DIRECTORY [--messages N]\n"
    "\n"
    "  --filter REGEX   only rows whose \"task / input\" holds a match\n"
    "  --sizes LIST     input sizes in bytes, K or M\n"
    "  --markdown FILE  write the table there too\n"
    "  --quick          a look that takes seconds; its figures are rough\n"
    "  --linear         time per byte of 64 MiB against 1 MiB\n"
    "  --show           `lumr show` of a maildir against a program of GMime alone\n"
    "  --maildir        write the maildir of --show and stop\n"
    "\n"
    "Exit status 1: a result differs from a peer's, a row is slower than iconv, a row is not\n"
    "linear, or `lumr show` takes longer than its peer.\n";

struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Options {
  std::string filter;
  std::vector<std::size_t> sizes;
  std::string markdown;
  std::string maildir;
  std::string lumr = LUMRMISC_BENCH_LUMR;
  std::size_t messages = 10000;
  bool quick = false;
  bool linear = false;
  bool show = false;
  bool help = false;
};

std::size_t ParseNumber(const std::string& text) {
  char* end = nullptr;
  const unsigned long long number = std::strtoull(text.c_str(), &end, 10);
  const std::string unit = end;
  const int shift = unit.empty() ? 0 : unit == "K" ? 10 : unit == "M" ? 20 : -1;
  if (end == text.c_str() || shift < 0 || number == 0 || number > (1ULL << 30) >> shift) {
    throw UsageError("not a number or size: " + text);
  }
  return static_cast<std::size_t>(number) << shift;
}

std::vector<std::size_t> ParseSizes(const std::string& list) {
  std::vector<std::size_t> sizes;
  std::istringstream words(list);
  for (std::string word; std::getline(words, word, ',');) sizes.push_back(ParseNumber(word));
  return sizes;
}

Options ParseOptions(int count, char** arguments) {
  Options options;
  for (int i = 1; i < count; ++i) {
    const std::string name = arguments[i];
    const auto value = [&] {
      if (++i == count) throw UsageError(name + " wants a value");
      return std::string(arguments[i]);
    };
    if (name == "--filter")
      options.filter = value();
    else if (name == "--sizes")
      options.sizes = ParseSizes(value());
    else if (name == "--markdown")
      options.markdown = value();
    else if (name == "--maildir")
      options.maildir = value();
    else if (name == "--messages")
      options.messages = ParseNumber(value());
    else if (name == "--lumr")
      options.lumr = value();
    else if (name == "--quick")
      options.quick = true;
    else if (name == "--linear")
      options.linear = true;
    else if (name == "--show")
      options.show = true;
    else if (name == "--help")
      options.help = true;
    else
      throw UsageError("no option " + name);
  }
  if (options.sizes.empty()) options.sizes = ParseSizes(options.quick ? "64K" : "4K,1M,16M");
  return options;
}

// The rows with only those inputs that the filter finds.
std::vector<Row> Matching(const std::string& filter) {
  const std::regex pattern(filter);
  std::vector<Row> rows = AllRows();
  for (Row& row : rows) {
    std::erase_if(row.inputs, [&](const Input& input) {
      return !std::regex_search(row.task + " / " + InputName(input), pattern);
    });
  }
  std::erase_if(rows, [](const Row& row) { return row.inputs.empty(); });
  return rows;
}

bool RunTable(const Options& options, const Effort& effort) {
  StartHarness(effort);
  PrintHeading(std::cout);
  std::vector<Result> results;
  for (const Row& row : Matching(options.filter)) {
    for (const Input& input : row.inputs) {
      for (const std::size_t size : options.sizes) {
        results.push_back(Measure(row, input, size));
        PrintResult(std::cout, results.back());
        if (row.recordBytes != 0) break;  // its size is its own
      }
    }
  }
  if (!options.markdown.empty()) {
    std::ofstream file(options.markdown);
    WriteMarkdown(file, results);
    if (!file.flush()) throw std::runtime_error("cannot write " + options.markdown);
  }
  return PrintSummary(std::cout, results);
}

bool RunAll(const Options& options) {
  const Effort effort = options.quick ? Effort{3, 0.005} : Effort{5, 0.03};
  if (!options.maildir.empty()) {
    MakeMaildir(options.maildir, options.messages);
    return true;
  }
  if (options.show) {
    const std::string gmimeShow = LUMRMISC_BENCH_GMIME_SHOW;
    if (options.lumr.empty() || gmimeShow.empty()) {
      throw std::runtime_error("lumr or gmime_show was not built");
    }
    return CompareShow(options.lumr, gmimeShow, options.messages);
  }
  if (options.linear) return CheckLinear(Matching(options.filter), {5, 0.03});
  return RunTable(options, effort);
}

int Main(int count, char** arguments) {
  try {
    const Options options = ParseOptions(count, arguments);
    if (options.help) {
      std::fputs(kUsage, stdout);
      return 0;
    }
    return RunAll(options) ? 0 : 1;
  } catch (const UsageError& error) {
    std::fprintf(stderr, "lumr_bench: %s\n%s", error.what(), kUsage);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "lumr_bench: %s\n", error.what());
  }
  return 2;
}

}  // namespace
}  // namespace lumr::bench

int main(int count, char** arguments) {
  return lumr::bench::Main(count, arguments);
}
