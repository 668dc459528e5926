#include "report.h"

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "peers.h"

namespace lumr::bench {
namespace {

const Speed* BestPeer(const Result& result) {
  const auto best = std::max_element(
      result.peers.begin(), result.peers.end(),
      [](const Speed& a, const Speed& b) { return a.bytesPerSecond < b.bytesPerSecond; });
  return best == result.peers.end() ? nullptr : &*best;
}

double Ratio(const Result& result, const Speed& peer) {
  return result.ours / peer.bytesPerSecond;
}

// The peer with a mark that we are furthest behind, or least ahead of.
const Speed* HardestMark(const Result& result) {
  const Speed* hardest = nullptr;
  for (const Speed& peer : result.peers) {
    if (peer.mark <= 0) continue;
    if (hardest == nullptr ||
        Ratio(result, peer) / peer.mark < Ratio(result, *hardest) / hardest->mark) {
      hardest = &peer;
    }
  }
  return hardest;
}

std::string Format(const char* format, double value) {
  char text[48];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

// What does not look at all of its input has no meaningful figure.
std::string Megabytes(double bytesPerSecond) {
  if (bytesPerSecond > 1e12) return "> 1000000";
  return Format(bytesPerSecond < 10e6 ? "%.1f" : "%.0f", bytesPerSecond / 1e6);
}

std::string Times(double ratio) {
  if (ratio > 1000) return "> 1000x";
  return Format(ratio < 10 ? "%.2fx" : "%.0fx", ratio);
}

std::string MarkText(const Result& result) {
  const Speed* const peer = HardestMark(result);
  if (peer == nullptr) return {};
  const bool met = Ratio(result, *peer) >= peer->mark;
  return Format("%gx of ", peer->mark) + peer->name + (met ? ": met" : ": short");
}

std::string Remarks(const Result& result) {
  std::string text;
  const auto add = [&](const std::string& remark) { text += (text.empty() ? "" : "; ") + remark; };
  for (const Speed& peer : result.peers) {
    if (&peer != BestPeer(result)) add(peer.name + " " + Times(Ratio(result, peer)));
  }
  for (const std::string& name : result.notBuilt) add(name + " not built");
  for (const std::string& name : result.disagreeing) add(name + " gives another result");
  return text;
}

struct Cells {
  std::string task, input, size, ours, bestName, best, ratio, mark, remarks;
};

Cells CellsOf(const Result& result) {
  const Speed* const best = BestPeer(result);
  return {result.task,
          result.input,
          result.size,
          Megabytes(result.ours),
          best == nullptr ? "-" : best->name,
          best == nullptr ? "-" : Megabytes(best->bytesPerSecond),
          best == nullptr ? "-" : Times(Ratio(result, *best)),
          MarkText(result),
          Remarks(result)};
}

const Cells kHeading = {"Task", "Input", "Size", "Ours MB/s", "Best peer",
                        "MB/s", "Ratio", "Mark", "The others"};

void PrintCells(std::ostream& out, const Cells& c) {
  char line[512];
  std::snprintf(line, sizeof line, "%-40s %-22s %-12s %10s  %-17s %8s %8s  %-28s %s\n",
                c.task.c_str(), c.input.c_str(), c.size.c_str(), c.ours.c_str(), c.bestName.c_str(),
                c.best.c_str(), c.ratio.c_str(), c.mark.c_str(), c.remarks.c_str());
  out << line << std::flush;
}

void WriteCells(std::ostream& out, const Cells& c) {
  for (const std::string* cell :
       {&c.task, &c.input, &c.size, &c.ours, &c.bestName, &c.best, &c.ratio, &c.mark, &c.remarks}) {
    out << "| " << *cell << ' ';
  }
  out << "|\n";
}

std::string Place(const Result& result) {
  return result.task + " / " + result.input + " / " + result.size;
}

std::string ProcessorName() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

}  // namespace

void PrintHeading(std::ostream& out) {
  PrintCells(out, kHeading);
}

void PrintResult(std::ostream& out, const Result& result) {
  PrintCells(out, CellsOf(result));
}

bool PrintSummary(std::ostream& out, const std::vector<Result>& results) {
  std::vector<std::string> wrong, slower, behind, shortOfMark;
  for (const Result& result : results) {
    for (const std::string& peer : result.disagreeing) {
      wrong.push_back(Place(result) + ": " + peer);
    }
    const auto against = [&](const Speed& peer) {
      return Place(result) + ": " + Times(Ratio(result, peer)) + " of " + peer.name;
    };
    for (const Speed& peer : result.peers) {
      if (peer.name == "iconv" && Ratio(result, peer) < 1) slower.push_back(against(peer));
    }
    const Speed* const best = BestPeer(result);
    if (best != nullptr && Ratio(result, *best) < 1) behind.push_back(against(*best));
    const Speed* const mark = HardestMark(result);
    if (mark != nullptr && Ratio(result, *mark) < mark->mark) {
      shortOfMark.push_back(against(*mark) + Format(", the mark is %gx", mark->mark));
    }
  }
  const auto list = [&](const char* what, const std::vector<std::string>& lines) {
    out << "\n" << what << ": " << lines.size() << " of " << results.size() << " rows\n";
    for (const std::string& line : lines) out << "  " << line << "\n";
  };
  list("Results that differ from a peer's", wrong);
  list("Slower than iconv", slower);
  list("Slower than the best peer", behind);
  list("Short of the mark", shortOfMark);
  return wrong.empty() && slower.empty();
}

void WriteMarkdown(std::ostream& out, const std::vector<Result>& results) {
  out << "# Speed beside the peers\n\n"
      << "Written by `lumr_bench`. Processor: " << ProcessorName() << ". Compiler: "
#ifdef __clang__
      << __VERSION__
#else
      << "g++ " __VERSION__
#endif
      << ". Peers: ";
  const auto versions = PeerVersions();
  for (std::size_t i = 0; i < versions.size(); ++i) out << (i == 0 ? "" : ", ") << versions[i];
  out << ".\n\n"
      << "MB/s: millions of bytes of input per second of CPU time, the fastest of several\n"
      << "repetitions taken in turn with the peers'. Ratio: ours to the best peer's. The nkf\n"
      << "command is timed as a command, its start included. \"The others\" gives our speed in\n"
      << "multiples of each further peer's.\n\n";
  WriteCells(out, kHeading);
  out << "|---|---|---|---:|---|---:|---:|---|---|\n";
  for (const Result& result : results) WriteCells(out, CellsOf(result));
}

}  // namespace lumr::bench
