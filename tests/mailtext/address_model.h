// The rules for addresses once more, in the plainest way: over characters, one step after the
// other, with no thought of time.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/types.h"

namespace lumr::model {

using Characters = std::u32string;

inline Characters Split(std::string_view text) {
  Characters all;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPair = CurrentMbcsPage().IsPair(text, i);
    const char32_t byte = static_cast<unsigned char>(text[i]);
    all += isPair ? byte << 8 | static_cast<unsigned char>(text[++i]) : byte;
  }
  return all;
}

inline std::string Join(const Characters& all) {
  std::string text;
  for (const char32_t c : all) {
    if (c > 0xFF) text += static_cast<char>(c >> 8);
    text += static_cast<char>(c);
  }
  return text;
}

inline bool IsSpace(char32_t c) {
  return c == ' ' || (c >= 9 && c <= 13);
}

inline Characters Trim(Characters text) {
  while (!text.empty() && IsSpace(text.front())) text.erase(0, 1);
  while (!text.empty() && IsSpace(text.back())) text.pop_back();
  return text;
}

// What holds before each character from start on, and, last, at the end.
struct State {
  bool quoted = false;
  int depth = 0;
  bool escaped = false;  // the character itself is behind a backslash in quotes
};

inline std::vector<State> StatesOf(const Characters& text, std::size_t start) {
  const Characters rest = text.substr(std::min(start, text.size()));
  const bool ordinary = !rest.empty() && rest[0] == '"' && rest.find('"', 1) == rest.npos;
  std::vector<State> states(1);
  char32_t before = 0;
  for (const char32_t c : rest) {
    State state = states.back();
    if (state.escaped) {
      state.escaped = false;
      before = 0;
    } else {
      if (state.quoted && c == '\\') state.escaped = true;
      if (c == '"' && before != '\\' && state.depth == 0 && !ordinary) state.quoted = !state.quoted;
      if (c == '(' && !state.quoted) ++state.depth;
      if (c == ')' && !state.quoted && state.depth > 0) --state.depth;
      before = c;
    }
    states.push_back(state);
  }
  return states;
}

// Position or -1; message 0, 3161 or 3162.
inline int Find(const Characters& text, std::size_t start, char32_t delimiter, int& message) {
  message = 0;
  const std::vector<State> states = StatesOf(text, start);
  for (std::size_t i = start; i < text.size(); ++i) {
    const State& state = states[i - start];
    if (text[i] == delimiter && !state.quoted && state.depth == 0) return static_cast<int>(i);
  }
  if (states.back().quoted) message = 3161;
  if (states.back().depth > 0) message = 3162;
  return -1;
}

inline std::vector<Characters> SplitList(const Characters& list, int& message) {
  std::vector<Characters> entries;
  for (std::size_t start = 0;;) {
    const int comma = Find(list, start, ',', message);
    const Characters entry =
        Trim(list.substr(start, comma < 0 ? list.npos : static_cast<std::size_t>(comma) - start));
    if (!entry.empty()) entries.push_back(entry);
    if (comma < 0) return entries;
    start = static_cast<std::size_t>(comma) + 1;
  }
}

inline bool TakeParentheses(const Characters& text, Characters& outside, Characters& inside) {
  const std::vector<State> states = StatesOf(text, 0);
  bool found = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int before = states[i].depth;
    const int behind = states[i + 1].depth;
    if (before == 0 && behind == 1) {
      if (found) inside += ' ';
      found = true;
    } else if (before != 1 || behind != 0) {
      (before == 0 ? outside : inside) += text[i];
    }
  }
  return found;
}

inline Characters Unquote(Characters name) {
  if (name.empty() || name[0] != '"') return name;
  name.erase(0, 1);
  if (!name.empty() && name.back() == '"') name.pop_back();
  for (std::size_t i = 0; i + 1 < name.size(); ++i) {
    if (name[i] == '\\') name.erase(i, 1);
  }
  return name;
}

struct Entry {
  Characters address;
  Characters name;
  int message = 0;
};

inline Entry TakeApart(const Characters& untrimmed) {
  const Characters text = Trim(untrimmed);
  if (text.empty()) return {};
  const std::size_t last = text.rfind('<');
  if (last != text.npos && text.back() == '>') {
    return {Trim(text.substr(last + 1, text.size() - last - 2)),
            Unquote(Trim(text.substr(0, last)))};
  }
  int message = 0;
  const int open = Find(text, 0, '<', message);
  if (message != 0) return {{}, text, message};
  const bool hasAt = text.find('@') != text.npos;
  if (open < 0) {
    if (text.size() >= 4 && text.substr(0, 2) == U"%(" && text.back() == ')') return {text, {}};
    Characters outside;
    Characters inside;
    if (TakeParentheses(text, outside, inside)) return {Trim(outside), Trim(inside)};
    if (text[0] != '"') return hasAt ? Entry{text, {}} : Entry{{}, text};
    return text.back() != '"' && hasAt ? Entry{text, {}} : Entry{{}, Unquote(text)};
  }
  const std::size_t begin = static_cast<std::size_t>(open) + 1;
  const int close = Find(text, begin, '>', message);
  if (message != 0) return {{}, text, message};
  if (close < 0) return {Trim(text.substr(begin)), Unquote(Trim(text.substr(0, begin - 1)))};
  const std::size_t end = static_cast<std::size_t>(close);
  return {Trim(text.substr(begin, end - begin)),
          Unquote(Trim(Split(Join(text.substr(0, begin - 1)) + Join(text.substr(end + 1)))))};
}

}  // namespace lumr::model
