#include "lumrmisc/html/reading.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "lumrmisc/html/decode_internal.h"
#include "lumrmisc/html/htmltokenizer_internal.h"
#include "lumrmisc/html/nametable_internal.h"
#include "lumrmisc/html/readingflow_internal.h"

namespace lumr {

namespace {

constexpr int kWidestTable = 78;  // columns
constexpr int kColumnGap = 2;

enum class Role {
  kBlock,  // stands on lines of its own; a gap of `lines` around
  kLineBreak,
  kRule,
  kPre,
  kQuote,
  kList,
  kNumberedList,
  kItem,
  kTable,
  kRow,
  kCell,
  kRuby,  // and what ends a reading in it
  kReading,
  kHidden,  // with its content
  kImage,
  kLink,
};

struct ElementRow {
  std::string_view name;
  Role role;
  int lines = 1;
  HtmlContent content = HtmlContent::kMarkup;
};
constexpr auto kElementRows = std::to_array<ElementRow>({
    {"p", Role::kBlock, 2},
    {"h1", Role::kBlock, 2},
    {"h2", Role::kBlock, 2},
    {"h3", Role::kBlock, 2},
    {"h4", Role::kBlock, 2},
    {"h5", Role::kBlock, 2},
    {"h6", Role::kBlock, 2},
    {"dl", Role::kBlock, 2},
    {"figure", Role::kBlock, 2},
    {"address", Role::kBlock},
    {"article", Role::kBlock},
    {"aside", Role::kBlock},
    {"body", Role::kBlock},
    {"caption", Role::kBlock},
    {"center", Role::kBlock},
    {"dd", Role::kBlock},
    {"details", Role::kBlock},
    {"div", Role::kBlock},
    {"dt", Role::kBlock},
    {"fieldset", Role::kBlock},
    {"figcaption", Role::kBlock},
    {"footer", Role::kBlock},
    {"form", Role::kBlock},
    {"head", Role::kBlock},
    {"header", Role::kBlock},
    {"html", Role::kBlock},
    {"legend", Role::kBlock},
    {"main", Role::kBlock},
    {"nav", Role::kBlock},
    {"option", Role::kBlock},
    {"section", Role::kBlock},
    {"summary", Role::kBlock},
    {"textarea", Role::kBlock, 1, HtmlContent::kRcData},
    {"br", Role::kLineBreak},
    {"hr", Role::kRule},
    {"pre", Role::kPre, 2},
    {"listing", Role::kPre, 2},
    {"xmp", Role::kPre, 2, HtmlContent::kRawText},
    {"plaintext", Role::kPre, 2, HtmlContent::kPlainText},
    {"blockquote", Role::kQuote},
    {"ul", Role::kList},
    {"menu", Role::kList},
    {"dir", Role::kList},
    {"ol", Role::kNumberedList},
    {"li", Role::kItem},
    {"table", Role::kTable},
    {"tr", Role::kRow},
    {"td", Role::kCell},
    {"th", Role::kCell},
    {"ruby", Role::kRuby},
    {"rb", Role::kRuby},
    {"rt", Role::kReading},
    {"rp", Role::kHidden},
    {"script", Role::kHidden, 1, HtmlContent::kScript},
    {"style", Role::kHidden, 1, HtmlContent::kRawText},
    {"iframe", Role::kHidden, 1, HtmlContent::kRawText},
    {"noembed", Role::kHidden, 1, HtmlContent::kRawText},
    {"noframes", Role::kHidden, 1, HtmlContent::kRawText},
    {"title", Role::kHidden, 1, HtmlContent::kRcData},
    {"img", Role::kImage},
    {"a", Role::kLink},
});
constexpr NameTable kElements(kElementRows);

// The cells of a table whose form is not decided yet.
struct PendingTable {
  std::vector<std::vector<std::u16string>> rows;
  ReadingFlow cell;
  bool isInCell = false;

  void EndCell() {
    if (!isInCell) return;
    std::u16string text = cell.Take();
    if (text.ends_with(u"\r\n")) text.resize(text.size() - 2);
    if (rows.empty()) rows.emplace_back();
    rows.back().push_back(std::move(text));
    cell = ReadingFlow();
    isInCell = false;
  }
};

class Reader {
 public:
  Reader(std::u16string_view html, bool keepLinks)
      : tokenizer_(html), sourceEnd_(html.size()), keepLinks_(keepLinks) {}

  std::u16string Read() {
    HtmlToken token;
    while (tokenizer_.Next(token)) {
      if (token.kind == HtmlToken::kText) {
        ReadText(token);
      } else if (token.kind == HtmlToken::kStartTag || token.kind == HtmlToken::kEndTag) {
        ReadTag(token);
      }
    }
    CloseReading();
    if (table_) EndTable();
    return out_.Take();
  }

 private:
  ReadingFlow& Flow() { return table_ && table_->isInCell ? table_->cell : out_; }

  void ReadText(const HtmlToken& token) {
    // A title that nothing closes would swallow the mail.
    const bool isLost = hidden_ == "title" && token.end == sourceEnd_;
    if (!hidden_.empty() && !isLost) return;
    std::u16string decoded;
    if (token.hasReferences) AppendDecoded(token.text, false, decoded);
    const std::u16string_view text =
        token.hasReferences ? std::u16string_view(decoded) : token.text;
    if (preDepth_ > 0) {
      Flow().PutExactly(text);
    } else {
      Flow().PutRunning(text);
    }
  }

  void ReadTag(const HtmlToken& token) {
    const ElementRow* const element = kElements.Find(token.name);
    if (element == nullptr) return;
    const bool isStart = token.kind == HtmlToken::kStartTag;
    if (isStart && element->content != HtmlContent::kMarkup) {
      tokenizer_.SetContent(element->content, token.name);
    }
    if (!hidden_.empty()) {
      EndHidden(*element, isStart);
      if (!hidden_.empty()) return;
    }
    isStart ? Open(*element, token) : Close(*element);
  }

  // Hidden text ends with its element; rp and a tag of ruby, whose end tags are left out often,
  // with any next tag.
  void EndHidden(const ElementRow& element, bool isStart) {
    if (element.name == hidden_ ? !isStart : hidden_ == "rp") hidden_ = {};
  }

  void Open(const ElementRow& element, const HtmlToken& token) {
    CloseReading();
    switch (element.role) {
      case Role::kBlock:
        return Flow().Break(element.lines);
      case Role::kLineBreak:
        return Flow().BreakLine();
      case Role::kRule:
        Flow().Break(1);
        Flow().PutExactly(u"----------------------------------------");
        return Flow().Break(1);
      case Role::kPre:
        ++preDepth_;
        return Flow().Break(element.lines);
      case Role::kQuote:
        return Flow().OpenQuote();
      case Role::kList:
      case Role::kNumberedList:
        return Flow().OpenList(element.role == Role::kNumberedList);
      case Role::kItem:
        return Flow().BeginItem();
      case Role::kTable:
        return OpenTable();
      case Role::kRow:
        return OpenRow();
      case Role::kCell:
        return OpenCell();
      case Role::kReading:
        Flow().PutRunning(u"（");
        isInReading_ = true;
        return;
      case Role::kRuby:
        return;
      case Role::kHidden:
        hidden_ = element.name;
        return;
      case Role::kImage:
        return ShowImage(token);
      case Role::kLink:
        return OpenLink(token);
    }
  }

  void Close(const ElementRow& element) {
    CloseReading();
    switch (element.role) {
      case Role::kBlock:
        return Flow().Break(element.lines);
      case Role::kLineBreak:  // "</br>" is a line break to a browser
        return Flow().BreakLine();
      case Role::kPre:
        if (preDepth_ > 0) --preDepth_;
        return Flow().Break(element.lines);
      case Role::kQuote:
        return Flow().CloseQuote();
      case Role::kList:
      case Role::kNumberedList:
        return Flow().CloseList();
      case Role::kItem:
        return Flow().Break(1);
      case Role::kTable:
        return table_ ? EndTable() : Flow().Break(1);
      case Role::kCell:
        return table_ ? table_->EndCell() : Flow().Break(1);
      case Role::kRow:
        return table_ ? table_->EndCell() : Flow().Break(1);
      case Role::kLink:
        return CloseLink();
      default:
        return;
    }
  }

  void CloseReading() {
    if (isInReading_) Flow().PutExactly(u"）");
    isInReading_ = false;
  }

  // A table inside of a table: the outer one is there for the looks of the page.
  void OpenTable() {
    if (table_) WriteCells();
    out_.Break(1);
    table_.emplace();
  }

  void OpenRow() {
    if (!table_) return Flow().Break(1);
    table_->EndCell();
    table_->rows.emplace_back();
  }

  void OpenCell() {
    if (!table_) return Flow().Break(1);
    table_->EndCell();
    table_->isInCell = true;
  }

  void EndTable() {
    table_->EndCell();
    if (!WriteColumns()) WriteCells();
    table_.reset();
    out_.Break(1);
  }

  // The table in columns; false when it has none or they are too wide.
  bool WriteColumns() {
    std::vector<int> widths;
    for (const auto& row : table_->rows) {
      if (row.size() > kWidestTable) return false;
      widths.resize(std::max(widths.size(), row.size()));
      for (std::size_t i = 0; i < row.size(); ++i) {
        if (row[i].find(u'\n') != row[i].npos || row[i].size() > kWidestTable) return false;
        widths[i] = std::max(widths[i], ColumnsOf(row[i]));
      }
    }
    int all = -kColumnGap;
    for (const int width : widths) all += width + kColumnGap;
    if (widths.size() < 2 || all > kWidestTable) return false;
    for (const auto& row : table_->rows) WriteRow(row, widths);
    return true;
  }

  void WriteRow(const std::vector<std::u16string>& row, const std::vector<int>& widths) {
    std::u16string line;
    std::size_t used = 0;  // without spaces at the end
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += row[i];
      if (!row[i].empty()) used = line.size();
      line.append(static_cast<std::size_t>(widths[i] - ColumnsOf(row[i]) + kColumnGap), u' ');
    }
    out_.PutExactly(line.substr(0, used));
    out_.Break(1);
  }

  // Every cell on lines of its own. A cell that is open ends: the rest of the table is text.
  void WriteCells() {
    table_->EndCell();
    for (const auto& row : table_->rows) {
      for (const std::u16string& cell : row) {
        out_.PutExactly(cell);
        out_.Break(1);
      }
    }
    table_.reset();
  }

  static std::u16string ValueOf(const HtmlToken& token, std::string_view name) {
    std::u16string value;
    for (const HtmlAttribute& attribute : token.attributes) {
      if (!EqualsNoCase(attribute.name, name)) continue;
      AppendDecoded(attribute.value, true, value);
      break;
    }
    return value;
  }

  void ShowImage(const HtmlToken& token) {
    const std::u16string text = ValueOf(token, "alt");
    if (std::all_of(text.begin(), text.end(), IsHtmlSpace)) return;
    Flow().PutRunning(u"[" + text + u"]");
  }

  void OpenLink(const HtmlToken& token) {
    CloseLink();
    if (!keepLinks_) return;
    const std::u16string value = ValueOf(token, "href");
    for (const char16_t unit : value) {
      if (unit > 0x20) address_ += unit;  // as a browser does
    }
    if (address_.starts_with(u'#') || StartsWithNoCase(address_, "javascript:")) address_.clear();
    linkStart_ = Flow().Size();
    linkFlow_ = &Flow();
  }

  void CloseLink() {
    if (address_.empty()) return;
    const bool isSame = &Flow() == linkFlow_ && linkStart_ <= Flow().Size() &&
                        Flow().Text().substr(linkStart_).ends_with(address_);
    if (!isSame) Flow().PutRunning(u" <" + address_ + u">");
    address_.clear();
  }

  HtmlTokenizer tokenizer_;
  std::size_t sourceEnd_;
  bool keepLinks_;
  ReadingFlow out_;
  std::optional<PendingTable> table_;
  std::string_view hidden_;  // the element whose text is left out
  int preDepth_ = 0;
  bool isInReading_ = false;
  std::u16string address_;  // of the open link
  std::size_t linkStart_ = 0;
  const ReadingFlow* linkFlow_ = nullptr;
};

}  // namespace

void ExtractTextFromHtmlW2(CStringW& html, int keepLinks) {
  html = Reader(html, keepLinks != 0).Read();
}

}  // namespace lumr
