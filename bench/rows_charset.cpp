// Conversions between charsets, and telling them apart.
#include "lumrmisc/charset/convert.h"
#include "lumrmisc/charset/detect.h"
#include "lumrmisc/charset/japanese.h"
#include "ours.h"
#include "peers.h"

namespace lumr::bench {
namespace {

constexpr double kNkfMark = 15;
constexpr std::size_t kMebibyte = std::size_t{1} << 20;
constexpr std::size_t kHeaderLine = 70;

Contender Convert(CodeType from, CodeType to) {
  return Ours([from, to](std::string_view text, CBuffer& out) {
    ConvertToOtherCodeType2(from, text, to, out);
  });
}

// One of the four functions between the Japanese byte forms.
template <auto Function>
Contender ConvertForm() {
  return Ours([](std::string_view text, CBuffer& out) {
    Function(text.data(), Length(text), out, nullptr);
  });
}

// The name that uchardet gives to what was detected.
std::string DetectedName(std::string_view text) {
  switch (DetectCodeType2(text)) {
    case CT_SJIS:
      return "SHIFT_JIS";
    case CT_EUC:
      return "EUC-JP";
    case CT_JIS:
      return "ISO-2022-JP";
    case CT_UTF8:
      return "UTF-8";
    case CT_ASCII:
      return "ASCII";
    case CT_UNICODE:
      return "UTF-16";
    default:
      return "unknown";
  }
}

// Japanese text, ASCII mail and random bytes, all in one charset.
std::vector<Input> MailInputs(const std::string& charset, double japaneseMark, double asciiMark) {
  return {{Corpus::kJapanese, charset, japaneseMark},
          {Corpus::kAscii, charset, asciiMark},
          {Corpus::kRandom, charset, 0}};
}

std::vector<Row> JapaneseRows() {
  return {
      {"Shift_JIS to UTF-16",
       MailInputs("CP932", 4, 8),
       Convert(CT_SJIS, CT_UNICODE),
       {Iconv("CP932", "UTF-16LE"), IcuDecode("windows-31j")}},
      {"UTF-16 to Shift_JIS",
       MailInputs("UTF-16LE", 3, 8),
       Convert(CT_UNICODE, CT_SJIS),
       {Iconv("UTF-16LE", "CP932"), IcuEncode("windows-31j")}},
      {"Shift_JIS to EUC-JP",
       MailInputs("CP932", 8, 8),
       ConvertForm<&ConvertSJisToEuc>(),
       {Iconv("CP932", "EUC-JP"), IcuConvert("windows-31j", "EUC-JP"),
        Marked(kNkfMark, Nkf({"-S", "-e", "-x", "-m0"}))}},
      {"EUC-JP to Shift_JIS",
       MailInputs("EUC-JP", 8, 8),
       ConvertForm<&ConvertEucToSJis>(),
       {Iconv("EUC-JP", "CP932"), IcuConvert("EUC-JP", "windows-31j"),
        Marked(kNkfMark, Nkf({"-E", "-s", "-x", "-m0"}))}},
      {"Shift_JIS to ISO-2022-JP",
       MailInputs("CP932", 8, 8),
       ConvertForm<&ConvertSJisToJis>(),
       {Iconv("CP932", "ISO-2022-JP"), IcuConvert("windows-31j", "ISO-2022-JP"),
        Marked(kNkfMark, Nkf({"-S", "-j", "-x", "-m0"}))}},
      {"ISO-2022-JP to Shift_JIS",
       MailInputs("ISO-2022-JP", 8, 8),
       ConvertForm<&ConvertJisToSJis>(),
       {Iconv("ISO-2022-JP", "CP932"), IcuConvert("ISO-2022-JP", "windows-31j"),
        Marked(kNkfMark, Nkf({"-J", "-s", "-x", "-m0"}))}},
  };
}

// Header lines: what a call costs before its first byte.
Row LineRow(Row row) {
  row.task += ", line by line";
  row.recordBytes = kHeaderLine;
  std::erase_if(row.inputs, [](const Input& input) { return input.corpus == Corpus::kRandom; });
  std::erase_if(row.peers, [](const Contender& peer) { return peer.name == "nkf command"; });
  for (Input& input : row.inputs) input.mark = 3;
  return row;
}

std::vector<Row> UnicodeRows() {
  return {
      {"windows-1252 to UTF-16",
       {{Corpus::kWestern, "CP1252", 2}, {Corpus::kAscii, "CP1252", 2}, {Corpus::kRandom, "", 0}},
       Convert(CT_WIN1252, CT_UNICODE),
       {Iconv("CP1252", "UTF-16LE"), IcuDecode("windows-1252")}},
      {"UTF-16 to windows-1252",
       {{Corpus::kWestern, "UTF-16LE", 2}, {Corpus::kAscii, "UTF-16LE", 2}},
       Convert(CT_UNICODE, CT_WIN1252),
       {Iconv("UTF-16LE", "CP1252"), IcuEncode("windows-1252")}},
      {"UTF-8 to UTF-16",
       MailInputs("UTF-8", 4, 4),
       Convert(CT_UTF8, CT_UNICODE),
       {Iconv("UTF-8", "UTF-16LE"), IcuUtf8ToUtf16(), GlibUtf8ToUtf16()}},
      {"UTF-16 to UTF-8",
       MailInputs("UTF-16LE", 4, 4),
       Convert(CT_UNICODE, CT_UTF8),
       {Iconv("UTF-16LE", "UTF-8"), IcuUtf16ToUtf8(), GlibUtf16ToUtf8()}},
  };
}

std::vector<Row> DetectionRows() {
  // Pure ASCII is UTF-8 to the peers and not to us: its answers are not compared.
  const auto anyAnswer = [](std::string_view) { return std::string(); };
  const auto isUtf8 = OursPlain(
      [](std::string_view text) { return std::string(1, IsUTF8(text) != 0 ? '1' : '0'); });
  return {
      {"IsUTF8",
       {{Corpus::kJapanese, "UTF-8", 5}, {Corpus::kWestern, "UTF-8", 5}},
       isUtf8,
       {GlibIsUtf8(), IcuIsUtf8()}},
      {"IsUTF8, ASCII only",
       {{Corpus::kAscii, "UTF-8", 5}},
       isUtf8,
       {GlibIsUtf8(), IcuIsUtf8()},
       nullptr,
       anyAnswer},
      MarkedFrom(kMebibyte, {"DetectCodeType2",
                             {{Corpus::kJapanese, "CP932", 20},
                              {Corpus::kJapanese, "EUC-JP", 20},
                              {Corpus::kJapanese, "ISO-2022-JP", 20},
                              {Corpus::kJapanese, "UTF-8", 20},
                              {Corpus::kAscii, "CP932", 20},
                              {Corpus::kRandom, "", 20}},
                             OursPlain(&DetectedName),
                             {Uchardet()}}),
  };
}

}  // namespace

std::vector<Row> CharsetRows() {
  std::vector<Row> rows = JapaneseRows();
  const std::vector<Row> japanese = rows;
  for (const auto& more : {UnicodeRows(), DetectionRows()}) {
    rows.insert(rows.end(), more.begin(), more.end());
  }
  for (const Row& row : japanese) rows.push_back(LineRow(row));
  return rows;
}

}  // namespace lumr::bench
