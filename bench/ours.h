// Our own side of a row: a function of the library that writes into a buffer.
#pragma once

#include <string_view>
#include <utility>

#include "harness.h"
#include "lumrmisc/buffer/buffer.h"

namespace lumr::bench {

inline std::string_view View(const CBuffer& buffer) {
  return {static_cast<const char*>(buffer), static_cast<std::size_t>(buffer.GetLength())};
}

inline int Length(std::string_view text) {
  return static_cast<int>(text.size());
}

// function(input, out); the buffer is kept between calls, as the peers keep theirs.
template <typename Function>
Contender Ours(Function function) {
  return {"LumrMisc", [function](std::string_view) -> Operation {
            return [function, out = CBuffer()](std::string_view input) mutable {
              function(input, out);
              return View(out);
            };
          }};
}

// The same for a result that needs no room of its own: function(input) gives a string.
template <typename Function>
Contender OursPlain(Function function) {
  return {"LumrMisc", [function](std::string_view) -> Operation {
            return [function,
                    result = std::string()](std::string_view input) mutable -> std::string_view {
              result = function(input);
              return result;
            };
          }};
}

// A row of binary data, which has no malformed input.
inline Row Binary(Row row) {
  row.agreesOnRandom = true;
  return row;
}

// A row with marks for inputs of that size and above only.
inline Row MarkedFrom(std::size_t size, Row row) {
  row.markFrom = size;
  return row;
}

// A peer with a mark of its own.
inline Contender Marked(double mark, Contender peer) {
  peer.mark = mark;
  return peer;
}

}  // namespace lumr::bench
