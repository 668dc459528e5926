// How a search goes about it: by the plan of a program, over texts that are folded where the
// program asks for it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "lumrmisc/buffer/textfinder.h"
#include "lumrmisc/search/regexp.h"
#include "lumrmisc/search/regexp_automaton_internal.h"
#include "lumrmisc/search/regexp_machine_internal.h"
#include "lumrmisc/search/regexp_skip_internal.h"

namespace lumr {

// A text as a program compares it, with the way back to the original.
class RegExpText {
 public:
  // text must outlive the object.
  RegExpText(const RegExpOptions& options, std::string_view text);

  RegExpText(const RegExpText&) = delete;
  RegExpText& operator=(const RegExpText&) = delete;

  std::string_view View() const { return view_; }
  // Where a place of the original is in the view (the first one that is not before it), and where
  // a place of the view is in the original. One place behind the end goes to the other.
  std::size_t ToView(std::size_t pos) const;
  std::size_t ToOriginal(std::size_t pos) const;

 private:
  void FoldCharacters(const RegExpOptions& options);

  std::string_view view_;
  std::string folded_;
  std::vector<std::uint32_t> origins_;  // by place in the view; empty: the same places
};

// Places of one text that searches read on to behind a match, for a better one, in vain: the next
// search need not go beyond them. Without that, all matches of "(a.*z)|a" would take time quadratic
// in a text without z.
class RegExpDeadEnds {
 public:
  // The first place behind pos that may be remembered.
  static std::size_t NextPlace(std::size_t pos) { return (pos / kStep + 2) * kStep; }

  // States mean something as long as their generation lasts.
  void SetGeneration(std::uint32_t generation);
  bool Has(std::size_t pos, std::uint32_t state) const { return places_.contains(Key(pos, state)); }
  void Add(std::size_t pos, std::uint32_t state);

 private:
  static constexpr std::size_t kStep = 256;
  static std::uint64_t Key(std::size_t pos, std::uint32_t state) {
    return std::uint64_t{pos} << 32 | state;
  }

  std::uint32_t generation_ = 0;
  std::unordered_set<std::uint64_t> places_;
};

// What one program remembers from search to search.
class RegExpState {
 public:
  explicit RegExpState(const RegExpProgram& program);

  // The first match at from, which begins a character, or later. deadEnds, which may be null, are
  // those of the view.
  RegExpOutcome Search(const RegExpProgram& program, std::string_view view, std::size_t from,
                       long long limit, RegExpSpan& match, RegExpDeadEnds* deadEnds = nullptr);
  // The same by the backtracking machine alone.
  RegExpOutcome SearchByMachine(const RegExpProgram& program, std::string_view view,
                                std::size_t from, long long limit, RegExpSpan& match);

  // For tests: the machine remembers failures from the first step on.
  void RememberAtOnce() { machine_.remembersAtOnce = true; }

 private:
  template <class Text>
  RegExpOutcome SearchIn(const RegExpProgram& program, Text text, std::size_t from, long long limit,
                         RegExpSpan& match);
  template <class Text>
  RegExpOutcome FindLiteral(const RegExpPlan& plan, Text& text, std::size_t from, std::size_t stop,
                            RegExpSpan& match);
  template <class Text>
  RegExpOutcome RunAutomaton(const RegExpPlan& plan, Text& text, std::size_t from, std::size_t stop,
                             RegExpSpan& match);
  template <class Text>
  std::size_t FindStart(const RegExpPlan& plan, Text& text, std::size_t lowest, std::size_t end);

  RegExpMachineState machine_;
  std::optional<TextFinder> finder_;
  std::optional<RegExpStates> forward_;
  std::optional<RegExpStates> backward_;
  RegExpSkip skip_;
  RegExpDeadEnds* deadEnds_ = nullptr;  // of the search at hand
};

}  // namespace lumr
