#include "lumrmisc/buffer/buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <new>
#include <random>
#include <string>
#include <type_traits>

#include "lumrmisc/buffer/fixbuffer.h"
#include "lumrmisc/platform/memory_internal.h"
#include "tests/buffer/buffer_model.h"

namespace lumr {
namespace {

using namespace std::string_literals;

const char* Wide(const char16_t* text) {
  return reinterpret_cast<const char*>(text);
}

TEST(CBuffer, HoldsWhatItWasMadeOf) {
  const CStringW wide = u"aあ";
  const struct {
    const char* what;
    CBuffer buffer;
    std::string expected;
  } cases[] = {
      {"null", CBuffer(static_cast<const char*>(nullptr)), ""},
      {"binary that begins with NUL", CBuffer("\0abc", 4), ""},
      {"binary with NUL inside", CBuffer("a\0b", 3), "a\0b"s},
      {"negative length", CBuffer("abc", -1), ""},
      {"string with NUL", CBuffer("\0a"s), "\0a"s},
      {"wide string", CBuffer(wide), "a\0\x42\x30"s},
      {"view", CBuffer() = std::string_view("\0x", 2), "\0x"s},
      {"wide character", (CBuffer("abc") = u'あ'), "\x42\x30"},
      {"appends", ((((CBuffer("a") += 'b') += u'c') += u"d"s) += "e"), "abc\0d\0e"s},
      {"wide pointers", ((CBuffer("x") = u"a") += u"b"), "a\0b\0"s},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_TRUE(c.buffer == c.expected) << std::string(c.buffer.Bytes());
  }
  const CBuffer empty;
  EXPECT_EQ(empty.GetBuffer(), nullptr);
  EXPECT_STREQ(empty, "");
  EXPECT_TRUE(empty == nullptr && empty == "" && "" == empty && empty.Units().empty());
  EXPECT_FALSE((std::is_constructible_v<bool, const CBuffer&>));
  static_assert(std::has_virtual_destructor_v<CBuffer> && !std::is_polymorphic_v<CFixBuffer>);
}

TEST(CBuffer, GrowsExactlyAndStaysLinear) {
  CBuffer buffer;
  int moves = 0;
  for (int size = 1; size <= 1 << 22; ++size) {
    const char* const before = buffer.GetBuffer();
    buffer += 'x';
    if (buffer.GetBuffer() != before) ++moves;
    if (buffer.GetAllocSize() != (size + 15) / 16 * 16) FAIL() << size;
  }
  EXPECT_LT(moves, 400);
  buffer.Empty();
  EXPECT_EQ(buffer.GetAllocSize(), 1 << 22);
  buffer.SetIncrSize(100);
  CBuffer copy(buffer);
  CBuffer taken(std::move(buffer));
  copy += "1";
  taken.AllocFree();
  taken += "1";
  EXPECT_EQ(copy.GetAllocSize(), 16);
  EXPECT_EQ(taken.GetAllocSize(), 100);
}

TEST(CBuffer, KeepsItsContentWhenMemoryRunsOut) {
  const std::function<void(CBuffer&)> edits[] = {
      [](CBuffer& b) { b.SetAllocSize(0x7FFFFFC1); },
      [](CBuffer& b) { b.Insert('x', 0x7FFFFFFF, 1); },
      [](CBuffer& b) { b.Insert(u'x', 0x7FFFFFFF, 1); },
      [](CBuffer& b) { b += "0123456789abcdefg"; },
      [](CBuffer& b) { b = "0123456789abcdefg"; },
      [](CBuffer& b) { b.ReplacePhraseAll("c", "0123456789abcdefg"); },
      [](CBuffer& b) {
        CTextBuffer copy;
        copy = b;
      },
  };
  for (const auto& edit : edits) {
    SCOPED_TRACE(&edit - edits);
    CBuffer buffer("abcde");
    internal::allocationFault = [] { return true; };
    EXPECT_THROW(edit(buffer), std::bad_alloc);
    internal::allocationFault = nullptr;
    EXPECT_TRUE(buffer == "abcde");
  }
}

TEST(CBuffer, EditsAsStdStringDoes) {
  std::mt19937 random(1);
  for (int round = 0; round < 3000; ++round) {
    std::string script(300, '\0');
    for (char& byte : script) byte = static_cast<char>(random());
    ASSERT_EQ(reference::BufferModel(script).Run(), "") << "seed 1, round " << round;
  }
}

// The forms that the model above does not go through.
TEST(CBuffer, TakesSourcesInsideItself) {
  CBuffer buffer("abcdefghij");
  buffer = buffer.GetBuffer() + 4;
  EXPECT_STREQ(buffer, "efghij");
  buffer += buffer.GetBuffer() + 2;
  buffer += buffer.Units();
  EXPECT_STREQ(buffer, "efghijghijefghijghij");
  int pos = 0;
  buffer.Tokenize(buffer.GetBuffer() + 19, pos, buffer);
  EXPECT_STREQ(buffer, "efghi");
  std::memcpy(buffer.GetBuffer() + buffer.GetAllocSize() - 3, "xyz", 3);  // behind the content
  buffer.Insert(buffer.GetBuffer() + buffer.GetAllocSize() - 3, 3, 1);
  EXPECT_STREQ(buffer, "exyzfghi");
}

TEST(CBuffer, TrimsWhiteSpace) {
  const struct {
    std::string content, left, right;
    int wide;
  } cases[] = {
      {" \t a b \r\n\v\f", "a b \r\n\v\f", " \t a b", 0},
      {"   ", "   ", "", 0},
      {"  \x82\xa0\x82\xa2 x", "x", "  \x82\xa0\x82\xa2 x", 0},
      {" \x82\xa0 ", " \x82\xa0 ", " \x82\xa0", 0},
      {"\x82 ", "\x82 ", "\x82", 0},
      {"\x20\0\0\x30y\0\x20\0"s, "y\0\x20\0"s, "\x20\0\0\x30y\0"s, 1},
      {"\x20\0 "s, "\x20\0 "s, "", 1},
      {"y\0z"s, "y\0z"s, "y\0z"s, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.content);
    CBuffer left(c.content), right(c.content);
    left.TrimLeft(c.wide);
    right.TrimRight(c.wide);
    EXPECT_TRUE(left == c.left) << left;
    EXPECT_TRUE(right == c.right) << right;
  }
  CBuffer breaks("a\r\0\r\0\n\n"s);  // units 0D61, 0D00, 0A00 and half a unit
  breaks.ExceptCrlf(1);
  EXPECT_TRUE(breaks == "a\r\0\r\0\n"s);
  breaks = std::u16string_view(u"\r\nあ\n\u0D0D");
  breaks.ExceptCrlf(1);
  EXPECT_TRUE(breaks.Units() == u"あ\u0D0D");
}

TEST(CBuffer, ReadsNumbers) {
  const struct {
    const char* content;
    int start, len, sign, result, value;
  } cases[] = {{"123", 0, 3, 0, 0, 7},
               {"1234", 0, 3, 0, 1, 123},
               {"-12 ", 0, 3, 1, 1, -12},
               {"+12 ", 0, 3, 1, 1, 12},
               {"012 ", 0, 3, 1, 0, 7},
               {"1x3 ", 0, 3, 0, 0, 7},
               {"12", 1, 0, 0, 1, 0},
               {"12", -1, 1, 0, 0, 7},
               {"12", 0, -1, 0, 0, 7},
               {"12", 0, 0x7FFFFFFF, 0, 0, 7},
               {"2147483647 ", 0, 10, 0, 1, 2147483647},
               {"2147483648 ", 0, 10, 0, 0, 7},
               {"-2147483648 ", 0, 11, 1, 1, -2147483647 - 1},
               {"99999999999999999999 ", 0, 20, 0, 0, 7}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.content);
    int value = 7;
    EXPECT_EQ(CBuffer(c.content).GetNumber(c.start, c.len, c.sign, value), c.result);
    EXPECT_EQ(value, c.value);
  }
}

TEST(CBuffer, Compares) {
  const CBuffer narrow("xAb\x83\x41");  // the trail byte 41 is no letter
  const CBuffer wide(u"xÀ"s), odd("yx\0"s), none;
  CBuffer emptied("x");
  emptied.Empty();
  constexpr int kWhole = -2;  // Equal, not EqualN
  const struct {
    const CBuffer& content;
    const char* text;
    int n, wide, pos, nocase, expected;
  } cases[] = {{narrow, "Ab\x83\x41", kWhole, 0, 1, 0, 1},
               {narrow, "ab\x83\x41", kWhole, 0, 1, 0, 0},
               {narrow, "aB\x83\x41", kWhole, 0, 1, 1, 1},
               {narrow, "ab\x83\x61", kWhole, 0, 1, 1, 0},
               {narrow, "Ab", kWhole, 0, 1, 0, 0},
               {narrow, "", kWhole, 0, 6, 0, 0},
               {narrow, "", kWhole, 0, -1, 0, 0},
               {narrow, "", 0, 0, -1, 0, 0},
               {narrow, "", kWhole, 0, 5, 0, 1},
               {narrow, nullptr, kWhole, 0, 0, 0, 0},
               {none, "", kWhole, 0, 0, 0, 0},
               {emptied, "", kWhole, 0, 0, 0, 1},
               {wide, Wide(u"xÀ"), kWhole, 1, 0, 0, 1},
               {wide, Wide(u"Xà"), kWhole, 1, 0, 1, 1},
               {odd, Wide(u"x"), kWhole, 1, 1, 0, 1},
               {narrow, "abz", 2, 0, 1, 1, 1},
               {narrow, "z", 0, 0, 5, 0, 1},
               {narrow, "Ab\x83\x41z", 5, 0, 1, 0, 0},
               {narrow, "xA", 5, 0, 0, 0, 0},
               {narrow, "Ab", -1, 0, 1, 0, 1},
               {wide, Wide(u"xz"), 3, 1, 0, 0, 1}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.n == kWhole ? c.content.Equal(c.text, c.wide, c.pos, c.nocase)
                            : c.content.EqualN(c.text, c.n, c.wide, c.pos, c.nocase),
              c.expected)
        << "row " << &c - cases;
  }
  EXPECT_EQ(narrow.EndWith("B\x83\x41", 0, 1) + wide.EndWith(Wide(u"à"), 1, 1), 2);
  EXPECT_EQ(narrow.EndWith("xxAb\x83\x41"), 0);
}

// The answers to -2, -1, 0 to 7 and the two largest numbers; "-" is -1.
template <class Find>
std::string Everywhere(Find find) {
  std::string answers;
  for (const int at : {-2, -1, 0, 1, 2, 3, 4, 5, 6, 7, 0x7FFFFFFE, 0x7FFFFFFF}) {
    const int found = find(at);
    answers += found == -1 ? '-' : static_cast<char>('0' + found);
  }
  return answers;
}

TEST(CBuffer, FindsFromStartAndEnd) {
  const CBuffer t("a\x83\x61xaXa");  // 0 a, 1 two bytes, 3 x, 4 a, 5 X, 6 a
  const CBuffer w(u"xyxy"s);
  EXPECT_EQ(Everywhere([&](int at) { return t.IsMbsTrail(at); }), "000010000000");
  EXPECT_EQ(Everywhere([&](int at) { return t.FindAsciiChar('a', at); }), "--0224466---");
  EXPECT_EQ(Everywhere([&](int at) { return t.FindChar('a', at); }), "--0424466---");
  EXPECT_EQ(Everywhere([&](int at) { return t.FindChar('\x83', at); }), "------------");
  EXPECT_EQ(CBuffer("\x83 ").FindChar('\x83'), 0);
  EXPECT_EQ(Everywhere([&](int at) { return t.FindOneOfChar("zXa", at); }), "--0224456---");
  EXPECT_EQ(Everywhere([&](int at) { return t.FindAsciiPhrase("axa", at); }), "--222-------");
  EXPECT_EQ(Everywhere([&](int at) { return t.FindPhrase("Xax", at, 1); }), "--3333------");
  EXPECT_EQ(Everywhere([&](int at) { return t.FindPhrase("", at); }), "------------");
  EXPECT_EQ(Everywhere([&](int at) { return w.FindPhrase(u"y", at); }), "--2-2-6-6---");
  EXPECT_EQ(Everywhere([&](int at) { return t.ReverseFindAsciiChar('a', at); }), "-6-002244666");
  EXPECT_EQ(Everywhere([&](int at) { return t.ReverseFindChar('a', at); }), "-6-000044666");
  EXPECT_EQ(Everywhere([&](int at) { return t.ReverseFindAsciiPhrase("A", at, 1); }),
            "66-002244666");
  EXPECT_EQ(Everywhere([&](int at) { return t.ReverseFindPhrase("a", at); }), "66-000044666");
  EXPECT_EQ(Everywhere([&](int at) { return w.ReverseFindPhrase(u"XY", at, 1); }), "-4----0-0-4-");
  // Where nothing is said, from the start and from the end.
  EXPECT_EQ(t.FindAsciiChar('a') + t.FindChar('a') + t.FindOneOfChar("a") + t.FindAsciiPhrase("a") +
                t.FindPhrase("a") + w.FindPhrase(u"x"),
            0);
  EXPECT_EQ(t.ReverseFindAsciiChar('a') + t.ReverseFindChar('a') + t.ReverseFindAsciiPhrase("a") +
                t.ReverseFindPhrase("a") + w.ReverseFindPhrase(u"x"),
            4 * 6 + 4);
}

// Ranges, case and borders are compared with the obvious way by the model above.
TEST(CBuffer, ReplacesAll) {
  CBuffer buffer("aaa");
  EXPECT_EQ(buffer.ReplacePhraseAll("a", "aa"), 3);
  EXPECT_STREQ(buffer, "aaaaaa");
  EXPECT_EQ(buffer.ReplacePhraseAll("aa", nullptr, 1, 0x7FFFFFFF), 2);
  EXPECT_STREQ(buffer, "aa");
  CBuffer wide(u"aあa"s);
  EXPECT_EQ(wide.ReplacePhraseAll(u"A", u"bc", 2, 0, 1), 1);
  EXPECT_TRUE(wide.Units() == u"aあbc");
  CBuffer large;
  large.Insert('a', 4000000, 0);
  EXPECT_EQ(large.ReplacePhraseAll("a", "bcd"), 4000000);
  EXPECT_EQ(large.ReplaceAsciiPhraseAll("bcd", "e"), 4000000);
  EXPECT_EQ(large.GetLength(), 4000000);
}

// The tokens, each followed by "|" and the position behind it.
std::string Tokens(const char* content, const char* delims, int pos = 0) {
  const CBuffer buffer(content);
  CBuffer token("x");
  std::string tokens;
  while (token.GetLength() > 0) {
    buffer.Tokenize(delims, pos, token);
    tokens.append(token.Bytes()) += '|' + std::to_string(pos) + ' ';
  }
  return tokens;
}

TEST(CBuffer, Tokenizes) {
  EXPECT_EQ(Tokens(",a,,b;c", ",;"), "a|3 b|6 c|7 |7 ");
  EXPECT_EQ(Tokens("a\x81\x41"
                   "b\x81\x42",
                   "\x81\x41"),
            "a|3 b\x81\x42|6 |6 ");
  EXPECT_EQ(Tokens("\x83\x41"
                   "A,",
                   "A,"),
            "\x83\x41|3 |3 ");
  EXPECT_EQ(Tokens(",,", ","), "|0 ");
  EXPECT_EQ(Tokens("a", "") + Tokens("a", ",", 1) + Tokens("a", ",", -1), "|0 |1 |-1 ");
}

TEST(CFixBuffer, TakesOverBlocks) {
  const struct {
    int capacity, size;
  } cases[] = {{0, 0}, {100, 0}, {100, 10}, {2000, 10}, {2000, 0}, {2000, 1021}, {5000, 1022}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.capacity << " with " << c.size);
    CBuffer buffer;
    buffer.SetAllocSize(c.capacity);
    buffer.Insert('x', c.size, 0);
    CFixBuffer fixed;
    CBuffer old("old");
    fixed.MoveFrom(old);
    fixed.MoveFrom(buffer);
    EXPECT_EQ(buffer.GetBuffer(), nullptr);
    EXPECT_EQ(buffer.GetAllocSize() + buffer.GetLength(), 0);
    CFixBuffer copy;
    copy = fixed;
    fixed = *&fixed;
    EXPECT_EQ(copy.Bytes(), std::string(static_cast<std::size_t>(c.size), 'x'));
    EXPECT_EQ(fixed.Bytes(), copy.Bytes());
    EXPECT_EQ(LoadUnit(static_cast<const char*>(fixed) + c.size), 0);
  }
}

template <class Text>
void ExpectAttributeIsCarried(Text text, void (*clear)(Text&)) {
  EXPECT_EQ(text.GetAttribute(), 1);
  text.SetAttribute(5);
  Text copy(text), assigned;
  assigned = text;
  EXPECT_EQ(copy.GetAttribute() + assigned.GetAttribute(), 10);
  EXPECT_FALSE(assigned.IsEmpty());
  clear(assigned);
  EXPECT_TRUE(assigned.IsEmpty());
  EXPECT_EQ(assigned.GetAttribute(), 1);
}

TEST(TextBuffers, CarryTheirAttribute) {
  CBuffer source("text");
  CTextFixBuffer fixed;
  fixed.MoveFrom(source);
  ExpectAttributeIsCarried<CTextFixBuffer>(fixed, [](CTextFixBuffer& t) { t.AllocFree(); });
  ExpectAttributeIsCarried<CTextBuffer>("text", [](CTextBuffer& t) { t.Empty(); });
  ExpectAttributeIsCarried<CtStringW>(u"text", [](CtStringW& t) { t.Empty(); });
}

}  // namespace
}  // namespace lumr
