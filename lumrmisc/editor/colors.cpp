#include "lumrmisc/editor/colors.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace lumr {
namespace {

constexpr COLORREF kBlack = 0x000000;
constexpr COLORREF kWhite = 0xFFFFFF;
constexpr COLORREF kGrey = 0x808080;

constexpr COLORREF kSymbol = 0x808000;
constexpr COLORREF kUrl = 0xFF0000;
constexpr COLORREF kKatakana = 0x0000FF;
constexpr COLORREF kMachineDepend = 0x0000FF;
constexpr COLORREF kHeaderBack = 0xD0FFD0;
constexpr COLORREF kFindedText = 0xFFFFFF;
constexpr COLORREF kFindedBack = 0xFF00FF;
constexpr COLORREF kQuotedText[CEditorColor::kQuoteDepths] = {0x008000, 0x004080, 0x804000,
                                                              0x800080};
constexpr COLORREF kLineMarkerBack[CEditorColor::kLineMarkerKinds] = {0x00FFFF, 0xFF00FF, 0xFFFF00,
                                                                      0x4040FF, 0x40FF40, 0xFF4040};

COLORREF OrDefault(COLORREF color, COLORREF standard) {
  return color == CEditorColor::kDefaultColor ? standard : color;
}

COLORREF OrSystem(COLORREF color, SystemColor system, CWnd* window) {
  if (color != CEditorColor::kDefaultColor) return color;
  return window != nullptr ? window->ColorOf(system) : HeadlessWindow().ColorOf(system);
}

bool IsIndex(int index, int count) {
  return index >= 0 && index < count;
}

// Loads one colour; 0 when it is missing, and color is then its default.
int Load(const CSettingData* data, const char* section, const CStringA& key, COLORREF standard,
         COLORREF& color) {
  color = standard;
  return data != nullptr ? data->GetHexValue(section, key, color) : 0;
}

CStringA Indexed(const char* key, int index) {
  return key + std::to_string(index);
}

}  // namespace

// The keys of single colours, in the order of the file: those before the quote colours, and those
// behind.
struct CEditorColor::Rows {
  struct Row {
    const char* key;
    COLORREF CEditorColor::*field;
    COLORREF standard;
    COLORREF monochrome;
  };
  static constexpr Row kBasic[] = {
      {"Text", &CEditorColor::text_, kDefaultColor, kBlack},
      {"Back", &CEditorColor::back_, kDefaultColor, kWhite},
      {"SelText", &CEditorColor::selText_, kDefaultColor, kWhite},
      {"SelBack", &CEditorColor::selBack_, kDefaultColor, kBlack},
  };
  static constexpr Row kOther[] = {
      {"Symbol", &CEditorColor::symbol_, kSymbol, kBlack},
      {"URL", &CEditorColor::url_, kUrl, kBlack},
      {"Katakana", &CEditorColor::katakana_, kKatakana, kBlack},
      {"MachineDepend", &CEditorColor::machineDepend_, kMachineDepend, kBlack},
      {"HeaderBack", &CEditorColor::headerBack_, kHeaderBack, kWhite},
      {"FindedText", &CEditorColor::findedText_, kFindedText, kWhite},
      {"FindedBack", &CEditorColor::findedBack_, kFindedBack, kBlack},
  };

  template <typename Visit>
  static void ForEach(Visit visit) {
    for (const Row& row : kBasic) visit(row);
    for (const Row& row : kOther) visit(row);
  }
};

void CEditorColor::ResetColor() {
  Rows::ForEach([this](const Rows::Row& row) { this->*row.field = row.standard; });
  std::copy(std::begin(kQuotedText), std::end(kQuotedText), quotedText_);
  std::fill(std::begin(lineMarkerText_), std::end(lineMarkerText_), kBlack);
  std::copy(std::begin(kLineMarkerBack), std::end(kLineMarkerBack), lineMarkerBack_);
}

void CEditorColor::SetMonochromeColor() {
  Rows::ForEach([this](const Rows::Row& row) { this->*row.field = row.monochrome; });
  std::fill(std::begin(quotedText_), std::end(quotedText_), kBlack);
  std::fill(std::begin(lineMarkerText_), std::end(lineMarkerText_), kWhite);
  std::fill(std::begin(lineMarkerBack_), std::end(lineMarkerBack_), kBlack);
}

COLORREF CEditorColor::GetTextColor(CWnd* window) const {
  return OrSystem(text_, SystemColor::kWindowText, window);
}
COLORREF CEditorColor::GetBackColor(CWnd* window) const {
  return OrSystem(back_, SystemColor::kWindow, window);
}
COLORREF CEditorColor::GetSelTextColor(CWnd* window) const {
  return OrSystem(selText_, SystemColor::kHighlightText, window);
}
COLORREF CEditorColor::GetSelBackColor(CWnd* window) const {
  return OrSystem(selBack_, SystemColor::kHighlight, window);
}

COLORREF CEditorColor::GetQuotedTextColor(int depth) const {
  return IsIndex(depth, kQuoteDepths) ? quotedText_[depth] : kGrey;
}
COLORREF CEditorColor::GetLineMarkerTextColor(int kind) const {
  return IsIndex(kind, kLineMarkerKinds) ? lineMarkerText_[kind] : kBlack;
}
COLORREF CEditorColor::GetLineMarkerBackColor(int kind) const {
  return IsIndex(kind, kLineMarkerKinds) ? lineMarkerBack_[kind] : kGrey;
}

void CEditorColor::SetSymbolColor(COLORREF color) {
  symbol_ = OrDefault(color, kSymbol);
}
void CEditorColor::SetUrlColor(COLORREF color) {
  url_ = OrDefault(color, kUrl);
}
void CEditorColor::SetKatakanaColor(COLORREF color) {
  katakana_ = OrDefault(color, kKatakana);
}
void CEditorColor::SetMacnDependColor(COLORREF color) {
  machineDepend_ = OrDefault(color, kMachineDepend);
}
void CEditorColor::SetHeaderBackColor(COLORREF color) {
  headerBack_ = OrDefault(color, kHeaderBack);
}
void CEditorColor::SetFindedTextColor(COLORREF color) {
  findedText_ = OrDefault(color, kFindedText);
}
void CEditorColor::SetFindedBackColor(COLORREF color) {
  findedBack_ = OrDefault(color, kFindedBack);
}
void CEditorColor::SetQuotedTextColor(int depth, COLORREF color) {
  if (!IsIndex(depth, kQuoteDepths)) return;
  quotedText_[depth] = OrDefault(color, kQuotedText[depth]);
}
void CEditorColor::SetLineMarkerTextColor(int kind, COLORREF color) {
  if (!IsIndex(kind, kLineMarkerKinds)) return;
  lineMarkerText_[kind] = OrDefault(color, kBlack);
}
void CEditorColor::SetLineMarkerBackColor(int kind, COLORREF color) {
  if (!IsIndex(kind, kLineMarkerKinds)) return;
  lineMarkerBack_[kind] = OrDefault(color, kLineMarkerBack[kind]);
}

void CEditorColor::GetEditorColor(const CSettingData* data, const char* section) {
  Rows::ForEach(
      [&](const Rows::Row& row) { Load(data, section, row.key, row.standard, this->*row.field); });
  for (int depth = 0; depth < kQuoteDepths; ++depth) {
    COLORREF& color = quotedText_[depth];
    if (Load(data, section, Indexed("QuotedText", depth), kQuotedText[depth], color)) continue;
    // Older files know one depth.
    if (depth == 0) Load(data, section, "QuoteText", kQuotedText[0], color);
  }
  for (int kind = 0; kind < kLineMarkerKinds; ++kind) {
    Load(data, section, Indexed("LineMarkerText", kind), kBlack, lineMarkerText_[kind]);
    Load(data, section, Indexed("LineMarkerBack", kind), kLineMarkerBack[kind],
         lineMarkerBack_[kind]);
  }
}

void CEditorColor::SetEditorColor(CSettingData* data, const char* section) const {
  if (data == nullptr) return;
  const auto save = [&](const CStringA& key, COLORREF color) {
    data->SetHexValue(section, key, color);
  };
  for (const Rows::Row& row : Rows::kBasic) save(row.key, this->*row.field);
  for (int depth = 0; depth < kQuoteDepths; ++depth) {
    save(Indexed("QuotedText", depth), quotedText_[depth]);
  }
  for (const Rows::Row& row : Rows::kOther) save(row.key, this->*row.field);
  for (int kind = 0; kind < kLineMarkerKinds; ++kind) {
    save(Indexed("LineMarkerText", kind), lineMarkerText_[kind]);
    save(Indexed("LineMarkerBack", kind), lineMarkerBack_[kind]);
  }
}

}  // namespace lumr
