#include "harness.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <map>

namespace lumr::bench {
namespace {

constexpr std::size_t kRecords = 1000;

// The fastest repetition of each benchmark, in seconds of CPU time per iteration: what other
// programs take from the processor does not count, and what they take from the caches least.
class FastestReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const bool manual = run.benchmark_name().find("manual_time") != std::string::npos;
      const double total = manual ? run.real_accumulated_time : run.cpu_accumulated_time;
      const double seconds = total / static_cast<double>(run.iterations);
      const auto [place, isNew] = fastest_.emplace(run.run_name.function_name, seconds);
      if (!isNew) place->second = std::min(place->second, seconds);
    }
  }

  double Seconds(const std::string& name) const { return fastest_.at(name); }

 private:
  std::map<std::string, double> fastest_;
};

double ChildSeconds() {
  rusage usage;
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The input, or the records that it consists of.
std::vector<std::string_view> Pieces(const Row& row, const std::string& input) {
  if (row.recordBytes == 0) return {input};
  std::vector<std::string_view> pieces;
  for (std::size_t at = 0; at < input.size(); at += row.recordBytes) {
    pieces.push_back(std::string_view(input).substr(at, row.recordBytes));
  }
  return pieces;
}

std::string OutputOf(const Contender& contender, const Row& row, const std::string& input) {
  const Operation operation = contender.open(input);
  std::string output;
  for (const std::string_view piece : Pieces(row, input)) output += operation(piece);
  return row.canonical == nullptr ? output : row.canonical(output);
}

void Register(const Contender& contender, const Row& row, const std::string& input) {
  const auto run = [&contender, &row, &input](benchmark::State& state) {
    const Operation operation = contender.open(input);
    const auto pieces = Pieces(row, input);
    for (auto _ : state) {
      const double before = contender.isCommand ? ChildSeconds() : 0;
      for (const std::string_view piece : pieces) {
        benchmark::DoNotOptimize(operation(piece).data());
      }
      if (contender.isCommand) state.SetIterationTime(ChildSeconds() - before);
    }
  };
  auto* const registered = benchmark::RegisterBenchmark(contender.name.c_str(), run);
  if (contender.isCommand) registered->UseManualTime();
}

bool TakesPart(const Contender& peer, const Input& input) {
  return peer.open && !(peer.wellFormedOnly && input.corpus == Corpus::kRandom);
}

}  // namespace

std::vector<Row> AllRows() {
  std::vector<Row> rows = CharsetRows();
  for (const auto& more :
       {TransferRows(), AddressRows(), HeaderRows(), BufferRows(), RegExpRows(), OptionCompRows(),
        HtmlRows(), CryptoRows(), SettingsRows(), LayoutRows(), LinkRows(), EditorRows()}) {
    rows.insert(rows.end(), more.begin(), more.end());
  }
  return rows;
}

std::string MakeInput(const Row& row, const Input& input, std::size_t size) {
  std::string text = row.recordBytes == 0
                         ? MakeText(input.corpus, input.charset, size)
                         : MakeRecords(input.corpus, input.charset, kRecords, row.recordBytes);
  return row.prepare == nullptr ? text : row.prepare(std::move(text));
}

std::string InputName(const Input& input) {
  const std::string corpus = CorpusName(input.corpus);
  return input.corpus == Corpus::kRandom ? corpus : corpus + ", " + input.charset;
}

std::string SizeName(const Row& row, std::size_t size) {
  if (row.recordBytes != 0) return "1000 x " + std::to_string(row.recordBytes) + " B";
  if (size % (1 << 20) == 0) return std::to_string(size >> 20) + " MiB";
  if (size % (1 << 10) == 0) return std::to_string(size >> 10) + " KiB";
  return std::to_string(size) + " B";
}

void StartHarness(const Effort& effort) {
  // Repetitions of all contenders of a row in random order, so that a busy moment of the machine
  // does not fall on one of them.
  std::string options[] = {"lumr_bench", "--benchmark_enable_random_interleaving=true",
                           "--benchmark_repetitions=" + std::to_string(effort.repetitions),
                           "--benchmark_min_time=" + std::to_string(effort.minimumTime)};
  char* arguments[] = {options[0].data(), options[1].data(), options[2].data(), options[3].data()};
  int count = 4;
  benchmark::Initialize(&count, arguments);
}

Result Measure(const Row& row, const Input& input, std::size_t size) {
  const std::string text = MakeInput(row, input, size);
  Result result{row.task, InputName(input), SizeName(row, size), 0, {}, {}, {}};
  const bool mustAgree = input.corpus != Corpus::kRandom || row.agreesOnRandom;
  const std::string expected = mustAgree ? OutputOf(row.ours, row, text) : "";

  benchmark::ClearRegisteredBenchmarks();
  Register(row.ours, row, text);
  for (const Contender& peer : row.peers) {
    if (!peer.open) result.notBuilt.push_back(peer.name);
    if (!TakesPart(peer, input)) continue;
    if (mustAgree && OutputOf(peer, row, text) != expected) {
      result.disagreeing.push_back(peer.name);
    }
    Register(peer, row, text);
  }
  FastestReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter, nullptr, "all");

  const auto speed = [&](const Contender& contender) {
    return static_cast<double>(text.size()) / reporter.Seconds(contender.name);
  };
  const bool marked = input.mark > 0 && size >= row.markFrom;
  result.ours = speed(row.ours);
  for (const Contender& peer : row.peers) {
    if (!TakesPart(peer, input)) continue;
    const double mark = peer.mark > 0 ? peer.mark : input.mark;
    result.peers.push_back({peer.name, speed(peer), marked ? mark : 0});
  }
  return result;
}

}  // namespace lumr::bench
