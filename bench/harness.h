// What a benchmark is here: a row of a table that names a task, its inputs, our way of doing it
// and the peers' ways. The harness checks that all come to the same result, measures them side
// by side, and reports the ratio.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "corpus.h"

namespace lumr::bench {

// Does the task once on an input and gives a view of the result, valid until the next call.
// Holds whatever its owner would keep between calls: an open converter, an output buffer. The
// byte behind the input is zero where the input is a whole text.
using Operation = std::function<std::string_view(std::string_view input)>;

struct Contender {
  std::string name;
  // Gets ready for inputs of the given one's size; null when the peer is not built in.
  std::function<Operation(std::string_view input)> open;
  double mark = 0;              // the mark of this peer, where it is not the input's
  bool isCommand = false;       // a child process: timed by the CPU time of the children
  bool wellFormedOnly = false;  // gives up at the first malformed character: no random input
};

struct Input {
  Corpus corpus;
  std::string charset;  // as iconv calls it; of no meaning for random bytes
  double mark = 0;      // how many times the peers' speed we want to reach; 0: no marks here
};

// Makes what the contenders compare equal by: drops what each is free to do its own way.
using Canonical = std::string (*)(std::string_view output);

struct Row {
  std::string task;
  std::vector<Input> inputs;
  Contender ours;
  std::vector<Contender> peers;
  // Turns the text of the corpus into the input, e.g. encodes what is to be decoded.
  std::string (*prepare)(std::string text) = nullptr;
  Canonical canonical = nullptr;
  // Malformed input is each contender's own business; a row of binary data has none.
  bool agreesOnRandom = false;
  // Not 0: 1,000 records of this many bytes, an operation each, whatever the size asked for.
  std::size_t recordBytes = 0;
  std::size_t markFrom = 0;  // the smallest size in bytes that the marks are meant for
};

// Every row there is, in the order of the table.
std::vector<Row> AllRows();
std::vector<Row> CharsetRows();
std::vector<Row> TransferRows();
std::vector<Row> AddressRows();
std::vector<Row> HeaderRows();
std::vector<Row> BufferRows();
std::vector<Row> RegExpRows();
std::vector<Row> OptionCompRows();
std::vector<Row> HtmlRows();
std::vector<Row> LayoutRows();
std::vector<Row> LinkRows();
std::vector<Row> EditorRows();
std::vector<Row> CryptoRows();
std::vector<Row> SettingsRows();

struct Speed {
  std::string name;
  double bytesPerSecond;
  double mark;
};

struct Result {
  std::string task;
  std::string input;  // corpus and charset
  std::string size;
  double ours;  // bytes of input a second
  std::vector<Speed> peers;
  std::vector<std::string> notBuilt;
  std::vector<std::string> disagreeing;  // peers whose result is not ours
};

// The input of a row at a size in bytes.
std::string MakeInput(const Row& row, const Input& input, std::size_t size);
std::string InputName(const Input& input);
std::string SizeName(const Row& row, std::size_t size);

struct Effort {
  int repetitions;     // the fastest counts
  double minimumTime;  // seconds a repetition
};

// Call once, before Measure.
void StartHarness(const Effort& effort);
Result Measure(const Row& row, const Input& input, std::size_t size);

// Time per byte of 64 MiB against 1 MiB, divided by what memcpy shows, for every row and input.
// Prints a table; false when one grows by more than the tolerance and is slower than memcpy.
bool CheckLinear(const std::vector<Row>& rows, const Effort& effort);

}  // namespace lumr::bench
