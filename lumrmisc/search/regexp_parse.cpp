// The reader of patterns. It keeps its own stack, so that brackets nest as deep as they may.
#include <algorithm>

#include "lumrmisc/buffer/ascii.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/search/regexp.h"
#include "lumrmisc/search/regexp_program_internal.h"

namespace lumr {
namespace {

using Kind = RegExpNodeKind;
using Quantifier = RegExpQuantifier;

struct PatternCharacter {
  std::uint32_t code;
  std::uint32_t place;  // in bytes
};

constexpr std::uint32_t kEndOfPattern = 0xFFFFFFFF;

// A letter behind a backslash and what it stands for. Of an expansion only the first element
// counts: patterns in use rely on \q being the double-quoted run alone.
struct Macro {
  char letter;
  std::string_view expansion;
};
constexpr Macro kMacros[] = {
    {'a', "([a-zA-Z0-9])"},
    {'b', "([ \\t])"},
    {'c', "([a-zA-Z])"},
    {'d', "([0-9])"},
    {'h', "([0-9a-fA-F])"},
    {'n', "(\r|(\r?\n))"},
    {'q', "(\"[^\"]*\")|('[^']*')"},
    {'w', "([a-zA-Z]+)"},
    {'z', "([0-9]+)"},
};

// What \t, \r and \f are in a set; \f is the line feed there.
struct SetEscape {
  char letter;
  std::uint32_t code;
};
constexpr SetEscape kSetEscapes[] = {{'t', '\t'}, {'r', '\r'}, {'f', '\n'}};

std::vector<PatternCharacter> Decode(std::string_view pattern, const MbcsPage* page) {
  std::vector<PatternCharacter> characters;
  characters.reserve(pattern.size());
  for (std::size_t pos = 0; pos < pattern.size();) {
    const auto place = static_cast<std::uint32_t>(pos);
    if (page == nullptr) {
      if (pos + 2 > pattern.size()) break;
      characters.push_back({LoadUnit(pattern.data() + pos), place});
      pos += 2;
      continue;
    }
    const std::uint32_t byte = static_cast<unsigned char>(pattern[pos]);
    const bool pair = page->IsPair(pattern, pos);
    characters.push_back(
        {pair ? byte << 8 | static_cast<unsigned char>(pattern[pos + 1]) : byte, place});
    pos += pair ? 2 : 1;
  }
  return characters;
}

std::vector<PatternCharacter> Decode(std::string_view expansion, std::uint32_t place) {
  std::vector<PatternCharacter> characters;
  for (const char c : expansion) characters.push_back({static_cast<std::uint32_t>(c), place});
  return characters;
}

class Parser {
 public:
  Parser(RegExpTree& tree, std::vector<PatternCharacter> characters, std::size_t endPlace,
         const CharacterFold& fold)
      : tree_(tree), characters_(std::move(characters)), endPlace_(endPlace), fold_(fold) {}

  // A whole pattern.
  void ParseAll() {
    tree_.anchored = Peek() == '^';
    if (tree_.anchored) ++pos_;
    frames_.push_back({Frame::kTop, 0, {}});
    Parse(false);
  }

  // One element with its quantifiers, as an expansion is compiled.
  std::uint32_t ParseOne() {
    frames_.push_back({Frame::kTop, 0, {}});
    Parse(true);
    return tree_.root;
  }

 private:
  // What is open around the place of reading.
  struct Frame {
    enum Kind : std::uint8_t { kTop, kGroup, kCapture, kNot, kAlternative } kind;
    std::uint32_t group;
    std::vector<std::uint32_t> children;  // of the sequence, or the sides so far
  };

  std::uint32_t Peek(std::size_t ahead = 0) const {
    return pos_ + ahead < characters_.size() ? characters_[pos_ + ahead].code : kEndOfPattern;
  }
  std::size_t Place() const {
    return pos_ < characters_.size() ? characters_[pos_].place : endPlace_;
  }
  void Fail(int error) {
    if (tree_.error != 0) return;
    tree_.error = error;
    tree_.errorPosition = Place();
  }

  static std::uint64_t Held(std::uint64_t size) {
    return std::min(size, kRegExpMostInstructions + 1);
  }

  std::uint32_t Add(RegExpNode node) {
    node.size = Held(node.size);
    tree_.nodes.push_back(node);
    return static_cast<std::uint32_t>(tree_.nodes.size() - 1);
  }
  std::uint32_t AddLeaf(Kind kind, std::uint32_t value, bool mayBeEmpty, std::uint64_t size) {
    return Add({kind, mayBeEmpty, value, 0, 0, size});
  }
  std::uint32_t AddParent(Kind kind, std::uint32_t value, bool mayBeEmpty, std::uint64_t size,
                          const std::vector<std::uint32_t>& children) {
    const auto first = static_cast<std::uint32_t>(tree_.children.size());
    tree_.children.insert(tree_.children.end(), children.begin(), children.end());
    return Add({kind, mayBeEmpty, value, first, static_cast<std::uint32_t>(children.size()), size});
  }
  const RegExpNode& Node(std::uint32_t index) const { return tree_.nodes[index]; }

  // Reads element by element; with one, a single element with its quantifiers.
  void Parse(bool one) {
    while (tree_.error == 0) {
      const std::uint32_t c = Peek();
      if (c == '(' || c == '{') {
        OpenGroup(c == '{');
        continue;
      }
      if (c == '!') {
        ++pos_;
        frames_.push_back({Frame::kNot, 0, {}});
        continue;
      }
      std::uint32_t element = 0;
      if (c != kEndOfPattern && c != ')' && c != ']' && c != '}') {
        element = ParseAtom(c);
      } else if (frames_.back().kind == Frame::kNot || frames_.back().kind == Frame::kAlternative) {
        element = AddLeaf(Kind::kNothing, 0, true, 0);
      } else if (frames_.back().kind == Frame::kTop) {
        tree_.root = CloseSequence();
        return;
      } else {
        element = CloseGroup(c);
      }
      if (tree_.error != 0) return;
      element = Quantified(CloseNots(element));
      if (tree_.error != 0) return;
      if (one && frames_.back().kind == Frame::kTop) {
        tree_.root = element;
        return;
      }
      Join(element);
    }
  }

  // An element with its quantifiers joins what is open.
  void Join(std::uint32_t element) {
    if (Peek() == '|') {
      ++pos_;
      if (frames_.back().kind != Frame::kAlternative) {
        frames_.push_back({Frame::kAlternative, 0, {}});
      }
      frames_.back().children.push_back(element);
      return;
    }
    if (frames_.back().kind == Frame::kAlternative) element = CloseAlternative(element);
    frames_.back().children.push_back(element);
  }

  void OpenGroup(bool capture) {
    if (++nested_ > kRegExpMostNested) return Fail(kRegExpTooLarge);
    ++pos_;
    frames_.push_back(
        {capture ? Frame::kCapture : Frame::kGroup, capture ? tree_.groupCount++ : 0, {}});
  }

  std::uint32_t CloseSequence() {
    std::uint64_t size = 0;
    bool mayBeEmpty = true;
    for (const std::uint32_t child : frames_.back().children) {
      size = Held(size + Node(child).size);
      mayBeEmpty = mayBeEmpty && Node(child).mayBeEmpty;
    }
    return AddParent(Kind::kSequence, 0, mayBeEmpty, size, frames_.back().children);
  }

  std::uint32_t CloseGroup(std::uint32_t closer) {
    const bool capture = frames_.back().kind == Frame::kCapture;
    if (closer != (capture ? '}' : ')')) {
      Fail(capture ? kRegExpNoBrace : kRegExpNoParen);
      return 0;
    }
    ++pos_;
    --nested_;
    const bool empty = frames_.back().children.empty();
    const std::uint32_t body = CloseSequence();
    const std::uint32_t group = frames_.back().group;
    frames_.pop_back();
    const std::uint64_t size = Node(body).size + (empty ? 1 : 0) + (capture ? 6 : 2);
    return AddParent(capture ? Kind::kCapture : Kind::kGroup, group, Node(body).mayBeEmpty, size,
                     {body});
  }

  std::uint32_t CloseNots(std::uint32_t element) {
    for (; frames_.back().kind == Frame::kNot; frames_.pop_back()) {
      element = AddParent(Kind::kNot, 0, true, Node(element).size + 9, {element});
    }
    return element;
  }

  std::uint32_t CloseAlternative(std::uint32_t last) {
    std::vector<std::uint32_t>& sides = frames_.back().children;
    sides.push_back(last);
    std::uint64_t size = 0;
    bool mayBeEmpty = false;
    for (const std::uint32_t side : sides) {
      size = Held(size + Node(side).size + (side == last ? 0 : 5));
      mayBeEmpty = mayBeEmpty || Node(side).mayBeEmpty;
    }
    const std::uint32_t node = AddParent(Kind::kAlternative, 0, mayBeEmpty, size, sides);
    frames_.pop_back();
    return node;
  }

  std::uint32_t Quantified(std::uint32_t element) {
    for (;;) {
      const std::uint32_t c = Peek();
      if (c != '*' && c != '+' && c != '?') return element;
      const bool lazy = Peek(1) == '?';
      if (c != '?' && Node(element).mayBeEmpty) {
        Fail(kRegExpEmptyLoop);
        return element;
      }
      pos_ += lazy ? 2 : 1;
      const Quantifier greedy = c == '*'   ? Quantifier::kStar
                                : c == '+' ? Quantifier::kPlus
                                           : Quantifier::kOptional;
      const auto value = static_cast<std::uint32_t>(greedy) + (lazy ? 3u : 0u);
      const std::uint64_t once = Node(element).size;
      const std::uint64_t loop = c == '?' ? 9 : 10;
      element = AddParent(Kind::kQuantified, value, c != '+' || Node(element).mayBeEmpty,
                          once + loop + (c == '+' ? once : 0), {element});
    }
  }

  // An element that is no group and no look-ahead.
  std::uint32_t ParseAtom(std::uint32_t c) {
    if (c == '[') return ParseSet();
    if (c == '\\') return ParseEscape();
    if (c == '.') {
      ++pos_;
      return AddLeaf(Kind::kAny, 0, false, 1);
    }
    if (c == '$' && pos_ + 1 == characters_.size()) {
      ++pos_;
      return AddLeaf(Kind::kEnd, 0, false, 1);
    }
    return ParseSymbol();
  }

  std::uint32_t ParseSymbol() {
    std::uint32_t code = characters_[pos_++].code;
    const std::uint32_t both = fold_.Combine(code, Peek());
    if (both != 0) ++pos_;
    code = both != 0 ? both : fold_.Fold(code);
    if (code != 0) return AddLeaf(Kind::kSymbol, code, false, 1);
    // A Symbol of 0 is the end of the text; a NUL in the text is a set of one.
    return AddSet({{0, 0}}, false);
  }

  std::uint32_t ParseEscape() {
    const std::uint32_t c = Peek(1);
    if (c == kEndOfPattern) return ParseSymbol();
    ++pos_;
    if (c < 0x80 && IsAsciiDigit(c)) return ParseBackRef();
    for (const Macro& macro : kMacros) {
      if (c != static_cast<std::uint32_t>(macro.letter)) continue;
      Parser inner(tree_, Decode(macro.expansion, characters_[pos_].place), endPlace_, fold_);
      ++pos_;
      return inner.ParseOne();
    }
    return ParseSymbol();
  }

  std::uint32_t ParseBackRef() {
    const std::size_t first = pos_;
    std::uint32_t group = 0;
    for (; Peek() < 0x80 && IsAsciiDigit(Peek()); ++pos_) {
      group = std::min<std::uint32_t>(group * 10 + (Peek() - '0'), 100'000'000);
    }
    if (group >= tree_.groupCount) {
      pos_ = first;
      Fail(kRegExpNoGroup);
      return 0;
    }
    return AddLeaf(Kind::kBackRef, group, false, 1);
  }

  using Ranges = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

  std::uint32_t AddSet(const Ranges& ranges, bool negated) {
    const auto first = static_cast<std::uint32_t>(tree_.ranges.size());
    tree_.ranges.insert(tree_.ranges.end(), ranges.begin(), ranges.end());
    const auto count = static_cast<std::uint32_t>(ranges.size());
    return Add({Kind::kSet, false, negated, first, count, 1 + 2 * std::uint64_t{count}});
  }

  std::uint32_t ParseSet() {
    ++pos_;
    const bool negated = Peek() == '^';
    if (negated) ++pos_;
    if (Peek() == ']') {
      Fail(kRegExpEmptySet);
      return 0;
    }
    Ranges ranges;
    while (Peek() != ']') {
      const std::size_t item = pos_;
      std::uint32_t low = 0;
      std::uint32_t high = 0;
      if (!ParseSetCharacter(low)) return 0;
      high = low;
      if (Peek() == '-') {
        ++pos_;
        if (Peek() == ']') Fail(kRegExpNoBracket);
        if (tree_.error != 0 || !ParseSetCharacter(high)) return 0;
      }
      if (high < low) {
        pos_ = item;
        Fail(kRegExpBadRange);
        return 0;
      }
      ranges.emplace_back(low, high);
    }
    ++pos_;
    return AddSet(fold_.IsOn() ? fold_.FoldRanges(ranges) : ranges, negated);
  }

  bool ParseSetCharacter(std::uint32_t& code) {
    const bool escaped = Peek() == '\\';
    if (escaped) ++pos_;
    code = Peek();
    if (code == kEndOfPattern) {
      Fail(kRegExpNoBracket);
      return false;
    }
    ++pos_;
    for (const SetEscape& escape : kSetEscapes) {
      if (escaped && code == static_cast<std::uint32_t>(escape.letter)) {
        code = escape.code;
        break;
      }
    }
    return true;
  }

  RegExpTree& tree_;
  std::vector<PatternCharacter> characters_;
  std::size_t endPlace_;
  const CharacterFold& fold_;
  std::size_t pos_ = 0;
  std::size_t nested_ = 0;
  std::vector<Frame> frames_;
};

}  // namespace

RegExpTree ParseRegExpPattern(std::string_view pattern, const RegExpOptions& options) {
  RegExpTree tree;
  Parser(tree, Decode(pattern, options.page), pattern.size(), options.fold).ParseAll();
  return tree;
}

}  // namespace lumr
