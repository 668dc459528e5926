// The text of a setting data file.
//
// UTF-16LE with a byte-order mark, lines ended by CR LF: "[DATA-START]", an empty line; for each
// key "[name]", a line "name=value" an entry, an empty line; "[DATA-END]", an empty line. Backslash
// escapes keep names and values in their lines: \\, \r and \n everywhere, \= and \[ in entry
// names. Both marks together tell a whole file from a truncated one; a zero unit, which no writer
// of the format makes, tells blocks that never reached the disk.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/settings/sdkey.h"

namespace lumr {

enum class SdDefectKind {
  kNone,
  // What makes a text unreadable.
  kBadKeyLine,  // a line that begins with "[" and does not end with "]"
  kBadEntry,    // a line without a name and an equals sign
  kZeroUnit,    // a line with a zero unit in it
  kNoKey,       // an entry before any key
  kNoStart,     // only the mark at the end
  kNoEnd,       // only the mark at the start
  // What reading mends by itself.
  kKeyTwice,   // the entries join the first key of the name
  kNameTwice,  // the last value counts
};

struct SdDefect {
  SdDefectKind kind = SdDefectKind::kNone;
  int line = 0;  // from 1, empty lines counted; 0: the text as a whole
  CStringW key;  // the key that the line belongs to; empty when there is none
  CStringW
      text;  // the line, its first 1000 units, without zero units; of what stands twice the name
};

// The id of the message for a defect that makes a text unreadable, else 0; and what the message
// quotes: the line, with the key where that helps to find it.
unsigned MessageIdOf(SdDefectKind kind);
CStringW QuotedBy(const SdDefect& defect);

struct SdTextReading {
  SdDefect error;                 // the first that makes the text unreadable
  std::vector<SdDefect> repairs;  // what was mended; the first 100
  bool repaired = false;
};

// Takes the defects of a text, in the order of the lines.
using SdDefectSink = std::function<void(const SdDefect&)>;

// Reads a text given as bytes into keys, which must be empty. Stops at the first error; keys then
// holds what was read before it. With a sink, reading goes on to the end, leaving out the lines
// that cannot be read and what stands under a key line that cannot.
SdTextReading ReadSdText(std::string_view utf16Bytes, SdKeyList& keys,
                         const SdDefectSink& sink = nullptr);

// Writes keys as text, byte-order mark first, in place of what out holds.
void WriteSdText(const SdKeyList& keys, CBuffer& out);

// The line of a key and of an entry, without its end.
CStringW SdKeyLine(std::u16string_view name);
CStringW SdEntryLine(const CSettingDataPair& pair);

// Whether a name can stand for a key, or an entry: a key named like one of the two marks, an entry
// without a name, and a zero unit would make a file that does not read back.
bool IsSdKeyName(std::u16string_view name);
bool IsSdEntryName(std::u16string_view name);
bool IsSdValue(std::u16string_view value);

}  // namespace lumr
