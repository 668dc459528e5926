#include "lumrmisc/settings/sdformat.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "lumrmisc/crypto/secret_internal.h"

namespace lumr {
namespace {

constexpr std::u16string_view kStartMark = u"DATA-START";
constexpr std::u16string_view kEndMark = u"DATA-END";
constexpr std::u16string_view kLineEnd = u"\r\n";
constexpr char16_t kByteOrderMark = 0xfeff;
constexpr std::size_t kRepairsKept = 100;
constexpr std::size_t kUnitsQuoted = 1000;

// ---- Escapes

struct EscapeRow {
  char16_t character;
  char16_t letter;  // what stands behind the backslash
  bool entryNameOnly;
};
constexpr EscapeRow kEscapes[] = {
    {u'\\', u'\\', false}, {u'\r', u'r', false}, {u'\n', u'n', false},
    {u'=', u'=', true},    {u'[', u'[', true},
};

enum class Field { kKeyNameOrValue, kEntryName };

// The row whose member is unit; null when there is none for the field.
template <char16_t EscapeRow::*kMember>
const EscapeRow* FindEscape(char16_t unit, Field field) {
  for (const EscapeRow& row : kEscapes) {
    if (row.*kMember == unit && (field == Field::kEntryName || !row.entryNameOnly)) return &row;
  }
  return nullptr;
}

bool MayNeedEscape(char16_t unit) {
  return unit <= u'\\' &&
         (unit == u'\\' || unit == u'\r' || unit == u'\n' || unit == u'=' || unit == u'[');
}

// Undoes the escapes of a text. What has none is given as it is; anything else is put together
// in room, which has space for the text.
std::u16string_view Unescaped(std::u16string_view text, Field field, CStringW& room) {
  constexpr std::size_t kNone = std::u16string_view::npos;
  std::size_t backslash = text.find(u'\\');
  if (backslash == kNone) return text;
  room.clear();
  std::size_t at = 0;
  while (backslash != kNone && backslash + 1 < text.size()) {
    room.append(text, at, backslash - at);
    const EscapeRow* const row = FindEscape<&EscapeRow::letter>(text[backslash + 1], field);
    if (row == nullptr) room += u'\\';  // a pair that means nothing stays as it stands
    room += row == nullptr ? text[backslash + 1] : row->character;
    at = backslash + 2;
    backslash = text.find(u'\\', at);
  }
  return room.append(text, at);
}

// ---- Reading

// Where a line's name ends: the first "=" that no backslash escapes.
std::size_t FindEquals(std::u16string_view line) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == u'=') return i;
    if (line[i] == u'\\') ++i;
  }
  return std::u16string_view::npos;
}

class Reader {
 public:
  Reader(SdKeyList& keys, const SdDefectSink& sink) : keys_(keys), sink_(sink) {}
  ~Reader() {
    WipeText(name_);
    WipeText(value_);
  }

  SdTextReading Read(std::u16string_view text) {
    if (!text.empty() && text.front() == kByteOrderMark) text.remove_prefix(1);
    while (!text.empty() && !stopped_) TakeLine(text);
    if (!stopped_ && started_ != ended_) {
      key_ = nullptr;
      lineNumber_ = 0;
      Note(ended_ ? SdDefectKind::kNoStart : SdDefectKind::kNoEnd, {});
    }
    return std::move(reading_);
  }

 private:
  void TakeLine(std::u16string_view& text) {
    ++lineNumber_;
    std::size_t end = 0;
    bool hasZero = false;
    for (; end < text.size() && text[end] != u'\r' && text[end] != u'\n'; ++end) {
      hasZero |= text[end] == u'\0';
    }
    const std::u16string_view line = text.substr(0, end);
    const bool pair = text.substr(end, 2) == kLineEnd;
    text.remove_prefix(std::min(text.size(), end + (pair ? 2 : 1)));
    if (line.empty()) return;
    if (hasZero) {
      Note(SdDefectKind::kZeroUnit, line);
    } else if (line.front() == u'[') {
      ReadKeyLine(line);
    } else {
      ReadEntryLine(line);
    }
  }

  void ReadKeyLine(std::u16string_view line) {
    key_ = nullptr;
    if (line.size() < 2 || line.back() != u']') {
      Note(SdDefectKind::kBadKeyLine, line);
      lost_ = std::make_unique<CSettingDataKey>(SdName(u""));
      key_ = lost_.get();
      return;
    }
    const std::u16string_view inner = line.substr(1, line.size() - 2);
    const bool start = EqualSdNames(inner, kStartMark);
    if (start || EqualSdNames(inner, kEndMark)) {
      (start ? started_ : ended_) = true;
      return;
    }
    const SdName name(Unescaped(inner, Field::kKeyNameOrValue, RoomFor(inner, name_)));
    key_ = keys_.Find(name);
    if (key_ != nullptr) return Note(SdDefectKind::kKeyTwice, name.Text());
    key_ = keys_.Append(std::make_unique<CSettingDataKey>(name));
  }

  void ReadEntryLine(std::u16string_view line) {
    if (key_ == nullptr) return Note(SdDefectKind::kNoKey, line);
    const std::size_t equals = FindEquals(line);
    if (equals == 0 || equals == std::u16string_view::npos) {
      return Note(SdDefectKind::kBadEntry, line);
    }
    const auto escapedName = line.substr(0, equals);
    const auto escapedValue = line.substr(equals + 1);
    const SdName name(Unescaped(escapedName, Field::kEntryName, RoomFor(escapedName, name_)));
    const auto value =
        Unescaped(escapedValue, Field::kKeyNameOrValue, RoomFor(escapedValue, value_));
    if (CSettingDataPair* const pair = key_->Pairs().Find(name)) {
      pair->ReplaceValue(value);
      return Note(SdDefectKind::kNameTwice, name.Text());
    }
    key_->Pairs().Append(std::make_unique<CSettingDataPair>(name, value));
  }

  // Growing in the middle of a text would leave a copy of it behind.
  static CStringW& RoomFor(std::u16string_view text, CStringW& room) {
    if (room.capacity() < text.size()) {
      WipeText(room);
      room.reserve(std::max(text.size(), room.capacity() * 2));
    }
    return room;
  }

  void Note(SdDefectKind kind, std::u16string_view text) {
    SdDefect defect{kind, lineNumber_, {}, CStringW(text.substr(0, kUnitsQuoted))};
    if (key_ != nullptr && kind != SdDefectKind::kKeyTwice) defect.key = key_->Name();
    std::erase(defect.text, u'\0');
    if (sink_) sink_(defect);
    if (MessageIdOf(kind) == 0) {
      reading_.repaired = true;
      if (reading_.repairs.size() < kRepairsKept) reading_.repairs.push_back(std::move(defect));
    } else {
      stopped_ = !sink_;
      if (reading_.error.kind == SdDefectKind::kNone) reading_.error = std::move(defect);
    }
  }

  SdKeyList& keys_;
  const SdDefectSink& sink_;
  CSettingDataKey* key_ = nullptr;
  std::unique_ptr<CSettingDataKey> lost_;  // the key of a line that cannot be read
  bool started_ = false;
  bool ended_ = false;
  bool stopped_ = false;
  int lineNumber_ = 0;
  CStringW name_;
  CStringW value_;
  SdTextReading reading_;
};

// ---- Writing

// Calls begin and end of the whole text's pieces in order, so that measuring and writing go the
// same way.
template <typename Sink>
void WritePieces(const SdKeyList& keys, Sink& sink) {
  const auto mark = [&sink](std::u16string_view name) {
    sink.Plain(u"[");
    sink.Plain(name);
    sink.Plain(u"]\r\n\r\n");
  };
  sink.Plain(std::u16string_view(&kByteOrderMark, 1));
  mark(kStartMark);
  for (int k = 0; k < keys.Count(); ++k) {
    const CSettingDataKey& key = *keys.At(k);
    sink.Plain(u"[");
    sink.Escaped(key.Name(), Field::kKeyNameOrValue);
    sink.Plain(u"]\r\n");
    for (int p = 0; p < key.GetPairList().Count(); ++p) {
      const CSettingDataPair& pair = *key.GetPairList().At(p);
      sink.Escaped(pair.Name(), Field::kEntryName);
      sink.Plain(u"=");
      sink.Escaped(pair.GetValue(), Field::kKeyNameOrValue);
      sink.Plain(kLineEnd);
    }
    sink.Plain(kLineEnd);
  }
  mark(kEndMark);
}

// Both sinks see a text as runs without escapes and single escaped units.
template <typename Run, typename Pair>
void SplitEscapes(std::u16string_view text, Field field, Run run, Pair pair) {
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!MayNeedEscape(text[i])) continue;
    const EscapeRow* const row = FindEscape<&EscapeRow::character>(text[i], field);
    if (row == nullptr) continue;
    run(text.substr(begin, i - begin));
    pair(row->letter);
    begin = i + 1;
  }
  run(text.substr(begin));
}

struct Measure {
  std::size_t units = 0;

  void Plain(std::u16string_view text) { units += text.size(); }
  void Escaped(std::u16string_view text, Field field) {
    SplitEscapes(
        text, field, [this](std::u16string_view run) { units += run.size(); },
        [this](char16_t) { units += 2; });
  }
};

struct Writer {
  char* out;

  void Plain(std::u16string_view text) {
    std::memcpy(out, text.data(), text.size() * sizeof(char16_t));
    out += text.size() * sizeof(char16_t);
  }
  void Escaped(std::u16string_view text, Field field) {
    SplitEscapes(
        text, field, [this](std::u16string_view run) { Plain(run); },
        [this](char16_t letter) {
          const char16_t pair[] = {u'\\', letter};
          Plain({pair, 2});
        });
  }
};

bool HasZero(std::u16string_view text) {
  return text.find(u'\0') != std::u16string_view::npos;
}

}  // namespace

unsigned MessageIdOf(SdDefectKind kind) {
  switch (kind) {
    case SdDefectKind::kBadKeyLine:
    case SdDefectKind::kBadEntry:
    case SdDefectKind::kZeroUnit:
      return 3100;
    case SdDefectKind::kNoKey:
      return 3101;
    case SdDefectKind::kNoStart:
      return 3163;
    case SdDefectKind::kNoEnd:
      return 3164;
    default:
      return 0;
  }
}

CStringW QuotedBy(const SdDefect& defect) {
  if (defect.kind != SdDefectKind::kBadEntry) return defect.text;
  return u"[" + defect.key + u"]\n        " + defect.text;
}

SdTextReading ReadSdText(std::string_view utf16Bytes, SdKeyList& keys, const SdDefectSink& sink) {
  const std::size_t units = utf16Bytes.size() / 2;
  // The text of a file begins at an even address; one from elsewhere may not.
  if (reinterpret_cast<std::uintptr_t>(utf16Bytes.data()) % alignof(char16_t) == 0) {
    return Reader(keys, sink).Read({reinterpret_cast<const char16_t*>(utf16Bytes.data()), units});
  }
  CStringW aligned(units, u'\0');
  std::memcpy(aligned.data(), utf16Bytes.data(), units * 2);
  SdTextReading reading = Reader(keys, sink).Read(aligned);
  WipeText(aligned);
  return reading;
}

void WriteSdText(const SdKeyList& keys, CBuffer& out) {
  Measure measure;
  WritePieces(keys, measure);
  if (measure.units > (INT32_MAX - 64) / 2) throw std::bad_alloc();
  const int bytes = static_cast<int>(measure.units * 2);
  out.Empty();
  Writer writer{out.GetBuffer(bytes)};
  WritePieces(keys, writer);
  out.ReleaseBuffer(bytes);
}

bool IsSdKeyName(std::u16string_view name) {
  return !EqualSdNames(name, kStartMark) && !EqualSdNames(name, kEndMark) && !HasZero(name);
}

bool IsSdEntryName(std::u16string_view name) {
  return !name.empty() && !HasZero(name);
}

bool IsSdValue(std::u16string_view value) {
  return !HasZero(value);
}

}  // namespace lumr
