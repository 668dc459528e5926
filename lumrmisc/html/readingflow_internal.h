// Lines of running text: what the reading form of an HTML document is made of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumr {

// The columns that text takes where wide characters take two.
int ColumnsOf(std::u16string_view text);

// Collects text to lines. White space and line breaks are remembered and written only when more
// text follows.
class ReadingFlow {
 public:
  // Text as it is, white space and line ends (CR, LF, CR LF) kept.
  void PutExactly(std::u16string_view text);
  // Text in which white space becomes one blank a run.
  void PutRunning(std::u16string_view text);

  // Ends the line; lines - 1 empty lines follow at least.
  void Break(int lines);
  // Ends the line, or adds an empty one.
  void BreakLine();

  void OpenQuote();
  void CloseQuote();
  void OpenList(bool isNumbered);
  void CloseList();
  void BeginItem();

  bool IsEmpty() const { return text_.empty(); }
  std::size_t Size() const { return text_.size(); }
  std::u16string_view Text() const { return text_; }
  std::u16string Take();  // with the last line ended

 private:
  struct List {
    bool isNumbered;
    int next;
  };
  static constexpr int kMostLevels = 10;
  static constexpr int kMostBreaks = 3;

  void Put(char16_t unit);
  void OpenLine();
  void AppendPrefix(int quotes, bool isEmptyLine);

  std::u16string text_;
  std::vector<List> lists_;
  std::u16string marker_;  // of the item that begins with the next line
  int quotes_ = 0;
  int quotesBefore_ = 0;  // of the line before
  int breaks_ = 0;
  bool isLineOpen_ = false;
  bool hasGap_ = false;         // white space before the next text
  bool gapHasLineEnd_ = false;  // and a line end in it
};

}  // namespace lumr
