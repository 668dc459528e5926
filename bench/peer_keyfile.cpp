#include "peers.h"

#ifdef LUMRMISC_BENCH_GLIB

#include <glib.h>

#include "corpus.h"
#include "lumrmisc/settings/settingdata.h"
#include "peer_internal.h"

namespace lumr::bench {
namespace {

std::string Utf8(std::u16string_view text) {
  const auto* const units = reinterpret_cast<const gunichar2*>(text.data());
  const auto length = static_cast<glong>(text.size());
  const std::unique_ptr<char, void (*)(void*)> utf8(
      g_utf16_to_utf8(units, length, nullptr, nullptr, nullptr), g_free);
  return utf8.get();
}

using KeyFile = std::shared_ptr<GKeyFile>;

KeyFile NewKeyFile() {
  return KeyFile(g_key_file_new(), g_key_file_free);
}

KeyFile Loaded(const std::string& text) {
  KeyFile file = NewKeyFile();
  g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr);
  return file;
}

// A setting data file as a key file.
class Content {
 public:
  explicit Content(std::string_view sample) {
    CSettingData data;
    data.LoadSdText(sample);
    for (int k = 0; k < data.GetKeyCount(); ++k) {
      const CSettingDataKey& key = *data.GetKeyAt(k);
      text += '[' + Utf8(key.Name()) + "]\n";
      for (int p = 0; p < key.GetPairList().Count(); ++p) {
        const CSettingDataPair& pair = *key.GetPairList().At(p);
        text += Utf8(pair.Name()) + '=' + Utf8(pair.GetValue()) + '\n';
        names.push_back({Utf8(key.Name()), Utf8(pair.Name())});
      }
      text += '\n';
    }
  }

  std::string text;
  SettingNames names;
};

std::string Value(const KeyFile& file, const std::pair<std::string, std::string>& name) {
  const std::unique_ptr<char, void (*)(void*)> value(
      g_key_file_get_value(file.get(), name.first.c_str(), name.second.c_str(), nullptr), g_free);
  return value == nullptr ? std::string() : value.get();
}

}  // namespace

Contender KeyFileLoad() {
  return {"GLib", [](std::string_view sample) -> Operation {
            return [content = Content(sample),
                    last = std::string()](std::string_view) mutable -> std::string_view {
              last = Value(Loaded(content.text), content.names.back());
              return last;
            };
          }};
}

Contender KeyFileSave() {
  return {"GLib", [](std::string_view sample) -> Operation {
            return [file = Loaded(Content(sample).text),
                    text = std::shared_ptr<char>()](std::string_view) mutable -> std::string_view {
              gsize size = 0;
              text.reset(g_key_file_to_data(file.get(), &size, nullptr), g_free);
              return {text.get(), size};
            };
          }};
}

Contender KeyFileLookup(bool shuffled) {
  return {"GLib", [shuffled](std::string_view sample) -> Operation {
            Content content(sample);
            if (shuffled) Shuffle(content.names);
            return [file = Loaded(content.text), names = content.names,
                    total = std::string()](std::string_view) mutable -> std::string_view {
              std::size_t found = 0;
              for (const auto& [key, name] : names) {
                gchar* const value =
                    g_key_file_get_value(file.get(), key.c_str(), name.c_str(), nullptr);
                found += value != nullptr ? 1 : 0;
                g_free(value);
              }
              total = std::to_string(found);
              return total;
            };
          }};
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender KeyFileLoad() {
  return NotBuilt("GLib");
}
Contender KeyFileSave() {
  return NotBuilt("GLib");
}
Contender KeyFileLookup(bool) {
  return NotBuilt("GLib");
}
}  // namespace lumr::bench

#endif
