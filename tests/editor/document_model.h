// An editor's document as a list of strings, and what must hold of an editor that went through the
// same operations. For tests and fuzzers.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "lumrmisc/editor/editorwnd.h"
#include "lumrmisc/editor/layout.h"
#include "lumrmisc/editor/quote.h"
#include "tests/editor/font_window.h"

namespace lumr::documentmodel {

class Model {
 public:
  CodeType codeType = CT_SJIS;
  std::vector<std::string> lines;
  std::size_t headers = 0;

  bool IsWide() const { return IsCodeTypeUnicode(codeType); }
  std::size_t Unit() const { return IsWide() ? 2 : 1; }
  std::string LineEnd() const { return IsWide() ? std::string("\r\0\n\0", 4) : "\r\n"; }

  std::vector<std::string> Split(std::string_view text) const {
    std::vector<std::string> pieces(1);
    const auto is = [&](std::size_t pos, char c) {
      return pos + Unit() <= text.size() && text[pos] == c && (!IsWide() || text[pos + 1] == 0);
    };
    for (std::size_t pos = 0; pos + Unit() <= text.size(); pos += Unit()) {
      if (is(pos, '\r') || is(pos, '\n')) {
        if (is(pos, '\r') && is(pos + Unit(), '\n')) pos += Unit();
        pieces.emplace_back();
      } else {
        pieces.back() += text.substr(pos, Unit());
      }
    }
    return pieces;
  }

  void Append(std::string_view text, std::string_view mark) {
    const std::vector<std::string> pieces = Split(text);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      const bool marked = i + 1 < pieces.size() || !pieces[i].empty();
      if (i > 0 || lines.empty()) lines.emplace_back();
      lines.back() += (marked ? std::string(mark) : std::string()) + pieces[i];
    }
  }

  void InsertHeader(std::string_view text) {
    if (headers > 0 || text.empty()) return;
    std::vector<std::string> pieces = Split(text);
    if (pieces.back().empty()) pieces.pop_back();
    // A last unit cut in half is a text without a line.
    headers = pieces.size();
    lines.insert(lines.begin(), pieces.begin(), pieces.end());
  }

  void RemoveHeader() {
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(headers));
    headers = 0;
  }

  std::string Text(bool withHeader, std::string_view mark, bool lineEnds, bool finalEnd) const {
    std::string text;
    for (std::size_t i = withHeader ? 0 : headers; i < lines.size(); ++i) {
      const bool last = i + 1 == lines.size();
      if (!last || !lines[i].empty()) text += mark;
      text += lines[i];
      if (lineEnds && !last) text += LineEnd();
    }
    if (lineEnds && finalEnd && !text.ends_with(LineEnd())) text += LineEnd();
    return text;
  }

  bool ByteToPos(long long index, bool toNextLine, CTextPos& pos) const {
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const auto size = static_cast<long long>(lines[i].size());
      if (index < size || (index == size && !toNextLine)) {
        pos = CTextPos(static_cast<int>(i), static_cast<int>(index));
        return true;
      }
      index -= size;
    }
    return false;
  }
};

// A line laid out anew, by the same parameters.
inline std::string DifferingLine(const CEditorWnd& editor, CEditorLineFontMetrics& metrics,
                                 const CLLineData& line) {
  CLLineData fresh;
  fresh.SetText(line.Text());
  std::vector<LinkRange> links;
  LinkFinder(editor.GetCodeType()).FindAll(fresh.Text(), links);
  fresh.MutableUrlRanges().Assign(links);
  const int prefix = QuotePrefixLength(metrics, fresh.Text());
  fresh.SetQuoteIndex(prefix > 0 ? 0 : -1);
  LayoutLine(metrics, fresh, 0, fresh.PhysicalLines());

  const auto found = line.UrlRanges();
  if (!std::equal(found.begin(), found.end(), links.begin(), links.end())) return "links";
  const int indent =
      IndentRunLength(metrics, fresh.Text().substr(static_cast<std::size_t>(prefix)));
  const int repeated = prefix > 0 ? prefix + indent : 0;
  if (editor.GetQuoteLength(&line, line.Length()) != repeated) return "quote prefix";
  if ((line.GetQuoteIndex() >= 0) != (prefix > 0)) return "quote index";
  const auto a = line.PhysicalLines().Items();
  const auto b = fresh.PhysicalLines().Items();
  const auto same = [](const CPhysicalLine& x, const CPhysicalLine& y) {
    return x.start == y.start && x.columns == y.columns && x.pixels == y.pixels;
  };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), same) ? "" : "layout";
}

// The places of a line: there and back.
inline std::string DifferingPlaces(const CEditorWnd& editor, int index, long long before) {
  const CLLineData& line = *editor.GetLine(index);
  const int step = IsCodeTypeUnicode(editor.GetCodeType()) ? 2 : 1;
  for (int byte = 0; byte <= line.Length(); byte += step) {
    CTextPos pos(index, byte);
    editor.L2PByteIndex(pos);
    const CPhysicalLines& physical = line.PhysicalLines();
    if (physical[pos.physLine].start + pos.byteP != byte) return "logical to physical";
    const bool last = pos.physLine + 1 == physical.Count();
    if (!last && physical[pos.physLine + 1].start <= byte) return "physical line of a turn";
    pos.byteL = -1;
    editor.P2LByteIndex(pos, 1);
    if (pos.byteL != byte) return "physical to logical";
    if (editor.ViewIndex2ByteL(pos) != before + byte) return "place to byte";
  }
  return {};
}

// What differs between the two; empty: nothing.
inline std::string Differs(const CEditorWnd& editor, const Model& model) {
  if (editor.GetLineCount() != static_cast<int>(model.lines.size())) return "line count";
  if (editor.GetHeaderLineCount() != static_cast<int>(model.headers)) return "header count";
  CEditorLineFontMetrics metrics;
  editor.SetLineFontMetrics(metrics, 0);
  std::map<std::string_view, int> prefixes;
  std::map<int, std::string_view> indices;
  int widest = 0;
  long long bytes = 0;
  int physicalLines = 0;
  std::string shown;
  for (int i = 0; i < editor.GetLineCount(); ++i) {
    const CLLineData& line = *editor.GetLine(i);
    const std::string number = " of line " + std::to_string(i);
    if (line.Text() != model.lines[static_cast<std::size_t>(i)]) return "text" + number;
    if (const std::string what = DifferingLine(editor, metrics, line); !what.empty()) {
      return what + number;
    }
    if (const int index = line.GetQuoteIndex(); index >= 0) {
      const int length = QuotePrefixLength(metrics, line.Text());
      const std::string_view prefix = line.Text().substr(0, static_cast<std::size_t>(length));
      const bool same = prefixes.emplace(prefix, index).first->second == index;
      if (!same || indices.emplace(index, prefix).first->second != prefix) {
        return "shared quote prefix" + number;
      }
    }
    if (editor.GetSerialLineP(i, 0) != physicalLines) return "serial line" + number;
    if (i == editor.GetHeaderLineCount() && editor.GetHeaderLineP() != physicalLines) {
      return "physical header lines";
    }
    if (const std::string what = DifferingPlaces(editor, i, bytes); !what.empty()) {
      return what + number;
    }
    for (int k = 0; k < editor.GetLineCountP(i); ++k) {
      if (i > editor.GetHeaderLineCount() || k > 0) shown += model.LineEnd();
      const auto start = static_cast<std::size_t>(line.PhysicalLines()[k].start);
      const auto size = static_cast<std::size_t>(editor.GetLineByteCountP(i, k));
      shown += line.Text().substr(start, size);
      widest = std::max(widest, line.PhysicalLines()[k].pixels);
      if (i < editor.GetHeaderLineCount()) shown.clear();
    }
    physicalLines += editor.GetLineCountP(i);
    bytes += line.Length();
  }
  if (editor.GetWidest() != widest) return "widest line";
  for (const bool toNextLine : {false, true}) {
    for (long long index = 0; index <= bytes + 2; index += 1 + index / 16) {
      CTextPos pos, wanted;
      const bool found = editor.ByteL2ViewIndex(static_cast<int>(index), toNextLine, pos) != 0;
      if (found != model.ByteToPos(index, toNextLine, wanted)) return "bytes of the document";
      if (found && (pos.line != wanted.line || pos.byteL != wanted.byteL)) return "byte to place";
    }
  }
  CBuffer out;
  editor.GetDocument2(out);
  if (out.Bytes() != shown) return "text as shown";
  const std::string_view mark = editor.GetEditorMetrics().EditableQuoteMark.Bytes();
  for (int flags = 0; flags < 16; ++flags) {
    editor.GetDocument(flags & 1, flags & 2, flags & 4, flags & 8, out);
    const std::string_view put = (flags & 2) != 0 ? mark : std::string_view();
    if (out.Bytes() != model.Text((flags & 1) != 0, put, (flags & 4) != 0, (flags & 8) != 0)) {
      return "text as given " + std::to_string(flags);
    }
  }
  const long long ends = std::max(editor.GetLineCount() - 1, 0);
  if (editor.GetDocumentSize() != bytes + ends * static_cast<long long>(model.LineEnd().size())) {
    return "size";
  }
  return {};
}

// An editor and its model, driven by numbers.
class Driver {
 private:
  // Lists with halves of characters, with what other lists have, and with what links are of.
  static std::string_view List(int number) {
    static constexpr std::string_view kLists[] = {
        ">",           " \t\x81\x40",         "\x81",   "",          "\x81\x41\x81\x42.)",
        "a> \x81\xa0", {"\0\x82\xa0\x82", 4}, "h:/@\\", "\x81\x69(", "a>\x81\x84|",
    };
    return kLists[static_cast<unsigned>(number) % std::size(kLists)];
  }

  testing::FontWindow::State window_;

 public:
  // Headless, or in a window with a font.
  explicit Driver(bool withFont = false) {
    testing::FontWindow parent(window_);
    if (withFont) editor.CreateEditorWnd(0, 0, {}, &parent, 0, CEditorMetrics(), CEditorColor());
  }

  // One operation, chosen by op; the text and the number are its arguments where it has any.
  void Do(unsigned op, std::string_view text, int number) {
    const int size = static_cast<int>(text.size());
    static constexpr CodeType kTypes[] = {CT_SJIS, CT_UTF8, CT_WIN1252, CT_BIG5};
    const CodeType type = kTypes[static_cast<unsigned>(number) % std::size(kTypes)];
    CEditorMetrics metrics = editor.GetEditorMetrics();
    switch (op % 10) {
      case 0:
        editor.SetDocument(type, text.data(), size);
        model = {};
        model.codeType = type;
        model.Append(text, {});
        break;
      case 1:
      case 2:
      case 3: {
        const bool quote = number % 4 == 0;
        const std::string mark(editor.GetEditorMetrics().EditableQuoteMark.Bytes());
        editor.AppendText(text.data(), size, quote);
        model.Append(text, quote ? mark : std::string());
        break;
      }
      case 4:
        editor.InsertHeaderText(text.data(), size);
        model.InsertHeader(text);
        break;
      case 5:
        editor.RemoveHeaderText();
        model.RemoveHeader();
        break;
      case 6:
        metrics.AutoTurn = number % 3;
        metrics.TurnCols = 1 + number % 40;
        metrics.NoTurnURL = number / 2 % 2;
        metrics.NoTurnQuoted = number / 4 % 2;
        metrics.QuoteLen = number / 8 % 10;
        editor.ChangeEditorMetrics(metrics);
        break;
      case 7:  // the bytes stay, and mean other characters
        model.codeType = type;
        editor.SetCodeType(type);
        break;
      case 8:
        window_.width = number % 5 == 0 ? number % 10 : number * 8;
        editor.UpdateAutoTurn();
        break;
      default:
        metrics.QuoteList = List(number);
        metrics.IndentList = List(number / 2);
        metrics.Head2Prev = List(number / 3);
        metrics.Tail2Next = List(number / 5);
        metrics.QuoteLen = number % 7 == 0 ? 1 << 30 : number % 9 - 1;
        metrics.TabColumn = 1 + number % 9;
        editor.ChangeEditorMetrics(metrics);
    }
  }

  CEditorWnd editor;
  Model model;
};

}  // namespace lumr::documentmodel
