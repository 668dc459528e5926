// What the editor asks of its window, in order.
#include "lumrmisc/editor/editorwnd.h"

#include <gtest/gtest.h>

#include <functional>

#include "editor/text.h"

namespace lumr {
namespace {

// Writes down what it is told; what it is only asked is not.
class RecordingWindow : public HeadlessWindow {
 public:
  struct Record {
    std::string log;
    CRect area;
    bool focus = false;
    int contexts = 0;  // taken and not yet released
  };

  explicit RecordingWindow(Record& record) : record_(record) {}
  ~RecordingWindow() override { EXPECT_EQ(record_.contexts, 0); }

  std::unique_ptr<CWnd> CreateChild(std::uint32_t style, std::uint32_t exStyle, const CRect& rect,
                                    unsigned id) override {
    record_.log += "child " + std::to_string(style) + ' ' + std::to_string(exStyle) + ' ' +
                   std::to_string(id) + '\n';
    record_.area = {0, 0, rect.right - rect.left, rect.bottom - rect.top};
    return std::make_unique<RecordingWindow>(record_);
  }
  CRect ClientArea() override { return record_.area; }
  void SelectFont(const FontRequest& font) override {
    Log("font " + std::to_string(font.charSet) + ' ' + std::to_string(font.size));
  }
  CMeasuringContext* TakeMeasuringContext() override {
    ++record_.contexts;
    return HeadlessWindow::TakeMeasuringContext();
  }
  void ReleaseMeasuringContext(CMeasuringContext*) override { --record_.contexts; }
  void Invalidate(const CRect* area, bool erase) override {
    Log(std::string(area == nullptr ? "paint all" : "paint part") + (erase ? " erased" : ""));
  }
  void SetScrollBar(ScrollBar bar, const ScrollState& state) override {
    Log((bar == ScrollBar::kHorizontal ? "across " : "down ") + std::to_string(state.maximum) +
        ' ' + std::to_string(state.page) + ' ' + std::to_string(state.position));
  }
  bool HasFocus() override { return record_.focus; }
  void CreateCaret(int width, int height) override {
    Log("caret " + std::to_string(width) + 'x' + std::to_string(height));
  }
  void MoveCaret(CPoint to) override {
    Log("caret to " + std::to_string(to.x) + ' ' + std::to_string(to.y));
  }
  void ShowCaret() override { Log("caret shown"); }
  void HideCaret() override { Log("caret hidden"); }
  void DestroyCaret() override { Log("caret destroyed"); }
  void DetachInputMethod() override { Log("input method off"); }
  void AttachInputMethod() override { Log("input method on"); }
  void NotifyOwner(int code) override { Log("notified " + std::to_string(code)); }

 private:
  void Log(const std::string& what) { record_.log += what + '\n'; }

  Record& record_;
};

struct Step {
  const char* what;
  std::function<void(CEditorWnd&)> run;
  std::string_view log;
};

template <typename Change>
std::function<void(CEditorWnd&)> Metrics(int changes, Change change) {
  return [=](CEditorWnd& editor) {
    CEditorMetrics metrics = editor.GetEditorMetrics();
    change(metrics);
    EXPECT_EQ(editor.ChangeEditorMetrics(metrics), changes);
  };
}

}  // namespace

// 20 columns and 5 lines of 18 pixels, in the state that the steps before left.
TEST(CEditorWnd, AsksItsWindowInOrder) {
  RecordingWindow::Record record;
  RecordingWindow parent(record);
  CEditorWnd editor;
  CEditorMetrics metrics;
  metrics.AutoTurn = kTurnAtPixels;
  EXPECT_EQ(editor.CreateEditorWnd(1, 2, {10, 10, 170, 100}, &parent, 3, metrics, CEditorColor()),
            1);
  EXPECT_EQ(record.log, "child 1 2 3\nfont 128 9\n");
  const auto focus = [&](bool on) { return [&record, on](CEditorWnd&) { record.focus = on; }; };
  const Step steps[] = {
      {"SetDocument", [](CEditorWnd& e) { e.SetDocument(CT_UTF8, "a\0\r\0b\0", 6); },
       "caret to 0 0\nfont 1 9\nacross 1 20 0\ndown 2 5 0\npaint all\nnotified 2\n"},
      {"SetDocument", [](CEditorWnd& e) { e.SetDocument(CT_SJIS, "abc\n\n\n", 6); },
       "caret to 0 0\nfont 128 9\nacross 3 20 0\ndown 4 5 0\npaint all\nnotified 2\n"},
      {"AppendText", [](CEditorWnd& e) { testing::Append(e, "0123456789 123456789 123"); },
       "across 21 20 0\ndown 5 5 0\npaint all\nnotified 2\n"},
      {"same colours",
       [](CEditorWnd& e) { EXPECT_EQ(e.ChangeEditorColors(e.GetEditorColors()), 0); }, ""},
      {"colours",
       [](CEditorWnd& e) {
         CEditorColor colors;
         colors.SetMonochromeColor();
         EXPECT_EQ(e.ChangeEditorColors(colors), 1);
       },
       "paint all erased\n"},
      {"same metrics", Metrics(0, [](CEditorMetrics& m) { m.EditableQuoteMark = "|"; }), ""},
      {"metrics", Metrics(1, [](CEditorMetrics& m) { m.LineSpace = 14; }),
       "font 128 9\nacross 21 20 0\ndown 5 3 0\npaint all erased\n"},
      {"caret in the text",
       [](CEditorWnd& e) {
         e.SetCaretPos({3, 1, 2});
       },
       "caret to 16 120\n"},
      {"caret off without focus", Metrics(1, [](CEditorMetrics& m) { m.ShowCaret = 0; }),
       "font 128 9\nacross 21 20 0\ndown 5 3 0\npaint all erased\ncaret to 16 120\n"},
      {"focus", focus(true), ""},
      {"caret on", Metrics(1, [](CEditorMetrics& m) { m.ShowCaret = 1; }),
       "font 128 9\nacross 21 20 0\ndown 5 3 0\npaint all erased\ncaret to 16 120\n"
       "caret 2x30\ncaret shown\n"},
      {"caret off", Metrics(1, [](CEditorMetrics& m) { m.ShowCaret = 0; }),
       "font 128 9\nacross 21 20 0\ndown 5 3 0\npaint all erased\ncaret to 16 120\n"
       "caret hidden\ncaret destroyed\n"},
      {"not read-only before", [](CEditorWnd& e) { e.SetReadOnly(0); }, ""},
      {"read-only", [](CEditorWnd& e) { e.SetReadOnly(7); },
       "input method off\ncaret hidden\ncaret destroyed\n"},
      {"read-only already", [](CEditorWnd& e) { e.SetReadOnly(1); }, ""},
      {"overwriting refused",
       [](CEditorWnd& e) {
         e.SetOverwrite(1);
         EXPECT_EQ(e.IsOverwrite(), 0);
       },
       ""},
      {"writable, from the top line",
       [](CEditorWnd& e) {
         e.SetTopLine(3, 1);
         e.SetReadOnly(0);
         EXPECT_TRUE(e.GetCaret().pos == CTextPos(3, 1, 0));
       },
       "input method on\ncaret 2x30\ncaret to 0 0\ncaret shown\n"},
      {"overwriting", [](CEditorWnd& e) { e.SetOverwrite(1); },
       "caret hidden\ncaret destroyed\ncaret 8x30\ncaret to 0 0\ncaret shown\n"},
      {"ruler", Metrics(1, [](CEditorMetrics& m) { m.ShowColRuler = 1; }),
       "font 128 9\nacross 21 20 0\ndown 5 3 4\npaint all erased\n"},
      {"read-only with ruler", [](CEditorWnd& e) { e.SetReadOnly(1); },
       "input method off\ncaret hidden\ncaret destroyed\npaint part\n"},
      {"focus lost", focus(false), ""},
      {"writable without focus", [](CEditorWnd& e) { e.SetReadOnly(0); }, "input method on\n"},
      {"narrow header", [](CEditorWnd& e) { e.InsertHeaderText("x\ny", 3); },
       "down 7 3 3\npaint all\ncaret to 0 120\nnotified 2\n"},
      {"header again", [](CEditorWnd& e) { e.InsertHeaderText("z", 1); }, ""},
      {"header removed", [](CEditorWnd& e) { e.RemoveHeaderText(); },
       "across 21 20 0\ndown 5 3 3\npaint all\ncaret to 0 60\nnotified 2\n"},
      {"no header", [](CEditorWnd& e) { e.RemoveHeaderText(); }, ""},
      {"header wider than any line",
       [](CEditorWnd& e) { e.InsertHeaderText("01234567890123456789\x81\x42", 22); },
       "across 22 20 0\ndown 6 3 3\npaint all\ncaret to 0 90\nnotified 2\n"},
      {"wide header removed", [](CEditorWnd& e) { e.RemoveHeaderText(); },
       "across 21 20 0\ndown 5 3 3\npaint all\ncaret to 0 60\nnotified 2\n"},
      {"wide header", [](CEditorWnd& e) { e.InsertHeaderText("01234567890123456789.", 21); },
       "down 6 3 3\npaint all\ncaret to 0 90\nnotified 2\n"},
      {"code type", [](CEditorWnd& e) { e.SetCodeType(CT_BIG5); },
       "font 136 9\nacross 21 20 0\ndown 6 3 3\npaint all\n"},
      {"no other width", [](CEditorWnd& e) { EXPECT_EQ(e.UpdateAutoTurn(), 1); }, ""},
      {"no moves", [](CEditorWnd& e) { e.InsertHeaderLines(0); }, ""},
  };
  for (const Step& step : steps) {
    record.log.clear();
    step.run(editor);
    EXPECT_EQ(record.log, step.log) << step.what;
    EXPECT_EQ(record.contexts, 1) << step.what;
  }
}

TEST(CEditorWnd, TurnsAtTheWidthOfItsWindow) {
  RecordingWindow::Record record;
  RecordingWindow parent(record);
  CEditorWnd editor;
  CEditorMetrics metrics;
  metrics.AutoTurn = kTurnAtPixels;
  editor.CreateEditorWnd(0, 0, {0, 0, 80, 80}, &parent, 0, metrics, CEditorColor());
  editor.SetDocument(CT_SJIS, "0123456789abc\nxy", 16);
  EXPECT_EQ(editor.GetLineCountP(0), 2);
  EXPECT_EQ(editor.GetTurnLimit(), 80);
  record.area.right = 160;
  EXPECT_EQ(editor.UpdateAutoTurn(), 1);
  EXPECT_EQ(editor.GetLineCountP(0), 1);
  EXPECT_EQ(editor.UpdateAutoTurn(), 0);
  record.area.right = 40;
  EXPECT_EQ(editor.UpdateAutoTurn(), 1);
  EXPECT_EQ(editor.GetLineCountP(0), 3);
  EXPECT_EQ(editor.GetSerialLineP(1, 0), 3);
  record.area.right = 0;  // iconic: nothing is measured
  EXPECT_EQ(editor.UpdateAutoTurn(), 1);
  EXPECT_EQ(editor.GetLineCountP(0), 1);
  record.area.right = 40;
  EXPECT_EQ(editor.UpdateAutoTurn(), 1);
  EXPECT_EQ(editor.GetSerialLineP(1, 0), 3);
}

TEST(CEditorWnd, StaysReadOnlyInANewWindow) {
  RecordingWindow::Record record;
  RecordingWindow parent(record);
  CEditorWnd editor;
  editor.SetReadOnly(1);
  editor.CreateEditorWnd(1, 2, {0, 0, 80, 80}, &parent, 3, CEditorMetrics(), CEditorColor());
  EXPECT_EQ(record.log, "child 1 2 3\ninput method off\nfont 128 9\n");
}

TEST(CEditorWnd, RunsHeadless) {
  class Barren : public HeadlessWindow {
    std::unique_ptr<CWnd> CreateChild(std::uint32_t, std::uint32_t, const CRect&,
                                      unsigned) override {
      return nullptr;
    }
  };
  Barren barren;
  CEditorWnd editor;
  editor.SetDocument(CT_SJIS, "0123456789abc", 13);
  CEditorMetrics metrics;
  metrics.AutoTurn = kTurnAtPixels;
  EXPECT_EQ(editor.CreateEditorWnd(0, 0, {0, 0, 80, 80}, nullptr, 0, metrics, CEditorColor()), 1);
  EXPECT_EQ(editor.GetLineCountP(0), 2);
  EXPECT_EQ(editor.CreateEditorWnd(0, 0, {0, 0, 40, 80}, &barren, 0, metrics, CEditorColor()), 0);
  EXPECT_EQ(editor.GetWindow(), nullptr);
  EXPECT_EQ(editor.GetLineCountP(0), 3);
}

}  // namespace lumr
