#include "lumrmisc/platform/window.h"

#include <atomic>

#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

constexpr unsigned kUtf16 = 1200;

class HeadlessMeasure : public CMeasuringContext {
 public:
  int TextWidth(std::string_view text, unsigned codePage) override {
    return HeadlessColumns(text, codePage) * HeadlessWindow::kColumnWidth;
  }
};

std::atomic<MessageBoxHandler> messageBoxHandler{nullptr};

}  // namespace

int HeadlessColumns(std::string_view text, unsigned codePage) {
  // A two-byte character is as wide as its bytes are many.
  if (codePage != kUtf16) return static_cast<int>(text.size());
  int columns = 0;
  for (std::size_t pos = 0; pos + 1 < text.size(); pos += 2) {
    columns += IsUnitFullWidth(LoadUnit(text.data() + pos)) ? 2 : 1;
  }
  return columns;
}

HeadlessWindow::HeadlessWindow(int columns, int lines)
    : area_{0, 0, columns * kColumnWidth, lines * kLineHeight} {}

std::unique_ptr<CWnd> HeadlessWindow::CreateChild(std::uint32_t, std::uint32_t, const CRect& rect,
                                                  unsigned) {
  auto child = std::make_unique<HeadlessWindow>();
  child->area_ = {0, 0, rect.right - rect.left, rect.bottom - rect.top};
  return child;
}

CMeasuringContext* HeadlessWindow::TakeMeasuringContext() {
  static HeadlessMeasure measure;  // has no state
  return &measure;
}

std::uint32_t HeadlessWindow::ColorOf(SystemColor color) {
  // Black on white, and white on blue for what is selected.
  static constexpr std::uint32_t kColors[] = {0x000000, 0xFFFFFF, 0xFFFFFF, 0xD77800};
  return kColors[static_cast<int>(color)];
}

void SetMessageBoxHandler(MessageBoxHandler handler) {
  messageBoxHandler = handler;
}

int AskUser(CWnd* parent, const MessageBoxRequest& request) {
  const int answer = parent != nullptr ? parent->Ask(request) : kNoDialogs;
  if (answer != kNoDialogs) return answer;
  const MessageBoxHandler handler = messageBoxHandler;
  return handler != nullptr ? handler(parent, request) : kNoDialogs;
}

}  // namespace lumr
