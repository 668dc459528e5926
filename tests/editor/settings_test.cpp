// The editor's settings: every key with its default, limits and oddities.
#include <gtest/gtest.h>

#include "lumrmisc/editor/colors.h"
#include "lumrmisc/editor/metrics.h"

namespace lumr {
namespace {

using namespace std::string_literals;

constexpr const char* kSection = "Editor";

const char kHead[] =
    "\x81\x41\x81\x42\x81\x43\x81\x44\x81\x48\x81\x49\x81\x4A\x81\x4B\x81\x52\x81\x53\x81\x54"
    "\x81\x55\x81\x58\x81\x6A\x81\x6C\x81\x6E\x81\x70\x81\x72\x81\x74\x81\x76\x81\x78\x81\x7A"
    "\xA4\xA1,.?!\xDE\xDF)]}\xA3";
const char kTail[] =
    "\x81\x69\x81\x6B\x81\x6D\x81\x6F\x81\x71\x81\x73\x81\x75\x81\x77\x81\x79([{\xA2";

// Keys in the order of the file, with the constructor's value, and with what is loaded when the
// key is missing, for an editor and for a viewer.
struct NumberKey {
  const char* key;
  int CEditorMetrics::*field;
  int made, editor, viewer;
};
using M = CEditorMetrics;
const NumberKey kNumbers[] = {
    {"ShowCaret", &M::ShowCaret, 1, 1, 0},
    {"FreeCursor", &M::FreeCursor, 0, 0, 0},
    {"FixCursorPos", &M::FixCursorPos, 0, 0, 0},
    {"AutoIndent", &M::AutoIndent, 1, 1, 1},
    {"Tab2Space", &M::Tab2Space, 0, 0, 0},
    {"SingleClickURL", &M::SingleClickURL, 1, 1, 1},
    {"QuoteLen", &M::QuoteLen, 8, 8, 8},
    {"NoTurnQuoted", &M::NoTurnQuoted, 0, 1, 0},
    {"NoTurnURL", &M::NoTurnURL, 0, 1, 0},
    {"LineSpace", &M::LineSpace, 2, 2, 2},
    {"ShowCR", &M::ShowCR, 0, 0, 0},
    {"ShowEOF", &M::ShowEOF, 0, 0, 0},
    {"ShowTab", &M::ShowTab, 0, 0, 0},
    {"ShowSpace", &M::ShowSpace, 0, 0, 0},
    {"ShowZenSpace", &M::ShowZenSpace, 0, 0, 0},
    {"ShowColRuler", &M::ShowColRuler, 0, 0, 0},
    {"ShowLineRuler", &M::ShowLineRuler, 0, 0, 0},
    {"PhisicalLineNo", &M::PhisicalLineNo, 1, 1, 1},
    {"AutoTurn", &M::AutoTurn, 0, 1, 2},
    {"TurnCols", &M::TurnCols, 72, 72, 72},
    {"WordWrap", &M::WordWrap, 1, 1, 1},
    {"TabColumn", &M::TabColumn, 4, 4, 4},
};
struct ListKey {
  const char* key;
  CBuffer CEditorMetrics::*field;
  CBuffer CEditorMetrics::*editable;
  std::string value;  // as loaded
};
const ListKey kLists[] = {
    {"IndentList", &M::IndentList, &M::EditableIndentList, " \t\x81\x40"},
    {"QuoteList", &M::QuoteList, &M::EditableQuoteList, ">\x81\x84|\x81\x62\x84\xA0"},
    {"QuoteMark", &M::QuoteMark, &M::EditableQuoteMark, ">"},
    {"Head2Prev", &M::Head2Prev, &M::EditableHead2Prev, kHead + " "s},
    {"Tail2Next", &M::Tail2Next, &M::EditableTail2Next, kTail},
};

TEST(CEditorMetrics, HasItsDefaults) {
  const CSettingData empty;
  CEditorMetrics made, editor, viewer;
  editor.GetEditorMetrics(&empty, kSection, 0);
  viewer.GetEditorMetrics(&empty, kSection, 1);
  for (const NumberKey& key : kNumbers) {
    EXPECT_EQ(made.*key.field, key.made) << key.key;
    EXPECT_EQ(editor.*key.field, key.editor) << key.key;
    EXPECT_EQ(viewer.*key.field, key.viewer) << key.key;
  }
  for (const ListKey& key : kLists) {
    for (const CEditorMetrics* const metrics : {&made, &editor, &viewer}) {
      EXPECT_EQ(metrics->*key.field, key.value) << key.key;
      EXPECT_EQ(metrics->*key.editable, key.value) << key.key;
    }
  }
  const CFontInfo font = made.MultiFont.GetSelectedFont();
  EXPECT_EQ(font.face, "\x82\x6C\x82\x72 \x83\x53\x83\x56\x83\x62\x83\x4E");
  EXPECT_EQ(font.charSet, 128);
  EXPECT_EQ(font.size, 9);
}

TEST(CEditorMetrics, LoadsWithinLimits) {
  const struct {
    const char* key;
    int CEditorMetrics::*field;
    const char* stored;
    int editor, viewer;
  } cases[] = {
      {"TurnCols", &M::TurnCols, "5", 10, 10},      {"TurnCols", &M::TurnCols, "10", 10, 10},
      {"TurnCols", &M::TurnCols, "1000", 400, 400}, {"AutoTurn", &M::AutoTurn, "7", 1, 2},
      {"AutoTurn", &M::AutoTurn, "-1", 1, 2},       {"AutoTurn", &M::AutoTurn, "0", 0, 0},
      {"AutoTurn", &M::AutoTurn, "2", 2, 2},        {"LineSpace", &M::LineSpace, "-3", 0, 0},
      {"LineSpace", &M::LineSpace, "9", 9, 9},      {"TabColumn", &M::TabColumn, "0", 4, 4},
      {"TabColumn", &M::TabColumn, "-8", 4, 4},     {"TabColumn", &M::TabColumn, "8", 8, 8},
      {"QuoteLen", &M::QuoteLen, "-5", -5, -5},     {"ShowCaret", &M::ShowCaret, "0", 1, 0},
      {"ShowCaret", &M::ShowCaret, "3", 1, 3},
  };
  for (const auto& c : cases) {
    CSettingData data;
    data.SetValue(kSection, c.key, c.stored);
    for (const int viewer : {0, 1}) {
      CEditorMetrics metrics;
      metrics.GetEditorMetrics(&data, kSection, viewer);
      EXPECT_EQ(metrics.*c.field, viewer ? c.viewer : c.editor) << c.key << '=' << c.stored;
    }
  }
}

// The names of a section's entries, in order.
std::string NamesOf(const CSettingData& data) {
  std::string names;
  const CSettingDataKey* const key = data.FindKey(kSection);
  for (int i = 0; key != nullptr && i < key->GetPairList().Count(); ++i) {
    names += key->GetPairList().At(i)->GetName() + ' ';
  }
  return names;
}

TEST(CEditorMetrics, SavesWhatItLoads) {
  CEditorMetrics metrics;
  int number = 11;
  for (const NumberKey& key : kNumbers) metrics.*key.field = ++number;
  metrics.AutoTurn = 2;
  metrics.ShowCaret = 1;
  for (const ListKey& key : kLists)
    metrics.*key.field =
        "\x81\x41"
        "x ";
  metrics.MultiFont.SetFontInfo({"Courier", 0, 12});
  CSettingData data;
  metrics.SetEditorMetrics(&data, kSection);
  EXPECT_EQ(NamesOf(data),
            "ShowCaret FreeCursor FixCursorPos AutoIndent Tab2Space IndentList SingleClickURL "
            "QuoteList QuoteLen QuoteMark NoTurnQuoted NoTurnURL LineSpace ShowCR ShowEOF ShowTab "
            "ShowSpace ShowZenSpace ShowColRuler ShowLineRuler PhisicalLineNo AutoTurn TurnCols "
            "Head2Prev Tail2Next WordWrap TabColumn FontFace0 FontCharSet0 FontSize0 FontFace1 "
            "FontCharSet1 FontSize1 ");
  CEditorMetrics loaded;
  loaded.GetEditorMetrics(&data, kSection, 0);
  EXPECT_TRUE(loaded == metrics);
  CBuffer head;
  data.GetValue(kSection, "Head2Prev", head);
  EXPECT_EQ(head, "\x81\x41x"s) << "without the space that loading appends";
}

TEST(CEditorMetrics, AppendsASpaceToHead2Prev) {
  const struct {
    const char *stored, *loaded, *saved;
  } cases[] = {{"X", "X ", "X"}, {"", " ", ""}, {"X ", "X  ", "X "}};
  for (const auto& c : cases) {
    CSettingData data;
    data.SetValue(kSection, "Head2Prev", c.stored);
    CEditorMetrics metrics;
    metrics.GetEditorMetrics(&data, kSection, 0);
    EXPECT_EQ(metrics.Head2Prev, c.loaded);
    EXPECT_EQ(metrics.EditableHead2Prev, c.loaded);
    metrics.SetEditorMetrics(&data, kSection);
    CBuffer saved;
    EXPECT_EQ(data.GetValue(kSection, "Head2Prev", saved), 1);
    EXPECT_EQ(saved, c.saved);
  }
}

TEST(CEditorMetrics, ComparesAllButTheEditableLists) {
  for (const NumberKey& key : kNumbers) {
    CEditorMetrics other;
    other.*key.field += 1;
    EXPECT_FALSE(other == CEditorMetrics()) << key.key;
  }
  for (const ListKey& key : kLists) {
    CEditorMetrics other;
    other.*key.editable = "else";
    EXPECT_TRUE(other == CEditorMetrics()) << key.key;
    other.*key.field = "else";
    EXPECT_FALSE(other == CEditorMetrics()) << key.key;
  }
  CEditorMetrics other;
  other.MultiFont.SelectFont(0, nullptr);
  EXPECT_TRUE(other == CEditorMetrics());
  other.MultiFont.SetFontInfo({"Courier", 0, 12});
  EXPECT_FALSE(other == CEditorMetrics());
}

TEST(CEditorMetrics, GoesToTheCodeTypeOfTheDocument) {
  CEditorMetrics metrics;
  metrics.ChangeCodePage(CT_UTF8);
  EXPECT_EQ(metrics.EditableIndentList.Bytes(), std::string_view(" \0\t\0\x00\x30", 6));
  EXPECT_EQ(metrics.IndentList, " \t\x81\x40"s);
  metrics.ChangeCodePage(CT_WIN1252);
  EXPECT_EQ(metrics.EditableIndentList, " \t "s) << "the ideographic space by its look-alike";
  metrics.IndentList = "\x82\xA0x";
  metrics.ChangeCodePage(CT_WIN1252);
  EXPECT_EQ(metrics.EditableIndentList, "x") << "what the code page lacks is left out";
  EXPECT_EQ(metrics.MultiFont.GetSelectedFont().charSet, CharSetCode2FontCharSet(CT_WIN1252));
  metrics.ChangeCodePage(CT_JIS);
  EXPECT_EQ(metrics.EditableTail2Next, kTail);
}

TEST(CMultiFont, ChoosesSavesAndForgets) {
  CMultiFont fonts;
  fonts.SetFontInfo({"Courier", 0, 12});
  fonts.SetFontInfo({"Gulim", 129, 10});
  EXPECT_EQ(fonts.SelectFont(0, nullptr).face, "Courier");
  EXPECT_EQ(fonts.SelectFont(204, nullptr), (CFontInfo{CFontInfo().face, 204, 9})) << "the first";
  CSettingData data;
  fonts.SetMultiFont(&data, kSection);
  CMultiFont loaded;
  loaded.GetMultiFont(&data, kSection);
  EXPECT_EQ(loaded.IsSameFontInfoArray(fonts), 1);
  CMultiFont().SetMultiFont(&data, kSection);
  EXPECT_EQ(NamesOf(data), "FontFace0 FontCharSet0 FontSize0 ");
  data.SetValue(kSection, "FontSize0", "-2");
  loaded.GetMultiFont(&data, kSection);
  EXPECT_EQ(loaded.IsSameFontInfoArray(CMultiFont()), 1);
}

// ---- Colours

struct ColorKey {
  const char* key;
  COLORREF standard, monochrome;
};
const ColorKey kColors[] = {
    {"Text", 0xFFFFFFFF, 0},
    {"Back", 0xFFFFFFFF, 0xFFFFFF},
    {"SelText", 0xFFFFFFFF, 0xFFFFFF},
    {"SelBack", 0xFFFFFFFF, 0},
    {"QuotedText0", 0x008000, 0},
    {"QuotedText1", 0x004080, 0},
    {"QuotedText2", 0x804000, 0},
    {"QuotedText3", 0x800080, 0},
    {"Symbol", 0x808000, 0},
    {"URL", 0xFF0000, 0},
    {"Katakana", 0x0000FF, 0},
    {"MachineDepend", 0x0000FF, 0},
    {"HeaderBack", 0xD0FFD0, 0xFFFFFF},
    {"FindedText", 0xFFFFFF, 0xFFFFFF},
    {"FindedBack", 0xFF00FF, 0},
    {"LineMarkerText0", 0, 0xFFFFFF},
    {"LineMarkerBack0", 0x00FFFF, 0},
    {"LineMarkerText1", 0, 0xFFFFFF},
    {"LineMarkerBack1", 0xFF00FF, 0},
    {"LineMarkerText2", 0, 0xFFFFFF},
    {"LineMarkerBack2", 0xFFFF00, 0},
    {"LineMarkerText3", 0, 0xFFFFFF},
    {"LineMarkerBack3", 0x4040FF, 0},
    {"LineMarkerText4", 0, 0xFFFFFF},
    {"LineMarkerBack4", 0x40FF40, 0},
    {"LineMarkerText5", 0, 0xFFFFFF},
    {"LineMarkerBack5", 0xFF4040, 0},
};

TEST(CEditorColor, HasItsKeysInTheirOrder) {
  CSettingData standard, monochrome;
  CEditorColor colors;
  colors.SetEditorColor(&standard, kSection);
  colors.SetMonochromeColor();
  colors.SetEditorColor(&monochrome, kSection);
  std::string names;
  for (const ColorKey& key : kColors) {
    names += key.key + " "s;
    COLORREF value = 1;
    EXPECT_EQ(standard.GetHexValue(kSection, key.key, value), 1) << key.key;
    EXPECT_EQ(value, key.standard) << key.key;
    EXPECT_EQ(monochrome.GetHexValue(kSection, key.key, value), 1) << key.key;
    EXPECT_EQ(value, key.monochrome) << key.key;
  }
  EXPECT_EQ(NamesOf(standard), names);
}

// Each key alone, in a section without the others: that field differs from the default, no other.
TEST(CEditorColor, LoadsEachKey) {
  for (const ColorKey& key : kColors) {
    CSettingData data, saved;
    data.SetHexValue(kSection, key.key, 0x123456);
    CEditorColor colors;
    colors.SetMonochromeColor();
    colors.GetEditorColor(&data, kSection);
    EXPECT_FALSE(colors == CEditorColor()) << key.key;
    colors.SetEditorColor(&saved, kSection);
    for (const ColorKey& other : kColors) {
      COLORREF value = 0;
      saved.GetHexValue(kSection, other.key, value);
      EXPECT_EQ(value, &other == &key ? 0x123456u : other.standard) << key.key << other.key;
    }
  }
}

TEST(CEditorColor, TakesTheOldQuoteColour) {
  CSettingData data;
  data.SetHexValue(kSection, "QuoteText", 0x112233);
  CEditorColor colors;
  colors.GetEditorColor(&data, kSection);
  EXPECT_EQ(colors.GetQuotedTextColor(0), 0x112233u);
  EXPECT_EQ(colors.GetQuotedTextColor(1), 0x004080u);
  CSettingData saved;
  colors.SetEditorColor(&saved, kSection);
  EXPECT_EQ(saved.FindPair(kSection, "QuoteText"), nullptr);
  data.SetHexValue(kSection, "QuotedText0", 0x445566);
  colors.GetEditorColor(&data, kSection);
  EXPECT_EQ(colors.GetQuotedTextColor(0), 0x445566u);
}

TEST(CEditorColor, SettersAndGettersMindTheirLimits) {
  constexpr COLORREF kNone = CEditorColor::kDefaultColor;
  CEditorColor colors;
  colors.SetMonochromeColor();
  colors.SetSymbolColor(kNone);
  colors.SetUrlColor(kNone);
  colors.SetKatakanaColor(kNone);
  colors.SetMacnDependColor(kNone);
  colors.SetHeaderBackColor(kNone);
  colors.SetFindedTextColor(kNone);
  colors.SetFindedBackColor(kNone);
  colors.SetTextColor(kNone);
  colors.SetBackColor(kNone);
  colors.SetSelTextColor(kNone);
  colors.SetSelBackColor(kNone);
  for (int i = -1; i <= 6; ++i) {
    colors.SetQuotedTextColor(i, kNone);
    colors.SetLineMarkerTextColor(i, kNone);  // black, and not what any other setter does
    colors.SetLineMarkerBackColor(i, kNone);
  }
  EXPECT_TRUE(colors == CEditorColor());
  for (const int i : {-1, 4, 6}) EXPECT_EQ(colors.GetQuotedTextColor(i), 0x808080u) << i;
  for (const int i : {-1, 6}) {
    EXPECT_EQ(colors.GetLineMarkerTextColor(i), 0u) << i;
    EXPECT_EQ(colors.GetLineMarkerBackColor(i), 0x808080u) << i;
  }
  EXPECT_EQ(CEditorColor::GetLineMarkerKindCt(), 6);
  EXPECT_EQ(colors.GetTextColorOrg(), kNone);
  EXPECT_EQ(colors.GetTextColor(), 0x000000u) << "the system's";
  EXPECT_EQ(colors.GetBackColor(), 0xFFFFFFu);
  colors.SetSelTextColor(0x010203);
  EXPECT_EQ(colors.GetSelTextColor(), 0x010203u);
}

}  // namespace
}  // namespace lumr
