#include "lumrmisc/settings/settingdata.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <vector>

#include "lumrmisc/buffer/counted.h"
#include "lumrmisc/platform/mbcs.h"
#include "lumrmisc/platform/messages.h"
#include "lumrmisc/platform/unicode.h"

namespace lumr {
namespace {

CStringW TextOf(const CSettingData& data) {
  CBuffer bytes;
  data.SaveSdText(bytes);
  return CStringW(bytes.Units());
}

// The text between the marks.
CStringW Framed(const CStringW& body) {
  return u"\xfeff[DATA-START]\r\n\r\n" + body + u"[DATA-END]\r\n\r\n";
}

TEST(SdText, WritesAndReadsEveryNameAndValue) {
  const struct {
    const char* what;
    CStringW key, name, value, text;
  } cases[] = {
      {"plain", u"General", u"A", u"x", u"[General]\r\nA=x\r\n\r\n"},
      {"line ends and backslash in a value", u"K", u"A", u"x=y\r\n\\[",
       u"[K]\r\nA=x=y\\r\\n\\\\[\r\n\r\n"},
      {"a name that looks like a key", u"K", u"[x]", u"", u"[K]\r\n\\[x]=\r\n\r\n"},
      {"a name with everything", u"K", u"=[\\\r\n=", u"1", u"[K]\r\n\\=\\[\\\\\\r\\n\\==1\r\n\r\n"},
      {"a key with everything", u"a]\\\r\n=[", u"A", u"1", u"[a]\\\\\\r\\n=[]\r\nA=1\r\n\r\n"},
      {"a value that looks escaped", u"K", u"A", u"\\r\\n\\\\",
       u"[K]\r\nA=\\\\r\\\\n\\\\\\\\\r\n\r\n"},
      {"Japanese, trail bytes and half a pair", u"表示", u"ソ＝", u"能\xd83d",
       u"[表示]\r\nソ＝=能\xd83d\r\n\r\n"},
      {"white space", u" k ", u" a ", u" v ", u"[ k ]\r\n a = v \r\n\r\n"},
      {"an empty key name", u"", u"A", u"1", u"[]\r\nA=1\r\n\r\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CSettingData data;
    ASSERT_EQ(data.SetValue(c.key, c.name, c.value), 1);
    EXPECT_EQ(TextOf(data), Framed(c.text));
    CSettingData back;
    ASSERT_EQ(back.LoadSdText(BytesOf(TextOf(data))), 1) << back.GetErrorMessage();
    CStringW value;
    EXPECT_EQ(back.GetValue(c.key, c.name, value), 1);
    EXPECT_EQ(value, c.value);
    EXPECT_EQ(back.EqualSD(data, 0), 1);
    EXPECT_EQ(back.IsModified() + back.IsRecovered(), 0);
  }
}

TEST(SdText, TakesWhatOthersWrite) {
  const struct {
    const char* what;
    CStringW text;
    CStringW value;  // of A in K
    int modified;
  } cases[] = {
      {"no byte-order mark, LF, no marks", u"[K]\nA=1\n", u"1", 0},
      {"CR, empty lines", u"\r\r[K]\r\rA=1\r", u"1", 0},
      {"unknown backslash pairs stay", u"[K]\nA=\\x\\=\\", u"\\x\\=\\", 0},
      {"the first plain equals sign divides", u"[K]\nB\\=C=2\nA=1=1\n", u"1=1", 0},
      {"a key twice is one key", u"[K]\nA=1\n[L]\nA=9\n[k]\na=2\n", u"2", 1},
      {"a name twice: the last counts", u"[K]\nA=1\na=2\n", u"2", 1},
      {"marks in any case", u"[data-start]\n[K]\nA=1\n[Data-End]\n", u"1", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CSettingData data;
    ASSERT_EQ(data.LoadSdText(BytesOf(c.text)), 1) << data.GetErrorMessage();
    CStringW value;
    EXPECT_EQ(data.GetValue("k", "a", value), 1);
    EXPECT_EQ(value, c.value);
    EXPECT_EQ(data.IsModified(), c.modified);
  }
}

TEST(SdText, RefusesDamage) {
  const struct {
    const char* what;
    CStringW text;
    unsigned message;
    int line;
  } cases[] = {
      {"no closing bracket", u"[K]\nA=1\n[L\n", 3100, 3},
      {"no equals sign", u"[K]\nA\n", 3100, 2},
      {"no name", u"[K]\n=1\n", 3100, 2},
      {"only an escaped equals sign", u"[K]\nA\\=1\n", 3100, 2},
      {"no key", u"A=1\n", 3101, 1},
      {"behind the start mark", u"[K]\n[DATA-START]\nA=1\n", 3101, 3},
      {"no start", u"[K]\nA=1\n[DATA-END]\n", 3163, 0},
      {"no end", u"[DATA-START]\n[K]\nA=1\n", 3164, 0},
      {"a zero unit", CStringW(u"[DATA-START]\n[K]\nA=1\0\n[DATA-END]\n", 32), 3100, 3},
      {"nothing but zero units", CStringW(100, u'\0'), 3100, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CSettingData data;
    EXPECT_EQ(data.LoadSdText(BytesOf(c.text)), 0);
    EXPECT_EQ(data.IsLoaded(), 0);
    EXPECT_FALSE(data.GetErrorMessage().empty());
    EXPECT_EQ(MessageIdOf(data.GetReading().error.kind), c.message);
    EXPECT_EQ(data.GetReading().error.line, c.line);
  }
}

TEST(SdText, QuotesWhatIsDamaged) {
  const CStringW longLine(5000, u'x');
  const struct {
    CStringW text, quoted;
  } cases[] = {
      {u"[K]\nA=1\n[L\n", u"[L"},
      {u"[K\\\\]\n\\\n", u"[K\\]\n        \\"},
      {u"xx\n", u"xx"},
      {u"[DATA-START]\n[K]\n", u""},
      {CStringW(u"[K]\nA\0=\0\0b\n", 11), u"A=b"},
      {longLine + u"\n", longLine.substr(0, 1000)},
  };
  for (const auto& c : cases) {
    CSettingData data;
    EXPECT_EQ(data.LoadSdText(BytesOf(c.text)), 0);
    const CStringA end = c.quoted.empty() ? "" : "\nData: " + NarrowSdText(c.quoted);
    EXPECT_EQ(data.GetErrorMessage(), MessageText(MessageIdOf(data.GetReading().error.kind)) + end);
  }
}

// With somebody to tell, reading goes on behind every defect and keeps what is whole.
TEST(SdText, TellsEveryDefect) {
  const CStringW text =
      u"A=1\n[DATA-START]\n[K]\nA=1\na=2\nB\n=3\n[L\nC=4\nC=5\nnone\n[M]\nD=6\n[k]\nE=7\n";
  using Kind = SdDefectKind;
  const struct {
    Kind kind;
    int line;
    CStringW key, text;
  } expected[] = {
      {Kind::kNoKey, 1, u"", u"A=1"},      {Kind::kNameTwice, 5, u"K", u"a"},
      {Kind::kBadEntry, 6, u"K", u"B"},    {Kind::kBadEntry, 7, u"K", u"=3"},
      {Kind::kBadKeyLine, 8, u"", u"[L"},  {Kind::kNameTwice, 10, u"", u"C"},
      {Kind::kBadEntry, 11, u"", u"none"}, {Kind::kKeyTwice, 14, u"", u"k"},
      {Kind::kNoEnd, 0, u"", u""},
  };
  for (std::size_t offset = 0; offset < 2; ++offset) {
    const std::string moved = std::string(offset, 'x') + std::string(BytesOf(text));
    SdKeyList keys;
    std::vector<SdDefect> told;
    const SdTextReading reading =
        ReadSdText(std::string_view(moved).substr(offset), keys,
                   [&told](const SdDefect& defect) { told.push_back(defect); });
    ASSERT_EQ(told.size(), std::size(expected));
    for (std::size_t i = 0; i < told.size(); ++i) {
      SCOPED_TRACE(i);
      EXPECT_EQ(told[i].kind, expected[i].kind);
      EXPECT_EQ(told[i].line, expected[i].line);
      EXPECT_EQ(told[i].key, expected[i].key);
      EXPECT_EQ(told[i].text, expected[i].text);
    }
    EXPECT_EQ(reading.error.line, 1);
    CBuffer kept;
    WriteSdText(keys, kept);
    EXPECT_EQ(kept.Units(), Framed(u"[K]\r\nA=2\r\nE=7\r\n\r\n[M]\r\nD=6\r\n\r\n"));
  }
}

TEST(SettingData, RefusesWhatWouldNotReadBack) {
  CSettingData data;
  EXPECT_EQ(data.SetValue("DATA-START", "A", 1), 0);
  EXPECT_EQ(data.SetKey("data-end"), 0);
  EXPECT_EQ(data.SetValue("K", "", 1), 0);
  EXPECT_EQ(data.SetValue("K", CStringW(u"a\0b", 3), 1), 0);
  EXPECT_EQ(data.SetValue("K", "A", CStringW(u"a\0b", 3)), 0);
  EXPECT_EQ(data.SetValue("K", "A", std::string("a\0b", 3)), 0);
  EXPECT_EQ(data.GetKeyCount(), 0);
  EXPECT_EQ(data.IsModified(), 0);
}

TEST(SettingData, ReadsNumbersAsTheyCome) {
  const struct {
    const char16_t* text;
    int asInt;
    std::uint32_t asUnsigned;
    long long asLong;
    std::uint32_t asHex;
  } cases[] = {
      {u"42", 42, 42, 42, 42},
      {u" -7x", -7, 0, -7, 0},
      {u"abc", 0, 0, 0, 0},
      {u"", 0, 0, 0, 0},
      {u"+5", 5, 5, 5, 5},
      {u"4294967295", INT_MAX, 4294967295u, 4294967295, 4294967295u},
      {u"99999999999999999999", INT_MAX, UINT32_MAX, LLONG_MAX, UINT32_MAX},
      {u"-99999999999999999999", INT_MIN, 0, LLONG_MIN, 0},
      {u"-9223372036854775808", INT_MIN, 0, LLONG_MIN, 0},
      {u"0x1F", 0, 0, 0, 31},
      {u"0XffffFFFFff", 0, 0, 0, UINT32_MAX},
      {u"010", 10, 10, 10, 10},
  };
  for (const auto& c : cases) {
    CSettingData data;
    data.SetValue("K", "A", c.text);
    int asInt = -1;
    std::uint32_t asUnsigned = 1;
    std::uint32_t asHex = 1;
    long long asLong = -1;
    EXPECT_EQ(data.GetValue("K", "A", asInt) + data.GetValue("K", "A", asUnsigned) +
                  data.GetValue("K", "A", asLong) + data.GetHexValue("K", "A", asHex),
              4);
    EXPECT_EQ(asInt, c.asInt) << NarrowSdText(c.text);
    EXPECT_EQ(asUnsigned, c.asUnsigned) << NarrowSdText(c.text);
    EXPECT_EQ(asLong, c.asLong) << NarrowSdText(c.text);
    EXPECT_EQ(asHex, c.asHex) << NarrowSdText(c.text);
  }
}

TEST(SettingData, ReadsARectangleOfFourNumbersOnly) {
  const struct {
    const char16_t* text;
    bool reads;
  } cases[] = {
      {u"1,-2,3,4", true}, {u" 1, -2,+3,\t4", true}, {u"1,-2,3,4,5", true}, {u"1,-2,3,4px", true},
      {u"1,-2,3", false},  {u"1 ,-2,3,4", false},    {u"1,,-2,3,4", false}, {u"a,b,c,d", false},
      {u"1,-2,3,", false}, {u"1;-2;3;4", false},     {u"", false},
  };
  for (const auto& c : cases) {
    CSettingData data;
    data.SetValue("K", "A", c.text);
    CRect rect = {9, 9, 9, 9};
    EXPECT_EQ(data.GetValue("K", "A", rect), c.reads ? 1 : 0) << NarrowSdText(c.text);
    EXPECT_EQ(rect, (c.reads ? CRect{1, -2, 3, 4} : CRect{9, 9, 9, 9})) << NarrowSdText(c.text);
  }
}

TEST(SettingData, KeepsEveryTypeOfValue) {
  CSettingData data;
  data.SetValue("K", "int", -5);
  data.SetValue("K", "long", LLONG_MIN);
  data.SetHexValue("K", "hex", 0xBEEF);
  data.SetValue("K", "rect", CRect{1, -2, 3, 4});
  data.SetValue("K", "strings", CStringArray{"a", "", "\x82\xa0"});
  data.SetValue("K", "numbers", CUIntArray{1, 4294967295u});
  const int three[] = {7, 8, 9};
  data.SetValue("K", "three", three, 3);
  data.SetValue("K", "narrow", "\x83\x5c=\x95\x5c");
  data.SetValue("K", "\x83\x5c", CBuffer("\x82\xa0"));
  EXPECT_NE(TextOf(data).find(u"hex=0x0000BEEF\r\nrect=1,-2,3,4\r\nstrings=a\t\tあ\r\n"
                              u"numbers=1,4294967295\r\nthree=7,8,9\r\nnarrow=ソ=表\r\n"
                              u"ソ=あ\r\n"),
            CStringW::npos);

  CRect rect;
  CStringArray strings;
  CUIntArray numbers;
  CStringA narrow;
  CBuffer buffer;
  EXPECT_EQ(data.GetValue("k", "RECT", rect), 1);
  EXPECT_EQ(rect, (CRect{1, -2, 3, 4}));
  EXPECT_EQ(data.GetValue("K", "strings", strings), 1);
  EXPECT_EQ(strings, (CStringArray{"a", "", "\x82\xa0"}));
  EXPECT_EQ(data.GetValue("K", "numbers", numbers), 1);
  EXPECT_EQ(numbers, (CUIntArray{1, 4294967295u}));
  EXPECT_EQ(data.GetValue("K", "narrow", narrow), 1);
  EXPECT_EQ(narrow, "\x83\x5c=\x95\x5c");
  EXPECT_EQ(data.GetValue("K", "\x83\x5c", buffer), 1);
  EXPECT_EQ(buffer.Bytes(), "\x82\xa0");

  int values[4] = {};
  int complete = -1;
  EXPECT_EQ(data.GetValue("K", "three", values, 4, -1, &complete), 1);
  EXPECT_EQ(values[2], 9);
  EXPECT_EQ(values[3], -1);
  EXPECT_EQ(complete, 0);
  EXPECT_EQ(data.GetValue("K", "three", values, 3, -1, &complete), 1);
  EXPECT_EQ(complete, 1);
  EXPECT_EQ(data.GetValue("K", "three", values, 2, -1, &complete), 1);
  EXPECT_EQ(complete, 0);

  // What is missing, or not of the type, leaves the output alone.
  EXPECT_EQ(data.GetValue("K", "three", rect), 0);
  EXPECT_EQ(rect, (CRect{1, -2, 3, 4}));
  EXPECT_EQ(data.GetValue("K", "none", narrow), 0);
  EXPECT_EQ(narrow, "\x83\x5c=\x95\x5c");
  EXPECT_EQ(data.GetIntValue("K", "int", 0, 10, 99), 0);
  EXPECT_EQ(data.GetIntValue("K", "none", 0, 10, 99), 99);
  EXPECT_EQ(data.GetBoolValue("K", "int", 0), 1);
  EXPECT_EQ(data.GetBoolValue("K", "none", 7), 1);
  data.SetValue("K", "strings", CStringArray{});
  EXPECT_EQ(data.GetValue("K", "strings", strings), 1);
  EXPECT_TRUE(strings.empty());
}

TEST(SettingData, CountsAsModifiedOnlyWhenSomethingChanged) {
  CSettingData data;
  const CStringW text = u"[K]\nA=1\nlist0=x\nlist1=y\nlistOther=z\n";
  ASSERT_EQ(data.LoadSdText(BytesOf(text)), 1);
  data.SetValue("k", "a", "1");
  data.SetKey("K");
  EXPECT_EQ(data.SetValueBegin("K", "list", {"x", "y"}), 1);
  EXPECT_EQ(data.RemoveName("K", "none") + data.RemoveKey("L", 0) + data.MoveKeyPosition("K", 5),
            0);
  EXPECT_EQ(data.IsModified(), 0);
  data.SetValueBegin("K", "list", {"x"});
  EXPECT_EQ(data.IsModified(), 1);
  EXPECT_EQ(TextOf(data), Framed(u"[K]\r\nA=1\r\nlist0=x\r\n\r\n"));
  CStringArray list;
  EXPECT_EQ(data.GetValueBegin("K", "LIST", list), 1);
  EXPECT_EQ(list, CStringArray{"x"});
}

TEST(SettingData, ChangesItsStructure) {
  const auto loaded = [](CSettingData& data) {
    const CStringW text = u"[Acc1]\nA=1\n[Acc2]\nB=2\nBb=3\n[View]\nC=4\n";
    EXPECT_EQ(data.LoadSdText(BytesOf(text)), 1);
  };
  const struct {
    const char* what;
    int (*change)(CSettingData&);
    CStringW text;
  } cases[] = {
      {"remove a key", [](CSettingData& d) { return d.RemoveKey("acc1", 0); },
       u"[Acc2]\r\nB=2\r\nBb=3\r\n\r\n[View]\r\nC=4\r\n\r\n"},
      {"remove keys", [](CSettingData& d) { return d.RemoveKeyBegin("ACC", 0); },
       u"[View]\r\nC=4\r\n\r\n"},
      {"remove names", [](CSettingData& d) { return d.RemoveNameBegin("Acc2", "b"); },
       u"[Acc1]\r\nA=1\r\n\r\n[Acc2]\r\n\r\n[View]\r\nC=4\r\n\r\n"},
      {"remove a name by place", [](CSettingData& d) { return d.RemoveNameAt("Acc2", 0); },
       u"[Acc1]\r\nA=1\r\n\r\n[Acc2]\r\nBb=3\r\n\r\n[View]\r\nC=4\r\n\r\n"},
      {"rename keys", [](CSettingData& d) { return d.RenameKeyBegin("acc", "Box"); },
       u"[Box1]\r\nA=1\r\n\r\n[Box2]\r\nB=2\r\nBb=3\r\n\r\n[View]\r\nC=4\r\n\r\n"},
      {"rename onto another", [](CSettingData& d) { return d.RenameKeyBegin("View", "ACC1"); },
       u"[Acc1]\r\nA=1\r\nC=4\r\n\r\n[Acc2]\r\nB=2\r\nBb=3\r\n\r\n"},
      {"rename a key", [](CSettingData& d) { return d.RenameKey("acc1", "View2"); },
       u"[View2]\r\nA=1\r\n\r\n[Acc2]\r\nB=2\r\nBb=3\r\n\r\n[View]\r\nC=4\r\n\r\n"},
      {"change a key's case", [](CSettingData& d) { return d.RenameKey("view", "VIEW"); },
       u"[Acc1]\r\nA=1\r\n\r\n[Acc2]\r\nB=2\r\nBb=3\r\n\r\n[VIEW]\r\nC=4\r\n\r\n"},
      {"move a key", [](CSettingData& d) { return d.MoveKeyPosition("View", 0); },
       u"[View]\r\nC=4\r\n\r\n[Acc1]\r\nA=1\r\n\r\n[Acc2]\r\nB=2\r\nBb=3\r\n\r\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CSettingData data;
    loaded(data);
    EXPECT_EQ(c.change(data), 1);
    EXPECT_EQ(data.IsModified(), 1);
    EXPECT_EQ(TextOf(data), Framed(c.text));
  }

  CSettingData from;
  loaded(from);
  EXPECT_EQ(from.RenameKey("Acc1", "ACC2") + from.RenameKey("Acc1", "Data-End") +
                from.RenameKey("none", "x") + from.RenameKey("Acc1", "Acc1") +
                from.MoveKeyPosition("Acc1", 3) + from.MoveKeyPosition("Acc1", -1) +
                from.RemoveNameAt("Acc2", 2) + from.RemoveNameAt("Acc2", -1),
            0);
  EXPECT_EQ(from.IsModified(), 0);
  CSettingData to;
  const CStringW text = u"[acc2]\nB=9\nX=1\n";
  ASSERT_EQ(to.LoadSdText(BytesOf(text)), 1);
  EXPECT_EQ(to.CopySdNameBegin(0, from, "ACC2", "b", 0), 1);
  EXPECT_EQ(TextOf(to), Framed(u"[acc2]\r\nB=2\r\nX=1\r\nBb=3\r\n\r\n"));
  EXPECT_EQ(to.CopySdKey(0, from, "acc2", 0), 1);
  EXPECT_EQ(to.CopySdName(0, from, "View", "C", 0), 1);
  EXPECT_EQ(TextOf(to), Framed(u"[Acc2]\r\nB=2\r\nBb=3\r\n\r\n[View]\r\nC=4\r\n\r\n"));
  EXPECT_EQ(to.EqualSD(from, 1), 0);
  EXPECT_EQ(to.CopySD(from), 1);
  to.MoveKeyPosition("View", 0);
  EXPECT_EQ(to.EqualSD(from, 1), 1);
  EXPECT_EQ(to.EqualSD(from, 0), 0);
}

// Names that the ANSI code page cannot hold must survive a load and a save.
TEST(SettingData, KeepsNamesThatNarrowTextCannotHold) {
  CSettingData data;
  const CStringW body = u"[한국]\r\nAé=1\r\nAè=2\r\n\r\n";
  ASSERT_EQ(data.LoadSdText(BytesOf(Framed(body))), 1);
  EXPECT_EQ(data.SetValue(u"한국", u"aÉ", u"3"), 1);  // by the case of UTF-16
  EXPECT_EQ(TextOf(data), Framed(u"[한국]\r\nAé=3\r\nAè=2\r\n\r\n"));
}

// Against the plainest model: a list of pairs that is searched from its start.
TEST(SettingData, FindsEverythingInLargeData) {
  std::mt19937 random(51);
  CSettingData data;   // the names are entries of one key
  CSettingData keyed;  // the names are keys
  std::vector<std::pair<std::string, int>> model;
  const auto find = [&](const std::string& name) {
    return std::find_if(model.begin(), model.end(), [&](auto& p) { return p.first == name; });
  };
  for (int step = 0; step < 20000; ++step) {
    const std::string name = "n" + std::to_string(random() % 300);
    const auto at = find(name);
    if (random() % 3 == 0) {
      EXPECT_EQ(data.RemoveName("K", name), at == model.end() ? 0 : 1);
      EXPECT_EQ(keyed.RemoveKey(name, 0), at == model.end() ? 0 : 1);
      if (at != model.end()) model.erase(at);
      continue;
    }
    if (random() % 3 == 0 && at != model.end()) {
      const std::string renamed = "r" + std::to_string(step);
      EXPECT_EQ(keyed.RenameKey(name, renamed), 1);
      EXPECT_EQ(keyed.FindKey(name), nullptr);
      EXPECT_EQ(keyed.RenameKey(renamed, name), 1);
    }
    data.SetValue("K", name, step);
    keyed.SetValue(name, "A", step);
    if (at == model.end()) {
      model.emplace_back(name, step);
    } else {
      at->second = step;
    }
    if (step % 97 != 0) continue;
    const SdPairList& pairs = data.FindKey("K")->GetPairList();
    ASSERT_EQ(pairs.Count(), static_cast<int>(model.size())) << step;
    for (int i = 0; i < pairs.Count(); ++i) {
      const auto& [modelName, modelValue] = model[static_cast<std::size_t>(i)];
      ASSERT_EQ(pairs.At(i)->GetName(), modelName) << step;
      ASSERT_EQ(data.GetIntValue("K", modelName, 0, INT_MAX, -1), modelValue) << step;
      ASSERT_EQ(keyed.GetKeyAt(i)->GetName(), modelName) << step;
      ASSERT_EQ(keyed.GetIntValue(modelName, "A", 0, INT_MAX, -1), modelValue) << step;
    }
  }
}

// Names of every length below 20, against each other folded unit by unit: found means equal and of
// one hash, by whichever constructor.
TEST(SdName, IsFoundWithoutRegardToCase) {
  constexpr std::u16string_view kUnits = u"aAzZ@[`{9éÉαΑあК";
  constexpr unsigned kSeed = 5;
  std::mt19937 random(kSeed);
  const auto folded = [](CStringW name) {
    for (char16_t& unit : name) unit = UnitToLower(unit);
    return name;
  };
  for (int round = 0; round < 20000; ++round) {
    CStringW a, b;
    CStringA narrow;
    const std::size_t units = round % 2 == 0 ? 9 : kUnits.size();
    for (std::size_t i = random() % 20; i > 0; --i) {
      a += kUnits[random() % units];
      b += random() % 2 == 0 ? UnitToLower(a.back()) : UnitToUpper(a.back());
      narrow += static_cast<char>(a.back());
    }
    if (random() % 4 == 0 && !b.empty()) b[random() % b.size()] = kUnits[random() % units];
    const bool same = folded(a) == folded(b);
    ASSERT_EQ(EqualSdNames(a, b), same) << round;
    ASSERT_EQ(SdName(a).Hash() == SdName(b).Hash(), same) << round;
    if (units == 9) {
      const SdName name(narrow);
      ASSERT_EQ(name.Text(), a) << round;
      ASSERT_EQ(name.Hash(), SdName(a).Hash()) << round;
    }
  }
}

// Differences of the highest bit that a later step could undo, at a thousand places: whoever writes
// a file must not be able to give all of its names one hash.
TEST(SdName, HasNoHashesThatNamesCanBeMadeFor) {
  std::vector<std::uint32_t> hashes;
  for (unsigned choice = 0; choice < 1024; ++choice) {
    CStringW name;
    for (unsigned block = 0; block < 10; ++block) {
      const unsigned high = choice >> block & 1 ? 0x8000 : 0;
      name += {u'x', u'x', u'x', static_cast<char16_t>(0x4E00 + high)};
      name += {u'x', static_cast<char16_t>(0x4E00 + high), u'x', u'x'};
    }
    hashes.push_back(SdName(name).Hash());
  }
  std::sort(hashes.begin(), hashes.end());
  EXPECT_GT(std::unique(hashes.begin(), hashes.end()) - hashes.begin(), 1000);
}

}  // namespace
}  // namespace lumr
