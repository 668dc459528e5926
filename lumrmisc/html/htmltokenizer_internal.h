// Cuts HTML into tags, text and comments exactly as a browser does, after the tokenizer states of
// the HTML standard. Nothing is decoded or copied: all parts of a token are views of the source.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace lumr {

// White space of HTML markup: tab, LF, FF, CR and space.
constexpr bool IsMarkupSpace(char16_t unit) {
  return unit == u' ' || unit == u'\n' || unit == u'\r' || unit == u'\t' || unit == u'\f';
}

inline std::u16string_view TrimMarkupSpace(std::u16string_view text) {
  while (!text.empty() && IsMarkupSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsMarkupSpace(text.back())) text.remove_suffix(1);
  return text;
}

struct HtmlAttribute {
  std::u16string_view name;   // in the case of the source
  std::u16string_view value;  // without its quotes, references not decoded
};

struct HtmlToken {
  enum Kind { kText, kStartTag, kEndTag, kComment, kDocType, kUnfinishedTag };
  Kind kind = kText;
  std::size_t begin = 0;  // of the whole token in the source
  std::size_t end = 0;
  bool isSelfClosing = false;
  bool hasReferences = false;             // text in which character references count
  std::u16string_view text;               // of text and comments
  std::u16string_view name;               // of tags, in the case of the source
  std::vector<HtmlAttribute> attributes;  // repeated ones too; the first counts
  bool hasMoreAttributes = false;         // than are listed
};

// How the tokenizer reads what follows a start tag.
enum class HtmlContent {
  kMarkup,
  kRcData,   // text with references up to the end tag: title, textarea
  kRawText,  // text without: style, xmp, iframe
  kScript,   // the same, with the escapes of script elements
  kPlainText,
};

class HtmlTokenizer {
 public:
  // More attributes of a tag than this are not listed: no page has them, and a list of millions
  // would take many times the memory of the page.
  static constexpr std::size_t kMostAttributes = 512;

  explicit HtmlTokenizer(std::u16string_view source) : source_(source) {}

  // The next token; false at the end of the source. A tag that the source ends in is an
  // unfinished tag, without name and attributes.
  bool Next(HtmlToken& token);

  // Reads on as the content of an element with this name; its end tag goes back to markup. The
  // name must outlive the content.
  void SetContent(HtmlContent content, std::u16string_view name);
  // Inside svg and math "<![CDATA[" begins text; elsewhere it is a comment.
  void AllowCData(bool allow) { allowCData_ = allow; }

 private:
  bool StartsWith(std::size_t pos, std::u16string_view text) const {
    return source_.substr(pos, text.size()) == text;
  }
  bool IsEndTagAt(std::size_t pos) const;
  void SetText(std::size_t end, bool hasReferences, HtmlToken& token);
  void ReadSpecialText(HtmlToken& token);
  std::size_t FindScriptEnd() const;
  bool ReadMarkup(HtmlToken& token);
  void ReadDeclaration(HtmlToken& token);
  void ReadComment(HtmlToken& token);
  void ReadBogusComment(std::size_t dataBegin, HtmlToken& token);
  void ReadCData(HtmlToken& token);
  void ReadTag(HtmlToken& token);
  std::size_t ReadAttribute(std::size_t pos, HtmlToken& token);

  std::u16string_view source_;
  std::size_t pos_ = 0;
  HtmlContent content_ = HtmlContent::kMarkup;
  std::u16string_view endName_;
  bool allowCData_ = false;
};

}  // namespace lumr
