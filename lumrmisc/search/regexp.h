// CRegExp: regular expressions that run on Shift_JIS, the other multibyte pages and UTF-16 as they
// are, without converting the text, and that say where they matched in the caller's own bytes.
//
// A character is one multibyte character of the code type's page, or one UTF-16 unit. Texts and
// patterns are in the edit form of their code type: CT_JIS and CT_EUC mean Shift_JIS bytes, CT_UTF8
// means UTF-16. Lengths and positions are bytes, in UTF-16 too.
//
// The syntax is the library's own:
//
//   c          the character itself; \c where c has a meaning
//   .          any character, line ends included
//   [abx-z]    one of a set; [^...] any other one. In a set \t is TAB, \r is CR and \f is LF; any
//              other escaped character is itself
//   ( )        a group; { } a group that is captured, numbered from 0 in the order of the "{"
//   \0 \1 ...  what the captured group of that number holds
//   x* x+ x?   any number of x, at least one, at most one; as many as possible
//   x*? x+? x??  the same, as few as possible
//   x|y        x or else y. It binds tighter than sequence: "ab|cd" is a, then b or c, then d
//   !x         not followed by x; consumes nothing
//   ^          as the first character of the pattern: only at the start of the text
//   $          as the last character of the pattern: the end of the text. It consumes the
//              terminator, so that the match ends one character past the text
//   \a [a-zA-Z0-9]   \b blank or TAB   \c [a-zA-Z]   \d [0-9]   \h [0-9a-fA-F]
//   \n CR, CR LF or LF   \q a run in double quotes   \w [a-zA-Z]+   \z [0-9]+
//
// Anything else is itself: ^ and $ elsewhere, a quantifier with nothing before it, \t outside a
// set (the letter t). An unmatched ")", "]" or "}" ends the pattern; what follows is not read.
// A "\" at the very end is itself; "!" with nothing behind it never succeeds.
//
// The leftmost start wins, and there the first way that succeeds, in the order of the operators
// above, not the longest. No match begins at the end of a text that is not empty.
//
// Ignoring case folds pattern and text alike: letters to lower case, small kana to large
// (charset/casefold.h). The pattern is folded before it is read, so "\D" is "\d" there.
//
// Time. Patterns without back-references, without "!", without an optional element that may be
// empty, and that tell no more than 250 kinds of characters apart are run as an automaton, in time
// linear in the text. The others backtrack: without back-references and such elements at worst in
// the text times the pattern while that fits 16 MiB of bits, else exponentially. MatchLimited
// bounds what any of them may take.
//
// An object belongs to one thread at a time. A null text is never matched. Nothing is thrown: where
// memory is missing a pattern is refused, and a search finds nothing (MatchLimited: kLimit). Texts
// above 2^31 - 64 bytes count as such a case.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "lumrmisc/charset/codetype.h"
#include "lumrmisc/platform/types.h"

namespace lumr {

struct RegExpProgram;  // what a pattern was compiled to; constant
class RegExpState;     // what a match needs to remember, used again by the next one
class RegExpScanner;

// Why a pattern was refused. The text of an error is message 3300 + its number.
enum RegExpError : int {
  kRegExpNoError = 0,
  kRegExpTooLarge = 1,   // over 1,000,000 instructions or 1,000 nested groups, or no memory
  kRegExpNoBrace = 2,    // a { that no } closes
  kRegExpNoParen = 3,    // a ( that no ) closes
  kRegExpNoBracket = 4,  // a [ that no ] closes; a range without a high end
  kRegExpBadMacro = 5,   // never raised: every expansion compiles
  kRegExpEmptySet = 6,   // [] or [^]
  kRegExpNoGroup = 7,    // a back-reference to a group not yet opened
  kRegExpBadRange = 8,   // a range whose high end is below its low end
  kRegExpEmptyLoop = 9,  // * or + on what may be empty
  kRegExpNullPattern = 10,
};

// The text of an error in the current code page; "Invalid REParseError: %d" for other numbers.
CStringA RegExpErrorText(int error);

enum class RegExpOutcome { kNone, kFound, kLimit };

// A pattern compiled for one code type. program and state are null when that failed; both are
// owned, and a copy gets its own.
class CREItem {
 public:
  CREItem();
  ~CREItem();
  CREItem(const CREItem& other);
  CREItem& operator=(const CREItem& other);

  RegExpProgram* program = nullptr;
  RegExpState* state = nullptr;
  CodeType codeType = CT_UNKNOWN;
};

class CRegExp {
 public:
  CRegExp();
  virtual ~CRegExp();
  CRegExp(const CRegExp&) = delete;
  CRegExp& operator=(const CRegExp&) = delete;

  // Takes a pattern and compiles it for its own code type; 1, or 0 with the text of the error, in
  // the current code page. What was held before is gone in any case. An empty or null pattern is
  // an error (message 3311). A pointer alone ends at its terminator, in UTF-16 a zero unit.
  int ParseRegExp(const char* pattern, CodeType codeType, int caseSensitive, CStringA& error);
  int ParseRegExp(std::string_view pattern, CodeType codeType, int caseSensitive, CStringA& error);

  // Whether the pattern is ready for texts of a code type; compiles it for that one at the first
  // time. 0 with the text of the error, or with an empty text when the pattern holds characters
  // that the code type lacks (or no pattern is held). The outcome is kept.
  //
  // The code page of a code type that has none of its own (CT_ASCII, CT_UNKNOWN) is the one that
  // is current at this moment, for as long as the pattern is held.
  int IsParsedOK(CodeType codeType, CStringA& error);

  int IsParsed() const;  // whether a pattern is held, be it right or wrong
  void ClearRegExp();    // back to empty; the two settings below stay

  // Letters, digits and symbols compare equal in half and full width, half-width katakana
  // (with a voiced mark behind them or not) equal full-width katakana; katakana equal hiragana.
  // In literals, sets and back-references; off at first. What is compiled is compiled anew.
  // Operators stay the half-width characters they are.
  void SetIgnoreWidth(int ignoreWidth);
  void SetIgnoreKanaKind(int ignoreKanaKind);

  // Finds the first match: 1, with its start and the position just behind it in text; else 0.
  // start and end may be null. A negative length means up to the terminator; with a length given
  // (an odd last byte of UTF-16 does not count) the end of the text stands for the terminator,
  // and "$" gives the position behind that.
  int Match(const char* text, CodeType codeType, const char** start, const char** end);
  int Match(const char* text, int length, CodeType codeType, const char** start, const char** end);
  int Match(std::string_view text, CodeType codeType, const char** start, const char** end);

  // The same within a number of steps; kLimit when they did not suffice to tell, and when memory
  // did not. A step is one character read, in patterns that run as an automaton, and one
  // instruction of the backtracking machine in others. Counts and outcomes are the same on every
  // computer.
  RegExpOutcome MatchLimited(const char* text, int length, CodeType codeType, long long limit,
                             const char** start, const char** end);
  RegExpOutcome MatchLimited(std::string_view text, CodeType codeType, long long limit,
                             const char** start, const char** end);

  // The error of the last pattern that was compiled (kRegExpNoError when that went well), and the
  // byte in that pattern, as it was given or as it was converted to the code type, where it shows.
  int ErrorCode() const { return errorCode_; }
  int ErrorPosition() const { return errorPosition_; }

  // The program for a code type, a line an instruction, and what the search makes of it; UTF-8.
  // Empty when IsParsedOK says 0.
  CStringA Explain(CodeType codeType);

 protected:
  int Parse2(const char* pattern, CodeType codeType, CStringA& error);
  int Parse2(std::string_view pattern, CodeType codeType, CStringA& error);

 private:
  friend class RegExpScanner;
  CREItem* ItemFor(CodeType codeType);

  CStringA pattern_;
  CodeType codeType_ = CT_UNKNOWN;
  int caseSensitive_ = 0;
  bool ignoreWidth_ = false;
  bool ignoreKanaKind_ = false;
  int errorCode_ = kRegExpNoError;
  int errorPosition_ = 0;
  std::vector<std::unique_ptr<CREItem>> items_;
};

// All matches of a text, one behind the other. The text is folded once; where the pattern runs as
// an automaton, going through all matches takes time linear in the text.
//
//   RegExpScanner scanner(regExp, text, CT_SJIS);
//   for (std::size_t start, end; scanner.Next(start, end) == RegExpOutcome::kFound;) ...
class RegExpScanner {
 public:
  // text must outlive the scanner, and regExp must keep its pattern. A limit of 0 or more is that
  // of every single search, as in MatchLimited.
  RegExpScanner(CRegExp& regExp, std::string_view text, CodeType codeType, long long limit = -1);
  ~RegExpScanner();
  RegExpScanner(const RegExpScanner&) = delete;
  RegExpScanner& operator=(const RegExpScanner&) = delete;

  // The next match, as byte positions in text: behind the last one, and behind the character
  // after it when that one was empty. end is past the text after a "$".
  RegExpOutcome Next(std::size_t& start, std::size_t& end);
  // The first match that starts at from or later, which must begin a character; Next goes on
  // behind it. "^" is the start of the text alone.
  RegExpOutcome NextFrom(std::size_t from, std::size_t& start, std::size_t& end);

 private:
  struct Work;
  RegExpOutcome SearchFrom(std::size_t from, std::size_t& start, std::size_t& end);

  std::unique_ptr<Work> work_;
  RegExpOutcome outcome_ = RegExpOutcome::kNone;  // of every search, without work
};

}  // namespace lumr
