// The colours of the editor: a plain record that the application fills from its settings.
#pragma once

#include <cstdint>

#include "lumrmisc/platform/window.h"
#include "lumrmisc/settings/settingdata.h"

namespace lumr {

// A colour as 0x00BBGGRR.
using COLORREF = std::uint32_t;

class CEditorColor {
 public:
  // In the four basic colours: the system's. Given to another setter: that field's default.
  static constexpr COLORREF kDefaultColor = 0xFFFFFFFF;
  static constexpr int kQuoteDepths = 4;
  static constexpr int kLineMarkerKinds = 6;

  CEditorColor() { ResetColor(); }
  bool operator==(const CEditorColor&) const = default;

  void ResetColor();          // the defaults
  void SetMonochromeColor();  // black on white; what is marked is white on black

  // ---- Getters. The system's colours are those of the window; null: of a headless one.

  COLORREF GetTextColor(CWnd* window = nullptr) const;
  COLORREF GetBackColor(CWnd* window = nullptr) const;
  COLORREF GetSelTextColor(CWnd* window = nullptr) const;
  COLORREF GetSelBackColor(CWnd* window = nullptr) const;
  // As stored, kDefaultColor included.
  COLORREF GetTextColorOrg() const { return text_; }
  COLORREF GetBackColorOrg() const { return back_; }
  COLORREF GetSelTextColorOrg() const { return selText_; }
  COLORREF GetSelBackColorOrg() const { return selBack_; }

  COLORREF GetSymbolColor() const { return symbol_; }
  COLORREF GetUrlColor() const { return url_; }
  COLORREF GetKatakanaColor() const { return katakana_; }
  COLORREF GetMacnDependColor() const { return machineDepend_; }
  COLORREF GetHeaderBackColor() const { return headerBack_; }
  COLORREF GetFindedTextColor() const { return findedText_; }
  COLORREF GetFindedBackColor() const { return findedBack_; }

  // Depth 0 to 3; grey for any other one.
  COLORREF GetQuotedTextColor(int depth) const;
  // Kind 0 to 5; for any other one black text on grey.
  COLORREF GetLineMarkerTextColor(int kind) const;
  COLORREF GetLineMarkerBackColor(int kind) const;
  static constexpr int GetLineMarkerKindCt() { return kLineMarkerKinds; }

  // ---- Setters. An index out of range changes nothing.

  void SetTextColor(COLORREF color) { text_ = color; }
  void SetBackColor(COLORREF color) { back_ = color; }
  void SetSelTextColor(COLORREF color) { selText_ = color; }
  void SetSelBackColor(COLORREF color) { selBack_ = color; }
  void SetSymbolColor(COLORREF color);
  void SetUrlColor(COLORREF color);
  void SetKatakanaColor(COLORREF color);
  void SetMacnDependColor(COLORREF color);
  void SetHeaderBackColor(COLORREF color);
  void SetFindedTextColor(COLORREF color);
  void SetFindedBackColor(COLORREF color);
  void SetQuotedTextColor(int depth, COLORREF color);
  void SetLineMarkerTextColor(int kind, COLORREF color);
  void SetLineMarkerBackColor(int kind, COLORREF color);

  // ---- Settings. What is missing takes its default; "QuoteText" of older files stands for a
  // missing "QuotedText0", and is never written. Null data: an empty section, or nothing.

  void GetEditorColor(const CSettingData* data, const char* section);
  void SetEditorColor(CSettingData* data, const char* section) const;

 private:
  struct Rows;

  COLORREF text_;
  COLORREF back_;
  COLORREF selText_;
  COLORREF selBack_;
  COLORREF quotedText_[kQuoteDepths];
  COLORREF symbol_;
  COLORREF url_;
  COLORREF katakana_;
  COLORREF machineDepend_;
  COLORREF headerBack_;
  COLORREF findedText_;
  COLORREF findedBack_;
  COLORREF lineMarkerText_[kLineMarkerKinds];
  COLORREF lineMarkerBack_[kLineMarkerKinds];
};

}  // namespace lumr
