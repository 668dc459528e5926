// Searching and filling buffers.
#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/buffer/textscan.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

std::string WithWordAtEnd(std::string text) {
  return text.append(kAbsentWord);
}

std::string FindByScan(std::string_view text) {
  const char* const found =
      mbsnnstr(text.data(), Length(text), kAbsentWord.data(), Length(kAbsentWord), 0);
  return std::to_string(found == nullptr ? -1 : found - text.data());
}

// The content is the caller's buffer, so it is filled before the clock runs.
Contender FindInBuffer() {
  return {"LumrMisc", [](std::string_view text) -> Operation {
            CBuffer content;
            content.Set(text.data(), Length(text));
            return
                [content, position = std::string()](std::string_view) mutable -> std::string_view {
                  position = std::to_string(content.FindPhrase(kAbsentWord.data(), 0, 0));
                  return position;
                };
          }};
}

Contender AppendBytes() {
  return {"LumrMisc", [](std::string_view) -> Operation {
            return [out = CBuffer()](std::string_view input) mutable {
              out.AllocFree();
              for (const char byte : input) out += byte;
              return View(out);
            };
          }};
}

}  // namespace

std::vector<Row> BufferRows() {
  // The peers on raw bytes also land on trail bytes: they do less.
  const std::vector<Contender> searchers = {Marked(5, Oniguruma(kAbsentWord)), Memmem(kAbsentWord),
                                            StringViewFind(kAbsentWord)};
  const std::vector<Input> inputs = {
      {Corpus::kJapanese, "CP932", 1}, {Corpus::kAscii, "CP932"}, {Corpus::kRandom, ""}};
  return {
      {"FindPhrase, two kanji", inputs, FindInBuffer(), searchers, &WithWordAtEnd},
      {"mbsnnstr, two kanji", inputs, OursPlain(&FindByScan), searchers, &WithWordAtEnd},
      MarkedFrom(std::size_t{16} << 20, Binary({"append byte by byte",
                                                {{Corpus::kRandom, "", 0.4}},
                                                AppendBytes(),
                                                {StringPushBack()}})),
  };
}

}  // namespace lumr::bench
