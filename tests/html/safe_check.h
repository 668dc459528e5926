// What holds for every cleaned page, read off its source by a scanner that knows nothing of the one
// that cleaned it.
#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace lumr {

template <std::size_t kCount>
bool IsOneOf(std::u16string_view word, const std::u16string_view (&list)[kCount]) {
  return std::find(std::begin(list), std::end(list), word) != std::end(list);
}

// An empty text, or what is wrong and where.
class SafeChecker {
 public:
  explicit SafeChecker(std::u16string_view html) : html_(html) {}

  std::string Check() {
    while (pos_ < html_.size() && fault_.empty()) CheckPart();
    if (fault_.empty() && !open_.empty()) fault_ = "an element is left open";
    return fault_.empty() ? fault_ : fault_ + " at " + std::to_string(pos_);
  }

 private:
  void Require(bool holds, const char* fault) {
    if (!holds && fault_.empty()) fault_ = fault;
  }
  bool Take(std::u16string_view text) {
    if (html_.substr(pos_, text.size()) != text) return false;
    pos_ += text.size();
    return true;
  }
  std::u16string_view TakeName() {
    const std::size_t begin = pos_;
    while (pos_ < html_.size() && ((html_[pos_] >= u'a' && html_[pos_] <= u'z') ||
                                   (html_[pos_] >= u'0' && html_[pos_] <= u'9'))) {
      ++pos_;
    }
    return html_.substr(begin, pos_ - begin);
  }

  void CheckPart() {
    if (Take(u"</")) {
      const std::u16string_view name = TakeName();
      Require(Take(u">") && !open_.empty() && open_.back() == name, "an end tag does not match");
      if (fault_.empty()) open_.pop_back();
    } else if (Take(u"<")) {
      CheckStartTag();
    } else {
      CheckCharacter();
    }
  }

  void CheckStartTag() {
    static constexpr std::u16string_view kElements[] = {
        u"a",      u"abbr",    u"address", u"article", u"aside", u"b",     u"bdi",    u"bdo",
        u"big",    u"br",      u"caption", u"center",  u"cite",  u"code",  u"col",    u"blockquote",
        u"dd",     u"del",     u"dfn",     u"div",     u"dl",    u"dt",    u"em",     u"figcaption",
        u"font",   u"h1",      u"h2",      u"h3",      u"h4",    u"h5",    u"h6",     u"figure",
        u"hr",     u"i",       u"img",     u"ins",     u"kbd",   u"li",    u"main",   u"mark",
        u"nav",    u"nobr",    u"ol",      u"p",       u"pre",   u"q",     u"rp",     u"rt",
        u"ruby",   u"s",       u"samp",    u"section", u"small", u"span",  u"strike", u"strong",
        u"sub",    u"sup",     u"table",   u"tbody",   u"td",    u"tfoot", u"th",     u"thead",
        u"time",   u"tr",      u"tt",      u"u",       u"ul",    u"var",   u"wbr",    u"footer",
        u"header", u"colgroup"};
    static constexpr std::u16string_view kVoid[] = {u"br", u"hr", u"img", u"wbr", u"col"};
    const std::u16string_view name = TakeName();
    Require(IsOneOf(name, kElements), "an element that is not allowed");
    while (fault_.empty() && Take(u" ")) CheckAttribute();
    Require(Take(u">"), "a tag does not end");
    if (!IsOneOf(name, kVoid)) open_.push_back(name);
    Require(open_.size() <= 256, "nested too deep");
  }

  void CheckAttribute() {
    static constexpr std::u16string_view kAttributes[] = {
        u"abbr",  u"align",   u"alt",     u"background",  u"bgcolor",     u"border",   u"cols",
        u"clear", u"color",   u"colspan", u"bordercolor", u"cellpadding", u"compact",  u"dir",
        u"face",  u"frame",   u"height",  u"cellspacing", u"datetime",    u"href",     u"hspace",
        u"id",    u"lang",    u"name",    u"noshade",     u"nowrap",      u"reversed", u"rel",
        u"rules", u"scope",   u"size",    u"rowspan",     u"span",        u"src",      u"start",
        u"style", u"summary", u"title",   u"type",        u"valign",      u"value",    u"vspace",
        u"width"};
    const std::u16string_view name = TakeName();
    Require(IsOneOf(name, kAttributes), "an attribute that is not allowed");
    Require(Take(u"=\""), "an attribute without quotes");
    const std::size_t begin = pos_;
    while (fault_.empty() && pos_ < html_.size() && html_[pos_] != u'"') CheckCharacter();
    CheckValue(name, html_.substr(begin, pos_ - begin));
    Require(Take(u"\""), "an attribute does not end");
  }

  void CheckValue(std::u16string_view name, std::u16string_view value) {
    const auto startsWithOne = [&](std::initializer_list<std::u16string_view> starts) {
      return std::any_of(starts.begin(), starts.end(),
                         [&](auto start) { return value.starts_with(start); });
    };
    if (name == u"href") {
      Require(startsWithOne({u"http://", u"https://", u"ftp://", u"mailto:", u"tel:", u"#"}),
              "a link with another scheme");
    } else if (name == u"src" || name == u"background") {
      Require(startsWithOne({u"cid:", u"data:image/"}), "an image with another scheme");
    } else if (name == u"id" || name == u"name") {
      Require(value.starts_with(u"mail-"), "a name without its prefix");
    } else if (name == u"style") {
      Require(value.find_first_of(u"\\&{}<>@\"") == value.npos &&
                  value.find(u"url(") == value.npos && value.find(u"/*") == value.npos,
              "a style that is not allowed");
    }
  }

  // One character of text or of an attribute.
  void CheckCharacter() {
    const char16_t unit = html_[pos_++];
    const auto isLow = [&] { return pos_ < html_.size() && (html_[pos_] & 0xFC00) == 0xDC00; };
    if (unit == u'&') {
      Require(Take(u"amp;") || Take(u"lt;") || Take(u"gt;") || Take(u"quot;") || Take(u"nbsp;"),
              "an ampersand that is not escaped");
    } else if ((unit & 0xFC00) == 0xD800) {
      Require(isLow(), "a lone surrogate");
      ++pos_;
    } else {
      Require((unit & 0xFC00) != 0xDC00, "a lone surrogate");
      Require(unit >= 0xA0 || unit == u'\n' || unit == u'\t' || (unit >= 0x20 && unit < 0x7F),
              "a control character");
      Require(unit != u'<' && unit != u'>' && unit != 0xA0, "a character that is not escaped");
    }
  }

  std::u16string_view html_;
  std::size_t pos_ = 0;
  std::vector<std::u16string_view> open_;
  std::string fault_;
};

inline std::string SafeFault(std::u16string_view html) {
  return SafeChecker(html).Check();
}

}  // namespace lumr
