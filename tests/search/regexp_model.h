// A matcher written plainly from the rules of the syntax: a tree, and a recursive walk over it
// that tries one way after the other. It knows nothing of programs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lumr {

class RegExpModel {
 public:
  using Text = std::vector<std::uint32_t>;  // characters
  using Span = std::pair<std::size_t, std::size_t>;
  static constexpr std::uint32_t kEnd = 0xFFFFFFFF;

  explicit RegExpModel(Text pattern) : pattern_(std::move(pattern)) {
    if (Peek() == '^') ++pos_, anchored_ = true;
    root_ = Sequence();
  }

  int Error() const { return error_; }

  // Start and end of the first match, in characters; the end may be one past the text.
  std::optional<Span> Match(const Text& text) {
    text_ = &text;
    groups_.assign(groupCount_, {0, 0});
    for (std::size_t start = 0; start == 0 || start < text.size(); ++start) {
      std::size_t end = 0;
      if (Try(root_.get(), start, [&](std::size_t at) { return end = at, true; })) {
        return Span{start, end};
      }
      if (anchored_) break;
    }
    return {};
  }

 private:
  enum Kind { kOne, kAll, kEither, kLoop, kCapture, kNot, kBackRef };
  struct Node {
    Kind kind = kAll;
    bool mayBeEmpty = true;
    std::function<bool(std::uint32_t)> takes;
    std::vector<std::unique_ptr<Node>> children;
    std::size_t least = 0, most = 1, group = 0;
    bool lazy = false;
  };
  using NodePtr = std::unique_ptr<Node>;
  using Then = std::function<bool(std::size_t)>;

  std::uint32_t Peek(std::size_t ahead = 0) const {
    return pos_ + ahead < pattern_.size() ? pattern_[pos_ + ahead] : kEnd;
  }
  NodePtr Fail(int error) {
    if (error_ == 0) error_ = error;
    return std::make_unique<Node>();
  }
  static NodePtr Make(Kind kind, bool mayBeEmpty) {
    auto node = std::make_unique<Node>();
    node->kind = kind;
    node->mayBeEmpty = mayBeEmpty;
    return node;
  }
  static NodePtr One(std::function<bool(std::uint32_t)> takes) {
    NodePtr node = Make(kOne, false);
    node->takes = std::move(takes);
    return node;
  }
  NodePtr Symbol() {
    const std::uint32_t code = pattern_[pos_++];
    return One([code](std::uint32_t c) { return c == code; });
  }

  bool ElementCanStart() const {
    return Peek() != kEnd && Peek() != ')' && Peek() != ']' && Peek() != '}';
  }

  NodePtr Sequence() {
    NodePtr all = Make(kAll, true);
    while (error_ == 0 && ElementCanStart()) {
      all->children.push_back(Alternative());
      all->mayBeEmpty = all->mayBeEmpty && all->children.back()->mayBeEmpty;
    }
    return all;
  }

  NodePtr Alternative() {
    NodePtr left = Quantified();
    if (error_ != 0 || Peek() != '|') return left;
    ++pos_;
    NodePtr either = Make(kEither, left->mayBeEmpty);
    either->children.push_back(std::move(left));
    either->children.push_back(Alternative());
    either->mayBeEmpty = either->mayBeEmpty || either->children[1]->mayBeEmpty;
    return either;
  }

  NodePtr Quantified() {
    NodePtr element = Element();
    while (error_ == 0 && (Peek() == '*' || Peek() == '+' || Peek() == '?')) {
      const std::uint32_t c = pattern_[pos_++];
      if (c != '?' && element->mayBeEmpty) return Fail(9);
      NodePtr loop = Make(kLoop, c != '+' || element->mayBeEmpty);
      loop->least = c == '+';
      loop->most = c == '?' ? 1 : 1000;
      loop->lazy = Peek() == '?';
      if (loop->lazy) ++pos_;
      loop->children.push_back(std::move(element));
      element = std::move(loop);
    }
    return element;
  }

  NodePtr Element() {
    if (!ElementCanStart()) return Make(kAll, true);
    switch (Peek()) {
      case '(':
        return Bracket(')', 3);
      case '{': {
        NodePtr group = Make(kCapture, true);
        group->group = groupCount_++;
        group->children.push_back(Bracket('}', 2));
        group->mayBeEmpty = group->children[0]->mayBeEmpty;
        return group;
      }
      case '[':
        return Set();
      case '!': {
        ++pos_;
        NodePtr node = Make(kNot, true);
        node->children.push_back(Element());
        return node;
      }
      case '.':
        ++pos_;
        return One([](std::uint32_t c) { return c != kEnd; });
      case '\\':
        return Escape();
      default:
        if (Peek() != '$' || pos_ + 1 < pattern_.size()) return Symbol();
        ++pos_;
        return One([](std::uint32_t c) { return c == kEnd; });
    }
  }

  NodePtr Bracket(std::uint32_t closer, int error) {
    ++pos_;
    NodePtr body = Sequence();
    if (error_ != 0 || Peek() != closer) return Fail(error);
    ++pos_;
    return body;
  }

  NodePtr Escape() {
    static const std::pair<char, const char*> kMacros[] = {
        {'a', "[a-zA-Z0-9]"},  {'b', "[ \t]"},       {'c', "[a-zA-Z]"},
        {'d', "[0-9]"},        {'h', "[0-9a-fA-F]"}, {'n', "(\r|(\r?\n))"},
        {'q', "(\"[^\"]*\")"}, {'w', "([a-zA-Z]+)"}, {'z', "([0-9]+)"}};
    if (Peek(1) == kEnd) return Symbol();
    ++pos_;
    if (Peek() >= '0' && Peek() <= '9') {
      std::size_t group = 0;
      while (Peek() >= '0' && Peek() <= '9') group = group * 10 + pattern_[pos_++] - '0';
      if (group >= groupCount_) return Fail(7);
      NodePtr node = Make(kBackRef, false);
      node->group = group;
      return node;
    }
    for (const auto& [letter, expansion] : kMacros) {
      if (Peek() != static_cast<std::uint32_t>(letter)) continue;
      ++pos_;
      const std::string text = expansion;
      RegExpModel inner(Text(text.begin(), text.end()));
      return std::move(inner.root_);
    }
    return Symbol();
  }

  NodePtr Set() {
    ++pos_;
    const bool negated = Peek() == '^';
    if (negated) ++pos_;
    if (Peek() == ']') return Fail(6);
    std::vector<Span> ranges;
    while (Peek() != ']') {
      std::uint32_t ends[2];
      if (!SetCharacter(ends[0])) return Fail(4);
      ends[1] = ends[0];
      if (Peek() == '-') {
        ++pos_;
        if (Peek() == ']' || !SetCharacter(ends[1])) return Fail(4);
      }
      if (ends[1] < ends[0]) return Fail(8);
      ranges.emplace_back(ends[0], ends[1]);
    }
    ++pos_;
    return One([ranges, negated](std::uint32_t c) {
      bool inside = false;
      for (const auto& [low, high] : ranges) inside = inside || (c >= low && c <= high);
      return c != kEnd && inside != negated;
    });
  }

  bool SetCharacter(std::uint32_t& c) {
    const bool escaped = Peek() == '\\';
    if (escaped) ++pos_;
    c = Peek();
    if (c == kEnd) return false;
    ++pos_;
    if (escaped) c = c == 't' ? 9 : c == 'r' ? 13 : c == 'f' ? 10 : c;
    return true;
  }

  bool Try(const Node* node, std::size_t at, const Then& then) {
    switch (node->kind) {
      case kOne: {
        if (at > text_->size()) return false;
        return node->takes(at < text_->size() ? (*text_)[at] : kEnd) && then(at + 1);
      }
      case kAll:
        return TryFrom(node, 0, at, then);
      case kEither:
        return Try(node->children[0].get(), at, then) || Try(node->children[1].get(), at, then);
      case kLoop:
        return TryLoop(node, 0, at, then);
      case kNot:
        return !Try(node->children[0].get(), at, [](std::size_t) { return true; }) && then(at);
      case kCapture: {
        const Span before = groups_[node->group];
        groups_[node->group].first = at;
        const bool found = Try(node->children[0].get(), at, [&](std::size_t end) {
          const std::size_t old = std::exchange(groups_[node->group].second, end);
          if (then(end)) return true;
          groups_[node->group].second = old;
          return false;
        });
        if (!found) groups_[node->group] = before;
        return found;
      }
      default: {
        const auto [first, last] = groups_[node->group];
        const std::size_t length = last > first ? last - first : 0;
        if (at + length > text_->size()) return false;
        for (std::size_t i = 0; i < length; ++i) {
          if ((*text_)[first + i] != (*text_)[at + i]) return false;
        }
        return then(at + length);
      }
    }
  }

  bool TryFrom(const Node* node, std::size_t child, std::size_t at, const Then& then) {
    if (child == node->children.size()) return then(at);
    return Try(node->children[child].get(), at,
               [&](std::size_t next) { return TryFrom(node, child + 1, next, then); });
  }

  // Iterations beyond the least that consume nothing fail.
  bool TryLoop(const Node* node, std::size_t count, std::size_t at, const Then& then) {
    const auto more = [&] {
      return count < node->most && Try(node->children[0].get(), at, [&](std::size_t next) {
               if (next == at && count >= node->least) return false;
               return TryLoop(node, count + 1, next, then);
             });
    };
    if (count < node->least) return more();
    return node->lazy ? then(at) || more() : more() || then(at);
  }

  Text pattern_;
  std::size_t pos_ = 0;
  int error_ = 0;
  bool anchored_ = false;
  std::size_t groupCount_ = 0;
  NodePtr root_;
  const Text* text_ = nullptr;
  std::vector<Span> groups_;
};

}  // namespace lumr
