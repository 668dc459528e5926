// Texts of the tests, in the code types that the editor lays out.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "lumrmisc/charset/convert.h"
#include "lumrmisc/editor/editorwnd.h"
#include "lumrmisc/editor/linemetrics.h"

namespace lumr::testing {

inline std::string TextIn(CodeType codeType, std::string_view utf8) {
  CBuffer text;
  EXPECT_EQ(ConvertToOtherCodeType2(CT_UTF8, utf8, codeType, text), 0) << utf8;
  return std::string(text.Bytes());
}

inline std::string Utf8Of(CodeType codeType, std::string_view text) {
  CBuffer utf8;
  ConvertToOtherCodeType2(codeType, text, CT_UTF8, utf8);
  return std::string(utf8.Bytes());
}

inline void Fill(CEditorLineMetrics& line, CEditorMetrics metrics, CodeType codeType, int turnMode,
                 int limit, int noPixels = 0) {
  metrics.ChangeCodePage(codeType);
  line.SetLineMetrics(metrics, codeType, turnMode, limit, noPixels);
}

inline void Append(CEditorWnd& editor, std::string_view text, int quote = 0) {
  editor.AppendText(text.data(), static_cast<int>(text.size()), quote);
}

}  // namespace lumr::testing
