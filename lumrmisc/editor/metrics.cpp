#include "lumrmisc/editor/metrics.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

#include "lumrmisc/charset/convert.h"

namespace lumr {
namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

// What becomes of a stored number outside the limits.
enum class Outside { kHeld, kDefault };

// A key that holds a number.
struct NumberRow {
  int CEditorMetrics::*field;
  int missingInEditor;
  int missingInViewer;
  int min = kMin;
  int max = kMax;
  Outside outside = Outside::kHeld;
};

// A key that holds a list. A tail is part of the list, but not of what is stored.
struct ListRow {
  CBuffer CEditorMetrics::*field;
  CBuffer CEditorMetrics::*editable;
  std::string_view standard;
  std::string_view tail = {};
};

// Every key, in the order in which they are saved: a number or a list.
struct Row {
  const char* key;
  NumberRow number = {};
  ListRow list = {};
};

using M = CEditorMetrics;
constexpr Row kRows[] = {
    {"ShowCaret", {&M::ShowCaret, 1, 0}},
    {"FreeCursor", {&M::FreeCursor, 0, 0}},
    {"FixCursorPos", {&M::FixCursorPos, 0, 0}},
    {"AutoIndent", {&M::AutoIndent, 1, 1}},
    {"Tab2Space", {&M::Tab2Space, 0, 0}},
    // Space, tab and the ideographic space.
    {"IndentList", {}, {&M::IndentList, &M::EditableIndentList, "\x20\x09\x81\x40"}},
    {"SingleClickURL", {&M::SingleClickURL, 1, 1}},
    // The greater-than sign, the vertical bar, both full-width too, and the box drawing bar.
    {"QuoteList", {}, {&M::QuoteList, &M::EditableQuoteList, "\x3E\x81\x84\x7C\x81\x62\x84\xA0"}},
    {"QuoteLen", {&M::QuoteLen, 8, 8}},
    {"QuoteMark", {}, {&M::QuoteMark, &M::EditableQuoteMark, ">"}},
    {"NoTurnQuoted", {&M::NoTurnQuoted, 1, 0}},
    {"NoTurnURL", {&M::NoTurnURL, 1, 0}},
    {"LineSpace", {&M::LineSpace, 2, 2, 0}},
    {"ShowCR", {&M::ShowCR, 0, 0}},
    {"ShowEOF", {&M::ShowEOF, 0, 0}},
    {"ShowTab", {&M::ShowTab, 0, 0}},
    {"ShowSpace", {&M::ShowSpace, 0, 0}},
    {"ShowZenSpace", {&M::ShowZenSpace, 0, 0}},
    {"ShowColRuler", {&M::ShowColRuler, 0, 0}},
    {"ShowLineRuler", {&M::ShowLineRuler, 0, 0}},
    {"PhisicalLineNo", {&M::PhisicalLineNo, 1, 1}},
    {"AutoTurn", {&M::AutoTurn, 1, 2, 0, 2, Outside::kDefault}},
    {"TurnCols", {&M::TurnCols, 72, 72, 10, 400}},
    // Comma and full stop in all forms, question and exclamation marks, (semi-)voiced sound marks,
    // iteration marks, closing brackets.
    {"Head2Prev",
     {},
     {&M::Head2Prev, &M::EditableHead2Prev,
      "\x81\x41\x81\x42\x81\x43\x81\x44\x81\x48\x81\x49\x81\x4A\x81\x4B\x81\x52\x81\x53\x81\x54"
      "\x81\x55\x81\x58\x81\x6A\x81\x6C\x81\x6E\x81\x70\x81\x72\x81\x74\x81\x76\x81\x78\x81\x7A"
      "\xA4\xA1\x2C\x2E\x3F\x21\xDE\xDF\x29\x5D\x7D\xA3",
      " "}},
    // Opening brackets.
    {"Tail2Next",
     {},
     {&M::Tail2Next, &M::EditableTail2Next,
      "\x81\x69\x81\x6B\x81\x6D\x81\x6F\x81\x71\x81\x73\x81\x75\x81\x77\x81\x79\x28\x5B\x7B\xA2"}},
    {"WordWrap", {&M::WordWrap, 1, 1}},
    {"TabColumn", {&M::TabColumn, 4, 4, 1, kMax, Outside::kDefault}},
};

void LoadNumber(const Row& row, const CSettingData* data, const char* section, int viewer,
                int& value) {
  const NumberRow& number = row.number;
  const int missing = viewer != 0 ? number.missingInViewer : number.missingInEditor;
  value = missing;
  if (data == nullptr || !data->GetValue(section, row.key, value)) return;
  const int held = std::clamp(value, number.min, number.max);
  if (held != value) value = number.outside == Outside::kHeld ? held : missing;
}

void SetList(const ListRow& list, CEditorMetrics& metrics) {
  metrics.*list.field += list.tail;
  metrics.*list.editable = metrics.*list.field;
}

void LoadList(const Row& row, const CSettingData* data, const char* section,
              CEditorMetrics& metrics) {
  CBuffer& value = metrics.*row.list.field;
  if (data == nullptr || !data->GetValue(section, row.key, value)) value = row.list.standard;
  SetList(row.list, metrics);
}

// A list is saved as text, so it ends at a NUL; the tail is cut off unread.
void SaveList(const Row& row, CSettingData* data, const char* section, const CBuffer& list) {
  CBuffer stored;
  list.Left(std::max(list.GetLength() - static_cast<int>(row.list.tail.size()), 0), stored);
  data->SetValue(section, row.key, static_cast<const char*>(stored));
}

}  // namespace

CEditorMetrics::CEditorMetrics() {
  for (const Row& row : kRows) {
    if (row.list.field == nullptr) continue;
    this->*row.list.field = row.list.standard;
    SetList(row.list, *this);
  }
}

bool CEditorMetrics::operator==(const CEditorMetrics& other) const {
  const bool equal = std::all_of(std::begin(kRows), std::end(kRows), [&](const Row& row) {
    return row.list.field != nullptr ? this->*row.list.field == other.*row.list.field
                                     : this->*row.number.field == other.*row.number.field;
  });
  return equal && MultiFont.IsSameFontInfoArray(other.MultiFont) > 0;
}

void CEditorMetrics::GetEditorMetrics(const CSettingData* data, const char* section, int viewer) {
  for (const Row& row : kRows) {
    if (row.list.field != nullptr) {
      LoadList(row, data, section, *this);
    } else {
      LoadNumber(row, data, section, viewer, this->*row.number.field);
    }
  }
  // Who writes wants to see where; only a viewer goes without.
  if (viewer == 0) ShowCaret = 1;
  MultiFont.GetMultiFont(data, section);
}

void CEditorMetrics::SetEditorMetrics(CSettingData* data, const char* section) const {
  if (data == nullptr) return;
  for (const Row& row : kRows) {
    if (row.list.field != nullptr) {
      SaveList(row, data, section, this->*row.list.field);
    } else {
      data->SetValue(section, row.key, this->*row.number.field);
    }
  }
  MultiFont.SetMultiFont(data, section);
}

void CEditorMetrics::ChangeCodePage(CodeType type) {
  MultiFont.SelectFont(CharSetCode2FontCharSet(type), nullptr);
  for (const Row& row : kRows) {
    if (row.list.field == nullptr) continue;
    ConvertSjisToCTEditable(this->*row.list.field, type, this->*row.list.editable, 1);
  }
}

}  // namespace lumr
