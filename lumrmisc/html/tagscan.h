// The tags and comments of an HTML source, found without building a document.
//
// All positions and lengths are UTF-16 units. Nothing here allocates or throws, every text is
// good enough, and going through a text span by span is linear.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace lumr {

enum class SpanKind : int { kComment = 0, kTag = 1 };

// A tag or a comment: text [start, end), where start is the place of its "<". One that lacks its
// end goes to the end of the text.
struct TagSpan {
  std::size_t start = 0;
  std::size_t end = 0;
  SpanKind kind = SpanKind::kTag;
  bool isClosed = false;  // whether it has its end: ">", of a comment "-->"

  bool operator==(const TagSpan&) const = default;
};

// Finds the first tag or comment at or behind from. "<!--" opens a comment up to the next "-->"
// behind it; any other "<" opens a tag, unless white space or the end of the text follows. A tag
// ends at the first ">" outside of quoted values; a quote counts only directly behind "=", since
// stray quotes are common in mail and must not swallow the rest.
bool FindTag(std::u16string_view html, std::size_t from, TagSpan& span);

// The name of a tag as one number: that of TagName for its name, in which case does not count, a
// "/" at the start belongs to it ("/body", "!doctype"), and whose end is ">", "/" or white
// space. 0 when it has none of at most eight ASCII characters without NUL. A comment has no name.
using TagNameKey = std::uint64_t;
TagNameKey TagNameOf(std::u16string_view html, const TagSpan& span);

// The key of a name in lower case of at most eight ASCII characters.
constexpr TagNameKey TagName(std::string_view name) {
  TagNameKey key = 0;
  for (const char c : name) key = key << 8 | static_cast<unsigned char>(c);
  return key;
}

// Finds the first tag of a name at or behind from.
bool FindTagNamed(std::u16string_view html, std::size_t from, TagNameKey name, TagSpan& span);

// The place behind the closing tag ("/script") of an element whose opening tag ends at pos; the
// end of the text when it is not closed.
std::size_t EndOfElement(std::u16string_view html, std::size_t pos, TagNameKey closing);

// The text of a tag from its "<" up to its closing ">", which is not in it.
std::u16string_view TagText(std::u16string_view html, const TagSpan& span);

// One attribute of a tag. Positions count from the "<".
struct TagAttribute {
  std::u16string_view name;
  std::u16string_view value;   // without quotes
  std::u16string_view source;  // the value as it stands, with its quotes
  std::size_t start = 0;       // of the name
  std::size_t sourceStart = 0;
  std::size_t end = 0;  // behind the value, or behind the name without value
  bool hasValue = false;
};

// Goes through the attributes of a tag, given as TagText. An attribute is a name, white space or
// none, "=", white space or none, and a value that is quoted or runs to white space or ">". A
// quote without its partner is an ordinary character of the value. A name without "=" is reported
// without value. Names end at white space, "/", ">" and "=".
class AttributeWalk {
 public:
  explicit AttributeWalk(std::u16string_view tag);
  bool Next(TagAttribute& attribute);

 private:
  std::size_t ClosingQuote(std::size_t open);
  void ReadValue(TagAttribute& attribute);

  std::u16string_view tag_;
  std::size_t pos_ = 0;
  // Where the last quote of each kind stands that has been looked for in vain.
  bool lacksDouble_ = false;
  bool lacksSingle_ = false;
};

// The value of the last attribute of a name (in lower case); false when there is none.
bool FindAttribute(std::u16string_view tag, std::string_view name, std::u16string_view& value);

}  // namespace lumr
