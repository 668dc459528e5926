// lumr settings check and diff.
#include <string>

#include "json.h"
#include "safetext.h"
#include "settingscommands.h"
#include "textdecode.h"

namespace lumr::tool {

namespace {

// ---- check

class Checker {
 public:
  Checker(Session& session, KeySource& keys) : session_(session), keys_(keys) {}

  void Check(const std::string& file) {
    SettingsBytes settings;
    CBuffer plain;
    std::string_view text;
    if (!ReadSettings(session_, file, settings) ||
        !SettingsText(session_, keys_, file, settings, plain, text)) {
      return;
    }
    SdKeyList read;
    long long defects = 0;
    if (settings.form != SettingsForm::kEmpty) {
      ReadSdText(text, read, [&](const SdDefect& defect) {
        ++defects;
        Print(file, defect);
      });
    }
    if (defects > 0) session_.Raise(kLost);
    Conclude(file, read, defects, settings.form == SettingsForm::kEnciphered);
  }

 private:
  void Print(const std::string& file, const SdDefect& defect) {
    if (!session_.json) {
      return session_.Write(SafeLine(file) + ": " + DefectText(defect) + '\n');
    }
    Json object = {{"file", JsonText(file)}, {"defect", DefectName(defect.kind)}};
    if (defect.line > 0) object["line"] = defect.line;
    if (!defect.key.empty()) object["key"] = JsonText(Utf8(defect.key));
    if (!defect.text.empty()) object["text"] = JsonText(Utf8(defect.text));
    session_.Write(JsonLine(object));
  }

  void Conclude(const std::string& file, const SdKeyList& read, long long defects,
                bool isEnciphered) {
    long long entries = 0;
    for (int i = 0; i < read.Count(); ++i) entries += read.At(i)->GetPairList().Count();
    if (session_.json) {
      session_.Write(JsonLine({{"file", JsonText(file)},
                               {"defects", defects},
                               {"keys", read.Count()},
                               {"entries", entries},
                               {"enciphered", isEnciphered}}));
    } else {
      session_.Write(SafeLine(file) + ": " +
                     Text(defects == 0 ? Say::kNoDefects : Say::kDefects,
                          {Grouped(defects), Grouped(read.Count()), Grouped(entries)}) +
                     '\n');
    }
  }

  Session& session_;
  KeySource& keys_;
};

// The reserve copy of a file; empty when there is none.
std::string ReserveOf(const std::string& file) {
  const CStringW path = PathFromUtf8(file);
  const CStringW reserve = JoinPath(JoinPath(FolderOfPath(path), u"Reserve"), NameOfPath(path));
  return file != "-" && PathExists(reserve) ? PathToUtf8(reserve) : std::string();
}

// ---- diff

class Difference {
 public:
  Difference(Session& session, const CSettingData& before, const CSettingData& after)
      : session_(session), before_(before), after_(after) {}

  void Print() {
    for (int i = 0; i < before_.GetKeyCount(); ++i) {
      const CSettingDataKey& key = *before_.GetKeyAt(i);
      const CSettingDataKey* const there = after_.FindKey(key.Name());
      if (there == nullptr) PrintKey(key, '-');
      PrintChanged(key, there);
      if (there != nullptr) PrintAdded(key, *there);
    }
    for (int i = 0; i < after_.GetKeyCount(); ++i) {
      const CSettingDataKey& key = *after_.GetKeyAt(i);
      if (before_.FindKey(key.Name()) != nullptr) continue;
      PrintKey(key, '+');
      for (int p = 0; p < key.GetPairList().Count(); ++p) {
        PrintEntry(key, nullptr, key.GetPairList().At(p));
      }
    }
  }

 private:
  void PrintChanged(const CSettingDataKey& key, const CSettingDataKey* there) {
    for (int p = 0; p < key.GetPairList().Count(); ++p) {
      const CSettingDataPair* const pair = key.GetPairList().At(p);
      const CSettingDataPair* const now =
          there == nullptr ? nullptr : there->GetPairList().Find(pair->Name());
      if (now == nullptr || now->GetValue() != pair->GetValue()) PrintEntry(key, pair, now);
    }
  }

  void PrintAdded(const CSettingDataKey& key, const CSettingDataKey& there) {
    for (int p = 0; p < there.GetPairList().Count(); ++p) {
      const CSettingDataPair* const pair = there.GetPairList().At(p);
      if (key.GetPairList().Find(pair->Name()) == nullptr) PrintEntry(key, nullptr, pair);
    }
  }

  void PrintKey(const CSettingDataKey& key, char sign) {
    session_.Raise(kLost);
    if (session_.json) {
      session_.Write(JsonLine(
          {{"change", sign == '-' ? "removed" : "added"}, {"key", JsonText(Utf8(key.Name()))}}));
    } else {
      session_.Write(sign + KeyLine(key.Name()) + '\n');
    }
  }

  void PrintEntry(const CSettingDataKey& key, const CSettingDataPair* before,
                  const CSettingDataPair* after) {
    session_.Raise(kLost);
    if (session_.json) {
      const char* const change = before == nullptr  ? "added"
                                 : after == nullptr ? "removed"
                                                    : "changed";
      Json object = {{"change", change},
                     {"key", JsonText(Utf8(key.Name()))},
                     {"name", JsonText(Utf8((before == nullptr ? after : before)->Name()))}};
      if (before != nullptr) object["before"] = JsonText(Utf8(before->GetValue()));
      if (after != nullptr) object["after"] = JsonText(Utf8(after->GetValue()));
      return session_.Write(JsonLine(object));
    }
    const std::string place = KeyLine(key.Name()) + ' ';
    if (before != nullptr) session_.Write('-' + place + EntryLine(*before) + '\n');
    if (after != nullptr) session_.Write('+' + place + EntryLine(*after) + '\n');
  }

  Session& session_;
  const CSettingData& before_;
  const CSettingData& after_;
};

}  // namespace

std::string KeyLine(std::u16string_view name) {
  return SafeLine(Utf8(SdKeyLine(name)));
}

std::string EntryLine(const CSettingDataPair& pair) {
  return SafeLine(Utf8(SdEntryLine(pair)));
}

void RunSettingsCheck(Session& session, SettingsOptions& options) {
  Checker checker(session, options.keys);
  std::int64_t done = 0;
  for (const std::string& file : options.files) {
    checker.Check(file);
    const std::string reserve = ReserveOf(file);
    if (!reserve.empty()) checker.Check(reserve);
    session.Progress(++done, static_cast<std::int64_t>(options.files.size()), file);
  }
}

void RunSettingsDiff(Session& session, SettingsOptions& options) {
  CSettingData before;
  CSettingData after;
  const auto first = LoadSettings(session, options.keys, options.files[0], before);
  const auto second = LoadSettings(session, options.keys, options.files[1], after);
  if (first == SettingsForm::kDamaged || second == SettingsForm::kDamaged) {
    return session.Raise(kFailed);  // 1 would say that they differ
  }
  Difference(session, before, after).Print();
}

}  // namespace lumr::tool
