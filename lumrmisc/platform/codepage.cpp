#include "lumrmisc/platform/codepage.h"

#include <algorithm>
#include <cstring>

#include "lumrmisc/platform/codepage_internal.h"
#include "lumrmisc/platform/cpu.h"
#include "lumrmisc/platform/doublebyte_avx512_internal.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/singlebyte_avx2_internal.h"
#include "lumrmisc/platform/utf7_internal.h"
#include "lumrmisc/platform/utf8_internal.h"

namespace lumr {

namespace {

enum class Coding : unsigned char { kSingleByte, kDoubleByte, kUtf8, kUtf7, kUtf16 };

// What a code decodes to that the inner loop leaves to the slow path.
struct DecodeEscape {
  char16_t unit;
  ConversionLossKind kind;
};

}  // namespace

// A code page and its tables.
//
// Decoding: a byte is looked up in singles; the cell of a pair is cells[rows[lead] + trail -
// kFirstTrail]. Values among the surrogates are escapes (below). Pairs in allRows only, or with
// a trail byte below strictTrail, decode leniently: EUC-KR takes them from code page 949.
// Encoding: index gives the start in codes of each block of kEncodeBlock units.
struct CodePageTable {
  unsigned codePage;
  Coding coding;
  char16_t undefinedUnit;  // the lenient decoding of what has none of its own
  Byte strictTrail;
  const std::uint16_t* singles;
  const std::uint16_t* rows;
  const std::uint16_t* allRows;
  const std::uint16_t* cells;
  const DecodeEscape* escapes;
  const std::uint16_t* index;
  const std::uint16_t* codes;
  const std::uint16_t* fits;
};

namespace {

namespace tables {
#include "lumrmisc/platform/tables/cp932.inc"
#include "lumrmisc/platform/tables/cp936.inc"
#include "lumrmisc/platform/tables/cp949.inc"
#include "lumrmisc/platform/tables/cp950.inc"
#include "lumrmisc/platform/tables/singlebyte.inc"

#include "lumrmisc/platform/tables/codepages.inc"
}  // namespace tables

constexpr CodePageTable UnicodePage(unsigned codePage, Coding coding) {
  return {codePage, coding,  0,       0,       nullptr, nullptr,
          nullptr,  nullptr, nullptr, nullptr, nullptr, nullptr};
}

constexpr CodePageTable kUnicodeCodePages[] = {
    UnicodePage(1200, Coding::kUtf16),
    UnicodePage(65000, Coding::kUtf7),
    UnicodePage(65001, Coding::kUtf8),
};

// Escapes in decoding tables, as data/generate writes them.
constexpr std::uint16_t kUndefined = 0xD800;
constexpr std::uint16_t kFirstEscape = 0xD801;
constexpr std::uint16_t kLead = 0xDFFF;
constexpr std::uint16_t kNoRow = 0xFFFF;

// Vectors that come no further than this many bytes are not tried again soon.
constexpr std::ptrdiff_t kWorthwhile = 32;

constexpr bool IsEscape(std::uint16_t value) {
  return (value & 0xF800) == 0xD800;
}

// Values in encoding tables: 0 none, up to kFitByte an exact byte, kFitByte + byte, kFitPair +
// place in fits, from kFirstPair on an exact pair.
constexpr std::uint16_t kFitByte = 0x0100;
constexpr std::uint16_t kFitPair = 0x0200;

const CodePageTable& TableOrAnsi(unsigned codePage) {
  const CodePageTable* const table = FindCodePage(codePage);
  return table != nullptr ? *table : *FindCodePage(0);
}

std::uint16_t EncodeValue(const CodePageTable& table, char16_t unit) {
  return table.codes[table.index[unit / kEncodeBlock] + unit % kEncodeBlock];
}

// Decodes length bytes of which the tables say value, an escape or a unit that the code page
// proper does not have.
char* PutLossy(const CodePageTable& table, std::uint16_t value, const Byte* in, int length,
               char* out, Losses& losses) {
  DecodeEscape found{value, ConversionLossKind::kReplaced};
  if (value == kUndefined) {
    found.unit = table.undefinedUnit;
  } else if (IsEscape(value)) {
    found = table.escapes[value - kFirstEscape];
  }
  losses.Add(found.kind, in, length, out);
  return PutUnit(out, found.unit);
}

// Decodes what begins at in with a byte above 7F and may be anything but a strict pair; stays
// at in when that is a lead byte alone and more text is to come.
// An undefined pair uses up both bytes, whatever the second one is, except for a zero.
CoderEnds DecodeCode(const CodePageTable& table, const Byte* in, const Byte* end, bool last,
                     char* out, Losses& losses) {
  const std::uint16_t single = table.singles[*in];
  if (!IsEscape(single)) return {in + 1, PutUnit(out, single)};
  if (single != kLead) return {in + 1, PutLossy(table, single, in, 1, out, losses)};
  if (end - in < 2 && !last) return {in, out};
  if (end - in < 2 || in[1] == 0) return {in + 1, PutLossy(table, kUndefined, in, 1, out, losses)};
  const std::uint16_t value =
      in[1] < kFirstTrail ? kUndefined : table.cells[table.allRows[*in] + in[1] - kFirstTrail];
  return {in + 2, PutLossy(table, value, in, 2, out, losses)};
}

// Decodes the strict pairs that in begins with. ASCII has no row, so it ends them too.
CoderEnds DecodePairs(const CodePageTable& table, const Byte* in, const Byte* end, char* out) {
  const std::uint16_t* const rows = table.rows;
  const std::uint16_t* const cells = table.cells;
  const Byte strictTrail = table.strictTrail;
  for (; end - in >= 2; in += 2) {
    const unsigned row = rows[in[0]];
    const unsigned trail = in[1];
    if (row == kNoRow || trail < strictTrail) break;
    const std::uint16_t unit = cells[row + trail - kFirstTrail];
    if (IsEscape(unit)) break;
    out = PutUnit(out, unit);
  }
  return {in, out};
}

// What the vectors take for granted of the code pages whose strict pairs are all pairs.
constexpr bool HasLinearRows(const std::uint16_t* rows, bool hasKatakana) {
  for (int byte = 0; byte < 256; ++byte) {
    const bool isLead = byte >= kFirstLead && byte <= (hasKatakana ? 0xFC : 0xFE) &&
                        !(hasKatakana && byte >= 0xA0 && byte < 0xE0);
    if (rows[byte] != (isLead ? LinearRow(byte, hasKatakana) : kNoRow)) return false;
  }
  return true;
}
static_assert(HasLinearRows(tables::kRows932, true) && HasLinearRows(tables::kRows936, false) &&
              HasLinearRows(tables::kRows949, false) && HasLinearRows(tables::kRows950, false));

constexpr bool HasRun(const std::uint16_t* index, const UnitRun& run) {
  const int start = index[run.first / kEncodeBlock];
  for (int unit = run.first; unit <= run.last; unit += kEncodeBlock) {
    if (index[unit / kEncodeBlock] != start + unit - run.first) return false;
  }
  return true;
}

constexpr std::uint32_t Twice(int unit) {
  return 0x00010001u * static_cast<std::uint16_t>(unit);
}

constexpr EncodingTable MakeEncodingTable(const std::uint16_t* index, const std::uint16_t* codes) {
  EncodingTable table = {index, codes, true, {}};
  for (std::size_t i = 0; i < std::size(kCjkRuns); ++i) {
    const UnitRun& run = kCjkRuns[i];
    table.hasRuns &= HasRun(index, run);
    table.runs[i] = {Twice(run.first), Twice(run.last - run.first),
                     Twice(index[run.first / kEncodeBlock] - run.first)};
  }
  return table;
}

constexpr EncodingTable kEncodingTables[] = {
    MakeEncodingTable(tables::kIndex932, tables::kCodes932),
    MakeEncodingTable(tables::kIndex936, tables::kCodes936),
    MakeEncodingTable(tables::kIndex949, tables::kCodes949),
    MakeEncodingTable(tables::kIndex950, tables::kCodes950),
    MakeEncodingTable(tables::kIndex51949, tables::kCodes949),
};
static_assert(kEncodingTables[0].hasRuns && kEncodingTables[1].hasRuns);

const EncodingTable& EncodingTableOf(const CodePageTable& page) {
  const auto* table = kEncodingTables;
  while (table->index != page.index) ++table;
  return *table;
}

// Decodes the characters that begin before stop; false when one waits for more text.
bool DecodeDoubleBytePlain(const CodePageTable& table, const Byte*& in, const Byte* stop,
                           const Byte* end, bool last, char*& out, Losses& losses) {
  const Byte* const pairsEnd = stop == end ? end : stop + 1;
  while (in < stop) {
    if (*in < 0x80) {
      WidenAscii(in, stop, out);
      continue;
    }
    CoderEnds ends = DecodePairs(table, in, pairsEnd, out);
    if (ends.in == in) ends = DecodeCode(table, in, end, last, out, losses);
    if (ends.in == in) return false;
    in = ends.in;
    out = ends.out;
  }
  return true;
}

CoderEnds DecodeDoubleByte(const CodePageTable& table, const Byte* in, const Byte* end, bool last,
                           char* out, Losses& losses) {
  const bool vectors = Cpu().avx512 && table.rows == table.allRows;
  PlainStretch stretch(vectors);
  while (in != end) {
    const Byte* const begin = in;
    if (vectors) DecodeDoubleByteAvx512(table.cells, table.codePage == 932, in, end, out);
    const Byte* const stop = stretch.End(in, end, in - begin < kWorthwhile);
    if (!DecodeDoubleBytePlain(table, in, stop, end, last, out, losses)) break;
  }
  return {in, out};
}

char* DecodeBytes(const CodePageTable& table, const Byte* in, const Byte* end, char* out,
                  Losses& losses) {
  for (; in != end; ++in) {
    const std::uint16_t unit = table.singles[*in];
    out = IsEscape(unit) ? PutLossy(table, unit, in, 1, out, losses) : PutUnit(out, unit);
  }
  return out;
}

// Decodes eight bytes at once, and again one by one when one of them was an escape.
char* DecodeEight(const CodePageTable& table, const Byte* in, char* out, Losses& losses) {
  const std::uint16_t* const singles = table.singles;
  int escapes = 0;  // negative when there was one
  for (int i = 0; i < 8; ++i) {
    const std::uint16_t unit = singles[in[i]];
    escapes |= (unit ^ kUndefined) - 0x800;
    StoreUnit(out + 2 * i, unit);
  }
  return escapes < 0 ? DecodeBytes(table, in, in + 8, out, losses) : out + 16;
}

// In most languages ASCII letters and others alternate too often for a branch on each one: only
// a longer run of ASCII is worth asking for.
void DecodeBlock(const CodePageTable& table, const Byte*& in, char*& out, Losses& losses) {
  if (AreAsciiBytes(in, 32)) {
    out = WidenBytes<32>(in, out);
  } else {
    for (int i = 0; i < 32; i += 8) out = DecodeEight(table, in + i, out, losses);
  }
  in += 32;
}

CoderEnds DecodeSingleByte(const CodePageTable& table, const Byte* in, const Byte* end, char* out,
                           Losses& losses) {
  constexpr std::ptrdiff_t kWorthPreparing = 256;
  const bool vectors = Cpu().avx2;
  while (end - in >= 32) {
    if (vectors && end - in >= kWorthPreparing) DecodeSinglesAvx2(table.singles, in, end, out);
    if (end - in >= 32) DecodeBlock(table, in, out, losses);
  }
  return {end, DecodeBytes(table, in, end, out, losses)};
}

CoderEnds CopyBytes(const Byte* in, const Byte* end, char* out) {
  const auto size = static_cast<std::size_t>(end - in);
  if (size > 0) std::memcpy(out, in, size);
  return {end, out + size};
}

char* PutPair(char* out, std::uint16_t code) {
  return PutUnit(out, static_cast<char16_t>(code << 8 | code >> 8));
}

// Encodes the unit at in, which has no exact code.
char* PutUnfit(const CodePageTable& table, std::uint16_t value, std::string_view replacement,
               const Byte* in, char* out, Losses& losses) {
  losses.Add(value == 0 ? ConversionLossKind::kReplaced : ConversionLossKind::kFit, in, 2, out);
  if (value == 0) return out + replacement.copy(out, replacement.size());
  if (value >= kFitPair) return PutPair(out, table.fits[value - kFitPair]);
  *out++ = static_cast<char>(value);
  return out;
}

// Encodes the units with an exact pair that in begins with.
CoderEnds EncodePairs(const CodePageTable& table, const Byte* in, const Byte* end, char* out) {
  const std::uint16_t* const index = table.index;
  const std::uint16_t* const codes = table.codes;
  for (; end - in >= 2; in += 2) {
    const char16_t unit = LoadUnit(in);
    const std::uint16_t value = codes[index[unit / kEncodeBlock] + unit % kEncodeBlock];
    if (value < kFirstPair) break;
    out = PutPair(out, value);
  }
  return {in, out};
}

// Encodes the units before stop.
void EncodeDoubleBytePlain(const CodePageTable& table, std::string_view replacement,
                           const Byte*& in, const Byte* stop, char*& out, Losses& losses) {
  while (stop - in >= 2) {
    const char16_t unit = LoadUnit(in);
    if (unit < 0x80) {
      NarrowAscii(in, stop, out);
      continue;
    }
    const CoderEnds ends = EncodePairs(table, in, stop, out);
    if (ends.in != in) {
      in = ends.in;
      out = ends.out;
      continue;
    }
    const std::uint16_t value = EncodeValue(table, unit);
    if (value != 0 && value < kFitByte) {
      *out++ = static_cast<char>(value);
    } else {
      out = PutUnfit(table, value, replacement, in, out, losses);
    }
    in += 2;
  }
}

CoderEnds EncodeDoubleByte(const CodePageTable& table, std::string_view replacement, const Byte* in,
                           const Byte* end, char* out, Losses& losses) {
  const bool vectors = Cpu().avx512;
  const EncodingTable& encoding = EncodingTableOf(table);
  PlainStretch stretch(vectors);
  while (end - in >= 2) {
    const Byte* const begin = in;
    if (vectors) EncodeDoubleByteAvx512(encoding, in, end, out);
    const Byte* const stop = stretch.End(in, end, in - begin < kWorthwhile);
    EncodeDoubleBytePlain(table, replacement, in, stop, out, losses);
  }
  return {in, out};
}

CoderEnds EncodeUnits(const CodePageTable& table, std::string_view replacement, const Byte* in,
                      const Byte* end, char* out, Losses& losses) {
  for (; end - in >= 2; in += 2) {
    const std::uint16_t value = EncodeValue(table, LoadUnit(in));
    if (value < kFitByte && (value != 0 || LoadUnit(in) == 0)) {
      *out++ = static_cast<char>(value);
    } else {
      out = PutUnfit(table, value, replacement, in, out, losses);
    }
  }
  return {in, out};
}

// Encodes eight units at once, and again one by one when one of them has no exact code.
char* EncodeEight(const CodePageTable& table, std::string_view replacement, const Byte* in,
                  char* out, Losses& losses) {
  const std::uint16_t* const index = table.index;
  const std::uint16_t* const codes = table.codes;
  unsigned notExact = 0;  // bits above the low eight when there was a zero or a fit
  for (int i = 0; i < 8; ++i) {
    const char16_t unit = LoadUnit(in + 2 * i);
    const unsigned value = codes[index[unit / kEncodeBlock] + unit % kEncodeBlock];
    notExact |= value - 1;
    out[i] = static_cast<char>(value);
  }
  if (notExact <= 0xFF) return out + 8;
  return EncodeUnits(table, replacement, in, in + 16, out, losses).out;
}

CoderEnds EncodeSingleByte(const CodePageTable& table, std::string_view replacement, const Byte* in,
                           const Byte* end, char* out, Losses& losses) {
  for (; end - in >= 64; in += 64) {
    if (AreAsciiUnits(in, 32)) {
      out = NarrowUnits<32>(in, out);
      continue;
    }
    for (int i = 0; i < 64; i += 16) out = EncodeEight(table, replacement, in + i, out, losses);
  }
  return EncodeUnits(table, replacement, in, end, out, losses);
}

// Decodes a chunk. What is left of it waits for the next one; nothing is when it is the last.
CoderEnds DecodeChunk(const CodePageTable& table, Utf7State& utf7, const Byte* in, const Byte* end,
                      bool last, char* out, Losses& losses) {
  switch (table.coding) {
    case Coding::kSingleByte:
      return DecodeSingleByte(table, in, end, out, losses);
    case Coding::kDoubleByte:
      return DecodeDoubleByte(table, in, end, last, out, losses);
    case Coding::kUtf8:
      return DecodeUtf8(in, end, last, out, losses);
    case Coding::kUtf7:
      return DecodeUtf7(utf7, in, end, last, out, losses);
    case Coding::kUtf16:
      break;
  }
  return CopyBytes(in, end, out);
}

// Encodes a chunk, likewise.
CoderEnds EncodeChunk(const CodePageTable& table, std::string_view replacement, Utf7State& utf7,
                      const Byte* in, const Byte* end, bool last, char* out, Losses& losses) {
  const auto ends = [&]() -> CoderEnds {
    switch (table.coding) {
      case Coding::kSingleByte:
        return EncodeSingleByte(table, replacement, in, end, out, losses);
      case Coding::kDoubleByte:
        return EncodeDoubleByte(table, replacement, in, end, out, losses);
      case Coding::kUtf8:
        return EncodeUtf8(in, end, last, out, losses);
      case Coding::kUtf7:
        return EncodeUtf7(utf7, in, end, last, out);
      case Coding::kUtf16:
        break;
    }
    return CopyBytes(in, end, out);
  }();
  if (!last || ends.in == end) return ends;
  losses.Add(ConversionLossKind::kReplaced, ends.in, 1, ends.out);
  return {end, ends.out};
}

const Byte* BytesAt(std::string_view text) {
  return reinterpret_cast<const Byte*>(text.data());
}

}  // namespace

const CodePageTable* FindCodePage(unsigned codePage) {
  if (codePage == 0) codePage = AnsiCodePage();
  for (const CodePageTable& table : kUnicodeCodePages) {
    if (table.codePage == codePage) return &table;
  }
  for (const CodePageTable& table : tables::kTableCodePages) {
    if (table.codePage == codePage) return &table;
  }
  return nullptr;
}

bool IsCodePageSupported(unsigned codePage) {
  return FindCodePage(codePage) != nullptr;
}

int EncodeUnit(unsigned codePage, char16_t unit, bool exact) {
  const CodePageTable* const table = FindCodePage(codePage);
  if (table == nullptr || table->codes == nullptr) return -1;
  const int value = EncodeValue(*table, unit);
  if (unit == 0 || value >= kFirstPair || (value != 0 && value < kFitByte)) return value;
  if (value == 0 || exact) return -1;
  return value >= kFitPair ? table->fits[value - kFitPair] : value - kFitByte;
}

CodePageDecoder::CodePageDecoder(unsigned codePage) : table_(&TableOrAnsi(codePage)) {}

std::size_t MaxDecoded(std::size_t inputBytes) {
  // Each byte gives a unit at most; what UTF-7 keeps inside gives another one.
  return 2 * (inputBytes + 1);
}

std::size_t MaxEncoded(const CodePageTable& table, std::string_view replacement,
                       std::size_t inputBytes) {
  const std::size_t units = (inputBytes + 1) / 2;
  switch (table.coding) {
    case Coding::kSingleByte:
      return units * std::max<std::size_t>(1, replacement.size());
    case Coding::kDoubleByte:
      return units * std::max<std::size_t>(2, replacement.size());
    case Coding::kUtf8:
      return units * 3;
    case Coding::kUtf7:
      return units * 5 + 8;  // "+AKU-" for a unit alone; a run may have to be ended
    case Coding::kUtf16:
      break;
  }
  return inputBytes;
}

char* DecodeText(const CodePageTable& table, std::string_view in, char* out,
                 CodePageCounts& counts) {
  Losses losses(counts, nullptr);
  Utf7State utf7;
  return DecodeChunk(table, utf7, BytesAt(in), BytesAt(in) + in.size(), true, out, losses).out;
}

char* EncodeText(const CodePageTable& table, std::string_view replacement, std::string_view in,
                 char* out, CodePageCounts& counts) {
  Losses losses(counts, nullptr);
  Utf7State utf7;
  return EncodeChunk(table, replacement, utf7, BytesAt(in), BytesAt(in) + in.size(), true, out,
                     losses)
      .out;
}

std::size_t CodePageDecoder::MaxOutput(std::size_t inputBytes) const {
  return MaxDecoded(inputBytes + pendingSize_);
}

char* CodePageDecoder::Decode(std::string_view in, bool last, char* out,
                              CConversionReport* report) {
  const Byte* next = BytesAt(in);
  const Byte* const end = next + in.size();
  // What the last chunk left is completed byte by byte; then the chunk is read in place.
  while (pendingSize_ > 0 && next != end) {
    pending_[pendingSize_++] = *next++;
    out = DecodePart({pending_, pendingSize_}, false, out, report);
  }
  if (pendingSize_ > 0) {
    return last ? DecodePart({pending_, pendingSize_}, true, out, report) : out;
  }
  return DecodePart({next, end}, last, out, report);
}

char* CodePageDecoder::DecodePart(std::span<const unsigned char> part, bool last, char* out,
                                  CConversionReport* report) {
  const Byte* const begin = part.data();
  const Byte* const end = begin + part.size();
  Losses losses(counts_, report);
  losses.SetOrigin(begin, inputOffset_, out, outputOffset_);
  const CoderEnds ends = DecodeChunk(*table_, utf7_, begin, end, last, out, losses);
  inputOffset_ += ends.in - begin;
  outputOffset_ += ends.out - out;
  pendingSize_ = static_cast<std::size_t>(end - ends.in);
  if (pendingSize_ > 0) std::memmove(pending_, ends.in, pendingSize_);
  return ends.out;
}

CodePageEncoder::CodePageEncoder(unsigned codePage, std::string_view replacement)
    : CodePageEncoder(TableOrAnsi(codePage), replacement) {}

std::size_t CodePageEncoder::MaxOutput(std::size_t inputBytes) const {
  return MaxEncoded(*table_, replacement_, inputBytes + pendingSize_);
}

char* CodePageEncoder::Encode(std::string_view in, bool last, char* out,
                              CConversionReport* report) {
  const Byte* next = BytesAt(in);
  const Byte* const end = next + in.size();
  while (pendingSize_ > 0 && next != end) {
    pending_[pendingSize_++] = *next++;
    out = EncodePart({pending_, pendingSize_}, false, out, report);
  }
  if (pendingSize_ > 0) {
    return last ? EncodePart({pending_, pendingSize_}, true, out, report) : out;
  }
  return EncodePart({next, end}, last, out, report);
}

char* CodePageEncoder::EncodePart(std::span<const unsigned char> part, bool last, char* out,
                                  CConversionReport* report) {
  const Byte* const begin = part.data();
  const Byte* const end = begin + part.size();
  Losses losses(counts_, report);
  losses.SetOrigin(begin, inputOffset_, out, outputOffset_);
  const CoderEnds ends = EncodeChunk(*table_, replacement_, utf7_, begin, end, last, out, losses);
  inputOffset_ += ends.in - begin;
  outputOffset_ += ends.out - out;
  pendingSize_ = static_cast<std::size_t>(end - ends.in);
  if (pendingSize_ > 0) std::memmove(pending_, ends.in, pendingSize_);
  return ends.out;
}

}  // namespace lumr
