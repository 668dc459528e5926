// A window whose font has characters of many widths, and some of none.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "lumrmisc/platform/window.h"

namespace lumr::testing {

inline int FontWidth(const std::string& character) {
  unsigned sum = 0;
  for (const char c : character) sum += static_cast<unsigned char>(c);
  return character == "i" ? 3 : sum % 7 == 0 ? 0 : static_cast<int>(5 + sum % 11);
}

// Windows and their children show one state.
class FontWindow : public HeadlessWindow {
 public:
  struct State {
    int width = 640;
    int taken = 0;  // measuring contexts that were not given back
  };
  explicit FontWindow(State& state) : state_(state) {}

  std::unique_ptr<CWnd> CreateChild(std::uint32_t, std::uint32_t, const CRect&, unsigned) override {
    return std::make_unique<FontWindow>(state_);
  }
  CRect ClientArea() override { return {0, 0, state_.width, 100}; }
  CMeasuringContext* TakeMeasuringContext() override {
    ++state_.taken;
    return &context_;
  }
  void ReleaseMeasuringContext(CMeasuringContext* context) override {
    if (context == &context_) --state_.taken;
  }

 private:
  class Context : public CMeasuringContext {
   public:
    int TextWidth(std::string_view text, unsigned) override { return FontWidth(std::string(text)); }
  };

  State& state_;
  Context context_;
};

}  // namespace lumr::testing
