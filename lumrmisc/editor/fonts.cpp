#include "lumrmisc/editor/fonts.h"

#include <algorithm>
#include <string>

#include "lumrmisc/buffer/buffer.h"

namespace lumr {
namespace {

constexpr const char* kFace = "FontFace";
constexpr const char* kCharSet = "FontCharSet";
constexpr const char* kSize = "FontSize";

CStringA Indexed(const char* key, std::size_t index) {
  return key + std::to_string(index);
}

auto FindCharSet(const CArray<CFontInfo>& fonts, int charSet) {
  return std::find_if(fonts.begin(), fonts.end(),
                      [charSet](const CFontInfo& font) { return font.charSet == charSet; });
}

}  // namespace

void CMultiFont::SetFontInfo(const CFontInfo& font) {
  const auto found = FindCharSet(fonts_, font.charSet);
  if (found == fonts_.end()) {
    fonts_.push_back(font);
  } else {
    fonts_[static_cast<std::size_t>(found - fonts_.begin())] = font;
  }
}

void CMultiFont::CopyFontInfoArray(const CMultiFont& other) {
  fonts_ = other.fonts_;
  selected_ = fonts_.front();
}

const CFontInfo& CMultiFont::SelectFont(int fontCharSet, CWnd* window) {
  const auto found = FindCharSet(fonts_, fontCharSet);
  selected_ = found == fonts_.end() ? fonts_.front() : *found;
  selected_.charSet = fontCharSet;
  if (window != nullptr) window->SelectFont({selected_.face, selected_.charSet, selected_.size});
  return selected_;
}

void CMultiFont::GetMultiFont(const CSettingData* data, const char* section) {
  CArray<CFontInfo> fonts;
  CFontInfo font;
  while (data != nullptr && data->GetValue(section, Indexed(kFace, fonts.size()), font.face) &&
         !font.face.empty()) {
    const CFontInfo standard;
    font.charSet = standard.charSet;
    font.size = standard.size;
    data->GetValue(section, Indexed(kCharSet, fonts.size()), font.charSet);
    data->GetValue(section, Indexed(kSize, fonts.size()), font.size);
    if (font.size < 1) font.size = standard.size;
    fonts.push_back(font);
  }
  if (fonts.empty()) fonts.emplace_back();
  fonts_ = std::move(fonts);
  selected_ = fonts_.front();
}

void CMultiFont::SetMultiFont(CSettingData* data, const char* section) const {
  if (data == nullptr) return;
  std::size_t index = 0;
  for (const CFontInfo& font : fonts_) {
    data->SetValue(section, Indexed(kFace, index), font.face);
    data->SetValue(section, Indexed(kCharSet, index), font.charSet);
    data->SetValue(section, Indexed(kSize, index), font.size);
    ++index;
  }
  // Fonts that were saved before, and are no more.
  for (; data->RemoveName(section, Indexed(kFace, index)); ++index) {
    data->RemoveName(section, Indexed(kCharSet, index));
    data->RemoveName(section, Indexed(kSize, index));
  }
}

}  // namespace lumr
