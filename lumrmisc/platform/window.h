// What the library asks of a window: the editor of the one that it draws in, dialogs of the one
// that they belong to. The host derives from CWnd, over the system's windows or whatever it shows
// text on. Every CWnd* of the library may be null: the editor then runs headless (HeadlessWindow)
// and dialogs go to the handler below.
//
// Pixels are counted from the upper left corner of the client area. Colours are 0x00BBGGRR. The
// library calls a window on the thread that called the library and never keeps what it is handed
// longer than the window lives.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "lumrmisc/platform/types.h"

namespace lumr {

// The colours of the user's desktop that texts are painted with.
enum class SystemColor { kWindowText, kWindow, kHighlightText, kHighlight };

enum class ScrollBar { kHorizontal, kVertical };

// What a scroll bar shows: position of 0 to maximum, a page of which is in sight. The unit is the
// caller's (lines, or average character widths).
struct ScrollState {
  int maximum = 0;
  int page = 0;
  int position = 0;
  bool operator==(const ScrollState&) const = default;
};

// A font that texts are measured and drawn in.
struct FontRequest {
  CStringA face;    // in the current code page
  int charSet = 0;  // the font character set, as code types name it
  int size = 0;     // points
  bool operator==(const FontRequest&) const = default;
};

// Notification codes to a window's owner.
inline constexpr int kNotifyDocumentChanged = 2;

// The icon of a message box, which some hosts also make a sound of.
enum class MessageBoxIcon { kNone, kInformation, kWarning, kError, kQuestion };

// A question to the user. Texts are in the current code page; "&" stands before the letter of a
// button that the keyboard presses it with.
struct MessageBoxRequest {
  CStringA caption;  // empty: the program's own
  CStringA text;
  CStringArray buttons;   // from left to right; empty: one that says OK
  int defaultButton = 0;  // index of the one that Enter presses
  int cancelButton = -1;  // index of the one that closing the box stands for; -1: none
  MessageBoxIcon icon = MessageBoxIcon::kNone;
};

// The answer of a window, or of nobody, that has no dialogs.
inline constexpr int kNoDialogs = -2;

// Measures text in a window's font, from the moment that it is taken until it is released.
class CMeasuringContext {
 public:
  virtual ~CMeasuringContext() = default;

  // The width in pixels of a run of text without tabs or line ends. The bytes are in codePage;
  // 1200 is UTF-16LE, whole units at any address.
  virtual int TextWidth(std::string_view text, unsigned codePage) = 0;
};

class CWnd {
 public:
  virtual ~CWnd() = default;

  // Makes a child window with its client area at rect of this one's. Style, extended style and
  // id are the host's own and come as the library's caller gave them. Null when it cannot.
  virtual std::unique_ptr<CWnd> CreateChild(std::uint32_t style, std::uint32_t extendedStyle,
                                            const CRect& rect, unsigned id) = 0;

  // ---- Measures

  virtual CRect ClientArea() = 0;                        // left and top are 0
  virtual void SelectFont(const FontRequest& font) = 0;  // for measuring from now on
  virtual int LineHeight() = 0;                          // of the font, in pixels
  virtual int AverageCharWidth() = 0;                    // of the font, in pixels
  // A measuring context is released by the window that it was taken from, in any order, before
  // the window dies. Taking one never gives null.
  virtual CMeasuringContext* TakeMeasuringContext() = 0;
  virtual void ReleaseMeasuringContext(CMeasuringContext* context) = 0;

  // ---- Look

  virtual std::uint32_t ColorOf(SystemColor color) = 0;
  // Has the area painted again soon, its background too with erase; null is the whole client area.
  virtual void Invalidate(const CRect* area, bool erase) = 0;
  virtual void SetScrollBar(ScrollBar bar, const ScrollState& state) = 0;

  // ---- Keyboard

  virtual bool HasFocus() = 0;
  virtual void TakeFocus() = 0;

  // The caret is one of a kind and belongs to the window with the focus: created when that
  // gets the focus, hidden at first, and destroyed when it loses it. Hiding adds up: what was
  // hidden twice is in sight after being shown twice.
  virtual void CreateCaret(int width, int height) = 0;
  virtual void MoveCaret(CPoint upperLeft) = 0;
  virtual void ShowCaret() = 0;
  virtual void HideCaret() = 0;
  virtual void DestroyCaret() = 0;

  // Detaching switches the window's input method off; the window keeps it for attaching it again.
  // Detaching what is detached, and attaching what is attached, does nothing.
  virtual void DetachInputMethod() = 0;
  virtual void AttachInputMethod() = 0;

  // ---- Others

  // Tells the window's owner that something happened: kNotifyDocumentChanged or a code of the host.
  virtual void NotifyOwner(int code) = 0;

  // Asks the user, and waits. Gives the index of the button, cancelButton when the box was closed,
  // and kNoDialogs when this window has none.
  virtual int Ask(const MessageBoxRequest& request) = 0;
};

// A window without a screen: every column is 8 pixels wide and every line 16 high. A full-width
// character takes two columns, any other one. It has no focus, keeps nothing of what it is told,
// and its dialogs are never answered. Hosts that only measure, and tests that only record, derive
// from it.
class HeadlessWindow : public CWnd {
 public:
  static constexpr int kColumnWidth = 8;
  static constexpr int kLineHeight = 16;

  explicit HeadlessWindow(int columns = 80, int lines = 25);

  std::unique_ptr<CWnd> CreateChild(std::uint32_t style, std::uint32_t extendedStyle,
                                    const CRect& rect, unsigned id) override;
  CRect ClientArea() override { return area_; }
  void SelectFont(const FontRequest&) override {}
  int LineHeight() override { return kLineHeight; }
  int AverageCharWidth() override { return kColumnWidth; }
  CMeasuringContext* TakeMeasuringContext() override;
  void ReleaseMeasuringContext(CMeasuringContext*) override {}
  std::uint32_t ColorOf(SystemColor color) override;
  void Invalidate(const CRect*, bool) override {}
  void SetScrollBar(ScrollBar, const ScrollState&) override {}
  bool HasFocus() override { return false; }
  void TakeFocus() override {}
  void CreateCaret(int, int) override {}
  void MoveCaret(CPoint) override {}
  void ShowCaret() override {}
  void HideCaret() override {}
  void DestroyCaret() override {}
  void DetachInputMethod() override {}
  void AttachInputMethod() override {}
  void NotifyOwner(int) override {}
  int Ask(const MessageBoxRequest&) override { return kNoDialogs; }

 private:
  CRect area_;
};

// The columns that a text takes, by the headless rule; code page as in TextWidth. In a code page
// without two-byte characters every byte is a column.
int HeadlessColumns(std::string_view text, unsigned codePage);

// Answers dialogs that no window takes; like CWnd::Ask. Null, as at the start: nobody does. Set
// once at start.
using MessageBoxHandler = int (*)(CWnd* parent, const MessageBoxRequest& request);
void SetMessageBoxHandler(MessageBoxHandler handler);

// Asks the parent, and when it is null or has no dialogs the handler. Gives kNoDialogs when
// there is none either.
int AskUser(CWnd* parent, const MessageBoxRequest& request);

}  // namespace lumr
