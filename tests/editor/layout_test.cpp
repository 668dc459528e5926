#include "lumrmisc/editor/layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>

#include "editor/font_window.h"
#include "editor/text.h"
#include "editor/turning_model.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/editor/quote.h"
#include "search/sample.h"

namespace lumr {
namespace {

using namespace std::string_literals;
using testing::Fill;
using testing::FontWidth;
using testing::FontWindow;
using testing::TextIn;
using testing::TurningModel;

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t pos = 0; (pos = text.find(from, pos)) != std::string::npos; pos += to.size()) {
    text.replace(pos, from.size(), to);
  }
  return text;
}

// Every row of the table, in Shift_JIS and in UTF-16: what is laid out must be what a reader of
// the table expects, and the model agrees with it.
TEST(LayoutLine, TurnsAsTheTableSays) {
  std::ifstream file(LUMRMISC_TEST_DATA "/editor/turning.tsv");
  int rows = 0;
  for (std::string row; std::getline(file, row);) {
    if (row.empty() || row[0] == '#') continue;
    SCOPED_TRACE(row);
    std::istringstream fields(row);
    std::string flag, width, shown, expected;
    std::getline(fields, flag, '\t');
    std::getline(fields, width, '\t');
    std::getline(fields, shown, '\t');
    std::getline(fields, expected, '\t');
    const std::string utf8 = Replaced(Replaced(shown, "␣", " "), "→", "\t");
    CEditorMetrics metrics;
    metrics.NoTurnURL = flag == "url";
    metrics.NoTurnQuoted = flag == "quoted";
    for (const CodeType codeType : {CT_SJIS, CT_UNICODE}) {
      const std::string text = TextIn(codeType, utf8);
      CEditorLineMetrics bundle;
      Fill(bundle, metrics, codeType, kTurnAtColumns, std::stoi(width));
      std::vector<CUrlRange> urls;
      LinkFinder(codeType).FindAll(text, urls);
      const int quote = QuotePrefixLength(bundle, text) > 0 ? 0 : -1;
      CPhysicalLines lines;
      LayoutLine(bundle, {text, urls, quote}, 0, lines);
      std::string pieces;
      for (int i = 0; i < lines.Count(); ++i) {
        const auto begin = static_cast<std::size_t>(lines[i].start);
        const auto end = static_cast<std::size_t>(lines.EndOf(i, static_cast<int>(text.size())));
        const std::string piece = text.substr(begin, end - begin);
        EXPECT_EQ(lines[i].columns, CountColumns(bundle, piece));
        EXPECT_EQ(lines[i].pixels, lines[i].columns * 8);
        pieces += (i > 0 ? "⏎" : "") + testing::Utf8Of(codeType, piece);
      }
      EXPECT_EQ(Replaced(Replaced(pieces, " ", "␣"), "\t", "→"), expected) << codeType;
    }
    ++rows;
  }
  EXPECT_GE(rows, 300);
}

// ---- Random lines

// Texts that are mostly what rules are about; in Shift_JIS with stray halves of characters.
class RandomLines {
 public:
  explicit RandomLines(unsigned seed) : random_(seed) {}

  int Below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }

  std::string Text(CodeType codeType, int characters) {
    static const std::vector<std::string> kCommon = {
        "あ", "漢", "ー", "、", "。", "」", "「", "（", "）", "！", "ｱ", "ﾞ",
        "a",  "Z",  "7",  "b",  "c",  " ",  " ",  "\t", ".",  ",",  "(", ")",
        "[",  "]",  "-",  "/",  ">",  "|",  "　", "々", "…",  "А",  "─", "～"};
    static const std::string kBytes[] = {"\x81",     "\xFC", "\xE0\xE0", "\x9F\x9F",
                                         "\x81\x7F", "\x40", "\x80",     "\xA0",
                                         "\xFD",     "\xFF", "\x89",     "\x01"};
    static const std::u16string kUnits = u"\xD83D\xDE00\x0301\x30A0\xFF5E\xFEFF\x00E9\xDC00\x1100";
    std::string text;
    const bool rich = Below(3) == 0;  // of two characters only
    const int first = Below(static_cast<int>(kCommon.size()));
    for (int i = 0; i < characters; ++i) {
      if (Below(12) == 0) {
        const auto unit = static_cast<std::size_t>(Below(static_cast<int>(kUnits.size())));
        text += codeType == CT_UNICODE ? std::string(BytesOf(kUnits).substr(2 * unit, 2))
                                       : kBytes[Below(static_cast<int>(std::size(kBytes)))];
      } else {
        const int any = Below(static_cast<int>(kCommon.size()));
        const int chosen = rich && Below(4) != 0 ? first : any;
        text += TextIn(codeType, kCommon[static_cast<std::size_t>(chosen)]);
      }
    }
    return text;
  }

  // Links from some character on, on borders of characters.
  void Urls(const std::vector<std::size_t>& borders, int from, std::vector<CUrlRange>& urls) {
    std::size_t i = 0;
    while (i < borders.size() && static_cast<int>(borders[i]) < from) ++i;
    for (i += static_cast<std::size_t>(Below(8)); i + 1 < borders.size();
         i += static_cast<std::size_t>(Below(8))) {
      const std::size_t end =
          std::min(i + 1 + static_cast<std::size_t>(Below(12)), borders.size() - 1);
      urls.push_back({static_cast<int>(borders[i]), static_cast<int>(borders[end] - borders[i]),
                      1 + Below(3)});
      i = end;
    }
  }

 private:
  std::mt19937 random_;
};

std::vector<std::size_t> BordersOf(std::string_view text, bool wide) {
  std::vector<std::size_t> borders = {0};
  for (const auto& c : testing::CharactersOf(text, wide))
    borders.push_back(borders.back() + c.size());
  return borders;
}

std::vector<testing::ModelLine> Shown(const CPhysicalLines& lines) {
  std::vector<testing::ModelLine> shown;
  for (const CPhysicalLine& line : lines.Items()) {
    shown.push_back({line.start, line.columns, line.pixels});
  }
  return shown;
}

std::string Dump(std::string_view text) {
  std::string dump;
  char hex[4];
  for (const char c : text) {
    std::snprintf(hex, sizeof hex, "%02X ", static_cast<unsigned>(static_cast<unsigned char>(c)));
    dump += hex;
  }
  return dump;
}

// The smaller of the changed byte and the first start that only one of two layouts has.
int FirstDifference(const CPhysicalLines& a, const CPhysicalLines& b, int changed) {
  for (int i = 0; i < std::max(a.Count(), b.Count()); ++i) {
    if (i < a.Count() && i < b.Count() && a[i].start == b[i].start) continue;
    if (i < a.Count()) changed = std::min(changed, a[i].start);
    if (i < b.Count()) changed = std::min(changed, b[i].start);
    break;
  }
  return changed;
}

// Layout from scratch against the model, and after edits against layout from scratch.
template <typename Metrics>
void CheckRandomLines(CodeType codeType, int mode, Metrics& bundle,
                      int (*pixelsOf)(const std::string&), unsigned seed, int rounds) {
  const bool wide = codeType == CT_UNICODE;
  RandomLines random(seed);
  CPhysicalLines lines;  // reused: what an earlier line left in it must not show
  for (int round = 0; round < rounds; ++round) {
    CEditorMetrics metrics;
    metrics.NoTurnURL = random.Below(2);
    metrics.TabColumn = 1 + random.Below(9);
    const int limit = 1 + round % 80;
    Fill(bundle, metrics, codeType, mode, mode == kTurnAtPixels ? limit * 7 : limit);
    TurningModel model{
        wide,
        mode,
        bundle.Limit(),
        metrics.TabColumn,
        metrics.NoTurnURL != 0,
        testing::CharactersOf(TextIn(codeType, testing::Utf8Of(CT_SJIS, metrics.Head2Prev.Bytes())),
                              wide),
        testing::CharactersOf(TextIn(codeType, testing::Utf8Of(CT_SJIS, metrics.Tail2Next.Bytes())),
                              wide),
        pixelsOf};
    std::string text = random.Text(codeType, random.Below(120));
    std::vector<CUrlRange> urls;
    random.Urls(BordersOf(text, wide), 0, urls);
    LayoutLine(bundle, {text, urls}, 0, lines);
    for (int edit = 0;; ++edit) {
      SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(round) + " limit " +
                   std::to_string(limit) + " edit " + std::to_string(edit) + ": " + Dump(text));
      ASSERT_EQ(Shown(lines), model.Turn(text, urls));
      if (edit == 3) break;
      // An edit anywhere, often at the end, in byte text in the middle of a character too.
      const int size = static_cast<int>(text.size());
      const bool grows = random.Below(3) == 0;
      int pos = grows ? size : random.Below(size + 1);
      if (wide) pos -= pos % 2;
      const int removed = random.Below(3) == 0 ? random.Below(9) * 2 : 0;
      const auto at = static_cast<std::size_t>(pos);
      text.replace(at, std::min<std::size_t>(static_cast<std::size_t>(removed), text.size() - at),
                   random.Text(codeType, random.Below(4)));
      LineChange change(pos);
      const auto borders = BordersOf(text, wide);
      const auto border = std::prev(std::upper_bound(borders.begin(), borders.end(), at));
      change.border = random.Below(2) == 0 ? 0 : static_cast<int>(*border);
      const auto stale = std::find_if(urls.begin(), urls.end(),
                                      [pos](const CUrlRange& url) { return url.End() >= pos; });
      if (stale != urls.end()) change.first = std::min(pos, stale->start);
      urls.erase(stale, urls.end());
      const int from = urls.empty() ? pos : std::max(pos, urls.back().End());
      random.Urls(BordersOf(text, wide), from, urls);
      CPhysicalLines before = lines, scratch;
      const int differs = LayoutLine(bundle, {text, urls}, change, lines);
      LayoutLine(bundle, {text, urls}, 0, scratch);
      ASSERT_TRUE(std::ranges::equal(lines.Items(), scratch.Items()));
      ASSERT_EQ(differs,
                FirstDifference(before, scratch,
                                std::min<int>(change.first, static_cast<int>(text.size()))));
    }
  }
}

constexpr int kRounds = kSampleStep > 1 ? 200 : 1600;

TEST(LayoutLine, IsTheModelAndRelayoutIsLayout) {
  for (const CodeType codeType : {CT_SJIS, CT_UNICODE}) {
    for (const int mode : {kTurnAtColumns, kTurnAtPixels}) {
      CEditorLineMetrics columns;
      CheckRandomLines(codeType, mode, columns, nullptr, 1u, kRounds);
      FontWindow::State state;
      FontWindow window(state);
      {
        CEditorLineFontMetrics font;
        font.SetFont(&window, CFontInfo());
        CheckRandomLines(codeType, mode, font, FontWidth, 2u, kRounds);
        font.SetFont(&window, CFontInfo());  // the old context goes back first
        EXPECT_EQ(state.taken, 1);
      }
      EXPECT_EQ(state.taken, 0);
    }
  }
}

TEST(LayoutLine, NarrowAndWideTextTurnAlike) {
  RandomLines random(3);
  for (int round = 0; round < kRounds / 8; ++round) {
    const std::string narrow = TextIn(CT_SJIS, testing::Utf8Of(CT_SJIS, random.Text(CT_SJIS, 60)));
    CBuffer wide;
    if (ConvertToOtherCodeType2(CT_SJIS, narrow, CT_UNICODE, wide) != 0) continue;
    CPhysicalLines lines[2];
    CEditorLineMetrics bundle;
    Fill(bundle, CEditorMetrics(), CT_SJIS, kTurnAtColumns, 1 + round % 80);
    LayoutLine(bundle, {narrow}, 0, lines[0]);
    Fill(bundle, CEditorMetrics(), CT_UNICODE, kTurnAtColumns, 1 + round % 80);
    LayoutLine(bundle, {wide.Bytes()}, 0, lines[1]);
    ASSERT_EQ(lines[0].Count(), lines[1].Count()) << Dump(narrow);
    for (int i = 0; i < lines[0].Count(); ++i) EXPECT_EQ(lines[0][i].columns, lines[1][i].columns);
  }
}

// ---- What the table cannot show

TEST(LayoutLine, TurnsOnlyWithALimit) {
  CEditorMetrics metrics;
  metrics.NoTurnQuoted = 1;
  const struct {
    int mode, limit, quote, lines, grownLines, lastColumns;
  } cases[] = {
      {kTurnNever, 10, -1, 1, 1, 82},     {kTurnAtColumns, 10, 0, 1, 1, 82},
      {kTurnAtColumns, 10, -1, 8, 8, 10}, {7, 10, -1, 1, 1, 82},
      {kTurnAtPixels, 1, -1, 1, 1, 82},   {kTurnAtPixels, 2, -1, 77, 80, 1},
      {kTurnAtColumns, 80, -1, 1, 2, 2},
  };
  for (const auto& c : cases) {
    CEditorLineMetrics bundle;
    Fill(bundle, metrics, CT_SJIS, c.mode, c.limit, 1);
    const std::string text(77, 'x');
    CPhysicalLines lines;
    LayoutLine(bundle, {text, {}, c.quote}, 0, lines);
    EXPECT_EQ(lines.Count(), c.lines) << c.mode << ' ' << c.quote;
    // What is appended is counted on from the columns before.
    LayoutLine(bundle, {text + "\tyz", {}, c.quote}, 77, lines);
    EXPECT_EQ(lines.Count(), c.grownLines) << c.mode << ' ' << c.limit;
    EXPECT_EQ(lines[lines.Count() - 1].columns, c.lastColumns) << c.mode << ' ' << c.limit;
    EXPECT_EQ(lines[0].pixels, c.mode == kTurnAtPixels ? lines[0].columns * 8 : 0);
  }
}

TEST(LayoutLine, ReadsCharactersInTheContextOfTheLine) {
  const struct {
    const char* what;
    std::string text;
    int limit;
    std::vector<int> starts;
  } cases[] = {
      {"second bytes in the range of first ones", "\x9F\x9F\x9F\x9F\x9F\x9F", 3, {0, 2, 4}},
      {"one byte before them", "a\x9F\x9F\x9F\x9F", 4, {0, 3}},
      {"a comma's bytes across two characters",
       "\x88\x81\x41"
       "b",
       2,
       {0, 2}},
      {"81 0A is no character",
       "a\x81\x0A"
       "b",
       2,
       {0, 2}},
      {"a first byte at the end", "abc\x81", 3, {0, 3}},
  };
  for (const auto& c : cases) {
    CEditorLineMetrics bundle;
    Fill(bundle, CEditorMetrics(), CT_SJIS, kTurnAtColumns, c.limit);
    CPhysicalLines lines;
    LayoutLine(bundle, {c.text}, 0, lines);
    std::vector<int> starts;
    for (const CPhysicalLine& line : lines.Items()) starts.push_back(line.start);
    EXPECT_EQ(starts, c.starts) << c.what;
  }
}

TEST(LayoutLine, KeepsSurrogatePairsWhenAsked) {
  const std::string text = TextIn(CT_UNICODE, "😀😀a𠮟。。😀");
  CEditorLineMetrics bundle;
  for (int limit = 1; limit <= 14; ++limit) {
    Fill(bundle, CEditorMetrics(), CT_UNICODE, kTurnAtColumns, limit);
    bundle.SetKeepPairs(true);
    CPhysicalLines lines;
    LayoutLine(bundle, {text}, 0, lines);
    for (const CPhysicalLine& line : lines.Items()) {
      EXPECT_NE(LoadUnit(text.data() + line.start) & 0xFC00, 0xDC00) << limit << ' ' << line.start;
      EXPECT_LE(line.columns, std::max(limit, 2) + 2);
    }
  }
}

TEST(FindBreak, TellsWhatMovedIt) {
  const struct {
    const char* text;
    int limit, end;
    unsigned rules;
  } cases[] = {
      {"ああああ", 4, 4, kBreakAtLimit},
      {"abc def", 5, 4, kBreakWord},
      {"abc def", 3, 4, kBreakHang},
      {"あい「う", 6, 4, kBreakPushBack},
      {"あいう。。", 6, 4, kBreakPushBack},
      {"ああ", 1, 2, kBreakOneCharacter},
      {"aaa http://b.jp/", 8, 4, kBreakBeforeUrl},
      {"http://b.jp/ x", 8, 13, kBreakBehindUrl | kBreakHang},
      {"http://b.jp/x", 8, 13, kBreakBehindUrl},
      {"http://b.jp/あ", 12, 12, kBreakUrlEnd},
      {"（http://b.jp/x", 8, 2, kBreakBeforeUrl},
      {"あ（http://b.jp/x", 8, 2, kBreakBeforeUrl | kBreakPushBack},
      {"短い", 8, 4, kBreakAtLimit},
  };
  for (const auto& c : cases) {
    CEditorMetrics metrics;
    metrics.NoTurnURL = 1;
    CEditorLineMetrics bundle;
    Fill(bundle, metrics, CT_SJIS, kTurnAtColumns, c.limit);
    const std::string text = TextIn(CT_SJIS, c.text);
    std::vector<CUrlRange> urls;
    LinkFinder(CT_SJIS).FindAll(text, urls);
    const LineBreak found = FindBreak(bundle, {text, urls}, 0);
    EXPECT_EQ(found.end, c.end) << c.text;
    EXPECT_EQ(found.rules, c.rules) << c.text;
  }
}

// The same bytes are other characters in another code type.
TEST(CharacterList, HoldsWholeCharacters) {
  CharacterList list;
  for (const CodeType codeType : {CT_SJIS, CT_WIN1252}) {
    list.Assign("\x81\x41", codeType);
    EXPECT_EQ(list.Contains(0x8141), codeType == CT_SJIS);
    EXPECT_EQ(list.Contains('A'), codeType != CT_SJIS);
  }
}

}  // namespace
}  // namespace lumr
