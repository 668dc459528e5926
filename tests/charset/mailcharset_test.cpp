#include "lumrmisc/charset/mailcharset.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "charset/convert_text.h"
#include "charset/corpus.h"
#include "lumrmisc/charset/detect.h"

namespace lumr {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
namespace fs = std::filesystem;

constexpr CharsetSource kLabel = CharsetSource::kLabel;
constexpr CharsetSource kLenient = CharsetSource::kLabelLenient;
constexpr CharsetSource kNoLabel = CharsetSource::kNoLabel;
constexpr CharsetSource kUnknown = CharsetSource::kUnknownLabel;
constexpr CharsetSource kLies = CharsetSource::kLabelLies;

TEST(CodeTypeOfMailLabel, KnowsTheNamesOfMail) {
  const struct {
    std::string_view label;
    CodeType codeType;
  } cases[] = {{"", CT_UNKNOWN},
               {" \"ISO-2022-JP\" ", CT_JIS},
               {"iso-2022-jp*ja", CT_JIS},
               {"CP932", CT_SJIS},
               {"Windows-31J", CT_SJIS},
               {"eucJP-ms", CT_EUC},
               {"cp50220", CT_JIS},
               {"gbk", CT_GB2312},
               {"uhc", CT_KSC5601},
               {"latin1", CT_ISO8859_1},
               {"unicode-1-1-utf-7", CT_UTF7},
               {"UTF-16BE", CT_UNICODE},
               {"sjis ms932", CT_UNKNOWN},
               {"jis ", CT_JIS},
               {"iso-8859-15", CT_UNKNOWN},
               {"gb18030", CT_UNKNOWN},
               {"x-unknown", CT_UNKNOWN},
               {"*", CT_UNKNOWN}};
  for (const auto& c : cases) {
    EXPECT_EQ(CodeTypeOfMailLabel(c.label), c.codeType) << c.label;
  }
  EXPECT_EQ(CodeTypeOfMailLabel(std::string(100000, 'x')), CT_UNKNOWN);
  for (const CodeType codeType : AllCodeTypes()) {
    for (const char* const name : CharSetNames(codeType)) {
      EXPECT_EQ(CodeTypeOfMailLabel(name), codeType) << name;
    }
  }
}

TEST(CodeTypeOfMailLabel, TellsTheOrderOfUtf16) {
  for (const auto& [label, order] : {std::pair{"utf-16be", Utf16Order::kBigEndian},
                                     {"utf-16le", Utf16Order::kByMark},
                                     {"UTF-16", Utf16Order::kByMark},
                                     {"utf-8", Utf16Order::kLittleEndian}}) {
    Utf16Order found = Utf16Order::kBigEndian;
    CodeTypeOfMailLabel(label, &found);
    EXPECT_EQ(found, order) << label;
  }
}

TEST(CodeTypeOfMailLabel, AgreesWithTheWebStandard) {
  LUMR_NEEDS_CORPUS();
  // The standard reads some small sets as the larger ones around them.
  const std::map<std::string, std::set<CodeType>> kTypes = {
      {"UTF-8", {CT_UTF8}},
      {"ISO-8859-2", {CT_ISO8859_2}},
      {"ISO-8859-4", {CT_ISO8859_4}},
      {"ISO-8859-5", {CT_ISO8859_5}},
      {"ISO-8859-7", {CT_ISO8859_7}},
      {"KOI8-R", {CT_KOI8R}},
      {"windows-1250", {CT_WIN1250}},
      {"windows-1251", {CT_WIN1251}},
      {"windows-1252", {CT_WIN1252, CT_ISO8859_1, CT_ASCII}},
      {"windows-1253", {CT_WIN1253}},
      {"windows-1254", {CT_WIN1254, CT_ISO8859_9}},
      {"windows-1257", {CT_WIN1257}},
      {"GBK", {CT_GB2312}},
      {"Big5", {CT_BIG5, CT_UNKNOWN}},  // big5-hkscs has more characters
      {"EUC-JP", {CT_EUC}},
      {"ISO-2022-JP", {CT_JIS}},
      {"Shift_JIS", {CT_SJIS}},
      {"EUC-KR", {CT_EUCKR, CT_KSC5601}},
      {"UTF-16BE", {CT_UNICODE}},
      {"UTF-16LE", {CT_UNICODE}},
  };
  const std::string json = ReadCorpus("charset/tables/whatwg-encodings.json");
  std::vector<std::string> labels;
  int known = 0;
  for (std::size_t pos = json.find('"'); pos != json.npos; pos = json.find('"', pos)) {
    const std::size_t end = json.find('"', ++pos);
    const std::string text = json.substr(pos, end - pos);
    pos = end + 1;
    if (text == "labels") labels.clear();
    const auto types = kTypes.find(text);
    if (types == kTypes.end()) {
      labels.push_back(text);
      continue;
    }
    for (const std::string& label : labels) {
      if (label == "name" || label == "labels") continue;
      ++known;
      EXPECT_TRUE(types->second.count(CodeTypeOfMailLabel(label))) << label << ", " << text;
    }
    labels.clear();
  }
  EXPECT_GT(known, 100);
}

TEST(ResolveMailCharset, ChecksTheLabelAgainstTheBytes) {
  const std::string kanaEuc = Encoded("こんにちは、世界", CT_EUC);
  const std::string kanaSJis = Encoded("こんにちは、世界", CT_SJIS);
  const std::string kanaJis = Encoded("こんにちは、世界", CT_JIS);
  const std::string kanaUtf8 = "こんにちは、世界";
  const struct {
    const char* what;
    std::string_view label;
    std::string text;
    MailCharset expected;
  } cases[] = {
      {"nothing", "", "", {CT_ASCII, kNoLabel}},
      {"labelled nothing", "utf-8", "", {CT_UTF8, kLabel}},
      {"ASCII under a label", "euc-jp", "a", {CT_EUC, kLabel}},
      {"ASCII without label", "", "pS", {CT_ASCII, kNoLabel}},
      {"an unknown label", "badcharset", kanaSJis, {CT_SJIS, kUnknown}},
      {"right labels", "shift_jis", kanaSJis, {CT_SJIS, kLabel}},
      {"", "euc-jp", kanaEuc, {CT_EUC, kLabel}},
      {"", "iso-2022-jp", kanaJis, {CT_JIS, kLabel}},
      {"", "utf-8", kanaUtf8, {CT_UTF8, kLabel}},
      {"no labels", "", kanaSJis, {CT_SJIS, kNoLabel}},
      {"", "", kanaEuc, {CT_EUC, kNoLabel}},
      {"", "", kanaJis, {CT_JIS, kNoLabel}},
      {"", "", kanaUtf8, {CT_UTF8, kNoLabel}},
      {"raw bytes under ISO-2022-JP", "iso-2022-jp", kanaUtf8, {CT_UTF8, kLies}},
      {"", "iso-2022-jp", kanaEuc, {CT_EUC, kLies}},
      {"", "iso-2022-jp", kanaSJis, {CT_SJIS, kLies}},
      {"escapes and 8-bit katakana", "iso-2022-jp", kanaJis + "\xB1", {CT_JIS, kLenient}},
      {"bad escapes", "iso-2022-jp", "\x1B$Z", {CT_JIS, kLenient}},
      {"raw bytes under US-ASCII", "us-ascii", kanaUtf8, {CT_UTF8, kLies}},
      {"", "us-ascii", kanaEuc, {CT_EUC, kLies}},
      {"", "us-ascii", "caf\xE9", {CT_WIN1252, kLies}},
      {"escapes under another label", "utf-8", kanaJis, {CT_JIS, kLies}},
      {"a terminal's escape", "utf-8", "\x1B(B\x1B[m", {CT_UTF8, kLabel}},
      {"Shift_JIS under UTF-8", "utf-8", kanaSJis, {CT_SJIS, kLies}},
      {"UTF-8 under Shift_JIS", "shift_jis", kanaUtf8 + "あ", {CT_UTF8, kLies}},
      {"UTF-8 that was cut", "utf-8", kanaUtf8.substr(0, 8), {CT_UTF8, kLenient}},
      {"unlabelled", "", kanaUtf8.substr(0, 8), {CT_UTF8, kNoLabel}},
      {"a bad byte in UTF-8", "utf-8", kanaUtf8 + "\xFF" + kanaUtf8, {CT_UTF8, kLenient}},
      {"EUC-JP that was cut, like UTF-8", "euc-jp", "\xC2\xBF\xA4\xAF\xA4", {CT_EUC, kLenient}},
      {"UTF-8 with a cut character", "", "От: \xF1 " + std::string("Юникод"), {CT_UTF8, kNoLabel}},
      {"", "koi8-r", kanaUtf8 + "\xFF " + kanaUtf8, {CT_UTF8, kLies}},
      {"", "shift_jis", "От: \xF1 " + std::string("Юникод"), {CT_UTF8, kLies}},
      {"Shift_JIS that is UTF-8 but for its first byte",
       "",
       Encoded("青空文庫作成", CT_SJIS),
       {CT_SJIS, kNoLabel}},
      {"UTF-8 under a Western label", "iso-8859-1", "caf\xC3\xA9", {CT_UTF8, kLies}},
      {"UTF-8 under a Cyrillic label", "koi8-r", "caf\xC3\xA9", {CT_UTF8, kLies}},
      {"Japanese under a Western label", "iso-8859-1", kanaSJis, {CT_SJIS, kLies}},
      {"", "windows-1252", kanaEuc, {CT_EUC, kLies}},
      {"Western under a Western label", "iso-8859-1", "caf\xE9 na\xEFve", {CT_ISO8859_1, kLabel}},
      {"quotes of windows-1252", "iso-8859-1", "it\x92s", {CT_WIN1252, kLabel}},
      {"quotes without label", "", "it\x92s an \x93\xE9t\xE9\x94", {CT_WIN1252, kNoLabel}},
      {"Finnish", "", "h\xE4\xE4y\xF6\xF6", {CT_WIN1252, kNoLabel}},
      {"pound signs", "", "\xA3 5, \xA3 7", {CT_WIN1252, kNoLabel}},
      {"a name in Shift_JIS", "", Encoded("山田太郎", CT_SJIS), {CT_SJIS, kNoLabel}},
      {"a name in EUC-JP", "", Encoded("山田太郎", CT_EUC), {CT_EUC, kNoLabel}},
      {"half-width katakana", "", Encoded("ﾃﾞｰﾀ", CT_SJIS), {CT_SJIS, kNoLabel}},
      {"its other mark", "", Encoded("ﾊﾟﾘﾉ", CT_SJIS), {CT_SJIS, kNoLabel}},
      {"a character of UHC", "euc-kr", "\xB0\xA1\x8C\x63", {CT_KSC5601, kLabel}},
      {"KS X 1001 alone", "euc-kr", "\xB0\xA1", {CT_EUCKR, kLabel}},
      {"ISO-8859-15 as -1", "iso-8859-15", "caf\xE9", {CT_ISO8859_1, kLabel}},
      {"its euro", "iso-8859-15", "5 \xA4", {CT_ISO8859_1, kLenient}},
      {"GB18030 as GBK", "gb18030", "\xB0\xA1", {CT_GB2312, kLabel}},
      {"its four bytes", "gb18030", "\xB0\xA1\x81\x39\xEE\x39", {CT_GB2312, kLenient}},
      {"big-endian", "utf-16be", "\x30\x42\0\x0A"s, {CT_UNICODE, kLabel, Utf16Order::kBigEndian}},
      {"marked", "utf-16", "\xFE\xFF\x30\x42", {CT_UNICODE, kLabel, Utf16Order::kByMark}},
      {"unmarked", "utf-16", "\0a\0b"s, {CT_UNICODE, kLabel, Utf16Order::kBigEndian}},
      {"unmarked", "utf-16", "a\0b\0"s, {CT_UNICODE, kLabel, Utf16Order::kByMark}},
      {"odd", "utf-16le", "a\0b"s, {CT_UNICODE, kLenient, Utf16Order::kByMark}},
      {"ASCII under UTF-16", "utf-16", "abc", {CT_ASCII, kLies}},
      {"UTF-8 under UTF-16", "utf-16le", kanaUtf8, {CT_UTF8, kLies}},
      {"Shift_JIS behind ASCII under UTF-16",
       "utf-16",
       std::string(2000, 'a') + std::string(kanaSJis),
       {CT_SJIS, kLies}},
      {"a mark", "", "\xFF\xFE\x42\x30", {CT_UNICODE, kNoLabel, Utf16Order::kByMark}},
      {"a mark under UTF-8", "utf-8", "\xFF\xFE\x42\x30", {CT_UNICODE, kLies, Utf16Order::kByMark}},
      {"a stray zero byte", "", "Hello world, here \0 stands"s, {CT_ASCII, kNoLabel}},
      {"unmarked, no label", "", "\0a\0b\x30\x42"s, {CT_UNICODE, kNoLabel, Utf16Order::kBigEndian}},
      {"a stray zero byte",
       "",
       kanaSJis + kanaSJis + kanaSJis + kanaSJis + "\0a"s,
       {CT_SJIS, kNoLabel}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.what) + ", " + std::string(c.label) + ": " + Shown(c.text));
    const MailCharset resolved = ResolveMailCharset(c.label, c.text);
    EXPECT_EQ(resolved.codeType, c.expected.codeType);
    EXPECT_EQ(resolved.source, c.expected.source);
    EXPECT_EQ(resolved.order, c.expected.order);
  }
}

TEST(ConvertMailText, GivesUtf16WithoutMark) {
  const struct {
    MailCharset charset;
    std::string_view text, utf16;
  } cases[] = {
      {{CT_JIS, kLabel}, "\x1B$B$\"", "\x42\x30"},
      {{CT_UTF8, kLabel}, "\xEF\xBB\xBF\xE3\x81\x82", "\x42\x30"},
      {{CT_UNICODE, kLabel}, "\xFF\xFE\x42\x30", "\x42\x30"},
      {{CT_UNICODE, kLabel, Utf16Order::kByMark}, "\xFE\xFF\x30\x42", "\x42\x30"},
      {{CT_UNICODE, kLabel, Utf16Order::kBigEndian}, "\x30\x42", "\x42\x30"},
      {{CT_UTF8, kLabel}, "", ""},
  };
  for (const auto& c : cases) {
    CBuffer out("left over");
    EXPECT_EQ(ConvertMailText(c.charset, c.text, out), 0);
    EXPECT_EQ(Shown(out.Bytes()), Shown(c.utf16));
  }
}

// ---- Real texts ----

// Calls visit with the path and the folder's name of every text of known encoding.
template <typename Visit>
void ForEachText(Visit visit) {
  for (const auto& entry : fs::recursive_directory_iterator(CorpusPath() / "charset")) {
    const fs::path path = entry.path();
    const std::string folder = path.parent_path().filename().string();
    const bool isText = entry.is_regular_file() && folder != "tables" && folder != "sweeps";
    if (isText && path.stem().extension() != ".utf8") visit(path, folder);
  }
}

TEST(Corpus, LabelledTextsAreBelieved) {
  LUMR_NEEDS_CORPUS();
  // Sets that the library has no table of.
  const std::set<std::string> kLossy = {"euc-jisx0213", "shift_jisx0213", "gb18030", "johab"};
  int compared = 0;
  ForEachText([&](const fs::path& path, const std::string& folder) {
    SCOPED_TRACE(path);
    const std::string text = ReadCorpus(path);
    const CodeType codeType = CodeTypeOfMailLabel(folder);
    const MailCharset resolved = ResolveMailCharset(folder, text);
    if (codeType != CT_UNKNOWN) {
      EXPECT_EQ(resolved.codeType, codeType);
      EXPECT_EQ(resolved.source, kLabel);
    }
    // Beside some stands the same text in UTF-8.
    fs::path twin = path;
    twin.replace_extension(".utf8.txt");
    if (!fs::exists(twin) || kLossy.count(folder)) return;
    CBuffer utf16;
    EXPECT_EQ(ConvertMailText(resolved, text, utf16), 0);
    EXPECT_EQ(Decoded(CT_UNICODE, utf16.Bytes()), ReadCorpus(twin));
    ++compared;
  });
  EXPECT_GT(compared, 6);
}

// Without labels the encodings that Japanese mail comes in are told from one another, and from
// all others, which are not guessed at: single-byte and other Asian sets read as Western. Plain
// detection misses some.
TEST(Corpus, UnlabelledTextsAreDetected) {
  LUMR_NEEDS_CORPUS();
  const std::map<std::string, CodeType> kMisses = {
      {"utf-16be/chardet-nobom-utf16be.txt", CT_ASCII},     // no mark
      {"utf-16be/chardet-plane1-utf-16be.html", CT_ASCII},  // no mark
      {"utf-16be/uchardet-ja.txt", CT_SJIS},                // no mark
      {"utf-16le/chardet-plane1-utf-16le.html", CT_ASCII},  // characters outside Shift_JIS
  };
  const std::set<CodeType> kDetected = {CT_ASCII, CT_JIS, CT_EUC, CT_SJIS, CT_UTF8, CT_UNICODE};
  ForEachText([&](const fs::path& path, const std::string& folder) {
    SCOPED_TRACE(path);
    const std::string text = ReadCorpus(path);
    CodeType expected = CodeTypeOfMailLabel(folder);
    if (kDetected.count(expected)) {
      const auto miss = kMisses.find(folder + "/" + path.filename().string());
      EXPECT_EQ(ExplainDetection(text).codeType, miss != kMisses.end() ? miss->second : expected);
    }
    if (folder == "shift_jisx0213") expected = CT_SJIS;
    if (folder == "euc-jisx0213") expected = CT_EUC;
    if (!kDetected.count(expected)) expected = CT_WIN1252;
    EXPECT_EQ(ResolveMailCharset("", text).codeType, expected);
  });
}

TEST(Corpus, MailThatSaysIso2022JpAndHoldsRawBytes) {
  LUMR_NEEDS_CORPUS();
  const struct {
    const char* name;
    CodeType codeType;
  } cases[] = {{"sisimai-dos-lhost-mfilter-01", CT_UTF8},
               {"sisimai-err-make-test-09", CT_UTF8},
               {"sisimai-err-make-test-11", CT_UTF8},
               {"sisimai-lhost-kddi-01", CT_UTF8},
               {"sisimai-mac-lhost-kddi-01", CT_UTF8},
               {"sisimai-mac-lhost-mfilter-01", CT_UTF8},
               {"tmail-simple", CT_UTF8},
               {"sisimai-lhost-ezweb-02", CT_EUC},
               {"sisimai-lhost-ezweb-05", CT_EUC},
               {"tmail-test", CT_EUC}};
  for (const auto& c : cases) {
    const std::string mail = ReadCorpus("mail/"s + c.name + ".eml");
    EXPECT_EQ(ResolveMailCharset("iso-2022-jp", mail), (MailCharset{c.codeType, kLies})) << c.name;
  }
}

}  // namespace
}  // namespace lumr
