// The fonts that the editor shows text in, one for each font character set.
#pragma once

#include "lumrmisc/platform/types.h"
#include "lumrmisc/platform/window.h"
#include "lumrmisc/settings/settingdata.h"

namespace lumr {

// One font: face (in the ANSI code page), font character set (as CharSetCode2FontCharSet gives
// it) and size in points.
struct CFontInfo {
  CStringA face = "\x82\x6C\x82\x72 \x83\x53\x83\x56\x83\x62\x83\x4E";  // MS Gothic
  int charSet = 128;                                                    // Japanese
  int size = 9;

  bool operator==(const CFontInfo&) const = default;
};

// At least one font, and one that is selected.
class CMultiFont {
 public:
  CMultiFont() : fonts_(1) {}  // the default font alone

  const CArray<CFontInfo>& GetFontInfoArray() const { return fonts_; }
  // Sets the font of a font character set, in the place of the one that it had.
  void SetFontInfo(const CFontInfo& font);

  // Copies the fonts; the selection goes back to the first one.
  void CopyFontInfoArray(const CMultiFont& other);
  // 1 when both have the same fonts in the same order, else 0. The selection is not compared.
  int IsSameFontInfoArray(const CMultiFont& other) const { return fonts_ == other.fonts_; }

  // Selects the font of a font character set and gives it: the one that is set for it; else the
  // first one, for that character set. A window (may be null) is told to measure in it.
  const CFontInfo& SelectFont(int fontCharSet, CWnd* window);
  const CFontInfo& GetSelectedFont() const { return selected_; }

  // Loads from and saves to a section, under "FontFace0", "FontCharSet0", "FontSize0" and so on.
  // The fonts end at the first face that is missing or empty; a missing or bad character set or
  // size takes the default font's, and a section without fonts gives the default font.
  void GetMultiFont(const CSettingData* data, const char* section);
  void SetMultiFont(CSettingData* data, const char* section) const;

 private:
  CArray<CFontInfo> fonts_;
  CFontInfo selected_;
};

}  // namespace lumr
