#include "lumrmisc/buffer/buffer.h"

#include <gtest/gtest.h>

#include <array>
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
  } cases[] = {
      {"123", 0, 3, 0, 0, 7},
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
      {"99999999999999999999 ", 0, 20, 0, 0, 7},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.content);
    int value = 7;
    EXPECT_EQ(CBuffer(c.content).GetNumber(c.start, c.len, c.sign, value), c.result);
    EXPECT_EQ(value, c.value);
  }
}

TEST(CBuffer, Compares) {
  const CBuffer narrow("xAb\x83\x41");  // the trail byte 41 is no letter
  const CBuffer wide(u"xÀ"s);
  CBuffer emptied("x");
  emptied.Empty();
  const struct {
    const char* what;
    int result, expected;
  } cases[] = {
      {"tail", narrow.Equal("Ab\x83\x41", 0, 1, 0), 1},
      {"case", narrow.Equal("ab\x83\x41", 0, 1, 0), 0},
      {"no case", narrow.Equal("aB\x83\x41", 0, 1, 1), 1},
      {"no case of trail bytes", narrow.Equal("ab\x83\x61", 0, 1, 1), 0},
      {"shorter", narrow.Equal("Ab", 0, 1, 0), 0},
      {"past the end", narrow.Equal("", 0, 6, 0), 0},
      {"at the end", narrow.Equal("", 0, 5, 0), 1},
      {"null", narrow.Equal(nullptr, 0, 0, 0), 0},
      {"without storage", CBuffer().Equal("", 0, 0, 0), 0},
      {"with storage", emptied.Equal("", 0, 0, 0), 1},
      {"wide", wide.Equal(Wide(u"xÀ"), 1, 0, 0), 1},
      {"wide no case", wide.Equal(Wide(u"Xà"), 1, 0, 1), 1},
      {"wide at an odd place", CBuffer("yx\0"s).Equal(Wide(u"x"), 1, 1, 0), 1},
      {"part", narrow.EqualN("abz", 2, 0, 1, 1), 1},
      {"nothing", narrow.EqualN("z", 0, 0, 5, 0), 1},
      {"too much", narrow.EqualN("Ab\x83\x41z", 5, 0, 1, 0), 0},
      {"string shorter than n", narrow.EqualN("xA", 5, 0, 0, 0), 0},
      {"all of s", narrow.EqualN("Ab", -1, 0, 1, 0), 1},
      {"wide part of odd length", wide.EqualN(Wide(u"xz"), 3, 1, 0, 0), 1},
      {"end", narrow.EndWith("B\x83\x41", 0, 1), 1},
      {"longer end", narrow.EndWith("xxAb\x83\x41", 0, 0), 0},
      {"wide end", wide.EndWith(Wide(u"à"), 1, 1), 1},
      {"trail", narrow.IsMbsTrail(4), 1},
      {"lead", narrow.IsMbsTrail(3), 0},
      {"outside", narrow.IsMbsTrail(5) + narrow.IsMbsTrail(0) + narrow.IsMbsTrail(-1), 0},
  };
  for (const auto& c : cases) EXPECT_EQ(c.result, c.expected) << c.what;
}

TEST(CBuffer, FindsFromStartAndEnd) {
  constexpr int kMax = 0x7FFFFFFF;
  const CBuffer text("a\x83\x61xaXa");  // 0 a, 1 two bytes, 3 x, 4 a, 5 X, 6 a
  const CBuffer wide(u"xyxy"s);
  const struct {
    const char* what;
    int found, expected;
  } cases[] = {
      {"byte", text.FindAsciiChar('a', 1), 2},
      {"character", text.FindChar('a', 1), 4},
      {"start is a border", text.FindChar('a', 2), 2},
      {"lead byte of a character", text.FindChar('\x83', 0), -1},
      {"lone lead byte", CBuffer("\x83 ").FindChar('\x83', 0), 0},
      {"start outside", text.FindChar('a', 7) + text.FindChar('a', -1) + text.FindChar('a', kMax),
       -3},
      {"any of a set", text.FindOneOfChar("zX\x61", 1), 2},
      {"of no set", text.FindOneOfChar("", 0), -1},
      {"last byte", text.ReverseFindAsciiChar('a', 4), 2},
      {"last character", text.ReverseFindChar('a', 4), 0},
      {"last of all", text.ReverseFindChar('a', -1), 6},
      {"end outside", text.ReverseFindChar('a', kMax), 6},
      {"end negative", text.ReverseFindChar('a', -2) + text.ReverseFindAsciiChar('a', -2), -2},
      {"before the start", text.ReverseFindChar('a', 0), -1},
      {"bytes of a phrase", text.FindAsciiPhrase("axa", 0, 0), 2},
      {"characters of a phrase", text.FindPhrase("axa", 0, 0), -1},
      {"phrase without case", text.FindPhrase("Xax", 0, 1), 3},
      {"phrase outside", text.FindPhrase("a", -1, 0) + text.FindPhrase("a", kMax, 0), -2},
      {"no phrase", text.FindPhrase("", 0, 0) + text.ReverseFindPhrase("", -1, 0), -2},
      {"last phrase", text.ReverseFindPhrase("xa", -1, 1), 5},
      {"last phrase before", text.ReverseFindPhrase("xa", 6, 1), 3},
      {"last phrase, any negative end", text.ReverseFindAsciiPhrase("xa", -5, 1), 5},
      {"last phrase, end outside", text.ReverseFindPhrase("a", kMax, 0), 6},
      {"last phrase on a border", text.ReverseFindPhrase("a", 4, 0), 0},
      {"wide", wide.FindPhrase(u"y", 4, 0), 6},
      {"wide between units", wide.FindPhrase(u"y", 1, 0), -1},
      {"wide last", wide.ReverseFindPhrase(u"XY", -1, 1), 4},
      {"wide last before", wide.ReverseFindPhrase(u"xy", 6, 0), 0},
      {"wide last between units", wide.ReverseFindPhrase(u"xy", 7, 0), -1},
      {"wide last, end outside", wide.ReverseFindPhrase(u"xy", 0x7FFFFFFE, 0), 4},
      {"wide last, odd end outside", wide.ReverseFindPhrase(u"xy", kMax, 0), -1},
      {"wide last, negative end", wide.ReverseFindPhrase(u"xy", -2, 0), -1},
  };
  for (const auto& c : cases) EXPECT_EQ(c.found, c.expected) << c.what;
}

TEST(CBuffer, ReplacesAll) {
  const struct {
    const char *content, *from, *to;
    int start, count, nocase, replaced;
    const char* expected;
  } cases[] = {
      {"aaa", "a", "aa", 0, 0, 0, 3, "aaaaaa"},
      {"aaaa", "aa", nullptr, 1, 0, 0, 1, "aa"},
      {"abAB", "AB", "x", 0, 0, 1, 2, "xx"},
      {"abcabc", "abc", "longer", 0, 5, 0, 1, "longerabc"},
      {"abcabc", "abc", "longer", 0, 6, 0, 2, "longerlonger"},
      {"abc", "c", "d", 1, 0x7FFFFFFF, 0, 1, "abd"},
      {"abc", "b", "d", -1, 0, 0, 0, "abc"},
      {"abc", "", "d", 0, 0, 0, 0, "abc"},
      {"\x83\x61\x61", "a", "b", 0, 0, 0, 1, "\x83\x61\x62"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.content);
    CBuffer buffer(c.content);
    EXPECT_EQ(buffer.ReplacePhraseAll(c.from, c.to, c.start, c.count, c.nocase), c.replaced);
    EXPECT_STREQ(buffer, c.expected);
  }
  CBuffer wide(u"aあa"s);
  EXPECT_EQ(wide.ReplacePhraseAll(u"A", u"bc", 2, 0, 1), 1);
  EXPECT_TRUE(wide.Units() == u"aあbc");
  CBuffer large;
  large.Insert('a', 4000000, 0);
  EXPECT_EQ(large.ReplacePhraseAll("a", "bcd"), 4000000);
  EXPECT_EQ(large.ReplaceAsciiPhraseAll("bcd", "e"), 4000000);
  EXPECT_EQ(large.GetLength(), 4000000);
}

TEST(CBuffer, Tokenizes) {
  const struct {
    const char *content, *delims;
    int start;
    const char* tokens;  // each followed by "|" and the position after it
  } cases[] = {
      {",a,,b;c", ",;", 0, "a|3 b|6 c|7 |7"},
      {"a\x81\x41"
       "b\x81\x42",
       "\x81\x41", 0, "a|3 b\x81\x42|6 |6"},
      {"\x83\x41"
       "A,",
       "A,", 0, "\x83\x41|3 |3"},
      {",,", ",", 0, "|0"},
      {"a", "", 0, "|0"},
      {"a", ",", 1, "|1"},
      {"a", ",", -1, "|-1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.content);
    const CBuffer buffer(c.content);
    CBuffer token("x");
    std::string tokens;
    for (int pos = c.start; token.GetLength() > 0;) {
      buffer.Tokenize(c.delims, pos, token);
      if (!tokens.empty()) tokens += ' ';
      tokens.append(token.Bytes()) += '|' + std::to_string(pos);
    }
    EXPECT_EQ(tokens, c.tokens);
  }
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
