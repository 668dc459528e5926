// Setting data files. The first characters of a line of the text are a value, or the line's number
// is; ten values are a key: about 15,000 values at 1 MiB.
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/crypto/blowfish.h"
#include "lumrmisc/settings/settingdata.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

constexpr int kEntriesPerKey = 10;
constexpr int kLongestValue = 30;

CStringW Utf16(std::string_view utf8) {
  CBuffer units;
  ConvertToOtherCodeType2(CT_UTF8, utf8, CT_UNICODE, units);
  return CStringW(units.Units());
}

std::string Utf8(std::u16string_view units) {
  const std::string_view bytes(reinterpret_cast<const char*>(units.data()), units.size() * 2);
  CBuffer utf8;
  ConvertToOtherCodeType2(CT_UNICODE, bytes, CT_UTF8, utf8);
  return std::string(utf8.Bytes());
}

// Values as settings have them: numbers, and texts of a few words.
CStringW ValueOf(std::string_view line, int number) {
  if (number % 3 == 0) return Utf16(std::to_string(number));
  const auto length = static_cast<std::size_t>(1 + number % kLongestValue);
  return u"v" + Utf16(line).substr(0, length);
}

std::string SettingsText(std::string utf8) {
  CSettingData data;
  int count = 0;
  for (std::string_view rest = utf8; !rest.empty(); ++count) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    data.SetValue("Account" + std::to_string(count / kEntriesPerKey),
                  "Entry" + std::to_string(count % kEntriesPerKey),
                  ValueOf(line.substr(0, line.find('\r')), count));
  }
  CBuffer text;
  data.SaveSdText(text);
  return std::string(text.Bytes());
}

std::string EncipheredText(std::string utf8) {
  const std::string text = SettingsText(std::move(utf8));
  CBuffer enciphered;
  EncodeBlowFish(kBlowfishKey.data(), reinterpret_cast<const unsigned char*>(text.data()),
                 Length(text), enciphered);
  return std::string(enciphered.Bytes());
}

std::string LastValue(const CSettingData& data) {
  const SdPairList& pairs = data.GetKeyAt(data.GetKeyCount() - 1)->GetPairList();
  return Utf8(pairs.At(pairs.Count() - 1)->GetValue());
}

std::string Load(std::string_view text) {
  CSettingData data;
  data.LoadSdText(text);
  return LastValue(data);
}

std::string LoadEnciphered(std::string_view text) {
  CSettingData data;
  data.SetCryptKey(1, kBlowfishKey.data());
  data.LoadSdText(text);
  return LastValue(data);
}

std::string DecipherAndLoad(std::string_view text) {
  CBuffer plain;
  CStringA message;
  DecodeBlowFish(kBlowfishKey.data(), reinterpret_cast<const unsigned char*>(text.data()),
                 Length(text), plain, message);
  return Load(plain.Bytes());
}

Contender DecipherThenLoad() {
  Contender contender = OursPlain(&DecipherAndLoad);
  contender.name = "its two steps";
  return contender;
}

Contender Save() {
  return {"LumrMisc", [](std::string_view sample) -> Operation {
            const auto data = std::make_shared<CSettingData>();
            data->LoadSdText(sample);
            return [data, out = CBuffer()](std::string_view) mutable {
              data->SaveSdText(out);
              return View(out);
            };
          }};
}

template <bool kShuffled>
Contender Lookup() {
  return {"LumrMisc", [](std::string_view sample) -> Operation {
            const auto data = std::make_shared<CSettingData>();
            data->LoadSdText(sample);
            SettingNames names;
            for (int k = 0; k < data->GetKeyCount(); ++k) {
              const CSettingDataKey& key = *data->GetKeyAt(k);
              for (int p = 0; p < key.GetPairList().Count(); ++p) {
                names.push_back({key.GetName(), key.GetPairList().At(p)->GetName()});
              }
            }
            if (kShuffled) Shuffle(names);
            return
                [data, names, total = std::string()](std::string_view) mutable -> std::string_view {
                  int found = 0;
                  for (const auto& [key, name] : names) {
                    found += data->FindPair(key, name) != nullptr ? 1 : 0;
                  }
                  total = std::to_string(found);
                  return total;
                };
          }};
}

// The lines of both formats: UTF-8, without the two marks and what is between lines.
std::string LinesOf(std::string_view output) {
  std::string text(output);
  if (text.starts_with("\xFF\xFE")) {
    const CStringW units(reinterpret_cast<const char16_t*>(text.data()) + 1, text.size() / 2 - 1);
    text = Utf8(units);
    std::erase(text, '\r');
    for (const std::string_view mark : {"[DATA-START]", "[DATA-END]"}) {
      text.erase(text.find(mark), mark.size());
    }
  }
  std::string lines;
  for (const char c : text) {
    if (c != '\n' || !lines.ends_with('\n')) lines += c;
  }
  return lines.substr(lines.find_first_not_of('\n'));
}

std::vector<Input> Values(double mark) {
  return {{Corpus::kJapanese, "UTF-8", mark}, {Corpus::kAscii, "UTF-8", mark}};
}

}  // namespace

void Shuffle(SettingNames& names) {
  Random random(3);
  for (std::size_t i = names.size(); i > 1; --i) std::swap(names[i - 1], names[random.Below(i)]);
}

std::vector<Row> SettingsRows() {
  constexpr std::size_t kMany = std::size_t{1} << 20;
  return {
      MarkedFrom(kMany,
                 {"settings load", Values(3), OursPlain(&Load), {KeyFileLoad()}, &SettingsText}),
      MarkedFrom(kMany, {"settings save to memory",
                         Values(1.5),
                         Save(),
                         {KeyFileSave()},
                         &SettingsText,
                         &LinesOf}),
      MarkedFrom(kMany, {"settings look-up, in order",
                         Values(2),
                         Lookup<false>(),
                         {KeyFileLookup(false)},
                         &SettingsText}),
      MarkedFrom(kMany, {"settings look-up, any order",
                         Values(2),
                         Lookup<true>(),
                         {KeyFileLookup(true)},
                         &SettingsText}),
      // Loading may take 1.2 times what its two steps take.
      MarkedFrom(kMany, {"settings load, enciphered",
                         Values(1 / 1.2),
                         OursPlain(&LoadEnciphered),
                         {DecipherThenLoad()},
                         &EncipheredText}),
  };
}

}  // namespace lumr::bench
