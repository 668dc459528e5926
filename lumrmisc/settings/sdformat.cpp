#include "lumrmisc/settings/sdformat.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "lumrmisc/settings/sdescape_internal.h"

namespace lumr {
namespace {

constexpr std::u16string_view kStartMark = u"DATA-START";
constexpr std::u16string_view kEndMark = u"DATA-END";
constexpr std::u16string_view kLineEnd = u"\r\n";
constexpr char16_t kByteOrderMark = 0xfeff;
constexpr std::size_t kRepairsKept = 100;
constexpr std::size_t kUnitsQuoted = 1000;

// ---- Reading

constexpr std::size_t kNone = std::u16string_view::npos;

// A line and what was seen on the way to its end.
struct Line {
  std::u16string_view text;
  std::size_t size;  // with the line end
  bool hasBackslash;
  bool hasZero;
};

// Takes the first line of a text. Four units at a time are looked at for what ends one.
Line FirstLine(std::u16string_view text) {
  constexpr std::uint64_t kEveryUnit = 0x0001000100010001;
  constexpr std::uint64_t kTops = 0x8000 * kEveryUnit;
  // Whether any of the four units is below a limit, which is at most 8000 hex.
  const auto anyBelow = [](std::uint64_t units, std::uint64_t limit) {
    return ((units - limit * kEveryUnit) & ~units & kTops) != 0;
  };
  Line line = {text, text.size(), false, false};
  std::size_t end = 0;
  for (; end + 4 <= text.size(); end += 4) {
    std::uint64_t units;
    std::memcpy(&units, text.data() + end, sizeof units);
    if (anyBelow(units, u'\r' + 1)) break;
    line.hasBackslash |= anyBelow(units ^ u'\\' * kEveryUnit, 1);
  }
  for (; end < text.size() && text[end] != u'\r' && text[end] != u'\n'; ++end) {
    line.hasZero |= text[end] == u'\0';
    line.hasBackslash |= text[end] == u'\\';
  }
  line.text = text.substr(0, end);
  const bool pair = text.substr(end, 2) == kLineEnd;
  line.size = std::min(text.size(), end + (pair ? 2 : 1));
  return line;
}

// Where a line's name ends: the first "=" that no backslash escapes.
std::size_t FindEquals(std::u16string_view line) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == u'=') return i;
    if (line[i] == u'\\') ++i;
  }
  return kNone;
}

// Reads a text where it stands: escapes are undone in their places, and the entries are views of
// it.
class Reader {
 public:
  Reader(SdKeyList& keys, std::shared_ptr<SdTextBlock> block, const SdDefectSink& sink)
      : keys_(keys), block_(std::move(block)), sink_(sink) {}

  SdTextReading Read() {
    std::u16string_view text(block_->units.get(), block_->size);
    if (!text.empty() && text.front() == kByteOrderMark) text.remove_prefix(1);
    while (!text.empty() && !stopped_) {
      const Line line = FirstLine(text);
      text.remove_prefix(line.size);
      ++lineNumber_;
      if (!line.text.empty()) ReadLine(line);
    }
    if (!stopped_ && started_ != ended_) {
      key_ = nullptr;
      lineNumber_ = 0;
      Note(ended_ ? SdDefectKind::kNoStart : SdDefectKind::kNoEnd, {});
    }
    return std::move(reading_);
  }

 private:
  void ReadLine(const Line& line) {
    if (line.hasZero) {
      Note(SdDefectKind::kZeroUnit, line.text);
    } else if (line.text.front() == u'[') {
      ReadKeyLine(line);
    } else {
      ReadEntryLine(line);
    }
  }

  void ReadKeyLine(const Line& line) {
    key_ = nullptr;
    if (line.text.size() < 2 || line.text.back() != u']') {
      Note(SdDefectKind::kBadKeyLine, line.text);
      lost_ = std::make_unique<CSettingDataKey>(SdName(u""), block_);
      key_ = lost_.get();
      return;
    }
    std::u16string_view inner = line.text.substr(1, line.text.size() - 2);
    const bool start = EqualSdNames(inner, kStartMark);
    if (start || EqualSdNames(inner, kEndMark)) {
      (start ? started_ : ended_) = true;
      return;
    }
    if (line.hasBackslash) inner = Unescaped(inner, SdField::kKeyNameOrValue, Place(inner));
    const SdName name(inner);
    key_ = keys_.Find(name);
    if (key_ != nullptr) return Note(SdDefectKind::kKeyTwice, inner);
    key_ = keys_.Append(CSettingDataKey(name, block_));
  }

  void ReadEntryLine(const Line& line) {
    if (key_ == nullptr) return Note(SdDefectKind::kNoKey, line.text);
    const std::size_t equals = FindEquals(line.text);
    if (equals == 0 || equals == kNone) return Note(SdDefectKind::kBadEntry, line.text);
    std::u16string_view name = line.text.substr(0, equals);
    std::u16string_view value = line.text.substr(equals + 1);
    if (line.hasBackslash) {
      name = Unescaped(name, SdField::kEntryName, Place(name));
      char16_t* const behind = Place(name) + name.size();
      *behind = u'=';
      value = Unescaped(value, SdField::kKeyNameOrValue, behind + 1);
    }
    const SdName sdName(name);
    if (CSettingDataPair* const pair = key_->Pairs().Find(sdName)) {
      pair->ReplaceValue(value);
      return Note(SdDefectKind::kNameTwice, name);
    }
    const bool asWritten = !line.hasBackslash && name.find(u'[') == kNone;
    key_->AppendFromBlock(sdName, name.data(), value.size(), asWritten);
  }

  // Where a part of the block can be written to.
  char16_t* Place(std::u16string_view part) const {
    return block_->units.get() + (part.data() - block_->units.get());
  }

  static std::u16string_view Unescaped(std::u16string_view text, SdField field, char16_t* out) {
    return {out, static_cast<std::size_t>(UnescapeSdText(text, field, out) - out)};
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
  const std::shared_ptr<SdTextBlock> block_;
  const SdDefectSink& sink_;
  CSettingDataKey* key_ = nullptr;
  std::unique_ptr<CSettingDataKey> lost_;  // the key of a line that cannot be read
  bool started_ = false;
  bool ended_ = false;
  bool stopped_ = false;
  int lineNumber_ = 0;
  SdTextReading reading_;
};

// ---- Writing

// These call a sink with the pieces of the text in order, so that measuring and writing go the same
// way.
template <typename Sink>
void WriteKeyLine(std::u16string_view name, Sink& sink) {
  sink.Plain(u"[");
  sink.Escaped(name, SdField::kKeyNameOrValue);
  sink.Plain(u"]");
}

template <typename Sink>
void WriteEntryLine(const CSettingDataPair& pair, Sink& sink) {
  if (pair.IsLineAsWritten()) return sink.Plain(pair.Line());
  sink.Escaped(pair.Name(), SdField::kEntryName);
  sink.Plain(u"=");
  sink.Escaped(pair.GetValue(), SdField::kKeyNameOrValue);
}

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
    WriteKeyLine(key.Name(), sink);
    sink.Plain(kLineEnd);
    for (int p = 0; p < key.GetPairList().Count(); ++p) {
      WriteEntryLine(*key.GetPairList().At(p), sink);
      sink.Plain(kLineEnd);
    }
    sink.Plain(kLineEnd);
  }
  mark(kEndMark);
}

struct Measure {
  std::size_t units = 0;

  void Plain(std::u16string_view text) { units += text.size(); }
  void Escaped(std::u16string_view text, SdField field) {
    SplitSdEscapes(
        text, field, [this](std::u16string_view run) { units += run.size(); },
        [this](char16_t) { units += 2; });
  }
};

// What two sinks write alike, by their Plain.
template <typename Sink>
void WriteEscaped(std::u16string_view text, SdField field, Sink& sink) {
  SplitSdEscapes(
      text, field, [&sink](std::u16string_view run) { sink.Plain(run); },
      [&sink](char16_t letter) {
        const char16_t pair[] = {u'\\', letter};
        sink.Plain({pair, 2});
      });
}

struct Writer {
  char* out;

  void Plain(std::u16string_view text) {
    std::memcpy(out, text.data(), text.size() * sizeof(char16_t));
    out += text.size() * sizeof(char16_t);
  }
  void Escaped(std::u16string_view text, SdField field) { WriteEscaped(text, field, *this); }
};

struct Appender {
  CStringW text;

  void Plain(std::u16string_view piece) { text += piece; }
  void Escaped(std::u16string_view piece, SdField field) { WriteEscaped(piece, field, *this); }
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
  return Reader(keys, std::make_shared<SdTextBlock>(utf16Bytes), sink).Read();
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

CStringW SdKeyLine(std::u16string_view name) {
  Appender line;
  WriteKeyLine(name, line);
  return std::move(line.text);
}

CStringW SdEntryLine(const CSettingDataPair& pair) {
  Appender line;
  WriteEntryLine(pair, line);
  return std::move(line.text);
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
