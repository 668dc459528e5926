// Any bytes as the text of a setting data file: what was read is written so that it reads back the
// same, with nothing left to mend, and every defect is told in the order of the lines.
#include "fuzz/sdinput.h"
#include "lumrmisc/settings/settingdata.h"

namespace {

using lumr::CSettingData;
using lumr::SdKeyList;

std::string Written(const SdKeyList& keys) {
  lumr::CBuffer text;
  lumr::WriteSdText(keys, text);
  return std::string(text.Bytes());
}

void CheckDefects(std::string_view bytes, const lumr::SdTextReading& reading,
                  const SdKeyList& keys) {
  int line = 0;
  int unreadable = 0;
  lumr::SdDefect first;
  SdKeyList kept;
  const auto whole = lumr::ReadSdText(bytes, kept, [&](const lumr::SdDefect& defect) {
    Require(defect.line == 0 || defect.line >= line);
    line = defect.line == 0 ? INT_MAX : defect.line;
    if (lumr::MessageIdOf(defect.kind) != 0 && unreadable++ == 0) first = defect;
  });
  Require(first.kind == reading.error.kind && whole.error.kind == reading.error.kind);
  Require(first.line == reading.error.line && first.text == reading.error.text);
  if (unreadable == 0) Require(Written(kept) == Written(keys));
}

void CheckRoundTrip(const SdKeyList& keys) {
  const std::string text = Written(keys);
  SdKeyList back;
  const auto reading = lumr::ReadSdText(text, back);
  Require(reading.error.kind == lumr::SdDefectKind::kNone && !reading.repaired);
  Require(Written(back) == text);
}

// Every accessor on every value.
void CheckValues(const CSettingData& data) {
  for (int k = 0; k < data.GetKeyCount(); ++k) {
    const lumr::CSettingDataKey& key = *data.GetKeyAt(k);
    Require(data.FindKey(key.Name()) == &key);
    for (int p = 0; p < key.GetPairList().Count(); ++p) {
      const lumr::CSettingDataPair& pair = *key.GetPairList().At(p);
      Require(data.FindPair(key.Name(), pair.Name()) == &pair);
      lumr::CStringW wide;
      lumr::CStringArray elements;
      lumr::CUIntArray numbers;
      lumr::CRect rect;
      int few[3];
      int complete = -1;
      std::uint32_t hex = 0;
      Require(data.GetValue(key.Name(), pair.Name(), wide) == 1 && wide == pair.GetValue());
      Require(data.GetValue(key.Name(), pair.Name(), elements) == 1);
      Require(data.GetValue(key.Name(), pair.Name(), numbers) == 1);
      Require(data.GetValue(key.Name(), pair.Name(), few, 3, 7, &complete) == 1);
      Require(complete == (numbers.size() == 3 ? 1 : 0));
      if (data.GetValue(key.Name(), pair.Name(), rect) != 0) Require(numbers.size() >= 4);
      Require(data.GetHexValue(key.Name(), pair.Name(), hex) == 1);
    }
  }
}

void CheckCopies(const CSettingData& data) {
  CSettingData copy;
  copy.CopySD(data);
  Require(copy.EqualSD(data, 0) == 1 && data.EqualSD(copy, 1) == 1);
  if (data.GetKeyCount() == 0) return;
  copy.RemoveKeyAll();
  for (int k = data.GetKeyCount() - 1; k >= 0; --k) {
    Require(copy.CopySdKey(0, data, data.GetKeyAt(k)->Name(), 0) == 1);
  }
  Require(copy.EqualSD(data, 1) == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const SdInput input(data, size);
  SdKeyList keys;
  const auto reading = lumr::ReadSdText(input.Bytes(), keys);
  CheckDefects(input.Bytes(), reading, keys);
  CheckRoundTrip(keys);
  CSettingData settings;
  if (settings.LoadSdText(input.Bytes()) == 0) return 0;
  CheckValues(settings);
  CheckCopies(settings);
  return 0;
}
