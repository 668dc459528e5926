#include <gtest/gtest.h>

#include <random>

#include "editor/document_model.h"
#include "editor/text.h"
#include "search/sample.h"

namespace lumr {
namespace {

using testing::Append;
using testing::TextIn;

// The lines of an editor in brackets, turned ones with "/" where they are.
std::string Shown(const CEditorWnd& editor) {
  std::string out;
  for (int i = 0; i < editor.GetLineCount(); ++i) {
    out += '[';
    for (int k = 0; k < editor.GetLineCountP(i); ++k) {
      const CPhysicalLine& line = editor.GetLine(i)->PhysicalLines()[k];
      if (k > 0) out += '/';
      out += editor.GetLine(i)->Text().substr(
          static_cast<std::size_t>(line.start),
          static_cast<std::size_t>(editor.GetLineByteCountP(i, k)));
    }
    out += ']';
  }
  return out;
}

void Set(CEditorWnd& editor, std::string_view text, CodeType codeType = CT_SJIS) {
  EXPECT_EQ(editor.SetDocument(codeType, text.data(), static_cast<int>(text.size())), 1);
}

std::string Document(const CEditorWnd& editor, int withHeader, int quote = 0, int lineEnds = 1,
                     int finalLineEnd = 0) {
  CBuffer out;
  out = "left over";
  editor.GetDocument(withHeader, quote, lineEnds, finalLineEnd, out);
  return std::string(out.Bytes());
}

void TurnAt(CEditorWnd& editor, int columns) {
  CEditorMetrics metrics = editor.GetEditorMetrics();
  metrics.AutoTurn = columns > 0;
  metrics.TurnCols = columns;
  EXPECT_EQ(editor.ChangeEditorMetrics(metrics), 1);
  EXPECT_EQ(editor.ChangeEditorMetrics(metrics), 0);
}

}  // namespace

TEST(CTextPos, ComparesByThePhysicalPlace) {
  const CTextPos places[] = {{0, 0, 0}, {0, 0, 7}, {0, 1, 2}, {1, -1, 9}, {1, 0, 0}};
  for (int i = 0; i < 5; ++i) {
    for (int k = 0; k < 5; ++k) {
      CTextPos a = places[i];
      CTextPos b = places[k];
      a.byteL = 100 - i;  // takes no part
      EXPECT_EQ(a < b, i < k);
      EXPECT_EQ(a <= b, i <= k);
      EXPECT_EQ(a > b, i > k);
      EXPECT_EQ(a >= b, i >= k);
      EXPECT_EQ(a.IsEmpty(b), i == k);
      EXPECT_EQ(a != b, i != k);
      for (int m = 0; m < 5; ++m) {
        EXPECT_EQ(places[m].IsInRange(a, b), m >= std::min(i, k) && m < std::max(i, k));
      }
    }
  }
  const struct {
    int delta, minLine, maxLine;
    CTextPos wanted;
    int byteL;
  } moves[] = {
      {-3, 0, 10, {0, 0, 0}, 0},         {1, 0, 10, {2, 3, 4}, 5},
      {9, 0, 10, {10, 3, 4}, 5},         {10, 0, 10, {10, 0, 0}, 0},
      {0, 2, 10, {2, 0, 0}, 0},          {-1, 0, 10, {0, 3, 4}, 5},
      {INT32_MAX, 0, 10, {10, 0, 0}, 0}, {INT32_MIN, 0, 10, {0, 0, 0}, 0},
  };
  for (const auto& c : moves) {
    CTextPos pos(1, 3, 4);
    pos.byteL = 5;
    pos.UpLineL(c.delta, c.minLine, c.maxLine);
    EXPECT_TRUE(pos == c.wanted && pos.byteL == c.byteL) << c.delta;
  }
}

TEST(CEditorWnd, SplitsAppendsAndGivesBack) {
  const struct {
    std::string_view text, appended;
    int quote;
    std::string_view lines;
    CodeType codeType = CT_SJIS;
  } splits[] = {
      {"a\r\nb\rc\nd", "", 1, "[a][b][c][d]"},
      {"a\r\n", "", 0, "[a][]"},
      {"", "", 0, "[]"},
      {"\n\r", "", 0, "[][][]"},
      {"\r\n\r", "", 0, "[][][]"},
      {"\x83\x40\n\x81\n", "", 0, "[\x83\x40][\x81][]"},
      {{"a\0\r\0\n\0\n\x0a\r\rb", 11}, "", 0, {"[a\0][\n\n\r\r]", 10}, CT_UTF8},
      {"ab", "x\r\ny", 0, "[abx][y]"},
      {"ab", "z\n\nw\n", 1, "[ab>z][>][>w][]"},
  };
  for (const auto& c : splits) {
    CEditorWnd editor;
    Set(editor, c.text, c.codeType);
    Append(editor, c.appended, c.quote);
    EXPECT_EQ(Shown(editor), c.lines);
  }
  const struct {
    std::string_view text;
    int quote, lineEnds, finalLineEnd;
    std::string_view given;
  } gifts[] = {
      {"a\r\nb", 0, 1, 1, "a\r\nb\r\n"}, {"a\r\nb", 0, 1, 0, "a\r\nb"}, {"a\r\nb", 0, 0, 1, "ab"},
      {"x\n", 0, 1, 0, "x\r\n"},         {"x\n", 0, 1, 1, "x\r\n"},     {"x\n", 1, 1, 1, ">x\r\n"},
  };
  CEditorWnd editor, wide;
  for (const auto& c : gifts) {
    Set(editor, c.text);
    EXPECT_EQ(Document(editor, 0, c.quote, c.lineEnds, c.finalLineEnd), c.given);
  }
  Set(wide, TextIn(CT_UNICODE, "W"), CT_UTF8);
  wide.AppendDoc(editor, 1);
  wide.AppendDoc(wide, 0);
  EXPECT_EQ(testing::Utf8Of(CT_UNICODE, Document(wide, 0)), "W>x\r\nW>x\r\n");
}

TEST(CEditorWnd, GivesParts) {
  CEditorWnd editor;
  Set(editor, "abcdefgh\nij\n\nkl");
  TurnAt(editor, 4);
  EXPECT_EQ(Shown(editor), "[abcd/efgh][ij][][kl]");
  const struct {
    CTextPos a, b;
    int quote, lineEnds;
    std::string_view text;
  } cases[] = {
      {{0, 0, 2}, {0, 1, 1}, 0, 1, "cde"},
      {{0, 1, 1}, {0, 0, 2}, 0, 1, "cde"},
      {{0, 1, 0}, {1, 0, 1}, 0, 1, "efgh\r\ni"},
      {{0, 1, 0}, {3, 0, 9}, 1, 1, ">efgh\r\n>ij\r\n>\r\n>kl"},
      {{1, 0, 0}, {2, 0, 0}, 1, 1, ">ij\r\n"},
      {{1, 0, 0}, {3, 0, 1}, 0, 0, "ijk"},
      {{-5, 0, 0}, {9, 0, 0}, 0, 0, "abcdefghijkl"},
      {{1, 0, 1}, {1, 0, 1}, 0, 1, ""},
      {{1, 7, 7}, {1, 7, 7}, 0, 1, ""},
      {{1, -1, 0}, {1, 0, 1}, 0, 1, ""},
  };
  CBuffer out;
  for (const auto& c : cases) {
    editor.GetDocumentPart(c.a, c.b, c.quote, c.lineEnds, out);
    EXPECT_EQ(out.Bytes(), c.text);
  }
  editor.GetTextWithin(2, 9, out);
  EXPECT_EQ(out.Bytes(), "cdefgh\r\ni");
  editor.GetTextWithin(11, 400, out);
  EXPECT_EQ(out.Bytes(), "l");
  editor.GetTextWithin(-1, 1, out);
  EXPECT_EQ(out.Bytes(), "a");
  editor.GetDocument2(out);
  EXPECT_EQ(out.Bytes(), "abcd\r\nefgh\r\nij\r\n\r\nkl");
}

TEST(CEditorWnd, NamesPlacesBeyondTheText) {
  CEditorWnd editor;
  CTextPos pos(0, 3);
  EXPECT_EQ(editor.GetSerialLineP(3, 2), 5);
  EXPECT_EQ(editor.ByteL2ViewIndex(0, 0, pos), 0);
  EXPECT_EQ(editor.ViewIndex2ByteL(pos), 0);
  Set(editor, "abcdef\nij");
  TurnAt(editor, 4);
  for (const int freeCursor : {0, 1}) {
    CEditorMetrics metrics = editor.GetEditorMetrics();
    metrics.FreeCursor = freeCursor;
    editor.ChangeEditorMetrics(metrics);
    EXPECT_EQ(editor.GetLineCountP(0), 2);
    EXPECT_EQ(editor.GetLineCountP(2), freeCursor);
    EXPECT_EQ(editor.GetLineCountP(-1), 0);
    EXPECT_EQ(editor.GetLineByteCountP(0, 1), 2);
    EXPECT_EQ(editor.GetLineByteCountP(0, 2) + editor.GetLineByteCountP(2, 0), 0);
    EXPECT_EQ(editor.GetSerialLineP(1, 1), 3);
    EXPECT_EQ(editor.GetSerialLineP(5, 1), 7);
    EXPECT_EQ(editor.GetSerialLineP(-1, 1), 0);
  }
  const struct {
    CTextPos pos;
    int held, free;
  } backs[] = {
      {{0, 0, 0}, 0, 0}, {{0, 0, 9}, 4, 9},  {{0, 1, 1}, 5, 5}, {{0, 1, 9}, 6, 13},
      {{0, 2, 1}, 6, 6}, {{0, -1, 1}, 6, 6}, {{2, 1, 1}, 0, 0}, {{1, 0, 7}, 2, 7},
  };
  for (const auto& c : backs) {
    CTextPos held = c.pos;
    CTextPos free = c.pos;
    editor.P2LByteIndex(held, 1);
    editor.P2LByteIndex(free, 0);
    EXPECT_EQ(held.byteL, c.held);
    EXPECT_EQ(free.byteL, c.free);
  }
  CTextPos past(0, 20);
  editor.L2PByteIndex(past);
  EXPECT_TRUE(past == CTextPos(0, 1, 16));
  past.line = 2;
  editor.L2PByteIndex(past);
  EXPECT_TRUE(past == CTextPos(2, 0, 0));
  EXPECT_EQ(editor.ByteL2ViewIndex(6, 0, pos), 1);
  EXPECT_TRUE(pos == CTextPos(0, 1, 2));
  EXPECT_EQ(editor.ByteL2ViewIndex(6, 1, pos), 1);
  EXPECT_TRUE(pos == CTextPos(1, 0, 0));
  EXPECT_EQ(editor.ByteL2ViewIndex(8, 0, pos), 1);
  EXPECT_EQ(editor.ByteL2ViewIndex(8, 1, pos) + editor.ByteL2ViewIndex(9, 0, pos) +
                editor.ByteL2ViewIndex(-1, 0, pos),
            0);
  EXPECT_TRUE(pos == CTextPos(1, 0, 2));
}

// Both names of a place stay in step when the line that it is in is turned elsewhere.
TEST(CEditorWnd, PlacesFollowWhatIsTurned) {
  const struct {
    std::string_view text;
    CTextPos before;
    std::string_view appended;
    CTextPos after;
  } cases[] = {
      {"a bcd", {0, 0, 4}, "efghij", {0, 1, 2}},          // the word goes to the next line
      {"a bcd", {0, 0, 1}, "efghij", {0, 0, 1}},          // what stands before it does not
      {"abcdef", {0, 0, 6}, "g", {0, 1, 0}},              // the end of the line is the start of one
      {"x\nabcdef", {1, 0, 5}, ")", {1, 0, 5}},           // a closing mark hangs
      {"abcdefgh", {0, 1, 2}, "\nx", {0, 1, 2}},          // another line
      {"abcdefgh\nabcdefgh", {0, 0, 6}, "i", {0, 0, 6}},  // at the end of a row of another line
      {"abcdefgh", {5, 0, 7}, "ijkl", {5, 0, 7}},         // below the text
  };
  for (const auto& c : cases) {
    CEditorWnd editor;
    TurnAt(editor, 6);
    Set(editor, c.text);
    editor.SetCaretPos(c.before);
    editor.FoundRanges().Add({editor.GetCaret().pos, editor.GetCaret().pos});
    Append(editor, c.appended);
    EXPECT_TRUE(editor.GetCaret().pos == c.after) << c.text << '+' << c.appended;
    EXPECT_TRUE(editor.FoundRanges().Items()[0].to == c.after) << c.text << '+' << c.appended;
  }
}

TEST(CEditorWnd, QuotesAndIndents) {
  CEditorWnd editor;
  Set(editor, "> > x\n" + std::string(8, ' ') + ">\n" + std::string(9, ' ') + ">\n");
  EXPECT_EQ(editor.GetQuoteLength(editor.GetLine(0), 99), 4);
  EXPECT_EQ(editor.GetQuoteLength(editor.GetLine(0), 3), 3);
  EXPECT_EQ(editor.GetQuoteLength(editor.GetLine(0), 2), 2);
  EXPECT_EQ(editor.GetQuoteLength(editor.GetLine(0), 0) + editor.GetQuoteLength(nullptr, 5), 0);
  EXPECT_EQ(editor.GetQuoteLength(editor.GetLine(1), 99), 9);
  EXPECT_EQ(editor.GetQuoteLength(editor.GetLine(2), 99), 0);
  EXPECT_EQ(editor.GetIndentLength(" \t\x81\x40x", 5), 4);
  EXPECT_EQ(editor.GetIndentLength("  ", 1), 1);
  EXPECT_EQ(editor.GetIndentLength(nullptr, 5) + editor.GetIndentLength("  ", 0), 0);
  CEditorMetrics metrics = editor.GetEditorMetrics();
  metrics.AutoIndent = 0;
  editor.ChangeEditorMetrics(metrics);
  EXPECT_EQ(editor.GetIndentLength("  ", 2), 0);
}

TEST(CEditorWnd, HeaderLinesMoveWhatIsKeptOfPlaces) {
  CEditorWnd editor;
  Set(editor, "a\nb\nc");
  const CTextPos at(1, 0, 1);
  const CTextRange range{CTextPos(0, 0, 0), CTextPos(2, 0, 1)};
  CBuffer undone;
  editor.SetCaretPos(at);
  editor.Selection().anchor = range.from;
  editor.Selection().caret = range.to;
  editor.LineRanges().Add(range);
  editor.FoundRanges().Add(range);
  editor.UndoHistory().Add(range, undone);
  editor.LineMarkers().Add(range.to, 1);
  editor.LineMarkers().Add(range.from, 1);
  editor.LineMarkers().Add(range.from, 1);
  EXPECT_EQ(editor.LineMarkers().GetHistorySize(), 2);

  const auto expect = [&](int lines) {
    SCOPED_TRACE(lines);
    const CTextPos from(lines, 0, 0);
    const CTextPos to(2 + lines, 0, 1);
    EXPECT_TRUE(editor.GetCaret().pos == CTextPos(1 + lines, 0, 1));
    EXPECT_TRUE(editor.GetCaret().home == CTextPos(1 + lines, 0, 1));
    EXPECT_TRUE(editor.Selection().anchor == from && editor.Selection().caret == to);
    for (const CTextRange& kept : {editor.LineRanges().Items()[0], editor.FoundRanges().Items()[0],
                                   editor.UndoHistory().Items()[0].range}) {
      EXPECT_TRUE(kept.from == from && kept.to == to);
    }
    ASSERT_EQ(editor.LineMarkers().Items().size(), 2u);
    EXPECT_TRUE(editor.LineMarkers().Items()[0].pos == from);
  };
  editor.InsertHeaderText(nullptr, 3);
  editor.InsertHeaderText("x", 0);
  expect(0);
  editor.InsertHeaderText("h\r\ni\r\n", 6);
  EXPECT_EQ(Shown(editor), "[h][i][a][b][c]");
  EXPECT_EQ(editor.GetDocumentSize(), 13);
  expect(2);
  editor.InsertHeaderText("other", 5);
  EXPECT_EQ(editor.GetHeaderLineCount(), 2);
  EXPECT_EQ(Document(editor, 1), "h\r\ni\r\na\r\nb\r\nc");
  EXPECT_EQ(Document(editor, 0), "a\r\nb\r\nc");
  editor.RemoveHeaderText();
  EXPECT_EQ(Shown(editor), "[a][b][c]");
  expect(0);

  // Places in the header lines go to the start of what takes their place.
  editor.InsertHeaderText("h\ni", 3);
  editor.LineMarkers().Add(CTextPos(1, 0, 1), 1);
  editor.Selection().anchor = CTextPos(1, 0, 1);
  editor.RemoveHeaderText();
  EXPECT_TRUE(editor.Selection().anchor == CTextPos(0, 0, 0));
  EXPECT_EQ(editor.LineMarkers().Items().size(), 2u);

  Set(editor, "new");
  EXPECT_TRUE(editor.GetCaret().pos == CTextPos() && editor.Selection().IsEmpty());
  EXPECT_EQ(editor.LineMarkers().Items().size() + editor.UndoHistory().Items().size() +
                static_cast<std::size_t>(editor.LineMarkers().GetHistorySize()),
            0u);
}

// Operations in random order, against a list of strings; texts of links, quote marks, line ends and
// halves of characters, which also mean something when the code type changes.
TEST(CEditorWnd, IsTheModelUnderRandomOperations) {
  static constexpr std::string_view kPieces[] = {"a",        "word ",
                                                 "> ",       ">>",
                                                 "\x81\x40", "\x82\xa0\x81\x42",
                                                 "\x81",     "\x81\x81\x81",
                                                 "\xa0",     "\n",
                                                 "\r\n",     "\r",
                                                 "\t",       "http://a/b ",
                                                 "http:",    "://",
                                                 "c@d.e",    "@",
                                                 "<mailto:", "?",
                                                 "\\\\s\\t", "\\",
                                                 "(",        ")",
                                                 ".",        "C:",
                                                 "\x83\x5c", "|",
                                                 " ",        {"\0", 1},
                                                 {"a\0", 2}, {"\n\0", 2},
                                                 {">\0", 2}};
  std::mt19937 random(6);
  for (int round = 0; round<160; round += kSampleStep> 1 ? 5 : 1) {
    documentmodel::Driver driver(round % 2 != 0);
    std::string log;
    for (int step = 0; step < 25; ++step) {
      std::string text;
      for (auto i = random() % (random() % 3 != 0 ? 4 : 30); i > 0; --i) {
        const std::string_view piece = kPieces[random() % std::size(kPieces)];
        text += driver.model.IsWide() && random() % 9 != 0
                    ? TextIn(CT_UNICODE, testing::Utf8Of(CT_SJIS, piece))
                    : std::string(piece);
      }
      const bool anew = step == 0 || random() % 40 == 0;
      const bool appends = random() % 2 != 0;
      const unsigned op = anew ? 0 : 1 + static_cast<unsigned>(random() % (appends ? 3 : 9));
      driver.Do(op, text, static_cast<int>(random() % 1000));
      log += std::to_string(op) + ' ';
      ASSERT_EQ(documentmodel::Differs(driver.editor, driver.model), "") << round << ": " << log;
    }
  }
}

// Operations that random ones seldom come to.
TEST(CEditorWnd, IsTheModelUnderTheseOperations) {
  struct Step {
    unsigned op;
    std::string text;
    int number = 1;
  };
  struct Case {
    const char* what;
    std::vector<Step> steps;
  };
  const std::string longLine(4200, '.');
  const Case cases[] = {
      {"a line that was taken to fit unseen becomes a quoted one that is not turned",
       {{6, "", 68}, {8, ""}, {0, "ppppppp", 0}, {1, ">"}}},
      {"lines that a header without a document left",
       {{4, longLine}, {1, "b"}, {5, ""}, {4, "http://b " + longLine}, {1, "c"}}},
      {"a header line that becomes the last one, and narrower",
       {{6, "", 85}, {4, "ab def."}, {1, "."}}},
      {"half a character on the quote list becomes a whole one",
       {{9, "", 12}, {0, "\x81", 0}, {1, "\x40"}, {1, "\x81"}, {1, "x"}}},
  };
  for (const auto& c : cases) {
    documentmodel::Driver driver(true);
    for (const Step& step : c.steps) {
      driver.Do(step.op, step.text, step.number);
      EXPECT_EQ(documentmodel::Differs(driver.editor, driver.model), "") << c.what << step.op;
    }
  }
}

// A long last line grows, by single bytes and by many: quote prefix, links and layout go on where
// they were.
TEST(CEditorWnd, ALongLineGrows) {
  static constexpr std::string_view kTails[] = {
      "/c",    "d@",   "e.f",   "\x82",       "\xa0", " http:", "//g", "abcd.efgh.ijkl.mnop.qrst",
      "@h.jp", " ",    ").",    "\\\\s",      "\\t",  "word",   ">",   "\t",
      "a\x81", "\x81", "\x81@", "http://\x81"};
  std::string prose;
  for (int i = 0; i < 300; ++i) prose += "http://a/b \x82\xa0\x82\xa2\x81\x42word. ";
  std::mt19937 random(7);
  for (const std::string_view start : {std::string_view(prose), std::string_view("> "),
                                       std::string_view("http://"), std::string_view("<mailto:")}) {
    // Turned at 1, 7, 11 and 35 columns, and at the width of a window, links kept whole; quoted
    // lines too; never turned.
    for (const int settings : {160, 46, 130, 154, 62, 6}) {
      documentmodel::Driver driver(random() % 2 != 0);
      driver.Do(6, {}, settings);
      driver.Do(8, {}, 12);
      driver.Do(0, start, 0);
      for (int step = 1; step <= (kSampleStep > 1 ? 18 : 60); ++step) {
        const std::string_view tail = kTails[random() % std::size(kTails)];
        for (auto i = 1 + random() % (step % 9 == 0 ? 400 : 6); i > 0; --i) driver.Do(1, tail, 1);
        if (step % 6 != 0) continue;
        ASSERT_EQ(documentmodel::Differs(driver.editor, driver.model), "")
            << start.substr(0, 20) << ' ' << settings << ' ' << step;
      }
    }
  }
}

TEST(LineStore, SumsFollowChangesInTheMiddle) {
  LineStore store;
  std::vector<std::size_t> lengths;
  std::mt19937 random(8);
  for (int step = 0; step < 3000; ++step) {
    if (step % 3 == 0) {
      store.Append();
      lengths.push_back(0);
    }
    const auto line = random() % lengths.size();
    const LineStore::Sums before = store.SumsOf(static_cast<int>(line));
    lengths[line] = random() % 5;
    store.Line(static_cast<int>(line)).SetText(std::string(lengths[line], 'x'));
    store.Changed(static_cast<int>(line), before);
    if (step % 50 != 0) continue;
    long long sum = 0;
    for (std::size_t i = 0; i < lengths.size(); sum += static_cast<long long>(lengths[i++])) {
      ASSERT_EQ(store.BytesBefore(static_cast<int>(i)), sum) << step;
      ASSERT_EQ(store.PhysicalLinesBefore(static_cast<int>(i)), static_cast<long long>(i));
    }
  }
}

// The sums over many lines follow every operation.
TEST(CEditorWnd, ManyLinesHaveTheirSums) {
  documentmodel::Driver driver;
  driver.Do(6, {}, 10);
  driver.Do(0, {}, 0);
  std::string text;
  for (int i = 0; i < 130; ++i) text += std::string(static_cast<std::size_t>(i % 17), 'x') + '\n';
  for (const unsigned op : {1u, 1u, 4u, 1u, 5u, 1u, 6u, 1u}) {
    driver.Do(op, text, 1 + static_cast<int>(op));
    ASSERT_EQ(documentmodel::Differs(driver.editor, driver.model), "") << op;
  }
}

}  // namespace lumr
