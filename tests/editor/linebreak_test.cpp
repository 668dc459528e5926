// Line-break cases of the Unicode and CSS test suites, where the editor's rules agree, and the
// reasons where they do not: its lists hold the marks of Japanese mail, and users may change them.
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <vector>

#include "charset/corpus.h"
#include "editor/text.h"
#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/editor/layout.h"

namespace lumr {
namespace {

// The text between the quotes behind a name of a JSON line of the corpus, or the rest of an array.
std::string FieldOf(const std::string& line, const std::string& name, char open, char close) {
  const std::size_t key = line.find('"' + name + "\": ");
  const std::size_t begin = line.find(open, key + name.size() + 3) + 1;
  return line.substr(begin, line.find(close, begin) - begin);
}

// Whether a line is turned between a and b where its limit is.
bool BreaksBetween(std::u16string_view a, std::u16string_view b) {
  CEditorMetrics settings;
  CEditorLineMetrics bundle;
  testing::Fill(bundle, settings, CT_UNICODE, kTurnAtColumns, 80);
  const std::u16string before = u"亜" + std::u16string(a);
  testing::Fill(bundle, settings, CT_UNICODE, kTurnAtColumns,
                CountColumns(bundle, BytesOf(before)));
  const std::u16string text = before + std::u16string(b) + u"亜亜";
  return FindBreak(bundle, {BytesOf(text)}, 0).end == static_cast<int>(2 * (1 + a.size()));
}

struct Reason {
  std::string_view before, after;  // classes of Unicode Standard Annex 14; empty: any
  const char* why;
};
constexpr Reason kReasons[] = {
    {"", " CJ_NS NS IN ", "small kana and leaders are not on the list: they begin lines"},
    {"", " BA GL HY QU SY ZW ZWJ_O_ZWJ_CM ", "only listed marks begin no line"},
    {" OP BB QU GL PR ZWJ_O_ZWJ_CM ", "", "only listed marks end no line"},
    {" B2 ", " B2 ", "two dashes may be parted"},
    {" CP_CP30 ", " AL AI_AL NU SA_AL XX_AL ", "what follows a closing mark may begin a line"},
    {" AL AI_AL ", " OP_OP30 ", "an opening mark may begin a line behind a word"},
    {" AL ", " AL ", "words are of ASCII letters and digits alone"},
    {" AL ID ", " IS ", "the colon is not on the list: it begins lines"},
    {" AL CL ", " PR ", "only listed marks begin no line"},
    {" IS ", " NU ", "a number may be parted behind its comma"},
    {" SP ", " AL ", "an opening mark has no say beyond a space"},
    {" ID ", " PO ", "a unit may be parted from its number"},
    {" ZW ", " CL CP_CP30 EX ", "a zero-width space is a character as any"},
};

bool IsExplained(const std::string& before, const std::string& after) {
  const auto holds = [](std::string_view classes, const std::string& name) {
    return classes.empty() || classes.find(' ' + name + ' ') != std::string_view::npos;
  };
  return std::any_of(std::begin(kReasons), std::end(kReasons), [&](const Reason& reason) {
    return holds(reason.before, before) && holds(reason.after, after);
  });
}

// The items of an array of a JSON line, of which none holds a comma.
std::vector<std::string> ItemsOf(const std::string& line, const std::string& name) {
  std::istringstream array(FieldOf(line, name, '[', ']'));
  std::vector<std::string> items;
  for (std::string item; std::getline(array, item, ',');) {
    std::erase_if(item, [](char c) { return c == '"' || c == ' '; });
    items.push_back(item);
  }
  return items;
}

// A character of the code in hexadecimal digits.
std::u16string CharacterOf(const std::string& code) {
  const auto value = static_cast<char32_t>(std::stoul(code, nullptr, 16));
  if (value < 0x10000) return {static_cast<char16_t>(value)};
  return {static_cast<char16_t>(0xD7C0 + (value >> 10)),
          static_cast<char16_t>(0xDC00 + (value & 0x3FF))};
}

TEST(LineBreakCorpus, LinesOfTheUnicodeTest) {
  LUMR_NEEDS_CORPUS();
  std::istringstream file(ReadCorpus("linebreak/ucd-cjk.jsonl"));
  int agreeing = 0;
  int places = 0;
  for (std::string line; std::getline(file, line);) {
    const std::vector<std::string> codes = ItemsOf(line, "codes");
    const std::vector<std::string> classes = ItemsOf(line, "classes");
    const std::vector<std::string> breaks = ItemsOf(line, "break_before");
    ASSERT_EQ(codes.size(), classes.size()) << line;
    ASSERT_EQ(codes.size(), breaks.size()) << line;
    for (std::size_t i = 1; i < codes.size(); ++i) {
      std::u16string before, after;
      for (std::size_t k = 0; k < codes.size(); ++k) {
        (k < i ? before : after) += CharacterOf(codes[k]);
      }
      ++places;
      const bool agrees = BreaksBetween(before, after) == (breaks[i] == "true");
      agreeing += agrees;
      if (agrees) continue;
      EXPECT_TRUE(IsExplained(classes[i - 1], classes[i])) << "before " << i << " of " << line;
    }
  }
  EXPECT_EQ(places, 993);
  EXPECT_EQ(agreeing, 711);
}

// What may begin or end a line by the suites' cases of one level and place, but not by ours, or the
// other way round.
std::string DifferingAt(const std::string& file, const std::string& level, const std::string& place,
                        int& agreeing) {
  std::istringstream lines(ReadCorpus("linebreak/" + file));
  std::set<std::string> differing;
  for (std::string line; std::getline(lines, line);) {
    if (FieldOf(line, "level", '"', '"') != level) continue;
    if (FieldOf(line, "line_position", '"', '"') != place) continue;
    const std::string character = FieldOf(line, "char", '"', '"');
    const std::string wide = testing::TextIn(CT_UNICODE, character);
    CStringW units(wide.size() / 2, u'\0');
    wide.copy(reinterpret_cast<char*>(units.data()), wide.size());
    const bool allowed = line.find("\"allowed\": true") != std::string::npos;
    const bool ours = place == "start" ? BreaksBetween(u"亜", units) : BreaksBetween(units, u"亜");
    if (ours == allowed) {
      ++agreeing;
    } else {
      differing.insert(character);
    }
  }
  std::string all;
  for (const std::string& character : differing) all += character;
  return all;
}

TEST(LineBreakCorpus, MarksOfTheCssTests) {
  LUMR_NEEDS_CORPUS();
  const struct {
    const char *file, *level, *place;
    int agreeing;
    const char* why;
    const char* differing;
  } cases[] = {
      {"w3c-ja.jsonl", "loose", "start", 40, "listed marks begin no line at any level", "々ゝヽ！"},
      {"w3c-ja.jsonl", "normal", "start", 32,
       "leaders, primes, units and centred marks: not listed", "°․…′‵‼⁈℉・︙％；"},
      {"w3c-ja.jsonl", "strict", "start", 4, "small kana and dashes neither",
       "°‐․…′‵‼⁈℉〜ぁぅぉゃょゕァゥォャョヵ・ーㇱㇳㇵㇷㇹㇻㇽㇿ︙％；ｨｪｬｮｰ"},
      {"w3c-classes.jsonl", "loose", "start", 12, "the list holds what Japanese mail closes with",
       "༻៖‼⁇⁉⁾⌉〉❫❯❳⟆⟩⟭⦄⦈⦌⦐⦔⦘⧛⸣⸧〗〛〜〟〼・ꀕ︑︘︸︼﹀﹄﹐﹕﹚﹞；｠𓉜𓊂𓊉𓍻"
       "𔗏"
       "🙹"
       "🙻"},
      {"w3c-classes.jsonl", "loose", "end", 8, "and what it opens with",
       "¿༺„⁽⌈〈❪❮❲⟅⟨⟬⦃⦇⦋⦏⦓⦗⧚⸘⸤⸨〖〚﴿︵︹︽﹁﹇﹛𓉙𓊆𓍹"
       "𔗎"
       "𞥞"},
  };
  for (const auto& c : cases) {
    int agreeing = 0;
    EXPECT_EQ(DifferingAt(c.file, c.level, c.place, agreeing), c.differing) << c.level << c.why;
    EXPECT_EQ(agreeing, c.agreeing) << c.level << ' ' << c.place;
  }
}

}  // namespace
}  // namespace lumr
